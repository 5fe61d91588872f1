/// Working copies of version control, known by their marker files alone: no version-control program is called, and none
/// has to be there.
///
/// Paths are absolute; a relative one lies in no working copy.
#pragma once

#include "ZkTools/Export.h"

#include <string>

/// What keeps a directory under version control, and in which format: eWcFormat... is Subversion up to 1.6,
/// eWcDbFormat... from 1.7 on. The values are the ones that callers store.
enum ESvnVersion : int {
    eWcNone = 0,       ///< nothing, or a format that is not listed here
    eWcFormat7 = 1,    ///< format 7
    eWcFormat8 = 2,    ///< format 8
    eWcFormat9 = 3,    ///< format 9
    eWcFormat10 = 4,   ///< format 10
    eWcDbFormat29 = 5, ///< the data base "wc.db" in format 29; the value is the format less 24
    eWcDbFormat31 = 7, ///< the data base in format 31
    eWcGit = 32767     ///< Git, in any format
};

/// The kind of working copy that the path lies in. Where it lies in one of both kinds it is Subversion's.
///
/// Git is found from every place below its root. The format of Subversion is looked for in the path itself and not in
/// its parents: a subdirectory of a working copy that has its one ".svn" at the root answers `eWcNone`. Ask for
/// `sGetWorkingCopyRoot` of it instead. A path with a backslash at its end answers the same as without.
/// \throws TXZkTools 4215 when the file that tells the format cannot be opened
[[nodiscard]] ZKTOOLS_API ESvnVersion eGetWorkingCopyVersion(std::wstring const & sPath);

/// The root of the working copy that the path lies in: going up from the path, the last directory of the first unbroken
/// run of those that have a ".svn"; without any, the same for ".git", which may be a directory or a file.
/// \returns empty when the path lies in none
[[nodiscard]] ZKTOOLS_API std::wstring sGetWorkingCopyRoot(std::wstring const & sPath);
