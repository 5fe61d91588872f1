// The entry of every test program.
#include "tests/support/ChildProcess.h"

#include <gtest/gtest.h>

int main(int iCount, char ** ppArguments) {
    if (auto const piExit = zk_test::piRunChildRole()) return *piExit;
    testing::InitGoogleTest(&iCount, ppArguments);
    return RUN_ALL_TESTS();
}
