/// The root of the exception family, and how system errors and message ids become text.
#pragma once

#include "ZkBase/Export.h"
#include "ZkBase/Windows.h"

#include <stdexcept>
#include <string>

/// Root of all exceptions of the tool's libraries.
///
/// `what` gives all stored messages in the order in which they came, one a line, joined by CR LF, as narrow text in
/// the thread's ANSI code page; a character that this code page lacks becomes one that looks like it, or the default
/// character, as the system has it. The text lives in the `std::runtime_error`, so that a copy sliced down to that
/// class keeps it.
///
/// Formats are those of the platform's wide `printf` family: `%s` is a wide string.
class ZKBASE_API TXError : public std::runtime_error {
public:
    /// \param pzModule the module tag, for example "ZKTOOLS"
    /// \param iNumber  a message id, a caller's own code, or -1 when there is none
    ///
    /// `what` is empty until a message is stored.
    TXError(wchar_t const * pzModule, int iNumber);
    TXError(TXError const & tOther);
    ~TXError() override;
    TXError & operator=(TXError const & tOther);

    /// Adds message `uId` with its arguments. This class looks the id up in the resources of ZkBase.dll itself;
    /// derived classes look into their own library's message module.
    virtual void AddMessage(unsigned int uId, ...);

    /// Adds a message from a format text. Text from the system is handed in as the format by most callers, so a percent
    /// sign in it is read as a conversion.
    void AddMessageStr(wchar_t const * pzFormat, ...);

    /// The number given at construction.
    [[nodiscard]] int iGetNumber() const noexcept { return iNumber; }
    /// The module tag given at construction.
    [[nodiscard]] std::wstring const & sGetModule() const noexcept { return sModule; }

protected:
    /// Loads string `uId` of `hModule` as a format, formats `pArgs` into it and adds the result. An id that the module
    /// lacks gives the tag and the id in decimal ("ZKTOOLS 4230"), never an empty text. A null `pArgs` is no argument.
    void StoreMessage(HINSTANCE hModule, unsigned int uId, char * pArgs);

    /// Formats `pArgs` by `pzFormat` and adds the result. With a null `pArgs` the text is added as it stands, percent
    /// signs included.
    void StoreMessage(wchar_t const * pzFormat, char * pArgs);

private:
    std::wstring sModule;
    int iNumber;
};

/// Puts message `uId` of `hModule`, formatted with the arguments, as a line of its own in front of the text of
/// `tError`. Works on any `std::runtime_error`; percent signs in the text that is there are left alone.
ZKBASE_API void InsertMessage(std::runtime_error & tError, HINSTANCE hModule, unsigned int uId, ...);

/// Throws a `TXError` that tells the position on the stream and the bytes, in hexadecimal, that can't be decoded. Of
/// more than 16 bytes the first 16 are told.
/// \param pBytes    the bytes; they need no terminator. Not looked at when there are none.
/// \param uLength   how many there are
/// \param uPosition the position of the first one on its stream, in bytes
[[noreturn]] ZKBASE_API void ThrowDecodeException(char const * pBytes, unsigned int uLength, unsigned int uPosition);

/// The system's text for an error code of `GetLastError`, in the user's language, without the line end that the system
/// puts behind it. A code without a text gives its number. Does not change `GetLastError`.
[[nodiscard]] ZKBASE_API std::wstring sGetErrorString(unsigned long uCode);

/// The same into a buffer of `iSize` characters, cut where necessary and always terminated. A size below 1 writes
/// nothing.
ZKBASE_API void GetErrorString(unsigned long uCode, wchar_t * pzBuffer, int iSize);
