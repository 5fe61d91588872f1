// The values. The calls stand in Dispatch.cpp.
#include "ZkTools/Variant.h"

#include "ZkTools/ComError.h"
#include "frame/ComOwners.h"

#include <cstring>

// The types of the interface are those of the platform.
#ifdef _WIN64
static_assert(sizeof(tagVARIANT) == 24);
#else
static_assert(sizeof(tagVARIANT) == 16);
#endif
static_assert(VT_EMPTY == 0 && VT_NULL == 1 && VT_I2 == 2 && VT_I4 == 3 && VT_R4 == 4 && VT_R8 == 5 && VT_CY == 6);
static_assert(VT_DATE == 7 && VT_BSTR == 8 && VT_DISPATCH == 9 && VT_ERROR == 10 && VT_BOOL == 11);
static_assert(VT_UNKNOWN == 13 && VT_UI1 == 17 && VARIANT_TRUE == -1 && VARIANT_FALSE == 0);

namespace {

void Check(HRESULT hr) {
    if (hr < 0) throw TComError(hr, nullptr, false);
}

/// The platform's functions want their source without const; they do not change it.
tagVARIANT * pMutable(tagVARIANT const * p) noexcept {
    return const_cast<tagVARIANT *>(p);
}

VARIANT_BOOL iMakeBool(bool fValue) noexcept {
    return fValue ? VARIANT_TRUE : VARIANT_FALSE;
}

/// Whether values of a type own nothing: they are copied and dropped here, at a fraction of the platform's time, with
/// its result.
constexpr bool fIsPlain(VARTYPE uType) noexcept {
    constexpr unsigned int uPlain = 1u << VT_EMPTY | 1u << VT_NULL | 1u << VT_I2 | 1u << VT_I4 | 1u << VT_R4 |
                                    1u << VT_R8 | 1u << VT_CY | 1u << VT_DATE | 1u << VT_ERROR | 1u << VT_BOOL |
                                    1u << VT_UI1;
    return uType <= VT_UI1 && (uPlain >> uType & 1) != 0;
}

void Copy(tagVARIANT & tTarget, tagVARIANT const & tSource) {
    if (fIsPlain(tTarget.vt) && fIsPlain(tSource.vt))
        tTarget = tSource;
    else
        Check(VariantCopy(&tTarget, pMutable(&tSource)));
}

/// Moves the bytes of the source, which owns nothing then.
void Move(tagVARIANT & tTarget, tagVARIANT & tSource) noexcept {
    tTarget = tSource;
    tSource.vt = VT_EMPTY;
}

/// Null gives null, all else a string.
TBstr sMakeText(wchar_t const * pzText) {
    TBstr sText(SysAllocString(pzText));
    if (sText == nullptr && pzText != nullptr) Check(E_OUTOFMEMORY);
    return sText;
}

TBstr sMakeText(char const * pzText) {
    if (pzText == nullptr) return nullptr;
    int const iUnits = MultiByteToWideChar(CP_ACP, 0, pzText, -1, nullptr, 0); // with the terminator
    TBstr sText(iUnits > 0 ? SysAllocStringLen(nullptr, static_cast<UINT>(iUnits - 1)) : nullptr);
    if (sText == nullptr) Check(E_OUTOFMEMORY);
    MultiByteToWideChar(CP_ACP, 0, pzText, -1, sText.get(), iUnits);
    return sText;
}

/// Gives the variant a type; what it holds is cleared only when it has another one.
void SetType(TVariant & tTarget, VARTYPE uType) {
    if (tTarget.vt == uType) return;
    tTarget.Clear();
    tTarget.vt = uType;
}

/// Made before what is held goes: the text may be a part of it.
void SetText(TVariant & tTarget, TBstr sText) {
    tTarget.Clear();
    tTarget.vt = VT_BSTR;
    tTarget.bstrVal = sText.release();
}

/// Reads the value in a type, converted where it has another one.
template <typename TRead>
auto tReadAs(VARTYPE uType, TVariant const & tSource, TRead const & tRead) {
    if (tSource.vt == uType) return tRead(tSource);
    TVariant tConverted;
    Check(VariantChangeType(&tConverted, pMutable(&tSource), 0, uType));
    return tRead(tConverted);
}

/// An interface pointer with a reference for the caller.
template <typename TInterface>
TInterface * pWithReference(TInterface * p) {
    // Deliberate: null is not tested for. Who asks for an object must know that there is one.
    p->AddRef();
    return p;
}

/// The same bytes. Null is an empty text.
bool fSameText(BSTR sLeft, BSTR sRight) noexcept {
    UINT const uBytes = SysStringByteLen(sLeft);
    return uBytes == SysStringByteLen(sRight) && (uBytes == 0 || std::memcmp(sLeft, sRight, uBytes) == 0);
}

/// Two values of the same type.
bool fSameValue(tagVARIANT const & tLeft, tagVARIANT const & tRight) {
    switch (tLeft.vt) {
    case VT_EMPTY:
    case VT_NULL:
        return true;
    case VT_I2:
    case VT_BOOL:
        return tLeft.iVal == tRight.iVal;
    case VT_I4:
    case VT_ERROR:
        return tLeft.lVal == tRight.lVal;
    case VT_DISPATCH:
    case VT_UNKNOWN:
        return tLeft.punkVal == tRight.punkVal;
    case VT_R4:
        return tLeft.fltVal == tRight.fltVal;
    case VT_R8:
    case VT_DATE:
        return tLeft.dblVal == tRight.dblVal;
    case VT_CY:
        return tLeft.cyVal.int64 == tRight.cyVal.int64;
    case VT_BSTR:
        return fSameText(tLeft.bstrVal, tRight.bstrVal);
    case VT_UI1:
        return tLeft.bVal == tRight.bVal;
    default:
        throw TComError(E_INVALIDARG, nullptr, false);
    }
}

} // namespace

void TVariant::Initialize() noexcept {
    vt = VT_EMPTY; // all that VariantInit does
}

TVariant::TVariant() : tagVARIANT() {
    Initialize();
}

TVariant::TVariant(tagVARIANT const & tSource) : TVariant(&tSource) {}

TVariant::TVariant(tagVARIANT const * pSource) : tagVARIANT() {
    Initialize();
    Copy(*this, *pSource);
}

TVariant::TVariant(TVariant const & tSource) : TVariant(static_cast<tagVARIANT const *>(&tSource)) {}

TVariant::TVariant(tagVARIANT & tSource, bool fCopy) : tagVARIANT() {
    Initialize();
    if (fCopy)
        Copy(*this, tSource);
    else
        Move(*this, tSource);
}

TVariant::TVariant(short iValue, unsigned short uType) : tagVARIANT() {
    Initialize();
    if (uType == VT_I2)
        iVal = iValue;
    else if (uType == VT_BOOL)
        boolVal = iMakeBool(iValue != 0);
    else
        Check(E_INVALIDARG);
    vt = uType;
}

TVariant::TVariant(long iValue, unsigned short uType) : tagVARIANT() {
    Initialize();
    if (uType == VT_I4 || uType == VT_ERROR)
        lVal = iValue;
    else if (uType == VT_BOOL)
        boolVal = iMakeBool(iValue != 0);
    else
        Check(E_INVALIDARG);
    vt = uType;
}

TVariant::TVariant(float dValue) : tagVARIANT() {
    Initialize();
    vt = VT_R4;
    fltVal = dValue;
}

TVariant::TVariant(double dValue, unsigned short uType) : tagVARIANT() {
    Initialize();
    if (uType != VT_R8 && uType != VT_DATE) Check(E_INVALIDARG);
    vt = uType;
    dblVal = dValue;
}

TVariant::TVariant(tagCY const & tValue) : tagVARIANT() {
    Initialize();
    vt = VT_CY;
    cyVal = tValue;
}

// Deliberate: an empty text is an empty BSTR here and a null one in the assignment. Servers tell the two apart.
TVariant::TVariant(std::wstring const & sText) : TVariant(sText.c_str()) {}

TVariant::TVariant(wchar_t const * pzText) : tagVARIANT() {
    Initialize();
    bstrVal = sMakeText(pzText).release();
    vt = VT_BSTR;
}

TVariant::TVariant(char const * pzText) : tagVARIANT() {
    Initialize();
    bstrVal = sMakeText(pzText).release();
    vt = VT_BSTR;
}

TVariant::TVariant(IDispatch * p, bool fAddRef) : tagVARIANT() {
    Initialize();
    vt = VT_DISPATCH;
    pdispVal = fAddRef ? pWithReference(p) : p;
}

TVariant::TVariant(IUnknown * p, bool fAddRef) : tagVARIANT() {
    Initialize();
    vt = VT_UNKNOWN;
    punkVal = fAddRef ? pWithReference(p) : p;
}

TVariant::TVariant(bool fValue) : tagVARIANT() {
    Initialize();
    vt = VT_BOOL;
    boolVal = iMakeBool(fValue);
}

TVariant::TVariant(unsigned char uValue) : tagVARIANT() {
    Initialize();
    vt = VT_UI1;
    bVal = uValue;
}

// Deliberate: it throws. What cannot be cleared is an array that is still locked or a type that is none, both faults
// of the program that must not be lost.
TVariant::~TVariant() noexcept(false) {
    Clear();
}

TVariant::operator short() const {
    return tReadAs(VT_I2, *this, [](tagVARIANT const & t) { return t.iVal; });
}

TVariant::operator long() const {
    return tReadAs(VT_I4, *this, [](tagVARIANT const & t) { return t.lVal; });
}

TVariant::operator float() const {
    return tReadAs(VT_R4, *this, [](tagVARIANT const & t) { return t.fltVal; });
}

TVariant::operator double() const {
    return tReadAs(VT_R8, *this, [](tagVARIANT const & t) { return t.dblVal; });
}

TVariant::operator tagCY() const {
    return tReadAs(VT_CY, *this, [](tagVARIANT const & t) { return t.cyVal; });
}

TVariant::operator std::wstring() const {
    return tReadAs(VT_BSTR, *this,
                   [](tagVARIANT const & t) { return std::wstring(t.bstrVal != nullptr ? t.bstrVal : L""); });
}

TVariant::operator IDispatch *() const {
    return tReadAs(VT_DISPATCH, *this, [](tagVARIANT const & t) { return pWithReference(t.pdispVal); });
}

TVariant::operator bool() const {
    return tReadAs(VT_BOOL, *this, [](tagVARIANT const & t) { return t.boolVal != VARIANT_FALSE; });
}

TVariant::operator IUnknown *() const {
    return tReadAs(VT_UNKNOWN, *this, [](tagVARIANT const & t) { return pWithReference(t.punkVal); });
}

TVariant::operator unsigned char() const {
    return tReadAs(VT_UI1, *this, [](tagVARIANT const & t) { return t.bVal; });
}

TVariant & TVariant::operator=(tagVARIANT const & tSource) {
    return *this = &tSource;
}

TVariant & TVariant::operator=(tagVARIANT const * pSource) {
    Copy(*this, *pSource);
    return *this;
}

TVariant & TVariant::operator=(TVariant const & tSource) {
    return *this = static_cast<tagVARIANT const *>(&tSource);
}

TVariant & TVariant::operator=(short iValue) {
    if (vt == VT_BOOL) return *this = iValue != 0;
    SetType(*this, VT_I2);
    iVal = iValue;
    return *this;
}

TVariant & TVariant::operator=(long iValue) {
    if (vt == VT_BOOL) return *this = iValue != 0;
    if (vt != VT_ERROR) SetType(*this, VT_I4);
    lVal = iValue;
    return *this;
}

TVariant & TVariant::operator=(float dValue) {
    SetType(*this, VT_R4);
    fltVal = dValue;
    return *this;
}

TVariant & TVariant::operator=(double dValue) {
    if (vt != VT_DATE) SetType(*this, VT_R8);
    dblVal = dValue;
    return *this;
}

TVariant & TVariant::operator=(tagCY const & tValue) {
    CY const tCopy = tValue; // it may be a part of what goes
    SetType(*this, VT_CY);
    cyVal = tCopy;
    return *this;
}

TVariant & TVariant::operator=(std::wstring const & sText) {
    SetText(*this, sText.empty() ? nullptr : sMakeText(sText.c_str()));
    return *this;
}

TVariant & TVariant::operator=(wchar_t const * pzText) {
    SetText(*this, sMakeText(pzText));
    return *this;
}

TVariant & TVariant::operator=(char const * pzText) {
    SetString(pzText);
    return *this;
}

TVariant & TVariant::operator=(IDispatch * p) {
    TReference<IDispatch> pNew(pWithReference(p)); // before what is held goes: it may be the same object
    Clear();
    vt = VT_DISPATCH;
    pdispVal = pNew.release();
    return *this;
}

TVariant & TVariant::operator=(IUnknown * p) {
    TReference<IUnknown> pNew(pWithReference(p));
    Clear();
    vt = VT_UNKNOWN;
    punkVal = pNew.release();
    return *this;
}

TVariant & TVariant::operator=(bool fValue) {
    SetType(*this, VT_BOOL);
    boolVal = iMakeBool(fValue);
    return *this;
}

TVariant & TVariant::operator=(unsigned char uValue) {
    SetType(*this, VT_UI1);
    bVal = uValue;
    return *this;
}

bool TVariant::operator==(tagVARIANT const * p) const {
    return p == this || (vt == p->vt && fSameValue(*this, *p));
}

bool TVariant::operator==(tagVARIANT const & t) const {
    return *this == &t;
}

bool TVariant::operator!=(tagVARIANT const * p) const {
    return !(*this == p);
}

bool TVariant::operator!=(tagVARIANT const & t) const {
    return !(*this == &t);
}

bool TVariant::operator!() const noexcept {
    return vt == VT_EMPTY;
}

void TVariant::Clear() {
    if (fIsPlain(vt))
        vt = VT_EMPTY;
    else
        Check(VariantClear(this));
}

void TVariant::Attach(tagVARIANT & tSource) {
    Clear();
    Move(*this, tSource);
}

tagVARIANT TVariant::Detach() noexcept {
    tagVARIANT tResult;
    Move(tResult, *this);
    return tResult;
}

void TVariant::ChangeType(unsigned short uType, TVariant const * pSource) {
    if (pSource == nullptr) pSource = this;
    if (pSource == this && vt == uType) return;
    Check(VariantChangeType(this, pMutable(pSource), 0, uType));
}

void TVariant::SetString(char const * pzText) {
    SetText(*this, sMakeText(pzText));
}
