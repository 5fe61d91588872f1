// Calls of an object that writes down what reaches it.
#include "ZkTools/Variant.h"

#include "tests/automation/Fakes.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

using namespace zk_test;

namespace {

enum EFamily { eGet, ePut, ePutRef, eCall, eCallR };

struct TFamily {
    EFamily eFamily;
    WORD wFlags;
    bool fResult;
    char const * pzNoObject;
};
constexpr std::array<TFamily, 5> tFamilies{{
    {eGet, 2, true, "GetProperty called on non IDispatch Variant."},
    {ePut, 4, false, "PutProperty called on non IDispatch Variant."},
    {ePutRef, 8, false, "PutProperty called on non IDispatch Variant."},
    {eCall, 1, false, "Method called on non IDispatch Variant."},
    {eCallR, 1, true, "Fuction called on non IDispatch Variant."},
}};

/// The overload of a family for so many arguments; null name: the default form. False where there is none.
template <std::size_t... u>
bool fInvokeWith(EFamily eFamily, TVariant const & t, wchar_t const * pzName, [[maybe_unused]] TVariant & tResult,
                 std::array<TVariant, sizeof...(u)> & tArguments, std::index_sequence<u...>) {
    constexpr bool fHasResultForm = sizeof...(u) != 10;
    if constexpr (fHasResultForm) {
        if (eFamily == eGet && pzName != nullptr) return t.GetProperty(pzName, tResult, tArguments[u]...), true;
        if (eFamily == eGet) return t.GetPropertyDefault(tResult, tArguments[u]...), true;
        if (eFamily == eCallR && pzName != nullptr) return t.CallR(pzName, tResult, tArguments[u]...), true;
        if (eFamily == eCallR) return t.CallRDefault(tResult, tArguments[u]...), true;
    }
    if (eFamily == ePut && pzName != nullptr) return t.PutProperty(pzName, tArguments[u]...), true;
    if (eFamily == ePut) return t.PutPropertyDefault(tArguments[u]...), true;
    if (eFamily == ePutRef && pzName != nullptr) return t.PutRefProperty(pzName, tArguments[u]...), true;
    if (eFamily == ePutRef) return t.PutRefPropertyDefault(tArguments[u]...), true;
    if (eFamily == eCall && pzName != nullptr) return t.Call(pzName, tArguments[u]...), true;
    if (eFamily == eCall) return t.CallDefault(tArguments[u]...), true;
    return false;
}

/// With the numbers 100, 101 ... as arguments.
template <std::size_t uCount>
bool fInvoke(EFamily eFamily, TVariant const & t, wchar_t const * pzName, TVariant & tResult) {
    std::array<TVariant, uCount> tArguments;
    for (std::size_t i = 0; i < uCount; ++i)
        tArguments[i] = static_cast<long>(100 + i);
    bool const fDone = fInvokeWith(eFamily, t, pzName, tResult, tArguments, std::make_index_sequence<uCount>());
    for (std::size_t i = 0; i < uCount; ++i)
        EXPECT_TRUE(tArguments[i] == TVariant(static_cast<long>(100 + i))); // they stay the caller's
    return fDone;
}

template <std::size_t... u>
constexpr auto tMakeCounts(std::index_sequence<u...>) {
    return std::array{&fInvoke<u>...};
}
constexpr auto pInvokes = tMakeCounts(std::make_index_sequence<21>());

/// What a call throws, with its class.
std::string sFailureOf(std::function<void()> const & tWork) {
    try {
        tWork();
    } catch (std::invalid_argument const & tError) {
        return std::string("invalid_argument: ") + tError.what();
    } catch (std::runtime_error const & tError) {
        return std::string("runtime_error: ") + tError.what();
    }
    return "nothing";
}

template <typename... TArguments>
concept CCallable = requires(TVariant t, TArguments... tArguments) { t.Call(L"Name", tArguments...); };
template <std::size_t u>
using TArgument = tagVARIANT &;
template <std::size_t... u>
constexpr bool fIsCallable(std::index_sequence<u...>) {
    return CCallable<TArgument<u>...>;
}
static_assert(fIsCallable(std::make_index_sequence<20>()) && !fIsCallable(std::make_index_sequence<21>()));

} // namespace

TEST(Dispatch, HandsOverEveryCountOfArgumentsInReverse) {
    TFakeDispatch tObject;
    TVariant const t(&tObject, true);
    for (TFamily const & tFamily : tFamilies) {
        for (std::size_t uCount = 0; uCount < pInvokes.size(); ++uCount) {
            for (wchar_t const * const pzName : {L"Name", static_cast<wchar_t const *>(nullptr)}) {
                SCOPED_TRACE(testing::Message() << tFamily.wFlags << " " << uCount);
                TVariant tResult;
                tObject.sNames.clear();
                int const iBefore = tObject.iInvokes;
                bool const fThere = uCount != 10 || !tFamily.fResult;
                ASSERT_EQ(pInvokes[uCount](tFamily.eFamily, t, pzName, tResult), fThere);
                ASSERT_EQ(tObject.iInvokes, iBefore + (fThere ? 1 : 0));
                if (!fThere) continue;

                EXPECT_EQ(tObject.wFlags, tFamily.wFlags);
                EXPECT_EQ(tObject.fHadArray, uCount != 0);
                ASSERT_EQ(tObject.tArguments.size(), uCount);
                for (std::size_t i = 0; i < uCount; ++i) {
                    EXPECT_EQ(tObject.tArguments[i].vt, VT_I4);
                    EXPECT_EQ(tObject.tArguments[i].lVal, static_cast<long>(100 + uCount - 1 - i));
                }
                EXPECT_EQ(tObject.sNames,
                          pzName != nullptr ? std::vector<std::wstring>{L"Name"} : std::vector<std::wstring>{});
                EXPECT_EQ(tObject.iInvoked, pzName != nullptr ? 42 : 0);
                EXPECT_EQ(tObject.pResult, tFamily.fResult ? static_cast<tagVARIANT *>(&tResult) : nullptr);
                // Only a property that is put is named.
                EXPECT_EQ(tObject.uNamed, tFamily.eFamily == ePut ? 1u : 0u);
                EXPECT_EQ(tObject.fHadNamed, tFamily.eFamily == ePut);
                if (tObject.fHadNamed) {
                    EXPECT_EQ(tObject.iNamed, -3);
                }
            }
        }
    }
    EXPECT_EQ(tObject.iReferences, 2);
    EXPECT_TRUE(tObject.fIdsWereNull);
    EXPECT_EQ(tObject.iNamesLocale, 0x400u);
    EXPECT_EQ(tObject.iInvokeLocale, 0x400u);
    EXPECT_TRUE(tObject.fExcepInfoWasZero);
    EXPECT_EQ(tObject.uArgErrBefore, 0u); // what is told where a server leaves it
}

TEST(Dispatch, TakesAnEmptyNameForTheDefaultMember) {
    TFakeDispatch tObject;
    TVariant const t(&tObject, true);
    for (TFamily const & tFamily : tFamilies) {
        TVariant tResult;
        tObject.iInvoked = 99;
        ASSERT_TRUE(pInvokes[2](tFamily.eFamily, t, L"", tResult));
        EXPECT_EQ(tObject.iInvoked, 0);
    }
    EXPECT_TRUE(tObject.sNames.empty());
}

TEST(Dispatch, LendsItsArgumentsAsTheyAre) {
    TFakeDispatch tObject;
    TFakeDispatch tOther;
    TVariant const t(&tObject, true);
    TVariant tText(L"wheel");
    TVariant tReference(&tOther, true);
    long iOut = 1;
    tagVARIANT tOut{};
    tOut.vt = VT_BYREF | VT_I4;
    tOut.plVal = &iOut;
    tObject.tOnInvoke = [&](auto...) { *tObject.tArguments[0].plVal = 17; };
    t.Call(L"Name", tText, tReference, tOut);
    EXPECT_EQ(tObject.tArguments[2].bstrVal, tText.bstrVal); // no copy
    EXPECT_EQ(tObject.tArguments[1].pdispVal, &tOther);
    EXPECT_EQ(tOther.iReferences, 2); // no reference of its own
    EXPECT_EQ(iOut, 17);
    EXPECT_EQ(tText.vt, VT_BSTR);
}

TEST(Dispatch, HandsTheResultOverWithoutClearingIt) {
    TFakeDispatch tObject;
    TFakeDispatch tOld;
    TVariant const t(&tObject, true);
    TVariant tResult(&tOld, true);
    std::optional<VARTYPE> puSeen;
    tObject.tOnInvoke = [&](VARIANT * pResult, auto...) {
        puSeen = pResult->vt;
        pResult->vt = VT_I4;
        pResult->lVal = 17;
    };
    t.GetProperty(L"Name", tResult);
    EXPECT_EQ(puSeen, VARTYPE{VT_DISPATCH});
    EXPECT_TRUE(tResult == TVariant(17L));
    EXPECT_EQ(tOld.iReferences, 2); // lost, as the caller was told
    tResult.Clear();
    t.CallR(L"Name", tResult);
    EXPECT_EQ(puSeen, VARTYPE{VT_EMPTY});
    EXPECT_TRUE(tResult == TVariant(17L));
}

TEST(Dispatch, CallsOnlyWhatPassesForAnObject) {
    for (TFamily const & tFamily : tFamilies) {
        for (VARTYPE const uType : {VT_EMPTY, VT_NULL, VT_I2, VT_I4, VT_BSTR, VT_ERROR, VT_VARIANT, VT_UI1, VT_I1}) {
            TVariant t;
            t.llVal = 0;
            t.vt = uType;
            TVariant tResult;
            for (wchar_t const * const pzName : {L"Name", static_cast<wchar_t const *>(nullptr)})
                EXPECT_EQ(sFailureOf([&] { pInvokes[0](tFamily.eFamily, t, pzName, tResult); }),
                          std::string("invalid_argument: ") + tFamily.pzNoObject);
            t.vt = VT_EMPTY;
        }
        // Types with both bits: they pass, and hold null here.
        for (VARTYPE const uType : {VT_DISPATCH, VT_BOOL, VT_UNKNOWN, VARENUM(15), VARENUM(25)}) {
            TVariant t;
            t.llVal = 0;
            t.vt = uType;
            TVariant tResult;
            EXPECT_EQ(sFailureOf([&] { pInvokes[0](tFamily.eFamily, t, L"Name", tResult); }),
                      "invalid_argument: NULL IDispatch passed to AutoWrap()");
            t.vt = VT_EMPTY;
        }
    }
}

TEST(Dispatch, CallsAnObjectHeldAsUnknown) {
    TFakeDispatch tObject;
    TVariant const t(static_cast<IUnknown *>(&tObject), true);
    t.Call(L"Name");
    EXPECT_EQ(tObject.iInvokes, 1);
}

TEST(Dispatch, TellsAMemberThatIsNotThere) {
    TFakeTypeInfo tInfo;
    TFakeDispatch tObject;
    tObject.hrNames = DISP_E_UNKNOWNNAME;
    TVariant const t(&tObject, true);
    std::string const sBegin = "runtime_error: Property or method \"Gr\xC3\xB6\xC3\x9F"
                               "e\" not found in object ";
    auto const sFailure = [&] { return sFailureOf([&] { t.Call(L"Gr\u00F6\u00DFe"); }); };
    EXPECT_EQ(sFailure(), sBegin + "\"unknown\"");
    tObject.pTypeInfo = &tInfo;
    tObject.hrTypeInfo = S_OK;
    EXPECT_EQ(sFailure(), sBegin + "\"Wheel\"");
    EXPECT_EQ(tInfo.iAsked, -1);
    tInfo.hrName = TYPE_E_ELEMENTNOTFOUND;
    EXPECT_EQ(sFailure(), sBegin + "\"unknown\"");
    tInfo.hrName = S_OK;
    tInfo.pzName = nullptr;
    EXPECT_EQ(sFailure(), sBegin + "\"unknown\"");
    EXPECT_EQ(tInfo.iReferences, 1);
    EXPECT_EQ(tObject.iReferences, 2);
    EXPECT_EQ(tObject.iInvokes, 0);
}

TEST(Dispatch, ReportsARefusedCall) {
    TFakeTypeInfo tInfo;
    TFakeDispatch tObject;
    tObject.pTypeInfo = &tInfo;
    tObject.hrTypeInfo = S_OK;
    tObject.hrInvoke = DISP_E_TYPEMISMATCH;
    tObject.tOnInvoke = [](VARIANT *, EXCEPINFO *, UINT * puArgErr) { *puArgErr = 1; };
    TVariant const t(&tObject, true);
    TVariant tFirst(1L);
    TVariant tSecond(2L);
    EXPECT_EQ(sFailureOf([&] { t.PutProperty(L"Size", tFirst, tSecond); }),
              "runtime_error: The argument 1 could not be coerced.\r\n"
              "\r\n"
              "Object type: Wheel\r\n"
              "Tried to invoke: put property\r\n"
              "Member: \"Size\"\r\n"
              "Number of parameters: 2");
    EXPECT_EQ(tInfo.iReferences, 1);

    tObject.hrInvoke = DISP_E_MEMBERNOTFOUND;
    tObject.pTypeInfo = nullptr;
    tObject.hrTypeInfo = E_NOTIMPL;
    TVariant tResult;
    EXPECT_EQ(sFailureOf([&] { t.GetPropertyDefault(tResult); }),
              "runtime_error: The requested member does not exist, or the call tried to set the value of a read-only "
              "property.\r\n"
              "\r\n"
              "Object type: unknown\r\n"
              "Tried to invoke: get property\r\n"
              "Member: \"default\"\r\n"
              "Number of parameters: 0");
}

TEST(Dispatch, ReportsWhatTheServerSays) {
    TFakeDispatch tObject;
    tObject.hrInvoke = DISP_E_EXCEPTION;
    tObject.tOnInvoke = [](VARIANT *, EXCEPINFO * pExcepInfo, UINT *) {
        pExcepInfo->wCode = 1004;
        pExcepInfo->bstrSource = SysAllocString(L"Wheel server");
        pExcepInfo->bstrDescription = SysAllocString(L"No spoke \u00FCbrig.");
        pExcepInfo->bstrHelpFile = SysAllocString(L"wheel.hlp");
    };
    TVariant const t(&tObject, true);
    EXPECT_EQ(sFailureOf([&] { t.Call(L"Turn"); }), "runtime_error: The application needs to raise an exception.\r\n"
                                                    "Error#: 1004\r\n"
                                                    "Source: Wheel server\r\n"
                                                    "Description: No spoke \xC3\xBC"
                                                    "brig.\r\n"
                                                    "Object type: unknown\r\n"
                                                    "Tried to invoke: method\r\n"
                                                    "Member: \"Turn\"\r\n"
                                                    "Number of parameters: 0");
    tObject.tOnInvoke = nullptr;
    EXPECT_EQ(sFailureOf([&] { t.PutRefPropertyDefault(); }),
              "runtime_error: The application needs to raise an exception.\r\n"
              "Error#: 0\r\n"
              "Source: unknown\r\n"
              "Description: not available\r\n"
              "Object type: unknown\r\n"
              "Tried to invoke: put property reference\r\n"
              "Member: \"default\"\r\n"
              "Number of parameters: 0");
}

namespace {

HRESULT STDAPICALLTYPE hrFillIn(EXCEPINFO * pExcepInfo) {
    pExcepInfo->wCode = 7;
    pExcepInfo->bstrDescription = SysAllocString(L"late");
    return S_OK;
}

} // namespace

TEST(Dispatch, AsksAServerForTextsThatItPutOff) {
    TFakeDispatch tObject;
    tObject.hrInvoke = DISP_E_EXCEPTION;
    tObject.tOnInvoke = [](VARIANT *, EXCEPINFO * pExcepInfo, UINT *) { pExcepInfo->pfnDeferredFillIn = &hrFillIn; };
    std::string const sFailure = sFailureOf([&] { TVariant(&tObject, true).Call(L"Turn"); });
    EXPECT_NE(sFailure.find("\r\nError#: 7\r\nSource: unknown\r\nDescription: late\r\n"), std::string::npos);
}
