#pragma once

#include <QString>

#include <atomic>
#include <thread>

/// A FUSE file system (fuse(4)) that agrees to be mounted and then answers nobody. Whoever asks it
/// for anything waits, and is let go with an error as soon as that is noted.
class SilentFileSystem
{
public:
    /// Mounts it upon an existing folder.
    explicit SilentFileSystem(const QString &folder);
    SilentFileSystem(const SilentFileSystem &) = delete;
    SilentFileSystem &operator=(const SilentFileSystem &) = delete;
    /// Unmounts it.
    ~SilentFileSystem();

    /// Whether it is there: false where there is no FUSE.
    bool isMounted() const { return m_mounted; }
    /// Whether anybody has asked it for anything.
    bool wasTouched() const { return m_touched; }

private:
    void serve();

    QByteArray m_folder;
    int m_device = -1;
    int m_end[2] = {-1, -1}; ///< a pipe that is closed to end the server
    bool m_mounted = false;
    std::atomic<bool> m_touched = false;
    std::thread m_server;
};
