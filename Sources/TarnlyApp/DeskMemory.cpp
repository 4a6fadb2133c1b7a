#include "TarnlyApp/DeskMemory.hpp"

#include <exception>
#include <optional>
#include <system_error>
#include <utility>

#include "TarnlyApp/SettingsFile.hpp"
#include "TarnlyPlatform/Base/Guarded.hpp"
#include "TarnlyPlatform/Files/PrivateFiles.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly {
namespace {

std::filesystem::path fileIn(const std::filesystem::path& dataFolder) { return dataFolder / "desktop.json"; }

} // namespace

DeskMemory DeskMemory::in(const std::filesystem::path& dataFolder) {
    try {
        if (const auto text = readPrivateFile(fileIn(dataFolder)))
            return decodeJson<DeskMemory>(parseJson(*text));
    } catch (const JsonError&) {
        // Then it is not known.
    }
    DeskMemory memory;
    std::error_code ignored;
    memory.isIntroduced = std::filesystem::exists(AppSettings::fileIn(dataFolder), ignored);
    return memory;
}

void DeskMemory::keepIn(const std::filesystem::path& dataFolder) const {
    try {
        replaceFile(fileIn(dataFolder), encodeJson(*this), Lasting::no);
    } catch (const std::exception&) {
        // No lesson depends on it.
    }
}

struct DeskMemoryKeeper::Room {
    struct Waiting {
        std::optional<DeskMemory> next;
        bool isSaving = false;
    };

    explicit Room(std::filesystem::path dataFolder) : folder(std::move(dataFolder)) {}

    void hand(DeskMemory memory) {
        waiting.with([&](Waiting& present) { present.next = std::move(memory); });
    }

    /// Nothing while another worker saves, who takes the next one as well.
    std::optional<DeskMemory> begin() {
        return waiting.with([](Waiting& present) {
            if (present.isSaving) return std::optional<DeskMemory>();
            present.isSaving = present.next.has_value();
            return std::exchange(present.next, std::nullopt);
        });
    }

    void saveAll() {
        while (const auto memory = begin()) {
            memory->keepIn(folder);
            waiting.with([](Waiting& present) { present.isSaving = false; });
        }
    }

    const std::filesystem::path folder;
    Guarded<Waiting> waiting;
};

DeskMemoryKeeper::DeskMemoryKeeper(std::filesystem::path dataFolder, DoAside doAside)
    : doAside_(std::move(doAside)), room_(std::make_shared<Room>(std::move(dataFolder))) {}

void DeskMemoryKeeper::keep(DeskMemory memory) {
    room_->hand(std::move(memory));
    doAside_([room = room_] { room->saveAll(); });
}

} // namespace tarnly
