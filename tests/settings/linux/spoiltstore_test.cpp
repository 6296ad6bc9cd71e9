#include "tests/settings/linux/storefiles.h"

#include <QLockFile>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype megabytes = 1024 * 1024;

/// A list that holds a list that holds a list, too many for the stack of whoever decodes them.
QByteArray nestedObjects()
{
    return "@Variant(" + QByteArray(R"(\0\0\0\x9\0\0\0\x1)").repeated(30000) + ")";
}

const QByteArray rule = "[rules]\nsize=1\n1\\app=kept\n1\\blocked=true\n";

} // namespace

/// The real window on a store that holds what would stop or end it.
class SpoiltStoreTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<WindowFixture> m_fixture;
    QString m_store;

    /// Whether the store holds the rule, and nothing large.
    bool isWhole() const
    {
        const QByteArray content = storeContent();
        return content.contains("todayBytes=1\n") && content.contains("1\\app=kept\n")
            && content.contains("1\\blocked=true\n") && content.size() < megabytes;
    }

private Q_SLOTS:
    void initTestCase() { m_store = WindowFixture::storePath(); }
    void init();
    void cleanup();
    void theWindowStartsAndSaves_data();
    void theWindowStartsAndSaves();
    void aTextIsCutToWhatALineEditHolds();
    void itIsReadAlsoWhileItIsInUse();
    void aSpoiltFileBehindTheStoreIsPassedOver();
};

void SpoiltStoreTest::init()
{
    m_fixture = std::make_unique<WindowFixture>();
}

void SpoiltStoreTest::cleanup()
{
    m_fixture.reset();
    QFile::remove(m_store);
}

void SpoiltStoreTest::theWindowStartsAndSaves_data()
{
    QTest::addColumn<QByteArray>("content");
    const QByteArray large(50 * megabytes, 'x');
    QTest::newRow("50 MB in a text") << "[General]\nwindowTitleText=" + large + "\n" + rule;
    QTest::newRow("50 MB in a number") << "[General]\nnotify80=" + large + "\n" + rule;
    QTest::newRow("50 MB in a key of nobody's") << "[General]\nsomething=" + large + "\n" + rule;
    QTest::newRow("a list of 5 million")
        << "[other]\nlist=" + QByteArray("123456789,").repeated(5'000'000) + "\n" + rule;
    QTest::newRow("50 MB in an application's name")
        << "[rules]\nsize=2\n1\\app=kept\n1\\blocked=true\n2\\app=" + large + "\n2\\blocked=true\n";
    QTest::newRow("a key of 50 MB") << "[General]\n" + large + "=1\n" + rule;
    QTest::newRow("a section of 50 MB") << "[" + large + "]\na=1\n" + rule;
    QTest::newRow("a large file") << rule + "[other]\n" + ("a=" + large + '\n').repeated(2);
    QTest::newRow("nested objects in a text")
        << "[General]\nwindowTitleText=" + nestedObjects() + "\n" + rule;
    QTest::newRow("nested objects in a key of nobody's")
        << "[General]\nsomething=" + nestedObjects() + "\n" + rule;
    QTest::newRow("nested objects in a section of nobody's")
        << rule + "[other]\nsomething=1, " + nestedObjects() + "\n";
}

void SpoiltStoreTest::theWindowStartsAndSaves()
{
    QFETCH(QByteArray, content);
    writeFile(m_store, content);
    m_fixture->open();
    m_fixture->system().setCounters(1, 0);
    m_fixture->tick();
    QVERIFY(isWhole());
    m_fixture->close();
    m_fixture->open();
    QVERIFY(WindowFixture::rowOf(m_fixture->rulesTable(), u"kept"_s) >= 0);
}

void SpoiltStoreTest::aTextIsCutToWhatALineEditHolds()
{
    writeFile(m_store, "[General]\nwindowTitleText=" + QByteArray(50 * megabytes, 'x') + "\n");
    m_fixture->open();
    const auto *title = m_fixture->setting<QLineEdit>(u"Title"_s);
    QCOMPARE(title->text(), QString(title->maxLength(), u'x'));
    QCOMPARE(m_fixture->find<QLabel>("titleBarText")->text(), title->text());
    QCOMPARE(m_fixture->window().width(), 1180);
}

void SpoiltStoreTest::itIsReadAlsoWhileItIsInUse()
{
    const QByteArray content = rule + "[other]\nsomething=" + nestedObjects() + "\n";
    writeFile(m_store, content);
    QLockFile lock(m_store + u".lock"_s);
    QVERIFY(lock.lock());
    m_fixture->open();
    m_fixture->system().setCounters(1, 0);
    m_fixture->tick();
    QCOMPARE(storeContent(), content);
    QVERIFY(WindowFixture::rowOf(m_fixture->rulesTable(), u"kept"_s) >= 0);
    lock.unlock();
    QTRY_VERIFY(isWhole());
}

void SpoiltStoreTest::aSpoiltFileBehindTheStoreIsPassedOver()
{
    const QString behind = QFileInfo(m_store).path() + u".conf"_s;
    writeFile(behind, "[General]\nsomething=" + nestedObjects() + "\n");
    writeFile(m_store, rule);
    m_fixture->open();
    m_fixture->system().setCounters(1, 0);
    m_fixture->tick();
    QVERIFY(isWhole());
    QVERIFY(QFile::remove(behind));
}

TOVAN_WINDOW_TEST(spoiltstore_test, SpoiltStoreTest)
#include "spoiltstore_test.moc"
