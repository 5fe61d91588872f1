// The order of tables that mix numbers and words.
#include "ZkTools/Strings.h"

#include "values/NumberText.h"

#include <algorithm>
#include <cwctype>

namespace {

int iCompareWords(std::wstring_view sFirst, std::wstring_view sSecond) noexcept {
    int iTie = 0;
    std::size_t const uCommon = std::min(sFirst.size(), sSecond.size());
    for (std::size_t u = 0; u < uCommon; ++u) {
        if (sFirst[u] == sSecond[u]) continue;
        wint_t const cFirst = std::towupper(sFirst[u]);
        wint_t const cSecond = std::towupper(sSecond[u]);
        if (cFirst != cSecond) return cFirst - cSecond;
        if (iTie == 0) iTie = sFirst[u] == cFirst ? -1 : 1;
    }
    if (sFirst.size() != sSecond.size()) return sFirst.size() < sSecond.size() ? -1 : 1;
    return iTie;
}

} // namespace

int iNumericStringCompare(std::wstring const & sFirst, std::wstring const & sSecond) noexcept {
    TNumberText tFirst;
    TNumberText tSecond;
    bool const fFirst = fReadNumber(sFirst, tFirst);
    bool const fSecond = fReadNumber(sSecond, tSecond);
    if (fFirst && fSecond) return iCompareNumbers(tFirst, tSecond);
    if (fFirst != fSecond) return fFirst ? -1 : 1;
    return iCompareWords(sFirst, sSecond);
}
