#include "TarnlyApp/Desktop/AttentionIcon.hpp"

#include <QCoreApplication>
#include <QPainter>
#include <QPixmap>
#include <QRectF>
#include <QStringList>
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

constexpr double lampShare = 0.42;

constexpr QColor troubleColour(255, 191, 0);
constexpr QColor strokeColour(24, 24, 24);
constexpr QColor recordingColour(192, 16, 16);
constexpr QColor lampColour(255, 255, 255);

void clearAround(QPainter& painter, const QRectF& disc, double gap) {
    painter.setCompositionMode(QPainter::CompositionMode_Clear);
    painter.setBrush(Qt::black);
    painter.drawEllipse(disc.adjusted(-gap, -gap, gap, gap));
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
}

void paintTrouble(QPainter& painter, const QRectF& disc) {
    painter.setBrush(troubleColour);
    painter.drawEllipse(disc);
    const double size = disc.width();
    const double left = disc.center().x() - size * strokeWidth / 2;
    painter.setBrush(strokeColour);
    painter.drawRect(QRectF(left, disc.y() + size * strokeTop, size * strokeWidth, size * strokeHeight));
    painter.drawRect(QRectF(left, disc.y() + size * dotTop, size * strokeWidth, size * strokeWidth));
}

void paintRecording(QPainter& painter, const QRectF& disc) {
    painter.setBrush(recordingColour);
    painter.drawEllipse(disc);
    const double lamp = disc.width() * lampShare;
    painter.setBrush(lampColour);
    painter.drawEllipse(QRectF(disc.center().x() - lamp / 2, disc.center().y() - lamp / 2, lamp, lamp));
}

QPixmap withMark(QPixmap pixmap, TrayLook look) {
    const double size = std::min(pixmap.width(), pixmap.height());
    const double disc = size * discShare;
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QRectF place(pixmap.width() - disc, pixmap.height() - disc, disc, disc);
    clearAround(painter, place, size * gapShare);
    look == TrayLook::trouble ? paintTrouble(painter, place) : paintRecording(painter, place);
    return pixmap;
}

bool isUnpublished(const CompanionStatus& status) { return status.published && status.published->reason; }

bool isUnwritten(const CompanionStatus& status) { return status.recording && status.recording->problem; }

} // namespace

bool needsAttention(const CompanionStatus& status) {
    const bool isReadyToFly =
        !status.stage || status.stage->name == stageName(SimulatorStage::Kind::flightLoaded);
    return !isReadyToFly || isUnpublished(status) || isUnwritten(status);
}

TrayLook lookOf(const CompanionStatus& status, bool hasFailed) {
    if (hasFailed || needsAttention(status)) return TrayLook::trouble;
    return status.recording ? TrayLook::recording : TrayLook::calm;
}

QIcon withLook(const QIcon& icon, TrayLook look) {
    if (look == TrayLook::calm) return icon;
    QIcon marked;
    for (const auto& size : icon.availableSizes())
        marked.addPixmap(withMark(icon.pixmap(size, 1.0), look));
    return marked;
}

QString toolTipOf(const CompanionStatus& status) {
    QStringList lines{u"Tarnly"_s};
    if (status.stage) lines += QString::fromStdString(stageSentences(*status.stage));
    if (isUnpublished(status)) lines += QString::fromStdString(publicationSentence(*status.published));
    if (isUnwritten(status)) {
        lines += QString::fromStdString(*status.recording->problem);
    } else if (status.recording) {
        lines += QCoreApplication::translate("TrayIcon", "A recording is running.");
    }
    return lines.join(u'\n');
}

} // namespace tarnly
