#include "ZkBase/Paths.h"

#include <gtest/gtest.h>

#include <array>
#include <string_view>

using namespace path_func;

namespace {

/// What a path is, and what is left of it.
struct TPathRow {
    wchar_t const * pzPath;
    bool fRelative;
    bool fRoot;
    bool fUnc;
    bool fServer;
    wchar_t const * pzWithoutBackslash;
    wchar_t const * pzParent; // null: nothing is removed
};

constexpr bool T = true;
constexpr bool F = false;

constexpr std::array<TPathRow, 62> atPaths{{
    // path                        relative root unc server  without backslash     parent
    {LR"()", T, F, F, F, LR"()", nullptr},
    {LR"(a)", T, F, F, F, LR"(a)", LR"()"},
    {LR"(a\)", T, F, F, F, LR"(a)", LR"(a)"},
    {LR"(a\b)", T, F, F, F, LR"(a\b)", LR"(a)"},
    {LR"(.)", T, F, F, F, LR"(.)", LR"()"},
    {LR"(..\a)", T, F, F, F, LR"(..\a)", LR"(..)"},
    {LR"(a.b.c\d.e.f)", T, F, F, F, LR"(a.b.c\d.e.f)", LR"(a.b.c)"},
    {LR"(:)", T, F, F, F, LR"(:)", LR"()"},
    {LR"(\)", F, T, F, F, LR"(\)", nullptr},
    {LR"(\a)", F, F, F, F, LR"(\a)", LR"(\)"},
    {LR"(\a\)", F, F, F, F, LR"(\a)", LR"(\a)"},
    {LR"(\a\b)", F, F, F, F, LR"(\a\b)", LR"(\a)"},
    {LR"(C:)", F, F, F, F, LR"(C:)", nullptr},
    {LR"(C:\)", F, T, F, F, LR"(C:\)", nullptr},
    {LR"(c:\)", F, T, F, F, LR"(c:\)", nullptr},
    {LR"(C:\\)", F, F, F, F, LR"(C:\)", LR"(C:\)"},
    {LR"(C:a)", F, F, F, F, LR"(C:a)", LR"(C:)"},
    {LR"(C:a\b)", F, F, F, F, LR"(C:a\b)", LR"(C:a)"},
    {LR"(C:\a)", F, F, F, F, LR"(C:\a)", LR"(C:\)"},
    {LR"(C:\a\)", F, F, F, F, LR"(C:\a)", LR"(C:\a)"},
    {LR"(C:\a\\)", F, F, F, F, LR"(C:\a\)", LR"(C:\a\)"},
    {LR"(C:\\a)", F, F, F, F, LR"(C:\\a)", LR"(C:\)"},
    {LR"(C:\a\b)", F, F, F, F, LR"(C:\a\b)", LR"(C:\a)"},
    {LR"(C:\a\\b)", F, F, F, F, LR"(C:\a\\b)", LR"(C:\a\)"},
    {LR"(C:\a:stream)", F, F, F, F, LR"(C:\a:stream)", LR"(C:\)"},
    {LR"(/)", T, F, F, F, LR"(/)", LR"()"},
    {LR"(/a)", T, F, F, F, LR"(/a)", LR"()"},
    {LR"(//server/share)", T, F, F, F, LR"(//server/share)", LR"()"},
    {LR"(C:/)", F, F, F, F, LR"(C:/)", LR"(C:)"},
    {LR"(C:/a/b)", F, F, F, F, LR"(C:/a/b)", LR"(C:)"},
    {LR"(C:\a/b\c)", F, F, F, F, LR"(C:\a/b\c)", LR"(C:\a/b)"},
    {LR"(\\)", F, F, T, T, LR"(\\)", nullptr},
    {LR"(\\\)", F, F, T, F, LR"(\\)", LR"(\\)"},
    {LR"(\\\share)", F, F, T, F, LR"(\\\share)", LR"(\\)"},
    {LR"(\\server)", F, F, T, T, LR"(\\server)", nullptr},
    {LR"(\\server\)", F, F, T, F, LR"(\\server)", LR"(\\server)"},
    {LR"(\\server\\a)", F, F, T, F, LR"(\\server\\a)", LR"(\\server\)"},
    {LR"(\\server\share)", F, T, T, F, LR"(\\server\share)", nullptr},
    {LR"(\\server\share\)", F, F, T, F, LR"(\\server\share)", LR"(\\server\share)"},
    {LR"(\\server\share\a)", F, F, T, F, LR"(\\server\share\a)", LR"(\\server\share)"},
    {LR"(\\server\share\a\)", F, F, T, F, LR"(\\server\share\a)", LR"(\\server\share\a)"},
    {LR"(\\server\C$\a)", F, F, T, F, LR"(\\server\C$\a)", LR"(\\server\C$)"},
    {LR"(\\?)", F, F, T, T, LR"(\\?)", nullptr},
    {LR"(\\?\)", F, F, T, F, LR"(\\?\)", nullptr},
    {LR"(\\?\C:)", F, F, T, F, LR"(\\?\C:)", nullptr},
    {LR"(\\?\C:\)", F, T, T, F, LR"(\\?\C:\)", nullptr},
    {LR"(\\?\C:\a)", F, F, T, F, LR"(\\?\C:\a)", LR"(\\?\C:\)"},
    {LR"(\\?\C:\a\)", F, F, T, F, LR"(\\?\C:\a)", LR"(\\?\C:\a)"},
    {LR"(\\?\C:\a\b)", F, F, T, F, LR"(\\?\C:\a\b)", LR"(\\?\C:\a)"},
    {LR"(\\?\\a)", F, F, T, F, LR"(\\?\\a)", LR"(\\?\)"},
    {LR"(\\?\Volume{1}\)", F, T, T, F, LR"(\\?\Volume{1}\)", nullptr},
    {LR"(\\?\Volume{1}\a)", F, F, T, F, LR"(\\?\Volume{1}\a)", LR"(\\?\Volume{1}\)"},
    {LR"(\\?\UNC)", F, F, T, F, LR"(\\?\UNC)", nullptr},
    {LR"(\\?\UNC\)", F, F, T, T, LR"(\\?\UNC\)", nullptr},
    {LR"(\\?\UNC\server)", F, F, T, T, LR"(\\?\UNC\server)", nullptr},
    {LR"(\\?\UNC\server\)", F, F, T, F, LR"(\\?\UNC\server)", LR"(\\?\UNC\server)"},
    {LR"(\\?\UNC\server\share)", F, T, T, F, LR"(\\?\UNC\server\share)", nullptr},
    {LR"(\\?\unc\server\share)", F, T, T, F, LR"(\\?\unc\server\share)", nullptr},
    {LR"(\\?\UNC\server\share\)", F, F, T, F, LR"(\\?\UNC\server\share)", LR"(\\?\UNC\server\share)"},
    {LR"(\\?\UNC\server\share\a)", F, F, T, F, LR"(\\?\UNC\server\share\a)", LR"(\\?\UNC\server\share)"},
    {LR"(\\?\UNCLE\server\share)", F, F, T, F, LR"(\\?\UNCLE\server\share)", LR"(\\?\UNCLE\server)"},
    {LR"(\\.\C:\a)", F, F, T, F, LR"(\\.\C:\a)", LR"(\\.\C:)"},
}};

struct TSplitRow {
    wchar_t const * pzPath;
    wchar_t const * pzDrive;
    wchar_t const * pzDir;
    wchar_t const * pzName;
    wchar_t const * pzExt;
};

constexpr std::array<TSplitRow, 28> atSplits{{
    {LR"()", LR"()", LR"()", LR"()", LR"()"},
    {LR"(a)", LR"()", LR"()", LR"(a)", LR"()"},
    {LR"(a.b)", LR"()", LR"()", LR"(a)", LR"(.b)"},
    {LR"(a.)", LR"()", LR"()", LR"(a)", LR"(.)"},
    {LR"(.git)", LR"()", LR"()", LR"()", LR"(.git)"},
    {LR"(.)", LR"()", LR"()", LR"()", LR"(.)"},
    {LR"(..)", LR"()", LR"()", LR"(.)", LR"(.)"},
    {LR"(a.b.c..d)", LR"()", LR"()", LR"(a.b.c.)", LR"(.d)"},
    {LR"(\)", LR"()", LR"(\)", LR"()", LR"()"},
    {LR"(C:)", LR"(C:)", LR"()", LR"()", LR"()"},
    {LR"(C:\)", LR"(C:)", LR"(\)", LR"()", LR"()"},
    {LR"(C:a.b)", LR"(C:)", LR"()", LR"(a)", LR"(.b)"},
    {LR"(C:\a.b)", LR"(C:)", LR"(\)", LR"(a)", LR"(.b)"},
    {LR"(C:\dir.ext\a)", LR"(C:)", LR"(\dir.ext\)", LR"(a)", LR"()"},
    {LR"(C:\dir\)", LR"(C:)", LR"(\dir\)", LR"()", LR"()"},
    {LR"(C:\dir\\)", LR"(C:)", LR"(\dir\\)", LR"()", LR"()"},
    {LR"(C:/dir/a.b)", LR"(C:)", LR"(/dir/)", LR"(a)", LR"(.b)"},
    {LR"(C:\dir/a)", LR"(C:)", LR"(\dir/)", LR"(a)", LR"()"},
    {LR"(a:b:c.d)", LR"(a:)", LR"()", LR"(b:c)", LR"(.d)"},
    {LR"(ab:c)", LR"()", LR"()", LR"(ab:c)", LR"()"},
    {LR"(/a)", LR"()", LR"(/)", LR"(a)", LR"()"},
    {LR"(\\server)", LR"()", LR"(\\)", LR"(server)", LR"()"},
    {LR"(\\server\share)", LR"()", LR"(\\server\)", LR"(share)", LR"()"},
    {LR"(\\server\share\)", LR"()", LR"(\\server\share\)", LR"()", LR"()"},
    {LR"(\\server\share\a.b)", LR"()", LR"(\\server\share\)", LR"(a)", LR"(.b)"},
    {LR"(\\?\C:\a.b)", LR"()", LR"(\\?\C:\)", LR"(a)", LR"(.b)"},
    {LR"(\\?\UNC\server\share\a.b)", LR"()", LR"(\\?\UNC\server\share\)", LR"(a)", LR"(.b)"},
    {LR"( a . b )", LR"()", LR"()", LR"( a )", LR"(. b )"},
}};

struct TTwoPathsRow {
    wchar_t const * pzFirst;
    wchar_t const * pzSecond;
    wchar_t const * pzResult;
};

constexpr std::array<TTwoPathsRow, 34> atAppended{{
    {LR"(C:\a)", LR"(b)", LR"(C:\a\b)"},
    {LR"(C:\a\)", LR"(b)", LR"(C:\a\b)"},
    {LR"(C:\a)", LR"(\b)", LR"(C:\a\b)"},
    {LR"(C:\a\)", LR"(\b)", LR"(C:\a\b)"},
    {LR"(C:\a)", LR"(b\)", LR"(C:\a\b\)"},
    {LR"(C:\a)", LR"(b\c.d)", LR"(C:\a\b\c.d)"},
    {LR"(C:\)", LR"(a)", LR"(C:\a)"},
    {LR"(C:)", LR"(a)", LR"(C:\a)"},
    {LR"(C:\a)", LR"(*)", LR"(C:\a\*)"},
    {LR"(\)", LR"(a)", LR"(\a)"},
    {LR"(a)", LR"(b)", LR"(a\b)"},
    // An empty part changes nothing.
    {LR"()", LR"()", LR"()"},
    {LR"()", LR"(a)", LR"(a)"},
    {LR"()", LR"(\a)", LR"(a)"},
    {LR"(C:\a)", LR"()", LR"(C:\a)"},
    {LR"(C:\a\)", LR"()", LR"(C:\a\)"},
    {LR"(C:\a)", LR"(\)", LR"(C:\a)"},
    {LR"(C:)", LR"()", LR"(C:)"},
    // Points stay.
    {LR"(C:\a)", LR"(.)", LR"(C:\a\.)"},
    {LR"(C:\a)", LR"(..)", LR"(C:\a\..)"},
    {LR"(C:\a)", LR"(..\..\b)", LR"(C:\a\..\..\b)"},
    {LR"(C:\a\.)", LR"(b.)", LR"(C:\a\.\b.)"},
    // What begins by itself is the result.
    {LR"(C:\a)", LR"(D:\b)", LR"(D:\b)"},
    {LR"(C:\a)", LR"(D:b)", LR"(D:b)"},
    {LR"(C:\a)", LR"(D:)", LR"(D:)"},
    {LR"(C:\a)", LR"(\D:\b)", LR"(D:\b)"},
    {LR"(C:\a)", LR"(\\server\share)", LR"(\\server\share)"},
    {LR"(C:\a)", LR"(\\?\C:\b)", LR"(\\?\C:\b)"},
    {LR"(C:\a)", LR"(\\)", LR"(\\)"},
    // What stands in front stays as it is.
    {LR"(\\)", LR"(server)", LR"(\\server)"},
    {LR"(\\server\share)", LR"(a)", LR"(\\server\share\a)"},
    {LR"(\\?\C:\)", LR"(a)", LR"(\\?\C:\a)"},
    {LR"(C:\a\\)", LR"(b)", LR"(C:\a\\b)"},
    {LR"(C:/a/)", LR"(/b)", LR"(C:/a/\/b)"},
}};

constexpr std::array<TTwoPathsRow, 56> atCommon{{
    {LR"()", LR"()", LR"()"},
    {LR"()", LR"(C:\a)", LR"()"},
    {LR"(a)", LR"(a)", LR"(a)"},
    {LR"(a)", LR"(b)", LR"()"},
    {LR"(a)", LR"(ab)", LR"()"},
    {LR"(a\b)", LR"(a\c)", LR"(a)"},
    {LR"(a)", LR"(a\c)", LR"(a)"},
    {LR"(ab\c)", LR"(ab\d)", LR"(ab)"},
    {LR"(C:\a)", LR"(C:\a)", LR"(C:\a)"},
    {LR"(C:\a)", LR"(C:\b)", LR"(C:\)"},
    {LR"(C:\)", LR"(C:\)", LR"(C:\)"},
    {LR"(C:\)", LR"(C:\a)", LR"(C:\)"},
    {LR"(C:\a)", LR"(C:\)", LR"(C:\)"},
    {LR"(C:\a)", LR"(D:\a)", LR"()"},
    {LR"(C:\a\b\c)", LR"(C:\a\b\d)", LR"(C:\a\b)"},
    {LR"(C:\a\b)", LR"(C:\a\bc)", LR"(C:\a)"},
    {LR"(C:\a\bc)", LR"(C:\a\b)", LR"(C:\a)"},
    {LR"(C:\a)", LR"(C:\a\b)", LR"(C:\a)"},
    {LR"(C:\a\b)", LR"(C:\a)", LR"(C:\a)"},
    // The spelling is that of the first.
    {LR"(c:\AbC\x)", LR"(C:\aBc\y)", LR"(c:\AbC)"},
    {L"C:\\ÄÖ\\x", L"C:\\äö\\y", L"C:\\ÄÖ"},
    {L"C:\\Жук\\x", L"C:\\жУК\\y", L"C:\\Жук"},
    // A backslash at the end counts where both have it.
    {LR"(C:\a\)", LR"(C:\a\)", LR"(C:\a\)"},
    {LR"(C:\a\)", LR"(C:\a)", LR"(C:\a)"},
    {LR"(C:\a)", LR"(C:\a\)", LR"(C:\a)"},
    {LR"(C:\a\)", LR"(C:\a\b)", LR"(C:\a)"},
    {LR"(C:\\a)", LR"(C:\\b)", LR"(C:\)"},
    {LR"(a\\b)", LR"(a\\c)", LR"(a\)"},
    // Without a root.
    {LR"(C:)", LR"(C:)", LR"(C:)"},
    {LR"(C:)", LR"(C:\a)", LR"(C:)"},
    {LR"(C:\a)", LR"(C:)", LR"(C:)"},
    {LR"(C:a)", LR"(C:b)", LR"()"},
    {LR"(C:a\x)", LR"(C:a\y)", LR"(C:a)"},
    {LR"(C:a)", LR"(C:\a)", LR"()"},
    {LR"(\)", LR"(\)", LR"(\)"},
    {LR"(\)", LR"(\a)", LR"(\)"},
    {LR"(\a)", LR"(\b)", LR"(\)"},
    {LR"(\a\b)", LR"(\a\c)", LR"(\a)"},
    {LR"(\a)", LR"(a)", LR"()"},
    {LR"(/a/b)", LR"(/a/c)", LR"()"},
    // Network paths.
    {LR"(\\server\share\a)", LR"(\\SERVER\Share\b)", LR"(\\server\share)"},
    {LR"(\\server\share)", LR"(\\server\share\b)", LR"(\\server\share)"},
    {LR"(\\server\x)", LR"(\\server\y)", LR"(\\server)"},
    {LR"(\\server)", LR"(\\server\y)", LR"(\\server)"},
    {LR"(\\one\x)", LR"(\\two\x)", LR"()"},
    {LR"(\\)", LR"(\\server)", LR"()"},
    {LR"(\a)", LR"(\\a)", LR"()"},
    // Behind the long prefix the same holds.
    {LR"(\\?\C:\a)", LR"(\\?\C:\b)", LR"(\\?\C:\)"},
    {LR"(\\?\C:\)", LR"(\\?\c:\b)", LR"(\\?\C:\)"},
    {LR"(\\?\C:\a\b)", LR"(\\?\C:\a\c)", LR"(\\?\C:\a)"},
    {LR"(\\?\C:\a)", LR"(\\?\D:\a)", LR"()"},
    {LR"(\\?\C:\a)", LR"(C:\a)", LR"()"},
    {LR"(\\?\UNC\server\share\a)", LR"(\\?\unc\server\share\b)", LR"(\\?\UNC\server\share)"},
    {LR"(\\?\UNC\one\x)", LR"(\\?\UNC\two\x)", LR"()"},
    {LR"(\\?\UNC\server\share)", LR"(\\server\share)", LR"()"},
    {LR"(\\?\UNC\server\share)", LR"(\\?\C:\a)", LR"()"},
}};

std::wstring sParts(std::wstring const & sPath) {
    std::wstring sDrive, sDir, sName, sExt;
    SplitPath(sPath, &sDrive, &sDir, &sName, &sExt);
    return sDrive + L"|" + sDir + L"|" + sName + L"|" + sExt;
}

/// A path of `uLength` characters: components of at most 200 behind the given start.
std::wstring sLongPath(std::wstring_view sStart, std::size_t uLength) {
    std::wstring sPath(sStart);
    while (sPath.size() < uLength)
        sPath += sPath.size() % 200 == 199 ? L'\\' : L'x';
    sPath.back() = L'x';
    return sPath;
}

} // namespace

TEST(fPathIsRelative, IsTrueWithoutDriveAndLeadingBackslash) {
    for (TPathRow const & tRow : atPaths)
        EXPECT_EQ(fPathIsRelative(tRow.pzPath), tRow.fRelative) << testing::PrintToString(tRow.pzPath);
}

TEST(fPathIsRoot, IsTrueForDrivesSharesAndTheLoneBackslash) {
    for (TPathRow const & tRow : atPaths)
        EXPECT_EQ(fPathIsRoot(tRow.pzPath), tRow.fRoot) << testing::PrintToString(tRow.pzPath);
}

TEST(fPathIsUNC, LooksAtTheFirstTwoCharactersAlone) {
    for (TPathRow const & tRow : atPaths)
        EXPECT_EQ(fPathIsUNC(tRow.pzPath), tRow.fUnc) << testing::PrintToString(tRow.pzPath);
}

TEST(fPathIsUNCServer, IsTrueWithoutAFurtherBackslash) {
    for (TPathRow const & tRow : atPaths)
        EXPECT_EQ(fPathIsUNCServer(tRow.pzPath), tRow.fServer) << testing::PrintToString(tRow.pzPath);
}

TEST(PathTests, TakeANullPointerForNoPath) {
    EXPECT_TRUE(fPathIsRelative(nullptr));
    EXPECT_FALSE(fPathIsRoot(nullptr));
    EXPECT_FALSE(fPathIsUNC(nullptr));
    EXPECT_FALSE(fPathIsUNCServer(nullptr));
}

TEST(PathRemoveBackslashW, RemovesOneAndSparesTheRoot) {
    for (TPathRow const & tRow : atPaths) {
        std::wstring sPath = tRow.pzPath;
        PathRemoveBackslashW(sPath);
        EXPECT_EQ(sPath, tRow.pzWithoutBackslash) << testing::PrintToString(tRow.pzPath);
    }
}

TEST(fPathRemoveFileSpec, RemovesTheLastComponentAndSparesTheRoot) {
    for (TPathRow const & tRow : atPaths) {
        std::wstring sPath = tRow.pzPath;
        EXPECT_EQ(fPathRemoveFileSpec(sPath), tRow.pzParent != nullptr) << testing::PrintToString(tRow.pzPath);
        EXPECT_EQ(sPath, tRow.pzParent != nullptr ? tRow.pzParent : tRow.pzPath);
    }
}

TEST(fPathRemoveFileSpec, ComesToTheRootAndEndsThere) {
    for (wchar_t const * pzRoot :
         {LR"(C:\)", LR"(\)", LR"(\\server\share)", LR"(\\?\C:\)", LR"(\\?\UNC\server\share)"}) {
        std::wstring sPath = sPathAppend(pzRoot, LR"(a\b\c)");
        for (int i = 0; i < 3; ++i) {
            EXPECT_FALSE(fPathIsRoot(sPath.c_str()));
            EXPECT_TRUE(fPathRemoveFileSpec(sPath));
        }
        EXPECT_EQ(sPath, pzRoot);
        EXPECT_TRUE(fPathIsRoot(sPath.c_str()));
        EXPECT_FALSE(fPathRemoveFileSpec(sPath));
    }
}

TEST(SplitPath, GivesDriveDirectoryNameAndExtension) {
    for (TSplitRow const & tRow : atSplits) {
        std::wstring const sExpected =
            std::wstring(tRow.pzDrive) + L"|" + tRow.pzDir + L"|" + tRow.pzName + L"|" + tRow.pzExt;
        EXPECT_EQ(sParts(tRow.pzPath), sExpected);
    }
}

TEST(SplitPath, LeavesOutWhatIsNotWanted) {
    std::wstring sName = L"old";
    SplitPath(LR"(C:\dir\name.ext)", nullptr, nullptr, &sName, nullptr);
    EXPECT_EQ(sName, L"name");
    SplitPath(LR"(C:\dir\name.ext)", nullptr, nullptr, nullptr, nullptr);
    SplitPath(L"", nullptr, nullptr, &sName, nullptr);
    EXPECT_EQ(sName, L"");
}

TEST(SplitPath, MayPutAPartIntoThePathItself) {
    std::wstring sDrive, sName;
    std::wstring sPath = LR"(C:\dir\name.ext)";
    SplitPath(sPath, &sDrive, &sPath, &sName, nullptr);
    EXPECT_EQ(sDrive, L"C:");
    EXPECT_EQ(sPath, LR"(\dir\)");
    EXPECT_EQ(sName, L"name");
}

TEST(sMakePath, PutsThePartsTogetherAgain) {
    for (TSplitRow const & tRow : atSplits)
        EXPECT_EQ(sMakePath(tRow.pzDrive, tRow.pzDir, tRow.pzName, tRow.pzExt), tRow.pzPath);
}

TEST(sMakePath, AddsTheMarksThatLack) {
    EXPECT_EQ(sMakePath(L"C", L"dir", L"name", L"ext"), LR"(C:dir\name.ext)");
    EXPECT_EQ(sMakePath(L"C:", LR"(\dir)", L"name", L".ext"), LR"(C:\dir\name.ext)");
    EXPECT_EQ(sMakePath(L"C:", L"/dir/", L"name", L""), L"C:/dir/name");
    EXPECT_EQ(sMakePath(L"Drive", L"", L"name", L""), L"D:name");
    EXPECT_EQ(sMakePath(L"", LR"(\\server\share)", L"", L"."), LR"(\\server\share\.)");
}

TEST(sMakePath, TakesANullPointerForAnEmptyPart) {
    EXPECT_EQ(sMakePath(nullptr, nullptr, nullptr, nullptr), L"");
    EXPECT_EQ(sMakePath(L"C:", LR"(\dir)", nullptr, nullptr), LR"(C:\dir\)");
    EXPECT_EQ(sMakePath(nullptr, nullptr, L"name", L"ext"), L"name.ext");
}

TEST(sPathAppend, JoinsByTheTable) {
    for (TTwoPathsRow const & tRow : atAppended)
        EXPECT_EQ(sPathAppend(tRow.pzFirst, tRow.pzSecond), tRow.pzResult)
            << testing::PrintToString(tRow.pzFirst) << " and " << testing::PrintToString(tRow.pzSecond);
}

TEST(sPathCommonPrefix, FollowsTheTable) {
    for (TTwoPathsRow const & tRow : atCommon)
        EXPECT_EQ(sPathCommonPrefix(tRow.pzFirst, tRow.pzSecond), tRow.pzResult)
            << testing::PrintToString(tRow.pzFirst) << " and " << testing::PrintToString(tRow.pzSecond);
}

TEST(sPathCommonPrefix, OfAPathWithItselfIsThePath) {
    for (TPathRow const & tRow : atPaths)
        EXPECT_EQ(sPathCommonPrefix(tRow.pzPath, tRow.pzPath), tRow.pzPath);
}

TEST(sPathCommonPrefix, IsEmptyForANullPointer) {
    EXPECT_EQ(sPathCommonPrefix(nullptr, L"C:\\a"), L"");
    EXPECT_EQ(sPathCommonPrefix(L"C:\\a", nullptr), L"");
}

TEST(fPathContainsWildcard, SparesTheQuestionMarkOfTheLongPrefix) {
    EXPECT_TRUE(fPathContainsWildcard(LR"(C:\a\*.txt)"));
    EXPECT_TRUE(fPathContainsWildcard(LR"(C:\a\b?)"));
    EXPECT_TRUE(fPathContainsWildcard(LR"(C:\*\b)"));
    EXPECT_TRUE(fPathContainsWildcard(L"?"));
    EXPECT_TRUE(fPathContainsWildcard(LR"(\\?\C:\a?)"));
    EXPECT_TRUE(fPathContainsWildcard(LR"(\\?\C:\*)"));
    EXPECT_TRUE(fPathContainsWildcard(LR"(\\?)"));
    EXPECT_FALSE(fPathContainsWildcard(LR"(\\?\C:\a)"));
    EXPECT_FALSE(fPathContainsWildcard(LR"(\\?\UNC\server\share)"));
    EXPECT_FALSE(fPathContainsWildcard(LR"(C:\a[b]+.txt)"));
    EXPECT_FALSE(fPathContainsWildcard(L""));
}

TEST(PathFunctions, KnowNoLimitOfLength) {
    for (std::size_t uLength : {259U, 260U, 261U, 5000U, 32000U}) {
        for (wchar_t const * pzStart : {LR"(C:\)", LR"(\\server\share\)", LR"(\\?\C:\)"}) {
            std::wstring const sPath = sLongPath(pzStart, uLength);
            std::wstring sDrive, sDir, sName, sExt;
            SplitPath(sPath, &sDrive, &sDir, &sName, &sExt);
            EXPECT_EQ(sMakePath(sDrive.c_str(), sDir.c_str(), sName.c_str(), sExt.c_str()), sPath);
            EXPECT_EQ(sDrive + sDir + sName, sPath);

            std::wstring sParent = sPath + L"\\";
            PathRemoveBackslashW(sParent);
            EXPECT_EQ(sParent, sPath);
            EXPECT_TRUE(fPathRemoveFileSpec(sParent));
            EXPECT_EQ(sPathAppend(sParent, sName), sPath);
            EXPECT_EQ(sPathCommonPrefix(sPath.c_str(), (sParent + L"\\y").c_str()), sParent);
        }
    }
}
