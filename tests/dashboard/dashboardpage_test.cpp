#include "tests/support/windowfixture.h"

#include <QComboBox>
#include <QHeaderView>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace {

QStringList checkedTexts(WindowFixture &fixture, const QString &objectName)
{
    QStringList checked;
    const auto buttons = fixture.window().findChildren<QPushButton *>(objectName);
    for (const QPushButton *button : buttons) {
        if (button->isChecked())
            checked.append(button->text());
    }
    return checked;
}

QLineEdit *searchBox(WindowFixture &fixture)
{
    return fixture.find<QWidget>("classicTop")->findChild<QLineEdit *>(u"search"_s);
}

QStringList shownNames(WindowFixture &fixture)
{
    QStringList names;
    for (int row = 1; row < fixture.appsTable()->rowCount(); ++row)
        names.append(fixture.appsTable()->item(row, 0)->text().trimmed());
    return names;
}

} // namespace

class DashboardPageTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void thePageStartsWithItsTexts()
    {
        WindowFixture fixture;
        WindowFixture::store(u"refreshIntervalMs"_s, 10000); // no tick before the page is looked at
        fixture.open();
        auto *top = fixture.find<QFrame>("classicTop");
        QCOMPARE(top->findChild<QLabel *>(u"classicBlue"_s)->text(), u"DL 0 B/s    UL 0 B/s"_s);
        QCOMPARE(searchBox(fixture)->placeholderText(), u"Search app..."_s);
        QCOMPARE(fixture.labelStarting(u"Top app"_s)->text(), u"Top app: waiting..."_s);
        QCOMPARE(fixture.labelStarting(u"Peak"_s)->text(), u"Peak: 0 B/s down | 0 B/s up"_s);
        QCOMPARE(fixture.labelStarting(u"Session: "_s)->text(), u"Session: 0 B"_s);
        QCOMPARE(fixture.labelStarting(u"Select an app"_s)->text(),
                 u"Select an app to inspect its rules and connections."_s);
        QVERIFY(fixture.labelStarting(u"Select an app"_s)->wordWrap());
        fixture.labelStarting(u"Ready"_s);
        fixture.labelStarting(u"System overview"_s);
    }

    void theMenusHaveTheirEntriesInOrder()
    {
        WindowFixture fixture;
        fixture.open();
        QStringList entries;
        const auto menus = fixture.window().findChild<QMenuBar *>()->actions();
        for (const QAction *menu : menus) {
            entries.append(menu->text() + u':');
            const auto actions = menu->menu()->actions();
            for (const QAction *action : actions)
                entries.append(action->isSeparator() ? u"-"_s : action->text());
        }
        QCOMPARE(entries,
                 (QStringList{u"File:"_s, u"Pause monitoring"_s, u"Reset session"_s, u"-"_s,
                              u"Exit"_s, u"Tools:"_s, u"Focus search"_s, u"Clear search"_s, u"-"_s,
                              u"Toggle Mini monitor"_s, u"Toggle Block selected"_s, u"Window:"_s,
                              u"Dashboard"_s, u"Rules Manager"_s, u"Settings"_s, u"Help:"_s,
                              u"About Tovan"_s}));
    }

    void theCardsShowTheirTitlesAndValues()
    {
        WindowFixture fixture;
        fixture.system().setCounters(0, 0);
        fixture.system().addProcess(1, u"alpha"_s, 1);
        fixture.open();
        fixture.system().setCounters(1024, 2048);
        fixture.tick();
        QStringList texts;
        for (const char *name : {"summaryBlue", "summaryViolet", "summaryCoral"}) {
            const auto cards = fixture.window().findChildren<QFrame *>(QString::fromLatin1(name));
            for (const QFrame *card : cards) {
                texts.append(card->findChild<QLabel *>(u"appMeta"_s)->text());
                texts.append(card->findChild<QLabel *>(u"metricValue"_s)->text());
            }
        }
        QCOMPARE(texts,
                 (QStringList{u"Download"_s, u"1.0 KB/s"_s, u"Month"_s, u"3.0 KB"_s, u"Upload"_s,
                              u"2.0 KB/s"_s, u"Active apps"_s, u"1"_s}));
    }

    void theTableIsSetUpForEditingInPlace()
    {
        WindowFixture fixture;
        fixture.open();
        const QTableWidget *table = fixture.appsTable();
        QStringList headers;
        for (int column = 0; column < table->columnCount(); ++column)
            headers.append(table->horizontalHeaderItem(column)->text());
        QCOMPARE(headers,
                 (QStringList{u"Name"_s, u"DL Rate"_s, u"UL Rate"_s, u"Priority"_s, u"DL Limit"_s,
                              u"UL Limit"_s, u"Block"_s, u"Sockets"_s}));
        QCOMPARE(table->editTriggers(),
                 QAbstractItemView::EditTriggers(QAbstractItemView::AllEditTriggers));
        QCOMPARE(table->selectionBehavior(), QAbstractItemView::SelectRows);
        QVERIFY(table->alternatingRowColors());
        QVERIFY(!table->verticalHeader()->isVisible());
        QCOMPARE(table->contextMenuPolicy(), Qt::CustomContextMenu);
        QVERIFY(!table->horizontalHeader()->stretchLastSection());
        QCOMPARE(table->horizontalHeader()->sectionResizeMode(0), QHeaderView::Stretch);
        for (int column = 1; column < 8; ++column) {
            QCOMPARE(table->horizontalHeader()->sectionResizeMode(column),
                     QHeaderView::ResizeToContents);
        }
    }

    void storedCompactRowsHoldFromTheStart_data()
    {
        QTest::addColumn<bool>("compact");
        QTest::addColumn<int>("height");
        QTest::newRow("compact") << true << 22;
        QTest::newRow("ordinary") << false << 30;
    }

    void storedCompactRowsHoldFromTheStart()
    {
        QFETCH(bool, compact);
        WindowFixture fixture;
        WindowFixture::store(u"compactMode"_s, compact);
        fixture.open();
        fixture.tick();
        QTEST(fixture.appsTable()->rowHeight(0), "height");
    }

    void exactlyOneTabStaysChecked()
    {
        WindowFixture fixture;
        fixture.open();
        QCOMPARE(checkedTexts(fixture, u"classicTab"_s), QStringList{u"Activity"_s});
        WindowFixture::click(fixture.button(u"Blocker"_s));
        QCOMPARE(checkedTexts(fixture, u"classicTab"_s), QStringList{u"Blocker"_s});
        WindowFixture::click(fixture.button(u"Blocker"_s));
        QCOMPARE(checkedTexts(fixture, u"classicTab"_s), QStringList{u"Blocker"_s});
    }

    void exactlyOneQuickFilterStaysCheckedAndIsAnnounced()
    {
        WindowFixture fixture;
        fixture.open();
        QCOMPARE(checkedTexts(fixture, u"quickFilter"_s), QStringList{u"All"_s});
        for (int i = 0; i < 2; ++i) {
            fixture.find<QLabel>("toastText")->clear();
            WindowFixture::click(fixture.quickFilter(u"High Priority"_s));
            QCOMPARE(checkedTexts(fixture, u"quickFilter"_s), QStringList{u"High Priority"_s});
            QCOMPARE(fixture.find<QLabel>("toastText")->text(), u"Filter: High Priority"_s);
        }
    }

    void tabQuickFilterAndSearchFilterAtOnce()
    {
        WindowFixture fixture;
        fixture.system().addProcess(112, u"alpha"_s, 3);
        fixture.system().addProcess(7, u"beta12"_s, 2);
        fixture.system().addProcess(8, u"gamma"_s, 1);
        fixture.open();
        fixture.tick();
        QTest::keyClicks(searchBox(fixture), u"12"_s);
        QCOMPARE(shownNames(fixture), (QStringList{u"alpha"_s, u"beta12"_s}));
        WindowFixture::click(fixture.button(u"Blocker"_s));
        QCOMPARE(shownNames(fixture), QStringList());
        WindowFixture::click(fixture.button(u"Priorities"_s));
        QCOMPARE(shownNames(fixture), (QStringList{u"alpha"_s, u"beta12"_s}));
        fixture.menuAction(u"Clear search"_s)->trigger();
        QCOMPARE(shownNames(fixture).size(), 3);
        WindowFixture::click(fixture.quickFilter(u"Limited"_s));
        QCOMPARE(shownNames(fixture), QStringList());
    }

    void aSearchOfBlanksFiltersNothing()
    {
        WindowFixture fixture;
        fixture.system().addProcess(1, u"alpha"_s, 1);
        fixture.open();
        fixture.tick();
        QTest::keyClicks(searchBox(fixture), u"   "_s);
        QCOMPARE(shownNames(fixture), QStringList{u"alpha"_s});
        QCOMPARE(searchBox(fixture)->property("active").toBool(), false);
    }

    void focusSearchSelectsItsText()
    {
        WindowFixture fixture;
        fixture.open();
        searchBox(fixture)->setText(u"abc"_s);
        fixture.appsTable()->setFocus();
        fixture.menuAction(u"Focus search"_s)->trigger();
        QCOMPARE(fixture.window().focusWidget(), searchBox(fixture));
        QCOMPARE(searchBox(fixture)->selectedText(), u"abc"_s);
    }

    void nothingOfTheSearchAndFiltersIsStored()
    {
        WindowFixture fixture;
        fixture.open();
        WindowFixture::click(fixture.button(u"Blocker"_s));
        WindowFixture::click(fixture.quickFilter(u"Limited"_s));
        searchBox(fixture)->setText(u"abc"_s);
        fixture.tick();
        fixture.close();
        fixture.open();
        QCOMPARE(checkedTexts(fixture, u"classicTab"_s), QStringList{u"Activity"_s});
        QCOMPARE(checkedTexts(fixture, u"quickFilter"_s), QStringList{u"All"_s});
        QCOMPARE(searchBox(fixture)->text(), QString());
    }

    void aboutTellsWhatTheProgramIs()
    {
        WindowFixture fixture;
        fixture.open();
        QLabel *details = fixture.labelStarting(u"Select an app"_s);
        fixture.menuAction(u"About Tovan"_s)->trigger();
        QCOMPARE(details->text(),
                 u"Tovan Network Monitor\nInteractive desktop bandwidth control prototype.\n"
                 "Built with Qt and C++."_s);
    }

    void theProfileSelectorAppliesAnotherProfileOnly()
    {
        WindowFixture fixture;
        fixture.open();
        auto *combo = fixture.find<QFrame>("classicTop")->findChild<QComboBox *>();
        QCOMPARE(combo->currentText(), u"Balanced"_s);
        QCOMPARE(combo->count(), 5);
        combo->setCurrentText(u"Balanced"_s);
        QCOMPARE(fixture.find<QLabel>("toastText")->text(), QString());
        combo->setCurrentText(u"Work"_s);
        QCOMPARE(fixture.find<QLabel>("toastText")->text(), u"Profile applied: Work"_s);
    }

    void nothingInTheTopBarIsCutAtTheLeastSize()
    {
        WindowFixture fixture;
        fixture.system().setCounters(0, 0);
        fixture.open();
        fixture.window().resize(fixture.window().minimumSize());
        fixture.system().setCounters(1024ULL * 1024 * 1024 - 1, 1024ULL * 1024 * 1024 - 1);
        fixture.tick();
        auto *top = fixture.find<QFrame>("classicTop");
        const auto children = top->findChildren<QWidget *>(Qt::FindDirectChildrenOnly);
        for (const QWidget *child : children) {
            QVERIFY(top->rect().contains(child->geometry()));
            QVERIFY2(child->width() >= child->minimumSizeHint().width(),
                     child->metaObject()->className());
        }
        const auto *menuBar = top->findChild<QMenuBar *>();
        QVERIFY2(menuBar->width() >= menuBar->sizeHint().width(),
                 qPrintable(u"%1 of %2"_s.arg(menuBar->width()).arg(menuBar->sizeHint().width())));
    }

    void theMenuEntryAndTheButtonBlockAlike()
    {
        WindowFixture fixture;
        fixture.system().addProcess(1, u"alpha"_s, 1);
        fixture.open();
        fixture.tick();
        fixture.appsTable()->setCurrentCell(1, 0);
        fixture.menuAction(u"Toggle Block selected"_s)->trigger();
        QVERIFY(fixture.appsTable()->item(1, 6)->checkState() == Qt::Checked);
        QCOMPARE(fixture.find<QLabel>("toastText")->text(), u"Block enabled for alpha"_s);
        WindowFixture::click(fixture.button(u"Toggle Block"_s));
        QVERIFY(fixture.appsTable()->item(1, 6)->checkState() == Qt::Unchecked);
        QCOMPARE(fixture.find<QLabel>("toastText")->text(), u"Block disabled for alpha"_s);
    }
};

TOVAN_WINDOW_TEST(dashboardpage_test, DashboardPageTest)
#include "dashboardpage_test.moc"
