#include "ZkTools/Strings.h"

#include "ZkBase/Text.h"

#include <algorithm>
#include <cwchar>
#include <cwctype>
#include <ios>

wchar_t * pzStrNFill(wchar_t * pz, int iLen, wchar_t c) noexcept {
    int const iLength = static_cast<int>(std::wcslen(pz));
    if (iLength >= iLen) return pz;
    *std::fill_n(pz + iLength, iLen - iLength, c) = L'\0';
    return pz;
}

wchar_t * pzStrip(wchar_t * pz) noexcept {
    if (pz == nullptr) return nullptr;
    wchar_t * pzEnd = pz + std::wcslen(pz);
    while (pzEnd != pz && pzEnd[-1] == L' ')
        --pzEnd;
    *pzEnd = L'\0';
    return pz;
}

wchar_t * pzRemoveSpaces(wchar_t * pz) noexcept {
    if (pz == nullptr) return nullptr;
    *std::remove(pz, pz + std::wcslen(pz), L' ') = L'\0';
    return pz;
}

wchar_t * pzStrNCpy(wchar_t * pzDst, wchar_t const * pzSrc, int iLen) noexcept {
    if (pzDst == nullptr || pzSrc == nullptr) return pzDst;
    std::wcsncpy(pzDst, pzSrc, static_cast<std::size_t>(iLen));
    pzDst[iLen] = L'\0';
    return pzDst;
}

int iStrStri(wchar_t const * pzText, wchar_t const * pzFind) noexcept {
    std::wstring_view const sText = pzText;
    std::wstring_view const sFind = pzFind;
    if (sFind.empty()) return -1;
    auto const itFound =
        std::search(sText.begin(), sText.end(), sFind.begin(), sFind.end(),
                    [](wchar_t c1, wchar_t c2) { return c1 == c2 || std::towupper(c1) == std::towupper(c2); });
    return itFound == sText.end() ? -1 : static_cast<int>(itFound - sText.begin());
}

bool fIsMultilineString(std::wstring_view const & sText) noexcept {
    return sText.find_first_of(L"\r\n") != std::wstring_view::npos;
}

void SaveXmlText(std::wstringstream & stream, std::wstring & sOut, bool fStrip) {
    std::streamoff const iLength = stream.tellp();
    std::streamoff const iStart = stream.tellg();
    if (iStart < 0 || iStart >= iLength) return; // both are -1 in a failed state

    std::wstring sText(static_cast<std::size_t>(iLength - iStart), L'\0');
    stream.read(sText.data(), static_cast<std::streamsize>(sText.size()));
    auto const itFirst = std::ranges::find_if_not(sText, fWIsSpace);
    if (itFirst == sText.end()) return;

    constexpr std::size_t uRoomForLineEnds = 20;
    sOut.reserve(sOut.size() + static_cast<std::size_t>(sText.end() - itFirst) + uRoomForLineEnds);
    wchar_t cBefore = L'\0';
    for (wchar_t const c : std::wstring_view(itFirst, sText.end())) {
        if (c == L'\n' && cBefore != L'\r') sOut += L'\r';
        sOut += c;
        cBefore = c;
    }
    if (fStrip) string_functions::strip_whitespace(sOut, string_functions::esEnd);
}

std::vector<std::wstring> SplitString(std::wstring const & sText, wchar_t cDelimiter) {
    std::vector<std::wstring> sPieces;
    if (sText.empty()) return sPieces;
    std::size_t uStart = 0;
    for (std::size_t uEnd; (uEnd = sText.find(cDelimiter, uStart)) != std::wstring::npos; uStart = uEnd + 1)
        sPieces.push_back(sText.substr(uStart, uEnd - uStart));
    sPieces.push_back(sText.substr(uStart));
    return sPieces;
}

std::wstring sGetStringListText(std::vector<std::wstring> sItems, wchar_t cDelimiter) {
    std::wstring sResult;
    for (std::size_t u = 0; u < sItems.size(); ++u) {
        if (u != 0) sResult += cDelimiter;
        sResult += sItems[u];
    }
    return sResult;
}

void ForEachStringListComponent(std::vector<std::wstring> sItems,
                                std::function<void(int, std::wstring const &)> fCall) {
    int iIndex = 0;
    for (std::wstring const & sItem : sItems)
        fCall(iIndex++, sItem);
}
