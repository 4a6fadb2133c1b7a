#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "TarnlyPlatform/Json/JsonRecord.hpp"

namespace tarnly {

/// What the desktop application remembers from one start to the next without anybody having set it. A plain
/// value.
struct DeskMemory {
    /// The panel has been shown to the person once.
    bool isIntroduced = false;
    /// Addresses from where devices have paired: see `Notices`.
    std::vector<std::string> knownDevices;

    bool operator==(const DeskMemory&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("introduced", &DeskMemory::isIntroduced),
                          field("knownDevices", &DeskMemory::knownDevices));
    }

    /// What is remembered in a data folder. Where nothing is, or nothing that can be read, nothing but that
    /// somebody who has settings has seen the panel. Blocking.
    static DeskMemory in(const std::filesystem::path& dataFolder);

    /// Remembers it there. What fails is forgotten: the panel shows once more, a device is new once more.
    /// Blocking; from any thread.
    void keepIn(const std::filesystem::path& dataFolder) const;
};

} // namespace tarnly
