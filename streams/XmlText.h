// Text as XML: what each unit becomes.
#pragma once

#include "ZkTools/TextStream.h"

#include <cstddef>

/// True for a unit that XML takes. Halves of surrogate pairs are not: a character above 0xFFFF leaves as two question
/// marks.
[[nodiscard]] constexpr bool fIsValidXmlUnit(wchar_t c) noexcept {
    return c < 0x20 ? c == 9 || c == 10 || c == 13 : c < 0xD800 || (c >= 0xE000 && c < 0xFFFE);
}

/// Room that has to be left in the target when a further unit is escaped. What is written behind the escaped text stays
/// within it.
constexpr std::size_t uXmlSlack = 32;

/// Escapes text as long as more room than the slack is left. Moves both pointers; `pText` comes to `pEnd` at last.
void EscapeXml(wchar_t const *& pText, wchar_t const * pEnd, wchar_t *& pTarget, wchar_t const * pTargetEnd,
               EXMLParams eParams) noexcept;
