#include "ZkBase/TestMode.h"

#include "ZkBase/Windows.h"

#include <array>

namespace {

/// The fixed moment: 2024-01-15, a Monday, 08:30:00.
constexpr SYSTEMTIME tMoment{2024, 1, 1, 15, 8, 30, 0, 0};

bool fReadSwitch() {
    std::array<wchar_t, 4> acValue{};
    DWORD const dwLength = GetEnvironmentVariableW(L"ZK_TEST_MODE", acValue.data(), static_cast<DWORD>(acValue.size()));
    return dwLength == 1 && acValue[0] == L'1';
}

} // namespace

namespace GTest {

bool fIsTest() {
    static bool const fTest = fReadSwitch();
    return fTest;
}

std::wstring sGetCurrentDate() {
    std::array<wchar_t, 256> acText{};
    GetDateFormatW(LOCALE_USER_DEFAULT, DATE_SHORTDATE, &tMoment, nullptr, acText.data(),
                   static_cast<int>(acText.size()));
    return acText.data();
}

std::wstring sGetCurrentTime() {
    std::array<wchar_t, 256> acText{};
    GetTimeFormatW(LOCALE_USER_DEFAULT, 0, &tMoment, nullptr, acText.data(), static_cast<int>(acText.size()));
    return acText.data();
}

std::wstring sGetCurrentDateTime() {
    return L"2024-01-15T08:30:00";
}

std::wstring sGetUUID(EUUID eUuid) {
    constexpr wchar_t const * pzDigits = L"0123456789abcdef";
    std::wstring sUuid = L"00000000-0000-4000-8000-000000000000";
    auto uValue = static_cast<unsigned int>(eUuid);
    for (std::size_t uPos = sUuid.size(); uValue != 0; uValue >>= 4)
        sUuid[--uPos] = pzDigits[uValue & 15];
    return sUuid;
}

} // namespace GTest
