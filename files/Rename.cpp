// Renaming and replacement, and the tests for read-only places. Deletion is in Delete.cpp.
#include "ZkTools/Rename.h"

#include "ZkBase/Messages.h"
#include "ZkBase/Paths.h"
#include "ZkBase/Text.h"
#include "ZkTools/Exceptions.h"
#include "ZkTools/FileStream.h"
#include "ZkTools/Files.h"
#include "ZkTools/MessageIds.h"
#include "files/LongPath.h"
#include "frame/Failures.h"
#include "frame/Library.h"

#include <cwctype>

namespace {

constexpr std::wstring_view sNeighbour = L".~1";
constexpr wchar_t const * pzProbe = L"rwtst000.___";

/// What `ReplaceEx` tells from every other failure.
class TXCannotReplaceFile : public TXZkTools {
public:
    TXCannotReplaceFile(wchar_t const * pzReplaced, wchar_t const * pzReplacement)
        : TXZkTools(IDS_REPLACE_FAILED, pzReplaced, pzReplacement) {}
};

/// Deletes a file at the end of a scope. What goes wrong there beyond the delete itself ends the process.
class TTemporaryFile {
public:
    explicit TTemporaryFile(std::wstring const & sPath_) noexcept : sPath(sPath_) {}
    ~TTemporaryFile() { DeleteFileLong(sPath.c_str()); }
    TTemporaryFile(TTemporaryFile const &) = delete;
    TTemporaryFile & operator=(TTemporaryFile const &) = delete;

private:
    std::wstring const & sPath;
};

/// Tries to open a file without the system asking for a medium, and closes it at once. On false `GetLastError` tells
/// why.
bool fCanOpen(std::wstring const & sPath, DWORD dwAccess, DWORD dwShare, DWORD dwDisposition, DWORD dwFlags) {
    UINT const uMode = SetErrorMode(SEM_FAILCRITICALERRORS);
    HANDLE const hFile = CreateFileLong(sPath.c_str(), dwAccess, dwShare, nullptr, dwDisposition, dwFlags, nullptr);
    DWORD const dwError = GetLastError();
    SetErrorMode(uMode);
    SetLastError(dwError);
    return TFileHandle(hFile).fIsValid();
}

} // namespace

void Rename(wchar_t const * pzOld, wchar_t const * pzNew, bool fReplaceExisting) {
    std::wstring_view const sNew = pzNew;
    DWORD const dwFlags =
        fReplaceExisting ? MOVEFILE_WRITE_THROUGH | MOVEFILE_REPLACE_EXISTING : MOVEFILE_WRITE_THROUGH;
    // The system would take white space at the end off and give a name that nobody asked for.
    bool const fRefused = !sNew.empty() && std::iswspace(sNew.back()) != 0;
    if (!fRefused && MoveFileExLong(pzOld, pzNew, dwFlags)) return;
    // Deliberate: a refusal has no reason of the system's, and tells what it finds.
    throw tFailureWithReason(GetLastError(), IDS_RENAME_FAILED, pzOld, pzNew);
}

void RenameWithValidation(std::wstring const & sOld, std::wstring const & sNew, bool fReplaceExisting) {
    std::wstring sStripped = sNew;
    string_functions::strip_whitespace(sStripped, string_functions::esBoth);
    if (sStripped.ends_with(L'/') || sStripped.ends_with(L'\\')) {
        TXZkTools tFailure(IDS_RENAME_FAILED, sOld.c_str(), sNew.c_str());
        tFailure.AddMessageStr(string_functions::sLoadString(hGetMessageModule(), IDS_RENAME_BAD_NAME_DETAIL).c_str());
        throw tFailure;
    }
    Rename(sOld.c_str(), sStripped.c_str(), fReplaceExisting);
}

void Replace(wchar_t const * pzReplaced, wchar_t const * pzReplacement) {
    constexpr int iRetries = 3;
    constexpr DWORD dwPause = 10; // milliseconds

    bool fReplaced = ReplaceFileLong(pzReplaced, pzReplacement) != FALSE;
    // Deliberate: only the first error decides. Once it was the busy file, what the retries say is not looked at.
    if (!fReplaced && GetLastError() == ERROR_UNABLE_TO_REMOVE_REPLACED) {
        for (int i = 0; i < iRetries && !fReplaced; ++i) {
            Sleep(dwPause);
            fReplaced = ReplaceFileLong(pzReplaced, pzReplacement) != FALSE;
        }
    }
    if (fReplaced) return;
    std::wstring const sReason = sGetErrorString(GetLastError());
    TXCannotReplaceFile tFailure(pzReplaced, pzReplacement);
    tFailure.AddMessageStr(sReason.c_str());
    throw tFailure;
}

void ReplaceEx(std::wstring const & sSource, std::wstring const & sTarget) {
    std::wstring const sTemporary = std::wstring(sTarget).append(sNeighbour);
    if (!CopyFileLong(sSource.c_str(), sTemporary.c_str(), FALSE))
        throw tFailureWithReason(GetLastError(), IDS_REPLACE_FAILED, sTemporary.c_str(), sSource.c_str());

    TTemporaryFile const tGuard(sTemporary);
    bool fMove = !fExistFile(sTarget.c_str());
    if (!fMove) {
        try {
            Replace(sTarget.c_str(), sTemporary.c_str());
        } catch (TXCannotReplaceFile const &) {
            fMove = true;
        }
    }
    if (fMove) Rename(sTemporary.c_str(), sTarget.c_str(), true);
    DeleteFileLong(sSource.c_str());
}

bool fIsDirReadOnly(std::wstring const & sDirectory) {
    return !fCanOpen(path_func::sPathAppend(sDirectory, pzProbe), GENERIC_READ | GENERIC_WRITE,
                     FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_ALWAYS,
                     FILE_FLAG_DELETE_ON_CLOSE | FILE_ATTRIBUTE_NORMAL);
}

bool fIsFileReadOnly(std::wstring const & sPath) {
    return !fCanOpen(sPath, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, OPEN_EXISTING,
                     FILE_ATTRIBUTE_NORMAL);
}

bool fIsFileReadOnly(std::wstring const & sDirectory, std::wstring const & sName) {
    return fIsFileReadOnly(path_func::sPathAppend(sDirectory, sName));
}
