#include "ZkTools/DecimalValue.h"

#include "ZkTools/MessageIds.h"
#include "tests/support/Handle.h"
#include "tests/support/Narrow.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <random>
#include <regex>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

namespace {

using std::wstring;
using zk_test::sNarrow;

#ifdef _WIN64
static_assert(sizeof(TDecimalValue) == 8 + 2 * sizeof(wstring)); // a flag and two texts, no virtual operation
#endif
static_assert(!std::is_polymorphic_v<TDecimalValue> && !std::is_default_constructible_v<TDecimalValue>);
static_assert(std::is_nothrow_move_constructible_v<TDecimalValue> && std::is_nothrow_move_assignable_v<TDecimalValue>);
static_assert(std::is_base_of_v<TXZkTools, TDecimalValue::TXInvalid>);
static_assert(sizeof(TDecimalValue::TXInvalid) == sizeof(TXZkTools));

using TFactory = TDecimalValue (*)(wstring const &);

/// One of the types, and its range where it is a finite integer range.
struct TType {
    TFactory pMake;
    wchar_t const * pzName;
    std::optional<std::int64_t> piMin;  ///< the least value; nothing: none
    std::optional<std::uint64_t> puMax; ///< the size of the greatest value; nothing: none
    bool fMaxIsNegative = false;
};

std::array<TType, 13> const atIntegerTypes{{
    {&TDecimalValue::make_integer, L"integer", {}, {}},
    {&TDecimalValue::make_long, L"long", INT64_MIN, INT64_MAX},
    {&TDecimalValue::make_int, L"int", INT32_MIN, INT32_MAX},
    {&TDecimalValue::make_short, L"short", -32768, 32767},
    {&TDecimalValue::make_byte, L"byte", -128, 127},
    {&TDecimalValue::make_nonNegativeInteger, L"nonNegativeInteger", 0, {}},
    {&TDecimalValue::make_positiveInteger, L"positivInteger", 1, {}},
    {&TDecimalValue::make_unsignedLong, L"unsignedLong", 0, UINT64_MAX},
    {&TDecimalValue::make_unsignedInt, L"unsignedInt", 0, UINT32_MAX},
    {&TDecimalValue::make_unsignedShort, L"unsignedShort", 0, 65535},
    {&TDecimalValue::make_unsignedByte, L"unsignedByte", 0, 255},
    {&TDecimalValue::make_nonPositiveInteger, L"nonPositiveInteger", {}, 0},
    {&TDecimalValue::make_negativeInteger, L"negativeInteger", {}, 1, true},
}};

/// The value, or nothing when the text is refused.
std::optional<TDecimalValue> ptTry(TFactory pMake, wstring const & sText) {
    try {
        return pMake(sText);
    } catch (TDecimalValue::TXInvalid const &) {
        return std::nullopt;
    }
}

bool fIsValid(TFactory pMake, wstring const & sText) {
    return ptTry(pMake, sText).has_value();
}

/// Values do not give their parts: equality with a value made of them tells whether they are these.
void ExpectParts(TDecimalValue const & tValue, bool fNegative, wstring const & sInteger, wstring const & sFraction,
                 wstring const & sText) {
    EXPECT_TRUE(tValue == TDecimalValue::make(fNegative, sInteger, sFraction)) << sNarrow(sText);
    EXPECT_EQ(tValue.iGetTotalDigits(), static_cast<int>(sInteger.size() + sFraction.size())) << sNarrow(sText);
    EXPECT_EQ(tValue.iGetFractionDigits(), static_cast<int>(sFraction.size())) << sNarrow(sText);
}

/// The comparison of both, in both directions, and all six operators.
void ExpectCompare(wstring const & sFirst, wstring const & sSecond, int iResult) {
    TDecimalValue const tFirst = TDecimalValue::make_decimal(sFirst);
    TDecimalValue const tSecond = TDecimalValue::make_decimal(sSecond);
    SCOPED_TRACE(sNarrow(sFirst + L" and " + sSecond));
    EXPECT_EQ(tFirst.iCompare(tSecond), iResult);
    EXPECT_EQ(tSecond.iCompare(tFirst), -iResult);
    EXPECT_EQ(tFirst == tSecond, iResult == 0);
    EXPECT_EQ(tFirst != tSecond, iResult != 0);
    EXPECT_EQ(tFirst < tSecond, iResult < 0);
    EXPECT_EQ(tFirst <= tSecond, iResult <= 0);
    EXPECT_EQ(tFirst > tSecond, iResult > 0);
    EXPECT_EQ(tFirst >= tSecond, iResult >= 0);
}

/// Whether the range of the type has the number of that sign and size. -0 is below 0.
bool fIsInRange(TType const & tType, bool fNegative, std::uint64_t uSize) {
    if (tType.piMin) {
        auto const uLimit = static_cast<std::uint64_t>(*tType.piMin);
        if (*tType.piMin >= 0 ? fNegative || uSize < uLimit : fNegative && uSize > 0 - uLimit) return false;
    }
    if (!tType.puMax) return true;
    return tType.fMaxIsNegative ? fNegative && uSize >= *tType.puMax : fNegative || uSize <= *tType.puMax;
}

int iSign(int i) {
    return (i > 0) - (i < 0);
}

} // namespace

TEST(TDecimalValue, TakesEveryFormAndMakesItCanonical) {
    struct TRow {
        wchar_t const * pzText;
        bool fNegative;
        wchar_t const * pzInteger;
        wchar_t const * pzFraction;
    };
    constexpr auto atRows = std::to_array<TRow>({
        {L"0", false, L"0", L""},          {L"5", false, L"5", L""},
        {L"+5", false, L"5", L""},         {L"-5", true, L"5", L""},
        {L"-0", true, L"0", L""},          {L"+0", false, L"0", L""},
        {L"000", false, L"0", L""},        {L"0012", false, L"12", L""},
        {L"1200", false, L"1200", L""},    {L"1.", false, L"1", L""},
        {L"1.0", false, L"1", L""},        {L"1.000", false, L"1", L""},
        {L"1.500", false, L"1", L"5"},     {L"00.10", false, L"0", L"1"},
        {L"-00.0", true, L"0", L""},       {L"0.5", false, L"0", L"5"},
        {L"0.05", false, L"0", L"05"},     {L"12.3040", false, L"12", L"304"},
        {L"+0012.", false, L"12", L""},    {L"0123456789.9876543210", false, L"123456789", L"987654321"},
        {L"-0.00100", true, L"0", L"001"},
    });
    for (TRow const & tRow : atRows)
        ExpectParts(TDecimalValue::make_decimal(tRow.pzText), tRow.fNegative, tRow.pzInteger, tRow.pzFraction,
                    tRow.pzText);
}

TEST(TDecimalValue, KeepsOnlyTheLastDigitBehindALeadingPoint) {
    ExpectParts(TDecimalValue::make_decimal(L".5"), false, L"", L"5", L".5");
    ExpectParts(TDecimalValue::make_decimal(L"+.5"), false, L"", L"5", L"+.5");
    ExpectParts(TDecimalValue::make_decimal(L"-.5"), true, L"", L"5", L"-.5");
    ExpectParts(TDecimalValue::make_decimal(L".125"), false, L"", L"5", L".125");
    ExpectParts(TDecimalValue::make_decimal(L".50"), false, L"", L"", L".50"); // the last digit is a zero
    ExpectParts(TDecimalValue::make_decimal(L".0"), false, L"", L"", L".0");
    ExpectParts(TDecimalValue::make_decimal(L"-.100"), true, L"", L"", L"-.100");
    EXPECT_FALSE(TDecimalValue::make_decimal(L".5") == TDecimalValue::make_decimal(L"0.5"));
}

TEST(TDecimalValue, RefusesEveryOtherForm) {
    constexpr auto apzTexts = std::to_array<wchar_t const *>({
        L"",       L"-",      L"+",      L".",    L"-.",  L"+.",  L"+-5", L"--5",     L"5-",         L"5+",
        L"1e5",    L"1E5",    L" 5",     L"5 ",   L"5\n", L"\t5", L"5 5", L"- 5",     L"1..",        L"1.2.3",
        L"..1",    L".1.",    L"1,5",    L"0x10", L"abc", L"INF", L"NaN", L"5a",      L"a5",         L"1.a",
        L"\u0665", L"\uFF15", L"\u00BD", L"/",    L":",   L"1/2", L"1:2", L"\u22125", L"1\u00A0000", L"1.5\r\n",
    });
    for (wchar_t const * const pzText : apzTexts) {
        EXPECT_FALSE(fIsValid(&TDecimalValue::make_decimal, pzText)) << sNarrow(pzText);
        for (TType const & tType : atIntegerTypes)
            EXPECT_FALSE(fIsValid(tType.pMake, pzText)) << sNarrow(tType.pzName) << ": " << sNarrow(pzText);
    }
}

TEST(TDecimalValue, RefusesANullAnywhere) {
    for (wstring const & sText : {wstring(1, L'\0'), wstring(L"5\0", 2), wstring(L"5\0006", 3), wstring(L"\0005", 2)})
        EXPECT_FALSE(fIsValid(&TDecimalValue::make_decimal, sText)) << sText.size();
}

TEST(TDecimalValue, IntegersMayHaveAFractionOfZeros) {
    for (TType const & tType : atIntegerTypes) {
        wstring const sOne = tType.puMax && *tType.puMax <= 1 ? L"-1" : L"1";
        bool const fNegative = sOne.size() == 2;
        for (wchar_t const * const pzFraction : {L"", L".", L".0", L".000"})
            ExpectParts(tType.pMake(sOne + pzFraction), fNegative, L"1", L"", tType.pzName);
        for (wchar_t const * const pzFraction : {L".5", L".10", L".001", L".0000000000000000000001"})
            EXPECT_FALSE(fIsValid(tType.pMake, sOne + pzFraction)) << sNarrow(tType.pzName);
    }
}

TEST(TDecimalValue, IntegersThatBeginWithThePointHaveNoDigits) {
    ExpectParts(TDecimalValue::make_integer(L".0"), false, L"", L"", L".0");
    ExpectParts(TDecimalValue::make_integer(L".50"), false, L"", L"", L".50");
    EXPECT_FALSE(fIsValid(&TDecimalValue::make_integer, L".05"));
    // No digits are fewer than the one of the least value.
    EXPECT_FALSE(fIsValid(&TDecimalValue::make_nonNegativeInteger, L".0"));
    EXPECT_TRUE(fIsValid(&TDecimalValue::make_byte, L".0"));
    EXPECT_TRUE(fIsValid(&TDecimalValue::make_nonPositiveInteger, L".0"));
    EXPECT_FALSE(fIsValid(&TDecimalValue::make_negativeInteger, L".0"));
    EXPECT_FALSE(fIsValid(&TDecimalValue::make_negativeInteger, L"-.0"));
}

TEST(TDecimalValue, TypesEndExactlyAtTheirLimits) {
    struct TRow {
        TFactory pMake;
        wchar_t const * pzText;
        bool fValid;
    };
    auto const atRows = std::to_array<TRow>({
        {&TDecimalValue::make_integer, L"-99999999999999999999999999999999999999999", true},
        {&TDecimalValue::make_integer, L"99999999999999999999999999999999999999999", true},
        {&TDecimalValue::make_integer, L"-0", true},
        {&TDecimalValue::make_long, L"-9223372036854775809", false},
        {&TDecimalValue::make_long, L"-9223372036854775808", true},
        {&TDecimalValue::make_long, L"9223372036854775807", true},
        {&TDecimalValue::make_long, L"9223372036854775808", false},
        {&TDecimalValue::make_long, L"-0", true},
        {&TDecimalValue::make_int, L"-2147483649", false},
        {&TDecimalValue::make_int, L"-2147483648", true},
        {&TDecimalValue::make_int, L"2147483647", true},
        {&TDecimalValue::make_int, L"2147483648", false},
        {&TDecimalValue::make_short, L"-32769", false},
        {&TDecimalValue::make_short, L"-32768", true},
        {&TDecimalValue::make_short, L"32767", true},
        {&TDecimalValue::make_short, L"32768", false},
        {&TDecimalValue::make_byte, L"-129", false},
        {&TDecimalValue::make_byte, L"-128", true},
        {&TDecimalValue::make_byte, L"127", true},
        {&TDecimalValue::make_byte, L"+0127", true},
        {&TDecimalValue::make_byte, L"127.000", true},
        {&TDecimalValue::make_byte, L"128", false},
        {&TDecimalValue::make_byte, L"1000", false},
        {&TDecimalValue::make_nonNegativeInteger, L"0", true},
        {&TDecimalValue::make_nonNegativeInteger, L"-1", false},
        {&TDecimalValue::make_nonNegativeInteger, L"-0", false},
        {&TDecimalValue::make_nonNegativeInteger, L"99999999999999999999999999999", true},
        {&TDecimalValue::make_positiveInteger, L"0", false},
        {&TDecimalValue::make_positiveInteger, L"1", true},
        {&TDecimalValue::make_positiveInteger, L"-1", false},
        {&TDecimalValue::make_positiveInteger, L"99999999999999999999999999999", true},
        {&TDecimalValue::make_unsignedLong, L"0", true},
        {&TDecimalValue::make_unsignedLong, L"-0", false},
        {&TDecimalValue::make_unsignedLong, L"18446744073709551615", true},
        {&TDecimalValue::make_unsignedLong, L"018446744073709551615.0", true},
        {&TDecimalValue::make_unsignedLong, L"18446744073709551616", false},
        {&TDecimalValue::make_unsignedLong, L"20000000000000000000", false},
        {&TDecimalValue::make_unsignedInt, L"0", true},
        {&TDecimalValue::make_unsignedInt, L"-0", false},
        {&TDecimalValue::make_unsignedInt, L"4294967295", true},
        {&TDecimalValue::make_unsignedInt, L"4294967296", false},
        {&TDecimalValue::make_unsignedShort, L"0", true},
        {&TDecimalValue::make_unsignedShort, L"-0", false},
        {&TDecimalValue::make_unsignedShort, L"65535", true},
        {&TDecimalValue::make_unsignedShort, L"65536", false},
        {&TDecimalValue::make_unsignedByte, L"0", true},
        {&TDecimalValue::make_unsignedByte, L"-0", false},
        {&TDecimalValue::make_unsignedByte, L"-1", false},
        {&TDecimalValue::make_unsignedByte, L"255", true},
        {&TDecimalValue::make_unsignedByte, L"256", false},
        {&TDecimalValue::make_nonPositiveInteger, L"0", true},
        {&TDecimalValue::make_nonPositiveInteger, L"-0", true},
        {&TDecimalValue::make_nonPositiveInteger, L"1", false},
        {&TDecimalValue::make_nonPositiveInteger, L"-99999999999999999999999999999", true},
        {&TDecimalValue::make_negativeInteger, L"0", false},
        {&TDecimalValue::make_negativeInteger, L"-0", false},
        {&TDecimalValue::make_negativeInteger, L"-1", true},
        {&TDecimalValue::make_negativeInteger, L"1", false},
        {&TDecimalValue::make_negativeInteger, L"-99999999999999999999999999999", true},
    });
    for (std::size_t i = 0; i < atRows.size(); ++i)
        EXPECT_EQ(fIsValid(atRows[i].pMake, atRows[i].pzText), atRows[i].fValid)
            << "row " << i << ": " << sNarrow(atRows[i].pzText);
}

TEST(TDecimalValue, FailureTellsTheTextAsGivenAndTheNameOfTheType) {
    auto const ExpectFailure = [](TFactory pMake, wstring const & sText, wstring const & sName) {
        try {
            static_cast<void>(pMake(sText));
            ADD_FAILURE() << sNarrow(sName);
        } catch (TDecimalValue::TXInvalid const & tError) {
            EXPECT_EQ(tError.iGetNumber(), 4534);
            EXPECT_EQ(tError.sGetModule(), L"ZKTOOLS");
            EXPECT_EQ(tError.what(),
                      sNarrow(L"\"" + sText + L"\" is not a valid value of the type \"" + sName + L"\"."));
        }
    };
    ExpectFailure(&TDecimalValue::make_decimal, L" 1 ", L"decimal");
    ExpectFailure(&TDecimalValue::make_decimal, L"", L"decimal");
    for (TType const & tType : atIntegerTypes) {
        ExpectFailure(tType.pMake, L"+001.50", tType.pzName); // too many digits behind the point
        ExpectFailure(tType.pMake, L"100%s%n%%", tType.pzName);
    }
    ExpectFailure(&TDecimalValue::make_byte, L"+0128.0", L"byte");
    ExpectFailure(&TDecimalValue::make_positiveInteger, L"-0", L"positivInteger");
    ExpectFailure(&TDecimalValue::make_unsignedByte, wstring(100'000, L'9'), L"unsignedByte");
}

TEST(TDecimalValue, FailureIsOneOfTheLibrary) {
    EXPECT_THROW(static_cast<void>(TDecimalValue::make_decimal(L"x")), TXZkTools);
    EXPECT_THROW(static_cast<void>(TDecimalValue::make_decimal(L"x")), TXError);
    EXPECT_THROW(static_cast<void>(TDecimalValue::make_decimal(L"x")), std::runtime_error);
}

TEST(TXInvalid, CopiesMovesAndTakesFurtherMessages) {
    TDecimalValue::TXInvalid const tFirst(L"a%d", L"b");
    TDecimalValue::TXInvalid tCopy(tFirst);
    TDecimalValue::TXInvalid tMoved(std::move(tCopy));
    TDecimalValue::TXInvalid tAssigned(L"x", L"y");
    tAssigned = tFirst;
    TDecimalValue::TXInvalid tMoveAssigned(L"x", L"y");
    tMoveAssigned = std::move(tMoved);
    for (TDecimalValue::TXInvalid const & tError : {tFirst, tAssigned, tMoveAssigned}) {
        EXPECT_STREQ(tError.what(), "\"a%d\" is not a valid value of the type \"b\".");
        EXPECT_EQ(tError.iGetNumber(), 4534);
    }
    TXError & tRoot = tAssigned; // the message comes from the library's module, not from that of the base library
    tRoot.AddMessage(IDS_DIRECTORY_MISSING, L"C:\\x");
    EXPECT_STREQ(tAssigned.what(),
                 (std::string(tFirst.what()) + "\r\n" + TXZkTools(IDS_DIRECTORY_MISSING, L"C:\\x").what()).c_str());
}

TEST(TDecimalValue, MakeTakesThePartsAsTheyAre) {
    TDecimalValue const tValue = TDecimalValue::make(false, L"007", L"50");
    EXPECT_EQ(tValue.iGetTotalDigits(), 5);
    EXPECT_EQ(tValue.iGetFractionDigits(), 2);
    EXPECT_FALSE(tValue == TDecimalValue::make_decimal(L"7.5"));
    EXPECT_EQ(TDecimalValue::make(true, L"", L"").iGetTotalDigits(), 0);
    EXPECT_EQ(TDecimalValue::make(false, L"a", L"").iCompare(TDecimalValue::make(false, L"A", L"")), 32);
    EXPECT_EQ(TDecimalValue::make(false, L"\uFFFF", L"").iCompare(TDecimalValue::make(false, L"1", L"")),
              0xFFFF - L'1');
    wstring const sWithNull(L"1\0002", 3);
    EXPECT_LT(TDecimalValue::make(false, sWithNull, L""), TDecimalValue::make(false,
                                                                              L"1\x01"
                                                                              "2",
                                                                              L""));
    EXPECT_EQ(TDecimalValue::make(false, sWithNull, L"").iGetTotalDigits(), 3);
}

TEST(TDecimalValue, CopiesAndMovesKeepTheValue) {
    wstring const sDigits(1000, L'7');
    TDecimalValue const tFirst = TDecimalValue::make_decimal(L"-" + sDigits + L"." + sDigits);
    TDecimalValue tCopy(tFirst);
    EXPECT_TRUE(tCopy == tFirst);
    TDecimalValue tMoved(std::move(tCopy));
    EXPECT_TRUE(tMoved == tFirst);
    TDecimalValue tAssigned = TDecimalValue::make_decimal(L"1");
    tAssigned = tMoved;
    EXPECT_TRUE(tAssigned == tFirst);
    tAssigned = TDecimalValue::make_decimal(L"2");
    EXPECT_TRUE(tAssigned == TDecimalValue::make_decimal(L"2"));
    EXPECT_TRUE(tMoved == tFirst);
}

TEST(TDecimalValue, ComparesTheSignFirst) {
    ExpectCompare(L"-1", L"1", -1);
    ExpectCompare(L"-0", L"0", -1);
    ExpectCompare(L"-9999.9", L"0", -1);
    ExpectCompare(L"-1", L"-1.", 0);
    ExpectCompare(L"1", L"+01.0", 0);
}

TEST(TDecimalValue, ComparesThenTheNumberOfDigitsBeforeThePoint) {
    ExpectCompare(L"1", L"100", -2);
    ExpectCompare(L"-1", L"-100", 2);
    ExpectCompare(L"99.9", L"100", -1);
    ExpectCompare(L".5", L"0.5", -1);
    ExpectCompare(L".5", L"0.1", -1);
    ExpectCompare(L"-.5", L"-0.1", 1);
}

TEST(TDecimalValue, ComparesThenTheDigitsBeforeThePoint) {
    ExpectCompare(L"9", L"1", 8);
    ExpectCompare(L"-9", L"-1", -8);
    ExpectCompare(L"129", L"138", -1);
    ExpectCompare(L"12.9", L"13", -1);
}

TEST(TDecimalValue, ComparesThenTheNumberOfDigitsBehindThePoint) {
    ExpectCompare(L"1.9", L"1.11", -1);
    ExpectCompare(L"1.5", L"1.05", -1);
    ExpectCompare(L"1", L"1.001", -3);
    ExpectCompare(L"-1.9", L"-1.11", 1);
    ExpectCompare(L"-1.0001", L"-1.9", -3);
}

TEST(TDecimalValue, ComparesTheDigitsBehindThePointLast) {
    ExpectCompare(L"1.19", L"1.12", 7);
    ExpectCompare(L"-1.19", L"-1.12", -7);
    ExpectCompare(L"0.05", L"0.15", -1);
    ExpectCompare(L".1", L".9", -8);
    ExpectCompare(L".129", L".9", 0);
}

// The pattern and its groups, by the standard library. Its matcher recurses, so that only short texts can be shown it.
TEST(TDecimalValue, AgreesWithARegularExpression) {
    std::wregex const tPattern(LR"((\+|-)?(?:([0-9]+)(?:\.([0-9]*))?|\.([0-9])+))");
    constexpr std::wstring_view sAlphabet = L"00012359..+- e\u0665";
    std::mt19937 tRandom(20240115);
    int iMatches = 0;
    for (int i = 0; i < 100'000; ++i) {
        wstring sText(tRandom() % 9, L'\0');
        for (wchar_t & c : sText)
            c = sAlphabet[tRandom() % (tRandom() % 4 == 0 ? sAlphabet.size() : 10)];
        if (!sText.empty() && tRandom() % 3 == 0) sText[0] = sAlphabet[10 + tRandom() % 2];

        std::wsmatch tMatch;
        bool const fMatches = std::regex_match(sText, tMatch, tPattern);
        std::optional<TDecimalValue> const ptValue = ptTry(&TDecimalValue::make_decimal, sText);
        ASSERT_EQ(ptValue.has_value(), fMatches) << sNarrow(sText);
        if (!fMatches) continue;
        ++iMatches;
        wstring sInteger = tMatch.str(2);
        while (sInteger.size() > 1 && sInteger.front() == L'0')
            sInteger.erase(0, 1);
        wstring sFraction = tMatch.length(3) != 0 ? tMatch.str(3) : tMatch.str(4);
        while (!sFraction.empty() && sFraction.back() == L'0')
            sFraction.pop_back();
        ASSERT_TRUE(*ptValue == TDecimalValue::make(tMatch.str(1) == L"-", sInteger, sFraction)) << sNarrow(sText);
    }
    EXPECT_GT(iMatches, 20'000);
    EXPECT_LT(iMatches, 80'000);
}

// Sign and size as numbers, written down with any number of zeros.
TEST(TDecimalValue, RangesAgreeWithNumbers) {
    std::mt19937_64 tRandom(20240115);
    for (TType const & tType : atIntegerTypes) {
        int iValid = 0;
        for (int i = 0; i < 10'000; ++i) {
            std::uint64_t uSize = tRandom() >> (tRandom() % 64);
            if (tRandom() % 4 == 0) uSize = (std::uint64_t{1} << (tRandom() % 64)) + tRandom() % 5 - 2;
            bool const fNegative = tRandom() % 2 == 0;
            bool const fFraction = tRandom() % 8 == 0;
            wstring sText(fNegative ? L"-" : L"");
            auto const sZeros = [&] { return wstring(static_cast<std::size_t>(tRandom() % 3), L'0'); };
            sText.append(sZeros()).append(std::to_wstring(uSize));
            if (tRandom() % 2 == 0 || fFraction) sText.append(L".").append(sZeros());
            if (fFraction) sText += L'5';

            std::optional<TDecimalValue> const ptValue = ptTry(tType.pMake, sText);
            bool const fExpected = !fFraction && fIsInRange(tType, fNegative, uSize);
            ASSERT_EQ(ptValue.has_value(), fExpected) << sNarrow(tType.pzName) << ": " << sNarrow(sText);
            if (!fExpected) continue;
            ++iValid;
            ASSERT_TRUE(*ptValue == TDecimalValue::make(fNegative, std::to_wstring(uSize), L"")) << sNarrow(sText);
        }
        EXPECT_GT(iValid, 100) << sNarrow(tType.pzName);
    }
}

TEST(TDecimalValue, OrderIsThatOfTheParts) {
    struct TValue {
        bool fNegative;
        wstring sInteger;
        wstring sFraction;
    };
    std::mt19937 tRandom(7);
    auto const tDraw = [&] {
        auto const sDigits = [&](std::size_t uMost) {
            wstring s(tRandom() % (uMost + 1), L'0');
            for (wchar_t & c : s)
                c = static_cast<wchar_t>(L'0' + tRandom() % 3);
            return s;
        };
        return TValue{tRandom() % 2 == 0, sDigits(2), sDigits(3)};
    };
    for (int i = 0; i < 100'000; ++i) {
        TValue const tFirst = tDraw();
        TValue const tSecond = tDraw();
        auto const tKey = [](TValue const & t) {
            return std::tuple(t.sInteger.size(), t.sInteger, t.sFraction.size(), t.sFraction);
        };
        int iExpected = tKey(tFirst) < tKey(tSecond) ? -1 : tKey(tSecond) < tKey(tFirst) ? 1 : 0;
        if (tFirst.fNegative) iExpected = -iExpected;
        if (tFirst.fNegative != tSecond.fNegative) iExpected = tFirst.fNegative ? -1 : 1;
        TDecimalValue const tLeft = TDecimalValue::make(tFirst.fNegative, tFirst.sInteger, tFirst.sFraction);
        TDecimalValue const tRight = TDecimalValue::make(tSecond.fNegative, tSecond.sInteger, tSecond.sFraction);
        ASSERT_EQ(iSign(tLeft.iCompare(tRight)), iExpected)
            << sNarrow(tFirst.sInteger + L"." + tFirst.sFraction + L" " + tSecond.sInteger + L"." + tSecond.sFraction);
    }
}

namespace {

/// Works on values of a million digits; 1 when all went well.
DWORD WINAPI dwUseAMillionDigits(void *) {
    wstring const sOnes(1'000'000, L'1');
    wstring const sZeros(1'000'000, L'0');
    TDecimalValue const tLong = TDecimalValue::make_decimal(L"-" + sZeros + sOnes + L"." + sOnes + sZeros);
    bool fGood = tLong == TDecimalValue::make(true, sOnes, sOnes);
    fGood = fGood && tLong.iGetTotalDigits() == 2'000'000 && tLong.iGetFractionDigits() == 1'000'000;
    fGood = fGood && TDecimalValue::make_integer(sOnes + L"." + sZeros) == TDecimalValue::make(false, sOnes, L"");
    fGood = fGood && TDecimalValue::make_decimal(L"." + sOnes) == TDecimalValue::make(false, L"", L"1");
    fGood = fGood && TDecimalValue::make_unsignedByte(sZeros) == TDecimalValue::make(false, L"0", L"");
    wstring sLarger = sOnes;
    sLarger.back() = L'2';
    fGood = fGood && TDecimalValue::make_integer(sOnes) < TDecimalValue::make_integer(sLarger);
    try {
        static_cast<void>(TDecimalValue::make_decimal(sOnes + L"x"));
        fGood = false;
    } catch (TDecimalValue::TXInvalid const & tError) {
        fGood = fGood && std::string_view(tError.what()).size() > 1'000'000;
    }
    return fGood ? 1 : 0;
}

} // namespace

TEST(TDecimalValue, AMillionDigitsNeedNoStack) {
    zk_test::THandle const hThread(
        CreateThread(nullptr, 128 * 1024, &dwUseAMillionDigits, nullptr, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr));
    ASSERT_TRUE(hThread);
    ASSERT_EQ(WaitForSingleObject(hThread.hGet(), 60'000), WAIT_OBJECT_0);
    DWORD dwExit = 0;
    ASSERT_TRUE(GetExitCodeThread(hThread.hGet(), &dwExit));
    EXPECT_EQ(dwExit, 1u);
}
