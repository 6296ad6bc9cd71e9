#include "sampling/appsample.h"
#include "sampling/systemqueries.h"

#include <QDir>

#include <algorithm>
#include <unordered_map>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

struct Sockets
{
    qint32 tcp = 0;
    qint32 udp = 0;
};
using SocketsByPid = std::unordered_map<quint32, Sockets>;

template <typename Row>
void countSockets(SocketsByPid &processes, const std::optional<std::vector<Row>> &table,
                  qint32 Sockets::*count)
{
    if (!table)
        return;
    for (const Row &row : *table) {
        if (row.pid != 0)
            ++(processes[row.pid].*count);
    }
}

/// The processes in the order of their ids, still without path and name.
QList<AppSample> samplesOf(const SocketsByPid &processes)
{
    QList<AppSample> samples;
    samples.reserve(static_cast<qsizetype>(processes.size()));
    for (const auto &[pid, sockets] : processes)
        samples.append({{}, {}, pid, sockets.tcp, sockets.udp});
    std::ranges::sort(samples, {}, &AppSample::pid);
    return samples;
}

QString fileName(const QString &path)
{
    const QString parts = QDir::fromNativeSeparators(path);
    return parts.sliced(parts.lastIndexOf(u'/') + 1);
}

QString nameWithoutPath(SystemQueries &queries, quint32 pid)
{
    // A process that has just been started may answer the second time; its sample then has a
    // name while the path stays unknown for this tick.
    const QString path = imagePathForPid(queries, pid);
    if (!path.isEmpty())
        return fileName(path);
    if (const auto name = queries.processListName(pid))
        return QString::fromStdString(*name);
    return u"PID %1"_s.arg(pid);
}

/// The most active ones first.
QList<AppSample> sorted(QList<AppSample> samples)
{
    struct Key
    {
        qint32 sockets;
        QString name;
        qsizetype index;
    };
    // Once for each sample, not for each comparison.
    std::vector<Key> keys;
    keys.reserve(static_cast<std::size_t>(samples.size()));
    for (qsizetype i = 0; i < samples.size(); ++i)
        keys.push_back({samples.at(i).socketTotal(), samples.at(i).name.toLower(), i});
    std::ranges::sort(keys, [](const Key &left, const Key &right) {
        return left.sockets != right.sockets ? left.sockets > right.sockets
                                             : left.name < right.name;
    });
    QList<AppSample> result;
    result.reserve(samples.size());
    for (const Key &key : keys)
        result.append(std::move(samples[key.index]));
    return result;
}

} // namespace

QList<AppSample> takeSnapshot(SystemQueries &queries)
{
    SocketsByPid processes;
    countSockets(processes, queries.tcpTable(), &Sockets::tcp);
    countSockets(processes, queries.udpTable(), &Sockets::udp);

    QList<AppSample> samples = samplesOf(processes);
    for (AppSample &sample : samples) {
        sample.path = imagePathForPid(queries, sample.pid);
        sample.name
            = sample.path.isEmpty() ? nameWithoutPath(queries, sample.pid) : fileName(sample.path);
    }
    return sorted(std::move(samples));
}

QString imagePathForPid(SystemQueries &queries, quint32 pid)
{
    return QString::fromStdString(queries.imagePath(pid));
}
