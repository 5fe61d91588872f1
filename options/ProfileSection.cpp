#include "ZkTools/ProfileSection.h"

#include "ZkBase/Windows.h"

#include <cwchar>

namespace {

/// The text of a section: lines with a terminator each, and an empty one behind the last; empty when there are none.
std::vector<wchar_t> vRead(wchar_t const * pzSection, wchar_t const * pzFile) {
    std::vector<wchar_t> vText;
    DWORD dwLength = 0;
    DWORD dwSize = 8192;
    while (true) {
        vText.resize(dwSize);
        dwLength = GetPrivateProfileSectionW(pzSection, vText.data(), dwSize, pzFile);
        if (dwLength != dwSize - 2) break; // it did fit
        dwSize *= 2;
    }
    if (dwLength == 0) vText.front() = L'\0';
    return vText;
}

TProfileSection::TLine tSplit(wchar_t * pzLine) {
    constexpr wchar_t const * pzDelimiter = L"=";
    wchar_t * pzRest = nullptr;
    wchar_t * const pzKey = wcstok_s(pzLine, pzDelimiter, &pzRest);
    return {pzKey, pzKey != nullptr ? wcstok_s(nullptr, pzDelimiter, &pzRest) : nullptr};
}

} // namespace

TProfileSection::TProfileSection(wchar_t const * pzSection, wchar_t const * pzFile)
    : vBuffer(vRead(pzSection, pzFile)) {
    for (wchar_t * pzLine = vBuffer.data(); *pzLine != L'\0';) {
        wchar_t * const pzNext = pzLine + std::wcslen(pzLine) + 1; // before the line is cut
        vLines.push_back(tSplit(pzLine));
        pzLine = pzNext;
    }
}
