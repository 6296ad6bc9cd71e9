#include "tests/support/windowfixture.h"

#include "assets/images.h"

#include <QSettings>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

namespace {

void seedRule(const QString &app, const QVariantMap &fields)
{
    QSettings store(u"Tovan"_s, u"Tovan Network Monitor"_s);
    store.beginWriteArray("rules", 1);
    store.setArrayIndex(0);
    store.setValue("app", app);
    for (auto field = fields.cbegin(); field != fields.cend(); ++field)
        store.setValue(field.key(), field.value());
    store.endArray();
}

QImage image(const QIcon &icon)
{
    return icon.pixmap(16, 16).toImage();
}

} // namespace

class RowCellsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theSystemRowIsBlueWithoutIconAndCheckBoxes()
    {
        WindowFixture fixture;
        fixture.open();
        fixture.tick();
        for (int column = 0; column < 8; ++column) {
            const QTableWidgetItem *item = fixture.appsTable()->item(0, column);
            QCOMPARE(item->background(), QBrush(QColor(0x0e, 0xa5, 0xe9)));
            QCOMPARE(item->foreground(), QBrush(Qt::white));
            QVERIFY(item->icon().isNull());
            QVERIFY(!item->data(Qt::CheckStateRole).isValid());
        }
    }

    void thePlaceholderHasThreeEmptyCheckBoxesAndNoIcon()
    {
        WindowFixture fixture;
        WindowFixture::store(u"showSystemRow"_s, false);
        fixture.open();
        fixture.tick();
        QVERIFY(fixture.appsTable()->item(0, 0)->icon().isNull());
        for (int column = 0; column < 8; ++column) {
            const QTableWidgetItem *item = fixture.appsTable()->item(0, column);
            const bool box = column >= 4 && column <= 6;
            QCOMPARE(item->data(Qt::CheckStateRole).isValid(), box);
            QVERIFY(item->checkState() == Qt::Unchecked);
        }
    }

    void numbersAreCentredAndEveryCellCanBeEdited()
    {
        WindowFixture fixture;
        fixture.system().addProcess(1, u"alpha"_s, 1);
        fixture.open();
        fixture.tick();
        for (int column = 0; column < 8; ++column) {
            const QTableWidgetItem *item = fixture.appsTable()->item(1, column);
            QCOMPARE(item->textAlignment(), column == 0 ? 0 : int(Qt::AlignCenter));
            QVERIFY(item->flags().testFlags(Qt::ItemIsEditable | Qt::ItemIsEnabled
                                            | Qt::ItemIsSelectable));
        }
    }

    void aRuleDecidesTheTextsAndTheBoxes()
    {
        WindowFixture fixture;
        seedRule(u"alpha"_s,
                 {{u"dlLimit"_s, true},
                  {u"dlKbps"_s, 300},
                  {u"ulLimit"_s, true},
                  {u"ulKbps"_s, 0},
                  {u"blocked"_s, true},
                  {u"priority"_s, u"Low"_s}});
        fixture.system().addProcess(1, u"alpha"_s, 1);
        fixture.system().addProcess(2, u"beta"_s, 1);
        fixture.open();
        fixture.tick();
        QTableWidget *table = fixture.appsTable();
        // A limit without a value of its own shows the default one.
        QCOMPARE(WindowFixture::rowTexts(table, 1).mid(3, 4),
                 (QStringList{u"Low"_s, u"300 KB/s"_s, u"5 KB/s"_s, u"On"_s}));
        QCOMPARE(WindowFixture::rowTexts(table, 2).mid(3, 4),
                 (QStringList{u"Normal"_s, u"5 KB/s"_s, u"5 KB/s"_s, u"Off"_s}));
        for (int column = 4; column <= 6; ++column) {
            QVERIFY(table->item(1, column)->checkState() == Qt::Checked);
            QVERIFY(table->item(2, column)->checkState() == Qt::Unchecked);
        }
    }

    void anUnlimitedDirectionReadsTheDefaultBesideAnEmptyBox()
    {
        WindowFixture fixture;
        WindowFixture::store(u"defaultLimitKbps"_s, 256);
        seedRule(u"alpha"_s, {{u"dlLimit"_s, false}, {u"dlKbps"_s, 300}});
        fixture.system().addProcess(1, u"alpha"_s, 1);
        fixture.open();
        fixture.tick();
        QCOMPARE(fixture.appsTable()->item(1, 4)->text(), u"256 KB/s"_s);
        QVERIFY(fixture.appsTable()->item(1, 4)->checkState() == Qt::Unchecked);
    }

    void processesOfOneExecutableShareRuleAndIcon()
    {
        WindowFixture fixture;
        seedRule(u"alpha"_s, {{u"blocked"_s, true}});
        fixture.system().addProcess(1, u"alpha"_s, 1);
        fixture.system().addProcess(2, u"alpha"_s, 1);
        fixture.open();
        fixture.tick();
        QTableWidget *table = fixture.appsTable();
        QCOMPARE(table->rowCount(), 3);
        for (int row = 1; row <= 2; ++row)
            QVERIFY(table->item(row, 6)->checkState() == Qt::Checked);
        QCOMPARE(table->item(1, 0)->icon().cacheKey(), table->item(2, 0)->icon().cacheKey());
    }

    void anUnreadableExecutableGetsTheProgramsIcon()
    {
        WindowFixture fixture;
        fixture.system().addProcess(1, u"alpha"_s, 1);
        fixture.system().imagePaths[1] = "/nowhere/alpha";
        fixture.open();
        fixture.tick();
        const QIcon icon = fixture.appsTable()->item(1, 0)->icon();
        QCOMPARE(image(icon), image(assetIcon(u"tovan-site-icon.svg"_s)));
    }

    void theFirstIconIsKeptForGood()
    {
        const QTemporaryDir directory;
        const QString path = directory.filePath(u"alpha"_s);
        WindowFixture fixture;
        fixture.system().addProcess(1, u"alpha"_s, 1);
        fixture.system().imagePaths[1] = path.toUtf8();
        {
            QFile executable(path);
            QVERIFY(executable.open(QIODevice::WriteOnly));
        }
        fixture.open();
        fixture.tick();
        const QImage first = image(fixture.appsTable()->item(1, 0)->icon());
        QVERIFY(!first.isNull());
        QVERIFY(first != image(assetIcon(u"tovan-site-icon.svg"_s)));
        QVERIFY(QFile::remove(path));
        fixture.tick();
        QCOMPARE(image(fixture.appsTable()->item(1, 0)->icon()), first);
    }

    void aMissingExecutableKeepsTheProgramsIconWhenItAppears()
    {
        const QTemporaryDir directory;
        const QString path = directory.filePath(u"alpha"_s);
        WindowFixture fixture;
        fixture.system().addProcess(1, u"alpha"_s, 1);
        fixture.system().imagePaths[1] = path.toUtf8();
        fixture.open();
        fixture.tick();
        QFile executable(path);
        QVERIFY(executable.open(QIODevice::WriteOnly));
        fixture.tick();
        QCOMPARE(image(fixture.appsTable()->item(1, 0)->icon()),
                 image(assetIcon(u"tovan-site-icon.svg"_s)));
    }
};

TOVAN_WINDOW_TEST(rowcells_test, RowCellsTest)
#include "rowcells_test.moc"
