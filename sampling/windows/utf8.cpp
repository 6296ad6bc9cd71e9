#include "sampling/windows/utf8.h"

#include <limits>
#include <windows.h>

std::string toUtf8(std::wstring_view text)
{
    // No text of Windows comes near the range of int; an empty one is an error to the conversion.
    if (text.empty() || text.size() > std::size_t{std::numeric_limits<int>::max()})
        return {};
    const auto length = static_cast<int>(text.size());
    const auto convert = [&](char *buffer, int size) {
        return WideCharToMultiByte(CP_UTF8, 0, text.data(), length, buffer, size, nullptr, nullptr);
    };
    std::string utf8(static_cast<std::size_t>(convert(nullptr, 0)), '\0');
    convert(utf8.data(), static_cast<int>(utf8.size()));
    return utf8;
}
