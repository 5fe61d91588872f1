// zk date: a date in all its forms.
#include "tools/zk/Commands.h"
#include "tools/zk/Console.h"

#include "ZkTools/DateTime.h"

#include <array>

namespace {

struct TUnit {
    std::wstring_view sName;
    TZkDateTime::EDatePart ePart;
};

constexpr std::array<TUnit, 7> tUnits{{
    {L"weeks", TZkDateTime::edpWeek},
    {L"days", TZkDateTime::edpDay},
    {L"hours", TZkDateTime::edpHour},
    {L"minutes", TZkDateTime::edpMinute},
    {L"seconds", TZkDateTime::edpSecond},
    {L"milliseconds", TZkDateTime::edpMillisecond},
    {L"ticks", TZkDateTime::edpTick},
}};

std::wstring sLine(std::wstring_view sName, std::wstring const & sValue) {
    return std::wstring(sName).append(L": ").append(sValue).append(L"\n");
}

/// The moment on the local clock.
TZkDateTime tGetNow() noexcept {
    SYSTEMTIME tNow;
    GetLocalTime(&tNow);
    return tNow;
}

std::wstring sGetForms(TZkDateTime const & tDate) {
    return sLine(L"text", tDate.sGetString(edtDateTime, true)) +
           sLine(L"short", tDate.sGetViewString(edtDateTime, edfShort, nullptr, etfDefault, nullptr)) +
           sLine(L"long", tDate.sGetViewDateString(edfLong, nullptr)) +
           sLine(L"local", sGetLocalTimeOfUTCTime(tDate.sGetString(edtDateTime, true))) +
           sLine(L"ticks", std::to_wstring(tDate.iGetTimeInUnit(TZkDateTime::edpTick)));
}

std::wstring sGetSpans(TZkDateTime const & tDate, TZkDateTime const & tSince) {
    std::wstring sText;
    for (auto const & [sName, ePart] : tUnits)
        sText += sLine(sName, std::to_wstring(tDate.iGetTimeSpan(ePart, tSince)));
    return sText;
}

EExit eDate(TArguments const & tArguments) {
    TZkDateTime const tDate = tArguments.uGetCount() != 0 ? TZkDateTime::xCreate(tArguments.sGet(0)) : tGetNow();
    std::wstring const * const psSince = tArguments.psGetValue(L"--since");
    PrintLine(psSince != nullptr ? sGetSpans(tDate, TZkDateTime::xCreate(*psSince)) : sGetForms(tDate));
    return eDone;
}

constexpr std::array<TSwitch, 1> tSwitches{{{L"--since", true}}};

} // namespace

TCommand const tDateCommand{
    L"date",
    L"[DATE] [--since DATE]",
    L"Prints a date in all its forms, or how long it is since another.",
    L"DATE is text as it stands in files: 2024-01-15, or 2024-01-15T08:30:00. Behind\n"
    L"the seconds, ticks of 100 ns may follow: 2024-01-15T08:30:00.5 is 5 ticks later.\n"
    L"A zone is passed over. Without DATE it is now, on the local clock.\n"
    L"\n"
    L"Prints the text, the date in your short and long form, the local time when the\n"
    L"date is meant as UTC, and the ticks since 1601-01-01.\n"
    L"\n"
    L"--since DATE  Prints how many borders between weeks (from Monday), days, hours\n"
    L"              and so on lie between the two: a second across midnight is one day.\n",
    0,
    1,
    tSwitches,
    eDate,
};
