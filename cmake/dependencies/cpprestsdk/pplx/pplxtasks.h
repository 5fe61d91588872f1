#pragma once
// Nothing of the task library, for a URI starts no task; only the standard headers that come with it.

#include <algorithm>
#include <functional>
#include <memory>
