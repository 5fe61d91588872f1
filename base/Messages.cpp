#include "ZkBase/Messages.h"

#include "base/LongPath.h"

#include <array>
#include <cstdio>
#include <cwchar>
#include <string_view>

namespace {

/// The path of a module, of whatever length; empty when there is no such module.
std::wstring sGetModulePath(HINSTANCE hModule) {
    std::wstring sPath(MAX_PATH, L'\0');
    for (;;) {
        DWORD const dwLength = GetModuleFileNameW(hModule, sPath.data(), static_cast<DWORD>(sPath.size()));
        if (dwLength < sPath.size()) {
            sPath.resize(dwLength);
            return sPath;
        }
        sPath.resize(sPath.size() * 2);
    }
}

/// The ISO code of the user's UI language, in lower case; empty when the system has none.
std::wstring sGetLanguageCode() {
    std::array<wchar_t, 9> acCode{};
    LCID const uLocale = MAKELCID(GetUserDefaultUILanguage(), SORT_DEFAULT);
    if (GetLocaleInfoW(uLocale, LOCALE_SISO639LANGNAME, acCode.data(), static_cast<int>(acCode.size())) == 0) return {};
    return acCode.data();
}

/// The path of the module without its extension, and `Messages` behind it.
std::wstring sGetStem(std::wstring sModule) {
    std::size_t const uName = sModule.find_last_of(L"\\/") + 1;
    if (std::size_t const uPoint = sModule.rfind(L'.'); uPoint != std::wstring::npos && uPoint > uName)
        sModule.resize(uPoint);
    return sModule += L"Messages";
}

HINSTANCE hLoadResources(std::wstring const & sPath) {
    std::wstring sHolder;
    return LoadLibraryExW(pzLongPath(sPath.c_str(), sHolder), nullptr,
                          LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE);
}

} // namespace

HINSTANCE hGetResMod(HINSTANCE hModule) {
    std::wstring const sModule = sGetModulePath(hModule);
    if (sModule.empty()) return nullptr; // a bare name would be searched for in foreign directories
    std::wstring const sStem = sGetStem(sModule);
    if (std::wstring const sCode = sGetLanguageCode(); !sCode.empty()) {
        if (HINSTANCE const hFound = hLoadResources(sStem + L"." + sCode + L".dll")) return hFound;
    }
    return hLoadResources(sStem + L".dll");
}

namespace string_functions {

std::wstring sLoadString(HINSTANCE hModule, unsigned int uId) {
    if (uId > 0xFFFF) return {}; // the system would look at the lower half alone
    // With a size of 0 the call hands out a pointer to the text in the module instead of copying it.
    wchar_t const * pText = nullptr;
    int const iLength = LoadStringW(hModule, uId, reinterpret_cast<wchar_t *>(&pText), 0);
    return iLength > 0 ? std::wstring(pText, static_cast<std::size_t>(iLength)) : std::wstring();
}

std::wstring sFormat_va(wchar_t const * pzFormat, char * pArgs) {
    // The platform's own pair: the C++ run-time's vswprintf may read %s as a narrow string.
    int const iLength = _vscwprintf(pzFormat, pArgs);
    if (iLength < 0) return pzFormat;
    std::wstring sResult(static_cast<std::size_t>(iLength), L'\0');
    _vsnwprintf(sResult.data(), sResult.size(), pzFormat, pArgs);
    return sResult;
}

} // namespace string_functions
