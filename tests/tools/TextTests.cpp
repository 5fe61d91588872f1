// The commands on text: xml-text, xml-name, xpath-literal, base64 and uri.
#include "tests/tools/Tool.h"

#include <gtest/gtest.h>

using namespace std::string_literals;
using namespace zk_test;

namespace {

class Text : public testing::Test {
protected:
    TTempDirectory tDirectory;
};

/// Runs a command that does it, and gives what it prints.
std::string sRun(std::vector<std::wstring> const & sArguments) {
    TToolRun const tRun = tRunTool(sArguments);
    EXPECT_EQ(tRun.dwExit, 0u);
    EXPECT_EQ(tRun.sErrors, "");
    return tRun.sOutput;
}

} // namespace

TEST_F(Text, XmlTextEscapesAFile) {
    std::wstring const sFile = tDirectory.sWrite(L"text", "a<b>\t\"\xC3\xA4\"\nc\xF0\x9F\x98\x80");
    EXPECT_EQ(sRun({L"xml-text", sFile}), "a&lt;b&gt;\t\"\xC3\xA4\"\r\nc??\r\n");
    EXPECT_EQ(sRun({L"xml-text", sFile, L"--attribute"}), "a&lt;b&gt;\t&quot;\xC3\xA4&quot;&#13;&#10;c??\r\n");
    EXPECT_EQ(sRun({L"xml-text", L"--tabs", L"--attribute", sFile}),
              "a&lt;b&gt;&#9;&quot;\xC3\xA4&quot;&#13;&#10;c??\r\n");
}

TEST_F(Text, XmlTextReadsTheStandardInput) {
    TTool tTool({L"xml-text"});
    tTool.tGet().Say("a & b");
    EXPECT_EQ(tTool.tEnd().sOutput, "a &amp; b\r\n");
}

TEST_F(Text, XmlTextWritesAFileInAnyEncoding) {
    std::wstring const sFile = tDirectory.sWrite(L"text", "\xC3\xA4&");
    std::wstring const sTarget = tDirectory.sGetPath(L"target");
    struct {
        std::wstring sEncoding;
        std::string sBytes;
    } const atRows[] = {
        {L"utf-8", "\xC3\xA4&amp;"},
        {L"utf-16", "\xFF\xFE\xE4\0&\0a\0m\0p\0;\0"s},
        {L"utf-16be", "\xFE\xFF\0\xE4\0&\0a\0m\0p\0;"s},
        {L"windows-1252", "\xE4&amp;"},
    };
    for (auto const & tRow : atRows) {
        EXPECT_EQ(sRun({L"xml-text", sFile, L"--to", sTarget, L"--encoding", tRow.sEncoding}), "");
        EXPECT_EQ(sReadFileBytes(sTarget), tRow.sBytes);
    }
    EXPECT_EQ(sRun({L"xml-text", sFile, L"--to", sTarget}), "");
    EXPECT_EQ(sReadFileBytes(sTarget), "\xC3\xA4&amp;");
}

TEST_F(Text, XmlTextTellsWhatItCannotTake) {
    std::wstring const sFile = tDirectory.sWrite(L"text", "a");
    struct {
        std::vector<std::wstring> sArguments;
        std::string sError;
    } const atRows[] = {
        {{L"--encoding", L"utf-16"}, "--encoding needs --to."},
        {{L"--to", L"x", L"--encoding", L"utf-7"}, "utf-7 is no encoding."},
        {{L"--tabs"}, "--tabs needs --attribute."},
    };
    for (auto const & tRow : atRows) {
        std::vector<std::wstring> sArguments{L"xml-text", sFile};
        sArguments.insert(sArguments.end(), tRow.sArguments.begin(), tRow.sArguments.end());
        TToolRun const tRun = tRunTool(sArguments);
        EXPECT_EQ(tRun.dwExit, 2u);
        EXPECT_TRUE(tRun.sErrors.starts_with("zk xml-text: " + tRow.sError + "\r\n")) << tRun.sErrors;
    }
    TToolRun const tMissing = tRunTool({L"xml-text", tDirectory.sGetPath(L"missing")});
    EXPECT_EQ(tMissing.dwExit, 1u);
    TToolRun const tNoTarget = tRunTool({L"xml-text", sFile, L"--to", tDirectory.sGetPath()});
    EXPECT_EQ(tNoTarget.dwExit, 1u);
}

TEST_F(Text, XmlNameMakesAName) {
    EXPECT_EQ(sRun({L"xml-name", L"first name"}), "firstName\r\n");
    EXPECT_EQ(sRun({L"xml-name", L"x:1st don't"}), "x:_stDont\r\n");
    EXPECT_EQ(sRun({L"xml-name", L""}), "\r\n");
}

TEST_F(Text, XPathLiteralQuotes) {
    EXPECT_EQ(sRun({L"xpath-literal", L"don't"}), "\"don't\"\r\n");
    EXPECT_EQ(sRun({L"xpath-literal", L"a'b\"c"}), "concat('a',\"'\",'b\"c')\r\n");
}

TEST_F(Text, Base64GoesBothWays) {
    EXPECT_EQ(sRun({L"base64", L"encode", L"\u00E4\u6F22"}), "w6TmvKI=\r\n");
    EXPECT_EQ(sRun({L"base64", L"decode", L"w6TmvKI="}), "\xC3\xA4\xE6\xBC\xA2\r\n");
    TToolRun const tBad = tRunTool({L"base64", L"decode", L"*"});
    EXPECT_EQ(tBad.dwExit, 1u);
    EXPECT_TRUE(tBad.sErrors.starts_with("CryptStringToBinary failed (1)")) << tBad.sErrors;
    TToolRun const tWrong = tRunTool({L"base64", L"both", L"a"});
    EXPECT_EQ(tWrong.dwExit, 2u);
    EXPECT_TRUE(tWrong.sErrors.starts_with("zk base64: Either encode or decode is needed.\r\n")) << tWrong.sErrors;
}

TEST_F(Text, UriTurnsAndChecks) {
    EXPECT_EQ(sRun({L"uri", L"path", L"C:\\a b"}), "file:///C:/a%20b\r\n");
    EXPECT_EQ(sRun({L"uri", L"escape", L"a b%"}), "a%20b%25\r\n");
    EXPECT_EQ(sRun({L"uri", L"unescape", L"a%20b"}), "a b\r\n");
    EXPECT_EQ(sRun({L"uri", L"check", L"http://host/?a"}),
              "URL: yes\r\nURL without a query: no\r\nURI: yes\r\ne-mail address: no\r\n");
    EXPECT_EQ(sRun({L"uri", L"check", L"a.b@c.d"}),
              "URL: no\r\nURL without a query: no\r\nURI: yes\r\ne-mail address: yes\r\n");
    TToolRun const tWrong = tRunTool({L"uri", L"turn", L"a"});
    EXPECT_EQ(tWrong.dwExit, 2u);
    EXPECT_TRUE(tWrong.sErrors.starts_with("zk uri: turn is none of path, escape, unescape and check.\r\n"))
        << tWrong.sErrors;
}
