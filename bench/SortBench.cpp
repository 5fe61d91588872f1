// A table of numbers and words in the library's order, beside the shell's comparison that knows numbers.
#include "ZkTools/Strings.h"
#include "bench/Ratio.h"

#include <shlwapi.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int iStrings = 200'000;

/// Numbers with and without fraction, names with numbers in them, and words in either case.
std::vector<std::wstring> sMakeTable() {
    std::vector<std::wstring> sTable;
    std::mt19937 tRandom(1);
    auto const sNumber = [&](unsigned int uBelow) { return std::to_wstring(tRandom() % uBelow); };
    for (int i = 0; i < iStrings; ++i) {
        switch (tRandom() % 4) {
        case 0:
            sTable.push_back(sNumber(100'000));
            break;
        case 1:
            sTable.push_back(sNumber(100) + L'.' + sNumber(1000));
            break;
        case 2:
            sTable.push_back(L"part " + sNumber(1000) + L'-' + sNumber(100));
            break;
        default: {
            std::wstring sWord(3 + tRandom() % 8, L'\0');
            for (wchar_t & c : sWord)
                c = static_cast<wchar_t>((tRandom() % 8 == 0 ? L'A' : L'a') + tRandom() % 26);
            sTable.push_back(sWord);
        }
        }
    }
    return sTable;
}

/// Sorts pointers, so that the comparisons alone make the difference.
template <typename TCompare>
void Sort(std::vector<std::wstring> const & sTable, TCompare iCompare) {
    std::vector<std::wstring const *> psSorted;
    for (std::wstring const & sText : sTable)
        psSorted.push_back(&sText);
    std::stable_sort(psSorted.begin(), psSorted.end(),
                     [&](auto const * ps1, auto const * ps2) { return iCompare(*ps1, *ps2) < 0; });
    zk_bench::Keep(psSorted.data());
}

} // namespace

int main(int iCount, char ** ppArguments) {
    std::vector<std::wstring> const sTable = sMakeTable();
    zk_bench::Add(
        "sort 200,000 mixed strings", zk_bench::EBound::eTimesFaster, 2, [&] { Sort(sTable, iNumericStringCompare); },
        [&] {
            Sort(sTable, [](std::wstring const & s1, std::wstring const & s2) {
                return StrCmpLogicalW(s1.c_str(), s2.c_str());
            });
        });
    return zk_bench::iRun(iCount, ppArguments);
}
