// The fixed texts of dates: those that stand in files.
#include "ZkTools/DateTime.h"

#include "ZkTools/Exceptions.h"
#include "values/Calendar.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <cwchar>

namespace {

using TView = std::wstring_view;

[[noreturn]] void ThrowInvalid(std::wstring const & sText) {
    throw TXZkTools(L"Invalid dateTime string '%s'", sText.c_str());
}

constexpr bool fIsAsciiSpace(wchar_t c) noexcept {
    return c == L' ' || (c >= L'\t' && c <= L'\r');
}

/// What `_wtoi` reads, of a view. Characters beyond ASCII, which it may take for white space or digits, are left to
/// itself.
int iReadNumber(TView sText) {
    TView sRest = sText;
    while (!sRest.empty() && fIsAsciiSpace(sRest.front()))
        sRest.remove_prefix(1);
    bool const fNegative = sRest.starts_with(L'-');
    if (fNegative || sRest.starts_with(L'+')) sRest.remove_prefix(1);

    unsigned __int64 const uiLimit = fNegative ? INT_MAX + 1ull : INT_MAX;
    unsigned __int64 uiValue = 0;
    for (; !sRest.empty() && sRest.front() >= L'0' && sRest.front() <= L'9'; sRest.remove_prefix(1)) {
        uiValue = uiValue * 10 + (sRest.front() - L'0');
        if (uiValue > uiLimit) uiValue = uiLimit;
    }
    if (!sRest.empty() && sRest.front() > 0x7F) return _wtoi(std::wstring(sText).c_str());
    return static_cast<int>(fNegative ? -static_cast<__int64>(uiValue) : static_cast<__int64>(uiValue));
}

WORD wReadField(TView sText) {
    return static_cast<WORD>(iReadNumber(sText));
}

/// Takes what stands in front of the first `cEnd` off the text, and that as well; all of it when there is none.
TView sTakeField(TView & sText, wchar_t cEnd) noexcept {
    // Not the string's own search: that is a call into the run-time, for two characters.
    auto const itEnd = std::ranges::find(sText, cEnd);
    TView const sField(sText.begin(), itEnd);
    sText.remove_prefix(sField.size() + (itEnd != sText.end() ? 1 : 0));
    return sField;
}

/// Takes the text of a date and perhaps a time apart; nothing where there is no such moment.
std::optional<unsigned __int64> puiRead(TView sDate, std::optional<TView> psTime) {
    SYSTEMTIME tFields{};
    tFields.wYear = wReadField(sTakeField(sDate, L'-'));
    tFields.wMonth = wReadField(sTakeField(sDate, L'-'));
    tFields.wDay = wReadField(sDate);
    TView sTime = psTime.value_or(TView());
    tFields.wHour = wReadField(sTakeField(sTime, L':'));
    tFields.wMinute = wReadField(sTakeField(sTime, L':'));
    std::size_t const uPoint = sTime.find_first_of(L".,");
    tFields.wSecond = wReadField(sTime.substr(0, uPoint));

    std::optional<unsigned __int64> puiTicks = puiGetTicks(tFields);
    if (puiTicks && uPoint != TView::npos) {
        // Deliberate: a count of ticks and no decimal fraction, as it is printed. Five ticks are .5 and not .0000005.
        int const iTicks = iReadNumber(sTime.substr(uPoint + 1));
        if (iTicks > 0) *puiTicks += static_cast<unsigned int>(iTicks);
    }
    return puiTicks;
}

FILETIME tFileTime(unsigned __int64 uiTicks) noexcept {
    return {static_cast<DWORD>(uiTicks), static_cast<DWORD>(uiTicks >> 32)};
}

/// Writes two digits of a number below 100, and gives the place behind them. So do the others.
wchar_t * pWriteTwo(wchar_t * pTarget, unsigned int uValue) noexcept {
    *pTarget++ = static_cast<wchar_t>(L'0' + uValue / 10);
    *pTarget++ = static_cast<wchar_t>(L'0' + uValue % 10);
    return pTarget;
}

wchar_t * pWriteDate(wchar_t * pTarget, SYSTEMTIME const & tFields) noexcept {
    if (tFields.wYear > 9999) *pTarget++ = static_cast<wchar_t>(L'0' + tFields.wYear / 10000);
    pTarget = pWriteTwo(pTarget, tFields.wYear / 100u % 100);
    pTarget = pWriteTwo(pTarget, tFields.wYear % 100u);
    *pTarget++ = L'-';
    pTarget = pWriteTwo(pTarget, tFields.wMonth);
    *pTarget++ = L'-';
    return pWriteTwo(pTarget, tFields.wDay);
}

wchar_t * pWriteTime(wchar_t * pTarget, SYSTEMTIME const & tFields) noexcept {
    pTarget = pWriteTwo(pTarget, tFields.wHour);
    *pTarget++ = L':';
    pTarget = pWriteTwo(pTarget, tFields.wMinute);
    *pTarget++ = L':';
    return pWriteTwo(pTarget, tFields.wSecond);
}

wchar_t * pWriteNumber(wchar_t * pTarget, unsigned int uValue) noexcept {
    std::array<char, 10> acDigits;
    char const * const pEnd = std::to_chars(acDigits.data(), acDigits.data() + acDigits.size(), uValue).ptr;
    return std::copy(static_cast<char const *>(acDigits.data()), pEnd, pTarget);
}

} // namespace

TZkDateTime::TZkDateTime(std::wstring_view sText) : TZkDateTime(create(sText).value_or(TZkDateTime())) {}

std::pair<std::optional<std::wstring_view>, std::optional<std::wstring_view>>
TZkDateTime::splitDateTime(std::wstring_view sText) noexcept {
    if (std::size_t const uTime = sText.find(L'T'); uTime != TView::npos)
        return {sText.substr(0, uTime), sText.substr(uTime + 1)};
    if (sText.find(L'-') != TView::npos) return {sText, std::nullopt};
    if (sText.find(L':') != TView::npos) return {std::nullopt, sText};
    return {};
}

TZkDateTime TZkDateTime::xCreate(std::wstring_view sText) {
    auto const [psDate, psTime] = splitDateTime(sText);
    if (!psDate) ThrowInvalid(std::wstring(sText));
    return xCreate({*psDate, psTime});
}

TZkDateTime TZkDateTime::xCreate(std::pair<std::wstring_view, std::optional<std::wstring_view>> sParts) {
    if (auto const ptResult = create(sParts)) return *ptResult;
    std::wstring sText(sParts.first);
    if (sParts.second) sText.append(1, L'T').append(*sParts.second);
    ThrowInvalid(sText);
}

std::optional<TZkDateTime> TZkDateTime::create(std::wstring_view sText) {
    auto const [psDate, psTime] = splitDateTime(sText);
    if (!psDate) return std::nullopt;
    return create({*psDate, psTime});
}

std::optional<TZkDateTime> TZkDateTime::create(std::pair<std::wstring_view, std::optional<std::wstring_view>> sParts) {
    std::optional<unsigned __int64> const puiTicks = puiRead(sParts.first, sParts.second);
    if (!puiTicks) return std::nullopt;
    return TZkDateTime(tFileTime(*puiTicks));
}

std::wstring TZkDateTime::sGetString(EDateTime eParts, bool fFraction) const {
    SYSTEMTIME const tFields = tGetSystemTime(uiTicks);
    std::wstring sText(std::wstring_view(L"30828-09-14T02:48:05.9999999").size(), L'\0'); // the longest
    wchar_t * p = sText.data();
    if ((eParts & edtDate) != 0) p = pWriteDate(p, tFields);
    if ((eParts & edtDateTime) == edtDateTime) *p++ = L'T';
    if ((eParts & edtTime) != 0) {
        p = pWriteTime(p, tFields);
        if (auto const uTicks = static_cast<unsigned int>(uiTicks % uiTicksPerSecond); fFraction && uTicks != 0) {
            *p++ = L'.';
            p = pWriteNumber(p, uTicks); // Deliberate: not padded, see puiRead.
        }
    }
    sText.resize(static_cast<std::size_t>(p - sText.data()));
    return sText;
}

std::wstring sGetDate(tm const & tTime) {
    auto const sSum = [](int iField, unsigned int uOffset) {
        return std::to_wstring(static_cast<int>(static_cast<unsigned int>(iField) + uOffset));
    };
    return sSum(tTime.tm_year, 1900) + L'-' + sSum(tTime.tm_mon, 1) + L'-' + sSum(tTime.tm_mday, 0);
}

tm tGetDate(std::wstring const & sText) {
    tm tResult{};
    TView sRest = sText;
    TView const sYear = sTakeField(sRest, L'-');
    std::size_t const uSecond = sRest.find(L'-');
    // Deliberate: year and month alone are no date, not the first of the month.
    if (uSecond == TView::npos) return tResult;
    TView const sMonth = sTakeField(sRest, L'-');
    tResult.tm_year = iReadNumber(sYear) - 1900;
    tResult.tm_mon = iReadNumber(sMonth) - 1;
    tResult.tm_mday = iReadNumber(sTakeField(sRest, L'-'));
    return tResult;
}
