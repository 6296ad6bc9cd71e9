#include "tests/settings/storefixture.h"

#include <QSettings>
#include <QtTest>

#include <limits>

using namespace Qt::StringLiterals;

void StoreFixture::prepare()
{
    m_directory = std::make_unique<QTemporaryDir>();
    QVERIFY(m_directory->isValid());
}

void StoreFixture::writeFile(const QByteArray &content) const
{
    QFile file(storeFile());
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

QByteArray StoreFixture::fileContent() const
{
    QFile file(storeFile());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

StoredState StoreFixture::load()
{
    // Of a file that it has written itself the toolkit knows what is in it, and does not look.
    const QString copy = m_directory->filePath(u"copy %1"_s.arg(m_loads++));
    QFile::copy(storeFile(), copy);
    QSettings store(copy, QSettings::IniFormat);
    StoredState state = readStore(store, QDate(2026, 2, 1));
    QFile::remove(copy);
    return state;
}

void StoreFixture::save(const StoredState &state) const
{
    QSettings store(storeFile(), QSettings::IniFormat);
    writeStore(store, state);
}

AppRule StoreFixture::blockedRule()
{
    AppRule rule;
    rule.blocked = true;
    return rule;
}

StoredState StoreFixture::changedState()
{
    StoredState state;
    for (const SettingRow &row : settingsTable()) {
        if (const auto *bytes = std::get_if<ByteCountSetting>(&row.setting))
            state.settings.*bytes->field = std::numeric_limits<quint64>::max();
        else if (const auto *number = std::get_if<NumberSetting>(&row.setting))
            state.settings.*number->field = number->high;
        else if (const auto *flag = std::get_if<FlagSetting>(&row.setting))
            state.settings.*flag->field = !flag->defaultValue;
        else if (const auto *text = std::get_if<TextSetting>(&row.setting))
            state.settings.*text->field = u"neither, 50 % nor \"%1\""_s;
    }
    state.usage.dayKey = u"2025-12-31"_s;
    state.usage.monthKey = u"2025-12"_s;
    state.usage.todayBytes = 10'000'000'000'000'000'000ULL;
    state.usage.monthBytes = std::numeric_limits<quint64>::max();
    state.rules.insert(u"curl"_s, {true, false, true, u"High"_s, 300, 0});
    state.rules.insert(u"Curl"_s, {false, true, false, u"whatever I typed"_s, 1, 100000});
    return state;
}
