#include "TarnlyApp/Desktop/Panel.hpp"

#include <qdrawutil.h>
#include <QFrame>
#include <QKeyEvent>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <initializer_list>
#include <string>

#include "TarnlyApp/Desktop/WindowParts.hpp"

namespace tarnly {
namespace {

using namespace Qt::StringLiterals;

constexpr int padding = 12;
constexpr int panelWidth = 280;

QFrame* divider() {
    auto* line = new QFrame;
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    return line;
}

/// Buttons of one width, with some air around the longest text.
void alignWidths(std::initializer_list<QPushButton*> buttons) {
    int width = 0;
    for (const auto* button : buttons)
        width = std::max(width, button->sizeHint().width());
    for (auto* button : buttons)
        button->setFixedWidth(width + padding);
}

} // namespace

Panel::Panel(RuntimeModel& runtime)
    : runtime_(runtime),
      status_(new CaptionLabel),
      warnings_(new CaptionLabel),
      simulator_(new CaptionLabel),
      clients_(new CaptionLabel),
      recording_(new CaptionLabel),
      addresses_(new QPushButton(u"Addresses…"_s)) {
    setWindowTitle(u"Tarnly"_s);
    auto* settings = new QPushButton(u"Settings…"_s);
    settings->setShortcut(Qt::CTRL | Qt::Key_Comma);
    auto* quit = new QPushButton(u"Quit Tarnly"_s);
    quit->setShortcut(Qt::CTRL | Qt::Key_Q);
    alignWidths({addresses_, settings, quit});

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(padding, padding, padding, padding);
    layout->addWidget(new HeadlineLabel(u"Tarnly"_s));
    layout->addWidget(status_);
    layout->addWidget(warnings_);
    layout->addWidget(simulator_);
    layout->addWidget(clients_);
    layout->addWidget(recording_);
    layout->addWidget(addresses_, 0, Qt::AlignLeading);
    layout->addWidget(divider());
    layout->addWidget(settings, 0, Qt::AlignLeading);
    layout->addWidget(quit, 0, Qt::AlignLeading);

    connect(addresses_, &QPushButton::clicked, this, &Panel::addressesRequested);
    connect(settings, &QPushButton::clicked, this, &Panel::settingsRequested);
    connect(quit, &QPushButton::clicked, this, &Panel::quitRequested);
    for (auto* button : {addresses_, settings}) {
        connect(button, &QPushButton::clicked, this, &Panel::hideIfPopup);
    }
    connect(&runtime_, &RuntimeModel::statusChanged, this, &Panel::showStatus);
    connect(&runtime_, &RuntimeModel::activityChanged, this, &Panel::showActivity);
    showStatus();
    showActivity();
}

void Panel::showEvent(QShowEvent* event) {
    fitContent(*this, panelWidth); // the desktop style is known only now
    runtime_.watchActivity();
    addresses_->setFocus(Qt::PopupFocusReason); // where a screen reader begins
    QWidget::showEvent(event);
}

void Panel::hideEvent(QHideEvent* event) {
    runtime_.unwatchActivity();
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
    const auto warnings = QString::fromStdString(warningSentences(activity));
    warnings_->setVisible(!warnings.isEmpty());
    warnings_->showText(warnings);
    // Before the start nobody knows of a simulator.
    simulator_->setVisible(activity.stage.has_value());
    if (activity.stage) simulator_->showText(QString::fromStdString(stageSentences(*activity.stage)));
    clients_->showText(QString::fromStdString(clientsSentence(activity.clients)));
    recording_->showText(QString::fromStdString(recordingSentence(activity.recording)));
    contentChanged();
}

void Panel::contentChanged() {
    fitContent(*this, panelWidth);
    QStringList spoken;
    for (const auto* label : {status_, warnings_, simulator_, clients_, recording_}) {
        if (!label->accessibleName().isEmpty()) spoken += label->accessibleName();
    }
    setAccessibleDescription(spoken.join(u' '));
}

void Panel::hideIfPopup() {
    if (!isOrdinaryWindow()) hide();
}

bool Panel::isOrdinaryWindow() const { return windowType() == Qt::Window; }

} // namespace tarnly
