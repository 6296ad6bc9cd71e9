#include "tests/sampling/linux/support/agentprotocol.h"

#include <sys/socket.h>

#include <array>
#include <cstring>

bool sendRecord(int socket, const void *data, std::size_t size, int attached)
{
    iovec part{const_cast<void *>(data), size};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    if (attached >= 0) {
        message.msg_control = control.data();
        message.msg_controllen = control.size();
        cmsghdr *header = CMSG_FIRSTHDR(&message);
        header->cmsg_level = SOL_SOCKET;
        header->cmsg_type = SCM_RIGHTS;
        header->cmsg_len = CMSG_LEN(sizeof attached);
        std::memcpy(CMSG_DATA(header), &attached, sizeof attached);
    }
    return ::sendmsg(socket, &message, MSG_NOSIGNAL) == static_cast<ssize_t>(size);
}

bool receiveRecord(int socket, void *data, std::size_t size, FileDescriptor &attached)
{
    iovec part{data, size};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    if (::recvmsg(socket, &message, 0) != static_cast<ssize_t>(size))
        return false;
    const cmsghdr *header = CMSG_FIRSTHDR(&message);
    if (header && header->cmsg_level == SOL_SOCKET && header->cmsg_type == SCM_RIGHTS) {
        int descriptor = -1;
        std::memcpy(&descriptor, CMSG_DATA(header), sizeof descriptor);
        attached = FileDescriptor(descriptor);
    }
    return true;
}
