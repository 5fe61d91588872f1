#include "frame/ComErrorText.h"

#include <cstddef>
#include <cstdio>

namespace {

/// The system's text for an error without its line end; null when the system has none.
TLocalText pzFindSystemText(HRESULT hr, DWORD dwFurtherFlags) noexcept {
    wchar_t * pzText = nullptr;
    unsigned long const dwLength =
        FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | dwFurtherFlags, nullptr,
                       static_cast<unsigned long>(hr), MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT),
                       reinterpret_cast<wchar_t *>(&pzText), 0, nullptr);
    if (dwLength >= 2 && pzText[dwLength - 1] == L'\n') {
        pzText[dwLength - 1] = 0;
        if (pzText[dwLength - 2] == L'\r') pzText[dwLength - 2] = 0;
    }
    return TLocalText(pzText);
}

} // namespace

unsigned short uGetDispatchNumber(HRESULT hr) noexcept {
    constexpr unsigned long dwFirst = 0x80040200;
    constexpr unsigned long dwLast = 0x8004FFFF;
    auto const dwError = static_cast<unsigned long>(hr);
    if (dwError < dwFirst || dwError > dwLast) return 0;
    return static_cast<unsigned short>(dwError - dwFirst);
}

TLocalText pzGetComErrorText(HRESULT hr, DWORD dwFurtherFlags) noexcept {
    if (TLocalText pzText = pzFindSystemText(hr, dwFurtherFlags)) return pzText;
    constexpr std::size_t uUnits = 32;
    TLocalText pzText(static_cast<wchar_t *>(LocalAlloc(LMEM_FIXED, uUnits * sizeof(wchar_t))));
    if (pzText == nullptr) return pzText;
    if (unsigned short const uNumber = uGetDispatchNumber(hr); uNumber != 0)
        _snwprintf(pzText.get(), uUnits, L"IDispatch error #%d", uNumber);
    else
        _snwprintf(pzText.get(), uUnits, L"Unknown error 0x%0lX", static_cast<unsigned long>(hr));
    return pzText;
}
