#include "TarnlyApp/Desktop/FixedWidth.hpp"

#include <QLayout>

namespace tarnly {

void fitContent(QWidget& window, int width) {
    const auto* layout = window.layout();
    window.setFixedSize(width, layout->hasHeightForWidth() ? layout->totalHeightForWidth(width)
                                                           : layout->totalSizeHint().height());
}

} // namespace tarnly
