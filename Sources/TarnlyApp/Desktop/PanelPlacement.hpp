#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

namespace tarnly {

/// Where the top left corner of a panel of this size goes, so that it stands beside its icon and whole on the
/// screen: below an icon in the upper half, else above it. `screen` is what the desktop leaves to windows.
QPoint placeBeside(const QRect& icon, const QSize& panel, const QRect& screen);

} // namespace tarnly
