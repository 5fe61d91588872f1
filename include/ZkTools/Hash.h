/// Fingerprints of files: 32 hexadecimal digits in upper case, to tell whether two files are the same.
///
/// A plain file is hashed by its bytes, as the installer of the platform does it (`MsiGetFileHash`). An archive in ZIP
/// form is hashed by its table of contents: by name, checksum (CRC-32) and size of each member, so that archives with
/// the same members are equal, whatever the times, the compression and the order of the members.
///
/// Paths of archives may have any length.
#pragma once

#include "ZkTools/Export.h"

#include <string>

/// True when the file begins as an archive does, with the header of a member. An archive with something in front, such
/// as one that unpacks itself, is none here, and one without members neither. False as well for a file that can't be
/// opened or read.
[[nodiscard]] ZKTOOLS_API bool fIsZipFile(std::wstring const & sPath);

/// The hash of an archive's table of contents: the first 16 bytes of a SHA-1. No member is unpacked. Names count as the
/// bytes that the archive has for them, up to a zero and up to 32767 of them, sizes modulo 4 GiB; an archive without
/// members has a hash too.
/// \throws std::runtime_error, and no TXZkTools, with a narrow text that names the step that failed ("unzGetGlobalInfo
///         failed"): for what can't be opened, is no archive or a damaged one, has a member packed by another method
///         than stored, deflated or bzip2, is larger than 4 GiB, or has exactly 65535 members
[[nodiscard]] ZKTOOLS_API std::wstring sGetZipFileHash(std::wstring const & sPath);

/// The hash of a file's bytes.
/// \throws TXZkTools with the text "MsiGetFileHash failed"
[[nodiscard]] ZKTOOLS_API std::wstring sMsiGetFileHash(std::wstring const & sPath);

/// That of an archive (`sGetZipFileHash`) when `fIsZipFile` says so, otherwise that of the bytes. A damaged archive
/// does not fall back on its bytes.
/// \throws what the two throw
[[nodiscard]] ZKTOOLS_API std::wstring sGetFileHash(std::wstring const & sPath);
