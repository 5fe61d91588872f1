#include "automation/AutoWrap.h"

#include "frame/ComOwners.h"

#include <comdef.h>

#include <algorithm>
#include <array>
#include <stdexcept>

namespace {

constexpr LCID iLocale = LOCALE_USER_DEFAULT;
static_assert(iLocale == 0x400);

/// What a call is told as. Wherever two of them meet, it is "unknown".
struct TKind {
    unsigned short wFlags;
    std::wstring_view sText;
};
constexpr std::array<TKind, 4> tKinds{{
    {DISPATCH_METHOD, L"method"},
    {DISPATCH_PROPERTYGET, L"get property"},
    {DISPATCH_PROPERTYPUT, L"put property"},
    {DISPATCH_PROPERTYPUTREF, L"put property reference"},
}};

/// The errors of automation. `sBehind` follows the number of the argument; where it is empty none is told.
struct TReason {
    HRESULT hr;
    std::wstring_view sText;
    std::wstring_view sBehind;
};
constexpr std::array<TReason, 11> tReasons{{
    {DISP_E_UNKNOWNINTERFACE, L"The interface identifier passed is not IID_NULL.", L""},
    {DISP_E_MEMBERNOTFOUND,
     L"The requested member does not exist, or the call tried to set the value of a read-only property.", L""},
    {DISP_E_PARAMNOTFOUND, L"The parameter ", L" does not correspond to a parameter on the method."},
    {DISP_E_TYPEMISMATCH, L"The argument ", L" could not be coerced."},
    {DISP_E_NONAMEDARGS, L"This implementation does not support named arguments.", L""},
    {DISP_E_BADVARTYPE, L"One of the arguments is not a valid variant type.", L""},
    {DISP_E_EXCEPTION, L"The application needs to raise an exception.", L""},
    {DISP_E_OVERFLOW, L"One of the arguments could not be coerced to the specified type.", L""},
    {DISP_E_UNKNOWNLCID,
     L"The member being invoked interprets string arguments according to the LCID, and the LCID is not recognized. "
     L"If the LCID is not needed to interpret arguments, this error should not be returned.",
     L""},
    {DISP_E_BADPARAMCOUNT,
     L"The number of arguments is different from the number of arguments accepted by the method or property.", L""},
    {DISP_E_PARAMNOTOPTIONAL, L"A required parameter was omitted.", L""},
}};

/// The texts of an exception belong to the caller.
struct TExcepInfo : tagEXCEPINFO {
    TExcepInfo() noexcept : tagEXCEPINFO() {}
    ~TExcepInfo() {
        SysFreeString(bstrSource);
        SysFreeString(bstrDescription);
        SysFreeString(bstrHelpFile);
    }
    TExcepInfo(TExcepInfo const &) = delete;
    TExcepInfo & operator=(TExcepInfo const &) = delete;
};

std::wstring sQuote(std::wstring_view sText) {
    return std::wstring(L"\"").append(sText).append(L"\"");
}

std::wstring sTextOr(BSTR sText, wchar_t const * pzElse) {
    return sText != nullptr ? sText : pzElse;
}

/// The name of the object's type, as far as the object tells.
std::wstring sGetTypeName(IDispatch * pDispatch) {
    ITypeInfo * pInfo = nullptr;
    HRESULT const hr = pDispatch->GetTypeInfo(0, iLocale, &pInfo);
    TReference<ITypeInfo> const pOwner(pInfo);
    TBstr sName;
    if (hr >= 0 && pInfo != nullptr &&
        pInfo->GetDocumentation(MEMBERID_NIL, TBstrResult(sName), nullptr, nullptr, nullptr) < 0)
        sName.reset();
    return sTextOr(sName.get(), L"unknown");
}

std::wstring sGetReason(HRESULT hr, unsigned int uArgErr) {
    auto const pReason = std::ranges::find(tReasons, hr, &TReason::hr);
    if (pReason == tReasons.end()) {
        _com_error const tError(hr);
        wchar_t const * const pzText = tError.ErrorMessage();
        return pzText != nullptr ? pzText : L"";
    }
    std::wstring sText(pReason->sText);
    if (!pReason->sBehind.empty()) sText.append(std::to_wstring(uArgErr)).append(pReason->sBehind);
    return sText;
}

/// What the server says; empty when it raised no exception.
std::wstring sGetDetail(HRESULT hr, tagEXCEPINFO & tExcepInfo) {
    if (hr != DISP_E_EXCEPTION) return {};
    // A server may put off the work on its texts until they are asked for.
    if (tExcepInfo.pfnDeferredFillIn != nullptr) tExcepInfo.pfnDeferredFillIn(&tExcepInfo);
    return L"Error#: " + std::to_wstring(tExcepInfo.wCode) + L"\r\nSource: " +
           sTextOr(tExcepInfo.bstrSource, L"unknown") + L"\r\nDescription: " +
           sTextOr(tExcepInfo.bstrDescription, L"not available");
}

std::wstring_view sGetKind(unsigned short wFlags) noexcept {
    auto const pKind = std::ranges::find(tKinds, wFlags, &TKind::wFlags);
    return pKind != tKinds.end() ? pKind->sText : L"unknown";
}

/// The number of the member.
DISPID iFindMember(IDispatch * pDispatch, std::wstring const & sName) {
    auto * pzName = const_cast<wchar_t *>(sName.c_str());
    DISPID iMember = DISPID_UNKNOWN;
    if (pDispatch->GetIDsOfNames(IID_NULL, &pzName, 1, iLocale, &iMember) < 0)
        throw std::runtime_error(sMakeUtf8(L"Property or method " + sQuote(sName) + L" not found in object " +
                                           sQuote(sGetTypeName(pDispatch))));
    return iMember;
}

} // namespace

void AutoWrap(unsigned short wFlags, tagVARIANT * pResult, IDispatch * pDispatch, std::wstring const * psName,
              tagDISPPARAMS * pParams) {
    if (pDispatch == nullptr) throw std::invalid_argument("NULL IDispatch passed to AutoWrap()");
    DISPID const iMember = psName != nullptr ? iFindMember(pDispatch, *psName) : DISPID_VALUE;

    tagDISPPARAMS tNone{};
    if (pParams == nullptr) pParams = &tNone;
    DISPID iPut = DISPID_PROPERTYPUT;
    if ((wFlags & DISPATCH_PROPERTYPUT) != 0) {
        // Deliberate: only here. A property put by reference goes without a named argument.
        pParams->cNamedArgs = 1;
        pParams->rgdispidNamedArgs = &iPut;
    }

    TExcepInfo tExcepInfo;
    unsigned int uArgErr = 0;
    HRESULT const hr = pDispatch->Invoke(iMember, IID_NULL, iLocale, wFlags, pParams, pResult, &tExcepInfo, &uArgErr);
    if (hr < 0) ThrowError(hr, pDispatch, psName, wFlags, pParams, &tExcepInfo, &uArgErr);
}

void ThrowError(HRESULT hr, IDispatch * pDispatch, std::wstring const * psName, unsigned short wFlags,
                tagDISPPARAMS * pParams, tagEXCEPINFO * pExcepInfo, unsigned int * puArgErr) {
    std::wstring sText = sGetReason(hr, *puArgErr);
    sText.append(L"\r\n").append(sGetDetail(hr, *pExcepInfo));
    sText.append(L"\r\nObject type: ").append(sGetTypeName(pDispatch));
    sText.append(L"\r\nTried to invoke: ").append(sGetKind(wFlags));
    sText.append(L"\r\nMember: ").append(sQuote(psName != nullptr ? *psName : L"default"));
    sText.append(L"\r\nNumber of parameters: ").append(std::to_wstring(pParams->cArgs));
    throw std::runtime_error(sMakeUtf8(sText));
}
