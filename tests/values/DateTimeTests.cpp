#include "ZkTools/DateTime.h"

#include "ZkTools/CompoundStorage.h"
#include "ZkTools/Exceptions.h"
#include "ZkTools/FileStream.h"
#include "ZkTools/Stream.h"
#include "tests/support/Compound.h"
#include "tests/support/Narrow.h"
#include "tests/support/Random.h"
#include "tests/support/SystemCall.h"
#include "tests/support/TempDirectory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <cwchar>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

using namespace std::string_literals;
using namespace std::string_view_literals;

namespace {

using std::wstring;
using testing::PrintToString;
using zk_test::sNarrow;
using zk_test::sRandom;
using zk_test::TAliasedStream;
using zk_test::TSystemCall;

using TParts = std::pair<std::wstring_view, std::optional<std::wstring_view>>;

constexpr unsigned __int64 uiTicksPerDay = 864'000'000'000;
constexpr unsigned __int64 ui2024 = 133'497'810'000'000'000; // 2024-01-15T08:30:00
constexpr unsigned __int64 uiFirstWithoutDate = 1ull << 63;

FILETIME tFileTime(unsigned __int64 uiTicks) noexcept {
    return {static_cast<DWORD>(uiTicks), static_cast<DWORD>(uiTicks >> 32)};
}

unsigned __int64 uiTicks(FILETIME const & tTime) noexcept {
    return static_cast<unsigned __int64>(tTime.dwHighDateTime) << 32 | tTime.dwLowDateTime;
}

unsigned __int64 uiTicks(TZkDateTime const & tTime) noexcept {
    return tTime.iGetTimeInUnit(TZkDateTime::edpTick);
}

TZkDateTime tOfTicks(unsigned __int64 ui) noexcept {
    return TZkDateTime(tFileTime(ui));
}

SYSTEMTIME tSystemTime(int iYear, int iMonth, int iDay, int iHour = 0, int iMinute = 0, int iSecond = 0,
                       int iMilliseconds = 0) noexcept {
    auto const w = [](int i) { return static_cast<WORD>(i); };
    return {w(iYear), w(iMonth), 0, w(iDay), w(iHour), w(iMinute), w(iSecond), w(iMilliseconds)};
}

tm tFields(int iYear, int iMonth, int iDay, int iHour = 0, int iMinute = 0, int iSecond = 0) noexcept {
    tm tResult{};
    tResult.tm_year = iYear - 1900;
    tResult.tm_mon = iMonth - 1;
    tResult.tm_mday = iDay;
    tResult.tm_hour = iHour;
    tResult.tm_min = iMinute;
    tResult.tm_sec = iSecond;
    return tResult;
}

bool fSame(SYSTEMTIME const & t1, SYSTEMTIME const & t2) noexcept {
    return std::memcmp(&t1, &t2, sizeof t1) == 0;
}

bool fLeapYear(int iYear) noexcept {
    return iYear % 4 == 0 && (iYear % 100 != 0 || iYear % 400 == 0);
}

/// The platform's answer, 0 for none, with the limits that it is documented for: Wine 8 takes the 29th of February of
/// any year, and years above 30827.
unsigned __int64 uiPlatformTicks(SYSTEMTIME const & tTime) {
    if (tTime.wYear > 30827 || (tTime.wMonth == 2 && tTime.wDay == 29 && !fLeapYear(tTime.wYear))) return 0;
    FILETIME tResult{};
    return SystemTimeToFileTime(&tTime, &tResult) ? uiTicks(tResult) : 0;
}

/// What is thrown, narrow; empty when nothing is.
std::string sThrown(std::function<void()> const & Call) {
    try {
        Call();
    } catch (TXZkTools const & tError) {
        EXPECT_EQ(tError.iGetNumber(), -1);
        return tError.what();
    }
    return {};
}

std::string sInvalid(std::wstring_view sText) {
    return sNarrow(L"Invalid dateTime string '" + wstring(sText) + L"'");
}

} // namespace

// The calendar form

TEST(TmToSystemTime, TakesTheSixFieldsAndTheDayOfTheWeek) {
    tm tTime = tFields(2024, 1, 15, 8, 30, 59);
    tTime.tm_wday = 1;
    tTime.tm_yday = 14;
    tTime.tm_isdst = 1;
    SYSTEMTIME tResult;
    std::memset(&tResult, 0x55, sizeof tResult);
    TmToSystemTime(tTime, tResult);
    EXPECT_TRUE(fSame(tResult, {2024, 1, 1, 15, 8, 30, 59, 0}));
}

TEST(TmToSystemTime, CutsEachFieldTo16Bits) {
    tm tTime{};
    tTime.tm_year = 0x12345;
    tTime.tm_mon = -1;
    tTime.tm_wday = -1;
    tTime.tm_mday = 0x1000F;
    tTime.tm_hour = -2;
    tTime.tm_min = 0x10000;
    tTime.tm_sec = INT_MIN + 7;
    SYSTEMTIME tResult;
    TmToSystemTime(tTime, tResult);
    EXPECT_TRUE(fSame(tResult, {0x2345 + 1900, 0, 0xFFFF, 15, 0xFFFE, 0, 7, 0}));
    tTime.tm_year = INT_MAX;
    tTime.tm_mon = INT_MAX;
    TmToSystemTime(tTime, tResult);
    EXPECT_EQ(tResult.wYear, 1899);
    EXPECT_EQ(tResult.wMonth, 0);
}

TEST(SystemTimeToTm, IsTheInverseWithoutMilliseconds) {
    tm tResult;
    std::memset(&tResult, 0x55, sizeof tResult);
    SystemTimeToTm({2024, 1, 1, 15, 8, 30, 59, 999}, tResult);
    EXPECT_EQ(tResult.tm_year, 124);
    EXPECT_EQ(tResult.tm_mon, 0);
    EXPECT_EQ(tResult.tm_wday, 1);
    EXPECT_EQ(tResult.tm_mday, 15);
    EXPECT_EQ(tResult.tm_hour, 8);
    EXPECT_EQ(tResult.tm_min, 30);
    EXPECT_EQ(tResult.tm_sec, 59);
    EXPECT_EQ(tResult.tm_yday, 0);
    EXPECT_EQ(tResult.tm_isdst, 0);
    SystemTimeToTm({}, tResult);
    EXPECT_EQ(tResult.tm_year, -1900);
    EXPECT_EQ(tResult.tm_mon, -1);
    EXPECT_EQ(tResult.tm_mday, 0);
}

TEST(TStructTm, IsATmAndNothingMore) {
    EXPECT_EQ(sizeof(TStructTm), sizeof(tm));
    EXPECT_FALSE(std::is_polymorphic_v<TStructTm>);
    TStructTm const tZero;
    tm const tExpected{};
    EXPECT_EQ(std::memcmp(&tZero, &tExpected, sizeof tZero), 0);
}

TEST(TStructTm, CopiesAllNineFields) {
    tm const tTime{1, 2, 3, 4, 5, 6, 7, 8, 9};
    TStructTm const tMade(tTime);
    TStructTm tAssigned;
    tAssigned = tTime;
    EXPECT_EQ(std::memcmp(&tMade, &tTime, sizeof tTime), 0);
    EXPECT_EQ(std::memcmp(&tAssigned, &tTime, sizeof tTime), 0);
}

TEST(TStructTm, ComesFromAndGoesToSystemTime) {
    SYSTEMTIME const tTime{2024, 1, 1, 15, 8, 30, 59, 999};
    tm tExpected;
    SystemTimeToTm(tTime, tExpected);
    tm const tOther{1, 2, 3, 4, 5, 6, 7, 8, 9};
    TStructTm const tMade(tTime);
    TStructTm tAssigned(tOther);
    tAssigned = tTime;
    TStructTm tSet(tOther);
    tSet.Set(tTime);
    for (TStructTm const & tResult : {tMade, tAssigned, tSet})
        EXPECT_EQ(std::memcmp(&tResult, &tExpected, sizeof tExpected), 0);
    SYSTEMTIME tBack;
    tMade.Get(tBack);
    EXPECT_TRUE(fSame(tBack, {2024, 1, 1, 15, 8, 30, 59, 0}));
}

TEST(TStructTm, ComparesFromYearToSecondWithSigns) {
    // Each field weighs more than all that follow it.
    std::array<int tm::*, 6> const apFields{&tm::tm_year, &tm::tm_mon, &tm::tm_mday,
                                            &tm::tm_hour, &tm::tm_min, &tm::tm_sec};
    for (std::size_t u = 0; u < apFields.size(); ++u) {
        TStructTm tSmall;
        TStructTm tLarge;
        tSmall.*apFields[u] = -1;
        for (std::size_t uNext = u + 1; uNext < apFields.size(); ++uNext)
            tSmall.*apFields[uNext] = 100;
        EXPECT_TRUE(tSmall < tLarge) << u;
        EXPECT_FALSE(tLarge < tSmall) << u;
        EXPECT_TRUE(tLarge > tSmall) << u;
        EXPECT_FALSE(tSmall > tLarge) << u;
        EXPECT_FALSE(tSmall == tLarge) << u;
    }
}

TEST(TStructTm, DoesNotCompareTheComputedFields) {
    TStructTm t1;
    TStructTm t2;
    t2.tm_wday = 1;
    t2.tm_yday = 2;
    t2.tm_isdst = 3;
    EXPECT_TRUE(t1 == t2);
    EXPECT_FALSE(t1 < t2);
    EXPECT_FALSE(t1 > t2);
    EXPECT_FALSE(t2 < t1);
}

namespace {

/// A `tm` as bytes on a stream, 1 to 9 in its fields.
constexpr std::string_view sRecord = "\1\0\2\0\3\0\4\0\5\0\6\0\7\0\x8\0\x9\0"sv;

} // namespace

TEST(TStructTmStream, WritesNine16BitFieldsInOrder) {
    TStreamBase tStream;
    TStructTm(tm{1, 2, 3, 4, 5, 6, 7, 8, 9}).Write(tStream);
    ASSERT_EQ(tStream.dwGetSize(), 18u);
    EXPECT_EQ(std::memcmp(tStream.pGetData(), sRecord.data(), 18), 0);
    tStream.SetPos(0);
    TStructTm tRead;
    tRead.Read(tStream);
    EXPECT_TRUE(tStream.fIsEoF());
    tm const tExpected{1, 2, 3, 4, 5, 6, 7, 8, 9};
    EXPECT_EQ(std::memcmp(&tRead, &tExpected, sizeof tRead), 0);
}

TEST(TStructTmStream, KeepsTheLowHalfAndItsSign) {
    tm const tTime{-1, 32767, 32768, -32768, -32769, 0x12345, 65535, INT_MIN, INT_MAX};
    TStreamBase tStream;
    TStructTm(tTime).Write(tStream);
    tStream.SetPos(0);
    TStructTm tRead;
    tRead.Read(tStream);
    tm const tExpected{-1, 32767, -32768, -32768, 32767, 0x2345, -1, 0, -1};
    EXPECT_EQ(std::memcmp(&tRead, &tExpected, sizeof tRead), 0);
}

TEST(TStructTmStream, ACutRecordKeepsWhatWasRead) {
    for (unsigned long dwLength = 0; dwLength < sRecord.size(); ++dwLength) {
        TStreamBase tStream(sRecord.data(), dwLength);
        TStructTm tRead(tm{-1, -1, -1, -1, -1, -1, -1, -1, -1});
        try {
            tRead.Read(tStream);
            ADD_FAILURE() << dwLength;
        } catch (TXZkTools const & tError) {
            EXPECT_EQ(tError.iGetNumber(), 4291);
        }
        EXPECT_EQ(tStream.dwGetPos(), dwLength / 2 * 2) << dwLength;
        std::array<int, 9> aiExpected;
        for (unsigned int u = 0; u < aiExpected.size(); ++u)
            aiExpected[u] = u < dwLength / 2 ? static_cast<int>(u) + 1 : -1;
        EXPECT_EQ(std::memcmp(&tRead, aiExpected.data(), sizeof tRead), 0) << dwLength;
    }
}

// A file stream ends quietly: what is missing reads as zeros.
TEST(TStructTmStream, ACutFileReadsAsZeros) {
    zk_test::TTempDirectory const tDirectory;
    for (std::size_t uLength = 0; uLength <= sRecord.size(); ++uLength) {
        TFStream tFile(tDirectory.sWrite(L"cut", sRecord.substr(0, uLength)), ecpWestern, FS_BINARY);
        TStructTm tRead(tm{-1, -1, -1, -1, -1, -1, -1, -1, -1});
        tRead.Read(tFile);
        std::array<int, 9> aiExpected{};
        for (unsigned int u = 0; u < aiExpected.size() && 2 * u < uLength; ++u)
            aiExpected[u] = static_cast<int>(u) + 1; // half a field is its lower half
        EXPECT_EQ(std::memcmp(&tRead, aiExpected.data(), sizeof tRead), 0) << uLength;
    }
}

namespace {

tm const tWide{INT_MIN, -1, 0x01020304, INT_MAX, 5, 6, 7, 8, 9};

} // namespace

TEST(TStructTmComStream, WritesNineWholeFields) {
    zk_test::TFakeStream tFake;
    TAliasedStream tStream(tFake);
    TStructTm(tWide).Write(tStream);
    EXPECT_EQ(tFake.sCalls, "Write 4; Write 4; Write 4; Write 4; Write 4; Write 4; Write 4; Write 4; Write 4");
    EXPECT_EQ(tFake.sBytes, std::string_view(reinterpret_cast<char const *>(&tWide), 36));
    EXPECT_EQ(tFake.sBytes.substr(8, 4), "\4\3\2\1");
}

TEST(TStructTmComStream, ReadsThemBack) {
    zk_test::TFakeStream tFake(std::string_view(reinterpret_cast<char const *>(&tWide), 36));
    TAliasedStream tStream(tFake);
    TStructTm tRead;
    tRead.Read(tStream);
    EXPECT_EQ(std::memcmp(&tRead, &tWide, sizeof tRead), 0);
    EXPECT_EQ(tFake.sCalls, "Read 4; Read 4; Read 4; Read 4; Read 4; Read 4; Read 4; Read 4; Read 4");
}

TEST(TStructTmComStream, WhatAShortStreamLacksStaysAsItWas) {
    for (std::size_t uLength = 0; uLength <= 36; ++uLength) {
        zk_test::TFakeStream tFake(std::string_view(reinterpret_cast<char const *>(&tWide), uLength));
        tFake.hrSuccess = S_FALSE; // as a stream may say that fewer bytes came
        TAliasedStream tStream(tFake);
        TStructTm tRead(tm{-2, -2, -2, -2, -2, -2, -2, -2, -2});
        TStructTm tExpected = tRead;
        EXPECT_NO_THROW(tRead.Read(tStream));
        std::memcpy(static_cast<void *>(&tExpected), &tWide, uLength);
        EXPECT_EQ(std::memcmp(&tRead, &tExpected, sizeof tRead), 0) << uLength;
    }
}

TEST(TStructTmComStream, AFailedReadKeepsWhatWasRead) {
    for (int iField = 0; iField < 9; ++iField) {
        zk_test::TFakeStream tFake(std::string_view(reinterpret_cast<char const *>(&tWide), 36));
        tFake.iFailAt = iField;
        tFake.hrFailure = STG_E_ACCESSDENIED;
        TAliasedStream tStream(tFake);
        TStructTm tRead(tm{-2, -2, -2, -2, -2, -2, -2, -2, -2});
        TStructTm tExpected = tRead;
        std::memcpy(static_cast<void *>(&tExpected), &tWide, static_cast<std::size_t>(iField) * 4);
        EXPECT_EQ(sThrown([&] { tRead.Read(tStream); }),
                  sNarrow(sGetErrorString(static_cast<unsigned long>(STG_E_ACCESSDENIED))));
        EXPECT_EQ(std::memcmp(&tRead, &tExpected, sizeof tRead), 0) << iField;
    }
}

TEST(TStructTmComStream, AFailedWriteIsAFailure) {
    zk_test::TFakeStream tFake;
    tFake.iFailAt = 8;
    tFake.hrFailure = STG_E_MEDIUMFULL;
    TAliasedStream tStream(tFake);
    EXPECT_EQ(sThrown([&] { TStructTm(tWide).Write(tStream); }),
              sNarrow(sGetErrorString(static_cast<unsigned long>(STG_E_MEDIUMFULL))));
}

TEST(TStructTmComStream, ComesBackFromACompoundFile) {
    TIStorage tStorage;
    tStorage.CreateInMemory(STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE);
    TIStream tStream;
    tStream.Create(tStorage, L"time", STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE);
    TStructTm(tWide).Write(tStream);
    EXPECT_EQ(tStream.luliGetSize(), 36u);
    tStream.luliSeek(0, 0);
    TStructTm tRead;
    tRead.Read(tStream);
    EXPECT_EQ(std::memcmp(&tRead, &tWide, sizeof tRead), 0);
}

// The instant form

TEST(TZkDateTime, IsLaidOutAsAFileTime) {
    EXPECT_EQ(sizeof(TZkDateTime), sizeof(FILETIME));
    EXPECT_FALSE(std::is_polymorphic_v<TZkDateTime>);
    TZkDateTime const tTime = tOfTicks(0x123456789ABCDEF0);
    FILETIME tLayout;
    std::memcpy(&tLayout, static_cast<void const *>(&tTime), sizeof tLayout);
    EXPECT_EQ(tLayout.dwLowDateTime, 0x9ABCDEF0);
    EXPECT_EQ(tLayout.dwHighDateTime, 0x12345678u);
    FILETIME const tBack = tTime;
    EXPECT_EQ(uiTicks(tBack), 0x123456789ABCDEF0u);
}

TEST(TZkDateTime, IsZeroAtFirst) {
    EXPECT_TRUE(TZkDateTime().fIsZero());
    EXPECT_FALSE(tOfTicks(1).fIsZero());
    EXPECT_FALSE(tOfTicks(1ull << 32).fIsZero());
    TZkDateTime tTime = tOfTicks(7);
    TZkDateTime const tCopy = tTime;
    tTime = TZkDateTime();
    EXPECT_TRUE(tTime.fIsZero());
    EXPECT_EQ(uiTicks(tCopy), 7u);
}

TEST(TZkDateTime, AnyCountOfSecondsIsZero) {
    for (__int64 const iSeconds : {0ll, 1ll, -1ll, 1'705'307'400ll, -62'135'596'800ll, LLONG_MIN, LLONG_MAX})
        EXPECT_TRUE(TZkDateTime(iSeconds).fIsZero()) << iSeconds;
}

TEST(TZkDateTime, ComesFromTheFieldsOfADateThatExists) {
    struct {
        SYSTEMTIME tTime;
        unsigned __int64 uiExpected; // 0 for none
    } const atRows[] = {
        {tSystemTime(2024, 1, 15, 8, 30), ui2024},
        {tSystemTime(2024, 1, 15, 8, 30, 0, 1), ui2024 + 10'000},
        {tSystemTime(1601, 1, 1, 0, 0, 0, 1), 10'000},
        {tSystemTime(1601, 1, 2), uiTicksPerDay},
        {tSystemTime(30827, 12, 31, 23, 59, 59, 999), 9'223'149'887'999'990'000},
        {tSystemTime(1600, 12, 31), 0},
        {tSystemTime(30828, 1, 1), 0}, // Wine 8 takes it
        {tSystemTime(65535, 1, 1), 0},
        {tSystemTime(0, 1, 1), 0},
        {tSystemTime(2024, 0, 1), 0},
        {tSystemTime(2024, 13, 1), 0},
        {tSystemTime(2024, 65535, 1), 0},
        {tSystemTime(2024, 1, 0), 0},
        {tSystemTime(2024, 1, 32), 0},
        {tSystemTime(2024, 2, 29), 133'536'384'000'000'000},
        {tSystemTime(2024, 2, 30), 0},
        {tSystemTime(2023, 2, 29), 0}, // Wine 8 takes it
        {tSystemTime(1900, 2, 29), 0},
        {tSystemTime(2000, 2, 29), 125'962'560'000'000'000},
        {tSystemTime(2024, 4, 31), 0},
        {tSystemTime(2024, 1, 1, 24), 0},
        {tSystemTime(2024, 1, 1, 0, 60), 0},
        {tSystemTime(2024, 1, 1, 0, 0, 60), 0},
        {tSystemTime(2024, 1, 1, 0, 0, 0, 1000), 0},
        {{2024, 1, 77, 15, 8, 30, 0, 0}, ui2024}, // the day of the week is not looked at
    };
    for (auto const & tRow : atRows) {
        SYSTEMTIME const & t = tRow.tTime;
        EXPECT_EQ(uiTicks(TZkDateTime(t)), tRow.uiExpected) << t.wYear << '-' << t.wMonth << '-' << t.wDay;
        if (t.wMilliseconds == 0) {
            EXPECT_EQ(uiTicks(TZkDateTime(TStructTm(t))), tRow.uiExpected)
                << t.wYear << '-' << t.wMonth << '-' << t.wDay;
        }
    }
    EXPECT_TRUE(TZkDateTime(TStructTm()).fIsZero());
    EXPECT_TRUE(TZkDateTime(tFields(1600, 12, 31)).fIsZero());
    EXPECT_EQ(uiTicks(TZkDateTime(tFields(2024 + 65536, 1, 15, 8, 30))), ui2024); // cut to 16 bits
}

/// Every day of the scale in turn.
TEST(TZkDateTime, CountsTheDaysOfTheCalendar) {
    std::array<int, 13> aiDays{0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    unsigned __int64 uiDay = 0;
    for (int iYear = 1601; iYear <= 30827; ++iYear) {
        if (iYear == 2801) { // the cycle of 400 years is well known by now
            uiDay += 146'097ull * 69;
            iYear += 400 * 69;
        }
        aiDays[2] = fLeapYear(iYear) ? 29 : 28;
        for (int iMonth = 1; iMonth <= 12; ++iMonth) {
            for (int iDay = 1; iDay <= aiDays[static_cast<std::size_t>(iMonth)]; ++iDay, ++uiDay) {
                SYSTEMTIME tExpected = tSystemTime(iYear, iMonth, iDay, 23, 59, 59, 999);
                unsigned __int64 const uiExpected = (uiDay + 1) * uiTicksPerDay - 10'000;
                ASSERT_EQ(uiTicks(TZkDateTime(tExpected)), uiExpected) << iYear << '-' << iMonth << '-' << iDay;
                tExpected.wDayOfWeek = static_cast<WORD>((uiDay + 1) % 7);
                SYSTEMTIME const tBack = tOfTicks(uiExpected + 9'999);
                ASSERT_TRUE(fSame(tBack, tExpected)) << iYear << '-' << iMonth << '-' << iDay;
            }
        }
    }
    EXPECT_EQ(uiDay, 10'674'942u);
}

TEST(TZkDateTime, AgreesWithThePlatformAboutFields) {
    std::mt19937 tRandom(11);
    int iGood = 0;
    for (int i = 0; i < 200'000; ++i) {
        auto const iUpTo = [&](unsigned int u) { return static_cast<int>(tRandom() % (u + 1)); };
        SYSTEMTIME const tTime =
            tSystemTime(1590 + iUpTo(29'300), iUpTo(13), iUpTo(32), iUpTo(24), iUpTo(60), iUpTo(60), iUpTo(1000));
        unsigned __int64 const uiExpected = uiPlatformTicks(tTime);
        ASSERT_EQ(uiTicks(TZkDateTime(tTime)), uiExpected) << tTime.wYear << '-' << tTime.wMonth << '-' << tTime.wDay;
        iGood += uiExpected != 0;
    }
    EXPECT_GT(iGood, 100'000);
}

TEST(TZkDateTime, AgreesWithThePlatformAboutTicks) {
    std::mt19937_64 tRandom(12);
    for (int i = 0; i < 200'000; ++i) {
        FILETIME const tTime = tFileTime(tRandom() >> 1);
        SYSTEMTIME tExpected{};
        ASSERT_TRUE(FileTimeToSystemTime(&tTime, &tExpected));
        SYSTEMTIME const tResult = TZkDateTime(tTime);
        ASSERT_TRUE(fSame(tResult, tExpected)) << uiTicks(tTime);
    }
}

TEST(TZkDateTime, TicksWithTheTopBitHaveNoFields) {
    for (unsigned __int64 const ui : {uiFirstWithoutDate, ~0ull}) {
        SYSTEMTIME const tTime = tOfTicks(ui);
        EXPECT_TRUE(fSame(tTime, {}));
        tm const tResult = tOfTicks(ui);
        EXPECT_EQ(tResult.tm_year, -1900);
        EXPECT_EQ(tResult.tm_mon, -1);
        EXPECT_EQ(tResult.tm_mday, 0);
        FILETIME const tBack = tOfTicks(ui);
        EXPECT_EQ(uiTicks(tBack), ui);
    }
    SYSTEMTIME const tLast = tOfTicks(uiFirstWithoutDate - 1);
    EXPECT_TRUE(fSame(tLast, {30828, 9, 4, 14, 2, 48, 5, 477}));
    EXPECT_EQ(tOfTicks(uiFirstWithoutDate).sGetString(edtDateTime, true), L"0000-00-00T00:00:00.4775808");
    EXPECT_EQ(tOfTicks(uiFirstWithoutDate).sGetViewString(edtDate, edfIso, nullptr, etfIso, nullptr), L"");
}

TEST(TZkDateTime, BecomesATmWithTheDayOfTheWeek) {
    tm const tTime = tOfTicks(ui2024 + 9'999'999);
    tm tExpected = tFields(2024, 1, 15, 8, 30);
    tExpected.tm_wday = 1;
    EXPECT_EQ(std::memcmp(&tTime, &tExpected, sizeof tTime), 0);
}

// Reading

TEST(TZkDateTimeSplit, TellsDateAndTime) {
    struct {
        std::wstring_view sText;
        std::optional<std::wstring_view> psDate, psTime;
    } const atRows[] = {
        {L"2024-01-15T08:30:00", L"2024-01-15", L"08:30:00"},
        {L"T", L"", L""},
        {L"2024-01-15T", L"2024-01-15", L""},
        {L"T08:30", L"", L"08:30"},
        {L"aTbTc", L"a", L"bTc"},
        {L"2024-01-15", L"2024-01-15", std::nullopt},
        {L"-", L"-", std::nullopt},
        {L"2024-01-15 08:30", L"2024-01-15 08:30", std::nullopt}, // a hyphen comes before a colon
        {L"08:30-1", L"08:30-1", std::nullopt},
        {L"2024-01-15t08:30", L"2024-01-15t08:30", std::nullopt},
        {L"08:30:00", std::nullopt, L"08:30:00"},
        {L":", std::nullopt, L":"},
        {L"2024", std::nullopt, std::nullopt},
        {L"", std::nullopt, std::nullopt},
    };
    for (auto const & tRow : atRows) {
        auto const [psDate, psTime] = TZkDateTime::splitDateTime(tRow.sText);
        EXPECT_EQ(psDate, tRow.psDate) << PrintToString(wstring(tRow.sText));
        EXPECT_EQ(psTime, tRow.psTime) << PrintToString(wstring(tRow.sText));
        if (psDate) {
            EXPECT_EQ(psDate->data(), tRow.sText.data()); // a view of the text itself
        }
    }
    EXPECT_EQ(TZkDateTime::splitDateTime(std::wstring_view(L"12T", 2)).first, std::nullopt);
}

namespace {

constexpr std::array<std::pair<std::wstring_view, unsigned __int64>, 34> atReadable{{
    {L"2024-01-15T08:30:00", ui2024},
    {L"2024-01-15T08:30", ui2024},
    {L"2024-01-15T08", ui2024 - 18'000'000'000},
    {L"2024-01-15T", ui2024 - 306'000'000'000},
    {L"2024-01-15", ui2024 - 306'000'000'000},
    {L"2024-1-15T8:30:0", ui2024},
    {L"02024-001-015T008:030:000", ui2024},
    {L" 2024- 1-\t15T +8:\n30: 0", ui2024},
    {L"+2024-+1-+15T+8:+30:+0", ui2024},
    {L"2024-01-15T08:30:00.5", ui2024 + 5},
    {L"2024-01-15T08:30:00,5", ui2024 + 5},
    {L"2024-01-15T08:30:00.0000005", ui2024 + 5},
    {L"2024-01-15T08:30:00.50", ui2024 + 50},
    {L"2024-01-15T08:30:00.1234567", ui2024 + 1'234'567},
    {L"2024-01-15T08:30:00.", ui2024},
    {L"2024-01-15T08:30:00.0", ui2024},
    {L"2024-01-15T08:30:00.-5", ui2024},
    {L"2024-01-15T08:30:00.5.7", ui2024 + 5},
    {L"2024-01-15T08:30:00.9999999999", ui2024 + 2'147'483'647}, // beyond an int: the largest one
    {L"2024-01-15T08:30:00Z", ui2024},
    {L"2024-01-15T08:30:00+01:00", ui2024},
    {L"2024-01-15T08:30:00-05:00", ui2024},
    {L"2024-01-15T08:30:00.5Z", ui2024 + 5},
    {L"2024-01-15+01:00", ui2024 - 306'000'000'000},
    {L"2024-01-15-16", ui2024 - 306'000'000'000},       // behind the second hyphen all is the day
    {L"2024-01-15t08:30:00", ui2024 - 306'000'000'000}, // and so it is here
    {L"2024-01-15T08:30:00T17", ui2024},                // the first T counts
    {L"2024-01-15T08:30.5:00", ui2024},                 // no fraction of a minute
    {L"2024-01-15T08:30:00:17", ui2024},                //
    {L"67560-65537-65551T65544:65566:65536", ui2024},   // fields of 16 bits
    {L"2024x-01y-15zT08a:30b:00c", ui2024},             //
    {L"1601-01-01", 0},                                 // the zero value
    {L"1601-01-01T00:00:00.1", 1},                      //
    {L"30827-12-31T23:59:59.9999999", 9'223'149'887'999'999'999ull},
}};

constexpr std::array<std::wstring_view, 31> asUnreadable{
    L"",
    L"2024",
    L"2024-01",
    L"08:30:00",
    L"T08:30:00",
    L"T",
    L"abc",
    L"20240115",
    L"20240115T083000",
    L"2024-02-30",
    L"2023-02-29",
    L"2024-00-15",
    L"2024-13-15",
    L"2024-01-00",
    L"2024-01-32",
    L"2024-01-",
    L"2024--15",
    L"-2024-01-15",
    L"--",
    L"1600-12-31",
    L"30828-01-01",
    L"0-1-1",
    L"99999999999-01-15",
    L"2024-01-15T24:00:00",
    L"2024-01-15T08:60",
    L"2024-01-15T08:30:60",
    L"2024-01-15T-1",
    L"2024-01-15T08:-1",
    L"2024-01-15T99999999999",
    L"2024-01-15T083000",
    L"x2024-01-15",
};

} // namespace

TEST(TZkDateTimeRead, TakesTheFixedTextTolerantly) {
    for (auto const & [sText, uiExpected] : atReadable) {
        EXPECT_EQ(uiTicks(TZkDateTime::xCreate(sText)), uiExpected) << PrintToString(wstring(sText));
        auto const ptTime = TZkDateTime::create(sText);
        ASSERT_TRUE(ptTime) << PrintToString(wstring(sText));
        EXPECT_EQ(uiTicks(*ptTime), uiExpected);
        EXPECT_EQ(uiTicks(TZkDateTime(sText)), uiExpected);
    }
}

TEST(TZkDateTimeRead, RefusesWhatIsNoDate) {
    for (std::wstring_view const sText : asUnreadable) {
        EXPECT_EQ(sThrown([&] { static_cast<void>(TZkDateTime::xCreate(sText)); }), sInvalid(sText));
        EXPECT_EQ(TZkDateTime::create(sText), std::nullopt) << PrintToString(wstring(sText));
        EXPECT_TRUE(TZkDateTime(sText).fIsZero()) << PrintToString(wstring(sText));
    }
}

TEST(TZkDateTimeRead, TellsTheWholeTextLiterally) {
    for (wstring const & sText : {L"100%s %n %d"s, L"2024-99-%sT%n"s, wstring(100'000, L'-'), L"\u00E4\u20AC"s})
        EXPECT_EQ(sThrown([&] { static_cast<void>(TZkDateTime::xCreate(sText)); }), sInvalid(sText));
    // A view ends where it ends.
    EXPECT_EQ(sThrown([] { static_cast<void>(TZkDateTime::xCreate(L"2024-01-00T08:30"sv.substr(0, 13))); }),
              sInvalid(L"2024-01-00T08"));
    EXPECT_EQ(sThrown([] { static_cast<void>(TZkDateTime::xCreate(L"12345"sv.substr(0, 2))); }), sInvalid(L"12"));
}

TEST(TZkDateTimeRead, TakesPartsThatWereSplitBefore) {
    struct {
        TParts sParts;
        unsigned __int64 uiExpected;
    } const atRows[] = {
        {{L"2024-01-15", L"08:30:00"}, ui2024},
        {{L"2024-01-15", L""}, ui2024 - 306'000'000'000},
        {{L"2024-01-15", std::nullopt}, ui2024 - 306'000'000'000},
        {{L"2024-01-15T99", L"08:30"}, ui2024}, // a T in a date is a character like any other
    };
    for (auto const & tRow : atRows) {
        EXPECT_EQ(uiTicks(TZkDateTime::xCreate(tRow.sParts)), tRow.uiExpected);
        ASSERT_TRUE(TZkDateTime::create(tRow.sParts));
        EXPECT_EQ(uiTicks(*TZkDateTime::create(tRow.sParts)), tRow.uiExpected);
    }
}

TEST(TZkDateTimeRead, PutsBadPartsTogetherInItsFailure) {
    struct {
        TParts sParts;
        wchar_t const * pzExpected;
    } const atRows[] = {
        {{L"2024-01-32", std::nullopt}, L"2024-01-32"},
        {{L"2024-01-32", L""}, L"2024-01-32T"},
        {{L"2024-01-15", L"24%s"}, L"2024-01-15T24%s"},
        {{L"", std::nullopt}, L""},
        {{std::wstring_view(L"2024-01-32x", 10), std::wstring_view(L"08:30", 2)}, L"2024-01-32T08"},
    };
    for (auto const & tRow : atRows) {
        EXPECT_EQ(sThrown([&] { static_cast<void>(TZkDateTime::xCreate(tRow.sParts)); }), sInvalid(tRow.pzExpected));
        EXPECT_EQ(TZkDateTime::create(tRow.sParts), std::nullopt);
    }
    // Through a whole text it is the same.
    EXPECT_EQ(sThrown([] { static_cast<void>(TZkDateTime::xCreate(L"2024-01-32T")); }), sInvalid(L"2024-01-32T"));
}

TEST(TZkDateTimeRead, StaysWithinTheView) {
    // What stands behind the view would change every field.
    wstring const sText = L"2024-01-15T08:30:00.5";
    for (auto const & [uLength, uiExpected] : std::initializer_list<std::pair<std::size_t, unsigned __int64>>{
             {9, ui2024 - 306'000'000'000 - 14 * uiTicksPerDay},
             {10, ui2024 - 306'000'000'000},
             {12, ui2024 - 306'000'000'000},
             {13, ui2024 - 18'000'000'000},
             {15, ui2024 - 16'200'000'000},
         }) {
        auto const pCopy = std::make_unique<wchar_t[]>(uLength); // ends with the text
        std::copy_n(sText.data(), uLength, pCopy.get());
        auto const ptTime = TZkDateTime::create(std::wstring_view(pCopy.get(), uLength));
        ASSERT_TRUE(ptTime) << uLength;
        EXPECT_EQ(uiTicks(*ptTime), uiExpected) << uLength;
    }
}

TEST(TZkDateTimeRead, ANullCharacterEndsAField) {
    EXPECT_EQ(uiTicks(TZkDateTime(L"2024\0009-01\0-15T08:30\0:00"sv)), ui2024);
}

TEST(TZkDateTimeRead, TakesFieldsOfAMillionDigits) {
    wstring const sZeros(1'000'000, L'0');
    EXPECT_EQ(uiTicks(TZkDateTime(sZeros + L"2024-01-15T08:30:00." + sZeros + L"5")), ui2024 + 5);
    EXPECT_TRUE(TZkDateTime(wstring(1'000'000, L'9') + L"-01-15").fIsZero());
    EXPECT_TRUE(TZkDateTime(wstring(1'000'000, L' ')).fIsZero());
}

namespace {

/// The reader over strings, the run-time's `_wtoi` and the platform's calendar.
std::optional<unsigned __int64> puiReadPlainly(wstring const & sText) {
    std::size_t const uTime = sText.find(L'T');
    if (uTime == wstring::npos && sText.find(L'-') == wstring::npos) return std::nullopt;
    auto const Cut = [](wstring const & s, wchar_t c, std::size_t uMost) {
        std::vector<wstring> sPieces{L""};
        for (wchar_t const cNext : s) {
            if (cNext == c && sPieces.size() < uMost) {
                sPieces.emplace_back();
            } else {
                sPieces.back() += cNext;
            }
        }
        sPieces.resize(uMost);
        return sPieces;
    };
    auto const sDate = Cut(sText.substr(0, uTime), L'-', 3);
    auto const sTime = Cut(uTime == wstring::npos ? L"" : sText.substr(uTime + 1), L':', 3);
    std::size_t const uPoint = sTime[2].find_first_of(L".,");
    SYSTEMTIME const tTime =
        tSystemTime(_wtoi(sDate[0].c_str()), _wtoi(sDate[1].c_str()), _wtoi(sDate[2].c_str()), _wtoi(sTime[0].c_str()),
                    _wtoi(sTime[1].c_str()), _wtoi(sTime[2].substr(0, uPoint).c_str()));
    unsigned __int64 uiResult = uiPlatformTicks(tTime);
    if (uiResult == 0 && !fSame(tTime, tSystemTime(1601, 1, 1))) return std::nullopt;
    int const iTicks = uPoint == wstring::npos ? 0 : _wtoi(sTime[2].substr(uPoint + 1).c_str());
    return uiResult + static_cast<unsigned int>(std::max(iTicks, 0));
}

void ExpectReadPlainly(wstring const & sText) {
    std::optional<unsigned __int64> const puiExpected = puiReadPlainly(sText);
    std::optional<TZkDateTime> const ptTime = TZkDateTime::create(sText);
    ASSERT_EQ(ptTime.has_value(), puiExpected.has_value()) << PrintToString(sText);
    if (ptTime) {
        ASSERT_EQ(uiTicks(*ptTime), *puiExpected) << PrintToString(sText);
    }
}

} // namespace

TEST(TZkDateTimeRead, ReadsRandomTextAsThePlainReaderDoes) {
    std::mt19937 tRandom(13);
    for (int i = 0; i < 100'000; ++i)
        ExpectReadPlainly(sRandom(tRandom, L"0126--::TT.,+ \tx\u00A0\u0661\uFF11", 20));
}

TEST(TZkDateTimeRead, ReadsChangedDatesAsThePlainReaderDoes) {
    std::mt19937 tRandom(14);
    constexpr std::wstring_view sCharacters = L"0123456789-:T.,+ Z\u00A0\u0662\uFF15\u0966";
    int iGood = 0;
    for (int i = 0; i < 100'000; ++i) {
        wstring sText = L"2024-01-15T08:30:00.5";
        for (unsigned int uChanges = tRandom() % 4; uChanges != 0; --uChanges) {
            std::size_t const u = tRandom() % sText.size();
            wchar_t const c = sCharacters[tRandom() % sCharacters.size()];
            switch (tRandom() % 3) {
            case 0:
                sText[u] = c;
                break;
            case 1:
                sText.insert(u, 1, c);
                break;
            default:
                sText.erase(u, 1);
                break;
            }
        }
        ExpectReadPlainly(sText);
        iGood += TZkDateTime::create(sText).has_value();
    }
    EXPECT_GT(iGood, 30'000);
}

// The fixed text

TEST(TZkDateTimePrint, PadsTheFieldsAndNotTheTicks) {
    struct {
        unsigned __int64 ui;
        EDateTime eParts;
        bool fFraction;
        wchar_t const * pzExpected;
    } const atRows[] = {
        {ui2024, edtDateTime, false, L"2024-01-15T08:30:00"},
        {ui2024, edtDateTime, true, L"2024-01-15T08:30:00"},
        {ui2024, edtDate, true, L"2024-01-15"},
        {ui2024, edtTime, true, L"08:30:00"},
        {ui2024, edtDate | edtTime, false, L"2024-01-15T08:30:00"},
        {ui2024, static_cast<EDateTime>(0), true, L""},
        {ui2024, static_cast<EDateTime>(4), true, L""},
        {ui2024, static_cast<EDateTime>(7), true, L"2024-01-15T08:30:00"},
        {ui2024 + 5, edtDateTime, true, L"2024-01-15T08:30:00.5"},
        {ui2024 + 5, edtDateTime, false, L"2024-01-15T08:30:00"},
        {ui2024 + 5, edtTime, true, L"08:30:00.5"},
        {ui2024 + 5, edtDate, true, L"2024-01-15"},
        {ui2024 + 9'999'999, edtTime, true, L"08:30:00.9999999"},
        {ui2024 + 10'000'000, edtTime, true, L"08:30:01"},
        {ui2024 + 1'000'000, edtTime, true, L"08:30:00.1000000"},
        {0, edtDateTime, true, L"1601-01-01T00:00:00"},
        {1, edtDateTime, true, L"1601-01-01T00:00:00.1"},
        {9'223'149'887'999'999'999ull, edtDateTime, true, L"30827-12-31T23:59:59.9999999"},
    };
    for (auto const & tRow : atRows)
        EXPECT_EQ(tOfTicks(tRow.ui).sGetString(tRow.eParts, tRow.fFraction), tRow.pzExpected);
}

TEST(TZkDateTimePrint, ComesBackTickByTick) {
    std::mt19937_64 tRandom(15);
    for (int i = 0; i < 100'000; ++i) {
        unsigned __int64 const ui = tRandom() % 9'223'149'888'000'000'000ull;
        wstring const sText = tOfTicks(ui).sGetString(edtDateTime, true);
        ASSERT_EQ(uiTicks(TZkDateTime::xCreate(sText)), ui) << PrintToString(sText);
        SYSTEMTIME const t = tOfTicks(ui);
        std::array<wchar_t, 64> acExpected{};
        int const iTicks = static_cast<int>(ui % 10'000'000);
        _snwprintf(acExpected.data(), acExpected.size(),
                   iTicks > 0 ? L"%04u-%02u-%02uT%02u:%02u:%02u.%d" : L"%04u-%02u-%02uT%02u:%02u:%02u", t.wYear,
                   t.wMonth, t.wDay, t.wHour, t.wMinute, t.wSecond, iTicks);
        ASSERT_EQ(sText, acExpected.data());
    }
}

// Spans

TEST(TZkDateTimeSpan, CountsTheBordersBetweenUnits) {
    using TDate = TZkDateTime;
    struct {
        wchar_t const * pzThis;
        wchar_t const * pzOther;
        TDate::EDatePart ePart;
        __int64 iExpected;
    } const atRows[] = {
        {L"2024-01-15T00:00:00", L"2024-01-14T23:59:59", TDate::edpDay, 1},
        {L"2024-01-14T23:59:59", L"2024-01-15T00:00:00", TDate::edpDay, -1},
        {L"2024-01-15T23:30:00", L"2024-01-15T00:30:00", TDate::edpDay, 0},
        {L"2024-01-15", L"2024-01-14", TDate::edpWeek, 1}, // Monday and Sunday
        {L"2024-01-21", L"2024-01-15", TDate::edpWeek, 0},
        {L"2024-03-01", L"2023-03-01", TDate::edpDay, 366},
        {L"2024-01-15T09:00", L"2024-01-15T08:59:59", TDate::edpHour, 1},
        {L"2024-01-15T08:59:59", L"2024-01-15T08:00", TDate::edpHour, 0},
        {L"2024-01-15T08:31", L"2024-01-15T08:30:59", TDate::edpMinute, 1},
        {L"2024-01-15T08:30:01", L"2024-01-15T08:30:00.9999999", TDate::edpSecond, 1},
        {L"2024-01-15T08:30:00.9999999", L"2024-01-15T08:30:00", TDate::edpSecond, 0},
        {L"2024-01-15T08:30:00.10000", L"2024-01-15T08:30:00.9999", TDate::edpMillisecond, 1},
        {L"2024-01-15T08:30:00.9999", L"2024-01-15T08:30:00", TDate::edpMillisecond, 0},
        {L"2024-01-15T08:30:01", L"2024-01-15T08:30:00", TDate::edpTick, 10'000'000},
    };
    for (auto const & tRow : atRows) {
        TDate const tThis = TDate::xCreate(tRow.pzThis);
        TDate const tOther = TDate::xCreate(tRow.pzOther);
        EXPECT_EQ(tThis.iGetTimeSpan(tRow.ePart, tOther), tRow.iExpected) << PrintToString(tRow.pzThis);
        int const iSign = (tRow.iExpected > 0) - (tRow.iExpected < 0);
        EXPECT_EQ(tThis.iCompare(tOther, tRow.ePart), iSign);
        EXPECT_EQ(TDate::iCompare(tThis, tOther, tRow.ePart), iSign);
        EXPECT_EQ(TDate::iCompare(tOther, tThis, tRow.ePart), -iSign);
    }
}

TEST(TZkDateTimeSpan, DividesTheTicksByTheUnit) {
    struct {
        TZkDateTime::EDatePart ePart;
        unsigned __int64 uiTicksPerUnit;
    } const atRows[] = {
        {TZkDateTime::edpWeek, 6'048'000'000'000},
        {TZkDateTime::edpDay, 864'000'000'000},
        {TZkDateTime::edpHour, 36'000'000'000},
        {TZkDateTime::edpMinute, 600'000'000},
        {TZkDateTime::edpSecond, 10'000'000},
        {TZkDateTime::edpMillisecond, 10'000},
        {TZkDateTime::edpTick, 1},
    };
    for (auto const & tRow : atRows) {
        EXPECT_EQ(tOfTicks(tRow.uiTicksPerUnit * 7).iGetTimeInUnit(tRow.ePart), 7u);
        EXPECT_EQ(tOfTicks(tRow.uiTicksPerUnit * 7 - 1).iGetTimeInUnit(tRow.ePart), 6u);
        EXPECT_EQ(tOfTicks(~0ull).iGetTimeInUnit(tRow.ePart), ~0ull / tRow.uiTicksPerUnit);
    }
}

TEST(TZkDateTimeSpan, TheDifferenceOfTicksHasASign) {
    EXPECT_EQ(tOfTicks(~0ull).iGetTimeSpan(TZkDateTime::edpTick, tOfTicks(0)), -1);
    EXPECT_EQ(tOfTicks(~0ull).iCompare(tOfTicks(0), TZkDateTime::edpTick), -1);
    EXPECT_EQ(tOfTicks(~0ull).iCompare(tOfTicks(0), TZkDateTime::edpMillisecond), 1);
}

// For the user

namespace {

using TDateFormat = TSystemCall<"GetDateFormatW", decltype(GetDateFormatW)>;
using TTimeFormat = TSystemCall<"GetTimeFormatW", decltype(GetTimeFormatW)>;

/// The platform's texts of 2024-01-15T08:30:59.
wstring sPlatformDate(LCID lcid, DWORD dwFlags, wchar_t const * pzPicture) {
    SYSTEMTIME const tTime = tSystemTime(2024, 1, 15, 8, 30, 59);
    std::array<wchar_t, 200> acText{};
    GetDateFormatW(lcid, dwFlags, &tTime, pzPicture, acText.data(), 200);
    return acText.data();
}

wstring sPlatformTime(LCID lcid, DWORD dwFlags, wchar_t const * pzPicture) {
    SYSTEMTIME const tTime = tSystemTime(2024, 1, 15, 8, 30, 59);
    std::array<wchar_t, 200> acText{};
    GetTimeFormatW(lcid, dwFlags, &tTime, pzPicture, acText.data(), 200);
    return acText.data();
}

TZkDateTime const tMoment(L"2024-01-15T08:30:59"sv);

} // namespace

TEST(TZkDateTimeView, HasTheseDateFormats) {
    struct {
        int iFormat;
        wstring sExpected;
    } const atRows[] = {
        {edfShort, sPlatformDate(LOCALE_USER_DEFAULT, 0, nullptr)},
        {edfLong, sPlatformDate(LOCALE_USER_DEFAULT, DATE_LONGDATE, nullptr)},
        {edfCompact, L"20240115"},
        {edfIso, L"2024-01-15"},
        {edfCompactMonth, L"202401"},
        {edfIsoMonth, L"2024-01"},
        {edfCustom, L"15/1/24"},
        {7, sPlatformDate(LOCALE_USER_DEFAULT, 0, nullptr)},
        {-1, sPlatformDate(LOCALE_USER_DEFAULT, 0, nullptr)},
    };
    wchar_t const * const pzPicture = L"d'/'M'/'yy";
    for (auto const & [iFormat, sExpected] : atRows) {
        auto const eFormat = static_cast<EDateFormat>(iFormat);
        EXPECT_EQ(tMoment.sGetViewDateString(eFormat, pzPicture), sExpected) << iFormat;
        EXPECT_EQ(tMoment.sGetViewString(edtDate, eFormat, pzPicture, etfIso, nullptr), sExpected) << iFormat;
        EXPECT_EQ(sFormatDate(tFields(2024, 1, 15, 8, 30, 59), eFormat, pzPicture), sExpected) << iFormat;
    }
    EXPECT_EQ(tMoment.sGetViewDateString(edfCustom, nullptr), tMoment.sGetViewDateString(edfShort, nullptr));
    EXPECT_NE(tMoment.sGetViewDateString(edfLong, nullptr), tMoment.sGetViewDateString(edfShort, nullptr));
}

TEST(TZkDateTimeView, HasTheseTimeFormats) {
    struct {
        int iFormat;
        wstring sExpected;
    } const atRows[] = {
        {etfDefault, sPlatformTime(LOCALE_USER_DEFAULT, 0, nullptr)},
        {etfNoSeconds, sPlatformTime(LOCALE_USER_DEFAULT, TIME_NOSECONDS, nullptr)},
        {etfHoursOnly, sPlatformTime(LOCALE_USER_DEFAULT, TIME_NOMINUTESORSECONDS, nullptr)},
        {etfCompact, L"083059"},
        {etfCompactNoSeconds, L"0830"},
        {etfCompactHours, L"08"},
        {etfIso, L"08:30:59"},
        {etfIsoNoSeconds, L"08:30"},
        {etfCustom, L"8h30"},
        {9, sPlatformTime(LOCALE_USER_DEFAULT, 0, nullptr)},
        {-1, sPlatformTime(LOCALE_USER_DEFAULT, 0, nullptr)},
    };
    wchar_t const * const pzPicture = L"H'h'mm";
    for (auto const & [iFormat, sExpected] : atRows) {
        auto const eFormat = static_cast<ETimeFormat>(iFormat);
        EXPECT_EQ(tMoment.sGetViewTimeString(eFormat, pzPicture), sExpected) << iFormat;
        EXPECT_EQ(tMoment.sGetViewString(edtTime, edfIso, nullptr, eFormat, pzPicture), sExpected) << iFormat;
        EXPECT_EQ(sFormatTime(tFields(2024, 1, 15, 8, 30, 59), eFormat, pzPicture), sExpected) << iFormat;
    }
    EXPECT_EQ(tMoment.sGetViewTimeString(etfCustom, nullptr), tMoment.sGetViewTimeString(etfDefault, nullptr));
}

TEST(TZkDateTimeView, SeparatesTwoOfTheFormatsByT) {
    for (int i = -1; i <= 7; ++i) {
        auto const eFormat = static_cast<EDateFormat>(i);
        wstring const sSeparator = i == edfCompact || i == edfIso ? L"T" : L" ";
        EXPECT_EQ(tMoment.sGetViewString(edtDateTime, eFormat, L"yy", etfCompact, nullptr),
                  tMoment.sGetViewDateString(eFormat, L"yy") + sSeparator + L"083059");
    }
    EXPECT_EQ(tMoment.sGetViewString(edtDateTime, edfIso, nullptr, etfIso, nullptr), L"2024-01-15T08:30:59");
    EXPECT_EQ(tMoment.sGetViewString(edtDateTime, edfIsoMonth, nullptr, etfCompactHours, nullptr), L"2024-01 08");
    EXPECT_EQ(tMoment.sGetViewString(static_cast<EDateTime>(4), edfIso, nullptr, etfIso, nullptr), L"");
}

TEST(TZkDateTimeView, IsEmptyForZero) {
    EXPECT_EQ(TZkDateTime().sGetViewString(edtDateTime, edfIso, nullptr, etfIso, nullptr), L"");
    EXPECT_EQ(TZkDateTime(L"1601-01-01"sv).sGetViewDateString(edfIso, nullptr), L"");
    EXPECT_EQ(sFormatDate(tm{}, edfIso, nullptr), L"");
    EXPECT_EQ(sFormatTime(tm{}, etfIso, nullptr), L"");
    EXPECT_EQ(tOfTicks(1).sGetViewString(edtDateTime, edfIso, nullptr, etfIso, nullptr), L"1601-01-01T00:00:00");
}

TEST(TZkDateTimeView, AsksTheSystemForTheUsersLocale) {
    SYSTEMTIME const tExpected{2024, 1, 1, 15, 8, 30, 59, 0};
    auto const Answer = [&](LCID lcid, SYSTEMTIME const * pTime, wchar_t * pzTarget, int iSize,
                            wchar_t const * pzText) {
        EXPECT_EQ(lcid, 1024u);
        EXPECT_TRUE(fSame(*pTime, tExpected));
        int const iNeeded = static_cast<int>(std::wcslen(pzText)) + 1;
        if (pzTarget == nullptr) {
            EXPECT_EQ(iSize, 0);
        } else {
            EXPECT_EQ(iSize, iNeeded);
            std::wcscpy(pzTarget, pzText);
        }
        return iNeeded;
    };
    wchar_t const * pzDate = L"the date, longer than it would be in a short string";
    wchar_t const * pzTime = L"t";
    TDateFormat const tDate(
        [&](LCID lcid, DWORD dwFlags, SYSTEMTIME const * pTime, LPCWSTR pzPicture, LPWSTR pzTarget, int iSize) {
            EXPECT_EQ(dwFlags, static_cast<DWORD>(DATE_LONGDATE));
            EXPECT_EQ(pzPicture, nullptr);
            return Answer(lcid, pTime, pzTarget, iSize, pzDate);
        });
    TTimeFormat const tTime(
        [&](LCID lcid, DWORD dwFlags, SYSTEMTIME const * pTime, LPCWSTR pzPicture, LPWSTR pzTarget, int iSize) {
            EXPECT_EQ(dwFlags, 0u);
            EXPECT_STREQ(pzPicture, L"custom");
            return Answer(lcid, pTime, pzTarget, iSize, pzTime);
        });
    auto const sView = [] { return tMoment.sGetViewString(edtDateTime, edfLong, L"unused", etfCustom, L"custom"); };
    EXPECT_EQ(sView(), wstring(pzDate) + L" t");
    EXPECT_EQ(tDate.iGetCalls(), 2);
    EXPECT_EQ(tTime.iGetCalls(), 2);
    pzTime = L"";
    EXPECT_EQ(sView(), wstring(pzDate) + L" ");
    EXPECT_EQ(tTime.iGetCalls(), 3); // a size of 1 is the empty text already
}

// Flags beside a picture make the system refuse.
TEST(TZkDateTimeView, AsksWithFlagsOrAPictureNeverWithBoth) {
    DWORD dwAsked = 0;
    TDateFormat const tDate([&](LCID, DWORD dwFlags, SYSTEMTIME const *, LPCWSTR pzPicture, LPWSTR, int) {
        dwAsked = dwFlags;
        EXPECT_TRUE(dwFlags == 0 || pzPicture == nullptr);
        return 0;
    });
    TTimeFormat const tTime([&](LCID, DWORD dwFlags, SYSTEMTIME const *, LPCWSTR pzPicture, LPWSTR, int) {
        dwAsked = dwFlags;
        EXPECT_TRUE(dwFlags == 0 || pzPicture == nullptr);
        return 0;
    });
    for (int i = -1; i <= 9; ++i) {
        static_cast<void>(tMoment.sGetViewDateString(static_cast<EDateFormat>(i), L"yy"));
        EXPECT_EQ(dwAsked, i == edfLong ? 2u : 0u) << i;
        static_cast<void>(tMoment.sGetViewTimeString(static_cast<ETimeFormat>(i), L"HH"));
        EXPECT_EQ(dwAsked, i == etfNoSeconds ? 2u : i == etfHoursOnly ? 1u : 0u) << i;
    }
}

TEST(TZkDateTimeView, APartThatTheSystemRefusesIsEmpty) {
    TDateFormat const tDate([](auto...) { return 0; });
    EXPECT_EQ(tMoment.sGetViewString(edtDateTime, edfIso, nullptr, etfIso, nullptr), L"T08:30:59");
    EXPECT_EQ(tMoment.sGetViewDateString(edfIso, nullptr), L"");
    EXPECT_EQ(sFormatDate(1033, tSystemTime(2024, 1, 15)), L"");
}

TEST(SFormatCurrent, IsTheLocalClock) {
    auto const sClock = [](wchar_t const * pzFormat) {
        __time64_t const iNow = _time64(nullptr);
        std::array<wchar_t, 32> acText{};
        std::wcsftime(acText.data(), acText.size(), pzFormat, _localtime64(&iNow));
        return wstring(acText.data());
    };
    for (bool fStood = false; !fStood;) { // the clock may move on in between
        wstring const sDate = sClock(L"%Y-%m-%d");
        wstring const sTime = sClock(L"%H:%M:%S");
        wstring const sCurrentDate = sFormatCurrentDate(edfIso, nullptr);
        wstring const sCurrentTime = sFormatCurrentTime(etfIso, nullptr);
        fStood = sTime == sClock(L"%H:%M:%S");
        if (!fStood) continue;
        EXPECT_EQ(sCurrentDate, sDate);
        EXPECT_EQ(sCurrentTime, sTime);
    }
    EXPECT_EQ(sFormatCurrentDate(edfCustom, L"'x'"), L"x");
    EXPECT_EQ(sFormatCurrentTime(etfCustom, L"'y'"), L"y");
}

TEST(SFormatOfLocale, WritesTheShortDateAndTheTime) {
    SYSTEMTIME const tTime = tSystemTime(2024, 1, 15, 8, 30, 59);
    for (unsigned long const lcid : {1024ul, 1031ul, 1033ul, 1041ul}) {
        wstring const sDate = sPlatformDate(lcid, DATE_SHORTDATE, nullptr);
        wstring const sTime = sPlatformTime(lcid, 0, nullptr);
        EXPECT_EQ(sFormatDate(lcid, tTime), sDate);
        EXPECT_EQ(sFormatTime(lcid, tTime), sTime);
        EXPECT_EQ(sFormatDateTime(lcid, tTime), sDate + L" " + sTime);
        EXPECT_FALSE(sDate.empty() || sTime.empty()) << lcid;
    }
    EXPECT_EQ(sFormatDateTime(LOCALE_INVARIANT, tTime), L"01/15/2024 08:30:59");
}

TEST(SFormatOfLocale, IsEmptyWhereTheSystemRefuses) {
    EXPECT_EQ(sFormatDate(1033, tSystemTime(2024, 13, 15)), L"");
    EXPECT_EQ(sFormatTime(1033, tSystemTime(2024, 1, 15, 25)), L"");
    EXPECT_EQ(sFormatDateTime(1033, tSystemTime(2024, 13, 15, 25)), L" ");
    EXPECT_EQ(sFormatDate(0xFFFFF, tSystemTime(2024, 1, 15)), L"");
    TDateFormat const tDate([](LCID, DWORD, SYSTEMTIME const *, LPCWSTR, LPWSTR pzTarget, int) {
        pzTarget[0] = L'x'; // the beginning of a text that is too long
        return 0;
    });
    EXPECT_EQ(sFormatDate(1033, tSystemTime(2024, 1, 15)), L"");
}

TEST(SFormatOfLocale, HasRoomFor49Characters) {
    auto const Answer = [](LPWSTR pzTarget, int iSize) {
        EXPECT_EQ(iSize, 50);
        for (int i = 0; i < iSize; ++i)
            EXPECT_EQ(pzTarget[i], L'\0');
        std::fill_n(pzTarget, 49, L'x');
        return 50;
    };
    TDateFormat const tDate(
        [&](LCID lcid, DWORD dwFlags, SYSTEMTIME const *, LPCWSTR pzPicture, LPWSTR pzTarget, int iSize) {
            EXPECT_EQ(lcid, 1041u);
            EXPECT_EQ(dwFlags, 1u);
            EXPECT_EQ(pzPicture, nullptr);
            return Answer(pzTarget, iSize);
        });
    TTimeFormat const tTime(
        [&](LCID lcid, DWORD dwFlags, SYSTEMTIME const *, LPCWSTR pzPicture, LPWSTR pzTarget, int iSize) {
            EXPECT_EQ(lcid, 1041u);
            EXPECT_EQ(dwFlags, 0u);
            EXPECT_EQ(pzPicture, nullptr);
            return Answer(pzTarget, iSize);
        });
    EXPECT_EQ(sFormatDateTime(1041, {}), wstring(49, L'x') + L" " + wstring(49, L'x'));
}

// The plain date

TEST(PlainDate, IsPrintedWithoutPadding) {
    EXPECT_EQ(sGetDate(tFields(2024, 1, 5)), L"2024-1-5");
    EXPECT_EQ(sGetDate(tFields(2024, 12, 31)), L"2024-12-31");
    EXPECT_EQ(sGetDate(tm{}), L"1900-1-0");
    EXPECT_EQ(sGetDate(tFields(-5, 0, -3)), L"-5-0--3");
    tm tExtreme{};
    tExtreme.tm_year = INT_MAX;
    tExtreme.tm_mon = INT_MAX;
    tExtreme.tm_mday = INT_MIN;
    EXPECT_EQ(sGetDate(tExtreme), L"-2147481749--2147483648--2147483648");
}

TEST(PlainDate, IsReadWithoutChecks) {
    struct {
        wchar_t const * pzText;
        int iYear, iMonth, iDay; // as in a tm
    } const atRows[] = {
        {L"2024-1-5", 124, 0, 5},
        {L"2024-01-05", 124, 0, 5},
        {L" 2024- +1-\t5x", 124, 0, 5},
        {L"2024-1-5-7", 124, 0, 5},
        {L"2024-1-5-7-8-9", 124, 0, 5},
        {L"2024--5", 124, -1, 5},
        {L"2024-1-", 124, 0, 0},
        {L"--", -1900, -1, 0},
        {L"---", -1900, -1, 0},
        {L"-1-2-3", -1900, 0, 2},
        {L"2024-13-99", 124, 12, 99},
        {L"x-y-z", -1900, -1, 0},
        {L"99999999999-1-1", INT_MAX - 1900, 0, 1},
        {L"2024-1-\uFF15", 124, 0, 5}, // as the run-time reads digits of other scripts
        {L"2024-1", 0, 0, 0},
        {L"2024-", 0, 0, 0},
        {L"-", 0, 0, 0},
        {L"2024", 0, 0, 0},
        {L"", 0, 0, 0},
    };
    for (auto const & tRow : atRows) {
        tm const tResult = tGetDate(tRow.pzText);
        tm tExpected{};
        tExpected.tm_year = tRow.iYear;
        tExpected.tm_mon = tRow.iMonth;
        tExpected.tm_mday = tRow.iDay;
        EXPECT_EQ(std::memcmp(&tResult, &tExpected, sizeof tResult), 0)
            << PrintToString(tRow.pzText) << tResult.tm_year << ' ' << tResult.tm_mon << ' ' << tResult.tm_mday;
    }
}

TEST(PlainDate, ComesBack) {
    std::mt19937 tRandom(16);
    for (int i = 0; i < 10'000; ++i) {
        auto const iUpTo = [&](unsigned int u) { return static_cast<int>(tRandom() % (u + 1)); };
        tm const tTime = tFields(iUpTo(40'000), iUpTo(99), iUpTo(99));
        tm const tResult = tGetDate(sGetDate(tTime));
        ASSERT_EQ(std::memcmp(&tResult, &tTime, sizeof tTime), 0);
    }
}

/// The same fields, cut out of a string each.
TEST(PlainDate, ReadsRandomTextAsThePlainReaderDoes) {
    std::mt19937 tRandom(17);
    for (int i = 0; i < 100'000; ++i) {
        wstring const sText = sRandom(tRandom, L"0129--+ x\t\v\u00A0\u0661\uFF11\u00B2\u3000", 14);
        tm tExpected{};
        std::vector<wstring> sFields{L""};
        for (wchar_t const c : sText) {
            if (c == L'-') {
                sFields.emplace_back();
            } else {
                sFields.back() += c;
            }
        }
        if (sFields.size() > 2) {
            tExpected.tm_year = _wtoi(sFields[0].c_str()) - 1900;
            tExpected.tm_mon = _wtoi(sFields[1].c_str()) - 1;
            tExpected.tm_mday = _wtoi(sFields[2].c_str());
        }
        tm const tResult = tGetDate(sText);
        ASSERT_EQ(std::memcmp(&tResult, &tExpected, sizeof tResult), 0) << PrintToString(sText);
    }
}

TEST(PlainDate, ReadsEveryCharacterAsTheRunTimeDoes) {
    for (unsigned int u = 1; u <= 0xFFFF; ++u) {
        auto const c = static_cast<wchar_t>(u);
        if (c == L'-') continue;
        for (wstring const & sField : {wstring{c, L'7'}, wstring{L'7', c}, wstring{L'+', c}})
            ASSERT_EQ(tGetDate(L"--" + sField).tm_mday, _wtoi(sField.c_str())) << u;
    }
}

// Local time

using TToLocal = TSystemCall<"SystemTimeToTzSpecificLocalTime", decltype(SystemTimeToTzSpecificLocalTime)>;

TEST(SGetLocalTimeOfUTCTime, GoesThroughTheZoneOfTheMachine) {
    bool fClear = false;
    TToLocal const tCall(
        [&](TIME_ZONE_INFORMATION const * pZone, SYSTEMTIME const * pUtc, SYSTEMTIME * pLocal) -> BOOL {
            EXPECT_EQ(pZone, nullptr);
            EXPECT_TRUE(fSame(*pLocal, {}));
            fClear = true;
            *pLocal = *pUtc;
            pLocal->wHour = static_cast<WORD>(pUtc->wHour + 2);
            return TRUE;
        });
    EXPECT_EQ(sGetLocalTimeOfUTCTime(L"2024-01-15T08:30:00"), L"2024-01-15T10:30:00");
    EXPECT_EQ(sGetLocalTimeOfUTCTime(L"2024-01-15T08:30:00.1234567"), L"2024-01-15T10:30:00");
    EXPECT_EQ(sGetLocalTimeOfUTCTime(L"no date"), L"1601-01-01T02:00:00");             // the zero value, shifted
    EXPECT_EQ(sGetLocalTimeOfUTCTime(L"2024-01-15T22:30:00"), L"1601-01-01T00:00:00"); // hour 24: no such time
    EXPECT_TRUE(fClear);
}

TEST(SGetLocalTimeOfUTCTime, IsTheZeroValueWhereTheSystemFails) {
    TToLocal const tCall([](auto...) { return FALSE; });
    EXPECT_EQ(sGetLocalTimeOfUTCTime(L"2024-01-15T08:30:00"), L"1601-01-01T00:00:00");
}

TEST(SGetLocalTimeOfUTCTime, AgreesWithThePlatform) {
    for (int iMonth = 1; iMonth <= 12; ++iMonth) {
        SYSTEMTIME const tUtc = tSystemTime(2024, iMonth, 15, 8, 30);
        SYSTEMTIME tLocal{};
        ASSERT_TRUE(SystemTimeToTzSpecificLocalTime(nullptr, &tUtc, &tLocal));
        EXPECT_EQ(sGetLocalTimeOfUTCTime(TZkDateTime(tUtc).sGetString(edtDateTime, false)),
                  TZkDateTime(tLocal).sGetString(edtDateTime, false));
    }
}
