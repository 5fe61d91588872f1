// Copying numbers and texts between blocks and callers.
#pragma once

#include <cstddef>
#include <cstring>

#include <emmintrin.h>

/// Copies a piece of the size of `T` to each end; together they are the whole when that is between one and two of them.
template <typename T>
void CopyBothEnds(unsigned char * pTo, unsigned char const * pFrom, std::size_t uCount) noexcept {
    T tFirst;
    T tLast;
    std::memcpy(&tFirst, pFrom, sizeof(T));
    std::memcpy(&tLast, pFrom + uCount - sizeof(T), sizeof(T));
    std::memcpy(pTo, &tFirst, sizeof(T));
    std::memcpy(pTo + uCount - sizeof(T), &tLast, sizeof(T));
}

/// `memcpy`, with the few bytes of a number or a short text copied in place: the call costs more than they do.
inline void CopyBytes(void * pTarget, void const * pSource, std::size_t uCount) noexcept {
    constexpr std::size_t uShort = 512;
    auto * const pTo = static_cast<unsigned char *>(pTarget);
    auto const * const pFrom = static_cast<unsigned char const *>(pSource);
    if (uCount > uShort) {
        std::memcpy(pTo, pFrom, uCount);
    } else if (uCount >= 16) {
        __m128i const tLast = _mm_loadu_si128(reinterpret_cast<__m128i const *>(pFrom + uCount - 16));
        for (std::size_t u = 0; u + 16 < uCount; u += 16) {
            _mm_storeu_si128(reinterpret_cast<__m128i *>(pTo + u),
                             _mm_loadu_si128(reinterpret_cast<__m128i const *>(pFrom + u)));
        }
        _mm_storeu_si128(reinterpret_cast<__m128i *>(pTo + uCount - 16), tLast);
    } else if (uCount >= 8) {
        CopyBothEnds<unsigned long long>(pTo, pFrom, uCount);
    } else if (uCount >= 4) {
        CopyBothEnds<unsigned int>(pTo, pFrom, uCount);
    } else if (uCount >= 2) {
        CopyBothEnds<unsigned short>(pTo, pFrom, uCount);
    } else if (uCount == 1) {
        *pTo = *pFrom;
    }
}
