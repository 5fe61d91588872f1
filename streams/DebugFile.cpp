// The log.
#include "ZkTools/FileStream.h"

#include "files/LongPath.h"

#include <string_view>

namespace {

constexpr std::wstring_view sLineEnd = L"\r\n";

HANDLE hOpen(std::wstring const & sPath, DWORD dwDisposition) {
    return CreateFileLong(sPath.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, dwDisposition, FILE_ATTRIBUTE_NORMAL,
                          nullptr);
}

void WriteUnits(HANDLE hFile, std::wstring_view sText) {
    DWORD dwDone = 0;
    WriteFile(hFile, sText.data(), static_cast<DWORD>(sText.size() * sizeof(wchar_t)), &dwDone, nullptr);
}

} // namespace

TDebugFile::TDebugFile(std::wstring const & sNewPath, bool fReset) : sPath(sNewPath) {
    if (!fReset) return;
    hFile = hOpen(sPath, CREATE_ALWAYS);
    if (hFile != INVALID_HANDLE_VALUE) CloseHandle(hFile);
}

TDebugFile::TDebugFile(TDebugFile const &) = default;
TDebugFile & TDebugFile::operator=(TDebugFile const &) = default;
TDebugFile::~TDebugFile() = default;

void TDebugFile::Append(std::wstring const & sLine) {
    hFile = hOpen(sPath, OPEN_EXISTING);
    if (hFile == INVALID_HANDLE_VALUE) return;
    SetFilePointer(hFile, 0, nullptr, FILE_END);
    WriteUnits(hFile, sLine);
    WriteUnits(hFile, sLineEnd);
    CloseHandle(hFile);
}
