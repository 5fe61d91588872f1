#include "tests/tools/Tool.h"

#include "ZkTools/MessageIds.h"

#include <gtest/gtest.h>

using namespace std::string_literals;
using namespace zk_test;

namespace {

class Show : public testing::Test {
protected:
    [[nodiscard]] std::wstring const & sDir() const { return tDirectory.sGetPath(); }
    [[nodiscard]] TToolRun tShow() const { return tRunTool({L"show", sDir(), L"main.dat"}); }
    /// Shows a file of these bytes.
    [[nodiscard]] TToolRun tShow(std::string const & sBytes) const {
        tDirectory.sWrite(L"main.dat", sBytes);
        return tShow();
    }

    TTempDirectory tDirectory;
};

std::string sGetCurrentForm() {
    return "\x01\x02\0A\0\x02\0"s + "1\0\x03\0\xC3\xA4\0"s;
}

} // namespace

TEST_F(Show, PrintsThreeLines) {
    EXPECT_EQ(tRunTool({L"store", sDir(), L"main.dat", L"A", L"1", L"V"}).dwExit, 0u);
    TToolRun const tRun = tShow();
    EXPECT_EQ(tRun.dwExit, 0u);
    EXPECT_EQ(tRun.sOutput, "tag: A\r\nversion: 1\r\nvariant: V\r\n");
    EXPECT_EQ(tRun.sErrors, "");
    EXPECT_EQ(sListDirectory(sDir()), L"main.dat");
}

TEST_F(Show, PrintsUtf8AndEmptyParts) {
    EXPECT_EQ(tShow("\x01\x06\0\xC3\xA4\xE2\x82\xAC\0\x01\0\0\x01\0\0"s).sOutput,
              "tag: \xC3\xA4\xE2\x82\xAC\r\nversion:\r\nvariant:\r\n");
}

TEST_F(Show, ReadsOldRecords) {
    std::string sRecord(35, '\0');
    sRecord[0] = '\xE4'; // of the ANSI code page
    sRecord[21] = '1';
    sRecord[28] = 'v';
    TToolRun const tRun = tShow(sRecord);
    EXPECT_EQ(tRun.dwExit, 0u);
    EXPECT_EQ(tRun.sOutput, "tag: \xC3\xA4\r\nversion: 1\r\nvariant: v\r\n");
}

TEST_F(Show, TakesNoMarkForAByteOrderMark) {
    std::string sRecord = "\xEF\xBB\xBF";
    sRecord.resize(35);
    EXPECT_EQ(tShow(sRecord).sOutput, "tag: \xC3\xAF\xC2\xBB\xC2\xBF\r\nversion:\r\nvariant:\r\n");
}

TEST_F(Show, ReadsBesideOtherReaders) {
    tDirectory.sWrite(L"main.dat", sGetCurrentForm());
    TTool tReader({L"hold", sDir(), L"main.dat", L"--read"});
    tReader.Await();
    EXPECT_EQ(tShow().sOutput, "tag: A\r\nversion: 1\r\nvariant: \xC3\xA4\r\n");
}

TEST_F(Show, IsRefusedWhileAnotherWrites) {
    tDirectory.sWrite(L"main.dat", sGetCurrentForm());
    TTool tWriter({L"hold", sDir(), L"main.dat", L"--write"});
    tWriter.Await();
    TToolRun const tRun = tShow();
    EXPECT_EQ(tRun.dwExit, 1u);
    EXPECT_EQ(tRun.sErrors, sMessage(IDS_LOCK_OPEN_FAILED, sDir().c_str()) + "\r\n" +
                                sMessage(IDS_LOCK_WRITER_KNOWN, sDir().c_str(), sGetOwnName().c_str()) + "\r\n");
    EXPECT_EQ(tRun.sOutput, "");
}

TEST_F(Show, FailsWithoutTheObject) {
    TToolRun const tRun = tShow();
    EXPECT_EQ(tRun.dwExit, 1u);
    EXPECT_EQ(tRun.sErrors, sSystemText(ERROR_FILE_NOT_FOUND) + "\r\n" +
                                sMessage(IDS_APPEND_FILE_DETAIL, tDirectory.sGetPath(L"main.dat").c_str()) + "\r\n");
    EXPECT_EQ(sListDirectory(sDir()), L"");
}

TEST_F(Show, FailsInAMissingDirectory) {
    std::wstring const sMissing = tDirectory.sGetPath(L"missing");
    TToolRun const tRun = tRunTool({L"show", sMissing, L"main.dat"});
    EXPECT_EQ(tRun.dwExit, 1u);
    EXPECT_EQ(tRun.sErrors,
              sSystemText(ERROR_PATH_NOT_FOUND) + "\r\n" + sMessage(IDS_LOCK_OPEN_FAILED, sMissing.c_str()) + "\r\n");
}

TEST_F(Show, TellsDamagedFilesAndCrashesOnNone) {
    std::string const sClosing =
        "\r\n\"" + std::string(sDir().begin(), sDir().end()) + "\\main.dat\" holds no alias.\r\n";
    std::string const sWhole = "\x01\x02\0A\0\x02\0"s + "1\0\x02\0V\0"s;
    for (std::size_t uLength = 0; uLength < sWhole.size(); ++uLength) {
        TToolRun const tRun = tShow(sWhole.substr(0, uLength));
        EXPECT_EQ(tRun.dwExit, 1u) << uLength;
        EXPECT_EQ(tRun.sErrors, sMessage(IDS_READ_PAST_END) + sClosing) << uLength;
        EXPECT_EQ(tRun.sOutput, "") << uLength;
    }
    std::vector<std::string> const sDamaged{
        "\x01\xFF\xFF"s,                     // a count that cannot be
        "\x01\x02\0\xFF\0\x01\0\0\x01\0\0"s, // no UTF-8
        "\x01\x02\0\xC3\xA4\0"s,             // a count that ends within a character
        sGetCurrentForm().substr(0, 12),     // a file that does
        std::string(34, 'x'),                // an old record that is too short
        "\x01\x01\0\0\x01\0\0\x01\0\0"s,     // an empty tag
        std::string(35, '\0'),
    };
    for (std::string const & sBytes : sDamaged) {
        TToolRun const tRun = tShow(sBytes);
        EXPECT_EQ(tRun.dwExit, 1u);
        EXPECT_TRUE(tRun.sErrors.size() > sClosing.size() && tRun.sErrors.ends_with(sClosing)) << tRun.sErrors;
        EXPECT_EQ(tRun.sOutput, "");
    }
}
