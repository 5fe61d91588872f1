#include "ZkTools/MessageIds.h"
#include "tests/tools/Tool.h"

#include <gtest/gtest.h>

using namespace std::string_literals;
using namespace zk_test;

namespace {

class Sort : public testing::Test {
protected:
    /// Sorts a file of these bytes.
    [[nodiscard]] TToolRun tSort(std::string const & sBytes) const {
        return tRunTool({L"sort", tDirectory.sWrite(L"lines", sBytes)});
    }

    TTempDirectory tDirectory;
};

} // namespace

TEST_F(Sort, OrdersNumbersAndWords) {
    TToolRun const tRun = tSort("apple\n10\nabc\n9\nAbc\n-1\n1.11\n1.9\n");
    EXPECT_EQ(tRun.dwExit, 0u);
    EXPECT_EQ(tRun.sErrors, "");
    EXPECT_EQ(tRun.sOutput, "-1\r\n1.9\r\n1.11\r\n9\r\n10\r\nAbc\r\nabc\r\napple\r\n");
}

TEST_F(Sort, TurnsTheOrderRoundAndKeepsEqualLines) {
    std::wstring const sFile = tDirectory.sWrite(L"lines", "7 a\n10\n007 b\n7 c\n");
    EXPECT_EQ(tRunTool({L"sort", sFile}).sOutput, "7 a\r\n007 b\r\n7 c\r\n10\r\n");
    EXPECT_EQ(tRunTool({L"sort", L"--reverse", sFile}).sOutput, "10\r\n7 a\r\n007 b\r\n7 c\r\n");
}

TEST_F(Sort, TakesLinesOfEitherEnd) {
    EXPECT_EQ(tSort("b\r\na").sOutput, "a\r\nb\r\n");
    EXPECT_EQ(tSort("b\n\na\n").sOutput, "\r\na\r\nb\r\n");
    EXPECT_EQ(tSort("a\rb\n").sOutput, "a\rb\r\n");
    EXPECT_EQ(tSort("\n").sOutput, "\r\n");
    EXPECT_EQ(tSort("").sOutput, "");
    EXPECT_EQ(tSort("").dwExit, 0u);
}

TEST_F(Sort, TakesUtf8AndUtf16) {
    EXPECT_EQ(tSort("\xF0\x9F\x98\x80\n\xC3\xA4\nz\n").sOutput, "z\r\n\xC3\xA4\r\n\xF0\x9F\x98\x80\r\n");
    EXPECT_EQ(tSort("\xEF\xBB\xBF"
                    "b\na\n")
                  .sOutput,
              "a\r\nb\r\n");
    EXPECT_EQ(tSort("\xFF\xFE\xE4\0\r\0\n\0a\0"s).sOutput, "a\r\n\xC3\xA4\r\n");
}

TEST_F(Sort, ReadsTheStandardInput) {
    TTool tTool({L"sort"});
    for (char const * pzLine : {"10", "\xC3\xA4", "9", "z"})
        tTool.tGet().Say(pzLine);
    TToolRun const tRun = tTool.tEnd();
    EXPECT_EQ(tRun.dwExit, 0u);
    EXPECT_EQ(tRun.sOutput, "9\r\n10\r\nz\r\n\xC3\xA4\r\n");
    EXPECT_EQ(tRunTool({L"sort"}).sOutput, "");
}

TEST_F(Sort, TellsWhatItCannotRead) {
    TToolRun const tBad = tSort("a\n\xFF\n");
    EXPECT_EQ(tBad.dwExit, 1u);
    EXPECT_EQ(tBad.sOutput, "");
    EXPECT_EQ(tBad.sErrors, sSystemText(ERROR_NO_UNICODE_TRANSLATION) + "\r\n");

    std::wstring const sMissing = tDirectory.sGetPath(L"missing");
    TToolRun const tMissing = tRunTool({L"sort", sMissing});
    EXPECT_EQ(tMissing.dwExit, 1u);
    EXPECT_EQ(tMissing.sErrors,
              sSystemText(ERROR_FILE_NOT_FOUND) + "\r\n" + sMessage(IDS_APPEND_FILE_DETAIL, sMissing.c_str()) + "\r\n");
}
