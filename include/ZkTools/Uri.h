/// Text for other notations: paths and free text as URIs, the checks of URLs and e-mail addresses, any text as an XML
/// name or as an XPath literal, text as Base64.
///
/// All take texts of any length, in linear time, unless a limit is told.
#pragma once

#include "ZkTools/Export.h"

#include <functional>
#include <string>
#include <string_view>

/// A path as a URL: "file:///C:/a%20b" of "C:\\a b". A relative path gives a relative URL, without a scheme.
/// \returns the empty text where the platform refuses, or the URL does not fit in 2083 characters
[[nodiscard]] ZKTOOLS_API std::wstring sPathToURI(std::wstring const & sPath);

/// The text with what may not stand in a URI as %XX, the percent sign included. The platform takes what is a URL for
/// one and leaves its separators alone.
/// \returns the empty text where the platform refuses, or the result does not fit in 2083 characters
[[nodiscard]] ZKTOOLS_API std::wstring sStringToURI(std::wstring const & sText);

/// The text with every %XX as the character of that number. A zero, also one that was escaped, ends it.
[[nodiscard]] ZKTOOLS_API std::wstring sUnescapeURI(std::wstring const & sText);

/// True for what the platform takes for a URL: a text with a scheme. One with a line end in it never is one.
[[nodiscard]] ZKTOOLS_API bool fIsValidURL(std::wstring const & sText);

/// The same, but a URL with a query ("?...") is none.
[[nodiscard]] ZKTOOLS_API bool fIsValidURL_NoQuery(std::wstring const & sText);

/// True for a URI, with a scheme or relative, as `web::uri::validate` of cpprestsdk knows it: a text of the characters
/// that RFC 3986 takes. What stands behind a percent sign is not looked at.
[[nodiscard]] ZKTOOLS_API bool fIsValidURI(std::wstring const & sText);

/// True for an e-mail address: a local part, an at sign and a domain, all in ASCII.
///
/// The local part is one or more atoms with single points between them, of letters, digits and ``!#$%&'*+-/=?^_`{|}~``;
/// or, between quotation marks, one or more pairs of a backslash and a character from blank to `~` or a tab. The domain
/// is two or more labels with points between them, each of up to 63 letters, digits and hyphens, with a hyphen neither
/// first nor last. There is no limit to the whole.
[[nodiscard]] ZKTOOLS_API bool fIsValidEMail(std::wstring const & sText);

/// Hands an XML name made of any text to the sink, unit by unit.
///
/// The first character stays if a name may begin with it, otherwise it becomes an underscore. Of the others, those that
/// a name may hold stay; those that it may not hold are dropped, and the next one that stays is in upper case: "first
/// name" gives firstName. Behind an apostrophe or an accent (U+0027, U+0060, U+00B4) it is not: "don't" gives dont. A
/// first colon stays, and what stands in front of it and behind it are names of their own, which may be empty. The
/// empty text gives nothing. Halves of surrogate pairs may not stand in names.
/// \throws std::bad_function_call for an empty function, when there is something to hand on
ZKTOOLS_API void StreamXMLIdentifier(std::wstring_view sText, std::function<void(wchar_t)> fnSink);

/// The same name as a string.
[[nodiscard]] ZKTOOLS_API std::wstring sConvertToXMLIdentifier(std::wstring_view sText);

/// An XPath 1.0 expression whose value is the text: in apostrophes, in quotation marks when it holds an apostrophe, and
/// as a call of `concat` when it holds both.
[[nodiscard]] ZKTOOLS_API std::wstring sConvertToXPathLiteral(std::wstring const & sText);

/// The UTF-8 form of the text as Base64, in one line.
/// \throws std::system_error for a lone half of a surrogate pair, and where the platform refuses
/// \throws std::overflow_error for more than 2147483647 units
[[nodiscard]] ZKTOOLS_API std::wstring sStringToBase64(std::wstring const & sText);

/// The text of which that is the UTF-8 form. White space in it is passed over.
/// \throws std::system_error for what is no Base64, and for bytes that are no UTF-8
/// \throws std::overflow_error for more than 2147483647 bytes
[[nodiscard]] ZKTOOLS_API std::wstring sBase64ToString(std::wstring const & sBase64);
