#include "ZkTools/Files.h"

#include "ZkTools/Exceptions.h"
#include "ZkTools/MessageIds.h"
#include "tests/files/Fixture.h"
#include "tests/support/Handle.h"
#include "tests/support/SystemCall.h"
#include "tests/support/TempDirectory.h"

#include <gtest/gtest.h>

#include <rpc.h>

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

using namespace std::string_view_literals;

namespace {

using testing::PrintToString;
using zk_test::tFailWith;
using zk_test::THandle;
using zk_test::THardToReach;
using zk_test::TSystemCall;
using zk_test::TTempDirectory;
using zk_test::tThrownBy;

using TFindFirst = TSystemCall<"FindFirstFileW", decltype(FindFirstFileW)>;
using TFindFirstEx = TSystemCall<"FindFirstFileExW", decltype(FindFirstFileExW)>;
using TFindNext = TSystemCall<"FindNextFileW", decltype(FindNextFileW)>;
using TFindClose = TSystemCall<"FindClose", decltype(FindClose)>;
using TCreateFile = TSystemCall<"CreateFileW", decltype(CreateFileW)>;
using TCloseHandle = TSystemCall<"CloseHandle", decltype(CloseHandle)>;

/// Makes the system's directory for temporary files another one as long as it lives.
class TTempVariable {
public:
    explicit TTempVariable(std::wstring const & sDirectory) {
        acOld[GetEnvironmentVariableW(L"TMP", acOld, MAX_PATH)] = 0;
        SetEnvironmentVariableW(L"TMP", sDirectory.c_str());
    }
    ~TTempVariable() { SetEnvironmentVariableW(L"TMP", acOld); }
    TTempVariable(TTempVariable const &) = delete;
    TTempVariable & operator=(TTempVariable const &) = delete;

private:
    wchar_t acOld[MAX_PATH] = {};
};

FILETIME tFileTime(unsigned __int64 uiTicks) noexcept {
    return {static_cast<DWORD>(uiTicks), static_cast<DWORD>(uiTicks >> 32)};
}

unsigned __int64 uiTicks(FILETIME const & tTime) noexcept {
    return static_cast<unsigned __int64>(tTime.dwHighDateTime) << 32 | tTime.dwLowDateTime;
}

constexpr unsigned __int64 ui2001 = 126'227'808'000'000'000; // 2001-01-01

/// Makes the file that long, without writing it.
void SetFileLength(std::wstring const & sPath, LONGLONG iLength) {
    THandle const hFile(CreateFileW(sPath.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    LARGE_INTEGER const tLength{.QuadPart = iLength};
    ASSERT_TRUE(SetFilePointerEx(hFile.hGet(), tLength, nullptr, FILE_BEGIN) && SetEndOfFile(hFile.hGet()));
}

} // namespace

// Existence

TEST(FExistDirectory, KnowsDirectoriesOnly) {
    TTempDirectory const tTemp;
    tTemp.sMakeDirectory(L"dir");
    tTemp.sWrite(L"file", "");
    for (std::wstring const & sPath : {tTemp.sGetPath(), tTemp.sGetPath(L"dir"), tTemp.sGetPath(L"dir\\"),
                                       std::wstring(L"C:\\"), tTemp.sGetPath(L"dir\\..")})
        EXPECT_TRUE(fExistDirectory(sPath.c_str())) << PrintToString(sPath);
    for (std::wstring const & sPath :
         {tTemp.sGetPath(L"file"), tTemp.sGetPath(L"missing"), tTemp.sGetPath(L"di*"), tTemp.sGetPath(L"file\\x")})
        EXPECT_FALSE(fExistDirectory(sPath.c_str())) << PrintToString(sPath);
    THardToReach const tHard;
    EXPECT_TRUE(fExistDirectory(tHard.sGetPath().c_str()));
}

TEST(FExistFileOrDirectory, TakesThePathForAPattern) {
    TTempDirectory const tTemp;
    tTemp.sMakeDirectory(L"dir");
    tTemp.sWrite(L"file.ext", "");
    for (std::wstring const & sPath :
         {tTemp.sGetPath(), tTemp.sGetPath(L"dir"), tTemp.sGetPath(L"file.ext"), tTemp.sGetPath(L"FILE.EXT"),
          tTemp.sGetPath(L"f*"), tTemp.sGetPath(L"di?"), tTemp.sGetPath(L"*.ext"), tTemp.sGetPath(L"dir\\*")})
        EXPECT_TRUE(fExistFileOrDirectory(sPath.c_str())) << PrintToString(sPath);
    for (std::wstring const & sPath : {tTemp.sGetPath(L"file"), tTemp.sGetPath(L"x*"), tTemp.sGetPath(L"dir\\"),
                                       tTemp.sGetPath(L"dir\\x"), tTemp.sGetPath(L"missing\\x"), std::wstring(L"C:\\"),
                                       std::wstring(), std::wstring(30000, L'x'), L"C:\\" + std::wstring(30000, L'x')})
        EXPECT_FALSE(fExistFileOrDirectory(sPath.c_str())) << PrintToString(sPath);
}

TEST(FExistFileOrDirectory, LeavesTheReasonToGetLastError) {
    TTempDirectory const tTemp;
    EXPECT_FALSE(fExistFileOrDirectory(tTemp.sGetPath(L"missing").c_str()));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    EXPECT_FALSE(fExistFile(tTemp.sGetPath(L"missing\\x").c_str()));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
}

TEST(FExistFile, IsFalseForADirectory) {
    TTempDirectory const tTemp;
    tTemp.sMakeDirectory(L"dir");
    tTemp.sWrite(L"file", "");
    EXPECT_TRUE(fExistFile(tTemp.sGetPath(L"file").c_str()));
    EXPECT_TRUE(fExistFile(tTemp.sGetPath(L"f*").c_str()));
    EXPECT_FALSE(fExistFile(tTemp.sGetPath(L"dir").c_str()));
    EXPECT_FALSE(fExistFile(tTemp.sGetPath(L"d*").c_str()));
    EXPECT_FALSE(fExistFile(tTemp.sGetPath(L"missing").c_str()));
    EXPECT_FALSE(fExistFile(L"C:\\"));
    THardToReach const tHard;
    zk_test::WriteFileBytes(tHard.sGetPath(L"file"), "");
    EXPECT_TRUE(fExistFile(tHard.sGetPath(L"file").c_str()));
    EXPECT_FALSE(fExistFile(tHard.sGetPath().c_str()));
    EXPECT_TRUE(fExistFileOrDirectory(tHard.sGetPath().c_str()));
}

TEST(ExistFamily, ThrowsItsMessageWithThePath) {
    TTempDirectory const tTemp;
    std::wstring const sDirectory = tTemp.sMakeDirectory(L"dir 100%s");
    std::wstring const sFile = tTemp.sWrite(L"file 100%d", "");
    std::wstring const sMissing = tTemp.sGetPath(L"missing %n");
    struct {
        void (*Function)(wchar_t const *);
        std::wstring const & sPasses;
        std::wstring const & sThrows;
        unsigned int uMessageId;
    } const atRows[] = {
        {ExistDirectory, sDirectory, sMissing, 4251},     {ExistDirectory, sDirectory, sFile, 4251},
        {NotExistDirectory, sMissing, sDirectory, 4212},  {NotExistDirectory, sFile, sDirectory, 4212},
        {ExistFileOrDirectory, sFile, sMissing, 4250},    {ExistFileOrDirectory, sDirectory, sMissing, 4250},
        {NotExistFileOrDirectory, sMissing, sFile, 4211}, {NotExistFileOrDirectory, sMissing, sDirectory, 4211},
    };
    for (auto const & tRow : atRows) {
        EXPECT_NO_THROW(tRow.Function(tRow.sPasses.c_str()));
        TXZkTools const tError = tThrownBy([&] { tRow.Function(tRow.sThrows.c_str()); });
        EXPECT_EQ(tError.iGetNumber(), static_cast<int>(tRow.uMessageId));
        EXPECT_STREQ(tError.what(), TXZkTools(tRow.uMessageId, tRow.sThrows.c_str()).what());
    }
}

TEST(FExistFileOrDirectoryOrDrive, AsksForTheDriveOfAShortPath) {
    std::wstring sAsked;
    UINT uType = 0;
    TSystemCall<"GetDriveTypeW", decltype(GetDriveTypeW)> const tType([&](LPCWSTR pzPath) {
        sAsked = pzPath;
        return uType;
    });
    TFindFirstEx const tFind([&](LPCWSTR pzPattern, auto...) {
        sAsked = std::wstring(L"search ") + pzPattern;
        return tFailWith(ERROR_FILE_NOT_FOUND, INVALID_HANDLE_VALUE);
    });
    for (wchar_t const * pzPath : {L"C:", L"C:\\", L"Q:", L"abc", L"a", L"\\", L"\\a\\", L""}) {
        for (uType = DRIVE_UNKNOWN; uType <= DRIVE_RAMDISK; ++uType) {
            bool const fExpected = uType != DRIVE_UNKNOWN && uType != DRIVE_NO_ROOT_DIR;
            EXPECT_EQ(fExistFileOrDirectoryOrDrive(pzPath), fExpected) << PrintToString(pzPath) << uType;
            EXPECT_EQ(sAsked, pzPath);
        }
    }
    uType = DRIVE_FIXED;
    for (wchar_t const * pzPath : {L"C:\\a", L"abcd", L"\\\\", L"\\\\a", L"\\\\server\\share"}) {
        EXPECT_FALSE(fExistFileOrDirectoryOrDrive(pzPath)) << PrintToString(pzPath);
        EXPECT_EQ(sAsked, std::wstring(L"search ") + pzPath);
    }
}

TEST(FExistFileOrDirectoryOrDrive, KnowsDrivesFilesAndDirectories) {
    TTempDirectory const tTemp;
    tTemp.sWrite(L"file", "");
    EXPECT_TRUE(fExistFileOrDirectoryOrDrive(L"C:"));
    EXPECT_TRUE(fExistFileOrDirectoryOrDrive(L"C:\\"));
    EXPECT_TRUE(fExistFileOrDirectoryOrDrive(tTemp.sGetPath().c_str()));
    EXPECT_TRUE(fExistFileOrDirectoryOrDrive(tTemp.sGetPath(L"f*").c_str()));
    EXPECT_FALSE(fExistFileOrDirectoryOrDrive(L"Q:\\"));
    EXPECT_FALSE(fExistFileOrDirectoryOrDrive(tTemp.sGetPath(L"missing").c_str()));
}

// Emptiness

TEST(EmptinessFamily, LooksAtPointsAndKinds) {
    struct {
        std::vector<wchar_t const *> pzFiles;
        std::vector<wchar_t const *> pzDirectories;
        bool fEmpty;
        bool fEmptyOfFiles;
        bool fHasSubDirectory;
        bool fEmptyExceptConfig;
    } const atRows[] = {
        {{}, {}, true, true, false, true},
        {{L"file"}, {}, false, false, false, false},
        {{L".file"}, {}, true, false, false, true},
        {{}, {L"dir"}, false, true, true, false},
        {{}, {L".dir"}, true, true, false, true},
        {{L".file"}, {L".dir"}, true, false, false, true},
        {{L".file"}, {L".dir", L"dir"}, false, false, true, false},
        {{L"zkfolder.config"}, {}, false, false, false, true},
        {{L"zkfolder.config", L".file"}, {L".dir"}, false, false, false, true},
        {{L"ZKFOLDER.CONFIG"}, {}, false, false, false, false},
        {{L"zkfolder.config", L"file"}, {}, false, false, false, false},
        {{L"zkfolder.config1"}, {}, false, false, false, false},
        {{}, {L"zkfolder.config"}, false, true, true, true}, // its kind is not looked at
        {{L"...", L"..x"}, {}, true, false, false, true},
    };
    int iRow = 0;
    for (auto const & tRow : atRows) {
        SCOPED_TRACE(iRow++);
        TTempDirectory const tTemp;
        for (wchar_t const * pzName : tRow.pzFiles)
            tTemp.sWrite(pzName, "x");
        for (wchar_t const * pzName : tRow.pzDirectories)
            tTemp.sMakeDirectory(pzName);
        for (std::wstring const & sPath : {tTemp.sGetPath(), tTemp.sGetPath(L"")}) {
            EXPECT_EQ(fIsDirectoryEmpty(sPath.c_str(), false), tRow.fEmpty);
            EXPECT_EQ(fIsDirectoryEmpty(sPath.c_str(), true), tRow.fEmptyOfFiles);
            EXPECT_EQ(fHasSubDirectory(sPath.c_str()), tRow.fHasSubDirectory);
            EXPECT_EQ(fIsDirectoryEmptyExceptFolderConfig(sPath.c_str()), tRow.fEmptyExceptConfig);
        }
    }
}

TEST(EmptinessFamily, TakesADirectoryThatDoesNotExistForEmpty) {
    TTempDirectory const tTemp;
    tTemp.sWrite(L"file", "");
    for (wchar_t const * pzName : {L"missing", L"file"}) {
        std::wstring const sPath = tTemp.sGetPath(pzName);
        EXPECT_TRUE(fIsDirectoryEmpty(sPath.c_str(), false));
        EXPECT_TRUE(fIsDirectoryEmpty(sPath.c_str(), true));
        EXPECT_FALSE(fHasSubDirectory(sPath.c_str()));
        EXPECT_TRUE(fIsDirectoryEmptyExceptFolderConfig(sPath.c_str()));
    }
}

TEST(EmptinessFamily, ReachesLongPaths) {
    THardToReach const tHard;
    EXPECT_TRUE(fIsDirectoryEmpty(tHard.sGetPath().c_str(), true));
    zk_test::WriteFileBytes(tHard.sGetPath(L"file"), "");
    EXPECT_FALSE(fIsDirectoryEmpty(tHard.sGetPath().c_str(), true));
}

TEST(SGetSingleSubDir, GivesTheNameOfTheFirstOne) {
    TTempDirectory const tTemp;
    EXPECT_EQ(sGetSingleSubDir(tTemp.sGetPath()), L"");
    EXPECT_EQ(sGetSingleSubDir(tTemp.sGetPath(L"missing")), L"");
    tTemp.sWrite(L"file.x", "");
    tTemp.sMakeDirectory(L".svn");
    EXPECT_EQ(sGetSingleSubDir(tTemp.sGetPath()), L"");
    tTemp.sMakeDirectory(L"sub");
    EXPECT_EQ(sGetSingleSubDir(tTemp.sGetPath()), L"sub");
    EXPECT_EQ(sGetSingleSubDir(tTemp.sGetPath(L"")), L"sub");
    tTemp.sMakeDirectory(L"sub2"); // nobody asks whether it is the only one
    EXPECT_EQ(sGetSingleSubDir(tTemp.sGetPath()).substr(0, 3), L"sub");
}

TEST(SGetSingleSubDir, TakesTheOrderOfTheSystem) {
    std::vector<wchar_t const *> const pzNames = {L".", L"..", L".dir", L"zz", L"aa"};
    std::size_t uNext = 0;
    auto const Answer = [&](WIN32_FIND_DATAW & tData) {
        if (uNext == pzNames.size()) return tFailWith(ERROR_NO_MORE_FILES, FALSE);
        tData = {};
        tData.dwFileAttributes = FILE_ATTRIBUTE_DIRECTORY;
        std::wstring(pzNames[uNext++]).copy(tData.cFileName, MAX_PATH - 1);
        return TRUE;
    };
    TFindFirstEx const tFirst([&](LPCWSTR pzPattern, auto, LPVOID pData, auto...) -> HANDLE {
        EXPECT_STREQ(pzPattern, L"C:\\dir\\*.*");
        Answer(*static_cast<WIN32_FIND_DATAW *>(pData));
        return &uNext;
    });
    TFindNext const tNext([&](HANDLE, LPWIN32_FIND_DATAW pData) { return Answer(*pData); });
    TFindClose const tClose([](HANDLE) { return TRUE; });
    EXPECT_EQ(sGetSingleSubDir(L"C:\\dir"), L"zz");
    EXPECT_EQ(tClose.iGetCalls(), 1);
}

TEST(SearchingFunctions, CloseWhatTheyOpened) {
    TTempDirectory const tTemp;
    std::wstring const sFile = tTemp.sWrite(L"file", "x");
    tTemp.sMakeDirectory(L"sub");
    std::multiset<HANDLE> hOpen;
    int iOpened = 0;
    auto const Opened = [&](HANDLE hSearch) {
        if (hSearch != INVALID_HANDLE_VALUE) {
            hOpen.insert(hSearch);
            ++iOpened;
        }
        return hSearch;
    };
    TFindFirst const tFirst([&](auto... tArgs) { return Opened(tFirst.Original(tArgs...)); });
    TFindFirstEx const tFirstEx([&](auto... tArgs) { return Opened(tFirstEx.Original(tArgs...)); });
    TFindClose const tClose([&](HANDLE hSearch) {
        EXPECT_EQ(hOpen.erase(hSearch), 1U);
        return tClose.Original(hSearch);
    });
    FILETIME tTime;
    for (std::wstring const & sPath : {tTemp.sGetPath(), sFile, tTemp.sGetPath(L"missing")}) {
        wchar_t const * const pzPath = sPath.c_str();
        static_cast<void>(fExistFileOrDirectory(pzPath));
        static_cast<void>(fExistFile(pzPath));
        static_cast<void>(fExistFileOrDirectoryOrDrive(pzPath));
        static_cast<void>(fIsDirectoryEmpty(pzPath, true));
        static_cast<void>(fIsDirectoryEmpty(pzPath, false));
        static_cast<void>(fHasSubDirectory(pzPath));
        static_cast<void>(fIsDirectoryEmptyExceptFolderConfig(pzPath));
        static_cast<void>(dwGetFileSize(pzPath));
        static_cast<void>(uiGetDirectorySize(sPath));
        static_cast<void>(fGetLastWriteTime(pzPath, tTime));
        static_cast<void>(sGetSingleSubDir(sPath));
        static_cast<void>(tThrownBy([&] { NotExistFileOrDirectory(pzPath); }));
        static_cast<void>(sGetUniqueFilePath(sPath, L"file", L""));
        static_cast<void>(sGetUniqueDirPath(sPath, L"sub"));
        EXPECT_TRUE(hOpen.empty()) << PrintToString(sPath);
    }
    EXPECT_GT(iOpened, 20);
}

// Creation

TEST(FMakeDirectory, MakesIt) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sGetPath(L"new");
    EXPECT_TRUE(fMakeDirectory(sPath.c_str()));
    EXPECT_TRUE(fMakeDirectory(sPath.c_str())); // it is there
    EXPECT_TRUE(fMakeDirectory(tTemp.sGetPath(L"a\\b\\c\\").c_str()));
    EXPECT_TRUE(fExistDirectory(tTemp.sGetPath(L"a\\b\\c").c_str()));
    tTemp.sWrite(L"file", "");
    EXPECT_FALSE(fMakeDirectory(tTemp.sGetPath(L"file").c_str()));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
    THardToReach const tHard;
    EXPECT_TRUE(fMakeDirectory(tHard.sGetPath(L"new.").c_str()));
    EXPECT_EQ(zk_test::sListDirectory(tHard.sGetPath()), L"new.");
}

TEST(MakeDirectory, MakesIt) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sGetPath(L"new");
    EXPECT_NO_THROW(MakeDirectory(sPath.c_str()));
    EXPECT_NO_THROW(MakeDirectory((sPath + L"\\").c_str()));
    EXPECT_TRUE(fExistDirectory(sPath.c_str()));
}

TEST(MakeDirectory, TellsOfAFileInTheWay) {
    TTempDirectory const tTemp;
    std::wstring const sFile = tTemp.sWrite(L"100%s", "");
    for (std::wstring const & sPath : {sFile, sFile + L"\\"}) {
        TXZkTools const tError = tThrownBy([&] { MakeDirectory(sPath.c_str()); });
        EXPECT_EQ(tError.iGetNumber(), -1);
        TXZkTools tExpected(sGetErrorString(ERROR_ALREADY_EXISTS).c_str());
        tExpected.AddMessage(IDS_FILE_OR_DIRECTORY_EXISTS_NOT, sFile.c_str());
        tExpected.AddMessage(IDS_CANNOT_MAKE_DIRECTORY, sPath.c_str());
        EXPECT_STREQ(tError.what(), tExpected.what());
    }
}

TEST(MakeDirectory, TellsTheReasonWithoutAFileInTheWay) {
    TTempDirectory const tTemp;
    tTemp.sWrite(L"file", "");
    for (std::wstring const & sPath : {tTemp.sGetPath(L"file\\sub"), std::wstring(L"Q:\\sub\\")}) {
        ASSERT_FALSE(fMakeDirectory(sPath.c_str()));
        DWORD const dwError = GetLastError();
        TXZkTools const tError = tThrownBy([&] { MakeDirectory(sPath.c_str()); });
        EXPECT_EQ(tError.iGetNumber(), -1);
        TXZkTools tExpected(sGetErrorString(dwError).c_str());
        tExpected.AddMessage(IDS_CANNOT_MAKE_DIRECTORY, sPath.c_str());
        EXPECT_STREQ(tError.what(), tExpected.what()) << PrintToString(sPath);
    }
}

TEST(SMakeTempDir, MakesAnotherOneEachTime) {
    TTempDirectory const tTemp;
    tTemp.sWrite(L"ZK2", ""); // a file takes its number, too
    TTempVariable const tVariable(tTemp.sGetPath());
    EXPECT_EQ(sMakeTempDir(), tTemp.sGetPath(L"ZK1"));
    EXPECT_EQ(sMakeTempDir(), tTemp.sGetPath(L"ZK3"));
    EXPECT_EQ(sMakeTempDir(), tTemp.sGetPath(L"ZK4"));
    EXPECT_TRUE(fExistDirectory(tTemp.sGetPath(L"ZK1").c_str()));
    EXPECT_EQ(zk_test::sListDirectory(tTemp.sGetPath()), L"ZK1|ZK2|ZK3|ZK4");
}

namespace {

using TGetTempPath = TSystemCall<"GetTempPathW", decltype(GetTempPathW)>;
using TCreateDirectory = TSystemCall<"CreateDirectoryW", decltype(CreateDirectoryW)>;

/// What the system does with that directory for temporary files, its last backslash included.
auto fnAnswerTempPath(std::wstring const & sPath) {
    return [&sPath](DWORD dwSize, LPWSTR pzBuffer) -> DWORD {
        if (dwSize <= sPath.size()) return static_cast<DWORD>(sPath.size() + 1);
        pzBuffer[sPath.copy(pzBuffer, sPath.size())] = 0;
        return static_cast<DWORD>(sPath.size());
    };
}

} // namespace

TEST(SMakeTempDir, ThrowsTheReasonWithoutATempPath) {
    TGetTempPath const tPath([](DWORD dwSize, LPWSTR) {
        EXPECT_EQ(dwSize, 260U);
        return tFailWith(ERROR_ACCESS_DENIED, DWORD{0});
    });
    TXZkTools const tError = tThrownBy([] { static_cast<void>(sMakeTempDir()); });
    EXPECT_EQ(tError.iGetNumber(), -1);
    EXPECT_STREQ(tError.what(), TXZkTools(sGetErrorString(ERROR_ACCESS_DENIED).c_str()).what());
}

TEST(SMakeTempDir, GoesOnWhileTheNameIsTaken) {
    std::wstring const sTemp = L"X:\\temp\\";
    TGetTempPath const tPath(fnAnswerTempPath(sTemp));
    std::wstring sLast;
    TCreateDirectory const tCreate([&](LPCWSTR pzPath, LPSECURITY_ATTRIBUTES pSecurity) {
        EXPECT_EQ(pSecurity, nullptr);
        sLast = pzPath;
        return tCreate.iGetCalls() < 123 ? tFailWith(ERROR_ALREADY_EXISTS, FALSE) : TRUE;
    });
    EXPECT_EQ(sMakeTempDir(), L"X:\\temp\\ZK123");
    EXPECT_EQ(sLast, L"X:\\temp\\ZK123");
}

TEST(SMakeTempDir, ThrowsTheReasonOfAnyOtherError) {
    std::wstring const sTemp = L"X:\\temp\\";
    TGetTempPath const tPath(fnAnswerTempPath(sTemp));
    for (DWORD const dwError : {DWORD{ERROR_DISK_FULL}, DWORD{ERROR_ACCESS_DENIED}, DWORD{ERROR_PATH_NOT_FOUND}}) {
        TCreateDirectory const tCreate([&](LPCWSTR, LPSECURITY_ATTRIBUTES) {
            if (tCreate.iGetCalls() > 2) return TRUE; // nothing would ever end it
            return tFailWith(tCreate.iGetCalls() == 1 ? ERROR_ALREADY_EXISTS : dwError, FALSE);
        });
        TXZkTools const tError = tThrownBy([] { static_cast<void>(sMakeTempDir()); });
        EXPECT_EQ(tCreate.iGetCalls(), 2);
        EXPECT_EQ(tError.iGetNumber(), -1);
        EXPECT_STREQ(tError.what(), TXZkTools(sGetErrorString(dwError).c_str()).what());
    }
}

TEST(SMakeTempDir, TakesTheLongFormFrom248Characters) {
    for (std::size_t uLength : {247U, 248U, 259U, 260U, 261U, 262U, 263U, 264U, 1000U}) {
        std::wstring const sTemp = L"X:\\" + std::wstring(uLength - 7, L't') + L"\\";
        std::wstring const sExpected = sTemp + L"ZK1";
        ASSERT_EQ(sExpected.size(), uLength);
        TGetTempPath const tPath(fnAnswerTempPath(sTemp));
        std::wstring sSeen;
        TCreateDirectory const tCreate([&](LPCWSTR pzPath, LPSECURITY_ATTRIBUTES) {
            sSeen = pzPath;
            return TRUE;
        });
        EXPECT_EQ(sMakeTempDir(), sExpected);
        EXPECT_EQ(sSeen, (uLength < 248 ? L"" : L"\\\\?\\") + sExpected);
    }
}

namespace {

/// Makes every new UUID the one with all its digits 1.
class TSameUuid {
    TSystemCall<"UuidCreate", decltype(UuidCreate)> tCreate{[](UUID * pUuid) -> RPC_STATUS {
        std::memset(pUuid, 0x11, sizeof *pUuid);
        return RPC_S_OK;
    }};
};

constexpr wchar_t const * pzSameUuid = L"11111111-1111-1111-1111-111111111111";

} // namespace

TEST(SCreateTempDir, MakesADirectoryNamedByAUuid) {
    TTempDirectory const tTemp;
    std::wstring const sFirst = sCreateTempDir(tTemp.sGetPath());
    std::wstring const sSecond = sCreateTempDir(tTemp.sGetPath(L"new\\parent\\"));
    EXPECT_TRUE(fExistDirectory(sFirst.c_str()));
    EXPECT_TRUE(fExistDirectory(sSecond.c_str()));
    EXPECT_EQ(sFirst.size(), tTemp.sGetPath().size() + 37);
    EXPECT_EQ(sFirst, tTemp.sGetPath(sFirst.substr(sFirst.size() - 36)));
    EXPECT_EQ(sSecond, tTemp.sGetPath(L"new\\parent\\") + sSecond.substr(sSecond.size() - 36));
    EXPECT_NE(sCreateTempDir(tTemp.sGetPath()), sFirst);
    THardToReach const tHard;
    EXPECT_TRUE(fExistDirectory(sCreateTempDir(tHard.sGetPath()).c_str()));
}

TEST(SCreateTempDir, ThrowsAsMakeDirectoryDoes) {
    TTempDirectory const tTemp;
    std::wstring const sFile = tTemp.sWrite(L"file", "");
    TSameUuid const tUuid;
    TXZkTools const tError = tThrownBy([&] { static_cast<void>(sCreateTempDir(sFile)); });
    TXZkTools const tExpected = tThrownBy([&] { MakeDirectory((sFile + L"\\" + pzSameUuid).c_str()); });
    EXPECT_STREQ(tError.what(), tExpected.what());
    EXPECT_NE(std::string(tError.what()).find("11111111-1111"), std::string::npos);
}

TEST(FCreateUniqueDir, TurnsTheDirectoryIntoThePathOfANewOne) {
    TTempDirectory const tTemp;
    std::wstring sPath = tTemp.sGetPath(L"new");
    EXPECT_TRUE(fCreateUniqueDir(sPath));
    EXPECT_EQ(sPath.substr(0, sPath.size() - 36), tTemp.sGetPath(L"new\\"));
    EXPECT_TRUE(fExistDirectory(sPath.c_str()));
    std::wstring const sFirst = sPath;
    EXPECT_TRUE(fCreateUniqueDir(sPath)); // below that one
    EXPECT_EQ(sPath.substr(0, sPath.size() - 36), sFirst + L"\\");
}

TEST(FCreateUniqueDir, IsFalseWhenTheNameIsTaken) {
    TTempDirectory const tTemp;
    TSameUuid const tUuid;
    tTemp.sMakeDirectory(L"a");
    tTemp.sMakeDirectory(L"b");
    tTemp.sMakeDirectory(L"a\\" + std::wstring(pzSameUuid));
    tTemp.sWrite(L"b\\" + std::wstring(pzSameUuid), "");
    for (std::wstring const & sDirectory : {tTemp.sGetPath(L"a"), tTemp.sGetPath(L"b")}) {
        std::wstring sPath = sDirectory;
        EXPECT_FALSE(fCreateUniqueDir(sPath));
        EXPECT_EQ(sPath, sDirectory);
    }
}

TEST(FCreateUniqueDir, IsFalseWhenTheDirectoryCannotBeMade) {
    TTempDirectory const tTemp;
    std::wstring const sFile = tTemp.sWrite(L"file", "");
    std::wstring sPath = sFile;
    EXPECT_FALSE(fCreateUniqueDir(sPath));
    EXPECT_EQ(sPath, sFile);
}

TEST(FCanCreateFile, TriesItAndLeavesNothingBehind) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sGetPath(L"new");
    TCreateFile const tCreate([&](LPCWSTR pzPath, DWORD dwAccess, DWORD dwShare, LPSECURITY_ATTRIBUTES pSecurity,
                                  DWORD dwDisposition, DWORD dwFlags, HANDLE hTemplate) {
        EXPECT_EQ(pzPath, sPath);
        EXPECT_EQ(dwAccess, GENERIC_READ | GENERIC_WRITE);
        EXPECT_EQ(dwShare, 7U);
        EXPECT_EQ(pSecurity, nullptr);
        EXPECT_EQ(dwDisposition, static_cast<DWORD>(CREATE_ALWAYS));
        EXPECT_EQ(dwFlags, 0x4000100U);
        EXPECT_EQ(hTemplate, nullptr);
        return tCreate.Original(pzPath, dwAccess, dwShare, pSecurity, dwDisposition, dwFlags, hTemplate);
    });
    EXPECT_TRUE(fCanCreateFile(sPath.c_str()));
    EXPECT_EQ(tCreate.iGetCalls(), 1);
    EXPECT_EQ(zk_test::sListDirectory(tTemp.sGetPath()), L"");
}

TEST(FCanCreateFile, DeletesAFileThatIsThere) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sWrite(L"precious", "content");
    EXPECT_TRUE(fCanCreateFile(sPath.c_str()));
    EXPECT_FALSE(zk_test::fExists(sPath));
}

TEST(FCanCreateFile, LeavesTheReasonToGetLastError) {
    TTempDirectory const tTemp;
    EXPECT_FALSE(fCanCreateFile(tTemp.sGetPath(L"missing\\new").c_str()));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
    EXPECT_FALSE(fCanCreateFile(tTemp.sMakeDirectory(L"dir").c_str()));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
    std::wstring const sHeld = tTemp.sWrite(L"held", "");
    THandle const hHolder(CreateFileW(sHeld.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_FALSE(fCanCreateFile(sHeld.c_str()));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SHARING_VIOLATION));
}

TEST(FCanCreateFile, ReachesLongPaths) {
    THardToReach const tHard;
    EXPECT_TRUE(fCanCreateFile(tHard.sGetPath(L"new").c_str()));
    EXPECT_EQ(zk_test::sListDirectory(tHard.sGetPath()), L"");
}

TEST(CreateHiddenFile, AddsTheHiddenAttributeAlone) {
    SECURITY_ATTRIBUTES tSecurity{};
    HANDLE const hTemplateGiven = &tSecurity;
    HANDLE const hAnswer = &tSecurity + 1;
    TCreateFile const tCreate([&](LPCWSTR pzPath, DWORD dwAccess, DWORD dwShare, LPSECURITY_ATTRIBUTES pSecurity,
                                  DWORD dwDisposition, DWORD dwFlags, HANDLE hTemplate) {
        EXPECT_STREQ(pzPath, L"C:\\name");
        EXPECT_EQ(dwAccess, 0x11U);
        EXPECT_EQ(dwShare, 0x12U);
        EXPECT_EQ(pSecurity, &tSecurity);
        EXPECT_EQ(dwDisposition, 0x13U);
        EXPECT_EQ(dwFlags, tCreate.iGetCalls() == 1 ? 0x4000082U : 2U);
        EXPECT_EQ(hTemplate, hTemplateGiven);
        return hAnswer;
    });
    EXPECT_EQ(CreateHiddenFile(L"C:\\name", 0x11, 0x12, &tSecurity, 0x13, 0x4000080, hTemplateGiven), hAnswer);
    EXPECT_EQ(CreateHiddenFile(L"C:\\name", 0x11, 0x12, &tSecurity, 0x13, 2, hTemplateGiven), hAnswer);
}

TEST(CreateHiddenFile, MakesAHiddenFile) {
    TTempDirectory const tTemp;
    THardToReach const tHard;
    for (std::wstring const & sPath : {tTemp.sGetPath(L"new"), tHard.sGetPath(L"new")}) {
        THandle const hFile(
            CreateHiddenFile(sPath, GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
        ASSERT_TRUE(hFile);
        EXPECT_TRUE(GetFileAttributesW(zk_test::sLongForm(sPath).c_str()) & FILE_ATTRIBUTE_HIDDEN);
        // The second time there is a file, and the handle is not looked at.
        EXPECT_EQ(CreateHiddenFile(sPath, GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr), INVALID_HANDLE_VALUE);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_EXISTS));
    }
}

// Unique names

TEST(SGetUniqueFilePath, TakesTheFirstFreeNumberFrom2) {
    TTempDirectory const tTemp;
    EXPECT_EQ(sGetUniqueFilePath(tTemp.sGetPath(), L"a", L"tmp"), tTemp.sGetPath(L"a.tmp"));
    tTemp.sWrite(L"a.tmp", "");
    EXPECT_EQ(sGetUniqueFilePath(tTemp.sGetPath(), L"a", L"tmp"), tTemp.sGetPath(L"a_2.tmp"));
    tTemp.sMakeDirectory(L"a_2.tmp");
    tTemp.sWrite(L"a_4.tmp", "");
    EXPECT_EQ(sGetUniqueFilePath(tTemp.sGetPath(), L"a", L"tmp"), tTemp.sGetPath(L"a_3.tmp"));
    EXPECT_EQ(sGetUniqueFilePath(tTemp.sGetPath(L""), L"a", L"tmp"), tTemp.sGetPath(L"a_3.tmp"));
    EXPECT_EQ(zk_test::sListDirectory(tTemp.sGetPath()), L"a.tmp|a_2.tmp|a_4.tmp"); // nothing is made
}

TEST(SGetUniqueFilePath, AlwaysPutsThePoint) {
    TTempDirectory const tTemp;
    EXPECT_EQ(sGetUniqueFilePath(tTemp.sGetPath(), L"a", L""), tTemp.sGetPath(L"a."));
    EXPECT_EQ(sGetUniqueFilePath(tTemp.sGetPath(), L"a", L".tmp"), tTemp.sGetPath(L"a..tmp"));
    tTemp.sWrite(L"a..tmp", "");
    EXPECT_EQ(sGetUniqueFilePath(tTemp.sGetPath(), L"a", L".tmp"), tTemp.sGetPath(L"a_2..tmp"));
}

TEST(SGetUniqueFilePath, ReachesLongPaths) {
    THardToReach const tHard;
    zk_test::WriteFileBytes(tHard.sGetPath(L"a.tmp"), "");
    EXPECT_EQ(sGetUniqueFilePath(tHard.sGetPath(), L"a", L"tmp"), tHard.sGetPath(L"a_2.tmp"));
}

TEST(SGetUniqueFilePath, HasNoUpperBound) {
    TFindFirstEx const tFind([&](LPCWSTR, auto, LPVOID pData, auto...) -> HANDLE {
        if (tFind.iGetCalls() > 12345) return tFailWith(ERROR_FILE_NOT_FOUND, INVALID_HANDLE_VALUE);
        *static_cast<WIN32_FIND_DATAW *>(pData) = {};
        return pData;
    });
    TFindClose const tClose([](HANDLE) { return TRUE; });
    EXPECT_EQ(sGetUniqueFilePath(L"C:\\dir", L"a", L"tmp"), L"C:\\dir\\a_12346.tmp");
}

TEST(SGetUniqueDirPath, GivesTheNameAlone) {
    TTempDirectory const tTemp;
    EXPECT_EQ(sGetUniqueDirPath(tTemp.sGetPath(), L"d"), L"d");
    tTemp.sMakeDirectory(L"d");
    EXPECT_EQ(sGetUniqueDirPath(tTemp.sGetPath(), L"d"), L"d (2)");
    tTemp.sWrite(L"d (2)", ""); // a file takes its number, too
    tTemp.sMakeDirectory(L"d (4)");
    EXPECT_EQ(sGetUniqueDirPath(tTemp.sGetPath(), L"d"), L"d (3)");
    EXPECT_EQ(sGetUniqueDirPath(tTemp.sGetPath(L""), L"d"), L"d (3)");
    EXPECT_EQ(sGetUniqueDirPath(tTemp.sGetPath(L"missing"), L"d"), L"d");
    EXPECT_EQ(zk_test::sListDirectory(tTemp.sGetPath()), L"d|d (2)|d (4)"); // nothing is made
}

// Sizes

TEST(DwGetFileSize, DropsTheHighHalf) {
    TTempDirectory const tTemp;
    std::wstring const sBig = tTemp.sGetPath(L"big");
    SetFileLength(sBig, (LONGLONG{1} << 32) + 5);
    EXPECT_EQ(dwGetFileSize(sBig.c_str()), 5U);
    EXPECT_EQ(sGetFileSize(sBig.c_str()), L"5");
    EXPECT_EQ(uiGetDirectorySize(tTemp.sGetPath()), (1ULL << 32) + 5);
}

TEST(DwGetFileSize, CountsBytes) {
    TTempDirectory const tTemp;
    THardToReach const tHard;
    zk_test::WriteFileBytes(tHard.sGetPath(L"file"), "1234567");
    struct {
        std::wstring sPath;
        unsigned long dwSize;
        wchar_t const * pzSize;
    } const atRows[] = {
        {tTemp.sWrite(L"empty", ""), 0, L"0"}, {tTemp.sWrite(L"some", "12345"), 5, L"5"},
        {tTemp.sGetPath(L"so*"), 5, L"5"},     {tTemp.sGetPath(L"missing"), 0, L"0"},
        {tHard.sGetPath(L"file"), 7, L"7"},
    };
    for (auto const & tRow : atRows) {
        EXPECT_EQ(dwGetFileSize(tRow.sPath.c_str()), tRow.dwSize);
        EXPECT_EQ(sGetFileSize(tRow.sPath.c_str()), tRow.pzSize);
    }
}

TEST(SGetFileSize, IsUnsigned) {
    TFindFirstEx const tFind([&](LPCWSTR, auto, LPVOID pData, auto...) -> HANDLE {
        static_cast<WIN32_FIND_DATAW *>(pData)->nFileSizeHigh = 7;
        static_cast<WIN32_FIND_DATAW *>(pData)->nFileSizeLow = 0xFFFFFFFF;
        return pData;
    });
    TFindClose const tClose([](HANDLE) { return TRUE; });
    EXPECT_EQ(dwGetFileSize(L"C:\\file"), 0xFFFFFFFFU);
    EXPECT_EQ(sGetFileSize(L"C:\\file"), L"4294967295");
}

TEST(UiGetDirectorySize, SumsUpTheWholeTree) {
    TTempDirectory const tTemp;
    EXPECT_EQ(uiGetDirectorySize(tTemp.sGetPath()), 0U);
    tTemp.sWrite(L"a", "1");
    tTemp.sWrite(L".b", "22");
    SetFileAttributesW(tTemp.sWrite(L"c.ext", "4444").c_str(), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY);
    tTemp.sMakeDirectory(L"dir");
    tTemp.sMakeDirectory(L"dir\\sub");
    tTemp.sMakeDirectory(L"dir\\sub2");
    tTemp.sMakeDirectory(L".dir");
    tTemp.sMakeDirectory(L"...x");
    tTemp.sWrite(L"dir\\a", std::string(8, 'x'));
    tTemp.sWrite(L"dir\\sub\\a", std::string(16, 'x'));
    tTemp.sWrite(L"dir\\sub2\\a", std::string(32, 'x'));
    tTemp.sWrite(L".dir\\a", std::string(64, 'x'));
    tTemp.sWrite(L"...x\\a", std::string(128, 'x'));
    EXPECT_EQ(uiGetDirectorySize(tTemp.sGetPath()), 255U);
    EXPECT_EQ(uiGetDirectorySize(tTemp.sGetPath(L"")), 255U);
    EXPECT_EQ(uiGetDirectorySize(tTemp.sGetPath(L"dir")), 56U);
    EXPECT_EQ(uiGetDirectorySize(tTemp.sGetPath(L"missing")), 0U);
    EXPECT_EQ(uiGetDirectorySize(tTemp.sGetPath(L"a")), 0U); // a file is no directory
}

TEST(UiGetDirectorySize, AgreesWithWhatWasWritten) {
    TTempDirectory const tTemp;
    std::mt19937 tRandom(4711);
    std::vector<std::wstring> sDirectories = {L""};
    unsigned __int64 uiExpected = 0;
    for (int i = 0; i < 150; ++i) {
        std::wstring const sName = sDirectories[tRandom() % sDirectories.size()] + std::to_wstring(i);
        if (tRandom() % 3 == 0) {
            tTemp.sMakeDirectory(sName);
            sDirectories.push_back(sName + L"\\");
        } else {
            std::size_t const uSize = tRandom() % 300;
            tTemp.sWrite(sName, std::string(uSize, 'x'));
            uiExpected += uSize;
        }
    }
    EXPECT_EQ(uiGetDirectorySize(tTemp.sGetPath()), uiExpected);
}

TEST(UiGetDirectorySize, ReachesLongPaths) {
    THardToReach const tHard;
    zk_test::WriteFileBytes(tHard.sGetPath(L"a"), "1");
    CreateDirectoryW(zk_test::sLongForm(tHard.sGetPath(L"sub.")).c_str(), nullptr);
    zk_test::WriteFileBytes(tHard.sGetPath(L"sub.\\b"), "22");
    EXPECT_EQ(uiGetDirectorySize(tHard.sGetPath()), 3U);
}

TEST(UiGetDirectorySize, SearchesForAllBelowEachDirectory) {
    TTempDirectory const tTemp;
    tTemp.sMakeDirectory(L"a");
    tTemp.sMakeDirectory(L"a\\b");
    tTemp.sMakeDirectory(L"c");
    std::multiset<std::wstring> sPatterns;
    TFindFirst const tFirst([&](LPCWSTR pzPattern, LPWIN32_FIND_DATAW pData) {
        sPatterns.insert(pzPattern);
        return tFirst.Original(pzPattern, pData);
    });
    EXPECT_EQ(uiGetDirectorySize(tTemp.sGetPath()), 0U);
    EXPECT_EQ(sPatterns, (std::multiset<std::wstring>{tTemp.sGetPath(L"*.*"), tTemp.sGetPath(L"a\\*.*"),
                                                      tTemp.sGetPath(L"a\\b\\*.*"), tTemp.sGetPath(L"c\\*.*")}));
}

TEST(UiGetDirectorySize, CountsWhatItCannotReadAsEmpty) {
    TTempDirectory const tTemp;
    tTemp.sMakeDirectory(L"a");
    tTemp.sMakeDirectory(L"b");
    tTemp.sWrite(L"a\\file", "1");
    tTemp.sWrite(L"b\\file", "22");
    std::wstring const sRefused = tTemp.sGetPath(L"a\\*.*");
    TFindFirst const tFirst([&](LPCWSTR pzPattern, LPWIN32_FIND_DATAW pData) {
        if (pzPattern == sRefused) return tFailWith(ERROR_ACCESS_DENIED, INVALID_HANDLE_VALUE);
        return tFirst.Original(pzPattern, pData);
    });
    EXPECT_EQ(uiGetDirectorySize(tTemp.sGetPath()), 2U);
}

/// A tree as deep as a path can be long, each level with a file of a byte behind its only directory: more levels than
/// a thread's stack would bear.
TEST(UiGetDirectorySize, WalksTheDeepestTreeThereCanBe) {
    int iOpen = 0;
    int iMostOpen = 0;
    constexpr std::size_t uLongest = 32000;
    int iLevels = 0;
    TFindFirst const tFirst([&](LPCWSTR pzPattern, LPWIN32_FIND_DATAW pData) -> HANDLE {
        if (std::wcslen(pzPattern) > uLongest) return tFailWith(ERROR_PATH_NOT_FOUND, INVALID_HANDLE_VALUE);
        *pData = {};
        pData->dwFileAttributes = FILE_ATTRIBUTE_DIRECTORY;
        pData->cFileName[0] = L'd';
        ++iLevels;
        iMostOpen = std::max(iMostOpen, ++iOpen);
        return &iOpen;
    });
    TFindNext const tNext([](HANDLE, LPWIN32_FIND_DATAW pData) {
        if (pData->dwFileAttributes == 0) return tFailWith(ERROR_NO_MORE_FILES, FALSE);
        pData->dwFileAttributes = 0;
        pData->nFileSizeLow = 1;
        return TRUE;
    });
    TFindClose const tClose([&](HANDLE) {
        --iOpen;
        return TRUE;
    });
    unsigned __int64 const uiSize = uiGetDirectorySize(L"C:\\d");
    EXPECT_EQ(uiSize, static_cast<unsigned __int64>(iLevels));
    EXPECT_GT(iLevels, 15900);
    EXPECT_EQ(iOpen, 0);
    EXPECT_EQ(iMostOpen, 1);
}

// Times

TEST(FGetLastWriteTime, GivesTheTimeInUtc) {
    TTempDirectory const tTemp;
    THardToReach const tHard;
    zk_test::WriteFileBytes(tHard.sGetPath(L"file"), "");
    for (std::wstring const & sPath : {tTemp.sWrite(L"file", ""), tHard.sGetPath(L"file")}) {
        SetLastWriteTime(sPath, tFileTime(ui2001));
        FILETIME tTime{};
        EXPECT_TRUE(fGetLastWriteTime(sPath.c_str(), tTime));
        EXPECT_EQ(uiTicks(tTime), ui2001);
    }
    FILETIME tTime{};
    EXPECT_TRUE(fGetLastWriteTime(tTemp.sGetPath().c_str(), tTime)); // of a directory, too
    EXPECT_GT(uiTicks(tTime), ui2001);
}

TEST(FGetLastWriteTime, IsFalseForNothing) {
    TTempDirectory const tTemp;
    FILETIME tTime = tFileTime(4711);
    EXPECT_FALSE(fGetLastWriteTime(tTemp.sGetPath(L"missing").c_str(), tTime));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(uiTicks(tTime), 4711U);
}

TEST(FGetLastWriteTime, FillsADateWithTheTicks) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sWrite(L"file", "");
    SetLastWriteTime(sPath, tFileTime(ui2001));
    TZkDateTime tTime;
    EXPECT_TRUE(fGetLastWriteTime(sPath.c_str(), tTime));
    EXPECT_EQ(tTime.sGetString(edtDateTime, true), L"2001-01-01T00:00:00");
    EXPECT_FALSE(fGetLastWriteTime(tTemp.sGetPath(L"missing").c_str(), tTime));
    EXPECT_EQ(tTime.sGetString(edtDate, true), L"2001-01-01");
}

TEST(FGetLocalLastWriteTime, ShiftsAsTheSystemDoes) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sWrite(L"file", "");
    SetLastWriteTime(sPath, tFileTime(ui2001));
    BOOL fShifted = TRUE;
    TSystemCall<"FileTimeToLocalFileTime", decltype(FileTimeToLocalFileTime)> const tShift(
        [&](FILETIME const * pUtc, FILETIME * pLocal) {
            *pLocal = tFileTime(uiTicks(*pUtc) + 36'000'000'000);
            return fShifted;
        });
    TZkDateTime tTime;
    EXPECT_TRUE(fGetLocalLastWriteTime(sPath.c_str(), tTime));
    EXPECT_EQ(tTime.sGetString(edtDateTime, true), L"2001-01-01T01:00:00");
    tTime = TZkDateTime();
    EXPECT_FALSE(fGetLocalLastWriteTime(tTemp.sGetPath(L"missing").c_str(), tTime));
    EXPECT_EQ(tShift.iGetCalls(), 1);
    fShifted = FALSE;
    EXPECT_FALSE(fGetLocalLastWriteTime(sPath.c_str(), tTime));
    EXPECT_TRUE(tTime.fIsZero());
}

namespace {

using TSetFileTime = TSystemCall<"SetFileTime", decltype(SetFileTime)>;
TZkDateTime const tNewTime(L"2001-01-01"sv);

} // namespace

TEST(FSetLastWriteTime, SetsTheTimeAndAnswersFalse) {
    TTempDirectory const tTemp;
    THardToReach const tHard;
    zk_test::WriteFileBytes(tHard.sGetPath(L"file"), "abc");
    for (std::wstring const & sPath : {tTemp.sWrite(L"file", "abc"), tHard.sGetPath(L"file")}) {
        EXPECT_FALSE(fSetLastWriteTime(sPath.c_str(), tNewTime));
        FILETIME tTime{};
        EXPECT_TRUE(fGetLastWriteTime(sPath.c_str(), tTime));
        EXPECT_EQ(uiTicks(tTime), ui2001);
        EXPECT_EQ(zk_test::sReadFileBytes(sPath), "abc");
        EXPECT_TRUE(zk_test::fIsUnused(sPath));
    }
    EXPECT_FALSE(fSetLastWriteTime(tTemp.sGetPath(L"missing").c_str(), tNewTime));
    EXPECT_FALSE(fExistFileOrDirectory(tTemp.sGetPath(L"missing").c_str()));
}

TEST(FSetLastWriteTime, GivesTheOtherTimesBackToTheFile) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sWrite(L"file", "");
    WIN32_FIND_DATAW tBefore;
    FindClose(FindFirstFileW(sPath.c_str(), &tBefore));
    unsigned __int64 uiCreation = 0, uiAccess = 0, uiWrite = 0;
    TSetFileTime const tSet([&](HANDLE, FILETIME const * pCreation, FILETIME const * pAccess, FILETIME const * pWrite) {
        uiCreation = uiTicks(*pCreation);
        uiAccess = uiTicks(*pAccess);
        uiWrite = uiTicks(*pWrite);
        return tFailWith(ERROR_ACCESS_DENIED, FALSE); // nobody looks
    });
    EXPECT_FALSE(fSetLastWriteTime(sPath.c_str(), tNewTime));
    EXPECT_EQ(uiCreation, uiTicks(tBefore.ftCreationTime));
    EXPECT_EQ(uiAccess, uiTicks(tBefore.ftLastAccessTime));
    EXPECT_EQ(uiWrite, ui2001);
    EXPECT_NO_THROW(SetCreationTime(sPath, tNewTime));
    EXPECT_EQ(uiCreation, ui2001);
    EXPECT_EQ(uiAccess, uiTicks(tBefore.ftLastAccessTime));
    EXPECT_EQ(uiWrite, uiTicks(tBefore.ftLastWriteTime));
    EXPECT_EQ(tSet.iGetCalls(), 2);
    EXPECT_TRUE(zk_test::fIsUnused(sPath));
}

TEST(FSetLastWriteTime, OpensForWritingAndLetsOthersRead) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sWrite(L"file", "");
    int iSearches = 0;
    TFindFirstEx const tFirst([&](auto... tArgs) {
        ++iSearches;
        return tFirst.Original(tArgs...);
    });
    TFindClose const tClose([&](HANDLE hSearch) {
        --iSearches;
        return tClose.Original(hSearch);
    });
    TCreateFile const tCreate([&](LPCWSTR pzPath, DWORD dwAccess, DWORD dwShare, LPSECURITY_ATTRIBUTES,
                                  DWORD dwDisposition, DWORD dwFlags, HANDLE) {
        EXPECT_EQ(pzPath, sPath);
        EXPECT_EQ(dwAccess, GENERIC_READ | GENERIC_WRITE);
        EXPECT_EQ(dwShare, static_cast<DWORD>(FILE_SHARE_READ));
        EXPECT_EQ(dwDisposition, static_cast<DWORD>(OPEN_EXISTING));
        EXPECT_EQ(dwFlags, static_cast<DWORD>(FILE_ATTRIBUTE_NORMAL));
        return tFailWith(ERROR_SHARING_VIOLATION, INVALID_HANDLE_VALUE);
    });
    for (auto const & Call : {std::function<void()>([&] { fSetLastWriteTime(sPath.c_str(), tNewTime); }),
                              std::function<void()>([&] { SetCreationTime(sPath, tNewTime); })}) {
        TXZkTools const tError = tThrownBy(Call);
        TXZkTools tExpected(sGetErrorString(ERROR_SHARING_VIOLATION).c_str());
        tExpected.AddMessage(4215, sPath.c_str());
        EXPECT_STREQ(tError.what(), tExpected.what());
        EXPECT_EQ(iSearches, 0);
    }
    EXPECT_EQ(tCreate.iGetCalls(), 2);
}

// Wine keeps no time of creation: that the system is asked to set it stands above.
TEST(SetCreationTime, LeavesTheTimeOfWritingAlone) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sWrite(L"file", "abc");
    SetLastWriteTime(sPath, tFileTime(ui2001));
    SetCreationTime(sPath, TZkDateTime(L"1999-12-31"sv));
    FILETIME tTime{};
    EXPECT_TRUE(fGetLastWriteTime(sPath.c_str(), tTime));
    EXPECT_EQ(uiTicks(tTime), ui2001);
    EXPECT_NO_THROW(SetCreationTime(tTemp.sGetPath(L"missing"), tNewTime));
    EXPECT_FALSE(fExistFileOrDirectory(tTemp.sGetPath(L"missing").c_str()));
}

TEST(SetLastWriteTime, LeavesTheOtherTimesAlone) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sWrite(L"file", "");
    WIN32_FILE_ATTRIBUTE_DATA tBefore, tAfter;
    ASSERT_TRUE(GetFileAttributesExW(sPath.c_str(), GetFileExInfoStandard, &tBefore));
    TCreateFile const tCreate([&](LPCWSTR pzPath, DWORD dwAccess, DWORD dwShare, LPSECURITY_ATTRIBUTES pSecurity,
                                  DWORD dwDisposition, DWORD dwFlags, HANDLE hTemplate) {
        EXPECT_EQ(pzPath, sPath);
        EXPECT_EQ(dwAccess, 256U);
        EXPECT_EQ(dwShare, 7U);
        EXPECT_EQ(pSecurity, nullptr);
        EXPECT_EQ(dwDisposition, static_cast<DWORD>(OPEN_EXISTING));
        EXPECT_EQ(dwFlags, static_cast<DWORD>(FILE_ATTRIBUTE_NORMAL));
        EXPECT_EQ(hTemplate, nullptr);
        return tCreate.Original(pzPath, dwAccess, dwShare, pSecurity, dwDisposition, dwFlags, hTemplate);
    });
    TSystemCall<"SetFileTime", decltype(SetFileTime)> const tSet(
        [&](HANDLE hFile, FILETIME const * pCreation, FILETIME const * pAccess, FILETIME const * pWrite) {
            EXPECT_EQ(pCreation, nullptr);
            EXPECT_EQ(pAccess, nullptr);
            return tSet.Original(hFile, pCreation, pAccess, pWrite);
        });
    SetLastWriteTime(sPath, tFileTime(ui2001));
    EXPECT_EQ(tCreate.iGetCalls(), 1);
    EXPECT_EQ(tSet.iGetCalls(), 1);
    ASSERT_TRUE(GetFileAttributesExW(sPath.c_str(), GetFileExInfoStandard, &tAfter));
    EXPECT_EQ(uiTicks(tAfter.ftLastWriteTime), ui2001);
    // Wine keeps no time of creation of its own: it gives the last change for it.
    EXPECT_EQ(uiTicks(tAfter.ftLastAccessTime), uiTicks(tBefore.ftLastAccessTime));
    EXPECT_TRUE(zk_test::fIsUnused(sPath));
}

TEST(SetLastWriteTime, ThrowsASystemErrorWhenTheFileCannotBeOpened) {
    TTempDirectory const tTemp;
    try {
        SetLastWriteTime(tTemp.sGetPath(L"missing"), tFileTime(ui2001));
        ADD_FAILURE() << "nothing thrown";
    } catch (std::system_error const & tError) {
        EXPECT_EQ(tError.code(), std::error_code(ERROR_FILE_NOT_FOUND, std::system_category()));
    }
}

TEST(SetLastWriteTime, ThrowsASystemErrorWhenTheTimeCannotBeSet) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sWrite(L"file", "");
    TSystemCall<"SetFileTime", decltype(SetFileTime)> const tSet(
        [](auto...) { return tFailWith(ERROR_ACCESS_DENIED, FALSE); });
    TCloseHandle const tClose([&](HANDLE hFile) {
        BOOL const fClosed = tClose.Original(hFile);
        return tFailWith(ERROR_INVALID_HANDLE, fClosed);
    });
    try {
        SetLastWriteTime(sPath, tFileTime(ui2001));
        ADD_FAILURE() << "nothing thrown";
    } catch (std::system_error const & tError) {
        EXPECT_EQ(tError.code(), std::error_code(ERROR_ACCESS_DENIED, std::system_category()));
    }
    EXPECT_EQ(tClose.iGetCalls(), 1);
    EXPECT_TRUE(zk_test::fIsUnused(sPath));
}

// Comparisons

TEST(FDirectoriesOrFilesAreEqual, ComparesTheTexts) {
    struct {
        wchar_t const * pzFirst;
        wchar_t const * pzSecond;
        bool fExpected;
    } const atRows[] = {
        {L"C:\\dir", L"C:\\dir", true},
        {L"C:\\dir\\", L"c:\\DIR", true},
        {L"C:\\dir", L"C:\\dir\\", true},
        {L"C:\\dir\\\\", L"C:\\dir", false}, // one backslash only is taken off
        {L"C:\\dir\\\\", L"C:\\dir\\\\", true},
        {L"C:\\", L"C:", false}, // that of a root is not
        {L"C:\\", L"c:\\", true},
        {L"C:\\dir/", L"C:\\dir", false},
        {L"C:\\dir\\.", L"C:\\dir", false},
        {L"C:\\dir", L"C:\\dir2", false},
        {L"C:\\\u00C4", L"C:\\\u00E4", false}, // in the C locale these are no letters
        {L"", L"", true},
        {L"", L"C:\\dir", false},
    };
    for (auto const & tRow : atRows) {
        EXPECT_EQ(fDirectoriesOrFilesAreEqual(tRow.pzFirst, tRow.pzSecond), tRow.fExpected)
            << PrintToString(tRow.pzFirst) << PrintToString(tRow.pzSecond);
        EXPECT_EQ(fDirectoriesOrFilesAreEqual(tRow.pzSecond, tRow.pzFirst), tRow.fExpected);
    }
}

TEST(FCheckSubDir, ComparesTheTexts) {
    struct {
        wchar_t const * pzDirectory;
        wchar_t const * pzParent;
        bool fExpected;
    } const atRows[] = {
        {L"C:\\dir\\sub", L"C:\\dir", true},
        {L"C:\\dir\\sub\\", L"C:\\dir\\", true},
        {L"c:\\DIR\\sub", L"C:\\dir\\", true},
        {L"C:\\dir", L"C:\\dir", true},
        {L"C:\\dir", L"C:\\dir\\", true},
        {L"C:\\dir\\", L"C:\\dir", true},
        {L"C:\\dir", L"C:\\", true},
        {L"C:\\dir2", L"C:\\dir", false},
        {L"C:\\dir", L"C:\\dir\\sub", false},
        {L"C:\\dir/sub", L"C:\\dir", false},
        {L"D:\\dir", L"C:\\dir", false},
        {L"", L"", true},
        {L"C:\\dir", L"", false},
        {L"\\dir", L"", true},
    };
    for (auto const & tRow : atRows)
        EXPECT_EQ(fCheckSubDir(tRow.pzDirectory, tRow.pzParent), tRow.fExpected)
            << PrintToString(tRow.pzDirectory) << PrintToString(tRow.pzParent);
}
