#include "settings/linux/diskroom.h"

#include <QFile>
#include <QScopeGuard>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <linux/magic.h>
#include <linux/quota.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace {

/// More than other programs write between this question and the end of a save.
constexpr std::uint64_t plenty = 64ULL * 1024 * 1024;

bool filesAreLimited()
{
    rlimit limit{};
    return ::getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur != RLIM_INFINITY;
}

/// Whether the kernel answers that there is no quota of this kind on the folder's file system: that
/// it is off, or that such file systems have none.
bool hasNoQuota(int folder, unsigned kind)
{
    std::uint32_t format = 0;
    return ::syscall(SYS_quotactl_fd, folder, QCMD(Q_GETFMT, kind), 0, &format) != 0
        && (errno == ESRCH || errno == ENOSYS);
}

bool mayHaveQuota(int folder)
{
    // Before Linux 5.14 the call is missing, which looks like a file system without quotas.
    if (::syscall(SYS_quotactl_fd, -1, QCMD(Q_GETFMT, USRQUOTA), 0, nullptr) == 0 || errno != EBADF)
        return true;
    constexpr std::array<unsigned, 3> kinds{USRQUOTA, GRPQUOTA, PRJQUOTA};
    return !std::ranges::all_of(kinds,
                                [folder](unsigned kind) { return hasNoQuota(folder, kind); });
}

/// Whether the file system's quotas are those that are asked for above.
bool isUnderstood(const struct statfs &system)
{
    return system.f_type == EXT4_SUPER_MAGIC || system.f_type == TMPFS_MAGIC;
}

} // namespace

bool hasPlentyOfRoom(const QString &folder, qint64 bytes)
{
    const int descriptor
        = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    const auto guard = qScopeGuard([descriptor] { ::close(descriptor); });
    struct statfs system
    {
    };
    if (::fstatfs(descriptor, &system) != 0 || !isUnderstood(system))
        return false;
    const std::uint64_t room = system.f_bavail * static_cast<std::uint64_t>(system.f_bsize);
    return room >= plenty && room - plenty >= static_cast<std::uint64_t>(bytes)
        && !filesAreLimited() && !mayHaveQuota(descriptor);
}
