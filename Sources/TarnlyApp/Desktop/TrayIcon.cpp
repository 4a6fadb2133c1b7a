#include "TarnlyApp/Desktop/TrayIcon.hpp"

#include <QApplication>
#include <QCursor>
#include <QEvent>
#include <QGuiApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QWindow>
#include <algorithm>
#include <chrono>
#include <utility>

#include "TarnlyApp/Desktop/ReadableColours.hpp"
#include "TarnlyApp/Desktop/WindowParts.hpp"

namespace tarnly {
namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

/// At login the desktop's own panel may take its time.
constexpr auto patienceAtLogin = 10s;
/// A panel that is started anew is back by then.
constexpr auto patienceForRestart = 3s;
/// A click on the icon that closes the panel comes as a click on the icon, too.
constexpr auto sameClick = 300ms;
constexpr auto grabInterval = 250ms;
/// How long the panel of a first start waits for the icon's place, in looks.
constexpr auto trayLookInterval = 100ms;
constexpr int mostLooks = 20;
/// A tray places an icon that it takes, which a message may point at.
constexpr auto settling = 500ms;
/// Who comes back to a desktop wants to know what is wrong now, not all that was.
constexpr std::size_t mostHeld = 8;

/// A window under Wayland can be a popup of another one only.
Qt::WindowFlags panelFlags() {
    const bool isWayland = QGuiApplication::platformName().startsWith(u"wayland"_s);
    return Qt::FramelessWindowHint | (isWayland ? Qt::Tool : Qt::Popup);
}

/// The coloured ones, unless the desktop has a colour for symbols.
std::array<QIcon, 3> iconsByLook(const std::optional<QColor>& symbolColour) {
    const auto iconOf = [&, icon = QApplication::windowIcon()](TrayLook look) {
        return symbolColour ? symbolicIcon(look, *symbolColour) : withLook(icon, look);
    };
    return {iconOf(TrayLook::calm), iconOf(TrayLook::recording), iconOf(TrayLook::trouble)};
}

/// A panel that is larger than the screen shows its beginning.
int within(int start, int length, int screenStart, int screenLength) {
    return std::max(screenStart, std::min(start, screenStart + screenLength - length));
}

} // namespace

TrayIcon::TrayIcon(Panel& panel, RuntimeModel& runtime, bool startsInBackground)
    : panel_(panel), runtime_(runtime), windowIsMinimized_(startsInBackground) {
    icons_ = iconsByLook(tray_.symbolColour());
    addActions();
    new ReadableColours(menu_);
    connect(&runtime_, &RuntimeModel::activityChanged, this, &TrayIcon::showActivity);
    connect(&runtime_, &RuntimeModel::statusChanged, this, &TrayIcon::showActivity);
    panel_.installEventFilter(this);
    waitingForTray_.setSingleShot(true);
    connect(&waitingForTray_, &QTimer::timeout, this, &TrayIcon::becomeWindow);
    connect(&tray_, &TrayWatch::availabilityChanged, this, &TrayIcon::followTray);
    connect(&tray_, &TrayWatch::symbolColourChanged, this, &TrayIcon::paintAnew);
    if (tray_.isAvailable()) {
        becomeIcon();
        return;
    }
    waitingForTray_.start(startsInBackground ? std::chrono::milliseconds(patienceAtLogin) : 0ms);
}

void TrayIcon::addActions() {
    menu_.addAction(tr("Show Tarnly"), this, &TrayIcon::showPanel);
    menu_.addAction(tr("Addresses…"), &panel_, &Panel::addressesRequested);
    menu_.addAction(tr("Test from a phone…"), &panel_, &Panel::reachTestRequested);
    menu_.addSeparator();
    menu_.addAction(tr("Settings…"), &panel_, &Panel::settingsRequested);
    menu_.addAction(tr("Quit Tarnly"), &panel_, &Panel::quitRequested);
}

void TrayIcon::followTray() {
    if (tray_.isAvailable()) return becomeIcon();
    icon_.reset();
    windowIsMinimized_ = false;
    waitingForTray_.start(patienceForRestart);
}

void TrayIcon::becomeIcon() {
    waitingForTray_.stop();
    delete question_; // it asks about a window that goes
    panel_.hide();
    panel_.setWindowFlags(panelFlags());
    look_ = TrayLook::calm;
    icon_ = std::make_unique<QSystemTrayIcon>(icons_.front());
    showActivity();
    icon_->setContextMenu(&menu_);
    connect(icon_.get(), &QSystemTrayIcon::activated, this, &TrayIcon::iconActivated);
    icon_->show();
    QTimer::singleShot(settling, this, &TrayIcon::tellHeld);
}

void TrayIcon::paintAnew() {
    icons_ = iconsByLook(tray_.symbolColour());
    if (hasIcon()) icon_->setIcon(icons_.at(static_cast<std::size_t>(look_)));
}

void TrayIcon::tellHeld() {
    if (!hasIcon()) return;
    for (const auto& message : std::exchange(held_, {}))
        tell(message.title, message.text);
}

// An icon that is set anew is painted anew, or sent to the desktop: only when it is another one.
void TrayIcon::showActivity() {
    if (!hasIcon()) return;
    const auto look = lookOf(runtime_.activity(), runtime_.hasFailed());
    if (look != std::exchange(look_, look)) icon_->setIcon(icons_.at(static_cast<std::size_t>(look)));
    const auto toolTip = toolTipOf(runtime_.activity());
    if (toolTip != icon_->toolTip()) icon_->setToolTip(toolTip);
}

void TrayIcon::becomeWindow() {
    waitingForTray_.stop();
    if (panel_.windowType() != Qt::Window) panel_.setWindowFlags(Qt::Window);
    windowIsMinimized_ ? panel_.showMinimized() : panel_.show();
}

void TrayIcon::showPanel() { hasIcon() ? openBesideIcon() : bringUpWindow(); }

// The tray needs a moment to give the icon its place, and some never tell it. Nobody has pointed at anything
// here, so the pointer tells no place either.
void TrayIcon::introduce() {
    if (!hasIcon() || panel_.isVisible()) return;
    const auto told = icon_->geometry();
    const bool isPlaced = told.isValid() && !told.topLeft().isNull();
    if (!isPlaced && introductionLooks_++ < mostLooks) {
        QTimer::singleShot(trayLookInterval, this, &TrayIcon::introduce);
        return;
    }
    const auto screen = QGuiApplication::primaryScreen()->availableGeometry();
    openAt(isPlaced ? told : QRect(screen.topRight(), QSize(1, 1)));
}

void TrayIcon::tell(const QString& title, const QString& text) {
    if (hasIcon()) {
        icon_->showMessage(title, text, icons_.at(static_cast<std::size_t>(look_)));
        return;
    }
    QApplication::alert(&panel_);
    if (panel_.isVisible() && !panel_.isMinimized()) return;
    held_.push_back({title, text});
    if (held_.size() > mostHeld) held_.pop_front();
}

void TrayIcon::openBesideIcon() { openAt(iconPlace()); }

void TrayIcon::openAt(const QRect& place) {
    place_ = place;
    placePanel();
    panel_.show();
    panel_.raise();
    panel_.activateWindow();
    grabPointer();
}

// X11 tells a popup of clicks elsewhere while it has grabbed the pointer. A tray that opens us while the
// button is down takes the grab back when that is released.
void TrayIcon::grabPointer() {
    if (!panel_.isVisible() || panel_.windowType() != Qt::Popup) return;
    panel_.windowHandle()->setMouseGrabEnabled(true);
    QTimer::singleShot(grabInterval, this, &TrayIcon::grabPointer);
}

void TrayIcon::bringUpWindow() {
    windowIsMinimized_ = false;
    becomeWindow();
    auto* question = QApplication::activeModalWidget();
    bringUp(question != nullptr ? *question : panel_);
}

void TrayIcon::iconActivated(QSystemTrayIcon::ActivationReason reason) {
    if (reason != QSystemTrayIcon::Trigger) return;
    const bool hasJustClosedIt = sinceHidden_.isValid() && !sinceHidden_.hasExpired(sameClick.count());
    if (panel_.isVisible()) {
        panel_.hide();
    } else if (!hasJustClosedIt) {
        showPanel();
    }
}

// Not every desktop tells where the icon is; the pointer is there when it has been clicked.
QRect TrayIcon::iconPlace() const {
    const auto told = icon_->geometry();
    return told.isValid() ? told : QRect(QCursor::pos(), QSize(1, 1));
}

void TrayIcon::placePanel() {
    const auto* screen = QGuiApplication::screenAt(place_.center());
    if (screen == nullptr) screen = QGuiApplication::primaryScreen();
    panel_.move(placeBeside(place_, panel_.size(), screen->availableGeometry()));
}

bool TrayIcon::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Hide) sinceHidden_.start();
    if (event->type() == QEvent::Resize && hasIcon()) placePanel(); // a longer text must not cover the icon
    if (event->type() == QEvent::WindowDeactivate && hasIcon()) panel_.hide();
    if (event->type() == QEvent::Close && !hasIcon() && !qGuiApp->isSavingSession()) {
        event->ignore();
        askWhetherToQuit();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

// Closing the only window may be meant to put it away, and would end a lesson.
void TrayIcon::askWhetherToQuit() {
    question_ = new QMessageBox(QMessageBox::Question, u"Tarnly"_s, tr("Quit Tarnly?"), QMessageBox::NoButton,
                                &panel_);
    question_->setInformativeText(tr("Clients lose their connection, and a recording ends."));
    question_->setAttribute(Qt::WA_DeleteOnClose);
    new ReadableColours(*question_);
    auto* quit = question_->addButton(tr("Quit Tarnly"), QMessageBox::DestructiveRole);
    auto* minimize = question_->addButton(tr("Minimize"), QMessageBox::AcceptRole);
    question_->addButton(QMessageBox::Cancel);
    question_->setDefaultButton(minimize);
    connect(quit, &QPushButton::clicked, &panel_, &Panel::quitRequested);
    connect(minimize, &QPushButton::clicked, &panel_, &QWidget::showMinimized);
    question_->open();
}

QPoint placeBeside(const QRect& icon, const QSize& panel, const QRect& screen) {
    const bool isAtTop = icon.center().y() < screen.center().y();
    const int x = icon.center().x() - panel.width() / 2;
    const int y = isAtTop ? icon.bottom() + 1 : icon.top() - panel.height();
    return {within(x, panel.width(), screen.x(), screen.width()),
            within(y, panel.height(), screen.y(), screen.height())};
}

} // namespace tarnly
