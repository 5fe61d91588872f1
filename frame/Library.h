// What the entry routine keeps for the rest of the library.
#pragma once

#include "ZkBase/Windows.h"

/// The message module, from the load of the library to its unload.
[[nodiscard]] HINSTANCE hGetMessageModule() noexcept;
