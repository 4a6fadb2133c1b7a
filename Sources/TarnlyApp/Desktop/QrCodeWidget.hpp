#pragma once

#include <QWidget>
#include <optional>
#include <string>

#include "TarnlyPlatform/Qr/QrCode.hpp"

namespace tarnly {

/// Shows a text as a QR code, black on white in every theme: many readers know no other.
class QrCodeWidget : public QWidget {
    Q_OBJECT

  public:
    QrCodeWidget();

    /// An empty text shows nothing.
    void showCode(const std::string& text);

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    std::optional<QrCode> code_;
};

} // namespace tarnly
