/// Copying: a file, the files of a directory, a whole tree; appending a file to another, writing a resource to a file,
/// and what is needed to decide whether a copy is due.
///
/// Paths may have any length. A function with the prefix `f` answers false where its twin throws. What is thrown is a
/// TXZkTools, unless told otherwise. What a copy of a tree has copied stays when it fails. No pointer may be null that
/// is not said to.
#pragma once

#include "ZkBase/Windows.h"
#include "ZkTools/Export.h"

#include <functional>
#include <string>

/// How a file is copied: bits, combined by `|`.
enum ECopyFile : int {
    eCopyDefault = 0,      ///< a target that exists is overwritten, and the copy can be written to
    eCopyFailIfExists = 1, ///< a target that exists is a failure
    eCopyKeepReadOnly = 2, ///< the copy is read-only where the source is
};

[[nodiscard]] constexpr ECopyFile operator|(ECopyFile eFirst, ECopyFile eSecond) noexcept {
    return static_cast<ECopyFile>(static_cast<int>(eFirst) | static_cast<int>(eSecond));
}

/// Copies a file with its attributes and its time of writing. A target that is read-only is not overwritten.
/// \throws TXZkTools with message 4345 (source, target) and the system's reason
ZKTOOLS_API void DoCopyFile(wchar_t const * pzSource, wchar_t const * pzTarget, ECopyFile eCopy);
/// The same, with a time of writing of its own for the copy, in UTC.
/// \param pLastWrite null: that of the source
/// \throws TXZkTools as above, or as `TFStream::Open` does when the copy, which stays, can't be opened for writing: it
///         is read-only, or has 4 GiB and more
ZKTOOLS_API void DoCopyFile(wchar_t const * pzSource, wchar_t const * pzTarget, ECopyFile eCopy,
                            FILETIME const * pLastWrite);
/// The same two. When the file could not be copied `GetLastError` tells why: `ERROR_FILE_EXISTS` for a target that
/// exists and may not be overwritten.
ZKTOOLS_API bool fDoCopyFile(wchar_t const * pzSource, wchar_t const * pzTarget, ECopyFile eCopy);
ZKTOOLS_API bool fDoCopyFile(wchar_t const * pzSource, wchar_t const * pzTarget, ECopyFile eCopy,
                             FILETIME const * pLastWrite);

/// Copies a file over one that may exist. The copy is read-only where the source is. On false `GetLastError` tells why.
ZKTOOLS_API bool fCopyFile(std::wstring const & sSource, std::wstring const & sTarget);

/// Copies a file into a directory, which must exist.
/// \param iNumber 0 and more: stands behind the name, "name-3.txt"; negative: the name stays
/// \returns the path of the copy
/// \throws TXZkTools as `DoCopyFile` does
ZKTOOLS_API std::wstring sCopyFileToDirectory(std::wstring const & sSource, std::wstring const & sDirectory,
                                              ECopyFile eCopy, int iNumber);

/// Copies the files of a directory, over those that exist, but none that is hidden or belongs to the system, and no
/// subdirectory. A missing target is made. Without a source, or when the target can't be made, it does nothing and
/// tells nothing.
/// \param fnFilter gets the path of each file and tells whether it is copied
/// \throws TXZkTools as `DoCopyFile` does; std::bad_function_call at the first file for an empty filter
ZKTOOLS_API void CopyFiles(std::wstring const & sSource, std::wstring const & sTarget,
                           std::function<bool(std::wstring const &)> fnFilter);

/// Copies a directory with all that is in it into a target, which is made where it is missing. A source that can't be
/// searched is empty. The target must not lie in the source: it would be copied into itself until the paths end.
/// \param fOverwrite false: a target that exists is kept, as `fnNotify` decides
/// \param fnFilter   gets the attributes and the path of every file and directory and tells whether it is copied
/// \param fnNotify   gets the empty text and the path of a finished copy; its answer doesn't count. It gets the paths
///                   of source and target when that one exists and may not be overwritten: false goes on with the
///                   next entry, true ends the work in this directory, without a failure; what is above goes on. It may
///                   be empty.
///
/// Each directory below has copies of its own of both, as they are when it is reached.
/// \throws TXZkTools as `MakeDirectory` does for a directory that can't be made, with the system's reason alone for a
///         file that can't be copied, one that exists included when `fnNotify` is empty; std::bad_function_call at the
///         first entry for an empty filter
ZKTOOLS_API void CopyDirectory(std::wstring const & sSource, std::wstring const & sTarget, bool fOverwrite,
                               std::function<bool(unsigned long, std::wstring const &)> fnFilter,
                               std::function<bool(std::wstring const &, std::wstring const &)> fnNotify);

/// Appends a file to another one, which is made where it is missing. Nobody else may have either open. `GetLastError`
/// is 0 afterwards.
/// \throws TXZkTools with message 4292 (source, target), message 4215 (path) when one of the two can't be opened, and
///         the system's reason. What could be written stays in the target; there may be pieces missing from its middle.
ZKTOOLS_API void AppendFile(std::wstring const & sTarget, std::wstring const & sSource);

/// Writes a resource of the type `RT_RCDATA` to a file as it is, and the file to the disk. The file and its directory
/// are made where they are missing. A resource that is not there, or is empty, is passed over without a trace.
/// \throws TXZkTools as `TFStream` does, the system's reason first
ZKTOOLS_API void WriteResToFile(HMODULE hModule, unsigned int uId, wchar_t const * pzPath);

/// True when a file is to be taken as changed.
///
/// The test reads the other way round from what its name suggests, and callers rely on it: a file that was written at
/// that very time is changed, whatever its size. One that was written at another time is unchanged when it has that
/// size, otherwise changed. One that is not there is changed.
/// \param tTime when the file was last written, in UTC, as the caller knows it
/// \param tSize its size in bytes, as the caller knows it
[[nodiscard]] ZKTOOLS_API bool fCheckFileParams(std::wstring const & sPath, FILETIME const & tTime,
                                                ULARGE_INTEGER const & tSize);

/// The times of a file, in UTC, and its size in bytes.
/// \throws TXZkTools with the system's reason alone when there is none; the four stay as they are then
ZKTOOLS_API void GetFileParams(std::wstring const & sPath, FILETIME & tCreation, FILETIME & tLastAccess,
                               FILETIME & tLastWrite, ULARGE_INTEGER & tSize);
