#pragma once

#include <QString>

/// A byte count for people, in binary units up to "TB": "1023 B", "1.5 KB".
QString formatBytes(quint64 bytes);

/// The bytes of one sampling tick as a rate: "1.5 KB/s". The tick's length is not considered.
QString formatRate(quint64 bytesPerTick);

/// A rule's limit: "300 KB/s".
QString formatLimit(int kbps);
