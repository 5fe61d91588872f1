// Occurrence notation: a minimum and a maximum, the latter perhaps unbounded, as text.
#include "ZkTools/Strings.h"

#include <algorithm>
#include <cwctype>

namespace {

constexpr unsigned long dwUnbounded = 0xFFFFFFFF;
constexpr std::wstring_view sRange = L"..";

void SkipSpace(std::wstring_view & sText) noexcept {
    while (!sText.empty() && std::iswspace(sText.front()))
        sText.remove_prefix(1);
}

bool fTake(std::wstring_view & sText, std::wstring_view sStart) noexcept {
    if (!sText.starts_with(sStart)) return false;
    sText.remove_prefix(sStart.size());
    return true;
}

/// Takes a number as the scan functions of the C run-time do: white space, a sign, digits; modulo 2 to the 32.
bool fTakeNumber(std::wstring_view & sText, unsigned long & dwValue) noexcept {
    SkipSpace(sText);
    bool const fNegative = sText.starts_with(L'-');
    if (fNegative || sText.starts_with(L'+')) sText.remove_prefix(1);
    std::size_t u = 0;
    unsigned long dw = 0;
    for (; u < sText.size() && sText[u] >= L'0' && sText[u] <= L'9'; ++u)
        dw = dw * 10 + (sText[u] - L'0');
    sText.remove_prefix(u);
    dwValue = fNegative ? 0 - dw : dw;
    return u != 0;
}

/// Takes the word as they do: white space, and then as many characters as the word has, up to white space. So a word
/// that is empty or has white space in it is never found.
bool fTakeWord(std::wstring_view & sText, std::wstring_view sWord) noexcept {
    SkipSpace(sText);
    bool const fCanBeFound = !sWord.empty() && std::ranges::none_of(sWord, [](wchar_t c) { return std::iswspace(c); });
    return fCanBeFound && fTake(sText, sWord);
}

} // namespace

bool fGetStringOccurence(std::wstring & sOut, unsigned long dwMin, unsigned long dwMax,
                         std::wstring const & sUnbounded) {
    if (dwMin == dwUnbounded || (dwMin > dwMax && dwMax != dwUnbounded)) {
        sOut = L"0..1";
        return false;
    }
    std::wstring sResult = std::to_wstring(dwMin);
    if (dwMin != dwMax) sResult.append(sRange).append(dwMax == dwUnbounded ? sUnbounded : std::to_wstring(dwMax));
    sOut = std::move(sResult);
    return true;
}

bool fGetNumOccurence(std::wstring const & s, unsigned long & dwMin, unsigned long & dwMax,
                      std::wstring const & sUnbounded) {
    if (s == sUnbounded) {
        dwMin = 0;
        dwMax = dwUnbounded;
        return true;
    }
    std::wstring_view sText = s.c_str();
    if (!fTakeNumber(sText, dwMin)) {
        dwMin = 0;
        dwMax = 1;
        return false;
    }
    dwMax = dwMin;
    if (!fTake(sText, sRange)) return true;
    if (std::wstring_view sRest = sText; fTakeWord(sRest, sUnbounded)) {
        dwMax = dwUnbounded;
    } else if (unsigned long dwSecond; fTakeNumber(sText, dwSecond)) {
        dwMax = dwSecond;
    }
    return true;
}
