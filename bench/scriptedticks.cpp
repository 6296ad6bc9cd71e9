#include "bench/scriptedticks.h"

#include "tests/support/scriptedsystem.h"
#include "tests/support/windowfixture.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QTimerEvent>

void settle()
{
    for (int i = 0; i < 3; ++i) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
}

double millisecondsUntilSettled(const std::function<void()> &work)
{
    QElapsedTimer clock;
    clock.start();
    work();
    settle();
    return double(clock.nsecsElapsed()) / 1e6;
}

void scriptTick(const QStringList &applications, int round)
{
    ScriptedSystem &system = ScriptedSystem::instance();
    system.reset();
    system.setCounters(quint64(round) * 123456, quint64(round) * 23456);
    for (qsizetype i = 0; i < applications.size(); ++i) {
        // A few counts change every tick, as they do on a real desktop.
        system.addProcess(quint32(1000 + i), applications.at(i), 8 + (i % 10 == round % 10 ? 1 : 0),
                          2);
    }
}

double millisecondsOfTick(const LumetraWindow &window)
{
    QTimer *timer = sampleTimer(window);
    return millisecondsUntilSettled([timer] {
        QTimerEvent event(timer->timerId());
        QCoreApplication::sendEvent(timer, &event);
    });
}
