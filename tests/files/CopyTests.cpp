#include "ZkTools/Copy.h"

#include "ZkTools/MessageIds.h"
#include "tests/files/Fixture.h"
#include "tests/support/Handle.h"
#include "tests/support/SystemCall.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using testing::PrintToString;
using zk_test::fExists;
using zk_test::fIsUnused;
using zk_test::hHold;
using zk_test::sFailure;
using zk_test::sListDirectory;
using zk_test::sReadFileBytes;
using zk_test::tFailWith;
using zk_test::THandle;
using zk_test::THardToReach;
using zk_test::TSystemCall;
using zk_test::TTempDirectory;
using zk_test::tThrownBy;
using zk_test::WriteFileBytes;

using TCopyFile = TSystemCall<"CopyFileW", decltype(CopyFileW)>;
using TCreateFile = TSystemCall<"CreateFileW", decltype(CreateFileW)>;
using TWriteFile = TSystemCall<"WriteFile", decltype(WriteFile)>;
using TReadFile = TSystemCall<"ReadFile", decltype(ReadFile)>;

constexpr FILETIME t2001{0xA0CF6000, 0x01C07385};

bool fIsReadOnly(std::wstring const & sPath) {
    return (GetFileAttributesW(zk_test::sLongForm(sPath).c_str()) & FILE_ATTRIBUTE_READONLY) != 0;
}

void SetAttributes(std::wstring const & sPath, DWORD dwAttributes) {
    ASSERT_TRUE(SetFileAttributesW(zk_test::sLongForm(sPath).c_str(), dwAttributes));
}

WIN32_FILE_ATTRIBUTE_DATA tGetData(std::wstring const & sPath) {
    WIN32_FILE_ATTRIBUTE_DATA tData{};
    EXPECT_TRUE(GetFileAttributesExW(sPath.c_str(), GetFileExInfoStandard, &tData));
    return tData;
}

/// The text of a system error alone, as the library throws it.
std::string sSystemText(DWORD dwError) {
    return TXZkTools(L"%s", sGetErrorString(dwError).c_str()).what();
}

bool fTakeAll(unsigned long, std::wstring const &) {
    return true;
}

std::function<bool(std::wstring const &, std::wstring const &)> const fnNobody;

} // namespace

// A single file

TEST(DoCopyFile, CopiesContentAndTime) {
    TTempDirectory const tTemp;
    std::wstring const sSource = tTemp.sWrite(L"source", "content");
    {
        THandle const hFile(CreateFileW(sSource.c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(SetFileTime(hFile.hGet(), nullptr, nullptr, &t2001));
    }
    std::wstring const sTarget = tTemp.sWrite(L"target", "something longer than that");
    DoCopyFile(sSource.c_str(), sTarget.c_str(), eCopyDefault);
    EXPECT_EQ(sReadFileBytes(sTarget), "content");
    FILETIME const tWritten = tGetData(sTarget).ftLastWriteTime;
    EXPECT_EQ(CompareFileTime(&tWritten, &t2001), 0);
    EXPECT_EQ(sReadFileBytes(sSource), "content");
    EXPECT_TRUE(fDoCopyFile(sSource.c_str(), tTemp.sGetPath(L"new").c_str(), eCopyFailIfExists));
    EXPECT_EQ(sReadFileBytes(tTemp.sGetPath(L"new")), "content");
}

TEST(DoCopyFile, KeepsTheReadOnlyAttributeOnlyWhenToldTo) {
    TTempDirectory const tTemp;
    std::wstring const sSource = tTemp.sWrite(L"source", "1");
    SetAttributes(sSource, FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);
    int iNumber = 0;
    for (bool const fThrowing : {true, false}) {
        for (auto const & [eCopy, fExpected] :
             std::initializer_list<std::pair<ECopyFile, bool>>{{eCopyDefault, false},
                                                               {eCopyFailIfExists, false},
                                                               {eCopyKeepReadOnly, true},
                                                               {eCopyKeepReadOnly | eCopyFailIfExists, true}}) {
            std::wstring const sTarget = tTemp.sGetPath(std::to_wstring(++iNumber));
            if (fThrowing)
                DoCopyFile(sSource.c_str(), sTarget.c_str(), eCopy);
            else
                EXPECT_TRUE(fDoCopyFile(sSource.c_str(), sTarget.c_str(), eCopy));
            EXPECT_EQ(fIsReadOnly(sTarget), fExpected) << eCopy;
            EXPECT_TRUE(GetFileAttributesW(sTarget.c_str()) & FILE_ATTRIBUTE_HIDDEN); // the others stay
        }
    }
    EXPECT_TRUE(fIsReadOnly(sSource));
    EXPECT_TRUE(fCopyFile(sSource, tTemp.sGetPath(L"plain")));
    EXPECT_TRUE(fIsReadOnly(tTemp.sGetPath(L"plain")));
}

TEST(DoCopyFile, OverwritesATargetUnlessToldNotTo) {
    TTempDirectory const tTemp;
    std::wstring const sSource = tTemp.sWrite(L"source 100%s", "new");
    std::wstring const sTarget = tTemp.sWrite(L"target %n", "old");
    TXZkTools const tError = tThrownBy([&] { DoCopyFile(sSource.c_str(), sTarget.c_str(), eCopyFailIfExists); });
    EXPECT_EQ(tError.iGetNumber(), IDS_COPY_FILE_FAILED);
    EXPECT_EQ(tError.what(), sFailure(ERROR_FILE_EXISTS, 4345, sSource.c_str(), sTarget.c_str()));
    EXPECT_FALSE(fDoCopyFile(sSource.c_str(), sTarget.c_str(), eCopyFailIfExists));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_EXISTS));
    EXPECT_EQ(sReadFileBytes(sTarget), "old");
    DoCopyFile(sSource.c_str(), sTarget.c_str(), eCopyKeepReadOnly);
    EXPECT_EQ(sReadFileBytes(sTarget), "new");
}

TEST(DoCopyFile, TellsWhatTheSystemRefuses) {
    TTempDirectory const tTemp;
    std::wstring const sSource = tTemp.sWrite(L"source", "1");
    std::wstring const sHeld = tTemp.sWrite(L"held", "old");
    std::wstring const sReadOnly = tTemp.sWrite(L"read-only", "old");
    SetAttributes(sReadOnly, FILE_ATTRIBUTE_READONLY);
    THandle const hHeld = hHold(sHeld);
    struct {
        std::wstring sSource;
        std::wstring sTarget;
        DWORD dwError; ///< 0: worded in different ways
    } const atRows[] = {
        {tTemp.sGetPath(L"missing"), tTemp.sGetPath(L"new"), ERROR_FILE_NOT_FOUND},
        {sSource, tTemp.sGetPath(L"missing\\new"), ERROR_PATH_NOT_FOUND},
        {sSource, sHeld, ERROR_SHARING_VIOLATION},
        {sHeld, tTemp.sGetPath(L"new"), ERROR_SHARING_VIOLATION},
        {tTemp.sGetPath(), tTemp.sGetPath(L"new"), 0},
        {sSource, tTemp.sGetPath(), 0},
        {sSource, tTemp.sGetPath(std::wstring(256, L'n')), 0},
        {sSource, L"C:\\" + std::wstring(30'000, L'n'), 0},
        {std::wstring(), sSource, 0},
    };
    for (auto const & tRow : atRows) {
        TXZkTools const tError =
            tThrownBy([&] { DoCopyFile(tRow.sSource.c_str(), tRow.sTarget.c_str(), eCopyDefault, nullptr); });
        EXPECT_EQ(tError.iGetNumber(), IDS_COPY_FILE_FAILED) << PrintToString(tRow.sTarget);
        if (tRow.dwError != 0) {
            EXPECT_EQ(tError.what(), sFailure(tRow.dwError, 4345, tRow.sSource.c_str(), tRow.sTarget.c_str()));
        }
        SetLastError(NO_ERROR);
        EXPECT_FALSE(fDoCopyFile(tRow.sSource.c_str(), tRow.sTarget.c_str(), eCopyDefault));
        EXPECT_NE(GetLastError(), static_cast<DWORD>(NO_ERROR));
        EXPECT_FALSE(fCopyFile(tRow.sSource, tRow.sTarget));
        if (tRow.dwError != 0) {
            EXPECT_EQ(GetLastError(), tRow.dwError);
        }
    }
    EXPECT_EQ(sReadFileBytes(sReadOnly), "old");
}

TEST(DoCopyFile, SetsATimeOfItsOwn) {
    TTempDirectory const tTemp;
    std::wstring const sSource = tTemp.sWrite(L"source", "1");
    std::wstring const sTarget = tTemp.sGetPath(L"target");
    DoCopyFile(sSource.c_str(), sTarget.c_str(), eCopyDefault, &t2001);
    FILETIME tWritten = tGetData(sTarget).ftLastWriteTime;
    EXPECT_EQ(CompareFileTime(&tWritten, &t2001), 0);
    tWritten = tGetData(sSource).ftLastWriteTime;
    EXPECT_NE(CompareFileTime(&tWritten, &t2001), 0);
    EXPECT_TRUE(fIsUnused(sTarget));
    DeleteFileW(sTarget.c_str());
    EXPECT_TRUE(fDoCopyFile(sSource.c_str(), sTarget.c_str(), eCopyDefault, &t2001));
    tWritten = tGetData(sTarget).ftLastWriteTime;
    EXPECT_EQ(CompareFileTime(&tWritten, &t2001), 0);

    // A time that can't be set is no failure.
    TSystemCall<"SetFileTime", decltype(SetFileTime)> const tSet(
        [](HANDLE, FILETIME const * pCreation, FILETIME const * pAccess, FILETIME const *) {
            EXPECT_EQ(pCreation, nullptr);
            EXPECT_EQ(pAccess, nullptr);
            return tFailWith(ERROR_ACCESS_DENIED, FALSE);
        });
    EXPECT_NO_THROW(DoCopyFile(sSource.c_str(), sTarget.c_str(), eCopyDefault, &t2001));
    EXPECT_EQ(tSet.iGetCalls(), 1);
}

TEST(DoCopyFile, PassesOnThatTheCopyCannotBeOpenedForItsTime) {
    TTempDirectory const tTemp;
    std::wstring const sSource = tTemp.sWrite(L"source", "1");
    std::wstring const sTarget = tTemp.sGetPath(L"target");
    TCreateFile const tCreate([](auto...) { return tFailWith(ERROR_ACCESS_DENIED, INVALID_HANDLE_VALUE); });
    EXPECT_EQ(tThrownBy([&] { DoCopyFile(sSource.c_str(), sTarget.c_str(), eCopyDefault, &t2001); }).what(),
              sSystemText(ERROR_ACCESS_DENIED) + "\r\n" + TXZkTools(4215, sTarget.c_str()).what());
    EXPECT_FALSE(fDoCopyFile(sSource.c_str(), sTarget.c_str(), eCopyDefault, &t2001));
    EXPECT_EQ(sReadFileBytes(sTarget), "1"); // the copy stays
    EXPECT_TRUE(fDoCopyFile(sSource.c_str(), sTarget.c_str(), eCopyDefault, nullptr));
}

TEST(DoCopyFile, LivesWithACopyThatVanishes) {
    TTempDirectory const tTemp;
    std::wstring const sSource = tTemp.sWrite(L"source", "1");
    TCopyFile const tCopy([&](LPCWSTR pzSource, LPCWSTR pzTarget, BOOL fFail) {
        BOOL const fCopied = tCopy.Original(pzSource, pzTarget, fFail);
        DeleteFileW(pzTarget);
        return fCopied;
    });
    TSystemCall<"SetFileAttributesW", decltype(SetFileAttributesW)> const tSet([](auto...) { return TRUE; });
    EXPECT_NO_THROW(DoCopyFile(sSource.c_str(), tTemp.sGetPath(L"target").c_str(), eCopyDefault));
    EXPECT_EQ(tSet.iGetCalls(), 0);
}

TEST(DoCopyFile, TellsAFullDisk) {
    TTempDirectory const tTemp;
    std::wstring const sSource = tTemp.sWrite(L"source", "1");
    TCopyFile const tCopy([](auto...) { return tFailWith(ERROR_DISK_FULL, FALSE); });
    EXPECT_EQ(tThrownBy([&] { DoCopyFile(sSource.c_str(), L"C:\\target", eCopyDefault); }).what(),
              sFailure(ERROR_DISK_FULL, 4345, sSource.c_str(), L"C:\\target"));
    EXPECT_FALSE(fDoCopyFile(sSource.c_str(), L"C:\\target", eCopyDefault));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_DISK_FULL));
}

TEST(DoCopyFile, ReachesLongPaths) {
    THardToReach const tHard;
    WriteFileBytes(tHard.sGetPath(L"source"), "1");
    SetAttributes(tHard.sGetPath(L"source"), FILE_ATTRIBUTE_READONLY);
    std::wstring const sTarget = tHard.sGetPath(std::wstring(255, L't').c_str());
    DoCopyFile(tHard.sGetPath(L"source").c_str(), sTarget.c_str(), eCopyDefault, &t2001);
    EXPECT_EQ(sReadFileBytes(sTarget), "1");
    EXPECT_FALSE(fIsReadOnly(sTarget));
    EXPECT_TRUE(fCopyFile(tHard.sGetPath(L"source"), tHard.sGetPath(L"second")));
}

TEST(ECopyFile, CombinesItsBits) {
    static_assert(eCopyDefault == 0 && eCopyFailIfExists == 1 && eCopyKeepReadOnly == 2);
    static_assert((eCopyFailIfExists | eCopyKeepReadOnly) == 3);
}

TEST(SCopyFileToDirectory, NumbersTheName) {
    TTempDirectory const tTemp;
    std::wstring const sSource = tTemp.sWrite(L"a.b.txt", "1");
    tTemp.sMakeDirectory(L"e");
    struct {
        int iNumber;
        wchar_t const * pzExpected;
    } const atRows[] = {{3, L"e\\a.b-3.txt"},
                        {0, L"e\\a.b-0.txt"},
                        {-1, L"e\\a.b.txt"},
                        {2147483647, L"e\\a.b-2147483647.txt"},
                        {-2147483647, L"e\\a.b.txt"}};
    for (auto const & tRow : atRows) {
        EXPECT_EQ(sCopyFileToDirectory(sSource, tTemp.sGetPath(L"e"), eCopyDefault, tRow.iNumber),
                  tTemp.sGetPath(tRow.pzExpected));
        EXPECT_EQ(sReadFileBytes(tTemp.sGetPath(tRow.pzExpected)), "1");
    }
    EXPECT_EQ(sCopyFileToDirectory(tTemp.sWrite(L"%s%d", "2"), tTemp.sGetPath(L"e\\"), eCopyDefault, 1),
              tTemp.sGetPath(L"e\\%s%d-1"));
    SetAttributes(sSource, FILE_ATTRIBUTE_READONLY);
    EXPECT_TRUE(fIsReadOnly(sCopyFileToDirectory(sSource, tTemp.sGetPath(L"e"), eCopyKeepReadOnly, 7)));
}

TEST(SCopyFileToDirectory, FailsAsTheCopyDoes) {
    TTempDirectory const tTemp;
    std::wstring const sSource = tTemp.sWrite(L"a", "1");
    EXPECT_EQ(tThrownBy([&] { (void)sCopyFileToDirectory(sSource, tTemp.sGetPath(), eCopyFailIfExists, -1); }).what(),
              sFailure(ERROR_FILE_EXISTS, 4345, sSource.c_str(), sSource.c_str()));
    EXPECT_EQ(tThrownBy([&] { (void)sCopyFileToDirectory(sSource, tTemp.sGetPath(L"x"), eCopyDefault, 1); }).what(),
              sFailure(ERROR_PATH_NOT_FOUND, 4345, sSource.c_str(), tTemp.sGetPath(L"x\\a-1").c_str()));
}

// The files of a directory

TEST(CopyFiles, CopiesPlainFilesThatTheFilterTakes) {
    TTempDirectory const tTemp;
    tTemp.sMakeDirectory(L"from");
    for (wchar_t const * pzName : {L"from\\a", L"from\\b.txt", L"from\\refused"})
        tTemp.sWrite(pzName, "1");
    SetAttributes(tTemp.sWrite(L"from\\hidden", "1"), FILE_ATTRIBUTE_HIDDEN);
    SetAttributes(tTemp.sWrite(L"from\\system", "1"), FILE_ATTRIBUTE_SYSTEM);
    SetAttributes(tTemp.sGetPath(L"from\\a"), FILE_ATTRIBUTE_READONLY);
    tTemp.sMakeDirectory(L"from\\sub");
    std::vector<std::wstring> tAsked;
    CopyFiles(tTemp.sGetPath(L"from"), tTemp.sGetPath(L"new\\to"), [&](std::wstring const & sPath) {
        tAsked.push_back(sPath);
        return !sPath.ends_with(L"refused");
    });
    EXPECT_EQ(sListDirectory(tTemp.sGetPath(L"new\\to")), L"a|b.txt");
    EXPECT_FALSE(fIsReadOnly(tTemp.sGetPath(L"new\\to\\a")));
    // The system finds names in their order here, and asks for no hidden file.
    EXPECT_EQ(tAsked, (std::vector{tTemp.sGetPath(L"from\\a"), tTemp.sGetPath(L"from\\b.txt"),
                                   tTemp.sGetPath(L"from\\refused")}));
}

TEST(CopyFiles, OverwritesFilesThatExist) {
    TTempDirectory const tTemp;
    for (wchar_t const * pzDirectory : {L"from", L"to"})
        tTemp.sMakeDirectory(pzDirectory);
    tTemp.sWrite(L"from\\a", "new");
    tTemp.sWrite(L"to\\a", "old");
    tTemp.sWrite(L"to\\b", "old");
    CopyFiles(tTemp.sGetPath(L"from"), tTemp.sGetPath(L"to"), [](std::wstring const &) { return true; });
    EXPECT_EQ(sReadFileBytes(tTemp.sGetPath(L"to\\a")), "new");
    EXPECT_EQ(sReadFileBytes(tTemp.sGetPath(L"to\\b")), "old");
}

TEST(CopyFiles, TellsNothingOfAMissingSourceOrATargetThatCannotBeMade) {
    TTempDirectory const tTemp;
    std::wstring const sFile = tTemp.sWrite(L"file", "1");
    auto const fnNever = [](std::wstring const &) {
        ADD_FAILURE();
        return true;
    };
    EXPECT_NO_THROW(CopyFiles(tTemp.sGetPath(L"missing"), tTemp.sGetPath(L"to"), fnNever));
    EXPECT_FALSE(fExists(tTemp.sGetPath(L"to")));
    EXPECT_NO_THROW(CopyFiles(sFile, tTemp.sGetPath(L"to"), fnNever));
    EXPECT_NO_THROW(CopyFiles(tTemp.sGetPath(), sFile, fnNever));
    EXPECT_NO_THROW(CopyFiles(tTemp.sGetPath(), sFile + L"\\to", fnNever));
    EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"file");
}

TEST(CopyFiles, ThrowsForAFileThatCannotBeCopied) {
    TTempDirectory const tTemp;
    tTemp.sMakeDirectory(L"from");
    for (wchar_t const * pzName : {L"from\\a", L"from\\b", L"from\\c"})
        tTemp.sWrite(pzName, "1");
    THandle const hHeld = hHold(tTemp.sGetPath(L"from\\b"));
    EXPECT_EQ(
        tThrownBy([&] {
            CopyFiles(tTemp.sGetPath(L"from"), tTemp.sGetPath(L"to"), [](std::wstring const &) { return true; });
        }).what(),
        sFailure(ERROR_SHARING_VIOLATION, 4345, tTemp.sGetPath(L"from\\b").c_str(), tTemp.sGetPath(L"to\\b").c_str()));
    EXPECT_EQ(sListDirectory(tTemp.sGetPath(L"to")), L"a");
}

TEST(CopyFiles, NeedsItsFilterAtTheFirstFileOnly) {
    TTempDirectory const tTemp;
    tTemp.sMakeDirectory(L"from");
    tTemp.sMakeDirectory(L"from\\sub");
    SetAttributes(tTemp.sWrite(L"from\\hidden", "1"), FILE_ATTRIBUTE_HIDDEN);
    EXPECT_NO_THROW(CopyFiles(tTemp.sGetPath(L"from"), tTemp.sGetPath(L"to"), {}));
    tTemp.sWrite(L"from\\a", "1");
    EXPECT_THROW(CopyFiles(tTemp.sGetPath(L"from"), tTemp.sGetPath(L"to"), {}), std::bad_function_call);
}

// A tree

namespace {

/// A tree of two levels in "from".
class CopyDirectoryTest : public testing::Test {
protected:
    CopyDirectoryTest() {
        for (wchar_t const * pzDirectory : {L"from", L"from\\b", L"from\\b\\.d", L"from\\empty"})
            tTemp.sMakeDirectory(pzDirectory);
        for (wchar_t const * pzFile : {L"from\\a", L"from\\b\\.d\\1", L"from\\b\\c", L"from\\b\\z", L"from\\z"})
            tTemp.sWrite(pzFile, "new");
        SetAttributes(tTemp.sGetPath(L"from\\b\\c"), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);
    }
    [[nodiscard]] std::wstring sFrom() const { return tTemp.sGetPath(L"from"); }
    [[nodiscard]] std::wstring sTo() const { return tTemp.sGetPath(L"to"); }
    /// The part of a path behind the temporary directory.
    [[nodiscard]] std::wstring sCut(std::wstring const & sPath) const {
        return sPath.empty() ? sPath : sPath.substr(tTemp.sGetPath().size() + 1);
    }
    /// Files of the old content in the target.
    void WriteOld(std::initializer_list<wchar_t const *> pzPaths) const {
        for (wchar_t const * pzDirectory : {L"to", L"to\\b", L"to\\b\\.d"})
            CreateDirectoryW(tTemp.sGetPath(pzDirectory).c_str(), nullptr);
        for (wchar_t const * pzPath : pzPaths)
            tTemp.sWrite(pzPath, "old");
    }

    TTempDirectory tTemp;
};

} // namespace

TEST_F(CopyDirectoryTest, CopiesEverythingAndTellsOfEachFile) {
    std::vector<std::wstring> tTold;
    CopyDirectory(sFrom(), sTo(), true, fTakeAll, [&](std::wstring const & sFirst, std::wstring const & sSecond) {
        EXPECT_EQ(sFirst, L"");
        tTold.push_back(sCut(sSecond));
        return true; // does not count here
    });
    EXPECT_EQ(sListDirectory(sTo()), L"a|b|empty|z");
    EXPECT_EQ(sListDirectory(sTo() + L"\\b"), L".d|c|z");
    EXPECT_EQ(sReadFileBytes(sTo() + L"\\b\\.d\\1"), "new");
    EXPECT_FALSE(fIsReadOnly(sTo() + L"\\b\\c"));
    // The system finds names in their order here.
    EXPECT_EQ(tTold, (std::vector<std::wstring>{L"to\\a", L"to\\b\\.d\\1", L"to\\b\\c", L"to\\b\\z", L"to\\z"}));
}

TEST_F(CopyDirectoryTest, AsksTheFilterForEveryEntry) {
    std::vector<std::wstring> tAsked;
    auto const fnFilter = [&](unsigned long dwAttributes, std::wstring const & sPath) {
        EXPECT_EQ(dwAttributes, GetFileAttributesW(sPath.c_str()));
        tAsked.push_back(sCut(sPath));
        return !sPath.ends_with(L".d") && !sPath.ends_with(L"z");
    };
    CopyDirectory(sFrom() + L"\\", sTo() + L"\\", false, fnFilter, fnNobody);
    EXPECT_EQ(tAsked, (std::vector<std::wstring>{L"from\\a", L"from\\b", L"from\\b\\.d", L"from\\b\\c", L"from\\b\\z",
                                                 L"from\\empty", L"from\\z"}));
    EXPECT_EQ(sListDirectory(sTo()), L"a|b|empty");
    EXPECT_EQ(sListDirectory(sTo() + L"\\b"), L"c");
}

TEST_F(CopyDirectoryTest, OverwritesOnlyWhenToldTo) {
    WriteOld({L"to\\a", L"to\\b\\c"});
    CopyDirectory(sFrom(), sTo(), true, fTakeAll, fnNobody);
    EXPECT_EQ(sReadFileBytes(sTo() + L"\\a"), "new");
    EXPECT_EQ(sReadFileBytes(sTo() + L"\\b\\c"), "new");
    // Without a callback a target that exists is a failure, told in the system's words alone.
    tTemp.sWrite(L"to\\a", "old");
    TXZkTools const tError = tThrownBy([&] { CopyDirectory(sFrom(), sTo(), false, fTakeAll, fnNobody); });
    EXPECT_EQ(tError.iGetNumber(), -1);
    EXPECT_EQ(tError.what(), sSystemText(ERROR_FILE_EXISTS));
    EXPECT_EQ(sReadFileBytes(sTo() + L"\\a"), "old");
}

TEST_F(CopyDirectoryTest, AsksWhatToDoAboutATargetThatExists) {
    WriteOld({L"to\\a", L"to\\b\\z"});
    std::vector<std::wstring> tTold;
    CopyDirectory(sFrom(), sTo(), false, fTakeAll, [&](std::wstring const & sFirst, std::wstring const & sSecond) {
        tTold.push_back(sCut(sFirst) + L">" + sCut(sSecond));
        return false;
    });
    EXPECT_EQ(tTold, (std::vector<std::wstring>{L"from\\a>to\\a", L">to\\b\\.d\\1", L">to\\b\\c",
                                                L"from\\b\\z>to\\b\\z", L">to\\z"}));
    EXPECT_EQ(sReadFileBytes(sTo() + L"\\a"), "old");
    EXPECT_EQ(sReadFileBytes(sTo() + L"\\b\\z"), "old");
    EXPECT_EQ(sReadFileBytes(sTo() + L"\\z"), "new");
}

TEST_F(CopyDirectoryTest, StopsInOneDirectoryAndGoesOnAbove) {
    WriteOld({L"to\\b\\c", L"to\\b\\.d\\1"});
    CopyDirectory(sFrom(), sTo(), false, fTakeAll,
                  [&](std::wstring const & sFirst, std::wstring const &) { return !sFirst.empty(); });
    EXPECT_EQ(sListDirectory(sTo()), L"a|b|empty|z");   // above it goes on
    EXPECT_EQ(sListDirectory(sTo() + L"\\b"), L".d|c"); // from c on nothing, but .d did not end it
    EXPECT_EQ(sReadFileBytes(sTo() + L"\\b\\c"), "old");
    // On top it ends all.
    tTemp.sWrite(L"to\\a", "old");
    ASSERT_TRUE(DeleteFileW((sTo() + L"\\z").c_str()));
    EXPECT_NO_THROW(CopyDirectory(sFrom(), sTo(), false, fTakeAll, [](auto const &, auto const &) { return true; }));
    EXPECT_FALSE(fExists(sTo() + L"\\z"));
}

TEST_F(CopyDirectoryTest, ThrowsForAFileThatCannotBeCopied) {
    bool fAsked = false;
    auto const fnNotify = [&](std::wstring const & sFirst, std::wstring const &) {
        fAsked = fAsked || !sFirst.empty();
        return false;
    };
    {
        THandle const hHeld = hHold(sFrom() + L"\\b\\z");
        TXZkTools const tError = tThrownBy([&] { CopyDirectory(sFrom(), sTo(), false, fTakeAll, fnNotify); });
        EXPECT_EQ(tError.iGetNumber(), -1);
        EXPECT_EQ(tError.what(), sSystemText(ERROR_SHARING_VIOLATION));
    }
    EXPECT_FALSE(fAsked);                     // only for a target that exists
    EXPECT_EQ(sListDirectory(sTo()), L"a|b"); // what was copied stays
    EXPECT_EQ(sListDirectory(sTo() + L"\\b"), L".d|c");
    for (DWORD const dwError : {DWORD{ERROR_DISK_FULL}, DWORD{ERROR_ACCESS_DENIED}, DWORD{ERROR_ALREADY_EXISTS}}) {
        TCopyFile const tCopy([&](auto...) { return tFailWith(dwError, FALSE); });
        EXPECT_EQ(tThrownBy([&] { CopyDirectory(sFrom(), sTo(), true, fTakeAll, fnNotify); }).what(),
                  sSystemText(dwError));
        EXPECT_EQ(tCopy.iGetCalls(), 1);
    }
    EXPECT_FALSE(fAsked);
}

TEST_F(CopyDirectoryTest, ThrowsForADirectoryThatCannotBeMade) {
    std::wstring const sInTheWay = tTemp.sWrite(L"way", "1");
    EXPECT_EQ(tThrownBy([&] { CopyDirectory(sFrom(), sInTheWay, true, fTakeAll, fnNobody); }).what(),
              sSystemText(ERROR_ALREADY_EXISTS) + "\r\n" + TXZkTools(4211, sInTheWay.c_str()).what() + "\r\n" +
                  TXZkTools(4210, sInTheWay.c_str()).what());
    CreateDirectoryW(sTo().c_str(), nullptr);
    std::wstring const sBelow = tTemp.sWrite(L"to\\b", "1");
    EXPECT_EQ(tThrownBy([&] { CopyDirectory(sFrom(), sTo(), true, fTakeAll, fnNobody); }).what(),
              sSystemText(ERROR_ALREADY_EXISTS) + "\r\n" + TXZkTools(4211, sBelow.c_str()).what() + "\r\n" +
                  TXZkTools(4210, sBelow.c_str()).what());
}

TEST_F(CopyDirectoryTest, TakesASourceThatIsNotThereForEmpty) {
    EXPECT_NO_THROW(CopyDirectory(tTemp.sGetPath(L"missing"), sTo(), true, {}, fnNobody));
    EXPECT_EQ(sListDirectory(sTo()), L"");
    EXPECT_TRUE(fExists(sTo()));
}

TEST_F(CopyDirectoryTest, NeedsItsFilterAtTheFirstEntry) {
    EXPECT_THROW(CopyDirectory(sFrom(), sTo(), true, {}, fnNobody), std::bad_function_call);
    EXPECT_TRUE(fExists(sTo()));
}

TEST_F(CopyDirectoryTest, GivesEveryDirectoryCopiesOfItsOwn) {
    std::vector<std::wstring> tFilter, tNotify;
    CopyDirectory(
        sFrom(), sTo(), true,
        [&, iCount = 0](unsigned long, std::wstring const & sPath) mutable {
            tFilter.push_back(sCut(sPath) + L" " + std::to_wstring(++iCount));
            return true;
        },
        [&, iCount = 0](std::wstring const &, std::wstring const & sPath) mutable {
            tNotify.push_back(sCut(sPath) + L" " + std::to_wstring(++iCount));
            return true;
        });
    EXPECT_EQ(tFilter, (std::vector<std::wstring>{L"from\\a 1", L"from\\b 2", L"from\\b\\.d 3", L"from\\b\\.d\\1 4",
                                                  L"from\\b\\c 4", L"from\\b\\z 5", L"from\\empty 3", L"from\\z 4"}));
    EXPECT_EQ(tNotify,
              (std::vector<std::wstring>{L"to\\a 1", L"to\\b\\.d\\1 2", L"to\\b\\c 2", L"to\\b\\z 3", L"to\\z 2"}));
}

TEST_F(CopyDirectoryTest, PassesOnWhatACallbackThrows) {
    auto const fnThrow = [](std::wstring const &, std::wstring const &) -> bool { throw std::logic_error("stop"); };
    EXPECT_THROW(CopyDirectory(sFrom(), sTo(), true, fTakeAll, fnThrow), std::logic_error);
    EXPECT_EQ(sListDirectory(sTo()), L"a");
}

TEST_F(CopyDirectoryTest, ReachesLongPathsAndLongNames) {
    THardToReach const tHard;
    std::wstring sDeepest = tHard.sGetPath(L"from.");
    CreateDirectoryW(zk_test::sLongForm(sDeepest).c_str(), nullptr);
    for (int i = 0; i < 4; ++i) {
        sDeepest += L"\\" + std::wstring(255, L'd');
        ASSERT_TRUE(CreateDirectoryW(zk_test::sLongForm(sDeepest).c_str(), nullptr));
    }
    WriteFileBytes(sDeepest + L"\\" + std::wstring(255, L'f'), "1");
    CopyDirectory(tHard.sGetPath(L"from."), tHard.sGetPath(L"to."), false, fTakeAll, fnNobody);
    sDeepest.replace(tHard.sGetPath().size() + 1, 4, L"to");
    EXPECT_EQ(sReadFileBytes(sDeepest + L"\\" + std::wstring(255, L'f')), "1");
    EXPECT_EQ(sListDirectory(tHard.sGetPath()), L"from.|to.");
}

TEST_F(CopyDirectoryTest, BearsATreeDeeperThanTheStack) {
    std::wstring sDeepest = tTemp.sMakeDirectory(L"deep");
    for (int i = 0; i < 150; ++i) {
        sDeepest += L"\\d";
        ASSERT_TRUE(CreateDirectoryW(zk_test::sLongForm(sDeepest).c_str(), nullptr));
    }
    WriteFileBytes(sDeepest + L"\\file", "1");
    zk_test::CallWithLittleStack([&] { CopyDirectory(tTemp.sGetPath(L"deep"), sTo(), true, fTakeAll, fnNobody); });
    sDeepest.replace(tTemp.sGetPath().size() + 1, 4, L"to");
    EXPECT_EQ(sReadFileBytes(sDeepest + L"\\file"), "1");
}

// Appending

TEST(AppendFile, JoinsFilesOfAnySize) {
    TTempDirectory const tTemp;
    for (std::size_t const uSize : {0u, 1u, 16383u, 16384u, 16385u, 50'000u}) {
        std::string sBytes(uSize, '\0');
        for (std::size_t i = 0; i < uSize; ++i)
            sBytes[i] = static_cast<char>(i * 7 / 3);
        std::wstring const sSource = tTemp.sWrite(L"source", sBytes);
        std::wstring const sTarget = tTemp.sWrite(L"target", "begin");
        SetLastError(ERROR_NOT_READY);
        AppendFile(sTarget, sSource);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(NO_ERROR));
        EXPECT_TRUE(sReadFileBytes(sTarget) == "begin" + sBytes) << uSize;
        EXPECT_TRUE(fIsUnused(sTarget) && fIsUnused(sSource));
    }
}

TEST(AppendFile, MakesAMissingTarget) {
    TTempDirectory const tTemp;
    std::wstring const sTarget = tTemp.sGetPath(L"target");
    AppendFile(sTarget, tTemp.sWrite(L"source", "1"));
    AppendFile(sTarget, tTemp.sWrite(L"source", "2"));
    EXPECT_EQ(sReadFileBytes(sTarget), "12");
}

TEST(AppendFile, TellsWhichOfTheTwoCouldNotBeOpened) {
    TTempDirectory const tTemp;
    std::wstring const sSource = tTemp.sWrite(L"source 100%s", "1");
    std::wstring const sTarget = tTemp.sWrite(L"target", "2");
    auto const sExpected = [](std::wstring const & sFrom, std::wstring const & sTo, std::wstring const & sUnopened,
                              DWORD dwError) {
        return std::string(TXZkTools(4292, sFrom.c_str(), sTo.c_str()).what()) + "\r\n" +
               TXZkTools(4215, sUnopened.c_str()).what() + "\r\n" + sSystemText(dwError);
    };
    std::wstring const sMissing = tTemp.sGetPath(L"missing");
    TXZkTools const tError = tThrownBy([&] { AppendFile(sTarget, sMissing); });
    EXPECT_EQ(tError.iGetNumber(), IDS_APPEND_FILE_FAILED);
    EXPECT_EQ(tError.what(), sExpected(sMissing, sTarget, sMissing, ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(tThrownBy([&] { AppendFile(sMissing + L"\\x", sSource); }).what(),
              sExpected(sSource, sMissing + L"\\x", sMissing + L"\\x", ERROR_PATH_NOT_FOUND));
    EXPECT_EQ(tThrownBy([&] { AppendFile(sSource, sSource); }).what(), // the two are one
              sExpected(sSource, sSource, sSource, ERROR_SHARING_VIOLATION));
    {
        THandle const hHeld(
            CreateFileW(sSource.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
        EXPECT_EQ(tThrownBy([&] { AppendFile(sTarget, sSource); }).what(), // nobody else may read meanwhile
                  sExpected(sSource, sTarget, sSource, ERROR_SHARING_VIOLATION));
        EXPECT_EQ(tThrownBy([&] { AppendFile(sSource, sTarget); }).what(),
                  sExpected(sTarget, sSource, sSource, ERROR_SHARING_VIOLATION));
    }
    EXPECT_EQ(sReadFileBytes(sTarget), "2");
    EXPECT_TRUE(fIsUnused(sTarget) && fIsUnused(sSource));
}

TEST(AppendFile, OpensBothInOneForm) {
    TTempDirectory const tTemp;
    std::wstring const sSource = tTemp.sWrite(L"source", "1");
    std::wstring const sTarget = tTemp.sWrite(L"target", "2");
    TCreateFile const tCreate([&](LPCWSTR pzPath, DWORD dwAccess, DWORD dwShare, LPSECURITY_ATTRIBUTES pSecurity,
                                  DWORD dwDisposition, DWORD dwFlags, HANDLE hTemplate) {
        bool const fSource = tCreate.iGetCalls() == 1;
        EXPECT_EQ(pzPath, fSource ? sSource : sTarget);
        EXPECT_EQ(dwAccess, fSource ? GENERIC_READ : 4u);
        EXPECT_EQ(dwShare, 0u);
        EXPECT_EQ(pSecurity, nullptr);
        EXPECT_EQ(dwDisposition, static_cast<DWORD>(fSource ? OPEN_EXISTING : OPEN_ALWAYS));
        EXPECT_EQ(dwFlags, static_cast<DWORD>(FILE_ATTRIBUTE_NORMAL));
        EXPECT_EQ(hTemplate, nullptr);
        return tCreate.Original(pzPath, dwAccess, dwShare, pSecurity, dwDisposition, dwFlags, hTemplate);
    });
    AppendFile(sTarget, sSource);
    EXPECT_EQ(tCreate.iGetCalls(), 2);
}

TEST(AppendFile, FindsAFailedWriteAtTheEnd) {
    TTempDirectory const tTemp;
    std::wstring const sSource =
        tTemp.sWrite(L"source", std::string(16384, 'a') + std::string(16384, 'b') + std::string(10, 'c'));
    std::wstring const sTarget = tTemp.sWrite(L"target", "");
    {
        TWriteFile const tWrite([&](HANDLE hFile, LPCVOID pData, DWORD dwSize, LPDWORD pdwWritten, LPOVERLAPPED p) {
            if (tWrite.iGetCalls() == 2) return tFailWith(ERROR_DISK_FULL, FALSE);
            return tWrite.Original(hFile, pData, dwSize, pdwWritten, p);
        });
        EXPECT_EQ(tThrownBy([&] { AppendFile(sTarget, sSource); }).what(),
                  sFailure(ERROR_DISK_FULL, 4292, sSource.c_str(), sTarget.c_str()));
        EXPECT_EQ(tWrite.iGetCalls(), 3); // the result is not tested where it fails
    }
    EXPECT_TRUE(sReadFileBytes(sTarget) == std::string(16384, 'a') + std::string(10, 'c'));
    EXPECT_TRUE(fIsUnused(sTarget) && fIsUnused(sSource));
}

TEST(AppendFile, TellsAFailedRead) {
    TTempDirectory const tTemp;
    std::wstring const sSource = tTemp.sWrite(L"source", std::string(20'000, 'a'));
    std::wstring const sTarget = tTemp.sWrite(L"target", "");
    TReadFile const tRead([&](HANDLE hFile, LPVOID pData, DWORD dwSize, LPDWORD pdwRead, LPOVERLAPPED p) {
        EXPECT_EQ(dwSize, 16384u);
        if (tRead.iGetCalls() == 2) return tFailWith(ERROR_CRC, FALSE);
        return tRead.Original(hFile, pData, dwSize, pdwRead, p);
    });
    EXPECT_EQ(tThrownBy([&] { AppendFile(sTarget, sSource); }).what(),
              sFailure(ERROR_CRC, 4292, sSource.c_str(), sTarget.c_str()));
    EXPECT_EQ(sReadFileBytes(sTarget).size(), 16384u);
}

TEST(AppendFile, ReachesLongPaths) {
    THardToReach const tHard;
    WriteFileBytes(tHard.sGetPath(L"source"), "1");
    AppendFile(tHard.sGetPath(L"target"), tHard.sGetPath(L"source"));
    EXPECT_EQ(sReadFileBytes(tHard.sGetPath(L"target")), "1");
}

// A resource

namespace {

constexpr unsigned int uAllBytes = 901;
constexpr unsigned int uLarge = 902;
constexpr unsigned int uEmpty = 903;
constexpr unsigned int uOtherType = 904;
constexpr std::string_view sAllBytes("\0\xFF\xFE\r\n\x1A\x80"
                                     "end\0",
                                     11);

HMODULE hOwn() {
    return GetModuleHandleW(nullptr);
}

} // namespace

TEST(WriteResToFile, WritesTheBytesAsTheyAre) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sGetPath(L"new\\directory\\file");
    WriteResToFile(hOwn(), uAllBytes, sPath.c_str());
    EXPECT_EQ(sReadFileBytes(sPath), sAllBytes); // no mark, no conversion
    WriteResToFile(nullptr, uAllBytes, sPath.c_str());
    EXPECT_EQ(sReadFileBytes(sPath), sAllBytes);
    WriteResToFile(hOwn(), uLarge, sPath.c_str()); // larger than the buffer
    std::string const sBytes = sReadFileBytes(sPath);
    ASSERT_EQ(sBytes.size(), 10'000u);
    for (std::size_t i = 0; i < sBytes.size(); ++i)
        ASSERT_EQ(sBytes[i], "0123456789"[i % 10]);
    EXPECT_TRUE(fIsUnused(sPath));
}

TEST(WriteResToFile, PassesOverWhatIsNotThere) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sGetPath(L"new\\file");
    for (unsigned int const uId : {0u, 1u, 999u, uOtherType, uEmpty, 65536u + uAllBytes, 0xFFFF'FFFFu})
        EXPECT_NO_THROW(WriteResToFile(hOwn(), uId, sPath.c_str())) << uId;
    EXPECT_NO_THROW(WriteResToFile(GetModuleHandleW(L"ZkTools.dll"), uAllBytes, sPath.c_str()));
    {
        TSystemCall<"LoadResource", decltype(LoadResource)> const tLoad([](auto...) -> HGLOBAL { return nullptr; });
        EXPECT_NO_THROW(WriteResToFile(hOwn(), uAllBytes, sPath.c_str()));
    }
    {
        TSystemCall<"SizeofResource", decltype(SizeofResource)> const tSize([](auto...) -> DWORD { return 0; });
        EXPECT_NO_THROW(WriteResToFile(hOwn(), uAllBytes, sPath.c_str()));
    }
    TSystemCall<"LockResource", decltype(LockResource)> const tLock([](auto...) -> LPVOID { return nullptr; });
    EXPECT_NO_THROW(WriteResToFile(hOwn(), uAllBytes, sPath.c_str()));
    EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"");
}

TEST(WriteResToFile, TellsWhatTheStreamTells) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sWrite(L"file", "");
    {
        THandle const hHeld = hHold(sPath);
        EXPECT_EQ(tThrownBy([&] { WriteResToFile(hOwn(), uAllBytes, sPath.c_str()); }).what(),
                  sSystemText(ERROR_SHARING_VIOLATION) + "\r\n" + TXZkTools(4215, sPath.c_str()).what());
    }
    for (unsigned int const uId : {uAllBytes, uLarge}) {
        for (int iFailing = 1; iFailing <= (uId == uLarge ? 3 : 1); ++iFailing) {
            TWriteFile const tWrite([&](HANDLE hFile, LPCVOID pData, DWORD dwSize, LPDWORD pdwWritten, LPOVERLAPPED p) {
                // A full disk stays full.
                if (tWrite.iGetCalls() >= iFailing) return tFailWith(ERROR_DISK_FULL, FALSE);
                return tWrite.Original(hFile, pData, dwSize, pdwWritten, p);
            });
            EXPECT_EQ(tThrownBy([&] { WriteResToFile(hOwn(), uId, sPath.c_str()); }).what(),
                      sSystemText(ERROR_DISK_FULL) + "\r\n" + TXZkTools(4270, sPath.c_str()).what());
            EXPECT_EQ(tWrite.iGetCalls(), iFailing);
            EXPECT_TRUE(fIsUnused(sPath));
        }
    }
}

// Whether a copy is due

TEST(FCheckFileParams, TellsEqualTimesForAChange) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sWrite(L"file", "12345");
    FILETIME const tOwn = tGetData(sPath).ftLastWriteTime;
    FILETIME const tOther = t2001;
    ULARGE_INTEGER const tSame{.QuadPart = 5};
    ULARGE_INTEGER const tDifferent{.QuadPart = 6};
    ULARGE_INTEGER const tHigh{.QuadPart = 0x1'0000'0005};
    EXPECT_TRUE(fCheckFileParams(sPath, tOwn, tSame));
    EXPECT_TRUE(fCheckFileParams(sPath, tOwn, tDifferent));
    EXPECT_FALSE(fCheckFileParams(sPath, tOther, tSame));
    EXPECT_TRUE(fCheckFileParams(sPath, tOther, tDifferent));
    EXPECT_TRUE(fCheckFileParams(sPath, tOther, tHigh));
    EXPECT_TRUE(fCheckFileParams(tTemp.sGetPath(L"missing"), tOther, tSame));
    THardToReach const tHard;
    WriteFileBytes(tHard.sGetPath(L"file"), "12345");
    EXPECT_FALSE(fCheckFileParams(tHard.sGetPath(L"file"), tOther, tSame));
}

TEST(FCheckFileParams, ComparesWholeSizes) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sGetPath(L"large");
    {
        THandle const hFile(CreateFileW(sPath.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
        LARGE_INTEGER const tLength{.QuadPart = 0x1'0000'0005};
        ASSERT_TRUE(SetFilePointerEx(hFile.hGet(), tLength, nullptr, FILE_BEGIN) && SetEndOfFile(hFile.hGet()));
    }
    EXPECT_TRUE(fCheckFileParams(sPath, t2001, ULARGE_INTEGER{.QuadPart = 5}));
    EXPECT_FALSE(fCheckFileParams(sPath, t2001, ULARGE_INTEGER{.QuadPart = 0x1'0000'0005}));
    FILETIME tCreation, tAccess, tWrite;
    ULARGE_INTEGER tSize;
    GetFileParams(sPath, tCreation, tAccess, tWrite, tSize);
    EXPECT_EQ(tSize.QuadPart, 0x1'0000'0005u);
}

TEST(GetFileParams, GivesTimesAndSize) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sWrite(L"file", "12345");
    {
        FILETIME const tAccess{0xA0CF6000, 0x01C17385};
        THandle const hFile(CreateFileW(sPath.c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(SetFileTime(hFile.hGet(), nullptr, &tAccess, &t2001));
    }
    FILETIME tCreation{}, tAccess{}, tWrite{};
    ULARGE_INTEGER tSize{};
    GetFileParams(sPath, tCreation, tAccess, tWrite, tSize);
    WIN32_FILE_ATTRIBUTE_DATA const tData = tGetData(sPath);
    EXPECT_EQ(CompareFileTime(&tCreation, &tData.ftCreationTime), 0);
    EXPECT_EQ(CompareFileTime(&tAccess, &tData.ftLastAccessTime), 0);
    EXPECT_EQ(CompareFileTime(&tWrite, &t2001), 0);
    EXPECT_NE(CompareFileTime(&tAccess, &tWrite), 0);
    EXPECT_EQ(tSize.QuadPart, 5u);
}

TEST(GetFileParams, ThrowsTheSystemsReason) {
    TTempDirectory const tTemp;
    FILETIME tCreation{1, 2}, tAccess{3, 4}, tWrite{5, 6};
    ULARGE_INTEGER tSize{.QuadPart = 7};
    for (auto const & [pzName, dwError] : std::initializer_list<std::pair<wchar_t const *, DWORD>>{
             {L"missing", ERROR_FILE_NOT_FOUND}, {L"missing\\x", ERROR_PATH_NOT_FOUND}}) {
        std::wstring const sPath = tTemp.sGetPath(pzName);
        TXZkTools const tError = tThrownBy([&] { GetFileParams(sPath, tCreation, tAccess, tWrite, tSize); });
        EXPECT_EQ(tError.iGetNumber(), -1);
        EXPECT_EQ(tError.what(), sSystemText(dwError));
    }
    EXPECT_TRUE(tCreation.dwLowDateTime == 1 && tAccess.dwHighDateTime == 4 && tWrite.dwLowDateTime == 5);
    EXPECT_EQ(tSize.QuadPart, 7u);
}
