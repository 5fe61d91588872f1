#include "tests/locks/LockFixture.h"

#include "ZkTools/MessageIds.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/VirtualSlot.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

using namespace zk_test;

namespace {

/// A file lock whose insides can be looked at.
class TOpenFileLock : public TLockFile {
public:
    using TLockFile::TLockFile;

    /// The lock of that user on that computer.
    TOpenFileLock(wchar_t const * pzComputer, wchar_t const * pzUser, EMode eMode_, std::wstring const & sDirectory_,
                  wchar_t const * pzFileName)
        : TLockFile(eMode_) {
        TIdentity const tIdentity(pzComputer, pzUser);
        SetDir(sDirectory_.c_str(), pzFileName);
    }

    using TLockFile::fFindWriter;
    using TLockFile::FillErrorStringIds;
    using TLockFile::hReader;
    using TLockFile::hReadOnly;
    using TLockFile::hWriter;
    using TLockFile::hWriterInfo;
    using TLockFile::iLockCount;
    using TLockFile::pzGetNameOfObjectToLock;
    using TLockFile::sDirectory;
    using TLockFile::sFileName;
    using TLockFile::sGetReaderInfo;
    using TLockFile::sGetWriterInfo;
    using TLockFile::sObjectPath;
    using TLockFile::sReaderBaseName;
    using TLockFile::sReaderPattern;
    using TLockFile::sWriterInfoPath;
    using TLockFile::sWriterInfoPattern;
    using TLockFile::sWriterPath;
    using TLockFile::uiErrorIds;
    using TLockFile::uiGetErrorStringId;
};

class LockFile : public testing::Test {
protected:
    LockFile() {
        tDirectory.sWrite(L"a.dat", "a");
        tDirectory.sWrite(L"b.dat", "b");
    }

    [[nodiscard]] std::wstring const & sDir() const { return tDirectory.sGetPath(); }
    [[nodiscard]] std::wstring sList() const { return sListDirectory(sDir()); }
    [[nodiscard]] TOpenFileLock tMake(EMode eMode, wchar_t const * pzFileName,
                                      wchar_t const * pzUser = L"usera") const {
        return {L"PC1", pzUser, eMode, sDir(), pzFileName};
    }

    TTempDirectory tDirectory;
};

/// Takes a directory and a file, locks the file and holds it.
TChildRole const tFileHolder(L"file holder", [](std::vector<std::wstring> const & sArguments) {
    TOpenFileLock tLock(L"PC1", L"usera", eModeShared, sArguments.at(0), sArguments.at(1).c_str());
    tLock.Open();
    tLock.Lock();
    Say("locked");
    while (psHear()) {
    }
    return 0;
});

} // namespace

static_assert(std::is_base_of_v<TLockDirectory, TLockFile>);

// Names and state

TEST_F(LockFile, NarrowsTheWriterPlaceToTheFile) {
    TOpenFileLock const tLock(L"PC3", L"userc", eModeStrict, L"D:\\dir", L"a.dat");
    EXPECT_EQ(tLock.sFileName, L"a.dat");
    EXPECT_EQ(tLock.sDirectory, L"D:\\dir");
    EXPECT_EQ(tLock.sWriterPath, L"D:\\dir\\write%a.dat.lck");
    EXPECT_EQ(tLock.sWriterInfoPath, L"D:\\dir\\write%PC3%userc%a.dat.tmp");
    EXPECT_EQ(tLock.sWriterInfoPattern, L"D:\\dirwrite*a.dat.tmp"); // nothing between the two
    EXPECT_EQ(tLock.sReaderPattern, L"D:\\dir\\rdr*.tmp");
    EXPECT_EQ(tLock.sReaderBaseName, L"rdr%PC3%userc%");
    EXPECT_EQ(tLock.sObjectPath, L"D:\\dir\\a.dat");
    EXPECT_EQ(tLock.sGetPathOfObjectToLock(), L"D:\\dir\\a.dat");
}

TEST_F(LockFile, TakesEveryNameAsItStands) {
    struct {
        wchar_t const * pzDirectory;
        wchar_t const * pzFileName;
        wchar_t const * pzWriter;
        wchar_t const * pzWriterInfo;
        wchar_t const * pzPattern;
        wchar_t const * pzObject;
    } const atRows[] = {
        {L"D:\\dir\\", L"a.dat", L"D:\\dir\\write%a.dat.lck", L"D:\\dir\\write%P.C%u.c%a.dat.tmp",
         L"D:\\dir\\write*a.dat.tmp", L"D:\\dir\\a.dat"},
        {L"\\\\server\\share", L"name", L"\\\\server\\share\\write%name.lck",
         L"\\\\server\\share\\write%P.C%u.c%name.tmp", L"\\\\server\\sharewrite*name.tmp", L"\\\\server\\share\\name"},
        {L"D:\\dir", L"100%s.b.c", L"D:\\dir\\write%100%s.b.c.lck", L"D:\\dir\\write%P.C%u.c%100%s.b.c.tmp",
         L"D:\\dirwrite*100%s.b.c.tmp", L"D:\\dir\\100%s.b.c"},
        {L"D:\\d.ir", L".git", L"D:\\d.ir\\write%.git.lck", L"D:\\d.ir\\write%P.C%u.c%.git.tmp",
         L"D:\\d.irwrite*.git.tmp", L"D:\\d.ir\\.git"},
        {L"D:\\dir", L"", L"D:\\dir\\write%.lck", L"D:\\dir\\write%P.C%u.c%.tmp", L"D:\\dirwrite*.tmp", L"D:\\dir"},
    };
    for (auto const & tRow : atRows) {
        TOpenFileLock const tLock(L"P.C", L"u.c", eModeStrict, tRow.pzDirectory, tRow.pzFileName);
        EXPECT_EQ(tLock.sWriterPath, tRow.pzWriter);
        EXPECT_EQ(tLock.sWriterInfoPath, tRow.pzWriterInfo);
        EXPECT_EQ(tLock.sWriterInfoPattern, tRow.pzPattern);
        EXPECT_EQ(tLock.sGetPathOfObjectToLock(), tRow.pzObject);
    }
}

TEST_F(LockFile, CanBeRedirected) {
    TOpenFileLock tLock(eModeStrict, L"D:\\dir", L"a.dat");
    EXPECT_EQ(tLock.sWriterPath, L"D:\\dir\\write%a.dat.lck");
    EXPECT_EQ(tLock.sFileName, L"a.dat");
    TLockDirectory & tBase = tLock;
    tBase.SetDir(L"E:\\other", L"b.dat");
    EXPECT_EQ(tLock.sFileName, L"b.dat");
    EXPECT_EQ(tLock.sWriterPath, L"E:\\other\\write%b.dat.lck");
    EXPECT_EQ(tLock.sWriterInfoPattern, L"E:\\otherwrite*b.dat.tmp");
    EXPECT_EQ(tLock.sGetPathOfObjectToLock(), L"E:\\other\\b.dat");
}

TEST_F(LockFile, StartsWithoutAFile) {
    TOpenFileLock tLock(eModeShared);
    EXPECT_EQ(tLock.sFileName, L"");
    EXPECT_EQ(tLock.sWriterPath, L"");
    EXPECT_STREQ(tLock.pzGetNameOfObjectToLock(), L"");
    EXPECT_EQ(tLock.uiErrorIds, (std::array<unsigned int, 7>{4339, 4340, 4327, 4341, 4342, 4343, 4344}));
    EXPECT_FALSE(tLock.fIsLocked());
}

TEST_F(LockFile, HasItsOwnMessageIds) {
    TOpenFileLock tLock(eModeStrict, L"D:\\dir", L"a.dat");
    std::array<unsigned int, 7> const uIds{4339, 4340, 4327, 4341, 4342, 4343, 4344};
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(tLock.uiGetErrorStringId(static_cast<EErrorString>(i)), uIds[static_cast<std::size_t>(i)]);
    tLock.uiErrorIds.fill(1);
    tLock.FillErrorStringIds();
    EXPECT_EQ(tLock.uiErrorIds, uIds);
}

TEST_F(LockFile, KeepsTheOrderOfFieldsAndVirtualOperations) {
    TOpenFileLock tLock(eModeStrict);
    EXPECT_LT(static_cast<void const *>(&tLock.uiErrorIds), static_cast<void const *>(&tLock.sFileName));
#ifdef __GXX_ABI_VERSION
    struct TName : TLockFile {
        static auto pGet() { return &TName::pzGetNameOfObjectToLock; }
    };
    EXPECT_EQ(iVirtualSlot(&TLockFile::SetDir), iBehindDestructor);
    EXPECT_EQ(iVirtualSlot(TName::pGet()), iBehindDestructor + 1);
#endif
}

TEST_F(LockFile, CopiesShareTheHandles) {
    TOpenFileLock tLock = tMake(eModeStrict, L"a.dat");
    tLock.Open();
    tLock.Lock();
    {
        TOpenFileLock tCopy(tLock);
        TOpenFileLock tAssigned(eModeShared);
        tAssigned = tLock;
        for (TOpenFileLock * pCopy : {&tCopy, &tAssigned}) {
            EXPECT_EQ(pCopy->sFileName, L"a.dat");
            EXPECT_EQ(pCopy->hWriter, tLock.hWriter);
            EXPECT_EQ(pCopy->hReader, tLock.hReader);
            EXPECT_EQ(pCopy->iLockCount, 1);
            EXPECT_EQ(pCopy->sWriterPath, tLock.sWriterPath);
            EXPECT_EQ(pCopy->uiErrorIds, tLock.uiErrorIds);
        }
        for (TOpenFileLock * pOther : {&tLock, &tAssigned}) // one of them closes
            pOther->hReader = pOther->hWriter = pOther->hWriterInfo = INVALID_HANDLE_VALUE;
        EXPECT_EQ(tLock.sFileName, L"a.dat");
    }
    EXPECT_EQ(sList(), L"a.dat|b.dat");
}

TEST_F(LockFile, AMoveLeavesTheHandlesAndTakesTheName) {
    TOpenFileLock tLock = tMake(eModeStrict, L"a.dat");
    tLock.Open();
    {
        TOpenFileLock tMoved(std::move(tLock));
        EXPECT_EQ(tMoved.sFileName, L"a.dat");
        EXPECT_EQ(tMoved.hReader, tLock.hReader);
        EXPECT_NE(tLock.hReader, INVALID_HANDLE_VALUE);
        EXPECT_EQ(tLock.sFileName, L"");
        EXPECT_EQ(tLock.sWriterPath, tMoved.sWriterPath); // the base's fields are copied
        TOpenFileLock tAssigned(eModeShared);
        tAssigned = std::move(tMoved);
        EXPECT_EQ(tAssigned.sFileName, L"a.dat");
        EXPECT_EQ(tMoved.sFileName, L"");
        EXPECT_EQ(tAssigned.hReader, tMoved.hReader);
        tMoved.hReader = tLock.hReader = INVALID_HANDLE_VALUE;
    }
    EXPECT_EQ(sList(), L"a.dat|b.dat");
}

// Writers

TEST_F(LockFile, TwoFilesOfADirectoryHaveWritersAtOnce) {
    TOpenFileLock tFirst = tMake(eModeShared, L"a.dat");
    TOpenFileLock tSecond = tMake(eModeShared, L"b.dat", L"userb");
    tFirst.Open();
    tSecond.Open();
    tFirst.Lock();
    tSecond.Lock();
    EXPECT_EQ(sList(), L"a.dat|b.dat|rdr%PC1%usera%.tmp|rdr%PC1%userb%.tmp|write%PC1%usera%a.dat.tmp|"
                       L"write%PC1%userb%b.dat.tmp|write%a.dat.lck|write%b.dat.lck");
    tFirst.Unlock();
    EXPECT_EQ(sList(), L"a.dat|b.dat|rdr%PC1%usera%.tmp|rdr%PC1%userb%.tmp|write%PC1%userb%b.dat.tmp|write%b.dat.lck");
    tSecond.Unlock();
    tFirst.Close();
    tSecond.Close();
    EXPECT_EQ(sList(), L"a.dat|b.dat");
}

TEST_F(LockFile, ReadersOfTheWholeDirectoryBarAStrictWriter) {
    TOpenFileLock tFirst = tMake(eModeStrict, L"a.dat");
    TOpenFileLock tSecond = tMake(eModeStrict, L"b.dat", L"userb");
    TOpenLock tThird(L"PC2", L"userc", eModeStrict, sDir(), L"main.dat");
    tFirst.Open();
    tSecond.Open();
    tThird.Open();
    EXPECT_EQ(tFirst.iCountReader(), 3);
    EXPECT_EQ(tFirst.sGetReaderInfo(), L"userb [PC1]\r\nuserc [PC2]");
    EXPECT_EQ(sThrown([&] { tFirst.Lock(); }),
              sMessage(4339, L"a.dat") + "\r\n" + sMessage(4344, L"a.dat", L"userb [PC1]\r\nuserc [PC2]"));
    tSecond.Close();
    tThird.Close();
    EXPECT_EQ(sThrown([&] { tFirst.Lock(); }), "");
}

TEST_F(LockFile, DoesNotSeeTheWriterOfTheDirectoryNorTheOtherWayRound) {
    TOpenFileLock tFile = tMake(eModeStrict, L"a.dat");
    TOpenLock tWhole(L"PC1", L"userb", eModeStrict, sDir(), L"main.dat");
    tFile.Lock(); // without a reader place
    EXPECT_FALSE(tWhole.fFindWriter());
    EXPECT_TRUE(tWhole.fCanOpen());
    tWhole.Lock();
    EXPECT_TRUE(tFile.fFindWriter());
    EXPECT_TRUE(tWhole.fFindWriter());
    TOpenFileLock const tOther = tMake(eModeStrict, L"b.dat");
    EXPECT_FALSE(tOther.fFindWriter());
    EXPECT_EQ(sList(), L"a.dat|b.dat|write%PC1%usera%a.dat.tmp|write%PC1%userb%.tmp|write%a.dat.lck|write.lck");
}

// Refusals

TEST_F(LockFile, ARefusalNamesTheFile) {
    TOpenFileLock tWriter = tMake(eModeStrict, L"a.dat");
    tWriter.Lock();
    TOpenFileLock tSame = tMake(eModeStrict, L"a.dat");
    EXPECT_EQ(tSame.sGetWriterInfo(), L"usera [PC1]");
    EXPECT_EQ(sThrown([&] { tSame.Open(); }),
              sMessage(4342, L"a.dat") + "\r\n" + sMessage(4340, L"a.dat", L"usera [PC1]"));
    TOpenFileLock tForeign = tMake(eModeStrict, L"a.dat", L"userb");
    EXPECT_EQ(tForeign.sGetWriterInfo(), L"");
    EXPECT_EQ(sThrown([&] { tForeign.Open(); }), sMessage(4342, L"a.dat") + "\r\n" + sMessage(4341, L"a.dat"));
    TOpenFileLock tOther = tMake(eModeStrict, L"b.dat");
    EXPECT_EQ(tOther.sGetWriterInfo(), L"");
    EXPECT_EQ(sThrown([&] { tOther.Open(); }), "");

    TOpenFileLock tShared = tMake(eModeShared, L"a.dat");
    EXPECT_EQ(sThrown([&] { tShared.Lock(); }),
              sMessage(4340, L"a.dat", L"usera [PC1]") + "\r\n" + sMessage(4339, L"a.dat"));
    TOpenFileLock tSharedForeign = tMake(eModeShared, L"a.dat", L"userb");
    EXPECT_EQ(sThrown([&] { tSharedForeign.Lock(); }),
              sSystemText(ERROR_SHARING_VIOLATION) + "\r\n" + sMessage(4339, L"a.dat"));
}

TEST_F(LockFile, AFileInUseBarsAStrictWriter) {
    TOpenFileLock tLock = tMake(eModeStrict, L"a.dat");
    THandle const hUser(CreateFileW(tDirectory.sGetPath(L"a.dat").c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, 0, nullptr));
    EXPECT_EQ(sThrown([&] { tLock.Lock(); }), sMessage(4339, L"a.dat") + "\r\n" + sMessage(4343, L"a.dat"));
    EXPECT_EQ(sThrown([&] { tMake(eModeStrict, L"b.dat").Lock(); }), "");
}

TEST_F(LockFile, ReadOnlyIsOneMessageWhereverItComesFrom) {
    TOpenFileLock tLock = tMake(eModeStrict, L"a.dat");
    std::wstring const sPath = tDirectory.sGetPath(L"a.dat");
    SetFileAttributesW(sPath.c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(sThrown([&] { tLock.xCanLock(); }), sMessage(4327, sPath.c_str()));
    SetFileAttributesW(sPath.c_str(), FILE_ATTRIBUTE_NORMAL);
    tLock.hReadOnly = CreateFileW(sPath.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_EQ(sThrown([&] { tLock.xCanLock(); }), sMessage(4327, L"a.dat"));
}

TEST_F(LockFile, LeftoverWriterHindersNobody) {
    tDirectory.sWrite(L"write%a.dat.lck", "");
    tDirectory.sWrite(L"write%PC1%usera%a.dat.tmp", "");
    TOpenFileLock tLock = tMake(eModeStrict, L"a.dat");
    EXPECT_EQ(sThrown([&] { tLock.Open(); }), "");
    EXPECT_EQ(sList(), L"a.dat|b.dat|rdr%PC1%usera%.tmp|write%PC1%usera%a.dat.tmp");
    tLock.Lock();
    tLock.Unlock();
    tLock.Close();
    EXPECT_EQ(sList(), L"a.dat|b.dat");
}

TEST_F(LockFile, ProcessesWriteToTwoFilesAtOnceAndLoseTheirPlacesWhenKilled) {
    TChildProcess tFirst(tFileHolder, {sDir(), L"a.dat"});
    TChildProcess tSecond(tFileHolder, {sDir(), L"b.dat"});
    ASSERT_EQ(tFirst.sHear(), "locked");
    ASSERT_EQ(tSecond.sHear(), "locked");
    TOpenFileLock tLock = tMake(eModeShared, L"a.dat");
    EXPECT_EQ(sThrown([&] { tLock.Lock(); }),
              sMessage(4340, L"a.dat", L"usera [PC1]") + "\r\n" + sMessage(4339, L"a.dat"));
    tFirst.Kill();
    EXPECT_EQ(sThrown([&] { tLock.Lock(); }), "");
    EXPECT_TRUE(tMake(eModeShared, L"b.dat").fFindWriter());
    tSecond.Kill();
    EXPECT_FALSE(tMake(eModeShared, L"b.dat").fFindWriter());
}
