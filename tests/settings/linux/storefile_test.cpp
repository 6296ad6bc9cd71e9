#include "tests/settings/linux/storefiles.h"
#include "tests/support/filesizelimit.h"
#include "tests/support/octets.h"

using namespace Qt::StringLiterals;

/// The real window on a store whose file is damaged, in the way of something or on a full disk.
class StoreFileTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<WindowFixture> m_fixture;

private Q_SLOTS:
    void init() { m_fixture = std::make_unique<WindowFixture>(); }
    void cleanup() { m_fixture.reset(); }

    void anyStoreLetsTheWindowStartAndSave_data();
    void anyStoreLetsTheWindowStartAndSave();
    void aDirectoryInThePlaceOfTheStoreIsLivedWith();
    void aStoreThatCannotBeWrittenIsWrittenWhenItCan();
    void aFullDiskKeepsTheOldStoreWhole();
    void theLockOfAKilledProcessDoesNotStopTheNextSave();
};

void StoreFileTest::anyStoreLetsTheWindowStartAndSave_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("text") << QByteArray("Dear diary, today I learned\n[to read\n");
    constexpr char binary[] = "\x7f"
                              "ELF\0\1\2\3\xff\xfe\x80[General\0]\nnotify80=\0\n";
    QTest::newRow("binary") << QByteArray(binary, sizeof binary);
    QTest::newRow("wrong types") << QByteArray(
        "[General]\nrefreshIntervalMs=fast\nmaxTableRows=@Invalid()\n"
        "notify80=@Point(1 2)\nmonthlyLimitBytes=@Size(3 4)\ncloseToTray=perhaps\n"
        "windowTitleText=@ByteArray(\\0\\x1\\xff)\ndayKey=1, 2, 3\n"
        "currentProfile=@Variant(\\0\\0\\0\\x7f\\xff\\xff\\xff\\xff)\n");
    QTest::newRow("out of range") << QByteArray(
        "[General]\nrefreshIntervalMs=-2147483648\nmaxTableRows=2147483647\n"
        "renewalDay=99999999999999999999\nmonthlyLimitBytes=0\n"
        "todayBytes=18446744073709551615\nmonthBytes=18446744073709551615\n");
    QTest::newRow("endless rules")
        << QByteArray("[rules]\nsize=2147483647\n1\\app=a\n2147483647\\app=z\n");
    QTest::newRow("names of the tables' own rows")
        << QByteArray("[rules]\nsize=2\n1\\app=This PC\n1\\blocked=true\n2\\app=System overview\n");
    QByteArray many = "[rules]\nsize=10000\n";
    for (int i = 1; i <= 10000; ++i)
        many += QByteArray::number(i) + "\\app=application " + QByteArray::number(i) + '\n';
    QTest::newRow("ten thousand rules") << many;
}

void StoreFileTest::anyStoreLetsTheWindowStartAndSave()
{
    QFETCH(QByteArray, content);
    writeFile(WindowFixture::storePath(), content);

    m_fixture->open();
    m_fixture->tick();
    for (const SettingRow &row : settingsTable()) {
        if (const auto *number = std::get_if<NumberSetting>(&row.setting)) {
            const int stored = WindowFixture::stored(row.key).toInt();
            QVERIFY2(number->low <= stored && stored <= number->high, row.key.data());
        }
    }
    const QByteArray saved = storeContent();
    m_fixture->close();
    m_fixture->open();
    m_fixture->tick();
    QCOMPARE(storeContent(), saved);
}

void StoreFileTest::aDirectoryInThePlaceOfTheStoreIsLivedWith()
{
    QDir().remove(WindowFixture::storePath());
    QVERIFY(QDir().mkpath(WindowFixture::storePath()));
    m_fixture->open();
    m_fixture->system().setCounters(1 * gigabyte, 0);
    m_fixture->tick();
    m_fixture->tick();
    QVERIFY(QFileInfo(WindowFixture::storePath()).isDir());
    QVERIFY(QDir().rmdir(WindowFixture::storePath()));
    m_fixture->tick();
    QTRY_VERIFY(storeContent().contains("todayBytes=1073741824\n"));
}

void StoreFileTest::aStoreThatCannotBeWrittenIsWrittenWhenItCan()
{
    // A file in the directory's place refuses even the superuser.
    const QString directory = QFileInfo(WindowFixture::storePath()).path();
    QVERIFY(QDir(directory).removeRecursively());
    QFile obstacle(directory);
    QVERIFY(obstacle.open(QIODevice::WriteOnly));
    obstacle.close();

    m_fixture->open();
    m_fixture->system().setCounters(1 * gigabyte, 0);
    m_fixture->tick();
    m_fixture->system().setCounters(2 * gigabyte, 0);
    m_fixture->tick();
    QVERIFY(QFileInfo(directory).isFile());
    QVERIFY(m_fixture->labelStarting(u"Applications: 0    Today: 2.0 GB    "_s));

    QVERIFY(obstacle.remove());
    m_fixture->system().setCounters(3 * gigabyte, 0);
    m_fixture->tick();
    QVERIFY(storeContent().contains("todayBytes=3221225472\n"));
}

void StoreFileTest::aFullDiskKeepsTheOldStoreWhole()
{
    m_fixture->open();
    m_fixture->system().setCounters(1 * gigabyte, 0);
    m_fixture->tick();
    const QByteArray before = storeContent();
    QVERIFY(before.contains("todayBytes=1073741824\n"));

    m_fixture->system().setCounters(2 * gigabyte, 0);
    QByteArray meanwhile;
    {
        // Enough for the lock of the store, not for the store.
        const FileSizeLimit limit(100);
        m_fixture->tick();
        m_fixture->tick();
        meanwhile = storeContent();
    }
    QCOMPARE(meanwhile, before);
    m_fixture->tick();
    QTRY_VERIFY(storeContent().contains("todayBytes=2147483648\n"));
    QCOMPARE(QFileInfo(WindowFixture::storePath()).dir().entryList(QDir::Files).size(), 1);
}

void StoreFileTest::theLockOfAKilledProcessDoesNotStopTheNextSave()
{
    m_fixture->open();
    m_fixture->tick();
    QFile lock(WindowFixture::storePath() + u".lock"_s);
    QVERIFY(lock.open(QIODevice::WriteOnly));
    lock.close();
    m_fixture->system().setCounters(1 * gigabyte, 0);
    QElapsedTimer elapsed;
    elapsed.start();
    m_fixture->tick();
    QVERIFY2(elapsed.elapsed() < 5000, "the window was frozen");
    QTRY_VERIFY(storeContent().contains("todayBytes=1073741824\n"));
}

TOVAN_WINDOW_TEST(storefile_test, StoreFileTest)
#include "storefile_test.moc"
