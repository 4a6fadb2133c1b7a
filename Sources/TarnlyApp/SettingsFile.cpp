#include "TarnlyApp/SettingsFile.hpp"

#include <exception>
#include <string_view>
#include <system_error>
#include <tuple>
#include <type_traits>
#include <utility>

#include "TarnlyApp/SettingRules.hpp"
#include "TarnlyPlatform/Files/PrivateFiles.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly {
namespace {

namespace fs = std::filesystem;

/// As some editors begin a file.
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

std::string_view withoutMark(std::string_view text) {
    if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
    return text;
}

/// Also where it is a link that leads nowhere, or may not be looked at.
bool isPresent(const fs::path& file) {
    std::error_code error;
    const auto status = fs::symlink_status(file, error);
    return status.type() != fs::file_type::not_found;
}

void writeValue(JsonWriter& writer, const boost::json::value& value) {
    switch (value.kind()) {
        case boost::json::kind::null:
            return writer.null();
        case boost::json::kind::bool_:
            return writer.boolean(value.get_bool());
        case boost::json::kind::int64:
            return writer.integer(value.get_int64());
        case boost::json::kind::uint64:
            return writer.number(static_cast<double>(value.get_uint64()));
        case boost::json::kind::double_:
            return writer.number(value.get_double());
        case boost::json::kind::string:
            return writer.string(std::string_view(value.get_string()));
        case boost::json::kind::array:
            writer.beginArray();
            for (const auto& element : value.get_array())
                writeValue(writer, element);
            return writer.endArray();
        case boost::json::kind::object:
            break;
    }
    writer.beginObject();
    for (const auto& [key, member] : value.get_object()) {
        writer.key(key);
        writeValue(writer, member);
    }
    writer.endObject();
}

/// Of a member of the settings that a file may lack.
template <typename Value>
Phrase wantedKind(const std::optional<Value>&) {
    if constexpr (std::is_same_v<Value, bool>) return Phrase::of("true or false is wanted");
    if constexpr (std::is_same_v<Value, std::int64_t>) return Phrase::of("a number is wanted");
    if constexpr (std::is_same_v<Value, std::string>) return Phrase::of("a text in quotes is wanted");
    return Phrase::of("a list of texts is wanted, such as [\"https://example.com\"]");
}

Phrase ruleFault(std::string_view key, const AppSettings& settings) {
    if (key == "name" && settings.name) return nameFault(*settings.name);
    if (key == "port" && settings.port) return portFault(*settings.port);
    if (key == "sim_host" && settings.simulatorHost) return hostFault(*settings.simulatorHost);
    if (key == "sim_port" && settings.simulatorPort) return simulatorPortFault(*settings.simulatorPort);
    if (key == "situations_folder" && settings.situationsFolder) return pathFault(*settings.situationsFolder);
    if (key == "navigation_database" && settings.navigationDatabase)
        return pathFault(*settings.navigationDatabase);
    if (key == "allowed_origins" && settings.allowedOrigins) {
        for (const auto& origin : *settings.allowedOrigins)
            if (auto fault = originFault(origin); !fault.empty()) return fault;
    }
    return {};
}

/// Reads one setting, and leaves it absent where it cannot be what stands there: what is wanted then.
template <typename Value>
Phrase readSetting(const boost::json::object& object, const Field<AppSettings, std::optional<Value>>& field,
                   AppSettings& settings) {
    auto& value = settings.*field.member;
    Phrase fault;
    try {
        readMember(object, field, settings);
        fault = ruleFault(field.key, settings);
    } catch (const JsonError&) {
        fault = wantedKind(value);
    }
    if (!fault.empty()) value.reset();
    return fault;
}

/// Throws `JsonError` where one of the two is of the wrong kind, or the second is missing.
AppSettings essentialsIn(const boost::json::object& object) {
    AppSettings settings;
    readField(object, "password", settings.password);
    readField(object, "startAtLogin", settings.startAtLogin);
    return settings;
}

template <typename Value>
bool isSet(const std::optional<Value>& value) {
    return value.has_value();
}

constexpr bool isSet(bool) { return true; }

std::string textOf(const AppSettings& settings, const boost::json::object& unknown) {
    JsonWriter writer;
    writer.beginObject();
    std::apply([&](const auto&... fields) { (writeField(writer, fields.key, settings.*fields.member), ...); },
               fieldsOf<AppSettings>());
    for (const auto& [key, value] : unknown) {
        if (settings.has(key)) continue; // it was faulty
        writer.key(key);
        writeValue(writer, value);
    }
    writer.endObject();
    return writer.take();
}

/// Where nobody can tell, it is not: what is done with the name tells what is wrong.
bool isTaken(const fs::path& name) {
    std::error_code error;
    return fs::exists(fs::symlink_status(name, error));
}

fs::path freeName(const fs::path& wanted) {
    auto name = wanted;
    for (int number = 2; isTaken(name); ++number)
        name = wanted.string() + "-" + std::to_string(number);
    return name;
}

/// A second name for the file, so that it is never away; where the file system has no such thing, another
/// one.
void setAside(const fs::path& file, const fs::path& kept) {
    std::error_code error;
    fs::create_hard_link(file, kept, error);
    if (error) fs::rename(file, kept, error);
    if (error) fs::copy(file, kept); // to another file system, from where a link leads
}

void undoSettingAside(const fs::path& file, const fs::path& kept) {
    std::error_code ignored;
    isPresent(file) ? (void)fs::remove(kept, ignored) : fs::rename(kept, file, ignored);
}

} // namespace

template <typename Member>
void SettingsFile::readOne(const Field<AppSettings, Member>& field, AppSettings& settings) {
    if constexpr (isOptional<Member>) {
        auto fault = readSetting(unknown_, field, settings);
        if (!fault.empty()) return faults_.push_back({std::string(field.key), std::move(fault)});
    }
    unknown_.erase(field.key);
}

bool AppSettings::has(std::string_view key) const {
    return std::apply(
        [&](const auto&... fields) { return ((fields.key == key && isSet(this->*fields.member)) || ...); },
        fieldsOf<AppSettings>());
}

fs::path AppSettings::fileIn(const fs::path& dataFolder) { return dataFolder / "settings.json"; }

SettingsFile::SettingsFile(fs::path file) : file_(std::move(file)) {
    const auto text = readPrivateFile(file_);
    isUnreadable_ = !text && isPresent(file_);
    if (text) read(*text);
    if (isUnreadable_) initial_.passwordLostIn = keptPath().filename().string();
    if (initial_.password) initial_.passwordLostIn.reset();
    if (auto& lost = initial_.passwordLostIn) {
        kept_ = file_.parent_path() / fs::path(*lost).filename(); // whatever path somebody has written there
        lost = kept_.filename().string();
    }
}

void SettingsFile::read(const std::string& text) {
    try {
        auto json = parseJson(withoutMark(text));
        auto settings = essentialsIn(jsonObject(json));
        unknown_ = std::move(json.as_object());
        std::apply([&](const auto&... fields) { (readOne(fields, settings), ...); }, fieldsOf<AppSettings>());
        initial_ = std::move(settings);
    } catch (const JsonError&) {
        isUnreadable_ = true;
    }
}

fs::path SettingsFile::keptPath() const {
    return kept_.empty() ? fs::path(file_.string() + ".unreadable") : kept_;
}

void SettingsFile::save(const AppSettings& settings) {
    std::error_code error;
    auto target = fs::canonical(file_, error);
    if (error) target = file_;
    const bool keepsOld = isUnreadable_ && isPresent(target);
    const auto kept = keepsOld ? freeName(keptPath()) : keptPath();
    auto saved = settings;
    if (saved.passwordLostIn) saved.passwordLostIn = kept.filename().string();
    const auto text = textOf(saved, unknown_);
    if (keepsOld) setAside(target, kept);
    try {
        replaceFile(target, text);
    } catch (const std::exception&) {
        if (keepsOld) undoSettingAside(target, kept);
        throw;
    }
    if (keepsOld) kept_ = kept;
    isUnreadable_ = false;
}

} // namespace tarnly
