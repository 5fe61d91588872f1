#include "tests/tools/Tool.h"

#include "ZkTools/MessageIds.h"

#include <gtest/gtest.h>

using namespace zk_test;

namespace {

class Hold : public testing::Test {
protected:
    Hold() { tDirectory.sWrite(L"main.dat", "data"); }

    [[nodiscard]] std::wstring const & sDir() const { return tDirectory.sGetPath(); }
    [[nodiscard]] std::string sNarrowDir() const { return {sDir().begin(), sDir().end()}; }
    /// The directory's files, this user's and computer's names in them told as OWN.
    [[nodiscard]] std::wstring sList() const {
        std::wstring sNames = sListDirectory(sDir());
        std::wstring const sOwn = sGetOwnName();
        std::size_t const uEnd = sOwn.find(L" [");
        std::wstring const sInNames =
            sOwn.substr(uEnd + 2, sOwn.size() - uEnd - 3) + L"%" + sOwn.substr(0, uEnd) + L"%";
        for (std::size_t uAt = 0; (uAt = sNames.find(sInNames)) != std::wstring::npos;)
            sNames.replace(uAt, sInNames.size(), L"OWN");
        return sNames;
    }

    TTempDirectory tDirectory;
};

/// A place where no file can be made, with a file in it.
struct TReadOnlyPlace {
    std::wstring sDirectory;
    std::wstring sObject;
    DWORD dwError; ///< what a new file there is refused with
};

DWORD dwTryToMakeFile(std::wstring const & sDirectory) {
    THandle const hFile(CreateFileW((sDirectory + L"\\zk-probe.tmp").c_str(), GENERIC_READ, 0, nullptr, OPEN_ALWAYS,
                                    FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    return hFile ? ERROR_SUCCESS : GetLastError();
}

TReadOnlyPlace tGetReadOnlyPlace(TTempDirectory const & tDirectory) {
    if (fExists(L"Z:\\sys\\kernel\\uevent_seqnum")) // under Wine, where access rights stop nobody who is root
        return {L"Z:\\sys\\kernel", L"uevent_seqnum", dwTryToMakeFile(L"Z:\\sys\\kernel")};
    TChildProcess tRights(L"C:\\Windows\\System32\\icacls.exe", {tDirectory.sGetPath(), L"/deny", L"*S-1-1-0:(WD,AD)"});
    tRights.dwWait();
    return {tDirectory.sGetPath(), L"main.dat", dwTryToMakeFile(tDirectory.sGetPath())};
}

} // namespace

TEST_F(Hold, KeepsAReaderPlaceUntilItsInputEnds) {
    TTool tReader({L"hold", sDir(), L"main.dat", L"--read"});
    EXPECT_EQ(tReader.tGet().sHear(), "holding a reader place in " + sNarrowDir());
    EXPECT_EQ(sList(), L"main.dat|rdr%OWN.tmp");
    tReader.tGet().Say("input is read and means nothing");
    TTool tSecond({L"hold", sDir() + L"\\", L"main.dat", L"--read"});
    EXPECT_EQ(tSecond.tGet().sHear(), "holding a reader place in " + sNarrowDir());
    EXPECT_EQ(sList(), L"main.dat|rdr%OWN.tmp|rdr%OWN_2.tmp");
    EXPECT_TRUE(tReader.tGet().fIsRunning());
    TToolRun const tRun = tReader.tEnd();
    EXPECT_EQ(tRun.dwExit, 0u);
    EXPECT_EQ(tRun.sErrors, "");
    EXPECT_EQ(sList(), L"main.dat|rdr%OWN_2.tmp");
}

TEST_F(Hold, KeepsTheWriterPlaceUntilItsInputEnds) {
    TTool tWriter({L"hold", sDir(), L"main.dat", L"--write"});
    EXPECT_EQ(tWriter.tGet().sHear(), "holding the writer place in " + sNarrowDir());
    EXPECT_EQ(sList(), L"main.dat|rdr%OWN.tmp|write%OWN.tmp|write.lck");
    EXPECT_EQ(tWriter.tEnd().dwExit, 0u);
    EXPECT_EQ(sList(), L"main.dat");
}

TEST_F(Hold, KeepsTheWriterPlacesOfTwoFilesAtOnce) {
    TTool tFirst({L"hold", sDir(), L"a.dat", L"--write", L"--file"});
    EXPECT_EQ(tFirst.tGet().sHear(), "holding the writer place of a.dat in " + sNarrowDir());
    TTool tSecond({L"hold", sDir(), L"b.dat", L"--file", L"--write"});
    EXPECT_EQ(tSecond.tGet().sHear(), "holding the writer place of b.dat in " + sNarrowDir());
    EXPECT_EQ(sList(), L"main.dat|rdr%OWN.tmp|rdr%OWN_2.tmp|write%OWNa.dat.tmp|write%OWNb.dat.tmp|write%a.dat.lck|"
                       L"write%b.dat.lck");
    TToolRun const tRun = tRunTool({L"hold", sDir(), L"a.dat", L"--write", L"--file"});
    EXPECT_EQ(tRun.dwExit, 1u);
    EXPECT_EQ(tRun.sErrors, sMessage(IDS_FILE_LOCK_WRITER_KNOWN, L"a.dat", sGetOwnName().c_str()) + "\r\n" +
                                sMessage(IDS_FILE_LOCK_FAILED, L"a.dat") + "\r\n");
    EXPECT_EQ(tFirst.tEnd().dwExit, 0u);
    EXPECT_EQ(tSecond.tEnd().dwExit, 0u);
    EXPECT_EQ(sList(), L"main.dat");
}

TEST_F(Hold, KeepsAPlaceForSomeSeconds) {
    ULONGLONG const uStart = GetTickCount64();
    TToolRun const tRun = tRunTool({L"hold", L"--seconds", L"1", sDir(), L"--write", L"main.dat"}); // input has ended
    EXPECT_GE(GetTickCount64() - uStart, 1000u);
    EXPECT_EQ(tRun.dwExit, 0u);
    EXPECT_EQ(tRun.sOutput, "holding the writer place in " + sNarrowDir() + "\r\n");
    EXPECT_EQ(tRunTool({L"hold", sDir(), L"main.dat", L"--read", L"--seconds", L"0"}).dwExit, 0u);
    EXPECT_EQ(sList(), L"main.dat");
}

TEST_F(Hold, LosesItsPlacesWhenKilled) {
    TTool tWriter({L"hold", sDir(), L"main.dat", L"--write"});
    tWriter.Await();
    tWriter.tGet().Kill();
    EXPECT_EQ(sList(), L"main.dat");
}

TEST_F(Hold, IsRefusedAsTheLibraryWordsIt) {
    TTool tWriter({L"hold", sDir(), L"main.dat", L"--write"});
    tWriter.Await();
    TToolRun const tRun = tRunTool({L"hold", sDir(), L"main.dat", L"--read"});
    EXPECT_EQ(tRun.dwExit, 1u);
    EXPECT_EQ(tRun.sOutput, "");
    EXPECT_EQ(tRun.sErrors, sMessage(IDS_LOCK_OPEN_FAILED, sDir().c_str()) + "\r\n" +
                                sMessage(IDS_LOCK_WRITER_KNOWN, sDir().c_str(), sGetOwnName().c_str()) + "\r\n");
}

TEST_F(Hold, HoldsTheObjectItselfWhereNothingCanBeWritten) {
    TReadOnlyPlace const tPlace = tGetReadOnlyPlace(tDirectory);
    std::string const sPlace(tPlace.sDirectory.begin(), tPlace.sDirectory.end());
    TToolRun const tRead = tRunTool({L"hold", tPlace.sDirectory, tPlace.sObject, L"--read"});
    TToolRun const tStore = tRunTool({L"store", tPlace.sDirectory, tPlace.sObject, L"A"});
    EXPECT_EQ(tStore.dwExit, 1u);
    if (tPlace.dwError == ERROR_ACCESS_DENIED) {
        EXPECT_EQ(tRead.dwExit, 0u);
        EXPECT_EQ(tRead.sOutput, "holding the object of the read-only directory " + sPlace + "\r\n");
        EXPECT_EQ(tStore.sErrors, sMessage(IDS_LOCK_FAILED, tPlace.sDirectory.c_str()) + "\r\n" +
                                      sMessage(IDS_LOCK_READ_ONLY, tPlace.sDirectory.c_str()) + "\r\n");
    } else { // some machines word it otherwise, and then it is a refusal like any other
        EXPECT_EQ(tRead.dwExit, 1u);
        EXPECT_EQ(tRead.sErrors, sSystemText(tPlace.dwError) + "\r\n" +
                                     sMessage(IDS_LOCK_OPEN_FAILED, tPlace.sDirectory.c_str()) + "\r\n");
        EXPECT_EQ(tStore.sErrors, tRead.sErrors);
    }
}
