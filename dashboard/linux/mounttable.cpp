#include "dashboard/linux/mounttable.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <fstream>
#include <iterator>
#include <sstream>
#include <unordered_set>

#include <unistd.h>

namespace {

constexpr int none = -1; ///< no mount has this id

/// Kinds that need neither a server nor a process to answer. Whatever
/// is missing here is taken for one that may hang, which costs no more than an icon.
constexpr std::array<std::string_view, 36> localKinds{
    "aufs",    "bcachefs", "btrfs",    "cramfs", "devtmpfs", "ecryptfs", "efivarfs", "erofs",
    "exfat",   "ext2",     "ext3",     "ext4",   "f2fs",     "hfs",      "hfsplus",  "hugetlbfs",
    "iso9660", "jffs2",    "jfs",      "minix",  "msdos",    "nilfs2",   "ntfs",     "ntfs3",
    "overlay", "ramfs",    "reiserfs", "romfs",  "rootfs",   "squashfs", "tmpfs",    "ubifs",
    "udf",     "vfat",     "xfs",      "zfs"};

/// Undoes the table's writing of blanks, tabs, line feeds and backslashes as \ooo.
std::string unescaped(std::string_view text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 3 >= text.size()) {
            result += text[i];
            continue;
        }
        result += static_cast<char>((text[i + 1] - '0') * 64 + (text[i + 2] - '0') * 8
                                    + (text[i + 3] - '0'));
        i += 3;
    }
    return result;
}

bool contains(std::string_view folder, std::string_view path)
{
    return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

} // namespace

MountTable MountTable::current()
{
    std::ifstream file("/proc/self/mountinfo", std::ios::binary);
    return MountTable(std::string(std::istreambuf_iterator<char>(file), {}));
}

MountTable::MountTable(std::string_view mountinfo)
{
    std::istringstream lines{std::string(mountinfo)};
    for (std::string line; std::getline(lines, line);) {
        // 36 35 98:0 /mnt1 /mnt2 rw,noatime master:1 - ext3 /dev/root rw,errors=continue
        std::istringstream fields(line);
        Mount mount;
        std::string device;
        std::string root;
        std::string point;
        if (!(fields >> mount.id >> mount.parent >> device >> root >> point))
            continue;
        std::string field;
        while (fields >> field && field != "-") { }
        std::string kind;
        fields >> kind;
        mount.point = point == "/" ? std::string() : unescaped(point);
        mount.local = std::ranges::find(localKinds, kind) != localKinds.end();
        m_mounts.push_back(std::move(mount));
    }

    std::unordered_set<int> ids;
    for (const Mount &mount : m_mounts)
        ids.insert(mount.id);
    for (Mount &mount : m_mounts) {
        if (mount.parent == mount.id || !ids.contains(mount.parent))
            mount.parent = none;
    }
}

const MountTable::Mount *MountTable::firstOn(int parent, std::string_view path) const
{
    const Mount *first = nullptr;
    for (const Mount &mount : m_mounts) {
        if (mount.parent == parent && contains(mount.point, path)
            && (!first || mount.point.size() < first->point.size())) {
            first = &mount;
        }
    }
    return first;
}

bool MountTable::mayHang(std::string_view path) const
{
    if (m_mounts.empty())
        return true;
    // As the kernel walks: from a mount to the next one upon it, so that one which is hidden under
    // another does not count.
    const Mount *reached = nullptr;
    for (const Mount *next = firstOn(none, path); next; next = firstOn(reached->id, path))
        reached = next;
    return reached && !reached->local && !reached->point.empty();
}

ResolvedPath resolve(const MountTable &mounts, std::string_view path)
{
    constexpr int maxLinks = 40; // as many as the kernel follows, path_resolution(7)
    if (!path.starts_with('/'))
        return {std::string(path), ResolvedPath::End::Missing};

    std::string reached;
    std::string rest(path);
    int links = 0;
    while (!rest.empty()) {
        const std::size_t length = std::min(rest.find('/'), rest.size());
        const std::string name = rest.substr(0, length);
        rest.erase(0, length + 1);
        if (name.empty() || name == ".")
            continue;
        if (name == "..") {
            reached.erase(std::min(reached.rfind('/'), reached.size()));
            continue;
        }

        std::string next = reached;
        next.append("/").append(name);
        std::string whole = next;
        if (!rest.empty())
            whole.append("/").append(rest);
        if (mounts.mayHang(next))
            return {whole, ResolvedPath::End::MayHang};
        std::array<char, PATH_MAX> target{};
        const ssize_t size = ::readlink(next.c_str(), target.data(), target.size());
        if (size < 0 && errno == EINVAL) { // no link
            reached = next;
            continue;
        }
        if (size < 0 || ++links > maxLinks)
            return {whole, ResolvedPath::End::Missing};
        if (target.front() == '/')
            reached.clear();
        rest.insert(0, "/").insert(0, target.data(), static_cast<std::size_t>(size));
    }
    return {reached.empty() ? "/" : reached, ResolvedPath::End::Exists};
}
