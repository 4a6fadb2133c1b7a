#include "TarnlyApp/Desktop/WindowParts.hpp"

#include <QEvent>
#include <QGuiApplication>
#include <QLayout>
#include <QPalette>
#include <QScreen>
#include <QScrollArea>
#include <QStyle>
#include <algorithm>
#include <cmath>

#include "TarnlyApp/Desktop/ReadableColours.hpp"

namespace tarnly {
namespace {

using namespace Qt::StringLiterals;

constexpr double captionSize = 0.85;
/// Of capitals: small type puts them above the height that it tells.
constexpr int roomForAccents = 1;
constexpr float textShare = 0.7F;

/// A line has room for a word of this many letters.
constexpr qsizetype longestWord = 24;

float mixed(float text, float window) { return textShare * text + (1 - textShare) * window; }

/// Layouts hear of a changed text a moment later, and those around a scrolled part not at all.
void forgetSizes(QLayout& layout) {
    for (int i = 0; i < layout.count(); ++i) {
        auto* item = layout.itemAt(i);
        auto* widget = item->widget();
        const auto* scrolled = qobject_cast<QScrollArea*>(widget);
        auto* inner = scrolled != nullptr ? scrolled->widget()->layout()
                      : widget != nullptr ? widget->layout()
                                          : item->layout();
        if (inner != nullptr) forgetSizes(*inner);
        if (widget != nullptr) widget->updateGeometry();
    }
    layout.invalidate();
}

/// Before a window is on the screen nobody knows its frame.
constexpr int usualFrameHeight = 40;

int frameHeight(const QWidget& window) {
    if (window.windowType() != Qt::Window || window.windowFlags().testFlag(Qt::FramelessWindowHint)) return 0;
    const int known = window.frameGeometry().height() - window.height();
    return known > 0 ? known : usualFrameHeight;
}

/// What a size may be off by on a screen that is enlarged by one and a half, say: Qt rounds, and has window
/// managers resize in steps of whole dots.
int rounding(const QWidget& window) {
    const double dots = window.devicePixelRatioF();
    return dots == std::floor(dots) ? 0 : 1;
}

/// What the desktop leaves to windows.
int screenHeight(const QWidget& window) {
    return window.screen()->availableGeometry().height() - rounding(window);
}

/// Lets the lines of a long word, such as a host name, be broken between any two letters.
QString breakable(const QString& text) {
    QStringList words = text.split(u' ');
    for (auto& word : words) {
        if (word.size() <= longestWord) continue;
        QString pieces;
        for (const auto character : word) {
            pieces += character;
            if (!character.isHighSurrogate()) pieces += QChar(0x200B); // zero-width space
        }
        word = pieces;
    }
    return words.join(u' ');
}

} // namespace

QString shownAddress(const QString& address) {
    constexpr QChar leftToRightMark(0x200E);
    return QGuiApplication::isRightToLeft() ? address + leftToRightMark : address;
}

QColor secondaryColour(const QPalette& palette) {
    const auto text = palette.color(QPalette::WindowText);
    const auto window = palette.color(QPalette::Window);
    const auto between =
        QColor::fromRgbF(mixed(text.redF(), window.redF()), mixed(text.greenF(), window.greenF()),
                         mixed(text.blueF(), window.blueF()));
    return readableOn(window, between);
}

LeadingLabel::LeadingLabel(const QString& text) : QLabel(text) { adoptDirection(); }

void LeadingLabel::changeEvent(QEvent* event) {
    QLabel::changeEvent(event);
    if (event->type() == QEvent::LayoutDirectionChange) adoptDirection();
}

void LeadingLabel::adoptDirection() {
    const auto side = layoutDirection() == Qt::RightToLeft ? Qt::AlignRight : Qt::AlignLeft;
    setAlignment(side | Qt::AlignAbsolute | Qt::AlignVCenter);
}

HeadlineLabel::HeadlineLabel(const QString& text) : LeadingLabel(text) {
    auto bold = font();
    bold.setBold(true);
    setFont(bold);
}

CaptionLabel::CaptionLabel(const QString& text) : LeadingLabel({}) {
    auto smaller = font();
    smaller.setPointSizeF(smaller.pointSizeF() * captionSize);
    setFont(smaller);
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setContentsMargins(0, roomForAccents, 0, 0);
    adoptColour();
    showText(text);
}

void CaptionLabel::showText(const QString& text) {
    setAccessibleName(text);
    setText(breakable(text));
}

void CaptionLabel::changeEvent(QEvent* event) {
    LeadingLabel::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) adoptColour();
}

void CaptionLabel::adoptColour() {
    const auto colour = secondaryColour(QGuiApplication::palette());
    if (palette().color(QPalette::WindowText) == colour) return;
    QPalette own;
    own.setColor(QPalette::WindowText, colour);
    setPalette(own);
}

int contentHeight(const QLayout& layout, int width) {
    return layout.hasHeightForWidth() ? layout.totalHeightForWidth(width) : layout.totalSizeHint().height();
}

void fitContent(QWidget& window, int width) {
    forgetSizes(*window.layout());
    const int wanted = contentHeight(*window.layout(), width) + rounding(window);
    const int available = screenHeight(window) - frameHeight(window);
    const int scrollBar = wanted > available ? window.style()->pixelMetric(QStyle::PM_ScrollBarExtent) : 0;
    window.setFixedSize(width + scrollBar, std::min(wanted, available));
}

void bringUp(QWidget& window) {
    if (window.isMinimized()) window.hide(); // under Wayland nothing else undoes that
    window.showNormal();
    window.raise();
    window.activateWindow();
}

} // namespace tarnly
