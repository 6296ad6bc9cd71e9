#include "dashboard/linux/packagedapplication.h"
#include "tests/support/testmain.h"

using namespace Qt::StringLiterals;

class PackagedApplicationTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theUnitNamesTheEntry_data()
    {
        QTest::addColumn<QString>("cgroups");
        QTest::addColumn<QString>("first");
        const QString user = u"0::/user.slice/user-1000.slice/user@1000.service/app.slice/"_s;
        QTest::newRow("a Flatpak")
            << user + "app-flatpak-org.example.Player-4711.scope\n"_L1 << u"org.example.Player"_s;
        QTest::newRow("an older Flatpak")
            << user + "flatpak-org.example.Player-4711.scope\n"_L1 << u"org.example.Player"_s;
        QTest::newRow("a Flatpak with a hyphen")
            << user + "app-flatpak-org.example.media\\x2dplayer-4711.scope\n"_L1
            << u"org.example.media-player"_s;
        QTest::newRow("below a Flatpak's unit")
            << user + "app-flatpak-org.example.Player-4711.scope/child\n"_L1
            << u"org.example.Player"_s;
        QTest::newRow("a Snap") << user
                + "snap.player.player-0a1b2c3d-0123-4567-89ab-0123456789ab.scope\n"_L1
                                << u"player_player"_s;
        QTest::newRow("an older Snap")
            << user + "snap.player.player.0a1b2c3d-0123-4567-89ab-0123456789ab.scope\n"_L1
            << u"player_player"_s;
        QTest::newRow("another command of a Snap")
            << user + "snap.player.tag-tool-0a1b2c3d-0123-4567-89ab-0123456789ab.scope\n"_L1
            << u"player_tag-tool"_s;
        QTest::newRow("a second installation of a Snap")
            << user + "snap.player_work.player-0a1b2c3d-0123-4567-89ab-0123456789ab.scope\n"_L1
            << u"player+work_player"_s;
        QTest::newRow("a Snap's service")
            << u"0::/system.slice/snap.server.daemon.service\n"_s << u"server_daemon"_s;
        QTest::newRow("with the first version's hierarchies")
            << u"12:pids:/user.slice/user-1000.slice\n1:name=systemd:/user.slice/"
               "app-flatpak-org.example.Player-4711.scope\n"_s
            << u"org.example.Player"_s;
    }
    void theUnitNamesTheEntry()
    {
        QFETCH(QString, cgroups);
        QTEST(packagedApplicationIds(cgroups).value(0), "first");
    }

    void anotherCommandOfASnapMayHaveTheEntryOfTheSnap()
    {
        QCOMPARE(packagedApplicationIds(u"0::/snap.player.tag-tool.service\n"_s),
                 (QStringList{u"player_tag-tool"_s, u"player_player"_s}));
    }

    void otherUnitsNameNone_data()
    {
        QTest::addColumn<QString>("cgroups");
        QTest::newRow("nothing") << QString();
        QTest::newRow("a kernel thread") << u"0::/\n"_s;
        // Whatever is started in a terminal is in the terminal's unit.
        QTest::newRow("a terminal") << u"0::/app.slice/app-gnome-org.example.Term-4711.scope\n"_s;
        QTest::newRow("the packages' service") << u"0::/system.slice/snapd.service\n"_s;
        QTest::newRow("the portal") << u"0::/app.slice/flatpak-portal.service\n"_s;
        QTest::newRow("no number") << u"0::/app.slice/app-flatpak-org.example.Player.scope\n"_s;
    }
    void otherUnitsNameNone()
    {
        QFETCH(QString, cgroups);
        QCOMPARE(packagedApplicationIds(cgroups), QStringList());
    }
};

TOVAN_APPLESS_TEST(packagedapplication_test, PackagedApplicationTest)
#include "packagedapplication_test.moc"
