// UTF-8 by four characters at once, with the byte shuffle that nearly every processor of this kind has. On one without
// it nothing is taken here, and the caller goes on character by character.
#pragma once

/// Decodes as long as what comes next is plain: well-formed characters of up to three bytes, neither a stop (ASCII, or
/// 0 for none) nor a zero nor 0xFFFF, with 16 bytes to look at and room for 16 units. Moves both pointers. True when it
/// ended in front of a stop or a zero; otherwise the caller goes on with the next characters.
[[nodiscard]] bool fTakeUtf8ByShuffle(unsigned char const *& pFrom, unsigned char const * pEnd, wchar_t *& pTo,
                                      wchar_t const * pOutEnd, char cStop1, char cStop2) noexcept;

/// Encodes by pieces of sixteen units in front of the first piece that holds a surrogate half. Every unit left takes
/// three bytes of the target at most, and 32 bytes more may be written. Moves both pointers.
void EncodeUtf8ByShuffle(wchar_t const *& pFrom, wchar_t const * pEnd, char *& pTo) noexcept;
