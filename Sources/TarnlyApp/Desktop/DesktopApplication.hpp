#pragma once

#include <QObject>
#include <filesystem>

#include "TarnlyApp/CompanionOptions.hpp"
#include "TarnlyApp/DeskMemory.hpp"
#include "TarnlyApp/Desktop/AddressesWindow.hpp"
#include "TarnlyApp/Desktop/ColorScheme.hpp"
#include "TarnlyApp/Desktop/CompanionThread.hpp"
#include "TarnlyApp/Desktop/DisplayLoss.hpp"
#include "TarnlyApp/Desktop/Panel.hpp"
#include "TarnlyApp/Desktop/QuitSignals.hpp"
#include "TarnlyApp/Desktop/ReachWindow.hpp"
#include "TarnlyApp/Desktop/RuntimeModel.hpp"
#include "TarnlyApp/Desktop/SettingsWindow.hpp"
#include "TarnlyApp/Desktop/TrayIcon.hpp"
#include "TarnlyApp/EndWatch.hpp"
#include "TarnlyApp/Notices.hpp"
#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"

namespace tarnly {

/// The desktop application: its companion and its windows, wired together. Holds no logic beyond that.
///
/// Made by `main`, once there is a QApplication; belongs to the main thread.
class DesktopApplication : public QObject {
    Q_OBJECT

  public:
    /// `endWatch` outlives it. Throws `std::runtime_error` for a person without a home folder, and when
    /// another companion has the data folder.
    DesktopApplication(const CompanionOptions& options, EndWatch& endWatch);

    /// Starts the companion and serves the windows until the person quits; returns the exit status.
    int run();

    /// As a second start of the program asks for, with what the desktop gave to that.
    void showPanel(const QByteArray& activationToken);

  private:
    void finishLesson();
    void tellNews();
    void introduce();
    void remember();

    OnOneThread thread_;
    EndWatch& endWatch_;
    const SystemClock clock_;
    const std::filesystem::path dataFolder_;
    const bool startsInBackground_;
    CompanionThread companion_;
    // depends-on: companion_, which has the data folder
    DeskMemory memory_;
    // depends-on: clock_, memory_
    Notices notices_;
    ColorScheme colorScheme_;
    QuitSignals quitSignals_;
    // depends-on: companion_
    RuntimeModel runtime_;
    // depends-on: runtime_
    DeskMemoryKeeper memoryKeeper_;
    Panel panel_;
    AddressesWindow addresses_;
    ReachWindow reach_;
    // depends-on: companion_
    SettingsWindow settings_;
    // depends-on: panel_
    TrayIcon trayIcon_;
    // depends-on: companion_
    DisplayLoss displayLoss_;
};

} // namespace tarnly
