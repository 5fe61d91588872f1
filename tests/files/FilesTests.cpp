#include "ZkTools/Files.h"

#include "ZkTools/Exceptions.h"
#include "ZkTools/MessageIds.h"
#include "tests/support/Handle.h"
#include "tests/support/SystemCall.h"
#include "tests/support/TempDirectory.h"

#include <gtest/gtest.h>

#include <system_error>
#include <vector>

using testing::PrintToString;
using zk_test::THandle;
using zk_test::TTempDirectory;

TEST(SGetUniqueFilePath, TakesTheFirstFreeNumberFrom2) {
    TTempDirectory const tTemp;
    EXPECT_EQ(sGetUniqueFilePath(tTemp.sGetPath(), L"a", L"tmp"), tTemp.sGetPath(L"a.tmp"));
    tTemp.sWrite(L"a.tmp", "");
    EXPECT_EQ(sGetUniqueFilePath(tTemp.sGetPath(), L"a", L"tmp"), tTemp.sGetPath(L"a_2.tmp"));
    tTemp.sMakeDirectory(L"a_2.tmp");
    tTemp.sWrite(L"a_4.tmp", "");
    EXPECT_EQ(sGetUniqueFilePath(tTemp.sGetPath(), L"a", L"tmp"), tTemp.sGetPath(L"a_3.tmp"));
    EXPECT_EQ(zk_test::sListDirectory(tTemp.sGetPath()), L"a.tmp|a_2.tmp|a_4.tmp"); // nothing is made
}
