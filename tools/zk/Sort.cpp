// zk sort: lines in the order of tables that mix numbers and words.
#include "tools/zk/Commands.h"
#include "tools/zk/Console.h"

#include "ZkTools/Exceptions.h"
#include "ZkTools/FileStream.h"
#include "ZkTools/Strings.h"

#include <algorithm>
#include <array>

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
std::wstring sReadText(std::wstring const & sPath) {
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

/// Lines end in LF or CR LF; the last one may lack its end.
std::vector<std::wstring> sGetLines(std::wstring const & sText) {
    std::vector<std::wstring> sLines = SplitString(sText, L'\n');
    if (sText.ends_with(L'\n')) sLines.pop_back();
    for (std::wstring & sLine : sLines) {
        if (sLine.ends_with(L'\r')) sLine.pop_back();
    }
    return sLines;
}

EExit eSort(TArguments const & tArguments) {
    std::vector<std::wstring> sLines =
        sGetLines(tArguments.uGetCount() != 0 ? sReadText(tArguments.sGet(0)) : sReadInput());
    if (sLines.empty()) return eDone;
    bool const fReverse = tArguments.fHas(L"--reverse");
    std::ranges::stable_sort(sLines, [fReverse](std::wstring const & s1, std::wstring const & s2) {
        return fReverse ? iNumericStringCompare(s2, s1) < 0 : iNumericStringCompare(s1, s2) < 0;
    });
    PrintLine(sGetStringListText(std::move(sLines), L'\n') + L'\n');
    return eDone;
}

constexpr std::array<TSwitch, 1> tSwitches{{{L"--reverse", false}}};

} // namespace

TCommand const tSortCommand{
    L"sort",
    L"[FILE] [--reverse]",
    L"Prints the lines of a file in the order of tables: numbers, then words.",
    L"Without FILE it is the standard input. The text is UTF-8, and that of a file is\n"
    L"UTF-16 when it begins with the mark of that.\n"
    L"\n"
    L"Numbers have a sign, digits, and a point with digits; what follows behind a blank\n"
    L"does not count. Longer digit strings are larger, behind the point too: 1.9 comes\n"
    L"before 1.11. Words compare without regard to case, which decides only where\n"
    L"nothing else differs. Lines that compare equal keep their order.\n"
    L"\n"
    L"--reverse  Turns the order round.\n",
    0,
    1,
    tSwitches,
    eSort,
};
