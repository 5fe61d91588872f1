#include "ZkTools/Search.h"

#include <algorithm>
#include <bit>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <cwchar>
#include <cwctype>
#include <memory>
#include <string_view>

#include <emmintrin.h>

namespace {

constexpr wchar_t cEscape = L'?';
constexpr wchar_t cMaskMark = L'm';

bool fIsTokenCharacter(wchar_t c) noexcept {
    return std::iswalnum(c) || c == L'_';
}

struct TFree {
    void operator()(wchar_t * pz) const noexcept { std::free(pz); }
};

/// True when `_wcsupr` and `towupper` turn a to z alone.
bool fFoldsAsciiOnly() noexcept {
    char const * const pzLocale = std::setlocale(LC_CTYPE, nullptr);
    return pzLocale != nullptr && pzLocale[0] == 'C' && pzLocale[1] == '\0';
}

constexpr wchar_t cFoldAscii(wchar_t c) noexcept {
    return c >= L'a' && c <= L'z' ? static_cast<wchar_t>(c - L'a' + L'A') : c;
}

constexpr wchar_t cUnfoldAscii(wchar_t c) noexcept {
    return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c;
}

/// Where one of two characters stands first, or the terminator.
wchar_t const * pzFindEither(wchar_t const * pz, wchar_t c1, wchar_t c2) noexcept {
    // By pieces of 16 bytes that lie in one page, so that what is behind the terminator can be looked at.
    constexpr std::uintptr_t uPage = 4096;
    __m128i const t1 = _mm_set1_epi16(static_cast<short>(c1));
    __m128i const t2 = _mm_set1_epi16(static_cast<short>(c2));
    for (;;) {
        if (reinterpret_cast<std::uintptr_t>(pz) % uPage > uPage - 16) {
            if (*pz == c1 || *pz == c2 || *pz == L'\0') return pz;
            ++pz;
            continue;
        }
        __m128i const t = _mm_loadu_si128(reinterpret_cast<__m128i const *>(pz));
        __m128i const tEither = _mm_or_si128(_mm_cmpeq_epi16(t, t1), _mm_cmpeq_epi16(t, t2));
        __m128i const tFound = _mm_or_si128(tEither, _mm_cmpeq_epi16(t, _mm_setzero_si128()));
        auto const uFound = static_cast<unsigned int>(_mm_movemask_epi8(tFound));
        if (uFound != 0) return pz + std::countr_zero(uFound) / 2;
        pz += 8;
    }
}

} // namespace

std::wstring TMaskChar::sMask(std::wstring const & sText) const {
    std::wstring sMasked;
    sMasked.reserve(sText.size());
    for (wchar_t const cNext : sText) {
        // Deliberate: the hidden character is looked for first, so that a hidden question mark is never doubled.
        if (cNext == c) {
            sMasked += cEscape;
            sMasked += cMaskMark;
        } else {
            if (cNext == cEscape) sMasked += cEscape;
            sMasked += cNext;
        }
    }
    return sMasked;
}

std::wstring TMaskChar::sUnmask(std::wstring const & sText) const {
    std::wstring sPlain;
    sPlain.reserve(sText.size());
    for (std::size_t u = 0; u < sText.size(); ++u) {
        wchar_t const cMark = sText[u] == cEscape && u + 1 < sText.size() ? sText[u + 1] : L'\0';
        if (cMark == cEscape || cMark == cMaskMark) {
            sPlain += cMark == cMaskMark ? c : cEscape;
            ++u;
        } else {
            sPlain += sText[u];
        }
    }
    return sPlain;
}

TSearcher::TSearcher(wchar_t const * pzPattern_, int fWholeToken_, int fCaseSensitive_) noexcept
    : pzPattern(pzPattern_ != nullptr ? _wcsdup(pzPattern_) : nullptr), iLength(0), fWholeToken(fWholeToken_),
      fCaseSensitive(fCaseSensitive_) {
    if (pzPattern == nullptr) return;
    iLength = static_cast<int>(std::wcslen(pzPattern));
    if (!fCaseSensitive) _wcsupr(pzPattern);
}

TSearcher::~TSearcher() {
    std::free(pzPattern);
}

// Deliberate: a flat copy. Programs that assign searchers know that only one of them may be destroyed.
TSearcher & TSearcher::operator=(TSearcher const & tOther) noexcept = default;

int TSearcher::iFind(wchar_t const * pzText) const noexcept {
    if (pzPattern == nullptr || pzText == nullptr || *pzText == L'\0') return -1;
    if (fCaseSensitive) return iFindIn(pzText, false);
    if (fFoldsAsciiOnly()) return iFindIn(pzText, true);
    std::unique_ptr<wchar_t, TFree> const pzFolded(_wcsdup(pzText));
    return pzFolded != nullptr ? iFindIn(_wcsupr(pzFolded.get()), false) : -1;
}

/// The first hit that counts. \param fFold the text's ASCII letters are to be taken in upper case
int TSearcher::iFindIn(wchar_t const * pzText, bool fFold) const noexcept {
    for (wchar_t const * pz = pzText; (pz = pzFindFrom(pz, fFold)) != nullptr; ++pz) {
        int const iIndex = static_cast<int>(pz - pzText);
        if (!fWholeToken || fIsWholeToken(pzText, iIndex, iLength)) return iIndex;
        if (*pz == L'\0') break; // the empty pattern at the end
    }
    return -1;
}

/// The next hit, a part of a longer token or not; null when there is none. What `wcsstr` finds, but the empty pattern
/// is found at the end too, where not every platform's does.
wchar_t const * TSearcher::pzFindFrom(wchar_t const * pzText, bool fFold) const noexcept {
    if (iLength == 0) return pzText;
    wchar_t const cOther = fFold ? cUnfoldAscii(*pzPattern) : *pzPattern;
    for (;; ++pzText) {
        pzText = pzFindEither(pzText, *pzPattern, cOther);
        if (*pzText == L'\0') return nullptr;
        if (fBeginsAt(pzText, fFold)) return pzText;
    }
}

/// Stops at the terminator of the text, which no pattern holds.
bool TSearcher::fBeginsAt(wchar_t const * pText, bool fFold) const noexcept {
    for (int i = 0; i < iLength; ++i) {
        if ((fFold ? cFoldAscii(pText[i]) : pText[i]) != pzPattern[i]) return false;
    }
    return true;
}

int TSearcher::iFindEx(std::wstring const & sText, int iStart, ESearchDirection eDirection) const noexcept {
    if (iLength == 0 || sText.empty()) return -1;
    int const iCount = static_cast<int>(sText.size());
    bool const fForward = eDirection == esdForward;
    if (iStart < 0 || iStart >= iCount) iStart = fForward ? 0 : iCount - 1;
    while (iStart >= 0 && iStart < iCount) {
        int const iHit = iFindNext(sText, iStart, fForward);
        // The text as it was given, not folded, tells what a token is.
        if (iHit < 0 || !fWholeToken || fIsWholeToken(sText.c_str(), iHit, iLength)) return iHit;
        iStart = fForward ? iHit + 1 : iHit - 1;
    }
    return -1;
}

/// The hit nearest to a start within the text, a part of a longer token or not.
int TSearcher::iFindNext(std::wstring_view sText, int iStart, bool fForward) const noexcept {
    std::wstring_view const sPattern(pzPattern, static_cast<std::size_t>(iLength));
    auto const uStart = static_cast<std::size_t>(iStart);
    if (fCaseSensitive) {
        std::size_t const uHit = fForward ? sText.find(sPattern, uStart) : sText.rfind(sPattern, uStart);
        return uHit != std::wstring_view::npos ? static_cast<int>(uHit) : -1;
    }
    auto const fIsSame = [](wchar_t cText, wchar_t cUpper) { return std::towupper(cText) == cUpper; };
    if (fForward) {
        auto const pHit = std::search(sText.begin() + iStart, sText.end(), sPattern.begin(), sPattern.end(), fIsSame);
        return pHit != sText.end() ? static_cast<int>(pHit - sText.begin()) : -1;
    }
    std::wstring_view const sFront = sText.substr(0, uStart + sPattern.size());
    auto const pHit = std::find_end(sFront.begin(), sFront.end(), sPattern.begin(), sPattern.end(), fIsSame);
    return pHit != sFront.end() ? static_cast<int>(pHit - sFront.begin()) : -1;
}

int TSearcher::find(wchar_t const * pzText) const noexcept {
    return iFind(pzText) >= 0 ? 1 : 0;
}

int fIsWholeToken(wchar_t const * pzText, int iPos, int iLen) noexcept {
    if (iPos != 0 && fIsTokenCharacter(pzText[iPos - 1])) return 0;
    if (pzText[iPos] == L'\0') return 1; // the end of the text
    return fIsTokenCharacter(pzText[iPos + iLen]) ? 0 : 1;
}
