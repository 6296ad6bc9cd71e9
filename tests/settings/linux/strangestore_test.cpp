#include "sampling/linux/filedescriptor.h"
#include "tests/support/windowfixture.h"

#include <QSettings>
#include <QTemporaryDir>

#include <fcntl.h>
#include <functional>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>

using namespace Qt::StringLiterals;

namespace {

void makeFifo(const QString &path)
{
    QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
}

void makeSocket(const QString &path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray name = QFile::encodeName(path);
    QVERIFY(static_cast<size_t>(name.size()) < sizeof address.sun_path);
    std::ranges::copy(name, address.sun_path);
    const FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    QCOMPARE(::bind(socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
}

/// A device that nothing comes from and everything vanishes in. False where that is not allowed.
bool makeDevice(const QString &path)
{
    return ::mknod(QFile::encodeName(path).constData(), S_IFCHR | 0600, makedev(1, 3)) == 0;
}

/// What stands at `path` itself, where that links to, and when it was changed last.
QVariantList identity(const QString &path)
{
    struct stat status
    {
    };
    if (::lstat(QFile::encodeName(path).constData(), &status) != 0)
        return {};
    return {qulonglong{status.st_ino}, status.st_mode, qulonglong{status.st_rdev},
            QFileInfo(path).symLinkTarget(), qlonglong{status.st_mtim.tv_nsec}};
}

void writeRule(const QString &path)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(
        "[General]\nwindowTitleText=stored\n[rules]\nsize=1\n1\\app=kept\n1\\blocked=true\n");
}

} // namespace

/// The real window where something that is no file stands in the place of its store.
class StrangeStoreTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<WindowFixture> m_fixture;
    std::unique_ptr<QTemporaryDir> m_elsewhere;
    QString m_store;

    QString lockFile() const { return m_store + u".lock"_s; }
    /// Folder of all settings, this program's and others'.
    QString configFolder() const { return QFileInfo(QFileInfo(m_store).path()).path(); }

private Q_SLOTS:
    // To ask for the path opens the store, so it is asked for once.
    void initTestCase() { m_store = WindowFixture::storePath(); }
    void init();
    void cleanup();

    void whatIsNoFileIsNeitherReadNorWritten_data();
    void whatIsNoFileIsNeitherReadNorWritten();
    void whereTheStoreWasNoFileItIsWrittenWhenItCan();
    void aLockThatIsNoFileKeepsTheStoreFromBeingWritten_data();
    void aLockThatIsNoFileKeepsTheStoreFromBeingWritten();
    void aLinkToAFileIsReadAndStaysALink();
    void keysThatTheUserHasNotAreTheSystems();
    void aStrangeFileBehindTheStoreIsPassedOver();
};

void StrangeStoreTest::init()
{
    m_elsewhere = std::make_unique<QTemporaryDir>();
    qputenv("XDG_CONFIG_DIRS", QFile::encodeName(m_elsewhere->path()));
    m_fixture = std::make_unique<WindowFixture>();
    QVERIFY(QDir().mkpath(QFileInfo(m_store).path()));
    QFile::remove(m_store);
}

void StrangeStoreTest::cleanup()
{
    m_fixture.reset();
    QVERIFY(QDir(configFolder()).removeRecursively());
}

void StrangeStoreTest::whatIsNoFileIsNeitherReadNorWritten_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<bool>("linked");
    for (const char *kind : {"FIFO", "socket", "device"}) {
        QTest::addRow("%s", kind) << QString::fromLatin1(kind) << false;
        QTest::addRow("link to a %s", kind) << QString::fromLatin1(kind) << true;
    }
}

void StrangeStoreTest::whatIsNoFileIsNeitherReadNorWritten()
{
    QFETCH(QString, kind);
    QFETCH(bool, linked);
    const QString target = linked ? m_elsewhere->filePath(u"target"_s) : m_store;
    if (kind == u"FIFO"_s)
        makeFifo(target);
    else if (kind == u"socket"_s)
        makeSocket(target);
    else if (!makeDevice(target))
        return; // needs a privilege
    if (linked)
        QVERIFY(QFile::link(target, m_store));
    const QVariantList before = identity(m_store);
    const QVariantList targetBefore = identity(target);

    m_fixture->open();
    m_fixture->tick();
    m_fixture->tick();
    QCOMPARE(identity(m_store), before);
    QCOMPARE(identity(target), targetBefore);
    QCOMPARE(m_fixture->window().windowTitle(), u"Tovan Network Monitor"_s);
}

void StrangeStoreTest::whereTheStoreWasNoFileItIsWrittenWhenItCan()
{
    makeFifo(m_store);
    m_fixture->open();
    m_fixture->tick();
    QVERIFY(QFile::remove(m_store));
    QTRY_VERIFY(QFile::exists(m_store));
    QCOMPARE(WindowFixture::stored(u"windowTitleText"_s), u"Tovan Network Monitor"_s);
}

void StrangeStoreTest::aLockThatIsNoFileKeepsTheStoreFromBeingWritten_data()
{
    QTest::addColumn<std::function<void(const QString &)>>("make");
    const auto row = [](const char *name, const std::function<void(const QString &)> &make) {
        QTest::newRow(name) << make;
    };
    row("FIFO", makeFifo);
    row("socket", makeSocket);
    row("folder", [](const QString &path) { QVERIFY(QDir().mkpath(path)); });
    row("link to nowhere", [](const QString &path) { QVERIFY(QFile::link(u"nowhere"_s, path)); });
}

void StrangeStoreTest::aLockThatIsNoFileKeepsTheStoreFromBeingWritten()
{
    using Make = std::function<void(const QString &)>;
    QFETCH(Make, make);
    writeRule(m_store);
    make(lockFile());
    const QVariantList store = identity(m_store);
    const QVariantList lock = identity(lockFile());

    m_fixture->open();
    m_fixture->tick();
    m_fixture->tick();
    QCOMPARE(identity(m_store), store);
    QCOMPARE(identity(lockFile()), lock);

    // Reading needs no lock: what is saved later is not less than what was there.
    QVERIFY(QFile::remove(lockFile()) || QDir().rmdir(lockFile()));
    m_fixture->system().setCounters(1, 0);
    m_fixture->tick();
    QTRY_COMPARE(WindowFixture::stored(u"todayBytes"_s).toInt(), 1);
    QCOMPARE(WindowFixture::stored(u"rules/1/app"_s), u"kept"_s);
}

void StrangeStoreTest::aLinkToAFileIsReadAndStaysALink()
{
    const QString target = m_elsewhere->filePath(u"target"_s);
    writeRule(target);
    QVERIFY(QFile::link(target, m_store));
    m_fixture->open();
    QCOMPARE(m_fixture->find<QLabel>("titleBarText")->text(), u"stored"_s);
    m_fixture->system().setCounters(1, 0);
    m_fixture->tick();
    QCOMPARE(QFileInfo(m_store).symLinkTarget(), target);
    QFile file(target);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().contains("todayBytes=1\n"));
}

void StrangeStoreTest::keysThatTheUserHasNotAreTheSystems()
{
    QVERIFY(QDir(m_elsewhere->path()).mkdir(u"Tovan"_s));
    writeRule(m_elsewhere->filePath(u"Tovan/Tovan Network Monitor.conf"_s));
    m_fixture->open();
    QCOMPARE(m_fixture->find<QLabel>("titleBarText")->text(), u"stored"_s);
}

void StrangeStoreTest::aStrangeFileBehindTheStoreIsPassedOver()
{
    makeFifo(configFolder() + u"/Tovan.conf"_s);
    makeFifo(m_elsewhere->filePath(u"Tovan.conf"_s));
    writeRule(m_store);
    m_fixture->open();
    QCOMPARE(m_fixture->find<QLabel>("titleBarText")->text(), u"stored"_s);
    m_fixture->system().setCounters(1, 0);
    m_fixture->tick();
    QFile file(m_store);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().contains("todayBytes=1\n"));
}

TOVAN_WINDOW_TEST(strangestore_test, StrangeStoreTest)
#include "strangestore_test.moc"
