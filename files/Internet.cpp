#include "ZkTools/Internet.h"

#include "ZkBase/Windows.h"
#include "ZkTools/Exceptions.h"
#include "ZkTools/FileStream.h"
#include "ZkTools/MessageIds.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <wininet.h>

namespace {

constexpr std::array<std::wstring_view, 4> sSchemes{L"http:", L"https:", L"ftp:", L"gopher:"};
constexpr wchar_t const * pzAgent = L"OSTRA.ZK";
constexpr std::wstring_view sHeaders = L"Accept: */*\r\n\r\n";
constexpr DWORD dwUrlSize = 2048;        // characters
constexpr DWORD dwStatusTextSize = 2048; // bytes
constexpr DWORD dwMessageSize = 256;     // characters
constexpr DWORD dwPieceSize = 1024;

struct TInternetTraits {
    using THandle = HINTERNET;
    static THandle hNone() noexcept { return nullptr; }
    static bool fClose(THandle h) noexcept { return InternetCloseHandle(h) != FALSE; }
};
using TInternetHandle = HandleWrapers::HandleT<TInternetTraits>;

/// Without the line end that system and servers put behind their texts.
std::wstring sWithoutLineEnd(std::wstring_view sText) {
    return std::wstring(sText.substr(0, sText.find_last_not_of(L"\r\n ") + 1));
}

/// WinINet's own text for its error codes; those of the system it has none for.
std::wstring sGetInternetErrorString(DWORD dwError) {
    wchar_t acText[dwMessageSize];
    DWORD const dwLength = FormatMessageW(FORMAT_MESSAGE_FROM_HMODULE, GetModuleHandleW(L"wininet.dll"), dwError, 0,
                                          acText, dwMessageSize, nullptr);
    return sWithoutLineEnd({acText, dwLength});
}

/// What the server said about the last failure.
std::wstring sGetLastResponse() {
    DWORD dwError = 0;
    DWORD dwLength = 0;
    InternetGetLastResponseInfoW(&dwError, nullptr, &dwLength);
    std::wstring sText(dwLength, L'\0');
    ++dwLength; // the string's own terminator has the room
    if (InternetGetLastResponseInfoW(&dwError, sText.data(), &dwLength) == FALSE) return {};
    return sWithoutLineEnd(std::wstring_view(sText).substr(0, dwLength));
}

[[noreturn]] void ThrowInternetError(DWORD dwError, std::wstring const & sUrl) {
    std::wstring const sSystem = sGetInternetErrorString(dwError);
    std::wstring const sServer = dwError == ERROR_INTERNET_EXTENDED_ERROR ? sGetLastResponse() : std::wstring();
    if (sSystem.empty() && sServer.empty()) throw TXZkTools(IDS_INTERNET_READ_FAILED, sUrl.c_str());
    // Deliberate: the system's text is the format, as everywhere where the reason stands first. The server's is none.
    TXZkTools tFailure = sSystem.empty() ? TXZkTools(L"%s", sServer.c_str()) : TXZkTools(sSystem.c_str());
    if (!sSystem.empty() && !sServer.empty()) tFailure.AddMessageStr(L"%s", sServer.c_str());
    tFailure.AddMessage(IDS_INTERNET_READ_FAILED, sUrl.c_str());
    throw tFailure;
}

/// A URL that was asked for, and its answer. The last error of a step that failed is kept while the handles close.
class TDownload {
public:
    explicit TDownload(std::wstring const & sLocation) : sUrl(sLocation) {}

    void Open() {
        wchar_t acCanonical[dwUrlSize];
        DWORD dwSize = dwUrlSize;
        Require(InternetCanonicalizeUrlW(sUrl.c_str(), acCanonical, &dwSize, 0) != FALSE);
        hSession = TInternetHandle(InternetOpenW(pzAgent, INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0));
        Require(hSession.fIsValid());
        hFile = TInternetHandle(InternetOpenUrlW(hSession.hGet(), acCanonical, sHeaders.data(),
                                                 static_cast<DWORD>(sHeaders.size()),
                                                 INTERNET_FLAG_RELOAD | INTERNET_FLAG_DONT_CACHE, 0));
        Require(hFile.fIsValid());
    }

    /// Only HTTP has a status: here the other schemes fail.
    void RequireStatusOk() {
        DWORD dwStatus = 0;
        DWORD dwSize = sizeof dwStatus;
        Require(HttpQueryInfoW(hFile.hGet(), HTTP_QUERY_FLAG_NUMBER | HTTP_QUERY_STATUS_CODE, &dwStatus, &dwSize,
                               nullptr) != FALSE);
        if (dwStatus == HTTP_STATUS_OK) return;
        std::array<wchar_t, dwStatusTextSize / sizeof(wchar_t)> acText{};
        dwSize = dwStatusTextSize;
        Require(HttpQueryInfoW(hFile.hGet(), HTTP_QUERY_STATUS_TEXT, acText.data(), &dwSize, nullptr) != FALSE);
        // The server's words are no format: it may say "%s".
        TXZkTools tFailure(L"%s", acText.data());
        tFailure.AddMessage(IDS_INTERNET_READ_FAILED, sUrl.c_str());
        throw tFailure;
    }

    void Read(TStreamBase & tStream) {
        std::array<char, dwPieceSize> acPiece;
        for (DWORD dwRead = 0;;) {
            Require(InternetReadFile(hFile.hGet(), acPiece.data(), dwPieceSize, &dwRead) != FALSE);
            if (dwRead == 0) return;
            tStream.WriteData(acPiece.data(), dwRead);
        }
    }

private:
    void Require(bool fDone) const {
        if (!fDone) ThrowInternetError(GetLastError(), sUrl);
    }

    std::wstring const & sUrl;
    TInternetHandle hSession;
    TInternetHandle hFile;
};

} // namespace

bool fIsInternetFile(std::wstring const & sPath) {
    constexpr auto cLower = [](wchar_t c) { return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c | 0x20) : c; };
    return std::any_of(sSchemes.begin(), sSchemes.end(), [&sPath, cLower](std::wstring_view sScheme) {
        return sPath.size() >= sScheme.size() &&
               std::equal(sScheme.begin(), sScheme.end(), sPath.begin(),
                          [cLower](wchar_t cScheme, wchar_t c) { return cScheme == cLower(c); });
    });
}

void ReadInternetFile(std::wstring const & sUrl, TStreamBase & tStream) {
    TDownload tDownload(sUrl);
    tDownload.Open();
    tDownload.RequireStatusOk();
    tDownload.Read(tStream);
}
