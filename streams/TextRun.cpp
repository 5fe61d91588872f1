#include "streams/TextRun.h"

#include "ZkBase/Windows.h"
#include "streams/CodePageTable.h"

#include <bit>
#include <climits>
#include <cstddef>
#include <cstdint>

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

    /// A stop as an ASCII byte; 0, which is a stop anyway, when it is none.
    [[nodiscard]] char cGetAscii1() const noexcept { return cAscii(cStop1); }
    [[nodiscard]] char cGetAscii2() const noexcept { return cAscii(cStop2); }

private:
    static char cAscii(wchar_t c) noexcept { return c < 0x80 ? static_cast<char>(c) : '\0'; }

    wchar_t cStop1;
    wchar_t cStop2;
};

/// A run in the making: what is left of the bytes and of the room.
struct TRunState {
    unsigned char const * p;
    unsigned char const * pEnd;
    wchar_t * pOut;
    wchar_t * pOutEnd;

    [[nodiscard]] bool fDone() const noexcept { return p == pEnd || pOut == pOutEnd; }
    [[nodiscard]] std::size_t uLeft() const noexcept { return static_cast<std::size_t>(pEnd - p); }
    [[nodiscard]] std::size_t uRoom() const noexcept { return static_cast<std::size_t>(pOutEnd - pOut); }
};

/// Takes ASCII as long as there are 16 bytes and room for 16 units. Ends in front of a stop or of a byte above 127.
void AsciiRun(TRunState & t, TStops const & tStops) noexcept {
    __m128i const tZero = _mm_setzero_si128();
    __m128i const tStop1 = _mm_set1_epi8(tStops.cGetAscii1());
    __m128i const tStop2 = _mm_set1_epi8(tStops.cGetAscii2());
    while (t.uLeft() >= 16 && t.uRoom() >= 16) {
        __m128i const tBytes = _mm_loadu_si128(reinterpret_cast<__m128i const *>(t.p));
        __m128i const tCare = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(tBytes, tStop1), _mm_cmpeq_epi8(tBytes, tStop2)),
                                           _mm_or_si128(_mm_cmpeq_epi8(tBytes, tZero), tBytes));
        auto const uCare = static_cast<unsigned int>(_mm_movemask_epi8(tCare));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(t.pOut), _mm_unpacklo_epi8(tBytes, tZero));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(t.pOut + 8), _mm_unpackhi_epi8(tBytes, tZero));
        int const iPlain = uCare == 0 ? 16 : std::countr_zero(uCare);
        t.p += iPlain;
        t.pOut += iPlain;
        if (iPlain != 16) return;
    }
}

[[nodiscard]] bool fIsContinuation(unsigned char u) noexcept {
    return (u & 0xC0) == 0x80;
}

/// Decodes one well-formed character of two or three bytes; 0 when it is none. Four bytes are two units: not for here.
[[nodiscard]] wchar_t cDecodeUtf8(unsigned char const * p, std::size_t uLeft, unsigned int & uLength) noexcept {
    unsigned char const u0 = p[0];
    if (u0 >= 0xE0 && u0 <= 0xEF) {
        if (uLeft < 3 || !fIsContinuation(p[1]) || !fIsContinuation(p[2])) return 0;
        unsigned int const uUnit = (u0 & 0x0Fu) << 12 | (p[1] & 0x3Fu) << 6 | (p[2] & 0x3Fu);
        if (uUnit < 0x800 || (uUnit >= 0xD800 && uUnit <= 0xDFFF)) return 0;
        uLength = 3;
        return static_cast<wchar_t>(uUnit);
    }
    if (u0 >= 0xC2 && u0 <= 0xDF) {
        if (uLeft < 2 || !fIsContinuation(p[1])) return 0;
        uLength = 2;
        return static_cast<wchar_t>((u0 & 0x1Fu) << 6 | (p[1] & 0x3Fu));
    }
    return 0;
}

void Utf8Run(TRunState & t, TStops const & tStops) noexcept {
    while (!t.fDone()) {
        AsciiRun(t, tStops);
        // Then one by one, so many that a new look by sixteen is worth it.
        for (int i = 0; i < 16 && !t.fDone(); ++i) {
            unsigned int uLength = 1;
            wchar_t const c = *t.p < 0x80 ? *t.p : cDecodeUtf8(t.p, t.uLeft(), uLength);
            if (tStops.fIsStop(c)) return;
            *t.pOut++ = c;
            t.p += uLength;
        }
    }
}

void Utf16Run(TRunState & t, TStops const & tStops, bool fHighFirst) noexcept {
    std::size_t const uLow = fHighFirst ? 1 : 0;
    while (t.uLeft() >= 2 && t.pOut != t.pOutEnd) {
        auto const c = static_cast<wchar_t>(t.p[uLow] | t.p[1 - uLow] << 8);
        if (tStops.fIsStop(c)) return;
        *t.pOut++ = c;
        t.p += 2;
    }
}

void TableRun(TRunState & t, TStops const & tStops, TCodePageTable const & tTable) {
    while (!t.fDone()) {
        if (tTable.fIsAscii()) AsciiRun(t, tStops);
        for (int i = 0; i < 16 && !t.fDone(); ++i) {
            unsigned int uLength = 1;
            wchar_t const c = tTable.cDecode(t.p, t.uLeft(), uLength);
            if (tStops.fIsStop(c)) return;
            *t.pOut++ = c;
            t.p += uLength;
        }
    }
}

} // namespace

TTextRun tDecodeRun(unsigned short uCodePage, unsigned char const * pBytes, unsigned long dwBytes, wchar_t * pTarget,
                    unsigned long dwRoom, wchar_t cStop1, wchar_t cStop2) {
    TRunState t{pBytes, pBytes + dwBytes, pTarget, pTarget + dwRoom};
    TStops const tStops(cStop1, cStop2);
    switch (uCodePage) {
    case 1200:
        Utf16Run(t, tStops, false);
        break;
    case 1201:
        Utf16Run(t, tStops, true);
        break;
    case CP_UTF8:
        Utf8Run(t, tStops);
        break;
    default:
        TableRun(t, tStops, TCodePageTable::tGet(uCodePage));
    }
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
    __m128i const tAboveAscii = _mm_set1_epi16(static_cast<short>(0xFF80));
    while (p != pEnd) {
        // ASCII by sixteen: there is room for at least a byte for each unit left, so the whole store fits.
        while (pEnd - p >= 16) {
            __m128i const tLow = _mm_loadu_si128(reinterpret_cast<__m128i const *>(p));
            __m128i const tHigh = _mm_loadu_si128(reinterpret_cast<__m128i const *>(p + 8));
            __m128i const tCare = _mm_and_si128(_mm_or_si128(tLow, tHigh), tAboveAscii);
            if (_mm_movemask_epi8(_mm_cmpeq_epi16(tCare, _mm_setzero_si128())) != 0xFFFF) break;
            _mm_storeu_si128(reinterpret_cast<__m128i *>(pOut), _mm_packus_epi16(tLow, tHigh));
            p += 16;
            pOut += 16;
        }
        for (int i = 0; i < 16 && p != pEnd; ++i) {
            unsigned int const c = *p++;
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
    }
    return static_cast<int>(pOut - pTarget);
}
