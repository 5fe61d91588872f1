#include "tests/tools/Tool.h"

#include "ZkTools/MessageIds.h"

#include <gtest/gtest.h>

using namespace zk_test;

namespace {

class Who : public testing::Test {
protected:
    [[nodiscard]] std::wstring const & sDir() const { return tDirectory.sGetPath(); }
    /// What it prints.
    [[nodiscard]] std::string sAsk() const {
        TToolRun const tRun = tRunTool({L"who", sDir(), L"main.dat"});
        EXPECT_EQ(tRun.dwExit, 0u);
        EXPECT_EQ(tRun.sErrors, "");
        return tRun.sOutput;
    }
    /// Holds a lock file as a program on another machine does.
    [[nodiscard]] THandle hHold(wchar_t const * pzName) const {
        return THandle(CreateFileW(tDirectory.sGetPath(pzName).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                   OPEN_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE | FILE_ATTRIBUTE_HIDDEN, nullptr));
    }
    static std::string sOwn() {
        std::wstring const sName = sGetOwnName();
        return {sName.begin(), sName.end()};
    }

    TTempDirectory tDirectory;
};

} // namespace

TEST_F(Who, TellsThatNobodyIsThere) {
    EXPECT_EQ(sAsk(), "readers: 0\r\nwriter: none\r\n");
}

TEST_F(Who, TellsReadersAndTheWriter) {
    TTool tWriter({L"hold", sDir(), L"main.dat", L"--write"});
    tWriter.Await();
    EXPECT_EQ(sAsk(), "readers: 1\r\n" + sOwn() + "\r\nwriter: " + sOwn() + "\r\n");
}

TEST_F(Who, TellsForeignReadersButNoForeignWriter) {
    THandle const hReader = hHold(L"rdr%PC1%\u00FCser%.tmp");
    THandle const hOdd = hHold(L"rdr.tmp");
    THandle const hWriter = hHold(L"write.lck");
    THandle const hInfo = hHold(L"write%PC1%\u00FCser%.tmp");
    EXPECT_EQ(sAsk(), "readers: 2\r\n\xC3\xBCser [PC1]\r\nwriter: unknown\r\n");
}

TEST_F(Who, SweepsWhatCrashesLeft) {
    tDirectory.sWrite(L"main.dat", "data");
    tDirectory.sWrite(L"write.lck", "");
    tDirectory.sWrite(L"rdr%PC1%usera%.tmp", "");
    tDirectory.sWrite(L"rdr%PC2%userb%_7.tmp", "");
    EXPECT_EQ(sAsk(), "readers: 0\r\nwriter: none\r\n");
    EXPECT_EQ(sListDirectory(sDir()), L"main.dat");
}

TEST_F(Who, TellsTheWriterOfAFile) {
    TTool tWriter({L"hold", sDir(), L"a.dat", L"--write", L"--file"});
    tWriter.Await();
    std::string const sReaders = "readers: 1\r\n" + sOwn() + "\r\n";
    EXPECT_EQ(tRunTool({L"who", sDir(), L"a.dat", L"--file"}).sOutput, sReaders + "writer: " + sOwn() + "\r\n");
    EXPECT_EQ(tRunTool({L"who", sDir(), L"b.dat", L"--file"}).sOutput, sReaders + "writer: none\r\n");
    EXPECT_EQ(sAsk(), sReaders + "writer: none\r\n");
}

TEST_F(Who, FailsInAMissingDirectory) {
    std::wstring const sMissing = tDirectory.sGetPath(L"missing");
    TToolRun const tRun = tRunTool({L"who", sMissing, L"main.dat"});
    EXPECT_EQ(tRun.dwExit, 1u);
    EXPECT_EQ(tRun.sErrors, sMessage(IDS_DIRECTORY_MISSING, sMissing.c_str()) + "\r\n");
    EXPECT_EQ(tRun.sOutput, "");
}
