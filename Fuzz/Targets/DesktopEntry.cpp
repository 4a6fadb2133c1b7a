#include "TarnlyPlatform/Login/DesktopEntry.hpp"

#include <stdexcept>
#include <string>

#include "Fuzz/Targets.hpp"

namespace tarnly::fuzz {
namespace {

const std::string head = "[Desktop Entry]\n";

void read(std::string_view text) {
    const auto entry = DesktopEntry::parse(text);
    if (!entry) return;
    entry->flag("Hidden", false);
    programOfExec(entry->value("Exec").value_or(""));
}

void writeAndRead(const std::string& text) {
    try {
        const auto entry = DesktopEntry::parse(head + desktopEntryLine("Name", text));
        require(entry && entry->value("Name") == text, "values are read as they are written");
        const auto exec = desktopEntryLine("Exec", execValue({text, "--option", text}));
        const auto command = DesktopEntry::parse(head + exec);
        require(command && programOfExec(command->value("Exec").value_or("")) == text,
                "programs are read as they are written");
    } catch (const std::invalid_argument&) {
    }
}

} // namespace

void desktopEntry(std::string_view bytes) {
    read(bytes);
    read(head + std::string(bytes));
    writeAndRead(std::string(bytes));
}

} // namespace tarnly::fuzz
