#include "tests/sampling/linux/support/processtree.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

void makeLink(const QByteArray &path, const QByteArray &target)
{
    ::unlink(path.constData());
    if (::symlink(target.constData(), path.constData()) != 0)
        qFatal("symlink %s failed", path.constData());
}

void makeFile(const QByteArray &path, const QByteArray &content)
{
    QFile file(QFile::decodeName(path));
    if (!file.open(QFile::WriteOnly) || file.write(content) != content.size())
        qFatal("%s cannot be written", path.constData());
}

} // namespace

ProcessTree::ProcessTree()
{
    if (!m_directory.isValid())
        qFatal("no temporary folder");
}

void ProcessTree::addProcess(quint32 pid, const QByteArray &name, quint64 startTime)
{
    removeProcess(pid);
    if (::mkdir(path(pid).constData(), 0755) != 0
        || ::mkdir(path(pid, "fd").constData(), 0755) != 0)
        qFatal("mkdir failed");
    makeFile(path(pid, "comm"), name + '\n');
    // Field 22 is the start time; the name may hold blanks and parentheses.
    makeFile(path(pid, "stat"),
             QByteArray::number(pid) + " (" + name
                 + ") S 1 1 1 0 -1 4194304 0 0 0 0 0 0 0 0 20 0 1 0 "
                 + QByteArray::number(startTime) + " 0 0\n");
}

void ProcessTree::removeProcess(quint32 pid)
{
    QDir(QFile::decodeName(path(pid))).removeRecursively();
}

void ProcessTree::setDescriptor(quint32 pid, quint32 number, const QByteArray &target)
{
    makeLink(path(pid, "fd/" + QByteArray::number(number)), target);
}

void ProcessTree::setSocket(quint32 pid, quint32 number, quint32 inode)
{
    setDescriptor(pid, number, "socket:[" + QByteArray::number(inode) + ']');
}

void ProcessTree::closeDescriptor(quint32 pid, quint32 number)
{
    ::unlink(path(pid, "fd/" + QByteArray::number(number)).constData());
}

void ProcessTree::setExecutable(quint32 pid, const QByteArray &target)
{
    makeLink(path(pid, "exe"), target);
}

QString ProcessTree::folderTemplate()
{
    const QFileInfo memory(u"/dev/shm"_s);
    return (memory.isWritable() ? memory.filePath() : QDir::tempPath()) + u"/tovan-XXXXXX"_s;
}

void ProcessTree::allowEveryone()
{
    if (::chmod(m_directory.path().toLocal8Bit().constData(), 0755) != 0)
        qFatal("chmod failed");
}

QByteArray ProcessTree::path(quint32 pid, const QByteArray &file) const
{
    const QByteArray folder = m_directory.path().toLocal8Bit() + '/' + QByteArray::number(pid);
    return file.isEmpty() ? folder : folder + '/' + file;
}
