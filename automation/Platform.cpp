#include "ZkTools/Platform.h"

#include "ZkBase/Files.h"

#include <shlwapi.h>

#include <array>
#include <cstdlib>
#include <cwchar>
#include <optional>

#ifdef _WIN64
static_assert(sizeof(SHELLEXECUTEINFOW) == 112 && sizeof(COMBOBOXINFO) == 64);
#else
static_assert(sizeof(SHELLEXECUTEINFOW) == 60 && sizeof(COMBOBOXINFO) == 52);
#endif

namespace {

/// Where a framework leaves its traces, the highest first.
struct TFramework {
    wchar_t const * pzKey;
    unsigned long dwLowestServicePack; ///< 0: any, also none
};
constexpr std::array<TFramework, 7> tFrameworks{{
    {LR"(Software\Microsoft\NET Framework Setup\NDP\v4\Full)", 0},
    {LR"(Software\Microsoft\NET Framework Setup\NDP\v4\Client)", 0},
    {LR"(Software\Microsoft\NET Framework Setup\NDP\v4.0\Full)", 0},
    {LR"(Software\Microsoft\NET Framework Setup\NDP\v4.0\Client)", 0},
    {LR"(Software\Microsoft\NET Framework Setup\NDP\v3.5)", 0},
    {LR"(Software\Microsoft\NET Framework Setup\NDP\v3.0)", 0},
    {LR"(Software\Microsoft\NET Framework Setup\NDP\v2.0.50727)", 1},
}};

/// A key opened for reading, if it is there.
class TKey {
public:
    TKey(HKEY hParent, wchar_t const * pzSubKey) noexcept {
        if (RegOpenKeyExW(hParent, pzSubKey, 0, KEY_READ, &hKey) != ERROR_SUCCESS) hKey = nullptr;
    }
    ~TKey() {
        if (hKey != nullptr) RegCloseKey(hKey);
    }
    TKey(TKey const &) = delete;
    TKey & operator=(TKey const &) = delete;

    explicit operator bool() const noexcept { return hKey != nullptr; }

    /// \param dwSize the room at `pData`, then what was read
    bool fRead(wchar_t const * pzName, unsigned long & dwType, void * pData, unsigned long & dwSize) const noexcept {
        return RegQueryValueExW(hKey, pzName, nullptr, &dwType, static_cast<BYTE *>(pData), &dwSize) == ERROR_SUCCESS;
    }

    /// A 32-bit value.
    std::optional<unsigned long> pdwRead(wchar_t const * pzName) const noexcept {
        unsigned long dwValue = 0;
        unsigned long dwType = REG_NONE;
        unsigned long dwSize = sizeof dwValue;
        if (!fRead(pzName, dwType, &dwValue, dwSize) || dwType != REG_DWORD) return std::nullopt;
        return dwValue;
    }

private:
    HKEY hKey = nullptr;
};

/// Room for the text of a version, one place kept for its terminator.
using TVersionText = std::array<wchar_t, 61>;

/// The version of a framework that is installed.
std::optional<TVersionText> ReadVersion(TFramework const & tFramework) noexcept {
    TKey const tKey(HKEY_LOCAL_MACHINE, tFramework.pzKey);
    if (!tKey || tKey.pdwRead(L"Install") != 1ul) return std::nullopt;
    if (tFramework.dwLowestServicePack != 0) {
        auto const pdwServicePack = tKey.pdwRead(L"SP");
        if (!pdwServicePack || *pdwServicePack < tFramework.dwLowestServicePack) return std::nullopt;
    }
    TVersionText acVersion{};
    unsigned long dwType = REG_NONE;
    unsigned long dwSize = (acVersion.size() - 1) * sizeof(wchar_t);
    if (!tKey.fRead(L"Version", dwType, acVersion.data(), dwSize)) return std::nullopt;
    return acVersion;
}

/// Numbers between points, of which the first four count.
std::tuple<int, int, int, int> tSplitVersion(TVersionText & acVersion) noexcept {
    std::array<int, 4> aiNumbers{};
    wchar_t * pzNext = acVersion.data();
    for (int & iNumber : aiNumbers) {
        wchar_t * const pzPoint = std::wcschr(pzNext, L'.');
        if (pzPoint != nullptr) *pzPoint = 0;
        iNumber = _wtoi(pzNext);
        if (pzPoint == nullptr) break;
        pzNext = pzPoint + 1;
    }
    return std::tuple_cat(aiNumbers);
}

} // namespace

bool fRegistryGetValue(HKEY hKey, wchar_t const * pzSubKey, wchar_t const * pzName, unsigned long dwType,
                       unsigned char * pData, unsigned long dwSize) noexcept {
    TKey const tKey(hKey, pzSubKey);
    // Deliberate: type and length are the query's working fields and get lost. Callers know what they read.
    return tKey && tKey.fRead(pzName, dwType, pData, dwSize);
}

std::tuple<int, int, int, int> GetHighestAvailableFrameworkVersion() noexcept {
    for (TFramework const & tFramework : tFrameworks) {
        if (auto pVersion = ReadVersion(tFramework)) return tSplitVersion(*pVersion);
    }
    return {};
}

unsigned long dwGetDotNet4Release() noexcept {
    TKey const tKey(HKEY_LOCAL_MACHINE, tFrameworks.front().pzKey);
    return tKey ? tKey.pdwRead(L"Release").value_or(0) : 0;
}

bool IsUserAdmin() noexcept {
    SID_IDENTIFIER_AUTHORITY tAuthority = SECURITY_NT_AUTHORITY;
    PSID pGroup = nullptr;
    if (!AllocateAndInitializeSid(&tAuthority, 2, SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS, 0, 0, 0, 0, 0,
                                  0, &pGroup))
        return false;
    BOOL fMember = FALSE;
    if (!CheckTokenMembership(nullptr, pGroup, &fMember)) fMember = FALSE;
    FreeSid(pGroup);
    return fMember != FALSE;
}

int RunElevated(HWND hWnd, wchar_t const * pzFile, wchar_t const * pzParameters) {
    SHELLEXECUTEINFOW tInfo{};
    tInfo.cbSize = sizeof tInfo;
    tInfo.fMask = SEE_MASK_NOASYNC | SEE_MASK_FLAG_NO_UI;
    tInfo.hwnd = hWnd;
    tInfo.lpVerb = IsUserAdmin() ? nullptr : L"runas";
    tInfo.lpFile = pzFile;
    tInfo.lpParameters = pzParameters;
    tInfo.nShow = SW_SHOWNORMAL;
    return file_func::ShellExecuteExW(&tInfo);
}

void SetVistaTheme(HWND hWnd) noexcept {
    HMODULE const hModule = LoadLibraryExW(L"Uxtheme.dll", nullptr, 0);
    // Deliberate: the invalid handle, not null. Without the DLL the search below finds nothing.
    if (hModule == INVALID_HANDLE_VALUE) return;
    using TSetWindowTheme = HRESULT(WINAPI *)(HWND, wchar_t const *, wchar_t const *);
    // By way of a plain pointer: the compiler distrusts a cast from one function to another.
    auto * const pAddress = reinterpret_cast<void *>(GetProcAddress(hModule, "SetWindowTheme"));
    if (pAddress != nullptr) reinterpret_cast<TSetWindowTheme>(pAddress)(hWnd, L"Explorer", nullptr);
    // Deliberate: the module stays loaded. The window uses it as long as it lives.
}

bool SetCbAutoComplete(HWND hComboBox, EAutoComplete eComplete) noexcept {
    COMBOBOXINFO tInfo{};
    tInfo.cbSize = sizeof tInfo;
    return GetComboBoxInfo(hComboBox, &tInfo) && SetEditAutoComplete(tInfo.hwndItem, eComplete);
}

bool SetEditAutoComplete(HWND hEdit, EAutoComplete eComplete) noexcept {
    return SHAutoComplete(hEdit, eComplete == eacDirectories ? SHACF_FILESYS_DIRS : SHACF_FILESYS_ONLY) >= 0;
}
