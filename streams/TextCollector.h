// Gathers the text of one reader, so that the caller's string is touched once, at the end.
#pragma once

#include "streams/CopyBytes.h"

#include <cstddef>
#include <string>

/// Short texts stay on the stack; longer ones spill into a string of their own.
class TTextCollector {
public:
    TTextCollector() = default;
    TTextCollector(TTextCollector const &) = delete;
    TTextCollector & operator=(TTextCollector const &) = delete;

    /// Where the next units go, and how many fit: at least one.
    [[nodiscard]] wchar_t * pGetRoom() {
        if (uCount == uSize) Spill();
        return acUnits + uCount;
    }
    [[nodiscard]] unsigned long dwGetRoom() const noexcept { return static_cast<unsigned long>(uSize - uCount); }
    /// Takes in that many units, which stand in the room already.
    void Advance(unsigned long dwUnits) noexcept { uCount += dwUnits; }

    void Add(wchar_t c) {
        *pGetRoom() = c;
        ++uCount;
    }

    /// Drops every `c` at the end.
    void DropAtEnd(wchar_t c) {
        while (uCount != 0 && acUnits[uCount - 1] == c)
            --uCount;
        if (uCount == 0) sSpilled.erase(sSpilled.find_last_not_of(c) + 1);
    }

    void AppendTo(std::wstring & sTarget) const { sTarget.append(sSpilled).append(acUnits, uCount); }

    void MoveTo(std::wstring & sTarget) {
        if (sSpilled.empty()) {
            sTarget.resize(uCount);
            CopyTo(reinterpret_cast<unsigned char *>(sTarget.data()));
        } else {
            Spill();
            sTarget = std::move(sSpilled);
        }
    }

private:
    /// Most texts are of some tens of bytes: by pieces of 32, the last of which may overlap the one before.
    void CopyTo(unsigned char * pTo) const noexcept {
        struct TPiece {
            __m128i t1;
            __m128i t2;
        };
        constexpr std::size_t uPiece = sizeof(TPiece);
        auto const * const pFrom = reinterpret_cast<unsigned char const *>(acUnits);
        std::size_t const uBytes = uCount * sizeof(wchar_t);
        if (uBytes <= uPiece) return CopyBytes(pTo, pFrom, uBytes);
        for (std::size_t u = 0; u + uPiece < uBytes; u += uPiece)
            CopyBothEnds<TPiece>(pTo + u, pFrom + u, uPiece);
        CopyBothEnds<TPiece>(pTo + uBytes - uPiece, pFrom + uBytes - uPiece, uPiece);
    }

    void Spill() {
        sSpilled.append(acUnits, uCount);
        uCount = 0;
    }

    static constexpr std::size_t uSize = 1024;

    std::size_t uCount = 0;
    std::wstring sSpilled;
    wchar_t acUnits[uSize];
};
