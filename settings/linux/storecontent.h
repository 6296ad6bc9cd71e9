#pragma once

#include <QByteArray>

#include <optional>

/// The longest line that a store may have, in bytes: room for the longest text of 32,767 code
/// units, each of which may be escaped to twelve bytes, and for its key.
inline constexpr qsizetype longestStoreLine = 512LL * 1024;

/// What a store's file holds, but for what would stop or end a program that has the toolkit read
/// it: entries that are serialised objects, which the toolkit decodes however deeply they are
/// nested, are left out, and lines that are too long are cut. No value when nothing of that kind is
/// in it, as in every file that this program has written.
std::optional<QByteArray> harmlessContent(QByteArrayView content);
