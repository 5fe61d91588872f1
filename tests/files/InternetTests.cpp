#include "ZkTools/Internet.h"

#include "ZkTools/Exceptions.h"
#include "ZkTools/MessageIds.h"
#include "tests/support/HttpServer.h"
#include "tests/support/SystemCall.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>
#include <wininet.h>

namespace {

using zk_test::tFailWith;
using zk_test::THttpServer;
using zk_test::TSystemCall;

// fIsInternetFile

TEST(IsInternetFile, LooksAtTheSchemeInAnyCase) {
    for (wchar_t const * pzPath : {L"http:", L"https:", L"ftp:", L"gopher:", L"http://server/path", L"HTTPS://server",
                                   L"Ftp:x", L"GOPHER:", L"hTTp:no url"})
        EXPECT_TRUE(fIsInternetFile(pzPath)) << pzPath;
    for (wchar_t const * pzPath :
         {L"", L"h", L"http", L"https", L"httpx:", L"file:", L"file:///c:/a", L" http:", L"xhttp:", L"http;",
          L"C:\\http:", L"mailto:a@b", L"http\uFF1A", L"http\u017F:", L"\u0266ttp:", L"gopher", L"ftps:"})
        EXPECT_FALSE(fIsInternetFile(pzPath)) << pzPath;
    EXPECT_FALSE(fIsInternetFile(std::wstring(L"htt\0p:", 6)));
}

// ReadInternetFile

/// A stream that keeps what is written, piece by piece, and fails on demand.
class TPieces : public TStreamBase {
public:
    void WriteData(void const * pSource, unsigned long dwCount) override {
        if (sPieces.size() == uFailAt) throw std::out_of_range("full");
        sPieces.emplace_back(static_cast<char const *>(pSource), dwCount);
    }
    [[nodiscard]] std::string sGetAll() const {
        std::string sAll;
        for (std::string const & sPiece : sPieces)
            sAll += sPiece;
        return sAll;
    }

    std::vector<std::string> sPieces;
    std::size_t uFailAt = 1'000'000;
};

using TCanonicalize = TSystemCall<"InternetCanonicalizeUrlW", decltype(InternetCanonicalizeUrlW)>;
using TOpen = TSystemCall<"InternetOpenW", decltype(InternetOpenW)>;
using TOpenUrl = TSystemCall<"InternetOpenUrlW", decltype(InternetOpenUrlW)>;
using TQuery = TSystemCall<"HttpQueryInfoW", decltype(HttpQueryInfoW)>;
using TReadFile = TSystemCall<"InternetReadFile", decltype(InternetReadFile)>;
using TClose = TSystemCall<"InternetCloseHandle", decltype(InternetCloseHandle)>;
using TGetResponse = TSystemCall<"InternetGetLastResponseInfoW", decltype(InternetGetLastResponseInfoW)>;
using TFormatMessage =
    TSystemCall<"FormatMessageW", DWORD WINAPI(DWORD, void const *, DWORD, DWORD, wchar_t *, DWORD, char **)>;

/// The text of the exception, which must be a TXZkTools; its number goes to `piNumber`.
std::string sFailure(std::wstring const & sUrl, TStreamBase & tStream, int * piNumber = nullptr) {
    try {
        ReadInternetFile(sUrl, tStream);
    } catch (TXZkTools const & tFailure) {
        if (piNumber != nullptr) *piNumber = tFailure.iGetNumber();
        return tFailure.what();
    }
    return "nothing thrown";
}

/// Message 4260 for the URL.
std::string sMessage(std::wstring const & sUrl) {
    return TXZkTools(IDS_INTERNET_READ_FAILED, sUrl.c_str()).what();
}

class ReadInternetFileFromServer : public testing::Test {
protected:
    std::string sRead(std::wstring const & sPath) {
        ReadInternetFile(tServer.sGetUrl(sPath), tStream);
        return tStream.sGetAll();
    }
    THttpServer tServer;
    TPieces tStream;
};

TEST_F(ReadInternetFileFromServer, WritesTheBodyAsItIs) {
    std::string sBody;
    for (unsigned i = 0; i < 100'000; ++i)
        sBody += static_cast<char>(i * i >> 3);
    tServer.Answer("/file", "200 OK", sBody);
    EXPECT_EQ(sRead(L"/file"), sBody);
    for (std::string const & sPiece : tStream.sPieces) {
        EXPECT_LE(sPiece.size(), 1024U);
        EXPECT_GT(sPiece.size(), 0U);
    }
}

TEST_F(ReadInternetFileFromServer, AppendsToWhatIsOnTheStream) {
    tServer.Answer("/file", "200 OK", "new");
    TStreamBase tMemory;
    tMemory.WriteData("old ", 4);
    ReadInternetFile(tServer.sGetUrl(L"/file"), tMemory);
    EXPECT_EQ(tMemory.dwGetSize(), 7U);
    char acBytes[7];
    tMemory.Seek(0L, 0);
    tMemory.ReadData(acBytes, sizeof acBytes);
    EXPECT_EQ(std::string_view(acBytes, sizeof acBytes), "old new");
}

TEST_F(ReadInternetFileFromServer, LeavesTheStreamAloneForAnEmptyBody) {
    tServer.Answer("/empty", "200 OK", "");
    EXPECT_EQ(sRead(L"/empty"), "");
    EXPECT_TRUE(tStream.sPieces.empty());
}

TEST_F(ReadInternetFileFromServer, PutsChunksTogether) {
    tServer.Answer("/chunks", {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\nConnection: close\r\n\r\n5\r\nfirst",
                               "\r\n8\r\n, second\r\n", "0\r\n\r\n"});
    EXPECT_EQ(sRead(L"/chunks"), "first, second");
}

TEST_F(ReadInternetFileFromServer, ReadsABodyWithoutALengthToItsEnd) {
    tServer.Answer("/open", {"HTTP/1.0 200 OK\r\n\r\nto be ", "continued"});
    EXPECT_EQ(sRead(L"/open"), "to be continued");
}

TEST_F(ReadInternetFileFromServer, FollowsRedirections) {
    tServer.Answer("/old", {"HTTP/1.1 302 Found\r\nLocation: /new\r\nContent-Length: 0\r\nConnection: close\r\n\r\n"});
    tServer.Answer("/new", "200 OK", "moved");
    EXPECT_EQ(sRead(L"/old"), "moved");
}

TEST_F(ReadInternetFileFromServer, GoesToTheServerEveryTimeInItsOwnName) {
    tServer.Answer("/file", {"HTTP/1.1 200 OK\r\nContent-Length: 1\r\nCache-Control: max-age=1000\r\n"
                             "Connection: close\r\n\r\nx"});
    EXPECT_EQ(sRead(L"/file"), "x");
    EXPECT_EQ(sRead(L"/file"), "xx");
    std::vector<std::string> const sRequests = tServer.sGetRequests();
    ASSERT_EQ(sRequests.size(), 2U);
    for (std::string const & sRequest : sRequests) {
        EXPECT_NE(sRequest.find("\r\nUser-Agent: OSTRA.ZK\r\n"), std::string::npos) << sRequest;
        EXPECT_NE(sRequest.find("\r\nAccept: */*\r\n"), std::string::npos) << sRequest;
    }
}

TEST_F(ReadInternetFileFromServer, CanonicalisesTheUrl) {
    tServer.Answer("/a%20b", "200 OK", "blank");
    EXPECT_EQ(sRead(L"/x/../a b"), "blank");
}

TEST_F(ReadInternetFileFromServer, TellsTheStatusOfTheServer) {
    tServer.Answer("/404", "404 Nothing here", "a page that tells so");
    tServer.Answer("/204", {"HTTP/1.1 204 Void\r\nConnection: close\r\n\r\n"});
    tServer.Answer("/206", "206 Some", "some");
    tServer.Answer("/500", "500 100%s %n %d broken", "");
    for (auto const & [sPath, pzText] :
         {std::pair{L"/404", "Nothing here"}, {L"/204", "Void"}, {L"/206", "Some"}, {L"/500", "100%s %n %d broken"}}) {
        std::wstring const sUrl = tServer.sGetUrl(sPath);
        int iNumber = 0;
        EXPECT_EQ(sFailure(sUrl, tStream, &iNumber), pzText + std::string("\r\n") + sMessage(sUrl));
        EXPECT_EQ(iNumber, -1);
        EXPECT_TRUE(tStream.sPieces.empty());
    }
}

TEST_F(ReadInternetFileFromServer, KeepsWhatHadComeWhenTheServerBreaksOff) {
    std::string const sHead = "HTTP/1.1 200 OK\r\nContent-Length: 5000\r\n\r\n";
    tServer.Answer("/broken", {sHead + std::string(2000, 'x')}, true);
    std::wstring const sUrl = tServer.sGetUrl(L"/broken");
    std::string const sText = sFailure(sUrl, tStream);
    EXPECT_TRUE(sText.ends_with(sMessage(sUrl))) << sText;
    EXPECT_LE(tStream.sGetAll().size(), 2000U);
    EXPECT_EQ(tStream.sGetAll().find_first_not_of('x'), std::string::npos);
}

TEST_F(ReadInternetFileFromServer, FailsWithoutAServer) {
    std::wstring sUrl;
    {
        THttpServer const tGone;
        sUrl = tGone.sGetUrl(L"/file");
    }
    EXPECT_TRUE(sFailure(sUrl, tStream).ends_with(sMessage(sUrl)));
    EXPECT_TRUE(tStream.sPieces.empty());
}

TEST_F(ReadInternetFileFromServer, FailsForWhatIsNoUrl) {
    for (std::wstring const & sUrl :
         {std::wstring(), std::wstring(L"no url"), std::wstring(L"file:///c:/windows/win.ini"),
          L"http://" + std::wstring(3000, L'x')}) {
        EXPECT_TRUE(sFailure(sUrl, tStream).ends_with(sMessage(sUrl))) << sUrl.substr(0, 100);
        EXPECT_TRUE(tStream.sPieces.empty());
    }
}

TEST_F(ReadInternetFileFromServer, PassesOnWhatTheStreamThrows) {
    tServer.Answer("/file", "200 OK", std::string(5000, 'x'));
    tStream.uFailAt = 2;
    TClose tClose([&tClose](HINTERNET h) { return tClose.Original(h); });
    EXPECT_THROW(ReadInternetFile(tServer.sGetUrl(L"/file"), tStream), std::out_of_range);
    EXPECT_EQ(tClose.iGetCalls(), 2);
    EXPECT_EQ(tStream.sPieces.size(), 2U);
}

// What the system is asked, and what becomes of its failures

/// The calls of a download that goes well, without a network, each of which can be made to fail.
class TDownloadCalls {
public:
    /// The call that fails, counted from 0: canonicalise, open, open the URL, query the status, query its text, read.
    int iFail = -1;
    DWORD dwError = ERROR_INTERNET_TIMEOUT;
    DWORD dwStatus = HTTP_STATUS_OK;
    int iPieces = 2; ///< of the body
    int iOpen = 0;   ///< handles

    [[nodiscard]] std::string const & sGetCalls() const noexcept { return sCalls; }

private:
    /// Writes the call down; false when it is to fail.
    bool fCall(int iStep, std::string_view sCall) {
        sCalls.append(sCall).append(";");
        return iStep != iFail;
    }
    static HINTERNET hAny(std::uintptr_t uValue) { return reinterpret_cast<HINTERNET>(uValue); }

    std::string sCalls;
    TCanonicalize const tCanonicalize{
        [this](wchar_t const * pzUrl, wchar_t * pzBuffer, DWORD * pdwSize, DWORD dwFlags) {
            EXPECT_EQ(*pdwSize, 2048U);
            EXPECT_EQ(dwFlags, 0U);
            if (!fCall(0, "canonicalise")) return tFailWith(dwError, FALSE);
            std::wstring const sCanonical = std::wstring(pzUrl) + L"/canonical";
            std::copy_n(sCanonical.c_str(), sCanonical.size() + 1, pzBuffer);
            return TRUE;
        }};
    TOpen const tOpen{[this](wchar_t const * pzAgent, DWORD dwAccess, wchar_t const * pzProxy, wchar_t const * pzBypass,
                             DWORD dwFlags) {
        EXPECT_STREQ(pzAgent, L"OSTRA.ZK");
        EXPECT_EQ(dwAccess, 0U);
        EXPECT_EQ(pzProxy, nullptr);
        EXPECT_EQ(pzBypass, nullptr);
        EXPECT_EQ(dwFlags, 0U);
        if (!fCall(1, "open")) return tFailWith<HINTERNET>(dwError, nullptr);
        ++iOpen;
        return hAny(1);
    }};
    TOpenUrl const tOpenUrl{[this](HINTERNET hSession, wchar_t const * pzUrl, wchar_t const * pzHeaders, DWORD dwLength,
                                   DWORD dwFlags, DWORD_PTR uContext) {
        EXPECT_EQ(hSession, hAny(1));
        EXPECT_STREQ(pzUrl, L"http://a.test/canonical");
        EXPECT_EQ(std::wstring(pzHeaders, dwLength), L"Accept: */*\r\n\r\n");
        EXPECT_EQ(dwFlags, 0x84000000);
        EXPECT_EQ(uContext, 0U);
        if (!fCall(2, "open URL")) return tFailWith<HINTERNET>(dwError, nullptr);
        ++iOpen;
        return hAny(2);
    }};
    TQuery const tQuery{[this](HINTERNET hFile, DWORD dwLevel, void * pBuffer, DWORD * pdwSize, DWORD *) {
        EXPECT_EQ(hFile, hAny(2));
        if (dwLevel == 0x20000013) {
            EXPECT_EQ(*pdwSize, 4U);
            if (!fCall(3, "status")) return tFailWith(dwError, FALSE);
            *static_cast<DWORD *>(pBuffer) = dwStatus;
            return TRUE;
        }
        EXPECT_EQ(dwLevel, 20U);
        EXPECT_EQ(*pdwSize, 2048U);
        if (!fCall(4, "status text")) return tFailWith(dwError, FALSE);
        std::copy_n(L"No", 3, static_cast<wchar_t *>(pBuffer));
        return TRUE;
    }};
    TReadFile const tReadFile{[this](HINTERNET hFile, void * pBuffer, DWORD dwSize, DWORD * pdwRead) {
        EXPECT_EQ(hFile, hAny(2));
        EXPECT_EQ(dwSize, 1024U);
        if (!fCall(iPieces > 1 ? 6 : 5, "read")) return tFailWith(dwError, FALSE);
        *pdwRead = iPieces-- > 0 ? 3 : 0;
        std::copy_n("abc", 3, static_cast<char *>(pBuffer));
        return TRUE;
    }};
    TClose const tClose{[this](HINTERNET) {
        --iOpen;
        return tFailWith(ERROR_INVALID_HANDLE, TRUE); // closing changes the last error
    }};
};

constexpr wchar_t const * pzUrl = L"http://a.test";

/// What FormatMessageW answers for WinINet's module; nothing for a null text.
std::unique_ptr<TFormatMessage> pSystemText(wchar_t const * pzText) {
    return std::make_unique<TFormatMessage>([pzText](DWORD dwFlags, void const * pModule, DWORD dwError, DWORD,
                                                     wchar_t * pzBuffer, DWORD dwSize, char **) -> DWORD {
        EXPECT_EQ(dwFlags, DWORD{FORMAT_MESSAGE_FROM_HMODULE});
        EXPECT_EQ(pModule, GetModuleHandleW(L"wininet.dll"));
        EXPECT_NE(dwError, DWORD{ERROR_INVALID_HANDLE}); // that of the handles which were closed
        EXPECT_EQ(dwSize, 256U);
        if (pzText == nullptr) return tFailWith<DWORD>(ERROR_MR_MID_NOT_FOUND, 0);
        std::copy_n(pzText, wcslen(pzText) + 1, pzBuffer);
        return static_cast<DWORD>(wcslen(pzText));
    });
}

TEST(ReadInternetFileCalls, ComeInTheirOrder) {
    TDownloadCalls tCalls;
    TPieces tStream;
    ReadInternetFile(pzUrl, tStream);
    EXPECT_EQ(tCalls.sGetCalls(), "canonicalise;open;open URL;status;read;read;read;");
    EXPECT_EQ(tStream.sGetAll(), "abcabc");
    EXPECT_EQ(tCalls.iOpen, 0);
}

TEST(ReadInternetFileCalls, StopWhereOneFails) {
    char const * const ppzCalls[] = {"canonicalise;",
                                     "canonicalise;open;",
                                     "canonicalise;open;open URL;",
                                     "canonicalise;open;open URL;status;",
                                     "canonicalise;open;open URL;status;status text;",
                                     "canonicalise;open;open URL;status;read;read;"};
    auto const pText = pSystemText(L"It failed.");
    for (int iFail = 0; iFail < 6; ++iFail) {
        TDownloadCalls tCalls;
        tCalls.iFail = iFail;
        tCalls.dwStatus = iFail == 4 ? 404 : 200;
        TPieces tStream;
        int iNumber = 0;
        EXPECT_EQ(sFailure(pzUrl, tStream, &iNumber), "It failed.\r\n" + sMessage(pzUrl)) << iFail;
        EXPECT_EQ(iNumber, -1);
        EXPECT_EQ(tCalls.sGetCalls(), ppzCalls[iFail]);
        EXPECT_EQ(tCalls.iOpen, 0) << iFail;
        EXPECT_EQ(tStream.sGetAll(), iFail == 5 ? "abc" : "");
    }
}

TEST(ReadInternetFileCalls, EndAtAStatusOtherThan200) {
    TDownloadCalls tCalls;
    tCalls.dwStatus = 201;
    TPieces tStream;
    EXPECT_EQ(sFailure(pzUrl, tStream), "No\r\n" + sMessage(pzUrl));
    EXPECT_EQ(tCalls.sGetCalls(), "canonicalise;open;open URL;status;status text;");
    EXPECT_EQ(tCalls.iOpen, 0);
}

/// What InternetGetLastResponseInfoW answers.
TGetResponse::TReplacement tServerText(std::wstring const & sText) {
    return [sText](DWORD *, wchar_t * pzBuffer, DWORD * pdwLength) {
        if (pzBuffer == nullptr || *pdwLength < sText.size() + 1) {
            *pdwLength = static_cast<DWORD>(sText.size());
            return tFailWith(ERROR_INSUFFICIENT_BUFFER, FALSE);
        }
        EXPECT_EQ(*pdwLength, sText.size() + 1);
        std::copy_n(sText.c_str(), sText.size() + 1, pzBuffer);
        *pdwLength = static_cast<DWORD>(sText.size());
        return TRUE;
    };
}

class InternetFailure : public testing::Test {
protected:
    /// The text of the failure of a download that ends with that error.
    std::string sFail(DWORD dwError, wchar_t const * pzSystem, std::wstring const & sServer, int iResponses) {
        auto const pText = pSystemText(pzSystem);
        TGetResponse const tResponse(tServerText(sServer));
        TDownloadCalls tCalls;
        tCalls.iFail = 2;
        tCalls.dwError = dwError;
        TPieces tStream;
        std::string sText = sFailure(pzUrl, tStream, &iNumber);
        EXPECT_EQ(tResponse.iGetCalls(), iResponses);
        return sText;
    }
    int iNumber = 0;
};

TEST_F(InternetFailure, HasTheTextOfTheSystemFirst) {
    EXPECT_EQ(sFail(12002, L"System.", L"Server", 0), "System.\r\n" + sMessage(pzUrl));
    EXPECT_EQ(iNumber, -1);
}

TEST_F(InternetFailure, TakesTheTextOfTheSystemAsTheFormat) {
    EXPECT_EQ(sFail(12002, L"System 100%%.", L"Server", 0), "System 100%.\r\n" + sMessage(pzUrl));
}

TEST_F(InternetFailure, HasTheWordsOfTheServerBehindIt) {
    EXPECT_EQ(sFail(12003, L"System.", L"550 no %s file", 2), "System.\r\n550 no %s file\r\n" + sMessage(pzUrl));
    EXPECT_EQ(iNumber, -1);
}

TEST_F(InternetFailure, HasEachTextOnALineOfItsOwn) {
    EXPECT_EQ(sFail(12003, L"System.\r\n", L"550 no\r\n550 file\r\n", 2),
              "System.\r\n550 no\r\n550 file\r\n" + sMessage(pzUrl));
}

TEST_F(InternetFailure, HasTheWordsOfTheServerAlone) {
    EXPECT_EQ(sFail(12003, nullptr, L"550 no %s file", 2), "550 no %s file\r\n" + sMessage(pzUrl));
    EXPECT_EQ(iNumber, -1);
}

TEST_F(InternetFailure, WithoutAnyTextIsTheMessageAlone) {
    EXPECT_EQ(sFail(12002, nullptr, L"Server", 0), sMessage(pzUrl));
    EXPECT_EQ(iNumber, IDS_INTERNET_READ_FAILED);
    EXPECT_EQ(sFail(12003, nullptr, L"", 2), sMessage(pzUrl));
    EXPECT_EQ(iNumber, IDS_INTERNET_READ_FAILED);
    EXPECT_EQ(sFail(12003, L"System.", L"", 2), "System.\r\n" + sMessage(pzUrl));
}

} // namespace
