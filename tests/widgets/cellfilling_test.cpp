#include "tests/support/testmain.h"
#include "widgets/tablecells.h"

#include <QAbstractItemModelTester>
#include <QMetaMethod>
#include <QSignalSpy>
#include <QTableWidget>
#include <QtTest>

#include <map>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr int rowCount = 6;
constexpr int columns = 4;

/// Names of all signals that an object emits, each as often as it was emitted.
class HeardSignals
{
public:
    explicit HeardSignals(const QObject &object)
    {
        for (int i = 0; i < object.metaObject()->methodCount(); ++i) {
            const QMetaMethod method = object.metaObject()->method(i);
            if (method.methodType() == QMetaMethod::Signal)
                spies[method.name()].push_back(std::make_unique<QSignalSpy>(&object, method));
        }
    }

    QList<QByteArray> names() const
    {
        QList<QByteArray> heard;
        for (const auto &[name, ofThatName] : spies) {
            for (const auto &spy : ofThatName) {
                if (!spy->isEmpty() && !heard.contains(name))
                    heard.append(name);
            }
        }
        return heard;
    }

private:
    std::map<QByteArray, std::vector<std::unique_ptr<QSignalSpy>>> spies;
};

} // namespace

/// What the view of a table hears while all items are exchanged.
class CellFillingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        table = std::make_unique<QTableWidget>(rowCount, columns);
        exchangeItems();
    }

    void cleanup() { table.reset(); }

    // All that the silence hides. Whatever else the toolkit comes to say here has to reach the
    // view.
    void anExchangeOfItemsSaysThatCellsChangedAndNothingElse()
    {
        const QList<QPersistentModelIndex> indexes = persistentIndexes();
        const HeardSignals heard(*table->model());
        for (int row = 0; row < rowCount; ++row) {
            for (int column = 0; column < columns; ++column)
                delete table->takeItem(row, column);
        }
        exchangeItems();
        QCOMPARE(heard.names(), QList{QByteArray("dataChanged")});
        QCOMPARE(persistentIndexes(), indexes);
    }

    void fillingKeepsToTheRulesOfModels()
    {
        const QAbstractItemModelTester tester(
            table->model(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        const QList<QPersistentModelIndex> indexes = persistentIndexes();
        table->setCurrentCell(2, 1);
        {
            const CellFilling filling(*table);
            exchangeItems();
        }
        QCOMPARE(persistentIndexes(), indexes);
        QCOMPARE(table->currentIndex(), table->model()->index(2, 1));
        QVERIFY(table->item(2, 1)->isSelected());
    }

    void nothingIsSaidBeforeTheEnd()
    {
        const HeardSignals heard(*table->model());
        const CellFilling filling(*table);
        exchangeItems();
        table->item(1, 1)->setText(u"other"_s);
        QCOMPARE(heard.names(), QList<QByteArray>());
    }

    void nothingIsSaidOfCellsThatLookAsBefore()
    {
        QCOMPARE(changesAfter([](QTableWidgetItem *) {}), QList<QPoint>());
    }

    void whateverShowsIsSaid_data()
    {
        QTest::addColumn<int>("role");
        QTest::addColumn<QVariant>("value");

        QTest::newRow("text") << int(Qt::DisplayRole) << QVariant(u"other"_s);
        QTest::newRow("check box") << int(Qt::CheckStateRole) << QVariant(int(Qt::Unchecked));
        QTest::newRow("alignment") << int(Qt::TextAlignmentRole) << QVariant(int(Qt::AlignRight));
        QTest::newRow("ground") << int(Qt::BackgroundRole) << QVariant(QBrush(Qt::red));
        QTest::newRow("colour") << int(Qt::ForegroundRole) << QVariant(QBrush(Qt::red));
        QPixmap pixmap(4, 4);
        pixmap.fill(Qt::red);
        QTest::newRow("icon") << int(Qt::DecorationRole) << QVariant(QIcon(pixmap));
    }

    void whateverShowsIsSaid()
    {
        QFETCH(int, role);
        QFETCH(QVariant, value);

        QCOMPARE(changesAfter([&](QTableWidgetItem *item) { item->setData(role, value); }),
                 QList{QPoint(2, 3)});
    }

    void aCellThatCanNoLongerBeUsedIsSaid()
    {
        QCOMPARE(changesAfter([](QTableWidgetItem *item) { item->setFlags(Qt::NoItemFlags); }),
                 QList{QPoint(2, 3)});
    }

    void aCellWithoutItemIsSaid()
    {
        QCOMPARE(changesAfter([](const QTableWidgetItem *item) { delete item; }),
                 QList{QPoint(2, 3)});
    }

    void allChangesAreSaidInTwoRanges()
    {
        QSignalSpy changed(table->model(), &QAbstractItemModel::dataChanged);
        {
            const CellFilling filling(*table);
            exchangeItems();
            table->item(0, 2)->setText(u"other"_s);
            table->item(2, 3)->setText(u"other"_s);
            table->item(5, 1)->setText(u"other"_s);
        }
        QCOMPARE(changed.count(), 2);
        const QList<QPoint> heard = cells(changed);
        for (const QPoint cell : {QPoint(2, 0), QPoint(3, 2), QPoint(1, 5)})
            QVERIFY(heard.contains(cell));
    }

private:
    void exchangeItems()
    {
        for (int row = 0; row < rowCount; ++row) {
            for (int column = 0; column < columns; ++column)
                table->setItem(row, column, new QTableWidgetItem(u"text"_s));
        }
    }

    QList<QPersistentModelIndex> persistentIndexes() const
    {
        QList<QPersistentModelIndex> indexes;
        for (int row = 0; row < rowCount; ++row) {
            for (int column = 0; column < columns; ++column)
                indexes.append(table->model()->index(row, column));
        }
        return indexes;
    }

    /// Columns and rows of the cells that are said to have changed after all items are exchanged
    /// and `change` was made to that of column 2, row 3.
    template <typename Change> QList<QPoint> changesAfter(const Change &change)
    {
        QSignalSpy changed(table->model(), &QAbstractItemModel::dataChanged);
        {
            const CellFilling filling(*table);
            exchangeItems();
            change(table->item(3, 2));
        }
        return cells(changed);
    }

    static QList<QPoint> cells(const QSignalSpy &changed)
    {
        QList<QPoint> heard;
        for (const QList<QVariant> &arguments : changed) {
            const auto first = arguments.at(0).toModelIndex();
            const auto last = arguments.at(1).toModelIndex();
            for (int row = first.row(); row <= last.row(); ++row) {
                for (int column = first.column(); column <= last.column(); ++column)
                    heard.append(QPoint(column, row));
            }
        }
        return heard;
    }

    std::unique_ptr<QTableWidget> table;
};

TOVAN_WIDGET_TEST(cellfilling_test, CellFillingTest)
#include "cellfilling_test.moc"
