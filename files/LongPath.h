// The system's calls on paths, for paths of any length. No path of this library reaches the system by another way.
#pragma once

#include "ZkBase/Windows.h"
#include "base/LongPath.h"

// Each takes and answers what the system's call of that name does, GetLastError included.
BOOL CopyFileLong(wchar_t const * pzExisting, wchar_t const * pzNew, BOOL fFailIfExists);
[[nodiscard]] HANDLE CreateFileLong(wchar_t const * pzPath, DWORD dwAccess, DWORD dwShare,
                                    SECURITY_ATTRIBUTES * pSecurity, DWORD dwDisposition, DWORD dwFlags,
                                    HANDLE hTemplate);
BOOL DeleteFileLong(wchar_t const * pzPath);
[[nodiscard]] DWORD GetFileAttributesLong(wchar_t const * pzPath);
BOOL MoveFileExLong(wchar_t const * pzExisting, wchar_t const * pzNew, DWORD dwFlags);
BOOL SetFileAttributesLong(wchar_t const * pzPath, DWORD dwAttributes);
BOOL RemoveDirectoryLong(wchar_t const * pzPath);

/// `ReplaceFileW` without a backup file; that attributes or access rights can't be merged is no failure.
BOOL ReplaceFileLong(wchar_t const * pzReplaced, wchar_t const * pzReplacement);
