#include "ZkTools/BigNumber.h"

#include "tests/support/Random.h"
#include "tests/values/NumberMachine.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstring>
#include <random>
#include <string>
#include <type_traits>

using namespace std::string_literals;

namespace {

using std::wstring;
using testing::PrintToString;

TBigNumber tNumber(wstring const & sText) {
    return TBigNumber(sText);
}

/// The negative flag, which stands in the second byte. A bad number has one, too.
bool fIsNegative(TBigNumber const & tNumber) {
    std::array<unsigned char, sizeof tNumber> auBytes;
    std::memcpy(auBytes.data(), &tNumber, sizeof tNumber);
    return auBytes[1] != 0;
}

/// A bad number compares below itself.
bool fIsBad(TBigNumber const & tNumber) {
    return tNumber.iCompare(tNumber) == -1;
}

} // namespace

TEST(TBigNumber, IsOneBlock) {
    EXPECT_TRUE(std::is_trivially_copyable_v<TBigNumber>);
    EXPECT_FALSE(std::is_polymorphic_v<TBigNumber>);
    EXPECT_EQ(sizeof(TBigNumber), 202u);

    TBigNumber const tValue = tNumber(L"-12.5");
    std::array<unsigned char, sizeof tValue> auBytes;
    std::memcpy(auBytes.data(), &tValue, sizeof tValue);
    EXPECT_EQ(auBytes[0], 0); // no error
    EXPECT_EQ(auBytes[1], 1); // negative
    EXPECT_EQ(std::memcmp(&auBytes[2], L"12\0", 6), 0);
    EXPECT_EQ(std::memcmp(&auBytes[102], L"5\0", 4), 0);
}

TEST(TBigNumber, ReadsAndPrints) {
    struct {
        wchar_t const * pzText;
        wchar_t const * pzPrinted;
        int iInteger;
        bool fFraction;
    } const atRows[] = {
        {L"0", L"0", 0, false},
        {L"7", L"7", 7, false},
        {L"007", L"7", 7, false},
        {L"000", L"0", 0, false},
        {L"00.5", L"0.5", 0, true},
        {L"-007", L"-007", -7, false},
        {L"+007", L"007", 7, false},
        {L"-12.50", L"-12.50", -12, true},
        {L".5", L".5", 0, true},
        {L"-.5", L"-.5", 0, true},
        {L"5.", L"5", 5, false},
        {L"-", L"-", 0, false},
        {L"+", L"", 0, false},
        {L".", L"", 0, false},
        {L"-.", L"-", 0, false},
        {L" \t\r\n\u00A012", L"12", 12, false},
        {L"12 abc", L"12", 12, false},
        {L"12\u20033", L"12", 12, false},
        {L"- 5", L"-", 0, false},
        {L"-0", L"-0", 0, false},
        {L"2147483647.9", L"2147483647.9", INT_MAX, true},
        {L"9999999999", L"9999999999", INT_MAX, false},
        {L"-9999999999", L"-9999999999", -INT_MAX, false},
    };
    for (auto const & tRow : atRows) {
        TBigNumber const tValue = tNumber(tRow.pzText);
        EXPECT_FALSE(fIsBad(tValue)) << PrintToString(tRow.pzText);
        EXPECT_EQ(tValue.sGetString(), tRow.pzPrinted) << PrintToString(tRow.pzText);
        EXPECT_EQ(tValue.iGetInteger(), tRow.iInteger) << PrintToString(tRow.pzText);
        EXPECT_EQ(tValue.fHasFractionDigits(), tRow.fFraction) << PrintToString(tRow.pzText);
    }
}

TEST(TBigNumber, RefusesWhatIsNoNumber) {
    for (wstring const & sText :
         {L""s,    L" "s,   L"\t\n"s, L"a"s,   L"1a"s,     L"1-"s,     L"1+2"s, L"--1"s, L"+-1"s, L"1.2.3"s, L".."s,
          L"1,5"s, L"0-5"s, L"0x1"s,  L"1e5"s, L"\u0661"s, L"\uFF11"s, L"1\0"s, L"1:"s,  L"1/"s,  L"-a"s,    L"00a"s}) {
        TBigNumber const tValue = tNumber(sText);
        EXPECT_TRUE(fIsBad(tValue)) << PrintToString(sText);
        EXPECT_EQ(tValue.sGetString(), L"") << PrintToString(sText);
        EXPECT_EQ(tValue.iGetInteger(), 0) << PrintToString(sText);
    }
}

TEST(TBigNumber, KeepsSignAndDigitsReadInFrontOfABadCharacter) {
    EXPECT_TRUE(tNumber(L"1.5x").fHasFractionDigits());
    EXPECT_FALSE(tNumber(L"1x.5").fHasFractionDigits());
    for (wchar_t const * const pzText : {L"-x", L"--", L"5-", L"+-5", L"1.-"}) // a minus is one before it is bad
        EXPECT_TRUE(fIsNegative(tNumber(pzText))) << PrintToString(pzText);
    for (wchar_t const * const pzText : {L"x-", L"5x-", L"++-", L"+5+"})
        EXPECT_FALSE(fIsNegative(tNumber(pzText))) << PrintToString(pzText);
}

TEST(TBigNumber, Has49DigitsOnEachSide) {
    wstring const s49 = L"1" + wstring(48, L'9');
    wstring const sLongest = L"-" + s49 + L"." + s49;
    EXPECT_EQ(tNumber(sLongest).sGetString(), sLongest);
    EXPECT_EQ(tNumber(wstring(1'000'000, L'0') + s49).sGetString(), s49);
    EXPECT_TRUE(fIsBad(tNumber(s49 + L"0")));
    EXPECT_TRUE(fIsBad(tNumber(L"-0" + s49)));
    EXPECT_TRUE(fIsBad(tNumber(L"1." + s49 + L"0")));
    EXPECT_TRUE(fIsBad(tNumber(wstring(1'000'000, L'1'))));
    EXPECT_TRUE(fIsBad(tNumber(L"1." + wstring(1'000'000, L'1'))));
    EXPECT_EQ(tNumber(s49 + L" " + wstring(1'000'000, L'1')).sGetString(), s49);
}

TEST(TBigNumber, IsMadeOfAnInt) {
    EXPECT_EQ(TBigNumber(0).sGetString(), L"0");
    EXPECT_EQ(TBigNumber(-15).sGetString(), L"-15");
    EXPECT_EQ(TBigNumber(-15).iGetInteger(), -15);
    EXPECT_EQ(TBigNumber(INT_MAX).sGetString(), L"2147483647");
    EXPECT_EQ(TBigNumber(INT_MIN + 1).iGetInteger(), INT_MIN + 1);
    EXPECT_FALSE(TBigNumber(5).fHasFractionDigits());
    EXPECT_TRUE(TBigNumber(-5) == tNumber(L"-5"));
    EXPECT_FALSE(TBigNumber(0) == tNumber(L"-0"));
}

TEST(TBigNumber, TheLowestIntKeepsItsOwnMinusSign) {
    EXPECT_EQ(TBigNumber(INT_MIN).sGetString(), L"--2147483648");
    EXPECT_EQ(TBigNumber(INT_MIN).iGetInteger(), INT_MIN);
}

TEST(TBigNumber, ComparesNotNormalised) {
    struct {
        wchar_t const * pzFirst;
        wchar_t const * pzSecond;
        int iExpected;
    } const atRows[] = {
        {L"7", L"7", 0},          {L"007", L"7", 0},      {L"1", L"-1", 1},     {L"-1", L"1", -1},
        {L"-0", L"0", -1},        {L"0", L"-0", 1},       {L"1000", L"99", 2},  {L"99", L"1000", -2},
        {L"-1000", L"-99", -2},   {L"-007", L"-7", -2},   {L"15", L"19", -4},   {L"-15", L"-19", 4},
        {L"1.9", L"1.11", -1},    {L"-1.9", L"-1.11", 1}, {L"1.50", L"1.5", 1}, {L"1.55", L"1.52", 3},
        {L"-1.55", L"-1.52", -3}, {L"2.1", L"1.111", 1},  {L"1", L"1.", 0},     {L"1", L"1.0", -1},
        {L"-", L"-1", 1},         {L"+", L".", 0},        {L"12 x", L" 12", 0},
    };
    for (auto const & tRow : atRows)
        EXPECT_EQ(tNumber(tRow.pzFirst).iCompare(tNumber(tRow.pzSecond)), tRow.iExpected)
            << PrintToString(tRow.pzFirst) << PrintToString(tRow.pzSecond);
}

TEST(TBigNumber, OperatorsFollowTheComparison) {
    std::array<TBigNumber, 3> const atNumbers{tNumber(L"-5"), tNumber(L"0.5"), TBigNumber(7)};
    for (std::size_t u1 = 0; u1 < atNumbers.size(); ++u1) {
        for (std::size_t u2 = 0; u2 < atNumbers.size(); ++u2) {
            EXPECT_EQ(atNumbers[u1] == atNumbers[u2], u1 == u2);
            EXPECT_EQ(atNumbers[u1] < atNumbers[u2], u1 < u2);
            EXPECT_EQ(atNumbers[u1] > atNumbers[u2], u1 > u2);
            EXPECT_EQ(atNumbers[u1] <= atNumbers[u2], u1 <= u2);
            EXPECT_EQ(atNumbers[u1] >= atNumbers[u2], u1 >= u2);
        }
    }
}

TEST(TBigNumber, ABadNumberIsBelowEverything) {
    TBigNumber const tBad = tNumber(L"bad");
    TBigNumber const tGood = tNumber(L"-5");
    for (auto const & [t1, t2] : {std::pair(tBad, tGood), std::pair(tGood, tBad), std::pair(tBad, tBad)}) {
        EXPECT_EQ(t1.iCompare(t2), -1);
        EXPECT_FALSE(t1 == t2);
        EXPECT_TRUE(t1 < t2);
        EXPECT_TRUE(t1 <= t2);
        EXPECT_FALSE(t1 > t2);
        EXPECT_FALSE(t1 >= t2);
    }
}

TEST(TBigNumber, CopiesAll) {
    TBigNumber const tValue = tNumber(L"-12.5");
    TBigNumber tCopy(tValue);
    EXPECT_TRUE(tCopy == tValue);
    tCopy = tNumber(L"bad");
    EXPECT_TRUE(fIsBad(tCopy));
    tCopy = tValue;
    EXPECT_EQ(tCopy.sGetString(), L"-12.5");
}

TEST(TBigNumber, ReadsRandomTextAsTheMachineDoes) {
    std::mt19937 tRandom(7);
    int iGood = 0;
    for (int i = 0; i < 100'000; ++i) {
        wstring const sText = zk_test::sRandom(tRandom, L"0012 +-..x\u00A0", 6);
        zk_test::TNumberMachine const tExpected(sText);
        TBigNumber const tValue = tNumber(sText);
        ASSERT_EQ(fIsBad(tValue), !tExpected.fNumber) << PrintToString(sText);
        ASSERT_EQ(tValue.fHasFractionDigits(), !tExpected.sFraction.empty()) << PrintToString(sText);
        ASSERT_EQ(fIsNegative(tValue), tExpected.fNegative) << PrintToString(sText);
        wstring sPrinted;
        if (tExpected.fNumber) {
            ++iGood;
            sPrinted = (tExpected.fNegative ? L"-" : L"") + tExpected.sInteger +
                       (tExpected.sFraction.empty() ? L"" : L"." + tExpected.sFraction);
        }
        ASSERT_EQ(tValue.sGetString(), sPrinted) << PrintToString(sText);
    }
    EXPECT_GT(iGood, 10'000);
}
