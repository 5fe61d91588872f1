#include "ZkTools/OptionTree.h"

#include "ZkTools/Exceptions.h"
#include "ZkTools/MessageIds.h"
#include "options/Names.h"
#include "options/NodePool.h"

#include <algorithm>
#include <cwchar>
#include <memory>
#include <utility>

namespace {

constinit TNodePool tAttributePool(sizeof(TOptionAttribute));
constinit TNodePool tElementPool(sizeof(TOptionElement));

struct TPoolsAtUnload {
    ~TPoolsAtUnload() {
        tAttributePool.KeepNothing();
        tElementPool.KeepNothing();
    }
} const tPoolsAtUnload;

// What look-ups refer to that find nothing.
TOptionElement const tEmptyElement;
std::wstring const sEmptyText;

constexpr std::wstring_view sObjectTypeAttribute = L"ObjectType";

/// Where the first node of that name is; the count when there is none.
template <typename TArray>
std::size_t uFindNamed(TArray const & tArray, std::wstring_view sName) noexcept {
    auto const pFound =
        std::ranges::find_if(tArray, [sName](auto const * pNode) { return fEqualNames(pNode->sName, sName); });
    return static_cast<std::size_t>(pFound - tArray.begin());
}

/// As the platform's `_wcsicmp`: up to the first zero.
bool fEqualWithoutCase(std::wstring const & sFirst, std::wstring_view sSecond) noexcept {
    sSecond = sSecond.substr(0, sSecond.find(L'\0'));
    wchar_t const * const pzFirst = sFirst.c_str();
    return _wcsnicmp(pzFirst, sSecond.data(), sSecond.size()) == 0 && pzFirst[sSecond.size()] == L'\0';
}

} // namespace

TOptionAttribute::TOptionAttribute(TOptionElement * pOwner_, std::wstring_view sName_, std::wstring_view sValue_)
    : pOwner(pOwner_), sName(sName_), sValue(sValue_) {}

TOptionAttribute::TOptionAttribute(TOptionAttribute const & tOther) : sName(tOther.sName), sValue(tOther.sValue) {}

TOptionAttribute & TOptionAttribute::operator=(TOptionAttribute const & tOther) {
    sName = tOther.sName;
    sValue = tOther.sValue;
    return *this;
}

bool TOptionAttribute::operator==(TOptionAttribute const & tOther) const noexcept {
    return fEqualNames(sName, tOther.sName);
}

bool TOptionAttribute::operator<(TOptionAttribute const & tOther) const noexcept {
    return sName < tOther.sName;
}

void * TOptionAttribute::operator new(std::size_t uSize) {
    return uSize == sizeof(TOptionAttribute) ? tAttributePool.pTake() : ::operator new(uSize);
}

void TOptionAttribute::operator delete(void * pMemory, std::size_t uSize) noexcept {
    if (uSize == sizeof(TOptionAttribute)) {
        tAttributePool.Give(pMemory);
    } else {
        ::operator delete(pMemory);
    }
}

TOptionAttributeArray::TOptionAttributeArray(TOptionElement * pOwner_) noexcept : TIArrayAsVector(0), pOwner(pOwner_) {}
TOptionAttributeArray::~TOptionAttributeArray() = default;

TOptionElementArray::TOptionElementArray(TOptionElement * pOwner_) noexcept : TIArrayAsVector(0), pOwner(pOwner_) {}
TOptionElementArray::~TOptionElementArray() = default;

TOptionElement::TOptionElement() noexcept = default;

TOptionElement::TOptionElement(std::wstring_view sName_, std::wstring_view sText_) : sName(sName_), sText(sText_) {}

TOptionElement::TOptionElement(TOptionElement && tOther) noexcept : TOptionElement() {
    TakeOver(tOther);
}

TOptionElement & TOptionElement::operator=(TOptionElement && tOther) noexcept {
    TOptionElement tTaken(std::move(tOther)); // first, since it may be this element, or stand somewhere below it
    DestroyChildren();
    TakeOver(tTaken);
    return *this;
}

TOptionElement::~TOptionElement() {
    DestroyChildren();
}

/// Takes all that the other has, as a move does. This element has no children; its attributes go.
void TOptionElement::TakeOver(TOptionElement & tOther) noexcept {
    pParent = tOther.pParent;
    sName = std::move(tOther.sName);
    sText = std::move(tOther.sText);
    iPosition = tOther.iPosition;
    tAttributes.TakeOver(tOther.tAttributes);
    tAttributes.pOwner = tOther.tAttributes.pOwner;
    tElements.TakeOver(tOther.tElements);
    tElements.pOwner = tOther.tElements.pOwner;
    pAttributes = tOther.pAttributes != nullptr ? &tAttributes : nullptr;
    pElements = tOther.pElements != nullptr ? &tElements : nullptr;
    tOther.pAttributes = nullptr;
    tOther.pElements = nullptr;
}

int TOptionElement::iGetVersion() {
    return 0;
}

void TOptionElement::SetVersion(int) {}

/// Destroys the children, each before its parent, in a loop: a tree may be deeper than any stack. The pointers to the
/// parents are the way back up, so they are set on the way down.
void TOptionElement::DestroyChildren() noexcept {
    TOptionElement * pElement = this;
    for (;;) {
        TOptionElementArray & tChildren = pElement->tElements;
        if (!tChildren.OwnsElements()) {
            for (TOptionElement * const pChild : tChildren)
                pChild->pParent = nullptr;
            tChildren.Flush();
        }
        if (!tChildren.IsEmpty()) {
            TOptionElement * const pChild = tChildren.tQueue[0];
            tChildren.tQueue.Erase(0);
            pChild->pParent = pElement;
            pElement = pChild;
        } else if (pElement == this) {
            return;
        } else {
            TOptionElement * const pUp = std::exchange(pElement->pParent, nullptr);
            delete pElement;
            pElement = pUp;
        }
    }
}

/// Copies the attributes and makes room for the children. This element has none of both.
void TOptionElement::CopyAttributes(TOptionElement const & tSource) {
    tAttributes.tQueue.Reserve(tSource.tAttributes.tQueue.uGetCount());
    for (TOptionAttribute const * const pAttribute : tSource.tAttributes) {
        pAppendAttribute(pAttribute->sName, pAttribute->sValue);
    }
    tElements.tQueue.Reserve(tSource.tElements.tQueue.uGetCount());
}

/// Becomes a copy of the other, in a loop: a tree may be deeper than any stack. This element is empty.
void TOptionElement::CopyTree(TOptionElement const & tSource) {
    struct TLevel {
        TOptionElement const * pSource;
        TOptionElement * pTarget;
        std::size_t uNext; // the child of pSource whose turn it is
    };
    sName = tSource.sName;
    sText = tSource.sText;
    CopyAttributes(tSource);
    std::vector<TLevel> tLevels{{&tSource, this, 0}};
    while (!tLevels.empty()) {
        TLevel & tLevel = tLevels.back();
        auto const & tChildren = tLevel.pSource->tElements.tQueue;
        if (tLevel.uNext == tChildren.uGetCount()) {
            tLevels.pop_back();
            continue;
        }
        TOptionElement const & tChild = *tChildren[tLevel.uNext++];
        TOptionElement * const pCopy = tLevel.pTarget->pAddElement(tChild.sName, tChild.sText);
        pCopy->CopyAttributes(tChild);
        if (!tChild.tElements.IsEmpty()) tLevels.push_back({&tChild, pCopy, 0});
    }
}

void TOptionElement::Clone(TOptionElement const & tSource) {
    TOptionElement tCopy;
    // Deliberate: what is to be replaced goes before the source is read, and here they are the same.
    if (&tSource == this) {
        tCopy.sName = sName;
        tCopy.sText = sText;
    } else {
        tCopy.CopyTree(tSource);
    }

    tAttributes.Flush();
    DestroyChildren();
    pParent = nullptr;
    sName = std::move(tCopy.sName);
    sText = std::move(tCopy.sText);
    tAttributes.tQueue = std::move(tCopy.tAttributes.tQueue);
    tElements.tQueue = std::move(tCopy.tElements.tQueue);
    for (TOptionAttribute * const pAttribute : tAttributes)
        pAttribute->pOwner = this;
    for (TOptionElement * const pChild : tElements)
        pChild->pParent = this;
}

void TOptionElement::Flush() noexcept {
    sName.clear();
    sText.clear();
    tAttributes.Flush();
    DestroyChildren();
}

bool TOptionElement::operator==(TOptionElement const & tOther) const noexcept {
    return fEqualNames(sName, tOther.sName);
}

bool TOptionElement::operator<(TOptionElement const & tOther) const noexcept {
    return sName < tOther.sName;
}

int TOptionElement::iCountAttributes() const noexcept {
    return tAttributes.GetItemsInContainer();
}

std::size_t TOptionElement::uFindAttribute(std::wstring_view sAttribute) const noexcept {
    return uFindNamed(tAttributes, sAttribute);
}

TOptionAttribute const * TOptionElement::pGetAttribute(int iIndex) const {
    return tAttributes.tQueue[tAttributes.uChecked(iIndex)];
}

TOptionAttribute const * TOptionElement::pGetAttribute(std::wstring_view sAttribute) const noexcept {
    std::size_t const uIndex = uFindAttribute(sAttribute);
    return uIndex < tAttributes.tQueue.uGetCount() ? tAttributes.tQueue[uIndex] : nullptr;
}

TOptionAttribute * TOptionElement::pGetAttributeRW(std::wstring_view sAttribute) noexcept {
    return const_cast<TOptionAttribute *>(std::as_const(*this).pGetAttribute(sAttribute));
}

std::wstring const & TOptionElement::sGetAttributeValue(int iIndex) const {
    return pGetAttribute(iIndex)->sValue;
}

std::wstring const & TOptionElement::sGetAttributeValue(std::wstring_view sAttribute) const noexcept {
    TOptionAttribute const * const pAttribute = pGetAttribute(sAttribute);
    return pAttribute != nullptr ? pAttribute->sValue : sEmptyText;
}

std::optional<std::wstring> TOptionElement::psGetAttributeValue(std::wstring_view sAttribute) const {
    TOptionAttribute const * const pAttribute = pGetAttribute(sAttribute);
    if (pAttribute == nullptr) return std::nullopt;
    return pAttribute->sValue;
}

/// Appends, whatever attributes there are.
TOptionAttribute * TOptionElement::pAppendAttribute(std::wstring_view sAttribute, std::wstring_view sValue) {
    std::unique_ptr<TOptionAttribute> pNew(new TOptionAttribute(this, sAttribute, sValue));
    tAttributes.Add(pNew.get());
    return pNew.release();
}

TOptionAttribute * TOptionElement::pAddAttribute(std::wstring_view sAttribute, std::wstring_view sValue) {
    std::size_t const uOld = uFindAttribute(sAttribute);
    // Before the old one goes: name and value may be its own.
    TOptionAttribute * const pNew = pAppendAttribute(sAttribute, sValue);
    if (uOld < tAttributes.tQueue.uGetCount() - 1) tAttributes.Destroy(static_cast<int>(uOld));
    return pNew;
}

EObjectType TOptionElement::eGetObjectType() const {
    std::wstring_view const sType = sGetAttributeValue(sObjectTypeAttribute);
    return sType.empty() ? eotNone : ObjectType::to_enum(sType);
}

void TOptionElement::PutObjectType(EObjectType eType) {
    pAddAttribute(sObjectTypeAttribute, eType == eotNone ? std::wstring() : ObjectType::to_string(eType));
}

int TOptionElement::iCountElements() const noexcept {
    return tElements.GetItemsInContainer();
}

int TOptionElement::iCountElements(std::wstring_view sElement) const noexcept {
    return static_cast<int>(std::ranges::count_if(
        tElements, [sElement](TOptionElement const * pChild) { return fEqualWithoutCase(pChild->sName, sElement); }));
}

std::size_t TOptionElement::uFindElement(std::wstring_view sElement) const noexcept {
    return uFindNamed(tElements, sElement);
}

std::size_t TOptionElement::uFindElement(TOptionElement const * pChild) const noexcept {
    return static_cast<std::size_t>(std::ranges::find(tElements, pChild) - tElements.begin());
}

TOptionElement const * TOptionElement::pGetElement(int iIndex) const {
    return tElements.tQueue[tElements.uChecked(iIndex)];
}

TOptionElement * TOptionElement::pGetElementRW(int iIndex) {
    return tElements.tQueue[tElements.uChecked(iIndex)];
}

TOptionElement const * TOptionElement::pGetElement(std::wstring_view sElement) const noexcept {
    std::size_t const uIndex = uFindElement(sElement);
    return uIndex < tElements.tQueue.uGetCount() ? tElements.tQueue[uIndex] : nullptr;
}

TOptionElement * TOptionElement::pGetElementRW(std::wstring_view sElement) noexcept {
    return const_cast<TOptionElement *>(std::as_const(*this).pGetElement(sElement));
}

TOptionElement const & TOptionElement::getElement(std::wstring_view sElement) const {
    TOptionElement const * const pChild = pGetElement(sElement);
    if (pChild == nullptr) ThrowMissing(sElement);
    return *pChild;
}

TOptionElement & TOptionElement::getElementRW(std::wstring_view sElement) {
    return const_cast<TOptionElement &>(std::as_const(*this).getElement(sElement));
}

void TOptionElement::ThrowMissing(std::wstring_view sElement) const {
    std::wstring const sMissing(sElement);
    if (iPosition == -1) throw TXZkTools(IDS_OPTION_ELEMENT_MISSING, sMissing.c_str(), sName.c_str());
    throw TXZkTools(IDS_OPTION_ELEMENT_MISSING_AT_POSITION, iPosition, sMissing.c_str(), sName.c_str());
}

TOptionElement const & TOptionElement::operator()(std::wstring_view sElement) const noexcept {
    TOptionElement const * const pChild = pGetElement(sElement);
    return pChild != nullptr ? *pChild : tEmptyElement;
}

std::wstring const & TOptionElement::sGetElementText(int iIndex) const {
    return pGetElement(iIndex)->sText;
}

std::wstring const & TOptionElement::sGetElementText(std::wstring_view sElement) const noexcept {
    TOptionElement const * const pChild = pGetElement(sElement);
    return pChild != nullptr ? pChild->sText : sEmptyText;
}

TOptionElement * TOptionElement::pAddElement(std::wstring_view sElement, std::wstring_view sNewText) {
    return pAddElementAt(sElement, sNewText, iCountElements());
}

TOptionElement * TOptionElement::pAddElementAt(std::wstring_view sElement, std::wstring_view sNewText, int iIndex) {
    std::unique_ptr<TOptionElement> pNew(new TOptionElement(sElement, sNewText));
    AddElementAt(pNew.get(), iIndex);
    return pNew.release();
}

TOptionElement & TOptionElement::operator+(std::wstring_view sElement) {
    return *pAddElement(sElement, {});
}

void TOptionElement::AddElement(TOptionElement * pChild) {
    AddElementAt(pChild, iCountElements());
}

void TOptionElement::AddElementAt(TOptionElement * pChild, int iIndex) {
    tElements.AddAt(pChild, iIndex);
    pChild->pParent = this;
}

/// Takes the child at `uIndex` out, if there is one.
TOptionElement * TOptionElement::pDetach(std::size_t uIndex) noexcept {
    auto & tQueue = tElements.tQueue;
    if (uIndex >= tQueue.uGetCount()) return nullptr;
    TOptionElement * const pChild = tQueue[uIndex];
    tQueue.Erase(uIndex);
    pChild->pParent = nullptr;
    return pChild;
}

void TOptionElement::DestroyElement(TOptionElement * pChild) noexcept {
    delete pDetach(uFindElement(pChild));
}

void TOptionElement::DestroyElement(int iIndex) {
    delete pDetach(tElements.uChecked(iIndex));
}

void TOptionElement::DestroyElement(std::wstring_view sElement) noexcept {
    delete pDetach(uFindElement(sElement));
}

void TOptionElement::RemoveElement(TOptionElement * pChild) noexcept {
    static_cast<void>(pDetach(uFindElement(pChild)));
}

void TOptionElement::RemoveElement(int iIndex) {
    static_cast<void>(pDetach(tElements.uChecked(iIndex)));
}

void * TOptionElement::operator new(std::size_t uSize) {
    return uSize == sizeof(TOptionElement) ? tElementPool.pTake() : ::operator new(uSize);
}

void TOptionElement::operator delete(void * pMemory, std::size_t uSize) noexcept {
    if (uSize == sizeof(TOptionElement)) {
        tElementPool.Give(pMemory);
    } else {
        ::operator delete(pMemory);
    }
}

void ReadOption(unsigned short & uValue, TOptionElement const & tParent, std::wstring_view sElement,
                wchar_t const * pzTrue) noexcept {
    ReadOption(uValue, tParent, sElement, pzTrue, uValue);
}

void ReadOption(unsigned short & uValue, TOptionElement const & tParent, std::wstring_view sElement,
                wchar_t const * pzTrue, unsigned short uDefault) noexcept {
    TOptionElement const * const pChild = tParent.pGetElement(sElement);
    uValue = pChild == nullptr ? uDefault : _wcsicmp(pChild->sText.c_str(), pzTrue) == 0 ? 1 : 0;
}
