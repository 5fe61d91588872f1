#include "ZkTools/Alias.h"

#include "tests/support/Random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <type_traits>

namespace {

using std::wstring;

TAlias tMake(wstring const & sTag, wstring const & sVersion, wstring const & sVariant) {
    return TAlias(sTag, sVersion, sVariant);
}

void ExpectAlias(TAlias const & tAlias, wstring const & sTag, wstring const & sVersion, wstring const & sVariant) {
    EXPECT_EQ(tAlias.sGetTag(), sTag);
    EXPECT_EQ(tAlias.sGetVersion(), sVersion);
    EXPECT_EQ(tAlias.sGetVariant(), sVariant);
}

} // namespace

// The structures are plain: nothing but their fields, no table of virtual operations.
static_assert(!std::is_polymorphic_v<TAlias> && sizeof(TAlias) == 3 * sizeof(wstring));
static_assert(!std::is_polymorphic_v<TAliasLength> && sizeof(TAliasLength) == 12);
static_assert(!std::is_polymorphic_v<TTransferAlias> && sizeof(TTransferAlias) == sizeof(void *));
static_assert(std::is_trivially_copyable_v<TAliasLength>);

TEST(TAlias, IsEmptyWhenMadeWithoutArguments) {
    ExpectAlias(TAlias(), L"", L"", L"");
}

TEST(TAlias, TakesOneTwoOrThreeStringsAndTrimsThem) {
    ExpectAlias(TAlias(L" A "), L"A", L"", L"");
    ExpectAlias(TAlias(L" A ", L" 1"), L"A", L"1", L"");
    ExpectAlias(TAlias(L" A ", L" 1", L"draft "), L"A", L"1", L"draft");
}

TEST(TAlias, SettersTrimBlanksAtBothEndsOnly) {
    struct TCase {
        wstring sGiven;
        wstring sStored;
    };
    std::array<TCase, 7> const tCases{{
        {L"  A  ", L"A"},
        {L"A  B", L"A  B"},
        {L"   ", L""},
        {L"", L""},
        {L"\tA\r\n", L"\tA\r\n"},             // only blanks count
        {L" \t A \t ", L"\t A \t"},           // blanks behind a tab stay
        {L"\u00A0A\u2003", L"\u00A0A\u2003"}, // other spaces are no blanks
    }};
    for (TCase const & tCase : tCases) {
        TAlias tAlias;
        tAlias.SetTag(tCase.sGiven);
        tAlias.SetVersion(tCase.sGiven);
        tAlias.SetVariant(tCase.sGiven);
        ExpectAlias(tAlias, tCase.sStored, tCase.sStored, tCase.sStored);
    }
}

TEST(TAlias, SettersKeepNullCharactersInside) {
    wstring const sValue(L" a\0b ", 5);
    TAlias tAlias;
    tAlias.SetTag(sValue);
    EXPECT_EQ(tAlias.sGetTag(), wstring(L"a\0b", 3));
}

TEST(TAlias, SetterTakesTheFieldItSets) {
    TAlias tAlias(L"A");
    TTransferAlias(tAlias).sGetTag() = L"  A tag that is too long for the short form of a string  ";
    tAlias.SetTag(tAlias.sGetTag());
    EXPECT_EQ(tAlias.sGetTag(), L"A tag that is too long for the short form of a string");
}

TEST(TAlias, SetOfThreeRunsTheSettersInOrder) {
    TAlias tAlias;
    tAlias.Set(L" A ", L" 1 ", L" V ");
    ExpectAlias(tAlias, L"A", L"1", L"V");
    // The second setter sees what the first one stored.
    tAlias.Set(tAlias.sGetVersion(), tAlias.sGetTag(), tAlias.sGetTag());
    ExpectAlias(tAlias, L"1", L"1", L"1");
}

TEST(TAlias, SetOfAnAliasIsTheAssignment) {
    TAlias tSource = tMake(L"A", L"1", L"V");
    TTransferAlias(tSource).sGetVersion() = L" 1 ";
    TAlias tSet;
    tSet.Set(tSource);
    ExpectAlias(tSet, L"A", L"1", L"V");
    TAlias tAssigned = tMake(L"x", L"y", L"z");
    EXPECT_EQ(&(tAssigned = tSource), &tAssigned);
    ExpectAlias(tAssigned, L"A", L"1", L"V");
}

TEST(TAlias, CopyLosesBlanksThatTheOriginalKeeps) {
    TAlias tAlias(L"A");
    TTransferAlias(tAlias).sGetTag() = L" A";
    EXPECT_EQ(tAlias.sGetTag(), L" A");
    TAlias const tCopy(tAlias);
    EXPECT_EQ(tCopy.sGetTag(), L"A");
    EXPECT_EQ(tAlias.sGetTag(), L" A");
    // There is no move that would get past the trimming, and it leaves the source as it is.
    TAlias const tMoved(std::move(tAlias));
    EXPECT_EQ(tMoved.sGetTag(), L"A");
    EXPECT_EQ(tAlias.sGetTag(), L" A");
}

TEST(TAlias, AssignmentToItselfTrims) {
    TAlias tAlias = tMake(L"A", L"1", L"V");
    TTransferAlias(tAlias).sGetVariant() = L"V ";
    TAlias & tSame = tAlias;
    tAlias = tSame;
    ExpectAlias(tAlias, L"A", L"1", L"V");
}

TEST(TAlias, ResetEmptiesAllThree) {
    TAlias tAlias = tMake(L"A", L"1", L"V");
    tAlias.Reset();
    ExpectAlias(tAlias, L"", L"", L"");
}

TEST(TAlias, GivesItsFieldsAsReferencesAndAsCharacters) {
    TAlias const tAlias = tMake(L"A", L"1", L"V");
    EXPECT_EQ(&tAlias.sGetTag(), &tAlias.sGetTag());
    EXPECT_STREQ(tAlias.pzGetTag(), L"A");
    EXPECT_STREQ(tAlias.pzGetVersion(), L"1");
    EXPECT_STREQ(tAlias.pzGetVariant(), L"V");
}

TEST(TAlias, IsFilledByItsTagAlone) {
    EXPECT_TRUE(TAlias().fIsEmpty());
    EXPECT_FALSE(TAlias().fIsFilled());
    EXPECT_TRUE(tMake(L"", L"1", L"V").fIsEmpty());
    EXPECT_FALSE(tMake(L"", L"1", L"V").fIsFilled());
    EXPECT_FALSE(TAlias(L"A").fIsEmpty());
    EXPECT_TRUE(TAlias(L"A").fIsFilled());
}

TEST(TAlias, MergesWhatIsThere) {
    struct TCase {
        wstring sTag, sVersion, sVariant;
        wchar_t const * pzSeparator;
        wstring sMerged;
    };
    std::array<TCase, 10> const tCases{{
        {L"A", L"1", L"V", nullptr, L"A; 1; V"},
        {L"A", L"1", L"", nullptr, L"A; 1"},
        {L"A", L"", L"V", nullptr, L"A; ; V"},
        {L"A", L"", L"", nullptr, L"A"},
        {L"", L"1", L"V", nullptr, L"; 1; V"},
        {L"", L"", L"V", nullptr, L"; ; V"},
        {L"", L"", L"", nullptr, L""},
        {L"A", L"1", L"V", L"_", L"A_1_V"},
        {L"A", L"1", L"V", L"", L"A1V"},
        {L"A; B", L"1", L"", nullptr, L"A; B; 1"}, // nothing is escaped
    }};
    for (TCase const & tCase : tCases) {
        TAlias const tAlias = tMake(tCase.sTag, tCase.sVersion, tCase.sVariant);
        EXPECT_EQ(tAlias.sGetAlias(tCase.pzSeparator), tCase.sMerged);
        EXPECT_EQ(tAlias.sMerge(tCase.pzSeparator), tCase.sMerged);
        std::array<wchar_t, 32> acTarget;
        acTarget.fill(L'#');
        EXPECT_EQ(tAlias.pzMerge(acTarget.data(), tCase.pzSeparator), acTarget.data());
        EXPECT_EQ(wstring(acTarget.data()), tCase.sMerged);
        EXPECT_EQ(acTarget[tCase.sMerged.size() + 1], L'#'); // the terminator is the last that is written
    }
}

TEST(TAlias, MergesFieldsAsTheyStand) {
    TAlias tAlias;
    TTransferAlias(tAlias).sGetTag() = L" A ";
    TTransferAlias(tAlias).sGetVersion() = L" ";
    EXPECT_EQ(tAlias.sGetAlias(nullptr), L" A ;  ");
}

TEST(TAlias, TakesAMergedTextApart) {
    struct TCase {
        wchar_t const * pzText;
        wchar_t const * pzSeparator;
        wstring sTag, sVersion, sVariant;
    };
    std::array<TCase, 16> const tCases{{
        {L"A; 1; V", nullptr, L"A", L"1", L"V"},
        {L"A; ; V", nullptr, L"A", L"", L"V"},
        {L"A; 1", nullptr, L"A", L"1", L""},
        {L"A", nullptr, L"A", L"", L""},
        {L"", nullptr, L"", L"", L""},
        {L"A; B; C; D", nullptr, L"A", L"B", L"C; D"},
        {L"A;1;V", nullptr, L"A;1;V", L"", L""}, // the blank belongs to the separator
        {L"A;  1 ;  V ", nullptr, L"A", L"1", L"V"},
        {L"; ; ", nullptr, L"", L"", L""},
        {L"; 1", nullptr, L"", L"1", L""},
        {L"A_1_V", L"_", L"A", L"1", L"V"},
        {L"A; 1_V", L"_", L"A; 1", L"V", L""},
        {L"A###B", L"##", L"A", L"#B", L""}, // the second search begins right behind the first separator
        {L"A####B", L"##", L"A", L"", L"B"},
        {L"AB", L"", L"", L"", L"AB"}, // an empty separator stands everywhere
        {L"A", L"", L"", L"", L"A"},
    }};
    for (TCase const & tCase : tCases) {
        TAlias tAlias = tMake(L"x", L"y", L"z");
        tAlias.Set(tCase.pzText, tCase.pzSeparator);
        SCOPED_TRACE(testing::PrintToString(wstring(tCase.pzText)));
        ExpectAlias(tAlias, tCase.sTag, tCase.sVersion, tCase.sVariant);
    }
}

TEST(TAlias, TakesRandomTextApartAsASplitDoes) {
    std::mt19937 tRandom(26);
    for (int i = 0; i < 100'000; ++i) {
        wstring const sText = zk_test::sRandom(tRandom, L"; \tAb#", 11);
        wstring const sSeparator = std::array{L"; ", L";", L"##", L" ", L"Ab"}[tRandom() % 5];
        std::array<wstring, 3> sPieces;
        std::size_t uPiece = 0;
        for (std::size_t u = 0; u < sText.size();) {
            if (uPiece < 2 && sText.compare(u, sSeparator.size(), sSeparator) == 0) {
                ++uPiece;
                u += sSeparator.size();
            } else {
                sPieces[uPiece] += sText[u++];
            }
        }
        for (wstring & s : sPieces) {
            while (s.starts_with(L' '))
                s.erase(0, 1);
            while (s.ends_with(L' '))
                s.pop_back();
        }
        TAlias tAlias(L"x", L"y", L"z");
        tAlias.Set(sText.c_str(), sSeparator.c_str());
        ASSERT_TRUE(tAlias == tMake(sPieces[0], sPieces[1], sPieces[2]))
            << testing::PrintToString(sText) << testing::PrintToString(sSeparator);
    }
}

TEST(TAlias, SetOfANullTextEmptiesIt) {
    TAlias tAlias = tMake(L"x", L"y", L"z");
    tAlias.Set(static_cast<wchar_t const *>(nullptr), nullptr);
    ExpectAlias(tAlias, L"", L"", L"");
}

TEST(TAlias, SetKeepsFurtherSeparatorsInTheVariant) {
    TAlias tAlias;
    tAlias.Set(L"A; B; C; D; E; ", nullptr);
    EXPECT_EQ(tAlias.sGetVariant(), L"C; D; E;");
}

TEST(TAlias, SeparatorsFromPosition32768OnAreAbsent) {
    struct TCase {
        std::size_t uTag, uVersion; // lengths in front of the first and the second separator
        bool fFirst, fSecond;
    };
    std::array<TCase, 6> const tCases{{
        {32767, 1, true, false}, // the last position that counts
        {32768, 1, false, false},
        {10, 32756, true, true}, // the second separator at 32767
        {10, 32757, true, false},
        {70000, 1, false, false}, // where 16 bits would be positive again
        {10, 65536 + 20, true, false},
    }};
    for (TCase const & tCase : tCases) {
        SCOPED_TRACE(tCase.uTag);
        wstring const sTag(tCase.uTag, L'a');
        wstring const sVersion(tCase.uVersion, L'b');
        TAlias tAlias;
        tAlias.Set((sTag + L"|" + sVersion + L"|c").c_str(), L"|");
        EXPECT_EQ(tAlias.sGetTag() == sTag, tCase.fFirst);
        if (!tCase.fFirst) {
            EXPECT_EQ(tAlias.sGetTag(), sTag + L"|" + sVersion + L"|c");
        }
        EXPECT_EQ(tAlias.sGetVersion(), !tCase.fFirst ? L"" : tCase.fSecond ? sVersion : sVersion + L"|c");
        EXPECT_EQ(tAlias.sGetVariant(), tCase.fSecond ? L"c" : L"");
    }
}

TEST(TAlias, SeparatorBeyondTheLimitHidesNoneThatCounts) {
    // The first search stops at its first hit: a later one is never tried.
    TAlias tAlias;
    tAlias.Set((wstring(40000, L'a') + L"|b").c_str(), L"|");
    EXPECT_EQ(tAlias.sGetTag().size(), 40002u);
}

TEST(TAlias, MergedTextComesBackThroughSet) {
    for (TAlias const & tAlias : {tMake(L"A", L"1", L"V"), tMake(L"A", L"", L"V"), tMake(L"A", L"1", L""),
                                  tMake(L"A", L"", L""), tMake(L"", L"", L"V"), tMake(L"", L"", L"")}) {
        TAlias tBack = tMake(L"x", L"y", L"z");
        tBack.Set(tAlias.sGetAlias(nullptr).c_str(), nullptr);
        EXPECT_TRUE(tBack == tAlias);
    }
}

TEST(TAlias, EqualityLooksAtEveryCharacterOfAllThree) {
    TAlias const tAlias = tMake(L"A", L"1", L"V");
    EXPECT_TRUE(tAlias == tMake(L"A", L"1", L"V"));
    EXPECT_FALSE(tAlias != tMake(L"A", L"1", L"V"));
    for (TAlias const & tOther : {tMake(L"a", L"1", L"V"), tMake(L"A", L"2", L"V"), tMake(L"A", L"1", L""),
                                  tMake(L"A", L"1", L"VV"), tMake(L"", L"1", L"V")}) {
        EXPECT_FALSE(tAlias == tOther);
        EXPECT_TRUE(tAlias != tOther);
    }
}

TEST(TAlias, ComparesByUnitsTagThenVersionThenVariant) {
    struct TCase {
        TAlias tFirst, tSecond;
        int iResult;
    };
    std::array<TCase, 12> const tCases{{
        {tMake(L"A", L"1", L"V"), tMake(L"A", L"1", L"V"), 0},
        {tMake(L"", L"", L""), tMake(L"", L"", L""), 0},
        {tMake(L"a", L"", L""), tMake(L"B", L"", L""), 1}, // the codes decide: no regard to case
        {tMake(L"A", L"9", L"Z"), tMake(L"B", L"1", L"A"), -1},
        {tMake(L"A", L"1", L"Z"), tMake(L"A", L"2", L"A"), -1},
        {tMake(L"A", L"10", L""), tMake(L"A", L"9", L""), -1}, // no numeric reading
        {tMake(L"A", L"1", L"V"), tMake(L"A", L"1", L"W"), -1},
        {tMake(L"A", L"", L""), tMake(L"AA", L"", L""), -1}, // what ends first is the smaller
        {tMake(L"A", L"1", L""), tMake(L"A", L"", L""), 1},
        {tMake(L"\u00E4", L"", L""), tMake(L"z", L"", L""), 1},           // no locale
        {tMake(L"\uFFFD", L"", L""), tMake(L"\u0041", L"", L""), 1},      // units are unsigned
        {tMake(L"\U0001F600", L"", L""), tMake(L"\uFB01", L"", L""), -1}, // units, not characters
    }};
    for (TCase const & tCase : tCases) {
        SCOPED_TRACE(testing::PrintToString(tCase.tFirst.sGetAlias(L"|") + L" and " + tCase.tSecond.sGetAlias(L"|")));
        EXPECT_EQ(tCase.tFirst.iCompare(tCase.tSecond), tCase.iResult);
        EXPECT_EQ(tCase.tSecond.iCompare(tCase.tFirst), -tCase.iResult);
        EXPECT_EQ(tCase.tFirst < tCase.tSecond, tCase.iResult < 0);
        EXPECT_EQ(tCase.tSecond<tCase.tFirst, tCase.iResult> 0);
    }
}

TEST(TAlias, ComparisonStopsAtANullCharacterAndEqualityDoesNot) {
    TAlias const tFirst(wstring(L"A\0x", 3), L"1");
    TAlias const tSecond(wstring(L"A\0y", 3), L"1");
    EXPECT_EQ(tFirst.iCompare(tSecond), 0);
    EXPECT_FALSE(tFirst < tSecond);
    EXPECT_FALSE(tFirst == tSecond);
    // What follows the null in the tag is skipped, the version still counts.
    EXPECT_EQ(tFirst.iCompare(TAlias(L"A", L"2")), -1);
}

TEST(TAliasLength, IsMinusOneByDefault) {
    TAliasLength const tLength;
    EXPECT_EQ(tLength.iTag, -1);
    EXPECT_EQ(tLength.iVersion, -1);
    EXPECT_EQ(tLength.iVariant, -1);
    TAliasLength const tPartly(5);
    EXPECT_EQ(tPartly.iTag, 5);
    EXPECT_EQ(tPartly.iVersion, -1);
    EXPECT_EQ(tPartly.iVariant, -1);
}

TEST(INumericAliasCompare, ComparesTagThenVersionThenVariantAsNumbersAndWords) {
    struct {
        TAlias tFirst, tSecond;
        int iExpected; // not normalised
    } const atRows[] = {
        {tMake(L"10", L"", L""), tMake(L"9", L"", L""), 1},
        {tMake(L"1000", L"", L""), tMake(L"9", L"", L""), 3},
        {tMake(L"9", L"", L""), tMake(L"apple", L"", L""), -1},
        {tMake(L"a", L"1.11", L""), tMake(L"a", L"1.9", L""), 1},
        {tMake(L"a", L"10", L"x"), tMake(L"a", L"9", L"y"), 1},
        {tMake(L"a", L"1", L"x10"), tMake(L"a", L"1", L"x9"), -8},
        {tMake(L"a", L"1", L"10"), tMake(L"a", L"1", L"9"), 1},
        {tMake(L"a", L"1", L"Abc"), tMake(L"a", L"1", L"abc"), -1},
        {tMake(L"007", L"1", L"x"), tMake(L"7", L"01", L"x"), 0},
        {tMake(L"", L"", L""), tMake(L"", L"", L""), 0},
    };
    for (auto const & tRow : atRows)
        EXPECT_EQ(iNumericAliasCompare(tRow.tFirst, tRow.tSecond), tRow.iExpected);
    EXPECT_GT(TAlias(L"9").iCompare(TAlias(L"10")), 0); // unlike the order by units
}

TEST(TAliasLength, TakesTheLengthsOfAnAlias) {
    TAlias tAlias = tMake(L"Tag", L"12", L"");
    TAliasLength tLength(tAlias);
    EXPECT_EQ(tLength.iTag, 3);
    EXPECT_EQ(tLength.iVersion, 2);
    EXPECT_EQ(tLength.iVariant, 0);
    TAliasLength tCopy;
    tCopy = tLength;
    EXPECT_EQ(tCopy.iTag, 3);
    tCopy = TAliasLength(1, 2, 3);
    EXPECT_EQ(tCopy.iVariant, 3);
}

TEST(TAliasLength, FitsWhenEachLengthIsAtMostTheOther) {
    TAliasLength tRoom(3, 2, 1);
    EXPECT_TRUE(TAliasLength(3, 2, 1).fFitInto(tRoom));
    EXPECT_TRUE(TAliasLength(0, 0, 0).fFitInto(tRoom));
    EXPECT_TRUE(TAliasLength().fFitInto(tRoom));
    EXPECT_FALSE(TAliasLength(4, 2, 1).fFitInto(tRoom));
    EXPECT_FALSE(TAliasLength(3, 3, 1).fFitInto(tRoom));
    EXPECT_FALSE(TAliasLength(3, 2, 2).fFitInto(tRoom));
    TAliasLength tNothing;
    EXPECT_TRUE(TAliasLength().fFitInto(tNothing));
    EXPECT_FALSE(TAliasLength(0, 0, 0).fFitInto(tNothing)); // -1 is a signed number, not "any length"
}

TEST(TTransferAlias, WritesPastTheTrimming) {
    TAlias tAlias;
    TTransferAlias const tTransfer(tAlias);
    tTransfer.sGetTag() = L" A ";
    tTransfer.sGetVersion() = L" 1";
    tTransfer.sGetVariant() = L"V ";
    ExpectAlias(tAlias, L" A ", L" 1", L"V ");
    EXPECT_EQ(&tTransfer.sGetTag(), &tAlias.sGetTag());
}
