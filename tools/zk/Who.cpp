// zk who: who holds places in a directory.
#include "tools/zk/Commands.h"
#include "tools/zk/Console.h"
#include "tools/zk/ObjectLock.h"

#include "ZkTools/Files.h"

namespace {

std::wstring sGetWriter(TObjectLock const & tLock) {
    if (!tLock.fFindWriter()) return L"none";
    std::wstring const sWriter = tLock.sGetWriterInfo();
    return sWriter.empty() ? L"unknown" : sWriter;
}

EExit eWho(TArguments const & tArguments) {
    TObjectLock const tLock(tArguments.sGet(0), tArguments.sGet(1));
    ExistDirectory(tLock.sGetDirectory().c_str());
    std::wstring sText = L"readers: " + std::to_wstring(tLock.iCountReader()) + L"\n";
    if (std::wstring const sReaders = tLock.sGetReaderInfo(); !sReaders.empty()) sText.append(sReaders).append(L"\n");
    PrintLine(sText + L"writer: " + sGetWriter(tLock));
    return eDone;
}

} // namespace

TCommand const tWhoCommand{
    L"who",
    L"DIR OBJECT",
    L"Tells who holds places in the directory DIR, and sweeps what crashes left behind.",
    L"Prints the number of live readers, each of them on a line of its own as\n"
    L"\"user [computer]\", and the writer: none, the same form, or unknown when he works\n"
    L"on another computer or under another name.\n"
    L"\n"
    L"Lock files without a holder are removed by the look at them.\n",
    2,
    2,
    {},
    eWho,
};
