#pragma once

#include <QColor>
#include <QObject>
#include <QPalette>

class QWidget;

namespace tarnly {

/// What text needs, of WCAG 2 (1.4.3).
constexpr double readableContrast = 4.5;

/// (L1 + 0.05) / (L2 + 0.05), between 1 and 21, where L1 is the relative luminance of the lighter one and L2
/// that of the darker one, as https://www.w3.org/TR/WCAG21/#dfn-contrast-ratio has it. Both opaque.
double contrast(const QColor& one, const QColor& other);

/// The colour itself where it has this contrast to the surface, through which it may let some of that shine;
/// else one between it and black or white that has.
QColor readableOn(const QColor& surface, const QColor& colour, double wanted = readableContrast);

/// Of a desktop's colours those that have to be others for its texts to be readable, and no more: what is not
/// set remains the desktop's.
QPalette readableCorrections(const QPalette& palette);

/// Keeps the texts of a window readable in whatever colours the desktop has. Owned by the window, as Qt does
/// it.
class ReadableColours : public QObject {
    Q_OBJECT

  public:
    explicit ReadableColours(QWidget& window);

    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void adopt();

    QWidget& window_;
};

} // namespace tarnly
