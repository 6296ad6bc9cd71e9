#pragma once

#include <linux/netlink.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

/// Where the next message or attribute begins behind one of this size, netlink(3).
constexpr std::size_t netlinkAligned(std::size_t size)
{
    return (size + NLMSG_ALIGNTO - 1) & ~std::size_t{NLMSG_ALIGNTO - 1};
}

/// The structure that `bytes` begin with; they must be enough.
template <typename T> T readAs(std::span<const std::byte> bytes)
{
    T value;
    std::memcpy(&value, bytes.data(), sizeof value);
    return value;
}

/// Calls `handle` with the type (nla_type, without flags) and the value of each attribute in
/// `attributes`, up to the first that is malformed. No std::function, since a link has sixty of
/// them.
template <typename Handle>
void forEachAttribute(std::span<const std::byte> attributes, const Handle &handle)
{
    while (attributes.size() >= sizeof(nlattr)) {
        const auto header = readAs<nlattr>(attributes);
        if (header.nla_len < sizeof(nlattr) || header.nla_len > attributes.size())
            return;
        handle(static_cast<std::uint16_t>(header.nla_type & NLA_TYPE_MASK),
               attributes.first(header.nla_len).subspan(sizeof(nlattr)));
        attributes
            = attributes.subspan(std::min(netlinkAligned(header.nla_len), attributes.size()));
    }
}
