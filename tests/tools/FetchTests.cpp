#include "ZkTools/MessageIds.h"
#include "tests/support/HttpServer.h"
#include "tests/support/Narrow.h"
#include "tests/tools/Tool.h"

#include <gtest/gtest.h>

using namespace zk_test;

TEST(Fetch, WritesTheFile) {
    TTempDirectory const tDirectory;
    THttpServer tServer;
    std::string const sBody = "bytes\r\n" + std::string(3000, '\xFE');
    tServer.Answer("/file", "200 OK", sBody);
    std::wstring const sFile = tDirectory.sGetPath(L"new\\file");
    TToolRun const tRun = tRunTool({L"fetch", tServer.sGetUrl(L"/file"), sFile});
    EXPECT_EQ(tRun.dwExit, 0u);
    EXPECT_EQ(tRun.sErrors, "");
    EXPECT_EQ(tRun.sOutput, "3007 bytes\r\n");
    EXPECT_EQ(sReadFileBytes(sFile), sBody);
}

TEST(Fetch, WritesAnEmptyFile) {
    TTempDirectory const tDirectory;
    THttpServer tServer;
    tServer.Answer("/empty", "200 OK", "");
    std::wstring const sFile = tDirectory.sWrite(L"file", "old");
    EXPECT_EQ(tRunTool({L"fetch", tServer.sGetUrl(L"/empty"), sFile}).sOutput, "0 bytes\r\n");
    EXPECT_EQ(sReadFileBytes(sFile), "");
}

TEST(Fetch, LeavesTheFileAloneWhenTheServerHasNone) {
    TTempDirectory const tDirectory;
    THttpServer tServer;
    tServer.Answer("/none", "404 Not Found", "a page");
    std::wstring const sFile = tDirectory.sWrite(L"file", "old");
    std::wstring const sUrl = tServer.sGetUrl(L"/none");
    TToolRun const tRun = tRunTool({L"fetch", sUrl, sFile});
    EXPECT_EQ(tRun.dwExit, 1u);
    EXPECT_EQ(tRun.sOutput, "");
    EXPECT_EQ(tRun.sErrors, "Not Found\r\n" + sMessage(IDS_INTERNET_READ_FAILED, sUrl.c_str()) + "\r\n");
    EXPECT_EQ(sReadFileBytes(sFile), "old");
}

TEST(Fetch, TakesNoPathForAUrl) {
    TToolRun const tRun = tRunTool({L"fetch", L"C:\\a", L"b"});
    EXPECT_EQ(tRun.dwExit, 2u);
    EXPECT_EQ(tRun.sErrors, "zk fetch: C:\\a is no file on the internet.\r\nusage: zk fetch URL FILE\r\n");
}
