#include "dashboard/applicationicons.h"
#include "tests/dashboard/linux/desktopfolder.h"
#include "tests/support/windowfixture.h"

using namespace Qt::StringLiterals;

class ApplicationIconsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anApplicationHasTheIconOfItsEntry()
    {
        const DesktopFolder folder;
        folder.useAsDesktop();
        folder.write(u"opt/alpha"_s);
        folder.writeThemeIcon(u"alpha-icon"_s, Qt::red);
        folder.writeEntry(u"org.example.Alpha"_s,
                          "Icon=alpha-icon\nExec=" + folder.quoted(u"opt/alpha"_s) + " %U");
        WindowFixture fixture;
        fixture.system().addProcess(1, u"alpha"_s, 1);
        fixture.system().imagePaths[1] = folder.path(u"opt/alpha"_s).toUtf8();
        fixture.open();
        fixture.tick();
        QCOMPARE(colourOf(fixture.appsTable()->item(1, 0)->icon()), QColor(Qt::red));
    }

    void anExecutableOfThePathGoesBeforeOneOfTheFileName()
    {
        const DesktopFolder folder;
        folder.useAsDesktop();
        folder.write(u"opt/alpha"_s);
        folder.writeThemeIcon(u"by-path"_s, Qt::red);
        folder.writeThemeIcon(u"by-name"_s, Qt::green);
        folder.writeEntry(u"a"_s, "Icon=by-name\nExec=/usr/bin/alpha");
        folder.writeEntry(u"b"_s, "Icon=by-path\nExec=" + folder.quoted(u"opt/alpha"_s) + " --opt");
        const auto icons = makeApplicationIcons();
        QCOMPARE(colourOf(icons->iconOf(folder.path(u"opt/alpha"_s), 0)), QColor(Qt::red));
        QCOMPARE(colourOf(icons->iconOf(u"/elsewhere/alpha"_s, 0)), QColor(Qt::green));
    }

    void anEntryMayNameAnImage()
    {
        const DesktopFolder folder;
        folder.useAsDesktop();
        folder.writeThemeIcon(u"alpha-icon"_s, Qt::blue);
        const QString image = folder.path(u"share/icons/hicolor/16x16/apps/alpha-icon.png"_s);
        folder.writeEntry(u"alpha"_s, "Icon=" + image.toUtf8() + "\nExec=/usr/bin/alpha");
        const auto icons = makeApplicationIcons();
        QCOMPARE(colourOf(icons->iconOf(u"/usr/bin/alpha"_s, 0)), QColor(Qt::blue));
    }

    void anIconThatTheThemeHasNotLeavesTheExecutablesOwn()
    {
        const DesktopFolder folder;
        folder.useAsDesktop();
        folder.write(u"opt/alpha"_s);
        const auto icons = makeApplicationIcons();
        const QImage own = icons->iconOf(folder.path(u"opt/alpha"_s), 0).pixmap(16).toImage();
        QVERIFY(!own.isNull());
        folder.writeEntry(u"alpha"_s, "Icon=not-in-any-theme\nExec=alpha");
        const auto fresh = makeApplicationIcons();
        QCOMPARE(fresh->iconOf(folder.path(u"opt/alpha"_s), 0).pixmap(16).toImage(), own);
    }

    /// Each copy would hold its own images, of 70 KiB together.
    void filesWithoutAnEntryShareOneIcon()
    {
        const DesktopFolder folder;
        folder.useAsDesktop();
        folder.write(u"opt/alpha"_s);
        folder.write(u"opt/beta"_s);
        const auto icons = makeApplicationIcons();
        const QIcon alpha = icons->iconOf(folder.path(u"opt/alpha"_s), 0);
        QVERIFY(!alpha.isNull());
        QCOMPARE(icons->iconOf(folder.path(u"opt/beta"_s), 0).cacheKey(), alpha.cacheKey());
    }

    void anApplicationWithoutEntryAndFileHasNone()
    {
        const DesktopFolder folder;
        folder.useAsDesktop();
        const auto icons = makeApplicationIcons();
        QVERIFY(icons->iconOf(QString(), 0).isNull());
        QVERIFY(icons->iconOf(u"/nowhere/alpha"_s, 0).isNull());
        QVERIFY(icons->iconOf(folder.path(), 0).isNull());
    }

    void anEntryThatComesIsSeen()
    {
        const DesktopFolder folder;
        folder.useAsDesktop();
        folder.writeThemeIcon(u"alpha-icon"_s, Qt::red);
        const auto icons = makeApplicationIcons();
        // The folder of entries is not there yet.
        QVERIFY(icons->iconOf(u"/usr/bin/alpha"_s, 0).isNull());
        folder.writeEntry(u"alpha"_s, "Icon=alpha-icon\nExec=/usr/bin/alpha");
        QTRY_COMPARE(colourOf(icons->iconOf(u"/usr/bin/alpha"_s, 0)), QColor(Qt::red));
    }

    void anEntryThatIsWrittenAnewIsSeen()
    {
        const DesktopFolder folder;
        folder.useAsDesktop();
        folder.writeThemeIcon(u"first"_s, Qt::red);
        folder.writeThemeIcon(u"second"_s, Qt::green);
        folder.writeEntry(u"alpha"_s, "Icon=first\nExec=/usr/bin/alpha");
        const auto icons = makeApplicationIcons();
        QCOMPARE(colourOf(icons->iconOf(u"/usr/bin/alpha"_s, 0)), QColor(Qt::red));
        folder.writeEntry(u"alpha"_s, "Icon=second\nExec=/usr/bin/alpha");
        QTRY_COMPARE(colourOf(icons->iconOf(u"/usr/bin/alpha"_s, 0)), QColor(Qt::green));
    }
};

TOVAN_WINDOW_TEST(applicationicons_test, ApplicationIconsTest)
#include "applicationicons_test.moc"
