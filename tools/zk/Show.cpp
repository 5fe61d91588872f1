// zk show: reads an alias back.
#include "tools/zk/AliasText.h"
#include "tools/zk/Commands.h"
#include "tools/zk/Console.h"
#include "tools/zk/ObjectLock.h"

#include "ZkTools/FileStream.h"

#include <algorithm>

namespace {

/// Reads the alias of a file. From memory, because a file stream that ends too early gives empty texts without a word.
TAlias tReadAlias(wchar_t const * pzPath) {
    constexpr unsigned long dwMostBytes = 200'000; // no alias takes more
    TFStream tFile;
    tFile.Open(pzPath, FS_SHARE_ALL | FS_BINARY);
    TBlob tBytes(std::min(tFile.dwGetSize(), dwMostBytes));
    if (tBytes.dwCapacity != 0) tFile.ReadData(tBytes.pData, tBytes.dwCapacity);
    tBytes.dwUsed = tBytes.dwCapacity;
    TStreamBase tStream(tBytes, ecpUtf8);
    TAlias tAlias;
    try {
        tAlias.Read(tStream);
        if (tAlias.fIsEmpty()) throw TXZkTools(L"The tag is empty.");
    } catch (TXError & tError) {
        tError.AddMessageStr(L"\"%s\" holds no alias.", pzPath);
        throw;
    }
    return tAlias;
}

EExit eShow(TArguments const & tArguments) {
    TObjectLock tLock(tArguments.sGet(0), tArguments.sGet(1));
    tLock.Open();
    TAlias const tAlias = tReadAlias(tLock.sGetObjectPath().c_str());
    tLock.Close();
    PrintLine(sDescribe(tAlias));
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
