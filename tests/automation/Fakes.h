/// An automation object, its type information and an error object of the test's own: they count their references, keep
/// what they are called with, and answer what the test wants. They live where the test puts them; the last `Release`
/// does nothing.
#pragma once

#include "ZkBase/Windows.h"

#include <oaidl.h>
#include <objbase.h>
#include <oleauto.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

namespace zk_test {

/// References, for one interface.
template <typename TInterface>
class TCounted : public TInterface {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID tId, void ** ppResult) override {
        if (tId != IID_IUnknown && tId != __uuidof(TInterface)) {
            *ppResult = nullptr;
            return E_NOINTERFACE;
        }
        *ppResult = static_cast<TInterface *>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override {
        iLowest = std::min(iLowest, ++iReferences);
        return static_cast<ULONG>(iReferences);
    }
    ULONG STDMETHODCALLTYPE Release() override {
        iLowest = std::min(iLowest, --iReferences);
        return static_cast<ULONG>(iReferences);
    }

    int iReferences = 1; ///< that of the test
    int iLowest = 1;     ///< how few there ever were; 0 would have been the object's end
};

/// Knows the name of its type.
class TFakeTypeInfo final : public TCounted<ITypeInfo> {
public:
    HRESULT hrName = S_OK;
    wchar_t const * pzName = L"Wheel"; ///< null: none is given
    MEMBERID iAsked = 0;

    HRESULT STDMETHODCALLTYPE GetDocumentation(MEMBERID iMember, BSTR * psName, BSTR * psText, DWORD *,
                                               BSTR * psHelpFile) override {
        iAsked = iMember;
        if (psText != nullptr || psHelpFile != nullptr) return E_UNEXPECTED; // who would free them?
        *psName = SysAllocString(pzName);
        return hrName;
    }

    // Nobody asks for the rest.
    HRESULT STDMETHODCALLTYPE GetTypeAttr(TYPEATTR **) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeComp(ITypeComp **) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetFuncDesc(UINT, FUNCDESC **) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetVarDesc(UINT, VARDESC **) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetNames(MEMBERID, BSTR *, UINT, UINT *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetRefTypeOfImplType(UINT, HREFTYPE *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetImplTypeFlags(UINT, INT *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(LPOLESTR *, UINT, MEMBERID *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Invoke(PVOID, MEMBERID, WORD, DISPPARAMS *, VARIANT *, EXCEPINFO *, UINT *) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetDllEntry(MEMBERID, INVOKEKIND, BSTR *, BSTR *, WORD *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetRefTypeInfo(HREFTYPE, ITypeInfo **) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE AddressOfMember(MEMBERID, INVOKEKIND, PVOID *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown *, REFIID, PVOID *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetMops(MEMBERID, BSTR *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetContainingTypeLib(ITypeLib **, UINT *) override { return E_NOTIMPL; }
    void STDMETHODCALLTYPE ReleaseTypeAttr(TYPEATTR *) override {}
    void STDMETHODCALLTYPE ReleaseFuncDesc(FUNCDESC *) override {}
    void STDMETHODCALLTYPE ReleaseVarDesc(VARDESC *) override {}
};

/// An automation object with one member.
class TFakeDispatch final : public TCounted<IDispatch> {
public:
    // What it answers.
    HRESULT hrNames = S_OK;
    DISPID iMember = 42;
    HRESULT hrTypeInfo = E_NOTIMPL;
    TFakeTypeInfo * pTypeInfo = nullptr;
    HRESULT hrInvoke = S_OK;
    std::function<void(VARIANT *, EXCEPINFO *, UINT *)> tOnInvoke = nullptr;

    // What it was asked.
    std::vector<std::wstring> sNames{};
    LCID iNamesLocale = 0;
    int iInvokes = 0;
    DISPID iInvoked = 0;
    LCID iInvokeLocale = 0;
    WORD wFlags = 0;
    bool fIdsWereNull = true;
    std::vector<VARIANT> tArguments{}; ///< plain copies, as they lay in the array
    bool fHadArray = false;
    UINT uNamed = 0;
    bool fHadNamed = false;
    DISPID iNamed = 0;
    VARIANT * pResult = nullptr;
    bool fExcepInfoWasZero = true;
    UINT uArgErrBefore = 99;

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT uIndex, LCID iLocale, ITypeInfo ** ppInfo) override {
        if (uIndex != 0 || iLocale != 0x400) return DISP_E_BADINDEX;
        *ppInfo = pTypeInfo;
        if (pTypeInfo != nullptr) pTypeInfo->AddRef();
        return hrTypeInfo;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID tId, LPOLESTR * ppzNames, UINT uCount, LCID iLocale,
                                            DISPID * piMembers) override {
        fIdsWereNull = fIdsWereNull && tId == IID_NULL;
        sNames.insert(sNames.end(), ppzNames, ppzNames + uCount);
        iNamesLocale = iLocale;
        *piMembers = iMember;
        return hrNames;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID iInvoked_, REFIID tId, LCID iLocale, WORD wFlags_, DISPPARAMS * pParams,
                                     VARIANT * pResult_, EXCEPINFO * pExcepInfo, UINT * puArgErr) override {
        ++iInvokes;
        iInvoked = iInvoked_;
        fIdsWereNull = fIdsWereNull && tId == IID_NULL;
        iInvokeLocale = iLocale;
        wFlags = wFlags_;
        fHadArray = pParams->rgvarg != nullptr;
        tArguments.clear();
        if (fHadArray) tArguments.assign(pParams->rgvarg, pParams->rgvarg + pParams->cArgs);
        uNamed = pParams->cNamedArgs;
        fHadNamed = pParams->rgdispidNamedArgs != nullptr;
        if (fHadNamed) iNamed = *pParams->rgdispidNamedArgs;
        pResult = pResult_;
        EXCEPINFO const tZero{};
        fExcepInfoWasZero = std::memcmp(pExcepInfo, &tZero, sizeof tZero) == 0;
        uArgErrBefore = *puArgErr;
        if (tOnInvoke) tOnInvoke(pResult, pExcepInfo, puArgErr);
        return hrInvoke;
    }
};

/// Tells what the test sets.
class TFakeErrorInfo final : public TCounted<IErrorInfo> {
public:
    HRESULT hr = S_OK;

    HRESULT STDMETHODCALLTYPE GetGUID(GUID * pGuid) override {
        if (hr >= 0) *pGuid = IID_IDispatch;
        return hr;
    }
    HRESULT STDMETHODCALLTYPE GetSource(BSTR * psText) override { return hrGive(L"source", psText); }
    HRESULT STDMETHODCALLTYPE GetDescription(BSTR * psText) override { return hrGive(L"description", psText); }
    HRESULT STDMETHODCALLTYPE GetHelpFile(BSTR * psText) override { return hrGive(L"help file", psText); }
    HRESULT STDMETHODCALLTYPE GetHelpContext(DWORD * pdwContext) override {
        if (hr >= 0) *pdwContext = 17;
        return hr;
    }

private:
    HRESULT hrGive(wchar_t const * pzText, BSTR * psText) const {
        if (hr >= 0) *psText = SysAllocString(pzText);
        return hr;
    }
};

} // namespace zk_test
