#include <windows.h>

#include <cstddef>
#include <gtest/gtest.h>

namespace {

/// What this program's own header asks of the system that loads it. Linked as the monitor is.
/// https://learn.microsoft.com/windows/win32/debug/pe-format
WORD askedOfTheLoader()
{
    const auto *image = reinterpret_cast<const std::byte *>(GetModuleHandleW(nullptr));
    const auto *dos = reinterpret_cast<const IMAGE_DOS_HEADER *>(image);
    const auto *header = reinterpret_cast<const IMAGE_NT_HEADERS *>(image + dos->e_lfanew);
    return header->OptionalHeader.DllCharacteristics;
}

TEST(Protections, addressesAreDifferentInEveryProcess)
{
    EXPECT_TRUE(askedOfTheLoader() & IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE);
    EXPECT_TRUE(askedOfTheLoader() & IMAGE_DLLCHARACTERISTICS_HIGH_ENTROPY_VA);
}

TEST(Protections, dataIsNeverRun)
{
    EXPECT_TRUE(askedOfTheLoader() & IMAGE_DLLCHARACTERISTICS_NX_COMPAT);
}

} // namespace
