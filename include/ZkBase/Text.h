/// Stripping, character classes and comparison without regard to case.
#pragma once

#include "ZkBase/Export.h"

#include <string>
#include <string_view>

namespace string_functions {

/// Where to strip.
enum EStrip : int {
    esStart = 0, ///< at the start
    esEnd = 1,   ///< at the end
    esBoth = 2,  ///< at both ends
};

/// The text without the characters of `sChars` at the place that `eStrip` tells.
[[nodiscard]] ZKBASE_API std::wstring sStrip(std::wstring_view sText, EStrip eStrip, std::wstring_view sChars);

/// Strips whitespace (`fWIsSpace`) in place.
ZKBASE_API void strip_whitespace(std::wstring & sText, EStrip eStrip);

/// True for a unit that may begin an NCName of Namespaces in XML 1.0 (over XML 1.0, fifth edition): no colon. A half of
/// a surrogate pair never may, so that names with characters above U+FFFF are refused.
[[nodiscard]] ZKBASE_API bool fIsNCNameFirstChar(wchar_t c);

/// True for a unit that may stand in an NCName behind its first.
[[nodiscard]] ZKBASE_API bool fIsNCNameChar(wchar_t c);

} // namespace string_functions

/// True for whitespace of any script, as the platform classifies it, whatever the C locale.
[[nodiscard]] ZKBASE_API bool fWIsSpace(wchar_t c);

/// Upper case of one unit by the platform's tables, in every script, whatever the C locale. What has no upper case of
/// one unit comes back as it is.
[[nodiscard]] ZKBASE_API wchar_t wcWToUpper(wchar_t c);

/// Compares by units without regard to case, in every script, whatever the C locale: negative, zero or positive.
[[nodiscard]] ZKBASE_API int iWCompareIString(wchar_t const * pzFirst, wchar_t const * pzSecond);
