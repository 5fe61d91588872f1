/// Random text.
#pragma once

#include <cstddef>
#include <random>
#include <string>
#include <string_view>

namespace zk_test {

/// A text of up to `uLongest` of these characters.
inline std::wstring sRandom(std::mt19937 & tRandom, std::wstring_view sCharacters, std::size_t uLongest) {
    std::wstring sText(tRandom() % (uLongest + 1), L'\0');
    for (wchar_t & c : sText)
        c = sCharacters[tRandom() % sCharacters.size()];
    return sText;
}

} // namespace zk_test
