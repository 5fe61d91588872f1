// What reaches the system, call by call: the forms in which files are opened are part of what programs on other
// machines rely on. With it the failures that only an injected error shows.
#include "tests/locks/LockFixture.h"

#include "ZkTools/MessageIds.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <set>
#include <vector>

using namespace zk_test;

namespace {

/// Writes down the calls that the library makes on files, and which handles it still has to close.
class TCallLog {
public:
    using TRefusal = std::function<DWORD(std::wstring const & sName, DWORD dwDisposition)>;

    /// \param tRefusal_ an error for a file that shall not be opened, otherwise 0
    explicit TCallLog(TRefusal tRefusal_ = nullptr)
        : tRefusal(std::move(tRefusal_)),
          tCreate([this](wchar_t const * pzPath, DWORD dwAccess, DWORD dwShare, SECURITY_ATTRIBUTES * pSecurity,
                         DWORD dwDisposition, DWORD dwFlags, HANDLE hTemplate) {
              EXPECT_EQ(pSecurity, nullptr);
              EXPECT_EQ(hTemplate, nullptr);
              std::string const sName = sNarrowName(pzPath);
              Add("create " + sName + sForm(dwAccess, dwShare, dwDisposition, dwFlags));
              DWORD const dwRefusal = tRefusal ? tRefusal(sLastPart(pzPath), dwDisposition) : 0;
              HANDLE const hFile = dwRefusal != 0 ? tFailWith(dwRefusal, INVALID_HANDLE_VALUE)
                                                  : tCreate.Original(pzPath, dwAccess, dwShare, pSecurity,
                                                                     dwDisposition, dwFlags, hTemplate);
              if (hFile != INVALID_HANDLE_VALUE) tOpen[hFile] = sName;
              return hFile;
          }),
          tClose([this](HANDLE hFile) {
              auto const pFound = tOpen.find(hFile);
              Add("close " + (pFound != tOpen.end() ? pFound->second : "what is not open"));
              tOpen.erase(hFile);
              return tClose.Original(hFile);
          }),
          tFind([this](wchar_t const * pzPath, FINDEX_INFO_LEVELS eLevel, void * pData, FINDEX_SEARCH_OPS eOps,
                       void * pFilter, DWORD dwFlags) {
              Add("find " + sNarrowName(pzPath));
              HANDLE const hFind = tFind.Original(pzPath, eLevel, pData, eOps, pFilter, dwFlags);
              if (hFind != INVALID_HANDLE_VALUE) tSearches.insert(hFind);
              return hFind;
          }),
          tFindClose([this](HANDLE hFind) {
              EXPECT_EQ(tSearches.erase(hFind), 1u);
              return tFindClose.Original(hFind);
          }),
          tAttributes([this](wchar_t const * pzPath) {
              Add("attributes " + sNarrowName(pzPath));
              return tAttributes.Original(pzPath);
          }) {}

    ~TCallLog() {
        EXPECT_TRUE(tSearches.empty());
        for (auto const & [hFile, sName] : tOpen)
            ADD_FAILURE() << sName << " is still open";
    }

    /// The calls since the last time.
    std::string sTake() { return std::exchange(sCalls, {}); }

private:
    static std::wstring sLastPart(std::wstring const & sPath) { return sPath.substr(sPath.rfind(L'\\') + 1); }
    static std::string sNarrowName(std::wstring const & sPath) {
        std::string sName;
        for (wchar_t const c : sLastPart(sPath))
            sName += static_cast<char>(c);
        return sName;
    }
    static std::string sForm(DWORD dwAccess, DWORD dwShare, DWORD dwDisposition, DWORD dwFlags) {
        char acForm[80];
        std::snprintf(acForm, sizeof acForm, " %08lX %lu %lu %lX", dwAccess, dwShare, dwDisposition, dwFlags);
        return acForm;
    }
    void Add(std::string const & sCall) { sCalls += sCall + "\n"; }

    TRefusal tRefusal;
    std::string sCalls;
    std::map<HANDLE, std::string> tOpen;
    std::set<HANDLE> tSearches;
    TSystemCall<"CreateFileW", decltype(CreateFileW)> tCreate;
    TSystemCall<"CloseHandle", decltype(CloseHandle)> tClose;
    TSystemCall<"FindFirstFileExW", decltype(FindFirstFileExW)> tFind;
    TSystemCall<"FindClose", decltype(FindClose)> tFindClose;
    TSystemCall<"GetFileAttributesW", decltype(GetFileAttributesW)> tAttributes;
};

class LockProtocol : public testing::Test {
protected:
    LockProtocol() { tDirectory.sWrite(L"main.dat", "data"); }

    [[nodiscard]] std::wstring const & sDir() const { return tDirectory.sGetPath(); }
    [[nodiscard]] wchar_t const * pzDir() const { return sDir().c_str(); }
    [[nodiscard]] std::wstring sList() const { return sListDirectory(sDir()); }
    [[nodiscard]] TOpenLock tMake(EMode eMode) const { return TOpenLock(L"PC1", L"usera", eMode, sDir()); }

    TTempDirectory tDirectory;
};

} // namespace

TEST_F(LockProtocol, StrictCallsInOrder) {
    TOpenLock tLock = tMake(eModeStrict);
    TCallLog tLog;
    tLock.Open();
    EXPECT_EQ(tLog.sTake(), "find write.lck\n"
                            "find rdr%PC1%usera%.tmp\n"
                            "create rdr%PC1%usera%.tmp 80000000 0 4 4000082\n");
    tLock.Lock();
    EXPECT_EQ(tLog.sTake(), "find rdr*.tmp\n"
                            "create rdr%PC1%usera%.tmp 80000000 0 3 4000082\n"
                            "find main.dat\n"
                            "create main.dat 80000000 0 3 82\n"
                            "close main.dat\n"
                            "find main.dat\n"
                            "attributes main.dat\n"
                            "create write.lck C0000000 0 4 4000082\n"
                            "create write%PC1%usera%.tmp C0000000 0 4 4000082\n");
    tLock.Lock();
    tLock.Unlock();
    EXPECT_EQ(tLog.sTake(), "");
    tLock.Unlock();
    EXPECT_EQ(tLog.sTake(), "close write.lck\nclose write%PC1%usera%.tmp\n");
    tLock.Close();
    EXPECT_EQ(tLog.sTake(), "close rdr%PC1%usera%.tmp\n");
    tLock.Close();
    EXPECT_EQ(tLog.sTake(), "");
}

TEST_F(LockProtocol, SharedCallsInOrder) {
    TOpenLock tLock = tMake(eModeShared);
    TCallLog tLog;
    tLock.Open();
    EXPECT_EQ(tLog.sTake(), "find rdr%PC1%usera%.tmp\n"
                            "create rdr%PC1%usera%.tmp 80000000 0 4 4000082\n");
    tLock.Lock();
    EXPECT_EQ(tLog.sTake(), "find main.dat\n"
                            "attributes main.dat\n"
                            "create write.lck C0000000 0 4 4000082\n"
                            "create write%PC1%usera%.tmp C0000000 0 4 4000082\n");
    tLock.Unlock();
    tLock.Close();
}

TEST_F(LockProtocol, DestructorClosesInOrder) {
    TCallLog tLog;
    {
        TOpenLock tLock = tMake(eModeShared);
        tLock.Open();
        tLock.Lock();
        tLog.sTake();
    }
    EXPECT_EQ(tLog.sTake(), "close write.lck\nclose write%PC1%usera%.tmp\nclose rdr%PC1%usera%.tmp\n");
}

TEST_F(LockProtocol, WriterIsProbedForReadingAndWriting) {
    THandle const hWriter = hHoldLockFile(tDirectory.sGetPath(L"write.lck"));
    THandle const hInfo = hHoldLockFile(tDirectory.sGetPath(L"write%PC1%usera%.tmp"));
    TOpenLock tLock = tMake(eModeStrict);
    TCallLog tLog;
    EXPECT_FALSE(tLock.fCanOpen());
    EXPECT_EQ(tLog.sTake(), "find write.lck\n"
                            "create write.lck C0000000 0 3 4000082\n"
                            "find write%PC1%usera%.tmp\n"
                            "create write%PC1%usera%.tmp C0000000 0 3 4000082\n");
}

TEST_F(LockProtocol, CanLockOpensAndClosesTheWriterFile) {
    TOpenLock tLock = tMake(eModeShared);
    TCallLog tLog;
    EXPECT_TRUE(tLock.fCanLock());
    EXPECT_EQ(tLog.sTake(), "find main.dat\n"
                            "attributes main.dat\n"
                            "create write.lck C0000000 0 4 4000082\n"
                            "close write.lck\n");
    tLock.xCanLock();
    EXPECT_EQ(tLog.sTake(), "find main.dat\nattributes main.dat\n");
}

TEST_F(LockProtocol, RefusalsLeaveNoHandle) {
    TOpenLock tWriter(L"PC3", L"userc", eModeStrict, sDir());
    tWriter.Lock();
    THandle const hReaders[] = {hHoldLockFile(tDirectory.sGetPath(L"rdr%PC8%a%.tmp")),
                                hHoldLockFile(tDirectory.sGetPath(L"rdr%PC9%b%.tmp"))};
    for (EMode const eMode : {eModeStrict, eModeShared}) {
        TOpenLock tLock = tMake(eMode);
        TCallLog const tLog; // complains about what is open at its end
        std::runtime_error tError("");
        if (tLock.fOpen(tError)) tLock.Close();
        EXPECT_FALSE(tLock.fLock(tError));
        EXPECT_FALSE(tLock.fCanLock());
    }
}

// Read-only media: the directory refuses every new file with "access denied".

namespace {

DWORD dwRefuseNewFiles(std::wstring const &, DWORD dwDisposition) {
    return dwDisposition == OPEN_ALWAYS ? ERROR_ACCESS_DENIED : 0;
}

} // namespace

TEST_F(LockProtocol, ReadOnlyMediaAreOpenedByHoldingTheObject) {
    TOpenLock tLock = tMake(eModeStrict);
    TCallLog tLog(dwRefuseNewFiles);
    tLock.Open();
    EXPECT_EQ(tLog.sTake(), "find write.lck\n"
                            "find rdr%PC1%usera%.tmp\n"
                            "create rdr%PC1%usera%.tmp 80000000 0 4 4000082\n"
                            "create main.dat 80000000 1 3 82\n");
    EXPECT_TRUE(tLock.fIsReadOnly());
    EXPECT_FALSE(tLock.fIsOpen());
    EXPECT_EQ(tLock.hReader, INVALID_HANDLE_VALUE);
    EXPECT_EQ(tLock.sReaderPath, L"");
    EXPECT_EQ(sList(), L"main.dat");

    EXPECT_EQ(sThrown([&] { tLock.Lock(); }),
              sMessage(IDS_LOCK_FAILED, pzDir()) + "\r\n" + sMessage(IDS_LOCK_READ_ONLY, pzDir()));
    EXPECT_EQ(sThrown([&] { tLock.xCanLock(); }), sMessage(IDS_LOCK_READ_ONLY, pzDir()));
    EXPECT_FALSE(tLock.fCanLock());
    EXPECT_EQ(tLog.sTake(), ""); // it need not look

    tLock.Close();
    EXPECT_EQ(tLog.sTake(), "close main.dat\n");
    EXPECT_FALSE(tLock.fIsReadOnly());
}

TEST_F(LockProtocol, ReadOnlyMediaHaveManyReaders) {
    TOpenLock tFirst = tMake(eModeStrict);
    TOpenLock tSecond = tMake(eModeStrict);
    TCallLog const tLog(dwRefuseNewFiles);
    tFirst.Open();
    tSecond.Open();
    EXPECT_TRUE(tFirst.fIsReadOnly() && tSecond.fIsReadOnly());
    tFirst.Close();
    tSecond.Close();
}

TEST_F(LockProtocol, ReadOnlyMediaWithoutTheObjectTellTheSecondReason) {
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir(), L"missing.dat");
    TCallLog const tLog(dwRefuseNewFiles);
    EXPECT_EQ(sThrown([&] { tLock.Open(); }),
              sSystemText(ERROR_FILE_NOT_FOUND) + "\r\n" + sMessage(IDS_LOCK_OPEN_FAILED, pzDir()));
    EXPECT_FALSE(tLock.fIsReadOnly());
    EXPECT_EQ(tLock.sReaderPath, L"");
}

TEST_F(LockProtocol, ReadOnlyMediaWithTheObjectOpenForWritingTellTheSecondReason) {
    constexpr DWORD dwShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    THandle const hObject(CreateFileW(tDirectory.sGetPath(L"main.dat").c_str(), GENERIC_WRITE, dwShareAll, nullptr,
                                      OPEN_EXISTING, 0, nullptr));
    TOpenLock tLock = tMake(eModeStrict);
    TCallLog const tLog(dwRefuseNewFiles);
    EXPECT_EQ(sThrown([&] { tLock.Open(); }),
              sSystemText(ERROR_SHARING_VIOLATION) + "\r\n" + sMessage(IDS_LOCK_OPEN_FAILED, pzDir()));
}

TEST_F(LockProtocol, OnlyAccessDeniedMeansReadOnlyMedia) {
    for (DWORD const dwError : std::initializer_list<DWORD>{ERROR_SHARING_VIOLATION, ERROR_WRITE_PROTECT,
                                                            ERROR_DISK_FULL, ERROR_NETNAME_DELETED}) {
        TOpenLock tLock = tMake(eModeStrict);
        TCallLog tLog([&](std::wstring const &, DWORD) { return dwError; });
        EXPECT_EQ(sThrown([&] { tLock.Open(); }),
                  sSystemText(dwError) + "\r\n" + sMessage(IDS_LOCK_OPEN_FAILED, pzDir()));
        EXPECT_EQ(tLog.sTake(), "find write.lck\n"
                                "find rdr%PC1%usera%.tmp\n"
                                "create rdr%PC1%usera%.tmp 80000000 0 4 4000082\n");
    }
}

TEST_F(LockProtocol, WriterPlaceThatTheSystemRefusesTellsItsReason) {
    for (DWORD const dwError : std::initializer_list<DWORD>{ERROR_ACCESS_DENIED, ERROR_DISK_FULL}) {
        TOpenLock tLock = tMake(eModeStrict);
        TCallLog const tLog([&](std::wstring const & sName, DWORD) { return sName == L"write.lck" ? dwError : 0; });
        EXPECT_EQ(sThrown([&] { tLock.Lock(); }), sSystemText(dwError) + "\r\n" + sMessage(IDS_LOCK_FAILED, pzDir()));
        EXPECT_EQ(tLock.iLockCount, 0);
        EXPECT_FALSE(tLock.fIsLocked());
    }
}

TEST_F(LockProtocol, LosingTheRaceForTheWriterPlaceIsARefusal) {
    TOpenLock tLock = tMake(eModeStrict);
    THandle hStranger;
    TCallLog const tLog([&](std::wstring const & sName, DWORD) -> DWORD {
        // Between the tests and the open another program takes the place.
        if (sName == L"write.lck") hStranger = hHoldLockFile(tDirectory.sGetPath(L"write.lck"));
        return 0;
    });
    EXPECT_EQ(sThrown([&] { tLock.Lock(); }),
              sSystemText(ERROR_SHARING_VIOLATION) + "\r\n" + sMessage(IDS_LOCK_FAILED, pzDir()));
}

// Long names

TEST_F(LockProtocol, DirectoriesOfAnyDepthWork) {
    std::wstring sDeep = sDir();
    while (sDeep.size() < 1000) {
        sDeep += L"\\" + std::wstring(99, L'd');
        ASSERT_TRUE(CreateDirectoryW(sLongForm(sDeep).c_str(), nullptr));
    }
    WriteFileBytes(sDeep + L"\\main.dat", "data");
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDeep);
    TOpenLock tOther(L"PC2", L"userb", eModeStrict, sDeep);
    tLock.Open();
    tOther.Open();
    EXPECT_EQ(tLock.iCountReader(), 2);
    EXPECT_EQ(tLock.sGetReaderInfo(), L"userb [PC2]");
    EXPECT_EQ(sThrown([&] { tLock.Lock(); }), sMessage(IDS_LOCK_FAILED, sDeep.c_str()) + "\r\n" +
                                                  sMessage(IDS_LOCK_READERS_KNOWN, sDeep.c_str(), L"userb [PC2]"));
    tOther.Close();
    tLock.Lock();
    EXPECT_EQ(sListDirectory(sDeep), L"main.dat|rdr%PC1%usera%.tmp|write%PC1%usera%.tmp|write.lck");
    EXPECT_EQ(sThrown([&] { tOther.Open(); }), sMessage(IDS_LOCK_OPEN_FAILED, sDeep.c_str()) + "\r\n" +
                                                   sMessage(IDS_LOCK_WRITER_UNKNOWN, sDeep.c_str()));
    tLock.Unlock();
    tLock.Close();
    EXPECT_EQ(sListDirectory(sDeep), L"main.dat");
}

TEST_F(LockProtocol, NamesOf5000CharactersAreRefusedWholeInTheText) {
    std::wstring sLong = sDir();
    while (sLong.size() < 5000)
        sLong += L"\\" + std::wstring(120, L'%'); // percent signs stand for themselves
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sLong);
    std::string const sText = sThrown([&] { tLock.Open(); });
    std::string const sLastLine = sMessage(IDS_LOCK_OPEN_FAILED, sLong.c_str());
    EXPECT_GT(sLastLine.size(), sLong.size());
    EXPECT_TRUE(sText.ends_with("\r\n" + sLastLine)) << sText;
    EXPECT_NE(sLastLine.find(std::string(120, '%') + "\\"), std::string::npos);

    std::wstring const sObject(5000, L'o');
    TOpenLock tLongObject(L"PC1", L"usera", eModeStrict, sDir(), sObject.c_str());
    tLongObject.Open();
    tLongObject.Lock(); // such an object cannot exist, and need not
}

TEST_F(LockProtocol, LongestUserNameFits) {
    std::wstring const sUser(200, L'u');
    TOpenLock tLock(L"FIFTEEN-LETTERS", sUser.c_str(), eModeStrict, sDir());
    EXPECT_EQ(tLock.sComputer, L"FIFTEEN-LETTERS");
    tLock.Open();
    EXPECT_EQ(sList(), L"main.dat|rdr%FIFTEEN-LETTERS%" + sUser + L"%.tmp");
    TOpenLock const tLongest(L"PC1", std::wstring(256, L'u').c_str(), eModeStrict, sDir());
    EXPECT_EQ(tLongest.sUser.size(), 256u);
}
