#pragma once

#include <QWidget>

#include "TarnlyApp/Settings.hpp"

namespace tarnly {

class CaptionLabel;

/// The settings window. Every edit goes straight to the store: there is nothing to confirm.
class SettingsWindow : public QWidget {
    Q_OBJECT

  public:
    explicit SettingsWindow(SettingsStore& store);

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    void changePassword(const QString& password);
    void showWhetherPasswordIsSet();

    SettingsStore& store_;
    CaptionLabel* const caption_; // owned by this widget, as Qt does it
};

} // namespace tarnly
