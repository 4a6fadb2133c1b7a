#include "TarnlyApp/Desktop/PanelPlacement.hpp"

#include <algorithm>

namespace tarnly {
namespace {

/// A panel that is larger than the screen shows its beginning.
int within(int start, int length, int screenStart, int screenLength) {
    return std::max(screenStart, std::min(start, screenStart + screenLength - length));
}

} // namespace

QPoint placeBeside(const QRect& icon, const QSize& panel, const QRect& screen) {
    const bool isAtTop = icon.center().y() < screen.center().y();
    const int x = icon.center().x() - panel.width() / 2;
    const int y = isAtTop ? icon.bottom() + 1 : icon.top() - panel.height();
    return {within(x, panel.width(), screen.x(), screen.width()),
            within(y, panel.height(), screen.y(), screen.height())};
}

} // namespace tarnly
