#include "ZkTools/Paths.h"

#include "ZkTools/Exceptions.h"
#include "ZkTools/MessageIds.h"
#include "tests/support/SystemCall.h"

#include <gtest/gtest.h>
#include <winnetwk.h>

#include <algorithm>
#include <cstddef>
#include <cwchar>
#include <random>
#include <string_view>
#include <vector>

namespace {

using testing::PrintToString;

struct TOneToOne {
    wchar_t const * pzGiven;
    wchar_t const * pzExpected;
};

struct TTwoToOne {
    wchar_t const * pzFirst;
    wchar_t const * pzSecond;
    wchar_t const * pzExpected;
};

/// A path of 30,000 characters in directories of `uName` characters, without a backslash at its end.
std::wstring sDeepPath(std::size_t uName) {
    std::wstring sPath = L"C:";
    while (sPath.size() + 1 + uName <= 30000)
        sPath.append(1, L'\\').append(uName, L'd');
    return sPath;
}

std::wstring sJoin(std::vector<std::wstring> const & sTexts) {
    std::wstring sResult;
    for (std::wstring const & sText : sTexts)
        sResult += (sResult.empty() ? L"" : L" | ") + sText;
    return sResult;
}

/// Random texts of the given characters, always the same ones.
class TRandomText {
public:
    explicit TRandomText(std::wstring_view sFrom) : sCharacters(sFrom) {}
    std::wstring sNext(std::size_t uMax) {
        std::wstring sText(tRandom() % (uMax + 1), L' ');
        for (wchar_t & c : sText)
            c = sCharacters[tRandom() % sCharacters.size()];
        return sText;
    }

private:
    std::wstring_view sCharacters;
    std::mt19937 tRandom{20240115};
};

} // namespace

// Splitting and joining

TEST(SplitPath, GivesDirectoryNameAndExtension) {
    struct {
        wchar_t const * pzPath;
        wchar_t const * pzDirectory;
        wchar_t const * pzDirectoryKept;
        wchar_t const * pzName;
        wchar_t const * pzExtension;
    } const atRows[] = {
        {L"C:\\dir\\name.ext", L"C:\\dir", L"C:\\dir\\", L"name", L".ext"},
        {L"C:\\dir\\sub\\name", L"C:\\dir\\sub", L"C:\\dir\\sub\\", L"name", L""},
        {L"C:\\name.ext", L"C:\\", L"C:\\", L"name", L".ext"},
        {L"C:name.ext", L"C:", L"C:", L"name", L".ext"},
        {L"C:\\dir\\", L"C:\\dir", L"C:\\dir\\", L"", L""},
        {L"C:\\dir\\a.b.c", L"C:\\dir", L"C:\\dir\\", L"a.b", L".c"},
        {L"C:\\dir.x\\name", L"C:\\dir.x", L"C:\\dir.x\\", L"name", L""},
        {L"C:\\dir\\.config", L"C:\\dir", L"C:\\dir\\", L"", L".config"},
        {L"C:\\dir\\name.", L"C:\\dir", L"C:\\dir\\", L"name", L"."},
        {L"C:\\dir\\\\name.ext", L"C:\\dir\\", L"C:\\dir\\\\", L"name", L".ext"},
        {L"\\\\server\\share\\name.ext", L"\\\\server\\share", L"\\\\server\\share\\", L"name", L".ext"},
        {L"dir/name.ext", L"dir/", L"dir/", L"name", L".ext"},
        {L"\\name", L"\\", L"\\", L"name", L""},
        {L"name.ext", L"", L"", L"name", L".ext"},
        {L"", L"", L"", L"", L""},
    };
    for (auto const & tRow : atRows) {
        TSplitPath const tSplit = SplitPath(tRow.pzPath, eBackshlashRemove);
        EXPECT_EQ(tSplit.sDirectory, tRow.pzDirectory) << PrintToString(tRow.pzPath);
        EXPECT_EQ(tSplit.sName, tRow.pzName) << PrintToString(tRow.pzPath);
        EXPECT_EQ(tSplit.sExtension, tRow.pzExtension) << PrintToString(tRow.pzPath);
        TSplitPath const tKept = SplitPath(tRow.pzPath, eBackshlashKeep);
        EXPECT_EQ(tKept.sDirectory, tRow.pzDirectoryKept) << PrintToString(tRow.pzPath);
        EXPECT_EQ(tKept.sName, tRow.pzName) << PrintToString(tRow.pzPath);
        EXPECT_EQ(tKept.sExtension, tRow.pzExtension) << PrintToString(tRow.pzPath);
    }
}

TEST(SplitPath, KeepsTheBackslashForEveryValueButZero) {
    EXPECT_EQ(eBackshlashRemove, 0);
    for (int iValue : {1, 2, -1})
        EXPECT_EQ(SplitPath(L"C:\\dir\\name", static_cast<EBackshlash>(iValue)).sDirectory, L"C:\\dir\\") << iValue;
}

TEST(TSplitPath, HasItsFieldsInOrder) {
    TSplitPath const tSplit{L".ext", L"name", L"dir"};
    EXPECT_EQ(tSplit.sExtension, L".ext");
    EXPECT_EQ(tSplit.sName, L"name");
    EXPECT_EQ(tSplit.sDirectory, L"dir");
    EXPECT_LT(static_cast<void const *>(&tSplit.sExtension), static_cast<void const *>(&tSplit.sName));
    EXPECT_LT(static_cast<void const *>(&tSplit.sName), static_cast<void const *>(&tSplit.sDirectory));
}

TEST(PSplitPath, IsEmptyForAPathWithoutAFileName) {
    for (wchar_t const * pzPath : {L"C:\\dir\\", L"C:\\", L"C:", L"", L"\\", L"dir/", L"\\\\server\\share\\"})
        EXPECT_FALSE(pSplitPath(pzPath, eBackshlashKeep)) << PrintToString(pzPath);
}

TEST(PSplitPath, IsTheSplitPathOtherwise) {
    std::optional<TSplitPath> const pSplit = pSplitPath(L"C:\\dir\\name.ext", eBackshlashRemove);
    ASSERT_TRUE(pSplit);
    EXPECT_EQ(pSplit->sDirectory, L"C:\\dir");
    EXPECT_EQ(pSplit->sName, L"name");
    EXPECT_EQ(pSplit->sExtension, L".ext");
    EXPECT_EQ(pSplitPath(L"C:\\dir\\name.ext", eBackshlashKeep)->sDirectory, L"C:\\dir\\");
    EXPECT_TRUE(pSplitPath(L".ext", eBackshlashRemove)); // an extension alone is a file name
    EXPECT_TRUE(pSplitPath(L"C:\\dir", eBackshlashRemove));
}

TEST(SGetFileName, JoinsNameAndExtension) {
    EXPECT_EQ(sGetFileName({L".ext", L"name", L"C:\\dir"}), L"name.ext");
    EXPECT_EQ(sGetFileName({L"ext", L"name", L"C:\\dir"}), L"name.ext");
    EXPECT_EQ(sGetFileName({L"", L"name", L"C:\\dir"}), L"name");
    EXPECT_EQ(sGetFileName({L".ext", L"", L"C:\\dir"}), L".ext");
    EXPECT_EQ(sGetFileName({L".", L"name", L""}), L"name.");
    EXPECT_EQ(sGetFileName({L"", L"", L"C:\\dir"}), L"");
}

TEST(SMerge, JoinsDirectoryAndName) {
    TTwoToOne const atRows[] = {
        {L"C:\\dir", L"name", L"C:\\dir\\name"},
        {L"C:\\dir\\", L"name", L"C:\\dir\\name"},
        {L"C:\\dir", L"\\name", L"C:\\dir\\name"},
        {L"", L"name", L"name"},
        {L"C:\\dir", L"", L"C:\\dir"},
        {L"", L"", L""},
        {L"C:\\dir", L"D:\\name", L"D:\\name"},
        {L"C:\\dir", L"\\\\server\\x", L"\\\\server\\x"},
        {L"C:\\dir", L"..\\name", L"C:\\dir\\..\\name"},
    };
    for (TTwoToOne const & tRow : atRows)
        EXPECT_EQ(sMerge(tRow.pzFirst, tRow.pzSecond), tRow.pzExpected) << PrintToString(tRow.pzSecond);
}

TEST(SMerge, GivesTheExtensionItsPoint) {
    EXPECT_EQ(sMerge(L"C:\\dir", L"name", L"ext"), L"C:\\dir\\name.ext");
    EXPECT_EQ(sMerge(L"C:\\dir", L"name", L".ext"), L"C:\\dir\\name.ext");
    EXPECT_EQ(sMerge(L"C:\\dir", L"name", L"..ext"), L"C:\\dir\\name..ext");
    EXPECT_EQ(sMerge(L"C:\\dir", L"name", L"."), L"C:\\dir\\name.");
    EXPECT_EQ(sMerge(L"C:\\dir", L"name", L""), L"C:\\dir\\name");
    EXPECT_EQ(sMerge(L"C:\\dir\\", L"name.old", L"ext"), L"C:\\dir\\name.old.ext");
    EXPECT_EQ(sMerge(L"", L"name", L"ext"), L"name.ext");
    EXPECT_EQ(sMerge(L"C:\\dir", L"", L"ext"), L"C:\\dir\\.ext");
    EXPECT_EQ(sMerge(L"C:\\dir", L"", L""), L"C:\\dir");
}

TEST(SPathRemoveFileSpec, RemovesTheLastComponent) {
    TOneToOne const atRows[] = {
        {L"C:\\dir\\name.ext", L"C:\\dir"},
        {L"C:\\dir\\", L"C:\\dir"},
        {L"C:\\name", L"C:\\"},
        {L"C:\\", L"C:\\"},
        {L"\\\\server\\share\\dir", L"\\\\server\\share"},
        {L"\\\\server\\share", L"\\\\server\\share"},
        {L"dir\\name", L"dir"},
        {L"name", L""},
        {L"", L""},
    };
    for (TOneToOne const & tRow : atRows)
        EXPECT_EQ(sPathRemoveFileSpec(tRow.pzGiven), tRow.pzExpected) << PrintToString(tRow.pzGiven);
}

TEST(SReplaceFileExtention, ReplacesTheExtension) {
    struct {
        wchar_t const * pzPath;
        wchar_t const * pzExtension;
        wchar_t const * pzExpected;
        wchar_t const * pzExpectedName;
    } const atRows[] = {
        {L"C:\\dir\\name.ext", L".new", L"C:\\dir\\name.new", L"name.new"},
        {L"C:\\dir\\name.ext", L"new", L"C:\\dir\\name.new", L"name.new"},
        {L"C:\\dir\\name.ext", L"", L"C:\\dir\\name", L"name"},
        {L"C:\\dir\\name.ext", L".", L"C:\\dir\\name.", L"name."},
        {L"C:\\dir\\a.b.c", L"new", L"C:\\dir\\a.b.new", L"a.b.new"},
        {L"C:\\dir\\name", L"new", L"C:\\dir\\name.new", L"name.new"},
        {L"C:\\name.ext", L"new", L"C:\\name.new", L"name.new"},
        {L"name.ext", L"new", L"name.new", L"name.new"},
        {L"C:\\dir\\", L"new", L"C:\\dir\\.new", L".new"},
        {L"", L"new", L".new", L".new"},
    };
    for (auto const & tRow : atRows) {
        EXPECT_EQ(sReplaceFileExtention(tRow.pzPath, tRow.pzExtension, false), tRow.pzExpected);
        EXPECT_EQ(sReplaceFileExtention(tRow.pzPath, tRow.pzExtension, true), tRow.pzExpectedName);
    }
}

TEST(SReplaceDirectory, PutsTheFileNameIntoAnotherDirectory) {
    TTwoToOne const atRows[] = {
        {L"C:\\dir\\name.ext", L"D:\\new", L"D:\\new\\name.ext"},
        {L"C:\\dir\\name.ext", L"D:\\new\\", L"D:\\new\\name.ext"},
        {L"C:\\dir\\name.ext", L"D:\\", L"D:\\name.ext"},
        {L"C:\\dir\\name.ext", L"", L"name.ext"},
        {L"name.", L"D:\\new", L"D:\\new\\name."},
        {L"C:\\dir\\", L"D:\\new", L"D:\\new"},
    };
    for (TTwoToOne const & tRow : atRows)
        EXPECT_EQ(sReplaceDirectory(tRow.pzFirst, tRow.pzSecond), tRow.pzExpected) << PrintToString(tRow.pzFirst);
}

TEST(SGetFullPath, JoinsThreeParts) {
    EXPECT_EQ(sGetFullPath(L"C:\\a", L"b", L"c.txt"), L"C:\\a\\b\\c.txt");
    EXPECT_EQ(sGetFullPath(L"C:\\a\\", L"\\b\\", L"c.txt"), L"C:\\a\\b\\c.txt");
    EXPECT_EQ(sGetFullPath(L"C:\\a", L"", L"c.txt"), L"C:\\a\\c.txt");
    EXPECT_EQ(sGetFullPath(L"", L"", L"c.txt"), L"c.txt");
    EXPECT_EQ(sGetFullPath(L"", L"", L""), L"");
}

TEST(ClearBackslash, RemovesOneBackslashButThatOfARoot) {
    TOneToOne const atRows[] = {
        {L"C:\\dir\\", L"C:\\dir"},
        {L"C:\\dir\\\\", L"C:\\dir\\"},
        {L"C:\\dir", L"C:\\dir"},
        {L"C:\\", L"C:\\"},
        {L"\\", L"\\"},
        {L"dir/", L"dir/"},
        {L"dir\\", L"dir"},
        {L"\\\\server\\share\\", L"\\\\server\\share"},
        {L"", L""},
    };
    for (TOneToOne const & tRow : atRows) {
        std::wstring sInPlace = tRow.pzGiven;
        ClearBackslash(sInPlace);
        EXPECT_EQ(sInPlace, tRow.pzExpected) << PrintToString(tRow.pzGiven);
        EXPECT_EQ(sClearBackslash(tRow.pzGiven), tRow.pzExpected) << PrintToString(tRow.pzGiven);
    }
}

TEST(SAppendBackslash, AddsOneUnlessThereIsOne) {
    TOneToOne const atRows[] = {
        {L"", L"\\"}, {L"\\", L"\\"}, {L"C:\\dir", L"C:\\dir\\"}, {L"C:\\dir\\", L"C:\\dir\\"}, {L"dir/", L"dir/\\"},
    };
    for (TOneToOne const & tRow : atRows)
        EXPECT_EQ(sAppendBackslash(tRow.pzGiven), tRow.pzExpected) << PrintToString(tRow.pzGiven);
}

TEST(SAppendSlash, AddsOneUnlessThereIsOne) {
    TOneToOne const atRows[] = {
        {L"", L"/"}, {L"/", L"/"}, {L"a/b", L"a/b/"}, {L"a/b/", L"a/b/"}, {L"dir\\", L"dir\\/"},
    };
    for (TOneToOne const & tRow : atRows)
        EXPECT_EQ(sAppendSlash(tRow.pzGiven), tRow.pzExpected) << PrintToString(tRow.pzGiven);
}

TEST(SGetCommonPrefix, GoesByWholeComponentsWithoutRegardToCase) {
    TTwoToOne const atRows[] = {
        {L"C:\\a\\b", L"C:\\a\\c", L"C:\\a"},
        {L"C:\\abc", L"C:\\abd", L"C:\\"},
        {L"C:\\A\\b", L"c:\\a\\c", L"C:\\A"},
        {L"C:\\a", L"C:\\a", L"C:\\a"},
        {L"C:\\a", L"D:\\a", L""},
        {L"C:\\a", L"C:\\a\\b", L"C:\\a"},
        {L"C:\\a\\b", L"C:\\a", L"C:\\a"},
        {L"", L"C:\\a", L""},
    };
    for (TTwoToOne const & tRow : atRows)
        EXPECT_EQ(sGetCommonPrefix(tRow.pzFirst, tRow.pzSecond), tRow.pzExpected) << PrintToString(tRow.pzSecond);
}

// Tests

TEST(FIsAbsolutePath, WantsADriveOrTwoBackslashes) {
    for (wchar_t const * pzPath : {L"C:\\a", L"C:/a", L"C:a", L"C:", L"1:\\a", L"\\\\server\\share", L"\\\\"})
        EXPECT_TRUE(fIsAbsolutePath(pzPath)) << PrintToString(pzPath);
    for (wchar_t const * pzPath : {L"", L"\\", L"\\a", L"//server/share", L"\\/a", L"a", L"..\\a", L"a\\b:c"})
        EXPECT_FALSE(fIsAbsolutePath(pzPath)) << PrintToString(pzPath);
}

TEST(FIsValidDrive, AsksForTheDrivesOfTheMachine) {
    zk_test::TSystemCall<"GetLogicalDrives", decltype(GetLogicalDrives)> const tDrives(
        [] { return DWORD{1U | 1U << 2 | 1U << 25}; });
    for (wchar_t const * pzPath : {L"A:\\", L"a:\\x", L"C:", L"c:x", L"C:\\dir\\name", L"Z:\\", L"z:/"})
        EXPECT_TRUE(fIsValidDrive(pzPath)) << PrintToString(pzPath);
    for (wchar_t const * pzPath : {L"B:\\", L"d:\\x", L"Y:", L"1:\\", L"@:\\", L"[:\\", L"`:\\", L"{:\\", L"\u00E1:\\"})
        EXPECT_FALSE(fIsValidDrive(pzPath)) << PrintToString(pzPath);
}

TEST(FIsValidDrive, WithoutADriveWantsTwoBackslashes) {
    for (wchar_t const * pzPath : {L"\\\\server\\share", L"\\\\"})
        EXPECT_TRUE(fIsValidDrive(pzPath)) << PrintToString(pzPath);
    for (wchar_t const * pzPath : {L"", L"\\", L"\\a", L"//server", L"a", L"a\\b"})
        EXPECT_FALSE(fIsValidDrive(pzPath)) << PrintToString(pzPath);
}

TEST(FIsValidPath, AllowsBackslashesAndTheColonOfADriveThatThereIs) {
    zk_test::TSystemCall<"GetLogicalDrives", decltype(GetLogicalDrives)> const tDrives([] { return DWORD{1U << 2}; });
    for (wchar_t const * pzPath : {L"C:\\a\\b.txt", L"c:a", L"C:", L"\\\\server\\share", L"a\\b", L"", L"\\",
                                   L"C:\\a\u00AEb", L"..\\x", L"C:\\%\\#"})
        EXPECT_TRUE(fIsValidPath(pzPath)) << PrintToString(pzPath);
    // The drive that the machine lacks shows by its colon.
    for (wchar_t const * pzPath : {L"D:\\a", L"1:\\a", L"C:\\a:b", L"\\\\server\\a:b", L"\\\\?\\C:\\a"})
        EXPECT_FALSE(fIsValidPath(pzPath)) << PrintToString(pzPath);
    for (wchar_t c : std::wstring(L"/:*?\"<>|"))
        EXPECT_FALSE(fIsValidPath(std::wstring(L"C:\\a") + c + L"b")) << static_cast<int>(c);
}

TEST(FIsValidName, RefusesTheDefaultSetForANullSet) {
    for (wchar_t c : std::wstring(L"/\\:*?\"<>|\u00AE")) {
        EXPECT_FALSE(fIsValidName((std::wstring(L"a") + c + L"b").c_str(), nullptr)) << static_cast<int>(c);
        EXPECT_FALSE(fIsValidName(std::wstring(1, c).c_str(), nullptr)) << static_cast<int>(c);
    }
    for (wchar_t const * pzName : {L"", L"name.ext", L" ", L".", L"%#~{}[]'`", L"a\u00A9b", L"\u4E2D"})
        EXPECT_TRUE(fIsValidName(pzName, nullptr)) << PrintToString(pzName);
}

TEST(FIsValidName, TakesAnotherSet) {
    EXPECT_TRUE(fIsValidName(L"a\u00AEb", L"/:*?\"<>|"));
    EXPECT_TRUE(fIsValidName(L"a\\b", L"/:*?\"<>|"));
    EXPECT_FALSE(fIsValidName(L"a/b", L"/:*?\"<>|"));
    EXPECT_FALSE(fIsValidName(L"abc", L"xc"));
    EXPECT_TRUE(fIsValidName(L"a/b*c", L"")); // an empty set refuses nothing
}

TEST(XIsValidName, ThrowsMessage4328WithTheSet) {
    EXPECT_NO_THROW(xIsValidName(L"name", nullptr));
    EXPECT_NO_THROW(xIsValidName(L"a\u00AEb", L"/:"));
    struct {
        wchar_t const * pzName;
        wchar_t const * pzInvalid;
        wchar_t const * pzArgument;
    } const atRows[] = {
        {L"a\u00AEb", nullptr, L"/\\:*?\"<>|\u00AE"},
        {L"a%b", L"%s%d", L"%s%d"},
    };
    for (auto const & tRow : atRows) {
        try {
            xIsValidName(tRow.pzName, tRow.pzInvalid);
            ADD_FAILURE() << "nothing thrown";
        } catch (TXZkTools const & tError) {
            EXPECT_EQ(tError.iGetNumber(), 4328);
            EXPECT_STREQ(tError.what(), TXZkTools(IDS_INVALID_NAME, tRow.pzArgument).what());
        }
    }
}

TEST(FPathIsChild, ComparesWholeComponentsWithoutRegardToCase) {
    struct {
        wchar_t const * pzFirst;
        wchar_t const * pzSecond;
        bool fExpected;
    } const atRows[] = {
        {L"C:\\a", L"C:\\a\\b", true},
        {L"C:\\a", L"C:\\a", true},
        {L"C:\\A", L"c:\\a\\b\\c", true},
        {L"C:\\\u00C4", L"C:\\\u00E4\\b", true},
        {L"C:\\", L"C:\\a", true},
        {L"C:\\a", L"C:\\ab", false},
        {L"C:\\a\\b", L"C:\\a", false},
        {L"C:\\a", L"D:\\a\\b", false},
        {L"\\\\server\\share", L"\\\\server\\share\\a", true},
        // The prefix has no backslash at its end, so a first path with one is never equal to it.
        {L"C:\\a\\", L"C:\\a\\b", false},
    };
    for (auto const & tRow : atRows)
        EXPECT_EQ(fPathIsChild(tRow.pzFirst, tRow.pzSecond), tRow.fExpected)
            << PrintToString(tRow.pzFirst) << PrintToString(tRow.pzSecond);
}

// Replacing characters

TEST(ReplaceSlashes, TurnsEachOfThem) {
    TOneToOne const atToBack[] = {{L"a/b\\c//d/", L"a\\b\\c\\\\d\\"}, {L"abc", L"abc"}, {L"", L""}};
    for (TOneToOne const & tRow : atToBack) {
        std::wstring sPath = tRow.pzGiven;
        ReplaceSlashByBackSlash(sPath);
        EXPECT_EQ(sPath, tRow.pzExpected);
    }
    TOneToOne const atToForward[] = {{L"a/b\\c\\\\d\\", L"a/b/c//d/"}, {L"abc", L"abc"}, {L"", L""}};
    for (TOneToOne const & tRow : atToForward) {
        std::wstring sPath = tRow.pzGiven;
        ReplaceBackSlashBySlash(sPath);
        EXPECT_EQ(sPath, tRow.pzExpected);
    }
    TOneToOne const atToDouble[] = {{L"\\a\\b\\\\c\\", L"\\\\a\\\\b\\\\\\\\c\\\\"}, {L"a/b", L"a/b"}, {L"", L""}};
    for (TOneToOne const & tRow : atToDouble) {
        std::wstring sPath = tRow.pzGiven;
        ReplaceBackSlashByDoubleBackSlash(sPath);
        EXPECT_EQ(sPath, tRow.pzExpected);
    }
}

namespace {

struct TReplaceName {
    wchar_t const * pzGiven;
    wchar_t const * pzInvalid;
    wchar_t cReplacement;
    wchar_t const * pzExpected;
    std::ptrdiff_t iResult; // of the form with the buffer
};

constexpr TReplaceName atReplaceName[] = {
    {L"a:b*c", nullptr, L'_', L"a_b_c", 3},
    {L"a/b", nullptr, L'_', L"a_b", 1},
    {L":", nullptr, L'_', L"_", 0},
    {L"/\\:*?\"<>|\u00AE", nullptr, L'-', L"----------", 9},
    {L"abc", nullptr, L'_', L"abc", 0},
    {L"", nullptr, L'_', L"", 0},
    {L"a:b", L"b", L'_', L"a:_", 2},
    {L"a:b", L"", L'_', L"a:b", 0},
    {L"a:b*c", nullptr, 0, L"abc", 0},
    {L"/\\:*?\"<>|\u00AE", nullptr, 0, L"", 0},
    {L"::a", nullptr, 0, L"a", 0},
    {L"a::", nullptr, 0, L"a", 0},
    {L"abcabc", L"bc", 0, L"aa", 0},
    {L"abc", nullptr, 0, L"abc", 0},
    {L"", nullptr, 0, L"", 0},
};

} // namespace

TEST(PzReplaceInvalidNameChars, GivesTheLastPositionReplaced) {
    for (TReplaceName const & tRow : atReplaceName) {
        std::wstring sBuffer = tRow.pzGiven;
        wchar_t * const pzResult = pzReplaceInvalidNameChars(sBuffer.data(), tRow.pzInvalid, tRow.cReplacement);
        EXPECT_STREQ(sBuffer.c_str(), tRow.pzExpected) << PrintToString(tRow.pzGiven);
        EXPECT_EQ(pzResult - sBuffer.data(), tRow.iResult) << PrintToString(tRow.pzGiven);
    }
}

TEST(ReplaceInvalidNameChars, DoesTheSameToAString) {
    for (TReplaceName const & tRow : atReplaceName) {
        std::wstring sName = tRow.pzGiven;
        ReplaceInvalidNameChars(sName, tRow.pzInvalid, tRow.cReplacement);
        EXPECT_EQ(sName, tRow.pzExpected) << PrintToString(tRow.pzGiven);
        EXPECT_EQ(sReplaceInvalidNameChars(tRow.pzGiven, tRow.pzInvalid, tRow.cReplacement), tRow.pzExpected);
    }
}

TEST(SReplaceInvalidNameChars, LeavesItsArgumentAlone) {
    std::wstring const sName = L"a:b";
    EXPECT_EQ(sReplaceInvalidNameChars(sName, nullptr, L'_'), L"a_b");
    EXPECT_EQ(sName, L"a:b");
}

TEST(ReplaceInvalidNameChars, TakesVeryLongNames) {
    std::wstring sName, sReplaced, sRemoved;
    for (int i = 0; i < 15000; ++i) {
        sName += L"x:";
        sReplaced += L"x_";
        sRemoved += L"x";
    }
    EXPECT_EQ(sReplaceInvalidNameChars(sName, nullptr, L'_'), sReplaced);
    EXPECT_EQ(sReplaceInvalidNameChars(sName, nullptr, 0), sRemoved);
    std::wstring sBuffer = sName;
    EXPECT_EQ(pzReplaceInvalidNameChars(sBuffer.data(), nullptr, L'_'), sBuffer.data() + 29999);
    EXPECT_EQ(sBuffer, sReplaced);
    sBuffer = sName;
    EXPECT_EQ(pzReplaceInvalidNameChars(sBuffer.data(), nullptr, 0), sBuffer.data());
    EXPECT_STREQ(sBuffer.c_str(), sRemoved.c_str());
}

TEST(SReplaceNotUriCharInFileName, ReplacesEighteenCharacters) {
    std::wstring const sSet = L"%\n \"#@`:<>[\\]^{|}~";
    ASSERT_EQ(sSet.size(), 18U);
    for (unsigned int u = 1; u < 0x180; ++u) {
        wchar_t const c = static_cast<wchar_t>(u);
        bool const fInSet = sSet.find(c) != std::wstring::npos;
        std::wstring const sName = {L'a', c, L'b', c};
        EXPECT_EQ(sReplaceNotUriCharInFileName(sName, L'_'), fInSet ? L"a_b_" : sName) << u;
        EXPECT_EQ(sReplaceNotUriCharInFileName(sName, 0), fInSet ? L"ab" : sName) << u;
    }
    EXPECT_EQ(sReplaceNotUriCharInFileName(sSet, L'+'), std::wstring(18, L'+'));
    EXPECT_EQ(sReplaceNotUriCharInFileName(sSet, 0), L"");
    EXPECT_EQ(sReplaceNotUriCharInFileName(L"", L'_'), L"");
}

/// The rule word by word: a pass for each character.
TEST(SReplaceNotUriCharInFileName, DoesWhatOnePassACharacterDoes) {
    std::wstring const sSet = L"%\n \"#@`:<>[\\]^{|}~";
    TRandomText tTexts(L"%\n \"#@`:<>[\\]^{|}~abc._/");
    for (wchar_t cReplacement : sSet + L"_x") {
        for (int i = 0; i < 50; ++i) {
            std::wstring const sName = tTexts.sNext(30);
            std::wstring sExpected = sName;
            for (wchar_t c : sSet)
                std::ranges::replace(sExpected, c, cReplacement);
            EXPECT_EQ(sReplaceNotUriCharInFileName(sName, cReplacement), sExpected) << PrintToString(sName);
        }
    }
}

TEST(StripDotBSlash, LeavesTheClimbingFormAlone) {
    TOneToOne const atRows[] = {
        {L".\\a", L"a"},
        {L"a\\.\\b", L"a\\b"},
        {L"a\\.\\.\\b", L"a\\b"},
        {L".\\.\\.\\", L""},
        {L"..\\a", L"..\\a"},
        {L"..\\..\\a", L"..\\..\\a"},
        {L"..\\.\\a", L"..\\a"},
        {L".\\..\\a", L"..\\a"},
        {L"...\\a", L"...\\a"},
        {L"....\\.\\a", L"....\\a"},
        {L"a\\.", L"a\\."},
        {L".", L"."},
        {L"\\", L"\\"},
        {L"", L""},
        {L"a.b\\c", L"a.b\\c"},
        // No component is looked at whole: this name loses its point, and the backslash goes with it.
        {L"dir.\\name", L"dirname"},
        {L"dir..\\name", L"dir..\\name"},
        {L"a./b", L"a./b"},
    };
    for (TOneToOne const & tRow : atRows) {
        std::wstring sPath = tRow.pzGiven;
        StripDotBSlash(sPath);
        EXPECT_EQ(sPath, tRow.pzExpected) << PrintToString(tRow.pzGiven);
    }
}

/// The rule word by word: find the two characters, skip or remove them, go on.
TEST(StripDotBSlash, DoesWhatTheRuleSaysWithAnyText) {
    TRandomText tTexts(L"..\\\\a");
    for (int i = 0; i < 20000; ++i) {
        std::wstring const sPath = tTexts.sNext(16);
        std::wstring sExpected = sPath;
        for (std::size_t u = 0; (u = sExpected.find(L".\\", u)) != std::wstring::npos;) {
            if (u > 0 && sExpected[u - 1] == L'.') {
                u += 2;
            } else {
                sExpected.erase(u, 2);
            }
        }
        std::wstring sStripped = sPath;
        StripDotBSlash(sStripped);
        ASSERT_EQ(sStripped, sExpected) << PrintToString(sPath);
    }
}

// The network

namespace {

using TUniversalName = zk_test::TSystemCall<"WNetGetUniversalNameW", decltype(WNetGetUniversalNameW)>;

} // namespace

TEST(SConvertToUNC, GivesTheNetworkFormOfAConnectedDrive) {
    std::wstring const sNetwork = L"\\\\server\\share\\dir\\name.ext";
    constexpr DWORD dwReported = 100;
    std::vector<DWORD> dwSizes;
    TUniversalName const tCall([&](LPCWSTR pzPath, DWORD dwLevel, LPVOID pBuffer, LPDWORD pdwSize) -> DWORD {
        EXPECT_STREQ(pzPath, L"X:\\dir\\name.ext");
        EXPECT_EQ(dwLevel, static_cast<DWORD>(UNIVERSAL_NAME_INFO_LEVEL));
        dwSizes.push_back(*pdwSize);
        if (*pdwSize < dwReported) {
            *pdwSize = dwReported;
            return ERROR_MORE_DATA;
        }
        auto * const pInfo = static_cast<UNIVERSAL_NAME_INFOW *>(pBuffer);
        pInfo->lpUniversalName = reinterpret_cast<wchar_t *>(pInfo + 1);
        std::wcscpy(pInfo->lpUniversalName, sNetwork.c_str());
        return NO_ERROR;
    });
    EXPECT_EQ(sConvertToUNC(L"X:\\dir\\name.ext"), sNetwork);
    EXPECT_EQ(dwSizes, (std::vector<DWORD>{0, 2 * dwReported + 2}));
}

TEST(SConvertToUNC, GivesEveryOtherPathBack) {
    for (DWORD dwAnswer : {DWORD{NO_ERROR}, DWORD{ERROR_BAD_DEVICE}, DWORD{ERROR_NOT_CONNECTED}}) {
        TUniversalName const tCall([&](LPCWSTR, DWORD, LPVOID, LPDWORD) { return dwAnswer; });
        EXPECT_EQ(sConvertToUNC(L"C:\\dir"), L"C:\\dir") << dwAnswer;
        EXPECT_EQ(tCall.iGetCalls(), 1) << dwAnswer;
    }
}

TEST(SConvertToUNC, GivesThePathBackWhenTheSecondCallFails) {
    for (DWORD dwAnswer : {DWORD{ERROR_MORE_DATA}, DWORD{ERROR_NO_NETWORK}}) {
        TUniversalName const tCall([&](LPCWSTR, DWORD, LPVOID, LPDWORD pdwSize) -> DWORD {
            if (*pdwSize != 0) return dwAnswer;
            *pdwSize = 10;
            return ERROR_MORE_DATA;
        });
        EXPECT_EQ(sConvertToUNC(L"X:\\dir"), L"X:\\dir") << dwAnswer;
        EXPECT_EQ(tCall.iGetCalls(), 2) << dwAnswer;
    }
}

TEST(SConvertToUNC, LeavesLocalPathsOfThisMachineAlone) {
    for (wchar_t const * pzPath : {L"C:\\", L"C:\\windows", L"relative", L""})
        EXPECT_EQ(sConvertToUNC(pzPath), pzPath);
}

// Ancestors

TEST(GetPathAndAncestors, GivesThePathFirstAndTheRootLast) {
    TOneToOne const atRows[] = {
        {L"C:\\a\\b", L"C:\\a\\b | C:\\a | C:\\"},
        {L"C:\\a", L"C:\\a | C:\\"},
        {L"C:\\", L"C:\\"},
        {L"z:\\a.b\\c d", L"z:\\a.b\\c d | z:\\a.b | z:\\"},
        {L"C:\\a\\", L"C:\\a\\ | C:\\a | C:\\"},
        {L"C:\\a/b\\c", L"C:\\a/b\\c | C:\\a/b | C:\\"},
        {L"\\\\server\\share\\a\\b", L"\\\\server\\share\\a\\b | \\\\server\\share\\a | \\\\server\\share"},
        {L"\\\\server\\share", L"\\\\server\\share"},
        // Nothing: too short, relative, a bare server, no letter with colon and backslash in front.
        {L"", L""},
        {L"C:", L""},
        {L"\\\\", L""},
        {L"a\\b\\c", L""},
        {L"abc", L""},
        {L"\\\\server", L""},
        {L"\\a\\b", L""},
        {L"C:/a/b", L""},
        {L"C:a\\b", L""},
        {L"1:\\a", L""},
        {L"@:\\a", L""},
        {L"\u00C4:\\a", L""},
    };
    for (TOneToOne const & tRow : atRows)
        EXPECT_EQ(sJoin(GetPathAndAncestors(tRow.pzGiven)), tRow.pzExpected) << PrintToString(tRow.pzGiven);
}

TEST(GetPathAndAncestors, GivesNothingWhenNoRootComes) {
    // A server and a backslash: no bare server any more, but no share either.
    EXPECT_TRUE(GetPathAndAncestors(L"\\\\server\\").empty());
}

TEST(GetPathAndAncestors, TakesVeryLongPaths) {
    std::wstring const sPath = sDeepPath(5000);
    std::vector<std::wstring> const sAll = GetPathAndAncestors(sPath);
    ASSERT_EQ(sAll.size(), 6U);
    EXPECT_EQ(sAll.front(), sPath);
    EXPECT_EQ(sAll[1], sPath.substr(0, sPath.size() - 5001));
    EXPECT_EQ(sAll.back(), L"C:\\");
}

// Relative and absolute

TEST(SMakePathRelative, ClimbsAndDescends) {
    TTwoToOne const atRows[] = {
        {L"C:\\a\\b", L"C:\\a\\c\\f.txt", L"..\\c\\f.txt"},
        {L"C:\\a\\b\\", L"C:\\a\\c\\f.txt", L"..\\c\\f.txt"},
        {L"c:\\A", L"C:\\a\\f", L"f"},
        {L"C:\\a", L"C:\\a\\b\\c\\f", L"b\\c\\f"},
        {L"C:\\a\\b\\c", L"C:\\f", L"..\\..\\..\\f"},
        {L"C:\\", L"C:\\a\\f", L"a\\f"},
        {L"C:\\abc", L"C:\\abd\\f", L"..\\abd\\f"},
        {L"C:\\ab", L"C:\\abc\\f", L"..\\abc\\f"},
        {L"C:\\abc", L"C:\\ab\\f", L"..\\ab\\f"},
        {L"C:\\a\\b", L"C:\\a\\b", L"..\\b"}, // the path names a file in C:\a
        {L"C:\\a", L"C:\\A\\B", L"B"},
        {L"\\\\server\\share\\a", L"\\\\server\\share\\b\\f", L"..\\b\\f"},
        // Servers that differ still have their two backslashes in common.
        {L"\\\\one\\share", L"\\\\two\\share\\f", L"..\\..\\two\\share\\f"},
        {L"a\\b", L"a\\c\\f", L"..\\c\\f"},
        // Nothing in common.
        {L"C:\\a", L"D:\\a\\f", L"D:\\a\\f"},
        {L"C:\\a", L"f", L"f"},
        {L"C:\\a", L"", L""},
        {L"C:/a", L"C:/b/f", L"C:/b/f"},
        // A double backslash is a level, too.
        {L"C:\\a\\\\b", L"C:\\a\\f", L"..\\..\\f"},
    };
    for (TTwoToOne const & tRow : atRows)
        EXPECT_EQ(sMakePathRelative(tRow.pzFirst, tRow.pzSecond), tRow.pzExpected)
            << PrintToString(tRow.pzFirst) << PrintToString(tRow.pzSecond);
}

TEST(SMakePathRelative, TakesVeryLongPaths) {
    std::wstring const sBase = sDeepPath(4999);
    EXPECT_EQ(sMakePathRelative(sBase.c_str(), (sBase + L"\\f").c_str()), L"f");
    EXPECT_EQ(sMakePathRelative(L"C:\\", sBase.c_str()), sBase.substr(3));
    std::wstring const sUp = sMakePathRelative(sDeepPath(1).c_str(), L"C:\\f");
    EXPECT_EQ(sUp.size(), 14999U * 3 + 1);
    EXPECT_TRUE(sUp.starts_with(L"..\\..\\") && sUp.ends_with(L"\\..\\f"));
}

TEST(SMakeDirRelative, OfTextsNeverEndsInABackslash) {
    TTwoToOne const atRows[] = {
        {L"C:\\a\\b", L"C:\\a\\b", L""},
        {L"C:\\a\\b\\", L"C:\\a\\b", L""},
        {L"C:\\a\\b", L"C:\\A\\B\\", L""},
        {L"C:\\a", L"C:\\a\\b", L"b"},
        {L"C:\\a", L"C:\\a\\b\\", L"b"},
        {L"C:\\a", L"C:\\a\\b\\c", L"b\\c"},
        {L"C:\\a\\b", L"C:\\a", L".."},
        {L"C:\\a\\b\\c", L"C:\\a", L"..\\.."},
        {L"C:\\a\\b", L"C:\\a\\c", L"..\\c"},
        {L"C:\\a", L"C:\\", L".."},
        {L"C:\\", L"C:\\", L""},
        {L"C:\\", L"C:\\a", L"a"},
        {L"C:\\a", L"D:\\b", L"D:\\b"},
        {L"C:\\a", L"D:\\b\\", L"D:\\b"},
        {L"C:\\a", L"D:\\", L"D:"}, // cut at the last backslash, of a root too
        {L"C:\\a", L"", L""},
    };
    for (TTwoToOne const & tRow : atRows)
        EXPECT_EQ(sMakeDirRelative(tRow.pzFirst, tRow.pzSecond), tRow.pzExpected)
            << PrintToString(tRow.pzFirst) << PrintToString(tRow.pzSecond);
}

TEST(SMakeDirRelative, OfStringsKeepsTheBackslashAtTheEnd) {
    TTwoToOne const atRows[] = {
        {L"C:\\a\\b", L"C:\\a\\b", L""},
        {L"C:\\a\\b\\", L"C:\\a\\b", L""},
        {L"C:\\a\\b", L"C:\\A\\B\\", L""},
        {L"C:\\a", L"C:\\a\\b", L"b"},
        {L"C:\\a", L"C:\\a\\b\\", L"b\\"},
        {L"C:\\a", L"C:\\a\\b\\c", L"b\\c"},
        {L"C:\\a\\b", L"C:\\a", L"..\\"},
        {L"C:\\a\\b\\c", L"C:\\a", L"..\\..\\"},
        {L"C:\\a\\b", L"C:\\a\\c", L"..\\c"},
        {L"C:\\a\\b", L"C:\\a\\c\\", L"..\\c\\"},
        {L"C:\\a", L"C:\\", L"..\\"},
        {L"C:\\", L"C:\\", L""},
        {L"C:\\", L"C:\\a", L"a"},
        {L"C:\\a", L"D:\\b", L"D:\\b"},
        {L"C:\\a", L"D:\\b\\", L"D:\\b\\"},
        {L"C:\\a", L"D:\\", L"D:\\"},
        {L"C:\\a", L"", L""},
        {L"", L"C:\\a", L"C:\\a"},
        {L"", L"", L""},
    };
    for (TTwoToOne const & tRow : atRows)
        EXPECT_EQ(sMakeDirRelative(std::wstring(tRow.pzFirst), std::wstring(tRow.pzSecond)), tRow.pzExpected)
            << PrintToString(tRow.pzFirst) << PrintToString(tRow.pzSecond);
}

TEST(SMakePathAbsolute, ResolvesAllComponentsButTheLast) {
    TTwoToOne const atRows[] = {
        {L"C:\\a\\b", L"f.txt", L"C:\\a\\b\\f.txt"},
        {L"C:\\a\\b\\", L"f.txt", L"C:\\a\\b\\f.txt"},
        {L"C:\\a\\b", L"c\\f.txt", L"C:\\a\\b\\c\\f.txt"},
        {L"C:\\a\\b", L"..\\c\\f.txt", L"C:\\a\\c\\f.txt"},
        {L"C:\\a\\b", L"..\\..\\c", L"C:\\c"},
        {L"C:\\a\\b", L"c\\..\\d\\..\\f", L"C:\\a\\b\\f"},
        {L"C:\\", L"a", L"C:\\a"},
        {L"C:\\", L"a\\b", L"C:\\a\\b"},
        // Empty components fall out, single points do not.
        {L"C:\\a", L"b\\\\c", L"C:\\a\\b\\c"},
        {L"C:\\a", L"\\b\\c", L"C:\\a\\b\\c"},
        {L"C:\\a", L".\\b", L"C:\\a\\.\\b"},
        {L"C:\\a", L"...\\b", L"C:\\a\\...\\b"},
        {L"C:\\a", L"../b", L"C:\\a\\../b"},
        // The last one stays whatever it is.
        {L"C:\\a", L"..", L"C:\\a\\.."},
        {L"C:\\a", L".", L"C:\\a\\."},
        {L"C:\\a", L"b\\..", L"C:\\a\\b\\.."},
        {L"C:\\a", L"b\\", L"C:\\a\\b\\"},
        {L"C:\\a\\b", L"..\\", L"C:\\a\\"},
        {L"C:\\a", L"\\", L"C:\\a\\"},
        {L"C:\\a", L"", L"C:\\a\\"},
        {L"C:\\a\\", L"", L"C:\\a\\"},
        {L"", L"a", L"\\a"},
        // Higher than the base is deep: nothing is resolved.
        {L"C:\\a\\b", L"..\\..\\..\\c", L"..\\..\\..\\c"},
        {L"a", L"..\\c", L"..\\c"},
        {L"", L"..\\c", L"..\\c"},
        {L"C:\\a", L"b\\..\\..\\..\\c", L"b\\..\\..\\..\\c"},
        {L"\\\\server\\share", L"..\\c", L"\\\\server\\c"},
        // Absolute already.
        {L"C:\\a", L"D:\\b\\..\\c", L"D:\\b\\..\\c"},
        {L"C:\\a", L"D:b", L"D:b"},
        {L"C:\\a", L"\\\\server\\share\\x", L"\\\\server\\share\\x"},
    };
    for (TTwoToOne const & tRow : atRows)
        EXPECT_EQ(sMakePathAbsolute(tRow.pzFirst, tRow.pzSecond), tRow.pzExpected)
            << PrintToString(tRow.pzFirst) << PrintToString(tRow.pzSecond);
}

TEST(SMakePathAbsolute, AppendsAFile) {
    EXPECT_EQ(sMakePathAbsolute(L"C:\\a\\b", L"..\\c", L"f.txt"), L"C:\\a\\c\\f.txt");
    EXPECT_EQ(sMakePathAbsolute(L"C:\\a", L"", L"f.txt"), L"C:\\a\\f.txt");
    EXPECT_EQ(sMakePathAbsolute(L"C:\\a", L"..", L"f.txt"), L"C:\\a\\..\\f.txt");
    EXPECT_EQ(sMakePathAbsolute(L"C:\\a", L"D:\\b", L"f.txt"), L"D:\\b\\f.txt");
    EXPECT_EQ(sMakePathAbsolute(L"C:\\a", L"b", L""), L"C:\\a\\b");
}

TEST(SMakePathAbsolute, FindsBackWhatSMakePathRelativeMade) {
    std::mt19937 tRandom(4711);
    auto const sRandomPath = [&tRandom](unsigned int uMinDepth) {
        std::wstring sPath = L"C:";
        for (unsigned int uDepth = uMinDepth + tRandom() % 6; uDepth > 0; --uDepth)
            sPath += std::wstring(L"\\") + L"ab."[tRandom() % 3] + (tRandom() % 4 == 0 ? L"c" : L"b");
        return sPath;
    };
    for (int i = 0; i < 20000; ++i) {
        std::wstring sBase = sRandomPath(0);
        if (sBase.size() == 2 || tRandom() % 4 == 0) sBase += L'\\';
        std::wstring const sPath = sRandomPath(1);
        std::wstring const sRelative = sMakePathRelative(sBase.c_str(), sPath.c_str());
        ASSERT_FALSE(fIsAbsolutePath(sRelative));
        ASSERT_EQ(sMakePathAbsolute(sBase.c_str(), sRelative.c_str()), sPath) << PrintToString(sBase);
    }
    // The common part comes back in the spelling of the base.
    std::wstring const sRelative = sMakePathRelative(L"c:\\DIR\\sub", L"C:\\dir\\File");
    EXPECT_EQ(sMakePathAbsolute(L"c:\\DIR\\sub", sRelative.c_str()), L"c:\\DIR\\File");
}

TEST(SMakePathAbsolute, TakesVeryLongPaths) {
    std::wstring const sBase = sDeepPath(5000);
    EXPECT_EQ(sMakePathAbsolute(sBase.c_str(), L"..\\f"), sBase.substr(0, sBase.size() - 5001) + L"\\f");
    std::wstring sUp;
    for (int i = 0; i < 14999; ++i)
        sUp += L"..\\";
    EXPECT_EQ(sMakePathAbsolute(sDeepPath(1).c_str(), (sUp + L"f").c_str()), L"C:\\f");
    EXPECT_EQ(sMakePathAbsolute(sDeepPath(1).c_str(), (sUp + L"..\\f").c_str()), sUp + L"..\\f");
}
