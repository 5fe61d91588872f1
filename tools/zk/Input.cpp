#include "tools/zk/Input.h"

#include "ZkBase/Windows.h"
#include "ZkTools/Exceptions.h"
#include "ZkTools/FileStream.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace {

std::wstring sDecode(UINT uCodePage, std::string_view sBytes) {
    if (sBytes.empty()) return {};
    int const iBytes = static_cast<int>(sBytes.size());
    int const iUnits = MultiByteToWideChar(uCodePage, MB_ERR_INVALID_CHARS, sBytes.data(), iBytes, nullptr, 0);
    if (iUnits <= 0) throw TXZkTools(L"%s", sGetErrorString(GetLastError()).c_str());
    std::wstring sText(static_cast<std::size_t>(iUnits), L'\0');
    MultiByteToWideChar(uCodePage, 0, sBytes.data(), iBytes, sText.data(), iUnits);
    return sText;
}

/// The text of a file: UTF-16 behind its mark, UTF-8 otherwise.
std::wstring sReadFile(std::wstring const & sPath) {
    TFStream tFile(sPath.c_str(), FS_SHARE_ALL | FS_BINARY);
    std::string sBytes(tFile.dwGetSize(), '\0');
    if (!sBytes.empty()) tFile.ReadData(sBytes.data(), static_cast<unsigned long>(sBytes.size()));
    std::string_view sRest = sBytes;
    if (sRest.starts_with("\xFF\xFE")) {
        std::wstring sText((sRest.size() - 2) / sizeof(wchar_t), L'\0');
        std::copy_n(sRest.data() + 2, sText.size() * sizeof(wchar_t), reinterpret_cast<char *>(sText.data()));
        return sText;
    }
    if (sRest.starts_with("\xEF\xBB\xBF")) sRest.remove_prefix(3);
    return sDecode(CP_UTF8, sRest);
}

/// All of the standard input: UTF-8, but what is typed at a console comes in the console's code page.
std::wstring sReadInput() {
    HANDLE const hInput = GetStdHandle(STD_INPUT_HANDLE);
    std::string sBytes;
    std::array<char, 65536> acPiece;
    DWORD dwRead = 0;
    while (ReadFile(hInput, acPiece.data(), static_cast<DWORD>(acPiece.size()), &dwRead, nullptr) && dwRead != 0)
        sBytes.append(acPiece.data(), dwRead);
    DWORD dwMode = 0;
    return sDecode(GetConsoleMode(hInput, &dwMode) ? GetConsoleCP() : CP_UTF8, sBytes);
}

} // namespace

std::wstring sReadText(TArguments const & tArguments, std::size_t uIndex) {
    return tArguments.uGetCount() > uIndex ? sReadFile(tArguments.sGet(uIndex)) : sReadInput();
}
