/// Path arithmetic: splitting and joining, relative and absolute forms, checks of names, replacement of characters.
///
/// A path is a wide string in the Windows form. The backslash is the separator; a forward slash separates only where it
/// is said. Strings alone are looked at, never the disk, but for the drives (`fIsValidDrive`, `fIsValidPath`) and the
/// network (`sConvertToUNC`). Paths and names may have any length, no pointer may be null where null is not said to
/// have a meaning, and nothing throws but `xIsValidName`.
#pragma once

#include "ZkTools/Export.h"

#include <optional>
#include <string>
#include <vector>

/// Whether the directory of a split path keeps the backslash at its end. Any value but 0 keeps it.
enum EBackshlash : int {
    eBackshlashRemove = 0, ///< "C:\dir"; that of a root stays all the same: "C:\"
    eBackshlashKeep = 1,   ///< "C:\dir\"
};

/// The parts of a path.
struct ZKTOOLS_API TSplitPath {
    std::wstring sExtension; ///< with its point; empty when there is none
    std::wstring sName;      ///< the file name without extension
    std::wstring sDirectory; ///< drive and directory
};

/// Splits a path into directory, name and extension. Here a forward slash separates too. What stands behind the last
/// separator is the name, also where it is the name of a directory.
[[nodiscard]] ZKTOOLS_API TSplitPath SplitPath(std::wstring const & sPath, EBackshlash eBackshlash);

/// The same; nothing when the path names no file ("C:\dir\", "C:", "").
[[nodiscard]] ZKTOOLS_API std::optional<TSplitPath> pSplitPath(std::wstring const & sPath, EBackshlash eBackshlash);

/// The file name with its extension.
[[nodiscard]] ZKTOOLS_API std::wstring sGetFileName(TSplitPath const & tSplit);

/// Joins directory and name with one backslash. A name that is a full path of its own is the result itself.
[[nodiscard]] ZKTOOLS_API std::wstring sMerge(std::wstring const & sDirectory, std::wstring const & sName);

/// Joins directory, name and extension. The extension gets its point where it lacks; an empty one adds nothing.
[[nodiscard]] ZKTOOLS_API std::wstring sMerge(std::wstring const & sDirectory, std::wstring const & sName,
                                              std::wstring const & sExtension);

/// The path without its last component. A root comes back as it is.
[[nodiscard]] ZKTOOLS_API std::wstring sPathRemoveFileSpec(std::wstring const & sPath);

/// The path with another extension, which may lack its point, or be empty: then the point goes too.
/// \param fNameOnly true leaves the directory out of the result
[[nodiscard]] ZKTOOLS_API std::wstring sReplaceFileExtention(std::wstring const & sPath, wchar_t const * pzNewExtension,
                                                             bool fNameOnly);

/// The file name of the path in another directory.
[[nodiscard]] ZKTOOLS_API std::wstring sReplaceDirectory(std::wstring const & sPath,
                                                         std::wstring const & sNewDirectory);

/// Joins three parts. An empty part changes nothing.
[[nodiscard]] ZKTOOLS_API std::wstring sGetFullPath(wchar_t const * pzFirst, wchar_t const * pzSecond,
                                                    wchar_t const * pzThird);

/// Removes one backslash at the end, in place; that of a root stays.
ZKTOOLS_API void ClearBackslash(std::wstring & sPath);
/// A copy without one backslash at the end; that of a root stays.
[[nodiscard]] ZKTOOLS_API std::wstring sClearBackslash(std::wstring const & sPath);
/// A copy that ends in a backslash. The empty text becomes a lone one.
[[nodiscard]] ZKTOOLS_API std::wstring sAppendBackslash(std::wstring const & sPath);
/// A copy that ends in a forward slash. The empty text becomes a lone one.
[[nodiscard]] ZKTOOLS_API std::wstring sAppendSlash(std::wstring const & sPath);

/// The longest common leading path by whole components, found without regard to case, in the spelling of the first.
/// The root is a component: "C:\a" and "C:\b" have "C:\".
[[nodiscard]] ZKTOOLS_API std::wstring sGetCommonPrefix(std::wstring const & sFirst, std::wstring const & sSecond);

/// True for a path with a drive ("C:\a", but "C:a" as well) and for one that begins with two backslashes.
[[nodiscard]] ZKTOOLS_API bool fIsAbsolutePath(std::wstring const & sPath);

/// True when this machine has the drive of the path now, and for every path that begins with two backslashes. A path
/// without a drive has no valid one.
[[nodiscard]] ZKTOOLS_API bool fIsValidDrive(std::wstring const & sPath);

/// True when no component of the path has a character that none may have: `/ : * ? " < > |`. The colon of a drive that
/// this machine has, and the backslashes, are allowed; with a drive that it lacks a path is invalid.
[[nodiscard]] ZKTOOLS_API bool fIsValidPath(std::wstring const & sPath);

/// True when the name holds none of the invalid characters. An empty name is valid.
/// \param pzInvalid the invalid characters; null means `/ \ : * ? " < > |` and the registered sign (U+00AE)
[[nodiscard]] ZKTOOLS_API bool fIsValidName(wchar_t const * pzName, wchar_t const * pzInvalid);

/// The same test.
/// \throws TXZkTools with message 4328 (the invalid characters) when the name holds one
ZKTOOLS_API void xIsValidName(wchar_t const * pzName, wchar_t const * pzInvalid);

/// True when the second path is the first one or lies below it, without regard to case and by whole components. The
/// first path is to be given without a backslash at its end, unless it is a root: with one it has no children.
[[nodiscard]] ZKTOOLS_API bool fPathIsChild(std::wstring const & sFirst, std::wstring const & sSecond);

/// Turns each forward slash into a backslash, in place.
ZKTOOLS_API void ReplaceSlashByBackSlash(std::wstring & sPath);
/// Turns each backslash into a forward slash, in place.
ZKTOOLS_API void ReplaceBackSlashBySlash(std::wstring & sPath);
/// Makes two backslashes of each, in place.
ZKTOOLS_API void ReplaceBackSlashByDoubleBackSlash(std::wstring & sPath);

/// Replaces the invalid characters of a zero-terminated text in its buffer.
/// \param pzInvalid    the invalid characters; null means the default of `fIsValidName`
/// \param cReplacement what comes in their place; 0 removes them. It must not be an invalid character itself: the call
///                     would never end.
/// \returns the position of the last character replaced, and the start of the buffer when none was found or when they
///          were removed. Who needs the start keeps a pointer to it.
ZKTOOLS_API wchar_t * pzReplaceInvalidNameChars(wchar_t * pzBuffer, wchar_t const * pzInvalid, wchar_t cReplacement);

/// The same on a string, in place.
ZKTOOLS_API void ReplaceInvalidNameChars(std::wstring & sName, wchar_t const * pzInvalid, wchar_t cReplacement);
/// The same on a copy.
[[nodiscard]] ZKTOOLS_API std::wstring sReplaceInvalidNameChars(std::wstring const & sName, wchar_t const * pzInvalid,
                                                                wchar_t cReplacement);

/// A copy in which the characters that trouble a URI are replaced: blank, line feed and
/// `% " # @ : < > [ \ ] ^ { | } ~` with the back-quote.
/// \param cReplacement what comes in their place, one of themselves included; 0 removes them
[[nodiscard]] ZKTOOLS_API std::wstring sReplaceNotUriCharInFileName(std::wstring const & sName, wchar_t cReplacement);

/// Removes each point with a backslash behind it, in place, and leaves those of "..\" alone. It looks no further: the
/// name "dir." in front of a backslash loses its point and the backslash, too.
ZKTOOLS_API void StripDotBSlash(std::wstring & sPath);

/// The network form ("\\server\share\...") of a path on a connected drive. Every other path, and any failure, gives
/// the path itself.
[[nodiscard]] ZKTOOLS_API std::wstring sConvertToUNC(std::wstring const & sPath);

/// The path, then each of its ancestors, the nearest first, up to the root.
/// \returns nothing for a path that is relative, shorter than three characters, a bare server, neither a network path
///          nor one that begins with a letter, a colon and a backslash, or without a root at its end
[[nodiscard]] ZKTOOLS_API std::vector<std::wstring> GetPathAndAncestors(std::wstring const & sPath);

/// The way from a directory to a file, "..\" for each level up. The case of the common part (that of `towupper`) does
/// not matter.
/// \param pzBase the directory, with or without a backslash at its end
/// \returns the path as it stands when the two have nothing in common, as on different drives
[[nodiscard]] ZKTOOLS_API std::wstring sMakePathRelative(wchar_t const * pzBase, wchar_t const * pzPath);

/// The way from a directory to a directory, never with a backslash at its end: ".." for the parent, the empty text for
/// the directory itself.
[[nodiscard]] ZKTOOLS_API std::wstring sMakeDirRelative(wchar_t const * pzBase, wchar_t const * pzDirectory);

/// The same for strings, with two differences: a backslash at the end of `sDirectory` stays in the result, and so does
/// the one of the last level up ("..\" for the parent).
[[nodiscard]] ZKTOOLS_API std::wstring sMakeDirRelative(std::wstring const & sBase, std::wstring const & sDirectory);

/// The path that `pzPath` is, seen from the directory `pzBase`. All components but the last are resolved: empty ones
/// fall out, ".." climbs; a "." is a component like any other. The last one is taken as it stands, so that a backslash
/// at the end stays, a final ".." stays too, and an empty path gives the base with a backslash.
/// \returns `pzPath` as it stands when it is absolute (`fIsAbsolutePath`), or climbs higher than the base is deep
[[nodiscard]] ZKTOOLS_API std::wstring sMakePathAbsolute(wchar_t const * pzBase, wchar_t const * pzPath);

/// The same, with a file name appended.
[[nodiscard]] ZKTOOLS_API std::wstring sMakePathAbsolute(wchar_t const * pzBase, wchar_t const * pzPath,
                                                         wchar_t const * pzFile);
