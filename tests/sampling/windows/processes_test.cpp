#include "sampling/windows/windowssystemqueries.h"
#include "support/scriptedwindows.h"

#include <gtest/gtest.h>

namespace {

class Processes : public testing::Test
{
protected:
    ScriptedWindows &windows = ScriptedWindows::reset();
    WindowsSystemQueries queries{ScriptedWindows::api()};
};

TEST_F(Processes, imagePathIsUtf8AndTheHandleClosed)
{
    windows.processes = {{.pid = 5, .path = L"C:\\Z\u00fcrich\\\u7f51.exe"}};
    EXPECT_EQ(queries.imagePath(5), "C:\\Z\xc3\xbcrich\\\xe7\xbd\x91.exe");
    EXPECT_EQ(windows.openHandles, 0);
}

TEST_F(Processes, processIsOpenedForLimitedInformationAndNotInheritable)
{
    windows.processes = {{.pid = 5, .path = L"C:\\a.exe"}};
    queries.imagePath(5);
    EXPECT_EQ(windows.askedAccess, 0x1000U);
    EXPECT_EQ(windows.askedInheritable, FALSE);
}

TEST_F(Processes, pathIsAskedWithoutFlagsIntoA260CharacterBuffer)
{
    windows.processes = {{.pid = 5, .path = L"C:\\a.exe"}};
    queries.imagePath(5);
    EXPECT_EQ(windows.askedPathFlags, 0U);
    EXPECT_EQ(windows.askedPathLength, 260U);
}

TEST_F(Processes, imagePathOf259CharactersIsWhole)
{
    windows.processes = {{.pid = 5, .path = std::wstring(259, L'x')}};
    EXPECT_EQ(queries.imagePath(5), std::string(259, 'x'));
}

TEST_F(Processes, imagePathThatDoesNotFitIsEmptyAndTheHandleClosed)
{
    windows.processes = {{.pid = 5, .path = std::wstring(260, L'x')}};
    EXPECT_EQ(queries.imagePath(5), "");
    EXPECT_EQ(windows.openHandles, 0);
}

TEST_F(Processes, pathLengthBeyondTheBufferIsNotBelieved)
{
    windows.processes = {{.pid = 5, .path = L"C:\\a.exe"}};
    windows.toldPathLength = 100'000;
    EXPECT_EQ(queries.imagePath(5).size(), 260U);
}

TEST_F(Processes, imagePathWithAnUnpairedSurrogateIsShownWithAReplacementCharacter)
{
    windows.processes = {{.pid = 5, .path = std::wstring{L'C', L':', L'\\', wchar_t{0xd83d}}}};
    EXPECT_EQ(queries.imagePath(5), "C:\\\xef\xbf\xbd");
}

TEST_F(Processes, processThatCannotBeOpenedHasNoPathAndNothingIsClosed)
{
    windows.processes = {{.pid = 5, .path = L"C:\\a.exe", .protectedFromOpening = true}};
    EXPECT_EQ(queries.imagePath(5), "");
    EXPECT_EQ(queries.imagePath(6), "");
    EXPECT_EQ(windows.openHandles, 0);
}

TEST_F(Processes, processThatCannotBeQueriedHasNoPathAndTheHandleIsClosed)
{
    windows.processes = {{.pid = 5}};
    EXPECT_EQ(queries.imagePath(5), "");
    EXPECT_EQ(windows.openHandles, 0);
}

TEST_F(Processes, protectedProcessIsNamedByTheProcessList)
{
    windows.processes = {{.pid = 0, .name = L"[System Process]"},
                         {.pid = 4, .name = L"System", .protectedFromOpening = true},
                         {.pid = 96, .name = L"Registry"}};
    EXPECT_EQ(queries.imagePath(4), "");
    EXPECT_EQ(queries.processListName(4), "System");
}

TEST_F(Processes, firstAndLastOfTheProcessListAreFound)
{
    windows.processes = {{.pid = 1, .name = L"first.exe"},
                         {.pid = 2, .name = L"middle.exe"},
                         {.pid = 3, .name = L"l\u00e4st.exe"}};
    EXPECT_EQ(queries.processListName(1), "first.exe");
    EXPECT_EQ(queries.processListName(3), "l\xc3\xa4st.exe");
}

TEST_F(Processes, eachQuestionTakesOneSnapshotOfProcessesAndClosesIt)
{
    windows.processes = {{.pid = 1, .name = L"a.exe"}};
    queries.processListName(1);
    EXPECT_EQ(windows.snapshotsTaken, 1);
    EXPECT_EQ(windows.askedSnapshotFlags, 2U);
    EXPECT_EQ(windows.openHandles, 0);
}

TEST_F(Processes, processThatIsNotInTheListHasNoNameAndTheSnapshotIsClosed)
{
    windows.processes = {{.pid = 1, .name = L"a.exe"}};
    EXPECT_FALSE(queries.processListName(2));
    EXPECT_EQ(windows.openHandles, 0);
}

TEST_F(Processes, snapshotThatCannotBeTakenGivesNoNameAndNothingIsClosed)
{
    windows.processes = {{.pid = 1, .name = L"a.exe"}};
    windows.snapshotFails = true;
    EXPECT_FALSE(queries.processListName(1));
    EXPECT_EQ(windows.openHandles, 0);
}

TEST_F(Processes, snapshotWithoutAFirstEntryGivesNoNameAndIsClosed)
{
    windows.processes = {{.pid = 1, .name = L"a.exe"}};
    windows.snapshotIsEmpty = true;
    EXPECT_FALSE(queries.processListName(1));
    EXPECT_EQ(windows.openHandles, 0);
}

TEST_F(Processes, emptyNameInTheListIsANameNotAFailure)
{
    windows.processes = {{.pid = 1}};
    ASSERT_TRUE(queries.processListName(1));
    EXPECT_EQ(*queries.processListName(1), "");
}

TEST_F(Processes, listNameThatFillsItsFieldWithoutTerminatorEndsThere)
{
    windows.processes = {{.pid = 1, .name = std::wstring(MAX_PATH, L'n')}};
    EXPECT_EQ(queries.processListName(1), std::string(MAX_PATH, 'n'));
}

} // namespace
