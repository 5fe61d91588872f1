// zk uri: paths and text as URIs, and the checks.
#include "tools/zk/Commands.h"
#include "tools/zk/Console.h"

#include "ZkTools/Uri.h"

#include <algorithm>
#include <array>

namespace {

struct TCheck {
    std::wstring_view sName;
    bool (*pHolds)(std::wstring const & sText);
};

// No constants of the compiler: the addresses come from the DLL.
std::array<TCheck, 4> const tChecks{{
    {L"URL", &fIsValidURL},
    {L"URL without a query", &fIsValidURL_NoQuery},
    {L"URI", &fIsValidURI},
    {L"e-mail address", &fIsValidEMail},
}};

std::wstring sCheck(std::wstring const & sText) {
    std::wstring sLines;
    for (TCheck const & tCheck : tChecks)
        sLines.append(tCheck.sName).append(tCheck.pHolds(sText) ? L": yes\n" : L": no\n");
    return sLines;
}

struct TTask {
    std::wstring_view sName;
    std::wstring (*pDo)(std::wstring const & sText);
};

std::array<TTask, 4> const tTasks{{
    {L"path", &sPathToURI},
    {L"escape", &sStringToURI},
    {L"unescape", &sUnescapeURI},
    {L"check", &sCheck},
}};

EExit eUri(TArguments const & tArguments) {
    std::wstring const sName = tArguments.sGet(0);
    auto const pTask = std::ranges::find(tTasks, std::wstring_view(sName), &TTask::sName);
    if (pTask == tTasks.end()) throw TWrongUsage{sName + L" is none of path, escape, unescape and check."};
    PrintLine(pTask->pDo(tArguments.sGet(1)));
    return eDone;
}

} // namespace

TCommand const tUriCommand{
    L"uri",
    L"path|escape|unescape|check TEXT",
    L"Turns paths and text into URIs, or tells what a text is.",
    L"path      Prints the URL of a path; that of a relative path is relative.\n"
    L"escape    Prints the text with what a URI may not hold as %XX, the percent sign\n"
    L"          included.\n"
    L"unescape  Prints the text with every %XX as its character.\n"
    L"check     Tells whether the text is a URL, one without a query, a URI, an\n"
    L"          e-mail address.\n",
    2,
    2,
    {},
    eUri,
};
