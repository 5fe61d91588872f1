/// Path arithmetic on Windows paths: strings only, the disk is never asked.
///
/// The backslash is the separator. For all that is not told here the functions do what the platform's functions of the
/// same names do, without their limit of 260 characters.
#pragma once

#include "ZkBase/Export.h"

#include <string>

namespace path_func {

/// Joins two parts with one backslash. An empty part changes nothing, backslashes in front of `sMore` are dropped, and
/// neither `.` nor `..` is resolved. A `sMore` that names a drive or begins with two backslashes is the result itself.
[[nodiscard]] ZKBASE_API std::wstring sPathAppend(std::wstring const & sPath, std::wstring const & sMore);

/// Splits into drive ("C:"), directory (with its last separator), name and extension (with its point). Forward slashes
/// separate as well. A null pointer means that the part isn't wanted. The parts put together give the path again.
ZKBASE_API void SplitPath(std::wstring const & sPath, std::wstring * psDrive, std::wstring * psDir,
                          std::wstring * psName, std::wstring * psExt);

/// Puts the parts together again. Any may be null. A drive gets its colon, a directory its last separator and an
/// extension its point where they lack.
[[nodiscard]] ZKBASE_API std::wstring sMakePath(wchar_t const * pzDrive, wchar_t const * pzDir, wchar_t const * pzName,
                                                wchar_t const * pzExt);

/// Removes one backslash at the end; that of a root ("C:\", "\") stays.
ZKBASE_API void PathRemoveBackslashW(std::wstring & sPath);

/// Removes the last component with its backslash; a root stays. Returns whether anything was removed.
ZKBASE_API bool fPathRemoveFileSpec(std::wstring & sPath);

/// The longest common leading path by whole components, found without regard to case and given in the spelling of
/// `pzFirst`. The root is a component and keeps its backslash: "C:\a" and "C:\b" have "C:\".
[[nodiscard]] ZKBASE_API std::wstring sPathCommonPrefix(wchar_t const * pzFirst, wchar_t const * pzSecond);

/// True when the path holds `*` or `?`; the question mark of the prefix "\\?\" is none.
[[nodiscard]] ZKBASE_API bool fPathContainsWildcard(std::wstring const & sPath);

/// True for a path with neither a drive nor a leading backslash. "C:a" is not relative in this sense, "" is.
[[nodiscard]] ZKBASE_API bool fPathIsRelative(wchar_t const * pzPath);

/// True for the root of a drive ("C:\"), a lone backslash, and a share ("\\server\share"). A bare server is no root.
[[nodiscard]] ZKBASE_API bool fPathIsRoot(wchar_t const * pzPath);

/// True for a path that begins with two backslashes, whatever follows.
[[nodiscard]] ZKBASE_API bool fPathIsUNC(wchar_t const * pzPath);

/// True for a bare server name in that form: two backslashes and no further one.
[[nodiscard]] ZKBASE_API bool fPathIsUNCServer(wchar_t const * pzPath);

} // namespace path_func
