#include "TarnlyApp/Desktop/ScrollingPart.hpp"

#include <QApplication>
#include <QLayout>

#include "TarnlyApp/Desktop/WindowParts.hpp"

namespace tarnly {
namespace {

/// Less would be no use.
constexpr int fewestLines = 4;

/// Between the content and the bar.
constexpr int besideBar = 6;

} // namespace

ScrollingPart::ScrollingPart(QWidget* content, const QString& name) {
    setAccessibleName(name);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWidgetResizable(true);
    content->layout()->setContentsMargins(0, 0, 0, 0);
    setWidget(content);
    // The window's own surface, in all colours.
    viewport()->setAutoFillBackground(false);
    content->setAutoFillBackground(false);
    setFocusPolicy(Qt::NoFocus);
    connect(qApp, &QApplication::focusChanged, this, &ScrollingPart::showFocus);
}

// The content that goes loses the focus, of which this is no more to hear.
ScrollingPart::~ScrollingPart() { disconnect(qApp, nullptr, this, nullptr); }

QSize ScrollingPart::sizeHint() const { return widget()->layout()->totalSizeHint(); }

QSize ScrollingPart::minimumSizeHint() const {
    return {widget()->layout()->totalMinimumSize().width(), fewestLines * fontMetrics().lineSpacing()};
}

int ScrollingPart::heightForWidth(int width) const { return contentHeight(*widget()->layout(), width); }

void ScrollingPart::resizeEvent(QResizeEvent* event) {
    QScrollArea::resizeEvent(event);
    const bool isScrolled = heightForWidth(viewport()->width()) > viewport()->height();
    setFocusPolicy(isScrolled ? Qt::StrongFocus : Qt::NoFocus);
    const int gap = isScrolled ? besideBar : 0;
    const bool isBarOnTheLeft = isRightToLeft();
    setViewportMargins(isBarOnTheLeft ? gap : 0, 0, isBarOnTheLeft ? 0 : gap, 0);
}

void ScrollingPart::showFocus(const QWidget* /*before*/, QWidget* now) {
    if (now != nullptr && widget()->isAncestorOf(now)) ensureWidgetVisible(now);
}

} // namespace tarnly
