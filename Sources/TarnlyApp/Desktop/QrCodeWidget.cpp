#include "TarnlyApp/Desktop/QrCodeWidget.hpp"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QPainter>
#include <algorithm>

namespace tarnly {
namespace {

constexpr int sideLength = 200;

void paintModules(QPainter& painter, const QrCode& code) {
    for (int y = 0; y < code.size(); ++y) {
        for (int x = 0; x < code.size(); ++x) {
            if (code.isDark(x, y)) painter.fillRect(x, y, 1, 1, Qt::black);
        }
    }
}

/// A picture, to assistive technology.
QAccessibleInterface* accessibleCode(const QString& /*className*/, QObject* object) {
    auto* widget = qobject_cast<QrCodeWidget*>(object);
    return widget == nullptr ? nullptr : new QAccessibleWidget(widget, QAccessible::Graphic);
}

} // namespace

QrCodeWidget::QrCodeWidget() {
    [[maybe_unused]] static const bool isInstalled = (QAccessible::installFactory(accessibleCode), true);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAccessibleDescription(tr("For the camera of the device that is to connect."));
}

void QrCodeWidget::showCode(const std::string& text) {
    code_ = QrCode::of(text);
    setAccessibleName(code_ ? tr("QR code of %1").arg(QString::fromStdString(text)) : QString());
    update();
}

QSize QrCodeWidget::sizeHint() const { return {sideLength, sideLength}; }

// A module is a whole number of the screen's dots wide: blurred edges make a code hard to read.
void QrCodeWidget::paintEvent(QPaintEvent* /*event*/) {
    if (!code_) return;
    QPainter painter(this);
    painter.fillRect(rect(), Qt::white);
    const double dots = devicePixelRatioF();
    const int available = static_cast<int>(std::min(width(), height()) * dots);
    const int module = std::max(1, available / (code_->size() + 2 * QrCode::quietZone));
    const int margin = (available - module * code_->size()) / 2;
    painter.scale(1 / dots, 1 / dots);
    painter.translate(margin, margin);
    painter.scale(module, module);
    paintModules(painter, *code_);
}

} // namespace tarnly
