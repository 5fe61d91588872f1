// Trees of files beside the standard library's functions.
#include "ZkTools/Copy.h"
#include "ZkTools/Files.h"
#include "ZkTools/Rename.h"
#include "bench/Ratio.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

namespace fs = std::filesystem;

constexpr int iDirectories = 50;
constexpr int iFilesInEach = 100;
constexpr std::size_t uFileSize = 1000;

/// A directory with a tree in it, gone at the end.
struct TTree {
    TTree() {
        for (int i = 0; i < iDirectories; ++i) {
            fs::path const sDirectory = sSource / std::to_string(i % 5) / std::to_string(i);
            fs::create_directories(sDirectory);
            for (int j = 0; j < iFilesInEach; ++j)
                std::ofstream(sDirectory / ("file " + std::to_string(j) + ".txt")) << std::string(uFileSize, 'x');
        }
    }
    ~TTree() {
        std::error_code tIgnored;
        fs::remove_all(sPath, tIgnored);
    }
    TTree(TTree const &) = delete;
    TTree & operator=(TTree const &) = delete;

    fs::path const sPath = fs::temp_directory_path() / ("zk-file-bench-" + std::to_string(GetCurrentProcessId()));
    fs::path const sSource = sPath / "source";
    fs::path const sTarget = sPath / "target";
};

/// Both must have done the work.
void Expect(bool fSo) {
    if (!fSo) std::abort();
}

std::uintmax_t uSumSizes(fs::path const & sPath) {
    std::uintmax_t uSum = 0;
    for (fs::directory_entry const & tEntry : fs::recursive_directory_iterator(sPath))
        if (tEntry.is_regular_file()) uSum += tEntry.file_size();
    return uSum;
}

} // namespace

int main(int iCount, char ** ppArguments) {
    TTree const tTree;
    constexpr std::uintmax_t uTotal = uFileSize * iDirectories * iFilesInEach;

    zk_bench::Add(
        "Copy a tree of 5,000 files and delete the copy", zk_bench::EBound::eTimesTheTime, 1.1,
        [&] {
            CopyDirectory(tTree.sSource, tTree.sTarget, false, [](unsigned long, std::wstring const &) { return true; },
                          {});
            xZkDeleteFileOrFolder(tTree.sTarget, eDeleteDirect);
            Expect(!fExistDirectory(tTree.sTarget.c_str()));
        },
        [&] {
            fs::copy(tTree.sSource, tTree.sTarget, fs::copy_options::recursive);
            fs::remove_all(tTree.sTarget);
            Expect(!fs::exists(tTree.sTarget));
        });
    zk_bench::Add(
        "Size of a tree of 5,000 files", zk_bench::EBound::eTimesFaster, 1.5,
        [&] { Expect(uiGetDirectorySize(tTree.sSource) == uTotal); },
        [&] { Expect(uSumSizes(tTree.sSource) == uTotal); });
    return zk_bench::iRun(iCount, ppArguments);
}
