#include "tests/tools/Tool.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace zk_test;

TEST(Languages, PrintsAllInTheirOrder) {
    TToolRun const tRun = tRunTool({L"languages"});
    EXPECT_EQ(tRun.dwExit, 0u);
    EXPECT_EQ(tRun.sErrors, "");
    EXPECT_TRUE(tRun.sOutput.starts_with("en  English\r\nde  German\r\nsq  Albanian\r\n")) << tRun.sOutput;
    EXPECT_TRUE(tRun.sOutput.ends_with("vi  Vietnamese\r\n")) << tRun.sOutput;
    EXPECT_EQ(std::ranges::count(tRun.sOutput, '\n'), 46);
}

TEST(Languages, PrintsOneOfACodeOrAName) {
    for (wchar_t const * pzText : {L"de", L"DE", L"German"}) {
        TToolRun const tRun = tRunTool({L"languages", pzText});
        EXPECT_EQ(tRun.dwExit, 0u);
        EXPECT_EQ(tRun.sOutput, "de  German\r\n");
    }
}

TEST(Languages, TellsThatOneIsUnknown) {
    TToolRun const tRun = tRunTool({L"languages", L"german"});
    EXPECT_EQ(tRun.dwExit, 1u);
    EXPECT_EQ(tRun.sOutput, "");
    EXPECT_EQ(tRun.sErrors, "There is no language \"german\".\r\n");
    EXPECT_EQ(tRunTool({L"languages", L""}).dwExit, 1u);
}
