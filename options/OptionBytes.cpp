// Bytes in the text of an element.
#include "ZkTools/OptionTree.h"

#include "ZkBase/Windows.h"

#include <wincrypt.h>

#include <exception>
#include <system_error>

namespace {

[[noreturn]] void ThrowLastError(char const * pzWhat) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), pzWhat);
}

} // namespace

void TOptionElement::Read(std::vector<unsigned char> & tBytes) const {
    // The system would take a length of 0 for that of a terminated text and refuse the empty one.
    if (sText.empty()) return tBytes.clear();
    auto const dwLength = static_cast<DWORD>(sText.size());
    DWORD dwSize = 0;
    if (!CryptStringToBinaryW(sText.c_str(), dwLength, CRYPT_STRING_BASE64, nullptr, &dwSize, nullptr, nullptr))
        ThrowLastError("CryptStringToBinary failed (1)");
    std::vector<unsigned char> tDecoded(dwSize);
    if (!CryptStringToBinaryW(sText.c_str(), dwLength, CRYPT_STRING_BASE64, tDecoded.data(), &dwSize, nullptr, nullptr))
        ThrowLastError("CryptStringToBinary failed (2)");
    tDecoded.resize(dwSize);
    tBytes.swap(tDecoded);
}

void TOptionElement::Write(void const * pData, int iSize) {
    if (iSize < 0 || (pData == nullptr && iSize != 0)) std::terminate();
    if (iSize == 0) return sText.clear();
    constexpr DWORD dwFlags = CRYPT_STRING_BASE64 | CRYPT_STRING_NOCRLF;
    auto const * const pBytes = static_cast<BYTE const *>(pData);
    auto const dwSize = static_cast<DWORD>(iSize);
    DWORD dwLength = 0; // with the terminator from the first call, without it from the second
    if (!CryptBinaryToStringW(pBytes, dwSize, dwFlags, nullptr, &dwLength))
        ThrowLastError("CryptBinaryToString failed (1)");
    std::wstring sEncoded(dwLength, L'\0');
    if (!CryptBinaryToStringW(pBytes, dwSize, dwFlags, sEncoded.data(), &dwLength))
        ThrowLastError("CryptBinaryToString failed (2)");
    sEncoded.resize(dwLength);
    sText.swap(sEncoded);
}
