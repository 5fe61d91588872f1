/// Sections of initialisation files: lines `key=value` below `[section]`.
#pragma once

#include "ZkTools/Export.h"

#include <vector>

/// A section of an initialisation file, read whole when the object is made. Nothing is ever written.
///
/// The file is read by the system, which decides what a line is: it leaves out comments, which begin with a semicolon,
/// and the blanks around keys and values. A UTF-16 file needs its mark, any other is in the system's ANSI code page.
///
/// Deliberate: a copy has the text of its own but the *lines of its source*: their pointers go on pointing into the
/// source's text. So a copy is good only as long as its source is there, and unchanged.
class ZKTOOLS_API TProfileSection {
public:
    /// A line, as texts that belong to the section.
    struct TLine {
        wchar_t * pzKey;   ///< null for a line of equals signs only
        wchar_t * pzValue; ///< null where the line has none
    };

    /// Reads the section; whatever case its name is in, and however long the section. A section without lines, one that
    /// is missing and a file that is missing give no lines: none of it is a failure.
    ///
    /// Deliberate: the text is cut at *every* equals sign and several count as one. `a=b=c` is key `a` with value `b`,
    /// and the rest is lost; `=x` is key `x` without a value, as is `x=`.
    ///
    /// \param pzFile a full path: the system looks for any other in the Windows directory
    TProfileSection(wchar_t const * pzSection, wchar_t const * pzFile);
    TProfileSection(TProfileSection const & tOther) = default;
    TProfileSection & operator=(TProfileSection const & tOther) = default;
    ~TProfileSection() = default;

    /// The lines, in the order of the file. They live as long as this object, and the caller may change them.
    [[nodiscard]] std::vector<TLine> & GetLines() noexcept { return vLines; }

private:
    std::vector<wchar_t> vBuffer; // the texts of the lines
    std::vector<TLine> vLines;
};
