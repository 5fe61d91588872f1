#include "ZkTools/Strings.h"

#include "ZkBase/Windows.h"

#include <rpc.h>

#include "tests/support/Random.h"
#include "tests/support/SystemCall.h"
#include "tests/values/NumberMachine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cwchar>
#include <cwctype>
#include <iterator>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

using namespace std::string_literals;

namespace {

using std::wstring;
using testing::PrintToString;
using zk_test::sRandom;
using zk_test::TNumberMachine;
using zk_test::TSystemCall;

constexpr unsigned long dwUnbounded = 0xFFFFFFFF;

int iSign(int i) noexcept {
    return (i > 0) - (i < 0);
}

} // namespace

// Buffers

TEST(PzStrNFill, PadsToTheLengthAndNeverShortens) {
    struct {
        wchar_t const * pzText;
        int iLen;
        wchar_t const * pzExpected;
    } const atRows[] = {
        {L"abc", 5, L"abc--"}, {L"", 3, L"---"}, {L"abcde", 5, L"abcde"}, {L"abcde", 3, L"abcde"},
        {L"abc", 0, L"abc"},   {L"", 0, L""},    {L"abc", -1, L"abc"},    {L"abc", 4, L"abc-"},
    };
    for (auto const & tRow : atRows) {
        std::array<wchar_t, 8> acBuffer;
        acBuffer.fill(L'#');
        std::wcscpy(acBuffer.data(), tRow.pzText);
        EXPECT_EQ(pzStrNFill(acBuffer.data(), tRow.iLen, L'-'), acBuffer.data());
        EXPECT_STREQ(acBuffer.data(), tRow.pzExpected);
        EXPECT_EQ(acBuffer[std::wcslen(tRow.pzExpected) + 1], L'#') << "written past the end";
    }
    auto * const pzReadOnly = const_cast<wchar_t *>(L"abcde"); // a text that is long enough is not written to at all
    for (int const iLen : {5, 3, -1})
        EXPECT_EQ(pzStrNFill(pzReadOnly, iLen, L'-'), pzReadOnly);
}

TEST(PzStrip, RemovesBlanksAtTheEndOnly) {
    struct {
        wchar_t const * pzText;
        wchar_t const * pzExpected;
    } const atRows[] = {
        {L"abc", L"abc"}, {L"abc  ", L"abc"}, {L"  a b ", L"  a b"}, {L"   ", L""},
        {L"", L""},       {L"a\t", L"a\t"},   {L"a \t ", L"a \t"},   {L"a\u00A0", L"a\u00A0"},
    };
    for (auto const & tRow : atRows) {
        wstring sBuffer = tRow.pzText;
        EXPECT_EQ(pzStrip(sBuffer.data()), sBuffer.data());
        EXPECT_STREQ(sBuffer.c_str(), tRow.pzExpected);
    }
    EXPECT_EQ(pzStrip(nullptr), nullptr);
}

TEST(PzRemoveSpaces, ClosesEveryGap) {
    struct {
        wchar_t const * pzText;
        wchar_t const * pzExpected;
    } const atRows[] = {
        {L"abc", L"abc"}, {L" a  b c ", L"abc"}, {L"   ", L""}, {L"", L""}, {L"a\tb \n", L"a\tb\n"},
    };
    for (auto const & tRow : atRows) {
        wstring sBuffer = tRow.pzText;
        EXPECT_EQ(pzRemoveSpaces(sBuffer.data()), sBuffer.data());
        EXPECT_STREQ(sBuffer.c_str(), tRow.pzExpected);
    }
    EXPECT_EQ(pzRemoveSpaces(nullptr), nullptr);
}

TEST(PzFunctions, DoWithRandomTextWhatStringsDo) {
    std::mt19937 tRandom(8);
    for (int i = 0; i < 100'000; ++i) {
        wstring const sText = sRandom(tRandom, L"  ab\t", 8);
        int const iLen = static_cast<int>(tRandom() % 10);
        std::array<wchar_t, 12> acBuffer{};
        auto const sDone = [&](wchar_t * (*pFunction)(wchar_t *)) {
            sText.copy(acBuffer.data(), sText.size());
            acBuffer[sText.size()] = L'\0';
            return wstring(pFunction(acBuffer.data()));
        };
        ASSERT_EQ(sDone(&pzStrip), sText.substr(0, sText.find_last_not_of(L' ') + 1)) << PrintToString(sText);
        wstring sWithout = sText;
        std::erase(sWithout, L' ');
        ASSERT_EQ(sDone(&pzRemoveSpaces), sWithout) << PrintToString(sText);

        sText.copy(acBuffer.data(), sText.size());
        acBuffer[sText.size()] = L'\0';
        wstring sFilled = sText;
        sFilled.resize(std::max<std::size_t>(sText.size(), static_cast<std::size_t>(iLen)), L'+');
        ASSERT_EQ(pzStrNFill(acBuffer.data(), iLen, L'+'), sFilled) << PrintToString(sText) << iLen;
        wstring sCopied = sText.substr(0, static_cast<std::size_t>(iLen));
        ASSERT_EQ(pzStrNCpy(acBuffer.data(), sText.c_str(), iLen), sCopied) << PrintToString(sText) << iLen;
    }
}

TEST(PzStrNCpy, FillsWithZerosAndTerminates) {
    std::array<wchar_t, 7> acBuffer;
    acBuffer.fill(L'#');
    EXPECT_EQ(pzStrNCpy(acBuffer.data(), L"ab", 5), acBuffer.data());
    EXPECT_EQ(wstring(acBuffer.data(), 7), L"ab\0\0\0\0#"s);
    acBuffer.fill(L'#');
    EXPECT_EQ(pzStrNCpy(acBuffer.data(), L"abcdef", 3), acBuffer.data());
    EXPECT_EQ(wstring(acBuffer.data(), 7), L"abc\0###"s);
    EXPECT_EQ(pzStrNCpy(acBuffer.data(), L"xyz", 0), acBuffer.data());
    EXPECT_EQ(wstring(acBuffer.data(), 7), L"\0bc\0###"s);
}

TEST(PzStrNCpy, DoesNothingWithANullPointer) {
    std::array<wchar_t, 4> acBuffer{L'a', L'b', L'c', L'\0'};
    EXPECT_EQ(pzStrNCpy(acBuffer.data(), nullptr, 3), acBuffer.data());
    EXPECT_STREQ(acBuffer.data(), L"abc");
    EXPECT_EQ(pzStrNCpy(nullptr, L"abc", 3), nullptr);
}

// Search

TEST(IStrStri, FindsTheFirstWithoutRegardToCase) {
    struct {
        wchar_t const * pzText;
        wchar_t const * pzFind;
        int iExpected;
    } const atRows[] = {
        {L"abc", L"", -1},       {L"", L"abc", -1},       {L"", L"", -1},       {L"aaab", L"aab", 1},
        {L"abcABC", L"BC", 1},   {L"ABC", L"abc", 0},     {L"abc", L"c", 2},    {L"abc", L"d", -1},
        {L"abc", L"abcd", -1},   {L"xAbAbc", L"abc", 3},  {L"a[b", L"A{B", -1}, {L"\u20AC1", L"1", 1},
        {L"abab", L"ababa", -1}, {L"ababac", L"ABAC", 2},
    };
    for (auto const & tRow : atRows)
        EXPECT_EQ(iStrStri(tRow.pzText, tRow.pzFind), tRow.iExpected) << PrintToString(tRow.pzText);
}

TEST(IStrStri, FindsWhatTheFoldedTextsHold) {
    std::mt19937 tRandom(1);
    for (int i = 0; i < 100'000; ++i) {
        wstring sText = sRandom(tRandom, L"aAbB\u00E4\u00C4", 8);
        wstring sFind = sRandom(tRandom, L"aAbB\u00E4\u00C4", 3);
        int const iFound = iStrStri(sText.c_str(), sFind.c_str());
        for (wstring * ps : {&sText, &sFind})
            std::ranges::transform(*ps, ps->begin(), [](wchar_t c) { return static_cast<wchar_t>(std::towupper(c)); });
        ASSERT_EQ(iFound, sFind.empty() ? -1 : static_cast<int>(sText.find(sFind)))
            << PrintToString(sText) << PrintToString(sFind);
    }
}

TEST(FIsMultilineString, AsksForEitherLineEnd) {
    EXPECT_TRUE(fIsMultilineString(L"a\rb"));
    EXPECT_TRUE(fIsMultilineString(L"\n"));
    EXPECT_TRUE(fIsMultilineString(L"a\r\n"));
    EXPECT_FALSE(fIsMultilineString(L""));
    EXPECT_FALSE(fIsMultilineString(L"a\tb\v\f\u2028\u0085"));
    EXPECT_FALSE(fIsMultilineString(std::wstring_view(L"ab\n", 2)));
}

// Occurrence notation

TEST(FGetStringOccurence, PrintsTheShortestForm) {
    struct {
        unsigned long dwMin, dwMax;
        wchar_t const * pzExpected;
        bool fExpected;
    } const atRows[] = {
        {2, 1, L"0..1", false},
        {0, dwUnbounded, L"0..unbounded", true},
        {1, 1, L"1", true},
        {0, 0, L"0", true},
        {0, 1, L"0..1", true},
        {3, 17, L"3..17", true},
        {dwUnbounded, dwUnbounded, L"0..1", false},
        {dwUnbounded, 5, L"0..1", false},
        {dwUnbounded - 1, dwUnbounded, L"4294967294..unbounded", true},
        {dwUnbounded - 1, dwUnbounded - 1, L"4294967294", true},
        {dwUnbounded - 1, 0, L"0..1", false},
    };
    for (auto const & tRow : atRows) {
        wstring sOut = L"before";
        EXPECT_EQ(fGetStringOccurence(sOut, tRow.dwMin, tRow.dwMax, L"unbounded"), tRow.fExpected);
        EXPECT_EQ(sOut, tRow.pzExpected);
    }
    wstring sBoth = L"*";
    EXPECT_TRUE(fGetStringOccurence(sBoth, 1, dwUnbounded, sBoth));
    EXPECT_EQ(sBoth, L"1..*");
}

TEST(FGetNumOccurence, ReadsWordsRangesAndNumbers) {
    struct {
        wchar_t const * pzText;
        wchar_t const * pzUnbounded;
        unsigned long dwMin, dwMax;
        bool fExpected;
    } const atRows[] = {
        {L"*", L"*", 0, dwUnbounded, true},
        {L"unbounded", L"unbounded", 0, dwUnbounded, true},
        {L"Unbounded", L"unbounded", 0, 1, false},
        {L"3..*", L"*", 3, dwUnbounded, true},
        {L"1..unbounded", L"unbounded", 1, dwUnbounded, true},
        {L"1..unboundedly", L"unbounded", 1, dwUnbounded, true}, // as many characters as the word has
        {L"1..unbound", L"unbounded", 1, 1, true},
        {L"1..Unbounded", L"unbounded", 1, 1, true},
        {L" 1.. *", L"*", 1, dwUnbounded, true},
        {L"1 ..*", L"*", 1, 1, true},
        {L"5", L"*", 5, 5, true},
        {L"0..1", L"*", 0, 1, true},
        {L"2..1", L"*", 2, 1, true},
        {L"1..2x", L"*", 1, 2, true},
        {L"1.. 2", L"*", 1, 2, true},
        {L"3x", L"*", 3, 3, true},
        {L"3:", L"*", 3, 3, true}, // what stands beside the digits is none
        {L"3/", L"*", 3, 3, true},
        {L"3.", L"*", 3, 3, true},
        {L"3..", L"*", 3, 3, true},
        {L"3...4", L"*", 3, 3, true},
        {L"3..x", L"*", 3, 3, true},
        {L"3..-", L"*", 3, 3, true},
        {L"abc", L"*", 0, 1, false},
        {L"", L"*", 0, 1, false},
        {L"..2", L"*", 0, 1, false},
        {L"- 1", L"*", 0, 1, false},
        {L"+1..+2", L"*", 1, 2, true},
        {L"-1..-2", L"*", dwUnbounded, dwUnbounded - 1, true},
        {L"4294967297..8589934594", L"*", 1, 2, true}, // wraps
        {L"", L"", 0, dwUnbounded, true},
        {L"1..", L"", 1, 1, true},
        {L"1..2", L"", 1, 2, true},
        {L"1..no limit", L"no limit", 1, 1, true}, // a scan stops at white space
        {L"no limit", L"no limit", 0, dwUnbounded, true},
        {L"1..5", L"5", 1, dwUnbounded, true},
        {L"5", L"5", 0, dwUnbounded, true},
        {L"1..57", L"5", 1, dwUnbounded, true},
    };
    for (auto const & tRow : atRows) {
        unsigned long dwMin = 77;
        unsigned long dwMax = 78;
        EXPECT_EQ(fGetNumOccurence(tRow.pzText, dwMin, dwMax, tRow.pzUnbounded), tRow.fExpected)
            << PrintToString(tRow.pzText);
        EXPECT_EQ(dwMin, tRow.dwMin) << PrintToString(tRow.pzText);
        EXPECT_EQ(dwMax, tRow.dwMax) << PrintToString(tRow.pzText);
    }
}

TEST(FGetNumOccurence, TakesAWordOfAnyLength) {
    wstring const sWord(100'000, L'w');
    unsigned long dwMin = 0;
    unsigned long dwMax = 0;
    EXPECT_TRUE(fGetNumOccurence(L"7.." + sWord, dwMin, dwMax, sWord));
    EXPECT_EQ(dwMin, 7u);
    EXPECT_EQ(dwMax, dwUnbounded);
    EXPECT_TRUE(fGetNumOccurence(L"7.." + sWord.substr(1), dwMin, dwMax, sWord));
    EXPECT_EQ(dwMax, 7u);
}

/// The scan functions of the platform's run-time, where `%s` is a wide string.
TEST(FGetNumOccurence, ReadsRandomTextAsTheScanFunctionsDo) {
    std::mt19937 tRandom(2);
    for (int i = 0; i < 100'000; ++i) {
        wstring const sText = sRandom(tRandom, L"0123999....  +-\tun*x", 9);
        wstring const sWord = sRandom(tRandom, L"un*", 2);
        bool fExpected = true;
        unsigned int uMin = 0;
        unsigned long dwMin = 0;
        unsigned long dwMax = 0;
        std::array<wchar_t, 16> acWord{};
        wstring const sFormat = L"%u..%" + std::to_wstring(sWord.size()) + L"s";
        if (sText == sWord) {
            dwMax = dwUnbounded;
        } else if (!sWord.empty() &&
                   _snwscanf(sText.c_str(), sText.size(), sFormat.c_str(), &uMin, acWord.data()) == 2 &&
                   acWord.data() == sWord) {
            dwMin = uMin;
            dwMax = dwUnbounded;
        } else if (_snwscanf(sText.c_str(), sText.size(), L"%lu..%lu", &dwMin, &dwMax) == 2) {
        } else if (_snwscanf(sText.c_str(), sText.size(), L"%lu", &dwMin) == 1) {
            dwMax = dwMin;
        } else {
            fExpected = false;
            dwMin = 0;
            dwMax = 1;
        }
        unsigned long dwReadMin = 77;
        unsigned long dwReadMax = 77;
        ASSERT_EQ(fGetNumOccurence(sText, dwReadMin, dwReadMax, sWord), fExpected) << PrintToString(sText);
        ASSERT_EQ(dwReadMin, dwMin) << PrintToString(sText);
        ASSERT_EQ(dwReadMax, dwMax) << PrintToString(sText) << PrintToString(sWord);
    }
}

TEST(Occurence, ComesBackFromItsText) {
    std::array<unsigned long, 6> const adwValues{0, 1, 2, 10, dwUnbounded - 1, dwUnbounded};
    for (unsigned long dwMin : adwValues) {
        for (unsigned long dwMax : adwValues) {
            wstring sText;
            if (!fGetStringOccurence(sText, dwMin, dwMax, L"many")) continue;
            unsigned long dwReadMin = 77;
            unsigned long dwReadMax = 77;
            EXPECT_TRUE(fGetNumOccurence(sText, dwReadMin, dwReadMax, L"many"));
            EXPECT_EQ(dwReadMin, dwMin);
            EXPECT_EQ(dwReadMax, dwMax);
        }
    }
}

// The numeric order

TEST(INumericStringCompare, SortsNumbersBeforeWords) {
    // "-" is the negative number with the fewest digits, and "+" the other one.
    std::vector<wstring> const sOrdered{L"-10", L"-9.11", L"-9.9", L"-9",   L"-0",   L"-",     L"+",      L"0",
                                        L"1",   L"2",     L"9",    L"9.9",  L"9.11", L"10",    L"007x1",  L"10a",
                                        L"Abc", L"abc",   L"abCD", L"abcd", L"abD",  L"apple", L"apples", L"\u00E4"};
    std::vector<wstring> sSorted = sOrdered;
    std::mt19937 tRandom(3);
    std::ranges::shuffle(sSorted, tRandom);
    std::ranges::sort(sSorted,
                      [](wstring const & s1, wstring const & s2) { return iNumericStringCompare(s1, s2) < 0; });
    EXPECT_EQ(sSorted, sOrdered);
}

TEST(INumericStringCompare, GivesTheseResults) {
    struct {
        wchar_t const * pzFirst;
        wchar_t const * pzSecond;
        int iExpected; // not normalised
    } const atRows[] = {
        {L"10", L"9", 1},         // one digit longer
        {L"1000", L"9", 3},       // three digits longer
        {L"1.5", L"1.50", -1},    // the longer fraction is the larger
        {L"1.9", L"1.11", -1},    //
        {L"-1.9", L"-1.11", 1},   //
        {L"17", L"15", 2},        // the digits' difference
        {L"-17", L"-15", -2},     //
        {L"007", L"7", 0},        // leading zeros fall out
        {L"-007", L"-7", -2},     // but not behind a sign
        {L"12 abc", L" 12", 0},   // white space ends a number
        {L"12\u00A0a", L"12", 0}, //
        {L"1.", L"1", 0},         //
        {L"-0", L"0", -1},        //
        {L"5", L"abc", -1},       // numbers first
        {L"abc", L"5", 1},        //
        {L".", L"a", -1},         // a point alone is a number
        {L".", L"+", 0},          // with as many digits as a sign
        {L"", L"a", -1},          // the empty text is none, and ends first
        {L"", L"5", 1},           //
        {L"", L"", 0},            //
        {L"  ", L"5", 1},         // nor is white space
        {L"Abc", L"abc", -1},     // upper case first, where nothing else differs
        {L"abc", L"Abc", 1},      //
        {L"abC", L"Abc", 1},      // the earliest difference in case decides
        {L"abc", L"abD", -1},     // without regard to case otherwise
        {L"abc", L"ABCD", -1},    // length comes before case
        {L"abcd", L"ABC", 1},     //
        {L"b", L"A", 1},          // 'B' - 'A'
        {L"z", L"A", 25},         //
        {L"1.2.3", L"1.2.2", 1},  // two points make a word
        {L"1-", L"1+", 2},        //
        {L"0x10", L"0x9", -8},    // a word
    };
    for (auto const & tRow : atRows)
        EXPECT_EQ(iNumericStringCompare(tRow.pzFirst, tRow.pzSecond), tRow.iExpected)
            << PrintToString(tRow.pzFirst) << PrintToString(tRow.pzSecond);
}

TEST(INumericStringCompare, LooksAtTheWholeStringAcrossNullCharacters) {
    EXPECT_EQ(iNumericStringCompare(L"a\0b"s, L"a\0c"s), -1);
    EXPECT_EQ(iNumericStringCompare(L"a\0"s, L"a"s), 1);
    EXPECT_EQ(iNumericStringCompare(L"1\0"s, L"1"s), 1); // a word
}

TEST(INumericStringCompare, TakesNumbersOfAnyLength) {
    wstring const sNines(1'000'000, L'9');
    wstring const sZeros(1'000'000, L'0');
    EXPECT_EQ(iNumericStringCompare(sNines, sNines), 0);
    EXPECT_EQ(iNumericStringCompare(L"1" + sZeros, sNines), 1);
    EXPECT_EQ(iNumericStringCompare(sNines, L"7"), 999'999);
    EXPECT_EQ(iNumericStringCompare(L"-" + sNines, L"-7"), -999'999);
    EXPECT_EQ(iNumericStringCompare(sZeros + L"7", L"7"), 0);
    EXPECT_EQ(iNumericStringCompare(L"1." + sNines, L"1.7"), 999'999);
    EXPECT_EQ(iNumericStringCompare(sNines + L"x", L"7"), 1); // a word
    EXPECT_EQ(iNumericStringCompare(wstring(1'000'000, L' '), L"7"), 1);
}

namespace {

int iCompareDigits(wstring const & s1, wstring const & s2) {
    if (s1.size() != s2.size()) return s1.size() < s2.size() ? -1 : 1;
    return iSign(s1.compare(s2));
}

int iCompareByMachine(wstring const & s1, wstring const & s2) {
    TNumberMachine const t1(s1);
    TNumberMachine const t2(s2);
    if (t1.fNumber && t2.fNumber) {
        if (t1.fNegative != t2.fNegative) return t1.fNegative ? -1 : 1;
        int const iInteger = iCompareDigits(t1.sInteger, t2.sInteger);
        int const iResult = iInteger != 0 ? iInteger : iCompareDigits(t1.sFraction, t2.sFraction);
        return t1.fNegative ? -iResult : iResult;
    }
    if (t1.fNumber != t2.fNumber) return t1.fNumber ? -1 : 1;
    wstring sFolded1 = s1;
    wstring sFolded2 = s2;
    for (wstring * ps : {&sFolded1, &sFolded2})
        std::ranges::transform(*ps, ps->begin(), [](wchar_t c) { return static_cast<wchar_t>(std::towupper(c)); });
    int const iFolded = iSign(sFolded1.compare(sFolded2));
    return iFolded != 0 ? iFolded : iSign(s1.compare(s2)); // upper case stands in front of lower case
}

} // namespace

TEST(INumericStringCompare, OrdersRandomTextAsTheMachineDoes) {
    std::mt19937 tRandom(4);
    for (int i = 0; i < 100'000; ++i) {
        wstring const s1 = sRandom(tRandom, L"0019 +-..aAb\t", 6);
        wstring const s2 = sRandom(tRandom, L"0019 +-..aAb\t", 6);
        ASSERT_EQ(iSign(iNumericStringCompare(s1, s2)), iCompareByMachine(s1, s2))
            << PrintToString(s1) << PrintToString(s2);
    }
}

TEST(INumericStringCompare, IsAnOrder) {
    std::mt19937 tRandom(5);
    std::vector<wstring> sItems;
    for (int i = 0; i < 120; ++i)
        sItems.push_back(sRandom(tRandom, L"01.-aAb\u00E4", 3));
    for (wstring const & s1 : sItems) {
        for (wstring const & s2 : sItems) {
            int const i12 = iSign(iNumericStringCompare(s1, s2));
            ASSERT_EQ(i12, -iSign(iNumericStringCompare(s2, s1))) << PrintToString(s1) << PrintToString(s2);
            for (wstring const & s3 : sItems) {
                if (i12 <= 0 && iNumericStringCompare(s2, s3) <= 0) {
                    ASSERT_LE(iNumericStringCompare(s1, s3), 0)
                        << PrintToString(s1) << PrintToString(s2) << PrintToString(s3);
                }
            }
        }
    }
}

// Template resources

namespace {
constexpr unsigned int uTemplate = 7001; // Templates.rc
}

TEST(SGetXmlTemplate, GivesTheBytesAsTheyStand) {
    HINSTANCE const hModule = GetModuleHandleW(nullptr);
    EXPECT_EQ(sGetXMLTemplate(hModule, uTemplate), "<a b=\"\x84\xE1\"/>\r\n\0."s);
    EXPECT_EQ(sGetXMLTemplate(hModule, 0x10000 + uTemplate), sGetXMLTemplate(hModule, uTemplate)); // 16 bits
    EXPECT_EQ(sGetXMLTemplate(hModule, 7002), "");                                                 // no such id
    EXPECT_EQ(sGetXMLTemplate(hModule, 7003), "");                                                 // of another type
    EXPECT_EQ(sGetXMLTemplate(reinterpret_cast<HINSTANCE>(1), uTemplate), "");
}

TEST(SGetXmlTemplateWide, ConvertsFromTheOemCodePage) {
    HINSTANCE const hModule = GetModuleHandleW(nullptr);
    std::array<wchar_t, 3> acOem{};
    MultiByteToWideChar(CP_OEMCP, 0, "\x84\xE1", 2, acOem.data(), 3);
    EXPECT_EQ(sGetXMLTemplateWide(hModule, uTemplate), L"<a b=\""s + acOem.data() + L"\"/>\r\n\0."s);
    if (GetOEMCP() == 437) {
        EXPECT_STREQ(acOem.data(), L"\u00E4\u00DF");
    }
    EXPECT_EQ(sGetXMLTemplateWide(hModule, 7002), L"");
    EXPECT_EQ(sGetXMLTemplateWide(reinterpret_cast<HINSTANCE>(1), uTemplate), L"");
}

TEST(SGetXmlTemplate, IsEmptyWhereTheSystemFails) {
    HINSTANCE const hModule = GetModuleHandleW(nullptr);
    auto const ExpectEmpty = [hModule] {
        EXPECT_EQ(sGetXMLTemplate(hModule, uTemplate), "");
        EXPECT_EQ(sGetXMLTemplateWide(hModule, uTemplate), L"");
    };
    {
        DWORD dwSize = 0;
        TSystemCall<"SizeofResource", decltype(SizeofResource)> const tCall([&](HMODULE, HRSRC) { return dwSize; });
        ExpectEmpty();
        dwSize = 1;
        EXPECT_EQ(sGetXMLTemplate(hModule, uTemplate), "<");
        EXPECT_EQ(sGetXMLTemplateWide(hModule, uTemplate), L"<");
    }
    {
        TSystemCall<"LoadResource", decltype(LoadResource)> const tCall(
            [](HMODULE, HRSRC) -> HGLOBAL { return nullptr; });
        ExpectEmpty();
    }
    int iFreed = 0;
    TSystemCall<"FreeResource", decltype(FreeResource)> const tFree([&](HGLOBAL) -> BOOL {
        ++iFreed;
        return FALSE;
    });
    TSystemCall<"LockResource", decltype(LockResource)> const tCall([](HGLOBAL) -> LPVOID { return nullptr; });
    ExpectEmpty();
    EXPECT_EQ(iFreed, 2);
}

// UUIDs

TEST(SGetUuid, IsThePlatformsTextWithoutBraces) {
    std::set<wstring> sAll;
    for (int i = 0; i < 1000; ++i) {
        wstring const sUuid = sGetUuid();
        ASSERT_EQ(sUuid.size(), 36u);
        for (std::size_t u = 0; u < sUuid.size(); ++u) {
            bool const fHyphen = u == 8 || u == 13 || u == 18 || u == 23;
            ASSERT_NE((fHyphen ? L"-"s : L"0123456789abcdef"s).find(sUuid[u]), wstring::npos) << PrintToString(sUuid);
        }
        sAll.insert(sUuid);
    }
    EXPECT_EQ(sAll.size(), 1000u);
}

TEST(SGetUuid, FreesThePlatformsText) {
    using TMake = TSystemCall<"UuidToStringW", decltype(UuidToStringW)>;
    using TFree = TSystemCall<"RpcStringFreeW", decltype(RpcStringFreeW)>;
    RPC_WSTR pzMade = nullptr;
    TMake tMake([&](auto * pUuid, RPC_WSTR * ppzText) {
        RPC_STATUS const iStatus = tMake.Original(pUuid, ppzText);
        pzMade = *ppzText;
        return iStatus;
    });
    TFree tFree([&](RPC_WSTR * ppzText) {
        EXPECT_EQ(*ppzText, pzMade);
        return tFree.Original(ppzText);
    });
    EXPECT_EQ(sGetUuid().size(), 36u);
    EXPECT_EQ(tFree.iGetCalls(), 1);
}

// Numbers for the user

namespace {
constexpr unsigned long dwAmerican = 0x0409;
constexpr unsigned long dwGerman = 0x0407;
constexpr unsigned long dwHindi = 0x0439;
} // namespace

TEST(SFormatNumber, WritesTheGroupsOfTheLocale) {
    struct {
        unsigned __int64 qwValue;
        wchar_t const * pzAmerican;
        wchar_t const * pzGerman;
    } const atRows[] = {
        {0, L"0", L"0"},
        {7, L"7", L"7"},
        {999, L"999", L"999"},
        {1000, L"1,000", L"1.000"},
        {1234567, L"1,234,567", L"1.234.567"},
        {18446744073709551615u, L"18,446,744,073,709,551,615", L"18.446.744.073.709.551.615"},
    };
    for (auto const & tRow : atRows) {
        EXPECT_EQ(sFormatNumber(dwAmerican, tRow.qwValue), tRow.pzAmerican);
        EXPECT_EQ(sFormatNumber(dwGerman, tRow.qwValue), tRow.pzGerman);
    }
}

TEST(SFormatNumber, UsesTheFirstGroupForAll) {
    std::array<wchar_t, 10> acGrouping{};
    GetLocaleInfoW(dwHindi, LOCALE_SGROUPING, acGrouping.data(), 10);
    ASSERT_STREQ(acGrouping.data(), L"3;2;0");
    EXPECT_EQ(sFormatNumber(dwHindi, 123456789), L"123,456,789"); // and not 12,34,56,789
}

TEST(SFormatNumber, IsEmptyWhereTheSystemRefuses) {
    EXPECT_EQ(sFormatNumber(0xFFFFF, 1), L"");
    TSystemCall<"GetNumberFormatW", decltype(GetNumberFormatW)> const tCall(
        [](LCID, DWORD, LPCWSTR, NUMBERFMTW const *, LPWSTR pzBuffer, int) {
            pzBuffer[0] = L'x';
            return 0;
        });
    EXPECT_EQ(sFormatNumber(dwAmerican, 1), L"");
}

TEST(SFormatNumber, AsksTheLocaleForEveryField) {
    using TCall = TSystemCall<"GetNumberFormatW", decltype(GetNumberFormatW)>;
    TCall const tCall([&](LCID lcid, DWORD dwFlags, LPCWSTR pzValue, NUMBERFMTW const * pFormat, LPWSTR, int iSize) {
        EXPECT_EQ(lcid, dwGerman);
        EXPECT_EQ(dwFlags, 0u);
        EXPECT_STREQ(pzValue, L"42");
        EXPECT_EQ(pFormat->NumDigits, 0u);
        EXPECT_EQ(pFormat->LeadingZero, 1u);
        EXPECT_EQ(pFormat->Grouping, 3u);
        EXPECT_STREQ(pFormat->lpDecimalSep, L",");
        EXPECT_STREQ(pFormat->lpThousandSep, L".");
        EXPECT_EQ(pFormat->NegativeOrder, 1u);
        EXPECT_EQ(iSize, 128);
        return 0;
    });
    EXPECT_EQ(sFormatNumber(dwGerman, 42), L"");
    EXPECT_EQ(tCall.iGetCalls(), 1);
}

// Text out of a stream

namespace {

wstring sSave(wstring const & sWritten, bool fStrip, wstring sOut = L"") {
    std::wstringstream stream;
    stream << sWritten;
    SaveXmlText(stream, sOut, fStrip);
    return sOut;
}

} // namespace

TEST(SaveXmlText, DropsWhiteSpaceInFrontAndCompletesLineEnds) {
    EXPECT_EQ(sSave(L" \t\r\n\u00A0a b\n", false), L"a b\r\n");
    EXPECT_EQ(sSave(L"a\nb\r\nc\rd\n\ne", false), L"a\r\nb\r\nc\rd\r\n\r\ne");
    EXPECT_EQ(sSave(L"a\r\r\n\n", false), L"a\r\r\n\r\n");
    EXPECT_EQ(sSave(L"abc", false, L"before "), L"before abc");
    EXPECT_EQ(sSave(L"a\0b\uFFFFc"s, false), L"a\0b\uFFFFc"s);
}

TEST(SaveXmlText, StripsTheEndOnDemand) {
    EXPECT_EQ(sSave(L" a \n\t ", true), L"a");
    EXPECT_EQ(sSave(L" a \n\t ", true, L" x "), L" x a");
    EXPECT_EQ(sSave(L" a \n", false, L" x "), L" x a \r\n");
}

TEST(SaveXmlText, LeavesTheOutputAloneWhenNothingIsThere) {
    for (wchar_t const * pzText : {L"", L" ", L" \t\r\n "}) {
        EXPECT_EQ(sSave(pzText, true, L"before "), L"before ");
        EXPECT_EQ(sSave(pzText, false, L"before "), L"before ");
    }
    std::wstringstream stream;
    stream << L"abc";
    stream.setstate(std::ios_base::failbit); // tellp is negative now
    wstring sOut = L"before ";
    SaveXmlText(stream, sOut, true);
    EXPECT_EQ(sOut, L"before ");
}

TEST(SaveXmlText, ReadsFromTheReadPositionToTheWritePosition) {
    std::wstringstream stream;
    stream << L"ab cdef";
    wstring sWord;
    stream >> sWord;
    wstring sOut;
    SaveXmlText(stream, sOut, false);
    EXPECT_EQ(sOut, L"cdef");
    EXPECT_EQ(stream.tellg(), std::streamoff(7));

    stream.clear();
    stream.seekg(1);
    stream.seekp(5);
    sOut.clear();
    SaveXmlText(stream, sOut, false);
    EXPECT_EQ(sOut, L"b cd");

    stream.seekg(6);
    SaveXmlText(stream, sOut, false);
    EXPECT_EQ(sOut, L"b cd");
}

/// Character by character, as the text comes out of the stream.
TEST(SaveXmlText, TakesRandomTextAsCharacterByCharacter) {
    std::mt19937 tRandom(9);
    for (int i = 0; i < 100'000; ++i) {
        wstring const sText = sRandom(tRandom, L" \t\r\n\nab", 8);
        bool const fStrip = tRandom() % 2 == 0;
        wstring sExpected = L"x ";
        wchar_t cBefore = L'\0';
        bool fBegun = false;
        for (wchar_t const c : sText) {
            fBegun = fBegun || !std::iswspace(c);
            if (!fBegun) continue;
            sExpected += c == L'\n' && cBefore != L'\r' ? L"\r\n" : wstring(1, c);
            cBefore = c;
        }
        while (fBegun && fStrip && std::iswspace(sExpected.back()))
            sExpected.pop_back();
        ASSERT_EQ(sSave(sText, fStrip, L"x "), sExpected) << PrintToString(sText);
    }
}

TEST(SaveXmlText, TakesALongText) {
    wstring sText;
    for (int i = 0; i < 100'000; ++i)
        sText += L"line\n";
    EXPECT_EQ(sSave(sText, false).size(), 600'000u);
}

// Lists

TEST(SplitString, KeepsEveryPiece) {
    using TPieces = std::vector<wstring>;
    EXPECT_EQ(SplitString(L"", L','), TPieces{});
    EXPECT_EQ(SplitString(L"a", L','), TPieces{L"a"});
    EXPECT_EQ(SplitString(L"a,", L','), (TPieces{L"a", L""}));
    EXPECT_EQ(SplitString(L",", L','), (TPieces{L"", L""}));
    EXPECT_EQ(SplitString(L"a,b;c,,d", L','), (TPieces{L"a", L"b;c", L"", L"d"}));
    EXPECT_EQ(SplitString(L"a\0b"s, L'\0'), (TPieces{L"a", L"b"}));
}

TEST(SGetStringListText, JoinsWithoutDelimitersAtTheEnds) {
    EXPECT_EQ(sGetStringListText({}, L','), L"");
    EXPECT_EQ(sGetStringListText({L"a"}, L','), L"a");
    EXPECT_EQ(sGetStringListText({L"a", L"", L"b"}, L','), L"a,,b");
    EXPECT_EQ(sGetStringListText({L"", L""}, L';'), L";");
}

TEST(SGetStringListText, IsTheInverseOfSplitting) {
    std::mt19937 tRandom(6);
    for (int i = 0; i < 100'000; ++i) {
        wstring const sText = sRandom(tRandom, L"a,b", 6);
        std::vector<wstring> const sPieces = SplitString(sText, L',');
        ASSERT_EQ(sPieces.size(), sText.empty() ? 0u : std::ranges::count(sText, L',') + 1u) << PrintToString(sText);
        ASSERT_EQ(sGetStringListText(sPieces, L','), sText);
    }
}

TEST(ForEachStringListComponent, CallsInOrderWithTheIndex) {
    wstring sCalls;
    ForEachStringListComponent({L"x", L"", L"z"},
                               [&](int iIndex, wstring const & s) { sCalls += std::to_wstring(iIndex) + s + L"|"; });
    EXPECT_EQ(sCalls, L"0x|1|2z|");
}

TEST(ForEachStringListComponent, FailsOnAnEmptyFunctionWhenThereAreItems) {
    EXPECT_THROW(ForEachStringListComponent({L"a"}, {}), std::bad_function_call);
    EXPECT_NO_THROW(ForEachStringListComponent({}, {}));
}
