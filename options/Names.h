// How names are compared: by length and by every unit, quickly.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

/// Whether `uCount` units are equal. First and last ones come first: the names in one place often begin alike
/// ("Item17", "Item18"), or end so.
inline bool fEqualUnits(wchar_t const * pFirst, wchar_t const * pSecond, std::size_t uCount) noexcept {
    constexpr std::size_t uStep = sizeof(std::uint64_t) / sizeof(wchar_t);
    auto const uDifference = [&](std::size_t uAt) {
        std::uint64_t uOfFirst;
        std::uint64_t uOfSecond;
        std::memcpy(&uOfFirst, pFirst + uAt, sizeof uOfFirst);
        std::memcpy(&uOfSecond, pSecond + uAt, sizeof uOfSecond);
        return uOfFirst ^ uOfSecond;
    };
    if (uCount < uStep) {
        while (uCount > 0)
            if (--uCount; pFirst[uCount] != pSecond[uCount]) return false;
        return true;
    }
    if ((uDifference(0) | uDifference(uCount - uStep)) != 0) return false;
    for (std::size_t uAt = uStep; uAt + uStep < uCount; uAt += uStep)
        if (uDifference(uAt) != 0) return false;
    return true;
}

inline bool fEqualNames(std::wstring const & sFirst, std::wstring_view sSecond) noexcept {
    return sFirst.size() == sSecond.size() && fEqualUnits(sFirst.data(), sSecond.data(), sSecond.size());
}
