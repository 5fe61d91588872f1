#include "tests/support/XmlDocument.h"

#include "ZkBase/Windows.h"
#include "tests/support/Narrow.h"

#include <ole2.h>

#include <oleauto.h>

#include <msxml2.h>

#include <cstring>
#include <stdexcept>
#include <utility>

namespace zk_test {

namespace {

// The compiler's libraries lack these.
constexpr GUID tDocumentClass{0xF5078F32, 0xC551, 0x11D3, {0x89, 0xB9, 0x00, 0x00, 0xF8, 0x1F, 0xE2, 0x21}};
constexpr GUID tDocumentInterface{0x2933BF95, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};

struct TReleaser {
    void operator()(IUnknown * p) const { p->Release(); }
};
template <typename T>
using TPointer = std::unique_ptr<T, TReleaser>;

class TBstr {
public:
    TBstr() = default;
    explicit TBstr(std::wstring const & s) : bs(SysAllocStringLen(s.data(), static_cast<UINT>(s.size()))) {}
    ~TBstr() { SysFreeString(bs); }
    TBstr(TBstr const &) = delete;
    TBstr & operator=(TBstr const &) = delete;

    [[nodiscard]] BSTR bsGet() const { return bs; }
    [[nodiscard]] BSTR * pbsPut() { return &bs; }
    [[nodiscard]] std::wstring sGet() const { return {bs, SysStringLen(bs)}; }

private:
    BSTR bs = nullptr;
};

class TVariantValue : public VARIANT {
public:
    TVariantValue() { VariantInit(this); }
    ~TVariantValue() { VariantClear(this); }
    TVariantValue(TVariantValue const &) = delete;
    TVariantValue & operator=(TVariantValue const &) = delete;
};

void Check(HRESULT hr, char const * pzWhat) {
    if (hr != S_OK) throw std::runtime_error(std::string(pzWhat) + ": " + std::to_string(hr));
}

/// The bytes as the parser takes them.
void PutBytes(VARIANT & v, std::string_view sBytes) {
    v.vt = VT_ARRAY | VT_UI1;
    v.parray = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(sBytes.size()));
    void * pTarget = nullptr;
    Check(SafeArrayAccessData(v.parray, &pTarget), "SafeArrayAccessData");
    std::memcpy(pTarget, sBytes.data(), sBytes.size());
    SafeArrayUnaccessData(v.parray);
}

struct TApartment {
    TApartment() { Check(FAILED(CoInitialize(nullptr)) ? E_FAIL : S_OK, "CoInitialize"); }
    ~TApartment() { CoUninitialize(); }
};

} // namespace

struct TXmlDocument::TState {
    TApartment tApartment;
    TPointer<IXMLDOMDocument2> pDocument;

    TState() {
        void * p = nullptr;
        Check(CoCreateInstance(tDocumentClass, nullptr, CLSCTX_INPROC_SERVER, tDocumentInterface, &p), "the parser");
        pDocument.reset(static_cast<IXMLDOMDocument2 *>(p));
        pDocument->put_async(VARIANT_FALSE);
        pDocument->put_validateOnParse(VARIANT_FALSE);
        pDocument->put_preserveWhiteSpace(VARIANT_TRUE);
        TVariantValue vLanguage;
        vLanguage.vt = VT_BSTR;
        vLanguage.bstrVal = SysAllocString(L"XPath");
        Check(pDocument->setProperty(TBstr(L"SelectionLanguage").bsGet(), vLanguage), "XPath");
    }

    [[nodiscard]] std::string sGetReason() const {
        IXMLDOMParseError * pError = nullptr;
        if (pDocument->get_parseError(&pError) != S_OK) return "no reason";
        TPointer<IXMLDOMParseError> const pOwned(pError);
        TBstr tReason;
        pError->get_reason(tReason.pbsPut());
        long lPosition = 0;
        pError->get_filepos(&lPosition);
        return sNarrow(tReason.sGet()) + " at " + std::to_string(lPosition);
    }
};

TXmlDocument::TXmlDocument(std::string_view sBytes) : pState(std::make_unique<TState>()) {
    TVariantValue vBytes;
    PutBytes(vBytes, sBytes);
    VARIANT_BOOL fDone = VARIANT_FALSE;
    if (pState->pDocument->load(vBytes, &fDone) != S_OK || !fDone) throw std::runtime_error(pState->sGetReason());
}

TXmlDocument::~TXmlDocument() = default;

std::wstring TXmlDocument::sGetText(std::wstring const & sXPath) const {
    IXMLDOMNode * pNode = nullptr;
    Check(pState->pDocument->selectSingleNode(TBstr(sXPath).bsGet(), &pNode), "the node");
    TPointer<IXMLDOMNode> const pOwned(pNode);
    TBstr tText;
    Check(pNode->get_text(tText.pbsPut()), "its text");
    return tText.sGet();
}

long TXmlDocument::lCount(std::wstring const & sXPath) const {
    IXMLDOMNodeList * pList = nullptr;
    Check(pState->pDocument->selectNodes(TBstr(sXPath).bsGet(), &pList), "the nodes");
    TPointer<IXMLDOMNodeList> const pOwned(pList);
    long lLength = 0;
    Check(pList->get_length(&lLength), "their number");
    return lLength;
}

} // namespace zk_test
