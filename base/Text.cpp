#include "ZkBase/Text.h"

#include "ZkBase/Windows.h"

#include <algorithm>
#include <array>

namespace {

struct TRange {
    wchar_t cFirst;
    wchar_t cLast;
};

/// What may begin an XML name, without the colon and without what lies beyond one unit.
constexpr std::array<TRange, 14> atNameStart{{
    {L'A', L'Z'},
    {L'_', L'_'},
    {L'a', L'z'},
    {0x00C0, 0x00D6},
    {0x00D8, 0x00F6},
    {0x00F8, 0x02FF},
    {0x0370, 0x037D},
    {0x037F, 0x1FFF},
    {0x200C, 0x200D},
    {0x2070, 0x218F},
    {0x2C00, 0x2FEF},
    {0x3001, 0xD7FF},
    {0xF900, 0xFDCF},
    {0xFDF0, 0xFFFD},
}};

/// What may stand behind the first character besides.
constexpr std::array<TRange, 5> atNameFurther{{
    {L'-', L'.'},
    {L'0', L'9'},
    {0x00B7, 0x00B7},
    {0x0300, 0x036F},
    {0x203F, 0x2040},
}};

bool fInRanges(auto const & atRanges, wchar_t c) noexcept {
    return std::ranges::any_of(atRanges,
                               [c](TRange const & tRange) { return c >= tRange.cFirst && c <= tRange.cLast; });
}

/// The part of the text that is left when `fStrip` holds of what goes.
template <typename TTest>
std::wstring_view sStripIf(std::wstring_view sText, string_functions::EStrip eStrip, TTest fStrip) {
    if (eStrip == string_functions::esEnd || eStrip == string_functions::esBoth)
        while (!sText.empty() && fStrip(sText.back()))
            sText.remove_suffix(1);
    if (eStrip == string_functions::esStart || eStrip == string_functions::esBoth)
        while (!sText.empty() && fStrip(sText.front()))
            sText.remove_prefix(1);
    return sText;
}

} // namespace

namespace string_functions {

std::wstring sStrip(std::wstring_view sText, EStrip eStrip, std::wstring_view sChars) {
    return std::wstring(
        sStripIf(sText, eStrip, [sChars](wchar_t c) { return sChars.find(c) != std::wstring_view::npos; }));
}

void strip_whitespace(std::wstring & sText, EStrip eStrip) {
    std::wstring_view const sLeft = sStripIf(sText, eStrip, fWIsSpace);
    sText.erase(static_cast<std::size_t>(sLeft.data() - sText.data()) + sLeft.size());
    sText.erase(0, sText.size() - sLeft.size());
}

bool fIsNCNameFirstChar(wchar_t c) {
    return fInRanges(atNameStart, c);
}

bool fIsNCNameChar(wchar_t c) {
    return fInRanges(atNameStart, c) || fInRanges(atNameFurther, c);
}

} // namespace string_functions

bool fWIsSpace(wchar_t c) {
    if (c < 0x80) return c == L' ' || (c >= L'\t' && c <= L'\r');
    WORD wType = 0;
    return GetStringTypeW(CT_CTYPE1, &c, 1, &wType) && (wType & C1_SPACE) != 0;
}

wchar_t wcWToUpper(wchar_t c) {
    if (c < 0x80) return c >= L'a' && c <= L'z' ? static_cast<wchar_t>(c - L'a' + L'A') : c;
    wchar_t cUpper = c;
    LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_UPPERCASE, &c, 1, &cUpper, 1, nullptr, nullptr, 0);
    return cUpper;
}

int iWCompareIString(wchar_t const * pzFirst, wchar_t const * pzSecond) {
    return CompareStringOrdinal(pzFirst, -1, pzSecond, -1, TRUE) - CSTR_EQUAL;
}
