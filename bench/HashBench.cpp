// Hashes beside the bare calls that they are made of.
#include "ZkBase/Windows.h"
#include "ZkTools/Hash.h"
#include "bench/Ratio.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <minizip/unzip.h>
#include <msi.h>
#include <psapi.h>
#include <string>
#include <string_view>
#include <vector>

namespace {

using zk_bench::EBound;

constexpr std::size_t uFileSize = std::size_t{64} << 20; // bytes
constexpr unsigned uMembers = 50'000;

std::filesystem::path const & tGetDirectory() {
    static std::filesystem::path const tDirectory = [] {
        auto tPath = std::filesystem::temp_directory_path() / "zk_hash_bench";
        std::filesystem::create_directories(tPath);
        return tPath;
    }();
    return tDirectory;
}

// A large file

std::wstring sMakeFile() {
    std::filesystem::path const tPath = tGetDirectory() / "large";
    std::vector<char> acBytes(uFileSize);
    for (std::size_t i = 0; i < acBytes.size(); ++i)
        acBytes[i] = static_cast<char>(i * i >> 7);
    std::ofstream(tPath, std::ios::binary).write(acBytes.data(), static_cast<std::streamsize>(acBytes.size()));
    return tPath.wstring();
}

void AddFile() {
    std::wstring const sPath = sMakeFile();
    zk_bench::Add(
        "sGetFileHash, a file of 64 MiB", EBound::eTimesTheTime, 1.05,
        [sPath] {
            std::wstring const sHash = sGetFileHash(sPath);
            zk_bench::Keep(sHash.data());
        },
        [sPath] {
            MSIFILEHASHINFO tHash{};
            tHash.dwFileHashInfoSize = sizeof tHash;
            MsiGetFileHashW(sPath.c_str(), 0, &tHash);
            zk_bench::Keep(&tHash);
        });
}

// An archive of many members, deflated and empty

/// Names of 25 to 60 bytes, in an order of their own.
std::string sGetName(unsigned uMember) {
    std::uint32_t const uMixed = uMember * 2654435761U;
    return "directory " + std::to_string(uMixed % 97) + "/member with a name " + std::to_string(uMixed) +
           std::string(uMixed % 20, 'x') + ".txt";
}

void Put(std::ofstream & tFile, std::uint64_t uNumber, int iBytes) {
    for (int i = 0; i < iBytes; ++i)
        tFile.put(static_cast<char>(uNumber >> 8 * i));
}

/// The fields that a member's two headers share.
void PutFields(std::ofstream & tFile, std::string const & sName) {
    Put(tFile, 20, 2); // version
    Put(tFile, 0, 2);  // flags
    Put(tFile, 8, 2);  // deflated
    Put(tFile, 0, 4);  // time
    Put(tFile, 0, 4);  // checksum
    Put(tFile, 2, 4);  // packed size
    Put(tFile, 0, 4);  // size
    Put(tFile, sName.size(), 2);
    Put(tFile, 0, 2); // extra field
}

/// Written straight to the disk: the memory that hashing takes shall be the most that this process ever had.
std::wstring sMakeArchive() {
    std::filesystem::path const tPath = tGetDirectory() / "archive.zip";
    std::ofstream tFile(tPath, std::ios::binary);
    for (unsigned uMember = 0; uMember < uMembers; ++uMember) {
        std::string const sName = sGetName(uMember);
        Put(tFile, 0x04034B50, 4);
        PutFields(tFile, sName);
        tFile << sName;
        Put(tFile, 3, 2); // a last block of nothing
    }
    auto const uDirectory = static_cast<std::uint64_t>(tFile.tellp());
    std::uint64_t uPlace = 0;
    for (unsigned uMember = 0; uMember < uMembers; ++uMember) {
        std::string const sName = sGetName(uMember);
        Put(tFile, 0x02014B50, 4);
        Put(tFile, 20, 2);
        PutFields(tFile, sName);
        Put(tFile, 0, 10); // comment, disk, attributes
        Put(tFile, uPlace, 4);
        tFile << sName;
        uPlace += 30 + sName.size() + 2;
    }
    std::uint64_t const uSize = static_cast<std::uint64_t>(tFile.tellp()) - uDirectory;
    Put(tFile, 0x06054B50, 4);
    Put(tFile, 0, 4);
    Put(tFile, uMembers, 2);
    Put(tFile, uMembers, 2);
    Put(tFile, uSize, 4);
    Put(tFile, uDirectory, 4);
    Put(tFile, 0, 2);
    return tPath.wstring();
}

/// The calls that hashing makes, by minizip's own file functions, and nothing done with what they tell.
void Walk(unzFile pArchive) {
    unz_global_info tGlobal{};
    unz_file_info tInfo;
    std::vector<char> acName(32767);
    unzGetGlobalInfo(pArchive, &tGlobal);
    if (tGlobal.number_entry != uMembers) std::abort();
    unzGoToFirstFile(pArchive);
    do {
        unzOpenCurrentFile(pArchive);
        unzGetCurrentFileInfo(pArchive, &tInfo, acName.data(), static_cast<uLong>(acName.size()), nullptr, 0, nullptr,
                              0);
        zk_bench::Keep(acName.data());
    } while (unzGoToNextFile(pArchive) == UNZ_OK);
    unzClose(pArchive);
}

double dGetPeakMemory() {
    PROCESS_MEMORY_COUNTERS tCounters{};
    GetProcessMemoryInfo(GetCurrentProcess(), &tCounters, sizeof tCounters);
    return static_cast<double>(tCounters.PeakWorkingSetSize);
}

void AddArchive() {
    std::wstring const sPath = sMakeArchive();
    // First of all, as long as nothing else has taken memory.
    double const dBefore = dGetPeakMemory();
    std::wstring const sHash = sGetZipFileHash(sPath);
    double const dTaken = dGetPeakMemory() - dBefore;
    double dNames = 0;
    for (unsigned uMember = 0; uMember < uMembers; ++uMember)
        dNames += static_cast<double>(sGetName(uMember).size());
    zk_bench::AddFigure("sGetZipFileHash, memory over that of the names", 6, [=] { return dTaken / dNames; });

    zk_bench::Add(
        "sGetZipFileHash, 50,000 members, beside the bare walk", EBound::eTimesTheTime, 1.3,
        [sPath] {
            std::wstring const sAgain = sGetZipFileHash(sPath);
            zk_bench::Keep(sAgain.data());
        },
        [sNarrow = std::filesystem::path(sPath).string()] { Walk(unzOpen(sNarrow.c_str())); });
}

} // namespace

int main(int iCount, char ** ppArguments) {
    AddArchive();
    AddFile();
    int const iExit = zk_bench::iRun(iCount, ppArguments);
    std::filesystem::remove_all(tGetDirectory());
    return iExit;
}
