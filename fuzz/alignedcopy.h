#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

/// A copy through which the macros of the kernel's headers may walk: they expect it to be aligned.
class AlignedCopy
{
public:
    explicit AlignedCopy(std::span<const std::byte> bytes)
        : m_words((bytes.size() + sizeof(std::uint64_t) - 1) / sizeof(std::uint64_t)),
          m_size(bytes.size())
    {
        if (!bytes.empty())
            std::memcpy(m_words.data(), bytes.data(), bytes.size());
    }

    /// The record at the beginning, if the bytes are enough for one.
    template <typename Record> const Record *as() const
    {
        return reinterpret_cast<const Record *>(m_words.data());
    }
    /// How many bytes there are; the macros count down from it, below 0 where padding is missing.
    std::ptrdiff_t size() const { return static_cast<std::ptrdiff_t>(m_size); }

private:
    std::vector<std::uint64_t> m_words;
    std::size_t m_size;
};
