/// Hiding a character of a text behind an escape notation, and searching a text for a pattern, whole tokens only where
/// that is wanted.
///
/// Nothing here fails. Indexes count UTF-16 units. A *token* is a run of letters and digits of any script (`iswalnum`)
/// and underscores.
#pragma once

#include "ZkTools/Export.h"

#include <string>
#include <string_view>

/// Hides one character of a text, so that a text which holds it can stand where it separates: as "?m". A question mark
/// becomes "??".
class ZKTOOLS_API TMaskChar {
public:
    explicit TMaskChar(wchar_t cMasked) noexcept : c(cMasked) {}

    /// The text without the character. Where the question mark itself is hidden, it is written "?m" only.
    [[nodiscard]] std::wstring sMask(std::wstring const & sText) const;
    /// The text that `sMask` was given. A question mark that begins neither "?m" nor "??" stays as it is, and so does
    /// what follows it.
    [[nodiscard]] std::wstring sUnmask(std::wstring const & sText) const;

private:
    wchar_t c;
};

/// A pattern, prepared once, to be searched for in any number of texts.
///
/// Without regard to case means that letters compare by their upper case in the C locale of the thread: in the "C"
/// locale a to z alone.
class ZKTOOLS_API TSearcher {
public:
    /// Which way to go from the start; every value but `esdForward` is backward.
    enum ESearchDirection : int {
        esdForward = 0,
        esdBackward = 1,
    };

    /// \param pzPattern up to its terminator; a searcher for null never finds
    /// \param fWholeToken not 0: a hit counts only where `fIsWholeToken` says so
    /// \param fCaseSensitive not 0: case counts
    TSearcher(wchar_t const * pzPattern, int fWholeToken, int fCaseSensitive) noexcept;
    TSearcher(TSearcher const &) = delete;
    /// Frees the pattern.
    ~TSearcher();
    /// A flat copy: *both own the same pattern then*, and that of this object is never freed. Let only one of the two
    /// be destroyed.
    TSearcher & operator=(TSearcher const & tOther) noexcept;

    /// Where the first hit begins, or -1. The empty pattern is found in front of every character, and at the end. The
    /// empty text, as a null one, holds nothing, not even that.
    [[nodiscard]] int iFind(wchar_t const * pzText) const noexcept;
    /// The hit nearest to a start: forward the first that begins at or behind it, backward the last that begins at or
    /// before it; or -1. The empty pattern is never found. Zeros within the text are characters like others.
    /// \param iStart one outside the text stands for its last character backward, for its first one forward
    [[nodiscard]] int iFindEx(std::wstring const & sText, int iStart, ESearchDirection eDirection) const noexcept;
    /// 1 when `iFind` finds, else 0.
    [[nodiscard]] int find(wchar_t const * pzText) const noexcept;

private:
    [[nodiscard]] wchar_t const * pzFindFrom(wchar_t const * pzText, bool fFold) const noexcept;
    [[nodiscard]] int iFindIn(wchar_t const * pzText, bool fFold) const noexcept;
    [[nodiscard]] int iFindNext(std::wstring_view sText, int iStart, bool fForward) const noexcept;
    [[nodiscard]] bool fBeginsAt(wchar_t const * pText, bool fFold) const noexcept;

    wchar_t * pzPattern; // of malloc, in upper case unless case counts; null for none
    int iLength;
    int fWholeToken;
    int fCaseSensitive;
};

/// 1 when the `iLen` characters from `iPos` on are not part of a longer token, else 0: neither the character in front
/// of them nor the one behind them belongs to a token. Behind the end of the text only the one in front counts.
/// \param iPos at most the length of the text
[[nodiscard]] ZKTOOLS_API int fIsWholeToken(wchar_t const * pzText, int iPos, int iLen) noexcept;
