// zk fetch: a file from the internet.
#include "tools/zk/Commands.h"
#include "tools/zk/Console.h"

#include "ZkTools/FileStream.h"
#include "ZkTools/Internet.h"

namespace {

EExit eFetch(TArguments const & tArguments) {
    std::wstring const sUrl = tArguments.sGet(0);
    if (!fIsInternetFile(sUrl)) throw TWrongUsage{sUrl + L" is no file on the internet."};
    // In memory, so that a file that is there stays when the server has none.
    TStreamBase tBytes;
    ReadInternetFile(sUrl, tBytes);
    TFStream tFile(tArguments.sGet(1).c_str(), FS_CREATE | FS_BINARY);
    tFile.WriteData(tBytes.pGetData(), tBytes.dwGetSize());
    tFile.Close();
    PrintLine(std::to_wstring(tBytes.dwGetSize()) + L" bytes");
    return eDone;
}

} // namespace

TCommand const tFetchCommand{
    L"fetch",
    L"URL FILE",
    L"Reads a file from the internet.",
    L"Reads what is under the URL, by HTTP or HTTPS, and writes its bytes to FILE, over\n"
    L"what is there; the directory of FILE is made where it is missing. The server is\n"
    L"always asked, never the cache, by the system's settings.\n"
    L"\n"
    L"Prints the number of bytes. When reading fails, or the server answers anything but\n"
    L"200, that is told, and FILE stays as it is.\n",
    2,
    2,
    {},
    eFetch,
};
