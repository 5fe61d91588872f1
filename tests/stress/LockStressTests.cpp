// Half a minute of processes that open, lock, write, unlock and close one directory while some are killed at random.
// The environment variable ZK_STRESS_SECONDS sets another duration.
#include "tests/locks/LockFixture.h"
#include "tests/support/ChildProcess.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <vector>

using namespace zk_test;

namespace {

constexpr int iProcesses = 6;

/// One clock for all processes, in ticks.
long long llNow() {
    LARGE_INTEGER iCounter;
    QueryPerformanceCounter(&iCounter);
    return iCounter.QuadPart;
}

/// Tells the children of kills, through shared memory: the count is odd while one is under way. A dying process may
/// lose its handles one after another, so that for that moment the witness may outlive the writer place.
class TKillCount {
public:
    explicit TKillCount(std::wstring const & sName)
        : hMapping(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, sizeof(LONG), sName.c_str())),
          piCount(static_cast<LONG *>(MapViewOfFile(hMapping.hGet(), FILE_MAP_ALL_ACCESS, 0, 0, sizeof(LONG)))) {}
    ~TKillCount() { UnmapViewOfFile(piCount); }
    TKillCount(TKillCount const &) = delete;
    TKillCount & operator=(TKillCount const &) = delete;

    void Increment() { InterlockedIncrement(piCount); }
    [[nodiscard]] LONG iGet() const { return InterlockedCompareExchange(piCount, 0, 0); }

private:
    THandle hMapping;
    LONG * piCount;
};

// What a child writes down, a line each:
//   place TIME           a reader place is asked for
//   free TIME            it is held no more
//   refused FROM TO TEXT a refusal, its lines joined by bars
//   wrote                something was written under the lock
//   broken TEXT          a promise was broken

/// The records of one process, written at once so that they survive it.
class TLog {
public:
    explicit TLog(std::wstring const & sPath)
        : hFile(CreateFileW(sPath.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL,
                            nullptr)) {}
    void Add(std::string sLine, std::initializer_list<long long> tTimes = {}, std::string_view sText = {}) {
        for (long long const llTime : tTimes)
            sLine.append(" ").append(std::to_string(llTime));
        sLine.append(" ").append(sText).append("\n");
        DWORD dwWritten = 0;
        WriteFile(hFile.hGet(), sLine.data(), static_cast<DWORD>(sLine.size()), &dwWritten, nullptr);
    }

private:
    THandle hFile;
};

/// One process of the crowd.
class TContender {
public:
    explicit TContender(std::vector<std::wstring> const & sArguments)
        : sObject(sArguments.at(0) + L"\\main.dat"), sWitness(sArguments.at(1) + L"\\witness"), sUser(sArguments.at(2)),
          uEnd(std::stoull(sArguments.at(3))), tKills(sArguments.at(4)), tLog(sArguments.at(1) + L"\\log of " + sUser),
          tRandom(std::random_device()()), tLock(L"PC", sUser.c_str(), eModeStrict, sArguments.at(0)) {}

    int iRun() {
        while (GetTickCount64() < uEnd) {
            // Strict writers mostly bar one another as readers; shared ones have nothing but the writer place.
            tLock.eMode = tRandom() % 2 == 0 ? eModeStrict : eModeShared;
            tLog.Add("place", {llNow()});
            if (fTry(&TOpenLock::fOpen)) {
                Pause(3);
                if (fTry(&TOpenLock::fLock)) Write();
                tLock.Close();
            }
            tLog.Add("free", {llNow()});
            Pause(20);
        }
        return 0;
    }

private:
    void Pause(unsigned int uMostMilliseconds) { Sleep(tRandom() % (uMostMilliseconds + 1)); }

    bool fTry(bool (TLockDirectory::*pTake)(std::runtime_error &)) {
        iKillsBefore = tKills.iGet();
        std::runtime_error tError("");
        long long const llFrom = llNow();
        if ((tLock.*pTake)(tError)) return true;
        std::string sText = tError.what();
        std::ranges::replace(sText, '\r', '|');
        std::erase(sText, '\n');
        tLog.Add("refused", {llFrom, llNow()}, sText);
        return false;
    }

    /// Writes under the lock, with the witness in the hand: a file in another directory, opened without sharing.
    void Write() {
        THandle hWitness = hTakeWitness();
        if (!hWitness && (tKills.iGet() != iKillsBefore || iKillsBefore % 2 != 0)) {
            while (tKills.iGet() % 2 != 0)
                Sleep(1);
            hWitness = hTakeWitness();
        }
        if (!hWitness) tLog.Add("broken", {}, "two writers at once");
        std::string const sBytes(1000, 'a');
        Patiently([&] { WriteFileBytes(sObject, sBytes); });
        Pause(2);
        Patiently([&] {
            if (sReadFileBytes(sObject) != sBytes) tLog.Add("broken", {}, "the object is another's");
        });
        Patiently([&] { WriteFileBytes(sObject, "data"); });
        hWitness.Close();
        tLock.Unlock();
        tLog.Add("wrote");
    }

    /// Those who ask for the writer place hold the object for a moment to see whether it is in use.
    template <typename TCall>
    static void Patiently(TCall tCall) {
        for (int iTry = 0;; ++iTry) {
            try {
                return tCall();
            } catch (std::runtime_error const &) {
                if (iTry == 1000) throw;
                Sleep(1);
            }
        }
    }

    [[nodiscard]] THandle hTakeWitness() const {
        return THandle(CreateFileW(sWitness.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                   FILE_ATTRIBUTE_NORMAL, nullptr));
    }

    std::wstring sObject;
    std::wstring sWitness;
    std::wstring sUser;
    ULONGLONG uEnd;
    TKillCount tKills;
    LONG iKillsBefore = 0;
    TLog tLog;
    std::mt19937 tRandom;
    TOpenLock tLock;
};

TChildRole const tContender(L"contender",
                            [](std::vector<std::wstring> const & sArguments) { return TContender(sArguments).iRun(); });

/// When a process may have held a reader place.
struct THolding {
    long long llFrom;
    long long llTo;
};

struct TRefusal {
    long long llFrom;
    long long llTo;
    std::string sText;
};

/// All that the processes wrote down.
struct TRecords {
    std::map<std::string, std::vector<THolding>> tHoldings; // by user
    std::vector<TRefusal> tRefusals;
    std::vector<std::string> sBroken;
    int iWritten = 0;

    /// \param llDeath when the process was gone
    void Add(std::string const & sUser, std::string const & sLog, long long llDeath) {
        std::istringstream tLines(sLog.substr(0, sLog.rfind('\n') + 1)); // a killed writer's last line may be cut
        std::vector<THolding> & tOwn = tHoldings[sUser];
        for (std::string sLine; std::getline(tLines, sLine);) {
            std::istringstream tLine(sLine);
            std::string sKind;
            tLine >> sKind;
            if (sKind == "place") {
                tLine >> tOwn.emplace_back(THolding{0, llDeath}).llFrom;
            } else if (sKind == "free") {
                tLine >> tOwn.back().llTo;
            } else if (sKind == "refused") {
                TRefusal & tRefusal = tRefusals.emplace_back();
                tLine >> tRefusal.llFrom >> tRefusal.llTo;
                std::getline(tLine, tRefusal.sText);
            } else if (sKind == "wrote") {
                ++iWritten;
            } else {
                sBroken.push_back(sUser + ": " + sLine);
            }
        }
    }

    /// True when the user may have held a place at some moment of the refused attempt.
    [[nodiscard]] bool fHeldDuring(std::string const & sUser, TRefusal const & tRefusal) const {
        auto const pFound = tHoldings.find(sUser);
        return pFound != tHoldings.end() && std::ranges::any_of(pFound->second, [&](THolding const & tHolding) {
                   return tHolding.llFrom <= tRefusal.llTo && tHolding.llTo >= tRefusal.llFrom;
               });
    }
};

/// The users that a refusal names, each as "user [computer]".
std::vector<std::string> sGetNamed(std::string const & sText) {
    std::vector<std::string> sNamed;
    for (std::size_t uEnd = 0; (uEnd = sText.find(" [PC]", uEnd)) != std::string::npos; ++uEnd) {
        std::size_t const uStart = sText.find_last_not_of("0123456789u", uEnd - 1) + 1;
        sNamed.push_back(sText.substr(uStart, uEnd - uStart));
    }
    return sNamed;
}

/// Keeps the number of processes up, and kills one now and then.
class TCrowd {
public:
    TCrowd(std::wstring const & sLocked_, std::wstring const & sOther_, ULONGLONG uSeconds)
        : sLocked(sLocked_), sOther(sOther_), uEnd(GetTickCount64() + uSeconds * 1000),
          sKills(L"zk-kills-" + std::to_wstring(GetCurrentProcessId())), tKills(sKills) {}

    void Run() {
        std::mt19937 tRandom(12345);
        while (tRunning.size() < iProcesses)
            Start();
        while (GetTickCount64() + 500 < uEnd) {
            Sleep(50 + tRandom() % 250);
            Kill(tRandom() % tRunning.size());
            Start();
        }
        for (TMember & tMember : tRunning) {
            EXPECT_EQ(tMember.pProcess->dwWait(), 0u);
            tRecords.Add(tMember.sUser, sReadLog(tMember.sUser), llNow());
        }
    }

    [[nodiscard]] TRecords const & tGetRecords() const { return tRecords; }
    [[nodiscard]] int iGetKilled() const { return iKilled; }

private:
    struct TMember {
        std::string sUser;
        std::unique_ptr<TChildProcess> pProcess;
    };

    void Start() {
        std::string const sUser =
            std::string("u").append(std::to_string(++iStarted)); // a name of its own, so that a refusal tells it
        std::vector<std::wstring> const sArguments{sLocked, sOther, std::wstring(sUser.begin(), sUser.end()),
                                                   std::to_wstring(uEnd), sKills};
        for (int iTry = 1;; ++iTry) {
            try {
                tRunning.push_back({sUser, std::make_unique<TChildProcess>(tContender, sArguments)});
                return;
            } catch (std::runtime_error const &) {
                if (iTry == 5) throw; // Wine under load now and then fails to start a process, with error 1359
            }
        }
    }

    void Kill(std::size_t uIndex) {
        TMember const tMember = std::move(tRunning[uIndex]);
        tRunning.erase(tRunning.begin() + static_cast<std::ptrdiff_t>(uIndex));
        tKills.Increment();
        tMember.pProcess->Kill();
        tKills.Increment();
        ++iKilled;
        tRecords.Add(tMember.sUser, sReadLog(tMember.sUser), llNow());
    }

    [[nodiscard]] std::string sReadLog(std::string const & sUser) const {
        std::wstring const sPath = sOther + L"\\log of " + std::wstring(sUser.begin(), sUser.end());
        return fExists(sPath) ? sReadFileBytes(sPath) : std::string(); // it may be killed before it begins
    }

    std::wstring sLocked;
    std::wstring sOther;
    ULONGLONG uEnd;
    std::wstring sKills;
    TKillCount tKills;
    std::vector<TMember> tRunning;
    TRecords tRecords;
    int iStarted = 0;
    int iKilled = 0;
};

ULONGLONG uGetSeconds() {
    char const * pzSeconds = std::getenv("ZK_STRESS_SECONDS");
    return pzSeconds != nullptr ? std::stoull(pzSeconds) : 30;
}

} // namespace

TEST(LockStress, KilledProcessesNeitherBlockNorLetTwoWritersIn) {
    TTempDirectory const tLocked;
    TTempDirectory const tOther;
    tLocked.sWrite(L"main.dat", "data");
    TCrowd tCrowd(tLocked.sGetPath(), tOther.sGetPath(), uGetSeconds());
    tCrowd.Run();

    EXPECT_EQ(sListDirectory(tLocked.sGetPath()), L"main.dat");
    TRecords const & tRecords = tCrowd.tGetRecords();
    EXPECT_TRUE(tRecords.sBroken.empty()) << tRecords.sBroken.size() << " times, first: " << tRecords.sBroken.front();
    int iNamed = 0;
    std::vector<std::string> sWrong;
    for (TRefusal const & tRefusal : tRecords.tRefusals) {
        for (std::string const & sUser : sGetNamed(tRefusal.sText)) {
            ++iNamed;
            if (!tRecords.fHeldDuring(sUser, tRefusal)) sWrong.push_back(sUser + " held no place:" + tRefusal.sText);
        }
    }
    EXPECT_TRUE(sWrong.empty()) << sWrong.size() << " times, first: " << sWrong.front();
    std::printf("%d killed, %d times written, %d refusals that name %d holders\n", tCrowd.iGetKilled(),
                tRecords.iWritten, static_cast<int>(tRecords.tRefusals.size()), iNamed);
    EXPECT_GT(tCrowd.iGetKilled(), 0);
    EXPECT_GT(tRecords.iWritten, 0);
    EXPECT_GT(iNamed, 0);
}
