#pragma once

#include <functional>

struct Sample;

/// What `work` takes on the clock, in milliseconds.
double millisecondsOf(const std::function<void()> &work);

/// Adds what `work` takes on the clock, and of the processor, in milliseconds. What is compared
/// within this process is compared by the latter: neither side ever waits for anything but its turn
/// on the processor.
void take(Sample &wall, Sample &processor, const std::function<void()> &work);
