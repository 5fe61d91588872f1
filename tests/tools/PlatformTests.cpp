#include "ZkTools/Platform.h"

#include "tests/tools/Tool.h"

#include <gtest/gtest.h>

using namespace zk_test;

TEST(PlatformCommand, TellsWhatTheLibraryFinds) {
    TToolRun const tRun = tRunTool({L"platform"});
    EXPECT_EQ(tRun.dwExit, 0u);
    EXPECT_EQ(tRun.sErrors, "");

    auto const [iMajor, iMinor, iBuild, iRevision] = GetHighestAvailableFrameworkVersion();
    std::string const sVersion = iMajor != 0 ? std::to_string(iMajor) + "." + std::to_string(iMinor) + "." +
                                                   std::to_string(iBuild) + "." + std::to_string(iRevision)
                                             : "none";
    unsigned long const dwRelease = dwGetDotNet4Release();
    EXPECT_EQ(tRun.sOutput, ".NET Framework: " + sVersion + "\r\n.NET Framework 4 release: " +
                                (dwRelease != 0 ? std::to_string(dwRelease) : "none") +
                                "\r\nadministrator: " + (IsUserAdmin() ? "yes" : "no") + "\r\n");
}

TEST(PlatformCommand, TakesNoArguments) {
    TToolRun const tRun = tRunTool({L"platform", L"more"});
    EXPECT_EQ(tRun.dwExit, 2u);
    EXPECT_EQ(tRun.sErrors, "zk platform: There are too many arguments.\r\nusage: zk platform\r\n");
}
