#include "settings/linux/storeguard.h"

#include "tests/support/filesizelimit.h"
#include "tests/support/testmain.h"

#include <QLockFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class StoreGuardTest : public QObject
{
    Q_OBJECT

    QString storeFile() const { return m_directory->filePath(u"store.conf"_s); }
    QString lockFile() const { return storeFile() + u".lock"_s; }

    std::unique_ptr<QTemporaryDir> m_directory;

private Q_SLOTS:
    void init();
    void aStoreWithoutALockIsFree();
    void theLockOfAKilledProcessIsRemoved_data();
    void theLockOfAKilledProcessIsRemoved();
    void theLockOfALivingProcessStays();
    void aStoreWithRoomAroundItHasRoom();
    void aStoreOnAFullDiskHasNoRoom();
    void aStoreThatIsNotThereNeedsNoRoom();
};

void StoreGuardTest::init()
{
    m_directory = std::make_unique<QTemporaryDir>();
    QVERIFY(m_directory->isValid());
}

void StoreGuardTest::aStoreWithoutALockIsFree()
{
    QVERIFY(storeIsFree(storeFile(), 0ms));
    QVERIFY(!QFile::exists(lockFile()));
}

void StoreGuardTest::theLockOfAKilledProcessIsRemoved_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("killed before it wrote its name") << QByteArray();
    QTest::newRow("killed while it wrote its name") << QByteArray("123");
    QTest::newRow("killed on another host") << QByteArray("1\ntovan\nelsewhere\nid\nboot\n");
    QTest::newRow("rubbish") << QByteArray("\xff\0\n\n\n\n\n\n", 8);
}

void StoreGuardTest::theLockOfAKilledProcessIsRemoved()
{
    QFETCH(QByteArray, content);
    QFile file(lockFile());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
    file.close();

    QElapsedTimer elapsed;
    elapsed.start();
    QTRY_VERIFY(storeIsFree(storeFile(), 0ms));
    QVERIFY(!QFile::exists(lockFile()));
    {
        QSettings store(storeFile(), QSettings::IniFormat);
        store.setValue("key"_L1, 1);
    }
    QVERIFY(QFile::exists(storeFile()));
    QVERIFY2(elapsed.elapsed() < 2000, "the save waited for a process that is gone");
}

void StoreGuardTest::theLockOfALivingProcessStays()
{
    QLockFile held(lockFile());
    QVERIFY(held.lock());
    QVERIFY(!storeIsFree(storeFile(), 0ms));
    QVERIFY(!storeIsFree(storeFile(), 300ms)); // longer than a lock needs to look forgotten
    QVERIFY(QFile::exists(lockFile()));
    held.unlock();
    QVERIFY(storeIsFree(storeFile(), 0ms));
}

void StoreGuardTest::aStoreWithRoomAroundItHasRoom()
{
    QFile file(storeFile());
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(storeHasRoom(storeFile(), 100000));
    QCOMPARE(QDir(m_directory->path()).entryList(QDir::Files).size(), 1);
}

void StoreGuardTest::aStoreOnAFullDiskHasNoRoom()
{
    QFile file(storeFile());
    QVERIFY(file.open(QIODevice::WriteOnly));
    const FileSizeLimit limit(1000);
    QVERIFY(storeHasRoom(storeFile(), 1000));
    QVERIFY(!storeHasRoom(storeFile(), 1001));
}

void StoreGuardTest::aStoreThatIsNotThereNeedsNoRoom()
{
    const FileSizeLimit limit(1000);
    QVERIFY(storeHasRoom(storeFile(), 1001));
    QVERIFY(storeHasRoom(u"/no/such/directory/store.conf"_s, 1001));
}

TOVAN_GUILESS_TEST(storeguard_test, StoreGuardTest)
#include "storeguard_test.moc"
