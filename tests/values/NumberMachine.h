/// Numbers read the slow way.
#pragma once

#include <cwctype>
#include <string>

namespace zk_test {

/// The reading of numbers as a machine over classes of characters, for comparison.
struct TNumberMachine {
    bool fNumber = false;
    bool fNegative = false;
    std::wstring sInteger, sFraction;

    explicit TNumberMachine(std::wstring const & sText) {
        enum { eSign = 1, eDigit = 2, ePoint = 4, eNothingYet = 8 };
        std::size_t u = 0;
        while (u < sText.size() && std::iswspace(sText[u]))
            ++u;
        while (u + 1 < sText.size() && sText[u] == L'0' && std::iswdigit(sText[u + 1]))
            ++u;
        int iMask = eSign | eDigit | ePoint | eNothingYet;
        std::wstring * psDigits = &sInteger;
        for (; u < sText.size() && !std::iswspace(sText[u]); ++u) {
            wchar_t const c = sText[u];
            int const iClass = c == L'-' || c == L'+' ? eSign : c == L'.' ? ePoint : std::iswdigit(c) ? eDigit : 0;
            if (c == L'-') fNegative = true;
            if ((iClass & iMask) == 0) return;
            if (iClass == ePoint) psDigits = &sFraction;
            if (iClass == eDigit) *psDigits += c;
            iMask = iClass == ePoint || psDigits == &sFraction ? eDigit : eDigit | ePoint;
        }
        fNumber = (iMask & eNothingYet) == 0;
    }
};

} // namespace zk_test
