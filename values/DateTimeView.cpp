// What the user's settings decide: dates in the formats of a locale, and the time of the local clock.
#include "ZkTools/DateTime.h"

#include <array>
#include <cstddef>

namespace {

/// How the system is asked for a date or time.
struct TLayout {
    DWORD dwFlags = 0;
    wchar_t const * pzPicture = nullptr;
};

/// By EDateFormat.
constexpr std::array<TLayout, 6> atDateLayouts{{
    {0, nullptr},
    {DATE_LONGDATE, nullptr},
    {0, L"yyyyMMdd"},
    {0, L"yyyy-MM-dd"},
    {0, L"yyyyMM"},
    {0, L"yyyy-MM"},
}};

/// By ETimeFormat.
constexpr std::array<TLayout, 8> atTimeLayouts{{
    {0, nullptr},
    {TIME_NOSECONDS, nullptr},
    {TIME_NOMINUTESORSECONDS, nullptr},
    {0, L"HHmmss"},
    {0, L"HHmm"},
    {0, L"HH"},
    {0, L"HH:mm:ss"},
    {0, L"HH:mm"},
}};

/// The layout of a format; that of the caller follows those of the table.
TLayout tGetLayout(auto const & atLayouts, int iFormat, wchar_t const * pzPicture) noexcept {
    auto const uFormat = static_cast<std::size_t>(iFormat);
    if (uFormat < atLayouts.size()) return atLayouts[uFormat];
    return uFormat == atLayouts.size() ? TLayout{0, pzPicture} : TLayout{};
}

using TFormatFunction = int WINAPI(LCID, DWORD, SYSTEMTIME const *, wchar_t const *, wchar_t *, int);

/// A date or time in the user's locale; empty where the system gives none.
std::wstring sView(TFormatFunction Format, TLayout const & tLayout, SYSTEMTIME const & tTime) {
    auto const iFormat = [&](wchar_t * pTarget, int iSize) {
        return Format(LOCALE_USER_DEFAULT, tLayout.dwFlags, &tTime, tLayout.pzPicture, pTarget, iSize);
    };
    int const iSize = iFormat(nullptr, 0); // with the terminator
    if (iSize <= 1) return {};
    std::wstring sResult(static_cast<std::size_t>(iSize) - 1, L'\0');
    iFormat(sResult.data(), iSize);
    return sResult;
}

/// A date or time in the way of a locale; empty where the system gives none.
std::wstring sFormat(TFormatFunction Format, LCID lcid, DWORD dwFlags, SYSTEMTIME const & tTime) {
    std::array<wchar_t, 50> acText{};
    int const iSize = Format(lcid, dwFlags, &tTime, nullptr, acText.data(), static_cast<int>(acText.size()));
    return iSize > 0 ? acText.data() : std::wstring();
}

tm tGetLocalClock() noexcept {
    __time64_t const iNow = _time64(nullptr);
    tm const * const pLocal = _localtime64(&iNow);
    return pLocal != nullptr ? *pLocal : tm{};
}

} // namespace

std::wstring TZkDateTime::sGetViewString(EDateTime eParts, EDateFormat eDateFormat, wchar_t const * pzDatePicture,
                                         ETimeFormat eTimeFormat, wchar_t const * pzTimePicture) const {
    std::wstring sResult;
    if (fIsZero()) return sResult;
    SYSTEMTIME const tTime = *this;
    if ((eParts & edtDate) != 0)
        sResult += sView(GetDateFormatW, tGetLayout(atDateLayouts, eDateFormat, pzDatePicture), tTime);
    if ((eParts & edtDateTime) == edtDateTime)
        sResult += eDateFormat == edfCompact || eDateFormat == edfIso ? L'T' : L' ';
    if ((eParts & edtTime) != 0)
        sResult += sView(GetTimeFormatW, tGetLayout(atTimeLayouts, eTimeFormat, pzTimePicture), tTime);
    return sResult;
}

std::wstring TZkDateTime::sGetViewDateString(EDateFormat eFormat, wchar_t const * pzPicture) const {
    return sGetViewString(edtDate, eFormat, pzPicture, etfNoSeconds, nullptr);
}

std::wstring TZkDateTime::sGetViewTimeString(ETimeFormat eFormat, wchar_t const * pzPicture) const {
    return sGetViewString(edtTime, edfShort, nullptr, eFormat, pzPicture);
}

std::wstring sFormatDate(tm const & tTime, EDateFormat eFormat, wchar_t const * pzPicture) {
    return TZkDateTime(tTime).sGetViewDateString(eFormat, pzPicture);
}

std::wstring sFormatTime(tm const & tTime, ETimeFormat eFormat, wchar_t const * pzPicture) {
    return TZkDateTime(tTime).sGetViewTimeString(eFormat, pzPicture);
}

std::wstring sFormatCurrentDate(EDateFormat eFormat, wchar_t const * pzPicture) {
    return sFormatDate(tGetLocalClock(), eFormat, pzPicture);
}

std::wstring sFormatCurrentTime(ETimeFormat eFormat, wchar_t const * pzPicture) {
    return sFormatTime(tGetLocalClock(), eFormat, pzPicture);
}

std::wstring sFormatDate(unsigned long lcid, SYSTEMTIME tTime) {
    return sFormat(GetDateFormatW, lcid, DATE_SHORTDATE, tTime);
}

std::wstring sFormatTime(unsigned long lcid, SYSTEMTIME tTime) {
    return sFormat(GetTimeFormatW, lcid, 0, tTime);
}

std::wstring sFormatDateTime(unsigned long lcid, SYSTEMTIME tTime) {
    return sFormatDate(lcid, tTime) + L' ' + sFormatTime(lcid, tTime);
}

std::wstring sGetLocalTimeOfUTCTime(std::wstring const & sText) {
    SYSTEMTIME const tUtc = TZkDateTime(sText);
    SYSTEMTIME tLocal{};
    SystemTimeToTzSpecificLocalTime(nullptr, &tUtc, &tLocal);
    return TZkDateTime(tLocal).sGetString(edtDateTime, false);
}
