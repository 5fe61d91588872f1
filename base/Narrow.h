// Narrow text of exceptions: the thread's ANSI code page.
#pragma once

#include <string>
#include <string_view>

/// A character that the code page lacks becomes one that looks like it, or the default character.
[[nodiscard]] std::string sNarrow(std::wstring_view sText);
