#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyApp/CompanionSetup.hpp"
#include "TarnlyApp/NavDatabaseKeeper.hpp"
#include "TarnlyCore/CompanionHost.hpp"
#include "TarnlyCore/Protocol/CompanionStatus.hpp"
#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Event.hpp"
#include "TarnlyPlatform/Base/Guarded.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/Phrase.hpp"
#include "TarnlyPlatform/Base/TaskGroup.hpp"
#include "TarnlyPlatform/Base/WorkerPool.hpp"
#include "TarnlyXPlane/FileLooks.hpp"
#include "TarnlyXPlane/ReconnectingBackend.hpp"

namespace tarnly {

/// Keeps a running companion in step with its settings: the name under which it is published, the origins of
/// web pages, the folder of the saved situations, which is looked for where nobody names it, and the
/// navigation database. Address and port hold for a whole run.
///
/// Belongs to the network thread, except for what says otherwise.
class SetupFollower {
  public:
    /// Told what a person should know. From the network thread.
    using Tell = std::function<void(const Phrase& text)>;

    /// `host` and `backend` go by `setup` already, but for a folder of situations and a navigation database
    /// that nobody names. `databases` needs no `note` and no `tell`. What is given by reference outlives all
    /// that runs on `executor`.
    SetupFollower(const boost::asio::any_io_executor& executor, WorkerPool& workers, Clock& clock,
                  CompanionHost& host, ReconnectingBackend& backend, CompanionSetup setup,
                  NavDatabaseKeeper::Means databases, Tell tell);

    SetupFollower(const SetupFollower&) = delete;
    SetupFollower& operator=(const SetupFollower&) = delete;

    /// To be called once, when the host listens.
    void start();

    /// As soon as what was asked for before is done. The last call counts.
    void follow(CompanionSetup setup);

    /// The simulator has begun anew, perhaps with other navigation data.
    void noteSimulator() { navDatabase_.lookAgain(); }

    /// Harmless when repeated.
    void close();

    /// What the companion draws upon at present.
    SourcesStatus sources() const;

    /// What is not as the present settings want it, in whole sentences. From any thread.
    std::vector<Phrase> warnings() const;

    /// Has it looked soon, and once a second at most, whether what it warns of is still so.
    void lookAgain();

  private:
    /// Of a look at the folder that is named, or of the search for one.
    struct Situations {
        /// Absent where none was found.
        std::optional<std::string> folder;
        bool exists = false;
    };

    static Situations lookAt(const std::string& folder);
    static Situations findBy(const std::string& note);
    Task<> keepInStep();
    Task<> applyOrTell();
    Task<> apply(CompanionSetup next);
    Task<> findSituations();
    Task<> lookForSituations();
    void useSituations(std::optional<std::string> folder);
    void warnOfSituations(std::optional<Phrase> warning);

    OnOneThread thread_;
    Clock& clock_;
    CompanionHost& host_;
    ReconnectingBackend& backend_;
    const Tell tell_;
    /// Of the simulator's installer; empty for a person without a home folder.
    const std::string note_;

    /// For the whole run.
    const Endpoint simulator_;
    /// What the companion goes by, and what it shall.
    CompanionSetup present_;
    CompanionSetup wanted_;
    Event changed_;
    FileLooks<Situations> looks_;
    /// As the backend has it.
    std::optional<std::string> situationsInUse_;
    Guarded<std::optional<Phrase>> situationsWarning_;
    bool isLookWanted_ = false;
    std::optional<Clock::TimePoint> lookedAgainAt_;
    NavDatabaseKeeper navDatabase_;
    // depends-on: clock_, host_, backend_, changed_, looks_, navDatabase_
    TaskGroup tasks_;
};

} // namespace tarnly
