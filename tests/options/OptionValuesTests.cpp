// The text of an element as a value, and the forms of other types in a tree.
#include "ZkTools/OptionTree.h"

#include "ZkTools/DateTime.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Random.h"
#include "tests/support/SystemCall.h"

#include <wincrypt.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <ctime>
#include <functional>
#include <random>
#include <string>
#include <system_error>
#include <vector>

namespace {

using std::wstring;
using zk_test::sRandom;
using namespace std::string_literals;
using TBytes = std::vector<unsigned char>;

TOptionElement tMakeElement(wstring const & sText) {
    TOptionElement tElement;
    tElement.SetText(sText);
    return tElement;
}

/// What the element reads as a value of this type from the text.
template <typename TValue>
TValue tRead(wstring const & sText, TValue tBefore = {}) {
    tMakeElement(sText).Read(tBefore);
    return tBefore;
}

/// What the element writes for the value.
template <typename TValue>
wstring sWrite(TValue const & tValue) {
    TOptionElement tElement;
    tElement.Write(tValue);
    return tElement.sGetText();
}

wstring sWriteBytes(TBytes const & tBytes) {
    TOptionElement tElement;
    tElement.SetText(L"old");
    tElement.Write(tBytes.data(), static_cast<int>(tBytes.size()));
    return tElement.sGetText();
}

/// What the call throws: the number and the start of the text of a std::system_error.
std::pair<int, std::string> tSystemError(std::function<void()> const & tCall) {
    try {
        tCall();
    } catch (std::system_error const & tError) {
        EXPECT_EQ(tError.code().category(), std::system_category());
        std::string const sText = tError.what();
        return {tError.code().value(), sText.substr(0, sText.find(')') + 1)};
    }
    return {};
}

zk_test::TChildRole const tBrokenContract(L"broken-contract", [](std::vector<wstring> const & sArguments) {
    std::set_terminate([] {
        zk_test::Say("terminated");
        TerminateProcess(GetCurrentProcess(), 42);
    });
    TOptionElement tElement;
    char const acData[] = "data";
    zk_test::Say("calls");
    tElement.Write(sArguments.at(0) == L"null" ? nullptr : acData, std::stoi(sArguments.at(1)));
    zk_test::Say("returned");
    return 0;
});

} // namespace

TEST(TOptionText, IsTheValueOfAString) {
    TOptionElement tElement;
    tElement.Write(L"a\0b"s);
    wstring sValue = L"old";
    tElement.Read(sValue);
    EXPECT_EQ(sValue, L"a\0b"s);
    tElement.Write(L"literal");
    EXPECT_EQ(tElement.sGetText(), L"literal");
    tElement.Write(static_cast<wchar_t const *>(nullptr));
    EXPECT_EQ(tElement.sGetText(), L"");
}

TEST(TOptionText, IsCopiedIntoABufferAsFarAsItFits) {
    TOptionElement const tElement = tMakeElement(L"abcd");
    for (unsigned long ulSize = 1; ulSize < 8; ++ulSize) {
        std::array<wchar_t, 9> acBuffer;
        acBuffer.fill(L'#');
        tElement.Read(acBuffer.data(), ulSize);
        EXPECT_EQ(acBuffer.data(), std::wstring_view(L"abcd").substr(0, ulSize - 1)) << ulSize;
        EXPECT_EQ(acBuffer[ulSize - 1], L'\0') << ulSize; // the last place, whatever the length
        EXPECT_EQ(acBuffer[ulSize], L'#') << ulSize;
    }
    wchar_t cUntouched = L'#';
    tElement.Read(&cUntouched, 0);
    EXPECT_EQ(cUntouched, L'#');
    tElement.Read(nullptr, 5);
}

TEST(TOptionText, IsTrueForExactlyOneText) {
    EXPECT_TRUE(tRead<bool>(L"true"));
    for (wchar_t const * const pz : {L"True", L"TRUE", L"true ", L" true", L"1", L"false", L"", L"tru"})
        EXPECT_FALSE(tRead(pz, true)) << pz;
    EXPECT_FALSE(tRead(L"true\0"s, true));
    EXPECT_EQ(sWrite(true), L"true");
    EXPECT_EQ(sWrite(false), L"false");
}

TEST(TOptionText, IsACharacter) {
    EXPECT_EQ(tRead<wchar_t>(L"xyz"), L'x');
    EXPECT_EQ(tRead<wchar_t>(L"", L'#'), L'\0');
    EXPECT_EQ(sWrite(L'\u20AC'), L"\u20AC");
    EXPECT_EQ(sWrite(L'\0'), L"\0"s);
}

TEST(TOptionNumbers, AreReadFromTheStartOfTheText) {
    struct TCase {
        wchar_t const * pzText;
        int iValue;
    };
    for (auto const & [pzText, iValue] : std::to_array<TCase>({
             {L"", 0},
             {L"x", 0},
             {L"0", 0},
             {L"12", 12},
             {L"+12", 12},
             {L"-12", -12},
             {L" \t\r\n12", 12},
             {L"12abc", 12},
             {L"12.9", 12},
             {L"0x10", 0},
             {L"010", 10},
             {L"- 12", 0},
             {L"--12", 0},
             {L"2147483647", INT_MAX},
             {L"-2147483648", INT_MIN},
             {L"2147483648", INT_MAX}, // the nearest
             {L"4294967295", INT_MAX},
             {L"-2147483649", INT_MIN},
             {L"99999999999999999999999", INT_MAX},
         })) {
        EXPECT_EQ(tRead<int>(pzText, 7), iValue) << pzText;
        EXPECT_EQ(tRead<long>(pzText, 7), iValue) << pzText;
        EXPECT_EQ(tRead<unsigned int>(pzText, 7), static_cast<unsigned int>(iValue)) << pzText;
        EXPECT_EQ(tRead<unsigned long>(pzText, 7), static_cast<unsigned long>(iValue)) << pzText;
        EXPECT_EQ(tRead<short>(pzText, 7), static_cast<short>(iValue)) << pzText;
        EXPECT_EQ(tRead<unsigned short>(pzText, 7), static_cast<unsigned short>(iValue)) << pzText;
        EXPECT_EQ(tRead<unsigned char>(pzText, 7), static_cast<unsigned char>(iValue)) << pzText;
    }
}

namespace {

/// White space and a sign at the start of a text, taken off it; true for a minus.
bool fTakeSign(wstring & sText) {
    sText.erase(0, std::min(sText.find_first_not_of(L" \t\n"), sText.size()));
    bool const fNegative = sText.starts_with(L'-');
    if (fNegative || sText.starts_with(L'+')) sText.erase(0, 1);
    return fNegative;
}

wstring sTakeDigits(wstring & sText) {
    std::size_t const uCount = std::min(sText.find_first_not_of(L"0123456789"), sText.size());
    wstring const sDigits = sText.substr(0, uCount);
    sText.erase(0, uCount);
    return sDigits;
}

} // namespace

TEST(TOptionNumbers, AreReadFromRandomText) {
    std::mt19937 tRandom(21);
    for (int i = 0; i < 100'000; ++i) {
        wstring const sText = sRandom(tRandom, L"00123456789 -+\t\n.x", 13);
        wstring sRest = sText;
        bool const fNegative = fTakeSign(sRest);
        double dExpected = 0; // holds every number of 13 digits
        for (wchar_t const c : sTakeDigits(sRest))
            dExpected = dExpected * 10 + (c - L'0');
        dExpected = std::clamp<double>(fNegative ? -dExpected : dExpected, INT_MIN, INT_MAX);
        ASSERT_EQ(tRead<int>(sText, 7), static_cast<int>(dExpected)) << testing::PrintToString(sText);
    }
}

TEST(TOptionNumbers, RealsAreReadFromRandomText) {
    std::mt19937 tRandom(22);
    int iNumbers = 0;
    for (int i = 0; i < 100'000; ++i) {
        wstring const sText = sRandom(tRandom, L"0123456789.. -+\tz", 13);
        wstring sRest = sText;
        bool const fNegative = fTakeSign(sRest);
        wstring const sInteger = sTakeDigits(sRest);
        wstring sFraction;
        if (sRest.starts_with(L'.')) sFraction = sTakeDigits(sRest.erase(0, 1));
        double dExpected = 7.5; // left as it was
        if (wstring const sDigits = sInteger + sFraction; !sDigits.empty()) {
            ++iNumbers;
            dExpected =
                static_cast<double>(std::stoull(sDigits)); // both are exact, so that the quotient is the nearest
            double dPower = 1;
            for (std::size_t u = 0; u < sFraction.size(); ++u)
                dPower *= 10;
            dExpected /= fNegative ? -dPower : dPower;
        }
        ASSERT_EQ(tRead(sText, 7.5), dExpected) << testing::PrintToString(sText);
    }
    EXPECT_GT(iNumbers, 20'000);
}

TEST(TOptionNumbers, MayHaveAMillionDigits) {
    wstring const sZeros(1'000'000, L'0');
    EXPECT_EQ(tRead<int>(sZeros + L"12"), 12);
    EXPECT_EQ(tRead<int>(L"-" + wstring(1'000'000, L'9')), INT_MIN);
    EXPECT_EQ(tRead<double>(sZeros + L"1.5" + sZeros), 1.5);
    EXPECT_EQ(tRead(wstring(1'000'000, L' ') + L"x", 7.5), 7.5);
}

TEST(TOptionNumbers, AreCutToTheWidthOfTheTarget) {
    EXPECT_EQ(tRead<unsigned char>(L"256"), 0);
    EXPECT_EQ(tRead<unsigned char>(L"511"), 255);
    EXPECT_EQ(tRead<unsigned char>(L"-1"), 255);
    EXPECT_EQ(tRead<short>(L"32768"), -32768);
    EXPECT_EQ(tRead<short>(L"65537"), 1);
    EXPECT_EQ(tRead<unsigned short>(L"65536"), 0);
    EXPECT_EQ(tRead<unsigned short>(L"-1"), 65535);
    EXPECT_EQ(tRead<unsigned int>(L"-1"), UINT_MAX);
}

TEST(TOptionNumbers, AreWrittenInDecimal) {
    EXPECT_EQ(sWrite<unsigned char>(255), L"255");
    EXPECT_EQ(sWrite<short>(-32768), L"-32768");
    EXPECT_EQ(sWrite<unsigned short>(65535), L"65535");
    EXPECT_EQ(sWrite<int>(INT_MIN), L"-2147483648");
    EXPECT_EQ(sWrite<int>(INT_MAX), L"2147483647");
    EXPECT_EQ(sWrite<long>(LONG_MIN), L"-2147483648");
    EXPECT_EQ(sWrite<unsigned long>(ULONG_MAX), L"4294967295");
}

TEST(TOptionNumbers, AnUnsignedIntIsWrittenAsASignedOne) {
    EXPECT_EQ(sWrite<unsigned int>(0x7FFFFFFF), L"2147483647");
    EXPECT_EQ(sWrite<unsigned int>(0x80000000), L"-2147483648");
    EXPECT_EQ(sWrite<unsigned int>(UINT_MAX), L"-1");
    EXPECT_EQ(tRead<unsigned int>(sWrite<unsigned int>(UINT_MAX)), UINT_MAX);
    TOptionElement tElement;
    tElement << UINT_MAX; // but by the operator as an unsigned one, which does not come back
    EXPECT_EQ(tElement.sGetText(), L"4294967295");
    EXPECT_EQ(tRead<unsigned int>(L"4294967295"), 0x7FFFFFFFu);
}

TEST(TOptionNumbers, OperatorsReadWriteAndGiveTheElement) {
    TOptionElement tElement;
    EXPECT_EQ(&(tElement << L"text"s), &tElement);
    wstring sValue;
    EXPECT_EQ(&(tElement >> sValue), &tElement);
    EXPECT_EQ(sValue, L"text");

    unsigned short uShort = 0;
    EXPECT_EQ(&(tElement << static_cast<unsigned short>(65535)), &tElement);
    EXPECT_EQ(&(tElement >> uShort), &tElement);
    EXPECT_EQ(uShort, 65535);

    unsigned int uInt = 0;
    EXPECT_EQ(&(tElement << 123u), &tElement);
    EXPECT_EQ(&(tElement >> uInt), &tElement);
    EXPECT_EQ(uInt, 123u);

    unsigned long ulLong = 0;
    EXPECT_EQ(&(tElement << 4294967295ul), &tElement);
    EXPECT_EQ(tElement.sGetText(), L"4294967295");
    EXPECT_EQ(&(tElement >> ulLong), &tElement);
    EXPECT_EQ(ulLong, 0x7FFFFFFFul);
    static_assert(std::is_same_v<decltype(tElement >> ulLong), TOptionElement const &>);
}

TEST(TOptionNumbers, RealsHaveSixDecimals) {
    EXPECT_EQ(sWrite(1.5), L"1.500000");
    EXPECT_EQ(sWrite(-0.0000004), L"-0.000000");
    EXPECT_EQ(sWrite(1e20), L"100000000000000000000.000000");
    EXPECT_EQ(sWrite(1e300).size(), 308u);
    EXPECT_EQ(tRead<double>(L"1.5"), 1.5);
    EXPECT_EQ(tRead<double>(L"  -2.5e3 and more"), -2500.0);
    EXPECT_EQ(tRead<double>(L"3"), 3.0);
    for (wchar_t const * const pz : {L"", L"x1", L"."})
        EXPECT_EQ(tRead(pz, 7.5), 7.5) << pz; // left as it was
}

TEST(TOptionBytes, AreBase64WithoutLineBreaks) {
    struct TCase {
        TBytes tBytes;
        wchar_t const * pzText;
    };
    for (auto const & [tBytes, pzText] : std::to_array<TCase>({
             {{}, L""},
             {{0}, L"AA=="},
             {{0xFF, 0xFE}, L"//4="},
             {{1, 2, 3}, L"AQID"},
             {{'h', 'e', 'l', 'l', 'o'}, L"aGVsbG8="},
         })) {
        EXPECT_EQ(sWriteBytes(tBytes), pzText);
        EXPECT_EQ(tRead<TBytes>(pzText, {9, 9}), tBytes) << pzText;
    }
    TBytes tLong(10'000);
    for (std::size_t i = 0; i < tLong.size(); ++i)
        tLong[i] = static_cast<unsigned char>(i * 7);
    wstring const sLong = sWriteBytes(tLong);
    EXPECT_EQ(sLong.size(), 13'336u);
    EXPECT_EQ(sLong.find_first_of(L"\r\n"), wstring::npos);
    EXPECT_EQ(tRead<TBytes>(sLong), tLong);
}

TEST(TOptionBytes, AreEncodedAsByHand) {
    constexpr std::wstring_view sDigits = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::mt19937 tRandom(23);
    for (int i = 0; i < 20'000; ++i) {
        TBytes tBytes(tRandom() % 20);
        for (unsigned char & u : tBytes)
            u = static_cast<unsigned char>(tRandom());
        wstring sExpected;
        for (std::size_t u = 0; u < tBytes.size(); u += 3) {
            std::size_t const uCount = std::min<std::size_t>(3, tBytes.size() - u);
            unsigned int uGroup = 0;
            for (std::size_t uByte = 0; uByte < 3; ++uByte)
                uGroup = uGroup << 8 | (uByte < uCount ? tBytes[u + uByte] : 0u);
            for (std::size_t uDigit = 0; uDigit < 4; ++uDigit)
                sExpected += uDigit <= uCount ? sDigits[uGroup >> (18 - 6 * uDigit) & 63] : L'=';
        }
        ASSERT_EQ(sWriteBytes(tBytes), sExpected);
        ASSERT_EQ(tRead<TBytes>(sExpected, {9}), tBytes);
    }
}

TEST(TOptionBytes, RandomTextIsBytesOrAFailure) {
    std::mt19937 tRandom(24);
    int iFailures = 0;
    for (int i = 0; i < 100'000; ++i) {
        wstring const sText = sRandom(tRandom, L"AZaz09+/==\r\n !-\u00C4\0"s, 12);
        TBytes tBytes{9};
        try {
            tMakeElement(sText).Read(tBytes);
            ASSERT_LE(tBytes.size(), (sText.size() + 3) / 4 * 3) << testing::PrintToString(sText);
        } catch (std::system_error const &) {
            ++iFailures;
            ASSERT_EQ(tBytes, TBytes{9});
        }
    }
    EXPECT_GT(iFailures, 10'000);
    EXPECT_LT(iFailures, 99'000);
}

TEST(TOptionBytes, NoBytesNeedNoMemory) {
    TOptionElement tElement = tMakeElement(L"old");
    tElement.Write(nullptr, 0);
    EXPECT_EQ(tElement.sGetText(), L"");
}

TEST(TOptionBytes, NoBytesAndNoTextAreNoMatterOfTheSystem) {
    // Windows refuses both; Wine takes them.
    zk_test::TSystemCall<"CryptStringToBinaryW", decltype(CryptStringToBinaryW)> const tDecode(
        [](LPCWSTR, DWORD, DWORD, BYTE *, DWORD *, DWORD *, DWORD *) {
            return zk_test::tFailWith(ERROR_INVALID_PARAMETER, FALSE);
        });
    zk_test::TSystemCall<"CryptBinaryToStringW", decltype(CryptBinaryToStringW)> const tEncode(
        [](BYTE const *, DWORD, DWORD, LPWSTR, DWORD *) { return zk_test::tFailWith(ERROR_INVALID_PARAMETER, FALSE); });
    EXPECT_EQ(tRead<TBytes>(L"", {9, 9}), TBytes());
    EXPECT_EQ(sWriteBytes({}), L"");
}

TEST(TOptionBytes, TextThatIsNoneFails) {
    TOptionElement const tElement = tMakeElement(L"!");
    TBytes tBytes{1};
    EXPECT_EQ(tSystemError([&] { tElement.Read(tBytes); }),
              (std::pair<int, std::string>{ERROR_INVALID_DATA, "CryptStringToBinary failed (1)"}));
    EXPECT_EQ(tBytes, TBytes{1});
}

TEST(TOptionBytes, EveryRefusedCallIsTold) {
    using TToBinary = decltype(CryptStringToBinaryW);
    using TToString = decltype(CryptBinaryToStringW);
    TOptionElement tElement = tMakeElement(L"AQID");
    for (int const iFailing : {1, 2}) {
        std::string const sNumber = iFailing == 1 ? "(1)" : "(2)";
        TBytes tBytes{9};
        zk_test::TSystemCall<"CryptStringToBinaryW", TToBinary> tDecode(
            [&](LPCWSTR pzText, DWORD dwLength, DWORD dwFlags, BYTE * pTarget, DWORD * pdwSize, DWORD * pdwSkip,
                DWORD * pdwFlags) {
                EXPECT_EQ(dwFlags, static_cast<DWORD>(CRYPT_STRING_BASE64));
                if (tDecode.iGetCalls() == iFailing) return zk_test::tFailWith(ERROR_OUTOFMEMORY, FALSE);
                return tDecode.Original(pzText, dwLength, dwFlags, pTarget, pdwSize, pdwSkip, pdwFlags);
            });
        EXPECT_EQ(tSystemError([&] { tElement.Read(tBytes); }),
                  (std::pair<int, std::string>{ERROR_OUTOFMEMORY, "CryptStringToBinary failed " + sNumber}));
        EXPECT_EQ(tBytes, TBytes{9});
        zk_test::TSystemCall<"CryptBinaryToStringW", TToString> tEncode(
            [&](BYTE const * pData, DWORD dwSize, DWORD dwFlags, LPWSTR pzTarget, DWORD * pdwLength) {
                EXPECT_EQ(dwFlags, static_cast<DWORD>(CRYPT_STRING_BASE64 | CRYPT_STRING_NOCRLF));
                if (tEncode.iGetCalls() == iFailing) return zk_test::tFailWith(ERROR_OUTOFMEMORY, FALSE);
                return tEncode.Original(pData, dwSize, dwFlags, pzTarget, pdwLength);
            });
        EXPECT_EQ(tSystemError([&] { tElement.Write("x", 1); }),
                  (std::pair<int, std::string>{ERROR_OUTOFMEMORY, "CryptBinaryToString failed " + sNumber}));
        EXPECT_EQ(tElement.sGetText(), L"AQID");
    }
}

TEST(TOptionBytes, ABrokenContractEndsTheProcess) {
    struct TCase {
        wchar_t const * pzData;
        wchar_t const * pzSize;
    };
    for (auto const & [pzData, pzSize] :
         std::to_array<TCase>({{L"data", L"-1"}, {L"null", L"-1"}, {L"null", L"1"}, {L"data", L"-2147483648"}})) {
        zk_test::TChildProcess tChild(tBrokenContract, {pzData, pzSize});
        EXPECT_EQ(tChild.sHear(), "calls");
        EXPECT_EQ(tChild.sHear(), "terminated") << pzData << ' ' << pzSize;
        EXPECT_EQ(tChild.dwWait(), 42u);
    }
    zk_test::TChildProcess tChild(tBrokenContract, {L"null", L"0"});
    EXPECT_EQ(tChild.sHear(), "calls");
    EXPECT_EQ(tChild.sHear(), "returned");
}

TEST(TOptionDates, AreTextsOfTheFixedForm) {
    tm tTime{};
    tTime.tm_year = 124;
    tTime.tm_mday = 15;
    tTime.tm_hour = 8;
    tTime.tm_min = 30;
    tTime.tm_sec = 7;
    EXPECT_EQ(sWrite(tTime), L"2024-01-15T08:30:07");
    tm const tBack = tRead<tm>(sWrite(tTime));
    EXPECT_TRUE(TStructTm(tBack) == TStructTm(tTime));
    EXPECT_EQ(tBack.tm_wday, 1);
    EXPECT_EQ(tRead<tm>(L"2024-01-15").tm_mday, 15);
}

TEST(TOptionDates, WhatIsNoDateIsTheFirstOfThemAll) {
    EXPECT_EQ(sWrite(tm{}), L"1601-01-01T00:00:00");
    for (wchar_t const * const pz : {L"", L"08:30:00", L"2024-02-30", L"1601-01-01T00:00:00"}) {
        tm const tTime = tRead<tm>(pz);
        EXPECT_EQ(tTime.tm_year, -299) << pz;
        EXPECT_EQ(tTime.tm_mon, 0) << pz;
        EXPECT_EQ(tTime.tm_mday, 1) << pz;
    }
}

TEST(TOptionDates, StructTmPersistsInAnElement) {
    TStructTm tTime;
    TOptionElement tElement;
    tTime.Write(tElement);
    EXPECT_EQ(tElement.sGetText(), L"1601-01-01T00:00:00");
    tElement.SetText(L"2024-02-29T23:59:59");
    tTime.Read(tElement);
    EXPECT_EQ(tTime.tm_mon, 1);
    EXPECT_EQ(tTime.tm_mday, 29);
    EXPECT_EQ(tTime.tm_sec, 59);
    TOptionElement tWritten;
    tTime.Write(tWritten);
    EXPECT_EQ(tWritten.sGetText(), tElement.sGetText());
}

TEST(TOptionStrings, AreChildrenOfAnyName) {
    TOptionElement tElement;
    tElement.pAddElement(L"String", L"a");
    tElement.pAddElement(L"Other", L"");
    tElement.pAddElement(L"String", L"c")->pAddElement(L"String", L"deeper");
    TZkStringArray tArray;
    tArray.Add(L"old");
    tArray.Read(tElement);
    EXPECT_EQ((std::vector<wstring>{tArray.begin(), tArray.end()}), (std::vector<wstring>{L"a", L"", L"c"}));
    tArray.Read(TOptionElement());
    EXPECT_TRUE(tArray.IsEmpty());
}

TEST(TOptionStrings, AreAddedToWhatThereIs) {
    TZkStringArray tArray;
    tArray.Add(L"a");
    tArray.Add(L"");
    TOptionElement tElement;
    tElement.pAddElement(L"Other", L"x");
    tArray.Write(tElement);
    tArray.Write(tElement);
    ASSERT_EQ(tElement.iCountElements(), 5);
    EXPECT_EQ(tElement.iCountElements(L"String"), 4);
    EXPECT_EQ(tElement.pGetElement(1)->sGetName(), L"String");
    EXPECT_EQ(tElement.sGetElementText(3), L"a");
    EXPECT_EQ(tElement.pGetElement(3)->pParent, &tElement);
}

TEST(ReadOption, ComparesWithoutRegardToCase) {
    TOptionElement tParent;
    tParent.pAddElement(L"Flag", L"YES");
    tParent.pAddElement(L"Off", L"no");
    unsigned short uValue = 7;
    ReadOption(uValue, tParent, L"Flag", L"yes");
    EXPECT_EQ(uValue, 1);
    ReadOption(uValue, tParent, L"Off", L"yes");
    EXPECT_EQ(uValue, 0);
    ReadOption(uValue, tParent, L"Flag", L"yes", 9);
    EXPECT_EQ(uValue, 1);
    ReadOption(uValue, tParent, L"Off", L"yes", 9);
    EXPECT_EQ(uValue, 0);
}

TEST(ReadOption, AMissingChildKeepsTheValueOrGivesTheDefault) {
    TOptionElement const tParent;
    unsigned short uValue = 7;
    ReadOption(uValue, tParent, L"Flag", L"yes");
    EXPECT_EQ(uValue, 7);
    ReadOption(uValue, tParent, L"Flag", L"yes", 9);
    EXPECT_EQ(uValue, 9);
}
