#pragma once

#include <QElapsedTimer>
#include <QIcon>
#include <QMenu>
#include <QMessageBox>
#include <QObject>
#include <QPoint>
#include <QPointer>
#include <QRect>
#include <QSize>
#include <QSystemTrayIcon>
#include <QTimer>
#include <array>
#include <deque>
#include <memory>

#include "TarnlyApp/Desktop/AttentionIcon.hpp"
#include "TarnlyApp/Desktop/Panel.hpp"
#include "TarnlyApp/Desktop/RuntimeModel.hpp"
#include "TarnlyApp/Desktop/TrayWatch.hpp"

namespace tarnly {

/// The application's place on the desktop: an icon in the tray that opens the panel, and tells at a glance
/// whether something needs looking after and whether a recording runs; or, while the desktop shows no tray,
/// the panel as an ordinary window.
class TrayIcon : public QObject {
    Q_OBJECT

  public:
    /// In the background a window, if one is needed, appears minimized.
    TrayIcon(Panel& panel, RuntimeModel& runtime, bool startsInBackground);

    /// Brings the panel to the person's eyes, whatever form it has.
    void showPanel();

    /// Opens the panel of a program that is new to the person. A window is there without.
    void introduce();

    /// Says something that nobody has asked for. Where there is no tray the window asks to be looked at;
    /// while there is neither, or the window is out of sight, the icon says it when it comes.
    void tell(const QString& title, const QString& text);

    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void addActions();
    void followTray();
    void becomeIcon();
    void showActivity();
    void tellHeld();
    void paintAnew();
    void becomeWindow();
    void iconActivated(QSystemTrayIcon::ActivationReason reason);
    QRect iconPlace() const;
    void placePanel();
    void openAt(const QRect& place);
    void openBesideIcon();
    void grabPointer();
    void bringUpWindow();
    bool hasIcon() const { return icon_ != nullptr; }
    void askWhetherToQuit();

    Panel& panel_;
    RuntimeModel& runtime_;
    /// By `TrayLook`.
    std::array<QIcon, 3> icons_;
    QMenu menu_;
    TrayWatch tray_;
    // depends-on: menu_
    std::unique_ptr<QSystemTrayIcon> icon_;
    /// Whether to quit, while it is open.
    QPointer<QMessageBox> question_;
    /// Runs while there is neither icon nor window.
    QTimer waitingForTray_;
    bool windowIsMinimized_;
    QElapsedTimer sinceHidden_;
    /// Of the icon, when the panel was opened.
    QRect place_;
    TrayLook look_ = TrayLook::calm;
    struct Message {
        QString title;
        QString text;
    };
    /// Until there is an icon to say it; the last ones.
    std::deque<Message> held_;
    int introductionLooks_ = 0;
};

/// Where the top left corner of a panel of this size goes, so that it stands beside its icon and whole on the
/// screen: below an icon in the upper half, else above it. `screen` is what the desktop leaves to windows.
QPoint placeBeside(const QRect& icon, const QSize& panel, const QRect& screen);

} // namespace tarnly
