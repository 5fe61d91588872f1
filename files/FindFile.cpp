#include "files/FindFile.h"

#include "files/LongPath.h"

TFindFile::TFindFile(wchar_t const * pzPattern) : tData() {
    std::wstring sLong;
    hSearch =
        FindFirstFileExW(pzLongPath(pzPattern, sLong), FindExInfoBasic, &tData, FindExSearchNameMatch, nullptr, 0);
    dwLastError = hSearch != INVALID_HANDLE_VALUE ? 0 : GetLastError();
}

TFindFile::~TFindFile() {
    if (hSearch != INVALID_HANDLE_VALUE) FindClose(hSearch);
}

bool TFindFile::fFound() const noexcept {
    return dwLastError == 0 && hSearch != INVALID_HANDLE_VALUE;
}

bool TFindFile::fNext() noexcept {
    if (!fFound()) return false;
    if (FindNextFileW(hSearch, &tData) == 0) dwLastError = GetLastError();
    return fFound();
}
