// zk decimal: checks a number against a type.
#include "tools/zk/Commands.h"
#include "tools/zk/Console.h"

#include "ZkTools/DecimalValue.h"

#include <algorithm>
#include <array>

namespace {

struct TType {
    std::wstring_view sName;
    TDecimalValue (*pMake)(std::wstring const & sValue);
};

std::array<TType, 14> const tTypes{{
    {L"decimal", &TDecimalValue::make_decimal},
    {L"integer", &TDecimalValue::make_integer},
    {L"long", &TDecimalValue::make_long},
    {L"int", &TDecimalValue::make_int},
    {L"short", &TDecimalValue::make_short},
    {L"byte", &TDecimalValue::make_byte},
    {L"nonNegativeInteger", &TDecimalValue::make_nonNegativeInteger},
    {L"positiveInteger", &TDecimalValue::make_positiveInteger},
    {L"unsignedLong", &TDecimalValue::make_unsignedLong},
    {L"unsignedInt", &TDecimalValue::make_unsignedInt},
    {L"unsignedShort", &TDecimalValue::make_unsignedShort},
    {L"unsignedByte", &TDecimalValue::make_unsignedByte},
    {L"nonPositiveInteger", &TDecimalValue::make_nonPositiveInteger},
    {L"negativeInteger", &TDecimalValue::make_negativeInteger},
}};

EExit eDecimal(TArguments const & tArguments) {
    std::wstring const sName = tArguments.sGet(0);
    auto const pType = std::ranges::find(tTypes, std::wstring_view(sName), &TType::sName);
    if (pType == tTypes.end()) throw TWrongUsage{sName + L" is no type."};

    TDecimalValue const tValue = pType->pMake(tArguments.sGet(1));
    std::wstring sText = L"digits: " + std::to_wstring(tValue.iGetTotalDigits()) + L"\nbehind the point: " +
                         std::to_wstring(tValue.iGetFractionDigits()) + L"\n";
    if (tArguments.uGetCount() > 2)
        sText += L"order: " + sDescribeOrder(tValue.iCompare(pType->pMake(tArguments.sGet(2))));
    PrintLine(sText);
    return eDone;
}

} // namespace

TCommand const tDecimalCommand{
    L"decimal",
    L"TYPE VALUE [OTHER]",
    L"Checks a number against one of the decimal types of XML Schema.",
    L"Prints how many digits VALUE has in all and behind the point, without zeros that\n"
    L"do not count, and with OTHER whether VALUE is less, equal or greater. A text that\n"
    L"is no value of the type is exit code 1.\n"
    L"\n"
    L"The order of integers is that of their values. Where the digits before the point\n"
    L"are the same, the longer fraction is the greater; .5 is less than 0.5.\n"
    L"\n"
    L"TYPE is decimal, integer, long, int, short, byte, nonNegativeInteger,\n"
    L"positiveInteger, unsignedLong, unsignedInt, unsignedShort, unsignedByte,\n"
    L"nonPositiveInteger or negativeInteger.\n",
    2,
    3,
    {},
    eDecimal,
};
