#include <algorithm>
#include <condition_variable>
#include <exception>
#include <fstream>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

#include "TarnlyClient/Doctor/Probes.hpp"
#include "TarnlyPlatform/Files/File.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly::client {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t largestSettings = std::size_t{1024} * 1024;
/// How every SQLite file begins.
constexpr std::string_view databaseMark("SQLite format 3\0", 16);

/// What the thread that looks and the one that waits share.
struct Look {
    std::mutex mutex;
    std::condition_variable isDone;
    std::optional<FolderProbe> result;
};

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
    const auto shared = std::make_shared<Look>();
    auto run = [shared, probe, look = std::move(look)]() mutable {
        try {
            look(probe);
        } catch (const std::exception& error) {
            probe.failure = reasonOf(error);
        }
        probe.isAnswered = true;
        const std::lock_guard lock(shared->mutex);
        shared->result = std::move(probe);
        shared->isDone.notify_all();
    };
    std::thread(std::move(run)).detach();
    std::unique_lock lock(shared->mutex);
    shared->isDone.wait_for(lock, limit, [&] { return shared->result.has_value(); });
    return shared->result.value_or(probe);
}

void lookAtSituations(FolderProbe& folder) {
    for (const auto& entry : fs::directory_iterator(folder.path)) {
        if (entry.path().extension() == ".sit") ++folder.count;
    }
}

void lookAtDatabase(FolderProbe& file) {
    if (!fs::exists(file.path)) {
        file.failure = "there is no such file";
        return;
    }
    std::string beginning(databaseMark.size(), ' ');
    if (fs::is_regular_file(file.path)) std::ifstream(file.path).read(beginning.data(), databaseMark.size());
    if (beginning != databaseMark) file.failure = "it is no SQLite database that can be read";
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

std::optional<std::string> passwordIn(const fs::path& settings) {
    const auto text = contentOf(settings, largestSettings);
    if (!text) return std::nullopt;
    try {
        return decodeJson<SavedPassword>(parseJson(withoutMark(*text))).password;
    } catch (const JsonError&) {
        return std::nullopt;
    }
}

} // namespace tarnly::client
