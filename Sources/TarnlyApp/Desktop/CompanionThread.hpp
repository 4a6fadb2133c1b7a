#pragma once

#include <thread>

#include "TarnlyApp/CompanionOptions.hpp"
#include "TarnlyApp/CompanionRuntime.hpp"
#include "TarnlyApp/DataFolderClaim.hpp"
#include "TarnlyApp/Settings.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"

namespace tarnly {

/// What the application has besides its windows: the settings, and the companion on a thread of its own.
///
/// Belongs to the main thread.
class CompanionThread {
  public:
    /// Claims the data folder, and loads the settings. Throws `std::runtime_error` for a person without a
    /// home folder, and when another companion has the folder.
    explicit CompanionThread(const CompanionOptions& options);

    CompanionThread(const CompanionThread&) = delete;
    CompanionThread& operator=(const CompanionThread&) = delete;

    /// As `stop`.
    ~CompanionThread();

    SettingsStore& settingsStore() { return settingsStore_; }

    CompanionRuntime& runtime() { return runtime_; }

    /// Starts the companion. To be called once.
    void start();

    /// Whether a client is paired or a recording runs, or nobody can tell just now. Waits for the network
    /// thread, for half a second at most.
    bool isInUse();

    /// Ends the companion; when it returns, nobody is called any more. Harmless when repeated.
    void stop();

  private:
    OnOneThread thread_;
    const DataFolderClaim claim_;
    // depends-on: claim_
    SettingsStore settingsStore_;
    // depends-on: settingsStore_
    CompanionRuntime runtime_;
    // depends-on: runtime_
    std::thread network_;
};

} // namespace tarnly
