#pragma once

#include <QtGlobal>

/// In octets, as the program counts them.
inline constexpr quint64 gigabyte = 1024ULL * 1024 * 1024;
