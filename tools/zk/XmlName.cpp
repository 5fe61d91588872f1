// zk xml-name: any text as an XML name.
#include "tools/zk/Commands.h"
#include "tools/zk/Console.h"

#include "ZkTools/Uri.h"

namespace {

EExit eXmlName(TArguments const & tArguments) {
    PrintLine(sConvertToXMLIdentifier(tArguments.sGet(0)));
    return eDone;
}

} // namespace

TCommand const tXmlNameCommand{
    L"xml-name",
    L"TEXT",
    L"Prints an XML name made of any text.",
    L"What a name may not hold is dropped, and what follows begins in upper case, but\n"
    L"not behind an apostrophe or an accent: \"first name\" gives firstName. A first\n"
    L"character that may not begin a name becomes an underscore. A first colon stays,\n"
    L"with a name on either side.\n",
    1,
    1,
    {},
    eXmlName,
};
