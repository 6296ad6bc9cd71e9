#include "tests/support/testmain.h"
#include "widgets/tablecells.h"

#include <QAbstractItemModelTester>
#include <QIcon>
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

Q_DECLARE_METATYPE(CellContent)

/// What a table shows after it was filled, and what its view hears of it.
class CellFillingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        table = std::make_unique<QTableWidget>(rowCount, columns);
        CellFilling filling(*table);
        fill(filling);
    }

    void cleanup() { table.reset(); }

    // All that the silence hides. Whatever else the toolkit comes to say here has to reach the
    // view.
    void anExchangeOfItemsSaysThatCellsChangedAndNothingElse()
    {
        const QList<QPersistentModelIndex> indexes = persistentIndexes();
        const HeardSignals heard(*table->model());
        for (int row = 0; row < rowCount; ++row) {
            for (int column = 0; column < columns; ++column) {
                delete table->takeItem(row, column);
                table->setItem(row, column, new QTableWidgetItem);
            }
        }
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
            CellFilling filling(*table);
            fill(filling, u"other"_s);
            filling.moveRows({1, 0, 2, -1, 3, 4});
        }
        QCOMPARE(persistentIndexes(), indexes);
        QCOMPARE(table->currentIndex(), table->model()->index(2, 1));
        QVERIFY(table->item(2, 1)->isSelected());
    }

    void nothingIsSaidBeforeTheEnd()
    {
        const HeardSignals heard(*table->model());
        CellFilling filling(*table);
        filling.set(1, 1, {u"other"_s});
        filling.moveRows({1, 0, 2, 3, 4, 5});
        QCOMPARE(heard.names(), QList<QByteArray>());
    }

    void nothingIsSaidOfCellsThatLookAsBefore()
    {
        const QSignalSpy changed(table->model(), &QAbstractItemModel::dataChanged);
        {
            CellFilling filling(*table);
            fill(filling);
        }
        QVERIFY(changed.isEmpty());
    }

    void aCellShowsWhatItIsGiven_data()
    {
        QTest::addColumn<int>("role");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<CellContent>("content");

        QPixmap pixmap(4, 4);
        pixmap.fill(Qt::red);
        const QIcon icon(pixmap);
        QTest::newRow("text") << int(Qt::DisplayRole) << QVariant(u"other"_s)
                              << CellContent{u"other"_s};
        QTest::newRow("what is said")
            << int(Qt::AccessibleTextRole) << QVariant(u"said"_s)
            << CellContent{.text = u"text"_s, .accessibleText = u"said"_s};
        QTest::newRow("box without a mark") << int(Qt::CheckStateRole) << QVariant(Qt::Unchecked)
                                            << CellContent{.text = u"text"_s, .checked = false};
        QTest::newRow("box with a mark") << int(Qt::CheckStateRole) << QVariant(Qt::Checked)
                                         << CellContent{.text = u"text"_s, .checked = true};
        QTest::newRow("alignment")
            << int(Qt::TextAlignmentRole) << QVariant::fromValue(Qt::Alignment(Qt::AlignCenter))
            << CellContent{.text = u"text"_s, .isCentred = true};
        QTest::newRow("ground") << int(Qt::BackgroundRole) << QVariant(QBrush(Qt::red))
                                << CellContent{.text = u"text"_s, .background = Qt::red};
        QTest::newRow("colour") << int(Qt::ForegroundRole) << QVariant(QBrush(Qt::red))
                                << CellContent{.text = u"text"_s, .foreground = Qt::red};
        QTest::newRow("icon") << int(Qt::DecorationRole) << QVariant(icon)
                              << CellContent{.text = u"text"_s, .icon = icon};
    }

    /// Each of them in a plain cell, and a plain text in its place again.
    void aCellShowsWhatItIsGiven()
    {
        QFETCH(int, role);
        QFETCH(QVariant, value);
        QFETCH(CellContent, content);

        const auto shown = [this, role] {
            const QVariant data = table->item(3, 2)->data(role);
            return role == Qt::DecorationRole ? data.value<QIcon>().cacheKey() : data;
        };
        const QVariant plain = shown();
        const auto expected
            = role == Qt::DecorationRole ? QVariant(value.value<QIcon>().cacheKey()) : value;
        QCOMPARE(changesAfter(content), QList{QPoint(2, 3)});
        QCOMPARE(shown(), expected);
        QCOMPARE(changesAfter(content), QList<QPoint>());
        QCOMPARE(changesAfter({u"text"_s}), QList{QPoint(2, 3)});
        QCOMPARE(shown(), plain);
    }

    void aMarkThatGoesIsSaid()
    {
        changesAfter({.text = u"text"_s, .checked = true});
        QCOMPARE(changesAfter({.text = u"text"_s, .checked = false}), QList{QPoint(2, 3)});
        QCOMPARE(table->item(3, 2)->checkState(), Qt::Unchecked);
    }

    /// As an editor does.
    void whatIsWrittenIntoACellIsReplaced()
    {
        table->item(3, 2)->setText(u"typed"_s);
        QCOMPARE(changesAfter({u"text"_s}), QList{QPoint(2, 3)});
        QCOMPARE(table->item(3, 2)->text(), u"text"_s);
    }

    void aCellThatCouldNotBeUsedIsReplaced()
    {
        table->item(3, 2)->setFlags(Qt::NoItemFlags);
        QCOMPARE(changesAfter({u"text"_s}), QList{QPoint(2, 3)});
        QVERIFY(table->item(3, 2)->flags().testFlag(Qt::ItemIsEnabled));
    }

    void aClearedCellIsSaidOnce()
    {
        for (const auto &expected : {QList{QPoint(2, 3)}, QList<QPoint>()}) {
            const QSignalSpy changed(table->model(), &QAbstractItemModel::dataChanged);
            CellFilling(*table).clear(3, 2);
            QCOMPARE(cells(changed), expected);
            QCOMPARE(table->item(3, 2), nullptr);
        }
    }

    void rowsMoveAndTheRestGoes()
    {
        for (int row = 0; row < rowCount; ++row)
            table->item(row, 1)->setText(QString::number(row));
        QSignalSpy changed(table->model(), &QAbstractItemModel::dataChanged);
        CellFilling(*table).moveRows({0, 2, 3, -1, 1, 5});

        QStringList texts;
        for (int row = 0; row < rowCount; ++row)
            texts.append(table->item(row, 1) ? table->item(row, 1)->text() : u"-"_s);
        QCOMPARE(texts, QStringList({u"0"_s, u"2"_s, u"3"_s, u"-"_s, u"1"_s, u"5"_s}));
        QCOMPARE(changed.count(), 1);
        QCOMPARE(cells(changed).front(), QPoint(0, 1));
        QCOMPARE(cells(changed).back(), QPoint(columns - 1, 4));
    }

    void rowsMoveUpFromThoseThatAreToGo()
    {
        for (int row = 0; row < rowCount; ++row)
            table->item(row, 1)->setText(QString::number(row));
        CellFilling(*table).moveRows({1, 3, 4});

        QStringList texts;
        for (int row = 0; row < rowCount; ++row)
            texts.append(table->item(row, 1) ? table->item(row, 1)->text() : u"-"_s);
        QCOMPARE(texts, QStringList({u"1"_s, u"3"_s, u"4"_s, u"-"_s, u"-"_s, u"5"_s}));
    }

    void rowsThatStayAreNotSaid()
    {
        const QSignalSpy changed(table->model(), &QAbstractItemModel::dataChanged);
        CellFilling(*table).moveRows({0, 1, 2, 3, 4, 5});
        QVERIFY(changed.isEmpty());
    }

    void allChangesAreSaidInTwoRanges()
    {
        QSignalSpy changed(table->model(), &QAbstractItemModel::dataChanged);
        {
            CellFilling filling(*table);
            for (const QPoint cell : {QPoint(2, 0), QPoint(3, 2), QPoint(1, 5)})
                filling.set(cell.y(), cell.x(), {u"other"_s});
        }
        QCOMPARE(changed.count(), 2);
        const QList<QPoint> heard = cells(changed);
        for (const QPoint cell : {QPoint(2, 0), QPoint(3, 2), QPoint(1, 5)})
            QVERIFY(heard.contains(cell));
    }

private:
    static void fill(CellFilling &filling, const QString &text = u"text"_s)
    {
        for (int row = 0; row < rowCount; ++row) {
            for (int column = 0; column < columns; ++column)
                filling.set(row, column, {text});
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

    /// Columns and rows of the cells that are said to have changed after that of column 2, row 3,
    /// was given this content.
    QList<QPoint> changesAfter(const CellContent &content)
    {
        const QSignalSpy changed(table->model(), &QAbstractItemModel::dataChanged);
        CellFilling(*table).set(3, 2, content);
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
