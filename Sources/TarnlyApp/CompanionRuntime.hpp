#pragma once

#include <atomic>
#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/io_context.hpp>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyApp/CompanionOptions.hpp"
#include "TarnlyApp/CompanionSetup.hpp"
#include "TarnlyApp/Settings.hpp"
#include "TarnlyApp/SetupFollower.hpp"
#include "TarnlyApp/StatusFile.hpp"
#include "TarnlyApp/StatusReporter.hpp"
#include "TarnlyCore/CompanionHost.hpp"
#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Guarded.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/Phrase.hpp"
#include "TarnlyPlatform/Base/TaskGroup.hpp"
#include "TarnlyPlatform/Base/WorkerPool.hpp"
#include "TarnlyPlatform/Net/LocalSocket.hpp"
#include "TarnlyXPlane/ReconnectingBackend.hpp"

namespace tarnly {

/// Builds and starts the one companion of a program, tells what became of it and how it stands, also to other
/// programs, and hands on changes of the settings.
///
/// Belongs to the main thread, except for `run`, whose caller is the network thread while it lasts, and what
/// says otherwise.
class CompanionRuntime {
  public:
    enum class State { starting, listening, failed };

    /// Takes the store's `onPasswordChange` and `onSetupChange` for as long as it lives.
    CompanionRuntime(SettingsStore& settingsStore, CompanionOptions options);

    CompanionRuntime(const CompanionRuntime&) = delete;
    CompanionRuntime& operator=(const CompanionRuntime&) = delete;
    ~CompanionRuntime();

    /// Has the status tell for good what is not as it should be, in a whole sentence with the cure. To be
    /// called before `start`, which says it on standard error as well.
    void warn(Phrase sentence);

    /// Builds the companion and has it started by `run`. A failure becomes the status; the second call does
    /// nothing.
    void start();

    /// Serves until `end`, then gives the last answers a moment to leave.
    void run();

    /// From any thread, also before `run`.
    void end();

    /// After `run`: waits until the disk has the recordings, as destruction does.
    void finishRecordings() {
        if (host_) host_->recording().finish();
    }

    /// "Starting…", then how the companion can be reached at present, or why it failed. From any thread.
    Phrase statusText() const;
    State state() const { return state_; }

    /// The port on which clients are accepted, once they are. From any thread.
    std::optional<std::uint16_t> port() const;

    /// Whether browsers are served the page on which a lesson is flown.
    bool hasLessonPage() const { return options_.hasLessonPage; }

    /// Called when the status has changed, by `start` or from the network thread. To be set before `start`.
    std::function<void()> onStatusChange;

    /// Called on the network thread when the simulator's stage has changed. To be set before `start`.
    std::function<void()> onStageChange;

    /// Called on the network thread when somebody has paired, left or been refused, and when a recording has
    /// begun, ended, or come into trouble or out of it. To be set before `start`.
    std::function<void()> onActivity;

    /// Ends the connection of a client, by its id in the status; one that has gone meanwhile is no error.
    void disconnectClient(std::int64_t id);

    /// Has `answer` called on the network thread, if that runs, with how the companion stands just now, but
    /// for its addresses.
    void askStatus(std::function<void(CompanionStatus)> answer);

    /// Whether a person looks at the status: a simulator that is away is then looked for more often.
    void setStatusShown(bool isShown);

    /// Has a worker do what must not hold up a window, if the network runs. What it throws is lost.
    void doAside(std::function<void()> work);

    boost::asio::any_io_executor executor() { return network_.get_executor(); }

  private:
    void build();
    std::shared_ptr<NavDatabase> openNavDatabase(const std::filesystem::path& path);
    std::shared_ptr<NavDatabase> openNavDatabaseOrTell(const std::optional<std::filesystem::path>& path);
    CompanionHost::Configuration hostConfiguration(const CompanionSetup& setup);
    /// Tells a person what has come up, now and in the status. From any thread.
    void notice(const Phrase& text);
    std::vector<Phrase> warnings() const;
    std::vector<Phrase> presentWarnings();
    void tellUnusualPort();
    void tellStatus();
    void openStatusSocket();
    Task<std::string> answerStatus();
    void makeStatusFile();
    Task<> close();
    Task<> closeStatusFile();
    Task<> tellHowItListens();
    Task<> workAside(std::function<void()> work);
    void announceListening();
    void announceFailure(const std::exception_ptr& failure);
    void announce(State state, Phrase text);
    void handOnPassword();
    void handOnSetup();

    OnOneThread thread_;
    SettingsStore& settingsStore_;
    const CompanionOptions options_;
    Guarded<Phrase> statusText_;
    std::atomic<State> state_{State::starting};
    bool started_ = false;
    /// Constant after the start.
    std::vector<Phrase> lastingWarnings_;
    /// What has come up since the start.
    Guarded<std::vector<Phrase>> noticed_;
    /// Of the one that the settings name.
    Guarded<std::optional<Phrase>> navDatabaseProblem_;
    /// The present one, which has warnings of its own.
    Guarded<std::weak_ptr<NavDatabase>> navDatabase_;
    /// Nobody has chosen one. Constant after the start.
    bool hasUsualPorts_ = false;

    SystemClock clock_;
    boost::asio::io_context network_{1};
    WorkerPool workers_;
    // depends-on: clock_, network_, workers_
    std::shared_ptr<ReconnectingBackend> backend_;
    // depends-on: clock_, network_, workers_, backend_
    std::optional<CompanionHost> host_;
    // depends-on: clock_, network_, workers_, backend_, host_
    std::optional<SetupFollower> follower_;
    // depends-on: clock_, backend_, host_
    std::optional<StatusReporter> reporter_;
    // depends-on: clock_, network_, workers_, reporter_
    std::optional<StatusFile> statusFile_;
    std::unique_ptr<LocalListener> statusSocket_;
    // depends-on: clock_, network_, host_
    TaskGroup publicationTask_{network_.get_executor()};
    // depends-on: network_, workers_
    TaskGroup asideTasks_{network_.get_executor()};
};

/// The line that tells the person how the companion can be reached.
///
/// `port` is shown as "?" when unknown; `publication` is absent when nothing is published. It names what the
/// DNS-SD daemon has confirmed, and claims nothing else.
Phrase listeningText(std::optional<std::uint16_t> port, const std::optional<PublicationState>& publication,
                     bool passwordRequired);

/// The line after a start that failed.
Phrase failureText(const Phrase& problem);

} // namespace tarnly
