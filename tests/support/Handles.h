/// Finds handles that are left open.
#pragma once

#include <functional>

namespace zk_test {

/// How many handles this process has open.
[[nodiscard]] unsigned long dwCountHandles();

/// Does the same thing several times and fails the test when the process has more handles open behind the last time
/// than behind the first: the first time may open what the system keeps, such as a registry key.
void ExpectNoHandleLeak(std::function<void()> const & tAction);

} // namespace zk_test
