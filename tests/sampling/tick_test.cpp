#include "tests/support/teststore.h"
#include "tests/support/windowfixture.h"

#include "shell/minispeedwidget.h"

using namespace Qt::StringLiterals;

namespace {

QString toastText(WindowFixture &fixture)
{
    return fixture.find<QLabel>("toastText")->text();
}

void seedUsage(const QString &dayKey, const QString &monthKey, quint64 today, quint64 month)
{
    WindowFixture::store(u"dayKey"_s, dayKey);
    WindowFixture::store(u"monthKey"_s, monthKey);
    WindowFixture::store(u"todayBytes"_s, today);
    WindowFixture::store(u"monthBytes"_s, month);
}

} // namespace

class TickTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyViewShowsTheTicksFigures()
    {
        WindowFixture fixture;
        fixture.system().setCounters(0, 0);
        fixture.open();
        fixture.system().setCounters(10 * 1024, 4 * 1024);
        fixture.system().addProcess(30, u"zeta"_s, 2, 1);
        fixture.system().addProcess(20, u"alpha"_s, 1);
        fixture.tick();

        QCOMPARE(fixture.labelStarting(u"DL "_s)->text(), u"DL 10.0 KB/s    UL 4.0 KB/s"_s);
        QCOMPARE(WindowFixture::rowTexts(fixture.appsTable(), 0).mid(0, 3),
                 (QStringList{u"This PC"_s, u"10.0 KB/s"_s, u"4.0 KB/s"_s}));
        QCOMPARE(WindowFixture::rowOf(fixture.appsTable(), u"zeta"_s), 1);
        QCOMPARE(WindowFixture::rowOf(fixture.appsTable(), u"alpha"_s), 2);
        QCOMPARE(fixture.labelStarting(u"Top app: "_s)->text(), u"Top app: zeta (3 sockets)"_s);
        QCOMPARE(fixture.labelStarting(u"Applications: "_s)->text(),
                 u"Applications: 2    Today: 14.0 KB    Month: 14.0 KB    Package: 100.0 GB"_s);
        QStringList rates;
        const auto labels = miniMonitor()->findChildren<QLabel *>(u"miniRate"_s);
        for (const QLabel *label : labels)
            rates.append(label->text());
        QCOMPARE(rates, (QStringList{u"DL 10.0 KB/s"_s, u"UL 4.0 KB/s"_s}));
    }

    void aPausedTickTouchesNothing()
    {
        WindowFixture fixture;
        fixture.system().setCounters(0, 0);
        fixture.open();
        fixture.tick();
        WindowFixture::click(fixture.button(u"Pause"_s));
        removeStore();
        fixture.system().setCounters(5000, 0);
        fixture.system().addProcess(20, u"alpha"_s, 1);
        fixture.tick();
        QCOMPARE(fixture.labelStarting(u"DL "_s)->text(), u"DL 0 B/s    UL 0 B/s"_s);
        QCOMPARE(fixture.appsTable()->rowCount(), 1);
        QVERIFY(fixture.system().imagePathQuestions.isEmpty());
        QVERIFY(!storeExists());
    }

    void theFirstTickAfterAPauseCoversItAll()
    {
        WindowFixture fixture;
        fixture.system().setCounters(0, 0);
        fixture.open();
        WindowFixture::click(fixture.button(u"Pause"_s));
        fixture.system().setCounters(1024, 0);
        fixture.tick();
        fixture.system().setCounters(3 * 1024, 0);
        WindowFixture::click(fixture.button(u"Resume"_s));
        fixture.tick();
        QCOMPARE(fixture.labelStarting(u"Peak: "_s)->text(), u"Peak: 3.0 KB/s down | 0 B/s up"_s);
    }

    void aFailedInterfaceReadCountsTheWholeCountersNextTime()
    {
        WindowFixture fixture;
        fixture.system().setCounters(2048, 0);
        fixture.open();
        fixture.system().interfaces = std::nullopt;
        fixture.tick();
        QCOMPARE(fixture.labelStarting(u"DL "_s)->text(), u"DL 0 B/s    UL 0 B/s"_s);
        fixture.system().setCounters(4096, 0);
        fixture.tick();
        QCOMPARE(fixture.labelStarting(u"DL "_s)->text(), u"DL 4.0 KB/s    UL 0 B/s"_s);
    }

    void failedTablesLeaveTheTableEmptyForThatTickOnly()
    {
        WindowFixture fixture;
        fixture.system().addProcess(20, u"alpha"_s, 1, 1);
        fixture.open();
        fixture.tick();
        const auto udp = fixture.system().udp;
        fixture.system().tcp = std::nullopt;
        fixture.system().udp = std::nullopt;
        fixture.tick();
        QCOMPARE(fixture.appsTable()->rowCount(), 1);
        fixture.system().udp = udp;
        fixture.tick();
        QCOMPARE(WindowFixture::rowTexts(fixture.appsTable(), 1).last(), u"1"_s);
    }

    void theFirstTickAnnouncesNothing()
    {
        WindowFixture fixture;
        fixture.system().addProcess(20, u"alpha"_s, 1);
        fixture.open();
        fixture.tick();
        QCOMPARE(toastText(fixture), QString());
    }

    void aNewApplicationIsAnnouncedByName()
    {
        WindowFixture fixture;
        fixture.open();
        fixture.tick();
        fixture.system().addProcess(20, u"x.exe"_s, 1);
        fixture.tick();
        QCOMPARE(toastText(fixture), u"New network app: x.exe"_s);
    }

    void onlyTheFirstOfSeveralNewNamesIsAnnounced()
    {
        WindowFixture fixture;
        fixture.open();
        fixture.tick();
        fixture.system().addProcess(20, u"beta"_s, 9);
        fixture.system().addProcess(21, u"alpha"_s, 1);
        // Capitals come before small letters in plain UTF-16 order.
        fixture.system().addProcess(22, u"Zulu"_s, 1);
        fixture.tick();
        QCOMPARE(toastText(fixture), u"New network app: Zulu"_s);
        fixture.system().addProcess(23, u"gamma"_s, 1);
        fixture.tick();
        QCOMPARE(toastText(fixture), u"New network app: gamma"_s);
    }

    void anApplicationThatComesBackIsAnnouncedAgain()
    {
        WindowFixture fixture;
        fixture.system().addProcess(20, u"alpha"_s, 1);
        fixture.open();
        fixture.tick();
        fixture.system().removeProcess(20);
        fixture.tick();
        QCOMPARE(toastText(fixture), QString());
        fixture.system().addProcess(20, u"alpha"_s, 1);
        fixture.tick();
        QCOMPARE(toastText(fixture), u"New network app: alpha"_s);
    }

    void namesMadeFromProcessIdsTakePart()
    {
        WindowFixture fixture;
        fixture.open();
        fixture.tick();
        fixture.system().addProcess(77, u"ghost"_s, 1);
        fixture.system().imagePaths.clear();
        fixture.system().processNames.clear();
        fixture.tick();
        QCOMPARE(toastText(fixture), u"New network app: PID 77"_s);
    }

    void storedKeysOfTodayKeepTheStoredCounters()
    {
        WindowFixture fixture;
        const QDate today = QDate::currentDate();
        seedUsage(today.toString(Qt::ISODate), today.toString(u"yyyy-MM"), 1024, 2048);
        fixture.system().setCounters(0, 0);
        fixture.open();
        fixture.system().setCounters(1024, 0);
        fixture.tick();
        QCOMPARE(fixture.labelStarting(u"Applications: "_s)->text(),
                 u"Applications: 0    Today: 2.0 KB    Month: 3.0 KB    Package: 100.0 GB"_s);
    }

    void aNewDayAndMonthStartWithTheTicksTraffic()
    {
        WindowFixture fixture;
        seedUsage(u"2001-01-31"_s, u"2001-01"_s, 1024, 2048);
        fixture.system().setCounters(0, 0);
        fixture.open();
        fixture.system().setCounters(512, 0);
        fixture.tick();
        QCOMPARE(fixture.labelStarting(u"Applications: "_s)->text(),
                 u"Applications: 0    Today: 512 B    Month: 512 B    Package: 100.0 GB"_s);
    }
};

TOVAN_WINDOW_TEST(tick_test, TickTest)
#include "tick_test.moc"
