#include "ZkTools/DateTime.h"
#include "tests/tools/Tool.h"

#include <gtest/gtest.h>

using namespace std::string_view_literals;
using namespace zk_test;

namespace {

/// Text of these tests, which is ASCII but for what a locale may bring.
std::string sUtf8(std::wstring_view sText) {
    int const iUnits = static_cast<int>(sText.size());
    std::string sBytes(sText.size() * 3, '\0');
    sBytes.resize(static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, sText.data(), iUnits, sBytes.data(),
                                                               static_cast<int>(sBytes.size()), nullptr, nullptr)));
    return sBytes;
}

} // namespace

TEST(Date, PrintsAllForms) {
    TZkDateTime const tDate(L"2024-01-15T08:30:00"sv);
    TToolRun const tRun = tRunTool({L"date", L"2024-1-15T8:30:00.5+01:00"});
    EXPECT_EQ(tRun.dwExit, 0u);
    EXPECT_EQ(tRun.sErrors, "");
    EXPECT_EQ(tRun.sOutput, "text: 2024-01-15T08:30:00.5\r\n"
                            "short: " +
                                sUtf8(tDate.sGetViewString(edtDateTime, edfShort, nullptr, etfDefault, nullptr)) +
                                "\r\n"
                                "long: " +
                                sUtf8(tDate.sGetViewDateString(edfLong, nullptr)) +
                                "\r\n"
                                "local: " +
                                sUtf8(sGetLocalTimeOfUTCTime(L"2024-01-15T08:30:00")) +
                                "\r\n"
                                "ticks: 133497810000000005\r\n");
}

TEST(Date, IsNowWithoutAnArgument) {
    auto const sNow = [] {
        SYSTEMTIME tNow;
        GetLocalTime(&tNow);
        return sUtf8(TZkDateTime(tNow).sGetString(edtDateTime, false));
    };
    std::string const sBefore = sNow();
    std::string const sText = tRunTool({L"date"}).sOutput.substr(6, 19);
    EXPECT_LE(sBefore, sText);
    EXPECT_LE(sText, sNow());
}

TEST(Date, CountsBordersSinceAnother) {
    TToolRun const tRun = tRunTool({L"date", L"--since", L"2024-01-14T23:59:59", L"2024-01-15"});
    EXPECT_EQ(tRun.dwExit, 0u);
    EXPECT_EQ(tRun.sOutput, "weeks: 1\r\ndays: 1\r\nhours: 1\r\nminutes: 1\r\nseconds: 1\r\nmilliseconds: 1000\r\n"
                            "ticks: 10000000\r\n");
    EXPECT_TRUE(tRunTool({L"date", L"2024-01-14", L"--since", L"2024-01-15"})
                    .sOutput.starts_with("weeks: -1\r\ndays: -1\r\nhours: -24\r\n"));
}

TEST(Date, TellsWhatIsNoDate) {
    for (std::vector<std::wstring> const & sArguments :
         {std::vector<std::wstring>{L"date", L"2024-02-30"}, {L"date", L"--since", L"2024-02-30"}}) {
        TToolRun const tRun = tRunTool(sArguments);
        EXPECT_EQ(tRun.dwExit, 1u);
        EXPECT_EQ(tRun.sOutput, "");
        EXPECT_EQ(tRun.sErrors, "Invalid dateTime string '2024-02-30'\r\n");
    }
}
