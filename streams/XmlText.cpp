#include "streams/XmlText.h"

#include <algorithm>
#include <array>
#include <bit>
#include <string_view>

#include <emmintrin.h>

namespace {

struct TFormRow {
    wchar_t c;
    std::wstring_view sAttribute;
    std::wstring_view sElement;
};

/// A CR is a line end as an LF is; of a pair the LF is passed over.
constexpr std::array<TFormRow, 8> atFormRows{{
    {L'\t', L"\t", L"\t"},
    {L'\n', L"&#13;&#10;", L"\r\n"},
    {L'\r', L"&#13;&#10;", L"\r\n"},
    {L'"', L"&quot;", L"\""},
    {L'&', L"&amp;", L"&amp;"},
    {L'\'', L"&apos;", L"'"},
    {L'<', L"&lt;", L"&lt;"},
    {L'>', L"&gt;", L"&gt;"},
}};
constexpr std::wstring_view sTabReference = L"&#9;";
constexpr std::wstring_view sRefused = L"?";

/// What a unit becomes, so long that it is copied in one go.
struct TForm {
    std::array<wchar_t, 16> acText;
    std::size_t uLength;
};
static_assert(2 * std::tuple_size_v<decltype(TForm::acText)> <= uXmlSlack);

/// By unit: all that are not refused lie below this.
constexpr std::size_t uFormsEnd = 0x40;
using TForms = std::array<TForm, uFormsEnd>;

constexpr TForm tMakeForm(std::wstring_view sText) {
    TForm tForm{};
    std::ranges::copy(sText, tForm.acText.begin());
    tForm.uLength = sText.size();
    return tForm;
}

constexpr TForms tMakeForms(std::wstring_view TFormRow::*psForm, std::wstring_view sTab) {
    TForms tForms;
    tForms.fill(tMakeForm(sRefused));
    for (TFormRow const & tRow : atFormRows)
        tForms[tRow.c] = tMakeForm(tRow.*psForm);
    tForms[L'\t'] = tMakeForm(sTab);
    return tForms;
}

constexpr TForms tElementForms = tMakeForms(&TFormRow::sElement, L"\t");
constexpr TForms tAttributeForms = tMakeForms(&TFormRow::sAttribute, L"\t");
constexpr TForms tAttributeFormsWithTab = tMakeForms(&TFormRow::sAttribute, sTabReference);
constexpr TForm tRefusedForm = tMakeForm(sRefused);

constexpr int iGroup = 8; // units at once
static_assert(iGroup < uXmlSlack);

__m128i tLoad(wchar_t const * p) noexcept {
    return _mm_loadu_si128(reinterpret_cast<__m128i const *>(p));
}

void Store(wchar_t * p, __m128i t) noexcept {
    _mm_storeu_si128(reinterpret_cast<__m128i *>(p), t);
}

/// The units among eight that do not simply stay: control characters, markup (with `fAttribute` the quotes too),
/// refused ones. Two bits for each.
template <bool fAttribute>
unsigned int uGetSpecials(__m128i tUnits) noexcept {
    auto const tIs = [](__m128i t, int i) { return _mm_cmpeq_epi16(t, _mm_set1_epi16(static_cast<short>(i))); };
    auto const tWith = [tUnits](int i) { return _mm_or_si128(tUnits, _mm_set1_epi16(static_cast<short>(i))); };
    __m128i const tControl = tIs(_mm_subs_epu16(tUnits, _mm_set1_epi16(0x1F)), 0);
    // Each of these pairs differs in one bit.
    __m128i const tAngle = tIs(tWith(L'<' ^ L'>'), L'<' | L'>');
    __m128i const tAmpersand = fAttribute ? tIs(tWith(L'&' ^ L'\''), L'&' | L'\'') : tIs(tUnits, L'&');
    __m128i const tLast = tIs(tWith(1), 0xFFFF);
    __m128i const tHalf = tIs(_mm_and_si128(tUnits, _mm_set1_epi16(static_cast<short>(0xF800))), 0xD800);
    __m128i tAny = _mm_or_si128(_mm_or_si128(tControl, tAngle), _mm_or_si128(tAmpersand, _mm_or_si128(tLast, tHalf)));
    if constexpr (fAttribute) tAny = _mm_or_si128(tAny, tIs(tUnits, L'"'));
    return static_cast<unsigned int>(_mm_movemask_epi8(tAny));
}

template <bool fAttribute>
bool fIsSpecial(wchar_t c) noexcept {
    bool const fQuote = fAttribute && (c == L'"' || c == L'\'');
    return fQuote || c == L'\t' || c == L'\n' || c == L'\r' || c == L'&' || c == L'<' || c == L'>' ||
           !fIsValidXmlUnit(c);
}

template <bool fAttribute>
void Escape(wchar_t const *& pText, wchar_t const * pEnd, wchar_t *& pTarget, wchar_t const * pTargetEnd,
            TForms const & tForms) noexcept {
    wchar_t const * p = pText;
    wchar_t * pOut = pTarget;
    while (p != pEnd && pTargetEnd - pOut > static_cast<std::ptrdiff_t>(uXmlSlack)) {
        if (pEnd - p >= iGroup) {
            __m128i const tUnits = tLoad(p);
            unsigned int const uSpecials = uGetSpecials<fAttribute>(tUnits);
            Store(pOut, tUnits);
            int const iPlain = uSpecials == 0 ? iGroup : std::countr_zero(uSpecials) / 2;
            p += iPlain;
            pOut += iPlain;
            if (uSpecials == 0) continue;
        } else if (!fIsSpecial<fAttribute>(*p)) {
            *pOut++ = *p++;
            continue;
        }
        wchar_t const c = *p++;
        TForm const & tForm = c < uFormsEnd ? tForms[c] : tRefusedForm;
        Store(pOut, tLoad(tForm.acText.data()));
        Store(pOut + iGroup, tLoad(tForm.acText.data() + iGroup));
        pOut += tForm.uLength;
        if (c == L'\r' && p != pEnd && *p == L'\n') ++p;
    }
    pText = p;
    pTarget = pOut;
}

} // namespace

void EscapeXml(wchar_t const *& pText, wchar_t const * pEnd, wchar_t *& pTarget, wchar_t const * pTargetEnd,
               EXMLParams eParams) noexcept {
    if ((eParams & xmlEscapeAttribute) == 0) {
        Escape<false>(pText, pEnd, pTarget, pTargetEnd, tElementForms);
    } else {
        bool const fEscapeTab = (eParams & xmlEscapeTab) != 0;
        Escape<true>(pText, pEnd, pTarget, pTargetEnd, fEscapeTab ? tAttributeFormsWithTab : tAttributeForms);
    }
}
