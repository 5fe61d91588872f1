#include "tests/support/TempDirectory.h"
#include "tests/tools/Tool.h"

#include <gtest/gtest.h>

using namespace zk_test;

namespace {

/// The output of a call that goes well.
std::string sCall(std::vector<std::wstring> sArguments) {
    sArguments.insert(sArguments.begin(), L"com");
    TToolRun const tRun = tRunTool(sArguments);
    EXPECT_EQ(tRun.dwExit, 0u);
    EXPECT_EQ(tRun.sErrors, "");
    return tRun.sOutput;
}

} // namespace

TEST(ComCommand, PrintsTheResultOfAMethod) {
    TTempDirectory const tDirectory;
    EXPECT_EQ(sCall({L"Scripting.FileSystemObject", L"GetFileName", L"C:\\some\\Gr\u00F6\u00DFe.txt"}),
              "Gr\xC3\xB6\xC3\x9F"
              "e.txt\r\n");
    EXPECT_EQ(sCall({L"Scripting.FileSystemObject", L"FolderExists", tDirectory.sGetPath()}), "true\r\n");
    EXPECT_EQ(sCall({L"Scripting.FileSystemObject", L"FolderExists", tDirectory.sGetPath(L"no")}), "false\r\n");
    EXPECT_EQ(sCall({L"Scripting.FileSystemObject", L"GetFolder", tDirectory.sGetPath()}), "object\r\n");
    EXPECT_EQ(sCall({L"Scripting.Dictionary", L"Keys"}), "array\r\n");
    EXPECT_EQ(sCall({L"Scripting.Dictionary", L"Add", L"key", L"value"}), "");
}

TEST(ComCommand, PrintsAProperty) {
    EXPECT_EQ(sCall({L"--get", L"Scripting.Dictionary", L"Count"}), "0\r\n");
    EXPECT_EQ(sCall({L"--get", L"MSXML2.DOMDocument", L"nodeName"}), "#document\r\n");
    EXPECT_EQ(sCall({L"--get", L"MSXML2.DOMDocument", L"nodeValue"}), "null\r\n");
}

TEST(ComCommand, TellsWhyACallFails) {
    TToolRun const tRun = tRunTool({L"com", L"Scripting.Dictionary", L"Gr\u00F6\u00DFe"});
    EXPECT_EQ(tRun.dwExit, 1u);
    EXPECT_EQ(tRun.sOutput, "");
    EXPECT_EQ(tRun.sErrors, "Property or method \"Gr\xC3\xB6\xC3\x9F"
                            "e\" not found in object \"IDictionary\"\r\n");
    EXPECT_NE(tRunTool({L"com", L"Scripting.Dictionary", L"Add", L"key"}).sErrors.find("Number of parameters: 1\r\n"),
              std::string::npos);
}

TEST(ComCommand, TellsAClassThatIsNotThere) {
    TToolRun const tRun = tRunTool({L"com", L"ZkTools.NoSuchClass", L"Turn"});
    EXPECT_EQ(tRun.dwExit, 1u);
    EXPECT_TRUE(tRun.sErrors.starts_with("COM error: ")) << tRun.sErrors;
    EXPECT_TRUE(tRun.sErrors.ends_with(" (HRESULT: -2147221005)\r\n")) << tRun.sErrors;
}

TEST(ComCommand, TellsWrongUsage) {
    std::string const sUsage = "\r\nusage: zk com [--get] PROGID MEMBER [ARGUMENT...]\r\n";
    EXPECT_EQ(tRunTool({L"com", L"Scripting.Dictionary"}).sErrors, "zk com: Arguments are missing." + sUsage);
    std::vector<std::wstring> sTen(12, L"x");
    sTen[0] = L"Scripting.Dictionary";
    sTen.insert(sTen.begin(), L"com");
    TToolRun const tTen = tRunTool(sTen);
    EXPECT_EQ(tTen.dwExit, 2u);
    EXPECT_EQ(tTen.sErrors, "zk com: There is no call with ten arguments and a result." + sUsage);
    EXPECT_EQ(tRunTool(std::vector<std::wstring>(24, L"com")).sErrors,
              "zk com: There are too many arguments." + sUsage);
}

TEST(ComCommand, TellsOfItself) {
    TToolRun const tRun = tRunTool({L"com", L"--help"});
    EXPECT_EQ(tRun.dwExit, 0u);
    EXPECT_TRUE(tRun.sOutput.starts_with("usage: zk com [--get] PROGID MEMBER [ARGUMENT...]\r\n")) << tRun.sOutput;
}
