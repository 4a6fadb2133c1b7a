#pragma once

#include <atomic>
#include <boost/asio/any_io_executor.hpp>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyApp/OwnNavDatabase.hpp"
#include "TarnlyCore/CompanionHost.hpp"
#include "TarnlyCore/Protocol/CompanionStatus.hpp"
#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Guarded.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/Phrase.hpp"
#include "TarnlyPlatform/Base/TaskGroup.hpp"
#include "TarnlyPlatform/Base/WorkerPool.hpp"
#include "TarnlyXPlane/FileLooks.hpp"

namespace tarnly {

/// Provides a running companion with a navigation database: the one that a person names, else the one that it
/// makes of the simulator's own data, on a thread of low priority that holds up neither start nor end.
///
/// Belongs to the network thread, except for what says otherwise.
class NavDatabaseKeeper {
  public:
    using Path = std::filesystem::path;

    struct Means {
        /// Called on a worker, for what a person names. Null without a path, and for a database that cannot
        /// be opened, of which it tells.
        std::function<std::shared_ptr<NavDatabase>(const std::optional<Path>& path)> openNamed;
        /// Likewise, for our own. Throws `NavDatabaseError`.
        std::function<std::shared_ptr<NavDatabase>(const Path& path)> openOwn;
        /// Told what a person should know. From the network thread.
        std::function<void(const Phrase& text)> tell;
        /// Of the simulator's installer; empty where there can be none.
        Path note;
        /// To be made of the simulator's data.
        Path ownFile;
    };

    /// What is given by reference outlives all that runs on `executor`.
    NavDatabaseKeeper(const boost::asio::any_io_executor& executor, WorkerPool& workers, Clock& clock,
                      CompanionHost& host, Means means);

    NavDatabaseKeeper(const NavDatabaseKeeper&) = delete;
    NavDatabaseKeeper& operator=(const NavDatabaseKeeper&) = delete;
    ~NavDatabaseKeeper() { making_->isWanted = false; }

    /// To be called once: the host has opened `named` already.
    void start(const std::optional<Path>& named);

    /// From now on; absent: our own, once it is made. One call at a time.
    Task<> use(std::optional<Path> named);

    /// Looks whether the simulator's data have changed, where they are in use.
    void lookAgain();

    /// Harmless when repeated.
    void close();

    /// Adds what is in use at present.
    void addTo(SourcesStatus& sources) const;

    /// In whole sentences. From any thread.
    std::vector<Phrase> warnings() const { return warnings_.copy(); }

  private:
    Task<> lookAtNamed(Path path);
    Task<> provideOwn();
    Task<> refreshOwn();
    Task<> install(std::shared_ptr<NavDatabase> database);
    void setWarnings(std::vector<Phrase> warnings);
    void expect(bool isExpected);

    OnOneThread thread_;
    WorkerPool& workers_;
    Clock& clock_;
    CompanionHost& host_;
    const Means means_;
    std::optional<Path> named_;
    /// In use, if `named_` is not.
    std::optional<Path> own_;
    std::string cycle_;
    bool isRefreshing_ = false;
    Guarded<std::vector<Phrase>> warnings_;
    /// What the threads that make one ask, and tell.
    struct Making {
        std::atomic<bool> isWanted = true;
        std::atomic<bool> isUnderWay = false;
    };
    const std::shared_ptr<Making> making_ = std::make_shared<Making>();
    FileLooks<NavDatabaseFile> looks_;
    // depends-on: workers_, clock_, host_, looks_
    TaskGroup tasks_;
};

} // namespace tarnly
