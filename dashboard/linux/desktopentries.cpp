#include "dashboard/linux/desktopentries.h"

#include "dashboard/linux/mounttable.h"

#include <QFile>
#include <QFileInfo>

#include <glib.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 largestEntry = 1 << 20; ///< bytes

struct FreeGlib
{
    void operator()(GKeyFile *file) const { g_key_file_unref(file); }
    void operator()(char *text) const { g_free(text); }
    void operator()(char **texts) const { g_strfreev(texts); }
};
using KeyFile = std::unique_ptr<GKeyFile, FreeGlib>;

class EntryFile
{
public:
    explicit EntryFile(const QByteArray &contents) : m_file(g_key_file_new())
    {
        m_valid = g_key_file_load_from_data(m_file.get(), contents.constData(),
                                            static_cast<gsize>(contents.size()), G_KEY_FILE_NONE,
                                            nullptr);
    }

    QString text(const char *key) const
    {
        const std::unique_ptr<char, FreeGlib> value(
            m_valid ? g_key_file_get_string(m_file.get(), G_KEY_FILE_DESKTOP_GROUP, key, nullptr)
                    : nullptr);
        return QString::fromUtf8(value.get());
    }
    bool flag(const char *key) const { return text(key) == "true"_L1; }

private:
    KeyFile m_file;
    bool m_valid = false;
};

/// What an entry starts.
struct Command
{
    QString program; ///< as written; empty when the entry starts nothing of its own
    int options = 0; ///< how many the program is given
};

/// Splits the Exec key's value.
QStringList arguments(const QString &exec)
{
    char **words = nullptr;
    if (!g_shell_parse_argv(exec.toUtf8().constData(), nullptr, &words, nullptr))
        return {};
    const std::unique_ptr<char *, FreeGlib> owner(words);
    QStringList result;
    for (char **word = words; *word; ++word)
        result.append(QString::fromUtf8(*word));
    return result;
}

/// Passes over env(1), its options and the variables that it sets.
QStringList withoutEnvironment(QStringList words)
{
    if (words.isEmpty() || QFileInfo(words.first()).fileName() != "env"_L1)
        return words;
    words.removeFirst();
    while (!words.isEmpty()) {
        const QString word = words.first();
        if (!word.startsWith(u'-') && !word.contains(u'='))
            break;
        words.removeFirst();
        const bool takesAnother
            = word == "-u"_L1 || word == "--unset"_L1 || word == "-C"_L1 || word == "--chdir"_L1;
        if (takesAnother && !words.isEmpty())
            words.removeFirst();
    }
    return words;
}

/// A program that is given something of its own to run or to open (`python3 /usr/bin/tool`,
/// `java -jar tool.jar`, `sh -c tool`) is not the application that the entry is about.
Command commandOf(const QString &exec)
{
    const QStringList words = withoutEnvironment(arguments(exec));
    if (words.isEmpty())
        return {};
    Command command{words.first(), 0};
    for (const QString &word : words.sliced(1)) {
        const bool fieldCode = word.size() == 2 && word.startsWith(u'%');
        if (fieldCode)
            continue;
        if (!word.startsWith(u'-'))
            return {};
        ++command.options;
    }
    return command;
}

ResolvedPath resolve(const MountTable &mounts, const QString &path)
{
    return ::resolve(mounts, QFile::encodeName(path).toStdString());
}

bool isMissing(const MountTable &mounts, const QString &path)
{
    return resolve(mounts, path).end == ResolvedPath::End::Missing;
}

QString existingAncestor(QString folder, const MountTable &mounts)
{
    while (isMissing(mounts, folder))
        folder = QFileInfo(folder).path();
    return folder;
}

/// No value for what is no file or cannot be read.
std::optional<QByteArray> contents(const QString &path, const MountTable &mounts)
{
    const ResolvedPath resolved = resolve(mounts, path);
    std::error_code error;
    if (resolved.end != ResolvedPath::End::Exists
        || !std::filesystem::is_regular_file(resolved.path, error)) {
        return std::nullopt;
    }
    QFile file(QFile::decodeName(resolved.path.c_str()));
    if (!file.open(QIODevice::ReadOnly) || file.size() > largestEntry)
        return std::nullopt;
    return file.readAll();
}

} // namespace

DesktopEntries::DesktopEntries(const QStringList &folders, QStringList searchPath,
                               const MountTable &mounts)
    : m_searchPath(std::move(searchPath))
{
    for (const QString &folder : folders)
        readFolder(folder, mounts);
}

void DesktopEntries::readFolder(const QString &folder, const MountTable &mounts)
{
    namespace fs = std::filesystem;
    if (!folder.startsWith(u'/'))
        return;
    const ResolvedPath top = resolve(mounts, folder);
    if (top.end == ResolvedPath::End::Missing)
        m_sources.append(existingAncestor(folder, mounts));
    if (top.end != ResolvedPath::End::Exists)
        return;
    const QString topPath = QFile::decodeName(top.path.c_str());
    m_sources.append(topPath);

    QStringList files;
    std::error_code error;
    for (fs::recursive_directory_iterator entry(top.path, error), end; !error && entry != end;
         entry.increment(error)) {
        const QString path = QFile::decodeName(entry->path().c_str());
        std::error_code unknown;
        if (mounts.mayHang(entry->path().native()))
            entry.disable_recursion_pending();
        else if (path.endsWith(".desktop"_L1))
            files.append(path);
        else if (!entry->is_symlink(unknown) && entry->is_directory(unknown))
            m_sources.append(path);
    }
    files.sort();
    for (const QString &file : std::as_const(files)) {
        // A file in a folder of its own, kde/editor.desktop, is known as kde-editor.
        QString id = file.sliced(topPath.size() + 1).chopped(QStringView(u".desktop").size());
        readEntry(id.replace(u'/', u'-'), file, mounts);
    }
}

void DesktopEntries::readEntry(const QString &id, const QString &file, const MountTable &mounts)
{
    if (m_ids.contains(id))
        return;
    const auto found = contents(file, mounts);
    if (!found)
        return;
    m_sources.append(file);
    const EntryFile entry(*found);
    if (entry.text(G_KEY_FILE_DESKTOP_KEY_TYPE) != "Application"_L1)
        return;

    // A user removes an entry of the system's by one that is hidden; one whose program is not there
    // says so in TryExec.
    const QString needed = entry.text(G_KEY_FILE_DESKTOP_KEY_TRY_EXEC);
    const bool removed = entry.flag(G_KEY_FILE_DESKTOP_KEY_HIDDEN)
        || (!needed.isEmpty() && isMissing(mounts, located(needed, mounts)));
    const QString icon = removed ? QString() : entry.text(G_KEY_FILE_DESKTOP_KEY_ICON);
    m_ids.insert(id, icon);
    // What starts a package's application is the package system's program.
    const bool packaged
        = !entry.text("X-Flatpak").isEmpty() || !entry.text("X-SnapInstanceName").isEmpty();
    if (icon.isEmpty() || packaged)
        return;
    const Command command = commandOf(entry.text(G_KEY_FILE_DESKTOP_KEY_EXEC));
    if (command.program.isEmpty())
        return;
    // An entry that the menu shows, and the one that starts the program just so, come first.
    constexpr int notShown = 1000;
    const int rank
        = command.options + (entry.flag(G_KEY_FILE_DESKTOP_KEY_NO_DISPLAY) ? notShown : 0);
    claimProgram(command.program, {icon, rank}, mounts);
}

void DesktopEntries::claimProgram(const QString &program, const Claim &claim,
                                  const MountTable &mounts)
{
    const auto offer = [&claim](Claims &claims, const QString &key) {
        const auto found = claims.constFind(key);
        if (found == claims.constEnd() || claim.rank < found->rank)
            claims.insert(key, claim);
    };
    offer(m_fileNames, QFileInfo(program).fileName());
    const ResolvedPath resolved = resolve(mounts, located(program, mounts));
    if (resolved.end != ResolvedPath::End::Missing)
        offer(m_programs, QFile::decodeName(resolved.path.c_str()));
}

QString DesktopEntries::located(const QString &program, const MountTable &mounts) const
{
    if (program.contains(u'/'))
        return program;
    QString unknown = program;
    for (const QString &folder : m_searchPath) {
        QString path = folder + u'/' + program;
        const ResolvedPath::End end = resolve(mounts, path).end;
        if (end == ResolvedPath::End::Exists)
            return path;
        // Nobody may ask whether it is here, so it is as long as it is nowhere else.
        if (end == ResolvedPath::End::MayHang && unknown == program)
            unknown = path;
    }
    return unknown;
}

QString DesktopEntries::iconOfId(const QString &id) const
{
    return m_ids.value(id);
}

QString DesktopEntries::iconOfProgram(const QString &path) const
{
    return m_programs.value(path).icon;
}

QString DesktopEntries::iconOfFileName(const QString &fileName) const
{
    return m_fileNames.value(fileName).icon;
}
