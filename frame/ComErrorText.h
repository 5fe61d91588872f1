// An HRESULT in words.
#pragma once

#include "ZkBase/Windows.h"

#include <memory>

struct TFreeLocal {
    void operator()(wchar_t * p) const noexcept { LocalFree(p); }
};
using TLocalText = std::unique_ptr<wchar_t, TFreeLocal>;

/// The number that the error has among those of automation servers: the distance from 0x80040200, up to 0x8004FFFF; 0
/// outside.
[[nodiscard]] unsigned short uGetDispatchNumber(HRESULT hr) noexcept;

/// The system's text without its line end; where it has none, "IDispatch error #N" or "Unknown error 0xN". Null when
/// there is no memory for it.
/// \param dwFurtherFlags for `FormatMessageW`
[[nodiscard]] TLocalText pzGetComErrorText(HRESULT hr, DWORD dwFurtherFlags = 0) noexcept;
