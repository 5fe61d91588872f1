// Paths as they are given to the tool.
#pragma once

#include "ZkBase/Windows.h"

#include <string>

/// The path seen from where the tool stands.
[[nodiscard]] inline std::wstring sGetAbsolute(std::wstring const & sPath) {
    DWORD const dwSize = GetFullPathNameW(sPath.c_str(), 0, nullptr, nullptr);
    std::wstring sFull(dwSize, L'\0');
    sFull.resize(GetFullPathNameW(sPath.c_str(), dwSize, sFull.data(), nullptr));
    return sFull;
}
