#include "TarnlyApp/Desktop/TrayMark.hpp"

#include <QPainter>
#include <QPainterPath>
#include <QPen>
#include <QPointF>
#include <QPolygonF>
#include <QRectF>
#include <QTransform>
#include <algorithm>
#include <ranges>

namespace tarnly {
namespace {

// Shares of the icon's size.
constexpr double discShare = 0.6;
constexpr double triangleShare = 0.62;
constexpr double gapShare = 0.06;

// Shares of the triangle's size.
constexpr double strokeWidth = 0.16;
constexpr double strokeTop = 0.36;
constexpr double strokeHeight = 0.3;
constexpr double dotTop = 0.76;

constexpr double lampShare = 0.42;

constexpr int traySizes[] = {16, 22, 24, 32, 44, 48, 64};
/// The aircraft's length, in the units of its drawing, and what is left free around it.
constexpr double aircraftLength = 53;
constexpr double aircraftShare = 1.06;

/// A square in the lower corner.
QRectF corner(const QPixmap& picture, double share) {
    const double size = std::min(picture.width(), picture.height()) * share;
    return {picture.width() - size, picture.height() - size, size, size};
}

/// With a tip at the top.
QPainterPath triangleIn(const QRectF& place) {
    QPainterPath outline;
    outline.addPolygon(
        QPolygonF({place.bottomLeft(), place.bottomRight(), {place.center().x(), place.top()}}));
    outline.closeSubpath();
    return outline;
}

QPainterPath discIn(const QRectF& place) {
    QPainterPath outline;
    outline.addEllipse(place);
    return outline;
}

QPainterPath exclamationIn(const QRectF& triangle) {
    const double size = triangle.width();
    const double width = size * strokeWidth;
    const double left = triangle.center().x() - width / 2;
    QPainterPath sign;
    sign.addRect(QRectF(left, triangle.y() + size * strokeTop, width, size * strokeHeight));
    sign.addRect(QRectF(left, triangle.y() + size * dotTop, width, width));
    return sign;
}

QPainterPath lampIn(const QRectF& disc) {
    const double free = disc.width() * (1 - lampShare) / 2;
    return discIn(disc.adjusted(free, free, -free, -free));
}

void cutOut(QPainter& painter, const QPainterPath& outline, const QPen& pen) {
    painter.setCompositionMode(QPainter::CompositionMode_Clear);
    painter.setPen(pen);
    painter.setBrush(Qt::black);
    painter.drawPath(outline);
    painter.setPen(Qt::NoPen);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
}

void paint(QPixmap& picture, const QPainterPath& body, const QPainterPath& sign, const MarkColours& colours) {
    const double gap = std::min(picture.width(), picture.height()) * gapShare;
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    cutOut(painter, body, QPen(Qt::black, 2 * gap, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.fillPath(body, colours.body);
    colours.sign.isValid() ? painter.fillPath(sign, colours.sign) : cutOut(painter, sign, Qt::NoPen);
}

/// That of the coloured icon, with its nose to the north-east; around the origin.
QPainterPath aircraft() {
    QPainterPath outline;
    outline.moveTo(0, -26.5);
    outline.cubicTo(3.2, -26.5, 4.4, -21.5, 4.4, -18);
    constexpr QPointF right[] = {{4.4, -9}, {24, 3.5},    {24, 9.5}, {4.4, 4.5},
                                 {4.4, 14}, {10.5, 18.5}, {10.5, 23}};
    for (const auto& point : right)
        outline.lineTo(point);
    outline.lineTo(0, 20.5);
    for (const auto& point : std::ranges::reverse_view(right))
        outline.lineTo(-point.x(), point.y());
    outline.lineTo(-4.4, -18);
    outline.cubicTo(-4.4, -21.5, -3.2, -26.5, 0, -26.5);
    return QTransform().rotate(45).map(outline);
}

QPixmap symbol(int size, const QColor& colour) {
    QPixmap picture(size, size);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(size / 2.0, size / 2.0);
    const double scale = size * aircraftShare / aircraftLength;
    painter.scale(scale, scale);
    painter.fillPath(aircraft(), colour);
    return picture;
}

} // namespace

void paintMark(QPixmap& picture, TrayLook look, const MarkColours& trouble, const MarkColours& recording) {
    const auto triangle = corner(picture, triangleShare);
    const auto disc = corner(picture, discShare);
    if (look == TrayLook::trouble) paint(picture, triangleIn(triangle), exclamationIn(triangle), trouble);
    if (look == TrayLook::recording) paint(picture, discIn(disc), lampIn(disc), recording);
}

QIcon symbolicIcon(TrayLook look, const QColor& colour) {
    QIcon icon;
    for (const int size : traySizes) {
        auto picture = symbol(size, colour);
        paintMark(picture, look, {colour, {}}, {colour, {}});
        icon.addPixmap(picture);
    }
    return icon;
}

} // namespace tarnly
