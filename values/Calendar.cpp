#include "values/Calendar.h"

#include <algorithm>
#include <array>

namespace {

// The scale begins with a cycle of 400 years, all of which have the same days.
constexpr unsigned int uFirstYear = 1601;
constexpr unsigned int uLastYear = 30827;
constexpr unsigned int uDaysPer400Years = 146'097;
constexpr unsigned int uDaysPer100Years = 36'524; // the fourth century of a cycle has one more
constexpr unsigned int uDaysPer4Years = 1'461;    // the last four years of the other centuries have one less
constexpr unsigned int uDaysPerYear = 365;
constexpr unsigned int uSecondsPerDay = 86'400;

constexpr std::array<unsigned int, 13> auDaysBeforeMonth{0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365};

constexpr bool fIsLeapYear(unsigned int uYear) noexcept {
    return uYear % 4 == 0 && (uYear % 100 != 0 || uYear % 400 == 0);
}

/// The days of the year in front of that month, from 1 to 13.
constexpr unsigned int uGetDaysBefore(unsigned int uMonth, bool fLeapYear) noexcept {
    return auDaysBeforeMonth[uMonth - 1] + (fLeapYear && uMonth > 2 ? 1 : 0);
}

constexpr bool fExists(SYSTEMTIME const & tTime) noexcept {
    if (tTime.wYear < uFirstYear || tTime.wYear > uLastYear || tTime.wMonth < 1 || tTime.wMonth > 12) return false;
    bool const fLeapYear = fIsLeapYear(tTime.wYear);
    unsigned int const uDays = uGetDaysBefore(tTime.wMonth + 1u, fLeapYear) - uGetDaysBefore(tTime.wMonth, fLeapYear);
    return tTime.wDay >= 1 && tTime.wDay <= uDays && tTime.wHour < 24 && tTime.wMinute < 60 && tTime.wSecond < 60 &&
           tTime.wMilliseconds < 1000;
}

} // namespace

std::optional<unsigned __int64> puiGetTicks(SYSTEMTIME const & tTime) noexcept {
    if (!fExists(tTime)) return std::nullopt;
    unsigned int const uYears = tTime.wYear - uFirstYear;
    unsigned int const uDays = uYears * uDaysPerYear + uYears / 4 - uYears / 100 + uYears / 400 +
                               uGetDaysBefore(tTime.wMonth, fIsLeapYear(tTime.wYear)) + tTime.wDay - 1u;
    unsigned int const uSeconds = (tTime.wHour * 60u + tTime.wMinute) * 60u + tTime.wSecond;
    return (static_cast<unsigned __int64>(uDays) * uSecondsPerDay + uSeconds) * uiTicksPerSecond +
           tTime.wMilliseconds * uiTicksPerMillisecond;
}

SYSTEMTIME tGetSystemTime(unsigned __int64 uiTicks) noexcept {
    SYSTEMTIME tTime{};
    if (uiTicks >> 63 != 0) return tTime;
    unsigned __int64 const uiSeconds = uiTicks / uiTicksPerSecond;
    auto const uDays = static_cast<unsigned int>(uiSeconds / uSecondsPerDay);
    auto const uSeconds = static_cast<unsigned int>(uiSeconds % uSecondsPerDay);

    unsigned int uDay = uDays % uDaysPer400Years;
    unsigned int const uCentury = std::min(uDay / uDaysPer100Years, 3u);
    uDay -= uCentury * uDaysPer100Years;
    unsigned int const uFourYears = uDay / uDaysPer4Years;
    uDay %= uDaysPer4Years;
    unsigned int const uYearOfFour = std::min(uDay / uDaysPerYear, 3u);
    uDay -= uYearOfFour * uDaysPerYear;
    unsigned int const uYear =
        uFirstYear + uDays / uDaysPer400Years * 400 + uCentury * 100 + uFourYears * 4 + uYearOfFour;

    bool const fLeapYear = fIsLeapYear(uYear);
    unsigned int uMonth = uDay / 31 + 1; // this one or the next
    if (uDay >= uGetDaysBefore(uMonth + 1, fLeapYear)) ++uMonth;

    tTime.wYear = static_cast<WORD>(uYear);
    tTime.wMonth = static_cast<WORD>(uMonth);
    tTime.wDayOfWeek = static_cast<WORD>((uDays + 1) % 7); // the scale begins on a Monday
    tTime.wDay = static_cast<WORD>(uDay - uGetDaysBefore(uMonth, fLeapYear) + 1);
    tTime.wHour = static_cast<WORD>(uSeconds / 3600);
    tTime.wMinute = static_cast<WORD>(uSeconds / 60 % 60);
    tTime.wSecond = static_cast<WORD>(uSeconds % 60);
    tTime.wMilliseconds = static_cast<WORD>(uiTicks % uiTicksPerSecond / uiTicksPerMillisecond);
    return tTime;
}
