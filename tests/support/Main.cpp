// The entry of every test program.
#include <gtest/gtest.h>

int main(int iCount, char ** ppArguments) {
    testing::InitGoogleTest(&iCount, ppArguments);
    return RUN_ALL_TESTS();
}
