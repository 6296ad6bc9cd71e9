#include "tests/support/testmain.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <elf.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/xattr.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr uid_t someUser = 65534;

/// Lets everyone who starts the file bind low ports, capabilities(7). False where that is not
/// allowed.
bool giveCapability(const QString &path)
{
    vfs_cap_data capabilities{};
    capabilities.magic_etc = VFS_CAP_REVISION_2 | VFS_CAP_FLAGS_EFFECTIVE;
    capabilities.data[0].permitted = 1U << CAP_NET_BIND_SERVICE;
    return setxattr(QFile::encodeName(path).constData(), "security.capability", &capabilities,
                    sizeof capabilities, 0)
        == 0;
}

QByteArray processFile(const QProcess &process, const char *name)
{
    QFile file(u"/proc/%1/%2"_s.arg(process.processId()).arg(QLatin1StringView(name)));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Whether the kernel calls the start one with more privileges than the starter's.
bool isPrivileged(const QProcess &process)
{
    const QByteArray bytes = processFile(process, "auxv");
    std::vector<Elf64_auxv_t> entries(static_cast<size_t>(bytes.size()) / sizeof(Elf64_auxv_t));
    std::memcpy(entries.data(), bytes.constData(), entries.size() * sizeof(Elf64_auxv_t));
    return std::ranges::any_of(entries, [](const Elf64_auxv_t &entry) {
        return entry.a_type == AT_SECURE && entry.a_un.a_val != 0;
    });
}

} // namespace

/// The program with file capabilities, started by a user who has none.
class PrivilegedStartTest : public QObject
{
    Q_OBJECT

    /// Ends the last program and forgets its folder.
    void startAnew();
    /// Starts the program, with a capability or without one.
    void start(bool privileged, const QProcessEnvironment &more, const QStringList &arguments);
    /// Whether the program has loaded the starter's plug-in, as soon as it runs.
    bool hasLoadedForeignCode();
    QString folder() const { return m_folder->path(); }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<QProcess> m_program;
    QTemporaryDir m_plugins; ///< Copied, for the project's own folder may be closed to the user.

private Q_SLOTS:
    void initTestCase();
    void cleanup() { startAnew(); }
    void noCodeOfTheStartersIsLoaded_data();
    void noCodeOfTheStartersIsLoaded();
};

void PrivilegedStartTest::initTestCase()
{
    const QDir built(qEnvironmentVariable("TOVAN_FOREIGN_PLUGINS") + u"/platformthemes"_s);
    const QDir copied(m_plugins.filePath(u"platformthemes"_s));
    QVERIFY(copied.mkpath(u"."_s));
    const QStringList names = built.entryList(QDir::Files);
    QVERIFY(!names.isEmpty());
    for (const QString &name : names)
        QVERIFY(QFile::copy(built.filePath(name), copied.filePath(name)));
    QVERIFY(QFile::setPermissions(m_plugins.path(),
                                  QFile::permissions(m_plugins.path()) | QFile::ReadOther
                                      | QFile::ExeOther));
}

void PrivilegedStartTest::startAnew()
{
    if (m_program) {
        m_program->kill();
        m_program->waitForFinished();
    }
    m_program = std::make_unique<QProcess>();
    m_folder = std::make_unique<QTemporaryDir>();
}

void PrivilegedStartTest::start(bool privileged, const QProcessEnvironment &more,
                                const QStringList &arguments)
{
    const QString program = folder() + u"/program"_s;
    QVERIFY(QFile::copy(qEnvironmentVariable("TOVAN_PROGRAM"), program));
    QCOMPARE(::chown(QFile::encodeName(folder()).constData(), someUser, someUser), 0);
    if (privileged)
        QVERIFY(giveCapability(program));

    QProcessEnvironment environment;
    environment.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
    environment.insert(u"XDG_CONFIG_HOME"_s, folder() + u"/config"_s);
    environment.insert(u"XDG_RUNTIME_DIR"_s, folder());
    environment.insert(more);
    m_program->setProcessEnvironment(environment);
    m_program->setChildProcessModifier([] {
        if (::setgid(someUser) != 0 || ::setuid(someUser) != 0)
            ::_exit(1);
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    });
    m_program->setStandardErrorFile(QProcess::nullDevice());
    m_program->start(program, arguments);
    QVERIFY(m_program->waitForStarted());
}

bool PrivilegedStartTest::hasLoadedForeignCode()
{
    // With its first save the program has all its plug-ins.
    const QString store = folder() + u"/config/Tovan/Tovan Network Monitor.conf"_s;
    if (!QTest::qWaitFor([&store] { return QFile::exists(store); }, patience))
        qFatal("the program does not run");
    return processFile(*m_program, "maps").contains(QFile::encodeName(m_plugins.path()));
}

void PrivilegedStartTest::noCodeOfTheStartersIsLoaded_data()
{
    QTest::addColumn<QProcessEnvironment>("environment");
    QTest::addColumn<QStringList>("arguments");
    const QString plugins = m_plugins.path();
    const QString themes = plugins + u"/platformthemes"_s;
    QProcessEnvironment environment;
    QTest::newRow("arguments") << environment
                               << QStringList{u"-platformpluginpath"_s, themes, u"-platformtheme"_s,
                                              u"foreign"_s};
    environment.insert(u"QT_QPA_PLATFORMTHEME"_s, u"foreign"_s);
    environment.insert(u"QT_PLUGIN_PATH"_s, plugins);
    QTest::newRow("path of plug-ins") << environment << QStringList();
    environment.remove(u"QT_PLUGIN_PATH"_s);
    environment.insert(u"QT_QPA_PLATFORM_PLUGIN_PATH"_s, themes);
    QTest::newRow("path of the platform's plug-ins") << environment << QStringList();
}

void PrivilegedStartTest::noCodeOfTheStartersIsLoaded()
{
    QFETCH(QProcessEnvironment, environment);
    QFETCH(QStringList, arguments);
    if (::geteuid() != 0)
        return; // nobody else can give a file capabilities
    for (const bool privileged : {false, true}) {
        startAnew();
        start(privileged, environment, arguments);
        QCOMPARE(hasLoadedForeignCode(), !privileged);
        QCOMPARE(isPrivileged(*m_program), privileged);
    }
}

TOVAN_GUILESS_TEST(privilegedstart_test, PrivilegedStartTest)
#include "privilegedstart_test.moc"
