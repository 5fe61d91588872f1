// The text of a number: what TBigNumber and the numeric order of strings both read, of any length, in place.
#pragma once

#include <string_view>

/// A number as views into its text, whose lifetime they share.
struct TNumberText {
    bool fNegative = false;
    std::wstring_view sInteger; ///< digits before the point, without the zeros that a number without a sign begins with
    std::wstring_view sFraction; ///< digits behind the point
};

/// Reads white space, a number, and then the end or more white space, behind which nothing is looked at. On false the
/// fields hold what was read so far.
///
/// A number is a sign, digits, and a point with digits, each of which may lack, but not all of them: a lone sign and a
/// lone point are numbers.
[[nodiscard]] bool fReadNumber(std::wstring_view sText, TNumberText & tNumber) noexcept;

/// The order of numbers: negative, zero or positive. The longer digit string is the larger, of fractions too.
[[nodiscard]] int iCompareNumbers(TNumberText const & tFirst, TNumberText const & tSecond) noexcept;
