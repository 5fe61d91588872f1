#include "ZkTools/Hash.h"

#include "ZkTools/Exceptions.h"
#include "tests/files/Archive.h"
#include "tests/support/TempDirectory.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using zk_test::sMakeArchive;
using zk_test::TArchiveMember;
using zk_test::TTempDirectory;

std::vector<TArchiveMember> const tThree{{"b/c.txt", "gamma"}, {"a.txt", "alpha"}, {"b/"}};
constexpr wchar_t const * pzThreeHash = L"C6BFC0EEFBB4B661F5FDC537B5B8848B";
constexpr wchar_t const * pzNothingHash = L"EEA339DA0D4B6B5EEFBF553290186095";

TEST(Hash, OfAnArchiveIsThatOfItsMembersInTheOrderOfTheirNames) {
    TTempDirectory const tTemp;
    EXPECT_EQ(sGetZipFileHash(tTemp.sWrite(L"a.zip", sMakeArchive(tThree))), pzThreeHash);
    EXPECT_EQ(sGetZipFileHash(tTemp.sWrite(L"b.zip", sMakeArchive({tThree[2], tThree[1], tThree[0]}))), pzThreeHash);
}

TEST(Hash, OfAnArchiveWithoutMembersIsThatOfNothing) {
    TTempDirectory const tTemp;
    EXPECT_EQ(sGetZipFileHash(tTemp.sWrite(L"bare.zip", sMakeArchive({}))), pzNothingHash);
    EXPECT_EQ(sGetZipFileHash(tTemp.sWrite(L"comment.zip", sMakeArchive({}, {.sComment = "nothing"}))), pzNothingHash);
    EXPECT_EQ(sGetZipFileHash(tTemp.sWrite(L"prefix.zip", sMakeArchive({}, {.sPrefix = "#!"}))), pzNothingHash);
}

} // namespace
