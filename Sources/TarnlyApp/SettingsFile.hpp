#pragma once

#include <boost/json/object.hpp>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TarnlyPlatform/Base/Phrase.hpp"
#include "TarnlyPlatform/Json/JsonRecord.hpp"

namespace tarnly {

/// The user's settings, as they stand in the settings file. A plain value.
struct AppSettings {
    /// Absent: pairing is open.
    std::optional<std::string> password{};
    bool startAtLogin = false;
    // What the companion goes by where the command line says nothing else; absent: as usual.
    std::optional<std::string> name{};
    /// To listen on; 0: any.
    std::optional<std::int64_t> port{};
    std::optional<bool> advertise{};
    std::optional<std::string> simulatorHost{};
    std::optional<std::int64_t> simulatorPort{};
    /// Absolute, as is the next.
    std::optional<std::string> situationsFolder{};
    std::optional<std::string> navigationDatabase{};
    std::optional<std::vector<std::string>> allowedOrigins{};
    /// No setting of a person's: the file beside it that may have had a password and could not be read, until
    /// somebody says which one there is to be.
    std::optional<std::string> passwordLostIn{};

    bool operator==(const AppSettings&) const = default;

    /// A further field is optional, or has a default here: without it no file that is there today would be
    /// one any more, and every password would be lost.
    static constexpr auto fields() {
        return std::tuple(
            field("password", &AppSettings::password), field("startAtLogin", &AppSettings::startAtLogin),
            field("name", &AppSettings::name), field("port", &AppSettings::port),
            field("advertise", &AppSettings::advertise), field("sim_host", &AppSettings::simulatorHost),
            field("sim_port", &AppSettings::simulatorPort),
            field("situations_folder", &AppSettings::situationsFolder),
            field("navigation_database", &AppSettings::navigationDatabase),
            field("allowed_origins", &AppSettings::allowedOrigins),
            field("password_lost_in", &AppSettings::passwordLostIn));
    }

    /// Whether the setting that the file calls `key` says something.
    bool has(std::string_view key) const;

    /// The settings file in the application's data folder.
    static std::filesystem::path fileIn(const std::filesystem::path& dataFolder);
};

/// A setting that cannot be what stands in the file.
struct SettingFault {
    std::string key;
    /// What may stand there: a clause.
    Phrase wanted;

    bool operator==(const SettingFault&) const = default;
};

/// The settings on the disk: read once, and saved as a whole, so that a sudden end leaves the old ones or the
/// new ones. Blocking; belongs to one thread at a time.
class SettingsFile {
  public:
    /// Reads `file`. One that others could read is made its owner's only.
    explicit SettingsFile(std::filesystem::path file);

    /// What the file held; the defaults where it is missing. Where it cannot be understood, they tell where
    /// the password was lost.
    const AppSettings& initial() const { return initial_; }

    /// The settings that are absent in `initial`, because they are of the wrong kind or out of their range.
    /// The file keeps them until they are saved with a value. A password or a start at login of the wrong
    /// kind is no such thing: what was meant nobody knows, so the whole file tells nothing.
    const std::vector<SettingFault>& faults() const { return faults_; }

    /// Whether the file is there and tells nothing: it cannot be read, or is not a settings file. A
    /// byte-order mark, and keys that are not known here, are no fault.
    bool isUnreadable() const { return isUnreadable_; }

    const std::filesystem::path& path() const { return file_; }

    /// Where a file that could not be understood is kept once it is saved over; where it was kept, once it
    /// has been.
    std::filesystem::path keptPath() const;

    /// Writes the file, with where the password was lost as long as `settings` have that, with the folders
    /// above it, for its owner only, and with the keys that it had beside ours. What a link leads to is
    /// written, not the link. One that could not be understood is kept first, as `keptPath`, with a number
    /// behind it where that is taken. Throws `std::system_error` and leaves the file as it was.
    void save(const AppSettings& settings);

  private:
    void read(const std::string& text);
    template <typename Member>
    void readOne(const Field<AppSettings, Member>& field, AppSettings& settings);

    std::filesystem::path file_;
    std::filesystem::path kept_;
    AppSettings initial_;
    std::vector<SettingFault> faults_;
    /// Of a later version, or another's, or faulty.
    boost::json::object unknown_;
    bool isUnreadable_ = false;
};

} // namespace tarnly
