/// The few system calls on files that the base library wraps. They report by their result alone.
#pragma once

#include "ZkBase/Export.h"
#include "ZkBase/Windows.h"

#include <msi.h>
#include <shellapi.h>

namespace file_func {

/// True when the directory exists. Wildcards are no pattern here. Paths of any length work.
[[nodiscard]] ZKBASE_API bool fExistDirectory(wchar_t const * pzPath);

/// Creates the directory and every missing parent. True as well when it exists. On false `GetLastError` tells why; a
/// file in the way is error 183 (`ERROR_ALREADY_EXISTS`). Paths of any length work.
ZKBASE_API bool fMakeDirectory(wchar_t const * pzPath);

/// The system's call of that name, with its result.
ZKBASE_API int ShellExecuteExW(SHELLEXECUTEINFOW * pInfo);

/// The system's call of that name: 0, or an error.
ZKBASE_API unsigned int MsiGetFileHashW(wchar_t const * pzPath, unsigned long ulOptions, MSIFILEHASHINFO * pHash);

} // namespace file_func
