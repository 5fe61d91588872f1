// Text as XML: what each unit becomes, and the way to the next one that becomes something else.
#pragma once

#include <string_view>

/// True for a unit that XML takes. Halves of surrogate pairs are not: a character above 0xFFFF leaves as two question
/// marks.
[[nodiscard]] constexpr bool fIsValidXmlUnit(wchar_t c) noexcept {
    return c < 0x20 ? c == 9 || c == 10 || c == 13 : c < 0xD800 || (c >= 0xE000 && c < 0xFFFE);
}

/// The first unit that needs a look: a control character, a character of markup (with `fAttribute` the quotes too), a
/// refused unit.
[[nodiscard]] wchar_t const * pFindXmlSpecial(wchar_t const * pText, wchar_t const * pEnd, bool fAttribute) noexcept;

/// What a unit at which that stopped becomes. A CR is itself, or its reference; its line feed follows with the next
/// unit.
[[nodiscard]] std::wstring_view sGetXmlForm(wchar_t c, bool fAttribute, bool fEscapeTab) noexcept;
