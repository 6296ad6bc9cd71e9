#include "tests/settings/windows/endlesssave.h"
#include "tests/support/testmain.h"
#include "tests/support/teststore.h"
#include "tests/support/windows/testkey.h"

#include <QProcess>
#include <QRandomGenerator>
#include <QSettings>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

constexpr int kills = 16;

/// Where this process's own key is, as other processes see it.
QString sharedKey()
{
    return uR"(HKEY_CURRENT_USER\%1\Software\Tovan\Killed)"_s.arg(testKey());
}

/// What is stored; the toolkit keeps nothing that it has read from the registry.
StoredState stored()
{
    QSettings store(uR"(HKEY_CURRENT_USER\Software\Tovan\Killed)"_s, QSettings::NativeFormat);
    return readStore(store, QDate());
}

/// How many rules the array is said to have.
qsizetype storedSize()
{
    return QSettings(uR"(HKEY_CURRENT_USER\Software\Tovan\Killed)"_s, QSettings::NativeFormat)
        .value(u"rules/size"_s)
        .toInt();
}

} // namespace

/// A process that is killed while it saves a thousand rules to the registry, where each key changes
/// at once.
class KilledSaveTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void noRuleThatStaysIsLost()
    {
        const StoredState kept = keptState();
        const RuleMap passing = passingRules();
        QRandomGenerator random(20260201);
        int timeOfSave = 0;
        int cut = 0;
        for (int kill = 0; kill < kills; ++kill) {
            QProcess process;
            process.start(QCoreApplication::applicationDirPath() + u"/tovan_endless_save"_s,
                          {sharedKey()});
            // The first save of all has nothing to keep, and the second one takes as long as any.
            const qsizetype begun = kill == 0 ? 3 : 1;
            QByteArray saves;
            QElapsedTimer sinceTheLast;
            while (saves.size() < begun) {
                sinceTheLast.start();
                QVERIFY(process.waitForReadyRead(60000));
                saves += process.readAllStandardOutput();
            }
            if (kill == 0)
                timeOfSave = static_cast<int>(sinceTheLast.elapsed());
            // Somewhere in this save; every other time while the rules are there twice.
            if (kill % 2 == 1)
                QTRY_VERIFY_WITH_TIMEOUT(storedSize() > kept.rules.size() + passing.size(), 60000);
            const QDeadlineTimer end(random.bounded(timeOfSave + 1));
            while (!end.hasExpired())
                process.waitForReadyRead(static_cast<int>(end.remainingTime()));
            process.kill();
            QVERIFY(process.waitForFinished());

            const RuleMap found = stored().rules;
            for (const auto &[app, rule] : kept.rules.asKeyValueRange())
                QVERIFY2(found.value(app) == rule, qPrintable(app));
            qsizetype passed = 0;
            for (const auto &[app, rule] : found.asKeyValueRange()) {
                QVERIFY2(kept.rules.contains(app) || passing.contains(app), qPrintable(app));
                passed += passing.contains(app);
            }
            cut += storedSize() != kept.rules.size() + passed;
        }
        qInfo("%d of %d kills have left the copies of a save behind", cut, kills);
        QVERIFY(cut > 0);
    }
};

int killedsave_test(int argc, char *argv[])
{
    useStoreOfItsOwn();
    const QCoreApplication app(argc, argv);
    KilledSaveTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "killedsave_test.moc"
