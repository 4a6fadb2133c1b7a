#include "TarnlyApp/Desktop/Windows.hpp"

#include <QLayout>

namespace tarnly {

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
