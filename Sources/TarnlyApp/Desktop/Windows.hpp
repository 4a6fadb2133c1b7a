#pragma once

#include <QWidget>

namespace tarnly {

/// Gives a window this width and the height that its content takes then. Needed anew when the content, or the
/// style, has changed.
void fitContent(QWidget& window, int width);

/// Shows a window before all others, also when it was minimized.
void bringUp(QWidget& window);

} // namespace tarnly
