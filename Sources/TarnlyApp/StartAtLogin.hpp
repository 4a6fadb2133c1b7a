#pragma once

#include <memory>

#include "TarnlyApp/CompanionOptions.hpp"
#include "TarnlyPlatform/Login/LoginItem.hpp"

namespace tarnly {

/// The login item that starts the running program, without a window and with the same options as now, when
/// the person logs in. Each data folder has its own, as it has its own setting. Throws `std::runtime_error`
/// for a person without a home folder.
std::unique_ptr<LoginItem> makeLoginItem(CompanionOptions options);

} // namespace tarnly
