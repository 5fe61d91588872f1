#include "ZkBase/Exceptions.h"

#include "ZkBase/Messages.h"
#include "base/Narrow.h"

#include <algorithm>
#include <cstdarg>
#include <memory>
#include <string_view>

namespace {

constexpr std::string_view sLineEnd = "\r\n";

/// Without arguments the format is the text itself.
std::wstring sFormatText(wchar_t const * pzFormat, char * pArgs) {
    return pArgs != nullptr ? string_functions::sFormat_va(pzFormat, pArgs) : std::wstring(pzFormat);
}

/// Message `uId` of `hModule`, formatted. An unknown id gives the tag, where there is one, and the id.
std::wstring sFormatMessage(HINSTANCE hModule, unsigned int uId, char * pArgs, std::wstring const & sTag) {
    std::wstring const sFormat = string_functions::sLoadString(hModule, uId);
    if (!sFormat.empty()) return sFormatText(sFormat.c_str(), pArgs);
    return (sTag.empty() ? sTag : sTag + L" ") + std::to_wstring(uId);
}

void SetText(std::runtime_error & tError, std::string const & sText) {
    tError = std::runtime_error(sText);
}

/// Adds a line behind the text that is there.
void AppendLine(std::runtime_error & tError, std::wstring const & sLine) {
    std::string sText = tError.what();
    if (!sText.empty()) sText += sLineEnd;
    sText += sNarrow(sLine);
    SetText(tError, sText);
}

/// The bytes, two digits each and with blanks between them; of a long run only the first ones.
std::wstring sHexadecimal(char const * pBytes, unsigned int uLength) {
    constexpr unsigned int uMostShown = 16; // a decoder may hand in a whole buffer
    constexpr wchar_t const * pzDigits = L"0123456789ABCDEF";
    std::wstring sBytes;
    for (unsigned int i = 0; i < std::min(uLength, uMostShown); ++i) {
        auto const uByte = static_cast<unsigned char>(pBytes[i]);
        if (i != 0) sBytes += L' ';
        sBytes += pzDigits[uByte >> 4];
        sBytes += pzDigits[uByte & 15];
    }
    if (uLength > uMostShown) sBytes += L" ...";
    return sBytes;
}

/// The system's text without what it puts behind it; empty when it has none.
std::wstring sGetSystemText(unsigned long uCode) {
    wchar_t * pzText = nullptr;
    DWORD const dwLength =
        FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                       nullptr, uCode, 0, reinterpret_cast<wchar_t *>(&pzText), 0, nullptr);
    std::unique_ptr<wchar_t, decltype(&LocalFree)> const pOwner(pzText, &LocalFree);
    std::wstring_view const sText(pzText, dwLength);
    return std::wstring(sText.substr(0, sText.find_last_not_of(L"\r\n ") + 1));
}

} // namespace

TXError::TXError(wchar_t const * pzModule, int iNumber_)
    : std::runtime_error(std::string()), sModule(pzModule), iNumber(iNumber_) {}

TXError::TXError(TXError const &) = default;
TXError::~TXError() = default;
TXError & TXError::operator=(TXError const &) = default;

void TXError::AddMessage(unsigned int uId, ...) {
    HMODULE hBase = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<wchar_t const *>(&InsertMessage), &hBase);
    va_list pArgs;
    va_start(pArgs, uId);
    StoreMessage(hBase, uId, pArgs);
    va_end(pArgs);
}

void TXError::AddMessageStr(wchar_t const * pzFormat, ...) {
    va_list pArgs;
    va_start(pArgs, pzFormat);
    StoreMessage(pzFormat, pArgs);
    va_end(pArgs);
}

void TXError::StoreMessage(HINSTANCE hModule, unsigned int uId, char * pArgs) {
    AppendLine(*this, sFormatMessage(hModule, uId, pArgs, sModule));
}

void TXError::StoreMessage(wchar_t const * pzFormat, char * pArgs) {
    AppendLine(*this, sFormatText(pzFormat, pArgs));
}

void InsertMessage(std::runtime_error & tError, HINSTANCE hModule, unsigned int uId, ...) {
    auto const * pTagged = dynamic_cast<TXError const *>(&tError);
    va_list pArgs;
    va_start(pArgs, uId);
    std::wstring const sLine =
        sFormatMessage(hModule, uId, pArgs, pTagged != nullptr ? pTagged->sGetModule() : std::wstring());
    va_end(pArgs);

    std::string sText = sNarrow(sLine);
    if (*tError.what() != '\0') sText.append(sLineEnd).append(tError.what());
    SetText(tError, sText);
}

void ThrowDecodeException(char const * pBytes, unsigned int uLength, unsigned int uPosition) {
    TXError tError(L"ZKBASE", -1);
    if (uLength == 0)
        tError.AddMessageStr(L"Nothing can be decoded at position %u.", uPosition);
    else
        tError.AddMessageStr(L"The bytes at position %u cannot be decoded: %s", uPosition,
                             sHexadecimal(pBytes, uLength).c_str());
    throw TXError(tError);
}

std::wstring sGetErrorString(unsigned long uCode) {
    DWORD const dwKept = GetLastError();
    std::wstring sResult = sGetSystemText(uCode);
    if (sResult.empty()) sResult = L"Error " + std::to_wstring(uCode);
    SetLastError(dwKept);
    return sResult;
}

void GetErrorString(unsigned long uCode, wchar_t * pzBuffer, int iSize) {
    if (iSize < 1) return;
    std::wstring const sText = sGetErrorString(uCode);
    std::size_t const uCount = std::min(sText.size(), static_cast<std::size_t>(iSize - 1));
    sText.copy(pzBuffer, uCount);
    pzBuffer[uCount] = L'\0';
}
