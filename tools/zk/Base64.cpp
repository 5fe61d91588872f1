// zk base64: text as Base64 and back.
#include "tools/zk/Commands.h"
#include "tools/zk/Console.h"

#include "ZkTools/Uri.h"

namespace {

EExit eBase64(TArguments const & tArguments) {
    std::wstring const sWhat = tArguments.sGet(0);
    if (sWhat == L"encode") {
        PrintLine(sStringToBase64(tArguments.sGet(1)));
    } else if (sWhat == L"decode") {
        PrintLine(sBase64ToString(tArguments.sGet(1)));
    } else {
        throw TWrongUsage{L"Either encode or decode is needed."};
    }
    return eDone;
}

} // namespace

TCommand const tBase64Command{
    L"base64",
    L"encode|decode TEXT",
    L"Turns text into Base64 of its UTF-8 form, or back.",
    L"Text that cannot be UTF-8, and what is no Base64 or no UTF-8 behind it, is exit\n"
    L"code 1.\n",
    2,
    2,
    {},
    eBase64,
};
