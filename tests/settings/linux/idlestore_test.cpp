#include "tests/settings/linux/storefiles.h"
#include "tests/settings/linux/storewatch.h"

using namespace Qt::StringLiterals;

/// The real window while there is nothing new to store.
class IdleStoreTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<WindowFixture> m_fixture;

private Q_SLOTS:
    void init();
    void cleanup() { m_fixture.reset(); }

    void theDiskIsLeftAlone();
    void whateverChangesIsSaved();
    void aRemovedStoreIsWrittenAgain();
    void aStoreThatSomebodyChangedIsWrittenAgain_data();
    void aStoreThatSomebodyChangedIsWrittenAgain();
};

void IdleStoreTest::init()
{
    m_fixture = std::make_unique<WindowFixture>();
    m_fixture->open();
    m_fixture->system().setCounters(100, 0);
    m_fixture->tick();
}

void IdleStoreTest::theDiskIsLeftAlone()
{
    StoreWatch watch(WindowFixture::storePath());
    const QByteArray before = storeContent();
    QVERIFY(before.contains("todayBytes=100\n"));
    m_fixture->tick();
    m_fixture->tick();
    QVERIFY(!watch.waitFor(StoreWatch::Event::SaveBegun, QDeadlineTimer(0)));
    QCOMPARE(storeContent(), before);
}

void IdleStoreTest::whateverChangesIsSaved()
{
    m_fixture->tick();
    m_fixture->system().setCounters(101, 0);
    m_fixture->tick();
    QVERIFY(storeContent().contains("todayBytes=101\n"));
    // And when it is as it was.
    WindowFixture::click(m_fixture->button(u"Reset usage counters"_s));
    QVERIFY(storeContent().contains("todayBytes=0\n"));
    m_fixture->system().setCounters(202, 0);
    m_fixture->tick();
    QVERIFY(storeContent().contains("todayBytes=101\n"));
}

void IdleStoreTest::aRemovedStoreIsWrittenAgain()
{
    const QByteArray before = storeContent();
    QVERIFY(QFile::remove(WindowFixture::storePath()));
    m_fixture->tick();
    QCOMPARE(storeContent(), before);
}

void IdleStoreTest::aStoreThatSomebodyChangedIsWrittenAgain_data()
{
    QTest::addColumn<QByteArray>("octets");
    QTest::newRow("of another size") << QByteArray("12345");
    QTest::newRow("of the same size") << QByteArray("999");
}

void IdleStoreTest::aStoreThatSomebodyChangedIsWrittenAgain()
{
    QFETCH(QByteArray, octets);
    const QByteArray before = storeContent();
    QByteArray changed = before;
    changed.replace("todayBytes=100\n", "todayBytes=" + octets + '\n');
    // The system's clock for files may stand for one of its ticks.
    QTest::qWait(20);
    writeFile(WindowFixture::storePath(), changed);
    m_fixture->tick();
    QCOMPARE(storeContent(), before);
}

TOVAN_WINDOW_TEST(idlestore_test, IdleStoreTest)
#include "idlestore_test.moc"
