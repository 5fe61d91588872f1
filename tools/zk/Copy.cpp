// zk copy: a file, or a directory with all that is in it.
#include "tools/zk/Commands.h"
#include "tools/zk/Console.h"
#include "tools/zk/FullPath.h"
#include "tools/zk/Gauge.h"

#include "ZkBase/Exceptions.h"
#include "ZkTools/Copy.h"
#include "ZkTools/Exceptions.h"
#include "ZkTools/Files.h"
#include "ZkTools/Paths.h"

#include <array>

namespace {

constexpr std::array tCopySwitches{
    TSwitch{L"--keep", false},
};

constexpr unsigned __int64 uiStep = 1024; // bytes: the gauge counts in 32 bits

TGaugeJob * pRunning = nullptr; // what Ctrl-C ends; set while the handler is

BOOL WINAPI OnControl(DWORD) {
    pRunning->Abort();
    return TRUE;
}

/// Lets Ctrl-C end the job behind the file under way.
struct TStopOnControl {
    explicit TStopOnControl(TGaugeJob & tJob) {
        pRunning = &tJob;
        SetConsoleCtrlHandler(OnControl, TRUE);
    }
    ~TStopOnControl() { SetConsoleCtrlHandler(OnControl, FALSE); }
    TStopOnControl(TStopOnControl const &) = delete;
    TStopOnControl & operator=(TStopOnControl const &) = delete;
};

/// What a copy did, for the line at its end.
struct TCount {
    unsigned long ulCopied = 0;
    unsigned long ulKept = 0;
};

std::wstring sDescribe(TCount const & tCount) {
    std::wstring sText = std::to_wstring(tCount.ulCopied) + (tCount.ulCopied == 1 ? L" file copied" : L" files copied");
    if (tCount.ulKept != 0) sText += L", " + std::to_wstring(tCount.ulKept) + L" kept";
    return sText;
}

/// Reports to the job what it copies, and counts what it keeps.
TCount tCopyTree(std::wstring const & sSource, std::wstring const & sTarget, bool fKeep, TVeryJobBase & tJob) {
    TCount tCount;
    unsigned __int64 uiDone = 0;
    tJob.SetRange(static_cast<long>(uiGetDirectorySize(sSource) / uiStep), 0);
    auto const fnFilter = [&tJob](unsigned long, std::wstring const &) {
        tJob.xQueryAbort();
        return true;
    };
    auto const fnNotify = [&](std::wstring const & sExisting, std::wstring const & sCopy) {
        ++(sExisting.empty() ? tCount.ulCopied : tCount.ulKept);
        uiDone += dwGetFileSize(sCopy.c_str());
        tJob.SetPosition(static_cast<long>(uiDone / uiStep), 0);
        return false;
    };
    CopyDirectory(sSource, sTarget, !fKeep, fnFilter, fnNotify);
    tJob.SetFinished();
    return tCount;
}

TCount tCopyFile(std::wstring const & sSource, std::wstring const & sTarget, bool fKeep) {
    ECopyFile const eCopy = fKeep ? eCopyFailIfExists : eCopyDefault;
    if (fExistDirectory(sTarget.c_str()))
        static_cast<void>(sCopyFileToDirectory(sSource, sTarget, eCopy, -1));
    else
        DoCopyFile(sSource.c_str(), sTarget.c_str(), eCopy);
    return {1, 0};
}

EExit eCopy(TArguments const & tArguments) {
    std::wstring const sSource = sClearBackslash(sGetAbsolute(tArguments.sGet(0)));
    std::wstring const sTarget = sClearBackslash(sGetAbsolute(tArguments.sGet(1)));
    bool const fKeep = tArguments.fHas(L"--keep");
    if (!fExistDirectory(sSource.c_str())) {
        PrintLine(sDescribe(tCopyFile(sSource, sTarget, fKeep)));
        return eDone;
    }
    if (fCheckSubDir(sTarget.c_str(), sSource.c_str())) throw TWrongUsage{L"TARGET lies in SOURCE."};
    TGaugeJob tJob(fnDrawOnTerminal());
    TStopOnControl const tStop(tJob);
    try {
        PrintLine(sDescribe(tCopyTree(sSource, sTarget, fKeep, tJob)));
    } catch (std::exception const &) {
        tJob.SetAborted();
        throw;
    }
    return eDone;
}

} // namespace

TCommand const tCopyCommand{
    L"copy",
    L"SOURCE TARGET [--keep]",
    L"Copies a file, or a directory with all that is in it.",
    L"A file is copied to the path TARGET, or into TARGET when that is a directory. Of a\n"
    L"directory the content is copied into TARGET, which is made where it is missing.\n"
    L"Copies can be written to, also where the source is read-only.\n"
    L"\n"
    L"  --keep  leaves files alone that exist in TARGET; without it they are overwritten.\n"
    L"          A single file that exists is refused.\n"
    L"\n"
    L"On a terminal a gauge tells how far the copy of a directory is. Ctrl-C ends it behind\n"
    L"the file under way; what was copied stays.\n",
    2,
    2,
    tCopySwitches,
    eCopy,
};
