// What an alias is in an option tree.
#include "ZkTools/Alias.h"

#include "ZkTools/OptionTree.h"

namespace {

/// Gives the child its text, and makes it where it is missing.
void PutElement(TOptionElement & tElement, std::wstring_view sName, std::wstring const & sText) {
    if (TOptionElement * const pChild = tElement.pGetElementRW(sName)) {
        pChild->SetText(sText);
    } else {
        tElement.pAddElement(sName, sText);
    }
}

/// The same; without a text there is no child.
void PutElementUnlessEmpty(TOptionElement & tElement, std::wstring_view sName, std::wstring const & sText) {
    if (sText.empty()) {
        tElement.DestroyElement(sName);
    } else {
        PutElement(tElement, sName, sText);
    }
}

} // namespace

void TAlias::Read(TOptionElement const & tElement) {
    sTag = tElement.sGetElementText(L"Tag");
    sVersion = tElement.sGetElementText(L"Version");
    sVariant = tElement.sGetElementText(L"Variant");
}

void TAlias::Write(TOptionElement & tElement) const {
    PutElement(tElement, L"Tag", sTag);
    PutElementUnlessEmpty(tElement, L"Version", sVersion);
    PutElementUnlessEmpty(tElement, L"Variant", sVariant);
}

void TAlias::Read(TOptionElement const & tElement, EObjectType & eType) {
    Read(tElement);
    eType = tElement.eGetObjectType();
}

void TAlias::Write(TOptionElement & tElement, EObjectType eType) const {
    Write(tElement);
    tElement.PutObjectType(eType);
}

void TAlias::ReadAttr(TOptionElement const & tElement) {
    sTag = tElement.sGetAttributeValue(L"tag");
    sVersion = tElement.sGetAttributeValue(L"version");
    sVariant = tElement.sGetAttributeValue(L"variant");
}

void TAlias::WriteAttr(TOptionElement & tElement) const {
    tElement.pAddAttribute(L"tag", sTag);
    if (!sVersion.empty()) tElement.pAddAttribute(L"version", sVersion);
    if (!sVariant.empty()) tElement.pAddAttribute(L"variant", sVariant);
}

TOptionElement & TAlias::operator<<(TOptionElement & tElement) const {
    Write(tElement);
    return tElement;
}

TOptionElement const & TAlias::operator>>(TOptionElement const & tElement) {
    Read(tElement);
    return tElement;
}

TOptionElement & operator<<(TOptionElement & tElement, TAlias const & tAlias) {
    tAlias.Write(tElement);
    return tElement;
}

TOptionElement const & operator>>(TOptionElement const & tElement, TAlias & tAlias) {
    tAlias.Read(tElement);
    return tElement;
}

void TFullAlias::Read(TOptionElement const & tElement) {
    TAlias::Read(tElement);
    sDirectory = tElement.sGetElementText(L"Directory");
}

void TFullAlias::Write(TOptionElement & tElement) const {
    TAlias::Write(tElement);
    PutElementUnlessEmpty(tElement, L"Directory", sDirectory);
}
