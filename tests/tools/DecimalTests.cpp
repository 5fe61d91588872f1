#include "tests/tools/Tool.h"

#include "ZkTools/MessageIds.h"

#include <gtest/gtest.h>

using namespace zk_test;

namespace {

/// The output of a run that goes well.
std::string sRun(std::wstring const & sType, std::wstring const & sValue, std::vector<std::wstring> sMore = {}) {
    sMore.insert(sMore.begin(), {L"decimal", sType, sValue});
    TToolRun const tRun = tRunTool(sMore);
    EXPECT_EQ(tRun.dwExit, 0u);
    EXPECT_EQ(tRun.sErrors, "");
    return tRun.sOutput;
}

} // namespace

TEST(DecimalCommand, CountsTheDigits) {
    EXPECT_EQ(sRun(L"decimal", L"-0012.50"), "digits: 3\r\nbehind the point: 1\r\n");
    EXPECT_EQ(sRun(L"byte", L"+0127.000"), "digits: 3\r\nbehind the point: 0\r\n");
}

TEST(DecimalCommand, ComparesWithAnother) {
    EXPECT_EQ(sRun(L"integer", L"9", {L"10"}), "digits: 1\r\nbehind the point: 0\r\norder: less\r\n");
    EXPECT_EQ(sRun(L"decimal", L"1.05", {L"1.5"}), "digits: 3\r\nbehind the point: 2\r\norder: greater\r\n");
    EXPECT_EQ(sRun(L"decimal", L"1.0", {L"+1"}), "digits: 1\r\nbehind the point: 0\r\norder: equal\r\n");
}

TEST(DecimalCommand, KnowsEveryType) {
    for (wchar_t const * const pzType :
         {L"decimal", L"integer", L"long", L"int", L"short", L"byte", L"nonNegativeInteger", L"positiveInteger",
          L"unsignedLong", L"unsignedInt", L"unsignedShort", L"unsignedByte"})
        EXPECT_EQ(sRun(pzType, L"7"), "digits: 1\r\nbehind the point: 0\r\n");
    for (wchar_t const * const pzType : {L"nonPositiveInteger", L"negativeInteger"})
        EXPECT_EQ(sRun(pzType, L"-7"), "digits: 1\r\nbehind the point: 0\r\n");
}

TEST(DecimalCommand, RefusesWhatIsNoValue) {
    auto const ExpectRefused = [](std::vector<std::wstring> const & sArguments, wchar_t const * pzValue,
                                  wchar_t const * pzType) {
        TToolRun const tRun = tRunTool(sArguments);
        EXPECT_EQ(tRun.dwExit, 1u);
        EXPECT_EQ(tRun.sErrors, sMessage(IDS_DECIMAL_INVALID, pzValue, pzType) + "\r\n");
        EXPECT_EQ(tRun.sOutput, "");
    };
    ExpectRefused({L"decimal", L"byte", L"128"}, L"128", L"byte");
    ExpectRefused({L"decimal", L"decimal", L"1e5"}, L"1e5", L"decimal");
    ExpectRefused({L"decimal", L"decimal", L""}, L"", L"decimal");
    ExpectRefused({L"decimal", L"integer", L"1", L"1.5"}, L"1.5", L"integer");
    ExpectRefused({L"decimal", L"decimal", L"--", L"--5"}, L"--5", L"decimal");
}

TEST(DecimalCommand, TellsWrongUsage) {
    std::string const sUsage = "\r\nusage: zk decimal TYPE VALUE [OTHER]\r\n";
    EXPECT_EQ(tRunTool({L"decimal", L"byte"}).sErrors, "zk decimal: Arguments are missing." + sUsage);
    EXPECT_EQ(tRunTool({L"decimal", L"byte", L"1", L"2", L"3"}).sErrors,
              "zk decimal: There are too many arguments." + sUsage);
    TToolRun const tRun = tRunTool({L"decimal", L"\u00FCbyte", L"1"});
    EXPECT_EQ(tRun.sErrors, "zk decimal: \xC3\xBC"
                            "byte is no type." +
                                sUsage);
    EXPECT_EQ(tRun.dwExit, 2u);
    EXPECT_EQ(tRun.sOutput, "");
}
