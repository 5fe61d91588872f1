/// Numbers of the decimal family of XML Schema, as text: checked against a type, canonical, of any length and exact.
#pragma once

#include "ZkTools/Exceptions.h"
#include "ZkTools/Export.h"

#include <string>
#include <string_view>

/// One decimal number: a sign, the digits before the point and the digits behind it. There is no arithmetic.
///
/// **Lexical form.** Each `make_...` but `make` takes an optional sign, then digits with an optional point and further
/// digits behind it, or a point and digits; a digit is one of 0 to 9. Nothing else may stand in the text, no blank
/// either. What is kept is the canonical form: no leading zero unless the digits before the point are a single 0, no
/// trailing zero behind the point. So "1", "+01." and "1.00" are the same value.
///
/// Two forms surprise:
/// - The digits before the point are empty, not 0, in a text that begins with the point, and of the digits behind it
///   only the last is kept: ".125" is the value of ".5", and neither is that of "0.5".
/// - A minus stays on a zero: "-0" is below "0". It is refused where the least value is 0.
///
/// **Types.** An integer type takes a point with nothing but zeros behind it: "5.0" is the integer 5. Each type has its
/// range.
///
/// **Failures.** A text that does not fit its type is a `TXInvalid`; it does not tell whether form, fraction or range
/// is wrong.
class ZKTOOLS_API TDecimalValue {
public:
    /// A text that is no value of its type: message 4534 with the text, whole and as it was given, and the name of the
    /// type.
    class ZKTOOLS_API TXInvalid : public TXZkTools {
    public:
        TXInvalid(std::wstring const & sValue, std::wstring const & sTypeName);
        TXInvalid(TXInvalid const & tOther);
        TXInvalid(TXInvalid && tOther);
        ~TXInvalid() override;
        TXInvalid & operator=(TXInvalid const & tOther);
        TXInvalid & operator=(TXInvalid && tOther);
    };

    /// Takes the three parts as they are: nothing is checked, nothing made canonical.
    [[nodiscard]] static TDecimalValue make(bool fNegative, std::wstring const & sIntegerDigits,
                                            std::wstring const & sFractionDigits);

    /// Any decimal number.
    [[nodiscard]] static TDecimalValue make_decimal(std::wstring const & sValue);
    /// Any integer.
    [[nodiscard]] static TDecimalValue make_integer(std::wstring const & sValue);

    /// -9223372036854775808 to 9223372036854775807.
    [[nodiscard]] static TDecimalValue make_long(std::wstring const & sValue);
    /// -2147483648 to 2147483647.
    [[nodiscard]] static TDecimalValue make_int(std::wstring const & sValue);
    /// -32768 to 32767.
    [[nodiscard]] static TDecimalValue make_short(std::wstring const & sValue);
    /// -128 to 127.
    [[nodiscard]] static TDecimalValue make_byte(std::wstring const & sValue);
    /// From 0; not -0.
    [[nodiscard]] static TDecimalValue make_nonNegativeInteger(std::wstring const & sValue);
    /// From 1. A failure calls the type "positivInteger".
    [[nodiscard]] static TDecimalValue make_positiveInteger(std::wstring const & sValue);
    /// 0 to 18446744073709551615; not -0.
    [[nodiscard]] static TDecimalValue make_unsignedLong(std::wstring const & sValue);
    /// 0 to 4294967295; not -0.
    [[nodiscard]] static TDecimalValue make_unsignedInt(std::wstring const & sValue);
    /// 0 to 65535; not -0.
    [[nodiscard]] static TDecimalValue make_unsignedShort(std::wstring const & sValue);
    /// 0 to 255; not -0.
    [[nodiscard]] static TDecimalValue make_unsignedByte(std::wstring const & sValue);
    /// Up to 0, -0 included.
    [[nodiscard]] static TDecimalValue make_nonPositiveInteger(std::wstring const & sValue);
    /// Up to -1.
    [[nodiscard]] static TDecimalValue make_negativeInteger(std::wstring const & sValue);

    /// Compares by sign, then by the number of digits before the point, then by these, then by the *number* of digits
    /// behind the point, and only then by those. The order of canonical integers is that of their values, but that -0
    /// is below 0. Of two numbers with the same digits before the point the one with the longer fraction is the greater
    /// in size: 1.9 is below 1.11.
    /// \returns negative, zero or positive, of any size
    [[nodiscard]] int iCompare(TDecimalValue const & tOther) const noexcept;

    [[nodiscard]] bool operator==(TDecimalValue const & tOther) const noexcept { return iCompare(tOther) == 0; }
    [[nodiscard]] bool operator!=(TDecimalValue const & tOther) const noexcept { return iCompare(tOther) != 0; }
    [[nodiscard]] bool operator<(TDecimalValue const & tOther) const noexcept { return iCompare(tOther) < 0; }
    [[nodiscard]] bool operator<=(TDecimalValue const & tOther) const noexcept { return iCompare(tOther) <= 0; }
    [[nodiscard]] bool operator>(TDecimalValue const & tOther) const noexcept { return iCompare(tOther) > 0; }
    [[nodiscard]] bool operator>=(TDecimalValue const & tOther) const noexcept { return iCompare(tOther) >= 0; }

    /// How many digits the canonical form has on both sides of the point.
    [[nodiscard]] int iGetTotalDigits() const noexcept;
    /// How many digits the canonical form has behind the point.
    [[nodiscard]] int iGetFractionDigits() const noexcept;

private:
    TDecimalValue(bool fNegative, std::wstring_view sIntegerDigits, std::wstring_view sFractionDigits);

    /// Checks and makes a value of the type; each of the three limits may be null.
    static TDecimalValue make_decimal(std::wstring const & sValue, wchar_t const * pzTypeName,
                                      unsigned int const * pMaxFractionDigits, TDecimalValue const * pMin,
                                      TDecimalValue const * pMax);
    /// The same with no digit behind the point.
    static TDecimalValue make_integer(std::wstring const & sValue, wchar_t const * pzTypeName,
                                      TDecimalValue const * pMin, TDecimalValue const * pMax);

    bool fNegative;
    std::wstring sIntegerDigits;
    std::wstring sFractionDigits;
};
