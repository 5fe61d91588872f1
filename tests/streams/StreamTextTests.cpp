// The text half of TStreamBase.
#include "ZkTools/Stream.h"

#include "ZkBase/Exceptions.h"
#include "ZkBase/Windows.h"
#include "ZkTools/Exceptions.h"
#include "ZkTools/MessageIds.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

using namespace std::string_literals;
using namespace std::string_view_literals;

namespace {

struct TOpenStream : TStreamBase {
    using TStreamBase::PeekCharInternal;
    using TStreamBase::TStreamBase;
    using TStreamBase::uCodePage;
};

std::string sBytes(TStreamBase & tStream) {
    return {reinterpret_cast<char const *>(tStream.pGetData()), tStream.dwGetSize()};
}

/// A stream over a copy of the bytes, in memory that ends right behind them.
struct TInput {
    explicit TInput(std::string const & sData, unsigned short uCodePage)
        : pMemory(std::make_unique<char[]>(sData.size())),
          tStream(pMemory.get(), static_cast<unsigned long>(sData.size())) {
        std::copy(sData.begin(), sData.end(), pMemory.get());
        tStream.uCodePage = uCodePage;
    }
    std::unique_ptr<char[]> pMemory;
    TOpenStream tStream;
};

/// What a call throws, as "number: text"; empty when it throws nothing.
std::string sThrown(std::function<void()> const & fCall) {
    try {
        fCall();
    } catch (TXZkTools const & tError) {
        return std::to_string(tError.iGetNumber()) + ": " + tError.what();
    } catch (TXError const & tError) {
        return "decode: "s + tError.what();
    }
    return {};
}

int iThrownNumber(std::function<void()> const & fCall) {
    std::string const sText = sThrown(fCall);
    return sText.empty() ? 0 : std::atoi(sText.c_str());
}

bool fStartsWith(std::string const & sText, char const * pzStart) {
    return sText.rfind(pzStart, 0) == 0;
}

std::string sWritten(ECodePage eCodePage, std::function<void(TStreamBase &)> const & fWrite) {
    TStreamBase tStream(eCodePage);
    fWrite(tStream);
    return sBytes(tStream);
}

// The reference: one character at a time through the platform, as the table of characters tells.

struct TReference {
    std::string sData; // the bytes, with zeros behind
    std::size_t uSize;
    std::size_t uPos = 0;
    unsigned short uCodePage;

    TReference(std::string const & sBytes_, unsigned short uCodePage_)
        : sData(sBytes_ + std::string(8, '\0')), uSize(sBytes_.size()), uCodePage(uCodePage_) {}

    [[nodiscard]] bool fEnd() const { return uPos >= uSize; }
    [[nodiscard]] unsigned char uByte(std::size_t u) const { return static_cast<unsigned char>(sData[uPos + u]); }
    [[nodiscard]] bool fUtf16() const { return uCodePage == 1200 || uCodePage == 1201; }

    [[nodiscard]] std::size_t uLength() const {
        if (uCodePage != 65001) {
            char const * pBegin = sData.data() + uPos;
            return static_cast<std::size_t>(CharNextExA(uCodePage, pBegin, 0) - pBegin);
        }
        static constexpr struct {
            unsigned int uFirst, uLength;
        } atRows[] = {{252, 6}, {248, 5}, {240, 4}, {224, 3}, {192, 2}, {1, 1}, {0, 0}};
        if (uByte(0) >= 254) return 1;
        return std::find_if(std::begin(atRows), std::end(atRows),
                            [this](auto const & t) { return uByte(0) >= t.uFirst; })
            ->uLength;
    }

    unsigned int uPeek(wchar_t & c, bool fAllowNull) const {
        if (fEnd()) throw TXZkTools(IDS_READ_PAST_END);
        if (fUtf16()) {
            unsigned int const uFirst = uByte(0);
            unsigned int const uSecond = uByte(1);
            unsigned int const uUnit = uCodePage == 1200 ? uFirst | uSecond << 8 : uFirst << 8 | uSecond;
            if (uUnit == 0 && !fAllowNull) {
                throw TXZkTools(L"Conversion from codepage %d to UNICODE not possible. NullChar encountered.",
                                int{uCodePage});
            }
            c = static_cast<wchar_t>(uUnit);
            return 2;
        }
        if (uByte(0) == 0) {
            if (!fAllowNull) {
                ThrowDecodeException(sData.data() + uPos, static_cast<unsigned int>(uSize - uPos),
                                     static_cast<unsigned int>(uPos));
            }
            c = 0;
            return 1;
        }
        auto const uCount = static_cast<unsigned int>(uLength());
        wchar_t ac[6];
        SetLastError(0);
        int const iUnits =
            MultiByteToWideChar(uCodePage, MB_ERR_INVALID_CHARS, sData.data() + uPos, static_cast<int>(uCount), ac, 6);
        if (iUnits == 1) {
            c = ac[0];
            return uCount;
        }
        unsigned long const dwError = GetLastError();
        if (dwError != 0 && dwError != 1113) {
            throw TXZkTools(L"Conversion from codepage %d to Unicode not possible. %s", int{uCodePage},
                            sGetErrorString(dwError).c_str());
        }
        ThrowDecodeException(sData.data() + uPos, uCount, static_cast<unsigned int>(uPos));
    }

    void Skip(std::size_t u) {
        if (uPos + u > uSize) throw TXZkTools(IDS_READ_PAST_END);
        uPos += u;
    }

    wchar_t cRead(bool fAllowNull) {
        wchar_t c = 0;
        Skip(uPeek(c, fAllowNull));
        return c;
    }

    void ReadString(std::wstring & s) {
        std::wstring sText;
        while (!fEnd()) {
            wchar_t const c = cRead(true);
            if (c == 0) break;
            sText += c;
        }
        s = sText;
    }

    void Readln(std::wstring & s) {
        std::wstring sText;
        while (!fEnd()) {
            wchar_t const c = cRead(false);
            if (c == 10 || c == 26) break;
            if (c != 13) sText += c == 0 ? L' ' : c; // a byte may decode to a zero
        }
        s = sText;
    }

    void ReadToDelim(std::wstring & s, wchar_t cDelim, wchar_t cEscape, bool fKeep) {
        std::wstring sText;
        bool fEscaped = false;
        while (!fEnd()) {
            wchar_t const c = cRead(cDelim == 0);
            bool const fFresh = cEscape != 0 && c == cEscape && !fEscaped;
            bool const fOld = fEscaped;
            fEscaped = fFresh;
            if (!fOld && c == cDelim && !fFresh) {
                if (fKeep) sText += c;
                break;
            }
            sText += c;
        }
        s += sText;
    }

    void ReadForPascal(std::wstring & s, unsigned long dwBytes) {
        std::wstring sText;
        unsigned long dwSum = 0;
        while (dwSum < dwBytes) {
            wchar_t c = 0;
            unsigned int const u = uPeek(c, true);
            Skip(u);
            dwSum += u;
            if (c != 0) sText += c;
        }
        if (dwSum > dwBytes) throw TXZkTools(L"Invalid byte-length for string encounterd in input stream.");
        s = sText;
    }

    void ReadBuffer(wchar_t * p, unsigned long dwSize) {
        for (unsigned long dw = 0; dw < dwSize - 1; ++dw) {
            p[dw] = cRead(true);
            if (p[dw] == 0) return;
        }
        p[dwSize - 1] = 0;
    }

    void SkipChars(unsigned int uCount) {
        if (fUtf16()) return Skip(2 * std::size_t{uCount});
        for (; uCount != 0; --uCount) {
            if (fEnd()) throw TXZkTools(IDS_READ_PAST_END);
            Skip(uByte(0) == 0 ? 1 : uLength());
        }
    }
};

constexpr std::array<unsigned short, 14> auCodePages{1200, 1201, 65001, 1252, 932,   936,   949,
                                                     950,  1258, 20127, 437,  28591, 54936, 65000};

/// Random text in the code page: mostly what decodes, with stops, and with an occasional byte that breaks it.
std::string sRandomText(std::mt19937 & tRandom, unsigned short uCodePage, std::size_t uCharacters) {
    static constexpr std::wstring_view sCommon = L"abcdefghijklmnopqrstuvwxyz0123456789 .,;:-";
    static constexpr std::wstring_view sWide =
        L"\u00E4\u00F6\u00E9\u00DF\u20AC\u6F22\u5B57\u30AB\u30CA\uD55C\u0416\u03A9\uFFFF\uFFFE\uFEFF";
    static constexpr std::wstring_view sStops = L"\n\r\x1A\\,\0"sv;
    std::wstring sText;
    unsigned int const uMix = tRandom() % 4; // how many of four are wide
    while (sText.size() < uCharacters) {
        unsigned int const uKind = tRandom() % 40;
        if (uKind == 0) {
            sText += sStops[tRandom() % sStops.size()];
        } else if (uKind == 1 && tRandom() % 8 == 0) {
            sText += L"\xD83D\xDE00"; // a character of two units
        } else if (tRandom() % 4 < uMix) {
            sText += sWide[tRandom() % sWide.size()];
        } else {
            sText.append(tRandom() % 30, sCommon[tRandom() % sCommon.size()]);
        }
    }
    std::string sResult;
    if (uCodePage == 1200 || uCodePage == 1201) {
        for (wchar_t const c : sText) {
            char const cLow = static_cast<char>(c), cHigh = static_cast<char>(c >> 8);
            sResult += uCodePage == 1200 ? cLow : cHigh;
            sResult += uCodePage == 1200 ? cHigh : cLow;
        }
    } else {
        sResult.resize(sText.size() * 8);
        sResult.resize(static_cast<std::size_t>(
            WideCharToMultiByte(uCodePage, 0, sText.data(), static_cast<int>(sText.size()), sResult.data(),
                                static_cast<int>(sResult.size()), nullptr, nullptr)));
    }
    if (!sResult.empty() && tRandom() % 3 == 0) sResult[tRandom() % sResult.size()] = static_cast<char>(tRandom());
    if (!sResult.empty() && tRandom() % 4 == 0) sResult.resize(tRandom() % sResult.size() + 1);
    return sResult;
}

/// Runs the same reader on the stream and on the reference, over and over to the end, and compares all that can be
/// seen.
template <typename TOurs, typename TTheirs>
void Compare(std::string const & sData, unsigned short uCodePage, TOurs fOurs, TTheirs fTheirs) {
    TInput tInput(sData, uCodePage);
    TReference tReference(sData, uCodePage);
    for (int i = 0; i < 400; ++i) {
        std::wstring sOurs = L"before", sTheirs = L"before";
        std::string const sOurFailure = sThrown([&] { fOurs(tInput.tStream, sOurs); });
        std::string const sTheirFailure = sThrown([&] { fTheirs(tReference, sTheirs); });
        ASSERT_EQ(sOurFailure, sTheirFailure) << uCodePage;
        ASSERT_EQ(sOurs, sTheirs) << uCodePage;
        ASSERT_EQ(tInput.tStream.dwGetPos(), tReference.uPos) << uCodePage << " after: " << sOurFailure;
        if (!sOurFailure.empty() || tInput.tStream.fIsEoF()) break;
    }
}

} // namespace

// What a character is

TEST(TStreamBaseText, TellsTheLengthOfAnUtf8CharacterByItsFirstByteAlone) {
    for (unsigned int u = 0; u < 256; ++u) {
        // Skipping looks at the first byte only: what follows is no continuation byte.
        std::string const sData = std::string(1, static_cast<char>(u)).append("abcdefgh");
        TInput tInput(sData, 65001);
        tInput.tStream.SkipChars(1);
        unsigned int const uExpected = u <= 191 || u >= 254 ? 1
                                       : u <= 223           ? 2
                                       : u <= 239           ? 3
                                       : u <= 247           ? 4
                                       : u <= 251           ? 5
                                                            : 6;
        EXPECT_EQ(tInput.tStream.dwGetPos(), uExpected) << u;
    }
}

TEST(TStreamBaseText, DecodesEveryUnitOfUtf8AndUtf16) {
    for (unsigned int u = 1; u < 0x10000; ++u) {
        if (u >= 0xD800 && u <= 0xDFFF) continue;
        for (ECodePage const eCodePage : {ecpUtf8, ecpUtf16, ecpUtf16Swapped}) {
            TStreamBase tStream(eCodePage);
            tStream.WriteChar(static_cast<wchar_t>(u));
            tStream.Seek(0L, 0);
            wchar_t c = 0;
            tStream.ReadChar(c);
            ASSERT_EQ(c, static_cast<wchar_t>(u));
            ASSERT_TRUE(tStream.fIsEoF());
        }
    }
}

TEST(TStreamBaseText, RefusesACharacterOfTwoUnits) {
    TInput tInput("\xF0\x9F\x98\x80", 65001);
    wchar_t c = L'x';
    EXPECT_EQ(sThrown([&] { tInput.tStream.ReadChar(c); }),
              sThrown([] { ThrowDecodeException("\xF0\x9F\x98\x80", 4, 0); }));
    EXPECT_EQ(c, L'x');
    EXPECT_EQ(tInput.tStream.dwGetPos(), 0u);
}

TEST(TStreamBaseText, RefusesIllFormedUtf8WithTheBytesOfTheCharacter) {
    for (std::string const & sBad :
         {"\x80"s, "\xBF"s, "\xC0\x80"s, "\xC1\xBF"s, "\xC2\x41"s, "\xE0\x80\x80"s, "\xE0\x9F\xBF"s, "\xED\xA0\x80"s,
          "\xED\xBF\xBF"s, "\xE2\x82\x41"s, "\xF8\x88\x80\x80\x80"s, "\xFC\x84\x80\x80\x80\x80"s, "\xFE"s, "\xFF"s}) {
        TInput tInput("a" + sBad + "b", 65001);
        wchar_t c = 0;
        tInput.tStream.ReadChar(c);
        EXPECT_EQ(sThrown([&] { tInput.tStream.ReadChar(c); }),
                  sThrown([&] { ThrowDecodeException(sBad.data(), static_cast<unsigned int>(sBad.size()), 1); }));
        EXPECT_EQ(tInput.tStream.dwGetPos(), 1u);
    }
}

TEST(TStreamBaseText, ReadsACutCharacterAsIfZerosFollowed) {
    TInput tUtf8("\xE2\x82", 65001);
    wchar_t c = L'x';
    EXPECT_EQ(sThrown([&] { tUtf8.tStream.ReadChar(c); }), sThrown([] { ThrowDecodeException("\xE2\x82\0", 3, 0); }));
    TInput tUtf16("a", 1200); // a single last byte is peeked at with the guard, but cannot be passed
    tUtf16.tStream.PeekChar(c);
    EXPECT_EQ(c, L'a');
    EXPECT_EQ(iThrownNumber([&] { tUtf16.tStream.ReadChar(c); }), IDS_READ_PAST_END);
    EXPECT_EQ(tUtf16.tStream.dwGetPos(), 0u);
    TInput tSwapped("a", 1201);
    tSwapped.tStream.PeekChar(c);
    EXPECT_EQ(c, static_cast<wchar_t>('a' << 8));
    EXPECT_EQ(iThrownNumber([&] { tSwapped.tStream.ReadChar(c); }), IDS_READ_PAST_END);
    EXPECT_EQ(tSwapped.tStream.dwGetPos(), 0u);
}

TEST(TStreamBaseText, ReadsDoubleByteCharacters) {
    TInput tInput("\x8A\xBF\x8E\x9A\xB1z", 932);
    std::wstring sText;
    tInput.tStream.ReadString(sText);
    EXPECT_EQ(sText, L"\u6F22\u5B57\uFF71z");
}

TEST(TStreamBaseText, AZeroIsAFailureForReadCharAndNoneForPeekChar) {
    wchar_t c = L'x';
    TInput tMulti("\0ab"s, 1252);
    EXPECT_EQ(sThrown([&] { tMulti.tStream.ReadChar(c); }), sThrown([] { ThrowDecodeException("\0ab", 3, 0); }));
    EXPECT_EQ(c, L'x');
    tMulti.tStream.PeekChar(c);
    EXPECT_EQ(c, 0);
    EXPECT_EQ(tMulti.tStream.dwGetPos(), 0u);
    for (unsigned short const uCodePage : {auCodePages[0], auCodePages[1]}) {
        TInput tWide("\0\0a\0"s, uCodePage);
        c = L'x';
        EXPECT_EQ(sThrown([&] { tWide.tStream.ReadChar(c); }), "-1: Conversion from codepage " +
                                                                   std::to_string(uCodePage) +
                                                                   " to UNICODE not possible. NullChar encountered.");
        tWide.tStream.PeekChar(c);
        EXPECT_EQ(c, 0);
        EXPECT_EQ(tWide.tStream.dwGetPos(), 0u);
    }
}

TEST(TStreamBaseText, TellsASystemFailureOfTheConversion) {
    // UTF-7 takes no flags: the platform answers with another error than that the text is ill-formed.
    TInput tInput("a", 65000);
    wchar_t c = 0;
    std::string const sFailure = sThrown([&] { tInput.tStream.ReadChar(c); });
    SetLastError(0);
    wchar_t acUnits[6];
    if (MultiByteToWideChar(65000, MB_ERR_INVALID_CHARS, "a", 1, acUnits, 6) == 0) {
        std::wstring const sReason = sGetErrorString(GetLastError());
        EXPECT_EQ(sFailure, "-1: Conversion from codepage 65000 to Unicode not possible. " +
                                std::string(sReason.begin(), sReason.end()));
        EXPECT_EQ(tInput.tStream.dwGetPos(), 0u);
    } else {
        EXPECT_EQ(sFailure, "");
    }
}

TEST(TStreamBaseText, ReadersFailAtTheEnd) {
    wchar_t c = 0;
    TOpenStream tEmpty;
    EXPECT_EQ(iThrownNumber([&] { tEmpty.ReadChar(c); }), IDS_READ_PAST_END);
    EXPECT_EQ(iThrownNumber([&] { tEmpty.PeekChar(c); }), IDS_READ_PAST_END);
    EXPECT_EQ(iThrownNumber([&] { tEmpty.SkipChars(1); }), IDS_READ_PAST_END);
    tEmpty.SkipChars(0);
    TOpenStream tWide(ecpUtf16);
    EXPECT_EQ(iThrownNumber([&] { tWide.SkipChars(1); }), IDS_READ_PAST_END);
    tWide.SkipChars(0);
    std::wstring sText = L"x";
    tEmpty.ReadString(sText);
    EXPECT_EQ(sText, L"");
    sText = L"x";
    tEmpty.Readln(sText);
    EXPECT_EQ(sText, L"");
    sText = L"x";
    tEmpty.ReadToDelim(sText, L',', 0, false, 0);
    EXPECT_EQ(sText, L"x");
    EXPECT_EQ(iThrownNumber([&] { tEmpty.ReadPascalString(sText); }), IDS_READ_PAST_END);
    EXPECT_EQ(iThrownNumber([&] { tEmpty.ReadStringForPascal(sText, 1); }), IDS_READ_PAST_END);
    EXPECT_EQ(sText, L"x");
}

TEST(TStreamBaseText, SkipsWithoutConverting) {
    TInput tUtf8("\xE2xyz", 65001);
    tUtf8.tStream.SkipChars(1);
    EXPECT_EQ(tUtf8.tStream.dwGetPos(), 3u);
    EXPECT_EQ(iThrownNumber([&] { tUtf8.tStream.SkipChars(2); }), IDS_READ_PAST_END);
    TInput tCut("a\xE2y", 65001);
    EXPECT_EQ(iThrownNumber([&] { tCut.tStream.SkipChars(2); }), IDS_READ_PAST_END);
    EXPECT_EQ(tCut.tStream.dwGetPos(), 1u);
    TInput tZeros("\0\0a"s, 1252);
    tZeros.tStream.SkipChars(3);
    EXPECT_TRUE(tZeros.tStream.fIsEoF());
    TInput tWide("a\0b\0c"s, 1200);
    EXPECT_EQ(iThrownNumber([&] { tWide.tStream.SkipChars(3); }), IDS_READ_PAST_END);
    EXPECT_EQ(iThrownNumber([&] { tWide.tStream.SkipChars(0x80000001); }), IDS_READ_PAST_END); // no wrap
    EXPECT_EQ(tWide.tStream.dwGetPos(), 0u);
    tWide.tStream.SkipChars(2);
    EXPECT_EQ(tWide.tStream.dwGetPos(), 4u);
}

// Writers

TEST(TStreamBaseText, WritesTextUpToItsTerminator) {
    struct {
        ECodePage eCodePage;
        std::string sPlain, sTerminated;
    } const atRows[] = {
        {ecpWestern,
         "\xE4"
         "b"s,
         "\xE4"
         "b\0"s},
        {ecpUtf8,
         "\xC3\xA4"
         "b"s,
         "\xC3\xA4"
         "b\0"s},
        {ecpUtf16, "\xE4\0b\0"s, "\xE4\0b\0\0\0"s},
        {ecpUtf16Swapped, "\0\xE4\0b"s, "\0\xE4\0b\0\0"s},
    };
    std::wstring const sText = L"\u00E4b\0ignored"s;
    for (auto const & tRow : atRows) {
        EXPECT_EQ(sWritten(tRow.eCodePage, [&](TStreamBase & t) { t.Write(sText); }), tRow.sPlain);
        EXPECT_EQ(sWritten(tRow.eCodePage, [&](TStreamBase & t) { t.Write(sText.c_str()); }), tRow.sPlain);
        EXPECT_EQ(sWritten(tRow.eCodePage, [&](TStreamBase & t) { t.Write(sText.c_str(), 2); }), tRow.sPlain);
        EXPECT_EQ(sWritten(tRow.eCodePage, [&](TStreamBase & t) { t.WriteString(sText); }), tRow.sTerminated);
        EXPECT_EQ(sWritten(tRow.eCodePage, [&](TStreamBase & t) { t.WriteString(sText.c_str()); }), tRow.sTerminated);
    }
    EXPECT_EQ(sWritten(ecpWestern, [&](TStreamBase & t) { t.Write(sText.c_str(), 4); }), "\xE4"
                                                                                         "b\0i"s);
    EXPECT_EQ(sWritten(ecpWestern, [&](TStreamBase & t) { t.Write(sText.c_str(), 0); }), "");
    EXPECT_EQ(sWritten(ecpWestern, [&](TStreamBase & t) { t.Write(L""); }), "");
    EXPECT_EQ(sWritten(ecpUtf8, [&](TStreamBase & t) { t.WriteString(L""); }), "\0"s);
}

TEST(TStreamBaseText, WritesALineEndOfCrAndLf) {
    EXPECT_EQ(sWritten(ecpUtf8, [](TStreamBase & t) { t.Writeln(L"a"); }), "a\r\n");
    EXPECT_EQ(sWritten(ecpUtf16, [](TStreamBase & t) { t.Writeln(L"a"s); }), "a\0\r\0\n\0"s);
    EXPECT_EQ(sWritten(ecpUtf16Swapped, [](TStreamBase & t) { t.Writeln(L""); }), "\0\r\0\n"s);
}

TEST(TStreamBaseText, GivesTheSystemsDefaultCharacterForWhatTheCodePageLacks) {
    EXPECT_EQ(sWritten(ecpWestern, [](TStreamBase & t) { t.WriteChar(L'\u6F22'); }), "?");
    EXPECT_EQ(sWritten(ecpWestern, [](TStreamBase & t) { t.Write(L"a\u6F22"); }), "a?");
    EXPECT_EQ(sWritten(ecpJapanese, [](TStreamBase & t) { t.WriteChar(L'\u6F22'); }), "\x8A\xBF");
    // Or what looks like it: no flag forbids that.
    EXPECT_EQ(sWritten(ecpWestern, [](TStreamBase & t) { t.WriteChar(L'\uFF1C'); }), "<");
    EXPECT_EQ(sWritten(ecpWestern, [](TStreamBase & t) { t.Write(L"\u0141\uFF1C"); }), "L<");
}

TEST(TStreamBaseText, ConvertsHalvesOfAPairTogetherInATextAndAloneInACharacter) {
    EXPECT_EQ(sWritten(ecpUtf8, [](TStreamBase & t) { t.Write(L"\xD83D\xDE00"); }), "\xF0\x9F\x98\x80");
    EXPECT_EQ(sWritten(ecpUtf8,
                       [](TStreamBase & t) {
                           t.WriteChar(static_cast<wchar_t>(0xD83D));
                           t.WriteChar(static_cast<wchar_t>(0xDE00));
                       }),
              "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(TStreamBaseText, EncodesUtf8AsThePlatformDoes) {
    std::mt19937 tRandom(7);
    for (int i = 0; i < 3000; ++i) {
        std::wstring sText;
        std::size_t const uLength = tRandom() % (i % 50 == 0 ? 5000 : 60);
        unsigned int const uTop = std::array{0x80u, 0x800u, 0xD800u, 0x10000u}[tRandom() % 4];
        while (sText.size() < uLength) {
            if (tRandom() % 3 == 0) {
                sText.append(tRandom() % 40, L'x');
            } else {
                sText += static_cast<wchar_t>(tRandom() % (uTop - 1) + 1);
            }
        }
        std::string sExpected(sText.size() * 3, '\0');
        if (!sText.empty()) {
            sExpected.resize(static_cast<std::size_t>(
                WideCharToMultiByte(65001, 0, sText.data(), static_cast<int>(sText.size()), sExpected.data(),
                                    static_cast<int>(sExpected.size()), nullptr, nullptr)));
        }
        ASSERT_EQ(sWritten(ecpUtf8, [&](TStreamBase & t) { t.Write(sText); }), sExpected);
        ASSERT_EQ(sWritten(ecpUtf8,
                           [&](TStreamBase & t) { t.Write(sText.data(), static_cast<unsigned long>(sText.size())); }),
                  sExpected);
        ASSERT_EQ(sWritten(ecpUtf8, [&](TStreamBase & t) { t.WriteString(sText); }), sExpected + '\0');
    }
}

TEST(TStreamBaseText, AFailedConversionWritesNothing) {
    // 99 is no code page.
    for (std::function<void(TStreamBase &)> const & fWrite : std::vector<std::function<void(TStreamBase &)>>{
             [](TStreamBase & t) { t.Write(L"abc"); },
             [](TStreamBase & t) { t.Write(L"abc", 3); },
             [](TStreamBase & t) { t.WriteChar(L'a'); },
             [](TStreamBase & t) { t.WriteString(L"abc"); },
             [](TStreamBase & t) { t.WritePascalString(L"abc"); },
             [](TStreamBase & t) { t.WritePascalStringInt16(L"abc"); },
         }) {
        TOpenStream tStream;
        tStream.uCodePage = 99;
        EXPECT_EQ(sThrown([&] { fWrite(tStream); }),
                  "-1: Conversion from UNICODE to codepage 99 not possible. Error: 87");
        EXPECT_EQ(tStream.pGetData(), nullptr);
    }
}

TEST(TStreamBaseText, WritesMoreThan2GiUnitsNever) {
    TStreamBase tStream(ecpUtf8);
    EXPECT_TRUE(fStartsWith(sThrown([&] { tStream.Write(L"a", 0x80000000); }),
                            "-1: Conversion from UNICODE to codepage 65001 not possible. Error: "));
    EXPECT_EQ(tStream.pGetData(), nullptr);
}

// Derived classes change a form by the operations that it goes through.
TEST(TStreamBaseText, GoesThroughItsVirtualOperations) {
    struct TNotedStream : TStreamBase {
        using TStreamBase::Read;
        using TStreamBase::ReadString;
        using TStreamBase::TStreamBase;
        using TStreamBase::Write;
        using TStreamBase::WriteString;
        void Write(wchar_t const * pText, unsigned long dwCount) override {
            sCalls += "text" + std::to_string(dwCount) + " ";
            TStreamBase::Write(pText, dwCount);
        }
        void Write(wchar_t const * pzText) override {
            sCalls += "text ";
            TStreamBase::Write(pzText);
        }
        void Write(int const & iValue) override {
            sCalls += "int ";
            TStreamBase::Write(iValue);
        }
        void Write(unsigned short const & uValue) override {
            sCalls += "short ";
            TStreamBase::Write(uValue);
        }
        void Write(char const & cValue) override {
            sCalls += "char ";
            TStreamBase::Write(cValue);
        }
        void WriteChar(wchar_t const & c) override {
            sCalls += "unit ";
            TStreamBase::WriteChar(c);
        }
        void WriteString(std::wstring const & sText) override {
            sCalls += "string ";
            TStreamBase::WriteString(sText);
        }
        void Read(unsigned char & uValue) override {
            sCalls += "byte ";
            TStreamBase::Read(uValue);
        }
        void Read(unsigned short & uValue) override {
            sCalls += "short ";
            TStreamBase::Read(uValue);
        }
        void Read(int & iValue) override {
            sCalls += "int ";
            TStreamBase::Read(iValue);
        }
        void ReadChar(wchar_t & c) override {
            sCalls += "unit ";
            TStreamBase::ReadChar(c);
        }
        void ReadString(std::wstring & sText) override {
            sCalls += "string ";
            TStreamBase::ReadString(sText);
        }
        void ReadStringForPascal(std::wstring & sText, unsigned long dwBytes) override {
            sCalls += "counted" + std::to_string(dwBytes) + " ";
            TStreamBase::ReadStringForPascal(sText, dwBytes);
        }
        std::string sCalls;
    };
    std::wstring sText = L"ab";
    wchar_t c = 0;
    struct {
        ECodePage eCodePage;
        std::function<void(TStreamBase &)> fCall;
        char const * pzCalls;
    } const atRows[] = {
        {ecpUtf16, [](TStreamBase & t) { t.Write(L"ab", 2); }, "text2 unit unit "},
        {ecpUtf16, [](TStreamBase & t) { t.Write(L"ab"s); }, "text unit unit "},
        {ecpUtf16, [](TStreamBase & t) { t.WriteString(L"ab"s); }, "string text unit unit unit "},
        {ecpWestern, [](TStreamBase & t) { t.Write(L"ab"s); }, "text "},
        {ecpWestern, [](TStreamBase & t) { t.Writeln(L"ab"s); }, "text text2 "},
        {ecpWestern, [](TStreamBase & t) { t.WritePascalString(L"ab"); }, "char string "},
        {ecpWestern, [](TStreamBase & t) { t.WritePascalStringInt16(L"ab"); }, "short string "},
        {ecpWestern, [](TStreamBase & t) { t.Write8BitBlob(L"ab"); }, "int string "},
        {ecpWestern, [](TStreamBase & t) { t.Write8BitBlob(L""); }, "int "},
        {ecpWestern, [](TStreamBase & t) { t.WriteXML(L"a\n<", true); }, "unit text text "},
        {ecpWestern, [](TStreamBase & t) { t.WriteXML(L"a\n<", false); }, "unit text "},
        {ecpWestern, [](TStreamBase & t) { t.WriteXMLComment(L"--"); }, "unit unit unit "},
        {ecpWestern, [&](TStreamBase & t) { t.Read(c); }, "unit "},
        {ecpWestern, [&](TStreamBase & t) { t.Read(sText); }, "string "},
        {ecpWestern, [&](TStreamBase & t) { t.Readln(sText); }, "unit unit unit "},
        {ecpWestern, [&](TStreamBase & t) { t.ReadPascalString(sText); }, "byte counted3 "},
        {ecpWestern, [&](TStreamBase & t) { t.ReadPascalStringInt16(sText); }, "short counted515 "},
        {ecpWestern, [&](TStreamBase & t) { t.Read8BitBlob(sText); }, "int counted168428036 "},
    };
    for (auto const & tRow : atRows) {
        TBlob tBlob;
        tBlob.Put("\3\2\n\nabcd", 8);
        tBlob.dwPos = 0;
        TNotedStream tStream(tBlob, tRow.eCodePage);
        sThrown([&] { tRow.fCall(tStream); });
        EXPECT_EQ(tStream.sCalls, tRow.pzCalls);
    }
}

// Counted strings

TEST(TStreamBaseText, WritesPascalStrings) {
    std::wstring const sLong(300, L'x');
    auto const Short = [](std::wstring const & s) { return [s](TStreamBase & t) { t.WritePascalString(s); }; };
    auto const Wide = [](std::wstring const & s) { return [s](TStreamBase & t) { t.WritePascalStringInt16(s); }; };
    EXPECT_EQ(sWritten(ecpWestern, Short(L"abc")), "\x04"
                                                   "abc\0"s);
    EXPECT_EQ(sWritten(ecpWestern, Short(L"")), "\x01\0"s);
    EXPECT_EQ(sWritten(ecpUtf8, Short(L"\u00E4")), "\x03\xC3\xA4\0"s);
    EXPECT_EQ(sWritten(ecpUtf16, Short(L"ab")), "\x04"
                                                "a\0b\0\0\0"s);
    EXPECT_EQ(sWritten(ecpUtf16Swapped, Short(L"ab")), "\x04\0a\0b\0\0"s);
    EXPECT_EQ(sWritten(ecpWestern, Short(sLong)), "\x2D"s.append(300, 'x').append(1, '\0')); // 301, wrapped
    EXPECT_EQ(sWritten(ecpWestern, Wide(sLong)), "\x2D\x01"s.append(300, 'x').append(1, '\0'));
    EXPECT_EQ(sWritten(ecpUtf16, Wide(L"ab")), "\x04\0a\0b\0\0\0"s);
    EXPECT_EQ(sWritten(ecpWestern, Wide(L"")), "\x01\0\0"s);
    std::wstring const sHuge(65536, L'x');
    EXPECT_EQ(sWritten(ecpWestern, Wide(sHuge)), "\x01\0"s.append(65536, 'x').append(1, '\0')); // 65537, wrapped
}

TEST(TStreamBaseText, CannotWriteAnEmptyPascalStringUnderUtf16) {
    for (ECodePage const eCodePage : {ecpUtf16, ecpUtf16Swapped}) {
        TStreamBase tStream(eCodePage);
        SetLastError(4711);
        EXPECT_EQ(sThrown([&] { tStream.WritePascalString(L""); }), "-1: Conversion from UNICODE to codepage " +
                                                                        std::to_string(uGetCodePage(eCodePage)) +
                                                                        " not possible. Error: 4711");
        EXPECT_TRUE(fStartsWith(sThrown([&] { tStream.WritePascalStringInt16(L""); }), "-1: Conversion from UNICODE"));
        EXPECT_EQ(tStream.pGetData(), nullptr);
    }
}

TEST(TStreamBaseText, ReadsPascalStrings) {
    std::wstring sText;
    TInput tShort("\x04"
                  "abc\0z"s,
                  1252);
    tShort.tStream.ReadPascalString(sText);
    EXPECT_EQ(sText, L"abc");
    EXPECT_EQ(tShort.tStream.dwGetPos(), 5u);
    TInput tEmpty("\x01\0"s, 1252);
    tEmpty.tStream.ReadPascalString(sText);
    EXPECT_EQ(sText, L"");
    EXPECT_TRUE(tEmpty.tStream.fIsEoF());
    TInput tNone("\0"s, 1252);
    sText = L"x";
    tNone.tStream.ReadPascalString(sText);
    EXPECT_EQ(sText, L"");
    TInput tWide("\x04"
                 "a\0b\0\0\0"s,
                 1200);
    tWide.tStream.ReadPascalString(sText);
    EXPECT_EQ(sText, L"ab");
    EXPECT_EQ(tWide.tStream.dwGetPos(), 5u); // two bytes before the end: the zero unit stays
    TInput tInt16("\x05\0abcd\0"s, 1252);
    tInt16.tStream.ReadPascalStringInt16(sText);
    EXPECT_EQ(sText, L"abcd");
    EXPECT_TRUE(tInt16.tStream.fIsEoF());
    TInput tBig("\xFF"s.append(254, 'x').append(1, '\0'), 1252); // the count is not signed
    tBig.tStream.ReadPascalString(sText);
    EXPECT_EQ(sText, std::wstring(254, L'x'));
}

TEST(TStreamBaseText, ACountOf0x8000AndAboveReadsPastTheEnd) {
    TInput tInput("\x00\x80"s.append(40000, 'x'), 1252);
    std::wstring sText = L"before";
    EXPECT_EQ(iThrownNumber([&] { tInput.tStream.ReadPascalStringInt16(sText); }), IDS_READ_PAST_END);
    EXPECT_EQ(sText, L"before");
    TInput tBelow("\xFF\x7F"s.append(0x7FFF, 'x'), 1252);
    tBelow.tStream.ReadPascalStringInt16(sText);
    EXPECT_EQ(sText.size(), 0x7FFFu);
}

TEST(TStreamBaseText, PassesOverZerosWithinACountedText) {
    TInput tInput("\x05"
                  "a\0b\0c"s,
                  1252);
    std::wstring sText;
    tInput.tStream.ReadPascalString(sText);
    EXPECT_EQ(sText, L"abc");
}

TEST(TStreamBaseText, ACharacterAcrossTheCountedEndFailsAndIsConsumed) {
    TInput tInput("\x02"
                  "a\xC3\xA4z",
                  65001);
    std::wstring sText = L"before";
    EXPECT_EQ(sThrown([&] { tInput.tStream.ReadPascalString(sText); }),
              "-1: Invalid byte-length for string encounterd in input stream.");
    EXPECT_EQ(tInput.tStream.dwGetPos(), 4u);
    EXPECT_EQ(sText, L"before");
}

TEST(TStreamBaseText, ReadsNothingForACountOfZero) {
    TInput tInput("\xFF\xFF", 65001);
    std::wstring sText = L"x";
    tInput.tStream.ReadStringForPascal(sText, 0);
    EXPECT_EQ(sText, L"");
    EXPECT_EQ(tInput.tStream.dwGetPos(), 0u);
}

TEST(TStreamBaseText, Writes8BitBlobs) {
    EXPECT_EQ(sWritten(ecpWestern, [](TStreamBase & t) { t.Write8BitBlob(L"abc"); }), "\x03\0\0\0abc\0"s);
    EXPECT_EQ(sWritten(ecpWestern, [](TStreamBase & t) { t.Write8BitBlob(L""); }), "\0\0\0\0"s);
    // The count is that of the system's ANSI code page, the text that of the stream.
    EXPECT_EQ(sWritten(ecpUtf16, [](TStreamBase & t) { t.Write8BitBlob(L"ab"); }), "\x02\0\0\0a\0b\0\0\0"s);
}

TEST(TStreamBaseText, Reads8BitBlobsAndKeepsTheTextForACountOfZero) {
    std::wstring sText = L"before";
    TInput tEmpty("\0\0\0\0"s, 1252);
    tEmpty.tStream.Read8BitBlob(sText);
    EXPECT_EQ(sText, L"before");
    TInput tInput("\x03\0\0\0abc\0z"s, 1252);
    tInput.tStream.Read8BitBlob(sText);
    EXPECT_EQ(sText, L"abc");
    EXPECT_EQ(tInput.tStream.dwGetPos(), 8u);
    TInput tMinus("\xFF\xFF\xFF\xFF"s, 1252); // -1 and 1: nothing to read
    tMinus.tStream.Read8BitBlob(sText);
    EXPECT_EQ(sText, L"");
}

TEST(TStreamBaseText, WritesAndReads8BitFields) {
    auto const Field = [](unsigned char uCount, std::wstring sText) {
        return sWritten(ecpUtf16, [uCount, &sText](TStreamBase & t) { t.Write8BitChars(uCount, sText); });
    };
    EXPECT_EQ(Field(5, L"abc"), "abc\0\0"s);
    EXPECT_EQ(Field(3, L"abc"), "abc"); // cut without a terminator
    EXPECT_EQ(Field(2, L"abc"), "ab");
    EXPECT_EQ(Field(0, L"abc"), "");
    EXPECT_EQ(Field(255, std::wstring(1000, L'x')), std::string(255, 'x'));
    EXPECT_EQ(Field(255, L""), std::string(255, '\0'));
    EXPECT_EQ(Field(4, L"a\0b"s), "a\0\0\0"s);

    std::wstring sText = L"x";
    TInput tInput("abc\0efgh"s, 1200);
    tInput.tStream.Read8BitChars(6, sText);
    EXPECT_EQ(sText, L"abc");
    EXPECT_EQ(tInput.tStream.dwGetPos(), 6u);
    tInput.tStream.Read8BitChars(2, sText); // a field without a zero ends where it ends
    EXPECT_EQ(sText, L"gh");
    tInput.tStream.Read8BitChars(0, sText);
    EXPECT_EQ(sText, L"");
    EXPECT_EQ(iThrownNumber([&] { tInput.tStream.Read8BitChars(1, sText); }), IDS_READ_PAST_END);
    TInput tFull(std::string(255, 'x'), 1200);
    tFull.tStream.Read8BitChars(255, sText);
    EXPECT_EQ(sText, std::wstring(255, L'x'));
}

TEST(TStreamBaseText, TakesFieldsByTheThreadsCodePageAndCountsBlobsByTheSystems) {
    std::string sField;
    std::string sBlob;
    std::wstring sRead;
    std::thread([&] {
        SetThreadLocale(MAKELCID(MAKELANGID(LANG_JAPANESE, SUBLANG_DEFAULT), SORT_DEFAULT));
        std::wstring sText = L"\u6F22";
        sField = sWritten(ecpUtf8, [&](TStreamBase & t) { t.Write8BitChars(3, sText); });
        sBlob = sWritten(ecpUtf8, [&](TStreamBase & t) { t.Write8BitBlob(sText); });
        TInput tInput("\x8A\xBF\0"s, 65001);
        tInput.tStream.Read8BitChars(3, sRead);
    }).join();
    EXPECT_EQ(sField, "\x8A\xBF\0"s);
    EXPECT_EQ(sRead, L"\u6F22");
    auto const cCount = static_cast<char>(WideCharToMultiByte(CP_ACP, 0, L"\u6F22", 1, nullptr, 0, nullptr, nullptr));
    EXPECT_EQ(sBlob, std::string(1, cCount) + "\0\0\0\xE6\xBC\xA2\0"s);
}

// Uncounted strings

TEST(TStreamBaseText, ReadsAStringUpToItsZeroOrToTheEnd) {
    TInput tInput("ab\0cd"s, 1252);
    std::wstring sText = L"x";
    tInput.tStream.ReadString(sText);
    EXPECT_EQ(sText, L"ab");
    EXPECT_EQ(tInput.tStream.dwGetPos(), 3u);
    tInput.tStream.Read(sText);
    EXPECT_EQ(sText, L"cd");
    EXPECT_TRUE(tInput.tStream.fIsEoF());
}

TEST(TStreamBaseText, ReadsAStringIntoABuffer) {
    wchar_t ac[5];
    TInput tInput("ab\0cdefgh"s, 1252);
    tInput.tStream.ReadString(ac, 5);
    EXPECT_STREQ(ac, L"ab");
    EXPECT_EQ(tInput.tStream.dwGetPos(), 3u);
    tInput.tStream.ReadString(ac, 5);
    EXPECT_STREQ(ac, L"cdef"); // the rest stays unread
    EXPECT_EQ(tInput.tStream.dwGetPos(), 7u);
    ac[0] = L'x';
    tInput.tStream.ReadString(ac, 1);
    EXPECT_STREQ(ac, L"");
    EXPECT_EQ(tInput.tStream.dwGetPos(), 7u);
    EXPECT_EQ(iThrownNumber([&] { tInput.tStream.ReadString(ac, 5); }), IDS_READ_PAST_END);
    TInput tExact("abcd\0"s, 1252); // the room ends in front of the zero, which stays unread
    tExact.tStream.ReadString(ac, 5);
    EXPECT_STREQ(ac, L"abcd");
    EXPECT_EQ(tExact.tStream.dwGetPos(), 4u);
}

TEST(TStreamBaseText, ReadsLines) {
    TInput tInput("ab\r\nc\rd\n\x1A"
                  "e",
                  1252);
    std::wstring sText;
    std::vector<std::wstring> asLines;
    while (!tInput.tStream.fIsEoF()) {
        tInput.tStream.Readln(sText);
        asLines.push_back(sText);
    }
    EXPECT_EQ(asLines, (std::vector<std::wstring>{L"ab", L"cd", L"", L"e"}));
    TInput tZero("a\0b\n"s, 1252);
    sText = L"before";
    EXPECT_TRUE(fStartsWith(sThrown([&] { tZero.tStream.Readln(sText); }), "decode: "));
    EXPECT_EQ(sText, L"before");
    EXPECT_EQ(tZero.tStream.dwGetPos(), 1u);
}

TEST(TStreamBaseText, ReadsALineIntoABufferWithoutATerminator) {
    TInput tInput("abcdef\r\ng", 1252);
    wchar_t ac[8] = L"1234567";
    tInput.tStream.Readln(ac, 5);
    EXPECT_EQ(std::wstring(ac, 8), L"abcd567\0"s);
    tInput.tStream.Readln(ac, 8);
    EXPECT_EQ(std::wstring(ac, 8), L"efcd567\0"s);
    tInput.tStream.Readln(ac, 1);
    EXPECT_EQ(std::wstring(ac, 8), L"efcd567\0"s);
    EXPECT_EQ(tInput.tStream.dwGetPos(), 8u);
}

TEST(TStreamBaseText, MakesABlankOfAZeroThatADerivedClassLetsThrough) {
    struct TZeroStream : TStreamBase {
        using TStreamBase::TStreamBase;
        void ReadChar(wchar_t & c) override { ReadCharInternal(c, true); }
    };
    TZeroStream tStream("a\0b\nc\0d", 7, ecpWestern);
    std::wstring sText;
    tStream.Readln(sText);
    EXPECT_EQ(sText, L"a b");
    wchar_t ac[4] = {};
    tStream.Readln(ac, 4);
    EXPECT_STREQ(ac, L"c d");
}

TEST(TStreamBaseText, ReadsToADelimiterAndAppends) {
    struct {
        std::string sData;
        wchar_t cDelim, cEscape;
        bool fKeep;
        std::wstring sText;
        unsigned long dwPos;
    } const atRows[] = {
        {"a\\,b,c", L',', L'\\', false, L"a\\,b", 5},
        {"a\\,b,c", L',', L'\\', true, L"a\\,b,", 5},
        {"a\\,b,c", L',', 0, false, L"a\\", 3},
        {"a\\\\,b", L',', L'\\', false, L"a\\\\", 4},
        {"abc", L',', L'\\', true, L"abc", 3},
        {"a\0b"s, 0, 0, false, L"a", 2},
        {"a\0b"s, 0, 0, true, L"a\0"s, 2},
        {",x", L',', 0, false, L"", 1},
        {"a,,b", L',', L',', false, L"a,,b", 4}, // an escape that is the delimiter never ends the text at its first
    };
    for (auto const & tRow : atRows) {
        TInput tInput(tRow.sData, 1252);
        std::wstring sText = L"<";
        tInput.tStream.ReadToDelim(sText, tRow.cDelim, tRow.cEscape, tRow.fKeep, 0);
        EXPECT_EQ(sText, L"<" + tRow.sText) << tRow.sData;
        EXPECT_EQ(tInput.tStream.dwGetPos(), tRow.dwPos) << tRow.sData;
    }
    TInput tZero("a\0b"s, 1252);
    std::wstring sText;
    EXPECT_TRUE(fStartsWith(sThrown([&] { tZero.tStream.ReadToDelim(sText, L',', 0, false, 0); }), "decode: "));
    EXPECT_EQ(tZero.tStream.dwGetPos(), 1u);
}

// XML

TEST(TStreamBaseText, WritesXml) {
    std::wstring const sAll = L"a\n\r\"'&<>\0\u00E4b"s;
    EXPECT_EQ(sWritten(ecpWestern, [&](TStreamBase & t) { t.WriteXML(sAll, true); }),
              "a&#10;&#13;&quot;&apos;&amp;&lt;&gt;\0\xE4"
              "b"s);
    EXPECT_EQ(sWritten(ecpWestern, [&](TStreamBase & t) { t.WriteXML(sAll, false); }), "a&amp;&lt;&gt;\0\xE4"
                                                                                       "b"s);
    EXPECT_EQ(sWritten(ecpUtf16, [&](TStreamBase & t) { t.WriteXML(L"<a", true); }), "&\0l\0t\0;\0a\0"s);
}

TEST(TStreamBaseText, WritesXmlComments) {
    struct {
        std::wstring sText;
        std::string sComment;
    } const atRows[] = {{L"-", "-"}, {L"--", "- -"}, {L"---", "- - -"}, {L"a-b--", "a-b- -"}, {L"", ""}, {L"<&", "<&"}};
    for (auto const & tRow : atRows) {
        TStreamBase tStream(ecpUtf8);
        tStream.WriteXMLComment(tRow.sText);
        EXPECT_EQ(sBytes(tStream), tRow.sComment);
    }
}

// Everything against the reference

TEST(TStreamBaseText, ReadsAsCharacterByCharacterThroughThePlatform) {
    std::mt19937 tRandom(20240115);
    for (int i = 0; i < 1500; ++i) {
        for (unsigned short const uCodePage : auCodePages) {
            std::string const sData = sRandomText(tRandom, uCodePage, tRandom() % (i % 100 == 0 ? 6000 : 120));
            auto const uCount = static_cast<unsigned long>(tRandom() % (sData.size() + 3));
            auto const uRoom = static_cast<unsigned long>(tRandom() % 40 + 1);
            static constexpr std::wstring_view sDelims = L",\n\\a\u6F22\0";
            wchar_t const cDelim = sDelims[tRandom() % sDelims.size()];
            wchar_t const cEscape = tRandom() % 2 == 0 ? L'\\' : L'\0';
            bool const fKeep = tRandom() % 2 == 0;

            Compare(
                sData, uCodePage, [](auto & t, auto & s) { t.ReadString(s); },
                [](auto & t, auto & s) { t.ReadString(s); });
            Compare(
                sData, uCodePage, [](auto & t, auto & s) { t.Readln(s); }, [](auto & t, auto & s) { t.Readln(s); });
            Compare(
                sData, uCodePage, [=](auto & t, auto & s) { t.ReadStringForPascal(s, uCount); },
                [=](auto & t, auto & s) { t.ReadForPascal(s, uCount); });
            Compare(
                sData, uCodePage, [=](auto & t, auto & s) { t.ReadToDelim(s, cDelim, cEscape, fKeep, 0); },
                [=](auto & t, auto & s) { t.ReadToDelim(s, cDelim, cEscape, fKeep); });
            Compare(
                sData, uCodePage, [=](auto & t, auto &) { t.SkipChars(uRoom); },
                [=](auto & t, auto &) { t.SkipChars(uRoom); });
            Compare(
                sData, uCodePage,
                [=](auto & t, auto & s) {
                    s.assign(uRoom, L'\0');
                    t.ReadString(s.data(), uRoom);
                },
                [=](auto & t, auto & s) {
                    s.assign(uRoom, L'\0');
                    t.ReadBuffer(s.data(), uRoom);
                });
            if (HasFatalFailure()) return;
        }
    }
}

TEST(TStreamBaseText, PeeksAtPairsOfBytesAsThePlatformDoes) {
    for (unsigned short const uCodePage : auCodePages) {
        for (unsigned int u = 0; u < 0x10000; u += 61) {
            std::string const sData{static_cast<char>(u >> 8), static_cast<char>(u)};
            TInput tInput(sData, uCodePage);
            TReference const tReference(sData, uCodePage);
            wchar_t cOurs = L'x', cTheirs = L'x';
            unsigned int uOurs = 0, uTheirs = 0;
            bool fOurs = true, fTheirs = true;
            try {
                uOurs = tInput.tStream.PeekCharInternal(cOurs, true);
            } catch (std::runtime_error const &) {
                fOurs = false;
            }
            try {
                uTheirs = tReference.uPeek(cTheirs, true);
            } catch (std::runtime_error const &) {
                fTheirs = false;
            }
            ASSERT_EQ(fOurs, fTheirs) << uCodePage << ' ' << u;
            ASSERT_EQ(cOurs, cTheirs) << uCodePage << ' ' << u;
            ASSERT_EQ(uOurs, uTheirs) << uCodePage << ' ' << u;
        }
    }
}

TEST(TStreamBaseText, ReadsGroupsOfUtf8AsCharacterByCharacter) {
    // Dense mixes of one to three bytes, with ends, stops and errors at every place of a group.
    static constexpr std::wstring_view asAlphabets[] = {L"ab\u00E4\u07FF", L"a\u0800\u6F22\uFFFD",
                                                        L"abcdefghijklmn\u0080", L"a\u00E4\u6F22\u5B57", L"\u6F22"};
    std::mt19937 tRandom(99);
    for (int i = 0; i < 20000; ++i) {
        std::wstring_view const sAlphabet = asAlphabets[tRandom() % std::size(asAlphabets)];
        TStreamBase tEncoded(ecpUtf8);
        for (std::size_t u = tRandom() % 60; u != 0; --u)
            tEncoded.WriteChar(sAlphabet[tRandom() % sAlphabet.size()]);
        if (tEncoded.pGetData() == nullptr) continue;
        std::string sData = sBytes(tEncoded);
        if (!sData.empty() && tRandom() % 2 == 0) {
            static constexpr std::string_view sBreaks = "\n\\\xC0\xC1\xC2\xE0\xED\xEF\xBF\xF0\x80\xFF\0"sv;
            sData[tRandom() % sData.size()] = sBreaks[tRandom() % sBreaks.size()];
        }
        Compare(
            sData, 65001, [](auto & t, auto & s) { t.ReadToDelim(s, L'\n', L'\\', false, 0); },
            [](auto & t, auto & s) { t.ReadToDelim(s, L'\n', L'\\', false); });
        Compare(
            sData, 65001, [](auto & t, auto & s) { t.ReadString(s); }, [](auto & t, auto & s) { t.ReadString(s); });
        if (HasFatalFailure()) return;
    }
}
