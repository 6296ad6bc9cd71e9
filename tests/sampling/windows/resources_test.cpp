#include <windows.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <gtest/gtest.h>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace {

/// A resource of this program, which is linked with the resources of Tovan Network Monitor.
std::span<const std::byte> resource(const wchar_t *type, WORD id)
{
    HRSRC found = FindResourceW(nullptr, MAKEINTRESOURCEW(id), type);
    HGLOBAL loaded = found == nullptr ? nullptr : LoadResource(nullptr, found);
    if (loaded == nullptr)
        return {};
    return {static_cast<const std::byte *>(LockResource(loaded)), SizeofResource(nullptr, found)};
}

std::string manifest()
{
    const auto bytes = resource(RT_MANIFEST, 1);
    std::string text(bytes.size(), '\0');
    std::ranges::transform(bytes, text.begin(), [](std::byte b) { return static_cast<char>(b); });
    return text;
}

/// The version information as the file on the disk has it.
class VersionInformation : public testing::Test
{
protected:
    void SetUp() override
    {
        std::array<wchar_t, MAX_PATH> self{};
        ASSERT_GT(GetModuleFileNameW(nullptr, self.data(), static_cast<DWORD>(self.size())), 0U);
        const DWORD size = GetFileVersionInfoSizeW(self.data(), nullptr);
        ASSERT_GT(size, 0U);
        block.resize(size);
        ASSERT_TRUE(GetFileVersionInfoW(self.data(), 0, size, block.data()));
    }

    /// The named text; no value when there is none.
    std::optional<std::wstring> text(const std::wstring &name)
    {
        void *value = nullptr;
        UINT length = 0;
        const std::wstring path = L"\\StringFileInfo\\040904b0\\" + name;
        if (!VerQueryValueW(block.data(), path.c_str(), &value, &length))
            return std::nullopt;
        return static_cast<const wchar_t *>(value);
    }

    std::vector<std::byte> block;
};

TEST_F(VersionInformation, namesTheProgramAndItsMaker)
{
    EXPECT_EQ(text(L"CompanyName"), L"Tovan");
    EXPECT_EQ(text(L"ProductName"), L"Tovan Network Monitor");
    EXPECT_EQ(text(L"FileDescription"), L"Tovan Network Monitor");
}

TEST_F(VersionInformation, textAndNumbersTellTheVersionOfTheBuild)
{
    void *value = nullptr;
    UINT length = 0;
    ASSERT_TRUE(VerQueryValueW(block.data(), L"\\", &value, &length));
    const auto *fixed = static_cast<const VS_FIXEDFILEINFO *>(value);
    const std::wstring numbers = std::to_wstring(HIWORD(fixed->dwFileVersionMS)) + L'.'
        + std::to_wstring(LOWORD(fixed->dwFileVersionMS)) + L'.'
        + std::to_wstring(HIWORD(fixed->dwFileVersionLS));
    const std::string version = TOVAN_VERSION;
    EXPECT_EQ(numbers, std::wstring(version.begin(), version.end()));
    EXPECT_EQ(text(L"FileVersion"), numbers);
    EXPECT_EQ(text(L"ProductVersion"), numbers);
}

TEST(Icon, hasEverySizeThatTheShellShows)
{
    // GRPICONDIR: three words, then entries of 14 bytes that begin with width and height; 0 is 256.
    const auto directory = resource(RT_GROUP_ICON, 1);
    ASSERT_GT(directory.size(), 6U);
    std::vector<int> sizes;
    for (std::size_t at = 6; at + 14 <= directory.size(); at += 14) {
        const auto width = std::to_integer<int>(directory[at]);
        EXPECT_EQ(width, std::to_integer<int>(directory[at + 1]));
        sizes.push_back(width == 0 ? 256 : width);
    }
    EXPECT_EQ(sizes, (std::vector{16, 20, 24, 32, 40, 48, 64, 256}));
}

TEST(Manifest, asksForTheRightsOfTheInvoker)
{
    EXPECT_NE(manifest().find(R"(level="asInvoker" uiAccess="false")"), std::string::npos);
}

/// A setting of this process as the loader understood it from the manifest; the year is that of the
/// schema. No value when it was not found there.
std::optional<std::wstring> setting(const std::wstring &year, const wchar_t *name)
{
    const std::wstring schema = L"http://schemas.microsoft.com/SMI/" + year + L"/WindowsSettings";
    std::array<wchar_t, 64> value{};
    if (!QueryActCtxSettingsW(0, nullptr, schema.c_str(), name, value.data(), value.size(),
                              nullptr))
        return std::nullopt;
    return value.data();
}

TEST(Manifest, declaresAwarenessOfEachMonitorsDpi)
{
    EXPECT_EQ(setting(L"2016", L"dpiAwareness"), L"PerMonitorV2");
    EXPECT_EQ(setting(L"2005", L"dpiAware"), L"true/pm");
}

TEST(Manifest, declaresUtf8)
{
    EXPECT_EQ(setting(L"2019", L"activeCodePage"), L"UTF-8");
}

// The path of a process is not told beyond MAX_PATH characters (sampling/windows/).
TEST(Manifest, claimsNoLongPaths)
{
    EXPECT_EQ(setting(L"2016", L"longPathAware"), std::nullopt);
}

TEST(Manifest, carriesTheVersionOfTheBuild)
{
    EXPECT_NE(manifest().find("version=\"" TOVAN_VERSION ".0\""), std::string::npos);
}

} // namespace
