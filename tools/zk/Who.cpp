// zk who: who holds places in a directory.
#include "tools/zk/Commands.h"
#include "tools/zk/Console.h"
#include "tools/zk/ObjectLock.h"

#include "ZkTools/Files.h"

#include <array>

namespace {

constexpr std::array tWhoSwitches{
    TSwitch{L"--file", false},
};

template <typename TLock>
std::wstring sGetWriter(TLock const & tLock) {
    if (!tLock.fFindWriter()) return L"none";
    std::wstring const sWriter = tLock.sGetWriterInfo();
    return sWriter.empty() ? L"unknown" : sWriter;
}

template <typename TLock>
EExit eTell(TLock const & tLock) {
    ExistDirectory(tLock.sGetDirectory().c_str());
    std::wstring sText = L"readers: " + std::to_wstring(tLock.iCountReader()) + L"\n";
    if (std::wstring const sReaders = tLock.sGetReaderInfo(); !sReaders.empty()) sText.append(sReaders).append(L"\n");
    PrintLine(sText + L"writer: " + sGetWriter(tLock));
    return eDone;
}

EExit eWho(TArguments const & tArguments) {
    if (tArguments.fHas(L"--file")) return eTell(TSingleFileLock(tArguments.sGet(0), tArguments.sGet(1)));
    return eTell(TObjectLock(tArguments.sGet(0), tArguments.sGet(1)));
}

} // namespace

TCommand const tWhoCommand{
    L"who",
    L"DIR OBJECT [--file]",
    L"Tells who holds places in the directory DIR, and sweeps what crashes left behind.",
    L"Prints the number of live readers, each of them on a line of its own as\n"
    L"\"user [computer]\", and the writer: none, the same form, or unknown when he works\n"
    L"on another computer or under another name.\n"
    L"\n"
    L"  --file  the writer of the file OBJECT instead of that of the directory\n"
    L"\n"
    L"Lock files without a holder are removed by the look at them.\n",
    2,
    2,
    tWhoSwitches,
    eWho,
};
