#include "streams/Utf8Shuffle.h"

#include "streams/CopyBytes.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include <tmmintrin.h>
#ifdef _MSC_VER
#include <intrin.h>
#define ZK_SHUFFLE_CODE
#else
#define ZK_SHUFFLE_CODE __attribute__((target("ssse3")))
#endif

namespace {

constexpr int iCharacters = 4;           // at once, one in each 32 bits
constexpr int iLongest = 3;              // bytes of a character
constexpr int iPatterns = 3 * 3 * 3 * 3; // lengths that four characters can have
constexpr int iWindow = iCharacters * iLongest;

/// What to do with four characters of certain lengths.
struct alignas(16) TPattern {
    std::array<std::uint8_t, 16> auSpread;           ///< the last byte of each to its lowest place, the first on top
    std::array<std::uint8_t, 16> auGather;           ///< the bytes of each, first byte lowest, to one row
    std::array<std::uint32_t, iCharacters> auMarks;  ///< the bits that tell first and later bytes apart
    std::array<std::uint32_t, iCharacters> auWanted; ///< what they have to be for these lengths
    std::array<std::int32_t, iCharacters> aiLeast;   ///< the least unit that needs so many bytes
    std::uint32_t uBytes;                            ///< of all four
};

struct TTables {
    std::array<TPattern, iPatterns> atPatterns;
    /// By the places, one bit each, at which a character ends in the window: the pattern, or `uNone`.
    std::array<std::uint8_t, 1 << iWindow> auPatternOfEnds;
    /// By four bits for the characters of more than one byte, and above them four for those of more than two.
    std::array<std::uint8_t, 256> auPatternOfLengths;
    /// By one bit for each of eight units: the shuffle that drops those, and how many it keeps.
    std::array<std::array<std::uint8_t, 16>, 256> aauDrop;
    std::array<std::uint8_t, 256> auKept;
    /// By one bit for each of eight units: the shuffle that keeps the upper byte of those only.
    std::array<std::array<std::uint8_t, 16>, 256> aauKeepUpper;
};
constexpr std::uint8_t uNone = 0xFF;

constexpr TPattern tMakePattern(std::array<int, iCharacters> const & aiLengths) {
    constexpr std::array<std::uint32_t, iLongest> auMarks{0x80, 0xE0C0, 0xF0C0C0};
    constexpr std::array<std::uint32_t, iLongest> auWanted{0, 0xC080, 0xE08080};
    constexpr std::array<std::int32_t, iLongest> aiLeast{0, 0x80, 0x800};
    TPattern tPattern{};
    tPattern.auGather.fill(0x80); // gives a zero
    for (std::size_t u = 0; u < iCharacters; ++u) {
        auto const uLength = static_cast<std::size_t>(aiLengths[u]);
        for (std::size_t uPlace = 0; uPlace < 4; ++uPlace) {
            bool const fThere = uPlace < uLength;
            tPattern.auSpread[4 * u + uPlace] =
                static_cast<std::uint8_t>(fThere ? tPattern.uBytes + uLength - 1 - uPlace : 0x80);
            if (fThere) tPattern.auGather[tPattern.uBytes + uPlace] = static_cast<std::uint8_t>(4 * u + uPlace);
        }
        tPattern.auMarks[u] = auMarks[uLength - 1];
        tPattern.auWanted[u] = auWanted[uLength - 1];
        tPattern.aiLeast[u] = aiLeast[uLength - 1];
        tPattern.uBytes += static_cast<std::uint32_t>(uLength);
    }
    return tPattern;
}

constexpr TTables tMakeTables() {
    TTables t{};
    t.auPatternOfEnds.fill(uNone);
    for (int i = 0; i < iPatterns; ++i) {
        std::array<int, iCharacters> aiLengths{i % 3 + 1, i / 3 % 3 + 1, i / 9 % 3 + 1, i / 27 + 1};
        t.atPatterns[static_cast<std::size_t>(i)] = tMakePattern(aiLengths);
        std::uint32_t uEnds = 0;
        std::uint32_t uLengths = 0;
        int iEnd = -1;
        for (int iCharacter = 0; iCharacter < iCharacters; ++iCharacter) {
            int const iLength = aiLengths[static_cast<std::size_t>(iCharacter)];
            uEnds |= 1u << (iEnd += iLength);
            uLengths |= (iLength > 1 ? 0x01u : 0u) << iCharacter | (iLength > 2 ? 0x10u : 0u) << iCharacter;
        }
        t.auPatternOfLengths[uLengths] = static_cast<std::uint8_t>(i);
        // What ends behind the fourth character does not matter.
        std::uint32_t const uFree = (1u << (iWindow - 1 - iEnd)) - 1;
        for (std::uint32_t uRest = 0; uRest <= uFree; ++uRest)
            t.auPatternOfEnds[uEnds | uRest << (iEnd + 1)] = static_cast<std::uint8_t>(i);
    }
    for (std::size_t uDropped = 0; uDropped < t.aauDrop.size(); ++uDropped) {
        t.aauDrop[uDropped].fill(0x80);
        for (std::size_t uUnit = 0; uUnit < 8; ++uUnit) {
            if ((uDropped >> uUnit & 1) != 0) continue;
            std::size_t const uTo = 2u * t.auKept[uDropped]++;
            t.aauDrop[uDropped][uTo] = static_cast<std::uint8_t>(2 * uUnit);
            t.aauDrop[uDropped][uTo + 1] = static_cast<std::uint8_t>(2 * uUnit + 1);
        }
    }
    for (std::size_t uWide = 0; uWide < t.aauKeepUpper.size(); ++uWide) {
        t.aauKeepUpper[uWide].fill(0x80);
        std::size_t uTo = 0;
        for (std::size_t uUnit = 0; uUnit < 8; ++uUnit) {
            t.aauKeepUpper[uWide][uTo++] = static_cast<std::uint8_t>(2 * uUnit);
            if ((uWide >> uUnit & 1) != 0) t.aauKeepUpper[uWide][uTo++] = static_cast<std::uint8_t>(2 * uUnit + 1);
        }
    }
    return t;
}

constexpr TTables tTables = tMakeTables();

bool fProcessorCanShuffle() noexcept {
#ifdef _MSC_VER
    int aiRegisters[4];
    __cpuid(aiRegisters, 1);
    return (aiRegisters[2] & 1 << 9) != 0;
#else
    __builtin_cpu_init();
    return __builtin_cpu_supports("ssse3") != 0;
#endif
}

bool const fCanShuffle = fProcessorCanShuffle();

template <typename T>
__m128i tLoad(T const & tArray) noexcept {
    return _mm_loadu_si128(reinterpret_cast<__m128i const *>(tArray.data()));
}

/// Sixteen bytes and what is known of them.
struct TBytes {
    __m128i t;
    std::uint32_t uAbove; ///< not ASCII, one bit each
    std::uint32_t uLater; ///< continuation bytes
};

/// Puts together eight units of their bytes and the bytes behind those: where a character of two bytes begins, from
/// both.
ZK_SHUFFLE_CODE __m128i tJoinTwo(__m128i tUnits, __m128i tBehind, __m128i tBegins) noexcept {
    __m128i const tHigh = _mm_slli_epi16(_mm_and_si128(tUnits, _mm_set1_epi16(0x1F)), 6);
    __m128i const tTwo = _mm_or_si128(tHigh, _mm_and_si128(tBehind, _mm_set1_epi16(0x3F)));
    return _mm_or_si128(_mm_and_si128(tBegins, tTwo), _mm_andnot_si128(tBegins, tUnits));
}

/// Takes `iCount` bytes of ASCII and characters of two bytes, or one less when the last one begins a character.
ZK_SHUFFLE_CODE bool fTakeShort(TBytes const & tBytes, int iCount, unsigned char const *& p, wchar_t *& pOut) noexcept {
    std::uint32_t const uIn = (1u << iCount) - 1;
    std::uint32_t const uLater = tBytes.uLater & uIn;
    std::uint32_t const uFirst = tBytes.uAbove & ~tBytes.uLater & uIn;
    // Bytes below 0xC2 begin nothing, and behind every first byte, and nowhere else, a continuation stands.
    auto const uBelow = static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_cmplt_epi8(tBytes.t, _mm_set1_epi8(-62))));
    if ((uFirst & uBelow) != 0 || uLater != (uFirst << 1 & uIn)) return false;
    int const iCut = static_cast<int>(uFirst >> (iCount - 1));
    if (iCut == iCount) return false;

    __m128i const tZero = _mm_setzero_si128();
    __m128i const tBehind = _mm_srli_si128(tBytes.t, 1);
    __m128i const tAbove = _mm_cmplt_epi8(tBytes.t, tZero);
    __m128i const tBegins = _mm_andnot_si128(_mm_cmplt_epi8(tBytes.t, _mm_set1_epi8(-64)), tAbove);
    __m128i const tFront = tJoinTwo(_mm_unpacklo_epi8(tBytes.t, tZero), _mm_unpacklo_epi8(tBehind, tZero),
                                    _mm_unpacklo_epi8(tBegins, tBegins));
    __m128i const tBack = tJoinTwo(_mm_unpackhi_epi8(tBytes.t, tZero), _mm_unpackhi_epi8(tBehind, tZero),
                                   _mm_unpackhi_epi8(tBegins, tBegins));
    std::uint32_t const uDrop = uLater | ~(uIn >> iCut);
    std::uint32_t const uDropFront = uDrop & 0xFF;
    std::uint32_t const uDropBack = uDrop >> 8 & 0xFF;
    _mm_storeu_si128(reinterpret_cast<__m128i *>(pOut), _mm_shuffle_epi8(tFront, tLoad(tTables.aauDrop[uDropFront])));
    pOut += tTables.auKept[uDropFront];
    _mm_storeu_si128(reinterpret_cast<__m128i *>(pOut), _mm_shuffle_epi8(tBack, tLoad(tTables.aauDrop[uDropBack])));
    pOut += tTables.auKept[uDropBack];
    p += iCount - iCut;
    return true;
}

/// Takes four characters of up to three bytes, or those of them that stand in front of `iStop`.
ZK_SHUFFLE_CODE bool fTakeFour(TBytes const & tBytes, int iStop, unsigned char const *& p, wchar_t *& pOut) noexcept {
    // A character ends in front of each byte that is no continuation.
    std::uint8_t const uPattern = tTables.auPatternOfEnds[~tBytes.uLater >> 1 & ((1 << iWindow) - 1)];
    if (uPattern == uNone) return false;
    TPattern const & tPattern = tTables.atPatterns[uPattern];

    __m128i const tFour = _mm_shuffle_epi8(tBytes.t, tLoad(tPattern.auSpread));
    __m128i const tMarks = _mm_and_si128(tFour, tLoad(tPattern.auMarks));
    __m128i const tLow = _mm_and_si128(tFour, _mm_set1_epi32(0x7F));
    __m128i const tMiddle = _mm_srli_epi32(_mm_and_si128(tFour, _mm_set1_epi32(0x3F00)), 2);
    __m128i const tHigh = _mm_srli_epi32(_mm_and_si128(tFour, _mm_set1_epi32(0x0F0000)), 4);
    __m128i const tUnits = _mm_or_si128(_mm_or_si128(tLow, tMiddle), tHigh);

    __m128i const tWellMarked = _mm_cmpeq_epi32(tMarks, tLoad(tPattern.auWanted));
    __m128i const tTooShort = _mm_cmplt_epi32(tUnits, tLoad(tPattern.aiLeast));
    __m128i const tHalf = _mm_cmpeq_epi32(_mm_and_si128(tUnits, _mm_set1_epi32(0xF800)), _mm_set1_epi32(0xD800));
    __m128i const tNever = _mm_cmpeq_epi32(tUnits, _mm_set1_epi32(0xFFFF));
    __m128i const tBad = _mm_or_si128(_mm_or_si128(tTooShort, tHalf), tNever);
    if (_mm_movemask_epi8(_mm_andnot_si128(tBad, tWellMarked)) != 0xFFFF) return false;

    __m128i const tLowerHalves = _mm_set_epi64x(-1, 0x0D0C090805040100);
    _mm_storel_epi64(reinterpret_cast<__m128i *>(pOut), _mm_shuffle_epi8(tUnits, tLowerHalves));
    if (static_cast<int>(tPattern.uBytes) <= iStop) {
        pOut += iCharacters;
        p += tPattern.uBytes;
    } else {
        pOut += tTables.auKept[(tBytes.uLater | ~((1u << iStop) - 1)) & 0xFF] +
                tTables.auKept[(tBytes.uLater | ~((1u << iStop) - 1)) >> 8 & 0xFF];
        p += iStop;
    }
    return true;
}

ZK_SHUFFLE_CODE bool fTakePieces(unsigned char const *& pFrom, unsigned char const * pEnd, wchar_t *& pTo,
                                 wchar_t const * pOutEnd, char cStop1, char cStop2) noexcept {
    __m128i const tZero = _mm_setzero_si128();
    __m128i const tStop1 = _mm_set1_epi8(cStop1);
    __m128i const tStop2 = _mm_set1_epi8(cStop2);
    unsigned char const * p = pFrom;
    wchar_t * pOut = pTo;
    bool fStopped = false;
    while (pEnd - p >= 16 && pOutEnd - pOut >= 16 && !fStopped) {
        // As if it were ASCII; what is not writes over it.
        __m128i const t = _mm_loadu_si128(reinterpret_cast<__m128i const *>(p));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(pOut), _mm_unpacklo_epi8(t, tZero));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(pOut + 8), _mm_unpackhi_epi8(t, tZero));
        __m128i const tStops =
            _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(t, tStop1), _mm_cmpeq_epi8(t, tStop2)), _mm_cmpeq_epi8(t, tZero));
        if (_mm_movemask_epi8(_mm_or_si128(t, tStops)) == 0) {
            p += 16;
            pOut += 16;
            continue;
        }
        int const iStop = std::countr_zero(static_cast<std::uint32_t>(_mm_movemask_epi8(tStops)) | 0x10000);
        unsigned char const * const pStop = p + iStop;
        TBytes const tBytes{t, static_cast<std::uint32_t>(_mm_movemask_epi8(t)),
                            static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_cmplt_epi8(t, _mm_set1_epi8(-64))))};
        auto const uLong = static_cast<std::uint32_t>(
            _mm_movemask_epi8(_mm_cmpeq_epi8(_mm_max_epu8(t, _mm_set1_epi8(-32)), t))); // 0xE0 and above
        // The order is that of the branches that are foreseen best: what the text is like, not where it ends.
        bool fTaken = true;
        if (tBytes.uAbove == 0 || iStop == 0) {
            p += iStop;
            pOut += iStop;
        } else if ((uLong & ((1u << iStop) - 1)) == 0) {
            fTaken = fTakeShort(tBytes, iStop, p, pOut);
        } else if (int const iAscii = std::countr_zero(tBytes.uAbove); iAscii >= iCharacters) {
            p += iAscii;
            pOut += iAscii;
        } else {
            fTaken = fTakeFour(tBytes, iStop, p, pOut);
        }
        if (!fTaken) break;
        fStopped = iStop < 16 && p == pStop;
    }
    pFrom = p;
    pTo = pOut;
    return fStopped;
}

/// Encodes four units, one in each 32 bits, none of them a surrogate half.
ZK_SHUFFLE_CODE void EncodeFour(__m128i tUnits, char *& pOut) noexcept {
    __m128i const tLast = _mm_and_si128(tUnits, _mm_set1_epi32(0x3F));
    __m128i const tTwo =
        _mm_or_si128(_mm_set1_epi32(0x80C0), _mm_or_si128(_mm_srli_epi32(tUnits, 6), _mm_slli_epi32(tLast, 8)));
    __m128i const tMiddle = _mm_and_si128(_mm_slli_epi32(tUnits, 2), _mm_set1_epi32(0x3F00));
    __m128i const tThree = _mm_or_si128(_mm_or_si128(_mm_set1_epi32(0x8080E0), _mm_srli_epi32(tUnits, 12)),
                                        _mm_or_si128(tMiddle, _mm_slli_epi32(tLast, 16)));
    __m128i const tAboveOne = _mm_cmpgt_epi32(tUnits, _mm_set1_epi32(0x7F));
    __m128i const tAboveTwo = _mm_cmpgt_epi32(tUnits, _mm_set1_epi32(0x7FF));
    __m128i const tShort = _mm_or_si128(_mm_and_si128(tAboveOne, tTwo), _mm_andnot_si128(tAboveOne, tUnits));
    __m128i const tBytes = _mm_or_si128(_mm_and_si128(tAboveTwo, tThree), _mm_andnot_si128(tAboveTwo, tShort));
    auto const uLengths = static_cast<unsigned int>(_mm_movemask_ps(_mm_castsi128_ps(tAboveOne)) |
                                                    _mm_movemask_ps(_mm_castsi128_ps(tAboveTwo)) << 4);
    TPattern const & tPattern = tTables.atPatterns[tTables.auPatternOfLengths[uLengths]];
    _mm_storeu_si128(reinterpret_cast<__m128i *>(pOut), _mm_shuffle_epi8(tBytes, tLoad(tPattern.auGather)));
    pOut += tPattern.uBytes;
}

/// Encodes eight units below 0x800.
ZK_SHUFFLE_CODE void EncodeEightOfTwo(__m128i tUnits, char *& pOut) noexcept {
    __m128i const tAboveOne = _mm_cmpgt_epi16(tUnits, _mm_set1_epi16(0x7F));
    __m128i const tLast = _mm_slli_epi16(_mm_and_si128(tUnits, _mm_set1_epi16(0x3F)), 8);
    __m128i const tTwo =
        _mm_or_si128(_mm_set1_epi16(static_cast<short>(0x80C0)), _mm_or_si128(_mm_srli_epi16(tUnits, 6), tLast));
    __m128i const tBytes = _mm_or_si128(_mm_and_si128(tAboveOne, tTwo), _mm_andnot_si128(tAboveOne, tUnits));
    auto const uWide = static_cast<unsigned int>(_mm_movemask_epi8(_mm_packs_epi16(tAboveOne, _mm_setzero_si128())));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(pOut), _mm_shuffle_epi8(tBytes, tLoad(tTables.aauKeepUpper[uWide])));
    pOut += 16 - tTables.auKept[uWide];
}

/// Encodes eight units, unless one is a surrogate half.
ZK_SHUFFLE_CODE bool fEncodeEight(__m128i tUnits, char *& pOut) noexcept {
    __m128i const tZero = _mm_setzero_si128();
    __m128i const tTop = _mm_and_si128(tUnits, _mm_set1_epi16(static_cast<short>(0xF800)));
    if (_mm_movemask_epi8(_mm_cmpeq_epi16(tTop, tZero)) == 0xFFFF) {
        EncodeEightOfTwo(tUnits, pOut);
        return true;
    }
    __m128i const tHalf = _mm_set1_epi16(static_cast<short>(0xD800));
    if (_mm_movemask_epi8(_mm_cmpeq_epi16(tTop, tHalf)) != 0) return false;
    EncodeFour(_mm_unpacklo_epi16(tUnits, tZero), pOut);
    EncodeFour(_mm_unpackhi_epi16(tUnits, tZero), pOut);
    return true;
}

bool fIsAscii(__m128i tUnits) noexcept {
    __m128i const tAbove = _mm_and_si128(tUnits, _mm_set1_epi16(static_cast<short>(0xFF80)));
    return _mm_movemask_epi8(_mm_cmpeq_epi16(tAbove, _mm_setzero_si128())) == 0xFFFF;
}

/// Encodes sixteen units, unless one is a surrogate half.
ZK_SHUFFLE_CODE bool fEncodeSixteen(wchar_t const * p, char *& pOut) noexcept {
    __m128i const tFront = _mm_loadu_si128(reinterpret_cast<__m128i const *>(p));
    __m128i const tBack = _mm_loadu_si128(reinterpret_cast<__m128i const *>(p + 8));
    if (fIsAscii(_mm_or_si128(tFront, tBack))) {
        _mm_storeu_si128(reinterpret_cast<__m128i *>(pOut), _mm_packus_epi16(tFront, tBack));
        pOut += 16;
        return true;
    }
    return fEncodeEight(tFront, pOut) && fEncodeEight(tBack, pOut);
}

ZK_SHUFFLE_CODE void EncodePieces(wchar_t const *& pFrom, wchar_t const * pEnd, char *& pTo) noexcept {
    wchar_t const * p = pFrom;
    char * pOut = pTo; // of the pieces taken
    char * pNext = pTo;
    for (; pEnd - p >= 16 && fEncodeSixteen(p, pNext); p += 16)
        pOut = pNext;
    if (auto const uRest = static_cast<std::size_t>(pEnd - p); uRest != 0 && uRest < 16) {
        // With zeros behind it, which take a byte each.
        std::array<wchar_t, 16> acUnits{};
        CopyBytes(acUnits.data(), p, uRest * sizeof(wchar_t));
        if (fEncodeSixteen(acUnits.data(), pNext)) {
            p = pEnd;
            pOut = pNext - (acUnits.size() - uRest);
        }
    }
    pFrom = p;
    pTo = pOut;
}

} // namespace

bool fTakeUtf8ByShuffle(unsigned char const *& pFrom, unsigned char const * pEnd, wchar_t *& pTo,
                        wchar_t const * pOutEnd, char cStop1, char cStop2) noexcept {
    return fCanShuffle && fTakePieces(pFrom, pEnd, pTo, pOutEnd, cStop1, cStop2);
}

void EncodeUtf8ByShuffle(wchar_t const *& pFrom, wchar_t const * pEnd, char *& pTo) noexcept {
    if (fCanShuffle) EncodePieces(pFrom, pEnd, pTo);
}
