#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <thread>

#include "TarnlyApp/SettingsFile.hpp"

namespace tarnly {

/// Saves settings on a thread of its own, so that no window waits for a disk. Of those that are handed over
/// while the disk is busy the last ones are saved.
///
/// Owned by the settings; belongs to their thread. Nothing here fails.
class SettingsSaver {
  public:
    /// Called on the saver's thread, one at a time; owns what it uses, as a disk that hangs may outlast the
    /// saver. What it throws is lost.
    using Save = std::function<void(const AppSettings& settings)>;

    explicit SettingsSaver(Save save);

    SettingsSaver(const SettingsSaver&) = delete;
    SettingsSaver& operator=(const SettingsSaver&) = delete;

    /// Finishes, and leaves a disk that hangs to itself.
    ~SettingsSaver();

    /// Returns at once. The thread begins with the first ones; where the system has none left, this saves.
    void save(AppSettings settings);

    /// Waits until all is saved, for ten seconds at most; says whether it is. More may be saved after that.
    bool finish();

  private:
    class Room;

    /// Shared with the thread, which may have to be left to itself.
    const std::shared_ptr<Room> room_;
    std::optional<std::thread> thread_;
};

} // namespace tarnly
