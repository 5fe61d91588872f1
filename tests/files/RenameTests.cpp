#include "ZkTools/Rename.h"

#include "ZkTools/MessageIds.h"
#include "tests/files/Fixture.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Handle.h"
#include "tests/support/SystemCall.h"

#include <gtest/gtest.h>

#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>
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

using TMoveFile = TSystemCall<"MoveFileExW", decltype(MoveFileExW)>;
using TReplaceFile = TSystemCall<"ReplaceFileW", decltype(ReplaceFileW)>;
using TCopyFile = TSystemCall<"CopyFileW", decltype(CopyFileW)>;
using TDeleteFile = TSystemCall<"DeleteFileW", decltype(DeleteFileW)>;
using TCreateFile = TSystemCall<"CreateFileW", decltype(CreateFileW)>;
using TSleep = TSystemCall<"Sleep", decltype(Sleep)>;

/// Ends a replacement as a crash would, in front of one of its calls of the system: takes source, target, and which
/// call.
zk_test::TChildRole const tCrashing(L"crashing replacement", [](std::vector<std::wstring> const & sArguments) {
    int iCalls = std::stoi(sArguments.at(2));
    auto const Count = [&] {
        if (iCalls-- == 0) TerminateProcess(GetCurrentProcess(), 45);
    };
    TCopyFile const tCopy([&](auto... tArgs) { return Count(), tCopy.Original(tArgs...); });
    TReplaceFile const tReplace([&](auto... tArgs) { return Count(), tReplace.Original(tArgs...); });
    TMoveFile const tMove([&](auto... tArgs) { return Count(), tMove.Original(tArgs...); });
    TDeleteFile const tDelete([&](auto... tArgs) { return Count(), tDelete.Original(tArgs...); });
    ReplaceEx(sArguments.at(0), sArguments.at(1));
    return 46;
});

/// The text of a failure of the library alone.
std::string sMessage(unsigned int uId) {
    return TXZkTools(uId).what();
}

/// Replaces a file by another one, and fails where the neighbour is deleted.
zk_test::TChildRole const tReplacer(L"replacer", [](std::vector<std::wstring> const & sArguments) {
    std::set_terminate([] {
        zk_test::Say("ended");
        TerminateProcess(GetCurrentProcess(), 42);
    });
    TDeleteFile const tDelete([&](LPCWSTR pzPath) -> BOOL {
        if (std::wstring_view(pzPath).ends_with(L".~1")) throw std::runtime_error("no memory for the long form");
        return tDelete.Original(pzPath);
    });
    ReplaceEx(sArguments.at(0), sArguments.at(1));
    zk_test::Say("went on");
    return 0;
});

} // namespace

// Rename

TEST(Rename, MovesFilesAndDirectories) {
    TTempDirectory const tTemp;
    std::wstring const sFile = tTemp.sWrite(L"file", "1");
    std::wstring const sDirectory = tTemp.sMakeDirectory(L"dir");
    Rename(sFile.c_str(), tTemp.sGetPath(L"dir\\new").c_str(), false);
    EXPECT_EQ(sReadFileBytes(tTemp.sGetPath(L"dir\\new")), "1");
    Rename(sDirectory.c_str(), tTemp.sGetPath(L"other dir").c_str(), true);
    EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"other dir");
    EXPECT_EQ(sListDirectory(tTemp.sGetPath(L"other dir")), L"new");
}

TEST(Rename, ReplacesAFileOnlyWhenToldTo) {
    TTempDirectory const tTemp;
    std::wstring const sOld = tTemp.sWrite(L"old 100%s", "old");
    std::wstring const sNew = tTemp.sWrite(L"new %n", "new");
    TXZkTools const tError = tThrownBy([&] { Rename(sOld.c_str(), sNew.c_str(), false); });
    EXPECT_EQ(tError.iGetNumber(), IDS_RENAME_FAILED);
    EXPECT_EQ(tError.what(), sFailure(ERROR_ALREADY_EXISTS, 4230, sOld.c_str(), sNew.c_str()));
    EXPECT_EQ(sReadFileBytes(sOld), "old");
    EXPECT_EQ(sReadFileBytes(sNew), "new");
    Rename(sOld.c_str(), sNew.c_str(), true);
    EXPECT_EQ(sReadFileBytes(sNew), "old");
    EXPECT_FALSE(fExists(sOld));
}

TEST(Rename, ReplacesNoDirectory) {
    TTempDirectory const tTemp;
    std::wstring const sOld = tTemp.sMakeDirectory(L"old");
    std::wstring const sNew = tTemp.sMakeDirectory(L"new");
    EXPECT_EQ(tThrownBy([&] { Rename(sOld.c_str(), sNew.c_str(), true); }).iGetNumber(), IDS_RENAME_FAILED);
    EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"new|old");
}

TEST(Rename, TellsWhatTheSystemRefuses) {
    TTempDirectory const tTemp;
    std::wstring const sFile = tTemp.sWrite(L"file", "");
    struct {
        std::wstring sOld;
        std::wstring sNew;
        DWORD dwReason;
    } const atRows[] = {
        {tTemp.sGetPath(L"missing"), tTemp.sGetPath(L"new"), ERROR_FILE_NOT_FOUND},
        {sFile, tTemp.sGetPath(L"missing\\new"), ERROR_PATH_NOT_FOUND},
        {sFile, tTemp.sGetPath(std::wstring(256, L'n')), 0}, // worded in different ways
        {sFile, std::wstring(30'000, L'n'), 0},
        {sFile, L"", 0},
    };
    for (auto const & tRow : atRows) {
        TXZkTools const tError = tThrownBy([&] { Rename(tRow.sOld.c_str(), tRow.sNew.c_str(), true); });
        EXPECT_EQ(tError.iGetNumber(), IDS_RENAME_FAILED);
        if (tRow.dwReason != 0) {
            EXPECT_EQ(tError.what(), sFailure(tRow.dwReason, 4230, tRow.sOld.c_str(), tRow.sNew.c_str()));
        }
    }
    THandle const hHeld = hHold(sFile);
    EXPECT_EQ(tThrownBy([&] { Rename(sFile.c_str(), tTemp.sGetPath(L"new").c_str(), true); }).what(),
              sFailure(ERROR_SHARING_VIOLATION, 4230, sFile.c_str(), tTemp.sGetPath(L"new").c_str()));
    EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"file");
}

TEST(Rename, ReturnsWhenTheMoveIsOnTheDisk) {
    std::vector<DWORD> tFlags;
    TMoveFile const tMove([&](LPCWSTR, LPCWSTR, DWORD dwFlags) {
        tFlags.push_back(dwFlags);
        return TRUE;
    });
    Rename(L"C:\\old", L"C:\\new", false);
    Rename(L"C:\\old", L"C:\\new", true);
    EXPECT_EQ(tFlags, (std::vector<DWORD>{MOVEFILE_WRITE_THROUGH, MOVEFILE_WRITE_THROUGH | MOVEFILE_REPLACE_EXISTING}));
}

TEST(Rename, RefusesANameThatEndsInWhiteSpaceWithoutALookAtTheDisk) {
    TMoveFile const tMove([](auto...) { return TRUE; });
    for (std::wstring const & sNew :
         {std::wstring(L"C:\\new "), std::wstring(L"C:\\new\t"), std::wstring(L"C:\\new\n"), std::wstring(L" ")}) {
        // The reason is what happens to stand there.
        SetLastError(ERROR_NOT_READY);
        TXZkTools const tError = tThrownBy([&] { Rename(L"C:\\old", sNew.c_str(), true); });
        EXPECT_EQ(tError.what(), sFailure(ERROR_NOT_READY, 4230, L"C:\\old", sNew.c_str()));
    }
    EXPECT_EQ(tMove.iGetCalls(), 0);
    EXPECT_NO_THROW(Rename(L"C:\\old", L"C:\\ new.", true));
    EXPECT_NO_THROW(Rename(L"C:\\old", L"C:\\new\\", true));
    EXPECT_EQ(tMove.iGetCalls(), 2);
}

TEST(Rename, ReachesLongPaths) {
    THardToReach const tHard;
    WriteFileBytes(tHard.sGetPath(L"file"), "1");
    std::wstring const sNew = tHard.sGetPath(std::wstring(255, L'n').c_str());
    Rename(tHard.sGetPath(L"file").c_str(), sNew.c_str(), false);
    EXPECT_EQ(sReadFileBytes(sNew), "1");
}

TEST(RenameWithValidation, TakesWhiteSpaceOffBothEnds) {
    TTempDirectory const tTemp;
    std::wstring const sOld = tTemp.sWrite(L"old", "1");
    RenameWithValidation(sOld, L" \t" + tTemp.sGetPath(L"new name") + L"\u3000\r\n ", false);
    EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"new name");
    std::wstring const sMissing = tTemp.sGetPath(L"missing");
    EXPECT_EQ(tThrownBy([&] { RenameWithValidation(sMissing, L" " + sOld + L" ", true); }).what(),
              sFailure(ERROR_FILE_NOT_FOUND, 4230, sMissing.c_str(), sOld.c_str()));
}

TEST(RenameWithValidation, ReplacesAFileOnlyWhenToldTo) {
    TTempDirectory const tTemp;
    std::wstring const sOld = tTemp.sWrite(L"old", "old");
    std::wstring const sNew = tTemp.sWrite(L"new", "new");
    EXPECT_EQ(tThrownBy([&] { RenameWithValidation(sOld, sNew, false); }).what(),
              sFailure(ERROR_ALREADY_EXISTS, 4230, sOld.c_str(), sNew.c_str()));
    EXPECT_EQ(sReadFileBytes(sNew), "new");
    RenameWithValidation(sOld, sNew, true);
    EXPECT_EQ(sReadFileBytes(sNew), "old");
}

TEST(RenameWithValidation, RefusesASeparatorAtTheEnd) {
    TMoveFile const tMove([](auto...) { return TRUE; });
    for (wchar_t const * pzNew : {L"C:\\new\\", L"C:\\new/", L" C:\\new\\ \t", L"/", L" \\ "}) {
        TXZkTools const tError = tThrownBy([&] { RenameWithValidation(L"C:\\100%s", pzNew, true); });
        EXPECT_EQ(tError.iGetNumber(), 4230);
        EXPECT_EQ(tError.what(), std::string(TXZkTools(4230, L"C:\\100%s", pzNew).what()) + "\r\n" + sMessage(4535));
    }
    EXPECT_EQ(tMove.iGetCalls(), 0);
    RenameWithValidation(L"C:\\old", L"C:\\new\\a", true);
    EXPECT_EQ(tMove.iGetCalls(), 1);
}

// Replace

TEST(Replace, PutsAFileInThePlaceOfAnother) {
    TTempDirectory const tTemp;
    std::wstring const sReplaced = tTemp.sWrite(L"target", "old");
    std::wstring const sReplacement = tTemp.sWrite(L"source", "new");
    Replace(sReplaced.c_str(), sReplacement.c_str());
    EXPECT_EQ(sReadFileBytes(sReplaced), "new");
    EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"target");
}

TEST(Replace, NeedsBothFiles) {
    TTempDirectory const tTemp;
    std::wstring const sFile = tTemp.sWrite(L"file", "1");
    std::wstring const sMissing = tTemp.sGetPath(L"missing");
    EXPECT_EQ(tThrownBy([&] { Replace(sMissing.c_str(), sFile.c_str()); }).what(),
              sFailure(ERROR_FILE_NOT_FOUND, 4231, sMissing.c_str(), sFile.c_str()));
    EXPECT_EQ(tThrownBy([&] { Replace(sFile.c_str(), sMissing.c_str()); }).what(),
              sFailure(ERROR_FILE_NOT_FOUND, 4231, sFile.c_str(), sMissing.c_str()));
    EXPECT_EQ(sReadFileBytes(sFile), "1");
}

TEST(Replace, TriesAgainOnlyWhenTheReplacedFileCouldNotBeRemoved) {
    constexpr DWORD dwBusy = ERROR_UNABLE_TO_REMOVE_REPLACED;
    struct {
        std::vector<DWORD> tErrors; ///< of the attempts, in order; 0 is success
        int iAttempts;
        DWORD dwThrown;
    } const atRows[] = {
        {{0}, 1, 0},
        {{ERROR_SHARING_VIOLATION, 0}, 1, ERROR_SHARING_VIOLATION},
        {{ERROR_UNABLE_TO_MOVE_REPLACEMENT, 0}, 1, ERROR_UNABLE_TO_MOVE_REPLACEMENT},
        {{ERROR_UNABLE_TO_MOVE_REPLACEMENT_2, 0}, 1, ERROR_UNABLE_TO_MOVE_REPLACEMENT_2},
        {{dwBusy, 0}, 2, 0},
        {{dwBusy, dwBusy, 0}, 3, 0},
        {{dwBusy, dwBusy, dwBusy, 0}, 4, 0},
        {{dwBusy, dwBusy, dwBusy, dwBusy, 0}, 4, dwBusy},
        // Only the first error decides.
        {{dwBusy, ERROR_ACCESS_DENIED, ERROR_SHARING_VIOLATION, 0}, 4, 0},
        {{dwBusy, ERROR_ACCESS_DENIED, dwBusy, ERROR_SHARING_VIOLATION}, 4, ERROR_SHARING_VIOLATION},
    };
    for (auto const & tRow : atRows) {
        std::vector<std::string> tCalls;
        std::size_t uAttempt = 0;
        TReplaceFile const tReplace([&](LPCWSTR pzReplaced, LPCWSTR pzReplacement, LPCWSTR pzBackup, DWORD dwFlags,
                                        LPVOID pExclude, LPVOID pReserved) {
            EXPECT_STREQ(pzReplaced, L"C:\\target");
            EXPECT_STREQ(pzReplacement, L"C:\\source");
            EXPECT_EQ(pzBackup, nullptr);
            EXPECT_EQ(dwFlags, 6u);
            EXPECT_EQ(pExclude, nullptr);
            EXPECT_EQ(pReserved, nullptr);
            tCalls.emplace_back("replace");
            DWORD const dwError = tRow.tErrors.at(uAttempt++);
            return tFailWith(dwError, dwError == 0);
        });
        TSleep const tSleep([&](DWORD dwTime) { tCalls.push_back("sleep " + std::to_string(dwTime)); });

        TXZkTools const tError = tThrownBy([] { Replace(L"C:\\target", L"C:\\source"); });
        std::vector<std::string> tExpected{"replace"};
        for (int i = 1; i < tRow.iAttempts; ++i)
            tExpected.insert(tExpected.end(), {"sleep 10", "replace"});
        EXPECT_EQ(tCalls, tExpected);
        if (tRow.dwThrown == 0) {
            EXPECT_STREQ(tError.what(), "nothing thrown");
        } else {
            EXPECT_EQ(tError.iGetNumber(), IDS_REPLACE_FAILED);
            EXPECT_EQ(tError.what(), sFailure(tRow.dwThrown, 4231, L"C:\\target", L"C:\\source"));
        }
    }
}

TEST(Replace, ReachesLongPaths) {
    THardToReach const tHard;
    WriteFileBytes(tHard.sGetPath(L"target"), "old");
    WriteFileBytes(tHard.sGetPath(L"source"), "new");
    Replace(tHard.sGetPath(L"target").c_str(), tHard.sGetPath(L"source").c_str());
    EXPECT_EQ(sReadFileBytes(tHard.sGetPath(L"target")), "new");
}

// ReplaceEx

TEST(ReplaceEx, MovesTheSourceOverTheTarget) {
    TTempDirectory const tTemp;
    std::wstring const sSource = tTemp.sWrite(L"source", "new");
    std::wstring const sTarget = tTemp.sWrite(L"target.txt", "old");
    ReplaceEx(sSource, sTarget);
    EXPECT_EQ(sReadFileBytes(sTarget), "new");
    EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"target.txt");
}

TEST(ReplaceEx, MakesATargetThatIsNotThere) {
    TTempDirectory const tTemp;
    std::wstring const sSource = tTemp.sWrite(L"source", "new");
    std::vector<DWORD> tFlags;
    TMoveFile const tMove([&](LPCWSTR pzOld, LPCWSTR pzNew, DWORD dwFlags) {
        tFlags.push_back(dwFlags);
        return tMove.Original(pzOld, pzNew, dwFlags);
    });
    ReplaceEx(sSource, tTemp.sGetPath(L"target"));
    EXPECT_EQ(sReadFileBytes(tTemp.sGetPath(L"target")), "new");
    EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"target");
    EXPECT_EQ(tFlags, std::vector<DWORD>{MOVEFILE_WRITE_THROUGH | MOVEFILE_REPLACE_EXISTING});
}

TEST(ReplaceEx, OverwritesTheNeighbourThatAKilledProcessLeft) {
    TTempDirectory const tTemp;
    std::wstring const sSource = tTemp.sWrite(L"source", "new");
    tTemp.sWrite(L"target", "old");
    tTemp.sWrite(L"target.~1", "a longer text that was left");
    ReplaceEx(sSource, tTemp.sGetPath(L"target"));
    EXPECT_EQ(sReadFileBytes(tTemp.sGetPath(L"target")), "new");
    EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"target");
}

TEST(ReplaceEx, CallsTheSystemInOrder) {
    TTempDirectory const tTemp;
    std::wstring const sTarget = tTemp.sWrite(L"target", "old");
    std::vector<std::wstring> tCalls;
    TCopyFile const tCopy([&](LPCWSTR pzOld, LPCWSTR pzNew, BOOL fFailIfExists) {
        tCalls.push_back(std::wstring(L"copy ") + pzOld + L">" + pzNew + (fFailIfExists ? L"!" : L""));
        return TRUE;
    });
    TReplaceFile const tReplace([&](LPCWSTR pzReplaced, LPCWSTR pzReplacement, auto...) {
        tCalls.push_back(std::wstring(L"replace ") + pzReplaced + L"<" + pzReplacement);
        return TRUE;
    });
    TDeleteFile const tDelete([&](LPCWSTR pzPath) {
        tCalls.push_back(std::wstring(L"delete ") + pzPath);
        return tFailWith(ERROR_ACCESS_DENIED, FALSE); // neither result is looked at
    });
    EXPECT_NO_THROW(ReplaceEx(L"C:\\source", sTarget));
    std::wstring const sNeighbour = sTarget + L".~1";
    EXPECT_EQ(tCalls,
              (std::vector<std::wstring>{L"copy C:\\source>" + sNeighbour, L"replace " + sTarget + L"<" + sNeighbour,
                                         L"delete C:\\source", L"delete " + sNeighbour}));
}

TEST(ReplaceEx, LeavesAllAsItWasWhenTheCopyFails) {
    TTempDirectory const tTemp;
    std::wstring const sTarget = tTemp.sWrite(L"target", "old");
    std::wstring const sNeighbour = sTarget + L".~1";
    std::wstring const sMissing = tTemp.sGetPath(L"missing");
    TXZkTools const tError = tThrownBy([&] { ReplaceEx(sMissing, sTarget); });
    EXPECT_EQ(tError.iGetNumber(), IDS_REPLACE_FAILED);
    EXPECT_EQ(tError.what(), sFailure(ERROR_FILE_NOT_FOUND, 4231, sNeighbour.c_str(), sMissing.c_str()));
    EXPECT_EQ(sReadFileBytes(sTarget), "old");

    std::wstring const sSource = tTemp.sWrite(L"source", "new");
    TCopyFile const tCopy([](auto...) { return tFailWith(ERROR_DISK_FULL, FALSE); });
    TDeleteFile const tDelete([](auto...) { return TRUE; });
    EXPECT_EQ(tThrownBy([&] { ReplaceEx(sSource, sTarget); }).what(),
              sFailure(ERROR_DISK_FULL, 4231, sNeighbour.c_str(), sSource.c_str()));
    EXPECT_EQ(sReadFileBytes(sSource), "new");
    EXPECT_EQ(sReadFileBytes(sTarget), "old");
    EXPECT_EQ(tDelete.iGetCalls(), 0); // the neighbour may be somebody else's file
}

TEST(ReplaceEx, CrashedBetweenTwoCallsLeavesTheOldOrTheNewContent) {
    struct {
        bool fTarget; ///< it exists before
        wchar_t const * pzFiles;
        char const * pzContent; ///< of the target; null: there is none
    } const atRows[][5] = {
        {{true, L"source|target", "old"},
         {true, L"source|target|target.~1", "old"},
         {true, L"source|target", "new"},
         {true, L"target", "new"},
         {true, L"target", "new"}},
        {{false, L"source", nullptr},
         {false, L"source|target.~1", nullptr},
         {false, L"source|target", "new"},
         {false, L"target", "new"},
         {false, L"target", "new"}},
    };
    for (auto const & tCase : atRows) {
        int iCall = 0;
        for (auto const & tRow : tCase) {
            TTempDirectory const tTemp;
            std::wstring const sSource = tTemp.sWrite(L"source", "new");
            std::wstring const sTarget = tTemp.sGetPath(L"target");
            if (tRow.fTarget) WriteFileBytes(sTarget, "old");
            zk_test::TChildProcess tChild(tCrashing, {sSource, sTarget, std::to_wstring(iCall)});
            EXPECT_EQ(tChild.dwWait(), iCall < 4 ? 45u : 46u);
            EXPECT_EQ(sListDirectory(tTemp.sGetPath()), tRow.pzFiles) << iCall;
            if (tRow.pzContent != nullptr) {
                EXPECT_EQ(sReadFileBytes(sTarget), tRow.pzContent) << iCall;
            }
            ++iCall;
        }
    }
}

TEST(ReplaceEx, FallsBackOnAMove) {
    TTempDirectory const tTemp;
    std::wstring const sSource = tTemp.sWrite(L"source", "new");
    std::wstring const sTarget = tTemp.sWrite(L"target", "old");
    TSleep const tSleep([](DWORD) {});
    for (DWORD const dwError : {DWORD{ERROR_UNABLE_TO_REMOVE_REPLACED}, DWORD{ERROR_NOT_SUPPORTED}}) {
        TReplaceFile const tReplace([&](auto...) { return tFailWith(dwError, FALSE); });
        WriteFileBytes(sSource, "new");
        WriteFileBytes(sTarget, "old");
        EXPECT_NO_THROW(ReplaceEx(sSource, sTarget));
        EXPECT_EQ(tReplace.iGetCalls(), dwError == ERROR_UNABLE_TO_REMOVE_REPLACED ? 4 : 1);
        EXPECT_EQ(sReadFileBytes(sTarget), "new");
        EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"target");
    }
}

TEST(ReplaceEx, KeepsTheSourceWhenNothingCanTakeTheTargetsPlace) {
    TTempDirectory const tTemp;
    std::wstring const sSource = tTemp.sWrite(L"source", "new");
    std::wstring const sTarget = tTemp.sWrite(L"target", "old");
    std::wstring const sNeighbour = sTarget + L".~1";
    {
        THandle const hHeld = hHold(sTarget);
        TXZkTools const tError = tThrownBy([&] { ReplaceEx(sSource, sTarget); });
        EXPECT_EQ(tError.iGetNumber(), IDS_RENAME_FAILED);
        // Windows words it as ERROR_ACCESS_DENIED, Wine as ERROR_SHARING_VIOLATION.
        EXPECT_EQ(std::string(tError.what()).find(TXZkTools(4230, sNeighbour.c_str(), sTarget.c_str()).what()), 0u);
    }
    EXPECT_FALSE(fExists(sNeighbour)); // Wine's ReplaceFileW leaves an empty file of its own
    EXPECT_EQ(sReadFileBytes(sSource), "new");
    EXPECT_EQ(sReadFileBytes(sTarget), "old");
}

TEST(ReplaceEx, DoesNotReplaceADirectory) {
    TTempDirectory const tTemp;
    std::wstring const sSource = tTemp.sWrite(L"source", "new");
    std::wstring const sTarget = tTemp.sMakeDirectory(L"target");
    EXPECT_EQ(tThrownBy([&] { ReplaceEx(sSource, sTarget); }).iGetNumber(), IDS_RENAME_FAILED);
    EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"source|target");
}

TEST(ReplaceEx, LeavesASourceThatCannotBeDeleted) {
    TTempDirectory const tTemp;
    std::wstring const sSource = tTemp.sWrite(L"source", "new");
    THandle const hHeld(
        CreateFileW(sSource.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_NO_THROW(ReplaceEx(sSource, tTemp.sGetPath(L"target")));
    EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"source|target");
}

TEST(ReplaceEx, EndsTheProcessWhenTheNeighboursDeletionThrows) {
    TTempDirectory const tTemp;
    std::wstring const sSource = tTemp.sWrite(L"source", "new");
    std::wstring const sTarget = tTemp.sWrite(L"target", "old");
    zk_test::TChildProcess tChild(tReplacer, {sSource, sTarget});
    EXPECT_EQ(tChild.sHear(), "ended");
    EXPECT_EQ(tChild.dwWait(), 42u);
    EXPECT_EQ(sReadFileBytes(sTarget), "new");
}

TEST(ReplaceEx, ReachesLongPaths) {
    THardToReach const tHard;
    WriteFileBytes(tHard.sGetPath(L"target"), "old");
    for (wchar_t const * pzTarget : {L"target", L"target that is not there"}) {
        WriteFileBytes(tHard.sGetPath(L"source"), "new");
        ReplaceEx(tHard.sGetPath(L"source"), tHard.sGetPath(pzTarget));
        EXPECT_EQ(sReadFileBytes(tHard.sGetPath(pzTarget)), "new");
    }
    EXPECT_EQ(sListDirectory(tHard.sGetPath()), L"target|target that is not there");
}

// Read-only places

TEST(FIsDirReadOnly, TriesToMakeAFile) {
    TTempDirectory const tTemp;
    EXPECT_FALSE(fIsDirReadOnly(tTemp.sGetPath()));
    EXPECT_FALSE(fIsDirReadOnly(tTemp.sGetPath() + L"\\"));
    EXPECT_EQ(sListDirectory(tTemp.sGetPath()), L"");
    EXPECT_TRUE(fIsDirReadOnly(tTemp.sWrite(L"file", "")));
    EXPECT_TRUE(fIsDirReadOnly(tTemp.sGetPath(L"missing")));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
    THardToReach const tHard;
    EXPECT_FALSE(fIsDirReadOnly(tHard.sGetPath()));
}

TEST(FIsDirReadOnly, OpensItsProbeInOneForm) {
    TTempDirectory const tTemp;
    TCreateFile const tCreate([&](LPCWSTR pzPath, DWORD dwAccess, DWORD dwShare, LPSECURITY_ATTRIBUTES pSecurity,
                                  DWORD dwDisposition, DWORD dwFlags, HANDLE hTemplate) {
        EXPECT_EQ(pzPath, tTemp.sGetPath(L"rwtst000.___"));
        EXPECT_EQ(dwAccess, GENERIC_READ | GENERIC_WRITE);
        EXPECT_EQ(dwShare, 3u);
        EXPECT_EQ(pSecurity, nullptr);
        EXPECT_EQ(dwDisposition, static_cast<DWORD>(OPEN_ALWAYS));
        EXPECT_EQ(dwFlags, 0x4000080u);
        EXPECT_EQ(hTemplate, nullptr);
        return tCreate.Original(pzPath, dwAccess, dwShare, pSecurity, dwDisposition, dwFlags, hTemplate);
    });
    EXPECT_FALSE(fIsDirReadOnly(tTemp.sGetPath()));
    EXPECT_EQ(tCreate.iGetCalls(), 1);
    EXPECT_FALSE(fExists(tTemp.sGetPath(L"rwtst000.___")));
}

TEST(FIsFileReadOnly, TriesToOpenTheFileForWriting) {
    TTempDirectory const tTemp;
    std::wstring const sFile = tTemp.sWrite(L"file", "1");
    EXPECT_FALSE(fIsFileReadOnly(sFile));
    EXPECT_FALSE(fIsFileReadOnly(tTemp.sGetPath(), L"file"));
    EXPECT_FALSE(fIsFileReadOnly(tTemp.sGetPath() + L"\\", L"file"));
    EXPECT_TRUE(fIsFileReadOnly(tTemp.sGetPath(L"missing")));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    EXPECT_TRUE(fIsFileReadOnly(tTemp.sGetPath(), L"missing"));
    EXPECT_TRUE(fIsFileReadOnly(tTemp.sGetPath()));
    SetFileAttributesW(sFile.c_str(), FILE_ATTRIBUTE_READONLY);
    // Under Wine access rights decide, and stop nobody who is root.
    bool const fRefused = !THandle(CreateFileW(sFile.c_str(), GENERIC_WRITE, 7, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_EQ(fIsFileReadOnly(sFile), fRefused);
    SetFileAttributesW(sFile.c_str(), FILE_ATTRIBUTE_NORMAL);
    {
        THandle const hHeld = hHold(sFile);
        EXPECT_TRUE(fIsFileReadOnly(sFile));
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SHARING_VIOLATION));
    }
    EXPECT_EQ(sReadFileBytes(sFile), "1");
    THardToReach const tHard;
    WriteFileBytes(tHard.sGetPath(L"file"), "");
    EXPECT_FALSE(fIsFileReadOnly(tHard.sGetPath(L"file")));
    EXPECT_FALSE(fIsFileReadOnly(tHard.sGetPath(), L"file"));
}

TEST(FIsFileReadOnly, OpensTheFileInOneForm) {
    TTempDirectory const tTemp;
    std::wstring const sFile = tTemp.sWrite(L"file", "");
    TCreateFile const tCreate([&](LPCWSTR pzPath, DWORD dwAccess, DWORD dwShare, LPSECURITY_ATTRIBUTES pSecurity,
                                  DWORD dwDisposition, DWORD dwFlags, HANDLE hTemplate) {
        EXPECT_EQ(pzPath, sFile);
        EXPECT_EQ(dwAccess, static_cast<DWORD>(GENERIC_WRITE));
        EXPECT_EQ(dwShare, 7u);
        EXPECT_EQ(pSecurity, nullptr);
        EXPECT_EQ(dwDisposition, static_cast<DWORD>(OPEN_EXISTING));
        EXPECT_EQ(dwFlags, static_cast<DWORD>(FILE_ATTRIBUTE_NORMAL));
        EXPECT_EQ(hTemplate, nullptr);
        return tCreate.Original(pzPath, dwAccess, dwShare, pSecurity, dwDisposition, dwFlags, hTemplate);
    });
    EXPECT_FALSE(fIsFileReadOnly(sFile));
    EXPECT_EQ(tCreate.iGetCalls(), 1);
    EXPECT_TRUE(fIsUnused(sFile));
}

TEST(ReadOnlyPlaces, AreAskedForWithoutTheSystemAskingForAMedium) {
    UINT const uBefore = SetErrorMode(SEM_NOGPFAULTERRORBOX);
    std::vector<UINT> tModes;
    TSystemCall<"SetErrorMode", decltype(SetErrorMode)> const tMode([&](UINT uMode) {
        tModes.push_back(uMode);
        UINT const uOld = tMode.Original(uMode);
        return tFailWith(ERROR_INVALID_PARAMETER, uOld); // may change the error, but not for the caller
    });
    UINT uDuring = 0;
    TCreateFile const tCreate([&](auto...) {
        uDuring = GetErrorMode();
        return tFailWith(ERROR_NOT_READY, INVALID_HANDLE_VALUE);
    });
    EXPECT_TRUE(fIsDirReadOnly(L"A:\\"));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NOT_READY));
    EXPECT_EQ(uDuring, static_cast<UINT>(SEM_FAILCRITICALERRORS));
    EXPECT_TRUE(fIsFileReadOnly(L"A:\\file"));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NOT_READY));
    EXPECT_EQ(tModes, (std::vector<UINT>{SEM_FAILCRITICALERRORS, SEM_NOGPFAULTERRORBOX, SEM_FAILCRITICALERRORS,
                                         SEM_NOGPFAULTERRORBOX}));
    EXPECT_EQ(SetErrorMode(uBefore), static_cast<UINT>(SEM_NOGPFAULTERRORBOX));
}
