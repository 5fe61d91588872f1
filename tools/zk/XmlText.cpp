// zk xml-text: text as XML, and into a file in any encoding.
#include "tools/zk/Commands.h"
#include "tools/zk/Console.h"
#include "tools/zk/Input.h"

#include "ZkTools/TextStream.h"

#include <algorithm>
#include <array>

namespace {

struct TEncoding {
    std::wstring_view sName;
    ECodePage eCodePage;
};

constexpr std::array<TEncoding, 4> tEncodings{{
    {L"utf-8", ecpUtf8},
    {L"utf-16", ecpUtf16},
    {L"utf-16be", ecpUtf16Swapped},
    {L"windows-1252", ecpWestern},
}};

ECodePage eGetEncoding(std::wstring const & sName) {
    auto const pEncoding = std::ranges::find(tEncodings, std::wstring_view(sName), &TEncoding::sName);
    if (pEncoding == tEncodings.end()) throw TWrongUsage{sName + L" is no encoding."};
    return pEncoding->eCodePage;
}

EExit eXmlText(TArguments const & tArguments) {
    std::wstring const * const psTarget = tArguments.psGetValue(L"--to");
    std::wstring const * const psEncoding = tArguments.psGetValue(L"--encoding");
    if (psEncoding != nullptr && psTarget == nullptr) throw TWrongUsage{L"--encoding needs --to."};
    if (tArguments.fHas(L"--tabs") && !tArguments.fHas(L"--attribute")) throw TWrongUsage{L"--tabs needs --attribute."};
    ECodePage const eEncoding = psEncoding != nullptr ? eGetEncoding(*psEncoding) : ecpUtf8;

    EXMLParams eParams{};
    if (tArguments.fHas(L"--attribute")) eParams = eParams | xmlEscapeAttribute;
    if (tArguments.fHas(L"--tabs")) eParams = eParams | xmlEscapeTab;
    std::wstring const sText = sReadText(tArguments, 0);
    if (psTarget == nullptr) {
        PrintLine(TOTextStream::sGetXMLString(sText, eParams));
    } else {
        TOTextStream tTarget(eEncoding, psTarget->c_str());
        tTarget.WriteXML(sText, eParams);
        tTarget.Close();
    }
    return eDone;
}

constexpr std::array<TSwitch, 4> tSwitches{{
    {L"--attribute", false},
    {L"--tabs", false},
    {L"--to", true},
    {L"--encoding", true},
}};

} // namespace

TCommand const tXmlTextCommand{
    L"xml-text",
    L"[FILE] [--attribute [--tabs]] [--to OUT [--encoding NAME]]",
    L"Turns text into what may stand between the tags of XML.",
    L"Without FILE it is the standard input. The text is UTF-8, and that of a file is\n"
    L"UTF-16 when it begins with the mark of that.\n"
    L"\n"
    L"Markup becomes entities, and every line end CR LF. What XML does not take, halves\n"
    L"of characters above U+FFFF among it, becomes a question mark.\n"
    L"\n"
    L"--attribute      For the value of an attribute: quotes and line ends become\n"
    L"                 entities and references too.\n"
    L"--tabs           Tabs as well.\n"
    L"--to OUT         Writes to that file, which is made anew, instead of printing.\n"
    L"--encoding NAME  In utf-8, utf-16 or utf-16be with their marks, or windows-1252;\n"
    L"                 utf-8 without a mark if it is not given.\n",
    0,
    1,
    tSwitches,
    eXmlText,
};
