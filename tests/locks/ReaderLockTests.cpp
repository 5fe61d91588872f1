// The reader lock on a single file, and the release of a writer place at the end of a scope.
#include "tests/locks/LockFixture.h"
#include "tests/support/ChildProcess.h"

#include <gtest/gtest.h>

#include <functional>
#include <type_traits>

using namespace zk_test;

namespace {

using TCreateFile = TSystemCall<"CreateFileW", decltype(CreateFileW)>;

/// A clock and a sleep of the test's own: nothing really waits.
class TClock {
public:
    TClock()
        : tTicks([this] { return uNow; }), tSleep([this](DWORD dwTime) {
              EXPECT_EQ(dwTime, 100u);
              uNow += dwTime;
              if (fWhenSlept) fWhenSlept();
          }) {}

    ULONGLONG uNow = 0xFFFF'FFF0; // 32 bits of it are used up soon
    std::function<void()> fWhenSlept;
    TSystemCall<"GetTickCount64", decltype(GetTickCount64)> tTicks;
    TSystemCall<"Sleep", decltype(Sleep)> tSleep;
};

THandle hOpenForWriting(std::wstring const & sPath) {
    return THandle(CreateFileW(sPath.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                               FILE_ATTRIBUTE_NORMAL, nullptr));
}
THandle hOpenForReading(std::wstring const & sPath) {
    return THandle(CreateFileW(sPath.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                               FILE_ATTRIBUTE_NORMAL, nullptr));
}

/// Opens a file for writing and holds it until it is told to let go.
TChildRole const tWriter(L"writer of a file", [](std::vector<std::wstring> const & sArguments) {
    THandle const hFile = hOpenForWriting(sArguments.at(0));
    Say(hFile ? "held" : "refused");
    while (psHear()) {
    }
    return 0;
});

/// Tells the exception of a handle that cannot be closed, and ends the process.
LONG WINAPI TellRaised(EXCEPTION_POINTERS * pException) {
    EXCEPTION_RECORD const & tRecord = *pException->ExceptionRecord;
    if (tRecord.ExceptionCode != static_cast<DWORD>(HRESULT_FROM_WIN32(ERROR_INVALID_HANDLE)))
        return EXCEPTION_CONTINUE_SEARCH;
    Say("raised " + std::to_string(tRecord.ExceptionFlags) + " " + std::to_string(tRecord.NumberParameters));
    ExitProcess(44);
}

/// Closes the file of a reader lock behind its back; the lock's own close fails then.
TChildRole const tCloser(L"closer of a locked file", [](std::vector<std::wstring> const & sArguments) {
    AddVectoredExceptionHandler(1, &TellRaised);
    HANDLE hLocked = INVALID_HANDLE_VALUE;
    TCreateFile const tCreate([&](LPCWSTR pzPath, auto... tArgs) {
        HANDLE const hOpened = tCreate.Original(pzPath, tArgs...);
        if (hLocked == INVALID_HANDLE_VALUE) hLocked = hOpened;
        return hOpened;
    });
    TFileReaderLock tLock(sArguments.at(0));
    tLock.Lock(0);
    CloseHandle(hLocked);
    if (sArguments.at(1) == L"unlock") tLock.UnLock();
    if (sArguments.at(1) == L"lock") tLock.Lock(0);
    return 0;
});

} // namespace

static_assert(std::is_polymorphic_v<TFileReaderLock> && std::has_virtual_destructor_v<TFileReaderLock>);
static_assert(!std::is_copy_constructible_v<TFileReaderLock> && !std::is_copy_constructible_v<TDirectoryUnlocker>);

TEST(TFileReaderLock, LetsReadersInAndKeepsWritersOut) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sWrite(L"file", "1");
    {
        TFileReaderLock tLock(sPath);
        EXPECT_TRUE(fIsUnused(sPath)); // the constructor takes nothing
        tLock.Lock(0);
        EXPECT_TRUE(hOpenForReading(sPath));
        EXPECT_FALSE(hOpenForWriting(sPath));
        EXPECT_FALSE(fIsUnused(sPath));
        tLock.UnLock();
        EXPECT_TRUE(fIsUnused(sPath));
        tLock.UnLock(); // once more does nothing
        tLock.Lock(0);
        TFileReaderLock tSecond(sPath);
        EXPECT_NO_THROW(tSecond.Lock(0));
        EXPECT_FALSE(hOpenForWriting(sPath));
    }
    EXPECT_TRUE(fIsUnused(sPath));
}

TEST(TFileReaderLock, OpensTheFileInOneForm) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sWrite(L"file", "1");
    TCreateFile const tCreate([&](LPCWSTR pzPath, DWORD dwAccess, DWORD dwShare, LPSECURITY_ATTRIBUTES pSecurity,
                                  DWORD dwDisposition, DWORD dwFlags, HANDLE hTemplate) {
        EXPECT_EQ(pzPath, sPath);
        EXPECT_EQ(dwAccess, GENERIC_READ);
        EXPECT_EQ(dwShare, static_cast<DWORD>(FILE_SHARE_READ));
        EXPECT_EQ(pSecurity, nullptr);
        EXPECT_EQ(dwDisposition, static_cast<DWORD>(OPEN_EXISTING));
        EXPECT_EQ(dwFlags, static_cast<DWORD>(FILE_ATTRIBUTE_NORMAL));
        EXPECT_EQ(hTemplate, nullptr);
        return tCreate.Original(pzPath, dwAccess, dwShare, pSecurity, dwDisposition, dwFlags, hTemplate);
    });
    TFileReaderLock tLock(sPath);
    tLock.Lock(0);
    EXPECT_EQ(tCreate.iGetCalls(), 1);
}

TEST(TFileReaderLock, MakesOneAttemptWithoutATimeOut) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sWrite(L"file", "1");
    TChildProcess tChild(tWriter, {sPath});
    ASSERT_EQ(tChild.sHear(), "held");
    TClock const tClock;
    TCreateFile const tCreate([&](auto... tArgs) { return tCreate.Original(tArgs...); });
    TFileReaderLock tLock(sPath);
    try {
        tLock.Lock(0);
        ADD_FAILURE() << "nothing thrown";
    } catch (TXZkTools const & tError) {
        EXPECT_EQ(tError.iGetNumber(), -1);
        EXPECT_EQ(tError.what(), sSystemText(ERROR_SHARING_VIOLATION));
    }
    EXPECT_EQ(tCreate.iGetCalls(), 1);
    EXPECT_EQ(tClock.tSleep.iGetCalls(), 0);
}

TEST(TFileReaderLock, TriesTenTimesASecond) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sWrite(L"file", "1");
    THandle hHeld = hOpenForWriting(sPath);
    TClock tClock;
    TCreateFile const tCreate([&](auto... tArgs) { return tCreate.Original(tArgs...); });
    TFileReaderLock tLock(sPath);
    EXPECT_EQ(sThrown([&] { tLock.Lock(2); }), sSystemText(ERROR_SHARING_VIOLATION));
    EXPECT_EQ(tCreate.iGetCalls(), 20);
    EXPECT_EQ(tClock.tSleep.iGetCalls(), 20);
    // The holder closes after a second.
    tClock.fWhenSlept = [&, uEnd = tClock.uNow + 1000] {
        if (tClock.uNow >= uEnd) hHeld.Close();
    };
    EXPECT_EQ(sThrown([&] { tLock.Lock(2); }), "");
    EXPECT_EQ(tClock.tSleep.iGetCalls(), 30);
    EXPECT_EQ(tCreate.iGetCalls(), 31);
    EXPECT_FALSE(hOpenForWriting(sPath));
}

TEST(TFileReaderLock, WaitsForTheHolderToClose) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sWrite(L"file", "1");
    TChildProcess tChild(tWriter, {sPath});
    ASSERT_EQ(tChild.sHear(), "held");
    ULONGLONG const uStart = GetTickCount64();
    TSystemCall<"Sleep", decltype(Sleep)> const tSleep([&](DWORD dwTime) {
        if (GetTickCount64() - uStart > 300) tChild.CloseInput();
        tSleep.Original(dwTime);
    });
    TFileReaderLock tLock(sPath);
    EXPECT_EQ(sThrown([&] { tLock.Lock(60); }), "");
    EXPECT_FALSE(hOpenForWriting(sPath));
}

TEST(TFileReaderLock, WaitsForASharingViolationAlone) {
    TTempDirectory const tTemp;
    TClock const tClock;
    TFileReaderLock tMissing(tTemp.sGetPath(L"missing"));
    EXPECT_EQ(sThrown([&] { tMissing.Lock(60); }), sSystemText(ERROR_FILE_NOT_FOUND));
    for (DWORD const dwError : {DWORD{ERROR_ACCESS_DENIED}, DWORD{ERROR_LOCK_VIOLATION}, DWORD{ERROR_PATH_NOT_FOUND}}) {
        TCreateFile const tCreate([&](auto...) { return tFailWith(dwError, INVALID_HANDLE_VALUE); });
        TFileReaderLock tLock(tTemp.sGetPath(L"file"));
        EXPECT_EQ(sThrown([&] { tLock.Lock(60); }), sSystemText(dwError));
        EXPECT_EQ(tCreate.iGetCalls(), 1);
    }
    EXPECT_EQ(tClock.tSleep.iGetCalls(), 0);
    // Another error ends the waiting that has begun.
    int iCall = 0;
    TCreateFile const tCreate([&](auto...) {
        return tFailWith(++iCall == 3 ? ERROR_FILE_NOT_FOUND : ERROR_SHARING_VIOLATION, INVALID_HANDLE_VALUE);
    });
    EXPECT_EQ(sThrown([&] { tMissing.Lock(60); }), sSystemText(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(iCall, 3);
}

TEST(TFileReaderLock, ReckonsItsLimitIn32Bits) {
    TClock const tClock;
    TCreateFile const tCreate([](auto...) { return tFailWith(ERROR_SHARING_VIOLATION, INVALID_HANDLE_VALUE); });
    TFileReaderLock tLock(L"C:\\file");
    EXPECT_EQ(sThrown([&] { tLock.Lock(4'294'968); }), sSystemText(ERROR_SHARING_VIOLATION)); // 2^32 + 704 ms
    EXPECT_EQ(tClock.tSleep.iGetCalls(), 8);
    EXPECT_EQ(tCreate.iGetCalls(), 8);
}

TEST(TFileReaderLock, LockedTwiceHoldsTheNewHandle) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sWrite(L"file", "1");
    std::string sCalls;
    TCreateFile const tCreate([&](auto... tArgs) {
        sCalls += "open ";
        return tCreate.Original(tArgs...);
    });
    TSystemCall<"CloseHandle", decltype(CloseHandle)> const tClose([&](HANDLE hFile) {
        sCalls += "close ";
        BOOL const fClosed = tClose.Original(hFile);
        return tFailWith(ERROR_NOT_READY, fClosed);
    });
    TFileReaderLock tLock(sPath);
    tLock.Lock(0);
    tLock.Lock(0);
    EXPECT_EQ(sCalls, "open open close ");
    EXPECT_FALSE(hOpenForWriting(sPath));
    tLock.UnLock();
    EXPECT_EQ(sCalls, "open open close close ");
    EXPECT_TRUE(fIsUnused(sPath));
}

TEST(TFileReaderLock, LosesTheOldHandleWhenTheNewOneCannotBeHad) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sWrite(L"file", "1");
    TFileReaderLock tLock(sPath);
    tLock.Lock(0);
    TSystemCall<"CloseHandle", decltype(CloseHandle)> const tClose([&](HANDLE hFile) {
        BOOL const fClosed = tClose.Original(hFile);
        return tFailWith(ERROR_NOT_READY, fClosed); // may change the error, but not for the caller
    });
    TCreateFile const tCreate([](auto...) { return tFailWith(ERROR_ACCESS_DENIED, INVALID_HANDLE_VALUE); });
    EXPECT_EQ(sThrown([&] { tLock.Lock(60); }), sSystemText(ERROR_ACCESS_DENIED));
    EXPECT_TRUE(fIsUnused(sPath));
}

TEST(TFileReaderLock, ReachesLongPaths) {
    TTempDirectory const tTemp;
    std::wstring const sOuter = tTemp.sMakeDirectory(std::wstring(200, L'o'));
    std::wstring const sPath = sOuter + L"\\" + std::wstring(100, L'i') + L"."; // the point goes without the long form
    WriteFileBytes(sPath, "1");
    TFileReaderLock tLock(sPath);
    EXPECT_NO_THROW(tLock.Lock(0));
}

TEST(TFileReaderLock, RaisesASystemExceptionWhenItsFileCannotBeClosed) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sWrite(L"file", "1");
    for (wchar_t const * pzWay : {L"unlock", L"lock", L"destroy"}) {
        TChildProcess tChild(tCloser, {sPath, pzWay});
        EXPECT_EQ(tChild.sHear(), "raised 1 0");
        EXPECT_EQ(tChild.dwWait(), 44u);
    }
}

// The release at the end of a scope

TEST(TDirectoryUnlocker, TakesOneLevelOff) {
    TTempDirectory const tTemp;
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, tTemp.sGetPath());
    tLock.Lock();
    tLock.Lock();
    {
        TDirectoryUnlocker const tUnlocker(tLock); // locks nothing itself
        EXPECT_EQ(tLock.iLockCount, 2);
    }
    EXPECT_EQ(tLock.iLockCount, 1);
    EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"write%PC1%usera%.tmp|write.lck");
    { TDirectoryUnlocker const tUnlocker(tLock); }
    EXPECT_EQ(tLock.iLockCount, 0);
    EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"");
    { TDirectoryUnlocker const tUnlocker(tLock); }
    EXPECT_EQ(tLock.iLockCount, -1); // as Unlock itself
}

TEST(TDirectoryUnlocker, ReleasesWhenTheScopeIsLeftByAnException) {
    TTempDirectory const tTemp;
    TLockFile tLock(eModeStrict, tTemp.sGetPath().c_str(), L"a.dat");
    try {
        tLock.Lock();
        TDirectoryUnlocker const tUnlocker(tLock);
        throw std::runtime_error("in the middle");
    } catch (std::runtime_error const &) {
        EXPECT_FALSE(tLock.fIsLocked());
    }
    EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"");
}
