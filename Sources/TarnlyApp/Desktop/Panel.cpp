#include "TarnlyApp/Desktop/Panel.hpp"

#include <qdrawutil.h>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <initializer_list>
#include <optional>
#include <utility>

#include "TarnlyApp/Desktop/AttentionIcon.hpp"
#include "TarnlyApp/Desktop/ClientList.hpp"
#include "TarnlyApp/Desktop/ReadableColours.hpp"
#include "TarnlyApp/Desktop/ScrollingPart.hpp"
#include "TarnlyApp/Desktop/WindowParts.hpp"
#include "TarnlyApp/Desktop/Wording.hpp"

namespace tarnly {
namespace {

using namespace Qt::StringLiterals;

constexpr int panelPadding = 12;
constexpr int panelWidth = 360;

/// A group that answers one question.
QGroupBox* question(const QString& text, std::initializer_list<QWidget*> answers) {
    auto* group = new QGroupBox(text);
    auto* layout = new QVBoxLayout(group);
    for (auto* answer : answers) {
        const bool isButton = qobject_cast<QPushButton*>(answer) != nullptr;
        layout->addWidget(answer, 0, isButton ? Qt::AlignLeading : Qt::Alignment());
    }
    return group;
}

/// A line takes room while it has something to say.
void say(CaptionLabel& label, const Phrase& phrase) {
    label.setVisible(!phrase.empty());
    label.showText(inWords(phrase));
}

Phrase unpublishedSentence(const std::optional<PublicationStatus>& published) {
    return published && published->reason ? publicationSentence(*published) : Phrase();
}

/// Buttons of one width, with some air around the longest text.
void alignWidths(std::initializer_list<QPushButton*> buttons) {
    int width = 0;
    for (const auto* button : buttons)
        width = std::max(width, button->sizeHint().width());
    for (auto* button : buttons)
        button->setFixedWidth(width + panelPadding);
}

} // namespace

Panel::Panel(RuntimeModel& runtime, std::optional<std::filesystem::path> troubleshooting)
    : runtime_(runtime),
      warnings_(new CaptionLabel),
      status_(new CaptionLabel),
      publication_(new CaptionLabel),
      addresses_(new QPushButton(tr("Addresses…"))),
      reach_(new QPushButton(tr("Test from a phone…"))),
      simulator_(new CaptionLabel),
      clients_(new CaptionLabel),
      list_(new ClientList),
      recording_(new CaptionLabel),
      samples_(new CaptionLabel),
      troubleshooting_(new QPushButton(tr("Troubleshooting"))),
      troubleshootingPage_(std::move(troubleshooting)) {
    setWindowTitle(u"Tarnly"_s);
    auto* settings = new QPushButton(tr("Settings…"));
    settings->setShortcut(Qt::CTRL | Qt::Key_Comma);
    auto* quit = new QPushButton(tr("Quit Tarnly"));
    quit->setShortcut(Qt::CTRL | Qt::Key_Q);
    addresses_->setAccessibleDescription(tr("Shows what to enter where a client does not find Tarnly."));
    reach_->setAccessibleDescription(tr("Finds out whether a phone or tablet gets to this computer."));
    settings->setAccessibleDescription(tr("Opens the settings."));
    quit->setAccessibleDescription(tr("Clients lose their connection, and a recording ends."));
    troubleshooting_->setAccessibleDescription(tr("Opens the page that says what to do about each trouble."));
    alignWidths({addresses_, reach_});
    alignWidths({settings, quit}); // which stand side by side: some languages have no room for more
    alignWidths({troubleshooting_});

    auto* answers = new QWidget;
    auto* column = new QVBoxLayout(answers);
    column->addWidget(warnings_);
    column->addWidget(question(tr("Can clients find it?"), {status_, publication_, addresses_, reach_}));
    column->addWidget(question(tr("Is the simulator there?"), {simulator_}));
    column->addWidget(question(tr("Who is connected?"), {clients_, list_}));
    column->addWidget(question(tr("Is it recording?"), {recording_, samples_}));
    column->addWidget(troubleshooting_, 0, Qt::AlignLeading);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(panelPadding, panelPadding, panelPadding, panelPadding);
    layout->addWidget(new HeadlineLabel(u"Tarnly"_s));
    layout->addWidget(new ScrollingPart(answers, tr("How it stands")));
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(settings);
    buttons->addStretch();
    buttons->addWidget(quit);
    layout->addLayout(buttons);

    connect(addresses_, &QPushButton::clicked, this, &Panel::addressesRequested);
    connect(reach_, &QPushButton::clicked, this, &Panel::reachTestRequested);
    connect(settings, &QPushButton::clicked, this, &Panel::settingsRequested);
    connect(quit, &QPushButton::clicked, this, &Panel::quitRequested);
    connect(troubleshooting_, &QPushButton::clicked, this, [this] {
        emit pageRequested(QUrl::fromLocalFile(QString::fromStdString(troubleshootingPage_->string())));
    });
    for (auto* button : {addresses_, reach_, settings, troubleshooting_}) {
        connect(button, &QPushButton::clicked, this, &Panel::hideIfPopup);
    }
    connect(list_, &ClientList::disconnectRequested, &runtime_, &RuntimeModel::disconnectClient);
    connect(&runtime_, &RuntimeModel::statusChanged, this, &Panel::showStatus);
    connect(&runtime_, &RuntimeModel::activityChanged, this, &Panel::showIfSeen);
    new ReadableColours(*this);
    showStatus();
    showActivity();
}

void Panel::showEvent(QShowEvent* event) {
    if (!isMinimized()) showActivity(); // the desktop style is known only now
    runtime_.watchActivity(this);
    addresses_->setFocus(Qt::PopupFocusReason); // where a screen reader begins
    QWidget::showEvent(event);
}

void Panel::hideEvent(QHideEvent* event) {
    runtime_.unwatchActivity(this);
    QWidget::hideEvent(event);
}

// Outside a dialog Qt gives a button the space bar only.
void Panel::keyPressEvent(QKeyEvent* event) {
    auto* button = qobject_cast<QPushButton*>(focusWidget());
    if (event->key() == Qt::Key_Escape) {
        hideIfPopup();
    } else if (button != nullptr && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)) {
        button->click();
    } else {
        QWidget::keyPressEvent(event);
    }
}

void Panel::paintEvent(QPaintEvent* /*event*/) {
    if (isOrdinaryWindow()) return;
    QPainter painter(this);
    qDrawPlainRect(&painter, rect(), palette().color(QPalette::Mid)); // as thick on all sides at any scale
}

void Panel::showStatus() {
    status_->showText(runtime_.statusText());
    contentChanged();
}

void Panel::showActivity() {
    const auto& activity = runtime_.activity();
    say(*warnings_, warningSentences(activity));
    say(*publication_, unpublishedSentence(activity.published));
    const bool isKnown = activity.stage.has_value(); // not before the start
    say(*simulator_, isKnown ? stageSentences(*activity.stage) : Phrase::of("Not known yet."));
    say(*clients_, clientsSentence(activity.clients));
    list_->showClients(activity.clients);
    say(*recording_, recordingSentence(activity.recording));
    say(*samples_, activity.recording ? samplesSentence(*activity.recording) : Phrase());
    const bool isAmiss = needsAttention(activity) || !warningSentences(activity).empty();
    troubleshooting_->setVisible(isAmiss && troubleshootingPage_);
    contentChanged();
}

void Panel::showIfSeen() {
    if (isVisible() && !isMinimized()) showActivity();
}

// A minimized window that is given another size comes back to the screen.
void Panel::contentChanged() {
    if (!isMinimized()) fitContent(*this, panelWidth);
    QStringList spoken;
    for (const auto* label : captions()) {
        if (!label->accessibleName().isEmpty()) spoken += label->accessibleName();
    }
    setAccessibleDescription(spoken.join(u' '));
}

std::vector<const CaptionLabel*> Panel::captions() const {
    return {warnings_, status_, publication_, simulator_, clients_, recording_, samples_};
}

void Panel::hideIfPopup() {
    if (!isOrdinaryWindow()) hide();
}

bool Panel::isOrdinaryWindow() const { return windowType() == Qt::Window; }

} // namespace tarnly
