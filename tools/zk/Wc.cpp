// zk wc: whether a path lies in a working copy.
#include "tools/zk/Commands.h"
#include "tools/zk/Console.h"
#include "tools/zk/FullPath.h"

#include "ZkTools/WorkingCopy.h"

namespace {

std::wstring_view sDescribe(ESvnVersion eVersion) {
    switch (eVersion) {
    case eWcFormat7:
        return L"Subversion, format 7";
    case eWcFormat8:
        return L"Subversion, format 8";
    case eWcFormat9:
        return L"Subversion, format 9";
    case eWcFormat10:
        return L"Subversion, format 10";
    case eWcDbFormat29:
        return L"Subversion, format 29";
    case eWcDbFormat31:
        return L"Subversion, format 31";
    case eWcGit:
        return L"Git";
    case eWcNone:
        break;
    }
    return L"none";
}

EExit eWc(TArguments const & tArguments) {
    std::wstring const sPath = sGetAbsolute(tArguments.sGet(0));
    std::wstring const sRoot = sGetWorkingCopyRoot(sPath);
    std::wstring sText = L"kind: ";
    sText.append(sDescribe(eGetWorkingCopyVersion(sPath))).append(L"\nroot: ");
    PrintLine(sText.append(sRoot.empty() ? L"none" : sRoot));
    return eDone;
}

} // namespace

TCommand const tWcCommand{
    L"wc",
    L"PATH",
    L"Tells the working copy of Subversion or Git that a path lies in.",
    L"Prints two lines, kind and root, each of which may be none. The format of a\n"
    L"Subversion working copy is known at the directories that have a \".svn\" of their\n"
    L"own: below them the kind is none, and the root is told.\n"
    L"\n"
    L"Only the marker files are looked at.\n",
    1,
    1,
    {},
    eWc,
};
