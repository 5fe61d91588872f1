// zk delete: files and directories, for good or with undo.
#include "tools/zk/Commands.h"
#include "tools/zk/Console.h"

#include "ZkTools/Exceptions.h"
#include "ZkTools/Rename.h"

#include <objbase.h>

#include <array>

namespace {

constexpr std::array tDeleteSwitches{
    TSwitch{L"--undo", false},
};

/// COM, for as long as the object lives.
struct TCom {
    TCom() : hrResult(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
    ~TCom() {
        if (hrResult >= 0) CoUninitialize();
    }
    TCom(TCom const &) = delete;
    TCom & operator=(TCom const &) = delete;

    HRESULT const hrResult;
};

EExit eDelete(TArguments const & tArguments) {
    std::wstring const sPath = tArguments.sGet(0);
    if (tArguments.fHas(L"--undo")) {
        TCom const tCom;
        xZkDeleteFileOrFolder(sPath, eDeleteAllowUndo);
    } else {
        xZkDeleteFileOrFolder(sPath, eDeleteDirect);
    }
    PrintLine(L"deleted " + sPath);
    return eDone;
}

} // namespace

TCommand const tDeleteCommand{
    L"delete",
    L"PATH [--undo]",
    L"Deletes a file, a directory with all that is in it, or what a pattern matches.",
    L"  --undo  into the recycle bin; PATH is a full path then\n"
    L"\n"
    L"PATH may hold * and ? in its last part; names that begin with a point match none of\n"
    L"them. Files that are read-only are deleted too. The first failure ends the work.\n",
    1,
    1,
    tDeleteSwitches,
    eDelete,
};
