#include "ZkTools/Files.h"

#include "ZkBase/Files.h"
#include "ZkBase/Paths.h"
#include "ZkTools/Exceptions.h"
#include "ZkTools/FileStream.h"
#include "ZkTools/MessageIds.h"
#include "ZkTools/Paths.h"
#include "ZkTools/Strings.h"
#include "files/FindFile.h"
#include "files/LongPath.h"

#include <cstddef>
#include <cwchar>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace {

constexpr std::wstring_view sFolderConfig = L"zkfolder.config";

constexpr DWORD dwShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

struct TFileCloser {
    using pointer = HANDLE;
    void operator()(HANDLE hFile) const noexcept { CloseHandle(hFile); }
};

struct TSearchCloser {
    using pointer = HANDLE;
    void operator()(HANDLE hSearch) const noexcept { FindClose(hSearch); }
};

bool fIsHidden(TFindFile const & tFind) noexcept {
    return tFind.tGetData().cFileName[0] == L'.';
}

/// True when the directory has an entry of that kind. A directory that can't be searched has none.
template <typename TPredicate>
bool fHasEntry(wchar_t const * pzDirectory, TPredicate fIsMeant) {
    std::wstring const sPattern = path_func::sPathAppend(pzDirectory, L"*");
    for (TFindFile tFind(sPattern.c_str()); tFind.fFound(); tFind.fNext()) {
        if (fIsMeant(tFind)) return true;
    }
    return false;
}

[[noreturn]] void ThrowSystemText(DWORD dwError) {
    throw TXZkTools(sGetErrorString(dwError).c_str());
}

[[noreturn]] void ThrowSystemError(DWORD dwError) {
    throw std::system_error(static_cast<int>(dwError), std::system_category());
}

/// The user's directory for temporary files.
std::wstring sGetTempPath() {
    std::wstring sPath(MAX_PATH, L'\0');
    DWORD dwLength;
    while ((dwLength = GetTempPathW(static_cast<DWORD>(sPath.size()), sPath.data())) > sPath.size())
        sPath.resize(dwLength);
    if (dwLength == 0) ThrowSystemText(GetLastError());
    sPath.resize(dwLength);
    return sPath;
}

/// The sizes of the files in one directory. Its subdirectories are handed to `AddDirectory` by name.
template <typename TAddDirectory>
unsigned __int64 uiSumFiles(std::wstring & sPattern, TAddDirectory AddDirectory) {
    std::wstring sLong;
    WIN32_FIND_DATAW tData;
    HANDLE const hSearch = FindFirstFileW(pzLongPath(sPattern.c_str(), sLong), &tData);
    if (hSearch == INVALID_HANDLE_VALUE) return 0;
    std::unique_ptr<void, TSearchCloser> const tOwner(hSearch);

    unsigned __int64 uiSize = 0;
    do {
        if ((tData.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
            uiSize += static_cast<unsigned __int64>(tData.nFileSizeHigh) << 32 | tData.nFileSizeLow;
        } else if (std::wstring_view const sName = tData.cFileName; sName != L"." && sName != L"..") {
            AddDirectory(sName);
        }
    } while (FindNextFileW(hSearch, &tData));
    return uiSize;
}

} // namespace

bool fExistDirectory(wchar_t const * pzPath) {
    return file_func::fExistDirectory(pzPath);
}

void ExistDirectory(wchar_t const * pzPath) {
    if (!fExistDirectory(pzPath)) throw TXZkTools(IDS_DIRECTORY_MISSING, pzPath);
}

void NotExistDirectory(wchar_t const * pzPath) {
    if (fExistDirectory(pzPath)) throw TXZkTools(IDS_DIRECTORY_EXISTS_NOT, pzPath);
}

bool fExistFileOrDirectory(wchar_t const * pzPath) {
    return TFindFile(pzPath).fFound();
}

void ExistFileOrDirectory(wchar_t const * pzPath) {
    if (!fExistFileOrDirectory(pzPath)) throw TXZkTools(IDS_FILE_OR_DIRECTORY_MISSING, pzPath);
}

void NotExistFileOrDirectory(wchar_t const * pzPath) {
    if (fExistFileOrDirectory(pzPath)) throw TXZkTools(IDS_FILE_OR_DIRECTORY_EXISTS_NOT, pzPath);
}

bool fExistFileOrDirectoryOrDrive(wchar_t const * pzPath) {
    constexpr std::size_t uLongerThanDrive = 4;
    if (path_func::fPathIsUNC(pzPath) || std::wcslen(pzPath) >= uLongerThanDrive) return fExistFileOrDirectory(pzPath);
    UINT const uType = GetDriveTypeW(pzPath);
    return uType != DRIVE_UNKNOWN && uType != DRIVE_NO_ROOT_DIR;
}

bool fExistFile(wchar_t const * pzPath) {
    TFindFile const tFind(pzPath);
    return tFind.fFound() && !tFind.fIsDirectory();
}

bool fIsDirectoryEmpty(wchar_t const * pzDirectory, bool fIgnoreDirectories) {
    return !fHasEntry(pzDirectory, [fIgnoreDirectories](TFindFile const & tFind) {
        return fIgnoreDirectories ? !tFind.fIsDirectory() : !fIsHidden(tFind);
    });
}

bool fHasSubDirectory(wchar_t const * pzDirectory) {
    return fHasEntry(pzDirectory, [](TFindFile const & tFind) { return tFind.fIsDirectory() && !fIsHidden(tFind); });
}

bool fIsDirectoryEmptyExceptFolderConfig(wchar_t const * pzDirectory) {
    return !fHasEntry(pzDirectory, [](TFindFile const & tFind) {
        return !fIsHidden(tFind) && tFind.tGetData().cFileName != sFolderConfig;
    });
}

bool fMakeDirectory(wchar_t const * pzPath) {
    return file_func::fMakeDirectory(pzPath);
}

void MakeDirectory(wchar_t const * pzPath) {
    if (fMakeDirectory(pzPath)) return;
    // Deliberate: the system's text goes in as the format, as everywhere.
    TXZkTools tFailure(sGetErrorString(GetLastError()).c_str());
    std::wstring const sPath = sClearBackslash(pzPath);
    if (fExistFile(sPath.c_str())) tFailure.AddMessage(IDS_FILE_OR_DIRECTORY_EXISTS_NOT, sPath.c_str());
    tFailure.AddMessage(IDS_CANNOT_MAKE_DIRECTORY, pzPath);
    throw tFailure;
}

std::wstring sMakeTempDir() {
    std::wstring const sTemp = sGetTempPath();
    for (int i = 1;; ++i) {
        std::wstring sCandidate = path_func::sPathAppend(sTemp, L"ZK" + std::to_wstring(i));
        std::wstring sLong;
        if (CreateDirectoryW(pzLongDirPath(sCandidate.c_str(), sLong), nullptr)) return sCandidate;
        DWORD const dwError = GetLastError();
        if (dwError != ERROR_ALREADY_EXISTS) ThrowSystemText(dwError);
    }
}

std::wstring sCreateTempDir(std::wstring const & sBase) {
    std::wstring sPath = path_func::sPathAppend(sBase, sGetUuid());
    MakeDirectory(sPath.c_str());
    return sPath;
}

bool fCreateUniqueDir(std::wstring & sDirectory) {
    std::wstring sCandidate = path_func::sPathAppend(sDirectory, sGetUuid());
    if (fExistFileOrDirectory(sCandidate.c_str()) || !fMakeDirectory(sCandidate.c_str())) return false;
    sDirectory = std::move(sCandidate);
    return true;
}

bool fCanCreateFile(wchar_t const * pzPath) {
    HANDLE const hFile = CreateFileLong(pzPath, GENERIC_READ | GENERIC_WRITE, dwShareAll, nullptr, CREATE_ALWAYS,
                                        FILE_FLAG_DELETE_ON_CLOSE | FILE_ATTRIBUTE_TEMPORARY, nullptr);
    if (hFile == INVALID_HANDLE_VALUE) return false;
    CloseHandle(hFile);
    return true;
}

HANDLE CreateHiddenFile(std::wstring const & sPath, DWORD dwAccess, DWORD dwShare, SECURITY_ATTRIBUTES * pSecurity,
                        DWORD dwDisposition, DWORD dwFlags, HANDLE hTemplate) {
    return CreateFileLong(sPath.c_str(), dwAccess, dwShare, pSecurity, dwDisposition, dwFlags | FILE_ATTRIBUTE_HIDDEN,
                          hTemplate);
}

std::wstring sGetUniqueFilePath(std::wstring const & sDirectory, std::wstring const & sName,
                                std::wstring const & sExtension) {
    std::wstring sCandidate = path_func::sPathAppend(sDirectory, sName + L"." + sExtension);
    for (int i = 2; fExistFileOrDirectory(sCandidate.c_str()); ++i) {
        sCandidate = path_func::sPathAppend(sDirectory, sName + L"_" + std::to_wstring(i) + L"." + sExtension);
    }
    return sCandidate;
}

// Deliberate: the free name alone, not its path. The callers join it to the directory themselves.
std::wstring sGetUniqueDirPath(std::wstring const & sDirectory, std::wstring const & sName) {
    std::wstring sCandidate = sName;
    for (int i = 2; fExistFileOrDirectory(path_func::sPathAppend(sDirectory, sCandidate).c_str()); ++i) {
        sCandidate = sName + L" (" + std::to_wstring(i) + L")";
    }
    return sCandidate;
}

unsigned long dwGetFileSize(wchar_t const * pzPath) {
    TFindFile const tFind(pzPath);
    return tFind.fFound() ? tFind.tGetData().nFileSizeLow : 0;
}

std::wstring sGetFileSize(wchar_t const * pzPath) {
    return std::to_wstring(dwGetFileSize(pzPath));
}

unsigned __int64 uiGetDirectorySize(std::wstring const & sPath) {
    // A tree may be deeper than the thread's stack would bear, so the directories that wait have a stack here: each
    // with the length of its parent's path, which begins the path under way, and the start of its name in `sNames`.
    struct TWaiting {
        std::size_t uParentLength;
        std::size_t uName;
    };
    std::vector<TWaiting> tWaiting;
    std::wstring sNames;
    std::wstring sCurrent = sPath;
    unsigned __int64 uiSize = 0;
    for (;;) {
        std::size_t const uLength = sCurrent.size();
        sCurrent += L"\\*.*";
        uiSize += uiSumFiles(sCurrent, [&](std::wstring_view sName) {
            tWaiting.push_back({uLength, sNames.size()});
            sNames += sName;
        });
        if (tWaiting.empty()) return uiSize;

        auto const [uParentLength, uName] = tWaiting.back();
        tWaiting.pop_back();
        sCurrent.resize(uParentLength);
        sCurrent.append(1, L'\\').append(sNames, uName);
        sNames.resize(uName);
    }
}

bool fGetLastWriteTime(wchar_t const * pzPath, FILETIME & tTime) {
    TFindFile const tFind(pzPath);
    if (!tFind.fFound()) return false;
    tTime = tFind.tGetData().ftLastWriteTime;
    return true;
}

bool fGetLastWriteTime(wchar_t const * pzPath, TZkDateTime & tTime) {
    FILETIME tUtc;
    if (!fGetLastWriteTime(pzPath, tUtc)) return false;
    tTime = tUtc;
    return true;
}

bool fGetLocalLastWriteTime(wchar_t const * pzPath, TZkDateTime & tTime) {
    FILETIME tUtc, tLocal;
    if (!fGetLastWriteTime(pzPath, tUtc) || !FileTimeToLocalFileTime(&tUtc, &tLocal)) return false;
    tTime = tLocal;
    return true;
}

bool fSetLastWriteTime(wchar_t const * pzPath, TZkDateTime const & tTime) {
    if (TFindFile const tFind(pzPath); tFind.fFound()) {
        FILETIME const tWrite = tTime;
        TFStream tStream(pzPath, FS_READ_WRITE);
        tStream.SetFTime(&tFind.tGetData().ftCreationTime, &tFind.tGetData().ftLastAccessTime, &tWrite);
    }
    return false; // Deliberate: what callers have always been given, and do not look at.
}

void SetCreationTime(std::wstring const & sPath, TZkDateTime const & tTime) {
    TFindFile const tFind(sPath.c_str());
    if (!tFind.fFound()) return;
    FILETIME const tCreation = tTime;
    TFStream tStream(sPath.c_str(), FS_READ_WRITE);
    tStream.SetFTime(&tCreation, &tFind.tGetData().ftLastAccessTime, &tFind.tGetData().ftLastWriteTime);
}

void SetLastWriteTime(std::wstring const & sPath, FILETIME const & tTime) {
    HANDLE const hFile = CreateFileLong(sPath.c_str(), FILE_WRITE_ATTRIBUTES, dwShareAll, nullptr, OPEN_EXISTING,
                                        FILE_ATTRIBUTE_NORMAL, nullptr);
    if (hFile == INVALID_HANDLE_VALUE) ThrowSystemError(GetLastError());
    std::unique_ptr<void, TFileCloser> const tOwner(hFile);
    if (!SetFileTime(hFile, nullptr, nullptr, &tTime)) ThrowSystemError(GetLastError());
}

bool fDirectoriesOrFilesAreEqual(std::wstring const & sFirst, std::wstring const & sSecond) {
    return _wcsicmp(sClearBackslash(sFirst).c_str(), sClearBackslash(sSecond).c_str()) == 0;
}

bool fCheckSubDir(wchar_t const * pzDirectory, wchar_t const * pzParent) {
    std::wstring const sParent = sAppendBackslash(pzParent);
    return _wcsnicmp(sAppendBackslash(pzDirectory).c_str(), sParent.c_str(), sParent.size()) == 0;
}

std::wstring sGetSingleSubDir(std::wstring const & sDirectory) {
    std::wstring const sPattern = path_func::sPathAppend(sDirectory, L"*.*");
    for (TFindFile tFind(sPattern.c_str()); tFind.fFound(); tFind.fNext()) {
        if (tFind.fIsDirectory() && !fIsHidden(tFind)) return tFind.tGetData().cFileName;
    }
    return {};
}
