#pragma once

#include <unistd.h>

#include <utility>

/// Owns one open file descriptor, or none.
class FileDescriptor
{
public:
    FileDescriptor() = default;
    /// Takes over `descriptor`; a negative one, as failing system calls return it, is none.
    explicit FileDescriptor(int descriptor) : m_descriptor(descriptor) { }
    FileDescriptor(FileDescriptor &&other) noexcept
        : m_descriptor(std::exchange(other.m_descriptor, -1))
    {
    }
    FileDescriptor &operator=(FileDescriptor &&other) noexcept
    {
        std::swap(m_descriptor, other.m_descriptor);
        other.reset();
        return *this;
    }
    FileDescriptor(const FileDescriptor &) = delete;
    FileDescriptor &operator=(const FileDescriptor &) = delete;
    ~FileDescriptor() { reset(); }

    explicit operator bool() const { return m_descriptor >= 0; }
    /// The descriptor, still owned by this; negative when there is none.
    int get() const { return m_descriptor; }
    /// Hands the descriptor over to the caller.
    int release() { return std::exchange(m_descriptor, -1); }
    /// Closes what is held.
    void reset()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
        m_descriptor = -1;
    }

private:
    int m_descriptor = -1;
};
