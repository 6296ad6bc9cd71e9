#include "sampling/linux/processdirectory.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <memory>
#include <string_view>

namespace {

struct CloseDirectory
{
    void operator()(DIR *directory) const { ::closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

/// Long enough for "4294967295/fd/4294967295".
using PathBuffer = std::array<char, 32>;

const char *fdPath(PathBuffer &buffer, std::uint32_t pid)
{
    std::snprintf(buffer.data(), buffer.size(), "%u/fd", pid);
    return buffer.data();
}

ProcessDirectory::FileSummary summaryOf(const struct stat &folder)
{
    return {.identity = folder.st_ino, .count = static_cast<std::uint64_t>(folder.st_size)};
}

Directory openDirectory(int parent, const char *path)
{
    FileDescriptor descriptor(::openat(parent, path, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!descriptor)
        return nullptr;
    Directory directory(::fdopendir(descriptor.get()));
    if (directory)
        descriptor.release();
    return directory;
}

template <typename Number> std::optional<Number> parseNumber(std::string_view text)
{
    Number number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

/// Inode of the socket that the link at `path` refers to; none when it is another file.
std::optional<std::uint32_t> socketInode(int directory, const char *path)
{
    constexpr std::string_view prefix = "socket:[";
    std::array<char, 32> buffer{};
    const ssize_t length = ::readlinkat(directory, path, buffer.data(), buffer.size());
    if (length <= 0)
        return std::nullopt;
    const std::string_view target(buffer.data(), static_cast<std::size_t>(length));
    if (!target.starts_with(prefix) || !target.ends_with(']'))
        return std::nullopt;
    return parseNumber<std::uint32_t>(
        target.substr(prefix.size(), target.size() - prefix.size() - 1));
}

ProcessDirectory::Access accessOf(int error)
{
    switch (error) {
    case EMFILE:
    case ENFILE:
    case ENOMEM:
        return ProcessDirectory::Access::Exhausted;
    case EACCES:
    case EPERM:
        return ProcessDirectory::Access::Refused;
    default:
        return ProcessDirectory::Access::Gone;
    }
}

} // namespace

std::optional<std::vector<std::uint32_t>> ProcessDirectory::processes()
{
    if (!ready())
        return std::nullopt;
    const Directory directory = openDirectory(m_directory.get(), ".");
    if (!directory)
        return std::nullopt;
    std::vector<std::uint32_t> pids;
    while (const dirent *entry = ::readdir(directory.get())) {
        if (const auto pid = parseNumber<std::uint32_t>(entry->d_name))
            pids.push_back(*pid);
    }
    std::ranges::sort(pids);
    return pids;
}

std::optional<ProcessDirectory::FileSummary> ProcessDirectory::fileSummary(std::uint32_t pid)
{
    PathBuffer path;
    struct stat folder
    {
    };
    if (!ready() || ::fstatat(m_directory.get(), fdPath(path, pid), &folder, 0) != 0)
        return std::nullopt;
    return summaryOf(folder);
}

std::optional<ProcessDirectory::FileSummary>
ProcessDirectory::fileSummary(const FileDescriptor &folder)
{
    struct stat status
    {
    };
    if (::fstat(folder.get(), &status) != 0 || status.st_nlink == 0)
        return std::nullopt;
    return summaryOf(status);
}

FileDescriptor ProcessDirectory::openFolder(std::uint32_t pid)
{
    if (!ready())
        return {};
    PathBuffer path;
    FileDescriptor folder(
        ::openat(m_directory.get(), fdPath(path, pid), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder && fileSummary(folder).value_or(FileSummary{}).count == 0)
        folder.reset();
    return folder;
}

FileDescriptor ProcessDirectory::openImageLink(std::uint32_t pid)
{
    if (!ready())
        return {};
    PathBuffer path;
    std::snprintf(path.data(), path.size(), "%u/exe", pid);
    return FileDescriptor(
        ::openat(m_directory.get(), path.data(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
}

std::uint64_t ProcessDirectory::startTime(std::uint32_t pid)
{
    // The name, in parentheses, may itself hold blanks and parentheses. Behind it, the start time
    // is the 20th field.
    constexpr int fieldsBefore = 19;
    PathBuffer path;
    std::snprintf(path.data(), path.size(), "%u/stat", pid);
    const std::string text = readFile(path.data());
    const std::size_t nameEnd = text.rfind(") ");
    if (nameEnd == std::string::npos)
        return 0;
    std::string_view rest = std::string_view(text).substr(nameEnd + 2);
    for (int i = 0; i < fieldsBefore; ++i)
        rest.remove_prefix(std::min(rest.find(' '), rest.size() - 1) + 1);
    return parseNumber<std::uint64_t>(rest.substr(0, rest.find(' '))).value_or(0);
}

std::optional<std::uint32_t> ProcessDirectory::socketAt(std::uint32_t pid, std::uint32_t descriptor)
{
    if (!ready())
        return std::nullopt;
    PathBuffer path;
    std::snprintf(path.data(), path.size(), "%u/fd/%u", pid, descriptor);
    return socketInode(m_directory.get(), path.data());
}

std::optional<std::uint32_t> ProcessDirectory::socketAt(const FileDescriptor &folder,
                                                        std::uint32_t descriptor)
{
    PathBuffer path;
    std::snprintf(path.data(), path.size(), "%u", descriptor);
    return socketInode(folder.get(), path.data());
}

ProcessDirectory::Access
ProcessDirectory::forEachSocket(std::uint32_t pid, const std::function<bool(std::uint32_t)> &wanted,
                                const std::function<void(std::uint32_t, std::uint32_t)> &socket)
{
    if (!ready())
        return Access::Exhausted;
    PathBuffer path;
    const Directory directory = openDirectory(m_directory.get(), fdPath(path, pid));
    if (!directory)
        return accessOf(errno);
    const int folder = ::dirfd(directory.get());
    while (const dirent *entry = ::readdir(directory.get())) {
        const auto descriptor = parseNumber<std::uint32_t>(entry->d_name);
        if (!descriptor || !wanted(*descriptor))
            continue;
        if (const auto inode = socketInode(folder, entry->d_name))
            socket(*descriptor, *inode);
    }
    return Access::Complete;
}

std::optional<std::string> ProcessDirectory::creationMark()
{
    // The last field of loadavg is the process or thread id given out last.
    const std::string text = readFile("loadavg");
    const std::size_t last = text.rfind(' ');
    if (last == std::string::npos)
        return std::nullopt;
    return text.substr(last + 1);
}

bool ProcessDirectory::ready()
{
    if (!m_directory)
        m_directory = FileDescriptor(::open(m_root.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    return static_cast<bool>(m_directory);
}

std::string ProcessDirectory::readFile(const char *path)
{
    if (!ready())
        return {};
    const FileDescriptor file(::openat(m_directory.get(), path, O_RDONLY | O_CLOEXEC));
    std::array<char, 1024> text;
    const ssize_t length = file ? ::read(file.get(), text.data(), text.size()) : -1;
    return length > 0 ? std::string(text.data(), static_cast<std::size_t>(length)) : std::string();
}
