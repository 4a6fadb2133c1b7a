#include "TarnlyPlatform/Login/AutostartXdg.hpp"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <ranges>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

#include "TarnlyPlatform/Files/File.hpp"
#include "TarnlyPlatform/Files/Folders.hpp"
#include "TarnlyPlatform/Files/PrivateFiles.hpp"
#include "TarnlyPlatform/Login/DesktopEntry.hpp"

namespace tarnly {
namespace {

constexpr std::size_t largestEntry = 64 * 1024; // bytes

std::optional<DesktopEntry> readEntry(const std::filesystem::path& path) {
    const auto file = File::open(path, File::Mode::read);
    const auto text = file.isOpen() ? file.readUpTo(largestEntry) : std::nullopt;
    if (!text) return std::nullopt;
    return DesktopEntry::parse(*text);
}

bool isProgram(const std::filesystem::path& path) {
    std::error_code ignored;
    return path.is_absolute() && std::filesystem::is_regular_file(path, ignored) &&
           access(path.c_str(), X_OK) == 0;
}

bool isInSearchPath(const std::string& name) {
    const char* configured = std::getenv("PATH");
    const std::string_view folders = configured != nullptr ? configured : "/usr/local/bin:/usr/bin:/bin";
    return std::ranges::any_of(folders | std::views::split(':'), [&](const auto& folder) {
        return isProgram(std::filesystem::path(folder.begin(), folder.end()) / name);
    });
}

bool isInstalled(const std::string& program) {
    if (program.empty()) return false;
    return program.find('/') == std::string::npos ? isInSearchPath(program) : isProgram(program);
}

std::string programOf(const DesktopEntry& entry) {
    const auto tried = entry.value("TryExec").value_or("");
    return tried.empty() ? programOfExec(entry.value("Exec").value_or("")) : tried;
}

/// For the same program: another one may be the person's choice.
bool hasOtherArguments(const DesktopEntry& entry, const std::vector<std::string>& command) {
    const auto exec = entry.value("Exec").value_or("");
    if (command.empty() || programOfExec(exec) != command.front()) return false;
    try {
        return exec != execValue(command);
    } catch (const std::invalid_argument&) {
        return false; // there is no entry for this command
    }
}

std::string optionalLine(std::string_view key, const std::string& value) {
    return value.empty() ? "" : desktopEntryLine(key, value);
}

std::string entryText(const AutostartEntry::Description& description) {
    const auto exec = execValue(description.command);
    const auto& program = description.command.front();
    if (!program.starts_with('/')) throw std::invalid_argument("not an absolute path");
    return "[Desktop Entry]\nType=Application\n" + desktopEntryLine("Name", description.name) +
           optionalLine("Comment", description.comment) + optionalLine("Icon", description.icon) +
           desktopEntryLine("Exec", exec) + desktopEntryLine("TryExec", program) +
           "Terminal=false\nX-GNOME-Autostart-enabled=true\n";
}

std::string textOrError(const AutostartEntry::Description& description) {
    try {
        return entryText(description);
    } catch (const std::invalid_argument& error) {
        throw LoginItemError(LoginItemError::Case::notRepresentable, description.id + ": " + error.what());
    }
}

} // namespace

std::unique_ptr<LoginItem> LoginItem::create(Description description) {
    return std::make_unique<AutostartEntry>(configurationFolder() / "autostart", std::move(description));
}

AutostartEntry::AutostartEntry(const std::filesystem::path& folder, Description description)
    : file_(folder / (description.id + ".desktop")), description_(std::move(description)) {}

LoginItem::Status AutostartEntry::status() const {
    const auto entry = readEntry(file_);
    if (!entry || entry->flag("Hidden", false)) return Status::disabled;
    if (!entry->flag("X-GNOME-Autostart-enabled", true)) return Status::disabled;
    if (!isInstalled(programOf(*entry))) return Status::broken;
    return hasOtherArguments(*entry, description_.command) ? Status::outdated : Status::enabled;
}

void AutostartEntry::enable() {
    const auto text = textOrError(description_);
    try {
        replaceFile(file_, text);
    } catch (const std::system_error& error) {
        throw LoginItemError(LoginItemError::Case::cannotWrite,
                             file_.string() + ": " + error.code().message());
    }
}

void AutostartEntry::disable() {
    const auto error = removeFile(file_);
    if (!error) return;
    throw LoginItemError(LoginItemError::Case::cannotRemove, file_.string() + ": " + error.message());
}

} // namespace tarnly
