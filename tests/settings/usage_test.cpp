#include "settings/appsettings.h"
#include "settings/usage.h"
#include "tests/support/octets.h"
#include "tests/support/testmain.h"

#include <QtTest>

#include <limits>

using namespace Qt::StringLiterals;

namespace {

UsageCounters countersOn(QDate date, quint64 today, quint64 month)
{
    return {usageDayKey(date), usageMonthKey(date), today, month, true, true};
}

/// Counters that started anew on the day of this key, with a tick of these bytes.
UsageCounters newMonthOn(const QString &dayKey, const QString &monthKey, quint64 bytes)
{
    return {dayKey, monthKey, bytes, bytes, false, false};
}

UsageCounters withMonthBytes(quint64 bytes)
{
    UsageCounters usage;
    usage.monthBytes = bytes;
    return usage;
}

} // namespace

class UsageTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keysReadYearMonthAndDay();
    void theSameDayGrowsBothCounters();
    void aNewDayRestartsTheDayAlone();
    void aNewMonthRestartsBothAndAllowsAlertsAgain();
    void aNewYearRestartsBoth();
    void theLeapDayIsADayOfFebruary();
    void midMonthRestartsNothing();
    void missedDaysAndMonthsAreNotCaughtUp();
    void aClockSetBackRestartsTheCounters();
    void emptyKeysCountAsAnotherDay();
    void theSameMonthOfAnotherYearIsAnotherMonth();
    void theNewDayStartsWithItsFirstTick();

    void shareOfTheAllowance();
    void shareIsNotCapped();
    void anAllowanceOfZeroCountsAsOneByte();
    void shareOfCountersBeyondTwoToThe63();
    void percentIsRoundedHalfAwayFromZero();
    void percentSaturates();

    void warningIsDueAtExactlyItsLevel();
    void criticalIsDueAtExactlyItsLevel();
    void aJumpPastBothLevelsRaisesCriticalFirstThenWarning();
    void aSlowMonthRaisesWarningFirstThenCritical();
    void eachAlertIsDueOnceAMonth();
    void noAlertIsDueWhileAlertsAreOff();
    void levelsInTheWrongOrderAreTestedCriticalFirst();
    void anAllowanceOfZeroRaisesBothAtTheFirstByte();
    void noUseRaisesNoAlert();

    void allowanceTextsAreParsedLenientlyAndClamped_data();
    void allowanceTextsAreParsedLenientlyAndClamped();
    void allowanceUnitsAreBinary();
    void allowanceIsShownInWholeGigabytes();
};

void UsageTest::keysReadYearMonthAndDay()
{
    QCOMPARE(usageDayKey(QDate(2026, 2, 1)), u"2026-02-01"_s);
    QCOMPARE(usageMonthKey(QDate(2026, 2, 1)), u"2026-02"_s);
    QCOMPARE(usageDayKey(QDate(2026, 12, 31)), u"2026-12-31"_s);
    QCOMPARE(usageMonthKey(QDate(2026, 12, 31)), u"2026-12"_s);
}

void UsageTest::theSameDayGrowsBothCounters()
{
    UsageCounters usage = countersOn({2026, 2, 1}, 10, 100);
    updateUsageCounters(usage, 5, {2026, 2, 1});
    QCOMPARE(usage, countersOn({2026, 2, 1}, 15, 105));
}

void UsageTest::aNewDayRestartsTheDayAlone()
{
    UsageCounters usage = countersOn({2026, 2, 1}, 10, 100);
    updateUsageCounters(usage, 0, {2026, 2, 2});
    QCOMPARE(usage, countersOn({2026, 2, 2}, 0, 100));
}

void UsageTest::aNewMonthRestartsBothAndAllowsAlertsAgain()
{
    UsageCounters usage = countersOn({2026, 1, 31}, 10, 100);
    updateUsageCounters(usage, 0, {2026, 2, 1});
    QCOMPARE(usage, newMonthOn(u"2026-02-01"_s, u"2026-02"_s, 0));
}

void UsageTest::aNewYearRestartsBoth()
{
    UsageCounters usage = countersOn({2026, 12, 31}, 10, 100);
    updateUsageCounters(usage, 3, {2027, 1, 1});
    QCOMPARE(usage, newMonthOn(u"2027-01-01"_s, u"2027-01"_s, 3));
}

void UsageTest::theLeapDayIsADayOfFebruary()
{
    UsageCounters usage = countersOn({2028, 2, 28}, 10, 100);
    updateUsageCounters(usage, 1, {2028, 2, 29});
    QCOMPARE(usage, countersOn({2028, 2, 29}, 1, 101));
    updateUsageCounters(usage, 2, {2028, 3, 1});
    QCOMPARE(usage, newMonthOn(u"2028-03-01"_s, u"2028-03"_s, 2));
}

void UsageTest::midMonthRestartsNothing()
{
    UsageCounters usage = countersOn({2026, 2, 14}, 0, 100);
    for (int day = 14; day <= 16; ++day)
        updateUsageCounters(usage, 1, {2026, 2, day});
    QCOMPARE(usage, countersOn({2026, 2, 16}, 1, 103));
}

void UsageTest::missedDaysAndMonthsAreNotCaughtUp()
{
    UsageCounters usage = countersOn({2026, 1, 5}, 10, 100);
    updateUsageCounters(usage, 1, {2026, 1, 25});
    QCOMPARE(usage, countersOn({2026, 1, 25}, 1, 101));
    updateUsageCounters(usage, 1, {2026, 7, 25});
    QCOMPARE(usage, newMonthOn(u"2026-07-25"_s, u"2026-07"_s, 1));
}

void UsageTest::aClockSetBackRestartsTheCounters()
{
    UsageCounters usage = countersOn({2026, 2, 1}, 10, 100);
    updateUsageCounters(usage, 1, {2026, 1, 31});
    QCOMPARE(usage, newMonthOn(u"2026-01-31"_s, u"2026-01"_s, 1));
}

void UsageTest::emptyKeysCountAsAnotherDay()
{
    UsageCounters usage;
    usage.todayBytes = 10;
    usage.monthBytes = 100;
    updateUsageCounters(usage, 1, {2026, 2, 1});
    QCOMPARE(usage, newMonthOn(u"2026-02-01"_s, u"2026-02"_s, 1));
}

void UsageTest::theSameMonthOfAnotherYearIsAnotherMonth()
{
    UsageCounters usage = countersOn({2025, 2, 1}, 10, 100);
    updateUsageCounters(usage, 1, {2026, 2, 1});
    QCOMPARE(usage, newMonthOn(u"2026-02-01"_s, u"2026-02"_s, 1));
}

void UsageTest::theNewDayStartsWithItsFirstTick()
{
    UsageCounters usage = countersOn({2026, 2, 1}, 10, 100);
    updateUsageCounters(usage, 7, {2026, 2, 2});
    QCOMPARE(usage.todayBytes, 7ULL);
    QCOMPARE(usage.monthBytes, 107ULL);
}

void UsageTest::shareOfTheAllowance()
{
    QCOMPARE(usedShare(0, 100 * gigabyte), 0.0);
    QCOMPARE(usedShare(50 * gigabyte, 100 * gigabyte), 0.5);
    QCOMPARE(usedShare(100 * gigabyte, 100 * gigabyte), 1.0);
}

void UsageTest::shareIsNotCapped()
{
    QCOMPARE(usedShare(250 * gigabyte, 100 * gigabyte), 2.5);
}

void UsageTest::anAllowanceOfZeroCountsAsOneByte()
{
    QCOMPARE(usedShare(0, 0), 0.0);
    QCOMPARE(usedShare(3, 0), 3.0);
}

void UsageTest::shareOfCountersBeyondTwoToThe63()
{
    constexpr quint64 largest = std::numeric_limits<quint64>::max();
    QCOMPARE(usedShare(largest, largest), 1.0);
    QVERIFY(usedShare(largest, 1) > 1.8e19);
    QVERIFY(usedShare(1, largest) > 0.0);
}

void UsageTest::percentIsRoundedHalfAwayFromZero()
{
    QCOMPARE(usedPercent(0, 1000), 0LL);
    QCOMPARE(usedPercent(4, 1000), 0LL);
    QCOMPARE(usedPercent(5, 1000), 1LL);
    QCOMPARE(usedPercent(25, 1000), 3LL);
    QCOMPARE(usedPercent(2500, 1000), 250LL);
}

void UsageTest::percentSaturates()
{
    constexpr quint64 largest = std::numeric_limits<quint64>::max();
    QCOMPARE(usedPercent(largest, 1), std::numeric_limits<qint64>::max());
    QCOMPARE(usedPercent(92233720368547750ULL, 1), 9223372036854774784LL);
}

void UsageTest::warningIsDueAtExactlyItsLevel()
{
    const AppSettings settings;
    QCOMPARE(dueAlert(withMonthBytes(85899345920), settings), UsageAlert::Warning);
    QCOMPARE(dueAlert(withMonthBytes(85899345919), settings), std::nullopt);
}

void UsageTest::criticalIsDueAtExactlyItsLevel()
{
    const AppSettings settings;
    QCOMPARE(dueAlert(withMonthBytes(95 * gigabyte), settings), UsageAlert::Critical);
    QCOMPARE(dueAlert(withMonthBytes(95 * gigabyte - 1), settings), UsageAlert::Warning);
}

void UsageTest::aJumpPastBothLevelsRaisesCriticalFirstThenWarning()
{
    const AppSettings settings;
    UsageCounters usage = withMonthBytes(96 * gigabyte);
    QCOMPARE(dueAlert(usage, settings), UsageAlert::Critical);
    usage.criticalAlertShown = true;
    QCOMPARE(dueAlert(usage, settings), UsageAlert::Warning);
    usage.warningAlertShown = true;
    QCOMPARE(dueAlert(usage, settings), std::nullopt);
}

void UsageTest::aSlowMonthRaisesWarningFirstThenCritical()
{
    const AppSettings settings;
    UsageCounters usage = withMonthBytes(85 * gigabyte);
    QCOMPARE(dueAlert(usage, settings), UsageAlert::Warning);
    usage.warningAlertShown = true;
    QCOMPARE(dueAlert(usage, settings), std::nullopt);
    usage.monthBytes = 95 * gigabyte;
    QCOMPARE(dueAlert(usage, settings), UsageAlert::Critical);
}

void UsageTest::eachAlertIsDueOnceAMonth()
{
    const AppSettings settings;
    UsageCounters usage = countersOn({2026, 1, 31}, 0, 200 * gigabyte);
    QCOMPARE(dueAlert(usage, settings), std::nullopt);
    updateUsageCounters(usage, 96 * gigabyte, {2026, 2, 1});
    QCOMPARE(dueAlert(usage, settings), UsageAlert::Critical);
}

void UsageTest::noAlertIsDueWhileAlertsAreOff()
{
    AppSettings settings;
    settings.notificationsEnabled = false;
    const UsageCounters usage = withMonthBytes(500 * gigabyte);
    QCOMPARE(dueAlert(usage, settings), std::nullopt);
    settings.notificationsEnabled = true;
    QCOMPARE(dueAlert(usage, settings), UsageAlert::Critical);
}

void UsageTest::levelsInTheWrongOrderAreTestedCriticalFirst()
{
    AppSettings settings;
    settings.notify80 = 99;
    settings.notify95 = 2;
    QCOMPARE(dueAlert(withMonthBytes(3 * gigabyte), settings), UsageAlert::Critical);
}

void UsageTest::anAllowanceOfZeroRaisesBothAtTheFirstByte()
{
    AppSettings settings;
    settings.monthlyLimitBytes = 0;
    QCOMPARE(dueAlert(withMonthBytes(0), settings), std::nullopt);
    UsageCounters usage = withMonthBytes(1);
    QCOMPARE(dueAlert(usage, settings), UsageAlert::Critical);
    usage.criticalAlertShown = true;
    QCOMPARE(dueAlert(usage, settings), UsageAlert::Warning);
}

void UsageTest::noUseRaisesNoAlert()
{
    QCOMPARE(dueAlert(UsageCounters(), AppSettings()), std::nullopt);
}

void UsageTest::allowanceTextsAreParsedLenientlyAndClamped_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<quint64>("amount");
    QTest::newRow("within") << u"500"_s << quint64(500);
    QTest::newRow("zero") << u"0"_s << quint64(1);
    QTest::newRow("letters") << u"abc"_s << quint64(1);
    QTest::newRow("empty") << QString() << quint64(1);
    QTest::newRow("negative") << u"-5"_s << quint64(1);
    QTest::newRow("high bound") << u"100000"_s << quint64(100000);
    QTest::newRow("above") << u"250000"_s << quint64(100000);
    QTest::newRow("beyond 32 bits") << u"4294967297"_s << quint64(100000);
    QTest::newRow("largest 64 bits") << u"18446744073709551615"_s << quint64(100000);
    QTest::newRow("too large for 64 bits") << u"18446744073709551616"_s << quint64(1);
    QTest::newRow("fraction") << u"1.5"_s << quint64(1);
    QTest::newRow("blanks around") << u" 42 "_s << quint64(42);
}

void UsageTest::allowanceTextsAreParsedLenientlyAndClamped()
{
    QFETCH(QString, text);
    QFETCH(quint64, amount);
    QCOMPARE(parseAllowance(text), amount);
}

void UsageTest::allowanceUnitsAreBinary()
{
    QCOMPARE(allowanceBytes(500, u"MB"_s), 524288000ULL);
    QCOMPARE(allowanceBytes(100, u"GB"_s), 107374182400ULL);
    QCOMPARE(allowanceBytes(1, u"mb"_s), gigabyte);
    QCOMPARE(allowanceBytes(1, QString()), gigabyte);
    QCOMPARE(allowanceBytes(100000, u"GB"_s), 107374182400000ULL);
}

void UsageTest::allowanceIsShownInWholeGigabytes()
{
    QCOMPARE(wholeGigabytes(107374182400), 100ULL);
    QCOMPARE(wholeGigabytes(524288000), 0ULL);
    QCOMPARE(wholeGigabytes(2 * gigabyte - 1), 1ULL);
    QCOMPARE(wholeGigabytes(std::numeric_limits<quint64>::max()), 17179869183ULL);
}

TOVAN_APPLESS_TEST(usage_test, UsageTest)
#include "usage_test.moc"
