// Apart from the other functions on internet files: <winhttp.h> and <wininet.h> exclude each other.
#include "ZkTools/Internet.h"

#include "ZkBase/Windows.h"
#include "ZkTools/FileStream.h"
#include "ZkTools/Strings.h"

#include <cpprest/base_uri.h>
#include <memory>
#include <vector>
#include <winhttp.h>

namespace {

struct TSessionTraits {
    using THandle = HINTERNET;
    static THandle hNone() noexcept { return nullptr; }
    static bool fClose(THandle h) noexcept { return WinHttpCloseHandle(h) != FALSE; }
};

struct TGlobalFree {
    void operator()(wchar_t * pzText) const noexcept { GlobalFree(pzText); }
};
using TGlobalText = std::unique_ptr<wchar_t, TGlobalFree>;

} // namespace

std::wstring sGetProxyForUrl(std::wstring const & sConfigUrl, web::uri const & tTarget) {
    HandleWrapers::HandleT<TSessionTraits> const hSession(
        WinHttpOpen(L"WinHTTP AutoProxy/1.0", WINHTTP_ACCESS_TYPE_NO_PROXY, nullptr, nullptr, 0));
    if (!hSession.fIsValid()) return {};
    WINHTTP_AUTOPROXY_OPTIONS tOptions{};
    tOptions.dwFlags = WINHTTP_AUTOPROXY_CONFIG_URL;
    tOptions.lpszAutoConfigUrl = sConfigUrl.c_str();
    tOptions.fAutoLogonIfChallenged = TRUE;
    WINHTTP_PROXY_INFO tProxy{};
    bool const fFound =
        WinHttpGetProxyForUrl(hSession.hGet(), tTarget.to_string().c_str(), &tOptions, &tProxy) != FALSE;
    TGlobalText const pzProxies(tProxy.lpszProxy);
    TGlobalText const pzBypass(tProxy.lpszProxyBypass);
    if (!fFound || tProxy.dwAccessType != WINHTTP_ACCESS_TYPE_NAMED_PROXY || pzProxies == nullptr) return {};
    std::vector<std::wstring> const sProxies = SplitString(pzProxies.get(), L';');
    return sProxies.empty() ? std::wstring() : L"http://" + sProxies.front();
}
