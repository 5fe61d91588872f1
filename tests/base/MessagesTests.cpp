#include "ZkBase/Messages.h"

#include "tests/support/SystemCall.h"
#include "tests/support/TempDirectory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

using namespace string_functions;

namespace {

struct TFreeLibrary {
    void operator()(HINSTANCE hModule) const noexcept { FreeLibrary(hModule); }
};
using TModule = std::unique_ptr<std::remove_pointer_t<HINSTANCE>, TFreeLibrary>;

constexpr unsigned int uRenameFailed = 4230;
constexpr wchar_t const * pzEnglish = L"Cannot rename \"%s\" to \"%s\".";

std::wstring sFormat(wchar_t const * pzFormat, ...) {
    va_list pArgs;
    va_start(pArgs, pzFormat);
    std::wstring sResult = sFormat_va(pzFormat, pArgs);
    va_end(pArgs);
    return sResult;
}

/// The path of a module beside this program.
std::wstring sBuilt(wchar_t const * pzName) {
    std::array<wchar_t, 1000> acPath{};
    GetModuleFileNameW(nullptr, acPath.data(), static_cast<DWORD>(acPath.size()));
    std::wstring sPath = acPath.data();
    return sPath.replace(sPath.rfind(L'\\') + 1, std::wstring::npos, pzName);
}

/// The code of the user's UI language, as it stands in the names of message modules.
std::wstring sLanguage() {
    std::array<wchar_t, 10> acCode{};
    GetLocaleInfoW(MAKELCID(GetUserDefaultUILanguage(), SORT_DEFAULT), LOCALE_SISO639LANGNAME, acCode.data(),
                   static_cast<int>(acCode.size()));
    return acCode.data();
}

/// A directory with a probe module, and message modules to be found beside it. The neutral one is English; what
/// stands for the user's language is German, whatever that language is, so that it can be told from the other.
class TProbe {
public:
    explicit TProbe(std::wstring const & sName = L"Probe.dll", std::vector<std::wstring> const & sBelow = {}) {
        for (std::wstring const & sPart : sBelow) {
            sDirectory += sPart + L"\\";
            tTemp.sMakeDirectory(sDirectory);
        }
        Copy(L"ZkToolsMessages.dll", sName);
        hModule.reset(LoadLibraryW(zk_test::sLongForm(sGetPath(sName)).c_str()));
    }

    void AddNeutral(std::wstring const & sStem = L"Probe") const {
        Copy(L"ZkToolsMessages.dll", sStem + L"Messages.dll");
    }
    void AddLanguage() const { Copy(L"ZkToolsMessages.de.dll", L"ProbeMessages." + sLanguage() + L".dll"); }
    void Write(std::wstring const & sName, std::string_view sBytes) const {
        zk_test::WriteFileBytes(sGetPath(sName), sBytes);
    }

    [[nodiscard]] std::wstring sGetPath(std::wstring const & sName) const { return tTemp.sGetPath(sDirectory + sName); }

    /// The text of a message in the module that is found; "none" without one.
    [[nodiscard]] std::wstring sFind() const {
        EXPECT_NE(hModule, nullptr);
        TModule const hFound(hGetResMod(hModule.get()));
        return hFound != nullptr ? sLoadString(hFound.get(), uRenameFailed) : L"none";
    }

private:
    void Copy(wchar_t const * pzFrom, std::wstring const & sTo) const {
        Write(sTo, zk_test::sReadFileBytes(sBuilt(pzFrom)));
    }

    zk_test::TTempDirectory tTemp;
    std::wstring sDirectory;
    TModule hModule;
};

/// Gives every module another path.
class TModulePath {
public:
    explicit TModulePath(std::wstring sPath_) : sPath(std::move(sPath_)) {}

private:
    std::wstring sPath;
    zk_test::TSystemCall<"GetModuleFileNameW", decltype(GetModuleFileNameW)> tCall{
        [this](HMODULE, LPWSTR pzBuffer, DWORD dwSize) -> DWORD {
            std::size_t const uCopied = std::min<std::size_t>(sPath.size() + 1, dwSize);
            std::copy_n(sPath.c_str(), uCopied, pzBuffer);
            return static_cast<DWORD>(std::min<std::size_t>(sPath.size(), dwSize));
        },
        L"ZkBase.dll"};
};

std::wstring sGerman() {
    TModule const hModule(LoadLibraryExW(sBuilt(L"ZkToolsMessages.de.dll").c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE));
    return sLoadString(hModule.get(), uRenameFailed);
}

} // namespace

TEST(hGetResMod, FindsNothingBesideAModuleWithoutMessages) {
    TProbe const tProbe;
    EXPECT_EQ(tProbe.sFind(), L"none");
}

TEST(hGetResMod, FindsTheNeutralModule) {
    TProbe tProbe;
    tProbe.AddNeutral();
    EXPECT_EQ(tProbe.sFind(), pzEnglish);
}

TEST(hGetResMod, PrefersTheUsersLanguage) {
    ASSERT_NE(sGerman(), pzEnglish);
    TProbe tProbe;
    tProbe.AddLanguage();
    EXPECT_EQ(tProbe.sFind(), sGerman());
    tProbe.AddNeutral();
    EXPECT_EQ(tProbe.sFind(), sGerman());
}

TEST(hGetResMod, PassesOverALanguageFileThatIsNoModule) {
    TProbe tProbe;
    tProbe.AddNeutral();
    tProbe.Write(L"ProbeMessages." + sLanguage() + L".dll", "no module");
    EXPECT_EQ(tProbe.sFind(), pzEnglish);
}

TEST(hGetResMod, LooksForNoOtherLanguage) {
    TProbe tProbe;
    tProbe.Write(L"ProbeMessages.xx.dll", zk_test::sReadFileBytes(sBuilt(L"ZkToolsMessages.dll")));
    EXPECT_EQ(tProbe.sFind(), L"none");
}

TEST(hGetResMod, CutsTheNameAtItsLastPoint) {
    TProbe const tProbe(L"Probe.2.x.dll", {L"directory.with.points"});
    tProbe.AddNeutral(L"Probe.2.x");
    EXPECT_EQ(tProbe.sFind(), pzEnglish);
}

TEST(hGetResMod, CutsNothingOffANameWithoutExtension) {
    TProbe const tProbe(L"Probe.dll", {L"directory.with.points"});
    for (wchar_t const * pzName : {L"NoPoint", L".startsWithIt"}) {
        tProbe.AddNeutral(pzName);
        TModulePath const tPath(tProbe.sGetPath(pzName));
        EXPECT_EQ(tProbe.sFind(), pzEnglish) << testing::PrintToString(pzName);
    }
}

// Under Wine the loader finds no data file with a path of 260 characters or more, whatever its form: so what is asked
// for is looked at, not what is found.
TEST(hGetResMod, AsksForLongPathsInTheLongForm) {
    TProbe const tProbe(L"Probe.dll", {std::wstring(200, L'a'), std::wstring(200, L'b')});
    std::vector<std::wstring> sAsked;
    zk_test::TSystemCall<"LoadLibraryExW", decltype(LoadLibraryExW)> const tLoad(
        [&](LPCWSTR pzPath, HANDLE, DWORD) -> HMODULE {
            sAsked.push_back(pzPath);
            return nullptr;
        },
        L"ZkBase.dll");
    EXPECT_EQ(tProbe.sFind(), L"none");
    ASSERT_EQ(sAsked.size(), 2U);
    EXPECT_EQ(sAsked[0], zk_test::sLongForm(tProbe.sGetPath(L"ProbeMessages." + sLanguage() + L".dll")));
    EXPECT_EQ(sAsked[1], zk_test::sLongForm(tProbe.sGetPath(L"ProbeMessages.dll")));
}

TEST(hGetResMod, TakesTheWholePathOfAModule) {
    std::vector<std::wstring> sAsked;
    zk_test::TSystemCall<"LoadLibraryExW", decltype(LoadLibraryExW)> const tLoad(
        [&](LPCWSTR pzPath, HANDLE, DWORD) -> HMODULE {
            sAsked.push_back(pzPath);
            return nullptr;
        },
        L"ZkBase.dll");
    for (std::size_t uLength : {258U, 259U, 260U, 261U, 519U, 520U, 521U, 32000U}) {
        std::wstring const sStem = L"C:\\" + std::wstring(uLength - 7, L'd');
        TModulePath const tPath(sStem + L".dll");
        EXPECT_EQ(hGetResMod(GetModuleHandleW(nullptr)), nullptr);
        EXPECT_EQ(sAsked.back(), LR"(\\?\)" + sStem + L"Messages.dll") << uLength;
    }
}

TEST(hGetResMod, RunsNoCodeOfTheModuleItLoads) {
    TProbe tProbe;
    tProbe.AddNeutral();
    zk_test::TSystemCall<"LoadLibraryExW", decltype(LoadLibraryExW)> const tLoad(
        [&](LPCWSTR pzPath, HANDLE hFile, DWORD dwFlags) {
            EXPECT_EQ(hFile, nullptr);
            EXPECT_EQ(dwFlags, static_cast<DWORD>(LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE));
            return tLoad.Original(pzPath, hFile, dwFlags);
        },
        L"ZkBase.dll");
    EXPECT_EQ(tProbe.sFind(), pzEnglish);
    EXPECT_EQ(tLoad.iGetCalls(), 2);
}

TEST(hGetResMod, SearchesNowhereForWhatIsNoModule) {
    int iLoads = 0;
    zk_test::TSystemCall<"LoadLibraryExW", decltype(LoadLibraryExW)> const tLoad(
        [&](LPCWSTR, HANDLE, DWORD) -> HMODULE {
            ++iLoads;
            return nullptr;
        },
        L"ZkBase.dll");
    EXPECT_EQ(hGetResMod(reinterpret_cast<HINSTANCE>(std::uintptr_t{0x10000})), nullptr);
    EXPECT_EQ(iLoads, 0);
}

TEST(sLoadString, GivesTheTextOfTheId) {
    TModule const hModule(LoadLibraryExW(L"ZkToolsMessages.dll", nullptr, LOAD_LIBRARY_AS_DATAFILE));
    EXPECT_EQ(sLoadString(hModule.get(), uRenameFailed), pzEnglish);
}

TEST(sLoadString, IsEmptyForAnUnknownId) {
    TModule const hModule(LoadLibraryExW(L"ZkToolsMessages.dll", nullptr, LOAD_LIBRARY_AS_DATAFILE));
    for (unsigned int uId : {0U, 1U, 4231U + 1000U, 65535U, 65536U, 0x10000U + uRenameFailed, 0xFFFFFFFFU})
        EXPECT_EQ(sLoadString(hModule.get(), uId), L"") << uId;
}

TEST(sLoadString, GivesTextsOfAnyLengthWhole) {
    zk_test::TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sWrite(L"Long.dll", zk_test::sReadFileBytes(sBuilt(L"ZkToolsMessages.dll")));

    // A block of a string table: sixteen texts, each behind its length.
    std::wstring sLong(30000, L'x');
    sLong[100] = L'\0';
    std::wstring sBlock(16, L'\0');
    sBlock[15] = static_cast<wchar_t>(sLong.size());
    sBlock += sLong;
    constexpr unsigned int uId = 3000 * 16 + 15;
    HANDLE const hUpdate = BeginUpdateResourceW(sPath.c_str(), FALSE);
    ASSERT_NE(hUpdate, nullptr);
    EXPECT_TRUE(UpdateResourceW(hUpdate, RT_STRING, MAKEINTRESOURCEW(uId / 16 + 1), LANG_NEUTRAL, sBlock.data(),
                                static_cast<DWORD>(sBlock.size() * sizeof(wchar_t))));
    ASSERT_TRUE(EndUpdateResourceW(hUpdate, FALSE));

    TModule const hModule(LoadLibraryExW(sPath.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE));
    EXPECT_EQ(sLoadString(hModule.get(), uId), sLong);
    EXPECT_EQ(sLoadString(hModule.get(), uId - 1), L"");
}

TEST(sFormat_va, ReadsWideStringsAndNumbers) {
    EXPECT_EQ(sFormat(L"%s|%d|%u|%x|%c|%%", L"wide ä", -5, 4000000000U, 255, L'c'), L"wide ä|-5|4000000000|ff|c|%");
    EXPECT_EQ(sFormat(L"%hs %ls %S", "narrow", L"wide", "narrow"), L"narrow wide narrow");
    EXPECT_EQ(sFormat(L"%5s|%-5s|%05d|%.2f", L"a", L"b", 42, 1.5), L"    a|b    |00042|1.50");
    EXPECT_EQ(sFormat(L"%I64d", 9000000000LL), L"9000000000");
    EXPECT_EQ(sFormat(L""), L"");
}

TEST(sFormat_va, KnowsNoLimitOfLength) {
    for (std::size_t uLength : {255U, 256U, 1023U, 1024U, 65536U, 1000000U}) {
        std::wstring const sValue(uLength, L'y');
        EXPECT_EQ(sFormat(L"<%s>", sValue.c_str()), L"<" + sValue + L">");
    }
}

TEST(sFormat_va, NeedsNoArgumentsWithoutConversions) {
    EXPECT_EQ(sFormat_va(L"100 %% text", nullptr), L"100 % text");
}
