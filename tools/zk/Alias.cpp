// zk alias: merged texts of aliases, taken apart, as file names and in order.
#include "tools/zk/AliasText.h"
#include "tools/zk/Commands.h"
#include "tools/zk/Console.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::wstring_view sSeparator = L"--separator";
constexpr std::wstring_view sJoin = L"--join";
constexpr std::wstring_view sNumeric = L"--numeric";

wchar_t const * pzGetValue(TArguments const & tArguments, std::wstring_view sSwitch) {
    std::wstring const * const psValue = tArguments.psGetValue(sSwitch);
    return psValue != nullptr ? psValue->c_str() : nullptr;
}

/// The alias of the merged text at that place.
TAlias tParse(TArguments const & tArguments, std::size_t uIndex) {
    TAlias tAlias;
    tAlias.Set(tArguments.sGet(uIndex).c_str(), pzGetValue(tArguments, sSeparator));
    return tAlias;
}

void Parse(TArguments const & tArguments) {
    PrintLine(sDescribe(tParse(tArguments, 1)));
}

void FileName(TArguments const & tArguments) {
    PrintLine(tParse(tArguments, 1).sGetFileName(pzGetValue(tArguments, sJoin)));
}

void Compare(TArguments const & tArguments) {
    TAlias const tFirst = tParse(tArguments, 1);
    TAlias const tSecond = tParse(tArguments, 2);
    int const iOrder = tArguments.fHas(sNumeric) ? iNumericAliasCompare(tFirst, tSecond) : tFirst.iCompare(tSecond);
    PrintLine(sDescribeOrder(iOrder));
}

/// What can be done, with how many texts and with which switches beside --separator.
struct TAction {
    std::wstring_view sName;
    std::size_t uTexts;
    std::wstring_view sSwitch;
    void (*pRun)(TArguments const & tArguments);
};

constexpr std::array tActions{
    TAction{L"parse", 1, L"", Parse},
    TAction{L"file-name", 1, sJoin, FileName},
    TAction{L"compare", 2, sNumeric, Compare},
};

EExit eAlias(TArguments const & tArguments) {
    std::wstring const sName = tArguments.sGet(0);
    auto const pAction = std::ranges::find(tActions, std::wstring_view(sName), &TAction::sName);
    if (pAction == tActions.end()) throw TWrongUsage{sName + L" is no action."};
    if (tArguments.uGetCount() - 1 < pAction->uTexts) throw TWrongUsage{L"Arguments are missing."};
    if (tArguments.uGetCount() - 1 > pAction->uTexts) throw TWrongUsage{L"There are too many arguments."};
    for (std::wstring_view const sSwitch : {sJoin, sNumeric}) {
        if (tArguments.fHas(sSwitch) && sSwitch != pAction->sSwitch)
            throw TWrongUsage{std::wstring(sSwitch).append(L" does not go with ").append(sName).append(L".")};
    }
    pAction->pRun(tArguments);
    return eDone;
}

constexpr std::array tSwitches{
    TSwitch{sSeparator, true},
    TSwitch{sJoin, true},
    TSwitch{sNumeric, false},
};

} // namespace

TCommand const tAliasCommand{
    L"alias",
    L"parse|file-name|compare TEXT [TEXT] [--separator S] [--join S] [--numeric]",
    L"Tells of aliases that are given as merged texts, such as \"Wheel; 2; draft\".",
    L"parse      Prints three lines: tag, version and variant.\n"
    L"file-name  Prints the alias as a file name, in which the parts are joined by \"_\"\n"
    L"           or what --join gives. Characters that no file name may hold become\n"
    L"           \"_\".\n"
    L"compare    Prints whether the first of two is less, equal or greater: by tag,\n"
    L"           version and variant, each by its characters, or with --numeric by\n"
    L"           the numbers in it.\n"
    L"\n"
    L"--separator tells what stands between the parts of a TEXT; \"; \" without it.\n",
    2,
    3,
    tSwitches,
    eAlias,
};
