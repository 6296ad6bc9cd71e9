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
    if (!saveRetryTimer->isActive() && !isSaved())
        trySaving(0ms);
}

// The last save writes everything, whatever became of those before.
void LumetraWindow::saveBeforeTheEnd()
{
    savedMark.clear();
    trySaving(2s);
}

// While nothing is counted, the disk may sleep.
bool LumetraWindow::isSaved() const
{
    return !savedMark.isEmpty() && savedState == StoredState{settings, usage, rules}
    && storeMark() == savedMark;
}

void LumetraWindow::trySaving(std::chrono::milliseconds patience)
{
    const StoredState state{settings, usage, rules};
    const QByteArray mark = std::exchange(savedMark, {});
    if (const auto store = openStoreToSave(largestStoreSize(state), patience)) {
        const bool untouched = !mark.isEmpty() && storeMark() == mark;
        writeStore(*store, state, untouched ? &savedState : nullptr);
        store->sync();
        if (store->status() == QSettings::NoError)
            savedMark = storeMark();
        saveRetryTimer->stop();
        saveRetryTimer->setInterval(0);
    } else {
        saveRetryTimer->start(nextRetryDelay(saveRetryTimer->intervalAsDuration()));
    }
    savedState = state;
}
