#include "settings/linux/diskroom.h"

#include "settings/linux/storeguard.h"
#include "tests/support/filesizelimit.h"
#include "tests/support/linux/ownnamespaces.h"
#include "tests/support/testmain.h"

#include <QTemporaryDir>
#include <QtTest>

#include <sys/mount.h>

using namespace Qt::StringLiterals;

namespace {

/// What this process has handed to the kernel to be written so far ("wchar" of proc(5)).
qint64 writtenOctets()
{
    QFile counters(u"/proc/self/io"_s);
    if (!counters.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray text = counters.readAll();
    const qsizetype begin = text.indexOf("wchar: ") + 7;
    return text.sliced(begin, text.indexOf('\n', begin) - begin).toLongLong();
}

} // namespace

/// Folders on file systems that are mounted for the test.
class DiskRoomTest : public QObject
{
    Q_OBJECT

    /// Mounts an empty file system of so many bytes.
    void mountDisk(const QByteArray &size)
    {
        QCOMPARE(::mount("disk", qPrintable(m_folder.path()), "tmpfs", 0, "size=" + size), 0);
        m_mounted = true;
    }

    QTemporaryDir m_folder;
    bool m_mounted = false;

private Q_SLOTS:
    void cleanup();
    void aDiskThatIsAlmostEmptyHasPlenty();
    void aDiskThatIsAlmostFullHasNot();
    void aDiskThatIsSmallHasNot();
    void aLimitOfFilesLeavesNone();
    void ofASystemThatIsNoDiskNothingIsKnown();
    void aFolderThatIsNotThereHasNone();
    void whereThereIsPlentyNothingIsWrittenToFindOut_data();
    void whereThereIsPlentyNothingIsWrittenToFindOut();
};

void DiskRoomTest::cleanup()
{
    if (m_mounted)
        QCOMPARE(::umount2(qPrintable(m_folder.path()), MNT_DETACH), 0);
    m_mounted = false;
}

void DiskRoomTest::aDiskThatIsAlmostEmptyHasPlenty()
{
    mountDisk("1g");
    QVERIFY(hasPlentyOfRoom(m_folder.path(), 0));
    QVERIFY(hasPlentyOfRoom(m_folder.path(), 900'000'000));
    QVERIFY(!hasPlentyOfRoom(m_folder.path(), 1'100'000'000));
}

void DiskRoomTest::aDiskThatIsAlmostFullHasNot()
{
    mountDisk("100m");
    QVERIFY(hasPlentyOfRoom(m_folder.path(), 1000));
    QFile file(m_folder.filePath(u"large"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(QByteArray(90'000'000, 'x')), 90'000'000);
    QVERIFY(file.flush());
    QVERIFY(!hasPlentyOfRoom(m_folder.path(), 1000));
}

void DiskRoomTest::aDiskThatIsSmallHasNot()
{
    mountDisk("1m");
    QVERIFY(!hasPlentyOfRoom(m_folder.path(), 1000));
}

void DiskRoomTest::aLimitOfFilesLeavesNone()
{
    mountDisk("1g");
    {
        const FileSizeLimit limit(1'000'000);
        QVERIFY(!hasPlentyOfRoom(m_folder.path(), 1000));
    }
    QVERIFY(hasPlentyOfRoom(m_folder.path(), 1000));
}

void DiskRoomTest::ofASystemThatIsNoDiskNothingIsKnown()
{
    QVERIFY(!hasPlentyOfRoom(u"/proc"_s, 0));
}

void DiskRoomTest::aFolderThatIsNotThereHasNone()
{
    QVERIFY(!hasPlentyOfRoom(m_folder.filePath(u"nowhere"_s), 0));
}

void DiskRoomTest::whereThereIsPlentyNothingIsWrittenToFindOut_data()
{
    QTest::addColumn<QByteArray>("size");
    QTest::addColumn<bool>("written");
    QTest::newRow("plenty") << QByteArray("1g") << false;
    QTest::newRow("enough") << QByteArray("16m") << true;
}

void DiskRoomTest::whereThereIsPlentyNothingIsWrittenToFindOut()
{
    QFETCH(QByteArray, size);
    QFETCH(bool, written);
    mountDisk(size);
    const QString store = m_folder.filePath(u"store.conf"_s);
    QVERIFY(QFile(store).open(QIODevice::WriteOnly));
    // Far more than the few octets that the sanitizers write into pipes.
    constexpr qint64 octets = 1'000'000;
    const qint64 before = writtenOctets();
    QVERIFY(storeHasRoom(store, octets));
    QCOMPARE(writtenOctets() - before >= octets, written);
}

int diskroom_test(int argc, char *argv[])
{
    // Where mounts cannot be had, the test says so by failing.
    if (!enterOwnMounts())
        qFatal("the test has no mounts of its own");
    const QCoreApplication app(argc, argv);
    DiskRoomTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "diskroom_test.moc"
