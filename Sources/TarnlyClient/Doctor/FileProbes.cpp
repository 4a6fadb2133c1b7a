#include <exception>
#include <system_error>
#include <utility>

#include "TarnlyClient/Doctor/Probes.hpp"
#include "TarnlyCore/NavData/NavDatabaseProblem.hpp"
#include "TarnlyPlatform/Base/Aside.hpp"
#include "TarnlyPlatform/Files/File.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly::client {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t largestSettings = std::size_t{1024} * 1024;

/// "No such file or directory", of a failure of the file system without the paths in it.
std::string reasonOf(const std::exception& error) {
    const auto* system = dynamic_cast<const std::system_error*>(&error);
    return system != nullptr ? system->code().message() : error.what();
}

std::optional<std::string> contentOf(const fs::path& path, std::size_t limit) {
    return File::open(path, File::Mode::read).readUpTo(limit);
}

/// Windows' editors put one in front.
std::string_view withoutMark(std::string_view text) {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    return text.starts_with(mark) ? text.substr(mark.size()) : text;
}

struct SavedPassword {
    std::optional<std::string> password;

    static constexpr auto fields() { return std::tuple(field("password", &SavedPassword::password)); }
};

} // namespace

FolderProbe probeFolder(const fs::path& path, std::function<void(FolderProbe&)> look,
                        std::chrono::milliseconds limit) {
    FolderProbe probe;
    probe.path = path;
    const auto looked = aside(limit, [probe, look = std::move(look)]() mutable {
        try {
            look(probe);
        } catch (const std::exception& error) {
            probe.failure = reasonOf(error);
        }
        probe.isAnswered = true;
        return std::move(probe);
    });
    return looked.value_or(probe);
}

void lookAtSituations(FolderProbe& folder) {
    for (const auto& entry : fs::directory_iterator(folder.path)) {
        if (entry.path().extension() == ".sit") ++folder.count;
    }
}

void lookAtDatabase(FolderProbe& file) {
    file.failure = problemOfNavDatabase(file.path.string()).value_or("");
}

void lookAtDisk(FolderProbe& folder) {
    // The companion makes what is missing at its first recording.
    auto present = fs::absolute(folder.path);
    while (!fs::exists(present) && present.has_parent_path() && present != present.parent_path())
        present = present.parent_path();
    folder.freeSpace = fs::space(present).available;
    const auto trial = NewFile::beside(present / "trial");
    removeFile(trial.path);
}

void lookAtSettings(FolderProbe& file) {
    if (!fs::exists(fs::symlink_status(file.path))) return;
    file.count = 1;
    const auto text = contentOf(file.path, largestSettings);
    if (!text) {
        file.failure = "it cannot be opened";
        return;
    }
    try {
        if (!parseJson(withoutMark(*text)).is_object()) file.failure = "it is no JSON object";
    } catch (const JsonError& error) {
        file.failure = error.what();
    }
}

std::optional<std::string> passwordIn(const fs::path& settings, std::chrono::milliseconds limit) {
    const auto text = aside(limit, [settings] { return contentOf(settings, largestSettings); });
    if (!text || !*text) return std::nullopt;
    try {
        return decodeJson<SavedPassword>(parseJson(withoutMark(**text))).password;
    } catch (const JsonError&) {
        return std::nullopt;
    }
}

} // namespace tarnly::client
