#include "assets/images.h"
#include "tests/support/testmain.h"

#include <QtTest>

#include <cstdlib>

using namespace Qt::StringLiterals;

namespace {

/// The mean difference of two images' octets, of 255; 255 for images of different sizes.
double difference(const QImage &first, const QImage &second)
{
    if (first.size() != second.size())
        return 255;
    const QImage a = first.convertToFormat(QImage::Format_RGBA8888_Premultiplied);
    const QImage b = second.convertToFormat(QImage::Format_RGBA8888_Premultiplied);
    double sum = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int octet = 0; octet < 4 * a.width(); ++octet)
            sum += std::abs(a.constScanLine(y)[octet] - b.constScanLine(y)[octet]);
    }
    return sum / (4.0 * a.width() * a.height());
}

/// How the program has an image drawn: fitted into a label, or as an icon.
QImage drawn(const QString &image, QSize size, bool asIcon)
{
    const QString file = image + u".svg"_s;
    return asIcon ? assetIcon(file).pixmap(size).toImage() : assetPixmap(file, size, 1.0).toImage();
}

} // namespace

/// What the plug-ins of this machine make of the program's images, beside what Qt's own of
/// version 6.4 have made of them on Linux: on Windows there may be others
/// (packaging/windows/qt/svg). Those pictures are in the folder "drawn"; TOVAN_SAVE_DRAWN=FOLDER in
/// the environment saves this machine's there.
class DrawingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void imagesAreDrawnAsByQtsOwnPlugins_data()
    {
        QTest::addColumn<QString>("image");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<bool>("asIcon");
        for (const char *image : {"tovan-wordmark", "tovan-site-icon"}) {
            for (const QSize size :
                 {QSize(16, 16), QSize(24, 24), QSize(74, 28), QSize(154, 62), QSize(256, 256)}) {
                for (const bool asIcon : {false, true}) {
                    QTest::addRow("%s at %d x %d%s", image, size.width(), size.height(),
                                  asIcon ? ", as an icon" : "")
                        << QString::fromLatin1(image) << size << asIcon;
                }
            }
        }
    }

    void imagesAreDrawnAsByQtsOwnPlugins()
    {
        QFETCH(QString, image);
        QFETCH(QSize, size);
        QFETCH(bool, asIcon);
        const QString name = u"/%1-%2x%3.png"_s.arg(image).arg(size.width()).arg(size.height());
        const QImage here = drawn(image, size, asIcon);
        if (qEnvironmentVariableIsSet("TOVAN_SAVE_DRAWN"))
            QVERIFY(here.save(qEnvironmentVariable("TOVAN_SAVE_DRAWN") + name));
        const QImage there(QCoreApplication::applicationDirPath() + u"/drawn"_s + name);
        QVERIFY(!there.isNull());
        const double found = difference(here, there);
        QVERIFY2(found < 3, qPrintable(u"%1 of 255"_s.arg(found)));
    }

    void anotherImageIsToldApart()
    {
        const QImage mark = drawn(u"tovan-site-icon"_s, {24, 24}, false);
        QCOMPARE(difference(mark, mark), 0.0);
        QVERIFY(difference(mark, mark.mirrored(true, false)) > 3);
        QImage empty(mark.size(), QImage::Format_ARGB32_Premultiplied);
        empty.fill(Qt::transparent);
        QVERIFY(difference(mark, empty) > 3);
    }
};

TOVAN_WIDGET_TEST(drawing_test, DrawingTest)
#include "drawing_test.moc"
