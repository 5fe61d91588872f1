#include "ZkTools/BigNumber.h"

#include "values/NumberText.h"

#include <algorithm>
#include <cwchar>
#include <string_view>
#include <type_traits>

static_assert(std::is_trivially_copyable_v<TBigNumber> && sizeof(TBigNumber) == 2 + 2 * 50 * sizeof(wchar_t));

namespace {

/// Copies as many digits as there is room for, and leaves the terminator. False when some were left over.
bool fStoreDigits(std::wstring_view sDigits, auto & acTarget) noexcept {
    std::size_t const uRoom = acTarget.size() - 1;
    std::ranges::copy(sDigits.substr(0, uRoom), acTarget.begin());
    return sDigits.size() <= uRoom;
}

} // namespace

TBigNumber::TBigNumber(std::wstring const & sText) {
    fError = !fMakeNumber(sText);
}

TBigNumber::TBigNumber(int iValue) noexcept : fNegative(iValue < 0) {
    // Deliberate: the lowest value stays negative when it is negated, and its own minus sign goes among the digits.
    unsigned int const uMagnitude =
        fNegative ? 0u - static_cast<unsigned int>(iValue) : static_cast<unsigned int>(iValue);
    _itow(static_cast<int>(uMagnitude), acInteger.data(), 10);
}

bool TBigNumber::fMakeNumber(std::wstring const & sText) noexcept {
    TNumberText tNumber;
    bool const fIsNumber = fReadNumber(sText, tNumber);
    fNegative = tNumber.fNegative;
    bool const fIntegerFits = fStoreDigits(tNumber.sInteger, acInteger);
    bool const fFractionFits = fStoreDigits(tNumber.sFraction, acFraction);
    return fIsNumber && fIntegerFits && fFractionFits;
}

int TBigNumber::iCompare(TBigNumber const & tOther) const noexcept {
    // Deliberate: so that no bad number passes for equal to anything.
    if (fError || tOther.fError) return -1;
    return iCompareNumbers({fNegative, acInteger.data(), acFraction.data()},
                           {tOther.fNegative, tOther.acInteger.data(), tOther.acFraction.data()});
}

int TBigNumber::iGetInteger() const noexcept {
    if (fError) return 0;
    auto const uValue = static_cast<unsigned int>(_wtoi(acInteger.data()));
    return static_cast<int>(fNegative ? 0u - uValue : uValue);
}

std::wstring TBigNumber::sGetString() const {
    std::wstring sResult;
    if (fError) return sResult;
    if (fNegative) sResult += L'-';
    sResult += acInteger.data();
    if (fHasFractionDigits()) sResult.append(1, L'.').append(acFraction.data());
    return sResult;
}

bool TBigNumber::fHasFractionDigits() const noexcept {
    return acFraction.front() != L'\0';
}

bool operator==(TBigNumber const & tFirst, TBigNumber const & tSecond) noexcept {
    return tFirst.iCompare(tSecond) == 0;
}

bool operator>(TBigNumber const & tFirst, TBigNumber const & tSecond) noexcept {
    return tFirst.iCompare(tSecond) > 0;
}

bool operator<(TBigNumber const & tFirst, TBigNumber const & tSecond) noexcept {
    return tFirst.iCompare(tSecond) < 0;
}

bool operator<=(TBigNumber const & tFirst, TBigNumber const & tSecond) noexcept {
    return tFirst.iCompare(tSecond) <= 0;
}

bool operator>=(TBigNumber const & tFirst, TBigNumber const & tSecond) noexcept {
    return tFirst.iCompare(tSecond) >= 0;
}
