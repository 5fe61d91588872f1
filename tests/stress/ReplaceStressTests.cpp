// Processes that replace a file over and over are killed at random moments. The file has its whole old or its whole new
// content each time, but for the instant in which the system's ReplaceFileW has taken the old file away and not yet put
// the new one in its place: Wine and Windows both have it. Then the neighbour and the source have the new content.
// The environment variable ZK_STRESS_KILLS sets how many are killed.
#include "ZkTools/Rename.h"

#include "tests/support/ChildProcess.h"
#include "tests/support/TempDirectory.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <vector>

using namespace zk_test;

namespace {

/// The content of one version: its number, repeated to a length that depends on it.
std::string sMakeVersion(unsigned int uVersion) {
    char acNumber[9];
    std::snprintf(acNumber, sizeof acNumber, "%08x", uVersion);
    std::string sContent;
    for (unsigned int i = 0; i < 2000 + uVersion % 7 * 1000; ++i)
        sContent += acNumber;
    return sContent;
}

/// True for the whole content of some version.
bool fIsWhole(std::string const & sContent) {
    if (sContent.size() < 8) return false;
    return sContent == sMakeVersion(static_cast<unsigned int>(std::stoul(sContent.substr(0, 8), nullptr, 16)));
}

/// Replaces the file "target" of its directory by new versions until it is killed.
TChildRole const tReplacer(L"replacer", [](std::vector<std::wstring> const & sArguments) {
    std::wstring const sSource = sArguments.at(0) + L"\\source";
    std::wstring const sTarget = sArguments.at(0) + L"\\target";
    for (unsigned int uVersion = std::random_device()();; ++uVersion) {
        WriteFileBytes(sSource, sMakeVersion(uVersion));
        static bool const fTold = (Say("begins"), true);
        static_cast<void>(fTold);
        ReplaceEx(sSource, sTarget);
    }
    return 0;
});

int iGetKills() {
    char const * const pzKills = std::getenv("ZK_STRESS_KILLS");
    return pzKills != nullptr ? std::atoi(pzKills) : 150;
}

/// Where a kill hit, as the files tell.
struct TTally {
    int iWithTheSource = 0;    ///< and nothing else beside the target
    int iWithTheNeighbour = 0; ///< which is made, or whole
    int iWithoutTheTarget = 0; ///< in the instant between its two names
    int iWithTheTarget = 0;    ///< and nothing else
};

/// Checks what a killed process left in its directory.
void Check(TTempDirectory const & tDirectory, TTally & tTally) {
    std::wstring const sTarget = tDirectory.sGetPath(L"target");
    std::wstring const sNeighbour = tDirectory.sGetPath(L"target.~1");
    std::wstring const sSource = tDirectory.sGetPath(L"source");
    if (!fExists(sTarget)) {
        ++tTally.iWithoutTheTarget;
        ASSERT_TRUE(fExists(sNeighbour) && fExists(sSource));
        ASSERT_TRUE(fIsWhole(sReadFileBytes(sNeighbour)));
        ASSERT_TRUE(sReadFileBytes(sNeighbour) == sReadFileBytes(sSource));
        ASSERT_TRUE(MoveFileW(sNeighbour.c_str(), sTarget.c_str())); // as who starts up again would do
        return;
    }
    ASSERT_TRUE(fIsWhole(sReadFileBytes(sTarget)));
    ++(fExists(sNeighbour) ? tTally.iWithTheNeighbour
       : fExists(sSource)  ? tTally.iWithTheSource
                           : tTally.iWithTheTarget);
}

} // namespace

TEST(ReplaceStress, AKilledReplacementLeavesTheWholeOldOrTheWholeNewContent) {
    constexpr std::size_t uAtOnce = 3;
    std::mt19937 tRandom(std::random_device{}());
    std::vector<std::unique_ptr<TTempDirectory>> tDirectories;
    for (std::size_t i = 0; i < uAtOnce; ++i) {
        tDirectories.push_back(std::make_unique<TTempDirectory>());
        tDirectories.back()->sWrite(L"target", sMakeVersion(1));
    }
    TTally tTally;
    int const iKills = iGetKills();
    for (int iKilled = 0; iKilled < iKills;) {
        std::vector<std::unique_ptr<TChildProcess>> tChildren;
        for (auto const & pDirectory : tDirectories)
            tChildren.push_back(std::make_unique<TChildProcess>(tReplacer, std::vector{pDirectory->sGetPath()}));
        for (std::size_t i = 0; i < uAtOnce; ++i, ++iKilled) {
            ASSERT_EQ(tChildren[i]->sHear(), "begins");
            Sleep(tRandom() % 25);
            tChildren[i]->Kill();
            Check(*tDirectories[i], tTally);
            if (HasFatalFailure()) return;
        }
    }
    std::printf("killed %d: %d with the source beside the target, %d with the neighbour, %d with the target alone, "
                "%d between its two names\n",
                iKills, tTally.iWithTheSource, tTally.iWithTheNeighbour, tTally.iWithTheTarget,
                tTally.iWithoutTheTarget);
}
