#pragma once

#include <QWidget>

#include "TarnlyApp/Desktop/RuntimeModel.hpp"

class QPushButton;

namespace tarnly {

class CaptionLabel;

/// The panel of the tray icon: what the companion is doing, and the ways to the settings and to the end.
class Panel : public QWidget {
    Q_OBJECT

  public:
    explicit Panel(RuntimeModel& runtime);

  signals:
    void addressesRequested();
    void settingsRequested();
    void quitRequested();

  protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void showStatus();
    void showActivity();
    void contentChanged();
    void hideIfPopup();
    bool isOrdinaryWindow() const;

    RuntimeModel& runtime_;
    // Owned by this widget, as Qt does it
    CaptionLabel* const status_;
    CaptionLabel* const warnings_;
    CaptionLabel* const simulator_;
    CaptionLabel* const clients_;
    CaptionLabel* const recording_;
    QPushButton* const addresses_;
};

} // namespace tarnly
