#include "TarnlyApp/Desktop/AttentionIcon.hpp"

#include <QPainter>
#include <QPixmap>
#include <QRectF>
#include <algorithm>

namespace tarnly {
namespace {

using namespace Qt::StringLiterals;

// Shares of the icon's size.
constexpr double discShare = 0.6;
constexpr double gapShare = 0.06;

// Shares of the disc's size.
constexpr double strokeWidth = 0.2;
constexpr double strokeTop = 0.16;
constexpr double strokeHeight = 0.42;
constexpr double dotTop = 0.68;

constexpr QColor discColour(255, 191, 0);
constexpr QColor strokeColour(24, 24, 24);

void paintMark(QPainter& painter, const QRectF& disc, double gap) {
    painter.setPen(Qt::NoPen);
    painter.setCompositionMode(QPainter::CompositionMode_Clear);
    painter.setBrush(Qt::black);
    painter.drawEllipse(disc.adjusted(-gap, -gap, gap, gap));
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.setBrush(discColour);
    painter.drawEllipse(disc);
    const double size = disc.width();
    const double left = disc.center().x() - size * strokeWidth / 2;
    painter.setBrush(strokeColour);
    painter.drawRect(QRectF(left, disc.y() + size * strokeTop, size * strokeWidth, size * strokeHeight));
    painter.drawRect(QRectF(left, disc.y() + size * dotTop, size * strokeWidth, size * strokeWidth));
}

QPixmap withMark(QPixmap pixmap) {
    const double size = std::min(pixmap.width(), pixmap.height());
    const double disc = size * discShare;
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF place(pixmap.width() - disc, pixmap.height() - disc, disc, disc);
    paintMark(painter, place, size * gapShare);
    return pixmap;
}

} // namespace

bool needsAttention(const CompanionStatus& status) {
    return status.stage && status.stage->name != stageName(SimulatorStage::Kind::flightLoaded);
}

QIcon withAttentionMark(const QIcon& icon) {
    QIcon marked;
    for (const auto& size : icon.availableSizes())
        marked.addPixmap(withMark(icon.pixmap(size, 1.0)));
    return marked;
}

QString toolTipOf(const CompanionStatus& status) {
    if (!status.stage) return u"Tarnly"_s;
    return u"Tarnly\n"_s + QString::fromStdString(stageSentences(*status.stage));
}

} // namespace tarnly
