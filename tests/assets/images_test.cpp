#include "assets/images.h"
#include "tests/support/testmain.h"

#include <QtTest>

using namespace Qt::StringLiterals;

/// Where the program's images are found, and how they are drawn.
class ImagesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anAssetIsLookedUpBesideTheExecutableFirst()
    {
        const QString directory = QCoreApplication::applicationDirPath();
        QCOMPARE(assetPath(u"tovan-wordmark.svg"_s), directory + "/assets/tovan-wordmark.svg"_L1);
        QCOMPARE(assetPath(u"missing.svg"_s), directory + "/../qt/assets/missing.svg"_L1);
    }

    void anIconWithoutAnImageCannotBeDrawn()
    {
        QVERIFY(!canBeDrawn(QIcon()));
        QVERIFY(!canBeDrawn(QIcon(u"/nowhere/icon.svg"_s)));
        QVERIFY(canBeDrawn(assetIcon(u"tovan-site-icon.svg"_s)));
    }

    void anAssetIsSharpAtTheScreensRatio()
    {
        const QPixmap normal = assetPixmap(u"tovan-wordmark.svg"_s, {74, 28}, 1.0);
        const QPixmap sharp = assetPixmap(u"tovan-wordmark.svg"_s, {74, 28}, 2.0);
        QVERIFY(normal.width() <= 74 && normal.height() <= 28);
        QVERIFY(normal.width() == 74 || normal.height() == 28);
        QVERIFY(sharp.width() <= 148 && sharp.height() <= 56);
        QVERIFY(sharp.width() == 148 || sharp.height() == 56);
        QCOMPARE(sharp.devicePixelRatio(), 2.0);
    }

    void aMissingAssetLeavesNoImage()
    {
        QVERIFY(assetPixmap(u"missing.svg"_s, {74, 28}, 1.0).isNull());
    }
};

TOVAN_WIDGET_TEST(images_test, ImagesTest)
#include "images_test.moc"
