#include "bench/programs.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcessEnvironment>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace {

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
}

/// The number between a name at the beginning of a line and what follows it there.
double numberNamed(const QByteArray &text, const QByteArray &name, const QByteArray &unit)
{
    const qsizetype at = text.indexOf('\n' + name + ':');
    if (at < 0)
        return 0;
    const qsizetype start = at + name.size() + 2;
    return text.mid(start, text.indexOf(unit, start) - start).trimmed().toDouble();
}

} // namespace

Program::Program(const QString &path, const QString &home, const QStringList &arguments)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"HOME"_s, home);
    environment.insert(u"XDG_CONFIG_HOME"_s, home + "/config"_L1);
    environment.insert(u"XDG_DATA_HOME"_s, home + "/data"_L1);
    environment.insert(u"XDG_CACHE_HOME"_s, home + "/cache"_L1);
    m_process.setProcessEnvironment(environment);
    m_process.setStandardOutputFile(QProcess::nullDevice());
    m_process.setStandardErrorFile(QProcess::nullDevice());
    m_process.start(path, arguments);
    if (!m_process.waitForStarted()) {
        std::fprintf(stderr, "%s does not start\n", qPrintable(path));
        std::exit(1);
    }
}

Program::~Program()
{
    m_process.terminate();
    if (!m_process.waitForFinished()) {
        m_process.kill();
        m_process.waitForFinished();
    }
}

void Program::requireRunning()
{
    QCoreApplication::processEvents();
    if (m_process.state() == QProcess::Running)
        return;
    std::fprintf(stderr, "%s has ended\n", qPrintable(m_process.program()));
    std::exit(1);
}

QSet<pid_t> runningProcesses()
{
    QSet<pid_t> processes;
    const QStringList entries = QDir(u"/proc"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &entry : entries) {
        bool isNumber = false;
        const pid_t pid = entry.toInt(&isNumber);
        if (isNumber)
            processes.insert(pid);
    }
    return processes;
}

double processorMillisecondsOf(pid_t pid)
{
    const QByteArray stat = contentOf(u"/proc/%1/stat"_s.arg(pid));
    // The name may hold blanks and parentheses; the third field follows its last parenthesis.
    const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
    double clockTicks = 0;
    for (qsizetype field = 14; field <= 17; ++field)
        clockTicks += fields.value(field - 3).toDouble();
    return clockTicks * 1e3 / double(::sysconf(_SC_CLK_TCK));
}

double processorMillisecondsBesides(const QSet<pid_t> &others)
{
    double milliseconds = 0;
    const QSet<pid_t> measured = runningProcesses().subtract(others);
    for (const pid_t pid : measured)
        milliseconds += processorMillisecondsOf(pid);
    return milliseconds;
}

double voluntarySwitchesOf(pid_t pid)
{
    double switches = 0;
    const QDir threads(u"/proc/%1/task"_s.arg(pid));
    const QStringList ids = threads.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &id : ids) {
        const QByteArray status = contentOf(threads.filePath(id) + "/status"_L1);
        switches += numberNamed(status, "voluntary_ctxt_switches", "\n");
    }
    return switches;
}

MemoryUse memoryUseOf(pid_t pid)
{
    const QByteArray rollup = contentOf(u"/proc/%1/smaps_rollup"_s.arg(pid));
    return {numberNamed(rollup, "Rss", " kB"), numberNamed(rollup, "Pss", " kB")};
}
