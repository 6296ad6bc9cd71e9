// What a kernel replies to a dump, in pieces of any shape: the messages that are handed on, and the
// attributes in them, are those that the macros of the kernel's own headers find, netlink(3) and
// rtnetlink(3).
// An input's first two octets tell the size of the buffer; conversationsOf() says what follows.
#include "fuzz/alignedcopy.h"
#include "fuzz/kernelreplies.h"
#include "fuzz/require.h"
#include "sampling/linux/netlinkdata.h"
#include "sampling/linux/netlinksocket.h"

#include <linux/netlink.h>
#include <linux/rtnetlink.h>

namespace {

constexpr std::uint32_t sequence = 1;
constexpr std::uint32_t port = 0;

/// A message or an attribute.
struct Piece
{
    std::uint16_t type = 0;
    std::vector<std::byte> value;

    bool operator==(const Piece &) const = default;
};

struct Dump
{
    DumpEnd end = DumpEnd::Failed;
    std::vector<Piece> messages;
};

std::span<const std::byte> bytesAt(const void *begin, std::size_t size)
{
    return {static_cast<const std::byte *>(begin), size};
}

Piece piece(std::uint16_t type, std::span<const std::byte> value)
{
    return {type, {value.begin(), value.end()}};
}

DumpEnd endOf(std::span<const std::byte> payload, bool interrupted)
{
    int error = 0;
    if (payload.size() >= sizeof error)
        std::memcpy(&error, payload.data(), sizeof error);
    if (error != 0)
        return DumpEnd::Failed;
    return interrupted ? DumpEnd::Interrupted : DumpEnd::Complete;
}

Dump expectedDump(const std::vector<Datagram> &datagrams, std::size_t bufferSize)
{
    Dump dump;
    bool interrupted = false;
    for (const Datagram &datagram : datagrams) {
        if (datagram.size() > bufferSize) {
            dump.end = DumpEnd::Truncated;
            return dump;
        }
        const AlignedCopy copy(datagram);
        auto left = copy.size();
        for (const auto *message = copy.as<nlmsghdr>(); NLMSG_OK(message, left);
             message = NLMSG_NEXT(message, left)) {
            if (message->nlmsg_seq != sequence || message->nlmsg_pid != port)
                continue;
            interrupted = interrupted || (message->nlmsg_flags & NLM_F_DUMP_INTR) != 0;
            const auto payload = bytesAt(NLMSG_DATA(message), NLMSG_PAYLOAD(message, 0));
            if (message->nlmsg_type == NLMSG_NOOP)
                continue;
            if (message->nlmsg_type == NLMSG_DONE)
                dump.end = endOf(payload, interrupted);
            if (message->nlmsg_type >= NLMSG_ERROR && message->nlmsg_type <= NLMSG_OVERRUN)
                return dump;
            dump.messages.push_back(piece(message->nlmsg_type, payload));
        }
        if (left > 0)
            return dump;
    }
    return dump;
}

std::vector<Piece> expectedAttributes(std::span<const std::byte> attributes)
{
    std::vector<Piece> pieces;
    const AlignedCopy copy(attributes);
    auto left = copy.size();
    for (const auto *attribute = copy.as<rtattr>(); RTA_OK(attribute, left);
         attribute = RTA_NEXT(attribute, left)) {
        pieces.push_back(piece(attribute->rta_type & NLA_TYPE_MASK,
                               bytesAt(RTA_DATA(attribute), RTA_PAYLOAD(attribute))));
    }
    return pieces;
}

void checkAttributes(std::span<const std::byte> attributes)
{
    std::vector<Piece> pieces;
    forEachAttribute(attributes, [&](std::uint16_t type, std::span<const std::byte> value) {
        pieces.push_back(piece(type, value));
    });
    require(pieces == expectedAttributes(attributes), "attributes are those of the macros");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size < 2)
        return 0;
    const std::size_t bufferSize = data[0] | static_cast<unsigned>(data[1]) << 8;
    KernelReplies kernel(conversationsOf({data + 2, size - 2}));
    const FileDescriptor socket = kernel.open();

    Dump dump;
    std::vector<std::byte> buffer(bufferSize);
    dump.end
        = receiveDump(socket.get(), sequence, port, buffer, [&](const NetlinkMessage &message) {
              dump.messages.push_back(piece(message.type, message.payload));
              checkAttributes(message.payload);
          });
    const Dump expected = expectedDump(kernel.said(), bufferSize);
    require(dump.end == expected.end, "the dump ends as the macros say");
    require(dump.messages == expected.messages, "messages are those of the macros");
    require((buffer.size() > bufferSize) == (dump.end == DumpEnd::Truncated),
            "a buffer is enlarged for what did not fit");
    return 0;
}
