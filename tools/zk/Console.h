// Text out: as it is on a console, UTF-8 where the output is redirected.
#pragma once

#include <string>
#include <string_view>

/// Prints one or more lines to the standard output, and ends the last one. Lines may end in LF or CR LF; they leave
/// with CR LF. Nothing is held back.
/// \throws TXZkTools when the output takes no more
void PrintLine(std::wstring_view sText);

/// The same to the standard error stream; a failure is not told.
void PrintError(std::wstring_view sText) noexcept;

/// The text of an exception, which stands in the thread's ANSI code page, as wide text.
[[nodiscard]] std::wstring sWiden(std::string_view sText);

/// A comparison in words: "less", "equal" or "greater".
[[nodiscard]] std::wstring sDescribeOrder(int iOrder);
