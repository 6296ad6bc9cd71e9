#include "dashboard/linux/desktopentries.h"
#include "dashboard/linux/mounttable.h"
#include "tests/dashboard/linux/desktopfolder.h"
#include "tests/support/testmain.h"

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

DesktopEntries entriesOf(const DesktopFolder &folder)
{
    return {{folder.path(u"home/applications"_s), folder.path(u"share/applications"_s)},
            {folder.path(u"nowhere"_s), folder.path(u"bin"_s)},
            MountTable::current()};
}

} // namespace

class DesktopEntriesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// Which program an entry is found by: %1 stands for the test's folder.
    void theProgramOfACommand_data()
    {
        QTest::addColumn<QByteArray>("exec");
        QTest::addColumn<QString>("path");
        QTest::newRow("absolute") << QByteArray("%1/opt/player/player") << u"opt/player/player"_s;
        QTest::newRow("in the search path") << QByteArray("tool") << u"bin/tool"_s;
        QTest::newRow("through links") << QByteArray("play") << u"opt/player/player"_s;
        QTest::newRow("with a file") << QByteArray("tool %U") << u"bin/tool"_s;
        QTest::newRow("with options") << QByteArray("tool --new-window -s %U") << u"bin/tool"_s;
        QTest::newRow("quoted") << QByteArray("\"%1/opt/with blank/app\" %f")
                                << u"opt/with blank/app"_s;
        QTest::newRow("with an environment")
            << QByteArray("env LANG=C PATH=/bin tool %u") << u"bin/tool"_s;
        QTest::newRow("with options of an environment")
            << QByteArray("/usr/bin/env -i -u HOME LANG=C tool") << u"bin/tool"_s;
    }
    void theProgramOfACommand()
    {
        QFETCH(QByteArray, exec);
        QFETCH(QString, path);
        const DesktopFolder folder;
        folder.write(u"opt/player/player"_s);
        folder.write(u"opt/with blank/app"_s);
        folder.write(u"bin/tool"_s);
        folder.link(u"bin/play"_s, folder.path(u"opt/player/player"_s));
        exec.replace("%1/", folder.path().toUtf8());
        folder.writeEntry(u"app"_s, "Icon=the-icon\nExec=" + exec);
        QCOMPARE(entriesOf(folder).iconOfProgram(folder.path(path)), u"the-icon"_s);
    }

    /// Otherwise every script would have the icon of some application that is one.
    void aProgramThatIsGivenSomethingToRunIsNotTheApplication_data()
    {
        QTest::addColumn<QByteArray>("exec");
        for (const char *exec :
             {"tool /usr/share/app/main", "tool -c 'app %U'", "tool -jar app.jar",
              "env LANG=C tool run app", "tool app://run/1"})
            QTest::newRow(exec) << QByteArray(exec);
    }
    void aProgramThatIsGivenSomethingToRunIsNotTheApplication()
    {
        QFETCH(QByteArray, exec);
        const DesktopFolder folder;
        folder.write(u"bin/tool"_s);
        folder.writeEntry(u"app"_s, "Icon=the-icon\nExec=" + exec);
        const DesktopEntries entries = entriesOf(folder);
        QCOMPARE(entries.iconOfProgram(folder.path(u"bin/tool"_s)), QString());
        QCOMPARE(entries.iconOfFileName(u"tool"_s), QString());
        QCOMPARE(entries.iconOfId(u"app"_s), u"the-icon"_s);
    }

    void aProgramIsAlsoFoundByItsFileName()
    {
        const DesktopFolder folder;
        folder.writeEntry(u"app"_s, "Icon=the-icon\nExec=/elsewhere/wrapper %U");
        QCOMPARE(entriesOf(folder).iconOfFileName(u"wrapper"_s), u"the-icon"_s);
        QCOMPARE(entriesOf(folder).iconOfFileName(u"other"_s), QString());
    }

    void theUsersEntryHidesTheSystems()
    {
        const DesktopFolder folder;
        folder.writeEntry(u"app"_s, "Icon=of-the-system\nExec=/usr/bin/tool");
        folder.write(u"home/applications/app.desktop"_s,
                     "[Desktop Entry]\nType=Application\nIcon=of-the-user\nExec=/usr/bin/other\n");
        const DesktopEntries entries = entriesOf(folder);
        QCOMPARE(entries.iconOfId(u"app"_s), u"of-the-user"_s);
        QCOMPARE(entries.iconOfFileName(u"tool"_s), QString());
    }

    void aRemovedEntryHidesTheSystemsToo()
    {
        const DesktopFolder folder;
        folder.writeEntry(u"app"_s, "Icon=of-the-system\nExec=/usr/bin/tool");
        folder.write(u"home/applications/app.desktop"_s,
                     "[Desktop Entry]\nType=Application\nHidden=true\n");
        QCOMPARE(entriesOf(folder).iconOfId(u"app"_s), QString());
        QCOMPARE(entriesOf(folder).iconOfFileName(u"tool"_s), QString());
    }

    void anEntryInAFolderOfItsOwnHasTheFolderInItsId()
    {
        const DesktopFolder folder;
        folder.writeEntry(u"kde/app"_s, "Icon=the-icon\nExec=/usr/bin/tool");
        QCOMPARE(entriesOf(folder).iconOfId(u"kde-app"_s), u"the-icon"_s);
    }

    void anEntryThatTheMenuDoesNotShowCountsWhereThereIsNoOther()
    {
        const DesktopFolder folder;
        folder.writeEntry(u"a"_s, "Icon=hidden-one\nNoDisplay=true\nExec=/usr/bin/tool");
        QCOMPARE(entriesOf(folder).iconOfFileName(u"tool"_s), u"hidden-one"_s);
        folder.writeEntry(u"b"_s, "Icon=shown-one\nExec=/usr/bin/tool --option");
        QCOMPARE(entriesOf(folder).iconOfFileName(u"tool"_s), u"shown-one"_s);
    }

    void theEntryWithTheFewestOptionsIsThePrograms()
    {
        const DesktopFolder folder;
        folder.writeEntry(u"a"_s, "Icon=one-site\nExec=/usr/bin/tool --app-id=abc");
        folder.writeEntry(u"b"_s, "Icon=the-icon\nExec=/usr/bin/tool %U");
        QCOMPARE(entriesOf(folder).iconOfFileName(u"tool"_s), u"the-icon"_s);
    }

    void anEntryWhoseProgramIsNotInstalledCountsNot()
    {
        const DesktopFolder folder;
        folder.write(u"bin/present"_s);
        folder.writeEntry(u"a"_s, "Icon=a\nExec=/usr/bin/first\nTryExec=absent");
        folder.writeEntry(u"b"_s, "Icon=b\nExec=/usr/bin/second\nTryExec=present");
        const DesktopEntries entries = entriesOf(folder);
        QCOMPARE(entries.iconOfFileName(u"first"_s), QString());
        QCOMPARE(entries.iconOfFileName(u"second"_s), u"b"_s);
    }

    void whatStartsAPackageHasNotItsIcon()
    {
        const DesktopFolder folder;
        folder.write(u"bin/packages"_s);
        folder.link(u"bin/player"_s, folder.path(u"bin/packages"_s));
        folder.writeEntry(u"player_player"_s,
                          "Icon=the-icon\nX-SnapInstanceName=player\nExec=player %U");
        QCOMPARE(entriesOf(folder).iconOfProgram(folder.path(u"bin/packages"_s)), QString());
        QCOMPARE(entriesOf(folder).iconOfId(u"player_player"_s), u"the-icon"_s);
    }

    void whatIsNoEntryIsPassedOver()
    {
        const DesktopFolder folder;
        folder.write(u"share/applications/empty.desktop"_s);
        folder.write(u"share/applications/noise.desktop"_s, QByteArray(4096, '\xff'));
        folder.write(u"share/applications/quote.desktop"_s,
                     "[Desktop Entry]\nType=Application\nIcon=x\nExec=\"never closed\n");
        folder.write(u"share/applications/link.desktop"_s,
                     "[Desktop Entry]\nType=Link\nIcon=x\nExec=/usr/bin/linked\n");
        folder.link(u"share/applications/gone.desktop"_s, folder.path(u"nothing"_s));
        folder.link(u"share/applications/loop"_s, folder.path(u"share/applications"_s));
        // Whoever opens it would wait for a writer.
        const QByteArray fifo = folder.path(u"share/applications/fifo.desktop"_s).toUtf8();
        QCOMPARE(::mkfifo(fifo.constData(), 0600), 0);
        folder.writeEntry(u"zz"_s, "Icon=the-icon\nExec=/usr/bin/tool");
        const DesktopEntries entries = entriesOf(folder);
        QCOMPARE(entries.iconOfFileName(u"tool"_s), u"the-icon"_s);
        QCOMPARE(entries.iconOfFileName(u"linked"_s), QString());
        QCOMPARE(entries.iconOfFileName(u"never closed"_s), QString());
    }

    void anEntryOfAProgramThatMayHangIsFoundByItsPath()
    {
        const DesktopFolder folder;
        folder.writeEntry(u"app"_s,
                          "Icon=the-icon\nTryExec=" + folder.path(u"net/app"_s).toUtf8()
                              + "\nExec=" + folder.path(u"net/app"_s).toUtf8() + " %U");
        const std::string net = folder.path(u"net"_s).toStdString();
        const MountTable mounts("1 0 8:1 / / rw - ext4 /dev/sda1 rw\n2 1 0:9 / " + net
                                + " rw - nfs4 server:/ rw\n");
        const DesktopEntries entries({folder.path(u"share/applications"_s)}, {}, mounts);
        QCOMPARE(entries.iconOfProgram(folder.path(u"net/app"_s)), u"the-icon"_s);
    }
};

TOVAN_APPLESS_TEST(desktopentries_test, DesktopEntriesTest)
#include "desktopentries_test.moc"
