#include "files/LongPath.h"

BOOL CopyFileLong(wchar_t const * pzExisting, wchar_t const * pzNew, BOOL fFailIfExists) {
    std::wstring sExisting, sNew;
    return CopyFileW(pzLongPath(pzExisting, sExisting), pzLongPath(pzNew, sNew), fFailIfExists);
}

HANDLE CreateFileLong(wchar_t const * pzPath, DWORD dwAccess, DWORD dwShare, SECURITY_ATTRIBUTES * pSecurity,
                      DWORD dwDisposition, DWORD dwFlags, HANDLE hTemplate) {
    std::wstring sLong;
    return CreateFileW(pzLongPath(pzPath, sLong), dwAccess, dwShare, pSecurity, dwDisposition, dwFlags, hTemplate);
}

BOOL DeleteFileLong(wchar_t const * pzPath) {
    std::wstring sLong;
    return DeleteFileW(pzLongPath(pzPath, sLong));
}

DWORD GetFileAttributesLong(wchar_t const * pzPath) {
    std::wstring sLong;
    return GetFileAttributesW(pzLongPath(pzPath, sLong));
}

BOOL MoveFileExLong(wchar_t const * pzExisting, wchar_t const * pzNew, DWORD dwFlags) {
    std::wstring sExisting, sNew;
    return MoveFileExW(pzLongPath(pzExisting, sExisting), pzLongPath(pzNew, sNew), dwFlags);
}

BOOL SetFileAttributesLong(wchar_t const * pzPath, DWORD dwAttributes) {
    std::wstring sLong;
    return SetFileAttributesW(pzLongPath(pzPath, sLong), dwAttributes);
}

BOOL RemoveDirectoryLong(wchar_t const * pzPath) {
    std::wstring sLong;
    return RemoveDirectoryW(pzLongPath(pzPath, sLong));
}

BOOL ReplaceFileLong(wchar_t const * pzReplaced, wchar_t const * pzReplacement) {
    std::wstring sReplaced, sReplacement;
    return ReplaceFileW(pzLongPath(pzReplaced, sReplaced), pzLongPath(pzReplacement, sReplacement), nullptr,
                        REPLACEFILE_IGNORE_MERGE_ERRORS | REPLACEFILE_IGNORE_ACL_ERRORS, nullptr, nullptr);
}
