#include "ZkBase/Files.h"

#include "base/LongPath.h"
#include "base/PathRoot.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace {

/// The path with backslashes alone, one between two components and none at the end. In the long form, which is taken
/// literally by the system, only the end is looked at.
std::wstring sTidyPath(std::wstring_view sPath) {
    std::wstring sResult(sPath);
    if (!sResult.starts_with(sLongPrefix)) {
        std::ranges::replace(sResult, L'/', L'\\');
        std::size_t const uBegin = sResult.starts_with(LR"(\\)") ? 2 : 0;
        auto const fBothBackslashes = [](wchar_t c, wchar_t cNext) { return c == L'\\' && cNext == L'\\'; };
        sResult.erase(
            std::unique(sResult.begin() + static_cast<std::ptrdiff_t>(uBegin), sResult.end(), fBothBackslashes),
            sResult.end());
    }
    std::size_t const uRoot = tFindPathRoot(sResult).uLength;
    while (sResult.size() > uRoot && sResult.ends_with(L'\\'))
        sResult.pop_back();
    return sResult;
}

bool fIsDirectory(DWORD dwAttributes) noexcept {
    return dwAttributes != INVALID_FILE_ATTRIBUTES && (dwAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

DWORD dwGetAttributes(wchar_t const * pzPath) {
    std::wstring sHolder;
    return GetFileAttributesW(pzLongPath(pzPath, sHolder));
}

/// Creates one directory. True as well when it exists, whoever made it; a file in the way is error 183.
bool fMakeOne(std::wstring const & sPath) {
    std::wstring sHolder;
    if (CreateDirectoryW(pzLongDirPath(sPath.c_str(), sHolder), nullptr)) return true;
    DWORD const dwError = GetLastError();
    DWORD const dwAttributes = dwGetAttributes(sPath.c_str());
    if (fIsDirectory(dwAttributes)) return true;
    SetLastError(dwAttributes != INVALID_FILE_ATTRIBUTES ? ERROR_ALREADY_EXISTS : dwError);
    return false;
}

/// True when the last call failed because the parent is no directory.
bool fParentIsMissing() noexcept {
    DWORD const dwError = GetLastError();
    return dwError == ERROR_PATH_NOT_FOUND || dwError == ERROR_DIRECTORY;
}

/// Makes the path up to `uEnd` and whatever is missing above it, down to a parent that can be made.
/// On success `uEnd` is the end of what stands now.
bool fMakeDeepestPossible(std::wstring const & sPath, std::size_t uRoot, std::size_t & uEnd) {
    while (!fMakeOne(sPath.substr(0, uEnd))) {
        std::size_t const uBackslash = sPath.rfind(L'\\', uEnd - 1);
        if (!fParentIsMissing() || uBackslash == std::wstring::npos || uBackslash <= uRoot) return false;
        uEnd = uBackslash;
    }
    return true;
}

} // namespace

namespace file_func {

bool fExistDirectory(wchar_t const * pzPath) {
    return fIsDirectory(dwGetAttributes(pzPath));
}

bool fMakeDirectory(wchar_t const * pzPath) {
    std::wstring const sPath = sTidyPath(pzPath != nullptr ? pzPath : L"");
    std::size_t const uRoot = tFindPathRoot(sPath).uLength;
    // A drive or a share is there or isn't; it is never made.
    if (!sPath.empty() && sPath.size() <= uRoot) return fExistDirectory(sPath.c_str());

    std::size_t uEnd = sPath.size();
    if (!fMakeDeepestPossible(sPath, uRoot, uEnd)) return false;
    while (uEnd < sPath.size()) {
        uEnd = std::min(sPath.find(L'\\', uEnd + 1), sPath.size());
        if (!fMakeOne(sPath.substr(0, uEnd))) return false;
    }
    return true;
}

int ShellExecuteExW(SHELLEXECUTEINFOW * pInfo) {
    return ::ShellExecuteExW(pInfo);
}

unsigned int MsiGetFileHashW(wchar_t const * pzPath, unsigned long ulOptions, MSIFILEHASHINFO * pHash) {
    return ::MsiGetFileHashW(pzPath, ulOptions, pHash);
}

} // namespace file_func
