// Text as Base64 of its UTF-8 form, and back.
#include "ZkTools/Uri.h"

#include "ZkBase/Windows.h"

#include <wincrypt.h>

#include <climits>
#include <stdexcept>
#include <system_error>

namespace {

constexpr DWORD dwOneLine = CRYPT_STRING_BASE64 | CRYPT_STRING_NOCRLF;

[[noreturn]] void ThrowSystemError(char const * pzWhat) {
    auto const iError = static_cast<int>(GetLastError());
    throw std::system_error(std::error_code(iError, std::system_category()), pzWhat);
}

/// A size as the platform's conversions take it.
int iGetSize(std::size_t uSize) {
    if (uSize > INT_MAX) throw std::overflow_error("The text is too long for a conversion to or from UTF-8.");
    return static_cast<int>(uSize);
}

std::string sToUtf8(std::wstring const & sText) {
    int const iUnits = iGetSize(sText.size());
    if (iUnits == 0) return {};
    auto const iConvert = [&](char * pTarget, int iRoom) {
        int const iBytes =
            WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, sText.data(), iUnits, pTarget, iRoom, nullptr, nullptr);
        if (iBytes <= 0) ThrowSystemError("The text cannot be converted to UTF-8.");
        return iBytes;
    };
    int const iBytes = iConvert(nullptr, 0);
    std::string sBytes(static_cast<std::size_t>(iBytes), '\0');
    iConvert(sBytes.data(), iBytes);
    return sBytes;
}

std::wstring sFromUtf8(std::string const & sBytes) {
    int const iBytes = iGetSize(sBytes.size());
    if (iBytes == 0) return {};
    auto const iConvert = [&](wchar_t * pTarget, int iRoom) {
        int const iUnits = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, sBytes.data(), iBytes, pTarget, iRoom);
        if (iUnits <= 0) ThrowSystemError("The bytes are no UTF-8.");
        return iUnits;
    };
    int const iUnits = iConvert(nullptr, 0);
    std::wstring sText(static_cast<std::size_t>(iUnits), L'\0');
    iConvert(sText.data(), iUnits);
    return sText;
}

} // namespace

std::wstring sStringToBase64(std::wstring const & sText) {
    std::string const sBytes = sToUtf8(sText);
    if (sBytes.empty()) return {}; // the platform refuses to encode nothing
    auto const * pBytes = reinterpret_cast<BYTE const *>(sBytes.data());
    auto const dwBytes = static_cast<DWORD>(sBytes.size());
    DWORD dwSize = 0; // with the terminator
    if (!CryptBinaryToStringW(pBytes, dwBytes, dwOneLine, nullptr, &dwSize)) {
        ThrowSystemError("CryptBinaryToString failed (1)");
    }
    std::wstring sBase64(dwSize, L'\0');
    if (!CryptBinaryToStringW(pBytes, dwBytes, dwOneLine, sBase64.data(), &dwSize)) {
        ThrowSystemError("CryptBinaryToString failed (2)");
    }
    sBase64.resize(dwSize); // now without it
    return sBase64;
}

std::wstring sBase64ToString(std::wstring const & sBase64) {
    auto const dwLength = static_cast<DWORD>(iGetSize(sBase64.size()));
    DWORD dwSize = 0;
    if (!CryptStringToBinaryW(sBase64.c_str(), dwLength, CRYPT_STRING_BASE64, nullptr, &dwSize, nullptr, nullptr)) {
        // Not every version of the platform takes the empty text, which stands for no bytes.
        if (dwLength == 0) return {};
        ThrowSystemError("CryptStringToBinary failed (1)");
    }
    if (dwSize == 0) return {};
    std::string sBytes(dwSize, '\0');
    if (!CryptStringToBinaryW(sBase64.c_str(), dwLength, CRYPT_STRING_BASE64, reinterpret_cast<BYTE *>(sBytes.data()),
                              &dwSize, nullptr, nullptr)) {
        ThrowSystemError("CryptStringToBinary failed (2)");
    }
    sBytes.resize(dwSize);
    return sFromUtf8(sBytes);
}
