#include "tests/support/Handles.h"

#include "ZkBase/Windows.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

/// Looks at one handle value after another, for a platform that does not count: Wine's GetProcessHandleCount gives 0.
/// Handles are multiples of 4, and a new one takes the lowest free value, so a long gap is the end.
unsigned long dwProbeHandles() {
    constexpr std::uintptr_t uStep = 4;
    constexpr unsigned int uLongGap = 1024;
    unsigned long dwCount = 0;
    std::uintptr_t uValue = uStep;
    for (unsigned int uGap = 0; uGap < uLongGap; uValue += uStep) {
        DWORD dwFlags = 0;
        bool const fOpen = GetHandleInformation(reinterpret_cast<HANDLE>(uValue), &dwFlags) != FALSE;
        dwCount += fOpen ? 1 : 0;
        uGap = fOpen ? 0 : uGap + 1;
    }
    return dwCount;
}

} // namespace

namespace zk_test {

unsigned long dwCountHandles() {
    DWORD dwCount = 0;
    if (GetProcessHandleCount(GetCurrentProcess(), &dwCount) && dwCount != 0) return dwCount;
    return dwProbeHandles();
}

void ExpectNoHandleLeak(std::function<void()> const & tAction) {
    constexpr int iTimes = 8; // a handle that the system opens now and then stays below it
    tAction();
    unsigned long const dwBefore = dwCountHandles();
    for (int i = 0; i < iTimes; ++i)
        tAction();
    unsigned long const dwAfter = dwCountHandles();
    EXPECT_LT(dwAfter, dwBefore + iTimes) << "handles are left open";
}

} // namespace zk_test
