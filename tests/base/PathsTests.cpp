#include "ZkBase/Paths.h"

#include <gtest/gtest.h>

#include <array>

using namespace path_func;

TEST(sPathAppend, JoinsWithOneBackslash) {
    EXPECT_EQ(sPathAppend(L"C:\\a", L"b"), L"C:\\a\\b");
    EXPECT_EQ(sPathAppend(L"C:\\a\\", L"\\b"), L"C:\\a\\b");
}

TEST(fPathRemoveFileSpec, ClimbsToTheRoot) {
    std::wstring sPath = L"C:\\a\\b";
    EXPECT_TRUE(fPathRemoveFileSpec(sPath));
    EXPECT_TRUE(fPathRemoveFileSpec(sPath));
    EXPECT_EQ(sPath, L"C:\\");
    EXPECT_FALSE(fPathRemoveFileSpec(sPath));
}
