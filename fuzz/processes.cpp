// What the process file system tells of a process, proc(5): a process chooses its name and the path
// of its executable, so an input is taken for each of the texts. The tree is one of the harness's
// own.
#include "fuzz/require.h"
#include "sampling/linux/processdirectory.h"
#include "sampling/linux/processfiles.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <string_view>

namespace {

constexpr std::uint32_t process = 7;
constexpr std::uint32_t anyDescriptor = 3;
constexpr std::uint32_t socketDescriptor = 4;

/// A process file system of one process, removed at the end.
class Tree
{
public:
    Tree()
    {
        std::string path = std::filesystem::temp_directory_path() / "proc-XXXXXX";
        require(::mkdtemp(path.data()) != nullptr, "a folder can be had");
        m_root = path;
        std::filesystem::create_directories(pathOf("fd"));
        for (const auto &[file, name] : {std::pair{&m_stat, "stat"}, std::pair{&m_name, "comm"}})
            *file
                = FileDescriptor(::open(pathOf(name).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    }
    ~Tree()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_root, ignored);
    }
    Tree(const Tree &) = delete;
    Tree &operator=(const Tree &) = delete;

    const std::filesystem::path &root() const { return m_root; }
    void setStat(std::string_view text) { setContent(m_stat, text); }
    void setName(std::string_view text) { setContent(m_name, text); }
    /// False where there can be no link to such a path.
    bool setLink(const char *name, const std::string &target)
    {
        const std::string path = pathOf(name);
        ::unlink(path.c_str());
        return ::symlink(target.c_str(), path.c_str()) == 0;
    }

private:
    std::filesystem::path pathOf(const char *name) const
    {
        return m_root / std::to_string(process) / name;
    }
    static void setContent(const FileDescriptor &file, std::string_view text)
    {
        require(::ftruncate(file.get(), 0) == 0
                    && ::pwrite(file.get(), text.data(), text.size(), 0)
                        == static_cast<ssize_t>(text.size()),
                "the file can be written");
    }

    std::filesystem::path m_root;
    FileDescriptor m_stat;
    FileDescriptor m_name;
};

void checkStartTime(Tree &tree, ProcessDirectory &directory, std::string_view text)
{
    tree.setStat(text);
    directory.startTime(process);
    // Whatever the name is, of which the kernel tells up to 64 bytes, the time stands behind it.
    constexpr std::uint64_t started = 18'446'744'073'709'551'557ULL;
    const std::string name(text.substr(0, 64));
    tree.setStat("7 (" + name + ") R 1 7 7 0 -1 4194304 90 0 0 0 1 2 3 4 20 0 1 0 "
                 + std::to_string(started) + " 8192 120\n");
    require(directory.startTime(process) == started, "a name does not change the start time");
}

void checkName(Tree &tree, const ProcessFiles &files, std::string_view text)
{
    tree.setName(text);
    const auto name = files.name(process);
    require(name.has_value(), "a file that can be read is a name");
    if (text.ends_with('\n'))
        text.remove_suffix(1);
    require(*name == text, "the name is the file's content without the line's end");
}

void checkImagePath(Tree &tree, const ProcessFiles &files, const std::string &target)
{
    if (!tree.setLink("exe", target))
        return;
    const std::string path = files.imagePath(process);
    require(path == target || path + " (deleted)" == target,
            "the path is the link's, with or without the kernel's mark");
    std::error_code ignored;
    require(std::filesystem::exists(target, ignored) || !path.ends_with(" (deleted)")
                || target.ends_with(" (deleted) (deleted)"),
            "the mark is no part of a path that is not there");
}

void checkSocket(Tree &tree, ProcessDirectory &directory, const std::string &target)
{
    if (tree.setLink("fd/3", target)) {
        if (const auto inode = directory.socketAt(process, anyDescriptor)) {
            require(target.starts_with("socket:[") && target.ends_with(']'), "it is a socket");
            require(target.find(std::to_string(*inode)) != std::string::npos,
                    "the inode is the one in the link");
        }
    }
    std::uint32_t inode = 0;
    std::memcpy(&inode, target.data(), std::min(target.size(), sizeof inode));
    require(tree.setLink("fd/4", "socket:[" + std::to_string(inode) + ']'), "a link can be made");
    require(directory.socketAt(process, socketDescriptor) == inode, "every socket is known");

    int sockets = 0;
    directory.forEachSocket(
        process, [](std::uint32_t) { return true; },
        [&](std::uint32_t descriptor, std::uint32_t found) {
            require(descriptor == anyDescriptor || found == inode, "it is found in the folder too");
            ++sockets;
        });
    require(sockets == 1 || sockets == 2, "no other file is a socket");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static Tree tree;
    static ProcessDirectory directory(tree.root());
    static const ProcessFiles files(tree.root());

    const std::string_view text(reinterpret_cast<const char *>(data), size);
    const std::string target(text.substr(0, text.find('\0')));
    checkStartTime(tree, directory, text);
    checkName(tree, files, text);
    checkImagePath(tree, files, target);
    checkSocket(tree, directory, target);
    return 0;
}
