#pragma once

#include <cstdlib>
#include <memory>

struct FreeXcbReply
{
    void operator()(void *reply) const { std::free(reply); }
};

/// What an xcb function has allocated for its caller; null when the request failed.
template <typename T> using XcbReply = std::unique_ptr<T, FreeXcbReply>;
