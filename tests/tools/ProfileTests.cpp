#include "ZkTools/MessageIds.h"
#include "tests/support/Narrow.h"
#include "tests/tools/Tool.h"

#include <gtest/gtest.h>

using namespace std::string_literals;
using namespace zk_test;

TEST(Profile, PrintsTheLinesOfASection) {
    TTempDirectory const tDirectory;
    std::wstring const sFile = tDirectory.sWrite(L"a b.ini", "[Other]\r\nx=1\r\n"
                                                             "[Main]\r\n; a comment\r\n key = a value \r\nalone\r\n"
                                                             "twice=1=2\r\n=front\r\n"
                                                             "[Empty]\r\n");
    TToolRun const tRun = tRunTool({L"profile", sFile, L"MAIN"});
    EXPECT_EQ(tRun.dwExit, 0u);
    EXPECT_EQ(tRun.sErrors, "");
    EXPECT_EQ(tRun.sOutput, "key=a value\r\nalone\r\ntwice=1\r\nfront\r\n");
}

TEST(Profile, PrintsTextsInUtf8) {
    TTempDirectory const tDirectory;
    std::wstring const sFile = tDirectory.sWrite(L"wide.ini", "\xFF\xFE[\0A\0]\0\n\0\xE4\0=\0\x3D\xD8\0\xDE\n\0"s);
    EXPECT_EQ(tRunTool({L"profile", sFile, L"A"}).sOutput, "\xC3\xA4=\xF0\x9F\x98\x80\r\n");
}

TEST(Profile, TellsThatThereAreNoLines) {
    TTempDirectory const tDirectory;
    std::wstring const sFile = tDirectory.sWrite(L"some.ini", "[Empty]\r\n[Full]\r\nx=1\r\n");
    for (wchar_t const * pzSection : {L"Empty", L"Missing"}) {
        TToolRun const tRun = tRunTool({L"profile", sFile, pzSection});
        EXPECT_EQ(tRun.dwExit, 1u);
        EXPECT_EQ(tRun.sOutput, "");
        EXPECT_EQ(tRun.sErrors,
                  "There is no section \"" + sNarrow(pzSection) + "\" with lines in \"" + sNarrow(sFile) + "\".\r\n");
    }
}

TEST(Profile, TellsThatThereIsNoFile) {
    TTempDirectory const tDirectory;
    std::wstring const sMissing = tDirectory.sGetPath(L"missing.ini");
    TToolRun const tRun = tRunTool({L"profile", sMissing, L"A"});
    EXPECT_EQ(tRun.dwExit, 1u);
    EXPECT_EQ(tRun.sOutput, "");
    EXPECT_EQ(tRun.sErrors, sMessage(IDS_FILE_OR_DIRECTORY_MISSING, sMissing.c_str()) + "\r\n");
}

TEST(Profile, TakesAPathFromWhereItStands) {
    TTempDirectory const tDirectory;
    tDirectory.sWrite(L"here.ini", "[A]\r\nx=1\r\n");
    std::array<wchar_t, 1024> acBefore{};
    GetCurrentDirectoryW(static_cast<DWORD>(acBefore.size()), acBefore.data());
    ASSERT_TRUE(SetCurrentDirectoryW(tDirectory.sGetPath().c_str()));
    TToolRun const tRun = tRunTool({L"profile", L"here.ini", L"A"});
    SetCurrentDirectoryW(acBefore.data());
    EXPECT_EQ(tRun.sOutput, "x=1\r\n") << tRun.sErrors;
}
