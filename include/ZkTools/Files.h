/// Files and directories on the disk: what there is, what is in it, how big and how old it is, making directories, and
/// free names.
///
/// Paths may have any length. A function with the prefix `f` answers false where another one throws, and leaves the
/// reason to `GetLastError`; what is thrown is a TXZkTools, unless told otherwise. No pointer may be null.
///
/// Whether something exists is asked by a search that takes the path for a pattern: a path with wildcards exists when
/// anything matches, and a root ("C:\") or a path with a backslash at its end does not exist. What asks for a directory
/// by that name (`fExistDirectory`, and the functions on what is in it) takes such paths.
#pragma once

#include "ZkBase/Windows.h"
#include "ZkTools/DateTime.h"
#include "ZkTools/Export.h"

#include <string>

/// True when the directory exists.
[[nodiscard]] ZKTOOLS_API bool fExistDirectory(wchar_t const * pzPath);
/// Demands that the directory exists.
/// \throws TXZkTools with message 4251 (path) when it does not
ZKTOOLS_API void ExistDirectory(wchar_t const * pzPath);
/// Demands that the directory does not exist.
/// \throws TXZkTools with message 4212 (path) when it does
ZKTOOLS_API void NotExistDirectory(wchar_t const * pzPath);

/// True when a file or directory of that path exists.
[[nodiscard]] ZKTOOLS_API bool fExistFileOrDirectory(wchar_t const * pzPath);
/// Demands that a file or directory of that path exists.
/// \throws TXZkTools with message 4250 (path) when none does
ZKTOOLS_API void ExistFileOrDirectory(wchar_t const * pzPath);
/// Demands that no file or directory of that path exists.
/// \throws TXZkTools with message 4211 (path) when one does
ZKTOOLS_API void NotExistFileOrDirectory(wchar_t const * pzPath);

/// The same for paths that may be drives: a path of less than four characters is always taken for one ("C:", "C:\"),
/// unless it begins with two backslashes. It exists when the system knows of its drive, a medium in it or not; the
/// name of a file that is so short does not.
[[nodiscard]] ZKTOOLS_API bool fExistFileOrDirectoryOrDrive(wchar_t const * pzPath);

/// True when a file of that path exists; a directory is none. Of several that match a pattern, the first one counts.
[[nodiscard]] ZKTOOLS_API bool fExistFile(wchar_t const * pzPath);

/// True when nothing is in the directory, and when there is no such directory.
/// \param fIgnoreDirectories true: only files count, all of them. False: files and directories count, but none whose
///                           name begins with a point.
[[nodiscard]] ZKTOOLS_API bool fIsDirectoryEmpty(wchar_t const * pzDirectory, bool fIgnoreDirectories);

/// True when the directory has a subdirectory whose name does not begin with a point.
[[nodiscard]] ZKTOOLS_API bool fHasSubDirectory(wchar_t const * pzDirectory);

/// True when the directory holds nothing but "zkfolder.config", in just this spelling, and names that begin with a
/// point, and when there is no such directory.
[[nodiscard]] ZKTOOLS_API bool fIsDirectoryEmptyExceptFolderConfig(wchar_t const * pzDirectory);

/// Makes the directory and every missing parent. True as well when it exists. On false `GetLastError` tells why; a
/// file in the way is error 183 (`ERROR_ALREADY_EXISTS`).
ZKTOOLS_API bool fMakeDirectory(wchar_t const * pzPath);

/// The same.
/// \throws TXZkTools with the system's reason, behind it message 4211 (path without backslash at its end) when a file
///         is in the way, and 4210 (path)
ZKTOOLS_API void MakeDirectory(wchar_t const * pzPath);

/// Makes a new directory "ZK1", "ZK2" and so on below the user's directory for temporary files, the first that is
/// free. No two callers get the same. The caller removes it.
/// \returns its path, without a backslash at the end
/// \throws TXZkTools with the system's reason
[[nodiscard]] ZKTOOLS_API std::wstring sMakeTempDir();

/// Makes a new directory with a UUID for its name, and every missing parent. The caller removes it.
/// \returns its path
/// \throws TXZkTools as `MakeDirectory` does
[[nodiscard]] ZKTOOLS_API std::wstring sCreateTempDir(std::wstring const & sBase);

/// The same: `sDirectory` becomes the path of the new directory. False, with `sDirectory` as it was, when it cannot be
/// made.
[[nodiscard]] ZKTOOLS_API bool fCreateUniqueDir(std::wstring & sDirectory);

/// True when a file of that path can be created; tries it, and leaves none behind. To be asked about free names only:
/// a file that is there is emptied and deleted.
[[nodiscard]] ZKTOOLS_API bool fCanCreateFile(wchar_t const * pzPath);

/// The system's `CreateFileW`, for a file that gets the hidden attribute when it is made.
/// \param dwFlags flags and attributes, without the hidden one
/// \returns the handle, which the caller closes; `INVALID_HANDLE_VALUE` with the reason in `GetLastError`
[[nodiscard]] ZKTOOLS_API HANDLE CreateHiddenFile(std::wstring const & sPath, DWORD dwAccess, DWORD dwShare,
                                                  SECURITY_ATTRIBUTES * pSecurity, DWORD dwDisposition, DWORD dwFlags,
                                                  HANDLE hTemplate);

/// The full path of a free name: "name.extension", or else "name_2.extension" with the first number from 2 on that is
/// free. The point stands also before an empty extension. Nothing reserves the name: somebody else may take it.
/// \param sExtension without its point
[[nodiscard]] ZKTOOLS_API std::wstring sGetUniqueFilePath(std::wstring const & sDirectory, std::wstring const & sName,
                                                          std::wstring const & sExtension);

/// A free name in the directory: "name", or else "name (2)" with the first number from 2 on that is free. In spite of
/// its name it gives the name alone, without the directory. Nothing reserves it.
[[nodiscard]] ZKTOOLS_API std::wstring sGetUniqueDirPath(std::wstring const & sDirectory, std::wstring const & sName);

/// The size of a file in bytes, modulo 4 GiB; 0 when there is none.
[[nodiscard]] ZKTOOLS_API unsigned long dwGetFileSize(wchar_t const * pzPath);
/// The same number in decimal.
[[nodiscard]] ZKTOOLS_API std::wstring sGetFileSize(wchar_t const * pzPath);

/// The sizes of all files in the directory and below it, in bytes. What cannot be read counts as empty.
[[nodiscard]] ZKTOOLS_API unsigned __int64 uiGetDirectorySize(std::wstring const & sPath);

/// When the file or directory was last written, in UTC. False when there is none; `tTime` stays as it is then.
ZKTOOLS_API bool fGetLastWriteTime(wchar_t const * pzPath, FILETIME & tTime);
ZKTOOLS_API bool fGetLastWriteTime(wchar_t const * pzPath, TZkDateTime & tTime);

/// The same in local time, with the shift that is in force today. False when there is none, or the system cannot tell;
/// `tTime` stays as it is then.
ZKTOOLS_API bool fGetLocalLastWriteTime(wchar_t const * pzPath, TZkDateTime & tTime);

/// Sets when the file was last written, in UTC. Its other times stay, and a file that does not exist is passed over.
/// \returns false, whether it was set or not
/// \throws TXZkTools as `TFStream::Open` does when the file cannot be opened for writing
ZKTOOLS_API bool fSetLastWriteTime(wchar_t const * pzPath, TZkDateTime const & tTime);

/// Sets when the file was made, in UTC. Its other times stay, and a file that does not exist is passed over.
/// \throws TXZkTools as `TFStream::Open` does when the file cannot be opened for writing
ZKTOOLS_API void SetCreationTime(std::wstring const & sPath, TZkDateTime const & tTime);

/// Sets when the file was last written, in UTC. Its other times stay.
/// \throws std::system_error with the system's error when the file cannot be opened or its time not be set
ZKTOOLS_API void SetLastWriteTime(std::wstring const & sPath, FILETIME const & tTime);

/// True when the two paths are the same text, but for case and one backslash at the end (that of a root counts). The
/// disk is not asked. Case is that of `_wcsicmp`: in the C locale A to Z alone.
[[nodiscard]] ZKTOOLS_API bool fDirectoriesOrFilesAreEqual(std::wstring const & sFirst, std::wstring const & sSecond);

/// True when the directory is the parent or lies below it, as texts without regard to case (that of `_wcsicmp`), with
/// or without backslashes at their ends.
[[nodiscard]] ZKTOOLS_API bool fCheckSubDir(wchar_t const * pzDirectory, wchar_t const * pzParent);

/// The name of the first subdirectory that the system finds and whose name does not begin with a point; empty when
/// there is none. There may be others.
[[nodiscard]] ZKTOOLS_API std::wstring sGetSingleSubDir(std::wstring const & sDirectory);
