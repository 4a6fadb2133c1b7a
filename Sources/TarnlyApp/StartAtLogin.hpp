#pragma once

#include <filesystem>
#include <memory>

#include "TarnlyApp/CompanionOptions.hpp"
#include "TarnlyPlatform/LoginItem.hpp"

namespace tarnly {

/// The login item that starts `application`, without a window and with the same options as now, when the
/// person logs in. Throws `std::runtime_error` for a person without a home folder.
std::unique_ptr<LoginItem> makeLoginItem(const std::filesystem::path& application, CompanionOptions options);

/// The desktop application beside the running program. Throws `std::runtime_error` when the system does not
/// tell where that is.
std::filesystem::path applicationBesideThisProgram();

} // namespace tarnly
