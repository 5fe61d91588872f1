// Text in runs: decodes what needs no care, as long as it needs none, and encodes UTF-8. The caller takes everything
// else (zeros, stops, incomplete and undecodable characters) through the platform's conversion, one character at a
// time, which is the reference: a run gives exactly what that gives.
#pragma once

#include <cstddef>

struct TTextRun {
    unsigned long dwBytes; ///< bytes decoded
    unsigned long dwUnits; ///< units that they gave
};

/// Decodes from `pBytes` until `dwRoom` units are there, or in front of the first character that is a zero, 0xFFFF, one
/// of the two stops (0 for none), cut off by the end, or not plainly decodable to one unit.
[[nodiscard]] TTextRun tDecodeRun(unsigned short uCodePage, unsigned char const * pBytes, unsigned long dwBytes,
                                  wchar_t * pTarget, unsigned long dwRoom, wchar_t cStop1, wchar_t cStop2);

/// The bytes of a character under 65001, as its first byte tells: 0 for a zero.
[[nodiscard]] unsigned int uGetUtf8Length(unsigned char uFirst) noexcept;

/// The units in front of the terminator.
[[nodiscard]] std::size_t uGetTextLength(wchar_t const * pzText) noexcept;

/// The bytes that the text takes in UTF-8, or -1 when it holds a surrogate half or is too long for an `int`.
[[nodiscard]] int iGetUtf8Size(wchar_t const * pText, int iCount) noexcept;

/// Bytes of the target behind the encoded text that `iEncodeUtf8` may write as well.
constexpr int iUtf8Slack = 32;

/// Encodes text without surrogate halves; `pTarget` has room for three bytes a unit, or for what `iGetUtf8Size` tells,
/// and the slack. Returns the bytes written, or -1 at a surrogate half.
[[nodiscard]] int iEncodeUtf8(wchar_t const * pText, int iCount, char * pTarget) noexcept;
