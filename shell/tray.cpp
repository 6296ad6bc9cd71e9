#include "app/lumetrawindow.h"

#include "dashboard/icons.h"
#include "settings/profiles.h"
#include "shell/trayhost.h"

#include <QAction>
#include <QMenu>
#include <QSystemTrayIcon>

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

    whenTrayIsReady(this, [this, menu] { showTrayIcon(menu); });
}

void LumetraWindow::showTrayIcon(QMenu *menu)
{
    trayIcon = new QSystemTrayIcon(assetIcon(u"tovan-site-icon.svg"_s), this);
    trayIcon->setContextMenu(menu);
    trayIcon->setVisible(true);
    connect(trayIcon, &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) {
                if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::DoubleClick)
                    openWindow();
            });
}

void LumetraWindow::openWindow()
{
    // A minimised window counts as shown, and would stay where it is.
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}
