// What every character of one or two bytes of a code page decodes to, asked of the platform once.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>

/// The decoding table of one code page, as the platform's CharNextExA and MultiByteToWideChar give it for a character
/// that stands alone. A character that they refuse, that gives more than one unit, or that gives 0xFFFF, is not in it.
class TCodePageTable {
public:
    /// The table of a code page, made at first use and kept as long as the library is loaded. Safe on any thread.
    [[nodiscard]] static TCodePageTable const & tGet(unsigned short uCodePage);

    explicit TCodePageTable(unsigned short uCodePage);
    TCodePageTable(TCodePageTable const &) = delete;
    TCodePageTable & operator=(TCodePageTable const &) = delete;
    ~TCodePageTable();

    /// True when the bytes 1 to 127 are characters of their own, the units of the same values.
    [[nodiscard]] bool fIsAscii() const noexcept { return fAscii; }

    /// True when no character takes two bytes, and no byte above 127 gives ASCII.
    [[nodiscard]] bool fIsByteByByte() const noexcept { return fByteByByte; }

    /// The unit of a byte that stands for itself; 0 when it is none.
    [[nodiscard]] wchar_t cGetSingle(unsigned char u) const noexcept { return acSingle[u]; }

    /// The unit of the character at `p`, of which `uLeft` bytes are left; 0 when it is not in the table. `uLength` is
    /// set to 2 for a character of two bytes and left alone otherwise.
    [[nodiscard]] wchar_t cDecode(unsigned char const * p, std::size_t uLeft, unsigned int & uLength) const {
        wchar_t const c = acSingle[*p];
        return c != 0 ? c : cDecodePair(p, uLeft, uLength);
    }

private:
    friend class TCodePageTables;
    using TRow = std::array<wchar_t, 256>; // by a byte

    [[nodiscard]] wchar_t cDecodePair(unsigned char const * p, std::size_t uLeft, unsigned int & uLength) const {
        if (!afLead[*p] || uLeft < 2) return 0;
        TRow const * pRow = apRows[*p].load(std::memory_order_acquire);
        if (pRow == nullptr) pRow = pMakeRow(*p);
        uLength = 2;
        return (*pRow)[p[1]];
    }
    TRow const * pMakeRow(unsigned char uLead) const;

    unsigned short uCodePage;
    bool fAscii = true;
    bool fByteByByte = true;
    TRow acSingle{};
    std::array<bool, 256> afLead{};
    mutable std::array<std::atomic<TRow const *>, 256> apRows{}; // the pairs, by their first byte, made at first use
    TCodePageTable const * pNext = nullptr;
};
