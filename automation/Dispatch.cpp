// The calls of the object that a variant holds.
#include "ZkTools/Variant.h"

#include "automation/AutoWrap.h"

#include <array>
#include <concepts>
#include <cstddef>
#include <stdexcept>

namespace {

/// The arguments of a call as the platform wants them: the last one first, as plain copies, which own nothing.
template <std::size_t uCount>
class TParameters {
public:
    template <std::same_as<tagVARIANT>... TArguments>
    explicit TParameters(TArguments const &... tGiven) noexcept {
        auto pNext = tArguments.rbegin();
        ((*pNext++ = tGiven), ...);
    }
    TParameters(TParameters const &) = delete;
    TParameters & operator=(TParameters const &) = delete;

    tagDISPPARAMS & tGet() noexcept { return tParams; }

private:
    std::array<tagVARIANT, uCount> tArguments;
    tagDISPPARAMS tParams{tArguments.data(), nullptr, uCount, 0};
};

template <>
class TParameters<0> {
public:
    tagDISPPARAMS & tGet() noexcept { return tParams; }

private:
    tagDISPPARAMS tParams{};
};

template <typename... TArguments>
TParameters(TArguments const &...) -> TParameters<sizeof...(TArguments)>;

/// The object in a variant, which may be null.
/// \param pzFailure what to throw when there is none
IDispatch * pGetObject(tagVARIANT const & tHolder, char const * pzFailure) {
    // Deliberate: types that only have these bits among others pass as well, such as VT_UNKNOWN, in which many programs
    // hold what is in truth an IDispatch.
    if ((tHolder.vt & VT_DISPATCH) != VT_DISPATCH) throw std::invalid_argument(pzFailure);
    return tHolder.pdispVal;
}

/// An empty name is none, which means the default member.
std::wstring const * psGetName(std::wstring const & sName) noexcept {
    return sName.empty() ? nullptr : &sName;
}

} // namespace

void TVariant::GetPropertyImp(std::wstring const & sName, tagVARIANT & tResult, tagDISPPARAMS & tParams) const {
    IDispatch * const pObject = pGetObject(*this, "GetProperty called on non IDispatch Variant.");
    AutoWrap(DISPATCH_PROPERTYGET, &tResult, pObject, psGetName(sName), &tParams);
}

void TVariant::PutPropertyImp(std::wstring const & sName, tagDISPPARAMS & tParams) const {
    IDispatch * const pObject = pGetObject(*this, "PutProperty called on non IDispatch Variant.");
    AutoWrap(DISPATCH_PROPERTYPUT, nullptr, pObject, psGetName(sName), &tParams);
}

void TVariant::PutRefPropertyImp(std::wstring const & sName, tagDISPPARAMS & tParams) const {
    // Deliberate: the text of PutProperty.
    IDispatch * const pObject = pGetObject(*this, "PutProperty called on non IDispatch Variant.");
    AutoWrap(DISPATCH_PROPERTYPUTREF, nullptr, pObject, psGetName(sName), &tParams);
}

void TVariant::CallImp(std::wstring const & sName, tagDISPPARAMS & tParams) const {
    IDispatch * const pObject = pGetObject(*this, "Method called on non IDispatch Variant.");
    AutoWrap(DISPATCH_METHOD, nullptr, pObject, psGetName(sName), &tParams);
}

void TVariant::CallRImp(std::wstring const & sName, tagVARIANT & tResult, tagDISPPARAMS & tParams) const {
    // Deliberate: the text is spelled as programs that look for it know it.
    IDispatch * const pObject = pGetObject(*this, "Fuction called on non IDispatch Variant.");
    AutoWrap(DISPATCH_METHOD, &tResult, pObject, psGetName(sName), &tParams);
}

void TVariant::GetProperty(std::wstring const & sName, TVariant & tResult) const {
    GetPropertyImp(sName, tResult, TParameters().tGet());
}

void TVariant::GetPropertyDefault(TVariant & tResult) const {
    GetProperty({}, tResult);
}

void TVariant::PutProperty(std::wstring const & sName) const {
    PutPropertyImp(sName, TParameters().tGet());
}

void TVariant::PutPropertyDefault() const {
    PutProperty({});
}

void TVariant::PutRefProperty(std::wstring const & sName) const {
    PutRefPropertyImp(sName, TParameters().tGet());
}

void TVariant::PutRefPropertyDefault() const {
    PutRefProperty({});
}

void TVariant::Call(std::wstring const & sName) const {
    CallImp(sName, TParameters().tGet());
}

void TVariant::CallDefault() const {
    Call(std::wstring());
}

void TVariant::CallR(std::wstring const & sName, TVariant & tResult) const {
    CallRImp(sName, tResult, TParameters().tGet());
}

void TVariant::CallRDefault(TVariant & tResult) const {
    CallR({}, tResult);
}

// The same with arguments, which are declared as ZKTOOLS_ARGUMENT and handed on as ZK_NAME.
#define ZK_NAME(n) t##n

#define ZK_DEFINE(TFamily, n)                                                                                          \
    void TVariant::TFamily(std::wstring const & sName, ZKTOOLS_LIST_##n(ZKTOOLS_ARGUMENT)) const {                     \
        TFamily##Imp(sName, TParameters(ZKTOOLS_LIST_##n(ZK_NAME)).tGet());                                            \
    }                                                                                                                  \
    void TVariant::TFamily##Default(ZKTOOLS_LIST_##n(ZKTOOLS_ARGUMENT)) const {                                        \
        TFamily##Imp({}, TParameters(ZKTOOLS_LIST_##n(ZK_NAME)).tGet());                                               \
    }
#define ZK_DEFINE_WITH_RESULT(TFamily, n)                                                                              \
    void TVariant::TFamily(std::wstring const & sName, TVariant & tResult, ZKTOOLS_LIST_##n(ZKTOOLS_ARGUMENT)) const { \
        TFamily##Imp(sName, tResult, TParameters(ZKTOOLS_LIST_##n(ZK_NAME)).tGet());                                   \
    }                                                                                                                  \
    void TVariant::TFamily##Default(TVariant & tResult, ZKTOOLS_LIST_##n(ZKTOOLS_ARGUMENT)) const {                    \
        TFamily##Imp({}, tResult, TParameters(ZKTOOLS_LIST_##n(ZK_NAME)).tGet());                                      \
    }

#define ZK_DEFINE_ALL(n)                                                                                               \
    ZK_DEFINE(PutProperty, n)                                                                                          \
    ZK_DEFINE(PutRefProperty, n)                                                                                       \
    ZK_DEFINE(Call, n)
#define ZK_DEFINE_ALL_WITH_RESULT(n)                                                                                   \
    ZK_DEFINE_WITH_RESULT(GetProperty, n)                                                                              \
    ZK_DEFINE_WITH_RESULT(CallR, n)

ZKTOOLS_FOR_COUNTS(ZK_DEFINE_ALL)
ZKTOOLS_FOR_RESULT_COUNTS(ZK_DEFINE_ALL_WITH_RESULT)
