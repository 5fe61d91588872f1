#include "streams/TextRun.h"

#include "ZkBase/Windows.h"
#include "streams/CodePageTable.h"
#include "streams/Utf8Shuffle.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <emmintrin.h>

namespace {

constexpr wchar_t cNeverPlain = 0xFFFF;

/// The units in front of which a run ends.
class TStops {
public:
    TStops(wchar_t c1, wchar_t c2) noexcept : cStop1(c1), cStop2(c2) {}

    [[nodiscard]] bool fIsStop(wchar_t c) const noexcept {
        return c == 0 || c == cNeverPlain || c == cStop1 || c == cStop2;
    }

    /// True when both are ASCII, as a zero for none is.
    [[nodiscard]] bool fAreAscii() const noexcept { return (cStop1 | cStop2) < 0x80; }
    [[nodiscard]] char cGetAscii1() const noexcept { return static_cast<char>(cStop1); }
    [[nodiscard]] char cGetAscii2() const noexcept { return static_cast<char>(cStop2); }

private:
    wchar_t cStop1;
    wchar_t cStop2;
};

/// Where a run has come to.
struct TRunEnd {
    unsigned char const * p;
    wchar_t * pOut;
};

// The runs keep what they work on in variables of their own, not in a structure: that would stand in memory, and be
// waited for there.

/// Decodes one well-formed character of up to three bytes that is not 0xFFFF; 0 when it is none. Four bytes are two
/// units: not for here. `uLength` is set for more than one byte.
constexpr auto cDecodeUtf8 = [](unsigned char const * p, std::size_t uLeft, unsigned int & uLength) -> wchar_t {
    unsigned int const u0 = p[0];
    if (u0 < 0x80) return static_cast<wchar_t>(u0);
    if (uLeft < 2) return 0;
    unsigned int const u1 = p[1] ^ 0x80u; // below 0x40 for a continuation byte
    if (u0 < 0xE0) {
        uLength = 2;
        return u0 >= 0xC2 && u1 < 0x40 ? static_cast<wchar_t>((u0 & 0x1F) << 6 | u1) : L'\0';
    }
    if (uLeft < 3) return 0;
    unsigned int const u2 = p[2] ^ 0x80u;
    unsigned int const uUnit = (u0 & 0x0F) << 12 | u1 << 6 | u2;
    bool const fPlain =
        u0 < 0xF0 && (u1 | u2) < 0x40 && uUnit >= 0x800 && (uUnit & 0xF800) != 0xD800 && uUnit != cNeverPlain;
    uLength = 3;
    return fPlain ? static_cast<wchar_t>(uUnit) : L'\0';
};

/// Decodes character by character. `cDecode` takes the bytes, how many are left, and the length to set, which is 1.
template <typename TDecode>
TRunEnd tCharacterRun(unsigned char const * p, unsigned char const * pEnd, wchar_t * pOut, wchar_t const * pOutEnd,
                      TStops tStops, TDecode cDecode) {
    while (p != pEnd && pOut != pOutEnd) {
        unsigned int uLength = 1;
        wchar_t const c = cDecode(p, static_cast<std::size_t>(pEnd - p), uLength);
        if (tStops.fIsStop(c)) break;
        *pOut++ = c;
        p += uLength;
    }
    return {p, pOut};
}

/// Decodes some characters in any encoding, so many that a new look at pieces of ASCII is worth it. False when it ended
/// at what needs care.
template <typename TDecode>
bool fTakeSome(unsigned char const *& pFrom, unsigned char const * pEnd, wchar_t *& pTo, wchar_t const * pOutEnd,
               TStops tStops, TDecode cDecode) {
    unsigned char const * p = pFrom;
    wchar_t * pOut = pTo;
    bool fPlain = true;
    for (int i = 0; i < 16 && p != pEnd && pOut != pOutEnd; ++i) {
        unsigned int uLength = 1;
        wchar_t const c = cDecode(p, static_cast<std::size_t>(pEnd - p), uLength);
        fPlain = !tStops.fIsStop(c);
        if (!fPlain) break;
        *pOut++ = c;
        p += uLength;
    }
    pFrom = p;
    pTo = pOut;
    return fPlain;
}

/// The same for encodings whose ASCII is ASCII, with ASCII stops: ASCII by pieces of 16, and what stands between them,
/// the last bytes and the last room character by character.
template <typename TDecode>
TRunEnd tAsciiRun(unsigned char const * p, unsigned char const * pEnd, wchar_t * pOut, wchar_t const * pOutEnd,
                  TStops tStops, TDecode cDecode) {
    __m128i const tZero = _mm_setzero_si128();
    __m128i const tStop1 = _mm_set1_epi8(tStops.cGetAscii1());
    __m128i const tStop2 = _mm_set1_epi8(tStops.cGetAscii2());
    while (pEnd - p >= 16 && pOutEnd - pOut >= 16) {
        __m128i const tBytes = _mm_loadu_si128(reinterpret_cast<__m128i const *>(p));
        __m128i const tStopHere = _mm_or_si128(_mm_cmpeq_epi8(tBytes, tStop1), _mm_cmpeq_epi8(tBytes, tStop2));
        __m128i const tCare = _mm_or_si128(_mm_or_si128(tStopHere, _mm_cmpeq_epi8(tBytes, tZero)), tBytes);
        _mm_storeu_si128(reinterpret_cast<__m128i *>(pOut), _mm_unpacklo_epi8(tBytes, tZero));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(pOut + 8), _mm_unpackhi_epi8(tBytes, tZero));
        // The top bit of a byte tells that it is a stop, a zero or above ASCII.
        auto const uCare = static_cast<unsigned int>(_mm_movemask_epi8(tCare));
        if (uCare == 0) {
            p += 16;
            pOut += 16;
            continue;
        }
        int const iPlain = std::countr_zero(uCare);
        p += iPlain;
        pOut += iPlain;
        if (*p < 0x80 || !fTakeSome(p, pEnd, pOut, pOutEnd, tStops, cDecode)) return {p, pOut};
    }
    return tCharacterRun(p, pEnd, pOut, pOutEnd, tStops, cDecode);
}

/// The same for code pages of one byte a character: also what is not ASCII by pieces of 16.
TRunEnd tSingleByteRun(unsigned char const * p, unsigned char const * pEnd, wchar_t * pOut, wchar_t const * pOutEnd,
                       TStops tStops, TCodePageTable const & tTable) {
    __m128i const tZero = _mm_setzero_si128();
    __m128i const tStop1 = _mm_set1_epi8(tStops.cGetAscii1());
    __m128i const tStop2 = _mm_set1_epi8(tStops.cGetAscii2());
    auto const tEight = [&tTable](unsigned char const * pBytes) {
        auto const c = [&](int i) { return static_cast<short>(tTable.cGetSingle(pBytes[i])); };
        return _mm_setr_epi16(c(0), c(1), c(2), c(3), c(4), c(5), c(6), c(7));
    };
    while (pEnd - p >= 16 && pOutEnd - pOut >= 16) {
        __m128i const tBytes = _mm_loadu_si128(reinterpret_cast<__m128i const *>(p));
        __m128i const tStopHere = _mm_or_si128(_mm_cmpeq_epi8(tBytes, tStop1), _mm_cmpeq_epi8(tBytes, tStop2));
        __m128i tCare = _mm_or_si128(tStopHere, _mm_cmpeq_epi8(tBytes, tZero));
        __m128i tFront = _mm_unpacklo_epi8(tBytes, tZero);
        __m128i tBack = _mm_unpackhi_epi8(tBytes, tZero);
        if (_mm_movemask_epi8(tBytes) != 0) {
            tFront = tEight(p);
            tBack = tEight(p + 8);
            __m128i const tUnknown = _mm_packs_epi16(_mm_cmpeq_epi16(tFront, tZero), _mm_cmpeq_epi16(tBack, tZero));
            tCare = _mm_or_si128(tCare, tUnknown);
        }
        _mm_storeu_si128(reinterpret_cast<__m128i *>(pOut), tFront);
        _mm_storeu_si128(reinterpret_cast<__m128i *>(pOut + 8), tBack);
        int const iPlain = std::countr_zero(static_cast<unsigned int>(_mm_movemask_epi8(tCare)) | 0x10000);
        p += iPlain;
        pOut += iPlain;
        if (iPlain < 16) return {p, pOut};
    }
    return tCharacterRun(
        p, pEnd, pOut, pOutEnd, tStops,
        [&tTable](unsigned char const * pBytes, std::size_t, unsigned int &) { return tTable.cGetSingle(*pBytes); });
}

TRunEnd tTableRun(unsigned char const * p, unsigned char const * pEnd, wchar_t * pOut, wchar_t const * pOutEnd,
                  TStops tStops, TCodePageTable const & tTable) {
    auto const cDecode = [&tTable](unsigned char const * pBytes, std::size_t uLeft, unsigned int & uLength) {
        return tTable.cDecode(pBytes, uLeft, uLength);
    };
    if (!tTable.fIsAscii() || !tStops.fAreAscii()) return tCharacterRun(p, pEnd, pOut, pOutEnd, tStops, cDecode);
    if (tTable.fIsByteByByte()) return tSingleByteRun(p, pEnd, pOut, pOutEnd, tStops, tTable);
    return tAsciiRun(p, pEnd, pOut, pOutEnd, tStops, cDecode);
}

TRunEnd tUtf8Run(unsigned char const * p, unsigned char const * pEnd, wchar_t * pOut, wchar_t const * pOutEnd,
                 TStops tStops) {
    if (!tStops.fAreAscii()) return tCharacterRun(p, pEnd, pOut, pOutEnd, tStops, cDecodeUtf8);
    do {
        if (fTakeUtf8ByShuffle(p, pEnd, pOut, pOutEnd, tStops.cGetAscii1(), tStops.cGetAscii2())) return {p, pOut};
        if (pEnd - p < 16 || pOutEnd - pOut < 16) return tAsciiRun(p, pEnd, pOut, pOutEnd, tStops, cDecodeUtf8);
    } while (fTakeSome(p, pEnd, pOut, pOutEnd, tStops, cDecodeUtf8));
    return {p, pOut};
}

TRunEnd tUtf16Run(unsigned char const * p, unsigned char const * pEnd, wchar_t * pOut, wchar_t const * pOutEnd,
                  TStops tStops, bool fHighFirst) {
    std::size_t const uLow = fHighFirst ? 1 : 0;
    for (; pEnd - p >= 2 && pOut != pOutEnd; p += 2) {
        auto const c = static_cast<wchar_t>(p[uLow] | p[1 - uLow] << 8);
        if (tStops.fIsStop(c)) break;
        *pOut++ = c;
    }
    return {p, pOut};
}

TRunEnd tRunTo(unsigned short uCodePage, unsigned char const * p, unsigned char const * pEnd, wchar_t * pOut,
               wchar_t const * pOutEnd, TStops tStops) {
    switch (uCodePage) {
    case 1200:
        return tUtf16Run(p, pEnd, pOut, pOutEnd, tStops, false);
    case 1201:
        return tUtf16Run(p, pEnd, pOut, pOutEnd, tStops, true);
    case CP_UTF8:
        return tUtf8Run(p, pEnd, pOut, pOutEnd, tStops);
    default:
        return tTableRun(p, pEnd, pOut, pOutEnd, tStops, TCodePageTable::tGet(uCodePage));
    }
}

} // namespace

TTextRun tDecodeRun(unsigned short uCodePage, unsigned char const * pBytes, unsigned long dwBytes, wchar_t * pTarget,
                    unsigned long dwRoom, wchar_t cStop1, wchar_t cStop2) {
    TRunEnd const t = tRunTo(uCodePage, pBytes, pBytes + dwBytes, pTarget, pTarget + dwRoom, TStops(cStop1, cStop2));
    return {static_cast<unsigned long>(t.p - pBytes), static_cast<unsigned long>(t.pOut - pTarget)};
}

unsigned int uGetUtf8Length(unsigned char uFirst) noexcept {
    // Continuation bytes and the two that never occur count as characters of one byte, which the conversion refuses.
    if (uFirst == 0) return 0;
    if (uFirst <= 0xBF || uFirst >= 0xFE) return 1;
    if (uFirst <= 0xDF) return 2;
    if (uFirst <= 0xEF) return 3;
    if (uFirst <= 0xF7) return 4;
    return uFirst <= 0xFB ? 5 : 6;
}

std::size_t uGetTextLength(wchar_t const * pzText) noexcept {
    // By pieces of 16 units that lie in one page, so that what is behind the terminator can be looked at.
    constexpr std::uintptr_t uPage = 4096;
    __m128i const tZero = _mm_setzero_si128();
    for (wchar_t const * p = pzText;; ++p) {
        std::size_t uInPage = (uPage - reinterpret_cast<std::uintptr_t>(p) % uPage) / sizeof(wchar_t);
        for (; uInPage >= 16; uInPage -= 16, p += 16) {
            __m128i const tFront = _mm_loadu_si128(reinterpret_cast<__m128i const *>(p));
            __m128i const tBack = _mm_loadu_si128(reinterpret_cast<__m128i const *>(p + 8));
            __m128i const tZeros = _mm_packs_epi16(_mm_cmpeq_epi16(tFront, tZero), _mm_cmpeq_epi16(tBack, tZero));
            if (auto const uZeros = static_cast<unsigned int>(_mm_movemask_epi8(tZeros)); uZeros != 0)
                return static_cast<std::size_t>(p - pzText) + static_cast<unsigned>(std::countr_zero(uZeros));
        }
        for (; uInPage != 0; --uInPage, ++p) {
            if (*p == 0) return static_cast<std::size_t>(p - pzText);
        }
        // The first unit of the next page, or, at an odd address, the one that lies across.
        if (*p == 0) return static_cast<std::size_t>(p - pzText);
    }
}

int iGetUtf8Size(wchar_t const * pText, int iCount) noexcept {
    std::int64_t iSize = iCount;
    bool fSurrogate = false;
    for (int i = 0; i < iCount; ++i) {
        wchar_t const c = pText[i];
        iSize += (c >= 0x80) + (c >= 0x800);
        fSurrogate |= (c & 0xF800) == 0xD800;
    }
    return fSurrogate || iSize > INT_MAX ? -1 : static_cast<int>(iSize);
}

int iEncodeUtf8(wchar_t const * pText, int iCount, char * pTarget) noexcept {
    wchar_t const * p = pText;
    wchar_t const * const pEnd = pText + iCount;
    char * pOut = pTarget;
    if (iCount >= 8) EncodeUtf8ByShuffle(p, pEnd, pOut); // a line end is no matter for it
    for (; p != pEnd; ++p) {
        unsigned int const c = *p;
        if (c < 0x80) {
            *pOut++ = static_cast<char>(c);
        } else if (c < 0x800) {
            *pOut++ = static_cast<char>(0xC0 | c >> 6);
            *pOut++ = static_cast<char>(0x80 | (c & 0x3F));
        } else {
            if ((c & 0xF800) == 0xD800) return -1;
            *pOut++ = static_cast<char>(0xE0 | c >> 12);
            *pOut++ = static_cast<char>(0x80 | (c >> 6 & 0x3F));
            *pOut++ = static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return static_cast<int>(pOut - pTarget);
}
