// The path functions against the platform's functions of those names, on random short paths. Where ours differ by
// intention, the difference is listed here and the paths concerned are left to the tables of PathsTests.cpp.
#include "ZkBase/Paths.h"
#include "ZkBase/Windows.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string_view>

using namespace path_func;

namespace {

/// The platform's functions. Loaded by hand: the linker's library of that name would bind them to the header's macros.
class TPlatform {
public:
    TPlatform() : hModule(LoadLibraryW(L"shlwapi.dll")) {}
    ~TPlatform() { FreeLibrary(hModule); }
    TPlatform(TPlatform const &) = delete;
    TPlatform & operator=(TPlatform const &) = delete;

    template <typename TFunction>
    TFunction * pFind(char const * pzName) const {
        return reinterpret_cast<TFunction *>(reinterpret_cast<void *>(GetProcAddress(hModule, pzName)));
    }

private:
    HMODULE hModule;
};

using TPathTest = BOOL WINAPI(wchar_t const *);
using TPathChange = BOOL WINAPI(wchar_t *);
using TPathPointer = wchar_t * WINAPI(wchar_t *);
using TPathPair = int WINAPI(wchar_t const *, wchar_t const *, wchar_t *);
using TPathAppend = BOOL WINAPI(wchar_t *, wchar_t const *);

/// Short paths full of edges: every second one begins like something absolute.
class TRandomPaths {
public:
    explicit TRandomPaths(std::wstring_view sAlphabet_) : sAlphabet(sAlphabet_) {}

    std::wstring sNext() {
        constexpr std::array<wchar_t const *, 10> apzStarts{
            L"", L"", L"", L"", L"C:", L"C:\\", L"c:\\", L"\\", L"\\\\", L"\\\\a\\b",
        };
        std::wstring sPath = apzStarts[uBelow(apzStarts.size())];
        std::size_t const uLength = uBelow(4) == 0 ? uBelow(80) : uBelow(9);
        for (std::size_t i = 0; i < uLength; ++i)
            sPath += sAlphabet[uBelow(sAlphabet.size())];
        return sPath;
    }

private:
    std::size_t uBelow(std::size_t uLimit) {
        return std::uniform_int_distribution<std::size_t>(0, uLimit - 1)(tEngine);
    }

    std::wstring_view sAlphabet;
    std::mt19937 tEngine{20240115};
};

constexpr int iRuns = 200000;
constexpr std::wstring_view sAllCharacters = L"aAb.\\\\\\/: ?*";

/// A buffer that the platform's functions change, with room for what they add.
std::wstring sBuffer(std::wstring sPath) {
    sPath.resize(MAX_PATH + 1);
    return sPath;
}

/// Network paths without a server or a share, and all behind the long prefix: ours has a root of its own there.
bool fIsIncompleteShare(std::wstring_view sPath) {
    if (!sPath.starts_with(L"\\\\")) return false;
    std::size_t const uServerEnd = sPath.find(L'\\', 2);
    return sPath.substr(2).starts_with(L'?') || uServerEnd == 2 || uServerEnd == std::wstring_view::npos ||
           uServerEnd + 1 == sPath.size() || sPath[uServerEnd + 1] == L'\\';
}

bool fIsShare(std::wstring_view sPath) {
    return sPath.starts_with(L"\\\\") && !fIsIncompleteShare(sPath) &&
           sPath.find(L'\\', sPath.find(L'\\', 2) + 1) == std::wstring_view::npos;
}

} // namespace

TEST(PlatformPaths, TellRelativePathsLikeOurs) {
    TPlatform const tPlatform;
    auto * const pPlatform = tPlatform.pFind<TPathTest>("PathIsRelativeW");
    TRandomPaths tPaths(sAllCharacters);
    for (int i = 0; i < iRuns; ++i) {
        std::wstring const sPath = tPaths.sNext();
        ASSERT_EQ(fPathIsRelative(sPath.c_str()), pPlatform(sPath.c_str()) != FALSE) << testing::PrintToString(sPath);
    }
}

TEST(PlatformPaths, TellRootsLikeOurs) {
    TPlatform const tPlatform;
    auto * const pPlatform = tPlatform.pFind<TPathTest>("PathIsRootW");
    TRandomPaths tPaths(sAllCharacters);
    for (int i = 0; i < iRuns; ++i) {
        std::wstring const sPath = tPaths.sNext();
        if (fIsIncompleteShare(sPath)) continue; // a bare server is no root of ours
        ASSERT_EQ(fPathIsRoot(sPath.c_str()), pPlatform(sPath.c_str()) != FALSE) << testing::PrintToString(sPath);
    }
}

TEST(PlatformPaths, TellNetworkPathsLikeOurs) {
    TPlatform const tPlatform;
    auto * const pPlatform = tPlatform.pFind<TPathTest>("PathIsUNCW");
    auto * const pPlatformServer = tPlatform.pFind<TPathTest>("PathIsUNCServerW");
    TRandomPaths tPaths(sAllCharacters);
    for (int i = 0; i < iRuns; ++i) {
        std::wstring const sPath = tPaths.sNext();
        if (sPath.starts_with(L"\\\\?")) continue; // two backslashes are enough for ours
        ASSERT_EQ(fPathIsUNC(sPath.c_str()), pPlatform(sPath.c_str()) != FALSE) << testing::PrintToString(sPath);
        ASSERT_EQ(fPathIsUNCServer(sPath.c_str()), pPlatformServer(sPath.c_str()) != FALSE)
            << testing::PrintToString(sPath);
    }
}

TEST(PlatformPaths, LoseTheirBackslashLikeOurs) {
    TPlatform const tPlatform;
    auto * const pPlatform = tPlatform.pFind<TPathPointer>("PathRemoveBackslashW");
    TRandomPaths tPaths(sAllCharacters);
    for (int i = 0; i < iRuns; ++i) {
        std::wstring sPath = tPaths.sNext();
        if (fIsIncompleteShare(sPath)) continue; // their roots differ
        std::wstring sTheirs = sBuffer(sPath);
        pPlatform(sTheirs.data());
        std::wstring sOurs = sPath;
        PathRemoveBackslashW(sOurs);
        ASSERT_EQ(sOurs, sTheirs.c_str()) << testing::PrintToString(sPath);
    }
}

TEST(PlatformPaths, LoseTheirLastComponentLikeOurs) {
    TPlatform const tPlatform;
    auto * const pPlatform = tPlatform.pFind<TPathChange>("PathRemoveFileSpecW");
    TRandomPaths tPaths(sAllCharacters);
    for (int i = 0; i < iRuns; ++i) {
        std::wstring sPath = tPaths.sNext();
        if (fIsIncompleteShare(sPath) || fIsShare(sPath)) continue; // a root stays
        if (sPath.find(L':', sPath.starts_with(L'\\') ? 0 : 2) != std::wstring::npos || sPath.starts_with(L':'))
            continue; // only a drive's colon means anything to ours
        std::wstring sTheirs = sBuffer(sPath);
        bool const fTheirs = pPlatform(sTheirs.data()) != FALSE;
        std::wstring sOurs = sPath;
        ASSERT_EQ(fPathRemoveFileSpec(sOurs), fTheirs) << testing::PrintToString(sPath);
        ASSERT_EQ(sOurs, sTheirs.c_str()) << testing::PrintToString(sPath);
    }
}

TEST(PlatformPaths, HaveTheSameCommonPrefixAsOurs) {
    TPlatform const tPlatform;
    auto * const pPlatform = tPlatform.pFind<TPathPair>("PathCommonPrefixW");
    TRandomPaths tPaths(L"aAb\\\\/. ");
    int iCompared = 0;
    for (int i = 0; i < iRuns; ++i) {
        std::wstring const sFirst = tPaths.sNext();
        std::wstring sSecond = tPaths.sNext();
        if (i % 2 == 0) sSecond = sFirst.substr(0, sSecond.size()) + sSecond;
        if (fIsIncompleteShare(sFirst) || fIsIncompleteShare(sSecond)) continue;
        if (sFirst.size() == 2 || sSecond.size() == 2) continue;       // "C:" is not taken for "C:\"
        if (sFirst.starts_with(L'\\') && sSecond.starts_with(L'\\') && // "\" is a root of ours
            !(sFirst.starts_with(L"\\\\") && sSecond.starts_with(L"\\\\")))
            continue;
        std::wstring sTheirs = sBuffer(L"");
        int const iTheirs = pPlatform(sFirst.c_str(), sSecond.c_str(), sTheirs.data());
        if (iTheirs == 3 && sFirst[1] != L':') continue; // the platform takes any two characters for a drive
        ++iCompared;
        ASSERT_EQ(sPathCommonPrefix(sFirst.c_str(), sSecond.c_str()), sTheirs.c_str())
            << testing::PrintToString(sFirst) << " and " << testing::PrintToString(sSecond);
    }
    EXPECT_GT(iCompared, iRuns / 2);
}

TEST(PlatformPaths, AreAppendedLikeOurs) {
    TPlatform const tPlatform;
    auto * const pPlatform = tPlatform.pFind<TPathAppend>("PathAppendW");
    TRandomPaths tPaths(L"aAb\\\\ /"); // no points: the platform resolves them
    for (int i = 0; i < iRuns; ++i) {
        std::wstring const sPath = tPaths.sNext();
        std::wstring const sMore = tPaths.sNext();
        std::wstring sTheirs = sBuffer(sPath);
        ASSERT_TRUE(pPlatform(sTheirs.data(), sMore.c_str()));
        std::wstring const sOurs = sPathAppend(sPath, sMore);
        if (sOurs.empty() || (sOurs.size() == 2 && sOurs[1] == L':')) continue; // the platform makes roots of these
        ASSERT_EQ(sOurs, sTheirs.c_str()) << testing::PrintToString(sPath) << " and " << testing::PrintToString(sMore);
    }
}

TEST(PlatformPaths, AreSplitAndMadeLikeOurs) {
    TRandomPaths tPaths(sAllCharacters);
    for (int i = 0; i < iRuns; ++i) {
        std::wstring const sPath = tPaths.sNext();
        std::array<wchar_t, _MAX_DRIVE> acDrive{};
        std::array<wchar_t, _MAX_DIR> acDir{};
        std::array<wchar_t, _MAX_FNAME> acName{};
        std::array<wchar_t, _MAX_EXT> acExt{};
        _wsplitpath(sPath.c_str(), acDrive.data(), acDir.data(), acName.data(), acExt.data());
        std::wstring sDrive, sDir, sName, sExt;
        SplitPath(sPath, &sDrive, &sDir, &sName, &sExt);
        ASSERT_EQ(sDrive, acDrive.data()) << testing::PrintToString(sPath);
        ASSERT_EQ(sDir, acDir.data()) << testing::PrintToString(sPath);
        ASSERT_EQ(sName, acName.data()) << testing::PrintToString(sPath);
        ASSERT_EQ(sExt, acExt.data()) << testing::PrintToString(sPath);

        std::wstring sMade = sBuffer(L"");
        std::wstring const sExtension = i % 2 == 0 || sExt.empty() ? sExt : sExt.substr(1);
        _wmakepath(sMade.data(), sDrive.c_str(), sName.c_str(), sName.c_str(), sExtension.c_str());
        ASSERT_EQ(sMakePath(sDrive.c_str(), sName.c_str(), sName.c_str(), sExtension.c_str()), sMade.c_str())
            << testing::PrintToString(sPath);
    }
}
