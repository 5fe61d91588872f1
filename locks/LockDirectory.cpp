#include "ZkTools/Locks.h"

#include "ZkTools/Files.h"
#include "ZkTools/MessageIds.h"
#include "files/FindFile.h"
#include "files/LongPath.h"
#include "frame/Failures.h"
#include "frame/Library.h"

#include <string_view>

namespace {

constexpr DWORD dwHidden = FILE_ATTRIBUTE_NORMAL | FILE_ATTRIBUTE_HIDDEN;
constexpr DWORD dwHiddenAndVanishing = FILE_FLAG_DELETE_ON_CLOSE | dwHidden;
static_assert(dwHidden == 0x82 && dwHiddenAndVanishing == 0x4000082);

/// One way to open a file of the protocol. Programs on other machines open the same files, so that the forms are part
/// of what lies on the share.
struct TOpenForm {
    DWORD dwAccess;
    DWORD dwShare;
    DWORD dwDisposition;
    DWORD dwFlags;
};
constexpr TOpenForm tHoldWriter{GENERIC_READ | GENERIC_WRITE, 0, OPEN_ALWAYS, dwHiddenAndVanishing};
constexpr TOpenForm tHoldReader{GENERIC_READ, 0, OPEN_ALWAYS, dwHiddenAndVanishing};
constexpr TOpenForm tProbeWriter{GENERIC_READ | GENERIC_WRITE, 0, OPEN_EXISTING, dwHiddenAndVanishing};
constexpr TOpenForm tProbeReader{GENERIC_READ, 0, OPEN_EXISTING, dwHiddenAndVanishing};
constexpr TOpenForm tProbeObject{GENERIC_READ, 0, OPEN_EXISTING, dwHidden};
constexpr TOpenForm tHoldObject{GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING, dwHidden};

constexpr std::array<unsigned int, 7> uiDirectoryErrorIds{
    IDS_LOCK_FAILED,         // eErrLock
    IDS_LOCK_WRITER_KNOWN,   // eErrWriterKnown
    IDS_LOCK_READ_ONLY,      // eErrReadOnly
    IDS_LOCK_WRITER_UNKNOWN, // eErrWriterUnknown
    IDS_LOCK_OPEN_FAILED,    // eErrOpen
    IDS_LOCK_IN_USE,         // eErrInUse
    IDS_LOCK_READERS_KNOWN,  // eErrReadersKnown
};

HANDLE hOpen(std::wstring const & sPath, TOpenForm const & tForm) {
    return CreateFileLong(sPath.c_str(), tForm.dwAccess, tForm.dwShare, nullptr, tForm.dwDisposition, tForm.dwFlags,
                          nullptr);
}

bool fIsValid(HANDLE hFile) noexcept {
    return hFile != INVALID_HANDLE_VALUE;
}

void CloseWhereValid(HANDLE & hFile) noexcept {
    if (!fIsValid(hFile)) return;
    CloseHandle(hFile);
    hFile = INVALID_HANDLE_VALUE;
}

/// The liveness test: a file that can't be opened without sharing has a holder, whatever the reason of the failure. One
/// that can is a leftover, and the probe forms remove it when they close.
bool fIsHeld(std::wstring const & sPath, TOpenForm const & tProbe) {
    HANDLE hFile = hOpen(sPath, tProbe);
    if (!fIsValid(hFile)) return true;
    CloseHandle(hFile);
    return false;
}

/// Calls `tVisit(path, name)` for every reader file that is held, and sweeps the others.
template <typename TVisit>
void VisitLiveReaders(std::wstring const & sDirectory, std::wstring const & sReaderPattern, TVisit tVisit) {
    std::wstring sPath = sDirectory + L'\\';
    std::size_t const uName = sPath.size();
    for (TFindFile tFind(sReaderPattern.c_str()); tFind.fFound(); tFind.fNext()) {
        sPath.replace(uName, std::wstring::npos, tFind.tGetData().cFileName);
        if (fIsHeld(sPath, tProbeReader)) tVisit(sPath, tFind.tGetData().cFileName);
    }
}

/// Takes computer and user out of the name of a lock file, which stand between its percent signs. False without a user.
bool ParseLockFileName(std::wstring_view sName, std::wstring_view & sComputer, std::wstring_view & sUser) {
    std::size_t const uFirst = sName.find(L'%');
    if (uFirst == std::wstring_view::npos) return false;
    std::size_t const uSecond = sName.find(L'%', uFirst + 1);
    if (uSecond == std::wstring_view::npos) return false;
    sComputer = sName.substr(uFirst + 1, uSecond - uFirst - 1);
    std::size_t const uThird = sName.find(L'%', uSecond + 1);
    if (uThird == std::wstring_view::npos) return false;
    sUser = sName.substr(uSecond + 1, uThird - uSecond - 1);
    return !sUser.empty();
}

/// "user [computer]" from the name of a lock file; empty when it names no user.
std::wstring sGetHolder(std::wstring_view sName) {
    std::wstring_view sComputer;
    std::wstring_view sUser;
    if (!ParseLockFileName(sName, sComputer, sUser)) return {};
    std::wstring sHolder(sUser);
    if (!sComputer.empty()) sHolder.append(L" [").append(sComputer).append(L"]");
    return sHolder;
}

std::wstring sReadComputerName() {
    std::array<wchar_t, 16> acName{};
    DWORD dwSize = static_cast<DWORD>(acName.size());
    GetComputerNameW(acName.data(), &dwSize);
    return acName.data();
}

std::wstring sReadUserName() {
    std::array<wchar_t, 257> acName{};
    DWORD dwSize = static_cast<DWORD>(acName.size());
    GetUserNameW(acName.data(), &dwSize);
    return acName.data();
}

} // namespace

TLockDirectory::TLockDirectory(EMode eMode_) : eMode(eMode_), uiErrorIds(uiDirectoryErrorIds) {}

TLockDirectory::TLockDirectory(EMode eMode_, wchar_t const * pzDirectory, wchar_t const * pzObjectName)
    : TLockDirectory(eMode_) {
    TLockDirectory::SetDir(pzDirectory, pzObjectName);
}

TLockDirectory::TLockDirectory(TLockDirectory const &) = default;
TLockDirectory & TLockDirectory::operator=(TLockDirectory const &) = default;

TLockDirectory::~TLockDirectory() {
    ForceUnlock();
    Close();
}

void TLockDirectory::SetDir(wchar_t const * pzDirectory, wchar_t const * pzObjectName) {
    if (pzDirectory == nullptr || pzObjectName == nullptr) return;
    if (fIsOpen()) return;

    sDirectory = pzDirectory;
    if (sDirectory.ends_with(L'\\')) sDirectory.pop_back();
    sComputer = sReadComputerName();
    sUser = sReadUserName();

    std::wstring const sHolder = L"%" + sComputer + L"%" + sUser + L"%";
    sReaderPattern = sDirectory + L"\\rdr*.tmp";
    sReaderBaseName = L"rdr" + sHolder;
    sWriterPath = sDirectory + L"\\write.lck";
    sWriterInfoPattern = sDirectory + L"\\write*.tmp";
    sWriterInfoPath = sDirectory + L"\\write" + sHolder + L".tmp";
    sObjectPath = sDirectory + L"\\" + pzObjectName;
}

// Deliberate: only one of the two is ever held, so that this is false after every ordinary `Open`. Programs redirect
// an open object with `SetDir`, and open again what says it is not open: a true answer would bar both.
bool TLockDirectory::fIsOpen() const noexcept {
    return fIsValid(hReader) && fIsValid(hReadOnly);
}

bool TLockDirectory::fIsReadOnly() const noexcept {
    return fIsValid(hReadOnly);
}

bool TLockDirectory::fIsLocked() const noexcept {
    return fIsValid(hWriter);
}

bool TLockDirectory::fCanOpen() {
    std::runtime_error tIgnored("");
    return fCanOpen(tIgnored);
}

bool TLockDirectory::fOpen(std::runtime_error & tError) {
    if (!fCanOpen(tError)) {
        InsertMessage(tError, hGetMessageModule(), uiGetErrorStringId(eErrOpen), pzGetNameOfObjectToLock());
        return false;
    }
    // Deliberate: a place that is held already is not given up, it stays taken until the process ends.
    unsigned long dwError;
    if (fGetNextFreeReader(hReader, dwError)) return true;
    if (dwError == ERROR_ACCESS_DENIED) {
        hReadOnly = hOpen(sObjectPath, tHoldObject);
        if (fIsValid(hReadOnly)) return true;
        dwError = GetLastError();
    }
    tError = tReasonWithFailure(dwError, uiGetErrorStringId(eErrOpen), pzGetNameOfObjectToLock());
    return false;
}

void TLockDirectory::Open() {
    std::runtime_error tError("");
    if (!fOpen(tError)) throw tError;
}

void TLockDirectory::Close() noexcept {
    CloseWhereValid(hReader);
    CloseWhereValid(hReadOnly);
}

bool TLockDirectory::fCanLock() {
    std::runtime_error tIgnored("");
    if (!fCanLock(tIgnored)) return false;
    if (iLockCount >= 1) return true;
    HANDLE hFile = hCreateWriter();
    if (!fIsValid(hFile)) return false;
    CloseHandle(hFile);
    return true;
}

void TLockDirectory::xCanLock() {
    std::runtime_error tError("");
    if (!fCanLock(tError)) throw tError;
}

bool TLockDirectory::fLock(std::runtime_error & tError) {
    if (!fCanLock(tError)) {
        InsertMessage(tError, hGetMessageModule(), uiGetErrorStringId(eErrLock), pzGetNameOfObjectToLock());
        return false;
    }
    if (iLockCount == 0) {
        // The one atomic step of the protocol. All before it is advice for better messages: of two that pass the tests
        // together one fails here.
        hWriter = hCreateWriter();
        if (!fIsValid(hWriter)) {
            unsigned long const dwError = GetLastError();
            std::wstring const sWriter = sGetWriterInfo();
            TXZkTools tFailure = sWriter.empty() ? TXZkTools(sGetErrorString(dwError).c_str())
                                                 : TXZkTools(uiGetErrorStringId(eErrWriterKnown),
                                                             pzGetNameOfObjectToLock(), sWriter.c_str());
            tFailure.AddMessage(uiGetErrorStringId(eErrLock), pzGetNameOfObjectToLock());
            tError = tFailure;
            return false;
        }
        hWriterInfo = hCreateWriterInfo(); // a lock without its info file is a lock
    }
    ++iLockCount;
    return true;
}

void TLockDirectory::Lock() {
    std::runtime_error tError("");
    if (!fLock(tError)) throw tError;
}

void TLockDirectory::Unlock() noexcept {
    if (iLockCount == 1) ForceUnlock();
    --iLockCount;
}

int TLockDirectory::iCountReader() const {
    int iCount = 0;
    VisitLiveReaders(sDirectory, sReaderPattern, [&](std::wstring const &, wchar_t const *) { ++iCount; });
    return iCount;
}

wchar_t const * TLockDirectory::pzGetNameOfObjectToLock() {
    return sDirectory.c_str();
}

bool TLockDirectory::fCanOpen(std::runtime_error & tError) {
    if (eMode != eModeStrict || !fFindWriter()) return true;
    std::wstring const sWriter = sGetWriterInfo();
    if (!sWriter.empty())
        tError = TXZkTools(uiGetErrorStringId(eErrWriterKnown), pzGetNameOfObjectToLock(), sWriter.c_str());
    else
        tError = TXZkTools(uiGetErrorStringId(eErrWriterUnknown), pzGetNameOfObjectToLock());
    return false;
}

bool TLockDirectory::fCanLock(std::runtime_error & tError) {
    if (iLockCount > 0) return true;
    if (fIsValid(hReadOnly)) {
        tError = TXZkTools(uiGetErrorStringId(eErrReadOnly), pzGetNameOfObjectToLock());
        return false;
    }
    if (eMode == eModeStrict) {
        if (iCountReader() >= 2) { // one of them is this object's own
            std::wstring const sReaders = sGetReaderInfo();
            if (!sReaders.empty())
                tError = TXZkTools(uiGetErrorStringId(eErrReadersKnown), pzGetNameOfObjectToLock(), sReaders.c_str());
            else
                tError = TXZkTools(uiGetErrorStringId(eErrInUse), pzGetNameOfObjectToLock());
            return false;
        }
        if (TFindFile(sObjectPath.c_str()).fFound() && fIsHeld(sObjectPath, tProbeObject)) {
            tError = TXZkTools(uiGetErrorStringId(eErrInUse), pzGetNameOfObjectToLock());
            return false;
        }
    }
    if (fExistFileOrDirectory(sObjectPath.c_str())) {
        DWORD const dwAttributes = GetFileAttributesLong(sObjectPath.c_str());
        if (dwAttributes != INVALID_FILE_ATTRIBUTES && (dwAttributes & FILE_ATTRIBUTE_READONLY) != 0) {
            tError = TXZkTools(IDS_LOCK_REFUSED, sObjectPath.c_str());
            return false;
        }
    }
    return true;
}

void TLockDirectory::ForceUnlock() noexcept {
    CloseWhereValid(hWriter);
    CloseWhereValid(hWriterInfo);
}

bool TLockDirectory::fFindWriter() const {
    return TFindFile(sWriterPath.c_str()).fFound() && fIsHeld(sWriterPath, tProbeWriter);
}

std::wstring TLockDirectory::sGetWriterInfo() const {
    // Deliberate: the file of this object's own computer and user, not the pattern. A writer from elsewhere stays
    // unknown here, as it does in every program that shares the directory.
    TFindFile const tFind(sWriterInfoPath.c_str());
    if (!tFind.fFound() || !fIsHeld(sWriterInfoPath, tProbeWriter)) return {};
    return sGetHolder(tFind.tGetData().cFileName);
}

std::wstring TLockDirectory::sGetReaderInfo() const {
    std::wstring sInfo;
    VisitLiveReaders(sDirectory, sReaderPattern, [&](std::wstring const & sPath, wchar_t const * pzName) {
        if (sPath == sReaderPath) return;
        std::wstring const sHolder = sGetHolder(pzName);
        if (sHolder.empty()) return;
        if (!sInfo.empty()) sInfo += L"\r\n";
        sInfo += sHolder;
    });
    return sInfo;
}

HANDLE TLockDirectory::hCreateWriter() const {
    return hOpen(sWriterPath, tHoldWriter);
}

HANDLE TLockDirectory::hCreateWriterInfo() const {
    return hOpen(sWriterInfoPath, tHoldWriter);
}

bool TLockDirectory::fGetNextFreeReader(HANDLE & hHandle, unsigned long & dwError) {
    hHandle = INVALID_HANDLE_VALUE;
    dwError = 0;
    sReaderPath = sGetUniqueFilePath(sDirectory, sReaderBaseName, L"tmp");
    hHandle = hOpen(sReaderPath, tHoldReader);
    if (!fIsValid(hHandle)) {
        dwError = GetLastError();
        sReaderPath.clear();
    }
    return dwError == 0;
}

void TLockDirectory::FillErrorStringIds() noexcept {
    uiErrorIds = uiDirectoryErrorIds;
}

unsigned int TLockDirectory::uiGetErrorStringId(EErrorString eErrorString) const noexcept {
    return uiErrorIds[static_cast<std::size_t>(eErrorString)];
}
