// The locks between processes, which also die.
#include "tests/locks/LockFixture.h"

#include "ZkTools/MessageIds.h"
#include "tests/support/ChildProcess.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

using namespace zk_test;

namespace {

/// A text of several lines as one.
std::string sJoin(std::string sText) {
    std::ranges::replace(sText, '\r', '|');
    std::erase(sText, '\n');
    return sText;
}

/// Takes computer, user and directory, and does what its parent says: "open", "lock", "unlock", "close". It answers
/// with the refusal, its lines joined by bars, or an empty line.
TChildRole const tWorker(L"worker", [](std::vector<std::wstring> const & sArguments) {
    TOpenLock tLock(sArguments.at(0).c_str(), sArguments.at(1).c_str(), eModeStrict, sArguments.at(2));
    while (auto const psCommand = psHear()) {
        Say(sJoin(sThrown([&] {
            if (*psCommand == "open") tLock.Open();
            if (*psCommand == "lock") tLock.Lock();
            if (*psCommand == "unlock") tLock.Unlock();
            if (*psCommand == "close") tLock.Close();
        })));
    }
    return 0;
});

/// Takes both places in its directory and ends without a destructor.
TChildRole const tForgetful(L"forgetful", [](std::vector<std::wstring> const & sArguments) {
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sArguments.at(0));
    tLock.Open();
    tLock.Lock();
    Say("locked");
    ExitProcess(0);
    return 0;
});

class LockProcesses : public testing::Test {
protected:
    LockProcesses() { tDirectory.sWrite(L"main.dat", "data"); }

    [[nodiscard]] std::wstring const & sDir() const { return tDirectory.sGetPath(); }
    [[nodiscard]] wchar_t const * pzDir() const { return sDir().c_str(); }
    [[nodiscard]] std::wstring sList() const { return sListDirectory(sDir()); }
    [[nodiscard]] std::unique_ptr<TChildProcess> pStart(std::wstring const & sComputer, std::wstring const & sUser) {
        return std::make_unique<TChildProcess>(tWorker, std::vector{sComputer, sUser, sDir()});
    }
    static std::string sAsk(std::unique_ptr<TChildProcess> const & pChild, std::string_view sCommand) {
        pChild->Say(sCommand);
        return pChild->sHear();
    }

    TTempDirectory tDirectory;
};

} // namespace

TEST_F(LockProcesses, TwoReadersAndAWriterOnThreeComputers) {
    auto const pA = pStart(L"PC1", L"usera");
    auto const pB = pStart(L"PC2", L"userb");
    auto const pC = pStart(L"PC3", L"userc");
    auto const pSecondOfA = pStart(L"PC1", L"usera");

    EXPECT_EQ(sAsk(pA, "open"), "");
    EXPECT_EQ(sList(), L"main.dat|rdr%PC1%usera%.tmp");
    EXPECT_EQ(sAsk(pB, "open"), "");
    EXPECT_EQ(sAsk(pSecondOfA, "open"), "");
    EXPECT_EQ(sList(), L"main.dat|rdr%PC1%usera%.tmp|rdr%PC1%usera%_2.tmp|rdr%PC2%userb%.tmp");
    EXPECT_EQ(sAsk(pSecondOfA, "close"), "");

    EXPECT_EQ(sAsk(pC, "open"), "");
    std::string const sRefusal = sAsk(pC, "lock");
    auto const sExpected = [&](wchar_t const * pzReaders) {
        return sJoin(sMessage(IDS_LOCK_FAILED, pzDir()) + "\r\n" +
                     sMessage(IDS_LOCK_READERS_KNOWN, pzDir(), pzReaders));
    };
    EXPECT_TRUE(sRefusal == sExpected(L"usera [PC1]\r\nuserb [PC2]") ||
                sRefusal == sExpected(L"userb [PC2]\r\nusera [PC1]"))
        << sRefusal;

    EXPECT_EQ(sAsk(pA, "close"), "");
    EXPECT_EQ(sAsk(pB, "close"), "");
    EXPECT_EQ(sAsk(pC, "lock"), "");
    EXPECT_EQ(sList(), L"main.dat|rdr%PC3%userc%.tmp|write%PC3%userc%.tmp|write.lck");

    EXPECT_EQ(sAsk(pA, "open"),
              sJoin(sMessage(IDS_LOCK_OPEN_FAILED, pzDir()) + "\r\n" + sMessage(IDS_LOCK_WRITER_UNKNOWN, pzDir())));

    EXPECT_EQ(sAsk(pC, "unlock"), "");
    EXPECT_EQ(sAsk(pA, "open"), "");
    EXPECT_EQ(sAsk(pC, "close"), "");
    EXPECT_EQ(sAsk(pA, "lock"), "");
}

TEST_F(LockProcesses, WriterOfTheSameUserIsNamedAcrossProcesses) {
    auto const pWriter = pStart(L"PC1", L"usera");
    auto const pReader = pStart(L"PC1", L"usera");
    EXPECT_EQ(sAsk(pWriter, "lock"), "");
    EXPECT_EQ(sAsk(pReader, "open"), sJoin(sMessage(IDS_LOCK_OPEN_FAILED, pzDir()) + "\r\n" +
                                           sMessage(IDS_LOCK_WRITER_KNOWN, pzDir(), L"usera [PC1]")));
}

TEST_F(LockProcesses, KilledWriterLeavesItsPlaceAtOnce) {
    auto const pWriter = pStart(L"PC1", L"usera");
    EXPECT_EQ(sAsk(pWriter, "open"), "");
    EXPECT_EQ(sAsk(pWriter, "lock"), "");
    EXPECT_EQ(sList(), L"main.dat|rdr%PC1%usera%.tmp|write%PC1%usera%.tmp|write.lck");
    pWriter->Kill();
    EXPECT_EQ(sList(), L"main.dat");
    TOpenLock tLock(L"PC1", L"usera", eModeStrict, sDir());
    tLock.Open();
    tLock.Lock();
    EXPECT_EQ(tLock.sReaderPath, sDir() + L"\\rdr%PC1%usera%.tmp");
}

TEST_F(LockProcesses, KilledReaderHindersNoWriter) {
    auto const pReader = pStart(L"PC1", L"usera");
    auto const pWriter = pStart(L"PC2", L"userb");
    EXPECT_EQ(sAsk(pReader, "open"), "");
    EXPECT_EQ(sAsk(pWriter, "open"), "");
    EXPECT_NE(sAsk(pWriter, "lock"), "");
    pReader->Kill();
    EXPECT_EQ(sAsk(pWriter, "lock"), "");
}

TEST_F(LockProcesses, ProcessThatEndsWithoutUnlockLeavesNothing) {
    TChildProcess tChild(tForgetful, {sDir()});
    EXPECT_EQ(tChild.sHear(), "locked");
    EXPECT_EQ(tChild.dwWait(), 0u);
    EXPECT_EQ(sList(), L"main.dat");
}
