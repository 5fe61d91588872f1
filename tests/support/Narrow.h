/// What `what()` makes of wide text.
#pragma once

#include <string>
#include <string_view>

namespace zk_test {

/// Wide text in the thread's ANSI code page.
[[nodiscard]] std::string sNarrow(std::wstring_view sText);

} // namespace zk_test
