// Paths and text as URIs, and the checks of URLs and URIs. The platform knows what a URL is.
#include "ZkTools/Uri.h"

#include "ZkBase/Paths.h"
#include "ZkBase/Windows.h"
#include "ZkTools/Strings.h"

#include <cpprest/base_uri.h>
#include <shlwapi.h>

#include <algorithm>
#include <array>
#include <cwchar>

namespace {

/// What the platform's functions write into: the longest URL and its terminator.
using TUrlBuffer = std::array<wchar_t, 2084>;

constexpr std::wstring_view sFileScheme = L"file:";

/// The text of one call into a buffer; empty when the call fails.
template <typename TCall>
std::wstring sGetFromPlatform(TCall Call) {
    TUrlBuffer acUrl{};
    DWORD dwSize = acUrl.size();
    return SUCCEEDED(Call(acUrl.data(), &dwSize)) ? acUrl.data() : std::wstring();
}

/// A question mark in front of the fragment. Not every version of the platform looks for one.
bool fHasQuery(std::wstring const & sUrl) noexcept {
    std::wstring_view const sText = sUrl.c_str();
    return UrlIsW(sUrl.c_str(), URLIS_HASQUERY) || sText.substr(0, sText.find(L'#')).find(L'?') != sText.npos;
}

bool fBeginsWithFileScheme(std::wstring const & sUrl) noexcept {
    return _wcsnicmp(sUrl.c_str(), sFileScheme.data(), sFileScheme.size()) == 0;
}

} // namespace

std::wstring sPathToURI(std::wstring const & sPath) {
    std::wstring const sUrl = sGetFromPlatform(
        [&](wchar_t * pzUrl, DWORD * pdwSize) { return UrlCreateFromPathW(sPath.c_str(), pzUrl, pdwSize, 0); });
    bool const fRelative = fBeginsWithFileScheme(sUrl) && path_func::fPathIsRelative(sPath.c_str());
    wchar_t const * const pzBegin = sUrl.c_str() + (fRelative ? sFileScheme.size() : 0);
    return sGetFromPlatform(
        [&](wchar_t * pzUrl, DWORD * pdwSize) { return UrlCanonicalizeW(pzBegin, pzUrl, pdwSize, 0); });
}

std::wstring sStringToURI(std::wstring const & sText) {
    return sGetFromPlatform([&](wchar_t * pzUrl, DWORD * pdwSize) {
        return UrlEscapeW(sText.c_str(), pzUrl, pdwSize, URL_ESCAPE_PERCENT);
    });
}

std::wstring sUnescapeURI(std::wstring const & sText) {
    std::wstring sPlain = sText;
    UrlUnescapeW(sPlain.data(), nullptr, nullptr, URL_UNESCAPE_INPLACE);
    sPlain.resize(std::wcslen(sPlain.c_str()));
    return sPlain;
}

bool fIsValidURL(std::wstring const & sText) {
    return !fIsMultilineString(sText) && UrlIsW(sText.c_str(), URLIS_URL);
}

bool fIsValidURL_NoQuery(std::wstring const & sText) {
    return fIsValidURL(sText) && !fHasQuery(sText);
}

bool fIsValidURI(std::wstring const & sText) {
    return web::uri::validate(sText);
}
