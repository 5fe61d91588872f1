#include "ZkTools/DateTime.h"

#include "ZkTools/CompoundStorage.h"
#include "ZkTools/Stream.h"
#include "values/Calendar.h"

#include <array>
#include <cstddef>
#include <tuple>
#include <type_traits>

static_assert(sizeof(TZkDateTime) == sizeof(FILETIME) && std::is_trivially_copyable_v<TZkDateTime>);
static_assert(sizeof(TStructTm) == sizeof(tm) && sizeof(tm) == 36);

namespace {

constexpr std::array<int tm::*, 9> apFields{&tm::tm_sec,  &tm::tm_min,  &tm::tm_hour, &tm::tm_mday, &tm::tm_mon,
                                            &tm::tm_year, &tm::tm_wday, &tm::tm_yday, &tm::tm_isdst};

/// The ticks of the units, by EDatePart.
constexpr std::array<unsigned __int64, 7> auiTicksPerPart{
    6'048'000'000'000, 864'000'000'000, 36'000'000'000, 600'000'000, uiTicksPerSecond, uiTicksPerMillisecond, 1};

/// `iField` plus `uOffset` in 16 bits.
constexpr WORD wSum(int iField, unsigned int uOffset) noexcept {
    return static_cast<WORD>(static_cast<unsigned int>(iField) + uOffset);
}

SYSTEMTIME tFields(tm const & tTime) noexcept {
    SYSTEMTIME tResult;
    TmToSystemTime(tTime, tResult);
    return tResult;
}

auto tOrder(TStructTm const & tTime) noexcept {
    return std::tie(tTime.tm_year, tTime.tm_mon, tTime.tm_mday, tTime.tm_hour, tTime.tm_min, tTime.tm_sec);
}

} // namespace

void TmToSystemTime(tm const & tTime, SYSTEMTIME & tResult) noexcept {
    tResult = {};
    tResult.wYear = wSum(tTime.tm_year, 1900);
    tResult.wMonth = wSum(tTime.tm_mon, 1);
    tResult.wDayOfWeek = wSum(tTime.tm_wday, 0);
    tResult.wDay = wSum(tTime.tm_mday, 0);
    tResult.wHour = wSum(tTime.tm_hour, 0);
    tResult.wMinute = wSum(tTime.tm_min, 0);
    tResult.wSecond = wSum(tTime.tm_sec, 0);
}

void SystemTimeToTm(SYSTEMTIME const & tTime, tm & tResult) noexcept {
    tResult = {};
    tResult.tm_year = tTime.wYear - 1900;
    tResult.tm_mon = tTime.wMonth - 1;
    tResult.tm_wday = tTime.wDayOfWeek;
    tResult.tm_mday = tTime.wDay;
    tResult.tm_hour = tTime.wHour;
    tResult.tm_min = tTime.wMinute;
    tResult.tm_sec = tTime.wSecond;
}

TStructTm::TStructTm(SYSTEMTIME const & tTime) noexcept {
    Set(tTime);
}

TStructTm & TStructTm::operator=(tm const & tTime) noexcept {
    tm::operator=(tTime);
    return *this;
}

TStructTm & TStructTm::operator=(SYSTEMTIME const & tTime) noexcept {
    Set(tTime);
    return *this;
}

void TStructTm::Set(SYSTEMTIME const & tTime) noexcept {
    SystemTimeToTm(tTime, *this);
}

void TStructTm::Get(SYSTEMTIME & tTime) const noexcept {
    TmToSystemTime(*this, tTime);
}

bool TStructTm::operator==(TStructTm const & tOther) const noexcept {
    return tOrder(*this) == tOrder(tOther);
}

bool TStructTm::operator<(TStructTm const & tOther) const noexcept {
    return tOrder(*this) < tOrder(tOther);
}

bool TStructTm::operator>(TStructTm const & tOther) const noexcept {
    return tOther < *this;
}

void TStructTm::Read(TStreamBase & tStream) {
    for (int tm::*const pField : apFields) {
        short iField = 0; // a file stream that ends early gives fewer bytes without a word
        tStream.Read(iField);
        this->*pField = iField;
    }
}

void TStructTm::Write(TStreamBase & tStream) const {
    for (int tm::*const pField : apFields)
        tStream.Write(static_cast<short>(this->*pField));
}

void TStructTm::Read(TIStream & tStream) {
    for (int tm::*const pField : apFields)
        tStream.Read(&(this->*pField), sizeof(int));
}

void TStructTm::Write(TIStream & tStream) const {
    for (int tm::*const pField : apFields)
        tStream.Write(&(this->*pField), sizeof(int));
}

TZkDateTime::TZkDateTime(tm const & tTime) noexcept : TZkDateTime(tFields(tTime)) {}

TZkDateTime::TZkDateTime(FILETIME const & tTime) noexcept
    : uiTicks(static_cast<unsigned __int64>(tTime.dwHighDateTime) << 32 | tTime.dwLowDateTime) {}

TZkDateTime::TZkDateTime(SYSTEMTIME const & tTime) noexcept : uiTicks(puiGetTicks(tTime).value_or(0)) {}

// Deliberate: seconds have never made a date here, and callers rely on getting none.
TZkDateTime::TZkDateTime(__int64 const &) noexcept {}

unsigned __int64 TZkDateTime::iGetTimeInUnit(EDatePart ePart) const noexcept {
    return uiTicks / auiTicksPerPart[static_cast<std::size_t>(ePart)];
}

__int64 TZkDateTime::iGetTimeSpan(EDatePart ePart, TZkDateTime const & tOther) const noexcept {
    return static_cast<__int64>(iGetTimeInUnit(ePart) - tOther.iGetTimeInUnit(ePart));
}

int TZkDateTime::iCompare(TZkDateTime const & tOther, EDatePart ePart) const noexcept {
    __int64 const iSpan = iGetTimeSpan(ePart, tOther);
    return (iSpan > 0) - (iSpan < 0);
}

int TZkDateTime::iCompare(TZkDateTime const & tFirst, TZkDateTime const & tSecond, EDatePart ePart) noexcept {
    return tFirst.iCompare(tSecond, ePart);
}

TZkDateTime::operator tm() const noexcept {
    return TStructTm(tGetSystemTime(uiTicks));
}

TZkDateTime::operator FILETIME() const noexcept {
    return {static_cast<DWORD>(uiTicks), static_cast<DWORD>(uiTicks >> 32)};
}

TZkDateTime::operator SYSTEMTIME() const noexcept {
    return tGetSystemTime(uiTicks);
}
