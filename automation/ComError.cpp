#include "ZkTools/ComError.h"

#include "automation/ComOwners.h"

#include <array>
#include <cwchar>
#include <utility>

namespace {

// Where the numbers of `WCode` lie.
constexpr unsigned long dwFirstCode = 0x80040200;
constexpr unsigned long dwLastCode = 0x8004FFFF;

struct TFreeLocal {
    void operator()(wchar_t * p) const noexcept { LocalFree(p); }
};
using TLocalText = std::unique_ptr<wchar_t, TFreeLocal>;

/// The system's text for an error without its line end; null when the system has none.
TLocalText pzFindSystemText(HRESULT hr) noexcept {
    wchar_t * pzText = nullptr;
    unsigned long const dwLength = FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM, nullptr, static_cast<unsigned long>(hr),
        MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT), reinterpret_cast<wchar_t *>(&pzText), 0, nullptr);
    if (dwLength >= 2 && pzText[dwLength - 1] == L'\n') {
        pzText[dwLength - 1] = 0;
        if (pzText[dwLength - 2] == L'\r') pzText[dwLength - 2] = 0;
    }
    return TLocalText(pzText);
}

/// A text for an error; null when there is no memory for it.
TLocalText pzMakeText(HRESULT hr) noexcept {
    if (TLocalText pzText = pzFindSystemText(hr)) return pzText;
    constexpr std::size_t uUnits = 32;
    TLocalText pzText(static_cast<wchar_t *>(LocalAlloc(LMEM_FIXED, uUnits * sizeof(wchar_t))));
    if (pzText == nullptr) return pzText;
    if (unsigned short const uCode = TComError::HRESULTToWCode(hr); uCode != 0)
        _snwprintf(pzText.get(), uUnits, L"IDispatch error #%d", uCode);
    else
        _snwprintf(pzText.get(), uUnits, L"Unknown error 0x%0lX", static_cast<unsigned long>(hr));
    return pzText;
}

std::wstring sDescribe(HRESULT hr, wchar_t const * pzText) {
    return std::wstring(L"COM error: ")
        .append(pzText != nullptr ? pzText : L"")
        .append(L" (HRESULT: ")
        .append(std::to_wstring(hr))
        .append(L")");
}

/// A text of the error object.
std::wstring sAsk(IErrorInfo * pErrorInfo, HRESULT (STDMETHODCALLTYPE IErrorInfo::*pGet)(BSTR *)) {
    TBstr sText;
    if (pErrorInfo != nullptr) (pErrorInfo->*pGet)(TBstrResult(sText));
    return sText != nullptr ? std::wstring(sText.get(), SysStringLen(sText.get())) : std::wstring();
}

} // namespace

TComError::TComError(HRESULT hr_, IErrorInfo * p, bool fAddRef)
    : std::runtime_error(sMakeUtf8(sDescribe(hr_, pzMakeText(hr_).get()))), hr(hr_), pErrorInfo(p) {
    if (pErrorInfo != nullptr && fAddRef) pErrorInfo->AddRef();
}

TComError::TComError(TComError const & tOther) noexcept
    : std::runtime_error(tOther), hr(tOther.hr), pErrorInfo(tOther.ErrorInfo()) {}

// Deliberate: the base is not assigned. `what` tells how this object came about; whoever assigns to it wants the error.
TComError & TComError::operator=(TComError const & tOther) noexcept {
    if (this == &tOther) return *this;
    TReference<IErrorInfo> const pOld(std::exchange(pErrorInfo, tOther.ErrorInfo()));
    LocalFree(std::exchange(pzMessage, nullptr));
    hr = tOther.hr;
    return *this;
}

TComError::~TComError() {
    if (pErrorInfo != nullptr) pErrorInfo->Release();
    LocalFree(pzMessage);
}

HRESULT TComError::Error() const noexcept {
    return hr;
}

std::wstring TComError::sGetErrorMessage(HRESULT hr_, IErrorInfo * p) {
    if (p != pErrorInfo) TReference<IErrorInfo> const pOld(std::exchange(pErrorInfo, p));
    hr = hr_;
    LocalFree(std::exchange(pzMessage, nullptr));
    return sDescribe(hr, ErrorMessage());
}

wchar_t const * TComError::ErrorMessage() const noexcept {
    if (pzMessage == nullptr) pzMessage = pzMakeText(hr).release();
    return pzMessage;
}

unsigned short TComError::WCode() const noexcept {
    return HRESULTToWCode(hr);
}

unsigned short TComError::HRESULTToWCode(HRESULT hr_) noexcept {
    auto const dwError = static_cast<unsigned long>(hr_);
    if (dwError < dwFirstCode || dwError > dwLastCode) return 0;
    return static_cast<unsigned short>(dwError - dwFirstCode);
}

HRESULT TComError::WCodeToHRESULT(unsigned short uCode) noexcept {
    return static_cast<HRESULT>(uCode >= 0xFE00 ? dwLastCode : dwFirstCode + uCode);
}

IErrorInfo * TComError::ErrorInfo() const noexcept {
    if (pErrorInfo != nullptr) pErrorInfo->AddRef();
    return pErrorInfo;
}

std::wstring TComError::Description() const {
    return sAsk(pErrorInfo, &IErrorInfo::GetDescription);
}

std::wstring TComError::HelpFile() const {
    return sAsk(pErrorInfo, &IErrorInfo::GetHelpFile);
}

std::wstring TComError::Source() const {
    return sAsk(pErrorInfo, &IErrorInfo::GetSource);
}

unsigned long TComError::HelpContext() const noexcept {
    unsigned long dwContext = 0;
    if (pErrorInfo != nullptr) pErrorInfo->GetHelpContext(&dwContext);
    return dwContext;
}

::GUID TComError::GUID() const noexcept {
    ::GUID tGuid{};
    if (pErrorInfo != nullptr) pErrorInfo->GetGUID(&tGuid);
    return tGuid;
}
