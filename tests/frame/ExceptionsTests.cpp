#include "ZkTools/Exceptions.h"

#include <gtest/gtest.h>

TEST(TXZkTools, BearsTheMessageIdAndTheModuleTag) {
    TXZkTools const tError(4230, L"a", L"b");
    EXPECT_EQ(tError.iGetNumber(), 4230);
    EXPECT_EQ(tError.sGetModule(), L"ZKTOOLS");
    EXPECT_STREQ(tError.what(), "Cannot rename \"a\" to \"b\".");
}
