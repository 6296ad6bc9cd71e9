#include "tests/support/windowfixture.h"

#include <QComboBox>
#include <QHeaderView>
#include <QLayout>
#include <QPushButton>
#include <QScrollBar>
#include <QStyledItemDelegate>

#include <memory>

using namespace Qt::StringLiterals;

/// The Rules Manager page: what it shows, its filters and "Clear all rules".
class RulesPageTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        fixture = std::make_unique<WindowFixture>();
        seeded.clear();
    }

    void cleanup() { fixture.reset(); }

    void thePageIsLaidOutAsDecided()
    {
        open();
        QCOMPARE(page->objectName(), u"page"_s);
        QCOMPARE(page->layout()->contentsMargins(), QMargins(28, 22, 28, 24));
        QCOMPARE(page->layout()->spacing(), 14);
        QCOMPARE(label("title")->text(), u"Rules Manager"_s);
        QCOMPARE(label("subtitle")->text(),
                 u"Control app limits, blocking, and priority from one place."_s);
        QCOMPARE(label("badgeText")->text(), u"Interactive"_s);
        QCOMPARE(search()->placeholderText(), u"Filter rules..."_s);
        QStringList buttons;
        for (const auto *button : page->findChildren<QPushButton *>(u"actionButton"_s))
            buttons.append(button->text());
        QCOMPARE(buttons,
                 QStringList({u"All"_s, u"Blocked"_s, u"Limited"_s, u"Clear all rules"_s}));
    }

    void theTableIsSetUpAsDecided()
    {
        open();
        QStringList headers;
        for (int column = 0; column < table->columnCount(); ++column)
            headers.append(table->horizontalHeaderItem(column)->text());
        QCOMPARE(headers,
                 QStringList({u"Application"_s, u"Priority"_s, u"DL"_s, u"UL"_s, u"Block"_s,
                              u"DL KB/s"_s, u"UL KB/s"_s, u"Sockets"_s}));
        QVERIFY(table->alternatingRowColors());
        QCOMPARE(table->selectionBehavior(), QAbstractItemView::SelectRows);
        QVERIFY(table->editTriggers() == QAbstractItemView::AllEditTriggers);
        QCOMPARE(table->contextMenuPolicy(), Qt::CustomContextMenu);
        QVERIFY(table->verticalHeader()->isHidden());
        QCOMPARE(table->horizontalHeader()->sectionResizeMode(0), QHeaderView::Stretch);
        for (int column = 1; column < table->columnCount(); ++column) {
            QCOMPARE(table->horizontalHeader()->sectionResizeMode(column),
                     QHeaderView::ResizeToContents);
        }
    }

    void withoutRulesAndApplicationsThereIsOnePlaceholderRow()
    {
        open();
        QCOMPARE(table->rowCount(), 1);
        QCOMPARE(WindowFixture::rowTexts(table, 0).first(), u"No rules or active apps"_s);
        for (int column = 1; column < table->columnCount(); ++column)
            QVERIFY(!table->item(0, column));
    }

    void aRunningApplicationShowsDefaultsAndGetsNoRule()
    {
        fixture->system().addProcess(1, u"app"_s, 2, 1);
        open();
        QCOMPARE(WindowFixture::rowTexts(table, 0),
                 QStringList({u"app"_s, u"Normal"_s, QString(), QString(), QString(), u"5"_s,
                              u"5"_s, u"3"_s}));
        fixture->system().removeProcess(1);
        fixture->tick();
        QCOMPARE(WindowFixture::rowTexts(table, 0).first(), u"No rules or active apps"_s);
    }

    void cellsFollowTheRule()
    {
        seed(u"app"_s,
             {{u"dlLimit"_s, true},
              {u"blocked"_s, true},
              {u"priority"_s, u"High"_s},
              {u"dlKbps"_s, 300}});
        open();
        QCOMPARE(WindowFixture::rowTexts(table, 0),
                 QStringList({u"app"_s, u"High"_s, QString(), QString(), QString(), u"300"_s,
                              u"5"_s, u"0"_s}));
        const QList states{Qt::Checked, Qt::Unchecked, Qt::Checked};
        for (int column = 0; column < table->columnCount(); ++column) {
            const QTableWidgetItem *item = table->item(0, column);
            const bool box = column >= 2 && column <= 4;
            QCOMPARE(item->flags().testFlag(Qt::ItemIsUserCheckable), box || defaultCheckable());
            QCOMPARE(item->data(Qt::CheckStateRole).isValid(), box);
            if (box)
                QCOMPARE(item->checkState(), states.at(column - 2));
            if (column > 0)
                QCOMPARE(item->textAlignment(), int(Qt::AlignCenter));
            QVERIFY(item->flags().testFlag(Qt::ItemIsEditable));
        }
        QCOMPARE(table->item(0, 0)->textAlignment(), 0);
    }

    void aNameThatGotLostIsBackAfterATickOnAnotherPage()
    {
        fixture->system().addProcess(1, u"app"_s, 2, 1);
        open();
        leave();
        table->item(0, 0)->setText(QString());
        QCOMPARE(shownNames(), QStringList({QString()}));
        fixture->tick();
        QCOMPARE(shownNames(), QStringList({u"app"_s}));
    }

    void aNewDefaultLimitReachesThePageThatIsNotShown()
    {
        seed(u"app"_s, {{u"blocked"_s, true}, {u"dlKbps"_s, 0}, {u"ulKbps"_s, 9}});
        open();
        QCOMPARE(table->item(0, 5)->text(), u"5"_s);
        leave();
        QTest::keyClick(fixture->find<QFrame>("classicTop")->findChild<QComboBox *>(), Qt::Key_S);
        QCOMPARE(table->item(0, 5)->text(), u"256"_s);
        QCOMPARE(table->item(0, 6)->text(), u"9"_s);
    }

    void whatIsSelectedIsNoLongerAfterATickOnAnotherPage()
    {
        addApplications();
        open();
        table->selectionModel()->select(table->model()->index(1, 0),
                                        QItemSelectionModel::Select | QItemSelectionModel::Rows);
        leave();
        QVERIFY(!table->selectedItems().isEmpty());
        fixture->tick();
        QVERIFY(table->selectedItems().isEmpty());
    }

    void theSearchFieldFiltersAtOnce()
    {
        addApplications();
        open();
        QTest::keyClicks(search(), u"  FOX "_s);
        QCOMPARE(shownNames(), QStringList({u"firefox"_s}));
        QTest::keyClicks(search(), u"x"_s);
        QCOMPARE(shownNames(), QStringList({u"No rules or active apps"_s}));
        fixture->tick();
        QCOMPARE(shownNames(), QStringList({u"No rules or active apps"_s}));
        search()->clear();
        QCOMPARE(shownNames(), QStringList({u"curl"_s, u"dnsd"_s, u"firefox"_s}));
    }

    void whatASearchLeavesKeepsItsCells()
    {
        addApplications();
        open();
        const QTableWidgetItem *last = table->item(2, 0);
        QTest::keyClicks(search(), u"fox"_s);
        QCOMPARE(shownNames(), QStringList({u"firefox"_s}));
        // Making thousands of them anew takes longer than all else that follows from a key.
        QCOMPARE(table->item(0, 0), last);
    }

    void theDashboardsSearchAndTheRulesSearchAreApart()
    {
        addApplications();
        open();
        QTest::keyClicks(search(), u"fox"_s);
        QCOMPARE(fixture->appsTable()->rowCount(), 4);
    }

    void theModeButtonsFilter()
    {
        addApplications();
        seed(u"curl"_s, {{u"blocked"_s, true}});
        seed(u"dnsd"_s, {{u"ulLimit"_s, true}});
        open();
        click(u"Blocked"_s);
        QCOMPARE(shownNames(), QStringList({u"curl"_s}));
        click(u"Limited"_s);
        QCOMPARE(shownNames(), QStringList({u"dnsd"_s}));
        fixture->tick();
        QCOMPARE(shownNames(), QStringList({u"dnsd"_s}));
        click(u"All"_s);
        QCOMPARE(shownNames(), QStringList({u"curl"_s, u"dnsd"_s, u"firefox"_s}));
        for (const auto *button : page->findChildren<QPushButton *>(u"actionButton"_s))
            QVERIFY(!button->isCheckable());
    }

    void aDoubleClickInAFilteredTableUnblocksOneApplication()
    {
        addApplications();
        seed(u"curl"_s, {{u"blocked"_s, true}});
        seed(u"dnsd"_s, {{u"blocked"_s, true}});
        open();
        click(u"Blocked"_s);
        QCOMPARE(shownNames(), QStringList({u"curl"_s, u"dnsd"_s}));
        const QPoint first = WindowFixture::checkBoxCentre(table, 0, 4);
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, first);
        QTest::mouseDClick(table->viewport(), Qt::LeftButton, {}, first);
        QTest::mouseRelease(table->viewport(), Qt::LeftButton, {}, first);
        QCOMPARE(shownNames(), QStringList({u"dnsd"_s}));
        WindowFixture::clickCheckBox(table, 0, 4);
        QCOMPARE(shownNames(), QStringList({u"No rules or active apps"_s}));
    }

    void modeBlockedWithoutABlockedRuleShowsThePlaceholder()
    {
        addApplications();
        open();
        click(u"Blocked"_s);
        QCOMPARE(shownNames(), QStringList({u"No rules or active apps"_s}));
    }

    void filteringCreatesNoRules()
    {
        addApplications();
        open();
        click(u"Limited"_s);
        click(u"All"_s);
        QTest::keyClicks(search(), u"c"_s);
        QCOMPARE(storedRules(), 0);
        for (quint32 pid = 1; pid <= 3; ++pid)
            fixture->system().removeProcess(pid);
        fixture->tick();
        QCOMPARE(shownNames(), QStringList({u"No rules or active apps"_s}));
    }

    void clearAllRulesForgetsThemWithoutAsking()
    {
        addApplications();
        seed(u"curl"_s, {{u"blocked"_s, true}});
        seed(u"asleep"_s, {{u"dlLimit"_s, true}});
        open();
        QCOMPARE(storedRules(), 2);
        auto *toast = fixture->find<QFrame>("toast");
        toast->hide();
        click(u"Clear all rules"_s);
        QVERIFY(!QApplication::activeModalWidget());
        QVERIFY(toast->isHidden());
        QCOMPARE(shownNames(), QStringList({u"curl"_s, u"dnsd"_s, u"firefox"_s}));
        QCOMPARE(table->item(0, 4)->checkState(), Qt::Unchecked);
        QTableWidget *apps = fixture->appsTable();
        QCOMPARE(apps->item(WindowFixture::rowOf(apps, u"curl"_s), 6)->text(), u"Off"_s);
        QCOMPARE(storedRules(), 0);
        QCOMPARE(fixture->labelStarting(u"All rules cleared"_s)->text(), u"All rules cleared"_s);
        fixture->tick();
        QVERIFY(fixture->labelStarting(u"Applications: "_s));
    }

    void theRulesButtonRefreshesTheTableEveryTime()
    {
        open();
        table->item(0, 0)->setData(Qt::UserRole, u"old"_s);
        WindowFixture::click(fixture->button(u"\u2263    Rules"_s));
        QVERIFY(table->item(0, 0)->data(Qt::UserRole).isNull());
    }

    void everyItemIsMadeAnewByARefresh()
    {
        addApplications();
        open();
        for (int row = 0; row < 3; ++row) {
            for (int column = 0; column < 8; ++column)
                table->item(row, column)->setData(Qt::UserRole, u"old"_s);
        }
        fixture->tick();
        for (int row = 0; row < 3; ++row) {
            for (int column = 0; column < 8; ++column)
                QVERIFY(table->item(row, column)->data(Qt::UserRole).isNull());
        }
    }

    void awkwardNamesAreShownToTheLetterInOneLine_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("mark-up") << u"<b>x"_s;
        QTest::newRow("line feeds") << u"two\nlines\r\nor three"_s;
        QTest::newRow("right to left") << u"\u05D0\u05D1\u05D2 \u202Etxt.exe"_s;
        QTest::newRow("very long") << QString(3000, u'w');
        QTest::newRow("very long with blanks") << u"word "_s.repeated(500) + u"end"_s;
        QTest::newRow("placeholders") << u"%1 %2 %n"_s;
        QTest::newRow("ampersand") << u"a&b"_s;
    }

    void awkwardNamesAreShownToTheLetterInOneLine()
    {
        QFETCH(QString, name);
        fixture->system().addProcess(1, name, 1);
        fixture->system().addProcess(2, u"~plain"_s, 1);
        open();
        const int row = WindowFixture::rowOf(table, name);
        QVERIFY(row >= 0);
        QCOMPARE(table->rowHeight(row), table->rowHeight(1 - row));
        QCOMPARE(table->horizontalScrollBar()->maximum(), 0);
        QCOMPARE(fixture->window().size(), QSize(1180, 800));
        // What is drawn has no line of its own; what is kept does.
        const QString drawn = static_cast<const QStyledItemDelegate *>(table->itemDelegate())
                                  ->displayText(name, QLocale());
        QVERIFY(!drawn.contains(QChar::LineSeparator) && !drawn.contains(u'\n'));
        WindowFixture::clickCheckBox(table, row, 4);
        QCOMPARE(table->item(row, 4)->checkState(), Qt::Checked);
        QTableWidget *apps = fixture->appsTable();
        QCOMPARE(apps->item(WindowFixture::rowOf(apps, name), 6)->text(), u"On"_s);
    }

private:
    void open()
    {
        fixture->open();
        fixture->tick();
        WindowFixture::click(fixture->button(u"\u2263    Rules"_s));
        table = fixture->rulesTable();
        page = table->parentWidget();
        QVERIFY(table->isVisible());
    }

    void addApplications()
    {
        fixture->system().addProcess(1, u"firefox"_s, 3);
        fixture->system().addProcess(2, u"curl"_s, 1);
        fixture->system().addProcess(3, u"dnsd"_s, 0, 2);
    }

    /// Goes to another page.
    void leave()
    {
        WindowFixture::click(fixture->button(u"\u25C8    Dashboard"_s));
        QVERIFY(!table->isVisible());
    }

    /// Adds a rule to the store, as an earlier run of the program has left it.
    void seed(const QString &application, const QVariantMap &fields)
    {
        seeded.insert(application, fields);
        QSettings store(u"Tovan"_s, u"Tovan Network Monitor"_s);
        store.beginWriteArray(u"rules"_s, static_cast<int>(seeded.size()));
        int index = 0;
        for (auto rule = seeded.cbegin(); rule != seeded.cend(); ++rule) {
            store.setArrayIndex(index++);
            store.setValue(u"app"_s, rule.key());
            for (auto field = rule->cbegin(); field != rule->cend(); ++field)
                store.setValue(field.key(), field.value());
        }
        store.endArray();
    }

    static int storedRules()
    {
        QSettings store(u"Tovan"_s, u"Tovan Network Monitor"_s);
        return store.beginReadArray(u"rules"_s);
    }

    static bool defaultCheckable()
    {
        return QTableWidgetItem().flags().testFlag(Qt::ItemIsUserCheckable);
    }

    QLabel *label(const char *objectName) const
    {
        return page->findChild<QLabel *>(QString::fromLatin1(objectName));
    }
    QLineEdit *search() const
    {
        return page->findChild<QLineEdit *>(u"search"_s, Qt::FindDirectChildrenOnly);
    }

    void click(const QString &text)
    {
        for (auto *button : page->findChildren<QPushButton *>(u"actionButton"_s)) {
            if (button->text() == text)
                WindowFixture::click(button);
        }
    }

    QStringList shownNames() const
    {
        QStringList names;
        for (int row = 0; row < table->rowCount(); ++row)
            names.append(table->item(row, 0)->text());
        return names;
    }

    std::unique_ptr<WindowFixture> fixture;
    QMap<QString, QVariantMap> seeded;
    QTableWidget *table = nullptr;
    QWidget *page = nullptr;
};

TOVAN_WINDOW_TEST(rulespage_test, RulesPageTest)
#include "rulespage_test.moc"
