#include "TarnlyApp/CompanionOptions.hpp"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <string>
#include <utility>

#include "TarnlyPlatform/Files/Folders.hpp"

namespace tarnly {
namespace {

/// However the path is spelt: bash completes it with a slash.
std::filesystem::path plain(const std::filesystem::path& folder) {
    auto path = std::filesystem::absolute(folder).lexically_normal();
    return path.has_filename() ? path : path.parent_path();
}

/// "tarnly", or "tarnly-home-pilot-rig" for the settings in /home/pilot/rig.
std::string entryId(const CompanionOptions& options) {
    if (!options.dataFolder || plain(*options.dataFolder) == plain(applicationSupportFolder()))
        return "tarnly";
    auto folder = plain(*options.dataFolder).string();
    std::ranges::replace_if(
        folder, [](unsigned char letter) { return std::isalnum(letter) == 0; }, '-');
    return "tarnly" + folder;
}

} // namespace

std::unique_ptr<LoginItem> makeLoginItem(CompanionOptions options) {
    options.startsInBackground = true;
    LoginItem::Description description;
    description.id = entryId(options);
    description.name = "Tarnly";
    description.comment = "Connects the X-Plane flight simulator to a flight-training application";
    description.icon = "tarnly";
    description.command = commandLine(options);
    description.command.insert(description.command.begin(), programPath().string());
    return LoginItem::create(std::move(description));
}

} // namespace tarnly
