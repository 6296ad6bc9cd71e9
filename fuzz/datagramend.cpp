// Stands between the program and recvmsg(2), by the linker's option --wrap: behind the end of a
// datagram the rest of the buffer may not be looked at before the next one is received. Left as it
// is, it holds what earlier datagrams left there, and a look beyond the end would not be seen.
#include <sanitizer/asan_interface.h>
#include <sys/socket.h>

#include <cstddef>

extern "C" {

ssize_t __real_recvmsg(int descriptor, msghdr *message, int flags);

ssize_t __wrap_recvmsg(int descriptor, msghdr *message, int flags)
{
    const iovec &buffer = message->msg_iov[0];
    ASAN_UNPOISON_MEMORY_REGION(buffer.iov_base, buffer.iov_len);
    const ssize_t length = __real_recvmsg(descriptor, message, flags);
    if (length >= 0 && static_cast<std::size_t>(length) < buffer.iov_len)
        ASAN_POISON_MEMORY_REGION(static_cast<char *>(buffer.iov_base) + length,
                                  buffer.iov_len - static_cast<std::size_t>(length));
    return length;
}
}
