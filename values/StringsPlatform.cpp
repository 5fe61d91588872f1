// What comes from the system: template resources, UUIDs, numbers as a locale writes them.
#include "ZkTools/Strings.h"

#include <rpc.h>

#include <array>
#include <cwchar>
#include <memory>

namespace {

/// Calls the function with the bytes of the resource; an empty result when they can't be had.
template <typename TFunction>
auto tWithResource(HINSTANCE hModule, unsigned int uId, TFunction fCall) -> decltype(fCall(std::string_view())) {
    HRSRC const hFound = FindResourceW(hModule, MAKEINTRESOURCEW(uId), RT_RCDATA);
    if (hFound == nullptr) return {};
    DWORD const dwSize = SizeofResource(hModule, hFound);
    if (dwSize == 0) return {};
    std::unique_ptr<void, decltype(&FreeResource)> const hLoaded(LoadResource(hModule, hFound), &FreeResource);
    if (hLoaded == nullptr) return {};
    auto const * pBytes = static_cast<char const *>(LockResource(hLoaded.get()));
    if (pBytes == nullptr) return {};
    return fCall({pBytes, dwSize});
}

std::wstring sFromOem(std::string_view sBytes) {
    int const iBytes = static_cast<int>(sBytes.size());
    int const iUnits = MultiByteToWideChar(CP_OEMCP, 0, sBytes.data(), iBytes, nullptr, 0);
    if (iUnits <= 0) return {};
    std::wstring sResult(static_cast<std::size_t>(iUnits), L'\0');
    MultiByteToWideChar(CP_OEMCP, 0, sBytes.data(), iBytes, sResult.data(), iUnits);
    return sResult;
}

struct TRpcStringCloser {
    void operator()(wchar_t * pz) const noexcept {
        auto p = reinterpret_cast<RPC_WSTR>(pz);
        RpcStringFreeW(&p);
    }
};

UINT uGetLocaleNumber(LCID lcid, LCTYPE uItem) noexcept {
    DWORD dwValue = 0;
    GetLocaleInfoW(lcid, uItem | LOCALE_RETURN_NUMBER, reinterpret_cast<wchar_t *>(&dwValue),
                   sizeof dwValue / sizeof(wchar_t));
    return dwValue;
}

using TLocaleText = std::array<wchar_t, 10>;

TLocaleText acGetLocaleText(LCID lcid, LCTYPE uItem) noexcept {
    TLocaleText acText{};
    GetLocaleInfoW(lcid, uItem, acText.data(), static_cast<int>(acText.size()));
    return acText;
}

} // namespace

std::string sGetXMLTemplate(HINSTANCE hModule, unsigned int uId) {
    return tWithResource(hModule, uId, [](std::string_view sBytes) { return std::string(sBytes); });
}

std::wstring sGetXMLTemplateWide(HINSTANCE hModule, unsigned int uId) {
    return tWithResource(hModule, uId, sFromOem);
}

std::wstring sGetUuid() {
    UUID tUuid{};
    UuidCreate(&tUuid);
    RPC_WSTR p = nullptr;
    UuidToStringW(&tUuid, &p);
    std::unique_ptr<wchar_t, TRpcStringCloser> const pzText(reinterpret_cast<wchar_t *>(p));
    return pzText != nullptr ? pzText.get() : std::wstring();
}

std::wstring sFormatNumber(unsigned long lcid, unsigned __int64 qwValue) {
    TLocaleText acDecimal = acGetLocaleText(lcid, LOCALE_SDECIMAL);
    TLocaleText acThousand = acGetLocaleText(lcid, LOCALE_STHOUSAND);
    NUMBERFMTW tFormat{};
    tFormat.NumDigits = 0;
    tFormat.LeadingZero = uGetLocaleNumber(lcid, LOCALE_ILZERO);
    // Deliberate: of a grouping such as "3;2;0" the first size alone counts, for all groups.
    tFormat.Grouping = static_cast<UINT>(_wtoi(acGetLocaleText(lcid, LOCALE_SGROUPING).data()));
    tFormat.lpDecimalSep = acDecimal.data();
    tFormat.lpThousandSep = acThousand.data();
    tFormat.NegativeOrder = uGetLocaleNumber(lcid, LOCALE_INEGNUMBER);

    std::array<wchar_t, 128> acResult{};
    int const iLength = GetNumberFormatW(lcid, 0, std::to_wstring(qwValue).c_str(), &tFormat, acResult.data(),
                                         static_cast<int>(acResult.size()));
    return iLength > 0 ? acResult.data() : std::wstring();
}
