#include "dashboard/linux/mounttable.h"
#include "tests/dashboard/linux/desktopfolder.h"
#include "tests/support/testmain.h"

using namespace Qt::StringLiterals;

namespace {

/// Root, /home over the network, a user's mount with blanks in its name, an automounter with a disk
/// of its own upon it.
constexpr std::string_view mountinfo
    = "22 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
      "23 22 0:21 / /proc rw - proc proc rw\n"
      "40 22 0:50 / /home rw,relatime shared:9 master:2 - nfs4 server:/home rw,vers=4.2\n"
      "41 22 0:51 / /media/my\\040disk rw - fuse.sshfs me@there:/ rw\n"
      "42 22 0:52 / /boot rw - autofs systemd-1 rw\n"
      "43 42 8:2 / /boot rw - vfat /dev/sda2 rw\n"
      "44 40 0:53 / /home/me/cache rw - tmpfs tmpfs rw\n"
      "45 22 0:54 / /srv/inner rw - tmpfs tmpfs rw\n"
      "46 22 0:55 / /srv rw - cifs //server/srv rw\n";

} // namespace

class MountTableTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theKindOfTheLastMountOnTheWayCounts_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<bool>("hangs");
        const auto row = [](const char *path, bool hangs) {
            QTest::newRow(path) << QByteArray(path) << hangs;
        };
        row("/", false);
        row("/usr/bin/true", false);
        row("/home", true);
        row("/home/me/app", true);
        row("/homestead", false);
        row("/home/me/cache/app", false);
        row("/media/my disk/app", true);
        row("/media/my", false);
        row("/boot/loader", false);
        row("/srv/app", true);
        // Both lie on the root, so the shorter one covers what was mounted below it.
        row("/srv/inner/app", true);
    }
    void theKindOfTheLastMountOnTheWayCounts()
    {
        QFETCH(QByteArray, path);
        const MountTable mounts(mountinfo);
        QTEST(mounts.mayHang(path.toStdString()), "hangs");
    }

    void unknownKindsAreNotTrusted_data()
    {
        QTest::addColumn<QByteArray>("kind");
        for (const char *kind : {"nfs", "nfs4", "cifs", "smb3", "9p", "ceph", "afs", "autofs",
                                 "fuse", "fuseblk", "fuse.portal", "virtiofs", "lustre", "newfs"})
            QTest::newRow(kind) << QByteArray(kind);
    }
    void unknownKindsAreNotTrusted()
    {
        QFETCH(QByteArray, kind);
        const QByteArray lines
            = "1 0 8:1 / / rw - ext4 /dev/sda1 rw\n2 1 0:9 / /m rw - " + kind + " somewhere rw\n";
        QVERIFY(MountTable(lines.toStdString()).mayHang("/m/app"));
    }

    void theRootIsTrustedWhateverItIs()
    {
        QVERIFY(!MountTable("1 0 0:9 / / rw - nfs4 server:/ rw\n").mayHang("/usr/bin/true"));
    }

    void withoutATableNothingIsTrusted()
    {
        QVERIFY(MountTable("").mayHang("/usr/bin/true"));
        QVERIFY(MountTable("no mounts here\n\n1 2\n").mayHang("/usr/bin/true"));
    }

    void linksAreFollowedToTheirEnd()
    {
        const DesktopFolder folder;
        folder.write(u"opt/app/app"_s);
        folder.link(u"alternatives/app"_s, folder.path(u"opt/app/./app"_s));
        folder.link(u"bin/app"_s, u"../alternatives/app"_s);
        const ResolvedPath resolved
            = resolve(MountTable::current(), folder.path(u"bin/app"_s).toStdString());
        QVERIFY(resolved.end == ResolvedPath::End::Exists);
        QCOMPARE(QString::fromStdString(resolved.path), folder.path(u"opt/app/app"_s));
    }

    void linksThatLeadNowhereEnd()
    {
        const DesktopFolder folder;
        folder.link(u"round"_s, folder.path(u"round"_s));
        folder.link(u"gone"_s, folder.path(u"nothing"_s));
        const MountTable mounts = MountTable::current();
        for (const QString &name : {u"round"_s, u"gone"_s, u"gone/below"_s}) {
            QVERIFY(resolve(mounts, folder.path(name).toStdString()).end
                    == ResolvedPath::End::Missing);
        }
        QVERIFY(resolve(mounts, "bin/app").end == ResolvedPath::End::Missing);
    }

    void aLinkOntoWhatMayHangIsNotFollowedFurther()
    {
        const DesktopFolder folder;
        folder.link(u"bin/app"_s, folder.path(u"net/tools/../app"_s));
        const std::string net = folder.path(u"net"_s).toStdString();
        const MountTable mounts("1 0 8:1 / / rw - ext4 /dev/sda1 rw\n2 1 0:9 / " + net
                                + " rw - nfs4 server:/ rw\n");
        const ResolvedPath resolved = resolve(mounts, folder.path(u"bin/app"_s).toStdString());
        QVERIFY(resolved.end == ResolvedPath::End::MayHang);
        QVERIFY(QString::fromStdString(resolved.path).startsWith(folder.path(u"net"_s)));
    }
};

TOVAN_APPLESS_TEST(mounttable_test, MountTableTest)
#include "mounttable_test.moc"
