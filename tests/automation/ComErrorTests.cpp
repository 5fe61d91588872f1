#include "ZkTools/ComError.h"

#include "tests/automation/Fakes.h"
#include "tests/support/SystemCall.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <type_traits>

using namespace zk_test;

namespace {

constexpr HRESULT hrUnknown = static_cast<HRESULT>(0x8123ABCD); // no system has a text for it
constexpr HRESULT hrServer = static_cast<HRESULT>(0x80040ABC);  // of automation servers, without a text

/// Lets the system answer with `pzText` for every error.
auto tMakeAnswer(wchar_t const * pzText) {
    return
        [pzText](DWORD dwFlags, LPCVOID pSource, DWORD, DWORD dwLanguage, LPWSTR pzBuffer, DWORD, va_list *) -> DWORD {
            EXPECT_EQ(dwFlags, DWORD{FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM});
            EXPECT_EQ(pSource, nullptr);
            EXPECT_EQ(dwLanguage, 1024u);
            std::size_t const uLength = std::wcslen(pzText);
            auto * const pzCopy = static_cast<wchar_t *>(LocalAlloc(LMEM_FIXED, (uLength + 1) * sizeof(wchar_t)));
            std::memcpy(pzCopy, pzText, (uLength + 1) * sizeof(wchar_t));
            std::memcpy(pzBuffer, &pzCopy, sizeof pzCopy);
            return static_cast<DWORD>(uLength);
        };
}
using TFormat = TSystemCall<"FormatMessageW", DWORD WINAPI(DWORD, LPCVOID, DWORD, DWORD, LPWSTR, DWORD, char **)>;

} // namespace

static_assert(std::is_base_of_v<std::runtime_error, TComError>);
static_assert(std::is_nothrow_copy_constructible_v<TComError>);

TEST(TComError, SaysTheErrorInWords) {
    TComError const tKnown(E_OUTOFMEMORY, nullptr, false);
    EXPECT_EQ(tKnown.Error(), E_OUTOFMEMORY);
    std::wstring const sText = tKnown.ErrorMessage();
    EXPECT_FALSE(sText.empty());
    EXPECT_NE(sText.back(), L'\n');
    EXPECT_NE(sText.back(), L'\r');
    EXPECT_EQ(tKnown.what(), "COM error: " + std::string(sText.begin(), sText.end()) + " (HRESULT: -2147024882)");
    EXPECT_STREQ(TComError(hrUnknown, nullptr, false).what(),
                 "COM error: Unknown error 0x8123ABCD (HRESULT: -2128368691)");
    EXPECT_STREQ(TComError(hrServer, nullptr, false).what(), "COM error: IDispatch error #2236 (HRESULT: -2147218756)");
}

TEST(TComError, SaysItInUtf8) {
    TFormat const tFormat(tMakeAnswer(L"Gr\u00F6\u00DFe \U0001F600"));
    EXPECT_STREQ(TComError(5, nullptr, false).what(), "COM error: Gr\xC3\xB6\xC3\x9F"
                                                      "e \xF0\x9F\x98\x80 (HRESULT: 5)");
}

TEST(TComError, TakesTheLineEndFromTheText) {
    struct TRow {
        wchar_t const * pzAnswer;
        wchar_t const * pzText;
    };
    for (TRow const & tRow : {TRow{L"text\r\n", L"text"}, TRow{L"text\n", L"text"}, TRow{L"text\r", L"text\r"},
                              TRow{L"text\r\n\r\n", L"text\r\n"}, TRow{L"\r\n", L""}, TRow{L"\n", L"\n"},
                              TRow{L"x\n", L"x"}, TRow{L"text", L"text"}, TRow{L"", L""}}) {
        TFormat const tFormat(tMakeAnswer(tRow.pzAnswer));
        EXPECT_STREQ(TComError(5, nullptr, false).ErrorMessage(), tRow.pzText);
    }
}

TEST(TComError, MakesATextWhereTheSystemHasNone) {
    TFormat const tFormat([](auto...) { return DWORD{0}; });
    auto const sText = [](unsigned long dwError) {
        return std::wstring(TComError(static_cast<HRESULT>(dwError), nullptr, false).ErrorMessage());
    };
    EXPECT_EQ(sText(5), L"Unknown error 0x5");
    EXPECT_EQ(sText(0x800401FF), L"Unknown error 0x800401FF");
    EXPECT_EQ(sText(0x80040200), L"Unknown error 0x80040200");
    EXPECT_EQ(sText(0x80040201), L"IDispatch error #1");
    EXPECT_EQ(sText(0x80040400), L"IDispatch error #512");
    EXPECT_EQ(sText(0x8004FFFF), L"IDispatch error #65023");
    EXPECT_EQ(sText(0x80050000), L"Unknown error 0x80050000");
}

TEST(TComError, AsksForTheTextOnce) {
    TFormat const tFormat([](auto...) { return DWORD{0}; });
    TComError const tError(5, nullptr, false);
    int const iBefore = tFormat.iGetCalls();
    wchar_t const * const pzText = tError.ErrorMessage();
    EXPECT_EQ(tError.ErrorMessage(), pzText);
    EXPECT_EQ(tFormat.iGetCalls(), iBefore + 1);
}

TEST(TComError, NumbersTheErrorsOfServers) {
    struct TRow {
        unsigned long dwError;
        unsigned short uCode;
    };
    for (TRow const & tRow :
         {TRow{0x80040200, 0}, TRow{0x80040201, 1}, TRow{0x80040400, 0x200}, TRow{0x8004FFFF, 0xFDFF},
          TRow{0x800401FF, 0}, TRow{0x80050000, 0}, TRow{0, 0}, TRow{0x40201, 0}, TRow{0xFFFFFFFF, 0}}) {
        auto const hr = static_cast<HRESULT>(tRow.dwError);
        EXPECT_EQ(TComError::HRESULTToWCode(hr), tRow.uCode) << std::hex << tRow.dwError;
        EXPECT_EQ(TComError(hr, nullptr, false).WCode(), tRow.uCode) << std::hex << tRow.dwError;
    }
    EXPECT_EQ(TComError::WCodeToHRESULT(0), static_cast<HRESULT>(0x80040200));
    EXPECT_EQ(TComError::WCodeToHRESULT(1), static_cast<HRESULT>(0x80040201));
    EXPECT_EQ(TComError::WCodeToHRESULT(0xFDFF), static_cast<HRESULT>(0x8004FFFF));
    EXPECT_EQ(TComError::WCodeToHRESULT(0xFE00), static_cast<HRESULT>(0x8004FFFF));
    EXPECT_EQ(TComError::WCodeToHRESULT(0xFFFF), static_cast<HRESULT>(0x8004FFFF));
}

TEST(TComError, OwnsOneReferenceToItsErrorObject) {
    TFakeErrorInfo tInfo;
    {
        TComError const tError(E_FAIL, &tInfo, true);
        EXPECT_EQ(tInfo.iReferences, 2);
        TComError const tCopy(tError);
        EXPECT_EQ(tInfo.iReferences, 3);
        IErrorInfo * const pInfo = tCopy.ErrorInfo();
        EXPECT_EQ(pInfo, &tInfo);
        EXPECT_EQ(tInfo.iReferences, 4);
        pInfo->Release();
    }
    EXPECT_EQ(tInfo.iReferences, 1);
    {
        tInfo.AddRef();
        TComError const tError(E_FAIL, &tInfo, false);
        EXPECT_EQ(tInfo.iReferences, 2);
    }
    EXPECT_EQ(tInfo.iReferences, 1);
    EXPECT_EQ(TComError(E_FAIL, nullptr, true).ErrorInfo(), nullptr);
}

TEST(TComError, CopiesItsTextAndError) {
    TComError const tError(hrUnknown, nullptr, false);
    wchar_t const * const pzText = tError.ErrorMessage();
    TComError const tCopy(tError);
    EXPECT_STREQ(tCopy.what(), tError.what());
    EXPECT_EQ(tCopy.Error(), hrUnknown);
    EXPECT_STREQ(tCopy.ErrorMessage(), pzText);
    EXPECT_NE(tCopy.ErrorMessage(), pzText); // each frees its own
}

TEST(TComError, KeepsItsOwnTextOnAssignment) {
    TFakeErrorInfo tOld;
    TFakeErrorInfo tNew;
    {
        TComError tTarget(hrUnknown, &tOld, true);
        EXPECT_STREQ(tTarget.ErrorMessage(), L"Unknown error 0x8123ABCD");
        TComError const tSource(hrServer, &tNew, true);
        tTarget = tSource;
        EXPECT_EQ(tOld.iReferences, 1);
        EXPECT_EQ(tNew.iReferences, 3);
        EXPECT_EQ(tTarget.Error(), hrServer);
        EXPECT_STREQ(tTarget.ErrorMessage(), L"IDispatch error #2236");
        EXPECT_STREQ(tTarget.what(), "COM error: Unknown error 0x8123ABCD (HRESULT: -2128368691)");

        wchar_t const * const pzText = tTarget.ErrorMessage();
        TComError & tSame = tTarget;
        tTarget = tSame;
        EXPECT_EQ(tNew.iReferences, 3);
        EXPECT_EQ(tTarget.ErrorMessage(), pzText); // nothing was freed
    }
    EXPECT_EQ(tOld.iReferences, 1);
    EXPECT_EQ(tNew.iReferences, 1);
}

TEST(TComError, TakesAnotherErrorForItsMessage) {
    TFakeErrorInfo tOld;
    TFakeErrorInfo tNew;
    {
        TComError tError(hrUnknown, &tOld, true);
        EXPECT_STREQ(tError.ErrorMessage(), L"Unknown error 0x8123ABCD");
        tNew.AddRef();
        EXPECT_EQ(tError.sGetErrorMessage(hrServer, &tNew), L"COM error: IDispatch error #2236 (HRESULT: -2147218756)");
        EXPECT_EQ(tOld.iReferences, 1);
        EXPECT_EQ(tNew.iReferences, 2);
        EXPECT_EQ(tError.Error(), hrServer);
        EXPECT_STREQ(tError.ErrorMessage(), L"IDispatch error #2236");
        EXPECT_STREQ(tError.what(), "COM error: Unknown error 0x8123ABCD (HRESULT: -2128368691)");
        static_cast<void>(tError.sGetErrorMessage(hrServer, &tNew)); // the one that it has
        EXPECT_EQ(tNew.iReferences, 2);
    }
    EXPECT_EQ(tNew.iReferences, 1);
}

TEST(TComError, TellsWhatItsErrorObjectTells) {
    TFakeErrorInfo tInfo;
    TComError const tError(E_FAIL, &tInfo, true);
    EXPECT_EQ(tError.Description(), L"description");
    EXPECT_EQ(tError.HelpFile(), L"help file");
    EXPECT_EQ(tError.Source(), L"source");
    EXPECT_EQ(tError.HelpContext(), 17u);
    EXPECT_TRUE(tError.GUID() == IID_IDispatch);
}

TEST(TComError, TellsNothingWithoutAnErrorObject) {
    TFakeErrorInfo tSilent;
    tSilent.hr = E_FAIL;
    for (IErrorInfo * const pInfo : {static_cast<IErrorInfo *>(nullptr), static_cast<IErrorInfo *>(&tSilent)}) {
        TComError const tError(E_FAIL, pInfo, true);
        EXPECT_EQ(tError.Description(), L"");
        EXPECT_EQ(tError.HelpFile(), L"");
        EXPECT_EQ(tError.Source(), L"");
        EXPECT_EQ(tError.HelpContext(), 0u);
        EXPECT_TRUE(tError.GUID() == GUID_NULL);
    }
}

TEST(TComError, IsCaughtAcrossTheLibraryAsRuntimeError) {
    try {
        throw TComError(E_FAIL, nullptr, false);
    } catch (std::runtime_error const & tError) {
        EXPECT_NE(dynamic_cast<TComError const *>(&tError), nullptr);
    }
}
