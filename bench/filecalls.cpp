#include "bench/filecalls.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <cstdio>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace {

const QString fileCallNames = u"open,openat,creat,write,writev,pwrite64,pwritev,pwritev2,"
                              "fsync,fdatasync,sync_file_range,msync,sync,syncfs"_s;

/// Whether a descriptor's name is that of a file, not of a device, a socket or a piece of memory.
bool isOnDisk(const QString &name)
{
    return name.startsWith(u'/') && !name.startsWith("/dev/"_L1) && !name.startsWith("/proc/"_L1)
        && !name.startsWith("/memfd:"_L1);
}

void count(const QString &line, FileCalls &calls)
{
    // TIME CALL(ARGUMENTS) = RESULT, where descriptors are followed by their names in <>.
    static const QRegularExpression form(uR"(^[0-9.]+ (\w+)\((.*)\) += (\d+)(?:<(.*?)>)?)"_s);
    const QRegularExpressionMatch match = form.match(line);
    if (!match.hasMatch()) // a call that failed, or something else than a call
        return;
    const QString call = match.captured(1);
    const QString arguments = match.captured(2);
    if (call.contains("sync"_L1)) {
        ++calls.syncs;
    } else if (call.startsWith("open"_L1) || call == "creat"_L1) {
        static const QRegularExpression beginsEmpty(u"\\bO_(EXCL|TMPFILE|TRUNC)\\b"_s);
        if ((call == "creat"_L1 || beginsEmpty.match(arguments).hasMatch())
            && isOnDisk(match.captured(4)))
            ++calls.filesMade;
    } else {
        static const QRegularExpression target(uR"(^\d+<(.*?)>)"_s);
        if (isOnDisk(target.match(arguments).captured(1)))
            calls.octets += match.captured(3).toDouble();
    }
}

} // namespace

QStringList FileCallLog::commandFor(const QString &program) const
{
    return {u"strace"_s,
            u"--daemonize"_s, // the program is started in this process, not in one behind it
            u"--follow-forks"_s,
            u"--output-separately"_s,
            u"--output="_s + m_folder + "/calls"_L1,
            u"--decode-fds=path"_s,
            u"--absolute-timestamps=format:unix,precision:us"_s,
            u"--string-limit=0"_s,
            u"--signal=none"_s,
            u"--trace="_s + fileCallNames,
            program};
}

FileCalls FileCallLog::between(double begin, double end) const
{
    const QDir folder(m_folder);
    FileCalls calls;
    qint64 lines = 0;
    const QStringList names = folder.entryList(QDir::Files);
    for (const QString &name : names) {
        QFile file(folder.filePath(name));
        if (!file.open(QFile::ReadOnly))
            continue;
        while (!file.atEnd()) {
            const QString line = QString::fromLocal8Bit(file.readLine());
            const double time = line.section(u' ', 0, 0).toDouble();
            ++lines;
            if (time >= begin && time < end)
                count(line, calls);
        }
    }
    if (lines == 0) {
        std::fputs("strace has written nothing down\n", stderr);
        std::exit(1);
    }
    return calls;
}
