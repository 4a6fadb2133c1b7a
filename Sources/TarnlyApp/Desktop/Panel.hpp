#pragma once

#include <QUrl>
#include <QWidget>
#include <filesystem>
#include <optional>
#include <vector>

#include "TarnlyApp/Desktop/RuntimeModel.hpp"
#include "TarnlyPlatform/Files/Folders.hpp"

class QPushButton;

namespace tarnly {

class CaptionLabel;
class ClientList;

/// The panel of the tray icon: whether clients find the companion, whether the simulator is there, who is
/// connected and what is recorded, each with its cure where something is wrong; and the ways to the settings
/// and to the end.
///
/// Follows the companion once a second at most, and only while it is shown.
class Panel : public QWidget {
    Q_OBJECT

  public:
    /// `troubleshooting` is the page to which a button leads while something is wrong; without it there is
    /// none.
    explicit Panel(RuntimeModel& runtime, std::optional<std::filesystem::path> troubleshooting =
                                              installedDocument("troubleshooting.md"));

  signals:
    void addressesRequested();
    void reachTestRequested();
    void settingsRequested();
    void quitRequested();
    void pageRequested(const QUrl& page);

  protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void showStatus();
    void showActivity();
    void showIfSeen();
    void contentChanged();
    void hideIfPopup();
    bool isOrdinaryWindow() const;
    std::vector<const CaptionLabel*> captions() const;

    RuntimeModel& runtime_;
    // Owned by this widget, as Qt does it
    CaptionLabel* const warnings_;
    CaptionLabel* const status_;
    CaptionLabel* const publication_;
    QPushButton* const addresses_;
    QPushButton* const reach_;
    CaptionLabel* const simulator_;
    CaptionLabel* const clients_;
    ClientList* const list_;
    CaptionLabel* const recording_;
    CaptionLabel* const samples_;
    QPushButton* const troubleshooting_;
    const std::optional<std::filesystem::path> troubleshootingPage_;
};

} // namespace tarnly
