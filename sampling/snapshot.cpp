#include "sampling/appsample.h"
#include "sampling/systemqueries.h"

#include <QFileInfo>

#include <algorithm>
#include <map>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

/// Processes by id, so that each is asked for its path once and in ascending order.
using ProcessMap = std::map<quint32, AppSample>;

template <typename Row>
void countSockets(ProcessMap &processes, const std::optional<std::vector<Row>> &table,
                  qint32 AppSample::*count)
{
    if (!table)
        return;
    for (const Row &row : *table) {
        if (row.pid == 0)
            continue;
        AppSample &sample = processes[row.pid];
        sample.pid = row.pid;
        ++(sample.*count);
    }
}

QString nameWithoutPath(SystemQueries &queries, quint32 pid)
{
    // A process that has just been started may answer the second time; its sample then has a
    // name while the path stays unknown for this tick.
    const QString path = imagePathForPid(queries, pid);
    if (!path.isEmpty())
        return QFileInfo(path).fileName();
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
    ProcessMap processes;
    countSockets(processes, queries.tcpTable(), &AppSample::tcp);
    countSockets(processes, queries.udpTable(), &AppSample::udp);

    QList<AppSample> samples;
    samples.reserve(static_cast<qsizetype>(processes.size()));
    for (auto &[pid, sample] : processes) {
        sample.path = imagePathForPid(queries, pid);
        sample.name = sample.path.isEmpty() ? nameWithoutPath(queries, pid)
                                            : QFileInfo(sample.path).fileName();
        samples.append(std::move(sample));
    }
    return sorted(std::move(samples));
}

QString imagePathForPid(SystemQueries &queries, quint32 pid)
{
    return QString::fromStdString(queries.imagePath(pid));
}
