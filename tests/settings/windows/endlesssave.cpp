// Saves to the key of the registry that its argument names until it is killed: the rules that
// endlesssave.h tells of, once with and once without those that make all others change their
// places. Writes an octet before each save.

#include "tests/settings/windows/endlesssave.h"

#include <QCoreApplication>
#include <QSettings>

#include <cstdio>

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QSettings store(QCoreApplication::arguments().value(1), QSettings::NativeFormat);
    const StoredState state = keptState();
    StoredState more = state;
    more.rules.insert(passingRules());
    for (bool withMore = true; true; withMore = !withMore) {
        std::fputc('.', stdout);
        std::fflush(stdout);
        writeStore(store, withMore ? more : state);
    }
}
