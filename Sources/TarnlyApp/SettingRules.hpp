#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "TarnlyPlatform/Net/WebOrigin.hpp"

/// What may stand in a setting, on the command line, in the file and in the window alike. Each says what is
/// wanted instead, as a clause for people; an empty text means that all is well.
namespace tarnly {

std::string nameFault(const std::string& name);

std::string hostFault(const std::string& host);

/// Of the simulator's web API.
std::string simulatorPortFault(std::int64_t port);

/// Of the companion; 0 lets the system choose.
std::string portFault(std::int64_t port);

std::string originFault(const std::string& origin);

/// A path is absolute in the file and the window: nobody knows from where the program will be started.
std::string pathFault(const std::string& path);

/// As people copy it from a browser, which shows a slash behind it.
std::optional<WebOrigin> originFrom(std::string_view text);

} // namespace tarnly
