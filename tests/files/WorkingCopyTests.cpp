#include "ZkTools/WorkingCopy.h"

#include "ZkTools/Exceptions.h"
#include "ZkTools/MessageIds.h"
#include "tests/support/Handle.h"
#include "tests/support/Handles.h"
#include "tests/support/SystemCall.h"
#include "tests/support/TempDirectory.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

using namespace std::string_view_literals;

namespace {

using zk_test::THandle;
using zk_test::TTempDirectory;

/// A directory "a" with "b" in it and "c" in that, somewhere below a root without markers.
class WorkingCopy : public testing::Test {
protected:
    WorkingCopy() {
        for (wchar_t const * pzName : {L"a", L"a\\b", L"a\\b\\c"})
            tTemp.sMakeDirectory(pzName);
    }
    [[nodiscard]] std::wstring sPath(std::wstring_view sName) const { return tTemp.sGetPath(sName); }
    /// Makes `sDirectory` a Subversion working copy of one file in its ".svn".
    void MakeSvn(std::wstring const & sDirectory, std::wstring const & sFile, std::string_view sBytes) const {
        CreateDirectoryW(sPath(sDirectory + L"\\.svn").c_str(), nullptr);
        tTemp.sWrite(sDirectory + L"\\.svn\\" + sFile, sBytes);
    }
    /// The version of a directory with that file in its ".svn".
    [[nodiscard]] ESvnVersion eVersionWith(std::wstring const & sFile, std::string_view sBytes) const {
        TTempDirectory const tOther;
        tOther.sMakeDirectory(L".svn");
        tOther.sWrite(L".svn\\" + sFile, sBytes);
        return eGetWorkingCopyVersion(tOther.sGetPath());
    }
    /// The head of a data base whose owner's number is `uNumber`, of `uSize` bytes.
    static std::string sDataBase(unsigned uNumber, std::size_t uSize = 100) {
        std::string sBytes("SQLite format 3\0", 16);
        sBytes.resize(60, '\x1D'); // the number of a format that it knows, where it must not look
        for (int iShift = 24; iShift >= 0; iShift -= 8)
            sBytes += static_cast<char>(uNumber >> iShift & 0xFF);
        sBytes.resize(uSize, '\x1D');
        return sBytes;
    }

    TTempDirectory const tTemp;
};

// Where the root is

TEST_F(WorkingCopy, HasItsRootWhereTheRunOfMarkersEnds) {
    tTemp.sMakeDirectory(L"a\\.svn");
    tTemp.sMakeDirectory(L"a\\b\\.svn");
    EXPECT_EQ(sGetWorkingCopyRoot(sPath(L"a\\b\\c")), sPath(L"a")); // none in c itself
    EXPECT_EQ(sGetWorkingCopyRoot(sPath(L"a\\b")), sPath(L"a"));
    EXPECT_EQ(sGetWorkingCopyRoot(sPath(L"a")), sPath(L"a"));
    EXPECT_EQ(sGetWorkingCopyRoot(tTemp.sGetPath()), L"");
}

TEST_F(WorkingCopy, HasItsRootBelowAGapInTheMarkers) {
    tTemp.sMakeDirectory(L".svn");
    tTemp.sMakeDirectory(L"a\\b\\.svn");
    EXPECT_EQ(sGetWorkingCopyRoot(sPath(L"a\\b")), sPath(L"a\\b"));
    EXPECT_EQ(sGetWorkingCopyRoot(sPath(L"a\\b\\c")), sPath(L"a\\b"));
    EXPECT_EQ(sGetWorkingCopyRoot(sPath(L"a")), tTemp.sGetPath());
}

TEST_F(WorkingCopy, IsFoundFromFilesAndFromWhatDoesNotExist) {
    tTemp.sMakeDirectory(L"a\\.svn");
    EXPECT_EQ(sGetWorkingCopyRoot(tTemp.sWrite(L"a\\file", "")), sPath(L"a"));
    EXPECT_EQ(sGetWorkingCopyRoot(sPath(L"a\\no\\such\\path")), sPath(L"a"));
    EXPECT_EQ(sGetWorkingCopyRoot(sPath(L"a\\")), sPath(L"a"));
    EXPECT_EQ(sGetWorkingCopyRoot(sPath(L"a\\.svn")), sPath(L"a"));
}

TEST_F(WorkingCopy, OfGitMayHaveAFileForItsMarker) {
    tTemp.sMakeDirectory(L"a\\.git");
    tTemp.sWrite(L"a\\b\\.git", "gitdir: elsewhere\n");
    EXPECT_EQ(sGetWorkingCopyRoot(sPath(L"a\\b\\c")), sPath(L"a")); // an unbroken run here too
    EXPECT_EQ(eGetWorkingCopyVersion(sPath(L"a\\b\\c")), eWcGit);
    EXPECT_EQ(eGetWorkingCopyVersion(sPath(L"a")), eWcGit);
    EXPECT_EQ(eGetWorkingCopyVersion(tTemp.sGetPath()), eWcNone);
}

TEST_F(WorkingCopy, OfBothKindsIsSubversions) {
    tTemp.sMakeDirectory(L"a\\b\\.git");
    MakeSvn(L"a", L"wc.db", sDataBase(31));
    EXPECT_EQ(sGetWorkingCopyRoot(sPath(L"a\\b\\c")), sPath(L"a"));
    EXPECT_EQ(eGetWorkingCopyVersion(sPath(L"a")), eWcDbFormat31);
    // Deliberate: the nearer marker of Git does not count either where no format is found.
    EXPECT_EQ(eGetWorkingCopyVersion(sPath(L"a\\b")), eWcNone);
    tTemp.sMakeDirectory(L"a\\.git");
    EXPECT_EQ(eGetWorkingCopyVersion(sPath(L"a")), eWcDbFormat31);
}

TEST_F(WorkingCopy, IsNoneOfARelativePath) {
    for (wchar_t const * pzPath : {L"", L"a", L".", L"..", L"a\\b", L"\\a", L"C:", L"C:a", L"\\\\server"}) {
        EXPECT_EQ(sGetWorkingCopyRoot(pzPath), L"") << pzPath;
        EXPECT_EQ(eGetWorkingCopyVersion(pzPath), eWcNone) << pzPath;
    }
}

// The format

TEST_F(WorkingCopy, HasTheFormatOfThePathItselfAndNotOfItsRoot) {
    MakeSvn(L"a", L"wc.db", sDataBase(31));
    EXPECT_EQ(eGetWorkingCopyVersion(sPath(L"a")), eWcDbFormat31);
    EXPECT_EQ(eGetWorkingCopyVersion(sPath(L"a\\")), eWcDbFormat31);
    EXPECT_EQ(eGetWorkingCopyVersion(sPath(L"a\\b")), eWcNone);
    EXPECT_EQ(sGetWorkingCopyRoot(sPath(L"a\\b")), sPath(L"a"));
}

TEST_F(WorkingCopy, ReadsTheFormatOfADataBase) {
    struct TRow {
        std::string sBytes;
        ESvnVersion eVersion;
    } const tRows[] = {
        {sDataBase(29), eWcDbFormat29},     {sDataBase(31), eWcDbFormat31},
        {sDataBase(31, 64), eWcDbFormat31}, {sDataBase(30), eWcNone},
        {sDataBase(32), eWcNone},           {sDataBase(0), eWcNone},
        {sDataBase(0x1D000000), eWcNone}, // little-endian
        {sDataBase(0x0100001F), eWcNone},   {sDataBase(31, 63), eWcNone},
        {sDataBase(31, 60), eWcNone},       {"", eWcNone},
    };
    for (TRow const & tRow : tRows)
        EXPECT_EQ(eVersionWith(L"wc.db", tRow.sBytes), tRow.eVersion) << testing::PrintToString(tRow.sBytes);
}

TEST_F(WorkingCopy, ReadsTheFormatOfATextFile) {
    struct TRow {
        std::string_view sBytes;
        ESvnVersion eVersion;
    } const tRows[] = {
        {"7", eWcFormat7},
        {"8\n", eWcFormat8},
        {"9\r\n", eWcFormat9},
        {"10\n", eWcFormat10},
        {" \t8 \t\n", eWcFormat8},
        {"8\n\ndir\n0\n", eWcFormat8},
        {"", eWcNone},
        {"\n8\n", eWcNone},
        {"6\n", eWcNone},
        {"11\n", eWcNone},
        {"12\n", eWcNone},
        {"08\n", eWcNone},
        {"8.0\n", eWcNone},
        {"8 8\n", eWcNone},
        {"<?xml version=\"1.0\"?>\n", eWcNone},
        {"\xEF\xBB\xBF"
         "10\n",
         eWcFormat10},
        {"\xFF\xFE"
         "9\0\n\0"sv,
         eWcFormat9},
    };
    for (wchar_t const * pzFile : {L"format", L"entries"}) {
        for (TRow const & tRow : tRows)
            EXPECT_EQ(eVersionWith(pzFile, tRow.sBytes), tRow.eVersion)
                << pzFile << testing::PrintToString(tRow.sBytes);
    }
}

TEST_F(WorkingCopy, AsksDataBaseFormatAndEntriesInThisOrder) {
    MakeSvn(L"a", L"entries", "8\n");
    EXPECT_EQ(eGetWorkingCopyVersion(sPath(L"a")), eWcFormat8);
    MakeSvn(L"a", L"format", "9\n");
    EXPECT_EQ(eGetWorkingCopyVersion(sPath(L"a")), eWcFormat9);
    // What stands first decides, also when it is unknown.
    MakeSvn(L"a", L"format", "12\n");
    EXPECT_EQ(eGetWorkingCopyVersion(sPath(L"a")), eWcNone);
    MakeSvn(L"a", L"format", "9\n");
    MakeSvn(L"a", L"wc.db", sDataBase(30));
    EXPECT_EQ(eGetWorkingCopyVersion(sPath(L"a")), eWcNone);
    MakeSvn(L"a", L"wc.db", sDataBase(29));
    EXPECT_EQ(eGetWorkingCopyVersion(sPath(L"a")), eWcDbFormat29);
}

TEST_F(WorkingCopy, TakesNoDirectoryForAFileOfTheFormat) {
    for (wchar_t const * pzName : {L"a\\.svn", L"a\\.svn\\wc.db", L"a\\.svn\\format"})
        tTemp.sMakeDirectory(pzName);
    EXPECT_EQ(eGetWorkingCopyVersion(sPath(L"a")), eWcNone);
    MakeSvn(L"a", L"entries", "10");
    EXPECT_EQ(eGetWorkingCopyVersion(sPath(L"a")), eWcFormat10);
}

TEST_F(WorkingCopy, MayHaveAFileForItsMarker) {
    tTemp.sWrite(L"a\\.svn", "");
    EXPECT_EQ(sGetWorkingCopyRoot(sPath(L"a\\b")), sPath(L"a"));
    EXPECT_EQ(eGetWorkingCopyVersion(sPath(L"a")), eWcNone);
}

TEST_F(WorkingCopy, ReadsBesideAWriter) {
    for (wchar_t const * pzFile : {L"format", L"wc.db"}) {
        MakeSvn(L"a", pzFile, std::wstring_view(pzFile) == L"format" ? "8" : sDataBase(29));
        THandle const hWriter(CreateFileW(sPath(L"a\\.svn\\" + std::wstring(pzFile)).c_str(),
                                          GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                          OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(hWriter);
        EXPECT_NE(eGetWorkingCopyVersion(sPath(L"a")), eWcNone) << pzFile;
    }
}

TEST_F(WorkingCopy, PassesOnThatAFileOfTheFormatCannotBeOpened) {
    for (wchar_t const * pzFile : {L"entries", L"format", L"wc.db"}) {
        MakeSvn(L"a", pzFile, "8");
        std::wstring const sFile = sPath(L"a\\.svn\\" + std::wstring(pzFile));
        THandle const hHolder(CreateFileW(sFile.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(hHolder);
        try {
            static_cast<void>(eGetWorkingCopyVersion(sPath(L"a")));
            ADD_FAILURE() << pzFile;
        } catch (TXZkTools const & tFailure) {
            TXZkTools tExpected(sGetErrorString(ERROR_SHARING_VIOLATION).c_str());
            tExpected.AddMessage(IDS_APPEND_FILE_DETAIL, sFile.c_str());
            EXPECT_STREQ(tFailure.what(), tExpected.what());
        }
        EXPECT_EQ(sGetWorkingCopyRoot(sPath(L"a")), sPath(L"a")); // which opens nothing
    }
}

TEST_F(WorkingCopy, IsNoneWhereTheFormatCannotBeRead) {
    for (wchar_t const * pzFile : {L"format", L"wc.db"}) {
        MakeSvn(L"a", pzFile, "8");
        zk_test::TSystemCall<"ReadFile", decltype(ReadFile)> const tRead(
            [](HANDLE, void *, DWORD, DWORD *, OVERLAPPED *) {
                return zk_test::tFailWith(ERROR_NETNAME_DELETED, FALSE);
            });
        EXPECT_EQ(eGetWorkingCopyVersion(sPath(L"a")), eWcNone) << pzFile;
        EXPECT_TRUE(zk_test::fIsUnused(sPath(L"a\\.svn\\" + std::wstring(pzFile))));
    }
}

TEST_F(WorkingCopy, IsFoundUnderPathsOfAnyLength) {
    std::wstring sDirectory = L"a";
    for (int i = 0; i < 3; ++i) {
        sDirectory += L"\\" + std::wstring(120, L'n');
        tTemp.sMakeDirectory(sDirectory);
    }
    tTemp.sMakeDirectory(sDirectory + L"\\.svn");
    tTemp.sWrite(sDirectory + L"\\.svn\\wc.db", sDataBase(31));
    EXPECT_EQ(eGetWorkingCopyVersion(sPath(sDirectory)), eWcDbFormat31);
    EXPECT_EQ(sGetWorkingCopyRoot(sPath(sDirectory + L"\\x")), sPath(sDirectory));
}

TEST_F(WorkingCopy, LeavesNoHandle) {
    MakeSvn(L"a", L"wc.db", sDataBase(31));
    MakeSvn(L"a\\b", L"format", "8");
    zk_test::ExpectNoHandleLeak([this] {
        EXPECT_EQ(eGetWorkingCopyVersion(sPath(L"a")), eWcDbFormat31);
        EXPECT_EQ(eGetWorkingCopyVersion(sPath(L"a\\b")), eWcFormat8);
        EXPECT_EQ(eGetWorkingCopyVersion(sPath(L"a\\b\\c")), eWcNone);
    });
    EXPECT_TRUE(zk_test::fIsUnused(sPath(L"a\\.svn\\wc.db")));
}

TEST(WorkingCopyVersion, KeepsItsNumbers) {
    EXPECT_EQ(eWcNone, 0);
    EXPECT_EQ(eWcFormat7, 1);
    EXPECT_EQ(eWcFormat8, 2);
    EXPECT_EQ(eWcFormat9, 3);
    EXPECT_EQ(eWcFormat10, 4);
    EXPECT_EQ(eWcDbFormat29, 5);
    EXPECT_EQ(eWcDbFormat31, 7);
    EXPECT_EQ(eWcGit, 32767);
}

} // namespace
