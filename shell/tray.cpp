#include "app/lumetrawindow.h"

#include "assets/images.h"
#include "settings/profiles.h"
#include "shell/activation.h"
#include "shell/trayhost.h"

#include <QAction>
#include <QMenu>
#include <QSystemTrayIcon>

#include <utility>

using namespace Qt::StringLiterals;

void LumetraWindow::buildTray()
{
    auto *openAction = new QAction(u"Open Tovan"_s, this);
    trayPauseAction = new QAction(u"Pause monitoring"_s, this);
    auto *rulesAction = new QAction(u"Open Rules Manager"_s, this);
    trayMiniAction = new QAction(u"Show Mini monitor"_s, this);
    trayMiniAction->setCheckable(true);
    trayMiniAction->setChecked(settings.miniWidgetEnabled);
    auto *exitAction = new QAction(u"Exit"_s, this);

    auto *menu = new QMenu(this);
    menu->addAction(openAction);
    menu->addAction(rulesAction);
    menu->addSeparator();
    menu->addAction(trayPauseAction);
    menu->addAction(trayMiniAction);
    QMenu *profileMenu = menu->addMenu(u"Profile"_s);
    for (const QString &profile : profileNames())
        profileMenu->addAction(profile, this, [this, profile] { applyProfile(profile); });
    menu->addSeparator();
    menu->addAction(exitAction);

    connect(openAction, &QAction::triggered, this, [this] { openWindow(); });
    connect(rulesAction, &QAction::triggered, this, [this] {
        show();
        showRulesPage();
        openWindow();
    });
    connect(trayPauseAction, &QAction::triggered, this, [this] { togglePause(); });
    connect(trayMiniAction, &QAction::triggered, this,
            [this](bool checked) { setMiniWidgetEnabled(checked); });
    connect(exitAction, &QAction::triggered, this, [this] { exitProgram(); });

    whenTrayIsReady(this, [this, menu] {
        showTrayIcon(menu);
        showWaitingMessage();
    });
    if (!trayIcon) {
        whenNotificationServiceComes(this, [this] {
            ++notificationServicesCome;
            showWaitingMessage();
        });
    }
}

void LumetraWindow::showTrayIcon(QMenu *menu)
{
    trayIcon = new QSystemTrayIcon(assetIcon(u"tovan-site-icon.svg"_s), this);
    trayIcon->setContextMenu(menu);
    trayIcon->setVisible(true);
    trayIconIsEmbedded = trayIcon->geometry().isValid();
    connect(trayIcon, &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) {
                if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::DoubleClick)
                    openWindow();
            });
}

void LumetraWindow::showDesktopMessage(const DesktopMessage &message)
{
    if (trayIcon && (!trayIconIsEmbedded || QSystemTrayIcon::isSystemTrayAvailable())) {
        showBalloon(message);
        return;
    }
    // A refusal may come late: after the next message, or after a service.
    const int number = ++messagesOffered;
    const int servicesBefore = notificationServicesCome;
    offerToNotificationService(this, message, [this, message, number, servicesBefore] {
        if (number != messagesOffered)
            return;
        waitingMessage = message;
        // A tray may have come before the answer, or come back later; of its first coming
        // buildTray() hears.
        if (trayIcon) {
            whenTrayIsReady(this, [this] {
                if (waitingMessage)
                    showBalloon(*std::exchange(waitingMessage, std::nullopt));
            });
        } else if (notificationServicesCome != servicesBefore) {
            showWaitingMessage();
        }
    });
}

void LumetraWindow::showWaitingMessage()
{
    if (waitingMessage)
        showDesktopMessage(*std::exchange(waitingMessage, std::nullopt));
}

void LumetraWindow::showBalloon(const DesktopMessage &message)
{
    trayIcon->showMessage(message.title, message.text,
                          message.kind == DesktopMessage::Kind::Warning
                              ? QSystemTrayIcon::Warning
                              : QSystemTrayIcon::Information,
                          message.milliseconds);
}

void LumetraWindow::openWindow(const QByteArray &activation)
{
    // A minimised window counts as shown, and would stay where it is.
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateFor(*this, activation);
}
