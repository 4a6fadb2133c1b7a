#include "TarnlyApp/StartAtLogin.hpp"

#include <utility>

#include "TarnlyPlatform/AutostartEntry.hpp"
#include "TarnlyPlatform/Folders.hpp"

namespace tarnly {

std::unique_ptr<LoginItem> makeLoginItem(const std::filesystem::path& application, CompanionOptions options) {
    options.startsInBackground = true;
    AutostartEntry::Description description;
    description.id = "tarnly";
    description.name = "Tarnly";
    description.comment = "Connects the X-Plane flight simulator to a flight-training application";
    description.icon = "tarnly";
    description.command = commandLine(options);
    description.command.insert(description.command.begin(), application.string());
    return std::make_unique<AutostartEntry>(configurationFolder() / "autostart", std::move(description));
}

std::filesystem::path applicationBesideThisProgram() { return programPath().parent_path() / "tarnly"; }

} // namespace tarnly
