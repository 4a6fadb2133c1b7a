#pragma once

#include <QTimer>
#include <QWidget>

#include "TarnlyApp/Desktop/RuntimeModel.hpp"

class QListWidget;
class QPushButton;

namespace tarnly {

class CaptionLabel;
class QrCodeWidget;

/// The addresses of the lesson page, at which a client that cannot find the companion by DNS-SD reaches it,
/// too: to copy, and as a QR code. They are looked up anew while the window is open.
class AddressesWindow : public QWidget {
    Q_OBJECT

  public:
    explicit AddressesWindow(RuntimeModel& runtime);

  protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    void lookUp();
    void showSelected();
    void copySelected();
    QString selected() const;

    RuntimeModel& runtime_;
    QTimer timer_;
    // Owned by this widget, as Qt does it
    CaptionLabel* const explanation_;
    QListWidget* const list_;
    QrCodeWidget* const code_;
    QPushButton* const copy_;
};

} // namespace tarnly
