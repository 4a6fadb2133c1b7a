#include "TarnlyApp/StartAtLogin.hpp"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <string>
#include <utility>

#include "TarnlyPlatform/AutostartEntry.hpp"
#include "TarnlyPlatform/Folders.hpp"

namespace tarnly {
namespace {

/// "tarnly", or "tarnly-home-pilot-rig" for the settings in /home/pilot/rig.
std::string entryId(const CompanionOptions& options) {
    if (!options.dataFolder) return "tarnly";
    auto folder = std::filesystem::absolute(*options.dataFolder).lexically_normal().string();
    std::ranges::replace_if(
        folder, [](unsigned char letter) { return std::isalnum(letter) == 0; }, '-');
    return "tarnly" + folder;
}

} // namespace

std::unique_ptr<LoginItem> makeLoginItem(CompanionOptions options) {
    options.startsInBackground = true;
    AutostartEntry::Description description;
    description.id = entryId(options);
    description.name = "Tarnly";
    description.comment = "Connects the X-Plane flight simulator to a flight-training application";
    description.icon = "tarnly";
    description.command = commandLine(options);
    description.command.insert(description.command.begin(), programPath().string());
    return std::make_unique<AutostartEntry>(configurationFolder() / "autostart", std::move(description));
}

} // namespace tarnly
