// Locks beside the bare system calls that their protocol names.
#include "ZkTools/Locks.h"
#include "bench/Ratio.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

/// A directory with an object in it, gone at the end.
struct TDirectory {
    TDirectory() {
        std::filesystem::create_directories(sPath);
        std::ofstream(sPath / "main.dat") << "data";
    }
    ~TDirectory() {
        std::error_code tIgnored;
        std::filesystem::remove_all(sPath, tIgnored);
    }
    TDirectory(TDirectory const &) = delete;
    TDirectory & operator=(TDirectory const &) = delete;

    std::filesystem::path const sPath =
        std::filesystem::temp_directory_path() / ("zk-lock-bench-" + std::to_string(GetCurrentProcessId()));
};

/// Everything that a strict lock without company asks the system for, in its order.
class TBareCalls {
public:
    explicit TBareCalls(std::wstring const & sDirectory)
        : sReader(sDirectory + L"\\rdr%PC1%usera%.tmp"), sReaders(sDirectory + L"\\rdr*.tmp"),
          sWriter(sDirectory + L"\\write.lck"), sWriterInfo(sDirectory + L"\\write%PC1%usera%.tmp"),
          sObject(sDirectory + L"\\main.dat") {}

    void Run() const {
        constexpr DWORD dwVanishing = FILE_FLAG_DELETE_ON_CLOSE | FILE_ATTRIBUTE_NORMAL | FILE_ATTRIBUTE_HIDDEN;
        WIN32_FIND_DATAW tData;

        // Open
        Expect(hFind(sWriter, tData) == INVALID_HANDLE_VALUE);
        Expect(hFind(sReader, tData) == INVALID_HANDLE_VALUE);
        HANDLE const hReader = hCreate(sReader, GENERIC_READ, OPEN_ALWAYS, dwVanishing);
        Expect(hReader != INVALID_HANDLE_VALUE);

        // Lock
        HANDLE const hReaders = hFind(sReaders, tData);
        Expect(hCreate(sReader, GENERIC_READ, OPEN_EXISTING, dwVanishing) == INVALID_HANDLE_VALUE);
        Expect(!FindNextFileW(hReaders, &tData));
        FindClose(hReaders);
        HANDLE const hFound = hFind(sObject, tData);
        CloseHandle(hCreate(sObject, GENERIC_READ, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL | FILE_ATTRIBUTE_HIDDEN));
        FindClose(hFound);
        FindClose(hFind(sObject, tData));
        Expect(GetFileAttributesW(sObject.c_str()) != INVALID_FILE_ATTRIBUTES);
        HANDLE const hWriter = hCreate(sWriter, GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS, dwVanishing);
        HANDLE const hWriterInfo = hCreate(sWriterInfo, GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS, dwVanishing);
        Expect(hWriter != INVALID_HANDLE_VALUE && hWriterInfo != INVALID_HANDLE_VALUE);

        // Unlock, Close
        CloseHandle(hWriter);
        CloseHandle(hWriterInfo);
        CloseHandle(hReader);
    }

private:
    static HANDLE hFind(std::wstring const & sPattern, WIN32_FIND_DATAW & tData) {
        return FindFirstFileExW(sPattern.c_str(), FindExInfoBasic, &tData, FindExSearchNameMatch, nullptr, 0);
    }
    static HANDLE hCreate(std::wstring const & sPath, DWORD dwAccess, DWORD dwDisposition, DWORD dwFlags) {
        return CreateFileW(sPath.c_str(), dwAccess, 0, nullptr, dwDisposition, dwFlags, nullptr);
    }
    /// The calls must take the road that the lock takes.
    static void Expect(bool fSo) {
        if (!fSo) std::abort();
    }

    std::wstring sReader;
    std::wstring sReaders;
    std::wstring sWriter;
    std::wstring sWriterInfo;
    std::wstring sObject;
};

} // namespace

int main(int iCount, char ** ppArguments) {
    TDirectory const tDirectory;
    TLockDirectory tLock(eModeStrict, tDirectory.sPath.c_str(), L"main.dat");
    TBareCalls const tBare(tDirectory.sPath.wstring());
    auto const Ours = [&] {
        tLock.Open();
        tLock.Lock();
        tLock.Unlock();
        tLock.Close();
    };
    zk_bench::Add("Open, Lock, Unlock, Close", zk_bench::EBound::eTimesTheTime, 1.15, Ours, [&] { tBare.Run(); });
    return zk_bench::iRun(iCount, ppArguments);
}
