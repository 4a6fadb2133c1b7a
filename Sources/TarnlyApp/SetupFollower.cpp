#include "TarnlyApp/SetupFollower.hpp"

#include <boost/asio/cancellation_type.hpp>
#include <boost/asio/this_coro.hpp>
#include <exception>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Base/WithinLimit.hpp"
#include "TarnlyXPlane/SimulatorFolder.hpp"

namespace tarnly {
namespace {

/// A disk that takes longer than that does not answer.
constexpr std::chrono::seconds lookLimit{5};

/// Between two looks whether the cause of a warning has gone.
constexpr std::chrono::seconds lookPause{1};

std::string installerNote() {
    try {
        return simulatorInstallerNote().string();
    } catch (const std::runtime_error&) {
        return {};
    }
}

Phrase missingText(const std::string& folder) {
    return Phrase::of(
        "The folder of saved situations, %1, is not there, so none is listed. Save a situation in the "
        "simulator, or name another folder in the settings.",
        printable(folder));
}

Phrase silentText(const std::string& path) {
    return Phrase::of(
        "The disk does not answer that has %1, by which the folder of saved situations is found. Mend that, "
        "or name another folder in the settings.",
        printable(path));
}

NavDatabaseKeeper::Means completed(NavDatabaseKeeper::Means databases, const std::string& note,
                                   const SetupFollower::Tell& tell) {
    databases.note = note;
    databases.tell = tell;
    return databases;
}

} // namespace

SetupFollower::SetupFollower(const boost::asio::any_io_executor& executor, WorkerPool& workers, Clock& clock,
                             CompanionHost& host, ReconnectingBackend& backend, CompanionSetup setup,
                             NavDatabaseKeeper::Means databases, Tell tell)
    : clock_(clock),
      host_(host),
      backend_(backend),
      tell_(std::move(tell)),
      note_(installerNote()),
      simulator_(setup.simulator),
      present_(setup),
      wanted_(std::move(setup)),
      changed_(executor),
      looks_(executor,
             [note = note_](const std::string& path) { return path == note ? findBy(note) : lookAt(path); }),
      navDatabase_(executor, workers, clock, host, completed(std::move(databases), note_, tell_)),
      tasks_(executor) {}

void SetupFollower::start() {
    thread_.check();
    navDatabase_.start(present_.navigationDatabase);
    tasks_.spawn(keepInStep(), [this](const std::exception_ptr&) {
        tell_(
            Phrase::of("Changed settings are not followed any more, for lack of memory. Start Tarnly anew."));
    });
}

void SetupFollower::follow(CompanionSetup setup) {
    thread_.check();
    wanted_ = std::move(setup);
    changed_.notifyAll();
}

void SetupFollower::close() {
    tasks_.cancel();
    looks_.close();
    navDatabase_.close();
}

std::vector<Phrase> SetupFollower::warnings() const {
    auto all = navDatabase_.warnings();
    if (auto warning = situationsWarning_.copy()) all.push_back(std::move(*warning));
    return all;
}

SourcesStatus SetupFollower::sources() const {
    thread_.check();
    SourcesStatus sources;
    sources.simulatorHost = wellFormedUtf8(simulator_.host);
    sources.simulatorPort = simulator_.port;
    if (situationsInUse_) sources.situations = wellFormedUtf8(*situationsInUse_);
    navDatabase_.addTo(sources);
    return sources;
}

Task<> SetupFollower::keepInStep() {
    co_await findSituations();
    for (;;) {
        const auto cancellation = co_await boost::asio::this_coro::cancellation_state;
        if (cancellation.cancelled() != boost::asio::cancellation_type::none) co_return;
        if (std::exchange(isLookWanted_, false)) {
            co_await lookForSituations();
        } else if (wanted_ == present_) {
            co_await changed_.wait();
        } else {
            co_await applyOrTell();
        }
    }
}

Task<> SetupFollower::applyOrTell() {
    std::string problem;
    try {
        auto next = wanted_;
        co_await apply(std::move(next));
    } catch (const std::exception& error) {
        problem = error.what();
    }
    const auto cancellation = co_await boost::asio::this_coro::cancellation_state;
    const bool isEnding = cancellation.cancelled() != boost::asio::cancellation_type::none;
    if (!problem.empty() && !isEnding)
        tell_(Phrase::of("A changed setting is not followed: %1. Start Tarnly anew to have it.", problem));
}

Task<> SetupFollower::apply(CompanionSetup next) {
    const auto before = std::exchange(present_, std::move(next));
    if (present_.allowedOrigins != before.allowedOrigins) host_.allowOrigins(present_.allowedOrigins);
    if (present_.name != before.name) {
        auto name = present_.name;
        co_await host_.publishAs(std::move(name));
    }
    if (present_.situationsFolder != before.situationsFolder) {
        co_await findSituations();
    }
    if (present_.navigationDatabase != before.navigationDatabase) {
        auto named = present_.navigationDatabase;
        co_await navDatabase_.use(std::move(named));
    }
}

/// Also where the disk does not answer, a folder that is named is used: who lists it is told.
Task<> SetupFollower::findSituations() {
    const auto named = present_.situationsFolder;
    useSituations(named ? std::optional(named->string()) : std::nullopt);
    warnOfSituations(std::nullopt);
    co_await lookForSituations();
}

Task<> SetupFollower::lookForSituations() {
    auto path = present_.situationsFolder ? present_.situationsFolder->string() : note_;
    if (path.empty()) co_return;
    auto look = looks_.at(path);
    const auto seen = co_await withinLimit(clock_, lookLimit, std::move(look));
    if (!seen) {
        warnOfSituations(silentText(path));
        co_return;
    }
    if (seen->folder) useSituations(seen->folder);
    const bool isMissing = seen->folder && !seen->exists;
    warnOfSituations(isMissing ? std::optional(missingText(*seen->folder)) : std::nullopt);
}

void SetupFollower::lookAgain() {
    thread_.check();
    const auto now = clock_.now();
    const bool isTooSoon = lookedAgainAt_ && now - *lookedAgainAt_ < lookPause;
    if (isTooSoon || !situationsWarning_.copy()) return;
    lookedAgainAt_ = now;
    isLookWanted_ = true;
    changed_.notifyAll();
}

void SetupFollower::useSituations(std::optional<std::string> folder) {
    situationsInUse_ = folder;
    backend_.setSituationsDirectory(std::move(folder));
}

SetupFollower::Situations SetupFollower::findBy(const std::string& note) {
    const auto simulator = findSimulatorFolder(note);
    return simulator ? lookAt(situationsFolderOf(*simulator).string()) : Situations{};
}

SetupFollower::Situations SetupFollower::lookAt(const std::string& folder) {
    std::error_code isNone;
    return {folder, std::filesystem::is_directory(folder, isNone)};
}

void SetupFollower::warnOfSituations(std::optional<Phrase> warning) {
    const auto before =
        situationsWarning_.with([&](auto& present) { return std::exchange(present, warning); });
    if (warning && warning != before) tell_(*warning);
}

} // namespace tarnly
