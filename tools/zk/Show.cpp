// zk show: reads an alias back.
#include "tools/zk/Commands.h"
#include "tools/zk/Console.h"
#include "tools/zk/ObjectLock.h"

#include "ZkTools/Alias.h"
#include "ZkTools/FileStream.h"

namespace {

std::wstring sLine(std::wstring_view sName, std::wstring const & sValue) {
    std::wstring sText(sName);
    if (!sValue.empty()) sText.append(L" ").append(sValue);
    return sText += L"\n";
}

EExit eShow(TArguments const & tArguments) {
    TObjectLock tLock(tArguments.sGet(0), tArguments.sGet(1));
    tLock.Open();
    TFStream tFile(ecpUtf8);
    tFile.Open(tLock.sGetObjectPath().c_str(), FS_SHARE_ALL | FS_BINARY);
    TAlias tAlias;
    tAlias.Read(tFile);
    tFile.Close();
    tLock.Close();
    if (tAlias.fIsEmpty()) throw TXZkTools(L"\"%s\" holds no alias.", tLock.sGetObjectPath().c_str());
    PrintLine(sLine(L"tag:", tAlias.sGetTag()) + sLine(L"version:", tAlias.sGetVersion()) +
              sLine(L"variant:", tAlias.sGetVariant()));
    return eDone;
}

} // namespace

TCommand const tShowCommand{
    L"show",
    L"DIR OBJECT",
    L"Prints the alias that the file OBJECT in the directory DIR holds.",
    L"Takes a reader place in DIR while it reads, and is refused while somebody writes\n"
    L"there. Where DIR is read-only the file itself is held instead.\n"
    L"\n"
    L"Prints three lines: tag, version and variant. Old files, which hold a record of\n"
    L"35 bytes, are read as well.\n",
    2,
    2,
    {},
    eShow,
};
