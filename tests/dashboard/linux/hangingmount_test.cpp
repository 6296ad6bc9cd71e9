#include "assets/images.h"
#include "dashboard/applicationicons.h"
#include "tests/dashboard/linux/desktopfolder.h"
#include "tests/dashboard/linux/silentfilesystem.h"
#include "tests/support/linux/ownnamespaces.h"
#include "tests/support/windowfixture.h"

#include <QDir>

using namespace Qt::StringLiterals;

/// A desktop one folder of which, net/, is a file system that does not answer.
class HangingMountTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<DesktopFolder>();
        m_folder->useAsDesktop();
        QVERIFY(QDir().mkpath(m_folder->path(u"net"_s)));
        m_silent = std::make_unique<SilentFileSystem>(m_folder->path(u"net"_s));
        if (!m_silent->isMounted())
            QSKIP("this machine mounts no FUSE file system");
    }
    void cleanup()
    {
        m_silent.reset();
        m_folder.reset();
    }

    /// That the file system does what the others rely on.
    void whoeverAsksIsSeen()
    {
        QVERIFY(!m_silent->wasTouched());
        QVERIFY(!QFile::exists(m_folder->path(u"net/alpha"_s)));
        QVERIFY(m_silent->wasTouched());
    }

    void anExecutableUponItHasTheProgramsIcon()
    {
        WindowFixture fixture;
        fixture.system().addProcess(1, u"alpha"_s, 1);
        fixture.system().imagePaths[1] = m_folder->path(u"net/alpha"_s).toUtf8();
        fixture.open();
        fixture.tick();
        QVERIFY(!m_silent->wasTouched());
        QCOMPARE(fixture.appsTable()->item(1, 0)->icon().pixmap(16).toImage(),
                 assetIcon(u"tovan-site-icon.svg"_s).pixmap(16).toImage());
    }

    void anExecutableUponItHasTheIconOfItsEntry()
    {
        const QByteArray program = m_folder->path(u"net/alpha"_s).toUtf8();
        m_folder->writeThemeIcon(u"alpha-icon"_s, Qt::red);
        m_folder->writeEntry(u"alpha"_s,
                             "Icon=alpha-icon\nTryExec=" + program
                                 + "\nExec=" + m_folder->quoted(u"net/alpha"_s) + " %U");
        WindowFixture fixture;
        fixture.system().addProcess(1, u"alpha"_s, 1);
        fixture.system().imagePaths[1] = program;
        fixture.open();
        fixture.tick();
        QVERIFY(!m_silent->wasTouched());
        QCOMPARE(colourOf(fixture.appsTable()->item(1, 0)->icon()), QColor(Qt::red));
    }

    void linksOntoItAreNotFollowed()
    {
        m_folder->link(u"bin/alpha"_s, m_folder->path(u"net/alpha"_s));
        m_folder->link(u"share/applications/there.desktop"_s, m_folder->path(u"net/there"_s));
        m_folder->link(u"share/applications/folder"_s, m_folder->path(u"net"_s));
        m_folder->writeEntry(u"alpha"_s,
                             "Icon=" + m_folder->path(u"net/alpha.png"_s).toUtf8()
                                 + "\nExec=" + m_folder->quoted(u"bin/alpha"_s));
        const auto icons = makeApplicationIcons();
        QVERIFY(icons->iconOf(m_folder->path(u"bin/alpha"_s), 0).isNull());
        QVERIFY(icons->iconOf(m_folder->path(u"net/alpha"_s), 0).isNull());
        QVERIFY(!m_silent->wasTouched());
    }

    void theFoldersOfTheDesktopMayLieUponIt()
    {
        m_folder->writeEntry(u"alpha"_s, "Icon=alpha-icon\nExec=alpha");
        m_folder->writeThemeIcon(u"alpha-icon"_s, Qt::red);
        const QString net = m_folder->path(u"net"_s);
        qputenv("XDG_DATA_HOME", net.toUtf8());
        qputenv("XDG_DATA_DIRS", (net + "/more:"_L1 + m_folder->path(u"share"_s)).toUtf8());
        QIcon::setThemeSearchPaths({net + "/icons"_L1, m_folder->path(u"share/icons"_s)});
        const QByteArray searchPath = qgetenv("PATH");
        qputenv("PATH", net.toUtf8() + "/bin:" + searchPath);
        const auto icons = makeApplicationIcons();
        QCOMPARE(colourOf(icons->iconOf(u"/usr/bin/alpha"_s, 0)), QColor(Qt::red));
        // It may be the one that lies there.
        QCOMPARE(colourOf(icons->iconOf(net + "/bin/alpha"_L1, 0)), QColor(Qt::red));
        qputenv("PATH", searchPath);
        QVERIFY(!m_silent->wasTouched());
    }

private:
    std::unique_ptr<DesktopFolder> m_folder;
    std::unique_ptr<SilentFileSystem> m_silent;
};

/// Mounts are entered before the toolkit has threads.
int hangingmount_test(int argc, char *argv[])
{
    if (!enterOwnMounts())
        qWarning("no mounts of its own for this process");
    prepareTestProcess();
    const QApplication app(argc, argv);
    HangingMountTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "hangingmount_test.moc"
