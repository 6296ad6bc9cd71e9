#pragma once

#include "settings/settingsstore.h"

#include <QTemporaryDir>

#include <memory>

/// A store's file of the test's own, read and written without a window. A test calls `prepare()`
/// before each of its functions.
class StoreFixture
{
protected:
    /// Starts without a file, in a folder of its own.
    void prepare();
    QString folder() const { return m_directory->path(); }
    QString storeFile() const { return m_directory->filePath(QStringLiteral("store.ini")); }
    void writeFile(const QByteArray &content) const;
    /// Empty when there is no file.
    QByteArray fileContent() const;
    /// What the file holds on 1 February 2026.
    StoredState load();
    void save(const StoredState &state) const;

    /// A rule that only blocks.
    static AppRule blockedRule();
    /// A state in which nothing is at its default.
    static StoredState changedState();

private:
    std::unique_ptr<QTemporaryDir> m_directory;
    int m_loads = 0;
};
