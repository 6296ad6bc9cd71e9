#include "tests/settings/linux/storewatch.h"

#include <QFile>
#include <QFileInfo>

#include <cstring>
#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace {

constexpr qsizetype bufferSize = 65536;

} // namespace

StoreWatch::StoreWatch(const QString &storeFile)
    : m_fd(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)),
      m_storeName(QFile::encodeName(QFileInfo(storeFile).fileName()))
{
    const QByteArray directory = QFile::encodeName(QFileInfo(storeFile).path());
    if (inotify_add_watch(m_fd, directory.constData(), IN_CREATE | IN_MOVED_TO) < 0)
        qFatal("cannot watch %s", directory.constData());
}

StoreWatch::~StoreWatch()
{
    close(m_fd);
}

bool StoreWatch::isEvent(Event event, quint32 mask, const QByteArray &file) const
{
    switch (event) {
    case Event::SaveBegun:
        return (mask & IN_CREATE) && file == m_storeName + ".lock";
    case Event::FileNamed:
        return (mask & IN_CREATE) && file.startsWith(m_storeName + '.') && !file.endsWith(".lock");
    case Event::SaveDone:
        return (mask & IN_MOVED_TO) && file == m_storeName;
    }
    return false;
}

bool StoreWatch::waitFor(Event event, QDeadlineTimer deadline)
{
    while (true) {
        while (!m_pending.isEmpty()) {
            inotify_event header{};
            std::memcpy(&header, m_pending.constData(), sizeof header);
            const QByteArray file(m_pending.constData() + sizeof header);
            m_pending.remove(0, qsizetype{sizeof header} + qsizetype{header.len});
            if (isEvent(event, header.mask, file))
                return true;
        }
        pollfd waiting{m_fd, POLLIN, 0};
        if (poll(&waiting, 1, static_cast<int>(deadline.remainingTime())) <= 0)
            return false;
        QByteArray events(bufferSize, Qt::Uninitialized);
        const ssize_t size = read(m_fd, events.data(), bufferSize);
        if (size > 0)
            m_pending = events.first(size);
    }
}

void StoreWatch::drain()
{
    QByteArray events(bufferSize, Qt::Uninitialized);
    while (read(m_fd, events.data(), bufferSize) > 0) { }
    m_pending.clear();
}
