/// Decimal numbers too long for the machine's integers, in a fixed block: read, printed and compared, no arithmetic.
#pragma once

#include "ZkTools/Export.h"

#include <array>
#include <string>

/// A sign and up to 49 decimal digits on each side of the point. It holds no memory of its own: a copy is one block
/// move. A text that is no number makes a *bad* number, which nothing throws for.
///
/// Numbers with signs compare by sign, then by the count of digits before the point, then by those digits, and then in
/// the same way behind the point. So the longer fraction is the larger, whatever its digits: 1.9 is below 1.11, and 1.5
/// below 1.50. -0 is below 0.
class ZKTOOLS_API TBigNumber {
public:
    /// Reads a sign, digits, and a point with digits, each of which may lack, but not all. White space in front is
    /// passed over, and what follows the first white space behind is not looked at: "12 abc" is 12. Zeros that the text
    /// begins with are dropped but for the last before the point; zeros behind a sign stay, and -007 is below -7.
    ///
    /// All else is a bad number: other characters, nothing but white space, more than 49 digits on one side. A lone
    /// sign or point is a number without digits.
    explicit TBigNumber(std::wstring const & sText);
    /// The lowest `int` has no positive counterpart and prints with two minus signs.
    TBigNumber(int iValue) noexcept;

    /// Negative, zero or positive, and not normalised. -1 when either number is bad: a bad number does not equal
    /// itself, and is below every other one, as they are below it.
    [[nodiscard]] int iCompare(TBigNumber const & tOther) const noexcept;

    /// The number without its fraction; 0 for a bad one. What is beyond an `int` becomes the nearest one.
    [[nodiscard]] int iGetInteger() const noexcept;

    /// The number with all its digits, and a point only in front of some; empty for a bad one.
    [[nodiscard]] std::wstring sGetString() const;

    /// True when there are digits behind the point. A bad number keeps what was read in front of the bad character.
    [[nodiscard]] bool fHasFractionDigits() const noexcept;

protected:
    /// Reads the text into a cleared number. False when it is none; what was read of it stays.
    bool fMakeNumber(std::wstring const & sText) noexcept;

private:
    using TDigits = std::array<wchar_t, 50>; // zero-terminated

    bool fError = false;
    bool fNegative = false;
    TDigits acInteger{};
    TDigits acFraction{};
};

[[nodiscard]] ZKTOOLS_API bool operator==(TBigNumber const & tFirst, TBigNumber const & tSecond) noexcept;
[[nodiscard]] ZKTOOLS_API bool operator>(TBigNumber const & tFirst, TBigNumber const & tSecond) noexcept;
[[nodiscard]] ZKTOOLS_API bool operator<(TBigNumber const & tFirst, TBigNumber const & tSecond) noexcept;
[[nodiscard]] ZKTOOLS_API bool operator<=(TBigNumber const & tFirst, TBigNumber const & tSecond) noexcept;
[[nodiscard]] ZKTOOLS_API bool operator>=(TBigNumber const & tFirst, TBigNumber const & tSecond) noexcept;
