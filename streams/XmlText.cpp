#include "streams/XmlText.h"

#include <array>
#include <bit>
#include <cstddef>

#include <emmintrin.h>

namespace {

struct TForm {
    wchar_t c;
    std::wstring_view sAttribute;
    std::wstring_view sElement;
};

constexpr std::wstring_view sRefused = L"?";
constexpr std::wstring_view sTabReference = L"&#9;";
constexpr std::array<TForm, 8> atForms{{
    {L'\t', L"\t", L"\t"},
    {L'\n', L"&#13;&#10;", L"\r\n"},
    {L'\r', L"&#13;&#10;", L"\r\n"},
    {L'"', L"&quot;", L"\""},
    {L'&', L"&amp;", L"&amp;"},
    {L'\'', L"&apos;", L"'"},
    {L'<', L"&lt;", L"&lt;"},
    {L'>', L"&gt;", L"&gt;"},
}};

/// The forms by their units, which are all below this.
constexpr std::size_t uFormsEnd = 0x40;
using TFormsByUnit = std::array<std::wstring_view, uFormsEnd>;

constexpr TFormsByUnit tSortByUnit(std::wstring_view TForm::*psForm) {
    TFormsByUnit asForms;
    asForms.fill(sRefused);
    for (TForm const & tForm : atForms)
        asForms[tForm.c] = tForm.*psForm;
    return asForms;
}

constexpr TFormsByUnit asAttributeForms = tSortByUnit(&TForm::sAttribute);
constexpr TFormsByUnit asElementForms = tSortByUnit(&TForm::sElement);

bool fIsSpecial(wchar_t c, bool fAttribute) noexcept {
    bool const fQuote = c == L'"' || c == L'\'';
    return c < 0x20 || c == L'&' || c == L'<' || c == L'>' || (fAttribute && fQuote) || !fIsValidXmlUnit(c);
}

/// The specials among eight units: two bits for each.
template <bool fAttribute>
unsigned int uGetSpecials(__m128i tUnits) noexcept {
    auto const tIs = [](__m128i t, int i) { return _mm_cmpeq_epi16(t, _mm_set1_epi16(static_cast<short>(i))); };
    auto const tWith = [tUnits](int i) { return _mm_or_si128(tUnits, _mm_set1_epi16(static_cast<short>(i))); };
    __m128i const tControl = tIs(_mm_subs_epu16(tUnits, _mm_set1_epi16(0x1F)), 0);
    __m128i const tAngle = tIs(tWith(L'<' ^ L'>'), L'<' | L'>');
    // The ampersand and the apostrophe differ in one bit too.
    __m128i const tAmpersand = fAttribute ? tIs(tWith(L'&' ^ L'\''), L'&' | L'\'') : tIs(tUnits, L'&');
    __m128i const tHalf = tIs(_mm_and_si128(tUnits, _mm_set1_epi16(static_cast<short>(0xF800))), 0xD800);
    __m128i const tLast = tIs(tWith(1), 0xFFFF);
    __m128i tAny = _mm_or_si128(_mm_or_si128(tControl, tAngle), _mm_or_si128(tAmpersand, _mm_or_si128(tHalf, tLast)));
    if constexpr (fAttribute) tAny = _mm_or_si128(tAny, tIs(tUnits, L'"'));
    return static_cast<unsigned int>(_mm_movemask_epi8(tAny));
}

template <bool fAttribute>
wchar_t const * pFind(wchar_t const * p, wchar_t const * pEnd) noexcept {
    for (; pEnd - p >= 8; p += 8) {
        unsigned int const uSpecials = uGetSpecials<fAttribute>(_mm_loadu_si128(reinterpret_cast<__m128i const *>(p)));
        if (uSpecials != 0) return p + std::countr_zero(uSpecials) / 2;
    }
    while (p != pEnd && !fIsSpecial(*p, fAttribute))
        ++p;
    return p;
}

} // namespace

wchar_t const * pFindXmlSpecial(wchar_t const * pText, wchar_t const * pEnd, bool fAttribute) noexcept {
    return fAttribute ? pFind<true>(pText, pEnd) : pFind<false>(pText, pEnd);
}

std::wstring_view sGetXmlForm(wchar_t c, bool fAttribute, bool fEscapeTab) noexcept {
    if (c >= uFormsEnd) return sRefused;
    if (c == L'\t' && fAttribute && fEscapeTab) return sTabReference;
    return fAttribute ? asAttributeForms[c] : asElementForms[c];
}
