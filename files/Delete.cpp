// The deletion family: straight through the file system, through the shell, and at the next start of the machine.
#include "ZkTools/Rename.h"

#include "ZkBase/Paths.h"
#include "ZkTools/Exceptions.h"
#include "ZkTools/MessageIds.h"
#include "ZkTools/Paths.h"
#include "files/FindFile.h"
#include "files/LongPath.h"
#include "files/ReadOnly.h"
#include "files/ShellDelete.h"
#include "files/TreeWalk.h"
#include "frame/Failures.h"

#include <vector>

namespace {

constexpr bool fHas(EDeleteFileOrFolder eDelete, EDeleteFileOrFolder eBit) noexcept {
    return (static_cast<int>(eDelete) & static_cast<int>(eBit)) != 0;
}

void Check(BOOL fDone, std::wstring const & sPath) {
    if (!fDone) throw tFailureWithReason(GetLastError(), IDS_COPY_FAILED, sPath.c_str());
}

/// A change of attributes that is refused is told by the delete behind it.
void DeleteFileDirect(std::wstring const & sPath, DWORD dwAttributes) {
    ClearReadOnly(sPath.c_str(), dwAttributes);
    Check(DeleteFileLong(sPath.c_str()), sPath);
}

/// Calls `Visit(path, attributes)` for what is in the directory, a subdirectory behind what is in it. Without
/// `fRecursive` subdirectories are passed over.
template <typename TVisit>
void VisitChildren(std::wstring const & sDirectory, bool fRecursive, TVisit Visit) {
    for (TTreeWalk tWalk(sDirectory);;) {
        if (tWalk.fNext()) {
            if (!tWalk.fIsDirectory())
                Visit(tWalk.sGetPath(), tWalk.dwGetAttributes());
            else if (fRecursive)
                tWalk.Enter();
        } else {
            if (!tWalk.fLeave()) return;
            Visit(tWalk.sGetPath(), tWalk.dwGetAttributes());
        }
    }
}

void DeleteChildrenDirect(std::wstring const & sDirectory, bool fRecursive) {
    VisitChildren(sDirectory, fRecursive, [](std::wstring const & sPath, DWORD dwAttributes) {
        if ((dwAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
            Check(RemoveDirectoryLong(sPath.c_str()), sPath);
        else // what the search tells may be old: the system keeps it up to date for one of a file's hard links only
            DeleteFileDirect(sPath, GetFileAttributesLong(sPath.c_str()));
    });
}

void DeleteItemDirect(std::wstring const & sPath) {
    DWORD const dwAttributes = GetFileAttributesLong(sPath.c_str());
    Check(dwAttributes != INVALID_FILE_ATTRIBUTES, sPath);
    if ((dwAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) return DeleteFileDirect(sPath, dwAttributes);
    DeleteChildrenDirect(sPath, true);
    Check(RemoveDirectoryLong(sPath.c_str()), sPath);
}

void DeleteItemOrShell(std::wstring const & sPath, bool fAllowUndo) {
    if (fAllowUndo)
        DeleteByShell(sPath);
    else
        DeleteItemDirect(sPath);
}

/// The paths that a pattern matches, without those of names that begin with a point.
std::vector<std::wstring> tCollect(std::wstring const & sPattern) {
    std::wstring const sDirectory = SplitPath(sPattern, eBackshlashRemove).sDirectory;
    std::vector<std::wstring> tPaths;
    for (TFindFile tFind(sPattern.c_str()); tFind.fFound(); tFind.fNext()) {
        wchar_t const * const pzName = tFind.tGetData().cFileName;
        if (*pzName != L'.') tPaths.push_back(path_func::sPathAppend(sDirectory, pzName));
    }
    return tPaths;
}

/// With a pattern, everything is found before the first delete, so that no search is open meanwhile.
void DeleteMatching(std::wstring const & sPath, bool fAllowUndo) {
    if (!path_func::fPathContainsWildcard(sPath)) return DeleteItemOrShell(sPath, fAllowUndo);
    for (std::wstring const & sMatch : tCollect(sPath))
        DeleteItemOrShell(sMatch, fAllowUndo);
}

void ClearDirectoryOrShell(std::wstring const & sDirectory, bool fAllowUndo, bool fRecursive) {
    if (fAllowUndo)
        ClearByShell(sDirectory, fRecursive);
    else
        DeleteChildrenDirect(sDirectory, fRecursive);
}

void ScheduleItem(std::wstring const & sPath) {
    MoveFileExLong(sPath.c_str(), nullptr, MOVEFILE_DELAY_UNTIL_REBOOT);
}

/// The system goes through its list in order: what is in a directory has to come ahead of it.
void ScheduleChildrenDelete(std::wstring const & sDirectory, bool fRecursive) {
    VisitChildren(sDirectory, fRecursive, [](std::wstring const & sPath, DWORD) { ScheduleItem(sPath); });
}

void ScheduleDelete(std::wstring const & sPath) {
    ScheduleChildrenDelete(sPath, true);
    ScheduleItem(sPath);
}

/// The text of an exception, which stands in the thread's ANSI code page.
std::wstring sWiden(std::string_view sText) {
    int const iBytes = static_cast<int>(sText.size());
    int const iUnits = MultiByteToWideChar(CP_THREAD_ACP, 0, sText.data(), iBytes, nullptr, 0);
    std::wstring sWide(static_cast<std::size_t>(iUnits), L'\0');
    MultiByteToWideChar(CP_THREAD_ACP, 0, sText.data(), iBytes, sWide.data(), iUnits);
    return sWide;
}

} // namespace

void xZkDeleteFileOrFolder(std::wstring const & sPath, EDeleteFileOrFolder eDelete) {
    try {
        DeleteMatching(sPath, fHas(eDelete, eDeleteAllowUndo));
    } catch (std::runtime_error const &) {
        if (fHas(eDelete, eDeleteAtRebootOnFailure)) ScheduleDelete(sPath);
        throw;
    }
}

bool fZkDeleteFileOrFolder(std::wstring const & sPath, EDeleteFileOrFolder eDelete) {
    try {
        xZkDeleteFileOrFolder(sPath, eDelete);
        return true;
    } catch (std::runtime_error const & tError) {
        OutputDebugStringW(sWiden(tError.what()).c_str());
        return false;
    }
}

void xZkClearDirectory(std::wstring const & sDirectory, bool fRecursive, EDeleteFileOrFolder eDelete) {
    try {
        ClearDirectoryOrShell(sDirectory, fHas(eDelete, eDeleteAllowUndo), fRecursive);
    } catch (std::runtime_error const &) {
        if (fHas(eDelete, eDeleteAtRebootOnFailure)) ScheduleChildrenDelete(sDirectory, fRecursive);
        throw;
    }
}

bool fZkClearDirectory(std::wstring const & sDirectory, bool fRecursive, EDeleteFileOrFolder eDelete) {
    try {
        xZkClearDirectory(sDirectory, fRecursive, eDelete);
        return true;
    } catch (...) {
        return false;
    }
}

void xRemoveFiles(std::wstring const & sPath) {
    DeleteMatching(sPath, false);
}

bool fRemoveFiles(std::wstring const & sPath) {
    try {
        xRemoveFiles(sPath);
        return true;
    } catch (...) {
        return false;
    }
}
