#pragma once

#include <QIcon>
#include <QString>

#include "TarnlyApp/Desktop/TrayMark.hpp"
#include "TarnlyCore/Protocol/CompanionStatus.hpp"

namespace tarnly {

/// Whether something is not as a lesson needs it, so that somebody should look: the simulator, how clients
/// find the companion, or the file of the recording.
bool needsAttention(const CompanionStatus& status);

/// `hasFailed`: the companion could not start, and has no status.
TrayLook lookOf(const CompanionStatus& status, bool hasFailed);

/// The icon with that look, in all of its sizes. Trouble is a bright triangle with a dark stroke and a dot in
/// it, a recording a dark disc with a bright dot in its middle, both in the lower corner and with a gap
/// around them: the three are told from each other without colours, and by their outlines alone.
QIcon withLook(const QIcon& icon, TrayLook look);

/// What the icon in the tray tells when the pointer rests on it.
QString toolTipOf(const CompanionStatus& status);

} // namespace tarnly
