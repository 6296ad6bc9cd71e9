#include "app/lumetrawindow.h"

#include "settings/settingsstore.h"
#include "settings/userstore.h"

#include <QSettings>
#include <QTimer>

#include <utility>

using namespace std::chrono_literals;

void LumetraWindow::loadSettings()
{
    const QDate today = QDate::currentDate();
    StoredState state = emptyState(today);
    if (const auto store = openStore())
        state = readStore(*store, today);
    settings = std::move(state.settings);
    usage = std::move(state.usage);
    rules = std::move(state.rules);
}

void LumetraWindow::saveSettings()
{
    if (!saveRetryTimer->isActive())
        trySaving(0ms);
}

void LumetraWindow::saveBeforeTheEnd()
{
    trySaving(2s);
}

void LumetraWindow::trySaving(std::chrono::milliseconds patience)
{
    const StoredState state{settings, usage, rules};
    if (const auto store = openStoreToSave(largestStoreSize(state), patience)) {
        writeStore(*store, state);
        saveRetryTimer->stop();
        saveRetryTimer->setInterval(0);
    } else {
        saveRetryTimer->start(nextRetryDelay(saveRetryTimer->intervalAsDuration()));
    }
}
