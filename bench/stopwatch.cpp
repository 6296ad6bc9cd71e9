#include "bench/stopwatch.h"

#include "bench/report.h"

#include <chrono>
#include <ctime>

namespace {

/// Processor time of the calling thread.
double processorMilliseconds()
{
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
}

} // namespace

double millisecondsOf(const std::function<void()> &work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

void take(Sample &wall, Sample &processor, const std::function<void()> &work)
{
    const double before = processorMilliseconds();
    wall.values.append(millisecondsOf(work));
    processor.values.append(processorMilliseconds() - before);
}
