#pragma once

#include <QByteArray>

#include <chrono>
#include <memory>

class QSettings;
class QString;

/// What the user's store is called, the same in every process that would open it.
QString storeName();

/// Opens the user's store, QSettings("Tovan", "Tovan Network Monitor"), to read it. Null when
/// something is in its place that cannot be read.
std::unique_ptr<QSettings> openStore();

/// Opens the user's store to write all of it, at most `bytes` bytes as a file. Waits up to
/// `patience` for a store that another process is writing. Null when that is not possible now: what
/// is stored then stays as it is.
std::unique_ptr<QSettings> openStoreToSave(qint64 bytes, std::chrono::milliseconds patience);

/// Differs from what it was when the store was touched in between, by this process or another one.
/// Empty when that cannot be told.
QByteArray storeMark();
