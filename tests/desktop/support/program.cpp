#include "tests/desktop/support/program.h"

#include "tests/support/patience.h"

#include <QFileInfo>
#include <QSettings>
#include <QtTest>

#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize miniSize(220, 92); // what tells the mini monitor from the window

/// Tells a file from the one that takes its place.
ino_t identity(const QByteArray &path)
{
    struct stat status
    {
    };
    return stat(path.constData(), &status) == 0 ? status.st_ino : 0;
}

} // namespace

Program::Program(Desktop &desktop, const std::function<void(AppSettings &)> &change)
    : m_desktop(desktop)
{
    m_seeded.settings.refreshIntervalMs = numberSetting(&AppSettings::refreshIntervalMs).low;
    m_seeded.rules.insert(u"application"_s, {true, false, true, u"High"_s, 77, 88});
    change(m_seeded.settings);
    QDir().mkpath(QFileInfo(storePath()).path());
    QSettings store(storePath(), QSettings::IniFormat);
    writeStore(store, m_seeded);

    QProcessEnvironment environment = desktop.environment();
    environment.insert(u"XDG_CONFIG_HOME"_s, m_folder.path());
    m_process.setProcessEnvironment(environment);
}

void Program::start(const QHash<QString, QString> &more)
{
    QProcessEnvironment environment = m_process.processEnvironment();
    for (auto variable = more.begin(); variable != more.end(); ++variable)
        environment.insert(variable.key(), variable.value());
    m_process.setProcessEnvironment(environment);
    m_process.start(qEnvironmentVariable("TOVAN_PROGRAM"), QStringList());
    if (!m_process.waitForStarted())
        qFatal("the program does not start");
}

std::unique_ptr<OwnedProcess> Program::startAnother(const QHash<QString, QString> &more) const
{
    auto process = std::make_unique<OwnedProcess>();
    QProcessEnvironment environment = m_process.processEnvironment();
    for (auto variable = more.begin(); variable != more.end(); ++variable)
        environment.insert(variable.key(), variable.value());
    process->setProcessEnvironment(environment);
    process->setStandardErrorFile(QString());
    process->setProcessChannelMode(QProcess::MergedChannels);
    process->start(qEnvironmentVariable("TOVAN_PROGRAM"), QStringList());
    if (!process->waitForStarted())
        qFatal("the program does not start");
    return process;
}

bool endsSilently(OwnedProcess &process)
{
    return QTest::qWaitFor([&process] { return process.state() == QProcess::NotRunning; }, patience)
        && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0
        && process.readAll().isEmpty();
}

bool Program::endsWell()
{
    return QTest::qWaitFor([this] { return !isRunning(); }, patience)
        && m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0;
}

void Program::send(int signal) const
{
    kill(static_cast<pid_t>(pid()), signal);
}

ManagedWindow Program::window() const
{
    return find([](QSize size) { return size != miniSize; });
}

ManagedWindow Program::mini() const
{
    return find([](QSize size) { return size == miniSize; });
}

ManagedWindow Program::find(bool (*hasSize)(QSize)) const
{
    const auto windows = m_desktop.screen().windows(pid());
    for (const ManagedWindow &window : windows) {
        if (hasSize(window.geometry.size()))
            return window;
    }
    return {};
}

bool Program::isActive() const
{
    return QTest::qWaitFor(
        [this] {
            const xcb_window_t id = window().id;
            return id != XCB_WINDOW_NONE && m_desktop.screen().focusedWindow() == id;
        },
        patience);
}

void Program::click(QPoint place, int button) const
{
    const QPoint position = window().geometry.topLeft() + place;
    m_desktop.act(u"mousemove %1 %2 click %3"_s.arg(position.x()).arg(position.y()).arg(button));
}

bool Program::ticks()
{
    const QByteArray store = QFile::encodeName(storePath());
    // The next save may belong to a tick that is under way.
    for (int save = 0; save < 2; ++save) {
        const ino_t before = identity(store);
        const auto isReplaced = [&] {
            // A tick that changes nothing replaces only what somebody has touched since the last
            // save.
            utimensat(AT_FDCWD, store.constData(), nullptr, 0);
            return identity(store) != before;
        };
        if (!QTest::qWaitFor([&] { return !isRunning() || isReplaced(); }, patience))
            return false;
    }
    return isRunning();
}

StoredState Program::stored() const
{
    // A copy of its own name: QSettings remembers what it read from a file.
    const QTemporaryDir folder;
    const QString copy = folder.filePath(u"copy"_s);
    QFile::copy(storePath(), copy);
    QSettings store(copy, QSettings::IniFormat);
    return readStore(store, QDate());
}

bool Program::storeIsWhole() const
{
    const StoredState state = stored();
    return state.settings == m_seeded.settings && state.rules == m_seeded.rules;
}

QString Program::storePath() const
{
    return m_folder.filePath(u"Tovan/Tovan Network Monitor.conf"_s);
}
