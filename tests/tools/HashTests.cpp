#include "tests/support/Archive.h"
#include "tests/support/Narrow.h"
#include "tests/tools/Tool.h"

#include <gtest/gtest.h>

using namespace zk_test;

TEST(Hash, PrintsALineForEachFile) {
    TTempDirectory const tDirectory;
    std::wstring const sAlpha = tDirectory.sWrite(L"al pha", "alpha");
    std::wstring const sZip = tDirectory.sWrite(L"\u00E4.zip", sMakeArchive({{"b", "one"}, {"a", "two"}}));
    std::wstring const sSame = tDirectory.sWrite(L"same.zip", sMakeArchive({{"a", "two"}, {"b", "one"}}));
    TToolRun const tRun = tRunTool({L"hash", sAlpha, sZip, sSame});
    EXPECT_EQ(tRun.dwExit, 0u);
    EXPECT_EQ(tRun.sErrors, "");
    std::string const sMembers = sNarrow(sContentsHash({{"a", "two"}, {"b", "one"}}));
    std::string const sDirectory = sNarrow(tDirectory.sGetPath()) + "\\";
    EXPECT_EQ(tRun.sOutput, "A343172CBF5F3091E4F87D36F9F969F0  " + sDirectory + "al pha\r\n" + //
                                sMembers + "  " + sDirectory + "\xC3\xA4.zip\r\n" +            //
                                sMembers + "  " + sDirectory + "same.zip\r\n");
}

TEST(Hash, GoesOnBehindAFileThatFails) {
    TTempDirectory const tDirectory;
    std::wstring const sMissing = tDirectory.sGetPath(L"missing");
    std::wstring const sDamaged = tDirectory.sWrite(L"damaged.zip", "PK\3\4");
    std::wstring const sAlpha = tDirectory.sWrite(L"alpha", "alpha");
    TToolRun const tRun = tRunTool({L"hash", sMissing, sDamaged, sAlpha});
    EXPECT_EQ(tRun.dwExit, 1u);
    EXPECT_EQ(tRun.sErrors,
              sNarrow(sMissing) + ": MsiGetFileHash failed\r\n" + sNarrow(sDamaged) + ": unzGetGlobalInfo failed\r\n");
    EXPECT_EQ(tRun.sOutput, "A343172CBF5F3091E4F87D36F9F969F0  " + sNarrow(sAlpha) + "\r\n");
}
