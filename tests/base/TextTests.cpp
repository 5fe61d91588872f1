#include "ZkBase/Text.h"

#include "ZkBase/Windows.h"

#include <gtest/gtest.h>

#include <array>
#include <bitset>
#include <clocale>
#include <random>

using namespace string_functions;

namespace {

constexpr unsigned int uUnits = 0x10000;
using TUnitSet = std::bitset<uUnits>;

struct TRange {
    unsigned int uFirst;
    unsigned int uLast;
};

TUnitSet tAllBut(auto const & atRanges) {
    TUnitSet tSet;
    tSet.set();
    for (TRange const & tRange : atRanges)
        for (unsigned int u = tRange.uFirst; u <= tRange.uLast; ++u)
            tSet.reset(u);
    return tSet;
}

TUnitSet tAllThat(bool (*pTest)(wchar_t)) {
    TUnitSet tSet;
    for (unsigned int u = 0; u < uUnits; ++u)
        tSet.set(u, pTest(static_cast<wchar_t>(u)));
    return tSet;
}

/// The first unit in which two sets differ, or `uUnits`.
unsigned int uFirstDifference(TUnitSet const & tFirst, TUnitSet const & tSecond) {
    unsigned int u = 0;
    while (u < uUnits && tFirst[u] == tSecond[u])
        ++u;
    return u;
}

int iSign(int i) {
    return (i > 0) - (i < 0);
}

/// Puts the C locale and the thread's locale back.
class TLocaleKeeper {
public:
    TLocaleKeeper() : sLocale(std::setlocale(LC_ALL, nullptr)), uThreadLocale(GetThreadLocale()) {}
    ~TLocaleKeeper() {
        std::setlocale(LC_ALL, sLocale.c_str());
        SetThreadLocale(uThreadLocale);
    }
    TLocaleKeeper(TLocaleKeeper const &) = delete;
    TLocaleKeeper & operator=(TLocaleKeeper const &) = delete;

private:
    std::string sLocale;
    LCID uThreadLocale;
};

} // namespace

TEST(sStrip, TakesTheCharactersAwayWhereItIsTold) {
    EXPECT_EQ(sStrip(L"  a b  ", esStart, L" "), L"a b  ");
    EXPECT_EQ(sStrip(L"  a b  ", esEnd, L" "), L"  a b");
    EXPECT_EQ(sStrip(L"  a b  ", esBoth, L" "), L"a b");
    EXPECT_EQ(sStrip(L"\t a \t", esBoth, L" "), L"\t a \t");
    EXPECT_EQ(sStrip(L"xyaxy", esBoth, L"yx"), L"a");
    EXPECT_EQ(sStrip(L"line\r\r", esEnd, L"\r"), L"line");
}

TEST(sStrip, LeavesNothingOfNothingElse) {
    for (EStrip eStrip : {esStart, esEnd, esBoth}) {
        EXPECT_EQ(sStrip(L"", eStrip, L" "), L"");
        EXPECT_EQ(sStrip(L"   ", eStrip, L" "), L"");
        EXPECT_EQ(sStrip(L" a ", eStrip, L""), L" a ");
    }
}

TEST(sStrip, LeavesTheTextAloneForAnyOtherPlace) {
    EXPECT_EQ(sStrip(L" a ", static_cast<EStrip>(3), L" "), L" a ");
    EXPECT_EQ(sStrip(L" a ", static_cast<EStrip>(-1), L" "), L" a ");
}

TEST(sStrip, TakesViewsWithoutTerminatorAndTheZeroAsACharacter) {
    std::wstring_view const sText = L"  a  b";
    EXPECT_EQ(sStrip(sText.substr(0, 5), esBoth, std::wstring_view(L" x").substr(0, 1)), L"a");
    EXPECT_EQ(sStrip(std::wstring_view(L"\0a\0", 3), esBoth, std::wstring_view(L"\0", 1)), L"a");
    EXPECT_EQ(sStrip(std::wstring_view(L"a\0", 2), esBoth, L" "), std::wstring(L"a\0", 2));
}

TEST(strip_whitespace, StripsInPlace) {
    constexpr wchar_t const * pzText = L" \t\r\n\v\f\x00A0\x2003\x3000 a \x2003 b \x3000\x00A0\x0085\x2028 ";
    auto const sStripped = [](std::wstring sText, EStrip eStrip) {
        strip_whitespace(sText, eStrip);
        return sText;
    };
    EXPECT_EQ(sStripped(pzText, esBoth), L"a \x2003 b");
    EXPECT_EQ(sStripped(pzText, esStart), L"a \x2003 b \x3000\x00A0\x0085\x2028 ");
    EXPECT_EQ(sStripped(pzText, esEnd), L" \t\r\n\v\f\x00A0\x2003\x3000 a \x2003 b");
    EXPECT_EQ(sStripped(L"a", esBoth), L"a");
    EXPECT_EQ(sStripped(L" \t ", esBoth), L"");
    EXPECT_EQ(sStripped(L" \t ", esEnd), L"");
    EXPECT_EQ(sStripped(L"", esBoth), L"");
    EXPECT_EQ(sStripped(L" a ", static_cast<EStrip>(7)), L" a ");
}

// The gaps of the productions, where the library has what stands between them.
TEST(fIsNCNameFirstChar, IsTheNamespacesProductionForEveryUnit) {
    constexpr std::array<TRange, 14> atGaps{{
        {0x0000, 0x0040},
        {0x005B, 0x005E},
        {0x0060, 0x0060},
        {0x007B, 0x00BF},
        {0x00D7, 0x00D7},
        {0x00F7, 0x00F7},
        {0x0300, 0x036F},
        {0x037E, 0x037E},
        {0x2000, 0x200B},
        {0x200E, 0x206F},
        {0x2190, 0x2BFF},
        {0x2FF0, 0x3000},
        {0xD800, 0xF8FF},
        {0xFDD0, 0xFDEF},
    }};
    TUnitSet tExpected = tAllBut(atGaps);
    tExpected.reset(0xFFFE);
    tExpected.reset(0xFFFF);
    EXPECT_EQ(uFirstDifference(tAllThat(fIsNCNameFirstChar), tExpected), uUnits);
}

TEST(fIsNCNameChar, IsTheNamespacesProductionForEveryUnit) {
    constexpr std::array<TRange, 17> atGaps{{
        {0x0000, 0x002C},
        {0x002F, 0x002F},
        {0x003A, 0x0040},
        {0x005B, 0x005E},
        {0x0060, 0x0060},
        {0x007B, 0x00B6},
        {0x00B8, 0x00BF},
        {0x00D7, 0x00D7},
        {0x00F7, 0x00F7},
        {0x037E, 0x037E},
        {0x2000, 0x200B},
        {0x200E, 0x203E},
        {0x2041, 0x206F},
        {0x2190, 0x2BFF},
        {0x2FF0, 0x3000},
        {0xD800, 0xF8FF},
        {0xFDD0, 0xFDEF},
    }};
    TUnitSet tExpected = tAllBut(atGaps);
    tExpected.reset(0xFFFE);
    tExpected.reset(0xFFFF);
    EXPECT_EQ(uFirstDifference(tAllThat(fIsNCNameChar), tExpected), uUnits);
}

TEST(fIsNCNameChar, RefusesTheColon) {
    EXPECT_FALSE(fIsNCNameFirstChar(L':'));
    EXPECT_FALSE(fIsNCNameChar(L':'));
    EXPECT_TRUE(fIsNCNameFirstChar(L'_'));
    EXPECT_FALSE(fIsNCNameFirstChar(L'-'));
    EXPECT_TRUE(fIsNCNameChar(L'-'));
}

TEST(fWIsSpace, KnowsTheSpacesOfEveryScript) {
    for (wchar_t c :
         std::wstring_view(L"\t\n\v\f\r \x0085\x00A0\x1680\x2000\x2003\x200A\x2028\x2029\x202F\x205F\x3000"))
        EXPECT_TRUE(fWIsSpace(c)) << std::hex << static_cast<unsigned int>(c);
    for (wchar_t c : std::wstring_view(L"\0\x01\x08\x0E\x1F!a\x7F\xAD\x2060\x3001\xD800\xDC00\xFEFF\xFFFF", 15))
        EXPECT_FALSE(fWIsSpace(c)) << std::hex << static_cast<unsigned int>(c);
}

TEST(fWIsSpace, IsThePlatformsClassForEveryUnit) {
    TUnitSet tExpected;
    for (unsigned int u = 0; u < uUnits; ++u) {
        auto const c = static_cast<wchar_t>(u);
        WORD wType = 0;
        ASSERT_TRUE(GetStringTypeW(CT_CTYPE1, &c, 1, &wType));
        tExpected.set(u, (wType & C1_SPACE) != 0);
    }
    EXPECT_EQ(uFirstDifference(tAllThat(fWIsSpace), tExpected), uUnits);
}

TEST(wcWToUpper, KnowsEveryScript) {
    struct TRow {
        wchar_t cLower;
        wchar_t cUpper;
    };
    constexpr std::array<TRow, 18> atRows{{
        {L'a', L'A'},
        {L'z', L'Z'},
        {0x00E4, 0x00C4}, // a with diaeresis
        {0x00FF, 0x0178}, // y with diaeresis: beyond the Latin-1 block
        {0x0101, 0x0100},
        {0x03B1, 0x0391}, // Greek
        {0x03AC, 0x0386},
        {0x03C9, 0x03A9},
        {0x0430, 0x0410}, // Cyrillic
        {0x0451, 0x0401},
        {0x0561, 0x0531}, // Armenian
        {0x1E01, 0x1E00},
        {0x1F00, 0x1F08}, // Greek with breathing
        {0x2170, 0x2160}, // Roman numeral
        {0x24D0, 0x24B6}, // in a circle
        {0x2C30, 0x2C00}, // Glagolitic
        {0xFF41, 0xFF21}, // full width
        {0xFF5A, 0xFF3A},
    }};
    for (TRow const & tRow : atRows) {
        EXPECT_EQ(wcWToUpper(tRow.cLower), tRow.cUpper);
        EXPECT_EQ(wcWToUpper(tRow.cUpper), tRow.cUpper);
        EXPECT_EQ(iWCompareIString(std::wstring(1, tRow.cLower).c_str(), std::wstring(1, tRow.cUpper).c_str()), 0);
    }
}

// The tables are those of file names: what would not come back to itself in lower case, or needs two units, stays.
TEST(wcWToUpper, LeavesWhatHasNoUpperCaseOfItsOwn) {
    for (wchar_t c : {L'\0', L'0', L'@', L'[', L'`', L'{', L'ß', L'ẞ', L'ı', L'İ', L'ς', L'µ', L'ſ', L'א', L'中'})
        EXPECT_EQ(wcWToUpper(c), c) << std::hex << static_cast<unsigned int>(c);
    for (unsigned int u = 0xD800; u < 0xE000; ++u)
        EXPECT_EQ(wcWToUpper(static_cast<wchar_t>(u)), static_cast<wchar_t>(u));
}

// The Georgian letters got capitals with Unicode 11: the tables of the system decide, and both functions by the same.
TEST(wcWToUpper, TakesGeorgianFromTheSystem) {
    wchar_t const cUpper = wcWToUpper(0x10D0);
    EXPECT_TRUE(cUpper == 0x10D0 || cUpper == 0x1C90);
    EXPECT_EQ(iWCompareIString(L"\x10D0", L"\x1C90") == 0, cUpper == 0x1C90);
}

TEST(wcWToUpper, AgreesWithTheComparisonForEveryUnit) {
    std::wstring sUnit(1, L'\0');
    std::wstring sUpper(1, L'\0');
    for (unsigned int u = 1; u < uUnits; ++u) {
        sUnit[0] = static_cast<wchar_t>(u);
        sUpper[0] = wcWToUpper(sUnit[0]);
        ASSERT_EQ(wcWToUpper(sUpper[0]), sUpper[0]) << std::hex << u;
        ASSERT_EQ(iWCompareIString(sUnit.c_str(), sUpper.c_str()), 0) << std::hex << u;
    }
}

TEST(wcWToUpper, DoesNotDependOnALocale) {
    TLocaleKeeper const tKeeper;
    std::setlocale(LC_ALL, "");
    ASSERT_TRUE(SetThreadLocale(MAKELCID(MAKELANGID(LANG_TURKISH, SUBLANG_DEFAULT), SORT_DEFAULT)));
    EXPECT_EQ(wcWToUpper(L'i'), L'I');
    EXPECT_EQ(wcWToUpper(0x0131), 0x0131);
    EXPECT_EQ(wcWToUpper(0x03B1), 0x0391);
    EXPECT_EQ(iWCompareIString(L"file", L"FILE"), 0);
    EXPECT_NE(iWCompareIString(L"i", L"\x0130"), 0);
    EXPECT_TRUE(fWIsSpace(0x00A0));
}

TEST(iWCompareIString, PassesOverCase) {
    EXPECT_EQ(iWCompareIString(L"", L""), 0);
    EXPECT_EQ(iWCompareIString(L"Title", L"tITLE"), 0);
    EXPECT_EQ(iWCompareIString(L"ÄÖÜ", L"äöü"), 0);
    EXPECT_EQ(iWCompareIString(L"ΑΒΓ", L"αβγ"), 0);
    EXPECT_EQ(iWCompareIString(L"ЖУК", L"жук"), 0);
    EXPECT_NE(iWCompareIString(L"straße", L"STRASSE"), 0);
    EXPECT_NE(iWCompareIString(L"a", L"ä"), 0);
    EXPECT_NE(iWCompareIString(L"a\x0308", L"ä"), 0);
    EXPECT_NE(iWCompareIString(L"co-op", L"coop"), 0);
}

TEST(iWCompareIString, OrdersByUpperCaseUnits) {
    EXPECT_LT(iWCompareIString(L"a", L"B"), 0);
    EXPECT_GT(iWCompareIString(L"B", L"a"), 0);
    EXPECT_LT(iWCompareIString(L"a", L"ab"), 0);
    EXPECT_GT(iWCompareIString(L"ab", L"a"), 0);
    EXPECT_LT(iWCompareIString(L"", L"a"), 0);
    EXPECT_GT(iWCompareIString(L"_", L"a"), 0); // behind Z
    EXPECT_LT(iWCompareIString(L"a10", L"a9"), 0);
    EXPECT_GT(iWCompareIString(L"\xFFFF", L"a"), 0);
    EXPECT_LT(iWCompareIString(L"\xD83D\xDE00", L"\xFF41"), 0);
}

TEST(iWCompareIString, AgreesInSignWithTheUnits) {
    std::mt19937 tEngine(7);
    std::uniform_int_distribution<unsigned int> tUnit(1, uUnits - 1);
    for (int i = 0; i < 300000; ++i) {
        auto const cFirst = static_cast<wchar_t>(tUnit(tEngine));
        auto const cSecond = static_cast<wchar_t>(tUnit(tEngine));
        std::array<wchar_t, 2> const acFirst{cFirst, L'\0'};
        std::array<wchar_t, 2> const acSecond{cSecond, L'\0'};
        ASSERT_EQ(iSign(iWCompareIString(acFirst.data(), acSecond.data())),
                  iSign(int{wcWToUpper(cFirst)} - int{wcWToUpper(cSecond)}));
    }
}

TEST(iWCompareIString, IsAnOrderForMaps) {
    std::mt19937 tEngine(11);
    constexpr std::wstring_view sAlphabet = L"aAbB_zZäÄßςσΣ";
    auto const sRandom = [&] {
        std::wstring sText(std::uniform_int_distribution<std::size_t>(0, 3)(tEngine), L'\0');
        for (wchar_t & c : sText)
            c = sAlphabet[std::uniform_int_distribution<std::size_t>(0, sAlphabet.size() - 1)(tEngine)];
        return sText;
    };
    for (int i = 0; i < 100000; ++i) {
        std::wstring const sA = sRandom(), sB = sRandom(), sC = sRandom();
        int const iAB = iSign(iWCompareIString(sA.c_str(), sB.c_str()));
        int const iBC = iSign(iWCompareIString(sB.c_str(), sC.c_str()));
        ASSERT_EQ(iAB, -iSign(iWCompareIString(sB.c_str(), sA.c_str())));
        if (iAB <= 0 && iBC <= 0) {
            ASSERT_EQ(iSign(iWCompareIString(sA.c_str(), sC.c_str())), iAB == 0 && iBC == 0 ? 0 : -1);
        }
    }
}
