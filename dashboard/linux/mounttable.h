#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The file systems that paths lie on, as they were mounted at one moment. Paths are absolute, in
/// the kernel's bytes.
class MountTable
{
public:
    /// Reads the table of this process.
    static MountTable current();
    /// Takes the lines of /proc/self/mountinfo (proc_pid_mountinfo(5)).
    explicit MountTable(std::string_view mountinfo);

    /// Whether a question for this path, which holds no links, may wait for a server or for another
    /// process. The root's file system is trusted whatever it is: the program itself lies on it.
    bool mayHang(std::string_view path) const;

private:
    struct Mount
    {
        int id = 0;
        int parent = 0; ///< id of the mount that this one lies upon; -1 for the first one
        std::string point; ///< where it is mounted; the root is empty
        bool local = false; ///< answered by this kernel, from a disk of its own or from memory
    };
    /// The first mount upon `parent` on the way to `path`; null when there is none.
    const Mount *firstOn(int parent, std::string_view path) const;

    std::vector<Mount> m_mounts;
};

/// Where a path leads to.
struct ResolvedPath
{
    enum class End { Exists, Missing, MayHang };

    std::string path; ///< without links as far as it was followed
    End end = End::Missing;
};

/// Follows all links of an absolute path, and none onto a file system that may hang.
ResolvedPath resolve(const MountTable &mounts, std::string_view path);
