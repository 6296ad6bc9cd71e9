#include "tests/support/windowfixture.h"

#include <QRandomGenerator>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

/// Names in the order of the table, which is that of their lower-cased forms.
const QStringList orderedNames{u"alpha"_s, u"Beta"_s,  u"delta"_s,
                               u"Gamma"_s, u"omega"_s, u"zeta"_s};
const QString defaultLimit = u"5"_s;

} // namespace

/// What the table shows after anything has changed in any order: always what there is, although
/// only what has changed is written.
class RulesRefreshTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        fixture = std::make_unique<WindowFixture>();
        fixture->open();
        sampleTimer(fixture->window())->setInterval(60000); // ticks come from the test
        table = fixture->rulesTable();
        running.clear();
        ruled.clear();
        text.clear();
        mode = u"All"_s;
    }

    void cleanup() { fixture.reset(); }

    void theTableShowsWhatThereIs_data()
    {
        QTest::addColumn<quint32>("seed");
        for (quint32 seed = 1; seed <= 6; ++seed)
            QTest::addRow("%u", seed) << seed;
    }

    void theTableShowsWhatThereIs()
    {
        QFETCH(quint32, seed);
        QRandomGenerator random(seed);
        QList<void (RulesRefreshTest::*)(QRandomGenerator &)> steps{
            &RulesRefreshTest::startOrEnd, &RulesRefreshTest::startOrEnd,
            &RulesRefreshTest::toggle,     &RulesRefreshTest::write,
            &RulesRefreshTest::search,     &RulesRefreshTest::chooseMode,
            &RulesRefreshTest::choosePage, &RulesRefreshTest::beginEdit,
            &RulesRefreshTest::clearRules};
        for (int round = 0; round < 150; ++round) {
            const auto step = random.bounded(steps.size());
            (this->*steps.at(step))(random);
            if (random.bounded(3) > 0)
                startOrEnd(random);
            fixture->tick();
            QVERIFY2(shown() == expected(),
                     qPrintable(u"round %1, step %2: %3 instead of %4"_s.arg(round).arg(step).arg(
                         shown().join(u'\n'), expected().join(u'\n'))));
        }
    }

private:
    enum Column { Application, Priority, Dl, Ul, Block, DlKbps };

    struct Rule
    {
        bool dlLimit = false;
        bool blocked = false;
    };

    void startOrEnd(QRandomGenerator &random)
    {
        const auto index = random.bounded(orderedNames.size());
        const auto pid = static_cast<quint32>(index) + 1;
        fixture->system().removeProcess(pid);
        if (random.bounded(3) == 0) {
            running.remove(orderedNames.at(index));
            return;
        }
        const int sockets = random.bounded(1, 4);
        fixture->system().addProcess(pid, orderedNames.at(index), sockets);
        running.insert(orderedNames.at(index), sockets);
    }

    void toggle(QRandomGenerator &random)
    {
        const int row = random.bounded(table->rowCount());
        const int column = random.bounded(2) == 0 ? Dl : Block;
        const QString name = table->item(row, Application)->text();
        if (!orderedNames.contains(name))
            return;
        bool &flag = column == Dl ? ruled[name].dlLimit : ruled[name].blocked;
        flag = !flag;
        table->item(row, column)->setCheckState(flag ? Qt::Checked : Qt::Unchecked);
    }

    /// Into a cell what no edit writes; it is taken for one.
    void write(QRandomGenerator &random)
    {
        const int row = random.bounded(table->rowCount());
        const QString name = table->item(row, Application)->text();
        if (!orderedNames.contains(name))
            return;
        ruled[name]; // any edit leaves a rule
        table->item(row, random.bounded(table->columnCount()))->setBackground(Qt::red);
    }

    void search(QRandomGenerator &random)
    {
        text = QStringList{{}, u"a"_s, u"E"_s, u"zeta"_s}.at(random.bounded(4));
        table->parentWidget()->findChild<QLineEdit *>(u"search"_s)->setText(text);
    }

    void chooseMode(QRandomGenerator &random)
    {
        mode = QStringList{u"All"_s, u"Blocked"_s, u"Limited"_s}.at(random.bounded(3));
        for (auto *button : table->parentWidget()->findChildren<QPushButton *>()) {
            if (button->text() == mode)
                button->click();
        }
    }

    void choosePage(QRandomGenerator &random)
    {
        const bool rules = random.bounded(3) > 0;
        fixture->button(rules ? u"\u2263    Rules"_s : u"\u25C8    Dashboard"_s)->click();
    }

    void beginEdit(QRandomGenerator &random)
    {
        table->setFocus();
        table->setCurrentCell(random.bounded(table->rowCount()), DlKbps);
    }

    void clearRules(QRandomGenerator &random)
    {
        if (random.bounded(4) > 0)
            return;
        fixture->findText<QPushButton>(u"Clear all rules"_s)->click();
        ruled.clear();
    }

    QStringList expected() const
    {
        QStringList rows;
        for (const QString &name : orderedNames) {
            const Rule rule = ruled.value(name);
            if ((!running.contains(name) && !ruled.contains(name))
                || !name.toLower().contains(text.toLower())
                || (mode == "Blocked"_L1 && !rule.blocked)
                || (mode == "Limited"_L1 && !rule.dlLimit))
                continue;
            rows.append(QStringList{name, u"Normal"_s, rule.dlLimit ? u"x"_s : u"o"_s, u"o"_s,
                                    rule.blocked ? u"x"_s : u"o"_s, defaultLimit, defaultLimit,
                                    QString::number(running.value(name))}
                            .join(u' '));
        }
        return rows.isEmpty() ? QStringList(u"No rules or active apps -------"_s) : rows;
    }

    QStringList shown() const
    {
        QStringList rows;
        for (int row = 0; row < table->rowCount(); ++row) {
            QString cells;
            for (int column = 0; column < table->columnCount(); ++column) {
                const QTableWidgetItem *item = table->item(row, column);
                const bool isBox = item && item->data(Qt::CheckStateRole).isValid();
                if (column > 0 && (item || column == 1))
                    cells += u' ';
                if (!item)
                    cells += u'-';
                else if (isBox)
                    cells += item->checkState() == Qt::Checked ? u'x' : u'o';
                else
                    cells += item->text();
                if (item && item->background() != QBrush())
                    cells += u"painted"_s;
            }
            rows.append(cells);
        }
        return rows;
    }

    std::unique_ptr<WindowFixture> fixture;
    QTableWidget *table = nullptr;
    QMap<QString, int> running; ///< with their sockets
    QMap<QString, Rule> ruled;
    QString text; ///< in the search
    QString mode;
};

TOVAN_WINDOW_TEST(rulesrefresh_test, RulesRefreshTest)
#include "rulesrefresh_test.moc"
