// zk hash: fingerprints of files.
#include "tools/zk/Commands.h"
#include "tools/zk/Console.h"

#include "ZkTools/Hash.h"

#include <exception>
#include <limits>

namespace {

EExit eHash(TArguments const & tArguments) {
    EExit eExit = eDone;
    for (std::size_t uFile = 0; uFile < tArguments.uGetCount(); ++uFile) {
        std::wstring const sFile = tArguments.sGet(uFile);
        try {
            PrintLine(sGetFileHash(sFile) + L"  " + sFile);
        } catch (std::exception const & tFailure) {
            PrintError(sFile + L": " + sWiden(tFailure.what()));
            eExit = eFailed;
        }
    }
    return eExit;
}

} // namespace

TCommand const tHashCommand{
    L"hash",
    L"FILE...",
    L"Prints fingerprints of files; that of a ZIP archive is that of its members.",
    L"Prints a line for each file: 32 digits, two blanks and the file as given. Equal\n"
    L"digits mean equal files. Two ZIP archives are equal when their members have the\n"
    L"same names, checksums and sizes, whatever their order, times and compression.\n"
    L"\n"
    L"A file that cannot be read, and a damaged archive, is told, and is exit code 1; the\n"
    L"others are printed all the same.\n",
    1,
    std::numeric_limits<std::size_t>::max(),
    {},
    eHash,
};
