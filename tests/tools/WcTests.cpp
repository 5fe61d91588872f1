#include "tests/support/Narrow.h"
#include "tests/tools/Tool.h"

#include <gtest/gtest.h>

using namespace zk_test;

TEST(Wc, TellsKindAndRoot) {
    TTempDirectory const tDirectory;
    std::wstring const sDb = tDirectory.sMakeDirectory(L"db");
    tDirectory.sMakeDirectory(L"db\\.svn");
    tDirectory.sWrite(L"db\\.svn\\wc.db", std::string(63, '\0') + '\x1F');
    std::wstring const sBelow = tDirectory.sMakeDirectory(L"db\\below");
    std::wstring const sOld = tDirectory.sMakeDirectory(L"old");
    tDirectory.sMakeDirectory(L"old\\.svn");
    tDirectory.sWrite(L"old\\.svn\\entries", "8\n");
    std::wstring const sGit = tDirectory.sMakeDirectory(L"git");
    tDirectory.sMakeDirectory(L"git\\.git");
    struct TRow {
        std::wstring sPath;
        char const * pzKind;
        std::wstring sRoot;
    } const tRows[] = {
        {sDb, "Subversion, format 31", sDb},      {sBelow, "none", sDb},
        {sOld, "Subversion, format 8", sOld},     {sGit + L"\\x\\y", "Git", sGit},
        {tDirectory.sGetPath(), "none", L"none"},
    };
    for (TRow const & tRow : tRows) {
        TToolRun const tRun = tRunTool({L"wc", tRow.sPath});
        EXPECT_EQ(tRun.dwExit, 0u);
        EXPECT_EQ(tRun.sErrors, "");
        EXPECT_EQ(tRun.sOutput, std::string("kind: ") + tRow.pzKind + "\r\nroot: " + sNarrow(tRow.sRoot) + "\r\n");
    }
}

TEST(Wc, TakesAPathFromWhereItStands) {
    TTempDirectory const tDirectory;
    tDirectory.sMakeDirectory(L".git");
    std::array<wchar_t, 1024> acBefore{};
    GetCurrentDirectoryW(static_cast<DWORD>(acBefore.size()), acBefore.data());
    ASSERT_TRUE(SetCurrentDirectoryW(tDirectory.sGetPath().c_str()));
    TToolRun const tRun = tRunTool({L"wc", L"."});
    SetCurrentDirectoryW(acBefore.data());
    EXPECT_EQ(tRun.sOutput, "kind: Git\r\nroot: " + sNarrow(tDirectory.sGetPath()) + "\r\n");
}
