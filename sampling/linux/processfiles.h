#pragma once

#include "sampling/linux/filedescriptor.h"

#include <cstdint>
#include <optional>
#include <string>

/// What the process file system tells about single processes, proc(5). Texts are the bytes that
/// the kernel holds, which on this system are UTF-8 by custom alone.
class ProcessFiles
{
public:
    /// `root` is where the process file system is mounted.
    explicit ProcessFiles(std::string root) : m_root(std::move(root)) { }

    /// Path of the executable, also when its file was deleted or replaced meanwhile; empty for
    /// kernel threads and whenever it cannot be read. `heldLink` is the process's own link to it,
    /// where that is open already: two thirds of the time.
    std::string imagePath(std::uint32_t pid, const FileDescriptor *heldLink = nullptr) const;

    /// The process's name (at most 15 bytes, chosen by the process); no value when there is no such
    /// process or its name cannot be read.
    std::optional<std::string> name(std::uint32_t pid) const;

private:
    std::string pathOf(std::uint32_t pid, const char *file) const;

    std::string m_root;
};
