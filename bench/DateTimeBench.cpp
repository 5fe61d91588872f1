// Dates from and to the fixed text, beside the scan and print functions of the run-time with the platform's calendar.
#include "ZkTools/DateTime.h"
#include "bench/Ratio.h"

#include <array>
#include <cwchar>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int iDates = 1'000; // little enough to be done before the machine turns to something else

/// Moments of four centuries, at whole seconds.
std::vector<TZkDateTime> tMakeDates() {
    std::vector<TZkDateTime> tDates;
    std::mt19937_64 tRandom(1);
    for (int i = 0; i < iDates; ++i) {
        unsigned __int64 const uiTicks = tRandom() % 12'622'780'800 * 10'000'000;
        tDates.emplace_back(FILETIME{static_cast<DWORD>(uiTicks), static_cast<DWORD>(uiTicks >> 32)});
    }
    return tDates;
}

std::vector<std::wstring> sMakeTexts(std::vector<TZkDateTime> const & tDates) {
    std::vector<std::wstring> sTexts;
    for (TZkDateTime const & tDate : tDates)
        sTexts.push_back(tDate.sGetString(edtDateTime, false));
    return sTexts;
}

FILETIME tScan(std::wstring const & sText) {
    SYSTEMTIME tFields{};
    FILETIME tTime{};
    std::swscanf(sText.c_str(), L"%hu-%hu-%huT%hu:%hu:%hu", &tFields.wYear, &tFields.wMonth, &tFields.wDay,
                 &tFields.wHour, &tFields.wMinute, &tFields.wSecond);
    SystemTimeToFileTime(&tFields, &tTime);
    return tTime;
}

std::wstring sPrint(FILETIME const & tTime) {
    SYSTEMTIME tFields{};
    std::array<wchar_t, 32> acText;
    FileTimeToSystemTime(&tTime, &tFields);
    int const iLength =
        std::swprintf(acText.data(), acText.size(), L"%04hu-%02hu-%02huT%02hu:%02hu:%02hu", tFields.wYear,
                      tFields.wMonth, tFields.wDay, tFields.wHour, tFields.wMinute, tFields.wSecond);
    return {acText.data(), static_cast<std::size_t>(iLength)};
}

} // namespace

int main(int iCount, char ** ppArguments) {
    std::vector<TZkDateTime> const tDates = tMakeDates();
    std::vector<std::wstring> const sTexts = sMakeTexts(tDates);

    zk_bench::Add(
        "read and print a date", zk_bench::EBound::eTimesFaster, 5,
        [&] {
            for (std::wstring const & sText : sTexts) {
                std::wstring const sPrinted = TZkDateTime(sText).sGetString(edtDateTime, false);
                zk_bench::Keep(sPrinted.data());
            }
        },
        [&] {
            for (std::wstring const & sText : sTexts) {
                std::wstring const sPrinted = sPrint(tScan(sText));
                zk_bench::Keep(sPrinted.data());
            }
        });
    zk_bench::Add(
        "read a date", zk_bench::EBound::eTimesFaster, 5,
        [&] {
            for (std::wstring const & sText : sTexts) {
                auto const ptTime = TZkDateTime::create(sText);
                zk_bench::Keep(&ptTime);
            }
        },
        [&] {
            for (std::wstring const & sText : sTexts) {
                FILETIME const tTime = tScan(sText);
                zk_bench::Keep(&tTime);
            }
        });
    // Two thirds of ours is the memory of the result, which takes the peer as long.
    zk_bench::Add(
        "print a date", zk_bench::EBound::eTimesFaster, 1.5,
        [&] {
            for (TZkDateTime const & tDate : tDates) {
                std::wstring const sText = tDate.sGetString(edtDateTime, false);
                zk_bench::Keep(sText.data());
            }
        },
        [&] {
            for (TZkDateTime const & tDate : tDates) {
                std::wstring const sText = sPrint(tDate);
                zk_bench::Keep(sText.data());
            }
        });
    return zk_bench::iRun(iCount, ppArguments);
}
