#include "sampling/appsample.h"
#include "sampling/systemqueries.h"

#include <QFileInfo>

#include <algorithm>
#include <map>

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

bool moreActive(const AppSample &left, const AppSample &right)
{
    if (left.socketTotal() != right.socketTotal())
        return left.socketTotal() > right.socketTotal();
    return left.name.toLower() < right.name.toLower();
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
    std::sort(samples.begin(), samples.end(), moreActive);
    return samples;
}

QString imagePathForPid(SystemQueries &queries, quint32 pid)
{
    return QString::fromStdString(queries.imagePath(pid));
}
