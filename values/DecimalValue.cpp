#include "ZkTools/DecimalValue.h"

#include "ZkTools/MessageIds.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

namespace {

/// A lexical form taken apart.
struct TParts {
    bool fNegative = false;
    std::wstring_view sIntegerDigits;
    std::wstring_view sFractionDigits;
};

/// Cuts the digits off the front of the text and gives them.
std::wstring_view sTakeDigits(std::wstring_view & sText) noexcept {
    std::size_t uCount = 0;
    while (uCount < sText.size() && sText[uCount] >= L'0' && sText[uCount] <= L'9')
        ++uCount;
    std::wstring_view const sDigits = sText.substr(0, uCount);
    sText.remove_prefix(uCount);
    return sDigits;
}

/// Cuts the character off the front of the text, where it stands there.
bool fTake(std::wstring_view & sText, wchar_t c) noexcept {
    if (!sText.starts_with(c)) return false;
    sText.remove_prefix(1);
    return true;
}

/// Takes the text apart; nothing when it has no decimal form.
std::optional<TParts> ptParse(std::wstring_view sText) noexcept {
    TParts tParts;
    tParts.fNegative = fTake(sText, L'-');
    if (!tParts.fNegative) fTake(sText, L'+');
    tParts.sIntegerDigits = sTakeDigits(sText);
    if (fTake(sText, L'.')) tParts.sFractionDigits = sTakeDigits(sText);
    if (!sText.empty()) return std::nullopt;

    if (tParts.sIntegerDigits.empty()) {
        if (tParts.sFractionDigits.empty()) return std::nullopt;
        // Deliberate: of a text that begins with the point only the last digit counts. Decisions that were stored about
        // such values rest on it.
        tParts.sFractionDigits.remove_prefix(tParts.sFractionDigits.size() - 1);
    }
    return tParts;
}

/// Without leading zeros; of nothing but zeros the last stays.
std::wstring_view sStripLeadingZeros(std::wstring_view sDigits) noexcept {
    if (sDigits.empty()) return sDigits;
    return sDigits.substr(std::min(sDigits.find_first_not_of(L'0'), sDigits.size() - 1));
}

/// Without any trailing zero.
std::wstring_view sStripTrailingZeros(std::wstring_view sDigits) noexcept {
    return sDigits.substr(0, sDigits.find_last_not_of(L'0') + 1);
}

/// The difference of two lengths, or the nearest that an int can tell.
int iCompareLengths(std::size_t uFirst, std::size_t uSecond) noexcept {
    constexpr std::int64_t iMost = std::numeric_limits<int>::max();
    auto const iDifference = static_cast<std::int64_t>(uFirst) - static_cast<std::int64_t>(uSecond);
    return static_cast<int>(std::clamp(iDifference, -iMost, iMost));
}

/// By length, then by the first difference.
int iCompareDigits(std::wstring const & sFirst, std::wstring const & sSecond) noexcept {
    if (sFirst.size() != sSecond.size()) return iCompareLengths(sFirst.size(), sSecond.size());
    auto const [pFirst, pSecond] = std::mismatch(sFirst.begin(), sFirst.end(), sSecond.begin());
    return pFirst == sFirst.end() ? 0 : *pFirst - *pSecond;
}

} // namespace

TDecimalValue::TXInvalid::TXInvalid(std::wstring const & sValue, std::wstring const & sTypeName)
    : TXZkTools(IDS_DECIMAL_INVALID, sValue.c_str(), sTypeName.c_str()) {}

TDecimalValue::TXInvalid::TXInvalid(TXInvalid const &) = default;
TDecimalValue::TXInvalid::TXInvalid(TXInvalid &&) = default;
TDecimalValue::TXInvalid::~TXInvalid() = default;
TDecimalValue::TXInvalid & TDecimalValue::TXInvalid::operator=(TXInvalid const &) = default;
TDecimalValue::TXInvalid & TDecimalValue::TXInvalid::operator=(TXInvalid &&) = default;

TDecimalValue::TDecimalValue(bool fNegative_, std::wstring_view sIntegerDigits_, std::wstring_view sFractionDigits_)
    : fNegative(fNegative_), sIntegerDigits(sIntegerDigits_), sFractionDigits(sFractionDigits_) {}

TDecimalValue TDecimalValue::make(bool fNegative, std::wstring const & sIntegerDigits,
                                  std::wstring const & sFractionDigits) {
    return {fNegative, sIntegerDigits, sFractionDigits};
}

TDecimalValue TDecimalValue::make_decimal(std::wstring const & sValue) {
    return make_decimal(sValue, L"decimal", nullptr, nullptr, nullptr);
}

TDecimalValue TDecimalValue::make_integer(std::wstring const & sValue) {
    return make_integer(sValue, L"integer", nullptr, nullptr);
}

TDecimalValue TDecimalValue::make_long(std::wstring const & sValue) {
    static TDecimalValue const tMin = make(true, L"9223372036854775808", L"");
    static TDecimalValue const tMax = make(false, L"9223372036854775807", L"");
    return make_integer(sValue, L"long", &tMin, &tMax);
}

TDecimalValue TDecimalValue::make_int(std::wstring const & sValue) {
    static TDecimalValue const tMin = make(true, L"2147483648", L"");
    static TDecimalValue const tMax = make(false, L"2147483647", L"");
    return make_integer(sValue, L"int", &tMin, &tMax);
}

TDecimalValue TDecimalValue::make_short(std::wstring const & sValue) {
    static TDecimalValue const tMin = make(true, L"32768", L"");
    static TDecimalValue const tMax = make(false, L"32767", L"");
    return make_integer(sValue, L"short", &tMin, &tMax);
}

TDecimalValue TDecimalValue::make_byte(std::wstring const & sValue) {
    static TDecimalValue const tMin = make(true, L"128", L"");
    static TDecimalValue const tMax = make(false, L"127", L"");
    return make_integer(sValue, L"byte", &tMin, &tMax);
}

TDecimalValue TDecimalValue::make_nonNegativeInteger(std::wstring const & sValue) {
    static TDecimalValue const tMin = make(false, L"0", L"");
    return make_integer(sValue, L"nonNegativeInteger", &tMin, nullptr);
}

TDecimalValue TDecimalValue::make_positiveInteger(std::wstring const & sValue) {
    static TDecimalValue const tMin = make(false, L"1", L"");
    // Deliberate: the name lacks its "e". It has always stood so in the texts that users search for.
    return make_integer(sValue, L"positivInteger", &tMin, nullptr);
}

TDecimalValue TDecimalValue::make_unsignedLong(std::wstring const & sValue) {
    static TDecimalValue const tMin = make(false, L"0", L"");
    static TDecimalValue const tMax = make(false, L"18446744073709551615", L"");
    return make_integer(sValue, L"unsignedLong", &tMin, &tMax);
}

TDecimalValue TDecimalValue::make_unsignedInt(std::wstring const & sValue) {
    static TDecimalValue const tMin = make(false, L"0", L"");
    static TDecimalValue const tMax = make(false, L"4294967295", L"");
    return make_integer(sValue, L"unsignedInt", &tMin, &tMax);
}

TDecimalValue TDecimalValue::make_unsignedShort(std::wstring const & sValue) {
    static TDecimalValue const tMin = make(false, L"0", L"");
    static TDecimalValue const tMax = make(false, L"65535", L"");
    return make_integer(sValue, L"unsignedShort", &tMin, &tMax);
}

TDecimalValue TDecimalValue::make_unsignedByte(std::wstring const & sValue) {
    static TDecimalValue const tMin = make(false, L"0", L"");
    static TDecimalValue const tMax = make(false, L"255", L"");
    return make_integer(sValue, L"unsignedByte", &tMin, &tMax);
}

TDecimalValue TDecimalValue::make_nonPositiveInteger(std::wstring const & sValue) {
    static TDecimalValue const tMax = make(false, L"0", L"");
    return make_integer(sValue, L"nonPositiveInteger", nullptr, &tMax);
}

TDecimalValue TDecimalValue::make_negativeInteger(std::wstring const & sValue) {
    static TDecimalValue const tMax = make(true, L"1", L"");
    return make_integer(sValue, L"negativeInteger", nullptr, &tMax);
}

TDecimalValue TDecimalValue::make_decimal(std::wstring const & sValue, wchar_t const * pzTypeName,
                                          unsigned int const * pMaxFractionDigits, TDecimalValue const * pMin,
                                          TDecimalValue const * pMax) {
    std::optional<TParts> const ptParts = ptParse(sValue);
    if (!ptParts) throw TXInvalid(sValue, pzTypeName);

    TDecimalValue tResult(ptParts->fNegative, sStripLeadingZeros(ptParts->sIntegerDigits),
                          sStripTrailingZeros(ptParts->sFractionDigits));
    bool const fTooLong = pMaxFractionDigits != nullptr && tResult.sFractionDigits.size() > *pMaxFractionDigits;
    bool const fTooSmall = pMin != nullptr && tResult < *pMin;
    bool const fTooGreat = pMax != nullptr && tResult > *pMax;
    if (fTooLong || fTooSmall || fTooGreat) throw TXInvalid(sValue, pzTypeName);
    return tResult;
}

TDecimalValue TDecimalValue::make_integer(std::wstring const & sValue, wchar_t const * pzTypeName,
                                          TDecimalValue const * pMin, TDecimalValue const * pMax) {
    constexpr unsigned int uNoFraction = 0;
    return make_decimal(sValue, pzTypeName, &uNoFraction, pMin, pMax);
}

int TDecimalValue::iCompare(TDecimalValue const & tOther) const noexcept {
    if (fNegative != tOther.fNegative) return int{tOther.fNegative} - int{fNegative};
    int iSize = iCompareDigits(sIntegerDigits, tOther.sIntegerDigits);
    // Deliberate: a longer fraction is the greater in size, whatever its digits are; lists are kept in this order.
    if (iSize == 0) iSize = iCompareDigits(sFractionDigits, tOther.sFractionDigits);
    return fNegative ? -iSize : iSize;
}

int TDecimalValue::iGetTotalDigits() const noexcept {
    return static_cast<int>(sIntegerDigits.size() + sFractionDigits.size());
}

int TDecimalValue::iGetFractionDigits() const noexcept {
    return static_cast<int>(sFractionDigits.size());
}
