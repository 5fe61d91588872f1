#include "base/LongPath.h"

#include <gtest/gtest.h>

#include <random>

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
