/// Path arithmetic on Windows paths: strings only, the disk is never asked.
///
/// The backslash is the separator, and a forward slash is an ordinary character but where `SplitPath` and `sMakePath`
/// say so. A root is "X:\", a lone backslash, or a share, and the same behind "\\?\": "\\?\X:\",
/// "\\?\UNC\server\share", and the first component of any other path behind that prefix, with its backslash. For all
/// that is not told here the functions do what the platform's functions of the same names do, without their limit of
/// 260 characters.
#pragma once

#include "ZkBase/Export.h"

#include <string>

namespace path_func {

/// Joins two parts with one backslash. An empty part changes nothing, backslashes in front of `sMore` are dropped, and
/// neither `.` nor `..` is resolved. A `sMore` that names a drive or begins with two backslashes is the result itself.
/// What stands in `sPath` is not changed: "C:" gives "C:\a", and of two backslashes at its end both stay.
[[nodiscard]] ZKBASE_API std::wstring sPathAppend(std::wstring const & sPath, std::wstring const & sMore);

/// Splits into drive ("C:"), directory (with its last separator), name and extension (with its point). Forward slashes
/// separate as well. A null pointer means that the part isn't wanted. The parts put together give the path again. A
/// drive stands at the very start: a network path, and any behind "\\?\", has none. The extension begins at the last
/// point of the name, even where that is its first character (".git" is all extension).
ZKBASE_API void SplitPath(std::wstring const & sPath, std::wstring * psDrive, std::wstring * psDir,
                          std::wstring * psName, std::wstring * psExt);

/// Puts the parts together again. Any may be null. Of a drive the first character counts, and a colon comes behind it;
/// a directory gets its last separator and an extension its point where they lack.
[[nodiscard]] ZKBASE_API std::wstring sMakePath(wchar_t const * pzDrive, wchar_t const * pzDir, wchar_t const * pzName,
                                                wchar_t const * pzExt);

/// Removes one backslash at the end; those of a root ("C:\", "\") and of a bare "\\" stay.
ZKBASE_API void PathRemoveBackslashW(std::wstring & sPath);

/// Removes the last component with its backslash; a backslash at the end counts as one with an empty component behind
/// it. A root stays, and so do "X:" and a bare server. Returns whether anything was removed.
ZKBASE_API bool fPathRemoveFileSpec(std::wstring & sPath);

/// The longest common leading path by whole components, found without regard to case and given in the spelling of
/// `pzFirst`. The root is a component and keeps its backslash: "C:\a" and "C:\b" have "C:\". Two shares of one server
/// have "\\server". The result has a backslash at its end only if it is a root, or if both paths end there.
[[nodiscard]] ZKBASE_API std::wstring sPathCommonPrefix(wchar_t const * pzFirst, wchar_t const * pzSecond);

/// True when the path holds `*` or `?`; the question mark of the prefix "\\?\" is none.
[[nodiscard]] ZKBASE_API bool fPathContainsWildcard(std::wstring const & sPath);

/// True for a path with neither a drive nor a leading backslash. "C:a" is not relative in this sense, "" is.
[[nodiscard]] ZKBASE_API bool fPathIsRelative(wchar_t const * pzPath);

/// True for the root of a drive ("C:\"), a lone backslash, and a share ("\\server\share", without a backslash at its
/// end), and for what these are behind "\\?\". A bare server is no root.
[[nodiscard]] ZKBASE_API bool fPathIsRoot(wchar_t const * pzPath);

/// True for a path that begins with two backslashes, whatever follows.
[[nodiscard]] ZKBASE_API bool fPathIsUNC(wchar_t const * pzPath);

/// True for a bare server name in that form: two backslashes, or "\\?\UNC\", and no further one.
[[nodiscard]] ZKBASE_API bool fPathIsUNCServer(wchar_t const * pzPath);

} // namespace path_func
