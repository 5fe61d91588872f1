#include "tests/locks/LockFixture.h"

#include "ZkTools/MessageIds.h"

#include <gtest/gtest.h>

#include <cstring>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

using namespace zk_test;

namespace {

constexpr wchar_t const * pzLineEnd = L"\r\n";

class LockDirectory : public testing::Test {
protected:
    LockDirectory() { tDirectory.sWrite(L"main.dat", "data"); }

    [[nodiscard]] std::wstring const & sDir() const { return tDirectory.sGetPath(); }
    [[nodiscard]] std::wstring sList() const { return sListDirectory(sDir()); }
    [[nodiscard]] wchar_t const * pzDir() const { return sDir().c_str(); }

    TTempDirectory tDirectory;
};

} // namespace

static_assert(std::is_polymorphic_v<TLockDirectory>);
static_assert(eModeStrict == 0 && eModeShared != 0);

// Names and state

TEST_F(LockDirectory, StartsEmptyClosedAndUnlocked) {
    TOpenLock const tLock(eModeShared);
    for (std::wstring const * psField :
         {&tLock.sDirectory, &tLock.sReaderPattern, &tLock.sReaderPath, &tLock.sReaderBaseName, &tLock.sWriterPath,
          &tLock.sWriterInfoPattern, &tLock.sWriterInfoPath, &tLock.sObjectPath, &tLock.sComputer, &tLock.sUser})
        EXPECT_EQ(*psField, L"");
    for (HANDLE const h : {tLock.hReader, tLock.hWriter, tLock.hWriterInfo, tLock.hReadOnly})
        EXPECT_EQ(h, INVALID_HANDLE_VALUE);
    EXPECT_EQ(tLock.iLockCount, 0);
    EXPECT_EQ(tLock.eMode, eModeShared);
}

TEST_F(LockDirectory, HasItsMessageIdsByIndex) {
    TOpenLock tLock(eModeStrict);
    std::array<std::pair<EErrorString, unsigned int>, 7> const tIds{{{eErrLock, 4321},
                                                                     {eErrWriterKnown, 4323},
                                                                     {eErrReadOnly, 4324},
                                                                     {eErrWriterUnknown, 4322},
                                                                     {eErrOpen, 4320},
                                                                     {eErrInUse, 4325},
                                                                     {eErrReadersKnown, 4326}}};
    for (std::size_t i = 0; i < tIds.size(); ++i) {
        EXPECT_EQ(static_cast<std::size_t>(tIds[i].first), i);
        EXPECT_EQ(tLock.uiGetErrorStringId(tIds[i].first), tIds[i].second);
    }
    tLock.uiErrorIds.fill(1);
    tLock.FillErrorStringIds();
    EXPECT_EQ(tLock.uiErrorIds, (std::array<unsigned int, 7>{4321, 4323, 4324, 4322, 4320, 4325, 4326}));
}

TEST_F(LockDirectory, KeepsItsFieldsInOrder) {
    TOpenLock tLock(eModeStrict);
    std::vector<void const *> const pFields{&tLock.sDirectory,      &tLock.sReaderPattern, &tLock.sReaderPath,
                                            &tLock.sReaderBaseName, &tLock.sWriterPath,    &tLock.sWriterInfoPattern,
                                            &tLock.sWriterInfoPath, &tLock.sObjectPath,    &tLock.sComputer,
                                            &tLock.sUser,           &tLock.hReader,        &tLock.hWriter,
                                            &tLock.hWriterInfo,     &tLock.hReadOnly,      &tLock.iLockCount,
                                            &tLock.eMode,           &tLock.uiErrorIds};
    EXPECT_TRUE(std::ranges::is_sorted(pFields));
}

#ifdef __GXX_ABI_VERSION
TEST_F(LockDirectory, HasThreeVirtualOperationsInOrder) {
    // A pointer to a virtual operation holds its offset in the table, plus 1. The destructor takes two places.
    auto const uOffset = [](auto pOperation) {
        std::uintptr_t uValue;
        std::memcpy(&uValue, &pOperation, sizeof uValue);
        return (uValue - 1) / sizeof(void *);
    };
    EXPECT_EQ(uOffset(&TOpenLock::SetDir), 2u);
    struct TName : TLockDirectory {
        static auto pGet() { return &TName::pzGetNameOfObjectToLock; }
    };
    EXPECT_EQ(uOffset(TName::pGet()), 3u);
}
#endif

TEST_F(LockDirectory, SetDirBuildsTheNames) {
    TOpenLock const tLock(L"PC1", L"usera", eModeStrict, L"D:\\dir", L"main.dat");
    EXPECT_EQ(tLock.sDirectory, L"D:\\dir");
    EXPECT_EQ(tLock.sReaderPattern, L"D:\\dir\\rdr*.tmp");
    EXPECT_EQ(tLock.sReaderPath, L"");
    EXPECT_EQ(tLock.sReaderBaseName, L"rdr%PC1%usera%");
    EXPECT_EQ(tLock.sWriterPath, L"D:\\dir\\write.lck");
    EXPECT_EQ(tLock.sWriterInfoPattern, L"D:\\dir\\write*.tmp");
    EXPECT_EQ(tLock.sWriterInfoPath, L"D:\\dir\\write%PC1%usera%.tmp");
    EXPECT_EQ(tLock.sObjectPath, L"D:\\dir\\main.dat");
    EXPECT_EQ(tLock.sComputer, L"PC1");
    EXPECT_EQ(tLock.sUser, L"usera");
}

TEST_F(LockDirectory, SetDirRemovesOneBackslash) {
    struct TCase {
        wchar_t const * pzGiven;
        wchar_t const * pzDirectory;
    };
    for (TCase const & tCase : {TCase{L"D:\\dir\\", L"D:\\dir"}, TCase{L"D:\\dir\\\\", L"D:\\dir\\"},
                                TCase{L"C:\\", L"C:"}, TCase{L"\\", L""}, TCase{L"", L""},
                                TCase{L"D:/dir/", L"D:/dir/"}, TCase{L"\\\\server\\share\\", L"\\\\server\\share"}}) {
        TOpenLock const tLock(L"PC", L"u", eModeStrict, tCase.pzGiven, L"o");
        std::wstring const sDirectory = tCase.pzDirectory;
        EXPECT_EQ(tLock.sDirectory, sDirectory);
        EXPECT_EQ(tLock.sWriterPath, sDirectory + L"\\write.lck");
        EXPECT_EQ(tLock.sReaderPattern, sDirectory + L"\\rdr*.tmp");
        EXPECT_EQ(tLock.sObjectPath, sDirectory + L"\\o");
    }
}

TEST_F(LockDirectory, SetDirWithANullChangesNothing) {
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, L"D:\\dir", L"main.dat");
    TIdentity const tOther(L"PC2", L"userb");
    tLock.SetDir(nullptr, L"x");
    tLock.SetDir(L"D:\\x", nullptr);
    tLock.SetDir(nullptr, nullptr);
    EXPECT_EQ(tLock.sDirectory, L"D:\\dir");
    EXPECT_EQ(tLock.sObjectPath, L"D:\\dir\\main.dat");
    EXPECT_EQ(tLock.sUser, L"usera");
}

TEST_F(LockDirectory, SetDirReadsComputerAndUserAnew) {
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, L"D:\\dir", L"main.dat");
    TIdentity const tOther(L"PC2", L"userb");
    tLock.SetDir(L"E:\\", L"");
    EXPECT_EQ(tLock.sReaderBaseName, L"rdr%PC2%userb%");
    EXPECT_EQ(tLock.sWriterInfoPath, L"E:\\write%PC2%userb%.tmp");
    EXPECT_EQ(tLock.sObjectPath, L"E:\\");
}

TEST_F(LockDirectory, SetDirLivesWithNamesThatTheSystemRefuses) {
    DWORD dwComputerSize = 0;
    DWORD dwUserSize = 0;
    auto const Refuse = [](DWORD & dwSeen) {
        return [&dwSeen](wchar_t *, DWORD * pdwSize) {
            dwSeen = *pdwSize;
            return tFailWith(ERROR_BUFFER_OVERFLOW, FALSE);
        };
    };
    TSystemCall<"GetComputerNameW", decltype(GetComputerNameW)> const tComputer(Refuse(dwComputerSize));
    TSystemCall<"GetUserNameW", decltype(GetUserNameW)> const tUser(Refuse(dwUserSize));
    TOpenLock const tLock(eModeStrict, L"D:\\dir", L"o");
    EXPECT_EQ(dwComputerSize, 16u);
    EXPECT_EQ(dwUserSize, 257u);
    EXPECT_EQ(tLock.sReaderBaseName, L"rdr%%%");
    EXPECT_EQ(tLock.sWriterInfoPath, L"D:\\dir\\write%%%.tmp");
}

TEST_F(LockDirectory, SetDirTakesTheObjectsOwnDirectory) {
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, L"D:\\a directory with a long name\\", L"main.dat");
    tLock.SetDir(tLock.sDirectory.c_str(), L"other.dat");
    EXPECT_EQ(tLock.sObjectPath, L"D:\\a directory with a long name\\other.dat");
}

TEST_F(LockDirectory, SetDirRedirectsAnOpenObjectAndKeepsItsPlaces) {
    std::wstring const sOther = tDirectory.sMakeDirectory(L"other");
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    tLock.Open();
    tLock.Lock();
    tLock.SetDir(sOther.c_str(), L"main.dat");
    EXPECT_EQ(tLock.sWriterPath, sOther + L"\\write.lck");
    EXPECT_EQ(tLock.sReaderPath, sDir() + L"\\rdr%PC1%usera%.tmp");
    EXPECT_EQ(sList(), L"main.dat|other|rdr%PC1%usera%.tmp|write%PC1%usera%.tmp|write.lck");
    EXPECT_TRUE(tLock.fIsLocked());
    tLock.Unlock();
    tLock.Close();
    EXPECT_EQ(sList(), L"main.dat|other");
}

TEST_F(LockDirectory, SetDirDoesNothingWhenBothReaderHandlesAreValid) {
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    tLock.hReader = hHoldLockFile(tDirectory.sGetPath(L"a")).hGet(); // stale, but valid to look at
    tLock.hReadOnly = tLock.hReader;
    EXPECT_TRUE(tLock.fIsOpen());
    tLock.SetDir(L"D:\\x", L"y");
    EXPECT_EQ(tLock.sDirectory, sDir());
    tLock.hReader = INVALID_HANDLE_VALUE;
    tLock.hReadOnly = INVALID_HANDLE_VALUE;
}

TEST_F(LockDirectory, NamesItselfByTheDirectoryAndNeverByNull) {
    TOpenLock tLock(eModeStrict);
    EXPECT_STREQ(tLock.pzGetNameOfObjectToLock(), L"");
    tLock.SetDir(L"D:\\dir\\", L"o");
    EXPECT_STREQ(tLock.pzGetNameOfObjectToLock(), L"D:\\dir");
}

TEST_F(LockDirectory, FilesOfEachState) {
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    auto const sState = [&] {
        std::string sResult;
        for (HANDLE const h : {tLock.hReader, tLock.hReadOnly, tLock.hWriter, tLock.hWriterInfo})
            sResult += h != INVALID_HANDLE_VALUE ? '+' : '-';
        return sResult + std::to_string(tLock.iLockCount);
    };
    EXPECT_EQ(sState(), "----0");
    EXPECT_EQ(sList(), L"main.dat");

    tLock.Open();
    EXPECT_EQ(sState(), "+---0");
    EXPECT_EQ(sList(), L"main.dat|rdr%PC1%usera%.tmp");
    EXPECT_EQ(tLock.sReaderPath, tDirectory.sGetPath(L"rdr%PC1%usera%.tmp"));

    tLock.Lock();
    EXPECT_EQ(sState(), "+-++1");
    EXPECT_EQ(sList(), L"main.dat|rdr%PC1%usera%.tmp|write%PC1%usera%.tmp|write.lck");

    tLock.Close(); // the writer place stays
    EXPECT_EQ(sState(), "--++1");
    EXPECT_EQ(sList(), L"main.dat|write%PC1%usera%.tmp|write.lck");
    EXPECT_TRUE(tLock.fIsLocked());

    tLock.Unlock();
    EXPECT_EQ(sState(), "----0");
    EXPECT_EQ(sList(), L"main.dat");
    EXPECT_FALSE(tLock.fIsLocked());
}

TEST_F(LockDirectory, LockFilesAreEmptyAndHidden) {
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    tLock.Open();
    tLock.Lock();
    for (wchar_t const * pzName : {L"rdr%PC1%usera%.tmp", L"write%PC1%usera%.tmp", L"write.lck"}) {
        WIN32_FILE_ATTRIBUTE_DATA tData{};
        ASSERT_TRUE(GetFileAttributesExW(tDirectory.sGetPath(pzName).c_str(), GetFileExInfoStandard, &tData));
        EXPECT_NE(tData.dwFileAttributes & FILE_ATTRIBUTE_HIDDEN, 0u);
        EXPECT_EQ(tData.nFileSizeLow, 0u);
        EXPECT_FALSE(fIsUnused(tDirectory.sGetPath(pzName)));
    }
    EXPECT_TRUE(fIsUnused(tDirectory.sGetPath(L"main.dat")));
}

TEST_F(LockDirectory, IsNeverOpenAfterAnOrdinaryOpen) {
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    EXPECT_FALSE(tLock.fIsOpen());
    tLock.Open();
    EXPECT_FALSE(tLock.fIsOpen());
    EXPECT_FALSE(tLock.fIsReadOnly());
}

// Readers

TEST_F(LockDirectory, ReadersOfOneUserAreNumbered) {
    TOpenLock tFirst(L"PC1", L"usera", eModeStrict, sDir());
    TOpenLock tSecond(L"PC1", L"usera", eModeStrict, sDir());
    TOpenLock tThird(L"PC1", L"usera", eModeStrict, sDir());
    tFirst.Open();
    EXPECT_EQ(tFirst.iCountReader(), 1);
    tSecond.Open();
    tThird.Open();
    EXPECT_EQ(sList(), L"main.dat|rdr%PC1%usera%.tmp|rdr%PC1%usera%_2.tmp|rdr%PC1%usera%_3.tmp");
    EXPECT_EQ(tFirst.iCountReader(), 3);
    tSecond.Close();
    EXPECT_EQ(tFirst.iCountReader(), 2);
    tSecond.Open(); // the number that became free
    EXPECT_EQ(tSecond.sReaderPath, tDirectory.sGetPath(L"rdr%PC1%usera%_2.tmp"));
}

TEST_F(LockDirectory, LeftoverReaderIsSweptAndNotCountedButTakesItsNumber) {
    tDirectory.sWrite(L"rdr%PC1%usera%.tmp", "");
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    tLock.Open();
    EXPECT_EQ(sList(), L"main.dat|rdr%PC1%usera%.tmp|rdr%PC1%usera%_2.tmp");
    EXPECT_EQ(tLock.iCountReader(), 1);
    EXPECT_EQ(sList(), L"main.dat|rdr%PC1%usera%_2.tmp");
}

TEST_F(LockDirectory, ReaderInfoSweepsLeftoversToo) {
    tDirectory.sWrite(L"rdr%PC9%gone%.tmp", "");
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    EXPECT_EQ(tLock.sGetReaderInfo(), L"");
    EXPECT_EQ(sList(), L"main.dat");
}

TEST_F(LockDirectory, CountsWhateverLooksLikeAReaderFile) {
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    THandle const hOdd = hHoldLockFile(tDirectory.sGetPath(L"rdr.tmp"));
    THandle const hOther = hHoldLockFile(tDirectory.sGetPath(L"xrdr%PC1%usera%.tmp"));
    EXPECT_EQ(tLock.iCountReader(), 1);
    tDirectory.sMakeDirectory(L"rdr directory.tmp"); // cannot be opened: counts as held
    EXPECT_EQ(tLock.iCountReader(), 2);
}

TEST_F(LockDirectory, ReaderInfoTellsUserAndComputerFromTheNames) {
    std::vector<THandle> tHeld;
    for (wchar_t const * pzName :
         {L"rdr%PC1%usera%.tmp", L"rdr%PC2%userb%_2.tmp", L"rdr%PC3%user c%d%.tmp", L"rdr%%userd%.tmp",
          L"rdr%PC5%%.tmp", L"rdr%PC6%userf.tmp", L"rdr%PC7.tmp", L"rdr.tmp"})
        tHeld.push_back(hHoldLockFile(tDirectory.sGetPath(pzName)));
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    std::wstring sInfo = tLock.sGetReaderInfo() + pzLineEnd;
    // The order is that of the search.
    for (wchar_t const * pzLine : {L"usera [PC1]\r\n", L"userb [PC2]\r\n", L"user c [PC3]\r\n", L"userd\r\n"}) {
        std::size_t const uAt = sInfo.find(pzLine);
        ASSERT_NE(uAt, std::wstring::npos) << testing::PrintToString(std::wstring(pzLine));
        sInfo.erase(uAt, std::wstring(pzLine).size());
    }
    EXPECT_EQ(sInfo, L"");
}

TEST_F(LockDirectory, ReaderInfoLeavesOutThisObjectAlone) {
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    tLock.Open();
    EXPECT_EQ(tLock.sGetReaderInfo(), L"");
    TOpenLock tSame(L"PC1", L"usera", eModeStrict, sDir());
    tSame.Open();
    EXPECT_EQ(tLock.sGetReaderInfo(), L"usera [PC1]");
    EXPECT_EQ(tSame.sGetReaderInfo(), L"usera [PC1]");
}

TEST_F(LockDirectory, ReaderInfoComparesItsOwnPathExactly) {
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    tLock.Open();
    tLock.sReaderPath = sDir() + L"\\RDR%PC1%usera%.tmp";
    EXPECT_EQ(tLock.sGetReaderInfo(), L"usera [PC1]");
}

TEST_F(LockDirectory, OpenTwiceLeavesTheFirstPlaceTaken) {
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    tLock.Open();
    THandle const hFirst(tLock.hReader); // or nobody could ever close it
    tLock.Open();
    EXPECT_NE(tLock.hReader, hFirst.hGet());
    EXPECT_EQ(tLock.sReaderPath, tDirectory.sGetPath(L"rdr%PC1%usera%_2.tmp"));
    EXPECT_EQ(tLock.iCountReader(), 2);
    tLock.Close();
    EXPECT_EQ(tLock.iCountReader(), 1);
    EXPECT_EQ(sList(), L"main.dat|rdr%PC1%usera%.tmp");
}

TEST_F(LockDirectory, NextFreeReaderGivesTheHandleOrTheError) {
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    HANDLE hPlace = nullptr;
    unsigned long dwError = 99;
    ASSERT_TRUE(tLock.fGetNextFreeReader(hPlace, dwError));
    THandle const hOwner(hPlace);
    EXPECT_EQ(dwError, 0u);
    EXPECT_EQ(tLock.hReader, INVALID_HANDLE_VALUE);
    EXPECT_EQ(tLock.sReaderPath, tDirectory.sGetPath(L"rdr%PC1%usera%.tmp"));

    tLock.SetDir((sDir() + L"\\missing").c_str(), L"o");
    EXPECT_FALSE(tLock.fGetNextFreeReader(hPlace, dwError));
    EXPECT_EQ(hPlace, INVALID_HANDLE_VALUE);
    EXPECT_EQ(dwError, static_cast<unsigned long>(ERROR_PATH_NOT_FOUND));
    EXPECT_EQ(tLock.sReaderPath, L"");
}

TEST_F(LockDirectory, TheSecondOfTwoThatPickOneNameFails) {
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    THandle hStranger;
    std::wstring const sName = tDirectory.sGetPath(L"rdr%PC1%usera%.tmp");
    TSystemCall<"CreateFileW", decltype(CreateFileW)> tCreate([&](wchar_t const * pzPath, DWORD dwAccess, DWORD dwShare,
                                                                  SECURITY_ATTRIBUTES * pSecurity, DWORD dwDisposition,
                                                                  DWORD dwFlags, HANDLE hTemplate) {
        if (pzPath == sName) hStranger = hHoldLockFile(sName); // between the look for a name and the open
        return tCreate.Original(pzPath, dwAccess, dwShare, pSecurity, dwDisposition, dwFlags, hTemplate);
    });
    EXPECT_EQ(sThrown([&] { tLock.Open(); }),
              sSystemText(ERROR_SHARING_VIOLATION) + "\r\n" + sMessage(IDS_LOCK_OPEN_FAILED, pzDir()));
    EXPECT_EQ(tLock.sReaderPath, L"");
    EXPECT_EQ(tCreate.iGetCalls(), 1); // no second try
}

// The writer seen by others

TEST_F(LockDirectory, LiveWriterIsFoundAndALeftoverIsSwept) {
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    EXPECT_FALSE(tLock.fFindWriter());
    {
        THandle const hWriter = hHoldLockFile(tDirectory.sGetPath(L"write.lck"));
        EXPECT_TRUE(tLock.fFindWriter());
        EXPECT_FALSE(tLock.fCanOpen());
    }
    tDirectory.sWrite(L"write.lck", "");
    EXPECT_FALSE(tLock.fFindWriter());
    EXPECT_EQ(sList(), L"main.dat");
}

TEST_F(LockDirectory, LeftoverWriterHindersNobody) {
    for (EMode const eMode : {eModeStrict, eModeShared}) {
        tDirectory.sWrite(L"write.lck", "");
        tDirectory.sWrite(L"write%PC1%usera%.tmp", "");
        TOpenLock tLock(L"PC1", L"usera", eMode, sDir());
        EXPECT_TRUE(tLock.fCanOpen());
        EXPECT_EQ(tLock.sGetWriterInfo(), L"");
        tLock.Open();
        tLock.Lock();
        tLock.Unlock();
        tLock.Close();
        EXPECT_EQ(sList(), L"main.dat");
    }
}

TEST_F(LockDirectory, EveryFailureOfAProbeCountsAsALiveHolder) {
    tDirectory.sWrite(L"write.lck", "");
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    for (DWORD const dwError :
         std::initializer_list<DWORD>{ERROR_ACCESS_DENIED, ERROR_FILE_NOT_FOUND, ERROR_NETWORK_UNREACHABLE}) {
        TSystemCall<"CreateFileW", decltype(CreateFileW)> const tCreate(
            [&](wchar_t const *, DWORD, DWORD, SECURITY_ATTRIBUTES *, DWORD, DWORD, HANDLE) {
                return tFailWith(dwError, INVALID_HANDLE_VALUE);
            });
        EXPECT_TRUE(tLock.fFindWriter());
    }
}

TEST_F(LockDirectory, WriterInfoKnowsThisComputerAndUserOnly) {
    TOpenLock tWriter(L"PC1", L"usera", eModeStrict, sDir());
    tWriter.Lock();
    EXPECT_EQ(TOpenLock(L"PC1", L"usera", eModeStrict, sDir()).sGetWriterInfo(), L"usera [PC1]");
    EXPECT_EQ(TOpenLock(L"PC2", L"usera", eModeStrict, sDir()).sGetWriterInfo(), L"");
    EXPECT_EQ(TOpenLock(L"PC1", L"userb", eModeStrict, sDir()).sGetWriterInfo(), L"");
    tWriter.Unlock();
    EXPECT_EQ(tWriter.sGetWriterInfo(), L"");
    EXPECT_EQ(sList(), L"main.dat");
}

TEST_F(LockDirectory, WriterInfoWithoutAUserIsEmpty) {
    THandle const hInfo = hHoldLockFile(tDirectory.sGetPath(L"write%PC1%%.tmp"));
    EXPECT_EQ(TOpenLock(L"PC1", L"", eModeStrict, sDir()).sGetWriterInfo(), L"");
    THandle const hNameless = hHoldLockFile(tDirectory.sGetPath(L"write%%usera%.tmp"));
    EXPECT_EQ(TOpenLock(L"", L"usera", eModeStrict, sDir()).sGetWriterInfo(), L"usera");
}

TEST_F(LockDirectory, LeftoverWriterInfoOfAnotherUserStays) {
    tDirectory.sWrite(L"write%PC3%userc%.tmp", "");
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    EXPECT_EQ(tLock.sGetWriterInfo(), L"");
    tLock.Open();
    tLock.Lock();
    EXPECT_TRUE(fExists(tDirectory.sGetPath(L"write%PC3%userc%.tmp")));
    EXPECT_EQ(TOpenLock(L"PC3", L"userc", eModeStrict, sDir()).sGetWriterInfo(), L"");
    EXPECT_FALSE(fExists(tDirectory.sGetPath(L"write%PC3%userc%.tmp")));
}

// Refusals to open

TEST_F(LockDirectory, OpenIsRefusedByAKnownWriter) {
    TOpenLock tWriter(L"PC1", L"usera", eModeStrict, sDir());
    tWriter.Lock();
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    EXPECT_EQ(sThrown([&] { tLock.Open(); }), sMessage(IDS_LOCK_OPEN_FAILED, pzDir()) + "\r\n" +
                                                  sMessage(IDS_LOCK_WRITER_KNOWN, pzDir(), L"usera [PC1]"));
    EXPECT_EQ(tLock.hReader, INVALID_HANDLE_VALUE);
    EXPECT_EQ(sList(), L"main.dat|write%PC1%usera%.tmp|write.lck");
}

TEST_F(LockDirectory, OpenIsRefusedByAnUnknownWriter) {
    TOpenLock tWriter(L"PC3", L"userc", eModeStrict, sDir());
    tWriter.Lock();
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    std::runtime_error tError("what was there before");
    EXPECT_FALSE(tLock.fOpen(tError));
    EXPECT_EQ(tError.what(),
              sMessage(IDS_LOCK_OPEN_FAILED, pzDir()) + "\r\n" + sMessage(IDS_LOCK_WRITER_UNKNOWN, pzDir()));
    // The test alone leaves the head line out.
    EXPECT_FALSE(tLock.fCanOpen(tError));
    EXPECT_EQ(tError.what(), sMessage(IDS_LOCK_WRITER_UNKNOWN, pzDir()));
}

TEST_F(LockDirectory, TheOwnWriterPlaceBarsOpenAsAnybodysDoes) {
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    tLock.Lock();
    EXPECT_FALSE(tLock.fCanOpen());
    EXPECT_NE(sThrown([&] { tLock.Open(); }), "");
    TOpenLock tShared(L"PC1", L"usera", eModeShared, sDir());
    tShared.Open();
}

TEST_F(LockDirectory, ThrowsPlainRuntimeErrors) {
    TOpenLock tWriter(L"PC3", L"userc", eModeStrict, sDir());
    tWriter.Lock();
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    auto const ExpectPlain = [](auto tCall) {
        try {
            tCall();
            ADD_FAILURE() << "nothing thrown";
        } catch (std::exception const & tError) {
            EXPECT_TRUE(typeid(tError) == typeid(std::runtime_error));
        }
    };
    ExpectPlain([&] { tLock.Open(); });
    ExpectPlain([&] { tLock.Lock(); });
    SetFileAttributesW(tDirectory.sGetPath(L"main.dat").c_str(), FILE_ATTRIBUTE_READONLY);
    ExpectPlain([&] { tLock.xCanLock(); });
}

TEST_F(LockDirectory, OpenOfAMissingDirectoryTellsTheSystemsReason) {
    std::wstring const sMissing = tDirectory.sGetPath(L"missing");
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sMissing);
    EXPECT_TRUE(tLock.fCanOpen());
    EXPECT_EQ(sThrown([&] { tLock.Open(); }),
              sSystemText(ERROR_PATH_NOT_FOUND) + "\r\n" + sMessage(IDS_LOCK_OPEN_FAILED, sMissing.c_str()));
    EXPECT_EQ(tLock.sReaderPath, L"");
    EXPECT_FALSE(tLock.fIsReadOnly());
    EXPECT_EQ(sThrown([&] { tLock.Lock(); }),
              sSystemText(ERROR_PATH_NOT_FOUND) + "\r\n" + sMessage(IDS_LOCK_FAILED, sMissing.c_str()));
    EXPECT_EQ(tLock.iLockCount, 0);
    EXPECT_FALSE(tLock.fCanLock());
}

TEST_F(LockDirectory, OpenOfAFileInPlaceOfADirectoryTellsTheSystemsReason) {
    std::wstring const sFile = tDirectory.sGetPath(L"main.dat");
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sFile);
    EXPECT_EQ(sThrown([&] { tLock.Open(); }),
              sSystemText(ERROR_PATH_NOT_FOUND) + "\r\n" + sMessage(IDS_LOCK_OPEN_FAILED, sFile.c_str()));
}

// Refusals to lock

TEST_F(LockDirectory, LoneReaderMayLock) {
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    tLock.Open();
    EXPECT_TRUE(tLock.fCanLock());
    tLock.xCanLock();
    tLock.Lock();
    EXPECT_TRUE(tLock.fIsLocked());
}

TEST_F(LockDirectory, OtherReadersBarTheWriterAndAreNamed) {
    TOpenLock tFirst(L"PC1", L"usera", eModeStrict, sDir());
    TOpenLock tSecond(L"PC2", L"userb", eModeStrict, sDir());
    TOpenLock tLock(L"PC3", L"userc", eModeStrict, sDir());
    tFirst.Open();
    tSecond.Open();
    tLock.Open();
    std::string const sText = sThrown([&] { tLock.Lock(); });
    std::string const sHead = sMessage(IDS_LOCK_FAILED, pzDir()) + "\r\n";
    // The order of the readers is that of the search.
    EXPECT_TRUE(sText == sHead + sMessage(IDS_LOCK_READERS_KNOWN, pzDir(), L"usera [PC1]\r\nuserb [PC2]") ||
                sText == sHead + sMessage(IDS_LOCK_READERS_KNOWN, pzDir(), L"userb [PC2]\r\nusera [PC1]"))
        << sText;
    EXPECT_EQ(tLock.iLockCount, 0);
    EXPECT_FALSE(tLock.fCanLock());
    EXPECT_FALSE(fExists(tDirectory.sGetPath(L"write.lck")));

    tFirst.Close();
    EXPECT_EQ(sThrown([&] { tLock.xCanLock(); }), sMessage(IDS_LOCK_READERS_KNOWN, pzDir(), L"userb [PC2]"));
    tSecond.Close();
    tLock.Lock();
    EXPECT_TRUE(tLock.fIsLocked());
}

TEST_F(LockDirectory, ReadersOfWhomNothingIsKnownBarTheWriterAsInUse) {
    THandle const hFirst = hHoldLockFile(tDirectory.sGetPath(L"rdr 1.tmp"));
    THandle const hSecond = hHoldLockFile(tDirectory.sGetPath(L"rdr 2.tmp"));
    TOpenLock tLock(L"PC3", L"userc", eModeStrict, sDir());
    EXPECT_EQ(sThrown([&] { tLock.Lock(); }),
              sMessage(IDS_LOCK_FAILED, pzDir()) + "\r\n" + sMessage(IDS_LOCK_IN_USE, pzDir()));
}

TEST_F(LockDirectory, LockWithoutOpenOverlooksOneForeignReader) {
    TOpenLock tReader(L"PC1", L"usera", eModeStrict, sDir());
    tReader.Open();
    TOpenLock tLock(L"PC3", L"userc", eModeStrict, sDir());
    tLock.Lock();
    EXPECT_EQ(sList(), L"main.dat|rdr%PC1%usera%.tmp|write%PC3%userc%.tmp|write.lck");
    tLock.Unlock();
    TOpenLock tSecond(L"PC1", L"usera", eModeStrict, sDir());
    tSecond.Open();
    EXPECT_FALSE(tLock.fCanLock());
}

TEST_F(LockDirectory, ObjectInUseBarsTheWriter) {
    TOpenLock tLock(L"PC3", L"userc", eModeStrict, sDir());
    tLock.Open();
    constexpr DWORD dwShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    {
        THandle const hObject(CreateFileW(tDirectory.sGetPath(L"main.dat").c_str(), GENERIC_READ, dwShareAll, nullptr,
                                          OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(hObject);
        EXPECT_EQ(sThrown([&] { tLock.Lock(); }),
                  sMessage(IDS_LOCK_FAILED, pzDir()) + "\r\n" + sMessage(IDS_LOCK_IN_USE, pzDir()));
        TOpenLock tShared(L"PC3", L"userc", eModeShared, sDir());
        tShared.Lock();
    }
    tLock.Lock();
    EXPECT_EQ(sReadFileBytes(tDirectory.sGetPath(L"main.dat")), "data"); // the probe does not remove it
}

TEST_F(LockDirectory, MissingObjectBarsNothing) {
    for (wchar_t const * pzObject : {L"missing.dat", L""}) {
        TOpenLock tLock(L"PC3", L"userc", eModeStrict, sDir(), pzObject);
        tLock.Open();
        tLock.Lock();
        EXPECT_EQ(sList(), L"main.dat|rdr%PC3%userc%.tmp|write%PC3%userc%.tmp|write.lck"); // nor is it made
    }
}

TEST_F(LockDirectory, ReadOnlyObjectBarsTheWriterInEveryMode) {
    std::wstring const sObject = tDirectory.sGetPath(L"main.dat");
    SetFileAttributesW(sObject.c_str(), FILE_ATTRIBUTE_READONLY);
    for (EMode const eMode : {eModeStrict, eModeShared, static_cast<EMode>(7)}) {
        TOpenLock tLock(L"PC3", L"userc", eMode, sDir());
        tLock.Open();
        EXPECT_EQ(sThrown([&] { tLock.Lock(); }),
                  sMessage(IDS_LOCK_FAILED, pzDir()) + "\r\n" + sMessage(IDS_LOCK_REFUSED, sObject.c_str()));
        EXPECT_EQ(sThrown([&] { tLock.xCanLock(); }), sMessage(IDS_LOCK_REFUSED, sObject.c_str()));
        EXPECT_EQ(tLock.iLockCount, 0);
    }
    SetFileAttributesW(sObject.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(LockDirectory, ObjectThatVanishesBeforeItsAttributesAreReadBarsNothing) {
    TOpenLock tLock(L"PC3", L"userc", eModeStrict, sDir());
    TSystemCall<"GetFileAttributesW", decltype(GetFileAttributesW)> const tAttributes(
        [](wchar_t const *) { return tFailWith(ERROR_FILE_NOT_FOUND, INVALID_FILE_ATTRIBUTES); });
    tLock.Lock();
    EXPECT_EQ(tAttributes.iGetCalls(), 1);
}

TEST_F(LockDirectory, ASecondWriterOfTheSameUserIsNamed) {
    for (EMode const eMode : {eModeStrict, eModeShared}) {
        TOpenLock tWriter(L"PC1", L"usera", eMode, sDir());
        tWriter.Lock();
        TOpenLock tLock(L"PC1", L"usera", eMode, sDir());
        EXPECT_EQ(sThrown([&] { tLock.Lock(); }), sMessage(IDS_LOCK_WRITER_KNOWN, pzDir(), L"usera [PC1]") + "\r\n" +
                                                      sMessage(IDS_LOCK_FAILED, pzDir()));
        EXPECT_FALSE(tLock.fIsLocked());
        EXPECT_EQ(tLock.iLockCount, 0);
        tLock.xCanLock(); // does not look at the writer place
        EXPECT_FALSE(tLock.fCanLock());
    }
}

TEST_F(LockDirectory, ASecondWriterFromElsewhereGivesTheSystemsReason) {
    TOpenLock tWriter(L"PC3", L"userc", eModeShared, sDir());
    tWriter.Lock();
    TOpenLock tLock(L"PC1", L"usera", eModeShared, sDir());
    std::runtime_error tError("");
    EXPECT_FALSE(tLock.fLock(tError));
    EXPECT_EQ(tError.what(), sSystemText(ERROR_SHARING_VIOLATION) + "\r\n" + sMessage(IDS_LOCK_FAILED, pzDir()));
}

TEST_F(LockDirectory, SharedModePassesAWriterAndReadersButNotASecondWriter) {
    TOpenLock tWriter(L"PC1", L"usera", eModeShared, sDir());
    tWriter.Open();
    tWriter.Lock();
    TOpenLock tReader(L"PC2", L"userb", eModeShared, sDir());
    EXPECT_TRUE(tReader.fCanOpen());
    tReader.Open();
    tWriter.Unlock();
    tWriter.Lock(); // with two readers there
    EXPECT_NE(sThrown([&] { tReader.Lock(); }), "");
    tWriter.Unlock();
    tReader.Lock();
}

TEST_F(LockDirectory, EveryModeButZeroIsShared) {
    THandle const hWriter = hHoldLockFile(tDirectory.sGetPath(L"write.lck"));
    THandle const hReaders[] = {hHoldLockFile(tDirectory.sGetPath(L"rdr%a%b%.tmp")),
                                hHoldLockFile(tDirectory.sGetPath(L"rdr%a%c%.tmp"))};
    for (int const iMode : {-1, 0, 1, 2, 7}) {
        TOpenLock tLock(L"PC1", L"usera", static_cast<EMode>(iMode), sDir());
        EXPECT_EQ(tLock.fCanOpen(), iMode != 0) << iMode;
        EXPECT_EQ(sThrown([&] { tLock.xCanLock(); }).empty(), iMode != 0) << iMode;
    }
}

TEST_F(LockDirectory, WriterInfoFileIsNoCondition) {
    THandle const hInfo = hHoldLockFile(tDirectory.sGetPath(L"write%PC1%usera%.tmp"));
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    tLock.Lock();
    EXPECT_TRUE(tLock.fIsLocked());
    EXPECT_EQ(tLock.hWriterInfo, INVALID_HANDLE_VALUE);
    tLock.Unlock();
    EXPECT_EQ(sList(), L"main.dat|write%PC1%usera%.tmp");
}

// Nesting

TEST_F(LockDirectory, LockNests) {
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    tLock.Lock();
    HANDLE const hWriter = tLock.hWriter;
    HANDLE const hWriterInfo = tLock.hWriterInfo;
    THandle const hReaders[] = {hHoldLockFile(tDirectory.sGetPath(L"rdr%a%b%.tmp")),
                                hHoldLockFile(tDirectory.sGetPath(L"rdr%a%c%.tmp"))};
    EXPECT_TRUE(tLock.fCanLock()); // nesting asks nobody
    tLock.Lock();
    EXPECT_EQ(tLock.iLockCount, 2);
    EXPECT_EQ(tLock.hWriter, hWriter);
    EXPECT_EQ(tLock.hWriterInfo, hWriterInfo);
    tLock.Unlock();
    EXPECT_EQ(tLock.iLockCount, 1);
    EXPECT_TRUE(fExists(tDirectory.sGetPath(L"write.lck")));
    EXPECT_TRUE(fExists(tDirectory.sGetPath(L"write%PC1%usera%.tmp")));
    tLock.Unlock();
    EXPECT_EQ(tLock.iLockCount, 0);
    EXPECT_FALSE(fExists(tDirectory.sGetPath(L"write.lck")));
    EXPECT_FALSE(fExists(tDirectory.sGetPath(L"write%PC1%usera%.tmp")));
}

TEST_F(LockDirectory, UnbalancedUnlockMakesTheNextLockTakeNothing) {
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    tLock.Unlock();
    EXPECT_EQ(tLock.iLockCount, -1);
    tLock.Lock();
    EXPECT_EQ(tLock.iLockCount, 0);
    EXPECT_FALSE(tLock.fIsLocked());
    EXPECT_EQ(sList(), L"main.dat");
    tLock.Lock(); // and the one after that locks again
    EXPECT_TRUE(tLock.fIsLocked());
}

TEST_F(LockDirectory, BelowZeroTheTestsAreMade) {
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    tLock.Unlock();
    THandle const hWriter = hHoldLockFile(tDirectory.sGetPath(L"write.lck"));
    tLock.xCanLock();
    EXPECT_FALSE(tLock.fCanLock());
    SetFileAttributesW(tDirectory.sGetPath(L"main.dat").c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_NE(sThrown([&] { tLock.Lock(); }), "");
    EXPECT_EQ(tLock.iLockCount, -1);
    SetFileAttributesW(tDirectory.sGetPath(L"main.dat").c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(LockDirectory, ForceUnlockFreesThePlaceAndKeepsTheCount) {
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    tLock.Open();
    tLock.Lock();
    tLock.Lock();
    tLock.ForceUnlock();
    EXPECT_EQ(tLock.iLockCount, 2);
    EXPECT_FALSE(tLock.fIsLocked());
    EXPECT_EQ(tLock.hWriterInfo, INVALID_HANDLE_VALUE);
    EXPECT_EQ(sList(), L"main.dat|rdr%PC1%usera%.tmp");
}

TEST_F(LockDirectory, CanLockTriesTheWriterPlaceAndLeavesNothing) {
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    EXPECT_TRUE(tLock.fCanLock());
    EXPECT_EQ(sList(), L"main.dat");
    EXPECT_FALSE(tLock.fIsLocked());
    THandle const hWriter = hHoldLockFile(tDirectory.sGetPath(L"write.lck"));
    EXPECT_FALSE(tLock.fCanLock());
}

// Ends

TEST_F(LockDirectory, DestructorFreesEverythingWhateverTheCount) {
    {
        TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
        tLock.Open();
        tLock.Lock();
        tLock.Lock();
    }
    EXPECT_EQ(sList(), L"main.dat");
}

TEST_F(LockDirectory, CreatedHandlesAreThePlaces) {
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    THandle const hWriter(tLock.hCreateWriter());
    THandle const hInfo(tLock.hCreateWriterInfo());
    EXPECT_EQ(sList(), L"main.dat|write%PC1%usera%.tmp|write.lck");
    EXPECT_FALSE(tLock.fIsLocked());
    EXPECT_EQ(tLock.hCreateWriter(), INVALID_HANDLE_VALUE);
    EXPECT_EQ(tLock.hCreateWriterInfo(), INVALID_HANDLE_VALUE);
}

TEST_F(LockDirectory, CopiesShareTheHandles) {
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    tLock.Open();
    tLock.Lock();
    tLock.Lock();
    {
        TOpenLock tCopy(tLock);
        TOpenLock tAssigned(eModeShared);
        tAssigned = tLock;
        for (TOpenLock * pCopy : {&tCopy, &tAssigned}) {
            EXPECT_EQ(pCopy->hReader, tLock.hReader);
            EXPECT_EQ(pCopy->hWriter, tLock.hWriter);
            EXPECT_EQ(pCopy->hWriterInfo, tLock.hWriterInfo);
            EXPECT_EQ(pCopy->hReadOnly, tLock.hReadOnly);
            EXPECT_EQ(pCopy->iLockCount, 2);
            EXPECT_EQ(pCopy->eMode, eModeStrict);
            EXPECT_EQ(pCopy->sDirectory, tLock.sDirectory);
            EXPECT_EQ(pCopy->sReaderPattern, tLock.sReaderPattern);
            EXPECT_EQ(pCopy->sReaderPath, tLock.sReaderPath);
            EXPECT_EQ(pCopy->sReaderBaseName, tLock.sReaderBaseName);
            EXPECT_EQ(pCopy->sWriterPath, tLock.sWriterPath);
            EXPECT_EQ(pCopy->sWriterInfoPattern, tLock.sWriterInfoPattern);
            EXPECT_EQ(pCopy->sWriterInfoPath, tLock.sWriterInfoPath);
            EXPECT_EQ(pCopy->sObjectPath, tLock.sObjectPath);
            EXPECT_EQ(pCopy->sComputer, tLock.sComputer);
            EXPECT_EQ(pCopy->sUser, tLock.sUser);
            EXPECT_EQ(pCopy->uiErrorIds, tLock.uiErrorIds);
        }
        // One of them closes.
        for (TOpenLock * pOther : {&tLock, &tAssigned})
            pOther->hReader = pOther->hWriter = pOther->hWriterInfo = INVALID_HANDLE_VALUE;
    }
    EXPECT_EQ(sList(), L"main.dat");
}

TEST_F(LockDirectory, AMoveIsACopy) {
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    tLock.Open();
    {
        TOpenLock tMoved(std::move(tLock));
        EXPECT_EQ(tMoved.hReader, tLock.hReader);
        EXPECT_EQ(tLock.sDirectory, sDir());
        tLock.hReader = INVALID_HANDLE_VALUE;
    }
    EXPECT_EQ(sList(), L"main.dat");
}
