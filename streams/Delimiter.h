// Where a text ends that runs up to a delimiter.
#pragma once

/// A delimiter, and an escape (0 for none) that keeps the character behind it from being one.
class TDelimiter {
public:
    TDelimiter(wchar_t cDelim_, wchar_t cEscape_) noexcept : cDelim(cDelim_), cEscape(cEscape_) {}

    /// True behind an escape: the next character does not end the text, whatever it is.
    [[nodiscard]] bool fIsEscaped() const noexcept { return fEscaped; }

    /// Takes the next character and tells whether it ends the text.
    [[nodiscard]] bool fEndsWith(wchar_t c) noexcept {
        bool const fWasEscaped = fEscaped;
        fEscaped = cEscape != 0 && c == cEscape && !fWasEscaped;
        return !fWasEscaped && c == cDelim && !fEscaped;
    }

private:
    wchar_t cDelim;
    wchar_t cEscape;
    bool fEscaped = false;
};
