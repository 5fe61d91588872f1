#include "ZkTools/Library.h"

#include "ZkBase/Messages.h"
#include "ZkTools/Exceptions.h"
#include "ZkTools/MessageIds.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Narrow.h"
#include "tests/support/SystemCall.h"
#include "tests/support/TempDirectory.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <string>

namespace {

using TUiLanguage = zk_test::TSystemCall<"GetUserDefaultUILanguage", decltype(GetUserDefaultUILanguage)>;

constexpr LANGID uGerman = MAKELANGID(LANG_GERMAN, SUBLANG_GERMAN);
constexpr LANGID uFrench = MAKELANGID(LANG_FRENCH, SUBLANG_FRENCH);

/// Makes the base library see that language as the user's.
struct TUserSpeaks : TUiLanguage {
    explicit TUserSpeaks(LANGID uLanguage) : TUiLanguage([uLanguage] { return uLanguage; }, L"ZkBase.dll") {}
};

std::wstring sGetProgramDirectory() {
    std::array<wchar_t, 1024> acPath{};
    GetModuleFileNameW(nullptr, acPath.data(), static_cast<DWORD>(acPath.size()));
    std::wstring const sPath = acPath.data();
    return sPath.substr(0, sPath.rfind(L'\\'));
}

/// Copies a file that stands beside the test program, under another name if one is given, and gives its path.
std::wstring sCopyHere(zk_test::TTempDirectory const & tDirectory, std::wstring const & sName,
                       std::wstring const & sNewName = {}) {
    std::wstring const sTarget = tDirectory.sGetPath(sNewName.empty() ? sName : sNewName);
    EXPECT_TRUE(CopyFileW((sGetProgramDirectory() + L"\\" + sName).c_str(), sTarget.c_str(), TRUE));
    return sTarget;
}

/// The text of a message in the module that is found for the given one; empty when none is found.
std::wstring sFindText(HMODULE hModule, unsigned int uId) {
    HINSTANCE const hFound = hGetResMod(hModule);
    if (hFound == nullptr) return {};
    std::wstring sText = string_functions::sLoadString(hFound, uId);
    FreeLibrary(hFound);
    return sText;
}

/// A library that is loaded as long as the object lives.
class TLoaded {
public:
    explicit TLoaded(std::wstring const & sPath) : hModule(LoadLibraryW(sPath.c_str())), dwError(GetLastError()) {}
    ~TLoaded() {
        if (hModule != nullptr) FreeLibrary(hModule);
    }
    TLoaded(TLoaded const &) = delete;
    TLoaded & operator=(TLoaded const &) = delete;

    [[nodiscard]] HMODULE hGet() const { return hModule; }
    [[nodiscard]] DWORD dwGetError() const { return dwError; }

private:
    HMODULE hModule;
    DWORD dwError;
};

/// True when the file could be written: nobody has it mapped as a module.
bool fIsWritable(std::wstring const & sPath) {
    return static_cast<bool>(zk_test::THandle(CreateFileW(
        sPath.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr)));
}

} // namespace

TEST(ZkToolsInit, ChangesNothingHoweverOftenItIsCalled) {
    std::array<char, 64> acFactory;
    acFactory.fill(0x55);
    auto const acBefore = acFactory;
    auto & tFactory = reinterpret_cast<zk_spell_check::TSpellCheckFactory &>(acFactory);
    for (int i = 0; i < 3; ++i) {
        SetLastError(1234);
        ZkToolsInit(tFactory);
        EXPECT_EQ(GetLastError(), 1234u);
    }
    ZkToolsDone();
    ZkToolsDone();
    ZkToolsInit(tFactory);
    EXPECT_EQ(acFactory, acBefore);
    EXPECT_STREQ(TXZkTools(IDS_LOCK_REFUSED, L"x").what(), "\"x\" is read-only.");
}

TEST(ZkToolsInit, AsksForTheThreadOnceAndDoesNothingElse) {
    zk_test::TSystemCall<"GetCurrentThreadId", decltype(GetCurrentThreadId)> tThread(
        [&] { return tThread.Original(); });
    char cFactory = 0;
    ZkToolsInit(reinterpret_cast<zk_spell_check::TSpellCheckFactory &>(cFactory));
    EXPECT_EQ(tThread.iGetCalls(), 1);
    ZkToolsDone();
    EXPECT_EQ(tThread.iGetCalls(), 1);
}

TEST(MessageModule, IsThatOfTheUsersLanguageWhenThereIsOne) {
    HMODULE const hLibrary = GetModuleHandleW(L"ZkTools.dll");
    {
        TUserSpeaks const tUser(uGerman);
        EXPECT_EQ(sFindText(hLibrary, IDS_LOCK_REFUSED), L"\"%s\" ist schreibgesch\u00FCtzt.");
    }
    TUserSpeaks const tUser(uFrench);
    EXPECT_EQ(sFindText(hLibrary, IDS_LOCK_REFUSED), L"\"%s\" is read-only.");
}

TEST(MessageModule, BearsTheNameOfItsLibrary) {
    zk_test::TTempDirectory const tDirectory;
    TUserSpeaks const tUser(uFrench);
    // The load itself needs messages under its own name.
    std::wstring const sLibrary = sCopyHere(tDirectory, L"ZkTools.dll", L"Other.Name.dll");
    sCopyHere(tDirectory, L"ZkToolsMessages.dll");
    EXPECT_EQ(TLoaded(sLibrary).hGet(), nullptr);

    sCopyHere(tDirectory, L"ZkToolsMessages.dll", L"Other.NameMessages.dll");
    TLoaded const tLibrary(sLibrary);
    ASSERT_NE(tLibrary.hGet(), nullptr);
    EXPECT_EQ(sFindText(tLibrary.hGet(), IDS_LOCK_REFUSED), L"\"%s\" is read-only.");

    std::wstring const sFrench = sCopyHere(tDirectory, L"ZkToolsMessages.de.dll", L"Other.NameMessages.fr.dll");
    EXPECT_EQ(sFindText(tLibrary.hGet(), IDS_LOCK_REFUSED), L"\"%s\" ist schreibgesch\u00FCtzt.");
}

TEST(MessageModule, IsReadInTheLanguageOfThisUser) {
    bool const fGerman = PRIMARYLANGID(GetUserDefaultUILanguage()) == LANG_GERMAN;
    // Run once more for a user who has to be German.
    EXPECT_TRUE(fGerman || std::getenv("ZK_TEST_IN_GERMAN") == nullptr);
    EXPECT_STREQ(TXZkTools(IDS_LOCK_REFUSED, L"x").what(),
                 fGerman ? zk_test::sNarrow(L"\"x\" ist schreibgesch\u00FCtzt.").c_str() : "\"x\" is read-only.");
}

TEST(Library, DoesNotLoadWithoutAMessageModule) {
    zk_test::TTempDirectory const tDirectory;
    TLoaded const tLibrary(sCopyHere(tDirectory, L"ZkTools.dll"));
    EXPECT_EQ(tLibrary.hGet(), nullptr);
    EXPECT_EQ(tLibrary.dwGetError(), DWORD{ERROR_DLL_INIT_FAILED});
}

TEST(Library, LoadsWithTheNeutralModuleAlone) {
    zk_test::TTempDirectory const tDirectory;
    TUserSpeaks const tUser(uGerman);
    std::wstring const sNeutral = sCopyHere(tDirectory, L"ZkToolsMessages.dll");
    TLoaded const tLibrary(sCopyHere(tDirectory, L"ZkTools.dll"));
    EXPECT_NE(tLibrary.hGet(), nullptr);
    EXPECT_FALSE(fIsWritable(sNeutral));
}

TEST(Library, LoadsWithTheModuleOfTheUsersLanguageAlone) {
    zk_test::TTempDirectory const tDirectory;
    sCopyHere(tDirectory, L"ZkToolsMessages.de.dll");
    std::wstring const sLibrary = sCopyHere(tDirectory, L"ZkTools.dll");
    {
        TUserSpeaks const tUser(uFrench);
        EXPECT_EQ(TLoaded(sLibrary).hGet(), nullptr);
    }
    TUserSpeaks const tUser(uGerman);
    EXPECT_NE(TLoaded(sLibrary).hGet(), nullptr);
}

TEST(Library, HoldsItsMessageModuleUntilItIsUnloaded) {
    zk_test::TTempDirectory const tDirectory;
    TUserSpeaks const tUser(uGerman);
    std::wstring const sNeutral = sCopyHere(tDirectory, L"ZkToolsMessages.dll");
    std::wstring const sGerman = sCopyHere(tDirectory, L"ZkToolsMessages.de.dll");
    {
        TLoaded const tLibrary(sCopyHere(tDirectory, L"ZkTools.dll"));
        ASSERT_NE(tLibrary.hGet(), nullptr);
        EXPECT_FALSE(fIsWritable(sGerman));
        EXPECT_TRUE(fIsWritable(sNeutral));
    }
    EXPECT_TRUE(fIsWritable(sGerman));
}

TEST(Library, BearsAVersionInEveryModule) {
    for (wchar_t const * pzName : {L"ZkBase.dll", L"ZkTools.dll", L"ZkToolsMessages.dll", L"ZkToolsMessages.de.dll"}) {
        HMODULE const hModule = LoadLibraryExW(pzName, nullptr, LOAD_LIBRARY_AS_DATAFILE);
        EXPECT_NE(FindResourceW(hModule, MAKEINTRESOURCEW(VS_VERSION_INFO), MAKEINTRESOURCEW(16)), nullptr)
            << testing::PrintToString(pzName);
        FreeLibrary(hModule);
    }
}

TEST(Library, KeepsAProgramFromStartingWithoutItsMessages) {
    zk_test::TTempDirectory const tDirectory;
    for (wchar_t const * pzName :
         {L"ZkTools.dll", L"ZkBase.dll", L"libstdc++-6.dll", L"libgcc_s_seh-1.dll", L"libwinpthread-1.dll"})
        if (zk_test::fExists(sGetProgramDirectory() + L"\\" + pzName)) sCopyHere(tDirectory, pzName);
    std::wstring const sProgram = sCopyHere(tDirectory, L"frame_tests.exe");
    zk_test::TChildProcess tRefused(sProgram, {L"--gtest_list_tests"});
    EXPECT_EQ(tRefused.dwWait(), 0xC0000142u); // STATUS_DLL_INIT_FAILED

    sCopyHere(tDirectory, L"ZkToolsMessages.dll");
    zk_test::TChildProcess tStarted(sProgram, {L"--gtest_list_tests"});
    EXPECT_NE(tStarted.sHearAll(), "");
    EXPECT_EQ(tStarted.dwWait(), 0u);
}
