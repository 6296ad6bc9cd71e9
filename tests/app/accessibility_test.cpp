#include "tests/support/celleditor.h"
#include "tests/support/windowfixture.h"

#include <QAccessible>
#include <QComboBox>

#include <utility>

#include <private/qguiapplication_p.h>
#include <qpa/qplatformaccessibility.h>
#include <qpa/qplatformintegration.h>

using namespace Qt::StringLiterals;

namespace {

/// Everything that a screen reader says by itself: on Windows what alerts, on Linux every
/// notification that appears.
QStringList alerts;
QStringList notifications;

void hear(QAccessibleEvent *event)
{
    QAccessibleInterface *source = event->accessibleInterface();
    if (event->type() == QAccessible::Alert)
        alerts.append(source->text(QAccessible::Name));
    if (event->type() == QAccessible::ObjectShow && source->role() == QAccessible::Notification)
        notifications.append(source->text(QAccessible::Name));
}

/// Compares what was heard on either system since the last time.
void compareHeard(const QStringList &expected)
{
    QCOMPARE(std::exchange(alerts, {}), expected);
    QCOMPARE(std::exchange(notifications, {}), expected);
}

/// What a screen reader calls the widget: its own name, or that of the label it belongs to.
QString heardName(QWidget *widget)
{
    QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(widget);
    const auto labels = interface->relations(QAccessible::Label);
    if (!labels.isEmpty())
        return labels.first().first->text(QAccessible::Name);
    return interface->text(QAccessible::Name);
}

bool showsValue(const QWidget *widget)
{
    const auto *label = qobject_cast<const QLabel *>(widget);
    return label && !label->text().isEmpty();
}

/// Widgets of this type by what they are called.
template <typename T> QStringList names(const QWidget &window)
{
    QStringList result;
    const auto widgets = window.findChildren<T *>();
    for (T *widget : widgets)
        result.append(heardName(widget));
    return result;
}

} // namespace

class AccessibilityTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QGuiApplicationPrivate::platformIntegration()->accessibility()->setActive(true);
        QAccessible::installUpdateHandler(hear);
        alerts.clear();
        notifications.clear();
    }
    void cleanup() { QAccessible::installUpdateHandler(nullptr); }

    void whateverTakesTheFocusOrShowsAValueHasAName()
    {
        WindowFixture fixture;
        fixture.system().addProcess(1, u"alpha"_s, 1);
        fixture.open();
        fixture.tick();
        int named = 0;
        const auto widgets = fixture.window().findChildren<QWidget *>();
        for (QWidget *widget : widgets) {
            // What a widget is made of is heard through it.
            const bool ofAnother = widget->focusProxy() != nullptr
                || widget->objectName().startsWith("qt_"_L1)
                || widget->inherits("QComboBoxListView");
            if (ofAnother || (widget->focusPolicy() == Qt::NoFocus && !showsValue(widget)))
                continue;
            const QString name = heardName(widget);
            QVERIFY2(std::ranges::any_of(name, [](QChar c) { return c.isLetterOrNumber(); }),
                     qPrintable(QString::fromLatin1(widget->metaObject()->className()) + " "_L1
                                + widget->objectName() + ": "_L1 + name));
            ++named;
        }
        QVERIFY2(named > 90, qPrintable(QString::number(named)));
    }

    void fieldsHaveTheNamesOfTheirLabels()
    {
        WindowFixture fixture;
        fixture.open();
        QStringList fields = names<QLineEdit>(fixture.window());
        fields.sort();
        QCOMPARE(fields,
                 (QStringList{u"Allowance"_s, u"Critical %"_s, u"Filter rules..."_s,
                              u"Limit (KB/s)"_s, u"Max apps"_s, u"Refresh (ms)"_s, u"Reset day"_s,
                              u"Search app..."_s, u"Title"_s, u"Warning %"_s}));
        const auto *unit = fixture.setting<QComboBox>(u"Unit"_s);
        QCOMPARE(heardName(const_cast<QComboBox *>(unit)), u"Unit"_s);
    }

    void buttonsOfSignsHaveNames()
    {
        WindowFixture fixture;
        fixture.open();
        const QStringList buttons = names<QPushButton>(fixture.window());
        for (const QString &name :
             {u"Minimize"_s, u"Maximize"_s, u"Close"_s, u"Dashboard"_s, u"Rules"_s, u"Settings"_s})
            QVERIFY2(buttons.contains(name), qPrintable(name));
    }

    void aCardReadsItsTitleAndItsValue()
    {
        WindowFixture fixture;
        fixture.open();
        fixture.system().addProcess(1, u"alpha"_s, 1);
        fixture.tick();
        QStringList cards;
        const auto frames
            = fixture.window().findChildren<QFrame *>(QRegularExpression(u"^summary"_s));
        for (QFrame *frame : frames)
            cards.append(heardName(frame));
        QCOMPARE(cards,
                 (QStringList{u"Download 0 B/s"_s, u"Upload 0 B/s"_s, u"Active apps 1"_s,
                              u"Month 0 B"_s}));
    }

    void tablesHaveTheNamesOfTheirHeaders()
    {
        WindowFixture fixture;
        fixture.system().addProcess(1, u"alpha"_s, 1);
        fixture.open();
        fixture.tick();
        auto *rules = fixture.rulesTable();
        QAccessibleTableInterface *table
            = QAccessible::queryAccessibleInterface(rules)->tableInterface();
        QCOMPARE(table->columnDescription(4), u"Block"_s);
        // A box without a text would be heard as "checked" alone.
        QCOMPARE(table->cellAt(0, 4)->text(QAccessible::Name), u"Block"_s);
        QCOMPARE(table->cellAt(0, 0)->text(QAccessible::Name), u"alpha"_s);
    }

    void theEditorOfACellHasTheNameOfItsColumn()
    {
        WindowFixture fixture;
        fixture.system().addProcess(1, u"alpha"_s, 1);
        fixture.open();
        fixture.tick();
        QTableWidget *table = fixture.appsTable();
        const QRect cell = table->visualItemRect(table->item(1, 3));
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, cell.center());
        QCOMPARE(heardName(openEditor(table)), u"Priority"_s);
    }

    void aToastIsAnnouncedOnceAlsoInThePlaceOfAnother()
    {
        WindowFixture fixture;
        fixture.open();
        compareHeard({});
        WindowFixture::click(fixture.quickFilter(u"Active"_s));
        compareHeard({u"Filter: Active"_s});
        QVERIFY(fixture.find<QFrame>("toast")->isVisible());
        WindowFixture::click(fixture.quickFilter(u"Limited"_s));
        compareHeard({u"Filter: Limited"_s});
        WindowFixture::click(fixture.quickFilter(u"Limited"_s));
        compareHeard({u"Filter: Limited"_s});
        // Its status line says the same.
        WindowFixture::click(fixture.button(u"Reset session"_s));
        compareHeard({u"Session counters reset"_s});
    }

    void aMessageOfTheStatusLineIsAnnouncedOnceAndTheLineOfATickNever()
    {
        WindowFixture fixture;
        fixture.open();
        WindowFixture::click(fixture.button(u"Pause"_s));
        compareHeard({u"Monitoring paused"_s});
        WindowFixture::click(fixture.button(u"Resume"_s));
        compareHeard({u"Monitoring resumed"_s});
        fixture.tick();
        fixture.tick();
        compareHeard({});
    }

    void nothingIsAnnouncedOfAHiddenWindowNorLater()
    {
        WindowFixture fixture;
        fixture.open();
        fixture.window().hide();
        fixture.quickFilter(u"Active"_s)->click();
        fixture.button(u"Pause"_s)->click();
        fixture.window().show();
        QVERIFY(QTest::qWaitForWindowExposed(&fixture.window()));
        compareHeard({});
    }
};

TOVAN_WINDOW_TEST(accessibility_test, AccessibilityTest)
#include "accessibility_test.moc"
