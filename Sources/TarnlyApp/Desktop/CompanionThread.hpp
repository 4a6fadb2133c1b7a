#pragma once

#include <optional>
#include <thread>

#include "TarnlyApp/CompanionOptions.hpp"
#include "TarnlyApp/CompanionRuntime.hpp"
#include "TarnlyApp/Settings.hpp"

namespace tarnly {

/// Owns what the application has besides its windows: the settings, and the runtime with its network thread.
///
/// Belongs to the main thread.
class AppDelegate {
  public:
    /// Loads the settings. Throws `std::runtime_error` for a person without a home folder.
    explicit AppDelegate(CompanionOptions options);

    AppDelegate(const AppDelegate&) = delete;
    AppDelegate& operator=(const AppDelegate&) = delete;

    /// Ends the network thread.
    ~AppDelegate();

    SettingsStore& settingsStore() { return settingsStore_; }

    /// Made at the first call.
    CompanionRuntime& runtime();

    /// Lets the application live without windows, and starts the companion.
    void applicationDidFinishLaunching();

    /// Ends the companion; a moment later it calls nobody any more. Harmless when repeated.
    void applicationWillTerminate();

  private:
    const CompanionOptions options_;
    SettingsStore settingsStore_;
    // depends-on: settingsStore_
    std::optional<CompanionRuntime> runtime_;
    // depends-on: runtime_
    std::thread network_;
};

} // namespace tarnly
