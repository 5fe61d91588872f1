// Automation values and calls beside the platform's own functions that they stand on.
#include "ZkTools/Variant.h"
#include "bench/Ratio.h"

#include <objbase.h>
#include <oleauto.h>

#include <array>
#include <stdexcept>
#include <string>

namespace {

constexpr int iTimes = 2000;

void Repeat(auto const & tWork) {
    for (int i = 0; i < iTimes; ++i)
        tWork();
}

/// A text of an XML document, which is a server's object that every Windows has.
TVariant tMakeText() {
    CLSID tClass{};
    IDispatch * pDocument = nullptr;
    if (CLSIDFromProgID(L"MSXML2.DOMDocument", &tClass) < 0 ||
        CoCreateInstance(tClass, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, reinterpret_cast<void **>(&pDocument)) <
            0)
        throw std::runtime_error("no XML document");
    TVariant const tDocument(pDocument, false);
    TVariant tContent(L"wheel");
    TVariant tText;
    tDocument.CallR(L"createTextNode", tText, tContent);
    return tText;
}

/// What a call by name comes to.
void CallBare(IDispatch * pObject, std::wstring const & sName, std::array<tagVARIANT, 3> & tReversed) {
    auto * pzName = const_cast<wchar_t *>(sName.c_str());
    DISPID iMember = 0;
    if (pObject->GetIDsOfNames(IID_NULL, &pzName, 1, LOCALE_USER_DEFAULT, &iMember) < 0)
        throw std::runtime_error("no such member");
    DISPPARAMS tParams{tReversed.data(), nullptr, 3, 0};
    EXCEPINFO tExcepInfo{};
    UINT uArgErr = 0;
    if (pObject->Invoke(iMember, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &tParams, nullptr, &tExcepInfo,
                        &uArgErr) < 0)
        throw std::runtime_error("refused");
}

void AddCall(TVariant const & tText) {
    zk_bench::Add(
        "Call with three arguments", zk_bench::EBound::eTimesTheTime, 1.2,
        [&] {
            std::wstring const sName = L"replaceData";
            TVariant tOffset(0L);
            TVariant tCount(1L);
            TVariant tNew(L"w");
            Repeat([&] { tText.Call(sName, tOffset, tCount, tNew); });
        },
        [&] {
            std::wstring const sName = L"replaceData";
            TVariant const tOffset(0L);
            TVariant const tCount(1L);
            TVariant const tNew(L"w");
            std::array<tagVARIANT, 3> tReversed{tNew, tCount, tOffset};
            Repeat([&] { CallBare(tText.pdispVal, sName, tReversed); });
        });
}

void AddMaking(char const * pzName, auto const & tOurs, auto const & tBare) {
    zk_bench::Add(
        pzName, zk_bench::EBound::eTimesTheTime, 1.1, [=] { Repeat(tOurs); }, [=] { Repeat(tBare); });
}

void AddCopy(char const * pzName, TVariant const & tSource) {
    AddMaking(
        pzName,
        [&] {
            TVariant const t(tSource);
            zk_bench::Keep(&t);
        },
        [&] {
            VARIANT t;
            VariantInit(&t);
            VariantCopy(&t, const_cast<TVariant *>(&tSource));
            zk_bench::Keep(&t);
            VariantClear(&t);
        });
}

void AddComparison(char const * pzName, TVariant const & tLeft, TVariant const & tRight) {
    AddMaking(
        pzName,
        [&] {
            bool const fSame = tLeft == tRight;
            zk_bench::Keep(&fSame);
        },
        [&] {
            HRESULT const hr =
                VarCmp(const_cast<TVariant *>(&tLeft), const_cast<TVariant *>(&tRight), LOCALE_USER_DEFAULT, 0);
            zk_bench::Keep(&hr);
        });
}

} // namespace

int main(int iCount, char ** ppArguments) {
    if (CoInitialize(nullptr) < 0) return 1;
    TVariant const tText = tMakeText();
    AddCall(tText);

    AddMaking(
        "construction from a number",
        [] {
            TVariant const t(17L, VT_I4);
            zk_bench::Keep(&t);
        },
        [] {
            VARIANT t;
            VariantInit(&t);
            t.vt = VT_I4;
            t.lVal = 17;
            zk_bench::Keep(&t);
            VariantClear(&t);
        });
    AddMaking(
        "construction from a text",
        [] {
            TVariant const t(L"big wheel");
            zk_bench::Keep(&t);
        },
        [] {
            VARIANT t;
            VariantInit(&t);
            t.vt = VT_BSTR;
            t.bstrVal = SysAllocString(L"big wheel");
            zk_bench::Keep(&t);
            VariantClear(&t);
        });
    TVariant const tNumber(17L);
    TVariant const tWord(L"big wheel");
    TVariant const tSame(L"big wheel");
    AddCopy("copy of a number", tNumber);
    AddCopy("copy of a text", tWord);
    AddCopy("copy of an object", tText);
    TVariant const tSameNumber(17L);
    AddComparison("comparison of numbers", tNumber, tSameNumber);
    AddComparison("comparison of texts", tWord, tSame);
    return zk_bench::iRun(iCount, ppArguments);
}
