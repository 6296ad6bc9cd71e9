#include "app/formatting.h"
#include "tests/support/testmain.h"

#include <QtTest>

#include <limits>

using namespace Qt::StringLiterals;

class FormattingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bytesAreWrittenInBinaryUnits_data()
    {
        QTest::addColumn<quint64>("bytes");
        QTest::addColumn<QString>("text");

        constexpr quint64 kib = 1024;
        QTest::newRow("nothing") << quint64(0) << u"0 B"_s;
        QTest::newRow("last without unit step") << quint64(1023) << u"1023 B"_s;
        QTest::newRow("one KB") << kib << u"1.0 KB"_s;
        QTest::newRow("one and a half") << quint64(1536) << u"1.5 KB"_s;
        QTest::newRow("rounded up within its unit") << kib * kib - 1 << u"1024.0 KB"_s;
        QTest::newRow("one MB") << kib * kib << u"1.0 MB"_s;
        QTest::newRow("one GB") << kib * kib * kib << u"1.0 GB"_s;
        QTest::newRow("one TB") << kib * kib * kib * kib << u"1.0 TB"_s;
        QTest::newRow("no unit above TB") << kib * kib * kib * kib * kib << u"1024.0 TB"_s;
        QTest::newRow("above 2^63") << (quint64(1) << 63) << u"8388608.0 TB"_s;
        QTest::newRow("largest") << std::numeric_limits<quint64>::max() << u"16777216.0 TB"_s;
    }

    void bytesAreWrittenInBinaryUnits()
    {
        QFETCH(quint64, bytes);
        QTEST(formatBytes(bytes), "text");
    }

    void aRateIsTheBytesOfOneTick()
    {
        QCOMPARE(formatRate(2048), u"2.0 KB/s"_s);
        QCOMPARE(formatRate(0), u"0 B/s"_s);
    }

    void aLimitIsWrittenInWholeKilobytes() { QCOMPARE(formatLimit(100000), u"100000 KB/s"_s); }
};

TOVAN_APPLESS_TEST(formatting_test, FormattingTest)
#include "formatting_test.moc"
