#include "values/NumberText.h"

#include <algorithm>
#include <cwctype>

namespace {

bool fIsDigit(wchar_t c) noexcept {
    return c >= L'0' && c <= L'9';
}

/// Takes the digits that the text begins with off it.
std::wstring_view sTakeDigits(std::wstring_view & sText) noexcept {
    auto const itEnd = std::ranges::find_if_not(sText, fIsDigit);
    std::wstring_view const sDigits(sText.begin(), itEnd);
    sText.remove_prefix(sDigits.size());
    return sDigits;
}

int iCompareDigits(std::wstring_view sFirst, std::wstring_view sSecond) noexcept {
    if (sFirst.size() != sSecond.size()) return static_cast<int>(sFirst.size()) - static_cast<int>(sSecond.size());
    auto const [itFirst, itSecond] = std::ranges::mismatch(sFirst, sSecond);
    return itFirst == sFirst.end() ? 0 : *itFirst - *itSecond;
}

} // namespace

bool fReadNumber(std::wstring_view sText, TNumberText & tNumber) noexcept {
    tNumber = {};
    while (!sText.empty() && std::iswspace(sText.front()))
        sText.remove_prefix(1);
    // Deliberate: zeros go before the sign is looked at, so that those behind a sign stay and -007 is not -7.
    while (sText.size() > 1 && sText[0] == L'0' && fIsDigit(sText[1]))
        sText.remove_prefix(1);
    if (sText.empty()) return false;

    if (sText.front() == L'-' || sText.front() == L'+') {
        tNumber.fNegative = sText.front() == L'-';
        sText.remove_prefix(1);
    }
    tNumber.sInteger = sTakeDigits(sText);
    if (sText.starts_with(L'.')) {
        sText.remove_prefix(1);
        tNumber.sFraction = sTakeDigits(sText);
    }
    // The text began with something else than white space, so that white space here means that something was taken.
    if (sText.empty() || std::iswspace(sText.front())) return true;
    tNumber.fNegative = tNumber.fNegative || sText.front() == L'-'; // a minus counts where it may not stand, too
    return false;
}

int iCompareNumbers(TNumberText const & tFirst, TNumberText const & tSecond) noexcept {
    if (tFirst.fNegative != tSecond.fNegative) return tFirst.fNegative ? -1 : 1;
    int iResult = iCompareDigits(tFirst.sInteger, tSecond.sInteger);
    // Deliberate: the longer fraction is the larger one, whatever its digits. 1.9 comes before 1.11, as the tables of
    // the tool that are sorted so expect.
    if (iResult == 0) iResult = iCompareDigits(tFirst.sFraction, tSecond.sFraction);
    return tFirst.fNegative ? -iResult : iResult;
}
