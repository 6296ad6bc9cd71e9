#include "bench/surroundings.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QTimer>

using namespace Qt::StringLiterals;

Surroundings::Surroundings()
    : m_home(QDir::tempPath() + "/tovan-bench-XXXXXX"_L1),
      m_programs(QCoreApplication::applicationDirPath() + "/load-XXXXXX"_L1)
{
    qputenv("XDG_RUNTIME_DIR", m_home.path().toLocal8Bit());
    m_desktop.connect();
    TestDesktop::start(TestDesktop::Service::Tray);
    TestDesktop::start(TestDesktop::Service::Notifications);
    m_manager.emplace(u"openbox"_s, m_home.path());
    m_screen.emplace();
    m_load.emplace(LoadShape{"desktop", 150, 8, 2, 60}, m_programs.path().toStdString());
    m_besides = runningProcesses();
}

QString Surroundings::home(const QString &program) const
{
    return m_home.filePath(program.section(u'/', -1));
}

void pass(qint64 milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

void settleDown()
{
    pass(10000);
}

QString monitorPath()
{
    return QCoreApplication::applicationDirPath() + "/tovan-network-monitor"_L1;
}
