// Narrow text of exceptions: the thread's ANSI code page.
#pragma once

#include <string>
#include <string_view>

/// A character that the code page lacks becomes its default character.
[[nodiscard]] std::string sNarrow(std::wstring_view sText);
