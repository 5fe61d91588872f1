// The lock of a single reader on a file, and the release of a writer place at the end of a scope.
#include "ZkTools/Exceptions.h"
#include "ZkTools/Locks.h"
#include "files/LongPath.h"

TFileReaderLock::TFileReaderLock(std::wstring const & sPath_) : sPath(sPath_) {}

TFileReaderLock::~TFileReaderLock() = default;

void TFileReaderLock::Lock(unsigned long dwTimeoutSeconds) {
    constexpr DWORD dwPause = 100; // milliseconds
    // Deliberate: 32 bits. A program that asks for more than 49 days gets what it always got.
    unsigned long const dwLimit = dwTimeoutSeconds * 1000;
    ULONGLONG const uStart = GetTickCount64();
    auto const fHasTime = [&] { return GetTickCount64() - uStart < dwLimit; };

    DWORD dwError;
    do {
        HANDLE const hOpened = TryOpenFile();
        dwError = GetLastError();
        hFile = TFileHandle(hOpened); // closes the one of an earlier call
        if (hFile.fIsValid()) return;
        if (dwError != ERROR_SHARING_VIOLATION) break;
        if (fHasTime()) Sleep(dwPause);
    } while (fHasTime());
    throw TXZkTools(sGetErrorString(dwError).c_str());
}

void TFileReaderLock::UnLock() {
    hFile = TFileHandle();
}

HANDLE TFileReaderLock::TryOpenFile() const {
    return CreateFileLong(sPath.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                          nullptr);
}

TDirectoryUnlocker::TDirectoryUnlocker(TLockDirectory & tLock_) noexcept : tLock(tLock_) {}

TDirectoryUnlocker::~TDirectoryUnlocker() {
    tLock.Unlock();
}
