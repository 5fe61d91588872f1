// zk languages: the languages that the tool knows.
#include "tools/zk/Commands.h"
#include "tools/zk/Console.h"

#include "ZkTools/Languages.h"

#include <limits>

namespace {

std::wstring sGetRow(TLangAssoc const & tLanguage) {
    return std::wstring(tLanguage.szCode).append(L"  ").append(tLanguage.szName).append(L"\n");
}

EExit eLanguages(TArguments const & tArguments) {
    TLangArray const & tTable = TLangArray::Instance();
    std::wstring sText;
    if (tArguments.uGetCount() == 0) {
        for (unsigned int u = 0; u < tTable.iGetCount(); ++u)
            sText += sGetRow(tTable[u]);
    } else {
        std::wstring const sWanted = tArguments.sGet(0);
        std::wstring const sCode = tTable.sGetCode(sWanted.c_str());
        unsigned int const uPlace = tTable.iGetIndex(sCode.empty() ? sWanted.c_str() : sCode.c_str());
        if (uPlace == std::numeric_limits<unsigned int>::max()) {
            PrintError(L"There is no language \"" + sWanted + L"\".");
            return eFailed;
        }
        sText = sGetRow(tTable[uPlace]);
    }
    PrintLine(sText);
    return eDone;
}

} // namespace

TCommand const tLanguagesCommand{
    L"languages",
    L"[TEXT]",
    L"Prints the languages that the tool knows, each with its code.",
    L"The names are in the language of the messages, and the order is that of lists:\n"
    L"the languages of the tool itself, then the others by name.\n"
    L"\n"
    L"TEXT is a code, in any case, or a name exactly as it is printed; then that\n"
    L"language is printed alone. One that is unknown is exit code 1.\n",
    0,
    1,
    {},
    eLanguages,
};
