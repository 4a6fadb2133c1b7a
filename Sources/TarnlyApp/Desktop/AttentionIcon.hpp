#pragma once

#include <QIcon>
#include <QString>

#include "TarnlyCore/Protocol/CompanionStatus.hpp"

namespace tarnly {

/// Whether the simulator is not as a lesson needs it, so that somebody should look.
bool needsAttention(const CompanionStatus& status);

/// The icon with a mark in its corner, in all of its sizes: a disc with a stroke and a dot in it, and a gap
/// around it, to be told without colours too.
QIcon withAttentionMark(const QIcon& icon);

/// What the icon in the tray tells when the pointer rests on it.
QString toolTipOf(const CompanionStatus& status);

} // namespace tarnly
