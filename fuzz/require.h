#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the process unless `holds`, which libFuzzer takes for a finding; `what` says what should.
inline void require(bool holds, const char *what)
{
    if (holds)
        return;
    std::fprintf(stderr, "Does not hold: %s\n", what);
    std::abort();
}
