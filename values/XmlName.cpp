// Any text as an XML name, and as an XPath literal.
#include "ZkTools/Uri.h"

#include "ZkBase/Text.h"

namespace {

constexpr wchar_t cColon = L':';
constexpr wchar_t cApostrophe = L'\'';
constexpr wchar_t cQuotationMark = L'"';
constexpr std::wstring_view sWithinWords = L"'`\u00B4"; // what does not end a word: apostrophe, grave and acute accent

using TUnitSink = std::function<void(wchar_t)>;

void StreamName(std::wstring_view sText, TUnitSink const & fnSink) {
    if (sText.empty()) return;
    // Deliberate: the first character is replaced, not kept behind the underscore: stored names are made so.
    fnSink(string_functions::fIsNCNameFirstChar(sText.front()) ? sText.front() : L'_');
    bool fToUpper = false;
    for (wchar_t const c : sText.substr(1)) {
        if (string_functions::fIsNCNameChar(c)) {
            fnSink(fToUpper ? wcWToUpper(c) : c);
            fToUpper = false;
        } else {
            fToUpper = sWithinWords.find(c) == std::wstring_view::npos;
        }
    }
}

void AppendQuoted(std::wstring & sTarget, std::wstring_view sText, wchar_t cQuote) {
    sTarget += cQuote;
    sTarget += sText;
    sTarget += cQuote;
}

/// The text as the arguments of a call: each apostrophe in quotation marks, what stands between them in apostrophes.
void AppendPieces(std::wstring & sTarget, std::wstring_view sText) {
    for (bool fFirst = true; !sText.empty(); fFirst = false) {
        if (!fFirst) sTarget += L',';
        if (sText.front() == cApostrophe) {
            AppendQuoted(sTarget, sText.substr(0, 1), cQuotationMark);
            sText.remove_prefix(1);
        } else {
            std::wstring_view const sPiece = sText.substr(0, sText.find(cApostrophe));
            AppendQuoted(sTarget, sPiece, cApostrophe);
            sText.remove_prefix(sPiece.size());
        }
    }
}

} // namespace

void StreamXMLIdentifier(std::wstring_view sText, std::function<void(wchar_t)> fnSink) {
    std::size_t const uColon = sText.find(cColon);
    StreamName(sText.substr(0, uColon), fnSink);
    if (uColon == std::wstring_view::npos) return;
    fnSink(cColon);
    StreamName(sText.substr(uColon + 1), fnSink);
}

std::wstring sConvertToXMLIdentifier(std::wstring_view sText) {
    std::wstring sName;
    sName.reserve(sText.size());
    StreamXMLIdentifier(sText, [&sName](wchar_t c) { sName += c; });
    return sName;
}

std::wstring sConvertToXPathLiteral(std::wstring const & sText) {
    std::wstring sLiteral;
    if (sText.find(cApostrophe) == std::wstring::npos) {
        AppendQuoted(sLiteral, sText, cApostrophe);
    } else if (sText.find(cQuotationMark) == std::wstring::npos) {
        AppendQuoted(sLiteral, sText, cQuotationMark);
    } else {
        sLiteral = L"concat(";
        AppendPieces(sLiteral, sText);
        sLiteral += L')';
    }
    return sLiteral;
}
