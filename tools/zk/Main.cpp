// zk: the library by hand.
#include "tools/zk/Commands.h"
#include "tools/zk/Console.h"

#include <algorithm>
#include <exception>

namespace {

std::wstring sGetUsage(TCommand const & tCommand) {
    std::wstring sText = std::wstring(L"usage: zk ").append(tCommand.sName);
    if (!tCommand.sUsage.empty()) sText.append(L" ").append(tCommand.sUsage);
    return sText;
}

void PrintHelp() {
    std::size_t uWidth = 0;
    for (TCommand const * pCommand : pCommands)
        uWidth = std::max(uWidth, pCommand->sName.size());

    std::wstring sText = L"usage: zk COMMAND ARGUMENT...\n"
                         L"\n";
    for (TCommand const * pCommand : pCommands) {
        sText.append(L"  ").append(pCommand->sName).append(uWidth + 2 - pCommand->sName.size(), L' ');
        sText.append(pCommand->sSummary).append(L"\n");
    }
    sText += L"\n"
             L"zk COMMAND --help tells more of a command.\n"
             L"Exit codes: 0 done, 1 refused or failed, 2 wrong usage.\n";
    PrintLine(sText);
}

void PrintHelp(TCommand const & tCommand) {
    std::wstring sText = sGetUsage(tCommand);
    sText.append(L"\n\n").append(tCommand.sSummary).append(L"\n\n").append(tCommand.sHelp);
    PrintLine(sText);
}

EExit eRun(TCommand const & tCommand, std::span<wchar_t const * const> pzArguments) {
    // What stands behind "--" is a name, be it "--help".
    auto const pEnd = std::ranges::find(pzArguments, std::wstring_view(L"--"));
    if (std::find(pzArguments.begin(), pEnd, std::wstring_view(L"--help")) != pEnd) {
        PrintHelp(tCommand);
        return eDone;
    }
    try {
        TArguments const tArguments(pzArguments, tCommand.tSwitches);
        if (tArguments.uGetCount() < tCommand.uLeast) throw TWrongUsage{L"Arguments are missing."};
        if (tArguments.uGetCount() > tCommand.uMost) throw TWrongUsage{L"There are too many arguments."};
        return tCommand.pRun(tArguments);
    } catch (TWrongUsage const & tWrong) {
        PrintError(std::wstring(L"zk ").append(tCommand.sName).append(L": ").append(tWrong.sText));
        PrintError(sGetUsage(tCommand));
        return eWrongUsage;
    }
}

EExit eRun(std::span<wchar_t const * const> pzArguments) {
    if (pzArguments.empty()) {
        PrintError(L"zk: A command is missing; zk --help tells all of them.");
        return eWrongUsage;
    }
    std::wstring_view const sName = pzArguments[0];
    if (sName == L"--help") {
        PrintHelp();
        return eDone;
    }
    auto const pFound = std::ranges::find(pCommands, sName, &TCommand::sName);
    if (pFound == pCommands.end()) {
        PrintError(std::wstring(L"zk: ").append(sName).append(L" is no command; zk --help tells all of them."));
        return eWrongUsage;
    }
    return eRun(**pFound, pzArguments.subspan(1));
}

} // namespace

int wmain(int iCount, wchar_t ** ppzArguments) {
    try {
        std::span<wchar_t const * const> const pzAll(ppzArguments, static_cast<std::size_t>(iCount));
        return eRun(pzAll.subspan(std::min<std::size_t>(1, pzAll.size())));
    } catch (std::exception const & tError) {
        PrintError(sWiden(tError.what()));
        return eFailed;
    }
}
