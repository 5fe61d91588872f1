// Archives that real programs made: zip and 7-Zip, in all the forms that they know.
#include "ZkTools/Hash.h"

#include "tests/support/Archive.h"
#include "tests/support/TempDirectory.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

using zk_test::sContentsHash;
using zk_test::sGetPartPath;
using zk_test::TArchiveMember;

/// The members of all archives but one.
std::vector<TArchiveMember> tGetTree() {
    std::string sAgain;
    for (int i = 0; i < 2000; ++i)
        sAgain += "the same again ";
    return {{"a.txt", "alpha\n"}, {"directory/"}, {"directory/b.txt", sAgain}, {"directory/\xC3\xA4.txt", "umlaut"}};
}

class RealArchive : public testing::TestWithParam<wchar_t const *> {};

TEST_P(RealArchive, HasTheHashOfItsMembers) {
    EXPECT_EQ(sGetZipFileHash(sGetPartPath(GetParam())), sContentsHash(tGetTree()));
}

INSTANTIATE_TEST_SUITE_P(All, RealArchive,
                         testing::Values(L"zip.zip", L"zip-stored.zip", L"zip-extra.zip", L"zip-zip64.zip",
                                         L"zip-streamed.zip", L"zip-encrypted.zip", L"zip-comment.zip",
                                         L"zip-prefix.zip", L"7z.zip", L"7z-stored.zip", L"7z-bzip2.zip"));

TEST(RealArchives, AreToldFromOtherFiles) {
    EXPECT_TRUE(fIsZipFile(sGetPartPath(L"zip.zip")));
    EXPECT_TRUE(fIsZipFile(sGetPartPath(L"7z.zip")));
    EXPECT_TRUE(fIsZipFile(sGetPartPath(L"7z-lzma.zip")));
    EXPECT_FALSE(fIsZipFile(sGetPartPath(L"zip-prefix.zip")));
    EXPECT_FALSE(fIsZipFile(sGetPartPath(L"tree\\a.txt")));
    EXPECT_EQ(sGetFileHash(sGetPartPath(L"zip.zip")), sGetFileHash(sGetPartPath(L"7z-stored.zip")));
    EXPECT_NE(sGetFileHash(sGetPartPath(L"zip.zip")), sGetFileHash(sGetPartPath(L"zip-prefix.zip")));
}

TEST(RealArchives, PackedByAMethodThatIsNotKnownFail) {
    try {
        static_cast<void>(sGetFileHash(sGetPartPath(L"7z-lzma.zip")));
        ADD_FAILURE();
    } catch (std::runtime_error const & tFailure) {
        EXPECT_STREQ(tFailure.what(), "unzOpenCurrentFile failed");
    }
}

} // namespace
