#include "tests/support/TempDirectory.h"

#include "ZkBase/Windows.h"
#include "tests/support/Handle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <stdexcept>
#include <vector>

namespace {

[[noreturn]] void Refused(char const * pzWhat, std::wstring const & sPath) {
    DWORD const dwError = GetLastError();
    std::string sText = std::string(pzWhat) + " " + testing::PrintToString(sPath);
    throw std::runtime_error(sText + ": error " + std::to_string(dwError));
}

std::vector<WIN32_FIND_DATAW> tFindAll(std::wstring const & sPath) {
    std::vector<WIN32_FIND_DATAW> tFound;
    WIN32_FIND_DATAW tEntry;
    HANDLE const hFind = FindFirstFileW((zk_test::sLongForm(sPath) + L"\\*").c_str(), &tEntry);
    if (hFind == INVALID_HANDLE_VALUE) return tFound;
    do {
        std::wstring_view const sName = tEntry.cFileName;
        if (sName != L"." && sName != L"..") tFound.push_back(tEntry);
    } while (FindNextFileW(hFind, &tEntry));
    FindClose(hFind);
    return tFound;
}

/// Removes the directory with all in it, as far as the system allows; false when something stays.
bool fRemoveTree(std::wstring const & sPath) {
    for (WIN32_FIND_DATAW const & tEntry : tFindAll(sPath)) {
        std::wstring const sEntry = sPath + L"\\" + tEntry.cFileName;
        std::wstring const sLong = zk_test::sLongForm(sEntry);
        SetFileAttributesW(sLong.c_str(), FILE_ATTRIBUTE_NORMAL);
        if ((tEntry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
            DeleteFileW(sLong.c_str());
        } else if ((tEntry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
            RemoveDirectoryW(sLong.c_str()); // the link, not what it leads to
        } else {
            fRemoveTree(sEntry);
        }
    }
    std::wstring const sLong = zk_test::sLongForm(sPath);
    SetFileAttributesW(sLong.c_str(), FILE_ATTRIBUTE_NORMAL);
    return RemoveDirectoryW(sLong.c_str()) != FALSE;
}

std::wstring sGetTempPath() {
    std::array<wchar_t, MAX_PATH + 1> acShort{};
    GetTempPathW(static_cast<DWORD>(acShort.size()), acShort.data());
    std::array<wchar_t, 1024> acLong{};
    DWORD const dwLength = GetLongPathNameW(acShort.data(), acLong.data(), static_cast<DWORD>(acLong.size()));
    std::wstring sPath = dwLength != 0 && dwLength < acLong.size() ? acLong.data() : acShort.data();
    if (!sPath.empty() && sPath.back() == L'\\') sPath.pop_back();
    return sPath;
}

/// A path of the build as programs under test know it.
std::wstring sGetHostPath(std::wstring sPath) {
    std::ranges::replace(sPath, L'/', L'\\');
    if (sPath.starts_with(L'\\')) sPath.insert(0, L"Z:"); // where Wine shows the root directory of its host
    return sPath;
}

} // namespace

namespace zk_test {

TTempDirectory::TTempDirectory() {
    static std::atomic<int> iCount = 0;
    do {
        sPath = sGetTempPath() + L"\\zk-" + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(++iCount);
    } while (fExists(sPath));
    if (!CreateDirectoryW(sPath.c_str(), nullptr)) Refused("cannot make", sPath);
}

TTempDirectory::~TTempDirectory() {
    // The system may take a moment to close the handles of a process that was killed.
    for (int iTry = 0; iTry < 100; ++iTry) {
        if (fRemoveTree(sPath)) return;
        Sleep(20);
    }
    ADD_FAILURE() << "left over: " << testing::PrintToString(sListDirectory(sPath)) << " in "
                  << testing::PrintToString(sPath);
}

std::wstring TTempDirectory::sGetPath(std::wstring_view sName) const {
    return sPath + L"\\" + std::wstring(sName);
}

std::wstring TTempDirectory::sWrite(std::wstring_view sName, std::string_view sBytes) const {
    std::wstring const sFile = sGetPath(sName);
    WriteFileBytes(sFile, sBytes);
    return sFile;
}

std::wstring TTempDirectory::sMakeDirectory(std::wstring_view sName) const {
    std::wstring const sDirectory = sGetPath(sName);
    if (!CreateDirectoryW(sLongForm(sDirectory).c_str(), nullptr)) Refused("cannot make", sDirectory);
    return sDirectory;
}

void WriteFileBytes(std::wstring const & sPath, std::string_view sBytes) {
    THandle const hFile(CreateFileW(sLongForm(sPath).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!hFile) Refused("cannot create", sPath);
    DWORD dwWritten = 0;
    if (!WriteFile(hFile.hGet(), sBytes.data(), static_cast<DWORD>(sBytes.size()), &dwWritten, nullptr) ||
        dwWritten != sBytes.size())
        Refused("cannot write", sPath);
}

std::string sReadFileBytes(std::wstring const & sPath) {
    constexpr DWORD dwShare = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    THandle const hFile(CreateFileW(sLongForm(sPath).c_str(), GENERIC_READ, dwShare, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
    LARGE_INTEGER iSize{};
    if (!hFile || !GetFileSizeEx(hFile.hGet(), &iSize)) Refused("cannot open", sPath);
    std::string sBytes(static_cast<std::size_t>(iSize.QuadPart), '\0');
    DWORD dwRead = 0;
    if (!ReadFile(hFile.hGet(), sBytes.data(), static_cast<DWORD>(sBytes.size()), &dwRead, nullptr))
        Refused("cannot read", sPath);
    sBytes.resize(dwRead);
    return sBytes;
}

bool fExists(std::wstring const & sPath) {
    return GetFileAttributesW(sLongForm(sPath).c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool fIsUnused(std::wstring const & sPath) {
    return static_cast<bool>(THandle(CreateFileW(sLongForm(sPath).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                                 FILE_ATTRIBUTE_NORMAL, nullptr)));
}

std::wstring sListDirectory(std::wstring const & sPath, std::wstring_view sSeparator) {
    std::vector<std::wstring> sNames;
    for (WIN32_FIND_DATAW const & tEntry : tFindAll(sPath))
        sNames.emplace_back(tEntry.cFileName);
    std::ranges::sort(sNames);
    std::wstring sResult;
    for (std::wstring const & sName : sNames) {
        if (!sResult.empty()) sResult += sSeparator;
        sResult += sName;
    }
    return sResult;
}

std::wstring sGetSourcePath(std::wstring_view sName) {
    return sGetHostPath(ZK_SOURCE_DIR) + L"\\" + std::wstring(sName);
}

std::wstring sGetPartPath(std::wstring_view sName) {
    return sGetHostPath(ZK_PARTS_DIR) + L"\\" + std::wstring(sName);
}

std::wstring sLongForm(std::wstring const & sPath) {
    if (sPath.starts_with(L"\\\\?\\")) return sPath;
    if (sPath.starts_with(L"\\\\")) return L"\\\\?\\UNC" + sPath.substr(1);
    return L"\\\\?\\" + sPath;
}

} // namespace zk_test
