#include "TarnlyApp/Desktop/WindowParts.hpp"

#include <QEvent>
#include <QGuiApplication>
#include <QLayout>
#include <QPalette>

namespace tarnly {
namespace {

using namespace Qt::StringLiterals;

constexpr double captionSize = 0.85;
constexpr float textShare = 0.7F;

/// A line has room for a word of this many letters.
constexpr qsizetype longestWord = 24;

float mixed(float text, float window) { return textShare * text + (1 - textShare) * window; }

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

QColor secondaryColour(const QPalette& palette) {
    const auto text = palette.color(QPalette::WindowText);
    const auto window = palette.color(QPalette::Window);
    return QColor::fromRgbF(mixed(text.redF(), window.redF()), mixed(text.greenF(), window.greenF()),
                            mixed(text.blueF(), window.blueF()));
}

HeadlineLabel::HeadlineLabel(const QString& text) : QLabel(text) {
    auto bold = font();
    bold.setBold(true);
    setFont(bold);
}

CaptionLabel::CaptionLabel(const QString& text) {
    auto smaller = font();
    smaller.setPointSizeF(smaller.pointSizeF() * captionSize);
    setFont(smaller);
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    adoptColour();
    showText(text);
}

void CaptionLabel::showText(const QString& text) {
    setAccessibleName(text);
    setText(breakable(text));
}

void CaptionLabel::changeEvent(QEvent* event) {
    QLabel::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) adoptColour();
}

void CaptionLabel::adoptColour() {
    const auto colour = secondaryColour(QGuiApplication::palette());
    if (palette().color(QPalette::WindowText) == colour) return;
    QPalette own;
    own.setColor(QPalette::WindowText, colour);
    setPalette(own);
}

void fitContent(QWidget& window, int width) {
    const auto* layout = window.layout();
    window.setFixedSize(width, layout->hasHeightForWidth() ? layout->totalHeightForWidth(width)
                                                           : layout->totalSizeHint().height());
}

void bringUp(QWidget& window) {
    if (window.isMinimized()) window.hide(); // under Wayland nothing else undoes that
    window.showNormal();
    window.raise();
    window.activateWindow();
}

} // namespace tarnly
