#pragma once

#include <boost/json/object.hpp>
#include <filesystem>
#include <optional>
#include <string>

#include "TarnlyPlatform/Json/JsonRecord.hpp"

namespace tarnly {

/// The user's settings, as they stand in the settings file. A plain value.
struct AppSettings {
    /// Absent: pairing is open.
    std::optional<std::string> password;
    bool startAtLogin = false;

    bool operator==(const AppSettings&) const = default;

    /// A further field needs a default here: without it no file that is there today would be one any more,
    /// and every password would be lost.
    static constexpr auto fields() {
        return std::tuple(field("password", &AppSettings::password),
                          field("startAtLogin", &AppSettings::startAtLogin));
    }

    /// The settings file in the application's data folder.
    static std::filesystem::path fileIn(const std::filesystem::path& dataFolder);
};

/// The settings on the disk: read once, and saved as a whole, so that a sudden end leaves the old ones or the
/// new ones. Blocking; belongs to one thread at a time.
class SettingsFile {
  public:
    /// Reads `file`. One that others could read is made its owner's only.
    explicit SettingsFile(std::filesystem::path file);

    /// What the file held; the defaults where it is missing or cannot be understood.
    const AppSettings& initial() const { return initial_; }

    /// Whether the file is there and tells nothing: it cannot be read, or is not a settings file. A
    /// byte-order mark, and keys that are not known here, are no fault.
    bool isUnreadable() const { return isUnreadable_; }

    const std::filesystem::path& path() const { return file_; }

    /// Where a file that could not be understood is kept once it is saved over; where it was kept, once it
    /// has been.
    std::filesystem::path keptPath() const;

    /// Writes the file, with the folders above it, for its owner only, and with the keys that it had beside
    /// ours. What a link leads to is written, not the link. One that could not be understood is kept first,
    /// as `keptPath`, with a number behind it where that is taken. Throws `std::system_error` and leaves
    /// the file as it was.
    void save(const AppSettings& settings);

  private:
    void read(const std::string& text);

    std::filesystem::path file_;
    std::filesystem::path kept_;
    AppSettings initial_;
    /// Of a later version, or another's.
    boost::json::object unknown_;
    bool isUnreadable_ = false;
};

} // namespace tarnly
