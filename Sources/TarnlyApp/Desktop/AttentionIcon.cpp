#include "TarnlyApp/Desktop/AttentionIcon.hpp"

#include <QPixmap>
#include <QStringList>

#include "TarnlyApp/Desktop/Wording.hpp"

namespace tarnly {
namespace {

using namespace Qt::StringLiterals;

const MarkColours troubleColours{QColor(255, 191, 0), QColor(24, 24, 24)};
const MarkColours recordingColours{QColor(192, 16, 16), QColor(255, 255, 255)};

QPixmap withMark(QPixmap pixmap, TrayLook look) {
    paintMark(pixmap, look, troubleColours, recordingColours);
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
    if (status.stage) lines += inWords(stageSentences(*status.stage));
    if (isUnpublished(status)) lines += inWords(publicationSentence(*status.published));
    if (isUnwritten(status)) {
        lines += inWords(*status.recording->problem);
    } else if (status.recording) {
        lines += inWords(Phrase::of("A recording is running."));
    }
    return lines.join(u'\n');
}

} // namespace tarnly
