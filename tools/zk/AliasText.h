// An alias as the tool prints it.
#pragma once

#include "ZkTools/Alias.h"

#include <string>

/// Three lines: tag, version and variant.
[[nodiscard]] std::wstring sDescribe(TAlias const & tAlias);
