/// Renaming, safe replacement and deletion of files and directories, and whether a place can be written to.
///
/// Paths may have any length, but for deletion by the shell. A function with the prefix `f` answers false where its
/// twin with the prefix `x` throws, and loses the reason; the two tests for read-only places leave it to
/// `GetLastError`. What is thrown is a TXZkTools. A deletion that fails halfway leaves what it had not reached; nothing
/// is brought back. No pointer may be null.
#pragma once

#include "ZkTools/Export.h"

#include <string>

/// Gives a file or directory another name, which may lie in another directory of the same volume. Returns when that is
/// on the disk.
/// \param pzNew            a name that ends in white space is refused without a look at the disk; the system's reason
///                         behind the message is then whatever `GetLastError` happens to say
/// \param fReplaceExisting a file of the new name is overwritten; a directory never is
/// \throws TXZkTools with message 4230 (old, new) and the system's reason
ZKTOOLS_API void Rename(wchar_t const * pzOld, wchar_t const * pzNew, bool fReplaceExisting);

/// The same for a name that a person has typed: white space at both ends of the new name doesn't count.
/// \throws TXZkTools with message 4230 (old, new as given) and the text of 4535 when the new name ends in a slash or
///         backslash; otherwise as `Rename`, with the name that was tried
ZKTOOLS_API void RenameWithValidation(std::wstring const & sOld, std::wstring const & sNew, bool fReplaceExisting);

/// Puts one file in the place of another, which must exist; that one's access rights and creation time stay. Where the
/// file to be replaced can't be removed (`ERROR_UNABLE_TO_REMOVE_REPLACED`), as on a busy share, it tries three times
/// more, 10 ms apart.
/// \throws TXZkTools with message 4231 (replaced, replacement) and the system's reason
ZKTOOLS_API void Replace(wchar_t const * pzReplaced, wchar_t const * pzReplacement);

/// Moves a file over another one, which need not exist, also between volumes. The content is copied into a neighbour of
/// the target, its name with ".~1" behind it, which then takes the target's place; only then the source goes. One that
/// can't be deleted stays, and nothing tells.
///
/// The target has its whole old or its whole new content, also when the process is killed. The system takes the old
/// file away in the instant before it puts the new one in its place: killed just then there is no target, and the
/// neighbour and the source both have the new content. The next replacement overwrites the neighbour.
///
/// The two must not be the same file: as the source it would be deleted at the end.
/// \throws TXZkTools with message 4231 (neighbour, source) when the copy fails, otherwise with message 4230 (neighbour,
///         target), and the system's reason. The source is intact, and the neighbour is gone where it can be deleted.
ZKTOOLS_API void ReplaceEx(std::wstring const & sSource, std::wstring const & sTarget);

/// True when no file can be made in the directory, whatever the cause: also when it doesn't exist. Makes the file
/// "rwtst000.___" to find out, which vanishes at once.
[[nodiscard]] ZKTOOLS_API bool fIsDirReadOnly(std::wstring const & sDirectory);

/// True when the file can't be opened for writing, whatever the cause: also when it doesn't exist, when it is a
/// directory, or when somebody keeps others from writing.
[[nodiscard]] ZKTOOLS_API bool fIsFileReadOnly(std::wstring const & sPath);
/// The same for a name in a directory.
[[nodiscard]] ZKTOOLS_API bool fIsFileReadOnly(std::wstring const & sDirectory, std::wstring const & sName);

/// How something is deleted: bits, combined by `|`.
enum EDeleteFileOrFolder : int {
    eDeleteDirect = 0, ///< at once and for good
    /// By the shell, into the recycle bin. It wants full paths with backslashes, and may refuse what is longer than 259
    /// characters. The caller has initialised COM.
    eDeleteAllowUndo = 1,
    /// What could not be deleted is also put down for deletion at the next start of the machine, with all that is in
    /// it. That takes an administrator's rights, and whether it could be put down is not told. A pattern is put down
    /// as it stands, which deletes nothing.
    eDeleteAtRebootOnFailure = 4,
};

[[nodiscard]] constexpr EDeleteFileOrFolder operator|(EDeleteFileOrFolder eFirst,
                                                      EDeleteFileOrFolder eSecond) noexcept {
    return static_cast<EDeleteFileOrFolder>(static_cast<int>(eFirst) | static_cast<int>(eSecond));
}

/// Deletes a file, a directory with all that is in it, or everything that a pattern matches. The read-only attribute of
/// files is no protection. A link to a directory is gone into: what it leads to is deleted too.
/// \param sPath with a wildcard in it a pattern: names that begin with a point are left alone, and a pattern that
///              matches nothing is no failure
/// \throws TXZkTools with message 4220 (the item) and the reason, of the system or of the shell; the first failure ends
///         the deletion
ZKTOOLS_API void xZkDeleteFileOrFolder(std::wstring const & sPath, EDeleteFileOrFolder eDelete);
/// The same. The text of the failure goes to the debugger's output.
ZKTOOLS_API bool fZkDeleteFileOrFolder(std::wstring const & sPath, EDeleteFileOrFolder eDelete);

/// Deletes what is in a directory, names that begin with a point included, and keeps the directory. One that can't be
/// searched, or isn't there, is empty; to the shell (`eDeleteAllowUndo`) it is a failure. Without the shell the empty
/// path is the *current directory*.
/// \param fRecursive false: files only, every subdirectory stays
/// \throws TXZkTools with message 4220 (the item; the directory when the shell deletes) and the reason
ZKTOOLS_API void xZkClearDirectory(std::wstring const & sDirectory, bool fRecursive, EDeleteFileOrFolder eDelete);
/// The same; nothing tells of the failure.
ZKTOOLS_API bool fZkClearDirectory(std::wstring const & sDirectory, bool fRecursive, EDeleteFileOrFolder eDelete);

/// Deletes as `xZkDeleteFileOrFolder` with `eDeleteDirect` does. In spite of its name it takes directories too.
ZKTOOLS_API void xRemoveFiles(std::wstring const & sPath);
/// The same; nothing tells of the failure.
ZKTOOLS_API bool fRemoveFiles(std::wstring const & sPath);
