// The deletion family of ZkTools/Rename.h.
#include "ZkTools/Rename.h"

#include "ZkTools/MessageIds.h"
#include "tests/files/Fixture.h"
#include "tests/support/Handle.h"
#include "tests/support/SystemCall.h"

#include <gtest/gtest.h>

#include <array>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using testing::PrintToString;
using zk_test::fExists;
using zk_test::hHold;
using zk_test::sFailure;
using zk_test::sListDirectory;
using zk_test::tFailWith;
using zk_test::THandle;
using zk_test::THardToReach;
using zk_test::TSystemCall;
using zk_test::TTempDirectory;
using zk_test::tThrownBy;

using TDeleteFile = TSystemCall<"DeleteFileW", decltype(DeleteFileW)>;
using TRemoveDirectory = TSystemCall<"RemoveDirectoryW", decltype(RemoveDirectoryW)>;
using TSetAttributes = TSystemCall<"SetFileAttributesW", decltype(SetFileAttributesW)>;
using TMoveFile = TSystemCall<"MoveFileExW", decltype(MoveFileExW)>;
using TFindFirstEx = TSystemCall<"FindFirstFileExW", decltype(FindFirstFileExW)>;
using TFindClose = TSystemCall<"FindClose", decltype(FindClose)>;
using TDebugOutput = TSystemCall<"OutputDebugStringW", decltype(OutputDebugStringW)>;

void MakeReadOnly(std::wstring const & sPath, DWORD dwFurther = 0) {
    ASSERT_TRUE(SetFileAttributesW(zk_test::sLongForm(sPath).c_str(), FILE_ATTRIBUTE_READONLY | dwFurther));
}

/// A tree of two levels with read-only, hidden and pointed items.
void MakeTree(TTempDirectory const & tTemp) {
    tTemp.sWrite(L"a.txt", "1");
    MakeReadOnly(tTemp.sWrite(L"b.txt", "1"));
    MakeReadOnly(tTemp.sWrite(L".hidden", "1"), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM);
    tTemp.sMakeDirectory(L"sub");
    tTemp.sMakeDirectory(L"sub\\empty");
    tTemp.sMakeDirectory(L"sub\\.pointed");
    MakeReadOnly(tTemp.sWrite(L"sub\\.pointed\\c", "1"));
    tTemp.sWrite(L"sub\\d", "1");
}

/// The deletion family as one table: each with the flags that matter here.
struct TDeletion {
    char const * pzName;
    void (*Throwing)(std::wstring const &);
    bool (*Answering)(std::wstring const &);
};
constexpr TDeletion tItemDeletions[] = {
    {"delete", [](std::wstring const & s) { xZkDeleteFileOrFolder(s, eDeleteDirect); },
     [](std::wstring const & s) { return fZkDeleteFileOrFolder(s, eDeleteDirect); }},
    {"remove", [](std::wstring const & s) { xRemoveFiles(s); }, [](std::wstring const & s) { return fRemoveFiles(s); }},
};

/// Everything that is put down for the next start, in order and without the directory in front.
class TSchedule {
public:
    explicit TSchedule(TTempDirectory const & tTemp)
        : tMove([this, sBefore = tTemp.sGetPath()](LPCWSTR pzOld, LPCWSTR pzNew, DWORD dwFlags) {
              EXPECT_EQ(pzNew, nullptr);
              EXPECT_EQ(dwFlags, 4u);
              if (!sItems.empty()) sItems += L'|';
              std::wstring_view const sOld = pzOld;
              EXPECT_TRUE(sOld.starts_with(sBefore));
              sItems += sOld.substr(sBefore.size());
              return tFailWith(ERROR_ACCESS_DENIED, FALSE); // not looked at
          }) {}
    [[nodiscard]] std::wstring const & sGetItems() const noexcept { return sItems; }

private:
    std::wstring sItems;
    TMoveFile const tMove;
};

} // namespace

TEST(XZkDeleteFileOrFolder, DeletesFilesAndWholeDirectories) {
    for (TDeletion const & tDeletion : tItemDeletions) {
        TTempDirectory const tTemp;
        MakeTree(tTemp);
        tDeletion.Throwing(tTemp.sGetPath(L"a.txt"));
        EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L".hidden|b.txt|sub");
        tDeletion.Throwing(tTemp.sGetPath(L"b.txt")); // read-only
        EXPECT_TRUE(tDeletion.Answering(tTemp.sGetPath(L".hidden")));
        EXPECT_TRUE(tDeletion.Answering(tTemp.sGetPath(L"sub")));
        EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"") << tDeletion.pzName;
    }
}

TEST(XZkDeleteFileOrFolder, TellsWhatCannotBeDeletedAndWhy) {
    TDebugOutput const tDebug([](LPCWSTR) {});
    for (TDeletion const & tDeletion : tItemDeletions) {
        TTempDirectory const tTemp;
        std::wstring const sMissing = tTemp.sGetPath(L"missing 100%s");
        TXZkTools const tMissing = tThrownBy([&] { tDeletion.Throwing(sMissing); });
        EXPECT_EQ(tMissing.iGetNumber(), IDS_COPY_FAILED);
        EXPECT_EQ(tMissing.what(), sFailure(ERROR_FILE_NOT_FOUND, 4220, sMissing.c_str()));
        EXPECT_FALSE(tDeletion.Answering(sMissing));

        std::wstring const sHeld = tTemp.sWrite(L"held", "1");
        THandle const hHeld = hHold(sHeld);
        EXPECT_EQ(tThrownBy([&] { tDeletion.Throwing(sHeld); }).what(),
                  sFailure(ERROR_SHARING_VIOLATION, 4220, sHeld.c_str()));
        EXPECT_FALSE(tDeletion.Answering(sHeld));
        EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"held");
    }
}

TEST(XZkDeleteFileOrFolder, StopsInTheTreeWhereItFails) {
    TTempDirectory const tTemp;
    for (wchar_t const * pzDirectory : {L"dir", L"dir\\1", L"dir\\2", L"dir\\3"})
        tTemp.sMakeDirectory(pzDirectory);
    for (wchar_t const * pzFile : {L"dir\\1\\a", L"dir\\2\\a", L"dir\\2\\b", L"dir\\2\\c", L"dir\\3\\a"})
        tTemp.sWrite(pzFile, "1");
    std::wstring const sHeld = tTemp.sGetPath(L"dir\\2\\b");
    {
        THandle const hHeld = hHold(sHeld);
        EXPECT_EQ(tThrownBy([&] { xZkDeleteFileOrFolder(tTemp.sGetPath(L"dir"), eDeleteDirect); }).what(),
                  sFailure(ERROR_SHARING_VIOLATION, 4220, sHeld.c_str()));
    }
    // The system finds names in their order here.
    EXPECT_EQ(sListDirectory(tTemp.sGetPath(L"dir")), L"2|3");
    EXPECT_EQ(sListDirectory(tTemp.sGetPath(L"dir\\2")), L"b|c");
    EXPECT_EQ(sListDirectory(tTemp.sGetPath(L"dir\\3")), L"a");
    xZkDeleteFileOrFolder(tTemp.sGetPath(L"dir"), eDeleteDirect);
    EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"");
}

TEST(XZkDeleteFileOrFolder, TellsADirectoryThatStays) {
    TTempDirectory const tTemp;
    tTemp.sMakeDirectory(L"dir");
    std::wstring const sInner = tTemp.sMakeDirectory(L"dir\\inner");
    for (std::wstring const & sStays : {sInner, tTemp.sGetPath(L"dir")}) {
        TRemoveDirectory const tRemove([&](LPCWSTR pzPath) {
            return pzPath == sStays ? tFailWith(ERROR_DIR_NOT_EMPTY, FALSE) : tRemove.Original(pzPath);
        });
        EXPECT_EQ(tThrownBy([&] { xZkDeleteFileOrFolder(tTemp.sGetPath(L"dir"), eDeleteDirect); }).what(),
                  sFailure(ERROR_DIR_NOT_EMPTY, 4220, sStays.c_str()));
        EXPECT_TRUE(fExists(sStays));
    }
    EXPECT_EQ(sListDirectory(tTemp.sGetPath(L"dir")), L"");
}

TEST(XZkDeleteFileOrFolder, TakesTheReadOnlyBitAndNoOther) {
    TTempDirectory const tTemp;
    tTemp.sMakeDirectory(L"dir");
    tTemp.sWrite(L"dir\\writable", "1");
    MakeReadOnly(tTemp.sWrite(L"dir\\in", "1"), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM);
    MakeReadOnly(tTemp.sWrite(L"item", "1"), FILE_ATTRIBUTE_HIDDEN);
    DWORD const dwIn = GetFileAttributesW(tTemp.sGetPath(L"dir\\in").c_str());
    DWORD const dwItem = GetFileAttributesW(tTemp.sGetPath(L"item").c_str());
    std::vector<std::pair<std::wstring, DWORD>> tSet;
    TSetAttributes const tSetAttributes([&](LPCWSTR pzPath, DWORD dwAttributes) {
        tSet.emplace_back(pzPath, dwAttributes);
        return tSetAttributes.Original(pzPath, dwAttributes);
    });
    xZkDeleteFileOrFolder(tTemp.sGetPath(L"dir"), eDeleteDirect);
    xZkDeleteFileOrFolder(tTemp.sGetPath(L"item"), eDeleteDirect);
    EXPECT_EQ(tSet, (std::vector<std::pair<std::wstring, DWORD>>{{tTemp.sGetPath(L"dir\\in"), dwIn & ~1u},
                                                                 {tTemp.sGetPath(L"item"), dwItem & ~1u}}));
}

TEST(XZkDeleteFileOrFolder, LeavesTheAttributesOfADirectoryAlone) {
    TTempDirectory const tTemp;
    std::wstring const sDirectory = tTemp.sMakeDirectory(L"dir");
    // Wine has no read-only directories. To Windows they are a reason not to remove them.
    TSystemCall<"GetFileAttributesW", decltype(GetFileAttributesW)> const tAttributes(
        [&](LPCWSTR pzPath) { return tAttributes.Original(pzPath) | FILE_ATTRIBUTE_READONLY; });
    TSetAttributes const tSetAttributes([](auto...) { return TRUE; });
    xZkDeleteFileOrFolder(sDirectory, eDeleteDirect);
    EXPECT_EQ(tSetAttributes.iGetCalls(), 0);
    EXPECT_FALSE(fExists(sDirectory));
}

TEST(XZkDeleteFileOrFolder, TellsARefusedChangeOfAttributesByTheDelete) {
    TTempDirectory const tTemp;
    std::wstring const sFile = tTemp.sWrite(L"file", "1");
    MakeReadOnly(sFile);
    TSetAttributes const tSetAttributes([](auto...) { return tFailWith(ERROR_INVALID_PARAMETER, FALSE); });
    {
        TDeleteFile const tDelete([](LPCWSTR) { return tFailWith(ERROR_WRITE_PROTECT, FALSE); });
        EXPECT_EQ(tThrownBy([&] { xZkDeleteFileOrFolder(sFile, eDeleteDirect); }).what(),
                  sFailure(ERROR_WRITE_PROTECT, 4220, sFile.c_str()));
        EXPECT_EQ(tThrownBy([&] { xZkClearDirectory(tTemp.sGetPath(), true, eDeleteDirect); }).what(),
                  sFailure(ERROR_WRITE_PROTECT, 4220, sFile.c_str()));
    }
    TDeleteFile const tDelete([](LPCWSTR) { return TRUE; });
    EXPECT_NO_THROW(xZkDeleteFileOrFolder(sFile, eDeleteDirect));
}

TEST(XZkDeleteFileOrFolder, TellsAFileThatVanishesMeanwhile) {
    TTempDirectory const tTemp;
    tTemp.sMakeDirectory(L"dir");
    std::wstring const sFile = tTemp.sWrite(L"dir\\file", "1");
    TSystemCall<"GetFileAttributesW", decltype(GetFileAttributesW)> const tAttributes([&](LPCWSTR pzPath) {
        if (pzPath == sFile) DeleteFileW(pzPath);
        return tAttributes.Original(pzPath);
    });
    TSetAttributes const tSetAttributes([](auto...) { return TRUE; });
    EXPECT_EQ(tThrownBy([&] { xZkDeleteFileOrFolder(tTemp.sGetPath(L"dir"), eDeleteDirect); }).what(),
              sFailure(ERROR_FILE_NOT_FOUND, 4220, sFile.c_str()));
    EXPECT_EQ(tSetAttributes.iGetCalls(), 0);
}

TEST(XZkDeleteFileOrFolder, DeletesWhatAPatternMatchesButNoPointedNames) {
    for (TDeletion const & tDeletion : tItemDeletions) {
        TTempDirectory const tTemp;
        MakeTree(tTemp);
        tDeletion.Throwing(tTemp.sGetPath(L"?.txt"));
        EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L".hidden|sub");
        EXPECT_TRUE(tDeletion.Answering(tTemp.sGetPath(L"sub\\*"))); // leaves the pointed directory, too
        EXPECT_EQ(sListDirectory(tTemp.sGetPath(L"sub")), L".pointed");
        tDeletion.Throwing(tTemp.sGetPath(L"*"));
        EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L".hidden"); // what is in a match goes with it, pointed or not
        EXPECT_NO_THROW(tDeletion.Throwing(tTemp.sGetPath(L"x*")));
        EXPECT_NO_THROW(tDeletion.Throwing(tTemp.sGetPath(L"missing\\*")));
        EXPECT_NO_THROW(tDeletion.Throwing(tTemp.sGetPath(L"*\\a.txt")));
        EXPECT_TRUE(tDeletion.Answering(tTemp.sGetPath(L".*"))); // all that it finds begin with a point
        EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L".hidden");
    }
}

TEST(XZkDeleteFileOrFolder, FindsAllMatchesBeforeItDeletesTheFirst) {
    TTempDirectory const tTemp;
    for (wchar_t const * pzFile : {L"a", L"b", L"c"})
        tTemp.sWrite(pzFile, "1");
    std::string sCalls;
    TFindFirstEx const tFind([&](LPCWSTR pzPattern, auto... tArgs) {
        sCalls += "find ";
        return tFind.Original(pzPattern, tArgs...);
    });
    TFindClose const tClose([&](HANDLE hSearch) {
        sCalls += "close ";
        return tClose.Original(hSearch);
    });
    TDeleteFile const tDelete([&](LPCWSTR pzPath) {
        sCalls.append("delete ").append(1, static_cast<char>(pzPath[wcslen(pzPath) - 1])).append(" ");
        return tDelete.Original(pzPath);
    });
    xZkDeleteFileOrFolder(tTemp.sGetPath(L"*"), eDeleteDirect);
    EXPECT_EQ(sCalls, "find close delete a delete b delete c ");
}

TEST(XZkDeleteFileOrFolder, StopsAtTheFirstMatchThatCannotBeDeleted) {
    TTempDirectory const tTemp;
    for (wchar_t const * pzFile : {L"a", L"b", L"c"})
        tTemp.sWrite(pzFile, "1");
    {
        THandle const hHeld = hHold(tTemp.sGetPath(L"b"));
        EXPECT_EQ(tThrownBy([&] { xRemoveFiles(tTemp.sGetPath(L"*")); }).what(),
                  sFailure(ERROR_SHARING_VIOLATION, 4220, tTemp.sGetPath(L"b").c_str()));
    }
    EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"b|c");
}

TEST(XZkDeleteFileOrFolder, ReachesLongPathsAndLongNames) {
    THardToReach const tHard;
    std::wstring const sTree = tHard.sGetPath(L"tree");
    CreateDirectoryW(zk_test::sLongForm(sTree).c_str(), nullptr);
    std::wstring sDeepest = sTree;
    for (int i = 0; i < 8; ++i) {
        zk_test::WriteFileBytes(sDeepest + L"\\" + std::wstring(255, L'f'), "1");
        zk_test::WriteFileBytes(sDeepest + L"\\read-only.", "1");
        MakeReadOnly(sDeepest + L"\\read-only.");
        sDeepest += L"\\" + std::wstring(255, L'd');
        ASSERT_TRUE(CreateDirectoryW(zk_test::sLongForm(sDeepest).c_str(), nullptr));
    }
    xZkDeleteFileOrFolder(sTree, eDeleteDirect);
    zk_test::WriteFileBytes(tHard.sGetPath(L"file."), "1");
    xZkDeleteFileOrFolder(tHard.sGetPath(L"file."), eDeleteDirect);
    EXPECT_EQ(sListDirectory(tHard.sGetPath()), L"");
}

TEST(XZkDeleteFileOrFolder, BearsATreeDeeperThanTheStack) {
    TTempDirectory const tTemp;
    std::wstring sDeepest = tTemp.sGetPath(L"d");
    for (int i = 0; i < 250; ++i) {
        ASSERT_TRUE(CreateDirectoryW(zk_test::sLongForm(sDeepest).c_str(), nullptr));
        sDeepest += L"\\d";
    }
    zk_test::CallWithLittleStack([&] { xZkDeleteFileOrFolder(tTemp.sGetPath(L"d"), eDeleteDirect); });
    EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"");
}

TEST(XZkDeleteFileOrFolder, FailsForAPathThatIsTooLong) {
    std::wstring const sPath = L"C:\\" + std::wstring(30'000, L'x');
    EXPECT_EQ(tThrownBy([&] { xZkDeleteFileOrFolder(sPath, eDeleteDirect); }).iGetNumber(), IDS_COPY_FAILED);
    EXPECT_EQ(tThrownBy([&] { xZkDeleteFileOrFolder(L"", eDeleteDirect); }).iGetNumber(), IDS_COPY_FAILED);
}

// Clearing a directory

TEST(XZkClearDirectory, KeepsTheDirectory) {
    TTempDirectory const tTemp;
    MakeTree(tTemp);
    xZkClearDirectory(tTemp.sGetPath(), true, eDeleteDirect);
    EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"");
    EXPECT_TRUE(fExists(tTemp.sGetPath()));
    EXPECT_NO_THROW(xZkClearDirectory(tTemp.sGetPath() + L"\\", true, eDeleteDirect));
}

TEST(XZkClearDirectory, KeepsSubdirectoriesWithoutTheFlag) {
    TTempDirectory const tTemp;
    MakeTree(tTemp);
    xZkClearDirectory(tTemp.sGetPath(), false, eDeleteDirect);
    EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"sub"); // the file with a point in front is gone
    EXPECT_EQ(sListDirectory(tTemp.sGetPath(L"sub")), L".pointed|d|empty");
    EXPECT_EQ(sListDirectory(tTemp.sGetPath(L"sub\\.pointed")), L"c");
}

TEST(XZkClearDirectory, TakesWhatItCannotSearchForEmpty) {
    TTempDirectory const tTemp;
    std::wstring const sFile = tTemp.sWrite(L"file", "1");
    for (std::wstring const & sPath : {tTemp.sGetPath(L"missing"), sFile, L"C:\\" + std::wstring(30'000, L'x')}) {
        EXPECT_NO_THROW(xZkClearDirectory(sPath, true, eDeleteDirect)) << PrintToString(sPath);
        EXPECT_TRUE(fZkClearDirectory(sPath, false, eDeleteDirect));
    }
    EXPECT_TRUE(fExists(sFile));
}

TEST(XZkClearDirectory, TakesNamesThatOnlyBeginWithPoints) {
    TTempDirectory const tTemp;
    for (wchar_t const * pzDirectory : {L".d", L"..d", L"...d"})
        tTemp.sMakeDirectory(pzDirectory);
    for (wchar_t const * pzFile : {L".f", L"..f", L"...f", L"..d\\..f"})
        tTemp.sWrite(pzFile, "1");
    xZkClearDirectory(tTemp.sGetPath(), false, eDeleteDirect);
    EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"...d|..d|.d");
    xZkClearDirectory(tTemp.sGetPath(), true, eDeleteDirect);
    EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"");
}

TEST(XZkClearDirectory, TakesTheEmptyPathForTheCurrentDirectory) {
    TTempDirectory const tTemp;
    MakeTree(tTemp);
    std::array<wchar_t, 1024> acBefore{};
    ASSERT_NE(GetCurrentDirectoryW(acBefore.size(), acBefore.data()), 0u);
    ASSERT_TRUE(SetCurrentDirectoryW(tTemp.sGetPath().c_str()));
    EXPECT_NO_THROW(xZkClearDirectory(L"", true, eDeleteDirect));
    EXPECT_TRUE(SetCurrentDirectoryW(acBefore.data()));
    EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"");
}

TEST(XZkClearDirectory, TellsWhatCannotBeDeletedAndWhy) {
    TTempDirectory const tTemp;
    MakeTree(tTemp);
    std::wstring const sHeld = tTemp.sGetPath(L"b.txt");
    TDebugOutput const tDebug([](LPCWSTR) {});
    {
        THandle const hHeld = hHold(sHeld);
        EXPECT_EQ(tThrownBy([&] { xZkClearDirectory(tTemp.sGetPath(), true, eDeleteDirect); }).what(),
                  sFailure(ERROR_SHARING_VIOLATION, 4220, sHeld.c_str()));
        EXPECT_FALSE(fZkClearDirectory(tTemp.sGetPath(), true, eDeleteDirect));
    }
    EXPECT_EQ(tDebug.iGetCalls(), 0);
    EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"b.txt|sub");
}

// The twins that answer

TEST(FZkDeleteFileOrFolder, HandsTheTextOfTheFailureToTheDebugger) {
    TTempDirectory const tTemp;
    std::wstring const sMissing = tTemp.sGetPath(L"m\u00FCssing 100%");
    std::vector<std::wstring> tTexts;
    TDebugOutput const tDebug([&](LPCWSTR pzText) { tTexts.emplace_back(pzText); });
    EXPECT_FALSE(fZkDeleteFileOrFolder(sMissing, eDeleteDirect));
    ASSERT_EQ(tTexts.size(), 1u);
    EXPECT_EQ(tTexts[0], L"Cannot copy or delete \"" + sMissing + L"\".\r\n" + sGetErrorString(ERROR_FILE_NOT_FOUND));
    EXPECT_FALSE(fRemoveFiles(sMissing));
    EXPECT_FALSE(fZkClearDirectory(L"C:\\missing", true, eDeleteAllowUndo));
    EXPECT_EQ(tTexts.size(), 1u);
    EXPECT_TRUE(fZkDeleteFileOrFolder(tTemp.sWrite(L"file", ""), eDeleteDirect));
    EXPECT_EQ(tTexts.size(), 1u);
}

TEST(FZkDeleteFileOrFolder, SwallowsFailuresOfTheFamilyAlone) {
    TTempDirectory const tTemp;
    std::wstring const sFile = tTemp.sWrite(L"file", "");
    TDeleteFile const tDelete([](LPCWSTR) -> BOOL { throw std::logic_error("none of the family"); });
    EXPECT_THROW(fZkDeleteFileOrFolder(sFile, eDeleteDirect), std::logic_error);
    EXPECT_FALSE(fZkClearDirectory(tTemp.sGetPath(), true, eDeleteDirect));
    EXPECT_FALSE(fRemoveFiles(sFile));
}

// At the next start of the machine

TEST(EDeleteAtRebootOnFailure, PutsTheItemDownBehindWhatIsInIt) {
    TTempDirectory const tTemp;
    for (wchar_t const * pzDirectory : {L"dir", L"dir\\b", L"dir\\b\\.c"})
        tTemp.sMakeDirectory(pzDirectory);
    for (wchar_t const * pzFile : {L"dir\\a", L"dir\\b\\.c\\1", L"dir\\b\\z", L"dir\\d"})
        tTemp.sWrite(pzFile, "");
    TSchedule const tSchedule(tTemp);
    TDeleteFile const tDelete([](LPCWSTR) { return tFailWith(ERROR_SHARING_VIOLATION, FALSE); });
    TXZkTools const tError =
        tThrownBy([&] { xZkDeleteFileOrFolder(tTemp.sGetPath(L"dir"), eDeleteAtRebootOnFailure); });
    EXPECT_EQ(tError.what(), sFailure(ERROR_SHARING_VIOLATION, 4220, tTemp.sGetPath(L"dir\\a").c_str()));
    EXPECT_EQ(tSchedule.sGetItems(), L"\\dir\\a|\\dir\\b\\.c\\1|\\dir\\b\\.c|\\dir\\b\\z|\\dir\\b|\\dir\\d|\\dir");
}

TEST(EDeleteAtRebootOnFailure, PutsAPatternDownAsItStands) {
    TTempDirectory const tTemp;
    tTemp.sWrite(L"a", "");
    TSchedule const tSchedule(tTemp);
    TDeleteFile const tDelete([](LPCWSTR) { return tFailWith(ERROR_SHARING_VIOLATION, FALSE); });
    EXPECT_EQ(tThrownBy([&] { xZkDeleteFileOrFolder(tTemp.sGetPath(L"*"), eDeleteAtRebootOnFailure); }).what(),
              sFailure(ERROR_SHARING_VIOLATION, 4220, tTemp.sGetPath(L"a").c_str()));
    EXPECT_EQ(tSchedule.sGetItems(), L"\\*"); // which the system will not find
}

TEST(EDeleteAtRebootOnFailure, PutsDownWhatIsInADirectoryThatCouldNotBeCleared) {
    TTempDirectory const tTemp;
    tTemp.sWrite(L"a", "");
    tTemp.sMakeDirectory(L"b");
    tTemp.sWrite(L"b\\c", "");
    TDeleteFile const tDelete([](LPCWSTR) { return tFailWith(ERROR_SHARING_VIOLATION, FALSE); });
    {
        TSchedule const tSchedule(tTemp);
        EXPECT_EQ(tThrownBy([&] { xZkClearDirectory(tTemp.sGetPath(), true, eDeleteAtRebootOnFailure); }).what(),
                  sFailure(ERROR_SHARING_VIOLATION, 4220, tTemp.sGetPath(L"a").c_str()));
        EXPECT_EQ(tSchedule.sGetItems(), L"\\a|\\b\\c|\\b");
    }
    TSchedule const tSchedule(tTemp);
    EXPECT_FALSE(fZkClearDirectory(tTemp.sGetPath(), false, eDeleteAtRebootOnFailure));
    EXPECT_EQ(tSchedule.sGetItems(), L"\\a");
}

TEST(EDeleteAtRebootOnFailure, IsForFailuresOnly) {
    TTempDirectory const tTemp;
    TSchedule const tSchedule(tTemp);
    TDebugOutput const tDebug([](LPCWSTR) {});
    xZkDeleteFileOrFolder(tTemp.sWrite(L"file", ""), eDeleteAtRebootOnFailure);
    tTemp.sWrite(L"file", "");
    xZkClearDirectory(tTemp.sGetPath(), true, eDeleteAtRebootOnFailure);
    EXPECT_EQ(tThrownBy([&] { xZkDeleteFileOrFolder(tTemp.sGetPath(L"missing"), eDeleteDirect); }).iGetNumber(), 4220);
    EXPECT_EQ(tThrownBy([&] { xRemoveFiles(tTemp.sGetPath(L"missing")); }).iGetNumber(), 4220);
    EXPECT_EQ(tSchedule.sGetItems(), L"");
    EXPECT_FALSE(fZkDeleteFileOrFolder(tTemp.sGetPath(L"missing"), eDeleteAtRebootOnFailure));
    EXPECT_EQ(tSchedule.sGetItems(), L"\\missing");
}

TEST(EDeleteAtRebootOnFailure, IsForFailuresOfTheFamilyOnly) {
    TTempDirectory const tTemp;
    std::wstring const sFile = tTemp.sWrite(L"file", "");
    TSchedule const tSchedule(tTemp);
    TDeleteFile const tDelete([](LPCWSTR) -> BOOL { throw std::logic_error("none of the family"); });
    EXPECT_THROW(xZkDeleteFileOrFolder(sFile, eDeleteAtRebootOnFailure), std::logic_error);
    EXPECT_THROW(xZkClearDirectory(tTemp.sGetPath(), true, eDeleteAtRebootOnFailure), std::logic_error);
    EXPECT_EQ(tSchedule.sGetItems(), L"");
}

TEST(EDeleteFileOrFolder, CombinesItsBits) {
    static_assert(eDeleteDirect == 0 && eDeleteAllowUndo == 1 && eDeleteAtRebootOnFailure == 4);
    static_assert((eDeleteAllowUndo | eDeleteAtRebootOnFailure) == 5);
}
