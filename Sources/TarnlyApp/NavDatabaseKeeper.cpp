#include "TarnlyApp/NavDatabaseKeeper.hpp"

#include <chrono>
#include <exception>
#include <utility>

#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Base/ThreadPriority.hpp"
#include "TarnlyPlatform/Base/WithinLimit.hpp"

namespace tarnly {
namespace {

/// For all data of the world a minute is plenty, whatever the disk.
constexpr std::chrono::minutes buildLimit{5};
constexpr std::chrono::seconds fileLookLimit{5};

Phrase lateText(const std::string& file) {
    return Phrase::of(
        "The navigation database %1 is not made within five minutes. See that the simulator's disk and this "
        "one answer, then start Tarnly anew, or name a database in the settings.",
        printable(file));
}

Phrase unusableText(const std::string& problem) {
    return Phrase::of(
        "No navigation database can be made of the simulator's data: %1. Mend that and start Tarnly anew, or "
        "name a database in the settings.",
        problem);
}

} // namespace

NavDatabaseKeeper::NavDatabaseKeeper(const boost::asio::any_io_executor& executor, WorkerPool& workers,
                                     Clock& clock, CompanionHost& host, Means means)
    : workers_(workers),
      clock_(clock),
      host_(host),
      means_(std::move(means)),
      looks_(executor,
             [note = means_.note, own = means_.ownFile, making = making_](const std::string& path) {
                 if (path != own) return lookAtNavDatabase(path);
                 yieldToOtherThreads();
                 return refreshOwnNavDatabase(
                     note, own, [&] { return making->isWanted.load(); }, [&] { making->isUnderWay = true; });
             }),
      tasks_(executor) {}

void NavDatabaseKeeper::start(const std::optional<Path>& named) {
    thread_.check();
    named_ = named;
    if (named_) {
        tasks_.spawn(lookAtNamed(*named_), dropFailure);
    } else {
        tasks_.spawn(provideOwn(), dropFailure);
    }
}

Task<> NavDatabaseKeeper::use(std::optional<Path> named) {
    thread_.check();
    named_ = std::move(named);
    own_.reset();
    cycle_.clear();
    setWarnings({});
    auto open = [open = means_.openNamed, path = named_] { return open(path); };
    auto opened = co_await workers_.run(std::move(open));
    co_await install(std::move(opened));
    start(named_);
}

void NavDatabaseKeeper::lookAgain() {
    thread_.check();
    if (own_ && !isRefreshing_) tasks_.spawn(provideOwn(), dropFailure);
}

void NavDatabaseKeeper::close() {
    making_->isWanted = false;
    tasks_.cancel();
    looks_.close();
}

void NavDatabaseKeeper::addTo(SourcesStatus& sources) const {
    thread_.check();
    const auto& inUse = named_ ? named_ : own_;
    if (inUse) sources.navDatabase = wellFormedUtf8(inUse->string());
    if (!cycle_.empty()) sources.navCycle = wellFormedUtf8(cycle_);
    if (making_->isUnderWay && !named_) sources.isNavDatabaseInTheMaking = true;
}

Task<> NavDatabaseKeeper::lookAtNamed(Path path) {
    auto look = looks_.at(path.string());
    const auto seen = co_await withinLimit(clock_, fileLookLimit, std::move(look));
    if (seen && named_ == path) cycle_ = seen->cycle;
}

/// What goes wrong here is told, and costs the fixes.
Task<> NavDatabaseKeeper::provideOwn() {
    if (means_.note.empty()) co_return;
    std::string problem;
    expect(true);
    try {
        co_await refreshOwn();
    } catch (const std::exception& error) {
        problem = error.what();
    }
    expect(false);
    making_->isUnderWay = false;
    if (!problem.empty() && making_->isWanted && !named_) setWarnings({unusableText(problem)});
}

Task<> NavDatabaseKeeper::refreshOwn() {
    auto look = looks_.at(means_.ownFile.string());
    const auto made = co_await withinLimit(clock_, buildLimit, std::move(look));
    if (named_) co_return; // meanwhile
    if (!made) {
        setWarnings({lateText(means_.ownFile.string())});
        co_return;
    }
    for (const auto& remark : made->remarks)
        means_.tell(Phrase::verbatim(remark));
    setWarnings(made->warnings);
    if (!made->path) co_return;
    auto open = [open = means_.openOwn, path = *made->path] { return open(path); };
    auto opened = co_await workers_.run(std::move(open));
    if (named_) co_return;
    own_ = made->path;
    cycle_ = made->cycle;
    co_await install(std::move(opened));
}

Task<> NavDatabaseKeeper::install(std::shared_ptr<NavDatabase> database) {
    // The files of the one before may be on a disk that hangs.
    auto close = [before = host_.useNavDatabase(std::move(database))]() mutable { before.reset(); };
    co_await workers_.run(std::move(close));
}

void NavDatabaseKeeper::setWarnings(std::vector<Phrase> warnings) {
    const auto before = warnings_.with([&](auto& present) { return std::exchange(present, warnings); });
    if (warnings == before) return;
    for (const auto& warning : warnings)
        means_.tell(warning);
}

void NavDatabaseKeeper::expect(bool isExpected) {
    isRefreshing_ = isExpected;
    host_.expectNavDatabase(isExpected);
}

} // namespace tarnly
