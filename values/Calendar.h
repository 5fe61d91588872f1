// The calendar behind TZkDateTime: what SystemTimeToFileTime and FileTimeToSystemTime do, on the whole range that they
// are documented for and at a fraction of their time. (Not every system under the library keeps to their limits: some
// take the 29th of any February.)
#pragma once

#include "ZkBase/Windows.h"

#include <optional>

constexpr unsigned __int64 uiTicksPerMillisecond = 10'000;
constexpr unsigned __int64 uiTicksPerSecond = 10'000'000;

/// The ticks of a moment; nothing where there is no such date or time from 1601 to 30827. The day of the week is not
/// looked at.
[[nodiscard]] std::optional<unsigned __int64> puiGetTicks(SYSTEMTIME const & tTime) noexcept;

/// The fields of a moment, with the day of the week; all zero for ticks of 2 to the 63 and above.
[[nodiscard]] SYSTEMTIME tGetSystemTime(unsigned __int64 uiTicks) noexcept;
