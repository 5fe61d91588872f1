#include "ZkBase/Exceptions.h"

#include "ZkBase/Windows.h"
#include "tests/support/SystemCall.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>
#include <utility>

namespace {

/// What derived classes do with the protected members.
class TXProbe : public TXError {
public:
    TXProbe() : TXError(L"PROBE", 7) {}

    void Store(wchar_t const * pzFormat, ...) {
        va_list pArgs;
        va_start(pArgs, pzFormat);
        StoreMessage(pzFormat, pArgs);
        va_end(pArgs);
    }
    void StorePlain(wchar_t const * pzText) { StoreMessage(pzText, nullptr); }
    void StoreById(HINSTANCE hModule, unsigned int uId, ...) {
        va_list pArgs;
        va_start(pArgs, uId);
        StoreMessage(hModule, uId, pArgs);
        va_end(pArgs);
    }
    void StoreByIdPlain(HINSTANCE hModule, unsigned int uId) { StoreMessage(hModule, uId, nullptr); }
};

/// The English messages, which the tests need for a module with texts.
class TMessages {
public:
    TMessages() : hModule(LoadLibraryExW(L"ZkToolsMessages.dll", nullptr, LOAD_LIBRARY_AS_DATAFILE)) {}
    ~TMessages() { FreeLibrary(hModule); }
    TMessages(TMessages const &) = delete;
    TMessages & operator=(TMessages const &) = delete;

    HINSTANCE hModule;
};

constexpr unsigned int uRenameFailed = 4230; // takes two strings

std::string sDecodeText(std::string_view sBytes, unsigned int uPosition) {
    try {
        ThrowDecodeException(sBytes.data(), static_cast<unsigned int>(sBytes.size()), uPosition);
    } catch (TXError const & tError) {
        EXPECT_EQ(tError.iGetNumber(), -1);
        EXPECT_EQ(tError.sGetModule(), L"ZKBASE");
        return tError.what();
    }
}

} // namespace

static_assert(std::is_base_of_v<std::runtime_error, TXError>);
static_assert(std::has_virtual_destructor_v<TXError>);

TEST(TXError, IsEmptyUntilAMessageIsStored) {
    TXError const tError(L"TAG", 42);
    EXPECT_STREQ(tError.what(), "");
    EXPECT_EQ(tError.iGetNumber(), 42);
    EXPECT_EQ(tError.sGetModule(), L"TAG");
    EXPECT_EQ(TXError(L"", INT_MIN).iGetNumber(), INT_MIN);
}

TEST(TXError, ShowsItsMessagesInTheOrderInWhichTheyCame) {
    TXProbe tError;
    tError.Store(L"first %d", 1);
    EXPECT_STREQ(tError.what(), "first 1");
    tError.AddMessageStr(L"second %s", L"wide");
    tError.StorePlain(L"third");
    EXPECT_STREQ(tError.what(), "first 1\r\nsecond wide\r\nthird");
}

TEST(TXError, TakesATextWithoutArgumentsAsItStands) {
    TXProbe tError;
    tError.StorePlain(L"100 % of %s and %n");
    EXPECT_STREQ(tError.what(), "100 % of %s and %n");
    TMessages const tMessages;
    TXProbe tById;
    tById.StoreByIdPlain(tMessages.hModule, uRenameFailed);
    EXPECT_STREQ(tById.what(), "Cannot rename \"%s\" to \"%s\".");
}

TEST(TXError, LeavesPercentSignsOfValuesAlone) {
    TXProbe tError;
    tError.Store(L"%s", L"100 %s %d %n %%");
    tError.AddMessageStr(L"%s|%s", L"%1", L"%");
    EXPECT_STREQ(tError.what(), "100 %s %d %n %%\r\n%1|%");
}

TEST(TXError, KeepsLongValuesWhole) {
    std::wstring const sLong(100000, L'x');
    TXProbe tError;
    tError.Store(L"<%s>", sLong.c_str());
    EXPECT_EQ(std::string(tError.what()), "<" + std::string(100000, 'x') + ">");
}

TEST(TXError, FormatsTheTextOfAnId) {
    TMessages const tMessages;
    TXProbe tError;
    tError.StoreById(tMessages.hModule, uRenameFailed, L"a %s", L"b");
    EXPECT_STREQ(tError.what(), "Cannot rename \"a %s\" to \"b\".");
    EXPECT_EQ(tError.iGetNumber(), 7);
}

TEST(TXError, ShowsTagAndIdForAnUnknownOne) {
    TMessages const tMessages;
    TXProbe tError;
    tError.StoreById(tMessages.hModule, 1);
    EXPECT_STREQ(tError.what(), "PROBE 1");
    tError.StoreById(tMessages.hModule, 0xFFFFFFFF);
    tError.StoreById(tMessages.hModule, 0x10000 + uRenameFailed, L"a", L"b"); // not the id of its lower half
    EXPECT_STREQ(tError.what(), "PROBE 1\r\nPROBE 4294967295\r\nPROBE 69766");
}

TEST(TXError, LooksIdsUpInTheBaseLibraryItself) {
    TXError tError(L"TAG", -1);
    tError.AddMessage(uRenameFailed, L"a", L"b");
    EXPECT_STREQ(tError.what(), "TAG 4230");
}

TEST(TXError, IsCopiedAndAssignedWhole) {
    TXProbe tError;
    tError.StorePlain(L"text");
    TXError const tCopy(tError);
    TXError tAssigned(L"OTHER", 1);
    tAssigned.AddMessageStr(L"gone");
    tAssigned = tError;
    for (TXError const * pError : {&tCopy, static_cast<TXError const *>(&tAssigned)}) {
        EXPECT_STREQ(pError->what(), "text");
        EXPECT_EQ(pError->iGetNumber(), 7);
        EXPECT_EQ(pError->sGetModule(), L"PROBE");
    }
    tError.StorePlain(L"more");
    EXPECT_STREQ(tCopy.what(), "text");
}

TEST(TXError, KeepsItsTextWhenItIsSlicedDown) {
    TXProbe tError;
    tError.StorePlain(L"text");
    std::runtime_error tPlain("before");
    tPlain = tError;
    EXPECT_STREQ(tPlain.what(), "text");
}

TEST(TXError, TellsItsTextInTheCodePageOfTheThread) {
    std::string sCyrillic, sWestern;
    std::thread([&] {
        SetThreadLocale(MAKELCID(MAKELANGID(LANG_RUSSIAN, SUBLANG_DEFAULT), SORT_DEFAULT));
        TXProbe tError;
        tError.StorePlain(L"жук");
        sCyrillic = tError.what();
    }).join();
    std::thread([&] {
        SetThreadLocale(MAKELCID(MAKELANGID(LANG_GERMAN, SUBLANG_DEFAULT), SORT_DEFAULT));
        TXProbe tError;
        tError.StorePlain(L"Käfer жук \xD83D \u0141");
        sWestern = tError.what();
    }).join();
    EXPECT_EQ(sCyrillic, "\xE6\xF3\xEA");
    EXPECT_EQ(sWestern, "K\xE4"
                        "fer ??? ? L");
}

TEST(InsertMessage, PutsItsLineInFront) {
    TMessages const tMessages;
    TXProbe tError;
    tError.StorePlain(L"100 %s");
    InsertMessage(tError, tMessages.hModule, uRenameFailed, L"a", L"50 %d");
    EXPECT_STREQ(tError.what(), "Cannot rename \"a\" to \"50 %d\".\r\n100 %s");
    EXPECT_EQ(tError.iGetNumber(), 7);
    tError.StorePlain(L"last");
    EXPECT_STREQ(tError.what(), "Cannot rename \"a\" to \"50 %d\".\r\n100 %s\r\nlast");
}

TEST(InsertMessage, WorksOnAnyRuntimeError) {
    TMessages const tMessages;
    std::runtime_error tError("reason");
    InsertMessage(tError, tMessages.hModule, uRenameFailed, L"a", L"b");
    InsertMessage(tError, tMessages.hModule, 2);
    EXPECT_STREQ(tError.what(), "2\r\nCannot rename \"a\" to \"b\".\r\nreason");
}

TEST(InsertMessage, StandsAloneInAnEmptyText) {
    TMessages const tMessages;
    std::runtime_error tPlain("");
    InsertMessage(tPlain, tMessages.hModule, uRenameFailed, L"a", L"b");
    EXPECT_STREQ(tPlain.what(), "Cannot rename \"a\" to \"b\".");
    TXError tTagged(L"TAG", -1);
    InsertMessage(tTagged, tMessages.hModule, 3);
    EXPECT_STREQ(tTagged.what(), "TAG 3");
}

TEST(ThrowDecodeException, TellsPositionAndBytes) {
    EXPECT_EQ(sDecodeText("\xC3\x28", 17), "The bytes at position 17 cannot be decoded: C3 28");
    EXPECT_EQ(sDecodeText(std::string_view("\0", 1), 0), "The bytes at position 0 cannot be decoded: 00");
    EXPECT_EQ(sDecodeText("%s", 4294967295U), "The bytes at position 4294967295 cannot be decoded: 25 73");
}

TEST(ThrowDecodeException, TellsTheFirstBytesOfMany) {
    std::string const sBytes(17, '\xFF');
    std::string const sSixteen = "FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF";
    EXPECT_EQ(sDecodeText(sBytes.substr(0, 16), 5), "The bytes at position 5 cannot be decoded: " + sSixteen);
    EXPECT_EQ(sDecodeText(sBytes, 5), "The bytes at position 5 cannot be decoded: " + sSixteen + " ...");
}

TEST(ThrowDecodeException, LooksAtNoByteWhenThereIsNone) {
    EXPECT_EQ(sDecodeText(std::string_view(), 9), "Nothing can be decoded at position 9.");
}

TEST(sGetErrorString, IsTheSystemsTextWithoutItsLineEnd) {
    for (unsigned long uCode : std::initializer_list<unsigned long>{ERROR_SUCCESS, ERROR_FILE_NOT_FOUND,
                                                                    ERROR_ACCESS_DENIED, ERROR_ALREADY_EXISTS}) {
        std::array<wchar_t, 1000> acText{};
        FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, uCode, 0, acText.data(),
                       static_cast<DWORD>(acText.size()), nullptr);
        std::wstring const sText = sGetErrorString(uCode);
        EXPECT_FALSE(sText.empty());
        EXPECT_EQ(std::wstring(acText.data()).find(sText), 0U);
        EXPECT_EQ(sText.find_first_of(L"\r\n"), std::wstring::npos);
        EXPECT_NE(sText.back(), L' ');
    }
}

TEST(sGetErrorString, TakesOffWhateverLineEndAndBlanksTheSystemPuts) {
    zk_test::TSystemCall<"FormatMessageW",
                         DWORD WINAPI(DWORD, void const *, DWORD, DWORD, wchar_t *, DWORD, char **)> const
        tFormat(
            [](DWORD, void const *, DWORD, DWORD, wchar_t * pzBuffer, DWORD, char **) -> DWORD {
                constexpr std::wstring_view sText = L" A text. \r\n \r\n";
                auto * const pzText = static_cast<wchar_t *>(LocalAlloc(LPTR, (sText.size() + 1) * sizeof(wchar_t)));
                sText.copy(pzText, sText.size());
                *reinterpret_cast<wchar_t **>(pzBuffer) = pzText;
                return static_cast<DWORD>(sText.size());
            },
            L"ZkBase.dll");
    EXPECT_EQ(sGetErrorString(ERROR_DISK_FULL), L" A text.");
}

TEST(sGetErrorString, LeavesInsertsAlone) {
    EXPECT_NE(sGetErrorString(ERROR_BAD_EXE_FORMAT).find(L"%1"), std::wstring::npos);
}

TEST(sGetErrorString, KnowsTheCodesOfInterfaces) {
    EXPECT_EQ(sGetErrorString(0x80070005).find(L"Error "), std::wstring::npos);
}

TEST(sGetErrorString, GivesTheNumberOfACodeWithoutText) {
    EXPECT_EQ(sGetErrorString(0x2ABCDEF1), L"Error 717020913");
    EXPECT_EQ(sGetErrorString(4294967294U), L"Error 4294967294");
}

TEST(sGetErrorString, KeepsTheLastError) {
    for (unsigned long uCode : {2UL, 0x2ABCDEF1UL}) {
        SetLastError(4711);
        std::wstring const sText = sGetErrorString(uCode);
        EXPECT_EQ(GetLastError(), 4711U);
        std::array<wchar_t, 20> acBuffer{};
        GetErrorString(uCode, acBuffer.data(), static_cast<int>(acBuffer.size()));
        EXPECT_EQ(GetLastError(), 4711U);
    }
}

TEST(GetErrorString, CutsToTheBufferAndTerminates) {
    std::wstring const sText = sGetErrorString(ERROR_FILE_NOT_FOUND);
    auto const iSize = static_cast<int>(sText.size());
    for (int iRoom : {1, 2, 5, iSize, iSize + 1, iSize + 50}) {
        std::wstring sBuffer(sText.size() + 60, L'#');
        GetErrorString(ERROR_FILE_NOT_FOUND, sBuffer.data(), iRoom);
        std::size_t const uKept = std::min(sText.size(), static_cast<std::size_t>(iRoom - 1));
        EXPECT_EQ(sBuffer.substr(0, uKept), sText.substr(0, uKept));
        EXPECT_EQ(sBuffer[uKept], L'\0');
        EXPECT_EQ(sBuffer.find_first_not_of(L'#', uKept + 1), std::wstring::npos);
    }
}

TEST(GetErrorString, WritesNothingWithoutRoom) {
    wchar_t cBuffer = L'#';
    GetErrorString(ERROR_FILE_NOT_FOUND, &cBuffer, 0);
    GetErrorString(ERROR_FILE_NOT_FOUND, &cBuffer, -5);
    GetErrorString(ERROR_FILE_NOT_FOUND, nullptr, 0);
    EXPECT_EQ(cBuffer, L'#');
}
