// Text in: of a file or of the standard input.
#pragma once

#include "tools/zk/Command.h"

#include <string>

/// The text of the file that the plain argument at that place names: UTF-16 behind its mark, UTF-8 otherwise. Without
/// that argument all of the standard input: UTF-8, but what is typed at a console comes in the console's code page.
/// \throws TXZkTools for a file that cannot be read, and for bytes that are no text
[[nodiscard]] std::wstring sReadText(TArguments const & tArguments, std::size_t uIndex);
