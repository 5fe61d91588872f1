#include "ZkBase/CodePages.h"

#include "ZkBase/Exceptions.h"
#include "ZkBase/Windows.h"
#include "tests/support/SystemCall.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

struct TRow {
    ECodePage eCodePage;
    int iValue;
    unsigned short uNumber;
};

constexpr std::array<TRow, 18> atFixed{{
    {ecpUtf8, 1, 65001},
    {ecpWestern, 2, 1252},
    {ecpUtf16, 4, 1200},
    {ecpUtf16Swapped, 5, 1201},
    {ecpLatin1, 6, 28591},
    {ecpAscii, 7, 20127},
    {ecpJapanese, 8, 932},
    {ecpChineseSimplified, 9, 936},
    {ecpKorean, 10, 949},
    {ecpChineseTraditional, 11, 950},
    {ecpCentralEuropean, 12, 1250},
    {ecpCyrillic, 13, 1251},
    {ecpGreek, 14, 1253},
    {ecpTurkish, 15, 1254},
    {ecpHebrew, 16, 1255},
    {ecpArabic, 17, 1256},
    {ecpBaltic, 18, 1257},
    {ecpVietnamese, 19, 1258},
}};

/// Keeps what it takes. `tLimit` tells how much of an offer that is.
struct TReceiver : IConvertReceiver {
    unsigned int Receive(void const * pData, unsigned int uBytes) override {
        ++iOffers;
        unsigned int const uTaken = tLimit ? std::min(tLimit(uBytes), uBytes) : uBytes;
        sTaken.append(static_cast<char const *>(pData), uTaken);
        return uTaken;
    }

    std::function<unsigned int(unsigned int)> tLimit;
    std::string sTaken;
    int iOffers = 0;
};

std::string_view sBytesOf(std::wstring_view sText) {
    return {reinterpret_cast<char const *>(sText.data()), sText.size() * sizeof(wchar_t)};
}

unsigned int uWrite(TConvertStream & tStream, std::wstring_view sText) {
    return tStream.Write(sText.data(), static_cast<unsigned int>(sBytesOf(sText).size()));
}

/// The whole text in one call of the platform.
std::string sConvertAtOnce(unsigned short uCodePage, std::wstring_view sText) {
    std::string sResult(sBytesOf(sText));
    if (uCodePage == 1200) return sResult;
    if (uCodePage == 1201) {
        for (std::size_t i = 0; i < sResult.size(); i += 2)
            std::swap(sResult[i], sResult[i + 1]);
        return sResult;
    }
    DWORD const dwFlags = uCodePage == CP_UTF8 ? 0 : WC_NO_BEST_FIT_CHARS;
    sResult.resize(sText.size() * 4);
    sResult.resize(static_cast<std::size_t>(WideCharToMultiByte(uCodePage, dwFlags, sText.data(),
                                                                static_cast<int>(sText.size()), sResult.data(),
                                                                static_cast<int>(sResult.size()), nullptr, nullptr)));
    return sResult;
}

/// Text of all kinds: ASCII, letters of many scripts, whole pairs, lone halves.
std::wstring sRandomText(std::mt19937 & tEngine, std::size_t uUnits) {
    auto const uBetween = [&](unsigned int uFirst, unsigned int uLast) {
        return static_cast<wchar_t>(std::uniform_int_distribution<unsigned int>(uFirst, uLast)(tEngine));
    };
    std::wstring sText;
    while (sText.size() < uUnits) {
        switch (uBetween(0, 7)) {
        case 0:
        case 1:
            sText += uBetween(0x20, 0x7E);
            break;
        case 2:
            sText += uBetween(0xA0, 0x45F);
            break;
        case 3:
            sText += uBetween(0x3041, 0x9FA5);
            break;
        case 4:
            sText += uBetween(0xD800, 0xDFFF);
            break;
        case 5:
            sText += uBetween(1, 0xFFFF);
            break;
        default:
            (sText += uBetween(0xD800, 0xDBFF)) += uBetween(0xDC00, 0xDFFF);
        }
    }
    return sText;
}

/// Hands the text over in random pieces, odd counts of bytes and unaligned starts among them, and offers again what is
/// not taken.
void WriteInPieces(TConvertStream & tStream, std::string_view sBytes, std::mt19937 & tEngine, unsigned int uMostBytes) {
    std::string sUnaligned = " ";
    sUnaligned += sBytes;
    char const * const pBegin = sUnaligned.data() + 1;
    std::size_t uDone = 0;
    while (uDone < sBytes.size()) {
        auto const uPiece = static_cast<unsigned int>(std::min<std::size_t>(
            std::uniform_int_distribution<unsigned int>(0, uMostBytes)(tEngine), sBytes.size() - uDone));
        unsigned int const uTaken = tStream.Write(pBegin + uDone, uPiece);
        ASSERT_LE(uTaken, uPiece);
        ASSERT_EQ(uTaken % 2, 0U);
        uDone += uTaken;
    }
}

constexpr std::array<ECodePage, 12> aeTried{
    ecpDefault, ecpUtf8,  ecpWestern,  ecpOem,   ecpUtf16,  ecpUtf16Swapped,
    ecpLatin1,  ecpAscii, ecpJapanese, ecpGreek, ecpKorean, ecpChineseTraditional,
};

} // namespace

TEST(CodePages, HaveTheirNumbersAndValues) {
    for (TRow const & tRow : atFixed) {
        EXPECT_EQ(tRow.eCodePage, tRow.iValue);
        EXPECT_EQ(uGetCodePage(tRow.eCodePage), tRow.uNumber);
        EXPECT_EQ(eFindCodePage(tRow.uNumber), tRow.eCodePage);
    }
    EXPECT_EQ(ecpDefault, 0);
    EXPECT_EQ(ecpOem, 3);
}

TEST(CodePages, TakeDefaultAndOemFromTheSystem) {
    EXPECT_EQ(uGetCodePage(ecpDefault), GetACP());
    EXPECT_EQ(uGetCodePage(ecpOem), GetOEMCP());
}

TEST(CodePages, CountAnUnknownValueAsTheDefault) {
    EXPECT_EQ(uGetCodePage(static_cast<ECodePage>(-1)), GetACP());
    EXPECT_EQ(uGetCodePage(static_cast<ECodePage>(20)), GetACP());
    EXPECT_EQ(eFindCodePage(0), ecpDefault);
    EXPECT_EQ(eFindCodePage(54936), ecpDefault);
    EXPECT_EQ(eFindCodePage(65000), ecpDefault);
}

TEST(CodePages, LookForFixedNumbersThenForTheSystemsOwn) {
    auto const eFindWith = [](unsigned int uAnsi, unsigned int uOem, unsigned short uCodePage) {
        zk_test::TSystemCall<"GetACP", decltype(GetACP)> tAnsi([=] { return uAnsi; }, L"ZkBase.dll");
        zk_test::TSystemCall<"GetOEMCP", decltype(GetOEMCP)> tOem([=] { return uOem; }, L"ZkBase.dll");
        return eFindCodePage(uCodePage);
    };
    EXPECT_EQ(eFindWith(1252, 437, 437), ecpOem);
    EXPECT_EQ(eFindWith(1252, 437, 1252), ecpWestern);
    EXPECT_EQ(eFindWith(1252, 437, 850), ecpDefault);
    EXPECT_EQ(eFindWith(932, 932, 932), ecpJapanese);
    EXPECT_EQ(eFindWith(874, 874, 874), ecpDefault);
    EXPECT_EQ(eFindWith(65001, 65001, 65001), ecpUtf8);
}

TEST(TConvertStream, ConvertsFromUtf16Only) {
    TReceiver tReceiver;
    EXPECT_THROW(TConvertStream(ecpUtf8, static_cast<EConvertDirection>(0), &tReceiver), std::invalid_argument);
    EXPECT_THROW(TConvertStream(ecpUtf8, static_cast<EConvertDirection>(2), &tReceiver), std::invalid_argument);
    EXPECT_EQ(ecdFromUtf16, 1);
}

TEST(TConvertStream, DeliversWithTheWrite) {
    TReceiver tReceiver;
    TConvertStream tStream(ecpUtf8, ecdFromUtf16, &tReceiver);
    EXPECT_EQ(uWrite(tStream, L"aä€"), 6U);
    EXPECT_EQ(tReceiver.sTaken, "a\xC3\xA4\xE2\x82\xAC");
    EXPECT_EQ(tStream.Write(nullptr, 0), 0U);
    tStream.Flush();
    EXPECT_EQ(tReceiver.sTaken, "a\xC3\xA4\xE2\x82\xAC");
    EXPECT_EQ(tReceiver.iOffers, 1);
}

TEST(TConvertStream, GivesWhatAWholeConversionGives) {
    std::mt19937 tEngine(3);
    for (ECodePage eCodePage : aeTried) {
        std::wstring const sText = sRandomText(tEngine, 3000);
        std::string const sExpected = sConvertAtOnce(uGetCodePage(eCodePage), sText);
        for (unsigned int uMostBytes : {1U, 3U, 7U, 600U, 20000U}) {
            TReceiver tReceiver;
            TConvertStream tStream(eCodePage, ecdFromUtf16, &tReceiver);
            // Pieces of one byte would never be taken: they get a second one.
            WriteInPieces(tStream, sBytesOf(sText), tEngine, std::max(uMostBytes, 2U));
            tStream.Flush();
            ASSERT_EQ(tReceiver.sTaken, sExpected) << uGetCodePage(eCodePage) << ", " << uMostBytes;
        }
    }
}

TEST(TConvertStream, LosesNothingToAReceiverThatTakesLess) {
    std::mt19937 tEngine(4);
    for (ECodePage eCodePage : aeTried) {
        std::wstring const sText = sRandomText(tEngine, 2000);
        std::string const sExpected = sConvertAtOnce(uGetCodePage(eCodePage), sText);
        TReceiver tReceiver;
        tReceiver.tLimit = [&](unsigned int uOffered) {
            return std::uniform_int_distribution<unsigned int>(0, uOffered)(tEngine);
        };
        TConvertStream tStream(eCodePage, ecdFromUtf16, &tReceiver);
        WriteInPieces(tStream, sBytesOf(sText), tEngine, 900);
        for (int i = 0; i < 1000 && tReceiver.sTaken.size() < sExpected.size(); ++i)
            tStream.Flush();
        ASSERT_EQ(tReceiver.sTaken, sExpected) << uGetCodePage(eCodePage);
        tStream.Flush();
        ASSERT_EQ(tReceiver.sTaken, sExpected) << uGetCodePage(eCodePage);
    }
}

TEST(TConvertStream, HoldsTheFirstHalfOfAPair) {
    TReceiver tReceiver;
    TConvertStream tStream(ecpUtf8, ecdFromUtf16, &tReceiver);
    EXPECT_EQ(uWrite(tStream, L"a\xD83D"), 4U);
    EXPECT_EQ(tReceiver.sTaken, "a");
    EXPECT_EQ(uWrite(tStream, L"\xDE00"), 2U);
    EXPECT_EQ(tReceiver.sTaken, "a\xF0\x9F\x98\x80");
}

TEST(TConvertStream, ReplacesLoneHalves) {
    struct TCase {
        ECodePage eCodePage;
        char const * pzReplacement;
    };
    for (TCase const & tCase : {TCase{ecpUtf8, "\xEF\xBF\xBD"}, TCase{ecpWestern, "?"}, TCase{ecpJapanese, "?"}}) {
        TReceiver tReceiver;
        TConvertStream tStream(tCase.eCodePage, ecdFromUtf16, &tReceiver);
        std::string const sHalf = tCase.pzReplacement;
        uWrite(tStream, L"\xD83D");
        uWrite(tStream, L"a");
        EXPECT_EQ(tReceiver.sTaken, sHalf + "a");
        uWrite(tStream, L"\xDE00");
        EXPECT_EQ(tReceiver.sTaken, sHalf + "a" + sHalf);
        uWrite(tStream, L"\xD83D");
        uWrite(tStream, L"\xD83D");
        EXPECT_EQ(tReceiver.sTaken, sHalf + "a" + sHalf + sHalf);
        tStream.Flush();
        EXPECT_EQ(tReceiver.sTaken, sHalf + "a" + sHalf + sHalf + sHalf);
    }
}

TEST(TConvertStream, PutsNothingThatLooksAlikeInPlaceOfWhatIsMissing) {
    struct TCase {
        ECodePage eCodePage;
        std::wstring_view sText;
        char const * pzBytes;
    };
    for (TCase const & tCase :
         {TCase{ecpWestern, L"\uFF1C\u2329\uFF06\u0141\u2011", "?????"}, TCase{ecpGreek, L"\u00C0\uFF1C", "??"},
          TCase{ecpAscii, L"\u00E4\u2039", "??"}, TCase{ecpJapanese, L"\u00A5\u00E4\uFF1C", "??\x81\x83"}}) {
        TReceiver tReceiver;
        TConvertStream tStream(tCase.eCodePage, ecdFromUtf16, &tReceiver);
        uWrite(tStream, tCase.sText);
        EXPECT_EQ(tReceiver.sTaken, tCase.pzBytes);
    }
}

// These code pages have every character, and the platform refuses the flag there.
TEST(TConvertStream, HandsNoFlagToCodePagesThatTakeNone) {
    for (UINT const uAnsi : {65001U, 54936U, 1252U}) {
        zk_test::TSystemCall<"GetACP", decltype(GetACP)> const tAnsi([=] { return uAnsi; }, L"ZkBase.dll");
        zk_test::TSystemCall<"WideCharToMultiByte", decltype(WideCharToMultiByte)> const tCall(
            [&](UINT uCodePage, DWORD dwFlags, LPCWSTR, int, LPSTR pBytes, int, LPCSTR, LPBOOL) {
                EXPECT_EQ(uCodePage, uAnsi);
                EXPECT_EQ(dwFlags, uAnsi == 1252 ? static_cast<DWORD>(WC_NO_BEST_FIT_CHARS) : 0U) << uAnsi;
                *pBytes = 'a';
                return 1;
            },
            L"ZkBase.dll");
        TReceiver tReceiver;
        TConvertStream tStream(ecpDefault, ecdFromUtf16, &tReceiver);
        uWrite(tStream, L"a");
        EXPECT_EQ(tReceiver.sTaken, "a");
    }
}

TEST(TConvertStream, FlushEndsAPairThatWasCut) {
    TReceiver tReceiver;
    TConvertStream tStream(ecpUtf8, ecdFromUtf16, &tReceiver);
    uWrite(tStream, L"\xD83D");
    tStream.Flush();
    uWrite(tStream, L"\xDE00");
    EXPECT_EQ(tReceiver.sTaken, "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(TConvertStream, PassesUtf16ThroughWithItsLoneHalves) {
    TReceiver tReceiver;
    TConvertStream tStream(ecpUtf16, ecdFromUtf16, &tReceiver);
    uWrite(tStream, L"a\xDE00\xD83D");
    tStream.Flush();
    EXPECT_EQ(tReceiver.sTaken, std::string("a\0\x00\xDE\x3D\xD8", 6));

    TReceiver tSwapped;
    TConvertStream tSwapper(ecpUtf16Swapped, ecdFromUtf16, &tSwapped);
    uWrite(tSwapper, L"a\xDE00\xD83D");
    tSwapper.Flush();
    EXPECT_EQ(tSwapped.sTaken, std::string("\0a\xDE\x00\xD8\x3D", 6));
}

TEST(TConvertStream, LeavesAnOddLastByte) {
    TReceiver tReceiver;
    TConvertStream tStream(ecpWestern, ecdFromUtf16, &tReceiver);
    EXPECT_EQ(tStream.Write("a\0b", 3), 2U);
    EXPECT_EQ(tStream.Write("b", 1), 0U);
    EXPECT_EQ(tStream.Write("b\0", 2), 2U);
    EXPECT_EQ(tReceiver.sTaken, "ab");
}

TEST(TConvertStream, OffersAgainWhatWasLeft) {
    TReceiver tReceiver;
    bool fOpen = false;
    tReceiver.tLimit = [&](unsigned int) { return fOpen ? 1U : 0U; };
    TConvertStream tStream(ecpWestern, ecdFromUtf16, &tReceiver);
    EXPECT_EQ(uWrite(tStream, L"ab"), 4U); // converted and held
    EXPECT_EQ(uWrite(tStream, L"cd"), 0U); // the receiver has not taken the first piece yet
    tStream.Flush();
    EXPECT_EQ(tReceiver.sTaken, "");
    fOpen = true;
    EXPECT_EQ(uWrite(tStream, L"cd"), 4U);
    EXPECT_EQ(tReceiver.sTaken, "abcd");
}

TEST(TConvertStream, TakesNoMoreThanItCanHold) {
    TReceiver tReceiver;
    tReceiver.tLimit = [](unsigned int) { return 0U; };
    TConvertStream tStream(ecpUtf8, ecdFromUtf16, &tReceiver);
    std::wstring const sText(100000, L'€');
    unsigned int const uTaken = uWrite(tStream, sText);
    EXPECT_GT(uTaken, 0U);
    EXPECT_LT(uTaken, 2000U);
    tReceiver.tLimit = nullptr;
    uWrite(tStream, std::wstring_view(sText).substr(uTaken / 2));
    EXPECT_EQ(tReceiver.sTaken, sConvertAtOnce(65001, sText));
}

TEST(TConvertStream, DoesNotBelieveAReceiverThatTakesTooMuch) {
    struct TGreedy : TReceiver {
        unsigned int Receive(void const * pData, unsigned int uBytes) override {
            return TReceiver::Receive(pData, uBytes) + 1000;
        }
    } tReceiver;
    TConvertStream tStream(ecpWestern, ecdFromUtf16, &tReceiver);
    uWrite(tStream, L"ab");
    uWrite(tStream, L"cd");
    tStream.Flush();
    EXPECT_EQ(tReceiver.sTaken, "abcd");
}

TEST(TConvertStream, TellsWhyThePlatformCannotConvert) {
    TReceiver tReceiver;
    TConvertStream tStream(ecpGreek, ecdFromUtf16, &tReceiver);
    zk_test::TSystemCall<"WideCharToMultiByte", decltype(WideCharToMultiByte)> tCall(
        [&](UINT uCodePage, DWORD dwFlags, LPCWSTR pText, int iText, LPSTR pBytes, int iBytes, LPCSTR pzDefault,
            LPBOOL pfDefault) {
            if (uCodePage == 1253) return zk_test::tFailWith(ERROR_INVALID_PARAMETER, 0);
            return tCall.Original(uCodePage, dwFlags, pText, iText, pBytes, iBytes, pzDefault, pfDefault);
        },
        L"ZkBase.dll");
    try {
        uWrite(tStream, L"a");
        FAIL() << "no exception";
    } catch (TXError const & tError) {
        EXPECT_EQ(std::string(tError.what()).find("The text cannot be converted to code page 1253. "), 0U);
        EXPECT_GT(std::string(tError.what()).size(), 50U);
    }
    EXPECT_EQ(tReceiver.iOffers, 0);
}
