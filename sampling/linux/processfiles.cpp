#include "sampling/linux/processfiles.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <string_view>

namespace {

/// The link at a path below a folder, or without a path the link that is open itself.
std::string readLink(int descriptor, const char *path)
{
    std::array<char, 512> usual;
    const ssize_t usualLength = ::readlinkat(descriptor, path, usual.data(), usual.size());
    if (usualLength < 0)
        return {};
    if (static_cast<std::size_t>(usualLength) < usual.size())
        return {usual.data(), static_cast<std::size_t>(usualLength)};
    std::string target(2 * usual.size(), '\0');
    while (true) {
        const ssize_t length = ::readlinkat(descriptor, path, target.data(), target.size());
        if (length < 0)
            return {};
        if (static_cast<std::size_t>(length) < target.size()) {
            target.resize(static_cast<std::size_t>(length));
            return target;
        }
        target.resize(target.size() * 2);
    }
}

bool isSameFile(const std::string &path, const std::string &otherPath)
{
    struct stat file
    {
    };
    struct stat otherFile
    {
    };
    return ::stat(path.c_str(), &file) == 0 && ::stat(otherPath.c_str(), &otherFile) == 0
        && file.st_dev == otherFile.st_dev && file.st_ino == otherFile.st_ino;
}

} // namespace

std::string ProcessFiles::imagePath(std::uint32_t pid, const FileDescriptor *heldLink) const
{
    constexpr std::string_view deletedSuffix = " (deleted)";
    std::string path = heldLink ? readLink(heldLink->get(), "") : std::string();
    if (path.empty()) // nothing is held, or the process has ended and its id may be another's
        path = readLink(AT_FDCWD, pathOf(pid, "exe").c_str());
    // The kernel marks an executable whose file is gone; a file may as well be named like that.
    if (path.ends_with(deletedSuffix) && !isSameFile(pathOf(pid, "exe"), path))
        path.resize(path.size() - deletedSuffix.size());
    return path;
}

std::optional<std::string> ProcessFiles::name(std::uint32_t pid) const
{
    const FileDescriptor file(::open(pathOf(pid, "comm").c_str(), O_RDONLY | O_CLOEXEC));
    if (!file)
        return std::nullopt;
    std::string name;
    std::array<char, 64> part{};
    while (true) {
        const ssize_t length = ::read(file.get(), part.data(), part.size());
        if (length < 0 && errno == EINTR)
            continue;
        if (length < 0)
            return std::nullopt;
        if (length == 0)
            break;
        name.append(part.data(), static_cast<std::size_t>(length));
    }
    if (name.ends_with('\n'))
        name.pop_back();
    return name;
}

std::string ProcessFiles::pathOf(std::uint32_t pid, const char *file) const
{
    return m_root + '/' + std::to_string(pid) + '/' + file;
}
