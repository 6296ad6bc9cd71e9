#pragma once

#include "sampling/linux/filedescriptor.h"

#include <QHash>
#include <QList>

#include <string>

/// Tells which folders were opened, inotify(7).
class OpenWatch
{
public:
    OpenWatch();
    /// Watches a folder under a number of the caller's choice.
    void add(quint32 number, const QByteArray &path);
    /// Numbers of the folders that were opened since the last call, in that order.
    QList<quint32> opened();

private:
    FileDescriptor m_descriptor;
    QHash<int, quint32> m_numbers;
};
