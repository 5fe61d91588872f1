// The call and its report, from their source: what no public form of a call reaches.
#include "automation/AutoWrap.h"

#include "tests/automation/Fakes.h"

#include <gtest/gtest.h>

#include <comdef.h>

#include <stdexcept>
#include <string>

using namespace zk_test;

namespace {

/// The text of the report, in lines of ASCII.
std::string sReport(HRESULT hr, unsigned short wFlags = DISPATCH_METHOD, wchar_t const * pzName = L"Turn") {
    TFakeDispatch tObject;
    std::wstring const sName = pzName != nullptr ? pzName : L"";
    tagDISPPARAMS tParams{nullptr, nullptr, 3, 0};
    tagEXCEPINFO tExcepInfo{};
    unsigned int uArgErr = 2;
    try {
        ThrowError(hr, &tObject, pzName != nullptr ? &sName : nullptr, wFlags, &tParams, &tExcepInfo, &uArgErr);
    } catch (std::runtime_error const & tError) {
        return tError.what();
    }
}

std::string sFirstLine(HRESULT hr) {
    std::string const sText = sReport(hr);
    return sText.substr(0, sText.find("\r\n"));
}

} // namespace

TEST(ThrowError, WordsEveryErrorOfAutomation) {
    struct TRow {
        unsigned long dwError;
        char const * pzText;
    };
    TRow const tRows[] = {
        {0x80020001, "The interface identifier passed is not IID_NULL."},
        {0x80020003,
         "The requested member does not exist, or the call tried to set the value of a read-only property."},
        {0x80020004, "The parameter 2 does not correspond to a parameter on the method."},
        {0x80020005, "The argument 2 could not be coerced."},
        {0x80020007, "This implementation does not support named arguments."},
        {0x80020008, "One of the arguments is not a valid variant type."},
        {0x80020009, "The application needs to raise an exception."},
        {0x8002000A, "One of the arguments could not be coerced to the specified type."},
        {0x8002000C,
         "The member being invoked interprets string arguments according to the LCID, and the LCID is not "
         "recognized. If the LCID is not needed to interpret arguments, this error should not be returned."},
        {0x8002000E,
         "The number of arguments is different from the number of arguments accepted by the method or property."},
        {0x8002000F, "A required parameter was omitted."},
    };
    for (TRow const & tRow : tRows)
        EXPECT_EQ(sFirstLine(static_cast<HRESULT>(tRow.dwError)), tRow.pzText);
}

TEST(ThrowError, LeavesOtherErrorsToThePlatform) {
    for (HRESULT const hr : {E_FAIL, E_ACCESSDENIED, DISP_E_UNKNOWNNAME, DISP_E_BADINDEX}) {
        _com_error const tError(hr);
        std::wstring const sText = tError.ErrorMessage();
        EXPECT_FALSE(sText.empty());
        EXPECT_EQ(sFirstLine(hr), std::string(sText.begin(), sText.end()));
    }
    EXPECT_EQ(sFirstLine(static_cast<HRESULT>(0x8123ABCD)), "Unknown error 0x8123ABCD");
}

TEST(ThrowError, TellsSixLines) {
    EXPECT_EQ(sReport(DISP_E_OVERFLOW), "One of the arguments could not be coerced to the specified type.\r\n"
                                        "\r\n"
                                        "Object type: unknown\r\n"
                                        "Tried to invoke: method\r\n"
                                        "Member: \"Turn\"\r\n"
                                        "Number of parameters: 3");
    EXPECT_EQ(sReport(DISP_E_EXCEPTION, DISPATCH_METHOD, nullptr), "The application needs to raise an exception.\r\n"
                                                                   "Error#: 0\r\n"
                                                                   "Source: unknown\r\n"
                                                                   "Description: not available\r\n"
                                                                   "Object type: unknown\r\n"
                                                                   "Tried to invoke: method\r\n"
                                                                   "Member: \"default\"\r\n"
                                                                   "Number of parameters: 3");
}

TEST(ThrowError, TellsTheKindOfTheCall) {
    struct TRow {
        unsigned short wFlags;
        char const * pzKind;
    };
    for (TRow const & tRow : {TRow{1, "method"}, TRow{2, "get property"}, TRow{4, "put property"},
                              TRow{8, "put property reference"}, TRow{3, "unknown"}, TRow{0, "unknown"}}) {
        EXPECT_NE(sReport(E_FAIL, tRow.wFlags).find("\r\nTried to invoke: " + std::string(tRow.pzKind) + "\r\n"),
                  std::string::npos)
            << tRow.wFlags;
    }
}

TEST(AutoWrap, RefusesANullObject) {
    try {
        AutoWrap(DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr);
        FAIL();
    } catch (std::invalid_argument const & tError) {
        EXPECT_STREQ(tError.what(), "NULL IDispatch passed to AutoWrap()");
    }
}

TEST(AutoWrap, TakesNoArgumentsForNull) {
    TFakeDispatch tObject;
    AutoWrap(DISPATCH_METHOD, nullptr, &tObject, nullptr, nullptr);
    EXPECT_EQ(tObject.iInvokes, 1);
    EXPECT_EQ(tObject.iInvoked, 0);
    EXPECT_FALSE(tObject.fHadArray);
    EXPECT_EQ(tObject.uNamed, 0u);
    EXPECT_FALSE(tObject.fHadNamed);
}

TEST(AutoWrap, NamesTheValueInTheArgumentsAtHand) {
    TFakeDispatch tObject;
    tagDISPPARAMS tParams{};
    AutoWrap(DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF, nullptr, &tObject, nullptr, &tParams);
    EXPECT_EQ(tObject.iNamed, DISPID_PROPERTYPUT);
    EXPECT_EQ(tParams.cNamedArgs, 1u); // in the caller's structure
}

TEST(AutoWrap, TakesAnUnusualSuccessForSuccess) {
    TFakeDispatch tObject;
    tObject.hrNames = S_FALSE;
    tObject.hrInvoke = S_FALSE;
    std::wstring const sName = L"Turn";
    AutoWrap(DISPATCH_METHOD, nullptr, &tObject, &sName, nullptr);
    EXPECT_EQ(tObject.iInvoked, 42);
}
