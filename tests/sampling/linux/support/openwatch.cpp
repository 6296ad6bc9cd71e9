#include "tests/sampling/linux/support/openwatch.h"

#include <sys/inotify.h>

#include <array>
#include <cstring>

OpenWatch::OpenWatch() : m_descriptor(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
{
    if (!m_descriptor)
        qFatal("inotify_init failed");
}

void OpenWatch::add(quint32 number, const QByteArray &path)
{
    const int watch
        = ::inotify_add_watch(m_descriptor.get(), path.constData(), IN_OPEN | IN_ONLYDIR);
    if (watch < 0)
        qFatal("%s cannot be watched", path.constData());
    m_numbers.insert(watch, number);
}

QList<quint32> OpenWatch::opened()
{
    QList<quint32> numbers;
    alignas(inotify_event) std::array<char, 65536> events{};
    while (true) {
        const ssize_t length = ::read(m_descriptor.get(), events.data(), events.size());
        if (length <= 0)
            return numbers;
        for (std::size_t at = 0; at < static_cast<std::size_t>(length);) {
            inotify_event event{};
            std::memcpy(&event, events.data() + at, sizeof event);
            // Names belong to what was opened inside the folder.
            if ((event.mask & IN_OPEN) != 0 && event.len == 0)
                numbers.append(m_numbers.value(event.wd));
            at += sizeof event + event.len;
        }
    }
}
