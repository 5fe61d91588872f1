// The entry of every test program.
//
// With the environment variable ZK_GUARD_PAGES the program runs with guard pages.
#include "ZkBase/Windows.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/GuardPages.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

namespace {

/// Ends a crashed program at once: no dialog, no debugger that waits for somebody.
LONG WINAPI iEndAfterCrash(EXCEPTION_POINTERS * pPointers) {
    EXCEPTION_RECORD const & tRecord = *pPointers->ExceptionRecord;
    std::fprintf(stderr, "crashed: exception %08lX at %p\n", tRecord.ExceptionCode, tRecord.ExceptionAddress);
    std::fflush(stderr);
    TerminateProcess(GetCurrentProcess(), tRecord.ExceptionCode);
    return EXCEPTION_CONTINUE_SEARCH;
}

/// Every test has its own share of guarded blocks.
class TGuardedTests : public testing::EmptyTestEventListener {
    void OnTestStart(testing::TestInfo const &) override { zk_test::BeginGuardedTest(); }
};

} // namespace

int main(int iCount, char ** ppArguments) {
    SetUnhandledExceptionFilter(&iEndAfterCrash);
    if (std::getenv("ZK_GUARD_PAGES") != nullptr && !zk_test::fInstallGuardPages()) return EXIT_FAILURE;
    if (auto const piExit = zk_test::piRunChildRole()) return *piExit;
    testing::InitGoogleTest(&iCount, ppArguments);
    testing::UnitTest::GetInstance()->listeners().Append(new TGuardedTests); // owned by the framework
    return RUN_ALL_TESTS();
}
