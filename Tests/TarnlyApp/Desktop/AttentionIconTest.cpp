#include "TarnlyApp/Desktop/AttentionIcon.hpp"

#include <gtest/gtest.h>

#include <QImage>
#include <QPixmap>

namespace tarnly {
namespace {

using StageKind = SimulatorStage::Kind;

CompanionStatus statusWith(StageKind kind) {
    CompanionStatus status;
    status.stage = StageStatus::of({kind, {}, {}}, Clock::TimePoint());
    return status;
}

QIcon iconOf(const QColor& colour) {
    QIcon icon;
    for (const int size : {16, 22, 64}) {
        QPixmap pixmap(size, size);
        pixmap.fill(colour);
        icon.addPixmap(pixmap);
    }
    return icon;
}

/// How much brighter or darker than its neighbours: 0 to 255.
int grey(const QImage& image, double x, double y) {
    const auto pixel = image.pixelColor(int(x * image.width()), int(y * image.height()));
    return qGray(pixel.rgb()) * pixel.alpha() / 255;
}

TEST(Attention, IsNeededUnlessAFlightIsLoaded) {
    EXPECT_FALSE(needsAttention({}));
    EXPECT_FALSE(needsAttention(statusWith(StageKind::flightLoaded)));
    for (const auto kind : {StageKind::notRunning, StageKind::refusing, StageKind::tooOld,
                            StageKind::mainMenu, StageKind::silent}) {
        EXPECT_TRUE(needsAttention(statusWith(kind)));
    }
}

TEST(Attention, IsNeededWhereClientsFindNothingAndWhereALogIsNotWritten) {
    auto status = statusWith(StageKind::flightLoaded);
    status.published = PublicationStatus{"published", "rig42", {}};
    status.recording.emplace();
    EXPECT_FALSE(needsAttention(status));
    status.recording->problem = Phrase::verbatim("The disk is full. Make room.");
    EXPECT_TRUE(needsAttention(status));
    status.recording.reset();
    status.published = PublicationStatus{"not_published", {}, Phrase::verbatim("no daemon")};
    EXPECT_TRUE(needsAttention(status));
    status.published = PublicationStatus{"off", {}, {}};
    EXPECT_FALSE(needsAttention(status)) << "nobody wants it to be found";
}

TEST(TrayLooks, TroubleOutranksARecording) {
    auto status = statusWith(StageKind::flightLoaded);
    EXPECT_EQ(lookOf(status, false), TrayLook::calm);
    status.recording.emplace();
    EXPECT_EQ(lookOf(status, false), TrayLook::recording);
    status.recording->problem = Phrase::verbatim("The disk is full. Make room.");
    EXPECT_EQ(lookOf(status, false), TrayLook::trouble);
    EXPECT_EQ(lookOf({}, true), TrayLook::trouble);
}

TEST(Attention, TheToolTipTellsOfARecordingAndOfTrouble) {
    auto status = statusWith(StageKind::flightLoaded);
    status.recording.emplace();
    EXPECT_EQ(toolTipOf(status), "Tarnly\nSimulator: flight loaded.\nA recording is running.");
    status.recording->problem = Phrase::verbatim("The disk is full. Make room.");
    status.published = PublicationStatus{"not_published", {}, Phrase::verbatim("no daemon")};
    EXPECT_EQ(toolTipOf(status),
              "Tarnly\nSimulator: flight loaded.\nNot published by DNS-SD: no daemon.\n"
              "The disk is full. Make room.");
}

TEST(Attention, TheToolTipHasTheWordsAndTheAdvice) {
    EXPECT_EQ(toolTipOf({}), "Tarnly");
    EXPECT_EQ(toolTipOf(statusWith(StageKind::flightLoaded)), "Tarnly\nSimulator: flight loaded.");
    EXPECT_EQ(toolTipOf(statusWith(StageKind::mainMenu)),
              "Tarnly\nSimulator: at the main menu. Load a flight.");
}

TEST(AttentionMark, IsInEverySizeAndLeavesTheRestOfTheIcon) {
    for (const auto look : {TrayLook::recording, TrayLook::trouble}) {
        const auto marked = withLook(iconOf(Qt::blue), look);
        EXPECT_EQ(marked.availableSizes(), iconOf(Qt::blue).availableSizes());
        for (const auto& size : marked.availableSizes()) {
            const auto image = marked.pixmap(size, 1.0).toImage();
            EXPECT_EQ(image.size(), size);
            EXPECT_EQ(image.pixelColor(1, 1), QColor(Qt::blue));
            EXPECT_NE(image, iconOf(Qt::blue).pixmap(size, 1.0).toImage());
        }
    }
    const auto calm = withLook(iconOf(Qt::blue), TrayLook::calm);
    EXPECT_EQ(calm.pixmap(QSize(22, 22), 1.0).toImage(),
              iconOf(Qt::blue).pixmap(QSize(22, 22), 1.0).toImage());
}

TEST(AttentionMark, IsToldWithoutColours) {
    for (const auto& colour : {QColor(Qt::black), QColor(Qt::white), QColor(Qt::gray)}) {
        const auto image = withLook(iconOf(colour), TrayLook::trouble).pixmap(QSize(64, 64), 1.0).toImage();
        const int triangle = grey(image, 0.5, 0.92);
        EXPECT_GT(triangle, 150) << "bright triangle";
        EXPECT_LT(grey(image, 0.66, 0.7), triangle - 100) << "dark stroke in it";
        EXPECT_LT(grey(image, 0.54, 0.6), 40) << "gap around it";
        const auto recording =
            withLook(iconOf(colour), TrayLook::recording).pixmap(QSize(64, 64), 1.0).toImage();
        EXPECT_LT(grey(recording, 0.52, 0.7), 100) << "dark disc";
        EXPECT_GT(grey(recording, 0.7, 0.7), 220) << "bright dot in its middle";
        EXPECT_LT(grey(recording, 0.7, 0.36), 40) << "gap around it";
    }
}

} // namespace
} // namespace tarnly
