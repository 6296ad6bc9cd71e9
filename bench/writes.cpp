#include "bench/writes.h"

#include "bench/filecalls.h"
#include "bench/report.h"
#include "bench/surroundings.h"

#include <QDateTime>

using namespace Qt::StringLiterals;

namespace {

double secondsSinceEpoch()
{
    return double(QDateTime::currentMSecsSinceEpoch()) / 1e3;
}

/// What is written in a minute, one value a period.
struct Writes
{
    Sample octets = {};
    Sample filesMade = {};
    Sample syncs = {};
};

struct Period
{
    double begin = 0; ///< seconds since 1970
    double end = 0;
};

Period takePeriod(int seconds)
{
    // A tick that has begun, and what was counted until now, belongs to what was before.
    pass(2500);
    Period period{secondsSinceEpoch()};
    pass(seconds * qint64{1000});
    period.end = secondsSinceEpoch();
    return period;
}

void add(Writes &writes, const FileCallLog &log, const Period &period)
{
    const FileCalls calls = log.between(period.begin, period.end);
    const double minutes = (period.end - period.begin) / 60;
    writes.octets.values.append(calls.octets / minutes);
    writes.filesMade.values.append(calls.filesMade / minutes);
    writes.syncs.values.append(calls.syncs / minutes);
}

} // namespace

void measureWrites(Surroundings &surroundings, Report &report, int rounds, int seconds)
{
    const QTemporaryDir folder;
    const FileCallLog log(folder.path());
    QList<Period> idle;
    QList<Period> busy;
    {
        QStringList command = log.commandFor(monitorPath());
        Program program(command.takeFirst(), surroundings.home(u"writes"_s), command);
        Screen &screen = surroundings.screen();
        screen.closeWindow(screen.awaitWindow(program.pid()));
        settleDown();
        for (int round = 0; round < rounds; ++round) {
            surroundings.traffic().setFlowing(false);
            idle.append(takePeriod(seconds));
            surroundings.traffic().setFlowing(true);
            busy.append(takePeriod(seconds));
        }
        program.requireRunning();
    }

    Writes whenIdle;
    Writes whenBusy;
    for (const Period &period : idle)
        add(whenIdle, log, period);
    for (const Period &period : busy)
        add(whenBusy, log, period);
    report.addAgainst(surroundingsName, u"octets written, nothing counted"_s, whenIdle.octets, 0,
                      true, u"B/m"_s);
    report.addAgainst(surroundingsName, u"files made, nothing counted"_s, whenIdle.filesMade, 0,
                      true, u"1/m"_s);
    report.addAgainst(surroundingsName, u"fsync and fdatasync, nothing counted"_s, whenIdle.syncs,
                      0, true, u"1/m"_s);
    // One of each in a tick; the toolkit's timers may be a twentieth too fast.
    constexpr double onceATick = 63;
    report.add(surroundingsName, u"octets written, traffic"_s, whenBusy.octets, u"B/m"_s);
    report.addAgainst(surroundingsName, u"files made, traffic"_s, whenBusy.filesMade, onceATick,
                      true, u"1/m"_s);
    report.addAgainst(surroundingsName, u"fsync and fdatasync, traffic"_s, whenBusy.syncs,
                      onceATick, true, u"1/m"_s);
}
