#include "tests/support/linux/ownnamespaces.h"

#include <QByteArray>
#include <QFile>
#include <QString>

#include <cerrno>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

bool writeFile(const QString &path, const QByteArray &text)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)
        && file.write(text) == text.size();
}

/// Root of a new user namespace is who the caller is outside.
bool unshareAsOwnRoot(int kinds)
{
    const QByteArray user = QByteArray::number(::geteuid());
    const QByteArray group = QByteArray::number(::getegid());
    return ::unshare(CLONE_NEWUSER | kinds) == 0 && writeFile(u"/proc/self/setgroups"_s, "deny")
        && writeFile(u"/proc/self/uid_map"_s, "0 " + user + " 1")
        && writeFile(u"/proc/self/gid_map"_s, "0 " + group + " 1");
}

} // namespace

bool enterOwnNamespaces(int kinds)
{
    return ::unshare(kinds) == 0 || unshareAsOwnRoot(kinds);
}

bool enterOwnMounts()
{
    if (!enterOwnNamespaces(CLONE_NEWNS))
        return false;
    // The root of a chroot is mostly no mount point, and how its mounts spread cannot be changed.
    return ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 || errno == EINVAL;
}
