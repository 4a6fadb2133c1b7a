#include <filesystem>
#include <fstream>

#include "Fuzz/Targets.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TarnlyApp/SettingsFile.hpp"

namespace tarnly::fuzz {

void settings(std::string_view bytes) {
    static const test::TemporaryFolder folder;
    const auto path = AppSettings::fileIn(folder.path());
    std::ofstream(path, std::ios::binary | std::ios::trunc).write(bytes.data(), std::ssize(bytes));
    SettingsFile file(path);
    auto told = file.initial();
    require(!file.isUnreadable() || told.passwordLostIn.has_value(), "a password that may be lost is told");
    told.passwordLostIn.reset();
    require(!file.isUnreadable() || told == AppSettings(), "what tells nothing sets nothing");
    // Saving waits for the disk.
    if (bytes.size() % 16 != 0) return;
    file.save(file.initial());
    const SettingsFile saved(path);
    require(!saved.isUnreadable() && saved.initial() == file.initial(),
            "settings are read as they are saved");
    for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
        std::filesystem::remove(entry.path());
}

} // namespace tarnly::fuzz
