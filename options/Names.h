// How names are compared: by length and by every unit, quickly.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

/// Whether `uCount` units are equal. The last four come first: the names in one place are often of one length and begin
/// alike ("Item17", "Item18").
inline bool fEqualUnits(wchar_t const * pFirst, wchar_t const * pSecond, std::size_t uCount) noexcept {
    constexpr std::size_t uStep = sizeof(std::uint64_t) / sizeof(wchar_t);
    auto const uLoad = [](wchar_t const * p) {
        std::uint64_t uUnits;
        std::memcpy(&uUnits, p, sizeof uUnits);
        return uUnits;
    };
    if (uCount < uStep) {
        while (uCount > 0)
            if (--uCount; pFirst[uCount] != pSecond[uCount]) return false;
        return true;
    }
    for (; uCount > uStep; uCount -= uStep)
        if (uLoad(pFirst + uCount - uStep) != uLoad(pSecond + uCount - uStep)) return false;
    return uLoad(pFirst) == uLoad(pSecond);
}

inline bool fEqualNames(std::wstring const & sFirst, std::wstring_view sSecond) noexcept {
    return sFirst.size() == sSecond.size() && fEqualUnits(sFirst.data(), sSecond.data(), sSecond.size());
}
