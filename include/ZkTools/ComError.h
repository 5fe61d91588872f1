/// The exception of the variant operations: an HRESULT, the system's text for it, and the error object that came with
/// it.
#pragma once

#include "ZkBase/Windows.h"
#include "ZkTools/Export.h"

#include <oaidl.h>

#include <stdexcept>
#include <string>

/// A failed COM call.
///
/// `what` is UTF-8, unlike that of the TXError family: "COM error: Out of memory. (HRESULT: -2147024882)". What the
/// error object tells (`Description` and its kin) is no part of it.
///
/// The object owns one reference to its error object, if it has one.
class ZKTOOLS_API TComError : public std::runtime_error {
public:
    /// \param p       the error object, may be null
    /// \param fAddRef true: takes a reference of its own; false: the caller's reference passes to this object
    TComError(HRESULT hr, IErrorInfo * p, bool fAddRef);
    /// Takes a reference of its own.
    TComError(TComError const & tOther) noexcept;
    /// Takes over the error and a reference of its own to the error object. `what` stays as it was.
    TComError & operator=(TComError const & tOther) noexcept;
    ~TComError() override;

    [[nodiscard]] HRESULT Error() const noexcept;
    /// Gives this object another error, as the constructor does without `fAddRef`, and returns the text for it in the
    /// form of `what`, which itself stays. An error object held before is released, unless it is the same one.
    std::wstring sGetErrorMessage(HRESULT hr_, IErrorInfo * p);
    /// The system's text for the error without its line end, in the user's language. Of an error that the system does
    /// not know, "IDispatch error #N" with the number of `WCode` or "Unknown error 0xN". Belongs to this object; null
    /// when there is no memory for it.
    [[nodiscard]] wchar_t const * ErrorMessage() const noexcept;

    /// `HRESULTToWCode` of the error.
    [[nodiscard]] unsigned short WCode() const noexcept;
    /// The number of an error of automation servers: what it lies above 0x80040200. 0 outside 0x80040200 to 0x8004FFFF.
    [[nodiscard]] static unsigned short HRESULTToWCode(HRESULT hr_) noexcept;
    /// The inverse; all numbers from 0xFE00 on give 0x8004FFFF.
    [[nodiscard]] static HRESULT WCodeToHRESULT(unsigned short uCode) noexcept;

    /// The error object, null when there is none, with a reference that the caller has to release.
    [[nodiscard]] IErrorInfo * ErrorInfo() const noexcept;
    /// What the error object tells: empty, 0 or all zero without one, and where it tells nothing.
    [[nodiscard]] std::wstring Description() const;
    [[nodiscard]] std::wstring HelpFile() const;
    [[nodiscard]] std::wstring Source() const;
    [[nodiscard]] unsigned long HelpContext() const noexcept;
    /// The interface that the error came from.
    [[nodiscard]] ::GUID GUID() const noexcept;

private:
    HRESULT hr;
    IErrorInfo * pErrorInfo;
    mutable wchar_t * pzMessage = nullptr; // made on demand; LocalFree
};
