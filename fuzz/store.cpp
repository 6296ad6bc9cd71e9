// A store whose file holds any bytes: what is read from it is within its bounds, and is read again
// after it was saved, both into that file, with all that is in it and not ours, and into a new one.
#include "fuzz/require.h"
#include "settings/linux/storecontent.h"
#include "settings/settingsstore.h"
#include "settings/userstore.h"

#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QSettings>
#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// The user's folder, and the process that stores there.
class User
{
public:
    User()
    {
        require(m_folder.isValid() && QDir(m_folder.path()).mkpath(u"Tovan"_s),
                "a folder can be had");
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_folder.path()));
        qputenv("XDG_CONFIG_DIRS", QFile::encodeName(m_folder.filePath(u"none"_s)));
        QLoggingCategory::setFilterRules(u"*=false"_s);
    }

    QByteArray content() const
    {
        QFile file(m_file);
        require(file.open(QIODevice::ReadOnly), "the store can be read");
        return file.readAll();
    }
    void setContent(QByteArrayView bytes)
    {
        QFile file(m_file);
        require(file.open(QIODevice::WriteOnly) && file.write(bytes.data(), bytes.size()) >= 0,
                "the store can be written");
        file.close();
        changeTime();
    }
    void remove() const { QFile::remove(m_file); }

    /// What a program that starts now reads.
    StoredState load()
    {
        const auto store = openStore();
        require(store != nullptr, "a regular file is a store");
        return readStore(*store, QDate(2026, 2, 1));
    }
    void save(const StoredState &state)
    {
        auto store = openStoreToSave(largestStoreSize(state), 0ms);
        require(store != nullptr, "a regular file can be saved to");
        writeStore(*store, state);
        store.reset();
        changeTime();
    }

private:
    /// The toolkit looks again into a file that it has read or written when its time has changed.
    void changeTime()
    {
        ++m_seconds;
        const timespec times[]{{m_seconds, 0}, {m_seconds, 0}};
        require(::utimensat(AT_FDCWD, QFile::encodeName(m_file).constData(), times, 0) == 0,
                "the store has a time");
    }

    QTemporaryDir m_folder{QDir::tempPath() + u"/store-XXXXXX"_s};
    QString m_file = m_folder.filePath(u"Tovan/Tovan Network Monitor.conf"_s);
    time_t m_seconds = 0;
};

void checkText(const QString &text)
{
    require(text.size() <= 32767, "a text is no longer than a line edit's");
    require(text.isValidUtf16(), "a text is one of whole characters");
}

void checkBounds(const StoredState &state)
{
    for (const SettingRow &row : settingsTable()) {
        if (const auto *number = std::get_if<NumberSetting>(&row.setting)) {
            const int value = state.settings.*number->field;
            require(value >= number->low && value <= number->high, "a number is in its bounds");
        } else if (const auto *text = std::get_if<TextSetting>(&row.setting)) {
            checkText(state.settings.*text->field);
        }
    }
    checkText(state.usage.dayKey);
    checkText(state.usage.monthKey);
    for (const auto &[app, rule] : state.rules.asKeyValueRange()) {
        require(!app.isEmpty(), "a rule has an application");
        checkText(app);
        checkText(rule.priority);
    }
}

/// What of a state is stored: a rule that neither acts nor has a speed is not.
StoredState kept(StoredState state)
{
    state.rules.removeIf([](RuleMap::iterator rule) {
        const bool acts
            = rule->dlLimit || rule->ulLimit || rule->blocked || rule->priority != u"Normal"_s;
        return !acts && rule->dlKbps <= 0 && rule->ulKbps <= 0;
    });
    return state;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static User user;

    user.setContent({data, static_cast<qsizetype>(size)});
    const StoredState state = user.load();
    checkBounds(state);

    user.save(state);
    require(user.load() == kept(state), "what was saved is read again");
    require(!harmlessContent(user.content()), "a saved store is harmless");

    user.remove();
    user.save(state);
    require(user.load() == kept(state), "what was saved into a new file is read again");
    require(user.content().size() <= largestStoreSize(state), "a new file is not larger than told");
    return 0;
}
