#pragma once

#include "sampling/linux/filedescriptor.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/// The open files of all processes as the process file system shows them, proc(5). Nothing is kept
/// between two calls but the directory itself.
class ProcessDirectory
{
public:
    /// `root` is where the process file system is mounted.
    explicit ProcessDirectory(std::string root) : m_root(std::move(root)) { }

    /// All process ids, ascending; no value when the list cannot be read.
    std::optional<std::vector<std::uint32_t>> processes();

    /// What a look at a process's descriptor folder costs next to nothing to tell.
    struct FileSummary
    {
        std::uint64_t identity = 0; ///< number of the folder; a reused process id has another
        std::uint64_t count = 0; ///< of open files; always the same on kernels before 6.2
    };
    /// No value when there is no such process.
    std::optional<FileSummary> fileSummary(std::uint32_t pid);
    /// The same of a folder that is held open, a third of the time; no value once its process has
    /// ended, whoever has its id by then.
    static std::optional<FileSummary> fileSummary(const FileDescriptor &folder);
    /// Opens a process's descriptor folder. None when it may not be read or there is no such
    /// process, or on kernels before 6.2, where a folder that is held does not tell that its
    /// process has ended.
    FileDescriptor openFolder(std::uint32_t pid);
    /// Opens the link to a process's executable itself, proc_pid_exe(5); what is read of it follows
    /// the process when it starts another program, and fails once the process has ended. None when
    /// there is no such process.
    FileDescriptor openImageLink(std::uint32_t pid);

    /// When the process started, in clock ticks since boot; 0 when it cannot be read.
    std::uint64_t startTime(std::uint32_t pid);

    /// Inode of the socket behind a process's descriptor; no value when it is no socket, not open
    /// or may not be seen.
    std::optional<std::uint32_t> socketAt(std::uint32_t pid, std::uint32_t descriptor);
    /// The same of the process whose descriptor folder is held open.
    static std::optional<std::uint32_t> socketAt(const FileDescriptor &folder,
                                                 std::uint32_t descriptor);

    /// How the reading of a process's files ended.
    enum class Access {
        Complete, ///< all files were read
        Gone, ///< there is no such process (any more)
        Refused, ///< its files may not be read
        Exhausted, ///< a resource of the reader's own ran out, such as descriptors
    };
    /// Calls `socket` with descriptor and inode of each socket among those open files of a process
    /// that `wanted` answers true for; it is asked about each descriptor once.
    Access forEachSocket(std::uint32_t pid, const std::function<bool(std::uint32_t)> &wanted,
                         const std::function<void(std::uint32_t, std::uint32_t)> &socket);

    /// Changes whenever a process or thread was created; no value when the kernel does not tell.
    std::optional<std::string> creationMark();

private:
    bool ready();
    std::string readFile(const char *path);

    std::string m_root;
    FileDescriptor m_directory;
};
