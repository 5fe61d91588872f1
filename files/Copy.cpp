#include "ZkTools/Copy.h"

#include "ZkBase/Paths.h"
#include "ZkTools/Exceptions.h"
#include "ZkTools/FileStream.h"
#include "ZkTools/Files.h"
#include "ZkTools/MessageIds.h"
#include "ZkTools/Paths.h"
#include "files/FindFile.h"
#include "files/LongPath.h"
#include "files/ReadOnly.h"
#include "files/TreeWalk.h"
#include "frame/Failures.h"

#include <array>
#include <memory>
#include <utility>
#include <vector>

namespace {

using TFilter = std::function<bool(unsigned long, std::wstring const &)>;
using TNotify = std::function<bool(std::wstring const &, std::wstring const &)>;

constexpr bool fHas(ECopyFile eCopy, ECopyFile eBit) noexcept {
    return (static_cast<int>(eCopy) & static_cast<int>(eBit)) != 0;
}

/// On false `GetLastError` tells why.
bool fCopyContent(wchar_t const * pzSource, wchar_t const * pzTarget, ECopyFile eCopy) {
    if (!CopyFileLong(pzSource, pzTarget, fHas(eCopy, eCopyFailIfExists))) return false;
    if (!fHas(eCopy, eCopyKeepReadOnly)) ClearReadOnly(pzTarget, GetFileAttributesLong(pzTarget));
    return true;
}

void SetWriteTime(wchar_t const * pzPath, FILETIME const * pLastWrite) {
    if (pLastWrite == nullptr) return;
    TFStream tStream(pzPath, FS_READ_WRITE);
    tStream.SetFTime(nullptr, nullptr, pLastWrite);
    tStream.Close();
}

/// Copies a file of a tree; false when the work in its directory is to end.
bool fCopyInTree(std::wstring const & sSource, std::wstring const & sTarget, ECopyFile eCopy,
                 TNotify const & fnNotify) {
    if (fCopyContent(sSource.c_str(), sTarget.c_str(), eCopy)) {
        if (fnNotify) fnNotify({}, sTarget);
        return true;
    }
    DWORD const dwError = GetLastError();
    if (dwError == ERROR_FILE_EXISTS && fnNotify) return !fnNotify(sSource, sTarget);
    throw TXZkTools(sGetErrorString(dwError).c_str());
}

/// A stream whose content can be given up: its destructor would try to write it once more, and end the process when
/// that fails.
class TResourceStream : public TFStream {
public:
    using TFStream::TFStream;
    void GiveUp() noexcept {
        if (pBlob != nullptr) pBlob->fDirty = false;
    }
};

struct TResourceFreer {
    void operator()(void * hData) const noexcept { FreeResource(hData); }
};

/// Opens one of two files that are to be joined.
TFileHandle tOpenToJoin(std::wstring const & sPath, DWORD dwAccess, DWORD dwDisposition, std::wstring const & sSource,
                        std::wstring const & sTarget) {
    TFileHandle tFile(
        CreateFileLong(sPath.c_str(), dwAccess, 0, nullptr, dwDisposition, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!tFile.fIsValid()) {
        std::wstring const sReason = sGetErrorString(GetLastError());
        TXZkTools tFailure(IDS_APPEND_FILE_FAILED, sSource.c_str(), sTarget.c_str());
        tFailure.AddMessage(IDS_APPEND_FILE_DETAIL, sPath.c_str());
        tFailure.AddMessageStr(sReason.c_str());
        throw tFailure;
    }
    return tFile;
}

} // namespace

void DoCopyFile(wchar_t const * pzSource, wchar_t const * pzTarget, ECopyFile eCopy) {
    DoCopyFile(pzSource, pzTarget, eCopy, nullptr);
}

void DoCopyFile(wchar_t const * pzSource, wchar_t const * pzTarget, ECopyFile eCopy, FILETIME const * pLastWrite) {
    if (!fCopyContent(pzSource, pzTarget, eCopy))
        throw tFailureWithReason(GetLastError(), IDS_COPY_FILE_FAILED, pzSource, pzTarget);
    SetWriteTime(pzTarget, pLastWrite);
}

bool fDoCopyFile(wchar_t const * pzSource, wchar_t const * pzTarget, ECopyFile eCopy) {
    return fDoCopyFile(pzSource, pzTarget, eCopy, nullptr);
}

// Nothing is thrown for the copy itself, so that its error is still there for the caller.
bool fDoCopyFile(wchar_t const * pzSource, wchar_t const * pzTarget, ECopyFile eCopy, FILETIME const * pLastWrite) {
    try {
        if (!fCopyContent(pzSource, pzTarget, eCopy)) return false;
        SetWriteTime(pzTarget, pLastWrite);
        return true;
    } catch (...) {
        return false;
    }
}

bool fCopyFile(std::wstring const & sSource, std::wstring const & sTarget) {
    return CopyFileLong(sSource.c_str(), sTarget.c_str(), FALSE) != FALSE;
}

std::wstring sCopyFileToDirectory(std::wstring const & sSource, std::wstring const & sDirectory, ECopyFile eCopy,
                                  int iNumber) {
    TSplitPath tSplit = SplitPath(sSource, eBackshlashRemove);
    if (iNumber >= 0) tSplit.sName.append(L"-").append(std::to_wstring(iNumber));
    std::wstring sTarget = sMerge(sDirectory, tSplit.sName, tSplit.sExtension);
    DoCopyFile(sSource.c_str(), sTarget.c_str(), eCopy);
    return sTarget;
}

void CopyFiles(std::wstring const & sSource, std::wstring const & sTarget,
               std::function<bool(std::wstring const &)> fnFilter) {
    constexpr DWORD dwPassedOver = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
    static_assert(dwPassedOver == 22);

    if (!fExistDirectory(sSource.c_str()) || !fMakeDirectory(sTarget.c_str())) return;
    for (TTreeWalk tWalk(sSource); tWalk.fNext();) {
        if ((tWalk.dwGetAttributes() & dwPassedOver) != 0 || !fnFilter(tWalk.sGetPath())) continue;
        std::wstring const sCopy = path_func::sPathAppend(sTarget, std::wstring(tWalk.sGetPathBelow()));
        DoCopyFile(tWalk.sGetPath().c_str(), sCopy.c_str(), eCopyDefault);
    }
}

void CopyDirectory(std::wstring const & sSource, std::wstring const & sTarget, bool fOverwrite, TFilter fnFilter,
                   TNotify fnNotify) {
    ECopyFile const eCopy = fOverwrite ? eCopyDefault : eCopyFailIfExists;
    // Deliberate: every directory has copies of its own, and what a callback remembers stays below it.
    std::vector<std::pair<TFilter, TNotify>> tCallbacks;
    tCallbacks.emplace_back(std::move(fnFilter), std::move(fnNotify));

    MakeDirectory(sTarget.c_str());
    for (TTreeWalk tWalk(sSource);;) {
        auto const & [fnOwnFilter, fnOwnNotify] = tCallbacks.back();
        bool fGoOn = tWalk.fNext();
        if (fGoOn && fnOwnFilter(tWalk.dwGetAttributes(), tWalk.sGetPath())) {
            std::wstring const sCopy = path_func::sPathAppend(sTarget, std::wstring(tWalk.sGetPathBelow()));
            if (tWalk.fIsDirectory()) {
                MakeDirectory(sCopy.c_str());
                tCallbacks.push_back(std::pair(tCallbacks.back()));
                tWalk.Enter();
            } else {
                fGoOn = fCopyInTree(tWalk.sGetPath(), sCopy, eCopy, fnOwnNotify);
            }
        }
        if (fGoOn) continue;
        if (!tWalk.fLeave()) return;
        tCallbacks.pop_back();
    }
}

void AppendFile(std::wstring const & sTarget, std::wstring const & sSource) {
    TFileHandle const tFrom = tOpenToJoin(sSource, GENERIC_READ, OPEN_EXISTING, sSource, sTarget);
    TFileHandle const tTo = tOpenToJoin(sTarget, FILE_APPEND_DATA, OPEN_ALWAYS, sSource, sTarget);

    // Deliberate: a failed write is not looked at where it happens, but found in the error at the end.
    SetLastError(NO_ERROR);
    std::array<char, 16384> acPiece;
    DWORD dwRead = 0;
    while (ReadFile(tFrom.hGet(), acPiece.data(), static_cast<DWORD>(acPiece.size()), &dwRead, nullptr) &&
           dwRead != 0) {
        LONG lHigh = 0;
        SetFilePointer(tTo.hGet(), 0, &lHigh, FILE_END);
        DWORD dwWritten = 0;
        WriteFile(tTo.hGet(), acPiece.data(), dwRead, &dwWritten, nullptr);
    }
    if (DWORD const dwError = GetLastError(); dwError != NO_ERROR)
        throw tFailureWithReason(dwError, IDS_APPEND_FILE_FAILED, sSource.c_str(), sTarget.c_str());
}

void WriteResToFile(HMODULE hModule, unsigned int uId, wchar_t const * pzPath) {
    if (uId > 0xFFFF) return; // there are no such ids, and the system would take the lower half for one
    HRSRC const hResource = FindResourceW(hModule, MAKEINTRESOURCEW(uId), RT_RCDATA);
    if (hResource == nullptr) return;
    DWORD const dwSize = SizeofResource(hModule, hResource);
    std::unique_ptr<void, TResourceFreer> const hData(LoadResource(hModule, hResource));
    void const * const pData = hData != nullptr ? LockResource(hData.get()) : nullptr;
    if (dwSize == 0 || pData == nullptr) return;

    TResourceStream tStream(ecpUtf8);
    tStream.Open(pzPath, FS_CREATE | FS_READ_WRITE);
    try {
        if (tStream.dwGetPos() == 0) tStream.WriteByteOrderMark();
        tStream.WriteData(pData, dwSize);
        tStream.Flush();
    } catch (...) {
        tStream.GiveUp();
        throw;
    }
    tStream.Close();
}

// Deliberate: equal times make a file changed. It reads the wrong way round, and its callers are written for that.
bool fCheckFileParams(std::wstring const & sPath, FILETIME const & tTime, ULARGE_INTEGER const & tSize) {
    TFindFile const tFind(sPath.c_str());
    if (!tFind.fFound() || CompareFileTime(&tTime, &tFind.tGetData().ftLastWriteTime) == 0) return true;
    return tFind.tGetSize().QuadPart != tSize.QuadPart;
}

void GetFileParams(std::wstring const & sPath, FILETIME & tCreation, FILETIME & tLastAccess, FILETIME & tLastWrite,
                   ULARGE_INTEGER & tSize) {
    TFindFile const tFind(sPath.c_str());
    if (!tFind.fFound()) throw TXZkTools(sGetErrorString(tFind.dwGetLastError()).c_str());
    tCreation = tFind.tGetData().ftCreationTime;
    tLastAccess = tFind.tGetData().ftLastAccessTime;
    tLastWrite = tFind.tGetData().ftLastWriteTime;
    tSize = tFind.tGetSize();
}
