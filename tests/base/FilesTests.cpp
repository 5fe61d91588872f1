#include "ZkBase/Files.h"

#include "tests/support/ChildProcess.h"
#include "tests/support/Handle.h"
#include "tests/support/SystemCall.h"
#include "tests/support/TempDirectory.h"

#include <gtest/gtest.h>

#include <array>
#include <set>
#include <string>
#include <vector>

using file_func::fExistDirectory;
using file_func::fMakeDirectory;

namespace {

/// Other processes that make the same tree at the same time.
zk_test::TChildRole const tMaker(L"make-directories", [](std::vector<std::wstring> const & sArguments) {
    zk_test::Say("ready");
    static_cast<void>(zk_test::psHear());
    bool fAll = true;
    for (int i = 0; i < 40; ++i)
        fAll = fMakeDirectory((sArguments.at(0) + std::to_wstring(i) + LR"(\a\b\c\d)").c_str()) && fAll;
    zk_test::Say(fAll ? "all" : "failed");
    return 0;
});

/// A path of components of 200 characters behind the start.
std::wstring sDeepPath(std::wstring sPath, std::size_t uLength) {
    while (sPath.size() < uLength)
        sPath += L"\\" + std::wstring(std::min<std::size_t>(200, uLength - sPath.size()), L'd');
    return sPath;
}

/// The system's calls on directories, with a tree of paths instead of a disk. Nothing exists but what is put in. The
/// long form of a path reaches what the short one does.
class TTree {
public:
    using TCreate = zk_test::TSystemCall<"CreateDirectoryW", decltype(CreateDirectoryW)>;
    using TAttributes = zk_test::TSystemCall<"GetFileAttributesW", decltype(GetFileAttributesW)>;

    std::set<std::wstring> sDirectories;
    std::set<std::wstring> sFiles;
    std::vector<std::wstring> sCreated; // every path asked for, in order
    DWORD dwMissing = ERROR_PATH_NOT_FOUND;

    BOOL fCreate(std::wstring const & sAsked) {
        sCreated.push_back(sAsked);
        std::wstring const sPath = sShortForm(sAsked);
        if (sDirectories.contains(sPath) || sFiles.contains(sPath))
            return zk_test::tFailWith(ERROR_ALREADY_EXISTS, FALSE);
        if (!sDirectories.contains(sPath.substr(0, sPath.rfind(L'\\')))) return zk_test::tFailWith(dwMissing, FALSE);
        sDirectories.insert(sPath);
        return TRUE;
    }

    DWORD dwAttributes(std::wstring const & sAsked) const {
        std::wstring const sPath = sShortForm(sAsked);
        if (sDirectories.contains(sPath)) return FILE_ATTRIBUTE_DIRECTORY;
        if (sFiles.contains(sPath)) return FILE_ATTRIBUTE_NORMAL;
        return zk_test::tFailWith(ERROR_FILE_NOT_FOUND, INVALID_FILE_ATTRIBUTES);
    }

private:
    static std::wstring sShortForm(std::wstring const & sPath) {
        return sPath.starts_with(LR"(\\?\)") ? sPath.substr(4) : sPath;
    }

    TCreate tCreate{[this](LPCWSTR pzPath, LPSECURITY_ATTRIBUTES) { return fCreate(pzPath); }, L"ZkBase.dll"};
    TAttributes tAttributes{[this](LPCWSTR pzPath) { return dwAttributes(pzPath); }, L"ZkBase.dll"};
};

/// Makes another directory the current one for its life.
class TCurrentDirectory {
public:
    explicit TCurrentDirectory(std::wstring const & sPath) {
        GetCurrentDirectoryW(static_cast<DWORD>(acOld.size()), acOld.data());
        SetCurrentDirectoryW(sPath.c_str());
    }
    ~TCurrentDirectory() { SetCurrentDirectoryW(acOld.data()); }
    TCurrentDirectory(TCurrentDirectory const &) = delete;
    TCurrentDirectory & operator=(TCurrentDirectory const &) = delete;

private:
    std::array<wchar_t, 1000> acOld{};
};

} // namespace

TEST(fExistDirectory, IsTrueForADirectoryAlone) {
    zk_test::TTempDirectory const tTemp;
    std::wstring const sDirectory = tTemp.sMakeDirectory(L"dir");
    std::wstring const sFile = tTemp.sWrite(L"file", "x");
    EXPECT_TRUE(fExistDirectory(sDirectory.c_str()));
    EXPECT_TRUE(fExistDirectory((sDirectory + L"\\").c_str()));
    EXPECT_TRUE(fExistDirectory((sDirectory + L"\\.").c_str()));
    EXPECT_TRUE(fExistDirectory((sDirectory + L"\\..").c_str()));
    EXPECT_TRUE(fExistDirectory(zk_test::sLongForm(sDirectory).c_str()));
    EXPECT_TRUE(fExistDirectory(zk_test::sLongForm(sDirectory + L"\\").c_str()));
    EXPECT_TRUE(fExistDirectory(L"C:\\"));
    EXPECT_TRUE(fExistDirectory(L"."));
    EXPECT_FALSE(fExistDirectory(sFile.c_str()));
    EXPECT_FALSE(fExistDirectory((sFile + L"\\").c_str()));
    EXPECT_FALSE(fExistDirectory(tTemp.sGetPath(L"missing").c_str()));
    EXPECT_FALSE(fExistDirectory(tTemp.sGetPath(L"missing\\dir").c_str()));
    EXPECT_FALSE(fExistDirectory(L""));
    EXPECT_FALSE(fExistDirectory(nullptr));
}

TEST(fExistDirectory, TakesNoPattern) {
    zk_test::TTempDirectory const tTemp;
    tTemp.sMakeDirectory(L"dir");
    EXPECT_FALSE(fExistDirectory(tTemp.sGetPath(L"*").c_str()));
    EXPECT_FALSE(fExistDirectory(tTemp.sGetPath(L"d?r").c_str()));
}

TEST(fExistDirectory, LooksAtTheAttributesAlone) {
    zk_test::TTempDirectory const tTemp;
    std::wstring const sDirectory = tTemp.sMakeDirectory(L"dir");
    SetFileAttributesW(sDirectory.c_str(), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY);
    EXPECT_TRUE(fExistDirectory(sDirectory.c_str()));
}

TEST(fMakeDirectory, MakesTheDirectory) {
    zk_test::TTempDirectory const tTemp;
    EXPECT_TRUE(fMakeDirectory(tTemp.sGetPath(L"dir").c_str()));
    EXPECT_TRUE(fExistDirectory(tTemp.sGetPath(L"dir").c_str()));
    EXPECT_EQ(zk_test::sListDirectory(tTemp.sGetPath()), L"dir");
}

TEST(fMakeDirectory, IsTrueForOneThatExists) {
    zk_test::TTempDirectory const tTemp;
    EXPECT_TRUE(fMakeDirectory(tTemp.sGetPath().c_str()));
    EXPECT_TRUE(fMakeDirectory((tTemp.sGetPath() + L"\\").c_str()));
    EXPECT_TRUE(fMakeDirectory(L"C:\\"));
    EXPECT_TRUE(fMakeDirectory(L"\\"));
    EXPECT_TRUE(fMakeDirectory(L"."));
}

TEST(fMakeDirectory, MakesMissingParents) {
    zk_test::TTempDirectory const tTemp;
    EXPECT_TRUE(fMakeDirectory(tTemp.sGetPath(LR"(a\b\c)").c_str()));
    EXPECT_TRUE(fExistDirectory(tTemp.sGetPath(LR"(a\b\c)").c_str()));
    EXPECT_TRUE(fMakeDirectory(tTemp.sGetPath(LR"(a\b\d\e)").c_str()));
    EXPECT_EQ(zk_test::sListDirectory(tTemp.sGetPath(LR"(a\b)")), L"c|d");
}

TEST(fMakeDirectory, TakesEveryFormOfAPath) {
    zk_test::TTempDirectory const tTemp;
    EXPECT_TRUE(fMakeDirectory(tTemp.sGetPath(LR"(a\b\)").c_str()));
    EXPECT_TRUE(fMakeDirectory(tTemp.sGetPath(LR"(c\d\\\)").c_str()));
    EXPECT_TRUE(fMakeDirectory(tTemp.sGetPath(LR"(e\\\f)").c_str()));
    EXPECT_TRUE(fMakeDirectory(tTemp.sGetPath(L"g/h/").c_str()));
    EXPECT_TRUE(fMakeDirectory(tTemp.sGetPath(LR"(i\.\j\..\k)").c_str()));
    EXPECT_TRUE(fMakeDirectory(zk_test::sLongForm(tTemp.sGetPath(LR"(l\m)")).c_str()));
    EXPECT_TRUE(fMakeDirectory(zk_test::sLongForm(tTemp.sGetPath(LR"(n\o\)")).c_str()));
    EXPECT_EQ(zk_test::sListDirectory(tTemp.sGetPath()), L"a|c|e|g|i|l|n");
    for (wchar_t const * pzMade : {LR"(a\b)", LR"(c\d)", LR"(e\f)", LR"(g\h)", LR"(i\k)", LR"(l\m)", LR"(n\o)"})
        EXPECT_TRUE(fExistDirectory(tTemp.sGetPath(pzMade).c_str())) << testing::PrintToString(pzMade);
}

TEST(fMakeDirectory, TakesARelativePath) {
    zk_test::TTempDirectory const tTemp;
    {
        TCurrentDirectory const tCurrent(tTemp.sGetPath());
        EXPECT_TRUE(fMakeDirectory(LR"(a\b)"));
        EXPECT_TRUE(fMakeDirectory(L"c"));
    }
    EXPECT_EQ(zk_test::sListDirectory(tTemp.sGetPath()), L"a|c");
    EXPECT_EQ(zk_test::sListDirectory(tTemp.sGetPath(L"a")), L"b");
}

TEST(fMakeDirectory, TellsError183ForAFileInTheWay) {
    zk_test::TTempDirectory const tTemp;
    std::wstring const sFile = tTemp.sWrite(L"file", "x");
    for (wchar_t const * pzBehind : {L"", L"\\", LR"(\a)", LR"(\a\b)"}) {
        SetLastError(0);
        EXPECT_FALSE(fMakeDirectory((sFile + pzBehind).c_str()));
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS)) << testing::PrintToString(pzBehind);
    }
    EXPECT_EQ(zk_test::sReadFileBytes(sFile), "x");
}

TEST(fMakeDirectory, MakesNeitherDriveNorShare) {
    struct TRow {
        wchar_t const * pzPath;
        std::vector<std::wstring> sAsked;
    };
    std::array<TRow, 10> const atRows{{
        {LR"(Q:\)", {}},
        {LR"(Q:)", {}},
        {LR"(Q:\a)", {LR"(Q:\a)"}},
        {LR"(Q:\a\b)", {LR"(Q:\a\b)", LR"(Q:\a)"}},
        {LR"(\\server)", {}},
        {LR"(\\server\share)", {}},
        {LR"(\\server\share\)", {}},
        {LR"(\\server\share\a\b)", {LR"(\\server\share\a\b)", LR"(\\server\share\a)"}},
        {LR"(\\?\Q:\a\b)", {LR"(\\?\Q:\a\b)", LR"(\\?\Q:\a)"}},
        {LR"(\\?\UNC\server\share\a\b)", {LR"(\\?\UNC\server\share\a\b)", LR"(\\?\UNC\server\share\a)"}},
    }};
    for (TRow const & tRow : atRows) {
        TTree tTree;
        EXPECT_FALSE(fMakeDirectory(tRow.pzPath));
        EXPECT_EQ(GetLastError(),
                  static_cast<DWORD>(tRow.sAsked.empty() ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND));
        EXPECT_EQ(tTree.sCreated, tRow.sAsked) << testing::PrintToString(tRow.pzPath);
    }
}

TEST(fMakeDirectory, MakesTheMissingPartOfANetworkPath) {
    TTree tTree;
    tTree.sDirectories = {LR"(\\server\share)"};
    EXPECT_TRUE(fMakeDirectory(LR"(//server/share/a/b)"));
    EXPECT_TRUE(tTree.sDirectories.contains(LR"(\\server\share\a)"));
    EXPECT_TRUE(tTree.sDirectories.contains(LR"(\\server\share\a\b)"));
    EXPECT_TRUE(fMakeDirectory(LR"(\\server\share\)"));
}

TEST(fMakeDirectory, TellsTheSystemsErrorOfTheDirectoryThatFailed) {
    for (DWORD dwError :
         std::initializer_list<DWORD>{ERROR_BAD_NETPATH, ERROR_ACCESS_DENIED, ERROR_DISK_FULL, ERROR_INVALID_NAME}) {
        TTree tTree;
        tTree.dwMissing = dwError;
        EXPECT_FALSE(fMakeDirectory(LR"(C:\a\b\c)"));
        EXPECT_EQ(GetLastError(), dwError);
        EXPECT_EQ(tTree.sCreated.size(), 1U);
    }
    zk_test::TTempDirectory const tTemp;
    EXPECT_FALSE(fMakeDirectory(tTemp.sGetPath(LR"(a\b*c)").c_str()));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_NAME));
    EXPECT_FALSE(fMakeDirectory(L""));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
    EXPECT_FALSE(fMakeDirectory(nullptr));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
}

TEST(fMakeDirectory, IsTrueForADirectoryThatCannotBeMade) {
    // The system refuses to make a share's directory before it finds that it is there.
    zk_test::TSystemCall<"CreateDirectoryW", decltype(CreateDirectoryW)> const tCreate(
        [](LPCWSTR, LPSECURITY_ATTRIBUTES) { return zk_test::tFailWith(ERROR_ACCESS_DENIED, FALSE); }, L"ZkBase.dll");
    zk_test::TTempDirectory const tTemp;
    EXPECT_TRUE(fMakeDirectory(tTemp.sGetPath().c_str()));
    EXPECT_FALSE(fMakeDirectory(tTemp.sGetPath(L"a").c_str()));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
    EXPECT_FALSE(fMakeDirectory(tTemp.sWrite(L"file", "x").c_str())); // a file in the way is told as ever
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
}

TEST(fMakeDirectory, TakesAFileForAParentUnderEitherError) {
    for (DWORD dwError : std::initializer_list<DWORD>{ERROR_PATH_NOT_FOUND, ERROR_DIRECTORY}) {
        TTree tTree;
        tTree.dwMissing = dwError;
        tTree.sDirectories = {L"C:"};
        tTree.sFiles = {LR"(C:\a)"};
        EXPECT_FALSE(fMakeDirectory(LR"(C:\a\b\c)"));
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
    }
}

TEST(fMakeDirectory, DoesNotMindAnotherProcessThatMakesTheParent) {
    zk_test::TTempDirectory const tTemp;
    zk_test::TSystemCall<"CreateDirectoryW", decltype(CreateDirectoryW)> tCreate(
        [&](LPCWSTR pzPath, LPSECURITY_ATTRIBUTES pSecurity) {
            // The other one is always there first, but for the directory whose parent is missing.
            tCreate.Original(pzPath, nullptr);
            return tCreate.Original(pzPath, pSecurity);
        },
        L"ZkBase.dll");
    EXPECT_TRUE(fMakeDirectory(tTemp.sGetPath(LR"(a\b\c)").c_str()));
    EXPECT_TRUE(fExistDirectory(tTemp.sGetPath(LR"(a\b\c)").c_str()));
}

TEST(fMakeDirectory, SucceedsInManyProcessesAtOnce) {
    zk_test::TTempDirectory const tTemp;
    std::wstring const sStem = tTemp.sGetPath(L"tree");
    std::vector<std::unique_ptr<zk_test::TChildProcess>> pChildren;
    for (int i = 0; i < 4; ++i)
        pChildren.push_back(std::make_unique<zk_test::TChildProcess>(tMaker, std::vector<std::wstring>{sStem}));
    for (auto const & pChild : pChildren)
        ASSERT_EQ(pChild->sHear(), "ready");
    for (auto const & pChild : pChildren)
        pChild->Say("go");
    for (auto const & pChild : pChildren)
        EXPECT_EQ(pChild->sHear(), "all");
    EXPECT_TRUE(fExistDirectory((sStem + LR"(39\a\b\c\d)").c_str()));
}

// The file system under Wine ends below 4,096 bytes; beyond that the tree stands in for the disk.
TEST(fMakeDirectory, MakesLongPaths) {
    for (std::size_t uLength : {247U, 248U, 249U, 259U, 260U, 261U, 1000U, 3500U}) {
        zk_test::TTempDirectory const tTemp;
        std::wstring const sPath = sDeepPath(tTemp.sGetPath(), uLength);
        EXPECT_FALSE(fExistDirectory(sPath.c_str()));
        EXPECT_TRUE(fMakeDirectory(sPath.c_str())) << uLength;
        EXPECT_TRUE(fMakeDirectory((sPath + L"\\").c_str())) << uLength;
        EXPECT_TRUE(fExistDirectory(sPath.c_str())) << uLength;
        EXPECT_TRUE(fExistDirectory(zk_test::sLongForm(sPath).c_str())) << uLength;
    }
}

TEST(fMakeDirectory, MakesLongPathsWithForwardSlashesAndLongNames) {
    zk_test::TTempDirectory const tTemp;
    std::wstring sPath = tTemp.sGetPath();
    for (int i = 0; i < 3; ++i)
        sPath += L"//" + std::wstring(255, L'n');
    EXPECT_TRUE(fMakeDirectory(sPath.c_str()));
    EXPECT_EQ(zk_test::sListDirectory(tTemp.sGetPath()), std::wstring(255, L'n'));
}

TEST(fMakeDirectory, AsksForLongPathsInTheLongForm) {
    for (std::size_t uLength : {5000U, 30000U}) {
        TTree tTree;
        tTree.sDirectories = {LR"(C:\top)"};
        std::wstring const sPath = sDeepPath(LR"(C:\top)", uLength);
        EXPECT_FALSE(fExistDirectory(sPath.c_str()));
        EXPECT_TRUE(fMakeDirectory(sPath.c_str()));
        EXPECT_TRUE(tTree.sDirectories.contains(sPath));
        EXPECT_TRUE(fExistDirectory(sPath.c_str()));

        // All the way up to what there is and down again, in the form that the length of each asks for.
        EXPECT_EQ(tTree.sCreated.front(), LR"(\\?\)" + sPath);
        EXPECT_EQ(tTree.sCreated.back(), LR"(\\?\)" + sPath);
        for (std::wstring const & sAsked : tTree.sCreated)
            EXPECT_EQ(sAsked.starts_with(LR"(\\?\)"), sAsked.size() >= 248);
    }
}

TEST(fMakeDirectory, TakesTheLowerLimitOfTheSystemForNewDirectories) {
    TTree tTree;
    std::wstring const sParent = LR"(C:\)" + std::wstring(200, L'p');
    tTree.sDirectories = {sParent};
    std::wstring const sShort = sParent + L"\\" + std::wstring(247 - sParent.size() - 1, L'x');
    EXPECT_TRUE(fMakeDirectory(sShort.c_str()));
    EXPECT_TRUE(fMakeDirectory((sShort + L"x").c_str()));
    EXPECT_EQ(tTree.sCreated, (std::vector<std::wstring>{sShort, LR"(\\?\)" + sShort + L"x"}));
}

TEST(MsiGetFileHashW, IsTheMd5OfTheFile) {
    zk_test::TTempDirectory const tTemp;
    MSIFILEHASHINFO tHash{.dwFileHashInfoSize = sizeof(MSIFILEHASHINFO), .dwData = {}};
    static_assert(sizeof tHash == 20);
    EXPECT_EQ(file_func::MsiGetFileHashW(tTemp.sWrite(L"abc", "abc").c_str(), 0, &tHash), 0U);
    EXPECT_EQ(tHash.dwData[0], 0x98500190U);
    EXPECT_EQ(tHash.dwData[1], 0xB04FD23CU);
    EXPECT_EQ(tHash.dwData[2], 0x7D3F96D6U);
    EXPECT_EQ(tHash.dwData[3], 0x727FE128U);
    EXPECT_EQ(file_func::MsiGetFileHashW(tTemp.sGetPath(L"missing").c_str(), 0, &tHash),
              static_cast<unsigned int>(ERROR_FILE_NOT_FOUND));
}

TEST(ShellExecuteExW, StartsWhatItIsTold) {
    SHELLEXECUTEINFOW tInfo{};
    tInfo.cbSize = sizeof tInfo;
    tInfo.fMask = SEE_MASK_NOCLOSEPROCESS | SEE_MASK_FLAG_NO_UI;
    tInfo.lpFile = L"cmd.exe";
    tInfo.lpParameters = L"/c exit 7";
    tInfo.nShow = SW_HIDE;
    ASSERT_NE(file_func::ShellExecuteExW(&tInfo), 0);
    zk_test::THandle const hProcess(tInfo.hProcess);
    ASSERT_TRUE(hProcess);
    EXPECT_EQ(WaitForSingleObject(hProcess.hGet(), 10000), WAIT_OBJECT_0);
    DWORD dwExit = 0;
    EXPECT_TRUE(GetExitCodeProcess(hProcess.hGet(), &dwExit));
    EXPECT_EQ(dwExit, 7U);
}

TEST(ShellExecuteExW, TellsAFailureByItsResult) {
    SHELLEXECUTEINFOW tInfo{};
    tInfo.cbSize = sizeof tInfo;
    tInfo.fMask = SEE_MASK_FLAG_NO_UI;
    tInfo.lpFile = LR"(C:\missing-program.exe)";
    EXPECT_EQ(file_func::ShellExecuteExW(&tInfo), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}
