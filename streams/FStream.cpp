// The stream over a file.
#include "ZkTools/FileStream.h"

#include "ZkTools/Exceptions.h"
#include "ZkTools/Files.h"
#include "ZkTools/MessageIds.h"
#include "files/LongPath.h"

#include <array>
#include <climits>
#include <stdexcept>

static_assert(sizeof(TFStream::TOpenParams) == 16);

namespace {

constexpr int iAnyWrite = FS_READ_WRITE | FS_EXCLUSIVE | FS_CREATE | FS_TEMPORARY;
constexpr int iMakesAnew = FS_CREATE | FS_TEMPORARY;

constexpr bool fHas(int iMode, int iBits) noexcept {
    return (iMode & iBits) != 0;
}

TFStream::TOpenParams tGetOpenParams(int iMode) noexcept {
    TFStream::TOpenParams tParams{};
    tParams.dwDesiredAccess = fHas(iMode, iAnyWrite) ? GENERIC_READ | GENERIC_WRITE : GENERIC_READ;
    tParams.dwCreationDisposition = fHas(iMode, iMakesAnew) ? CREATE_ALWAYS : OPEN_EXISTING;
    if (fHas(iMode, FS_SHARE_ALL)) {
        tParams.dwShareMode = FILE_SHARE_READ | FILE_SHARE_WRITE;
    } else {
        tParams.dwShareMode = fHas(iMode, FS_EXCLUSIVE) ? 0 : FILE_SHARE_READ;
    }
    tParams.dwFlagsAndAttributes = fHas(iMode, FS_TEMPORARY) ? FILE_FLAG_DELETE_ON_CLOSE : FILE_ATTRIBUTE_NORMAL;
    return tParams;
}

} // namespace

TFStream::TFStream(unsigned long dwBufferSize) : TFStreamBase(dwBufferSize) {}

TFStream::TFStream(ECodePage eCodePage, unsigned long dwBufferSize) : TFStreamBase(dwBufferSize) {
    SetCodePage(eCodePage);
}

TFStream::TFStream(wchar_t const * pzName, int iNewMode) {
    TFStream::Open(pzName, iNewMode);
}

TFStream::TFStream(wchar_t const * pzName, ECodePage eCodePage, int iNewMode) {
    TFStream::Open(pzName, eCodePage, iNewMode);
}

TFStream::TFStream(ECodePage eCodePage, wchar_t const * pzName, int iNewMode) : TFStream(pzName, eCodePage, iNewMode) {}

TFStream::TFStream(std::wstring const & sNewName, ECodePage eCodePage, int iNewMode)
    : TFStream(sNewName.c_str(), eCodePage, iNewMode) {}

TFStream::~TFStream() {
    TFStream::Close();
}

void TFStream::Open(wchar_t const * pzName, int iNewMode) {
    Open(pzName, iNewMode, tGetOpenParams(iNewMode));
}

void TFStream::Open(std::wstring const & sNewName, ECodePage eCodePage, int iNewMode) {
    Open(sNewName.c_str(), eCodePage, iNewMode);
}

void TFStream::Open(wchar_t const * pzName, ECodePage eCodePage, int iNewMode) {
    SetCodePage(eCodePage);
    Open(pzName, iNewMode);
}

void TFStream::Open(wchar_t const * pzName, int iNewMode, TOpenParams const & tParams) {
    TFStreamBase::Open(pzName, iNewMode);
    dwLastError = 0;
    TFileHandle tOpened(CreateFileLong(sName.c_str(), tParams.dwDesiredAccess, tParams.dwShareMode, nullptr,
                                       tParams.dwCreationDisposition, tParams.dwFlagsAndAttributes, nullptr));
    hFile = INVALID_HANDLE_VALUE;
    LARGE_INTEGER tSize{};
    if (!tOpened.fIsValid() || !GetFileSizeEx(tOpened.hGet(), &tSize)) {
        dwLastError = GetLastError();
    } else {
        if (tSize.QuadPart > ULONG_MAX) throw TXZkTools(IDS_FILE_OPEN_FAILED, sName.c_str());
        dwFileSize = static_cast<unsigned long>(tSize.QuadPart);
    }
    TestGoodness(IDS_APPEND_FILE_DETAIL);
    hFile = tOpened.hRelease();
}

void TFStream::Close() {
    if (hFile == INVALID_HANDLE_VALUE) return;
    if (pBlob != nullptr && pBlob->fDirty) BufFlush();
    CloseHandle(hFile);
    hFile = INVALID_HANDLE_VALUE;
}

void TFStream::Flush() {
    if (hFile == INVALID_HANDLE_VALUE) throw std::logic_error("TFStream::Flush called on invalid file handle.");
    BufFlush();
    if (!FlushFileBuffers(hFile)) dwLastError = GetLastError();
    TestGoodness(IDS_FILE_WRITE_FAILED);
}

unsigned long TFStream::dwDeviceRead(void * pTarget, unsigned long dwCount) {
    DWORD dwDone = 0;
    if (!ReadFile(hFile, pTarget, dwCount, &dwDone, nullptr)) {
        dwLastError = GetLastError();
    } else if (dwDone == 0) {
        dwLastError = ERROR_HANDLE_EOF;
    }
    TestGoodness(IDS_INTERNET_READ_FAILED);
    return dwDone;
}

void TFStream::DeviceWrite(void const * pSource, unsigned long dwCount) {
    DWORD dwDone = 0;
    if (!WriteFile(hFile, pSource, dwCount, &dwDone, nullptr)) {
        dwLastError = GetLastError();
    } else if (dwDone != dwCount) {
        dwLastError = ERROR_WRITE_FAULT;
    }
    TestGoodness(IDS_FILE_WRITE_FAILED);
}

void TFStream::DeviceSeek(__int64 iPos, int iOrigin) {
    DWORD const dwMethod = iOrigin == 1 || iOrigin == 2 ? static_cast<DWORD>(iOrigin) : FILE_BEGIN;
    LONG lHigh = static_cast<LONG>(iPos >> 32);
    SetLastError(NO_ERROR); // a position may end in these 32 bits without a failure
    if (SetFilePointer(hFile, static_cast<LONG>(iPos), &lHigh, dwMethod) == INVALID_SET_FILE_POINTER) {
        dwLastError = GetLastError();
    }
    TestGoodness(IDS_SEEK_OUT_OF_RANGE);
}

// What the run-time's own open call would take for a mode, and for an origin.
int TFStream::iOpenModeConvert(int iOpenMode) {
    constexpr int iRunTimeAnew = 4144;
    constexpr int iRunTimeReadWrite = 49;
    if (fHas(iOpenMode, iMakesAnew)) return iRunTimeAnew;
    return fHas(iOpenMode, FS_READ_WRITE) ? iRunTimeReadWrite : iOpenMode >> 1 & 2;
}

int TFStream::iSeekBaseConvert(int iOrigin) {
    return iOrigin == 1 || iOrigin == 2 ? iOrigin : 0;
}

void TFStream::TestGoodness(int iMessageId) {
    if (dwLastError == 0) return;
    std::array<wchar_t, 255> acReason{};
    GetErrorString(dwLastError, acReason.data(), static_cast<int>(acReason.size()));
    dwLastError = 0;
    TXZkTools tFailure(acReason.data()); // Deliberate: the system's text goes in as the format, as everywhere.
    tFailure.AddMessage(static_cast<unsigned int>(iMessageId), sName.c_str());
    throw tFailure;
}

void TFStream::SetEndOfFile() {
    if (hFile == INVALID_HANDLE_VALUE) return;
    if (pBlob != nullptr && pBlob->fDirty) BufFlush();
    // Deliberate: the size that the stream knows stays; whoever cuts a file opens it anew before reading on.
    ::SetEndOfFile(hFile);
}

bool TFStream::fLockFile(unsigned long dwOffset, unsigned long dwLength) {
    return hFile != INVALID_HANDLE_VALUE && ::LockFile(hFile, dwOffset, 0, dwLength, 0) != FALSE;
}

bool TFStream::fUnlockFile(unsigned long dwOffset, unsigned long dwLength) {
    return hFile != INVALID_HANDLE_VALUE && ::UnlockFile(hFile, dwOffset, 0, dwLength, 0) != FALSE;
}

bool TFStream::fIsOpen() {
    return hFile != INVALID_HANDLE_VALUE;
}

void TFStream::GetFTime(FILETIME * pCreation, FILETIME * pAccess, FILETIME * pWrite) const {
    GetFileTime(hFile, pCreation, pAccess, pWrite);
}

void TFStream::SetFTime(FILETIME const * pCreation, FILETIME const * pAccess, FILETIME const * pWrite) {
    SetFileTime(hFile, pCreation, pAccess, pWrite);
}

std::wstring TFStream::sGetSize() const {
    return sGetFileSize(sName.c_str());
}
