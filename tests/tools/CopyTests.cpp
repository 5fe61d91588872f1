#include "tests/tools/Tool.h"

#include "ZkTools/MessageIds.h"

#include <gtest/gtest.h>

using namespace zk_test;

namespace {

class Copy : public testing::Test {
protected:
    Copy() {
        for (wchar_t const * pzDirectory : {L"from", L"from\\sub", L"to"})
            tDirectory.sMakeDirectory(pzDirectory);
        tDirectory.sWrite(L"from\\a", "new");
        tDirectory.sWrite(L"from\\sub\\b", "new");
        tDirectory.sWrite(L"from\\sub\\\u00FC", "new");
    }
    [[nodiscard]] std::wstring sPath(wchar_t const * pzName) const { return tDirectory.sGetPath(pzName); }

    TTempDirectory tDirectory;
};

} // namespace

TEST_F(Copy, CopiesADirectory) {
    TToolRun const tRun = tRunTool({L"copy", sPath(L"from\\"), sPath(L"new\\to")});
    EXPECT_EQ(tRun.dwExit, 0u);
    EXPECT_EQ(tRun.sOutput, "3 files copied\r\n");
    EXPECT_EQ(tRun.sErrors, ""); // the gauge is for terminals
    EXPECT_EQ(sListDirectory(sPath(L"new\\to")), L"a|sub");
    EXPECT_EQ(sReadFileBytes(sPath(L"new\\to\\sub\\\u00FC")), "new");
}

TEST_F(Copy, OverwritesOrKeepsWhatExists) {
    tDirectory.sWrite(L"to\\a", "old");
    EXPECT_EQ(tRunTool({L"copy", sPath(L"from"), sPath(L"to"), L"--keep"}).sOutput, "2 files copied, 1 kept\r\n");
    EXPECT_EQ(sReadFileBytes(sPath(L"to\\a")), "old");
    EXPECT_EQ(tRunTool({L"copy", sPath(L"from"), sPath(L"to")}).sOutput, "3 files copied\r\n");
    EXPECT_EQ(sReadFileBytes(sPath(L"to\\a")), "new");
}

TEST_F(Copy, CopiesAFileToAPathOrIntoADirectory) {
    EXPECT_EQ(tRunTool({L"copy", sPath(L"from\\a"), sPath(L"b")}).sOutput, "1 file copied\r\n");
    EXPECT_EQ(sReadFileBytes(sPath(L"b")), "new");
    EXPECT_EQ(tRunTool({L"copy", sPath(L"from\\a"), sPath(L"to")}).dwExit, 0u);
    EXPECT_EQ(sReadFileBytes(sPath(L"to\\a")), "new");
    TToolRun const tRun = tRunTool({L"copy", sPath(L"from\\a"), sPath(L"to"), L"--keep"});
    EXPECT_EQ(tRun.dwExit, 1u);
    EXPECT_EQ(tRun.sErrors, sMessage(IDS_COPY_FILE_FAILED, sPath(L"from\\a").c_str(), sPath(L"to\\a").c_str()) +
                                "\r\n" + sSystemText(ERROR_FILE_EXISTS) + "\r\n");
}

TEST_F(Copy, RefusesATargetInTheSource) {
    for (wchar_t const * pzTarget : {L"from", L"FROM\\sub", L"from\\new", L"to\\..\\from\\new"}) {
        TToolRun const tRun = tRunTool({L"copy", sPath(L"from"), sPath(pzTarget)});
        EXPECT_EQ(tRun.dwExit, 2u);
        EXPECT_EQ(tRun.sErrors, "zk copy: TARGET lies in SOURCE.\r\nusage: zk copy SOURCE TARGET [--keep]\r\n");
    }
    EXPECT_EQ(sListDirectory(sPath(L"from")), L"a|sub");
}

TEST_F(Copy, TellsWhatFails) {
    TToolRun const tMissing = tRunTool({L"copy", sPath(L"missing"), sPath(L"to")});
    EXPECT_EQ(tMissing.dwExit, 1u);
    EXPECT_EQ(tMissing.sErrors,
              sMessage(IDS_COPY_FILE_FAILED, sPath(L"missing").c_str(), sPath(L"to\\missing").c_str()) + "\r\n" +
                  sSystemText(ERROR_FILE_NOT_FOUND) + "\r\n");
    THandle const hHeld(
        CreateFileW(sPath(L"from\\sub\\b").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    TToolRun const tHeld = tRunTool({L"copy", sPath(L"from"), sPath(L"to")});
    EXPECT_EQ(tHeld.dwExit, 1u);
    EXPECT_EQ(tHeld.sErrors, sSystemText(ERROR_SHARING_VIOLATION) + "\r\n");
    EXPECT_EQ(tHeld.sOutput, "");
}
