#include "tests/dashboard/linux/silentfilesystem.h"

#include <fcntl.h>
#include <linux/fuse.h>
#include <poll.h>
#include <sys/mount.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <utility>

namespace {

/// Tells the kernel that the file system speaks its version of the protocol.
void agree(int device, std::uint64_t request)
{
    struct
    {
        fuse_out_header header{};
        fuse_init_out init{};
    } answer;
    answer.header.len = sizeof answer;
    answer.header.unique = request;
    answer.init.major = FUSE_KERNEL_VERSION;
    answer.init.minor = FUSE_KERNEL_MINOR_VERSION;
    answer.init.max_write = 4096;
    if (::write(device, &answer, sizeof answer) != sizeof answer)
        qFatal("the kernel does not take the answer to FUSE_INIT");
}

} // namespace

SilentFileSystem::SilentFileSystem(const QString &folder) : m_folder(folder.toUtf8())
{
    m_device = ::open("/dev/fuse", O_RDWR | O_CLOEXEC);
    if (m_device < 0 || ::pipe2(m_end, O_CLOEXEC) != 0)
        return;
    const QByteArray options
        = "fd=" + QByteArray::number(m_device) + ",rootmode=40000,user_id=0,group_id=0,allow_other";
    m_mounted = ::mount("silent", m_folder.constData(), "fuse.silent", MS_NOSUID | MS_NODEV,
                        options.constData())
        == 0;
    if (m_mounted)
        m_server = std::thread([this] { serve(); });
}

SilentFileSystem::~SilentFileSystem()
{
    if (m_mounted) {
        ::close(m_end[1]);
        m_server.join();
        ::umount2(m_folder.constData(), MNT_DETACH);
    }
    ::close(m_end[0]);
    if (m_device >= 0)
        ::close(m_device);
}

void SilentFileSystem::serve()
{
    for (;;) {
        std::array<pollfd, 2> watched{pollfd{m_device, POLLIN, 0}, pollfd{m_end[0], POLLIN, 0}};
        if (::poll(watched.data(), watched.size(), -1) < 0)
            continue;
        if (watched[1].revents != 0)
            return;
        alignas(fuse_in_header) std::array<std::byte, FUSE_MIN_READ_BUFFER> buffer{};
        if (::read(m_device, buffer.data(), buffer.size()) < 0)
            continue;
        fuse_in_header request{};
        std::memcpy(&request, buffer.data(), sizeof request);
        if (request.opcode == FUSE_INIT) {
            agree(m_device, request.unique);
            continue;
        }
        // Without its device the file system is dead, and nobody waits for it any more.
        m_touched = true;
        ::close(std::exchange(m_device, -1));
        return;
    }
}
