// The record in which old files hold an alias: three fields of fixed size, each a null-terminated text in the thread's
// ANSI code page.
#pragma once

#include "ZkBase/Windows.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <string>

struct TOldTagRecord {
    std::array<char, 21> acTag{};
    std::array<char, 7> acVersion{};
    std::array<char, 7> acVariant{};
};
static_assert(sizeof(TOldTagRecord) == 35);

/// Fills a field with as much of the text as leaves room for the terminator, and with zeros behind it. A null text
/// empties it.
inline void SetOldTagField(std::span<char> acField, char const * pzText) noexcept {
    std::size_t const uRoom = acField.size() - 1;
    std::size_t const uLength = pzText != nullptr ? strnlen(pzText, uRoom) : 0;
    std::ranges::fill(std::copy_n(pzText, uLength, acField.begin()), acField.end(), '\0');
}

/// The same from wide text.
inline void SetOldTagField(std::span<char> acField, wchar_t const * pzText) {
    if (pzText == nullptr) return SetOldTagField(acField, static_cast<char const *>(nullptr));
    int const iSize = WideCharToMultiByte(CP_THREAD_ACP, 0, pzText, -1, nullptr, 0, nullptr, nullptr);
    std::string sNarrow(static_cast<std::size_t>(iSize), '\0');
    WideCharToMultiByte(CP_THREAD_ACP, 0, pzText, -1, sNarrow.data(), iSize, nullptr, nullptr);
    SetOldTagField(acField, sNarrow.c_str());
}

/// The text of a field. One of a damaged record, without a terminator, ends with the field.
inline std::wstring sGetOldTagField(std::span<char const> acField) {
    int const iBytes = static_cast<int>(strnlen(acField.data(), acField.size()));
    if (iBytes == 0) return {};
    std::array<wchar_t, 32> acText; // a byte never becomes more than one unit in an ANSI code page
    int const iUnits =
        MultiByteToWideChar(CP_THREAD_ACP, 0, acField.data(), iBytes, acText.data(), static_cast<int>(acText.size()));
    return {acText.data(), static_cast<std::size_t>(iUnits)};
}
