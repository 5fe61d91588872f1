// TFullAlias, TSearchContext and TCntxtAlias.
#include "ZkTools/Alias.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <utility>

using std::wstring;
using namespace std::string_literals;

namespace {

/// An alias whose tag bears blanks at its ends.
TAlias & tWithBlanks(TAlias & tAlias) {
    TTransferAlias(tAlias).sGetTag() = L" A ";
    return tAlias;
}

} // namespace

TEST(TFullAlias, TrimsTheAliasAndNotTheDirectory) {
    EXPECT_TRUE(TFullAlias().fIsEmpty());
    EXPECT_EQ(TFullAlias().sDirectory, L"");
    TAlias tAlias;
    TFullAlias const tFull(tWithBlanks(tAlias), L" dir ");
    EXPECT_EQ(tFull.sGetTag(), L"A");
    EXPECT_EQ(tFull.sDirectory, L" dir ");
    TFullAlias tSource(tFull);
    tWithBlanks(tSource);
    TFullAlias const tCopy(tSource);
    TFullAlias tAssigned;
    tAssigned = tSource;
    for (TFullAlias const & tResult : {tCopy, tAssigned}) {
        EXPECT_EQ(tResult.sGetTag(), L"A");
        EXPECT_EQ(tResult.sDirectory, L" dir ");
    }
    TFullAlias & tSelf = tAssigned;
    tAssigned = tSelf;
    EXPECT_EQ(tAssigned.sDirectory, L" dir ");
}

TEST(TFullAlias, IsEmptyWithoutTagOrDirectory) {
    struct TCase {
        wchar_t const * pzTag;
        wchar_t const * pzDirectory;
        bool fEmpty;
    };
    for (auto const & [pzTag, pzDirectory, fEmpty] :
         std::to_array<TCase>({{L"", L"", true}, {L"A", L"", true}, {L"", L"C:\\d", true}, {L"A", L"C:\\d", false}})) {
        TFullAlias const tAlias(TAlias(pzTag), pzDirectory);
        EXPECT_EQ(tAlias.fIsEmpty(), fEmpty);
        EXPECT_EQ(tAlias.fIsFilled(), !fEmpty);
    }
    TFullAlias const tWithoutPlace(TAlias(L"A"), L"");
    EXPECT_FALSE(static_cast<TAlias const &>(tWithoutPlace).fIsEmpty());
}

TEST(TFullAlias, ComparesTheAliasThenTheDirectory) {
    struct TCase {
        wchar_t const * pzFirstTag;
        wstring sFirst;
        wchar_t const * pzSecondTag;
        wstring sSecond;
        int iResult;
    };
    for (auto const & [pzFirstTag, sFirst, pzSecondTag, sSecond, iResult] : std::to_array<TCase>({
             {L"A", L"d", L"A", L"d", 0},
             {L"A", L"z", L"B", L"a", -1},
             {L"B", L"a", L"A", L"z", 1},
             {L"A", L"a", L"A", L"b", -1},
             {L"A", L"B", L"A", L"a", -1}, // case counts
             {L"A", L"b", L"A", L"ab", 1},
             {L"A", L"dir", L"A", L"directory", -1},
             {L"A", L"", L"A", L"d", -1},
             {L"A", L"\uFFEE", L"A", L"\u7FFF", 1}, // unsigned units
             {L"A", L"d\0x"s, L"A", L"d\0y"s, -1},  // through a null character
             {L"A", L"d\0"s, L"A", L"d", 1},
         })) {
        TFullAlias const tFirst(TAlias(pzFirstTag), sFirst);
        TFullAlias const tSecond(TAlias(pzSecondTag), sSecond);
        EXPECT_EQ(tFirst.iCompare(tSecond), iResult);
        EXPECT_EQ(tSecond.iCompare(tFirst), -iResult);
        EXPECT_EQ(tFirst < tSecond, iResult < 0);
        EXPECT_EQ(tFirst == tSecond, iResult == 0);
        EXPECT_EQ(tFirst != tSecond, iResult != 0);
    }
}

TEST(TFullAlias, ComparesTheAliasUpToANullCharacter) {
    TFullAlias tFirst(TAlias(L"A\0x"s), L"d");
    TFullAlias const tSecond(TAlias(L"A\0y"s), L"d");
    EXPECT_TRUE(tFirst == tSecond);
    EXPECT_FALSE(static_cast<TAlias &>(tFirst) == static_cast<TAlias const &>(tSecond));
}

TEST(TSearchContext, HoldsOneText) {
    EXPECT_EQ(TSearchContext().sGetText(), L"");
    TSearchContext tContext(L"a search context of some length");
    TSearchContext tCopy = tContext;
    EXPECT_TRUE(tCopy == tContext);
    TSearchContext const tMoved(std::move(tContext));
    EXPECT_TRUE(tMoved == tCopy);
    EXPECT_EQ(tContext.sGetText(), L""); // NOLINT(bugprone-use-after-move): it is promised
    TSearchContext & tSelf = tCopy;
    tCopy = std::move(tSelf);
    EXPECT_TRUE(tCopy == tMoved);
    EXPECT_FALSE(tCopy == TSearchContext(L"other"));
}

TEST(TCntxtAlias, BearsContextAndType) {
    TCntxtAlias const tEmpty;
    EXPECT_TRUE(tEmpty.fIsEmpty());
    EXPECT_EQ(tEmpty.GetSearchContext().sGetText(), L"");
    EXPECT_EQ(tEmpty.iGetType(), 0);
    TAlias tAlias;
    TCntxtAlias tFull(tWithBlanks(tAlias), TSearchContext(L"c"), -4);
    EXPECT_EQ(tFull.sGetTag(), L"A");
    EXPECT_EQ(tFull.GetSearchContext().sGetText(), L"c");
    EXPECT_EQ(tFull.iGetType(), -4);
    tFull.SetSearchContext(TSearchContext(L"d"));
    EXPECT_EQ(tFull.GetSearchContext().sGetText(), L"d");
}

TEST(TCntxtAlias, CopiesTrimmed) {
    TCntxtAlias tSource(TAlias(L"A", L"1", L"v"), TSearchContext(L"c"), 5);
    tWithBlanks(tSource);
    TCntxtAlias tAssigned;
    tAssigned = tSource;
    for (TCntxtAlias const & tCopy : {TCntxtAlias(tSource), tAssigned}) {
        EXPECT_EQ(tCopy.sGetTag(), L"A");
        EXPECT_EQ(tCopy.sGetVersion(), L"1");
        EXPECT_EQ(tCopy.GetSearchContext().sGetText(), L"c");
        EXPECT_EQ(tCopy.iGetType(), 5);
    }
}

TEST(TCntxtAlias, AMoveTakesTheContextOnly) {
    TCntxtAlias tSource(TAlias(L"A", L"1", L"v"), TSearchContext(L"a context of some length"), 5);
    tWithBlanks(tSource);
    TCntxtAlias tMoved(std::move(tSource));
    EXPECT_EQ(tMoved.sGetTag(), L"A");
    EXPECT_EQ(tMoved.GetSearchContext().sGetText(), L"a context of some length");
    EXPECT_EQ(tMoved.iGetType(), 5);
    EXPECT_EQ(tSource.sGetTag(), L" A "); // NOLINT(bugprone-use-after-move): it is promised
    EXPECT_EQ(tSource.sGetVariant(), L"v");
    EXPECT_EQ(tSource.GetSearchContext().sGetText(), L"");

    TCntxtAlias tAssigned;
    tAssigned = std::move(tMoved);
    EXPECT_EQ(tAssigned.sGetTag(), L"A");
    EXPECT_EQ(tAssigned.GetSearchContext().sGetText(), L"a context of some length");
    EXPECT_EQ(tAssigned.iGetType(), 5);
    EXPECT_EQ(tMoved.sGetTag(), L"A"); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(tMoved.GetSearchContext().sGetText(), L"");
    TCntxtAlias & tSelf = tAssigned;
    tAssigned = std::move(tSelf);
    EXPECT_EQ(tAssigned.GetSearchContext().sGetText(), L"a context of some length");
}

TEST(TCntxtAlias, IsEqualInEveryPart) {
    TCntxtAlias const tAlias(TAlias(L"A"), TSearchContext(L"c"), 5);
    EXPECT_TRUE(tAlias == TCntxtAlias(TAlias(L"A"), TSearchContext(L"c"), 5));
    EXPECT_FALSE(tAlias == TCntxtAlias(TAlias(L"A"), TSearchContext(L"c"), 6));
    EXPECT_FALSE(tAlias == TCntxtAlias(TAlias(L"A"), TSearchContext(L"c\0"s), 5));
    EXPECT_FALSE(tAlias == TCntxtAlias(TAlias(L"A\0"s), TSearchContext(L"c"), 5));
}
