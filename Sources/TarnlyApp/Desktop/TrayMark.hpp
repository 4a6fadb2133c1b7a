#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>

namespace tarnly {

/// What the icon in the tray tells at a glance. What is further behind outranks what is before it.
enum class TrayLook { calm, recording, trouble };

struct MarkColours {
    QColor body;
    /// Of what stands in the body; where it is not valid, that is cut out.
    QColor sign;
};

/// Puts the mark of a look into the lower corner of a picture, with a gap around it: a triangle with a stroke
/// and a dot in it for trouble, a disc with a dot in its middle for a recording, nothing else. They are told
/// from each other by their outlines alone.
void paintMark(QPixmap& picture, TrayLook look, const MarkColours& trouble, const MarkColours& recording);

/// The whole icon in one colour, as desktops paint their own ones: the aircraft and the mark. In all sizes
/// that trays have.
QIcon symbolicIcon(TrayLook look, const QColor& colour);

} // namespace tarnly
