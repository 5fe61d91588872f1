#include "ZkTools/ComError.h"

#include "frame/ComErrorText.h"
#include "frame/ComOwners.h"

#include <utility>

namespace {

// Where the numbers of `WCode` lie.
constexpr unsigned long dwFirstCode = 0x80040200;
constexpr unsigned long dwLastCode = 0x8004FFFF;

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
    : std::runtime_error(sMakeUtf8(sDescribe(hr_, pzGetComErrorText(hr_).get()))), hr(hr_), pErrorInfo(p) {
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
    if (pzMessage == nullptr) pzMessage = pzGetComErrorText(hr).release();
    return pzMessage;
}

unsigned short TComError::WCode() const noexcept {
    return HRESULTToWCode(hr);
}

unsigned short TComError::HRESULTToWCode(HRESULT hr_) noexcept {
    return uGetDispatchNumber(hr_);
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
