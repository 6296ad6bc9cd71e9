#include "tests/support/testmain.h"
#include "tests/support/windowfixture.h"

#include <QComboBox>
#include <QScrollArea>
#include <QScrollBar>

using namespace Qt::StringLiterals;

/// The wheel over the window's combo boxes.
class WheelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void itScrollsThePageUnderTheBox_data()
    {
        QTest::addColumn<QString>("label");
        QTest::addColumn<bool>("focused");
        for (const QString &label : {u"Profile"_s, u"Unit"_s, u"Accent"_s}) {
            QTest::addRow("%s", qPrintable(label)) << label << false;
            QTest::addRow("%s with focus", qPrintable(label)) << label << true;
        }
    }

    void itScrollsThePageUnderTheBox()
    {
        QFETCH(QString, label);
        QFETCH(bool, focused);
        WindowFixture fixture;
        fixture.open();
        fixture.window().resize(1180, 780);
        WindowFixture::click(fixture.button(u"\u2699    Settings"_s));
        QVERIFY(QTest::qWaitForWindowActive(&fixture.window()));
        auto *box = fixture.setting<QComboBox>(label);
        auto *page = fixture.find<QScrollArea>("settingsScroll");
        QTRY_VERIFY(page->verticalScrollBar()->maximum() > 0);
        if (focused)
            box->setFocus();
        const QString chosen = box->currentText();
        turnWheelOver(box);
        QCOMPARE(box->currentText(), chosen);
        QVERIFY(page->verticalScrollBar()->value() > 0);
        QCOMPARE(fixture.toast(), QString());
    }

    void itAppliesNoProfileFromTheDashboard()
    {
        WindowFixture fixture;
        fixture.open();
        for (auto *box : fixture.window().findChildren<QComboBox *>()) {
            if (!box->isVisible())
                continue;
            box->setFocus();
            turnWheelOver(box);
            QCOMPARE(box->currentText(), u"Balanced"_s);
        }
        QCOMPARE(fixture.toast(), QString());
    }

    void keysStillChoose()
    {
        WindowFixture fixture;
        fixture.open();
        WindowFixture::click(fixture.button(u"\u2699    Settings"_s));
        auto *box = fixture.setting<QComboBox>(u"Profile"_s);
        QTest::keyClick(box, Qt::Key_Down);
        QCOMPARE(box->currentText(), u"Gaming"_s);
        QCOMPARE(fixture.toast(), u"Profile applied: Gaming"_s);
    }

private:
    /// Three notches towards the user. Each goes to the widget under the pointer and on to its
    /// parents until one of them wants it, as the toolkit hands on what the windowing system tells.
    static void turnWheelOver(QWidget *widget)
    {
        const QPoint middle = widget->mapToGlobal(widget->rect().center());
        for (int notch = 0; notch < 3; ++notch) {
            for (QWidget *under = widget; under; under = under->parentWidget()) {
                QWheelEvent event(under->mapFromGlobal(middle), middle, {}, {0, -120}, {}, {},
                                  Qt::NoScrollPhase, false);
                if (QApplication::sendEvent(under, &event) && event.isAccepted())
                    break;
            }
        }
    }
};

TOVAN_WINDOW_TEST(wheel_test, WheelTest)
#include "wheel_test.moc"
