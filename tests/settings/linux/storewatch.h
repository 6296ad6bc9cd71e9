#pragma once

#include <QByteArray>
#include <QDeadlineTimer>
#include <QString>

/// What happens to the files of one directory (inotify(7)).
class StoreWatch
{
public:
    enum class Event {
        SaveBegun, ///< the store's lock was created
        FileNamed, ///< the file that is to replace the store got a name beside it
        SaveDone, ///< the store was replaced
    };

    explicit StoreWatch(const QString &storeFile);
    ~StoreWatch();
    StoreWatch(const StoreWatch &) = delete;
    StoreWatch &operator=(const StoreWatch &) = delete;

    /// Waits for the next event of this kind; false when none has come by then.
    bool waitFor(Event event, QDeadlineTimer deadline);
    /// Forgets what happened up to now.
    void drain();

private:
    bool isEvent(Event event, quint32 mask, const QByteArray &file) const;

    int m_fd;
    QByteArray m_storeName;
    QByteArray m_pending; ///< events that were read and not looked at
};
