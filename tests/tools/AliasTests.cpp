#include "tests/tools/Tool.h"

#include <gtest/gtest.h>

using namespace zk_test;

namespace {

/// The output of a run that goes well.
std::string sRun(std::vector<std::wstring> sArguments) {
    sArguments.insert(sArguments.begin(), L"alias");
    TToolRun const tRun = tRunTool(sArguments);
    EXPECT_EQ(tRun.dwExit, 0u);
    EXPECT_EQ(tRun.sErrors, "");
    return tRun.sOutput;
}

/// The first line on the error stream of a run that is refused for its usage.
std::string sRefuse(std::vector<std::wstring> sArguments) {
    sArguments.insert(sArguments.begin(), L"alias");
    TToolRun const tRun = tRunTool(sArguments);
    EXPECT_EQ(tRun.dwExit, 2u);
    EXPECT_EQ(tRun.sOutput, "");
    EXPECT_NE(tRun.sErrors.find("\r\nusage: zk alias "), std::string::npos);
    return tRun.sErrors.substr(0, tRun.sErrors.find("\r\n"));
}

} // namespace

TEST(AliasCommand, ParsesAMergedText) {
    EXPECT_EQ(sRun({L"parse", L"A; 1; V; W"}), "tag: A\r\nversion: 1\r\nvariant: V; W\r\n");
    EXPECT_EQ(sRun({L"parse", L" \u00E4\u20AC\u4E2D ; ; \U0001F600"}),
              "tag: \xC3\xA4\xE2\x82\xAC\xE4\xB8\xAD\r\nversion:\r\nvariant: \xF0\x9F\x98\x80\r\n");
    EXPECT_EQ(sRun({L"parse", L"A/1/V", L"--separator", L"/"}), "tag: A\r\nversion: 1\r\nvariant: V\r\n");
    EXPECT_EQ(sRun({L"parse", L"--", L"--x"}), "tag: --x\r\nversion:\r\nvariant:\r\n");
    EXPECT_EQ(sRun({L"parse", L""}), "tag:\r\nversion:\r\nvariant:\r\n");
}

TEST(AliasCommand, MakesAFileName) {
    EXPECT_EQ(sRun({L"file-name", L"A/B; 1"}), "A_B_1\r\n");
    EXPECT_EQ(sRun({L"file-name", L"\u00E4:1", L"--separator", L":", L"--join", L" - "}), "\xC3\xA4 - 1\r\n");
    EXPECT_EQ(sRun({L"file-name", L"A; 1", L"--join", L":"}), "A_1\r\n");
}

TEST(AliasCommand, ComparesTwo) {
    EXPECT_EQ(sRun({L"compare", L"a", L"B"}), "greater\r\n");
    EXPECT_EQ(sRun({L"compare", L"A; 1", L"A; 2"}), "less\r\n");
    EXPECT_EQ(sRun({L"compare", L" A ; 1", L"A; 1"}), "equal\r\n");
    EXPECT_EQ(sRun({L"compare", L"A; 10", L"A; 9"}), "less\r\n");
    EXPECT_EQ(sRun({L"compare", L"A; 10", L"A; 9", L"--numeric"}), "greater\r\n");
}

TEST(AliasCommand, TellsWrongUsage) {
    EXPECT_EQ(sRefuse({}), "zk alias: Arguments are missing.");
    EXPECT_EQ(sRefuse({L"parse"}), "zk alias: Arguments are missing.");
    EXPECT_EQ(sRefuse({L"compare", L"A"}), "zk alias: Arguments are missing.");
    EXPECT_EQ(sRefuse({L"parse", L"A", L"B"}), "zk alias: There are too many arguments.");
    EXPECT_EQ(sRefuse({L"compare", L"A", L"B", L"C"}), "zk alias: There are too many arguments.");
    EXPECT_EQ(sRefuse({L"merge", L"A"}), "zk alias: merge is no action.");
    EXPECT_EQ(sRefuse({L"parse", L"A", L"--numeric"}), "zk alias: --numeric does not go with parse.");
    EXPECT_EQ(sRefuse({L"compare", L"A", L"B", L"--join", L"-"}), "zk alias: --join does not go with compare.");
    EXPECT_EQ(sRefuse({L"parse", L"A", L"--separator"}), "zk alias: --separator lacks its value.");
}
