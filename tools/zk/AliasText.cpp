#include "tools/zk/AliasText.h"

namespace {

std::wstring sLine(std::wstring_view sName, std::wstring const & sValue) {
    std::wstring sText(sName);
    if (!sValue.empty()) sText.append(L" ").append(sValue);
    return sText += L"\n";
}

} // namespace

std::wstring sDescribe(TAlias const & tAlias) {
    return sLine(L"tag:", tAlias.sGetTag()) + sLine(L"version:", tAlias.sGetVersion()) +
           sLine(L"variant:", tAlias.sGetVariant());
}
