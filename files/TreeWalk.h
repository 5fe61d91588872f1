// A walk through a directory and what is below it.
#pragma once

#include "files/FindFile.h"

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>

/// Goes through what is in a directory in the order in which the system finds it, and into a subdirectory when it is
/// told to:
///
///     for (TTreeWalk tWalk(sDirectory);;) {
///         if (tWalk.fNext()) {
///             if (!tWalk.fIsDirectory()) use(tWalk.sGetPath());
///             else if (fIsWanted) tWalk.Enter();
///         } else if (!tWalk.fLeave()) {
///             return;
///         }
///     }
///
/// A directory that can't be searched is empty. A tree may be deeper than the thread's stack would bear, so the
/// searches under way have a stack here. None is held for a directory that was left.
class TTreeWalk {
public:
    explicit TTreeWalk(std::wstring const & sDirectory);

    /// Goes to the next entry of the directory under way, "." and ".." left out; false behind the last one.
    bool fNext();
    /// Goes into the entry, a directory.
    void Enter();
    /// Goes back to the directory above; the entry is the directory that was left. False on top, where it all ends.
    bool fLeave();

    /// The path of the entry.
    [[nodiscard]] std::wstring const & sGetPath() const noexcept { return sPath; }
    /// The part of it behind the directory where the walk began, without a backslash in front.
    [[nodiscard]] std::wstring_view sGetPathBelow() const noexcept {
        return std::wstring_view(sPath).substr(tLevels.front().uDirectory);
    }
    [[nodiscard]] DWORD dwGetAttributes() const noexcept { return tLevels.back().tFind.tGetData().dwFileAttributes; }
    [[nodiscard]] bool fIsDirectory() const noexcept { return tLevels.back().tFind.fIsDirectory(); }

private:
    struct TLevel {
        TLevel(std::wstring const & sPattern, std::size_t uDirectory_)
            : uDirectory(uDirectory_), tFind(sPattern.c_str()) {}

        std::size_t uDirectory; ///< what the path has in front of the name, a backslash at its end
        TFindFile tFind;
        bool fStarted = false;
    };

    std::wstring sPath;
    std::deque<TLevel> tLevels;
};
