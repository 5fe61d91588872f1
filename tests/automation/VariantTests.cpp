#include "ZkTools/Variant.h"

#include "ZkTools/ComError.h"
#include "tests/automation/Fakes.h"
#include "tests/support/SystemCall.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <type_traits>

using namespace zk_test;

namespace {

constexpr short iNoType = 0x7F; // no type of the platform: it cannot be cleared, copied or converted

/// The error of what is expected to throw; S_OK when it does not.
HRESULT hrOf(std::function<void()> const & tWork) {
    try {
        tWork();
    } catch (TComError const & tError) {
        EXPECT_EQ(tError.ErrorInfo(), nullptr);
        return tError.Error();
    }
    return S_OK;
}

tagVARIANT tMake(VARTYPE uType, long long iBits = 0) {
    tagVARIANT t{};
    t.vt = uType;
    t.llVal = iBits;
    return t;
}

std::wstring sText(TVariant const & t) {
    EXPECT_EQ(t.vt, VT_BSTR);
    return t.bstrVal == nullptr ? L"(null)" : std::wstring(t.bstrVal, SysStringLen(t.bstrVal));
}

tagCY tMakeCurrency(long long iValue) {
    tagCY t{};
    t.int64 = iValue;
    return t;
}

} // namespace

static_assert(std::is_base_of_v<tagVARIANT, TVariant> && std::has_virtual_destructor_v<TVariant>);
static_assert(sizeof(TVariant) == sizeof(tagVARIANT) + alignof(tagVARIANT)); // the pointer to the virtual operations
static_assert(!std::is_nothrow_destructible_v<TVariant>);

TEST(TVariant, IsEmptyAtFirst) {
    TVariant const t;
    EXPECT_EQ(t.vt, VT_EMPTY);
    EXPECT_TRUE(!t);
    EXPECT_FALSE(!TVariant(false));
    EXPECT_FALSE(!TVariant(tMake(VT_NULL)));
}

TEST(TVariant, TakesAShortInTwoTypes) {
    EXPECT_EQ(TVariant(short{-5}, VT_I2).vt, VT_I2);
    EXPECT_EQ(TVariant(short{-5}, VT_I2).iVal, -5);
    EXPECT_EQ(TVariant(short{5}, VT_BOOL).vt, VT_BOOL);
    EXPECT_EQ(TVariant(short{5}, VT_BOOL).boolVal, -1);
    EXPECT_EQ(TVariant(short{0}, VT_BOOL).boolVal, 0);
    for (VARTYPE uType = 0; uType < 20; ++uType) {
        if (uType != VT_I2 && uType != VT_BOOL) {
            EXPECT_EQ(hrOf([=] { TVariant(short{5}, uType); }), E_INVALIDARG) << uType;
        }
    }
}

TEST(TVariant, TakesALongInThreeTypes) {
    EXPECT_EQ(TVariant(-70000L, VT_I4).vt, VT_I4);
    EXPECT_EQ(TVariant(-70000L, VT_I4).lVal, -70000);
    EXPECT_EQ(TVariant(DISP_E_PARAMNOTFOUND, VT_ERROR).vt, VT_ERROR);
    EXPECT_EQ(TVariant(DISP_E_PARAMNOTFOUND, VT_ERROR).scode, DISP_E_PARAMNOTFOUND);
    EXPECT_EQ(TVariant(0x10000L, VT_BOOL).vt, VT_BOOL);
    EXPECT_EQ(TVariant(0x10000L, VT_BOOL).boolVal, -1);
    EXPECT_EQ(TVariant(0L, VT_BOOL).boolVal, 0);
    for (VARTYPE uType = 0; uType < 20; ++uType) {
        if (uType != VT_I4 && uType != VT_ERROR && uType != VT_BOOL) {
            EXPECT_EQ(hrOf([=] { TVariant(5L, uType); }), E_INVALIDARG) << uType;
        }
    }
}

TEST(TVariant, TakesADoubleInTwoTypes) {
    EXPECT_EQ(TVariant(1.5, VT_R8).vt, VT_R8);
    EXPECT_EQ(TVariant(1.5, VT_R8).dblVal, 1.5);
    EXPECT_EQ(TVariant(45306.25, VT_DATE).vt, VT_DATE);
    EXPECT_EQ(TVariant(45306.25, VT_DATE).date, 45306.25);
    for (VARTYPE uType = 0; uType < 20; ++uType) {
        if (uType != VT_R8 && uType != VT_DATE) {
            EXPECT_EQ(hrOf([=] { TVariant(1.5, uType); }), E_INVALIDARG) << uType;
        }
    }
}

TEST(TVariant, TakesTheOtherNumbersInOneTypeEach) {
    EXPECT_EQ(TVariant(1.5f).vt, VT_R4);
    EXPECT_EQ(TVariant(1.5f).fltVal, 1.5f);
    EXPECT_EQ(TVariant(tMakeCurrency(123456789012345)).vt, VT_CY);
    EXPECT_EQ(TVariant(tMakeCurrency(123456789012345)).cyVal.int64, 123456789012345);
    EXPECT_EQ(TVariant(true).vt, VT_BOOL);
    EXPECT_EQ(TVariant(true).boolVal, -1);
    EXPECT_EQ(TVariant(false).boolVal, 0);
    EXPECT_EQ(TVariant(static_cast<unsigned char>(200)).vt, VT_UI1);
    EXPECT_EQ(TVariant(static_cast<unsigned char>(200)).bVal, 200);
    EXPECT_EQ(TVariant(short{7}).vt, VT_I2);
    EXPECT_EQ(TVariant(7L).vt, VT_I4);
    EXPECT_EQ(TVariant(7.0).vt, VT_R8);
}

TEST(TVariant, TakesTextUpToItsFirstZero) {
    EXPECT_EQ(sText(TVariant(std::wstring(L"whe\0el", 6))), L"whe");
    EXPECT_EQ(sText(TVariant(std::wstring())), L""); // empty, not null
    EXPECT_EQ(sText(TVariant(L"wheel \x03A9")), L"wheel \x03A9");
    EXPECT_EQ(sText(TVariant(L"")), L"");
    EXPECT_EQ(sText(TVariant(static_cast<wchar_t const *>(nullptr))), L"(null)");
}

TEST(TVariant, TakesNarrowTextFromTheAnsiCodePage) {
    std::array<wchar_t, 2> acUmlaut{};
    MultiByteToWideChar(CP_ACP, 0, "\xE4", 1, acUmlaut.data(), 1);
    EXPECT_EQ(sText(TVariant("R\xE4"
                             "der")),
              std::wstring(L"R") + acUmlaut.data() + L"der");
    EXPECT_EQ(sText(TVariant("")), L"");
    EXPECT_EQ(sText(TVariant(static_cast<char const *>(nullptr))), L"(null)");
}

TEST(TVariant, TellsWhenThereIsNoMemoryForText) {
    TVariant tOld(7L);
    {
        TSystemCall<"SysAllocString", decltype(SysAllocString)> const tAlloc([](auto...) { return BSTR{}; });
        EXPECT_EQ(hrOf([] { TVariant(std::wstring(L"a")); }), E_OUTOFMEMORY);
        EXPECT_EQ(hrOf([] { TVariant(L"a"); }), E_OUTOFMEMORY);
        EXPECT_EQ(hrOf([&] { tOld = L"a"; }), E_OUTOFMEMORY);
        EXPECT_EQ(hrOf([&] { tOld = std::wstring(L"a"); }), E_OUTOFMEMORY);
        EXPECT_EQ(hrOf([] { TVariant(static_cast<wchar_t const *>(nullptr)); }), S_OK);
    }
    TSystemCall<"SysAllocStringLen", decltype(SysAllocStringLen)> const tAlloc([](auto...) { return BSTR{}; });
    EXPECT_EQ(hrOf([] { TVariant("a"); }), E_OUTOFMEMORY);
    EXPECT_EQ(hrOf([&] { tOld.SetString("a"); }), E_OUTOFMEMORY);
    EXPECT_EQ(hrOf([] { TVariant(static_cast<char const *>(nullptr)); }), S_OK);
    EXPECT_TRUE(tOld == TVariant(7L));
}

TEST(TVariant, CopiesTheValueOfAnother) {
    TVariant const tSource(L"wheel");
    tagVARIANT const & tPlain = tSource;
    for (TVariant const & tCopy :
         {TVariant(tSource), TVariant(tPlain), TVariant(&tPlain), TVariant(const_cast<tagVARIANT &>(tPlain), true)}) {
        EXPECT_EQ(sText(tCopy), L"wheel");
        EXPECT_NE(tCopy.bstrVal, tSource.bstrVal);
    }
    tagVARIANT tBad = tMake(iNoType);
    EXPECT_EQ(hrOf([&] { TVariant{tBad}; }), DISP_E_BADVARTYPE);
    EXPECT_EQ(hrOf([&] { TVariant{&tBad}; }), DISP_E_BADVARTYPE);
    EXPECT_EQ(hrOf([&] { TVariant(tBad, true); }), DISP_E_BADVARTYPE);
}

TEST(TVariant, MovesTheValueOfAnotherWithoutCopy) {
    TVariant tSource(L"wheel");
    BSTR const sHeld = tSource.bstrVal;
    TVariant const tMoved(tSource, false);
    EXPECT_EQ(tMoved.bstrVal, sHeld);
    EXPECT_EQ(tMoved.vt, VT_BSTR);
    EXPECT_EQ(tSource.vt, VT_EMPTY);

    tagVARIANT tWhole = tMake(VT_I4, 0x123456789);
    tWhole.wReserved1 = 11;
    tWhole.wReserved3 = 33;
    TVariant const tTaken(tWhole, false);
    EXPECT_EQ(tTaken.llVal, 0x123456789); // all bytes
    EXPECT_EQ(tTaken.wReserved1, 11);
    EXPECT_EQ(tTaken.wReserved3, 33);
}

TEST(TVariant, CountsReferencesToAnObject) {
    TFakeDispatch tObject;
    {
        TVariant const tOwn(&tObject, true);
        EXPECT_EQ(tOwn.vt, VT_DISPATCH);
        EXPECT_EQ(tOwn.pdispVal, &tObject);
        EXPECT_EQ(tObject.iReferences, 2);
        TVariant const tCopy(tOwn);
        EXPECT_EQ(tObject.iReferences, 3);
        TVariant tMoved(const_cast<TVariant &>(tCopy), false);
        EXPECT_EQ(tObject.iReferences, 3);
        tMoved.Clear();
        EXPECT_EQ(tObject.iReferences, 2);
        EXPECT_EQ(tMoved.vt, VT_EMPTY);
    }
    EXPECT_EQ(tObject.iReferences, 1);
    {
        tObject.AddRef();
        TVariant const tTaken(&tObject, false);
        EXPECT_EQ(tObject.iReferences, 2);
    }
    EXPECT_EQ(tObject.iReferences, 1);
    EXPECT_EQ(TVariant(static_cast<IDispatch *>(nullptr), false).vt, VT_DISPATCH);
}

TEST(TVariant, CountsReferencesToAnUnknown) {
    TFakeErrorInfo tObject;
    {
        TVariant const tOwn(static_cast<IUnknown *>(&tObject), true);
        EXPECT_EQ(tOwn.vt, VT_UNKNOWN);
        EXPECT_EQ(tOwn.punkVal, &tObject);
        EXPECT_EQ(tObject.iReferences, 2);
        tObject.AddRef();
        TVariant const tTaken(static_cast<IUnknown *>(&tObject), false);
        EXPECT_EQ(tTaken.vt, VT_UNKNOWN);
        EXPECT_EQ(tObject.iReferences, 3);
    }
    EXPECT_EQ(tObject.iReferences, 1);
}

TEST(TVariant, ReadsAValueOfTheSameTypeAsItIs) {
    EXPECT_EQ(static_cast<short>(TVariant(short{-5})), -5);
    EXPECT_EQ(static_cast<long>(TVariant(-70000L)), -70000);
    EXPECT_EQ(static_cast<float>(TVariant(1.5f)), 1.5f);
    EXPECT_EQ(static_cast<double>(TVariant(2.5)), 2.5);
    EXPECT_EQ(static_cast<tagCY>(TVariant(tMakeCurrency(-3))).int64, -3);
    EXPECT_EQ(static_cast<std::wstring>(TVariant(L"wheel")), L"wheel");
    EXPECT_TRUE(static_cast<bool>(TVariant(true)));
    EXPECT_FALSE(static_cast<bool>(TVariant(false)));
    EXPECT_EQ(static_cast<unsigned char>(TVariant(static_cast<unsigned char>(200))), 200);
    // Whatever is not 0 is true.
    TVariant tOdd(true);
    tOdd.boolVal = 0x100;
    EXPECT_TRUE(static_cast<bool>(tOdd));
}

TEST(TVariant, ConvertsAValueOfAnotherTypeAndLeavesItself) {
    TVariant const tText(L"17");
    EXPECT_EQ(static_cast<short>(tText), 17);
    EXPECT_EQ(static_cast<long>(tText), 17);
    EXPECT_EQ(static_cast<float>(tText), 17.0f);
    EXPECT_EQ(static_cast<double>(tText), 17.0);
    EXPECT_EQ(static_cast<tagCY>(tText).int64, 170000);
    EXPECT_EQ(static_cast<unsigned char>(tText), 17);
    EXPECT_TRUE(static_cast<bool>(tText));
    EXPECT_EQ(sText(tText), L"17");
    EXPECT_EQ(static_cast<std::wstring>(TVariant(-70000L)), L"-70000");
    EXPECT_EQ(static_cast<std::wstring>(TVariant()), L"");
    EXPECT_EQ(static_cast<std::wstring>(TVariant(true)), L"-1"); // flags 0: no words for a bool
}

TEST(TVariant, IsReadWhereAValueIsWanted) {
    TVariant const tNumber(4L);
    std::wstring const sWord = tNumber;
    EXPECT_EQ(sWord, L"4");
    double const dNumber = tNumber;
    EXPECT_EQ(dNumber, 4);
    EXPECT_TRUE(tNumber ? true : false);
    EXPECT_FALSE(TVariant(false) ? true : false);
}

TEST(TVariant, RefusesWhatCannotBeConverted) {
    TVariant const tText(L"no number");
    EXPECT_EQ(hrOf([&] { static_cast<void>(static_cast<short>(tText)); }), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(sText(tText), L"no number");
    EXPECT_EQ(hrOf([] { static_cast<void>(static_cast<short>(TVariant(70000L))); }), DISP_E_OVERFLOW);
    EXPECT_EQ(hrOf([] { static_cast<void>(static_cast<long>(TVariant(tMake(VT_NULL)))); }), DISP_E_TYPEMISMATCH);
}

TEST(TVariant, ReadsTextUpToItsFirstZero) {
    tagVARIANT tPlain = tMake(VT_BSTR);
    tPlain.bstrVal = SysAllocStringLen(L"whe\0el", 6);
    EXPECT_EQ(static_cast<std::wstring>(TVariant(tPlain, false)), L"whe");
    EXPECT_EQ(static_cast<std::wstring>(TVariant(static_cast<wchar_t const *>(nullptr))), L"");
}

TEST(TVariant, GivesObjectsWithAReferenceForTheCaller) {
    TFakeDispatch tObject;
    TVariant const tDispatch(&tObject, true);
    IDispatch * pDispatch = tDispatch; // read
    EXPECT_EQ(pDispatch, &tObject);
    EXPECT_EQ(tObject.iReferences, 3);
    IUnknown * pUnknown = tDispatch; // converted
    EXPECT_EQ(pUnknown, &tObject);
    EXPECT_EQ(tObject.iReferences, 4);

    TVariant const tUnknown(static_cast<IUnknown *>(&tObject), true);
    EXPECT_EQ(tObject.iReferences, 5);
    IUnknown * pSame = tUnknown; // read
    EXPECT_EQ(tObject.iReferences, 6);
    IDispatch * pConverted = tUnknown; // converted
    EXPECT_EQ(pConverted, &tObject);
    EXPECT_EQ(tObject.iReferences, 7);
    for (IUnknown * p : {static_cast<IUnknown *>(pDispatch), pUnknown, pSame, static_cast<IUnknown *>(pConverted)})
        p->Release();
    EXPECT_EQ(tObject.iReferences, 3);
}

TEST(TVariant, TakesACopyOnAssignment) {
    TFakeDispatch tObject;
    TVariant const tSource(&tObject, true);
    tagVARIANT const & tPlain = tSource;
    TVariant tTarget(L"old");
    tTarget = tSource;
    EXPECT_EQ(tObject.iReferences, 3);
    tTarget = tPlain; // the old reference goes
    EXPECT_EQ(tObject.iReferences, 3);
    tTarget = &tPlain;
    EXPECT_EQ(tObject.iReferences, 3);
    tTarget = static_cast<TVariant const &>(tTarget);
    EXPECT_EQ(tObject.iReferences, 3);
    EXPECT_EQ(tTarget.pdispVal, &tObject);
    EXPECT_EQ(tObject.iLowest, 1);

    tagVARIANT const tBad = tMake(iNoType);
    EXPECT_EQ(hrOf([&] { tTarget = tBad; }), DISP_E_BADVARTYPE);
}

TEST(TVariant, KeepsATypeThatTheAssignedNumberFits) {
    struct TRow {
        char const * pzWhat;
        TVariant tBefore;
        std::function<void(TVariant &)> tAssign;
        TVariant tAfter;
    };
    auto const Short = [](short i) { return [i](TVariant & t) { t = i; }; };
    auto const Long = [](long i) { return [i](TVariant & t) { t = i; }; };
    auto const Double = [](double d) { return [d](TVariant & t) { t = d; }; };
    TRow const tRows[] = {
        {"short to I2", short{1}, Short(5), short{5}},
        {"short to bool", false, Short(5), true},
        {"short 0 to bool", true, Short(0), false},
        {"short to I4", 1L, Short(5), short{5}},
        {"short to text", L"text", Short(5), short{5}},
        {"short to nothing", {}, Short(5), short{5}},
        {"long to I4", 1L, Long(70000), 70000L},
        {"long to error", {1L, VT_ERROR}, Long(E_FAIL), {E_FAIL, VT_ERROR}},
        {"long to bool", false, Long(0x10000), true},
        {"long 0 to bool", true, Long(0), false},
        {"long to I2", short{1}, Long(5), 5L},
        {"long to text", L"text", Long(5), 5L},
        {"double to R8", 1.0, Double(2.5), 2.5},
        {"double to date", {1.0, VT_DATE}, Double(2.5), {2.5, VT_DATE}},
        {"double to R4", 1.0f, Double(2.5), 2.5},
        {"double to bool", true, Double(2.5), 2.5},
        {"double to text", L"text", Double(2.5), 2.5},
        {"float to R4", 1.0f, [](TVariant & t) { t = 2.5f; }, 2.5f},
        {"float to R8", 1.0, [](TVariant & t) { t = 2.5f; }, 2.5f},
        {"currency to currency", tMakeCurrency(1), [](TVariant & t) { t = tMakeCurrency(9); }, tMakeCurrency(9)},
        {"currency to text", L"text", [](TVariant & t) { t = tMakeCurrency(9); }, tMakeCurrency(9)},
        {"bool to bool", false, [](TVariant & t) { t = true; }, true},
        {"bool to I2", short{1}, [](TVariant & t) { t = true; }, true},
        {"byte to byte", static_cast<unsigned char>(1), [](TVariant & t) { t = static_cast<unsigned char>(9); },
         static_cast<unsigned char>(9)},
        {"byte to I4", 1L, [](TVariant & t) { t = static_cast<unsigned char>(9); }, static_cast<unsigned char>(9)},
    };
    for (TRow const & tRow : tRows) {
        TVariant t(tRow.tBefore);
        tRow.tAssign(t);
        EXPECT_TRUE(t == tRow.tAfter) << tRow.pzWhat << ": type " << t.vt;
    }
}

TEST(TVariant, ClearsWhatAnAssignmentReplaces) {
    TFakeDispatch tObject;
    using TAssign = void (*)(TVariant &);
    TAssign const pAssigns[] = {
        [](TVariant & t) { t = short{1}; },
        [](TVariant & t) { t = 1L; },
        [](TVariant & t) { t = 1.0f; },
        [](TVariant & t) { t = 1.0; },
        [](TVariant & t) { t = tMakeCurrency(1); },
        [](TVariant & t) { t = std::wstring(L"text"); },
        [](TVariant & t) { t = L"text"; },
        [](TVariant & t) { t = "text"; },
        [](TVariant & t) { t = true; },
        [](TVariant & t) { t = static_cast<unsigned char>(1); },
        [](TVariant & t) { t.SetString("text"); },
        [](TVariant & t) { t.ChangeType(VT_EMPTY); },
        [](TVariant & t) { t.Clear(); },
    };
    for (TAssign const pAssign : pAssigns) {
        TVariant t(&tObject, true);
        ASSERT_EQ(tObject.iReferences, 2);
        pAssign(t);
        EXPECT_NE(t.vt, VT_DISPATCH);
        EXPECT_EQ(tObject.iReferences, 1);
    }
}

TEST(TVariant, TakesAssignedText) {
    TVariant t(7L);
    t = std::wstring(L"whe\0el", 6);
    EXPECT_EQ(sText(t), L"whe");
    t = L"other";
    EXPECT_EQ(sText(t), L"other");
    t = L"";
    EXPECT_EQ(sText(t), L"");
    t = static_cast<wchar_t const *>(nullptr);
    EXPECT_EQ(sText(t), L"(null)");
    t = "narrow";
    EXPECT_EQ(sText(t), L"narrow");
    t.SetString("again");
    EXPECT_EQ(sText(t), L"again");
    t.SetString(nullptr);
    EXPECT_EQ(sText(t), L"(null)");
}

TEST(TVariant, TakesAnAssignedEmptyTextAsNull) {
    TVariant t(L"old");
    t = std::wstring();
    EXPECT_EQ(sText(t), L"(null)"); // the constructor makes an empty one
    EXPECT_EQ(static_cast<std::wstring>(t), L"");
}

TEST(TVariant, TakesAPartOfItsOwnText) {
    TVariant t(L"big wheel");
    t = static_cast<wchar_t const *>(t.bstrVal) + 4;
    EXPECT_EQ(sText(t), L"wheel");
}

TEST(TVariant, TakesAssignedObjectsWithAReference) {
    TFakeDispatch tObject;
    {
        TVariant t(L"old");
        t = static_cast<IDispatch *>(&tObject);
        EXPECT_EQ(t.vt, VT_DISPATCH);
        EXPECT_EQ(tObject.iReferences, 2);
        tObject.Release(); // the variant has the only one now
        tObject.iLowest = 1;
        t = t.pdispVal;
        EXPECT_EQ(tObject.iReferences, 1);
        EXPECT_EQ(tObject.iLowest, 1); // it never was without
        t = static_cast<IUnknown *>(&tObject);
        EXPECT_EQ(t.vt, VT_UNKNOWN);
        EXPECT_EQ(tObject.iReferences, 1);
        EXPECT_EQ(tObject.iLowest, 1);
    }
    EXPECT_EQ(tObject.iReferences, 0);
}

TEST(TVariant, IsEqualForTheSameTypeAndValue) {
    double const dNaN = std::numeric_limits<double>::quiet_NaN();
    float const dShortNaN = std::numeric_limits<float>::quiet_NaN();
    TFakeDispatch tObject;
    TFakeDispatch tOther;
    auto const Object = [](TFakeDispatch & t) { return TVariant(&t, true); };
    auto const Unknown = [](TFakeDispatch & t) { return TVariant(static_cast<IUnknown *>(&t), true); };
    auto const Byte = [](int i) { return TVariant(static_cast<unsigned char>(i)); };
    struct TRow {
        char const * pzWhat;
        TVariant tLeft;
        TVariant tRight;
        bool fEqual;
    };
    TRow const tRows[] = {
        {"empty", {}, {}, true},
        {"null", tMake(VT_NULL, 1), tMake(VT_NULL, 2), true},
        {"empty and null", {}, tMake(VT_NULL), false},
        {"I2", short{1}, short{1}, true},
        {"I2 differs", short{1}, short{2}, false},
        {"I4", 1L, 1L, true},
        {"I4 differs above", 0x10001L, 1L, false},
        {"I4 and I2", 1L, short{1}, false},
        {"error", {1L, VT_ERROR}, {1L, VT_ERROR}, true},
        {"error differs", {1L, VT_ERROR}, {2L, VT_ERROR}, false},
        {"bool", true, true, true},
        {"bool differs", true, false, false},
        {"R4", 1.5f, 1.5f, true},
        {"R4 differs", 1.5f, 1.25f, false},
        {"R4 zeros", 0.0f, -0.0f, true},
        {"R4 NaN", dShortNaN, dShortNaN, false},
        {"R8", 1.5, 1.5, true},
        {"R8 differs", 1.5, 1.25, false},
        {"R8 zeros", 0.0, -0.0, true},
        {"R8 NaN", dNaN, dNaN, false},
        {"date", {1.5, VT_DATE}, {1.5, VT_DATE}, true},
        {"date differs", {1.5, VT_DATE}, {1.25, VT_DATE}, false},
        {"date NaN", {dNaN, VT_DATE}, {dNaN, VT_DATE}, false},
        {"date and R8", {1.5, VT_DATE}, 1.5, false},
        {"currency", tMakeCurrency(1), tMakeCurrency(1), true},
        {"currency differs below", tMakeCurrency(1), tMakeCurrency(2), false},
        {"currency differs above", tMakeCurrency(1), tMakeCurrency(0x100000001), false},
        {"text", L"wheel", L"wheel", true},
        {"text differs in case", L"wheel", L"Wheel", false},
        {"text differs in length", L"wheel", L"wheels", false},
        {"null text and empty text", static_cast<wchar_t const *>(nullptr), L"", true},
        {"object", Object(tObject), Object(tObject), true},
        {"object differs", Object(tObject), Object(tOther), false},
        {"unknown", Unknown(tObject), Unknown(tObject), true},
        {"unknown differs", Unknown(tObject), Unknown(tOther), false},
        {"byte", Byte(200), Byte(200), true},
        {"byte differs", Byte(200), Byte(201), false},
    };
    for (TRow const & tRow : tRows) {
        tagVARIANT const & tPlain = tRow.tRight;
        EXPECT_EQ(tRow.tLeft == tRow.tRight, tRow.fEqual) << tRow.pzWhat;
        EXPECT_EQ(tRow.tRight == tRow.tLeft, tRow.fEqual) << tRow.pzWhat;
        EXPECT_EQ(tRow.tLeft == tPlain, tRow.fEqual) << tRow.pzWhat;
        EXPECT_EQ(tRow.tLeft == &tPlain, tRow.fEqual) << tRow.pzWhat;
        EXPECT_NE(tRow.tLeft != tRow.tRight, tRow.fEqual) << tRow.pzWhat;
        EXPECT_NE(tRow.tLeft != tPlain, tRow.fEqual) << tRow.pzWhat;
        EXPECT_NE(tRow.tLeft != &tPlain, tRow.fEqual) << tRow.pzWhat;
    }
}

TEST(TVariant, ComparesOnlyTheBytesOfItsType) {
    EXPECT_TRUE(TVariant(tMake(VT_I2, 0x10001)) == tMake(VT_I2, 0x20001));
    EXPECT_TRUE(TVariant(tMake(VT_BOOL, 0x1FFFF)) == tMake(VT_BOOL, 0x2FFFF));
    EXPECT_FALSE(TVariant(tMake(VT_BOOL, 1)) == tMake(VT_BOOL, -1)); // both true, of other bits
    EXPECT_TRUE(TVariant(tMake(VT_I4, 0x100000001)) == tMake(VT_I4, 0x200000001));
    EXPECT_TRUE(TVariant(tMake(VT_UI1, 0x101)) == tMake(VT_UI1, 0x201));
}

TEST(TVariant, ComparesInterfacePointersWhole) {
    // Two addresses that have their lower halves in common. Lent, not owned.
    TVariant tLeft;
    tLeft.vt = VT_UNKNOWN;
    tLeft.llVal = 0x100000010;
    EXPECT_EQ(tLeft == tMake(VT_UNKNOWN, 0x200000010), sizeof(void *) == 4);
    EXPECT_TRUE(tLeft == tMake(VT_UNKNOWN, 0x100000010));
    static_cast<void>(tLeft.Detach());
}

TEST(TVariant, ComparesAllBytesOfAText) {
    auto const Make = [](wchar_t const * pzText, UINT uBytes) {
        tagVARIANT t = tMake(VT_BSTR);
        t.bstrVal = SysAllocStringByteLen(reinterpret_cast<char const *>(pzText), uBytes);
        return t;
    };
    auto const fEqual = [&](wchar_t const * pzLeft, UINT uLeft, wchar_t const * pzRight, UINT uRight) {
        tagVARIANT tLeft = Make(pzLeft, uLeft);
        tagVARIANT tRight = Make(pzRight, uRight);
        return TVariant(tLeft, false) == TVariant(tRight, false);
    };
    EXPECT_TRUE(fEqual(L"a\0b", 6, L"a\0b", 6));
    EXPECT_FALSE(fEqual(L"a\0b", 6, L"a\0c", 6)); // behind a zero
    EXPECT_TRUE(fEqual(L"abc", 5, L"abc", 5));    // an odd count
    EXPECT_FALSE(fEqual(L"abc", 5, L"abc", 6));
    EXPECT_TRUE(fEqual(L"abc", 5, L"ab\x0163", 5)); // that differ in the sixth byte alone
}

TEST(TVariant, RefusesToCompareOtherTypes) {
    for (VARTYPE const uType : {VT_VARIANT, VT_DECIMAL, VT_I1, VT_UI2, VT_I8, VT_RECORD}) {
        TVariant t;
        t.vt = uType;
        EXPECT_EQ(hrOf([&] { static_cast<void>(t == tMake(uType)); }), E_INVALIDARG) << uType;
        EXPECT_EQ(hrOf([&] { static_cast<void>(t != tMake(uType)); }), E_INVALIDARG) << uType;
        EXPECT_FALSE(t == tMake(VT_I4)) << uType; // another type is just not equal
        EXPECT_TRUE(t == t) << uType;             // the same object always is
        t.vt = VT_EMPTY;
    }
    EXPECT_EQ(hrOf([] { static_cast<void>(TVariant(tMake(VT_BYREF | VT_I4)) == tMake(VT_BYREF | VT_I4)); }),
              E_INVALIDARG);
}

TEST(TVariant, AttachClearsAndTakes) {
    TFakeDispatch tOld;
    TFakeDispatch tNew;
    tagVARIANT tSource = tMake(VT_DISPATCH);
    tSource.pdispVal = &tNew;
    tSource.wReserved2 = 22;
    tNew.AddRef();
    {
        TVariant t(&tOld, true);
        t.Attach(tSource);
        EXPECT_EQ(tOld.iReferences, 1);
        EXPECT_EQ(tNew.iReferences, 2); // taken, not copied
        EXPECT_EQ(t.pdispVal, &tNew);
        EXPECT_EQ(t.vt, VT_DISPATCH);
        EXPECT_EQ(t.wReserved2, 22);
        EXPECT_EQ(tSource.vt, VT_EMPTY);
    }
    EXPECT_EQ(tNew.iReferences, 1);
}

TEST(TVariant, AttachTakesNothingWhenItCannotClear) {
    TVariant t;
    t.vt = iNoType;
    TVariant tSource(7L);
    EXPECT_EQ(hrOf([&] { t.Attach(tSource); }), DISP_E_BADVARTYPE);
    EXPECT_EQ(tSource.vt, VT_I4);
    EXPECT_EQ(t.vt, iNoType);
    t.vt = VT_EMPTY;
}

TEST(TVariant, DetachHandsTheValueOut) {
    TFakeDispatch tObject;
    tagVARIANT tOut{};
    {
        TVariant t(&tObject, true);
        t.wReserved2 = 22;
        tOut = t.Detach();
        EXPECT_EQ(t.vt, VT_EMPTY);
    }
    EXPECT_EQ(tObject.iReferences, 2); // nothing was released
    EXPECT_EQ(tOut.vt, VT_DISPATCH);
    EXPECT_EQ(tOut.pdispVal, &tObject);
    EXPECT_EQ(tOut.wReserved2, 22);
}

TEST(TVariant, ChangesItsType) {
    TVariant t(L"17");
    t.ChangeType(VT_I4, nullptr);
    EXPECT_TRUE(t == TVariant(17L));
    t.ChangeType(VT_BSTR, &t);
    EXPECT_EQ(sText(t), L"17");
    BSTR const sHeld = t.bstrVal;
    t.ChangeType(VT_BSTR, nullptr); // nothing to do
    EXPECT_EQ(t.bstrVal, sHeld);
    t.ChangeType(VT_BSTR, &t);
    EXPECT_EQ(t.bstrVal, sHeld);

    TVariant const tSource(2.5);
    t.ChangeType(VT_BSTR, &tSource);
    EXPECT_EQ(sText(t), L"2.5");
    t.ChangeType(VT_R8, &tSource); // of the same type: a copy
    EXPECT_TRUE(t == tSource);
}

TEST(TVariant, DoesNothingWhenItHasTheTypeAlready) {
    TVariant t;
    t.vt = iNoType; // any call of the platform would fail
    EXPECT_EQ(hrOf([&] { t.ChangeType(iNoType, nullptr); }), S_OK);
    EXPECT_EQ(hrOf([&] { t.ChangeType(iNoType, &t); }), S_OK);
    TVariant tOther;
    EXPECT_LT(hrOf([&] { tOther.ChangeType(iNoType, &t); }), 0);
    t.vt = VT_EMPTY;
}

TEST(TVariant, KeepsItsValueWhenItCannotChange) {
    TVariant t(L"no number");
    EXPECT_EQ(hrOf([&] { t.ChangeType(VT_I4); }), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(sText(t), L"no number");
}

TEST(TVariant, ThrowsWhenItCannotBeCleared) {
    TVariant t;
    t.vt = iNoType;
    EXPECT_EQ(hrOf([&] { t.Clear(); }), DISP_E_BADVARTYPE);
    EXPECT_EQ(hrOf([&] { t = 5L; }), DISP_E_BADVARTYPE);
    EXPECT_EQ(hrOf([&] { t = L"text"; }), DISP_E_BADVARTYPE);
    EXPECT_EQ(t.vt, iNoType);
    t.vt = VT_EMPTY;
}

TEST(TVariant, ThrowsFromItsDestructor) {
    EXPECT_EQ(hrOf([] {
                  TVariant tHolder;
                  tHolder.vt = iNoType;
              }),
              DISP_E_BADVARTYPE);
    SAFEARRAY * const pArray = SafeArrayCreateVector(VT_I4, 0, 1);
    SafeArrayLock(pArray);
    EXPECT_EQ(hrOf([=] {
                  TVariant tHolder;
                  tHolder.vt = VT_ARRAY | VT_I4;
                  tHolder.parray = pArray;
              }),
              DISP_E_ARRAYISLOCKED);
    SafeArrayUnlock(pArray);
    SafeArrayDestroy(pArray);
}

TEST(TVariant, CopiesAndClearsEveryTypeAsThePlatformDoes) {
    for (int const iFlags : {0, int{VT_ARRAY}, int{VT_BYREF}, int{VT_VECTOR}, int{VT_RESERVED}}) {
        for (int i = 0; i < 80; ++i) {
            // Of the types that own something, nothing is owned; all others have every bit set.
            auto const uType = static_cast<VARTYPE>(i | iFlags);
            if (uType == VT_BSTR) continue; // a copy has an address of its own
            bool const fOwns = iFlags != 0 || i == VT_DISPATCH || i == VT_UNKNOWN || i > VT_UI1;
            tagVARIANT const tSource = tMake(uType, fOwns ? 0 : -1);

            tagVARIANT tExpected{};
            HRESULT const hrCopy = VariantCopy(&tExpected, const_cast<tagVARIANT *>(&tSource));
            TVariant tCopy;
            EXPECT_EQ(hrOf([&] { tCopy = tSource; }), hrCopy >= 0 ? S_OK : hrCopy) << uType;
            EXPECT_EQ(tCopy.vt, tExpected.vt) << uType;
            EXPECT_EQ(tCopy.llVal, tExpected.llVal) << uType;

            tExpected = tSource;
            HRESULT const hrClear = VariantClear(&tExpected);
            static_cast<tagVARIANT &>(tCopy) = tSource;
            EXPECT_EQ(hrOf([&] { tCopy.Clear(); }), hrClear >= 0 ? S_OK : hrClear) << uType;
            EXPECT_EQ(tCopy.vt, tExpected.vt) << uType;
            tCopy.vt = VT_EMPTY;
        }
    }
}

TEST(TVariant, KeepsTheReferenceCountWhenAnAssignedObjectDoesNotFit) {
    TFakeDispatch tObject;
    TVariant t;
    t.vt = iNoType;
    EXPECT_EQ(hrOf([&] { t = static_cast<IDispatch *>(&tObject); }), DISP_E_BADVARTYPE);
    EXPECT_EQ(hrOf([&] { t = static_cast<IUnknown *>(&tObject); }), DISP_E_BADVARTYPE);
    EXPECT_EQ(tObject.iReferences, 1);
    t.vt = VT_EMPTY;
}
