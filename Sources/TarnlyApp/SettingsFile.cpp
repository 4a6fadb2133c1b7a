#include "TarnlyApp/SettingsFile.hpp"

#include <exception>
#include <string_view>
#include <system_error>
#include <tuple>
#include <utility>

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

std::string textOf(const AppSettings& settings, const boost::json::object& unknown) {
    JsonWriter writer;
    writer.beginObject();
    std::apply([&](const auto&... fields) { (writeField(writer, fields.key, settings.*fields.member), ...); },
               fieldsOf<AppSettings>());
    for (const auto& [key, value] : unknown) {
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

fs::path AppSettings::fileIn(const fs::path& dataFolder) { return dataFolder / "settings.json"; }

SettingsFile::SettingsFile(fs::path file) : file_(std::move(file)) {
    const auto text = readPrivateFile(file_);
    isUnreadable_ = !text && isPresent(file_);
    if (text) read(*text);
}

void SettingsFile::read(const std::string& text) {
    try {
        auto json = parseJson(withoutMark(text));
        initial_ = decodeJson<AppSettings>(json);
        unknown_ = std::move(json.as_object());
        std::apply([this](const auto&... fields) { (unknown_.erase(fields.key), ...); },
                   fieldsOf<AppSettings>());
    } catch (const JsonError&) {
        isUnreadable_ = true;
    }
}

fs::path SettingsFile::keptPath() const {
    return kept_.empty() ? fs::path(file_.string() + ".unreadable") : kept_;
}

void SettingsFile::save(const AppSettings& settings) {
    const auto text = textOf(settings, unknown_);
    std::error_code error;
    auto target = fs::canonical(file_, error);
    if (error) target = file_;
    const bool keepsOld = isUnreadable_ && isPresent(target);
    const auto kept = keepsOld ? freeName(keptPath()) : fs::path();
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
