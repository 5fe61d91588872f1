/// Functions on wide strings that keep no state: edits in a buffer, search, the sort order of tables that mix numbers
/// and words, occurrence notation, template resources, UUIDs, numbers for the user, lists.
///
/// Nothing here throws of its own. Upper case is that of `towupper`: in the C locale A to Z alone. No pointer may be
/// null where null is not said to have a meaning.
#pragma once

#include "ZkBase/Windows.h"
#include "ZkTools/Export.h"

#include <functional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

/// Pads the text on the right with `c` to exactly `iLen` characters and terminates it; one that is as long already is
/// not touched. The buffer needs `iLen` + 1 characters.
/// \returns `pz`
ZKTOOLS_API wchar_t * pzStrNFill(wchar_t * pz, int iLen, wchar_t c) noexcept;

/// Removes the blanks (character 32, no other white space) at the end. Null gives null.
/// \returns `pz`
ZKTOOLS_API wchar_t * pzStrip(wchar_t * pz) noexcept;

/// Removes every blank (character 32, no other white space). Null gives null.
/// \returns `pz`
ZKTOOLS_API wchar_t * pzRemoveSpaces(wchar_t * pz) noexcept;

/// Copies `iLen` characters, of a shorter text with zeros behind it, and puts a terminator behind them: the target
/// needs `iLen` + 1 characters. Nothing happens when either pointer is null.
/// \returns `pzDst`
ZKTOOLS_API wchar_t * pzStrNCpy(wchar_t * pzDst, wchar_t const * pzSrc, int iLen) noexcept;

/// Where `pzFind` first occurs, without regard to case; -1 when it does not, and when either text is empty.
[[nodiscard]] ZKTOOLS_API int iStrStri(wchar_t const * pzText, wchar_t const * pzFind) noexcept;

/// True when the text holds a carriage return or a line feed.
[[nodiscard]] ZKTOOLS_API bool fIsMultilineString(std::wstring_view const & sText) noexcept;

/// How often something may occur, as text: "2", "0..1", or "1..unbounded". A maximum of 0xFFFFFFFF is unbounded.
/// \param sUnbounded the caller's word for that, for instance "*"
/// \returns false when the minimum is unbounded or above the maximum; `sOut` is "0..1" then
ZKTOOLS_API bool fGetStringOccurence(std::wstring & sOut, unsigned long dwMin, unsigned long dwMax,
                                     std::wstring const & sUnbounded);

/// Reads such a text. The bare word is 0 to unbounded, a single number is both. White space in front of a number or the
/// word is passed over, and what follows is not looked at: "3x" is 3. A number may have a sign and wraps at 32 bits.
/// Minimum and maximum are not compared.
/// \returns false when the text does not begin with a number; the pair is 0 and 1 then
ZKTOOLS_API bool fGetNumOccurence(std::wstring const & s, unsigned long & dwMin, unsigned long & dwMax,
                                  std::wstring const & sUnbounded);

/// The order of tables that mix numbers and words: negative, zero or positive, and not normalised.
///
/// Numbers come before words. They are read as by `TBigNumber` (ZkTools/BigNumber.h) and compare as its numbers do, but
/// have any length: 9 comes before 10, and 1.9 before 1.11. Words compare by units without regard to case, the shorter
/// first; between words that differ in nothing else, the first difference in case decides, upper case first.
[[nodiscard]] ZKTOOLS_API int iNumericStringCompare(std::wstring const & sFirst, std::wstring const & sSecond) noexcept;

/// The bytes of resource `uId` (its low 16 bits) of type `RT_RCDATA`; empty when the module has none or it can't be
/// loaded.
[[nodiscard]] ZKTOOLS_API std::string sGetXMLTemplate(HINSTANCE hModule, unsigned int uId);
/// The same, from the OEM code page to wide text.
[[nodiscard]] ZKTOOLS_API std::wstring sGetXMLTemplateWide(HINSTANCE hModule, unsigned int uId);

/// A new UUID in the platform's text form: 36 characters in lower case, without braces.
[[nodiscard]] ZKTOOLS_API std::wstring sGetUuid();

/// A whole number as the locale writes it, with its digit groups. All groups have the size of the first.
/// \returns empty when the system refuses, as for an unknown locale
[[nodiscard]] ZKTOOLS_API std::wstring sFormatNumber(unsigned long lcid, unsigned __int64 qwValue);

/// Appends what was written to the stream, from its read position on, without the white space (`fWIsSpace`) at the
/// start. A line feed without a carriage return in front gets one. A stream with nothing else to read, or in a failed
/// state, leaves `sOut` as it was.
/// \param fStrip remove the white space at the end of `sOut`
ZKTOOLS_API void SaveXmlText(std::wstringstream & stream, std::wstring & sOut, bool fStrip);

/// Cuts the text at every delimiter. Every piece is kept, empty ones too, but the empty text gives none at all.
[[nodiscard]] ZKTOOLS_API std::vector<std::wstring> SplitString(std::wstring const & sText, wchar_t cDelimiter);

/// Joins the items, with the delimiter between them.
[[nodiscard]] ZKTOOLS_API std::wstring sGetStringListText(std::vector<std::wstring> sItems, wchar_t cDelimiter);

/// Calls the function for each item in order, with its index from 0.
/// \throws std::bad_function_call for an empty function, when there are items
ZKTOOLS_API void ForEachStringListComponent(std::vector<std::wstring> sItems,
                                            std::function<void(int, std::wstring const &)> fCall);
