// Copying the bytes of numbers and texts between blocks and callers.
#pragma once

#include <cstring>

/// The few bytes of a number are copied in place, more by the run-time.
inline void CopyBytes(void * pTo, void const * pFrom, unsigned long dwCount) noexcept {
    switch (dwCount) {
    case 0:
        break;
    case 1:
        std::memcpy(pTo, pFrom, 1);
        break;
    case 2:
        std::memcpy(pTo, pFrom, 2);
        break;
    case 4:
        std::memcpy(pTo, pFrom, 4);
        break;
    case 8:
        std::memcpy(pTo, pFrom, 8);
        break;
    default:
        std::memcpy(pTo, pFrom, dwCount);
    }
}
