/// The run mode for automatic runs, in which the outside world is fixed.
#pragma once

#include "ZkBase/Export.h"

#include <string>

namespace GTest {

/// Names a fixed identifier.
enum EUUID : int {
    euuidFirst = 1,
};

/// True when the environment variable ZK_TEST_MODE was "1" at the first call of this function.
[[nodiscard]] ZKBASE_API bool fIsTest();

/// 2024-01-15 in the user's short date form.
[[nodiscard]] ZKBASE_API std::wstring sGetCurrentDate();

/// 08:30:00 in the user's time form.
[[nodiscard]] ZKBASE_API std::wstring sGetCurrentTime();

/// "2024-01-15T08:30:00".
[[nodiscard]] ZKBASE_API std::wstring sGetCurrentDateTime();

/// The identifier of that value: "00000000-0000-4000-8000-00000000000N" with N in hexadecimal, twelve digits wide.
[[nodiscard]] ZKBASE_API std::wstring sGetUUID(EUUID eUuid);

} // namespace GTest
