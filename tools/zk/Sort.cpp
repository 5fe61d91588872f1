// zk sort: lines in the order of tables that mix numbers and words.
#include "tools/zk/Commands.h"
#include "tools/zk/Console.h"
#include "tools/zk/Input.h"

#include "ZkTools/Strings.h"

#include <algorithm>
#include <array>

namespace {

/// Lines end in LF or CR LF; the last one may lack its end.
std::vector<std::wstring> sGetLines(std::wstring const & sText) {
    std::vector<std::wstring> sLines = SplitString(sText, L'\n');
    if (sText.ends_with(L'\n')) sLines.pop_back();
    for (std::wstring & sLine : sLines) {
        if (sLine.ends_with(L'\r')) sLine.pop_back();
    }
    return sLines;
}

EExit eSort(TArguments const & tArguments) {
    std::vector<std::wstring> sLines = sGetLines(sReadText(tArguments, 0));
    if (sLines.empty()) return eDone;
    bool const fReverse = tArguments.fHas(L"--reverse");
    std::ranges::stable_sort(sLines, [fReverse](std::wstring const & s1, std::wstring const & s2) {
        return fReverse ? iNumericStringCompare(s2, s1) < 0 : iNumericStringCompare(s1, s2) < 0;
    });
    PrintLine(sGetStringListText(std::move(sLines), L'\n') + L'\n');
    return eDone;
}

constexpr std::array<TSwitch, 1> tSwitches{{{L"--reverse", false}}};

} // namespace

TCommand const tSortCommand{
    L"sort",
    L"[FILE] [--reverse]",
    L"Prints the lines of a file in the order of tables: numbers, then words.",
    L"Without FILE it is the standard input. The text is UTF-8, and that of a file is\n"
    L"UTF-16 when it begins with the mark of that.\n"
    L"\n"
    L"Numbers have a sign, digits, and a point with digits; what follows behind a blank\n"
    L"does not count. Longer digit strings are larger, behind the point too: 1.9 comes\n"
    L"before 1.11. Words compare without regard to case, which decides only where\n"
    L"nothing else differs. Lines that compare equal keep their order.\n"
    L"\n"
    L"--reverse  Turns the order round.\n",
    0,
    1,
    tSwitches,
    eSort,
};
