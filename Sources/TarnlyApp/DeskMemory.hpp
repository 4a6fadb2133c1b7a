#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <tuple>
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

/// Keeps what is to be remembered in a data folder, beside its caller. One save at a time: the last one
/// handed over is the one that stays, in whatever order the workers come to it.
///
/// Belongs to one thread.
class DeskMemoryKeeper {
  public:
    /// Has a worker do `work`, or loses it.
    using DoAside = std::function<void(std::function<void()> work)>;

    DeskMemoryKeeper(std::filesystem::path dataFolder, DoAside doAside);

    /// Returns at once.
    void keep(DeskMemory memory);

  private:
    struct Room;

    const DoAside doAside_;
    /// Shared with the workers, which may outlast this.
    const std::shared_ptr<Room> room_;
};

} // namespace tarnly
