// Owners of what COM hands out, and the UTF-8 of the messages about it.
#pragma once

#include "ZkBase/Windows.h"

#include <oleauto.h>

#include <memory>
#include <string>
#include <string_view>

struct TFreeBstr {
    void operator()(wchar_t * sText) const noexcept { SysFreeString(sText); }
};
/// A BSTR. Null is one too, the empty text.
using TBstr = std::unique_ptr<wchar_t, TFreeBstr>;

/// Takes what a function stores into its argument: `pGet(..., TBstrResult(sText))`.
class TBstrResult {
public:
    explicit TBstrResult(TBstr & sTarget_) noexcept : sTarget(sTarget_) {}
    ~TBstrResult() { sTarget.reset(sReceived); }
    TBstrResult(TBstrResult const &) = delete;
    TBstrResult & operator=(TBstrResult const &) = delete;
    operator BSTR *() noexcept { return &sReceived; }

private:
    TBstr & sTarget;
    BSTR sReceived = nullptr;
};

struct TReleaseReference {
    void operator()(IUnknown * p) const noexcept { p->Release(); }
};
/// One reference to a COM object.
template <typename TInterface>
using TReference = std::unique_ptr<TInterface, TReleaseReference>;

/// Lone surrogates become U+FFFD.
[[nodiscard]] inline std::string sMakeUtf8(std::wstring_view sText) {
    if (sText.empty()) return {};
    int const iUnits = static_cast<int>(sText.size());
    int const iBytes = WideCharToMultiByte(CP_UTF8, 0, sText.data(), iUnits, nullptr, 0, nullptr, nullptr);
    std::string sResult(static_cast<std::size_t>(iBytes), '\0');
    WideCharToMultiByte(CP_UTF8, 0, sText.data(), iUnits, sResult.data(), iBytes, nullptr, nullptr);
    return sResult;
}
