// The check of e-mail addresses: read from left to right, where the expression that it stands for would recurse with
// every character.
//
//     (?:A+(?:\.A+)*|"(?:[]!#-[^-~ \t]|(?:\\[\t -~]))+")@L(?:\.L)+
//     with A for [-!#-'*+\/-9=?A-Z^-~] and L for [0-9A-Za-z](?:[0-9A-Za-z-]{0,61}[0-9A-Za-z])?
#include "ZkTools/Uri.h"

#include <algorithm>

namespace {

constexpr std::size_t uLongestLabel = 63;

constexpr bool fIsBetween(wchar_t c, wchar_t cFirst, wchar_t cLast) noexcept {
    return c >= cFirst && c <= cLast;
}

constexpr bool fIsLetterOrDigit(wchar_t c) noexcept {
    return fIsBetween(c, L'0', L'9') || fIsBetween(c, L'A', L'Z') || fIsBetween(c, L'a', L'z');
}

constexpr bool fIsOfAtom(wchar_t c) noexcept {
    return fIsBetween(c, L'#', L'\'') || fIsBetween(c, L'/', L'9') || fIsBetween(c, L'A', L'Z') ||
           fIsBetween(c, L'^', L'~') || std::wstring_view(L"-!*+=?").find(c) != std::wstring_view::npos;
}

constexpr bool fIsOfLabel(wchar_t c) noexcept {
    return fIsLetterOrDigit(c) || c == L'-';
}

bool fTake(std::wstring_view & sText, wchar_t c) noexcept {
    if (!sText.starts_with(c)) return false;
    sText.remove_prefix(1);
    return true;
}

/// Takes as many characters of a kind as there are.
template <typename TTest>
std::wstring_view sTakeAll(std::wstring_view & sText, TTest fIsOfKind) noexcept {
    auto const pEnd = std::ranges::find_if_not(sText, fIsOfKind);
    std::wstring_view const sTaken = sText.substr(0, static_cast<std::size_t>(pEnd - sText.begin()));
    sText.remove_prefix(sTaken.size());
    return sTaken;
}

bool fTakeAtoms(std::wstring_view & sText) noexcept {
    do {
        if (sTakeAll(sText, fIsOfAtom).empty()) return false;
    } while (fTake(sText, L'.'));
    return true;
}

/// What stands between quotation marks, and the second of them.
bool fTakeQuoted(std::wstring_view & sText) noexcept {
    // Deliberate: pairs alone. The expression's first alternative begins with a class of nothing, which matches
    // nothing.
    do {
        if (!fTake(sText, L'\\') || sText.empty()) return false;
        if (sText.front() != L'\t' && !fIsBetween(sText.front(), L' ', L'~')) return false;
        sText.remove_prefix(1);
    } while (!fTake(sText, L'"'));
    return true;
}

bool fTakeLabel(std::wstring_view & sText) noexcept {
    std::wstring_view const sLabel = sTakeAll(sText, fIsOfLabel);
    return !sLabel.empty() && sLabel.size() <= uLongestLabel && sLabel.front() != L'-' && sLabel.back() != L'-';
}

} // namespace

bool fIsValidEMail(std::wstring const & sText) {
    std::wstring_view sRest = sText;
    if (!(fTake(sRest, L'"') ? fTakeQuoted(sRest) : fTakeAtoms(sRest))) return false;
    if (!fTake(sRest, L'@') || !fTakeLabel(sRest) || !fTake(sRest, L'.')) return false;
    do {
        if (!fTakeLabel(sRest)) return false;
    } while (fTake(sRest, L'.'));
    return sRest.empty();
}
