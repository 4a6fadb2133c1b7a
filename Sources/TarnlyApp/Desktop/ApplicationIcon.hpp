#pragma once

#include <QIcon>

namespace tarnly {

/// The application's icon in all its sizes.
QIcon applicationIcon();

} // namespace tarnly
