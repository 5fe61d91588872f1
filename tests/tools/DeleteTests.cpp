#include "tests/tools/Tool.h"

#include "ZkTools/MessageIds.h"

#include <gtest/gtest.h>

using namespace zk_test;

TEST(Delete, DeletesFilesDirectoriesAndMatches) {
    TTempDirectory const tTemp;
    tTemp.sMakeDirectory(L"dir");
    for (wchar_t const * pzFile : {L"dir\\a", L"dir\\read-only", L"1.txt", L"2.txt", L".3.txt"})
        tTemp.sWrite(pzFile, "1");
    SetFileAttributesW(tTemp.sGetPath(L"dir\\read-only").c_str(), FILE_ATTRIBUTE_READONLY);
    TToolRun const tRun = tRunTool({L"delete", tTemp.sGetPath(L"dir")});
    EXPECT_EQ(tRun.dwExit, 0u);
    std::wstring const sDirectory = tTemp.sGetPath(L"dir");
    EXPECT_EQ(tRun.sOutput, "deleted " + std::string(sDirectory.begin(), sDirectory.end()) + "\r\n");
    EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L".3.txt|1.txt|2.txt");
    EXPECT_EQ(tRunTool({L"delete", tTemp.sGetPath(L"*.txt")}).dwExit, 0u);
    EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L".3.txt");
}

TEST(Delete, TellsWhatFails) {
    TTempDirectory const tTemp;
    std::wstring const sMissing = tTemp.sGetPath(L"missing");
    TToolRun const tRun = tRunTool({L"delete", sMissing});
    EXPECT_EQ(tRun.dwExit, 1u);
    EXPECT_EQ(tRun.sOutput, "");
    EXPECT_EQ(tRun.sErrors,
              sMessage(IDS_COPY_FAILED, sMissing.c_str()) + "\r\n" + sSystemText(ERROR_FILE_NOT_FOUND) + "\r\n");
}

TEST(Delete, AsksTheShellForUndo) {
    TTempDirectory const tTemp;
    std::wstring const sFile = tTemp.sWrite(L"file", "1");
    TToolRun const tRun = tRunTool({L"delete", L"--undo", sFile});
    if (tRun.dwExit == 0) { // where there is a shell
        EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"");
    } else { // Wine's file operation is a stub
        EXPECT_TRUE(tRun.sErrors.starts_with(sMessage(IDS_COPY_FAILED, sFile.c_str()) + "\r\n")) << tRun.sErrors;
        EXPECT_EQ(tRun.sErrors.find("0x800401F0"), std::string::npos); // COM was there
        EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"file");
    }
}
