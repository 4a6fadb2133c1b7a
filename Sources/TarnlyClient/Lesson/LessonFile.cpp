#include "TarnlyClient/Lesson/LessonFile.hpp"

#include <array>
#include <cerrno>
#include <cstddef>
#include <fstream>
#include <system_error>

#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Base/UsageError.hpp"

namespace tarnly::client {
namespace {

constexpr auto ownFile = "lesson.json";
constexpr auto scriptFile = "script.json";

std::string reason(int error) {
    return error == 0 ? "it is no file" : std::generic_category().message(error);
}

/// Behind the JSON value at `begin`.
std::size_t endOfValue(std::string_view text, std::size_t begin) {
    std::size_t depth = 0;
    bool isInText = false;
    for (auto at = begin; at < text.size(); ++at) {
        const char c = text[at];
        if (isInText) {
            if (c == '\\') {
                ++at;
            } else if (c == '"') {
                isInText = false;
            }
        } else if (c == '"') {
            isInText = true;
        } else if (c == '{' || c == '[') {
            ++depth;
        } else if ((c == '}' || c == ']') && --depth == 0) {
            return at + 1;
        }
    }
    return text.size();
}

LessonFile readFolder(const std::filesystem::path& folder) {
    std::error_code error;
    const auto own = folder / ownFile;
    LessonFile file{{own.string(), "{}"}, folder, true, {}};
    auto inner = folder;
    if (!inner.has_filename()) inner = inner.parent_path(); // "circuits/"
    file.plainName = wellFormedUtf8(inner.filename().string());
    if (std::filesystem::exists(own, error)) {
        file.own.text = readAll(own);
    } else if (!std::filesystem::exists(folder / scriptFile, error)) {
        throw LessonUnreadable("it has neither lesson.json nor script.json");
    }
    return file;
}

} // namespace

std::string readAll(const std::filesystem::path& file) {
    errno = 0;
    std::ifstream stream(file, std::ios::binary);
    if (!stream.is_open()) throw LessonUnreadable(reason(errno));
    std::string text;
    std::array<char, 4096> chunk{};
    do {
        stream.read(chunk.data(), chunk.size());
        text.append(chunk.data(), static_cast<std::size_t>(stream.gcount()));
    } while (stream);
    if (stream.bad()) throw LessonUnreadable(reason(errno));
    return text;
}

LessonFile readLessonFile(const std::filesystem::path& fileOrFolder) {
    const auto shown = "the lesson " + printable(fileOrFolder.string()) + " cannot be read: ";
    try {
        std::error_code error;
        if (std::filesystem::is_directory(fileOrFolder, error)) return readFolder(fileOrFolder);
        return {{fileOrFolder.string(), readAll(fileOrFolder)},
                fileOrFolder.parent_path(),
                false,
                wellFormedUtf8(fileOrFolder.stem().string())};
    } catch (const LessonUnreadable& why) {
        throw UsageError(shown + why.what() + "; name a file or a folder that you may read");
    }
}

std::string partInPlace(std::string_view text, std::size_t begin) {
    std::string result;
    result.reserve(text.size());
    for (const char c : text.substr(0, begin)) {
        if (!isContinuation(c)) result += c == '\n' || c == '\r' ? c : ' ';
    }
    return result.append(text.substr(begin, endOfValue(text, begin) - begin));
}

} // namespace tarnly::client
