// zk hold: keeps a place for somebody who wants to see what others are told.
#include "tools/zk/Commands.h"
#include "tools/zk/Console.h"
#include "tools/zk/ObjectLock.h"

#include "ZkTools/Exceptions.h"

#include <array>

namespace {

constexpr std::array tHoldSwitches{
    TSwitch{L"--read", false},
    TSwitch{L"--write", false},
    TSwitch{L"--file", false},
    TSwitch{L"--seconds", true},
};

HANDLE hStop = nullptr; // set when the place is to be given up; lives as long as the process

BOOL WINAPI OnControl(DWORD) {
    SetEvent(hStop);
    return TRUE;
}

DWORD WINAPI ReadInputToItsEnd(void *) {
    std::array<char, 512> acInput;
    DWORD dwRead = 0;
    while (ReadFile(GetStdHandle(STD_INPUT_HANDLE), acInput.data(), static_cast<DWORD>(acInput.size()), &dwRead,
                    nullptr) &&
           dwRead != 0) {
    }
    SetEvent(hStop);
    return 0;
}

/// Milliseconds, or `INFINITE` without the switch.
DWORD dwGetDuration(TArguments const & tArguments) {
    constexpr DWORD dwMostSeconds = 4'000'000;
    std::wstring const * psSeconds = tArguments.psGetValue(L"--seconds");
    if (psSeconds == nullptr) return INFINITE;
    bool fNumber = !psSeconds->empty() && psSeconds->size() <= 7;
    DWORD dwSeconds = 0;
    for (wchar_t const c : *psSeconds) {
        fNumber = fNumber && c >= L'0' && c <= L'9';
        if (fNumber) dwSeconds = dwSeconds * 10 + static_cast<DWORD>(c - L'0');
    }
    if (!fNumber || dwSeconds > dwMostSeconds) throw TWrongUsage{L"--seconds takes a whole number up to 4000000."};
    return dwSeconds * 1000;
}

/// What is held, in words.
template <typename TLock>
std::wstring sDescribePlace(TLock const & tLock, std::wstring const & sFile) {
    if (tLock.fIsLocked())
        return sFile.empty() ? L"the writer place in"
                             : std::wstring(L"the writer place of ").append(sFile).append(L" in");
    return tLock.fIsReadOnly() ? L"the object of the read-only directory" : L"a reader place in";
}

template <typename TLock>
EExit eKeep(TLock tLock, bool fWrite, DWORD dwDuration, std::wstring const & sFile) {
    tLock.Open();
    if (fWrite) tLock.Lock();
    PrintLine(L"holding " + sDescribePlace(tLock, sFile) + L" " + tLock.sGetDirectory());

    if (dwDuration == INFINITE) CloseHandle(CreateThread(nullptr, 0, ReadInputToItsEnd, nullptr, 0, nullptr));
    WaitForSingleObject(hStop, dwDuration);
    if (fWrite) tLock.Unlock();
    tLock.Close();
    return eDone;
}

EExit eHold(TArguments const & tArguments) {
    bool const fWrite = tArguments.fHas(L"--write");
    if (fWrite == tArguments.fHas(L"--read")) throw TWrongUsage{L"Either --read or --write is needed."};
    DWORD const dwDuration = dwGetDuration(tArguments);

    hStop = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    SetConsoleCtrlHandler(OnControl, TRUE);
    std::wstring const sDirectory = tArguments.sGet(0);
    std::wstring const sObject = tArguments.sGet(1);
    if (tArguments.fHas(L"--file")) return eKeep(TSingleFileLock(sDirectory, sObject), fWrite, dwDuration, sObject);
    return eKeep(TObjectLock(sDirectory, sObject), fWrite, dwDuration, {});
}

} // namespace

TCommand const tHoldCommand{
    L"hold",
    L"DIR OBJECT --read|--write [--file] [--seconds N]",
    L"Keeps a place in the directory DIR.",
    L"  --read       a reader place\n"
    L"  --write      a reader place and the writer place\n"
    L"  --file       the writer place of the file OBJECT alone, in shared mode: other\n"
    L"               files of DIR can have writers at the same time\n"
    L"  --seconds N  for N seconds; without it, until the standard input ends\n"
    L"\n"
    L"Prints a line as soon as it holds the place. Ctrl-C gives it up.\n",
    2,
    2,
    tHoldSwitches,
    eHold,
};
