#pragma once

#include <QWidget>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tarnly {

/// A text as a square of dark and light modules that a camera reads. A plain value, for any thread.
class QrCode {
  public:
    /// `text` byte by byte, with about a seventh of the code repairable (error correction level M). Absent
    /// for an empty text and for one that does not fit.
    static std::optional<QrCode> of(const std::string& text);

    /// The modules along an edge, without the quiet zone of four light ones that it needs on each side.
    int size() const { return size_; }

    /// The module in column `x` and row `y`, from the upper left; light outside of the code.
    bool isDark(int x, int y) const;

  private:
    QrCode(int size, std::vector<bool> modules) : size_(size), modules_(std::move(modules)) {}

    int size_;
    /// Row by row.
    std::vector<bool> modules_;
};

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
