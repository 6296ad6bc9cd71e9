#include "sampling/windows/utf8.h"

#include <gtest/gtest.h>

namespace {

TEST(ToUtf8, emptyTextStaysEmpty)
{
    EXPECT_EQ(toUtf8(L""), "");
}

TEST(ToUtf8, plainTextStaysAsItIs)
{
    EXPECT_EQ(toUtf8(L"C:\\Windows\\System32\\svchost.exe"), "C:\\Windows\\System32\\svchost.exe");
}

TEST(ToUtf8, everyLengthOfSequenceIsWritten)
{
    EXPECT_EQ(toUtf8(L"a\u00e9\u7f51\U0001f600"), "a\xc3\xa9\xe7\xbd\x91\xf0\x9f\x98\x80");
}

TEST(ToUtf8, unpairedHighSurrogateBecomesReplacementCharacter)
{
    const wchar_t text[] = {L'a', wchar_t{0xd800}, L'b'};
    EXPECT_EQ(toUtf8({text, 3}),
              "a\xef\xbf\xbd"
              "b");
}

TEST(ToUtf8, unpairedLowSurrogateBecomesReplacementCharacter)
{
    const wchar_t text[] = {wchar_t{0xdc00}, L'b'};
    EXPECT_EQ(toUtf8({text, 2}),
              "\xef\xbf\xbd"
              "b");
}

TEST(ToUtf8, highSurrogateAtTheEndBecomesReplacementCharacter)
{
    const wchar_t text[] = {L'a', wchar_t{0xdbff}};
    EXPECT_EQ(toUtf8({text, 2}), "a\xef\xbf\xbd");
}

TEST(ToUtf8, surrogatesInTheWrongOrderBecomeTwoReplacementCharacters)
{
    const wchar_t text[] = {wchar_t{0xdc00}, wchar_t{0xd800}};
    EXPECT_EQ(toUtf8({text, 2}), "\xef\xbf\xbd\xef\xbf\xbd");
}

TEST(ToUtf8, textIsTakenByItsLengthNotByATerminator)
{
    EXPECT_EQ(toUtf8(std::wstring_view(L"abcdef").substr(1, 3)), "bcd");
}

} // namespace
