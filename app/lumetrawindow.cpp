#include "app/lumetrawindow.h"

#include "assets/images.h"
#include "dashboard/applicationicons.h"
#include "sampling/systemqueries.h"
#include "shell/endrequests.h"
#include "shell/minispeedwidget.h"
#include "widgets/celltable.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QPushButton>
#include <QTimer>

using namespace Qt::StringLiterals;

LumetraWindow::LumetraWindow()
    : queries(makeSystemQueries()),
      applicationIcons(makeApplicationIcons())
{
    setWindowTitle(u"Tovan Network Monitor"_s);
    setWindowFlags(Qt::Window | Qt::FramelessWindowHint);
    setMinimumSize(1180, 780);
    resize(1180, 800);

    loadSettings();
    saveRetryTimer = new QTimer(this);
    saveRetryTimer->setSingleShot(true);
    connect(saveRetryTimer, &QTimer::timeout, this, [this] { saveSettings(); });

    const QIcon icon = assetIcon(u"tovan-site-icon.svg"_s);
    if (canBeDrawn(icon))
        setWindowIcon(icon);

    buildShell();
    buildTray();

    miniWidget = new MiniSpeedWidget;
    miniWidget->installEventFilter(this);
    miniWidget->setRates(traffic.currentDownBytes, traffic.currentUpBytes);
    if (settings.miniWidgetEnabled) {
        miniWidget->move(x() + width() - 250, y() + 70);
        miniWidget->show();
    }

    // What the interfaces carried before now is no traffic of this session.
    setBaseline(traffic, readInterfaceTotals(*queries, &interfaces));

    sampleTimer = new QTimer(this);
    connect(sampleTimer, &QTimer::timeout, this, [this] { tick(); });
    sampleTimer->start(settings.refreshIntervalMs);
    paused = settings.pauseOnLaunch;

    // main() shows the window whatever the settings say; this takes it back at once.
    if (settings.startMinimized)
        QTimer::singleShot(0, this, [this] { hide(); });

    // The end of the session may still be cancelled, so it only saves. Where it is not, the program
    // is told to quit, which eventFilter() takes for an Exit.
    connect(qApp, &QGuiApplication::commitDataRequest, this, [this] { saveBeforeTheEnd(); });
    qApp->installEventFilter(this);
    whenAskedToEnd(this, [this] { exitProgram(); });
}

LumetraWindow::~LumetraWindow()
{
    // The widgets go after the members: an editor that is still open commits while it is destroyed.
    for (const QTableWidget *table : {appsTable, rulesTable}) {
        if (table)
            table->disconnect(this);
    }
}

void LumetraWindow::closeEvent(QCloseEvent *event)
{
    // What is being typed into a cell counts, as when the focus goes elsewhere.
    for (QTableWidget *table : {appsTable, rulesTable}) {
        if (table && table->viewport()->isAncestorOf(focusWidget()))
            table->setFocus(Qt::OtherFocusReason);
    }

    if (settings.closeToTray && !quitting) {
        hide();
        showDesktopMessage({DesktopMessage::Kind::Information, u"Still watching your usage"_s,
                            u"Tovan is running in the background."_s, 2500});
        event->ignore();
        return;
    }
    saveBeforeTheEnd();
    event->accept();
}

void LumetraWindow::exitProgram()
{
    const bool wasHidden = isHidden();
    quitting = true;
    close();
    // The toolkit ends the event loop when the last visible window closes; closing a hidden one
    // does not count, and the process would live on without a window.
    if (wasHidden)
        QCoreApplication::quit();
}

void LumetraWindow::togglePause()
{
    paused = !paused;
    pauseButton->setText(paused ? u"Resume"_s : u"Pause"_s);
    pauseButton->setStyleSheet(
        paused ? u"background:#3b1218; color:#fecdd3; border:1px solid #7f1d1d;"_s : QString());
    if (trayPauseAction)
        trayPauseAction->setText(paused ? u"Resume monitoring"_s : u"Pause monitoring"_s);
    announceStatus(paused ? u"Monitoring paused"_s : u"Monitoring resumed"_s);
}

void LumetraWindow::resetSession()
{
    ::resetSession(traffic);
    setStatus(u"Session counters reset"_s);
    showToast(u"Session counters reset"_s);
    refreshDashboard();
}
