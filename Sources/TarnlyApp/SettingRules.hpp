#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "TarnlyPlatform/Base/Phrase.hpp"
#include "TarnlyPlatform/Net/WebOrigin.hpp"

/// What may stand in a setting, on the command line, in the file and in the window alike. Each says what is
/// wanted instead, as a clause for people; an empty one means that all is well.
namespace tarnly {

Phrase nameFault(const std::string& name);

Phrase hostFault(const std::string& host);

/// Of the simulator's web API.
Phrase simulatorPortFault(std::int64_t port);

/// Of the companion; 0 lets the system choose.
Phrase portFault(std::int64_t port);

Phrase originFault(const std::string& origin);

/// A path is absolute in the file and the window: nobody knows from where the program will be started.
Phrase pathFault(const std::string& path);

/// As people copy it from a browser, which shows a slash behind it.
std::optional<WebOrigin> originFrom(std::string_view text);

} // namespace tarnly
