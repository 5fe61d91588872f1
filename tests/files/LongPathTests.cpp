#include "files/LongPath.h"

#include "tests/support/Handle.h"
#include "tests/support/SystemCall.h"
#include "tests/support/TempDirectory.h"

#include <gtest/gtest.h>

#include <random>
#include <string_view>
#include <vector>

namespace {

std::wstring sLong(std::wstring sPath) {
    MakeLongPath(sPath);
    return sPath;
}

/// The rule word by word: find a pair, make one of it, go on behind that one.
std::wstring sCollapseByTheRule(std::wstring sPath) {
    std::size_t uStart = !sPath.empty() && sPath[0] == L'\\' ? 1 : 0;
    while ((uStart = sPath.find(L"\\\\", uStart)) != std::wstring::npos)
        sPath.replace(uStart++, 2, L"\\");
    return sPath;
}

std::wstring sPathOfLength(std::size_t uLength) {
    std::wstring sPath = L"C:\\";
    return sPath.append(uLength - sPath.size(), L'x');
}

} // namespace

TEST(MakeLongPath, PutsThePrefixInFrontOfAbsolutePathsOnly) {
    struct {
        wchar_t const * pzPath;
        wchar_t const * pzLong;
    } const atRows[] = {
        {L"C:\\a", L"\\\\?\\C:\\a"},
        {L"C:\\", L"\\\\?\\C:\\"},
        {L"z:\\a\\b", L"\\\\?\\z:\\a\\b"},
        {L"C:/a", L"\\\\?\\C:/a"},
        {L"C:\\a/b", L"\\\\?\\C:\\a/b"},
        {L"\\\\server\\share\\a", L"\\\\?\\UNC\\server\\share\\a"},
        {L"\\\\", L"\\\\?\\UNC\\"},
        {L"\\\\.\\pipe\\a", L"\\\\?\\UNC\\.\\pipe\\a"},
        // What begins with separators of the other kind, or with a question mark, is an odd path before and after.
        {L"//server/share", L"\\\\?\\//server/share"},
        {L"/\\server", L"\\\\?\\/\\server"},
        {L"\\/server", L"\\/?\\UNC\\server"},
        {L"\\?x", L"\\??\\UNC\\x"},
        {L"/?x", L"\\\\?\\/?x"},
        // Collapsed from left to right, pair by pair.
        {L"C:\\\\a", L"\\\\?\\C:\\a"},
        {L"C:\\a\\\\b\\\\c", L"\\\\?\\C:\\a\\b\\c"},
        {L"C:\\a\\\\\\b", L"\\\\?\\C:\\a\\\\b"},
        {L"C:\\a\\\\\\\\b", L"\\\\?\\C:\\a\\\\b"},
        {L"C:\\a\\\\\\\\\\b", L"\\\\?\\C:\\a\\\\\\b"},
        {L"C:\\a\\\\", L"\\\\?\\C:\\a\\"},
        {L"\\\\server\\\\share", L"\\\\?\\UNC\\server\\share"},
        {L"\\\\\\server", L"\\\\?\\UNC\\server"},
        {L"\\\\\\\\server", L"\\\\?\\UNC\\\\server"},
        // Unchanged: prefixed already.
        {L"\\\\?\\C:\\a", L"\\\\?\\C:\\a"},
        {L"\\\\?\\C:\\a\\\\b", L"\\\\?\\C:\\a\\\\b"},
        {L"\\\\?\\UNC\\server\\share", L"\\\\?\\UNC\\server\\share"},
        {L"\\\\?\\", L"\\\\?\\"},
        // Unchanged: relative.
        {L"", L""},
        {L"a", L"a"},
        {L"\\", L"\\"},
        {L"/", L"/"},
        {L"\\a", L"\\a"},
        {L"/a", L"/a"},
        {L"a\\\\b", L"a\\\\b"},
        {L"..\\a", L"..\\a"},
        {L"a:b", L"a:b"},
        {L"a:", L"a:"},
        {L"1:\\a", L"1:\\a"},
        {L"\u00C4:\\a", L"\u00C4:\\a"},
        {L"@:\\a", L"@:\\a"},
        {L"[:\\a", L"[:\\a"},
        {L"`:\\a", L"`:\\a"},
        {L"{:\\a", L"{:\\a"},
        // Unchanged: blank, or with a blank in front.
        {L"   ", L"   "},
        {L"\t\r\n\u00A0\u3000", L"\t\r\n\u00A0\u3000"},
        {L" C:\\a", L" C:\\a"},
        {L" \\\\server", L" \\\\server"},
    };
    for (auto const & tRow : atRows)
        EXPECT_EQ(sLong(tRow.pzPath), tRow.pzLong) << testing::PrintToString(tRow.pzPath);
}

TEST(MakeLongPath, KnowsTheBordersOfTheAsciiLetters) {
    for (wchar_t c : std::wstring(L"AZaz"))
        EXPECT_EQ(sLong(std::wstring(1, c) + L":\\x"), std::wstring(L"\\\\?\\") + c + L":\\x");
}

TEST(MakeLongPath, DoesNotChangeItsOwnResult) {
    for (wchar_t const * pzPath : {L"C:\\a\\\\\\b", L"\\\\server\\share", L"a\\b"}) {
        std::wstring const sOnce = sLong(pzPath);
        EXPECT_EQ(sLong(sOnce), sOnce);
    }
}

TEST(MakeLongPath, TakesVeryLongPaths) {
    std::wstring sPath = L"C:", sExpected = L"\\\\?\\C:";
    for (int i = 0; i < 6000; ++i) {
        sPath += L"\\\\abcd";
        sExpected += L"\\abcd";
    }
    EXPECT_EQ(sLong(sPath), sExpected);
}

TEST(CollapseDoubleBackslashes, DoesWhatTheRuleSaysWithAnyText) {
    std::mt19937 tRandom(4711);
    for (int i = 0; i < 20000; ++i) {
        std::wstring sPath(tRandom() % 24, L'\\');
        for (wchar_t & c : sPath)
            if (tRandom() % 3 == 0) c = L'a';
        std::wstring sCollapsed = sPath;
        CollapseDoubleBackslashes(sCollapsed);
        ASSERT_EQ(sCollapsed, sCollapseByTheRule(sPath)) << testing::PrintToString(sPath);
    }
}

TEST(PzLongPath, ChangesPathsFrom260Characters) {
    std::wstring sHolder = L"untouched";
    std::wstring const sShort = sPathOfLength(259);
    EXPECT_EQ(pzLongPath(sShort.c_str(), sHolder), sShort.c_str());
    EXPECT_EQ(sHolder, L"untouched");

    std::wstring const sEnough = sPathOfLength(260);
    wchar_t const * const pzLong = pzLongPath(sEnough.c_str(), sHolder);
    EXPECT_EQ(pzLong, sHolder.c_str());
    EXPECT_EQ(sHolder, L"\\\\?\\" + sEnough);
}

TEST(PzLongPath, GivesALongRelativePathFromTheHolderUnchanged) {
    std::wstring const sRelative(30000, L'r');
    std::wstring sHolder;
    wchar_t const * const pzLong = pzLongPath(sRelative.c_str(), sHolder);
    EXPECT_EQ(pzLong, sHolder.c_str());
    EXPECT_EQ(sHolder, sRelative);
}

TEST(PzLongPath, PassesNullAndTheEmptyPathOn) {
    std::wstring sHolder = L"untouched";
    wchar_t const * const pzEmpty = L"";
    EXPECT_EQ(pzLongPath(nullptr, sHolder), nullptr);
    EXPECT_EQ(pzLongPath(pzEmpty, sHolder), pzEmpty);
    EXPECT_EQ(pzLongDirPath(nullptr, sHolder), nullptr);
    EXPECT_EQ(sHolder, L"untouched");
}

TEST(PzLongDirPath, ChangesPathsFrom248Characters) {
    std::wstring sHolder = L"untouched";
    std::wstring const sShort = sPathOfLength(247);
    EXPECT_EQ(pzLongDirPath(sShort.c_str(), sHolder), sShort.c_str());
    EXPECT_EQ(sHolder, L"untouched");

    std::wstring const sEnough = sPathOfLength(248);
    wchar_t const * const pzLong = pzLongDirPath(sEnough.c_str(), sHolder);
    EXPECT_EQ(pzLong, sHolder.c_str());
    EXPECT_EQ(sHolder, L"\\\\?\\" + sEnough);
}

// The calls. Their sources are compiled into this program, so that it is its own import table that is replaced.

namespace {

using testing::PrintToString;
using zk_test::TTempDirectory;

/// A short path, which reaches the system as it is, and long ones with what the system gets.
struct TPassedPath {
    std::wstring sPath;
    std::wstring sPassed;
};

std::vector<TPassedPath> tPassedPaths() {
    std::wstring const sLongLocal = sPathOfLength(30000);
    std::wstring const sLongNetwork = L"\\\\server\\share\\" + std::wstring(300, L'x');
    std::wstring const sLongRelative(300, L'r');
    return {
        {sPathOfLength(259), sPathOfLength(259)}, {sPathOfLength(260), L"\\\\?\\" + sPathOfLength(260)},
        {sLongLocal, L"\\\\?\\" + sLongLocal},    {sLongNetwork, L"\\\\?\\UNC" + sLongNetwork.substr(1)},
        {sLongRelative, sLongRelative},
    };
}

/// A directory that only the long form of a path reaches: without it the system takes the point from its name.
/// Its path is longer than 260 characters.
std::wstring sMakeHardToReach(TTempDirectory const & tTemp) {
    std::wstring const sOuter(200, L'o');
    std::wstring const sMiddle = sOuter + L"\\" + std::wstring(100, L'm');
    tTemp.sMakeDirectory(sOuter);
    tTemp.sMakeDirectory(sMiddle);
    return tTemp.sMakeDirectory(sMiddle + L"\\dir.");
}

HANDLE const hSome = reinterpret_cast<HANDLE>(0x1234);

} // namespace

TEST(LongCalls, PassThePathInItsLongForm) {
    std::wstring sSeen;
    auto const See = [&sSeen](wchar_t const * pzPath) {
        sSeen = pzPath;
        return zk_test::tFailWith(4711, FALSE);
    };
    HMODULE const hSelf = GetModuleHandleW(nullptr);
    zk_test::TSystemCall<"DeleteFileW", decltype(DeleteFileW)> const tDelete(See, hSelf);
    zk_test::TSystemCall<"RemoveDirectoryW", decltype(RemoveDirectoryW)> const tRemove(See, hSelf);
    for (TPassedPath const & tRow : tPassedPaths()) {
        EXPECT_FALSE(DeleteFileLong(tRow.sPath.c_str()));
        EXPECT_EQ(GetLastError(), 4711U);
        EXPECT_EQ(sSeen, tRow.sPassed);
        SetLastError(0);
        EXPECT_FALSE(RemoveDirectoryLong(tRow.sPath.c_str()));
        EXPECT_EQ(GetLastError(), 4711U);
        EXPECT_EQ(sSeen, tRow.sPassed);
    }
}

TEST(LongCalls, PassAttributes) {
    std::wstring sSeen;
    DWORD dwSeen = 0;
    HMODULE const hSelf = GetModuleHandleW(nullptr);
    zk_test::TSystemCall<"GetFileAttributesW", decltype(GetFileAttributesW)> const tGet(
        [&](LPCWSTR pzPath) {
            sSeen = pzPath;
            return zk_test::tFailWith(4711, DWORD{0xABCD});
        },
        hSelf);
    zk_test::TSystemCall<"SetFileAttributesW", decltype(SetFileAttributesW)> const tSet(
        [&](LPCWSTR pzPath, DWORD dwAttributes) {
            sSeen = pzPath;
            dwSeen = dwAttributes;
            return zk_test::tFailWith(4712, FALSE);
        },
        hSelf);
    for (TPassedPath const & tRow : tPassedPaths()) {
        EXPECT_EQ(GetFileAttributesLong(tRow.sPath.c_str()), 0xABCDU);
        EXPECT_EQ(GetLastError(), 4711U);
        EXPECT_EQ(sSeen, tRow.sPassed);
        sSeen.clear();
        EXPECT_FALSE(SetFileAttributesLong(tRow.sPath.c_str(), 0x1234));
        EXPECT_EQ(GetLastError(), 4712U);
        EXPECT_EQ(sSeen, tRow.sPassed);
        EXPECT_EQ(dwSeen, 0x1234U);
    }
}

TEST(LongCalls, PassEveryArgumentOfCreateFile) {
    std::wstring sSeen;
    SECURITY_ATTRIBUTES tSecurity{};
    zk_test::TSystemCall<"CreateFileW", decltype(CreateFileW)> const tCreate(
        [&](LPCWSTR pzPath, DWORD dwAccess, DWORD dwShare, LPSECURITY_ATTRIBUTES pSecurity, DWORD dwDisposition,
            DWORD dwFlags, HANDLE hTemplate) {
            sSeen = pzPath;
            EXPECT_EQ(dwAccess, 1U);
            EXPECT_EQ(dwShare, 2U);
            EXPECT_EQ(pSecurity, &tSecurity);
            EXPECT_EQ(dwDisposition, 3U);
            EXPECT_EQ(dwFlags, 4U);
            EXPECT_EQ(hTemplate, hSome);
            return zk_test::tFailWith(4711, INVALID_HANDLE_VALUE);
        },
        GetModuleHandleW(nullptr));
    for (TPassedPath const & tRow : tPassedPaths()) {
        EXPECT_EQ(CreateFileLong(tRow.sPath.c_str(), 1, 2, &tSecurity, 3, 4, hSome), INVALID_HANDLE_VALUE);
        EXPECT_EQ(GetLastError(), 4711U);
        EXPECT_EQ(sSeen, tRow.sPassed);
    }
}

TEST(LongCalls, PassBothPaths) {
    std::wstring sFirst, sSecond;
    DWORD dwSeen = 0;
    auto const See = [&](LPCWSTR pzFirst, LPCWSTR pzSecond, DWORD dwFlags) {
        sFirst = pzFirst;
        sSecond = pzSecond;
        dwSeen = dwFlags;
        return zk_test::tFailWith(4711, FALSE);
    };
    HMODULE const hSelf = GetModuleHandleW(nullptr);
    zk_test::TSystemCall<"CopyFileW", decltype(CopyFileW)> const tCopy(
        [&](LPCWSTR pzFirst, LPCWSTR pzSecond, BOOL fFailIfExists) {
            return See(pzFirst, pzSecond, static_cast<DWORD>(fFailIfExists));
        },
        hSelf);
    zk_test::TSystemCall<"MoveFileExW", decltype(MoveFileExW)> const tMove(See, hSelf);
    zk_test::TSystemCall<"ReplaceFileW", decltype(ReplaceFileW)> const tReplace(
        [&](LPCWSTR pzReplaced, LPCWSTR pzReplacement, LPCWSTR pzBackup, DWORD dwFlags, LPVOID pExclude,
            LPVOID pReserved) {
            EXPECT_EQ(pzBackup, nullptr);
            EXPECT_EQ(pExclude, nullptr);
            EXPECT_EQ(pReserved, nullptr);
            return See(pzReplaced, pzReplacement, dwFlags);
        },
        hSelf);
    auto const Expect = [&](TPassedPath const & tFirst, TPassedPath const & tSecond, DWORD dwFlags) {
        EXPECT_EQ(GetLastError(), 4711U);
        EXPECT_EQ(sFirst, tFirst.sPassed);
        EXPECT_EQ(sSecond, tSecond.sPassed);
        EXPECT_EQ(dwSeen, dwFlags);
        SetLastError(0);
    };
    for (TPassedPath const & tFirst : tPassedPaths()) {
        for (TPassedPath const & tSecond : tPassedPaths()) {
            EXPECT_FALSE(CopyFileLong(tFirst.sPath.c_str(), tSecond.sPath.c_str(), TRUE));
            Expect(tFirst, tSecond, TRUE);
            EXPECT_FALSE(CopyFileLong(tFirst.sPath.c_str(), tSecond.sPath.c_str(), FALSE));
            Expect(tFirst, tSecond, FALSE);
            EXPECT_FALSE(MoveFileExLong(tFirst.sPath.c_str(), tSecond.sPath.c_str(), 11));
            Expect(tFirst, tSecond, 11);
            EXPECT_FALSE(ReplaceFileLong(tFirst.sPath.c_str(), tSecond.sPath.c_str()));
            Expect(tFirst, tSecond, 6);
        }
    }
}

TEST(LongCalls, GiveTheSystemsAnswer) {
    TTempDirectory const tTemp;
    std::wstring const sFirst = tTemp.sWrite(L"first", "1");
    std::wstring const sSecond = tTemp.sGetPath(L"second");
    EXPECT_TRUE(CopyFileLong(sFirst.c_str(), sSecond.c_str(), TRUE));
    EXPECT_FALSE(CopyFileLong(sFirst.c_str(), sSecond.c_str(), TRUE));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_EXISTS));
    EXPECT_TRUE(SetFileAttributesLong(sSecond.c_str(), FILE_ATTRIBUTE_HIDDEN));
    EXPECT_TRUE(GetFileAttributesLong(sSecond.c_str()) & FILE_ATTRIBUTE_HIDDEN);
    EXPECT_TRUE(MoveFileExLong(sFirst.c_str(), sSecond.c_str(), MOVEFILE_REPLACE_EXISTING));
    EXPECT_EQ(zk_test::sListDirectory(tTemp.sGetPath()), L"second");
    EXPECT_TRUE(DeleteFileLong(sSecond.c_str()));
    EXPECT_FALSE(DeleteFileLong(sSecond.c_str()));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    std::wstring const sDirectory = tTemp.sMakeDirectory(L"dir");
    EXPECT_TRUE(RemoveDirectoryLong(sDirectory.c_str()));
    EXPECT_FALSE(RemoveDirectoryLong(sDirectory.c_str()));
    EXPECT_EQ(zk_test::sListDirectory(tTemp.sGetPath()), L"");
}

TEST(LongCalls, ReachWhatOnlyTheLongFormReaches) {
    TTempDirectory const tTemp;
    std::wstring const sDirectory = sMakeHardToReach(tTemp);
    std::wstring const sFirst = sDirectory + L"\\first";
    std::wstring const sSecond = sDirectory + L"\\second";
    std::wstring const sThird = sDirectory + L"\\third";
    zk_test::WriteFileBytes(sFirst, "1");
    // The short form does not get there, or this test would prove nothing.
    EXPECT_EQ(GetFileAttributesW(sFirst.c_str()), INVALID_FILE_ATTRIBUTES);

    {
        zk_test::THandle const hFile(CreateFileLong(sFirst.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        EXPECT_TRUE(hFile);
    }
    EXPECT_TRUE(CopyFileLong(sFirst.c_str(), sSecond.c_str(), TRUE));
    EXPECT_TRUE(MoveFileExLong(sSecond.c_str(), sThird.c_str(), 0));
    zk_test::WriteFileBytes(sSecond, "2");
    EXPECT_TRUE(ReplaceFileLong(sThird.c_str(), sSecond.c_str()));
    EXPECT_EQ(zk_test::sReadFileBytes(sThird), "2");
    EXPECT_EQ(zk_test::sListDirectory(sDirectory), L"first|third");
    EXPECT_TRUE(SetFileAttributesLong(sThird.c_str(), FILE_ATTRIBUTE_HIDDEN));
    EXPECT_TRUE(GetFileAttributesLong(sThird.c_str()) & FILE_ATTRIBUTE_HIDDEN);
    EXPECT_TRUE(DeleteFileLong(sThird.c_str()));
    EXPECT_TRUE(DeleteFileLong(sFirst.c_str()));
    EXPECT_TRUE(RemoveDirectoryLong(sDirectory.c_str()));
    EXPECT_FALSE(zk_test::fExists(sDirectory));
}
