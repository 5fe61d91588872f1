#include "ZkTools/Platform.h"

#include "tests/support/Handle.h"
#include "tests/support/Handles.h"
#include "tests/support/SystemCall.h"
#include "tests/support/TempDirectory.h"

#include <gtest/gtest.h>

#include <objbase.h>

#include <shellapi.h>
#include <shlwapi.h>

#include <array>
#include <cstring>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

using namespace zk_test;

namespace {

using TVersion = std::tuple<int, int, int, int>;
constexpr wchar_t const * pzFrameworks = LR"(Software\Microsoft\NET Framework Setup\NDP\)";

/// A machine of the test's own: in this process HKEY_LOCAL_MACHINE is an empty key below the user's, gone with the
/// object.
class TMachine {
public:
    TMachine() {
        RegCreateKeyExW(HKEY_CURRENT_USER, sName.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &hRoot, nullptr);
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, hRoot);
    }
    ~TMachine() {
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
        RegCloseKey(hRoot);
        RegDeleteTreeW(HKEY_CURRENT_USER, sName.c_str());
    }
    TMachine(TMachine const &) = delete;
    TMachine & operator=(TMachine const &) = delete;

    void Set(std::wstring const & sKey, wchar_t const * pzName, DWORD dwType, void const * pData, DWORD dwSize) const {
        RegSetKeyValueW(hRoot, sKey.c_str(), pzName, dwType, pData, dwSize);
    }
    void SetNumber(std::wstring const & sKey, wchar_t const * pzName, DWORD dwValue) const {
        Set(sKey, pzName, REG_DWORD, &dwValue, sizeof dwValue);
    }
    void SetText(std::wstring const & sKey, wchar_t const * pzName, std::wstring const & sText) const {
        Set(sKey, pzName, REG_SZ, sText.c_str(), static_cast<DWORD>((sText.size() + 1) * sizeof(wchar_t)));
    }
    /// What an installed framework leaves.
    void Install(wchar_t const * pzFramework, std::wstring const & sVersion, DWORD dwInstall = 1) const {
        SetNumber(pzFrameworks + std::wstring(pzFramework), L"Install", dwInstall);
        SetText(pzFrameworks + std::wstring(pzFramework), L"Version", sVersion);
    }

private:
    std::wstring sName = L"Software\\ZkTools tests " + std::to_wstring(GetCurrentProcessId());
    HKEY hRoot = nullptr;
};

/// A window without anything of its own.
class TWindow {
public:
    explicit TWindow(wchar_t const * pzClass, DWORD dwStyle = 0)
        : hWindow(CreateWindowExW(0, pzClass, L"", dwStyle, 0, 0, 100, 100, nullptr, nullptr, nullptr, nullptr)) {
        if (hWindow == nullptr) throw std::runtime_error("no window");
    }
    ~TWindow() { DestroyWindow(hWindow); }
    TWindow(TWindow const &) = delete;
    TWindow & operator=(TWindow const &) = delete;
    operator HWND() const noexcept { return hWindow; }

private:
    HWND hWindow;
};

/// COM on this thread.
struct TCom {
    TCom() { static_cast<void>(CoInitialize(nullptr)); }
    ~TCom() { CoUninitialize(); }
};

using TCheckMembership = TSystemCall<"CheckTokenMembership", decltype(CheckTokenMembership)>;

} // namespace

TEST(RegistryValue, IsReadIntoTheBuffer) {
    TMachine const tMachine;
    tMachine.SetText(L"Some\\Key", L"Name", L"wheel");
    tMachine.SetText(L"Some\\Key", nullptr, L"default");
    std::array<wchar_t, 8> acText{};
    auto * const pData = reinterpret_cast<unsigned char *>(acText.data());
    EXPECT_TRUE(fRegistryGetValue(HKEY_LOCAL_MACHINE, L"Some\\Key", L"Name", REG_SZ, pData, sizeof acText));
    EXPECT_STREQ(acText.data(), L"wheel");
    EXPECT_TRUE(fRegistryGetValue(HKEY_LOCAL_MACHINE, L"Some\\Key", nullptr, REG_SZ, pData, sizeof acText));
    EXPECT_STREQ(acText.data(), L"default");
}

TEST(RegistryValue, IsNotReadWhereItIsMissingOrTooLong) {
    TMachine const tMachine;
    tMachine.SetText(L"Key", L"Name", L"wheel");
    unsigned char acData[12];
    EXPECT_FALSE(fRegistryGetValue(HKEY_LOCAL_MACHINE, L"Other", L"Name", REG_SZ, acData, sizeof acData));
    EXPECT_FALSE(fRegistryGetValue(HKEY_LOCAL_MACHINE, L"Key", L"Other", REG_SZ, acData, sizeof acData));
    EXPECT_FALSE(fRegistryGetValue(HKEY_LOCAL_MACHINE, L"Key", L"Name", REG_SZ, acData, 11));
    EXPECT_TRUE(fRegistryGetValue(HKEY_LOCAL_MACHINE, L"Key", L"Name", REG_SZ, acData, 12));
}

TEST(RegistryValue, IsReadWhateverItsType) {
    TMachine const tMachine;
    tMachine.SetNumber(L"Key", L"Name", 0x01020304);
    unsigned char acData[8] = {0, 0, 0, 0, 9, 9, 9, 9};
    EXPECT_TRUE(fRegistryGetValue(HKEY_LOCAL_MACHINE, L"Key", L"Name", REG_SZ, acData, sizeof acData));
    EXPECT_EQ(std::memcmp(acData, "\4\3\2\1\t\t\t\t", 8), 0); // what lies behind stays
}

TEST(RegistryValue, ClosesTheKey) {
    using TClose = TSystemCall<"RegCloseKey", decltype(RegCloseKey)>;
    TMachine const tMachine;
    tMachine.SetNumber(L"Key", L"Name", 1);
    TClose tClose([&](HKEY hKey) { return tClose.Original(hKey); });
    unsigned char acData[4];
    static_cast<void>(fRegistryGetValue(HKEY_LOCAL_MACHINE, L"Key", L"Name", REG_DWORD, acData, 4));
    EXPECT_EQ(tClose.iGetCalls(), 1);
    static_cast<void>(fRegistryGetValue(HKEY_LOCAL_MACHINE, L"Key", L"Other", REG_DWORD, acData, 4));
    EXPECT_EQ(tClose.iGetCalls(), 2);
    static_cast<void>(fRegistryGetValue(HKEY_LOCAL_MACHINE, L"Other", L"Name", REG_DWORD, acData, 4));
    EXPECT_EQ(tClose.iGetCalls(), 2); // it was never open
}

TEST(RegistryValue, AsksForReadingAlone) {
    TMachine const tMachine;
    REGSAM dwAsked = 0;
    TSystemCall<"RegOpenKeyExW", decltype(RegOpenKeyExW)> tOpen(
        [&](HKEY hKey, LPCWSTR pzKey, DWORD dwOptions, REGSAM dwAccess, HKEY * phKey) {
            dwAsked = dwAccess;
            return tOpen.Original(hKey, pzKey, dwOptions, dwAccess, phKey);
        });
    unsigned char acData[4];
    static_cast<void>(fRegistryGetValue(HKEY_LOCAL_MACHINE, L"Key", L"Name", REG_DWORD, acData, 4));
    EXPECT_EQ(dwAsked, REGSAM{0x20019});
}

TEST(FrameworkVersion, IsThatOfTheHighestFramework) {
    // Each row is the highest so far.
    TMachine const tMachine;
    EXPECT_EQ(GetHighestAvailableFrameworkVersion(), TVersion(0, 0, 0, 0));
    std::array<wchar_t const *, 7> const pzRising{L"v2.0.50727", L"v3.0",       L"v3.5",    L"v4.0\\Client",
                                                  L"v4.0\\Full", L"v4\\Client", L"v4\\Full"};
    tMachine.SetNumber(std::wstring(pzFrameworks) + L"v2.0.50727", L"SP", 1);
    int iNumber = 10;
    for (wchar_t const * const pzKey : pzRising) {
        ++iNumber;
        tMachine.Install(pzKey, std::to_wstring(iNumber) + L".1.2.3");
        EXPECT_EQ(GetHighestAvailableFrameworkVersion(), TVersion(iNumber, 1, 2, 3)) << iNumber;
    }
}

TEST(FrameworkVersion, PassesOverWhatIsNotInstalled) {
    TMachine const tMachine;
    tMachine.Install(L"v3.5", L"3.5.30729.4926");
    for (DWORD const dwInstall : {0ul, 2ul, 0xFFFFFFFFul, 0x101ul}) {
        tMachine.Install(L"v4\\Full", L"4.8.09032", dwInstall);
        EXPECT_EQ(GetHighestAvailableFrameworkVersion(), TVersion(3, 5, 30729, 4926)) << dwInstall;
    }
    std::uint64_t const uWide = 1;
    tMachine.Set(std::wstring(pzFrameworks) + L"v4\\Full", L"Install", REG_QWORD, &uWide, sizeof uWide);
    EXPECT_EQ(GetHighestAvailableFrameworkVersion(), TVersion(3, 5, 30729, 4926)); // no 32-bit value
    tMachine.SetText(std::wstring(pzFrameworks) + L"v4\\Full", L"Install", L"1");
    EXPECT_EQ(GetHighestAvailableFrameworkVersion(), TVersion(3, 5, 30729, 4926));
}

TEST(FrameworkVersion, PassesOverAKeyWithoutValues) {
    TMachine const tMachine;
    tMachine.Install(L"v3.0", L"3.0.6920.0");
    tMachine.SetText(std::wstring(pzFrameworks) + L"v4\\Full", L"Version", L"4.8.0"); // without "Install"
    tMachine.SetNumber(std::wstring(pzFrameworks) + L"v3.5", L"Install", 1);          // without "Version"
    EXPECT_EQ(GetHighestAvailableFrameworkVersion(), TVersion(3, 0, 6920, 0));
}

TEST(FrameworkVersion, WantsAServicePackOfTheOldestAlone) {
    TMachine const tMachine;
    std::wstring const sOldest = std::wstring(pzFrameworks) + L"v2.0.50727";
    tMachine.Install(L"v2.0.50727", L"2.0.50727.42");
    EXPECT_EQ(GetHighestAvailableFrameworkVersion(), TVersion(0, 0, 0, 0)); // no "SP"
    tMachine.SetNumber(sOldest, L"SP", 0);
    EXPECT_EQ(GetHighestAvailableFrameworkVersion(), TVersion(0, 0, 0, 0));
    tMachine.SetNumber(sOldest, L"SP", 1);
    EXPECT_EQ(GetHighestAvailableFrameworkVersion(), TVersion(2, 0, 50727, 42));
    tMachine.SetNumber(sOldest, L"SP", 0x80000000); // unsigned
    EXPECT_EQ(GetHighestAvailableFrameworkVersion(), TVersion(2, 0, 50727, 42));
    tMachine.Install(L"v3.0", L"3.0"); // any service pack, also none
    EXPECT_EQ(GetHighestAvailableFrameworkVersion(), TVersion(3, 0, 0, 0));
}

TEST(FrameworkVersion, ReadsNumbersBetweenPoints) {
    TMachine const tMachine;
    struct TRow {
        std::wstring sText;
        TVersion tVersion;
    };
    for (TRow const & tRow : {
             TRow{L"4.8.9032.1", {4, 8, 9032, 1}},
             TRow{L"4.8.09032", {4, 8, 9032, 0}},
             TRow{L"4", {4, 0, 0, 0}},
             TRow{L"", {0, 0, 0, 0}},
             TRow{L"1.2.3.4.5", {1, 2, 3, 4}},
             TRow{L"1..3", {1, 0, 3, 0}},
             TRow{L".2", {0, 2, 0, 0}},
             TRow{L"4.x.7beta. 8", {4, 0, 7, 8}},
             TRow{L"-4.+8", {-4, 8, 0, 0}},
             TRow{std::wstring(L"4.8\0.7.6", 8), {4, 8, 0, 0}},
         }) {
        tMachine.Install(L"v4\\Full", tRow.sText);
        EXPECT_EQ(GetHighestAvailableFrameworkVersion(), tRow.tVersion) << testing::PrintToString(tRow.sText);
    }
}

TEST(FrameworkVersion, TakesATextOfUpToSixtyCharacters) {
    TMachine const tMachine;
    std::wstring const sKey = std::wstring(pzFrameworks) + L"v4\\Full";
    tMachine.Install(L"v3.5", L"3.5");
    tMachine.Install(L"v4\\Full", L"4." + std::wstring(56, L'0') + L"8"); // with its terminator 60
    EXPECT_EQ(GetHighestAvailableFrameworkVersion(), TVersion(4, 8, 0, 0));
    std::wstring const sWhole = L"4." + std::wstring(57, L'0') + L"8";
    tMachine.Set(sKey, L"Version", REG_SZ, (sWhole + L'9').data(), 120); // 60 without one
    EXPECT_EQ(GetHighestAvailableFrameworkVersion(), TVersion(4, 8, 0, 0));
    tMachine.Install(L"v4\\Full", sWhole); // 61: cannot be read
    EXPECT_EQ(GetHighestAvailableFrameworkVersion(), TVersion(3, 5, 0, 0));
}

TEST(FrameworkVersion, ClosesEveryKey) {
    TMachine const tMachine;
    tMachine.Install(L"v4\\Full", L"4.8", 0);
    tMachine.SetNumber(std::wstring(pzFrameworks) + L"v3.5", L"Install", 1);
    tMachine.Install(L"v2.0.50727", L"2.0");
    ExpectNoHandleLeak([] { static_cast<void>(GetHighestAvailableFrameworkVersion()); });
    ExpectNoHandleLeak([] { static_cast<void>(dwGetDotNet4Release()); });
}

TEST(FrameworkRelease, IsThatOfTheFirstKey) {
    TMachine const tMachine;
    EXPECT_EQ(dwGetDotNet4Release(), 0u);
    tMachine.SetNumber(std::wstring(pzFrameworks) + L"v4\\Client", L"Release", 378389);
    EXPECT_EQ(dwGetDotNet4Release(), 0u);
    tMachine.Install(L"v4\\Full", L"4.8", 0);
    EXPECT_EQ(dwGetDotNet4Release(), 0u); // the key alone
    tMachine.SetNumber(std::wstring(pzFrameworks) + L"v4\\Full", L"Release", 528040);
    EXPECT_EQ(dwGetDotNet4Release(), 528040u); // installed or not
}

TEST(UserAdmin, AsksForTheGroupOfAdministrators) {
    BOOL fAnswer = TRUE;
    TCheckMembership const tCheck([&](HANDLE hToken, PSID pGroup, PBOOL pfMember) -> BOOL {
        EXPECT_EQ(hToken, nullptr);
        EXPECT_TRUE(IsWellKnownSid(pGroup, WinBuiltinAdministratorsSid));
        *pfMember = fAnswer;
        return TRUE;
    });
    EXPECT_TRUE(IsUserAdmin());
    fAnswer = FALSE;
    EXPECT_FALSE(IsUserAdmin());
}

TEST(UserAdmin, TakesAFailureForNo) {
    using TFree = TSystemCall<"FreeSid", decltype(FreeSid)>;
    TFree tFree([&](PSID pGroup) { return tFree.Original(pGroup); });
    {
        TCheckMembership const tCheck([](HANDLE, PSID, PBOOL pfMember) -> BOOL {
            *pfMember = TRUE;
            return FALSE;
        });
        EXPECT_FALSE(IsUserAdmin());
        EXPECT_EQ(tFree.iGetCalls(), 1);
    }
    TSystemCall<"AllocateAndInitializeSid", decltype(AllocateAndInitializeSid)> const tAllocate(
        [](auto...) -> BOOL { return FALSE; });
    EXPECT_FALSE(IsUserAdmin());
    EXPECT_EQ(tFree.iGetCalls(), 1);
}

TEST(RunElevated, AsksForRightsOnlyWhereTheyAreMissing) {
    BOOL fAdmin = TRUE;
    TCheckMembership const tCheck([&](HANDLE, PSID, PBOOL pfMember) -> BOOL {
        *pfMember = fAdmin;
        return TRUE;
    });
    SHELLEXECUTEINFOW tSeen{};
    std::wstring sVerb;
    BOOL fStarted = TRUE;
    TSystemCall<"ShellExecuteExW", decltype(ShellExecuteExW)> const tShell(
        [&](SHELLEXECUTEINFOW * pInfo) {
            tSeen = *pInfo;
            sVerb = pInfo->lpVerb != nullptr ? pInfo->lpVerb : L"(none)";
            return fStarted;
        },
        L"ZkBase.dll");

    auto * const hWindow = reinterpret_cast<HWND>(std::uintptr_t{0x1234});
    EXPECT_NE(RunElevated(hWindow, L"tool.exe", L"one two"), 0);
    EXPECT_EQ(sVerb, L"(none)");
    EXPECT_EQ(tSeen.cbSize, sizeof tSeen);
    EXPECT_EQ(tSeen.fMask, 0x500u);
    EXPECT_EQ(tSeen.hwnd, hWindow);
    EXPECT_STREQ(tSeen.lpFile, L"tool.exe");
    EXPECT_STREQ(tSeen.lpParameters, L"one two");
    EXPECT_EQ(tSeen.lpDirectory, nullptr);
    EXPECT_EQ(tSeen.nShow, 1);

    fAdmin = FALSE;
    fStarted = FALSE;
    EXPECT_EQ(RunElevated(nullptr, L"tool.exe", nullptr), 0);
    EXPECT_EQ(sVerb, L"runas");
    EXPECT_EQ(tSeen.hwnd, nullptr);
    EXPECT_EQ(tSeen.lpParameters, nullptr);
}

TEST(RunElevated, StartsAProgram) {
    TTempDirectory const tDirectory;
    std::wstring const sFile = tDirectory.sGetPath(L"done");
    std::wstring const sParameters = L"/c mkdir \"" + sFile + L"\"";
    ASSERT_NE(RunElevated(nullptr, L"cmd.exe", sParameters.c_str()), 0);
    for (int i = 0; i < 500 && !fExists(sFile); ++i) // the function does not wait for the program
        Sleep(20);
    EXPECT_TRUE(fExists(sFile));
}

TEST(RunElevated, TellsWhenThereIsNothingToStart) {
    TTempDirectory const tDirectory;
    EXPECT_EQ(RunElevated(nullptr, tDirectory.sGetPath(L"missing.exe").c_str(), nullptr), 0);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
}

namespace {

HWND hThemed = nullptr;
std::wstring sThemed;
int iThemed = 0;

HRESULT WINAPI hrRememberTheme(HWND hWnd, LPCWSTR pzName, LPCWSTR pzIds) {
    ++iThemed;
    hThemed = hWnd;
    sThemed = pzName;
    EXPECT_EQ(pzIds, nullptr);
    return E_FAIL; // nobody minds
}

/// The system's search for functions, with one that remembers its call.
class TThemes {
public:
    explicit TThemes(HMODULE hAnswer_)
        : hAnswer(hAnswer_), tLoad([this](LPCWSTR pzFile, HANDLE hFile, DWORD dwFlags) {
              EXPECT_STREQ(pzFile, L"Uxtheme.dll");
              EXPECT_EQ(hFile, nullptr);
              EXPECT_EQ(dwFlags, 0u);
              return hAnswer;
          }),
          tFind([this](HMODULE hModule, LPCSTR pzName) {
              EXPECT_EQ(hModule, hAnswer);
              EXPECT_STREQ(pzName, "SetWindowTheme");
              return fFound ? reinterpret_cast<FARPROC>(reinterpret_cast<void *>(&hrRememberTheme)) : nullptr;
          }) {}

    int iGetSearches() const { return tFind.iGetCalls(); }
    bool fFound = true;

private:
    HMODULE hAnswer;
    TSystemCall<"LoadLibraryExW", decltype(LoadLibraryExW)> tLoad;
    TSystemCall<"GetProcAddress", decltype(GetProcAddress)> tFind;
};

} // namespace

TEST(VistaTheme, IsCalledExplorer) {
    TThemes tThemes(reinterpret_cast<HMODULE>(std::uintptr_t{0x10000}));
    auto * const hWindow = reinterpret_cast<HWND>(std::uintptr_t{0x1234});
    iThemed = 0;
    SetVistaTheme(hWindow);
    EXPECT_EQ(iThemed, 1);
    EXPECT_EQ(hThemed, hWindow);
    EXPECT_EQ(sThemed, L"Explorer");
    tThemes.fFound = false;
    SetVistaTheme(hWindow);
    EXPECT_EQ(iThemed, 1);
}

TEST(VistaTheme, LooksForAnInvalidHandleAlone) {
    {
        TThemes tThemes(nullptr);
        tThemes.fFound = false;
        SetVistaTheme(nullptr);
        EXPECT_EQ(tThemes.iGetSearches(), 1);
    }
    TThemes const tThemes(reinterpret_cast<HMODULE>(INVALID_HANDLE_VALUE));
    SetVistaTheme(nullptr);
    EXPECT_EQ(tThemes.iGetSearches(), 0);
}

namespace {

int iThemeMessages = 0;

LRESULT CALLBACK iCountThemes(HWND hWnd, UINT uMessage, WPARAM uParam, LPARAM iParam) {
    if (uMessage == WM_THEMECHANGED) ++iThemeMessages;
    return DefWindowProcW(hWnd, uMessage, uParam, iParam);
}

} // namespace

TEST(VistaTheme, ReachesAWindow) {
    TWindow const tWindow(L"STATIC");
    SetWindowLongPtrW(tWindow, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&iCountThemes));
    iThemeMessages = 0;
    SetVistaTheme(tWindow);
    EXPECT_GT(iThemeMessages, 0); // the system tells a window of its new theme
    EXPECT_NE(GetModuleHandleW(L"uxtheme.dll"), nullptr);
}

namespace {

using TAutoComplete = TSystemCall<"SHAutoComplete", decltype(SHAutoComplete)>;

} // namespace

TEST(AutoComplete, OffersFilesOrDirectories) {
    HWND hSeen = nullptr;
    DWORD dwSeen = 0;
    HRESULT hrAnswer = S_OK;
    TAutoComplete const tComplete([&](HWND hEdit, DWORD dwFlags) {
        hSeen = hEdit;
        dwSeen = dwFlags;
        return hrAnswer;
    });
    auto * const hEdit = reinterpret_cast<HWND>(std::uintptr_t{0x1234});
    EXPECT_TRUE(SetEditAutoComplete(hEdit, eacFiles));
    EXPECT_EQ(hSeen, hEdit);
    EXPECT_EQ(dwSeen, 16u);
    EXPECT_TRUE(SetEditAutoComplete(hEdit, eacDirectories));
    EXPECT_EQ(dwSeen, 32u);
    EXPECT_TRUE(SetEditAutoComplete(hEdit, static_cast<EAutoComplete>(2)));
    EXPECT_EQ(dwSeen, 16u);
    hrAnswer = S_FALSE;
    EXPECT_TRUE(SetEditAutoComplete(hEdit, eacFiles));
    hrAnswer = E_FAIL;
    EXPECT_FALSE(SetEditAutoComplete(hEdit, eacFiles));
}

TEST(AutoComplete, FindsTheEditFieldOfAComboBox) {
    TWindow const tComboBox(L"COMBOBOX", CBS_DROPDOWN);
    HWND hSeen = nullptr;
    DWORD dwSeen = 0;
    HRESULT hrAnswer = S_OK;
    TAutoComplete const tComplete([&](HWND hEdit, DWORD dwFlags) {
        hSeen = hEdit;
        dwSeen = dwFlags;
        return hrAnswer;
    });
    EXPECT_TRUE(SetCbAutoComplete(tComboBox, eacDirectories));
    EXPECT_EQ(GetParent(hSeen), static_cast<HWND>(tComboBox));
    std::array<wchar_t, 16> acClass{};
    GetClassNameW(hSeen, acClass.data(), acClass.size());
    EXPECT_STRCASEEQ(std::string(acClass.begin(), acClass.end()).c_str(), "edit");
    EXPECT_EQ(dwSeen, 32u);
    EXPECT_TRUE(SetCbAutoComplete(tComboBox, eacFiles));
    EXPECT_EQ(dwSeen, 16u);
    hrAnswer = E_FAIL;
    EXPECT_FALSE(SetCbAutoComplete(tComboBox, eacFiles));
}

TEST(AutoComplete, TellsTheSizeOfWhatItAsksFor) {
    DWORD dwSize = 0;
    TSystemCall<"GetComboBoxInfo", decltype(GetComboBoxInfo)> const tInfo([&](HWND, COMBOBOXINFO * pInfo) -> BOOL {
        dwSize = pInfo->cbSize;
        return FALSE;
    });
    TAutoComplete const tComplete([](HWND, DWORD) { return S_OK; });
    EXPECT_FALSE(SetCbAutoComplete(nullptr, eacFiles));
    EXPECT_EQ(dwSize, sizeof(COMBOBOXINFO));
    EXPECT_EQ(tComplete.iGetCalls(), 0);
}

TEST(AutoComplete, WorksOnWindows) {
    TCom const tCom;
    TWindow const tEdit(L"EDIT");
    EXPECT_TRUE(SetEditAutoComplete(tEdit, eacFiles));
    TWindow const tComboBox(L"COMBOBOX", CBS_DROPDOWN);
    EXPECT_TRUE(SetCbAutoComplete(tComboBox, eacDirectories));
    EXPECT_FALSE(SetCbAutoComplete(nullptr, eacFiles));
    EXPECT_FALSE(SetCbAutoComplete(tEdit, eacFiles)); // no combo box
}
