#pragma once

#include <sys/resource.h>

/// Lets this process have as many descriptors as it may ask for. A user's programs begin with
/// 1,024.
inline void raiseFileLimit()
{
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &limit);
}
