#include "tools/zk/Console.h"

#include "ZkBase/Windows.h"
#include "ZkTools/Exceptions.h"

#include <algorithm>

namespace {

/// The text with CR LF behind every line.
std::wstring sMakeLines(std::wstring_view sText) {
    std::wstring sLines;
    sLines.reserve(sText.size() + 8);
    for (wchar_t const c : sText) {
        if (c == L'\n' && !sLines.ends_with(L'\r')) sLines += L'\r';
        sLines += c;
    }
    if (!sLines.ends_with(L'\n')) sLines += L"\r\n";
    return sLines;
}

std::string sToUtf8(std::wstring_view sText) {
    int const iUnits = static_cast<int>(sText.size());
    int const iBytes = WideCharToMultiByte(CP_UTF8, 0, sText.data(), iUnits, nullptr, 0, nullptr, nullptr);
    std::string sBytes(static_cast<std::size_t>(iBytes), '\0');
    WideCharToMultiByte(CP_UTF8, 0, sText.data(), iUnits, sBytes.data(), iBytes, nullptr, nullptr);
    return sBytes;
}

/// One call of WriteConsoleW or WriteFile for as long as something is left.
template <typename TChar, typename TWrite>
bool fWriteAll(std::basic_string_view<TChar> sText, TWrite Write) {
    constexpr std::size_t uMost = 8000; // a console takes no more than some 32,000 bytes at a time
    while (!sText.empty()) {
        DWORD dwWritten = 0;
        if (!Write(sText.data(), static_cast<DWORD>(std::min(sText.size(), uMost)), &dwWritten)) return false;
        sText.remove_prefix(dwWritten);
    }
    return true;
}

bool fPrint(DWORD dwStream, std::wstring_view sText) {
    HANDLE const hOutput = GetStdHandle(dwStream);
    std::wstring const sLines = sMakeLines(sText);
    DWORD dwMode = 0;
    if (GetConsoleMode(hOutput, &dwMode))
        return fWriteAll(std::wstring_view(sLines), [&](wchar_t const * pText, DWORD dwCount, DWORD * pdwWritten) {
            return WriteConsoleW(hOutput, pText, dwCount, pdwWritten, nullptr);
        });
    return fWriteAll(std::string_view(sToUtf8(sLines)), [&](char const * pBytes, DWORD dwCount, DWORD * pdwWritten) {
        return WriteFile(hOutput, pBytes, dwCount, pdwWritten, nullptr);
    });
}

} // namespace

void PrintLine(std::wstring_view sText) {
    if (!fPrint(STD_OUTPUT_HANDLE, sText)) throw TXZkTools(L"%s", sGetErrorString(GetLastError()).c_str());
}

void PrintError(std::wstring_view sText) noexcept {
    try {
        fPrint(STD_ERROR_HANDLE, sText);
    } catch (std::exception const &) {
        // There is nobody left to tell.
    }
}

std::wstring sWiden(std::string_view sText) {
    int const iBytes = static_cast<int>(sText.size());
    int const iUnits = MultiByteToWideChar(CP_THREAD_ACP, 0, sText.data(), iBytes, nullptr, 0);
    std::wstring sWide(static_cast<std::size_t>(iUnits), L'\0');
    MultiByteToWideChar(CP_THREAD_ACP, 0, sText.data(), iBytes, sWide.data(), iUnits);
    return sWide;
}

std::wstring sDescribeOrder(int iOrder) {
    return iOrder < 0 ? L"less" : iOrder > 0 ? L"greater" : L"equal";
}
