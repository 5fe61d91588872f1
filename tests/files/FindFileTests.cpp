#include "files/FindFile.h"

#include "tests/support/SystemCall.h"
#include "tests/support/TempDirectory.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <type_traits>

using zk_test::TTempDirectory;

// The source is compiled into this program, so that it is its own import table that is replaced.

namespace {

HMODULE hGetSelf() {
    return GetModuleHandleW(nullptr);
}

} // namespace

static_assert(!std::is_copy_constructible_v<TFindFile> && !std::is_copy_assignable_v<TFindFile>);

TEST(TFindFile, FindsAFileAndTellsAboutIt) {
    TTempDirectory const tTemp;
    TFindFile const tFind(tTemp.sWrite(L"Name.ext", "12345").c_str());
    EXPECT_TRUE(tFind.fFound());
    EXPECT_EQ(tFind.dwGetLastError(), 0U);
    EXPECT_STREQ(tFind.tGetData().cFileName, L"Name.ext");
    EXPECT_EQ(tFind.tGetData().nFileSizeLow, 5U);
    EXPECT_FALSE(tFind.fIsDirectory());
}

TEST(TFindFile, FindsADirectory) {
    TTempDirectory const tTemp;
    TFindFile const tFind(tTemp.sMakeDirectory(L"dir").c_str());
    EXPECT_TRUE(tFind.fFound());
    EXPECT_TRUE(tFind.fIsDirectory());
}

TEST(TFindFile, WalksOverAllThatMatches) {
    TTempDirectory const tTemp;
    tTemp.sWrite(L"a1", "");
    tTemp.sWrite(L"a2", "");
    tTemp.sWrite(L"b1", "");
    std::set<std::wstring> sNames;
    TFindFile tFind(tTemp.sGetPath(L"a*").c_str());
    for (; tFind.fFound(); tFind.fNext())
        sNames.insert(tFind.tGetData().cFileName);
    EXPECT_EQ(sNames, (std::set<std::wstring>{L"a1", L"a2"}));
    EXPECT_EQ(tFind.dwGetLastError(), static_cast<DWORD>(ERROR_NO_MORE_FILES));
    EXPECT_FALSE(tFind.fNext());
    EXPECT_FALSE(tFind.fFound());
}

TEST(TFindFile, KeepsTheErrorOfAFailedSearch) {
    TTempDirectory const tTemp;
    struct {
        std::wstring sPattern;
        DWORD dwError;
    } const atRows[] = {
        {tTemp.sGetPath(L"missing"), ERROR_FILE_NOT_FOUND},
        {tTemp.sGetPath(L"missing\\*"), ERROR_PATH_NOT_FOUND},
        {tTemp.sGetPath() + L"\\", ERROR_FILE_NOT_FOUND},
    };
    for (auto const & tRow : atRows) {
        TFindFile tFind(tRow.sPattern.c_str());
        DWORD const dwError = GetLastError();
        EXPECT_FALSE(tFind.fFound());
        EXPECT_EQ(tFind.dwGetLastError(), tRow.dwError);
        EXPECT_EQ(dwError, tRow.dwError);
        EXPECT_FALSE(tFind.fNext());
        EXPECT_EQ(tFind.dwGetLastError(), tRow.dwError);
    }
}

TEST(TFindFile, AsksForBasicInformationInTheLongForm) {
    std::wstring sSeen;
    zk_test::TSystemCall<"FindFirstFileExW", decltype(FindFirstFileExW)> const tFirst(
        [&](LPCWSTR pzPattern, FINDEX_INFO_LEVELS eLevel, LPVOID, FINDEX_SEARCH_OPS eSearch, LPVOID pFilter,
            DWORD dwFlags) {
            sSeen = pzPattern;
            EXPECT_EQ(eLevel, FindExInfoBasic);
            EXPECT_EQ(eSearch, FindExSearchNameMatch);
            EXPECT_EQ(pFilter, nullptr);
            EXPECT_EQ(dwFlags, 0U);
            return zk_test::tFailWith(4711, INVALID_HANDLE_VALUE);
        },
        hGetSelf());
    std::wstring const sShort = L"C:\\" + std::wstring(256, L'x');
    std::wstring const sLong = L"C:\\" + std::wstring(257, L'x');
    EXPECT_EQ(TFindFile(sShort.c_str()).dwGetLastError(), 4711U);
    EXPECT_EQ(sSeen, sShort);
    EXPECT_EQ(TFindFile(sLong.c_str()).dwGetLastError(), 4711U);
    EXPECT_EQ(sSeen, L"\\\\?\\" + sLong);
}

TEST(TFindFile, ClosesAValidHandleOnce) {
    TTempDirectory const tTemp;
    tTemp.sWrite(L"a", "");
    HANDLE hClosed = nullptr;
    HANDLE hOpened = nullptr;
    zk_test::TSystemCall<"FindFirstFileExW", decltype(FindFirstFileExW)> const tFirst(
        [&](auto... tArgs) { return hOpened = tFirst.Original(tArgs...); }, hGetSelf());
    zk_test::TSystemCall<"FindClose", decltype(FindClose)> const tClose(
        [&](HANDLE hSearch) { return tClose.Original(hClosed = hSearch); }, hGetSelf());
    {
        TFindFile tFind(tTemp.sGetPath(L"*").c_str());
        while (tFind.fNext()) {
        }
        EXPECT_EQ(tClose.iGetCalls(), 0);
    }
    EXPECT_EQ(tClose.iGetCalls(), 1);
    EXPECT_EQ(hClosed, hOpened);
    { TFindFile const tFind(tTemp.sGetPath(L"missing").c_str()); }
    EXPECT_EQ(tClose.iGetCalls(), 1);
}

TEST(TFindFile, TakesANullPatternForNothing) {
    TFindFile const tFind(nullptr);
    EXPECT_FALSE(tFind.fFound());
    EXPECT_NE(tFind.dwGetLastError(), 0U);
}
