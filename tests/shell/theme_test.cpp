#include "shell/minispeedwidget.h"
#include "shell/theme.h"
#include "tests/support/windowfixture.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

/// A rule of a sheet: selector, and properties as "name: value" parted by "; ".
using Rule = std::pair<QString, QString>;

QList<Rule> parse(const QString &sheet)
{
    static const QRegularExpression ruleExpression(u"([^{}]+)\\{([^{}]*)\\}"_s);
    static const QRegularExpression colon(u":\\s*"_s);
    QList<Rule> rules;
    auto matches = ruleExpression.globalMatch(sheet);
    while (matches.hasNext()) {
        const auto match = matches.next();
        QStringList properties;
        const auto parts = match.captured(2).split(u';', Qt::SkipEmptyParts);
        for (const QString &part : parts) {
            if (!part.trimmed().isEmpty())
                properties.append(part.trimmed().replace(colon, u": "_s));
        }
        rules.append({match.captured(1).simplified(), properties.join("; "_L1)});
    }
    return rules;
}

// clang-format off
const QList<Rule> mainRules{
    {uR"(QWidget#root)"_s,
     uR"(background: #0b1020; color: #e8eefc; font-family: Segoe UI)"_s},
    {uR"(QFrame#titleBar)"_s,
     uR"(background: #0e1324; border-bottom: 1px solid #26324a)"_s},
    {uR"(QLabel#titleBarText)"_s,
     uR"(color: #e8eefc; font-size: 12px; font-weight: 600)"_s},
    {uR"(QPushButton#windowButton)"_s,
     uR"(background: transparent; color: #d8e1f5; border: 0; min-width: 36px; min-height: 28px; font-size: 14px)"_s},
    {uR"(QPushButton#windowButton:hover)"_s,
     uR"(background: #182235)"_s},
    {uR"(QPushButton#windowButtonClose)"_s,
     uR"(background: transparent; color: #d8e1f5; border: 0; min-width: 36px; min-height: 28px; font-size: 16px)"_s},
    {uR"(QPushButton#windowButtonClose:hover)"_s,
     uR"(background: #dc2626; color: white)"_s},
    {uR"(QFrame#sidebar)"_s,
     uR"(background: #101827; border-right: 1px solid #1f2937)"_s},
    {uR"(QLabel#logoImage, QLabel#logoWordmark)"_s,
     uR"(background: transparent; border: 0)"_s},
    {uR"(QLabel#brand)"_s,
     uR"(color: #f4f7ff; font-size: 14px; font-weight: 600)"_s},
    {uR"(QLabel#brandSub)"_s,
     uR"(color: #b6c2e2; font-size: 12px)"_s},
    {uR"(QLabel#sidebarFoot)"_s,
     uR"(color: #6f7894; font-size: 12px)"_s},
    {uR"(QPushButton[class="nav"])"_s,
     uR"(text-align: left; padding: 0 18px; height: 44px; border: 0; border-radius: 7px; color: #b6c2e2; background: transparent; font-size: 14px)"_s},
    {uR"(QPushButton[class="nav"]:checked)"_s,
     uR"(background: #15a34a; color: white)"_s},
    {uR"(QPushButton[class="nav"]:hover:!checked)"_s,
     uR"(background: #182235)"_s},
    {uR"(QWidget#page)"_s,
     uR"(background: #0b1020)"_s},
    {uR"(QScrollArea#settingsScroll)"_s,
     uR"(background: #0b1020; border: 0)"_s},
    {uR"(QScrollArea#settingsScroll > QWidget > QWidget)"_s,
     uR"(background: #0b1020)"_s},
    {uR"(QScrollArea#infoScroll)"_s,
     uR"(background: #090d19; border: 1px solid #26324a; border-radius: 6px)"_s},
    {uR"(QScrollArea#infoScroll > QWidget > QWidget)"_s,
     uR"(background: #090d19)"_s},
    {uR"(QLabel#title)"_s,
     uR"(color: #f4f7ff; font-size: 30px; font-weight: 650)"_s},
    {uR"(QLabel#subtitle)"_s,
     uR"(color: #9aa7c7; font-size: 14px)"_s},
    {uR"(QLabel#panelTitle)"_s,
     uR"(color: #f4f7ff; font-size: 14px; font-weight: 600)"_s},
    {uR"(QLabel#metricLabel)"_s,
     uR"(color: #9aa7c7; font-size: 12px)"_s},
    {uR"(QLabel#metricValue)"_s,
     uR"(color: #f4f7ff; font-size: 26px; font-weight: 650)"_s},
    {uR"(QFrame#panel)"_s,
     uR"(background: #0e1324; border: 1px solid #26324a; border-radius: 14px)"_s},
    {uR"(QFrame#hero)"_s,
     uR"(background: #11182b; border: 1px solid #33415f; border-radius: 14px)"_s},
    {uR"(QFrame#badge)"_s,
     uR"(background: #17152d; border: 1px solid #3d2f69; border-radius: 16px)"_s},
    {uR"(QLabel#badgeText)"_s,
     uR"(color: #d8b4fe; font-size: 12px)"_s},
    {uR"(QFrame#toast)"_s,
     uR"(background: #101a33; border: 1px solid #4f7cff; border-radius: 10px)"_s},
    {uR"(QLabel#toastText)"_s,
     uR"(color: #f4f7ff; font-size: 12px; font-weight: 600)"_s},
    {uR"(QLabel#heroLabel)"_s,
     uR"(color: #ff9f8a; font-size: 13px)"_s},
    {uR"(QLabel#heroValue)"_s,
     uR"(color: #f4f7ff; font-size: 25px; font-weight: 650)"_s},
    {uR"(QLabel#heroImage)"_s,
     uR"(border-radius: 12px; background: #090d19)"_s},
    {uR"(QLabel#alertTitle)"_s,
     uR"(color: #ff9f8a; font-size: 15px; font-weight: 600)"_s},
    {uR"(QLabel#alertBody)"_s,
     uR"(color: #b6c2e2; font-size: 12px)"_s},
    {uR"(QLabel#appName)"_s,
     uR"(color: #f4f7ff; font-size: 14px; font-weight: 600)"_s},
    {uR"(QLabel#appMeta)"_s,
     uR"(color: #9aa7c7; font-size: 12px)"_s},
    {uR"(QLabel#appScore)"_s,
     uR"(color: #5eead4; font-size: 18px; font-weight: 700)"_s},
    {uR"(QFrame#appRow)"_s,
     uR"(background: #10162a; border: 1px solid #25324e; border-radius: 10px)"_s},
    {uR"(QTableWidget)"_s,
     uR"(background: #0e1324; color: #e8eefc; gridline-color: #26324a; border: 1px solid #26324a; selection-background-color: #2563eb; selection-color: white; alternate-background-color: #11182b; font-size: 12px)"_s},
    {uR"(QTableWidget::item)"_s,
     uR"(padding: 4px 6px)"_s},
    {uR"(QHeaderView::section)"_s,
     uR"(background: #11182b; color: #c7d2fe; border: 0; border-right: 1px solid #26324a; border-bottom: 1px solid #26324a; padding: 6px; font-weight: 600)"_s},
    {uR"(QFrame#classicPanel)"_s,
     uR"(background: #0e1324; border: 1px solid #26324a)"_s},
    {uR"(QFrame#classicTop)"_s,
     uR"(background: #0e1324; border-bottom: 1px solid #26324a)"_s},
    {uR"(QLabel#classicTitle)"_s,
     uR"(color: #22c55e; font-size: 15px; font-weight: 700)"_s},
    {uR"(QLabel#classicText)"_s,
     uR"(color: #d8e1f5; font-size: 12px)"_s},
    {uR"(QLabel#classicBlue)"_s,
     uR"(color: #60a5fa; font-size: 13px; font-weight: 600)"_s},
    {uR"(QMenuBar)"_s,
     uR"(background: #0e1324; color: #d8e1f5; padding: 0; border: 0)"_s},
    {uR"(QMenuBar::item)"_s,
     uR"(background: transparent; padding: 5px 8px)"_s},
    {uR"(QMenuBar::item:selected)"_s,
     uR"(background: #182235)"_s},
    {uR"(QMenu)"_s,
     uR"(background: #0e1324; color: #e8eefc; border: 1px solid #26324a)"_s},
    {uR"(QMenu::item)"_s,
     uR"(padding: 6px 24px)"_s},
    {uR"(QMenu::item:selected)"_s,
     uR"(background: #2563eb; color: white)"_s},
    {uR"(QPushButton#classicTab)"_s,
     uR"(background: #11182b; color: #d8e1f5; border: 1px solid #26324a; border-radius: 0; padding: 6px 10px)"_s},
    {uR"(QPushButton#classicTab:checked)"_s,
     uR"(background: #15a34a; color: white; border-color: #15a34a)"_s},
    {uR"(QPushButton#quickFilter)"_s,
     uR"(background: #0e1324; color: #b6c2e2; border: 1px solid #26324a; border-radius: 14px; padding: 5px 12px; font-size: 12px)"_s},
    {uR"(QPushButton#quickFilter:checked)"_s,
     uR"(background: #2563eb; color: white; border-color: #60a5fa)"_s},
    {uR"(QPushButton#quickFilter:hover:!checked)"_s,
     uR"(background: #182235; color: #e8eefc)"_s},
    {uR"(QProgressBar)"_s,
     uR"(background: #090d19; border: 0; border-radius: 4px; height: 8px; text-align: center; color: transparent)"_s},
    {uR"(QProgressBar::chunk)"_s,
     uR"(background: #4f7cff; border-radius: 4px)"_s},
    {uR"(QLineEdit)"_s,
     uR"(background: #090d19; border: 1px solid #26324a; border-radius: 8px; color: #f4f7ff; padding: 7px 10px; min-height: 20px; selection-background-color: #4f7cff)"_s},
    {uR"(QComboBox)"_s,
     uR"(background: #090d19; border: 1px solid #26324a; border-radius: 8px; color: #f4f7ff; padding: 7px 10px; min-height: 20px)"_s},
    {uR"(QCheckBox)"_s,
     uR"(color: #dbe7ff; spacing: 8px)"_s},
    {uR"(QCheckBox::indicator)"_s,
     uR"(width: 16px; height: 16px)"_s},
    {uR"(QPushButton#save)"_s,
     uR"(background: #4f7cff; color: white; border: 0; border-radius: 8px; height: 40px; font-weight: 600)"_s},
    {uR"(QPushButton#save:hover)"_s,
     uR"(background: #6b8dff)"_s},
    {uR"(QPushButton#actionButton)"_s,
     uR"(background: #11182b; color: #e8eefc; border: 1px solid #33415f; border-radius: 4px; padding: 5px 10px)"_s},
    {uR"(QPushButton#actionButton:hover)"_s,
     uR"(background: #182235; border-color: #4f7cff)"_s},
    {uR"(QLineEdit#search)"_s,
     uR"(background: #090d19; color: #e8eefc; border: 1px solid #33415f; border-radius: 4px; padding: 5px 8px; min-width: 180px)"_s},
    {uR"(QLineEdit#search[active="true"])"_s,
     uR"(border: 2px solid #4f7cff; background: #10182c)"_s},
    {uR"(QFrame#summaryBlue)"_s,
     uR"(background: #101a33; border: 1px solid #33415f; border-radius: 10px)"_s},
    {uR"(QFrame#summaryViolet)"_s,
     uR"(background: #1b1535; border: 1px solid #4c2f76; border-radius: 10px)"_s},
    {uR"(QFrame#summaryCoral)"_s,
     uR"(background: #32171a; border: 1px solid #7d3339; border-radius: 10px)"_s},
};

const QList<Rule> miniRules{
    {uR"(QFrame#miniShell)"_s,
     uR"(background: #0e1324; border: 1px solid #33415f; border-radius: 14px)"_s},
    {uR"(QLabel#miniTitle)"_s,
     uR"(color: #e8eefc; font-size: 12px; font-weight: 700)"_s},
    {uR"(QLabel#miniRate)"_s,
     uR"(color: #80f8ff; font-size: 15px; font-weight: 700)"_s},
};
// clang-format on

QColor colourAt(QWidget *widget, QPoint position)
{
    return widget->grab().toImage().pixelColor(position);
}

} // namespace

class ThemeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyRuleOfTheMainSheetStandsInItsPlace() { compare(parse(mainStyleSheet()), mainRules); }

    void everyRuleOfTheMiniSheetStandsInItsPlace() { compare(parse(miniStyleSheet()), miniRules); }

    void theWindowAndTheMiniMonitorWearTheirSheets()
    {
        WindowFixture fixture;
        fixture.open();
        QCOMPARE(fixture.window().styleSheet(), mainStyleSheet());
        const MiniSpeedWidget mini;
        QCOMPARE(mini.styleSheet(), miniStyleSheet());
    }

    void labelsThatTheSheetDoesNotReachWearTheirOwn()
    {
        WindowFixture fixture;
        fixture.open();
        fixture.tick();
        QCOMPARE(fixture.labelStarting(u"Select an app"_s)->styleSheet(), u"color:#e8eefc;"_s);
        QCOMPARE(fixture.labelStarting(u"Applications: "_s)->styleSheet(),
                 u"background:#0e1324; border-top:1px solid #26324a; padding:5px 8px; "
                 "color:#d8e1f5;"_s);
        const auto badges = fixture.window().findChildren<QFrame *>(u"badge"_s);
        QCOMPARE(badges.size(), 2);
        for (const QFrame *badge : badges) {
            const auto labels = badge->findChildren<QLabel *>();
            QCOMPARE(labels.size(), 2);
            QCOMPARE(labels.at(0)->styleSheet(), u"background:#ff9f8a; border-radius:5px;"_s);
            QCOMPARE(labels.at(0)->size(), QSize(10, 10));
            QCOMPARE(labels.at(1)->objectName(), u"badgeText"_s);
        }
    }

    void pausingTurnsOnlyItsButtonRed()
    {
        WindowFixture fixture;
        fixture.open();
        QAbstractButton *pause = fixture.button(u"Pause"_s);
        QAbstractButton *reset = fixture.button(u"Reset session"_s);
        const QPoint inside(5, 5);
        QCOMPARE(colourAt(pause, inside), QColor(0x11, 0x18, 0x2b));
        WindowFixture::click(pause);
        QCOMPARE(colourAt(pause, inside), QColor(0x3b, 0x12, 0x18));
        QCOMPARE(colourAt(reset, inside), QColor(0x11, 0x18, 0x2b));
        WindowFixture::click(pause);
        QCOMPARE(colourAt(pause, inside), QColor(0x11, 0x18, 0x2b));
    }

    void theSearchBoxIsMarkedWhileItFilters()
    {
        WindowFixture fixture;
        fixture.open();
        auto *search = fixture.find<QWidget>("classicTop")->findChild<QLineEdit *>(u"search"_s);
        const QPoint border(40, 1);
        const QColor plain = colourAt(search, border);
        QTest::keyClicks(search, u"  "_s);
        QCOMPARE(search->property("active").toBool(), false);
        QCOMPARE(colourAt(search, border), plain);
        QTest::keyClicks(search, u"a"_s);
        QCOMPARE(search->property("active").toBool(), true);
        QCOMPARE(colourAt(search, border), QColor(0x4f, 0x7c, 0xff));
        fixture.menuAction(u"Clear search"_s)->trigger();
        QCOMPARE(search->property("active").toBool(), false);
        QCOMPARE(colourAt(search, border), plain);
    }

    void labelsOfOneNameLookAlike()
    {
        WindowFixture fixture;
        fixture.open();
        const auto texts = fixture.window().findChildren<QLabel *>(u"classicText"_s);
        QVERIFY(texts.size() >= 8);
        for (const QLabel *label : texts) {
            QCOMPARE(label->font().pixelSize(), 12);
        }
        const auto blueCards = fixture.window().findChildren<QFrame *>(u"summaryBlue"_s);
        QCOMPARE(blueCards.size(), 2);
        QCOMPARE(colourAt(blueCards.at(0), {20, 5}), QColor(0x10, 0x1a, 0x33));
        QCOMPARE(colourAt(blueCards.at(1), {20, 5}), QColor(0x10, 0x1a, 0x33));
    }

private:
    static void compare(const QList<Rule> &actual, const QList<Rule> &expected)
    {
        for (qsizetype i = 0; i < std::min(actual.size(), expected.size()); ++i) {
            QCOMPARE(actual.at(i).first, expected.at(i).first);
            QCOMPARE(actual.at(i).second, expected.at(i).second);
        }
        QCOMPARE(actual.size(), expected.size());
    }
};

TOVAN_WINDOW_TEST(theme_test, ThemeTest)
#include "theme_test.moc"
