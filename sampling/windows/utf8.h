#pragma once

#include <string>
#include <string_view>

/// Converts UTF-16 as Windows has it to UTF-8. Windows does not insist on well-formed UTF-16 in its
/// names: each surrogate without its partner becomes U+FFFD, the replacement character.
std::string toUtf8(std::wstring_view text);
