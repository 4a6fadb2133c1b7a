#include "TarnlyApp/Desktop/ReachWindow.hpp"

#include <QComboBox>
#include <QHBoxLayout>
#include <QHideEvent>
#include <QPushButton>
#include <QShortcut>
#include <QShowEvent>
#include <QVBoxLayout>
#include <algorithm>

#include "TarnlyApp/Desktop/QrCodeWidget.hpp"
#include "TarnlyApp/Desktop/ReadableColours.hpp"
#include "TarnlyApp/Desktop/ScrollingPart.hpp"
#include "TarnlyApp/Desktop/WindowParts.hpp"
#include "TarnlyApp/Desktop/Wording.hpp"

namespace tarnly {
namespace {

using Outcome = ReachFinding::Outcome;

constexpr int reachWidth = 380;

QString headlineOf(Outcome outcome) {
    switch (outcome) {
        case Outcome::nobodyYet:
            return ReachWindow::tr("Waiting for a device…");
        case Outcome::refused:
            return ReachWindow::tr("It arrived and was refused");
        case Outcome::fine:
            break;
    }
    return ReachWindow::tr("It is fine");
}

} // namespace

ReachWindow::ReachWindow(RuntimeModel& runtime, std::chrono::milliseconds patience)
    : runtime_(runtime),
      instruction_(new CaptionLabel),
      pages_(new QComboBox),
      code_(new QrCodeWidget),
      headline_(new HeadlineLabel({})),
      finding_(new CaptionLabel),
      cure_(new CaptionLabel),
      again_(new QPushButton(tr("Test again"))) {
    setWindowTitle(tr("Tarnly Test from a Phone"));
    pages_->setAccessibleName(tr("Address"));
    auto* close = new QPushButton(tr("Close"));

    auto* test = new QWidget;
    auto* column = new QVBoxLayout(test);
    column->addWidget(instruction_);
    column->addWidget(pages_);
    column->addWidget(code_, 0, Qt::AlignHCenter);
    column->addWidget(headline_);
    column->addWidget(finding_);
    column->addWidget(cure_);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(windowPadding, windowPadding, windowPadding, windowPadding);
    layout->addWidget(new ScrollingPart(test, tr("Test")));
    new ReadableColours(*this);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(again_);
    buttons->addStretch();
    buttons->addWidget(close);
    layout->addLayout(buttons);

    connect(pages_, &QComboBox::currentIndexChanged, this, &ReachWindow::showSelected);
    connect(again_, &QPushButton::clicked, this, &ReachWindow::begin);
    connect(close, &QPushButton::clicked, this, &QWidget::close);
    for (const auto& keys : {QKeySequence(Qt::Key_Escape), QKeySequence(QKeySequence::Close)}) {
        connect(new QShortcut(keys, this), &QShortcut::activated, this, &QWidget::close);
    }
    connect(&runtime_, &RuntimeModel::activityChanged, this, &ReachWindow::look);
    connect(&runtime_, &RuntimeModel::statusChanged, this, &ReachWindow::beginIfItCan);
    patience_.setSingleShot(true);
    patience_.setInterval(patience);
    connect(&patience_, &QTimer::timeout, this, &ReachWindow::giveUp);
}

void ReachWindow::showEvent(QShowEvent* event) {
    if (!event->spontaneous()) begin(); // else it was minimized, and went on
    QWidget::showEvent(event);
}

void ReachWindow::hideEvent(QHideEvent* event) {
    if (!event->spontaneous()) end();
    QWidget::hideEvent(event);
}

void ReachWindow::begin() {
    end();
    runtime_.watchActivity(this); // a browser that opens the page is no news else
    showPages();
    again_->setVisible(pages_->count() == 0);
    if (pages_->count() == 0) return;
    tell(headlineOf(Outcome::nobodyYet), {});
    runtime_.askAfresh([this, round = round_](const CompanionStatus& before) {
        if (round == round_) waitFor(before);
    });
}

/// It may have been opened before the companion listened.
void ReachWindow::beginIfItCan() {
    if (isVisible() && pages_->count() == 0) begin();
}

void ReachWindow::end() {
    ++round_;
    test_.reset();
    patience_.stop();
    runtime_.unwatchActivity(this);
}

void ReachWindow::waitFor(const CompanionStatus& before) {
    test_.emplace(before);
    patience_.start();
    look();
}

void ReachWindow::look() {
    if (!test_) return;
    const auto finding = test_->look(runtime_.activity());
    tell(headlineOf(finding.outcome), finding);
    again_->setVisible(finding.outcome != Outcome::nobodyYet);
}

void ReachWindow::giveUp() {
    if (!test_) return;
    const auto& now = runtime_.activity();
    const bool hasComeNobody = test_->look(now).outcome == Outcome::nobodyYet;
    end();
    again_->show();
    if (hasComeNobody) tell(tr("It never arrived"), ReachTest::neverArrived(now));
}

void ReachWindow::showPages() {
    CompanionStatus status;
    status.addresses = runtime_.addresses();
    const auto pages = ReachTest::pages(status);
    const bool hasOne = !pages.empty();
    const auto selected = pages_->currentData();
    pages_->clear();
    for (const auto& page : pages) {
        const auto address = QString::fromStdString(page);
        pages_->addItem(shownAddress(address), address);
    }
    pages_->setCurrentIndex(std::max(0, pages_->findData(selected)));
    pages_->setVisible(hasOne);
    code_->setVisible(hasOne);
    instruction_->setVisible(hasOne);
    instruction_->showText(inWords(ReachTest::instruction()));
    if (!hasOne) tell(tr("It cannot be tested"), ReachTest::withoutAddress(runtime_.port().has_value()));
}

void ReachWindow::showSelected() { code_->showCode(pages_->currentData().toString().toStdString()); }

void ReachWindow::tell(const QString& headline, const ReachFinding& finding) {
    headline_->setText(headline);
    finding_->showText(inWords(finding.text));
    finding_->setVisible(!finding.text.empty());
    cure_->showText(inWords(finding.cure));
    cure_->setVisible(!finding.cure.empty());
    setAccessibleDescription(finding_->accessibleName() + u' ' + cure_->accessibleName());
    fitContent(*this, reachWidth);
}

} // namespace tarnly
