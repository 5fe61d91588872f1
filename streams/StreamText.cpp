// The text half of TStreamBase: what a character is under each code page, and the forms in which strings stand on a
// stream.
#include "ZkTools/Stream.h"

#include "ZkBase/Exceptions.h"
#include "ZkBase/Windows.h"
#include "ZkTools/Exceptions.h"
#include "ZkTools/MessageIds.h"
#include "streams/Delimiter.h"
#include "streams/TextCollector.h"
#include "streams/TextRun.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace {

constexpr unsigned short uUtf16 = 1200;
constexpr unsigned short uUtf16Swapped = 1201;
constexpr unsigned int uLongestCharacter = 6; // bytes

constexpr wchar_t cLineFeed = 10;
constexpr wchar_t cCarriageReturn = 13;
constexpr wchar_t cEndOfText = 26;

/// The bytes of the next character, with zeros behind the end of the data, where an owned block that is full has its
/// guard and a view has nothing.
class TNextBytes {
public:
    explicit TNextBytes(TBlob const & tBlob) {
        unsigned long const dwLeft = tBlob.dwUsed - tBlob.dwPos;
        if (dwLeft > uLongestCharacter) {
            pBytes = tBlob.pGetDataAtPos();
        } else {
            std::memcpy(auPadded.data(), tBlob.pGetDataAtPos(), dwLeft);
            pBytes = auPadded.data();
        }
    }
    TNextBytes(TNextBytes const &) = delete;
    TNextBytes & operator=(TNextBytes const &) = delete;

    [[nodiscard]] unsigned char operator[](std::size_t u) const noexcept { return pBytes[u]; }
    [[nodiscard]] char const * pChars() const noexcept { return reinterpret_cast<char const *>(pBytes); }

private:
    std::array<unsigned char, uLongestCharacter + 2> auPadded{};
    unsigned char const * pBytes;
};

/// The bytes of a character that is no zero.
unsigned int uGetCharacterLength(unsigned short uCodePage, TNextBytes const & tBytes) noexcept {
    if (uCodePage == CP_UTF8) return uGetUtf8Length(tBytes[0]);
    return static_cast<unsigned int>(CharNextExA(uCodePage, tBytes.pChars(), 0) - tBytes.pChars());
}

[[noreturn]] void ThrowSystemDecodeFailure(unsigned short uCodePage, unsigned long dwError) {
    std::array<wchar_t, 255> acReason{};
    GetErrorString(dwError, acReason.data(), static_cast<int>(acReason.size()));
    throw TXZkTools(L"Conversion from codepage %d to Unicode not possible. %s", int{uCodePage}, acReason.data());
}

/// An XML entity for a unit; an empty one drops it.
struct TEntity {
    wchar_t c;
    wchar_t const * pzAll;     ///< with all of them escaped
    wchar_t const * pzMinimum; ///< with the necessary ones escaped
};

// Deliberate: without full escaping the line ends and quotes are dropped, not passed through: stored files rely on it.
constexpr std::array<TEntity, 7> atEntities{{
    {L'\n', L"&#10;", L""},
    {L'\r', L"&#13;", L""},
    {L'"', L"&quot;", L""},
    {L'\'', L"&apos;", L""},
    {L'&', L"&amp;", L"&amp;"},
    {L'<', L"&lt;", L"&lt;"},
    {L'>', L"&gt;", L"&gt;"},
}};

} // namespace

bool TStreamBase::fIsUtf16() const noexcept {
    return uCodePage == uUtf16 || uCodePage == uUtf16Swapped;
}

void TStreamBase::AdvanceBlock(unsigned long dwCount) {
    pBlob->Skip(dwCount);
}

// One character

unsigned int TStreamBase::PeekCharInternal(wchar_t & c, bool fAllowNull) {
    if (fIsEoF()) throw TXZkTools(IDS_READ_PAST_END);
    EnsureBufferFilled();
    // A file that holds a byte order mark and nothing else ends behind it.
    if (pBlob->dwPos >= pBlob->dwUsed) throw TXZkTools(IDS_READ_PAST_END);
    return fIsUtf16() ? PeekUnicodeCharInternal(c, fAllowNull) : PeekMultiByteCharInternal(c, fAllowNull);
}

unsigned int TStreamBase::PeekUnicodeCharInternal(wchar_t & c, bool fAllowNull) {
    TNextBytes const tBytes(*pBlob);
    bool const fHighFirst = uCodePage == uUtf16Swapped;
    auto const cUnit = static_cast<wchar_t>(fHighFirst ? tBytes[0] << 8 | tBytes[1] : tBytes[0] | tBytes[1] << 8);
    if (cUnit == 0 && !fAllowNull) {
        throw TXZkTools(L"Conversion from codepage %d to UNICODE not possible. NullChar encountered.", int{uCodePage});
    }
    c = cUnit;
    return 2;
}

unsigned int TStreamBase::PeekMultiByteCharInternal(wchar_t & c, bool fAllowNull) {
    unsigned char const * const pBytes = pBlob->pGetDataAtPos();
    unsigned long const dwLeft = pBlob->dwUsed - pBlob->dwPos;
    if (*pBytes == 0) {
        if (!fAllowNull) ThrowDecodeException(reinterpret_cast<char const *>(pBytes), dwLeft, dwGetPos());
        c = 0;
        return 1;
    }
    if (TTextRun const tRun =
            tDecodeRun(uCodePage, pBytes, std::min<unsigned long>(dwLeft, uLongestCharacter), &c, 1, L'\0', L'\0');
        tRun.dwUnits == 1) {
        return tRun.dwBytes;
    }

    TNextBytes const tBytes(*pBlob);
    unsigned int const uLength = uGetCharacterLength(uCodePage, tBytes);
    std::array<wchar_t, 6> acUnits{};
    SetLastError(0);
    int const iUnits = MultiByteToWideChar(uCodePage, MB_ERR_INVALID_CHARS, tBytes.pChars(), static_cast<int>(uLength),
                                           acUnits.data(), static_cast<int>(acUnits.size()));
    if (iUnits == 1) {
        c = acUnits[0];
        return uLength;
    }
    // Deliberate: a character that takes two units (a success with two, and no error) does not decode: one character is
    // one unit.
    DWORD const dwError = GetLastError();
    if (dwError != 0 && dwError != ERROR_NO_UNICODE_TRANSLATION) ThrowSystemDecodeFailure(uCodePage, dwError);
    ThrowDecodeException(tBytes.pChars(), uLength, dwGetPos());
}

void TStreamBase::ReadCharInternal(wchar_t & c, bool fAllowNull) {
    wchar_t cRead = 0;
    AdvanceBlock(PeekCharInternal(cRead, fAllowNull));
    c = cRead;
}

/// Takes a run into the collector. Returns the bytes that it took.
unsigned long TStreamBase::dwCollectRun(TTextCollector & tText, unsigned long dwMostBytes, wchar_t cStop1,
                                        wchar_t cStop2) {
    wchar_t * const pRoom = tText.pGetRoom();
    unsigned long dwLeft = dwMostBytes;
    tText.Advance(dwReadRun(pRoom, tText.dwGetRoom(), dwLeft, cStop1, cStop2));
    return dwMostBytes - dwLeft;
}

unsigned long TStreamBase::dwReadRun(wchar_t * pTarget, unsigned long dwRoom, unsigned long & dwMostBytes,
                                     wchar_t cStop1, wchar_t cStop2) {
    EnsureBufferFilled();
    unsigned long const dwLeft = pBlob->dwPos < pBlob->dwUsed ? pBlob->dwUsed - pBlob->dwPos : 0;
    TTextRun const tRun =
        tDecodeRun(uCodePage, pBlob->pGetDataAtPos(), std::min(dwLeft, dwMostBytes), pTarget, dwRoom, cStop1, cStop2);
    pBlob->dwPos += tRun.dwBytes;
    dwMostBytes -= tRun.dwBytes;
    return tRun.dwUnits;
}

void TStreamBase::Read(wchar_t & cValue) {
    ReadChar(cValue);
}

void TStreamBase::ReadChar(wchar_t & c) {
    ReadCharInternal(c, false);
}

void TStreamBase::PeekChar(wchar_t & c) {
    PeekCharInternal(c, true);
}

void TStreamBase::SkipChars(unsigned int uCount) {
    if (fIsUtf16()) {
        if (uCount == 0) return;
        if (pBlob == nullptr || uCount > ULONG_MAX / 2) throw TXZkTools(IDS_READ_PAST_END);
        AdvanceBlock(2 * uCount);
        return;
    }
    for (; uCount != 0; --uCount) {
        EnsureBufferFilled();
        if (pBlob == nullptr || pBlob->dwPos >= pBlob->dwUsed) throw TXZkTools(IDS_READ_PAST_END);
        TNextBytes const tBytes(*pBlob);
        AdvanceBlock(tBytes[0] == 0 ? 1 : uGetCharacterLength(uCodePage, tBytes));
    }
}

// Readers of text

void TStreamBase::Read(std::wstring & sText) {
    ReadString(sText);
}

void TStreamBase::ReadString(std::wstring & sText) {
    TTextCollector tText;
    while (!fIsEoF()) {
        dwCollectRun(tText, ULONG_MAX, 0, 0);
        if (fPassZeroByte()) break;
        if (fIsEoF()) break;
        wchar_t c = 0;
        ReadCharInternal(c, true);
        if (c == 0) break;
        tText.Add(c);
    }
    tText.MoveTo(sText);
}

void TStreamBase::ReadString(wchar_t * pzTarget, unsigned long dwSize) {
    if (dwSize == 0) return;
    unsigned long dwStored = 0;
    while (dwStored < dwSize - 1) {
        // A run may write into all of the room that it is given, and the caller's buffer behind the text is not ours.
        std::array<wchar_t, 256> acRun;
        if (fIsEoF()) throw TXZkTools(IDS_READ_PAST_END);
        unsigned long dwAny = ULONG_MAX;
        unsigned long const dwRoom = std::min<unsigned long>(dwSize - 1 - dwStored, acRun.size());
        if (unsigned long const dwUnits = dwReadRun(acRun.data(), dwRoom, dwAny, 0, 0); dwUnits != 0) {
            std::copy_n(acRun.data(), dwUnits, pzTarget + dwStored);
            dwStored += dwUnits;
            continue;
        }
        ReadCharInternal(pzTarget[dwStored], true);
        if (pzTarget[dwStored] == 0) return;
        ++dwStored;
    }
    pzTarget[dwSize - 1] = 0;
}

void TStreamBase::ReadStringForPascal(std::wstring & sText, unsigned long dwBytes) {
    TTextCollector tText;
    while (dwBytes != 0) {
        if (fIsEoF()) throw TXZkTools(IDS_READ_PAST_END);
        dwBytes -= dwCollectCounted(tText, dwBytes);
        if (dwBytes == 0) break;
        if (fPassZeroByte()) { // passed over, not stored
            --dwBytes;
            continue;
        }
        wchar_t c = 0;
        unsigned int const uTaken = PeekCharInternal(c, true);
        AdvanceBlock(uTaken);
        if (c != 0) tText.Add(c);
        if (uTaken > dwBytes) throw TXZkTools(L"Invalid byte-length for string encounterd in input stream.");
        dwBytes -= uTaken;
    }
    tText.MoveTo(sText);
}

/// Takes a run of at most so many bytes. Most texts end at their zero, so that the first try is made without the limit,
/// which is faster.
unsigned long TStreamBase::dwCollectCounted(TTextCollector & tText, unsigned long dwMostBytes) {
    wchar_t * const pRoom = tText.pGetRoom();
    unsigned long dwLeft = ULONG_MAX;
    unsigned long dwUnits = dwReadRun(pRoom, tText.dwGetRoom(), dwLeft, 0, 0);
    unsigned long dwTaken = ULONG_MAX - dwLeft;
    if (dwTaken > dwMostBytes) {
        pBlob->dwPos -= dwTaken;
        dwLeft = dwMostBytes;
        dwUnits = dwReadRun(pRoom, tText.dwGetRoom(), dwLeft, 0, 0);
        dwTaken = dwMostBytes - dwLeft;
    }
    tText.Advance(dwUnits);
    return dwTaken;
}

/// Passes over a zero byte, which is the character 0 in every multi-byte code page.
bool TStreamBase::fPassZeroByte() {
    bool const fThere = !fIsUtf16() && pBlob->dwPos < pBlob->dwUsed && *pBlob->pGetDataAtPos() == 0;
    if (fThere) ++pBlob->dwPos;
    return fThere;
}

void TStreamBase::ReadPascalString(std::wstring & sText) {
    unsigned char uBytes = 0;
    Read(uBytes);
    ReadStringForPascal(sText, uBytes);
}

void TStreamBase::ReadPascalStringInt16(std::wstring & sText) {
    unsigned short uBytes = 0;
    Read(uBytes);
    // Deliberate: the count is widened with its sign, so that one of 0x8000 and above asks for more than there is.
    ReadStringForPascal(sText, static_cast<unsigned long>(static_cast<short>(uBytes)));
}

void TStreamBase::Read8BitChars(unsigned char uCount, std::wstring & sText) {
    std::array<char, 256> acField{};
    ReadData(acField.data(), uCount);
    std::array<wchar_t, 256> acUnits{};
    int const iBytes = static_cast<int>(std::strlen(acField.data())); // the last byte of the 256 is never read into
    int const iUnits = iBytes == 0 ? 0
                                   : MultiByteToWideChar(CP_THREAD_ACP, 0, acField.data(), iBytes, acUnits.data(),
                                                         static_cast<int>(acUnits.size()));
    sText.assign(acUnits.data(), static_cast<std::size_t>(iUnits));
}

void TStreamBase::Read8BitBlob(std::wstring & sText) {
    int iCount = 0;
    Read(iCount);
    // Deliberate: a count of 0 leaves the caller's text alone; callers put their default there.
    if (iCount != 0) ReadStringForPascal(sText, static_cast<unsigned long>(iCount) + 1);
}

void TStreamBase::ReadToDelim(std::wstring & sText, wchar_t cDelim, wchar_t cEscape, bool fKeepDelim, unsigned long) {
    TTextCollector tText;
    TDelimiter tDelimiter(cDelim, cEscape);
    while (!fIsEoF()) {
        if (!tDelimiter.fIsEscaped()) {
            dwCollectRun(tText, ULONG_MAX, cDelim, cEscape);
            if (fIsEoF()) break;
        }
        wchar_t c = 0;
        ReadCharInternal(c, cDelim == 0);
        bool const fFound = tDelimiter.fEndsWith(c);
        if (!fFound || fKeepDelim) tText.Add(c);
        if (fFound) break;
    }
    tText.AppendTo(sText);
}

// Every character comes from the virtual ReadChar here, so that a derived class can change what a line holds.

void TStreamBase::Readln(std::wstring & sText) {
    TTextCollector tText;
    while (!fIsEoF()) {
        wchar_t c = 0;
        ReadChar(c);
        if (c == cLineFeed || c == cEndOfText) break;
        // Deliberate: a zero that a derived class lets through is a blank.
        if (c != cCarriageReturn) tText.Add(c == 0 ? L' ' : c);
    }
    tText.MoveTo(sText);
}

// Deliberate: no terminator is written. Callers clear their buffer first, and some read lines into the middle of one.
void TStreamBase::Readln(wchar_t * pzTarget, unsigned long dwSize) {
    if (dwSize == 0) return;
    unsigned long dwStored = 0;
    while (dwStored < dwSize - 1 && !fIsEoF()) {
        wchar_t c = 0;
        ReadChar(c);
        if (c == cLineFeed || c == cEndOfText) break;
        if (c != cCarriageReturn) pzTarget[dwStored++] = c == 0 ? L' ' : c;
    }
}

// Writers of text

void TStreamBase::ThrowEncodeFailure() const {
    DWORD const dwError = GetLastError();
    throw TXZkTools(L"Conversion from UNICODE to codepage %d not possible. Error: %u", int{uCodePage}, dwError);
}

/// The bytes that the text takes in the stream's multi-byte code page. A count of -1 takes the terminator in.
int TStreamBase::iGetEncodedSize(wchar_t const * pText, int iCount) const {
    SetLastError(0);
    int const iSize = WideCharToMultiByte(uCodePage, 0, pText, iCount, nullptr, 0, nullptr, nullptr);
    if (iSize < 1) ThrowEncodeFailure();
    return iSize;
}

/// Converts the text into the conversion buffer and returns its size. A count of -1 takes the terminator in.
int TStreamBase::iEncode(wchar_t const * pText, int iCount) {
    if (uCodePage == CP_UTF8) {
        std::size_t const uUnits = iCount < 0 ? uGetTextLength(pText) + 1 : static_cast<std::size_t>(iCount);
        if (int const iDone = iEncodeAsUtf8(pText, uUnits); iDone > 0) return iDone;
    }
    int const iSize = iGetEncodedSize(pText, iCount);
    AllocUTF8Buffer(iSize);
    SetLastError(0);
    int const iDone = WideCharToMultiByte(uCodePage, 0, pText, iCount, pConvertBuffer.get(), iSize, nullptr, nullptr);
    if (iDone < 1) ThrowEncodeFailure();
    return iDone;
}

/// The same for UTF-8 without the platform; -1 for a text that only the platform can convert.
int TStreamBase::iEncodeAsUtf8(wchar_t const * pText, std::size_t uUnits) {
    if (uUnits > INT_MAX) return -1;
    int const iUnits = static_cast<int>(uUnits);
    // A short text surely fits; of a longer one the size is counted.
    if (std::uint64_t{uUnits} * 3 + iUtf8Slack > static_cast<std::uint64_t>(iConvertBufferSize)) {
        int const iSize = iGetUtf8Size(pText, iUnits);
        if (iSize < 0 || iSize > INT_MAX - iUtf8Slack) return -1;
        AllocUTF8Buffer(iSize + iUtf8Slack);
    }
    return iEncodeUtf8(pText, iUnits, pConvertBuffer.get());
}

void TStreamBase::Write(wchar_t const * pText, unsigned long dwCount) {
    if (fIsUtf16()) {
        for (unsigned long dw = 0; dw < dwCount; ++dw)
            WriteChar(pText[dw]);
        return;
    }
    if (dwCount == 0) return;
    if (dwCount > INT_MAX) {
        SetLastError(ERROR_INVALID_PARAMETER);
        ThrowEncodeFailure();
    }
    int const iSize = iEncode(pText, static_cast<int>(dwCount));
    WriteData(pConvertBuffer.get(), static_cast<unsigned long>(iSize));
}

void TStreamBase::Write(wchar_t const * pzText) {
    if (fIsUtf16()) {
        for (; *pzText != 0; ++pzText)
            WriteChar(*pzText);
        return;
    }
    int const iSize = iEncode(pzText, -1);
    WriteData(pConvertBuffer.get(), static_cast<unsigned long>(iSize - 1));
}

void TStreamBase::Write(std::wstring const & sText) {
    Write(sText.c_str());
}

void TStreamBase::WriteChar(wchar_t const & c) {
    if (fIsUtf16()) {
        auto const uLow = static_cast<unsigned char>(c);
        auto const uHigh = static_cast<unsigned char>(c >> 8);
        unsigned char const auLowFirst[] = {uLow, uHigh};
        unsigned char const auHighFirst[] = {uHigh, uLow};
        WriteData(uCodePage == uUtf16 ? auLowFirst : auHighFirst, 2);
        return;
    }
    std::array<char, 5> acBytes{};
    SetLastError(0);
    int const iSize =
        WideCharToMultiByte(uCodePage, 0, &c, 1, acBytes.data(), static_cast<int>(acBytes.size()), nullptr, nullptr);
    if (iSize < 1) ThrowEncodeFailure();
    WriteData(acBytes.data(), static_cast<unsigned long>(iSize));
}

void TStreamBase::WriteString(std::wstring const & sText) {
    WriteString(sText.c_str());
}

void TStreamBase::WriteString(wchar_t const * pzText) {
    if (fIsUtf16()) {
        Write(pzText);
        WriteChar(L'\0');
        return;
    }
    int const iSize = iEncode(pzText, -1);
    WriteData(pConvertBuffer.get(), static_cast<unsigned long>(iSize));
}

/// What the prefix of a counted string tells: the size of the text with its terminator, or, under 1200 and 1201,
/// without it.
unsigned long TStreamBase::dwGetPrefixSize(std::wstring const & sText) const {
    if (!fIsUtf16()) return static_cast<unsigned long>(iGetEncodedSize(sText.c_str(), -1));
    // Deliberate: an empty text has no counted form here; readers of the old programs would take its zero for a count.
    if (sText.empty()) ThrowEncodeFailure();
    return static_cast<unsigned long>(2 * sText.size());
}

void TStreamBase::WritePascalString(std::wstring const & sText) {
    Write(static_cast<char>(dwGetPrefixSize(sText)));
    WriteString(sText);
}

void TStreamBase::WritePascalStringInt16(std::wstring const & sText) {
    Write(static_cast<unsigned short>(dwGetPrefixSize(sText)));
    WriteString(sText);
}

void TStreamBase::Write8BitChars(unsigned char uCount, std::wstring & sText) {
    std::array<char, 256> acField{};
    // A text that does not fit is cut below, as far as the field goes; the last byte of the 256 is never written out.
    WideCharToMultiByte(CP_THREAD_ACP, 0, sText.c_str(), static_cast<int>(std::min<std::size_t>(sText.size(), 255)),
                        acField.data(), static_cast<int>(acField.size()), nullptr, nullptr);
    std::size_t const uText = std::strlen(acField.data());
    std::fill(acField.begin() + static_cast<std::ptrdiff_t>(uText), acField.end(), '\0');
    WriteData(acField.data(), uCount);
}

void TStreamBase::Write8BitBlob(std::wstring const & sText) {
    SetLastError(0);
    int const iSize = WideCharToMultiByte(CP_ACP, 0, sText.c_str(), -1, nullptr, 0, nullptr, nullptr);
    if (iSize < 1) ThrowEncodeFailure();
    int const iCount = iSize < 2 ? 0 : iSize - 1;
    Write(iCount);
    if (iCount != 0) WriteString(sText);
}

void TStreamBase::Writeln(std::wstring const & sText) {
    Writeln(sText.c_str());
}

void TStreamBase::Writeln(wchar_t const * pzText) {
    Write(pzText);
    Write(L"\r\n", 2);
}

void TStreamBase::WriteXML(std::wstring const & sText, bool fEscapeAll) {
    for (wchar_t const c : sText) {
        auto const pEntity =
            std::find_if(atEntities.begin(), atEntities.end(), [c](TEntity const & t) { return t.c == c; });
        if (pEntity == atEntities.end()) {
            WriteChar(c);
        } else {
            wchar_t const * pzEntity = fEscapeAll ? pEntity->pzAll : pEntity->pzMinimum;
            if (*pzEntity != 0) Write(pzEntity);
        }
    }
}

void TStreamBase::WriteXMLComment(std::wstring const & sText) {
    wchar_t cBefore = 0;
    for (wchar_t const c : sText) {
        if (c == L'-' && cBefore == L'-') WriteChar(L' ');
        WriteChar(c);
        cBefore = c;
    }
}
