#include "ZkTools/Internet.h"

#include "tests/support/Handles.h"
#include "tests/support/HttpServer.h"
#include "tests/support/SystemCall.h"

#include <gtest/gtest.h>

#include <cpprest/base_uri.h>
#include <winhttp.h>

namespace {

using zk_test::tFailWith;
using zk_test::THttpServer;
using zk_test::TSystemCall;

using TOpen = TSystemCall<"WinHttpOpen", decltype(WinHttpOpen)>;
using TGetProxy = TSystemCall<"WinHttpGetProxyForUrl", decltype(WinHttpGetProxyForUrl)>;
using TCloseSession = TSystemCall<"WinHttpCloseHandle", decltype(WinHttpCloseHandle)>;
using TGlobalFree = TSystemCall<"GlobalFree", decltype(GlobalFree)>;

constexpr char const * pzConfiguration = R"(
function FindProxyForURL(url, host) {
    if (host == "direct.test") return "DIRECT";
    if (host == "two.test") return "PROXY first.test:81; PROXY second.test:82";
    return "PROXY proxy.test:8080";
}
)";

/// Text that the system would hand out.
wchar_t * pzGlobalText(std::wstring const & sText) {
    auto * const pzText = static_cast<wchar_t *>(GlobalAlloc(GMEM_FIXED, (sText.size() + 1) * sizeof(wchar_t)));
    std::copy_n(sText.c_str(), sText.size() + 1, pzText);
    return pzText;
}

/// What becomes of the system's answer.
std::wstring sGetProxyOf(DWORD dwAccessType, wchar_t const * pzProxy, wchar_t const * pzBypass, BOOL fAnswer = TRUE) {
    TGetProxy const tGetProxy([&](HINTERNET, wchar_t const *, WINHTTP_AUTOPROXY_OPTIONS *, WINHTTP_PROXY_INFO * pInfo) {
        pInfo->dwAccessType = dwAccessType;
        pInfo->lpszProxy = pzProxy != nullptr ? pzGlobalText(pzProxy) : nullptr;
        pInfo->lpszProxyBypass = pzBypass != nullptr ? pzGlobalText(pzBypass) : nullptr;
        return fAnswer;
    });
    TCloseSession tClose([&tClose](HINTERNET h) { return tClose.Original(h); });
    TGlobalFree tFree([&tFree](HGLOBAL h) { return tFree.Original(h); });
    std::wstring sAnswer = sGetProxyForUrl(L"http://config.test/", web::uri(L"http://target.test/"));
    EXPECT_EQ(tClose.iGetCalls(), 1);
    EXPECT_EQ(tFree.iGetCalls(), (pzProxy != nullptr ? 1 : 0) + (pzBypass != nullptr ? 1 : 0));
    return sAnswer;
}

TEST(GetProxyForUrl, AsksTheConfigurationFile) {
    THttpServer tServer;
    tServer.Answer("/proxy.pac", {std::string("HTTP/1.1 200 OK\r\nContent-Type: application/x-ns-proxy-autoconfig\r\n"
                                              "Connection: close\r\n\r\n") +
                                  pzConfiguration});
    std::wstring const sConfigUrl = tServer.sGetUrl(L"/proxy.pac");
    EXPECT_EQ(sGetProxyForUrl(sConfigUrl, web::uri(L"http://other.test/a?b=c")), L"http://proxy.test:8080");
    EXPECT_EQ(sGetProxyForUrl(sConfigUrl, web::uri(L"http://two.test/")), L"http://first.test:81");
    EXPECT_EQ(sGetProxyForUrl(sConfigUrl, web::uri(L"http://direct.test/")), L"");
}

TEST(GetProxyForUrl, AnswersNothingWhenTheConfigurationCannotBeHad) {
    THttpServer tServer;
    tServer.Answer("/none.pac", "404 Not Found", "");
    tServer.Answer("/bad.pac", "200 OK", "this is no script");
    EXPECT_EQ(sGetProxyForUrl(tServer.sGetUrl(L"/none.pac"), web::uri(L"http://target.test/")), L"");
    EXPECT_EQ(sGetProxyForUrl(tServer.sGetUrl(L"/bad.pac"), web::uri(L"http://target.test/")), L"");
    EXPECT_EQ(sGetProxyForUrl(L"", web::uri(L"http://target.test/")), L"");
    EXPECT_EQ(sGetProxyForUrl(L"no url", web::uri(L"http://target.test/")), L"");
}

TEST(GetProxyForUrl, AnswersTheFirstOfSeveral) {
    EXPECT_EQ(sGetProxyOf(WINHTTP_ACCESS_TYPE_NAMED_PROXY, L"one:1;two:2", nullptr), L"http://one:1");
    EXPECT_EQ(sGetProxyOf(WINHTTP_ACCESS_TYPE_NAMED_PROXY, L"one:1", L"<local>"), L"http://one:1");
    EXPECT_EQ(sGetProxyOf(WINHTTP_ACCESS_TYPE_NAMED_PROXY, L";two:2", nullptr), L"http://"); // an empty first one
    EXPECT_EQ(sGetProxyOf(WINHTTP_ACCESS_TYPE_NAMED_PROXY, L"", nullptr), L"");
    EXPECT_EQ(sGetProxyOf(WINHTTP_ACCESS_TYPE_NAMED_PROXY, nullptr, nullptr), L"");
}

TEST(GetProxyForUrl, AnswersNothingForADirectWayAndForAFailure) {
    EXPECT_EQ(sGetProxyOf(WINHTTP_ACCESS_TYPE_NO_PROXY, L"one:1", L"two"), L"");
    EXPECT_EQ(sGetProxyOf(WINHTTP_ACCESS_TYPE_DEFAULT_PROXY, L"one:1", nullptr), L"");
    EXPECT_EQ(sGetProxyOf(WINHTTP_ACCESS_TYPE_NAMED_PROXY, L"one:1", L"two", FALSE), L"");
}

TEST(GetProxyForUrl, AsksInItsOwnName) {
    TOpen tOpen([&tOpen](wchar_t const * pzAgent, DWORD dwAccess, wchar_t const * pzProxy, wchar_t const * pzBypass,
                         DWORD dwFlags) {
        EXPECT_STREQ(pzAgent, L"WinHTTP AutoProxy/1.0");
        EXPECT_EQ(dwAccess, 1U);
        EXPECT_EQ(pzProxy, nullptr);
        EXPECT_EQ(pzBypass, nullptr);
        EXPECT_EQ(dwFlags, 0U);
        return tOpen.Original(pzAgent, dwAccess, pzProxy, pzBypass, dwFlags);
    });
    TGetProxy const tGetProxy(
        [](HINTERNET, wchar_t const * pzUrl, WINHTTP_AUTOPROXY_OPTIONS * pOptions, WINHTTP_PROXY_INFO *) {
            EXPECT_STREQ(pzUrl, L"http://target.test/a%20b?c=d#e");
            EXPECT_EQ(pOptions->dwFlags, 2U);
            EXPECT_EQ(pOptions->dwAutoDetectFlags, 0U);
            EXPECT_STREQ(pOptions->lpszAutoConfigUrl, L"http://config.test/");
            EXPECT_EQ(pOptions->fAutoLogonIfChallenged, TRUE);
            return tFailWith(ERROR_WINHTTP_UNABLE_TO_DOWNLOAD_SCRIPT, FALSE);
        });
    EXPECT_EQ(sGetProxyForUrl(L"http://config.test/", web::uri(L"http://target.test/a%20b?c=d#e")), L"");
    EXPECT_EQ(tOpen.iGetCalls(), 1);
    EXPECT_EQ(tGetProxy.iGetCalls(), 1);
}

TEST(GetProxyForUrl, AnswersNothingWithoutASession) {
    TOpen const tOpen([](wchar_t const *, DWORD, wchar_t const *, wchar_t const *, DWORD) {
        return tFailWith<HINTERNET>(ERROR_NOT_ENOUGH_MEMORY, nullptr);
    });
    TCloseSession const tClose([](HINTERNET) { return TRUE; });
    EXPECT_EQ(sGetProxyForUrl(L"http://config.test/", web::uri(L"http://target.test/")), L"");
    EXPECT_EQ(tClose.iGetCalls(), 0);
}

} // namespace
