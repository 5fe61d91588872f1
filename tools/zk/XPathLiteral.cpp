// zk xpath-literal: any text as an XPath expression.
#include "tools/zk/Commands.h"
#include "tools/zk/Console.h"

#include "ZkTools/Uri.h"

namespace {

EExit eXPathLiteral(TArguments const & tArguments) {
    PrintLine(sConvertToXPathLiteral(tArguments.sGet(0)));
    return eDone;
}

} // namespace

TCommand const tXPathLiteralCommand{
    L"xpath-literal",
    L"TEXT",
    L"Prints an XPath 1.0 expression whose value is the text.",
    L"That is the text in apostrophes, in quotation marks when it holds an apostrophe,\n"
    L"and a call of concat when it holds both.\n",
    1,
    1,
    {},
    eXPathLiteral,
};
