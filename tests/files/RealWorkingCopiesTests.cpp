// Working copies that Subversion and Git made.
#include "ZkTools/WorkingCopy.h"

#include "tests/support/TempDirectory.h"

#include <gtest/gtest.h>

namespace {

using zk_test::sGetPartPath;

TEST(RealWorkingCopies, OfSubversionHaveOneMarkerAtTheRoot) {
    EXPECT_EQ(eGetWorkingCopyVersion(sGetPartPath(L"svn")), eWcDbFormat31);
    EXPECT_EQ(eGetWorkingCopyVersion(sGetPartPath(L"svn\\directory\\deep")), eWcNone);
    for (wchar_t const * pzPath : {L"svn", L"svn\\directory", L"svn\\directory\\deep", L"svn\\directory\\a.txt"})
        EXPECT_EQ(sGetWorkingCopyRoot(sGetPartPath(pzPath)), sGetPartPath(L"svn")) << pzPath;
}

TEST(RealWorkingCopies, OfGitAreKnownAtEveryPath) {
    for (wchar_t const * pzPath : {L"git", L"git\\directory", L"git\\directory\\a.txt"}) {
        EXPECT_EQ(eGetWorkingCopyVersion(sGetPartPath(pzPath)), eWcGit) << pzPath;
        EXPECT_EQ(sGetWorkingCopyRoot(sGetPartPath(pzPath)), sGetPartPath(L"git")) << pzPath;
    }
}

TEST(RealWorkingCopies, OfGitMayHaveAFileForTheirMarker) {
    EXPECT_EQ(eGetWorkingCopyVersion(sGetPartPath(L"git-worktree\\directory")), eWcGit);
    EXPECT_EQ(sGetWorkingCopyRoot(sGetPartPath(L"git-worktree\\directory")), sGetPartPath(L"git-worktree"));
    // A submodule lies in the run of its parent's markers.
    EXPECT_EQ(eGetWorkingCopyVersion(sGetPartPath(L"git\\module\\directory")), eWcGit);
    EXPECT_EQ(sGetWorkingCopyRoot(sGetPartPath(L"git\\module\\directory")), sGetPartPath(L"git"));
}

TEST(RealWorkingCopies, AreNotTheirRepositories) {
    EXPECT_NE(sGetWorkingCopyRoot(sGetPartPath(L"svn-repository")), sGetPartPath(L"svn-repository"));
    EXPECT_EQ(eGetWorkingCopyVersion(sGetPartPath(L"svn-repository")),
              eGetWorkingCopyVersion(sGetPartPath(L""))); // whatever this tree is kept in
}

} // namespace
