// The buffered device stream.
#include "ZkTools/FileStream.h"

#include "ZkBase/Files.h"
#include "ZkBase/Paths.h"
#include "ZkTools/Exceptions.h"
#include "ZkTools/Files.h"
#include "ZkTools/MessageIds.h"
#include "frame/Failures.h"
#include "streams/CopyBytes.h"
#include "streams/Delimiter.h"
#include "streams/TextCollector.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <memory>

namespace {

constexpr unsigned long dwTextBuffer = 65536;
constexpr unsigned long dwLineHint = 16384;          // not used here; derived classes are told so
constexpr unsigned long dwLongestPlainCharacter = 4; // bytes that must not be cut by the end of the buffer

constexpr wchar_t cLineFeed = 10;
constexpr wchar_t cCarriageReturn = 13;
constexpr wchar_t cNeverStored = 0xFFFF;

struct TByteOrderMark {
    ECodePage eCodePage;
    unsigned long dwSize;
    std::array<unsigned char, 3> auBytes;
};

constexpr std::array<TByteOrderMark, 3> atMarks{{
    {ecpUtf8, 3, {0xEF, 0xBB, 0xBF}},
    {ecpUtf16, 2, {0xFF, 0xFE}},
    {ecpUtf16Swapped, 2, {0xFE, 0xFF}},
}};

/// The directory part of a path, with its last backslash.
std::wstring sGetFolder(wchar_t const * pzPath) {
    std::wstring sDrive;
    std::wstring sDir;
    path_func::SplitPath(pzPath, &sDrive, &sDir, nullptr, nullptr);
    return path_func::sMakePath(sDrive.c_str(), sDir.c_str(), nullptr, nullptr);
}

/// The name of a temporary file: beside the given one, or wherever the run-time puts it.
std::wstring sGetTemporaryName(wchar_t const * pzName) {
    if (pzName != nullptr) {
        std::wstring sDrive;
        std::wstring sDir;
        std::wstring sName;
        path_func::SplitPath(pzName, &sDrive, &sDir, &sName, nullptr);
        return path_func::sMakePath(sDrive.c_str(), sDir.c_str(), sName.c_str(), L".$$$");
    }
    std::unique_ptr<wchar_t, decltype(&std::free)> const pzMade(_wtempnam(nullptr, L"x"), &std::free);
    if (pzMade != nullptr) return pzMade.get();
    wchar_t const * const pzOther = _wtmpnam(nullptr);
    return pzOther != nullptr ? pzOther : L"";
}

/// Copies what fits, fills up with zeros and terminates.
void CopyToBuffer(std::wstring const & sText, wchar_t * pzTarget, unsigned long dwSize) {
    if (pzTarget == nullptr || dwSize == 0) return;
    std::wcsncpy(pzTarget, sText.c_str(), dwSize - 1);
    pzTarget[dwSize - 1] = 0;
}

} // namespace

TFStreamBase::TFStreamBase(unsigned long dwBufferSize) : TStreamBase(dwBufferSize) {}

TFStreamBase::~TFStreamBase() = default;

void TFStreamBase::Open(wchar_t const * pzName, int iNewMode) {
    if (iNewMode == FS_TEMPORARY) {
        sName = sGetTemporaryName(pzName);
    } else {
        std::wstring const sNewName = pzName != nullptr ? pzName : L"";
        if (pzName != nullptr && (iNewMode & FS_CREATE) != 0) {
            std::wstring const sFolder = sGetFolder(pzName);
            if (!sFolder.empty() && !file_func::fExistDirectory(sFolder.c_str())) MakeDirectory(sFolder.c_str());
        }
        sName = sNewName;
    }
    iMode = iNewMode;
    dwBufferBase = 0;
    if (pBlob != nullptr) pBlob->Reset();
}

bool TFStreamBase::fIsBinary() const {
    return (iMode & FS_BINARY) != 0;
}

unsigned long TFStreamBase::dwGetSize() {
    return dwFileSize;
}

unsigned long TFStreamBase::dwGetPos() {
    return dwBufferBase + (pBlob != nullptr ? pBlob->dwPos : 0);
}

bool TFStreamBase::fIsEoF() {
    return TFStreamBase::dwGetPos() == dwFileSize;
}

int TFStreamBase::iOpenModeConvert(int) {
    return -1;
}

int TFStreamBase::iSeekBaseConvert(int) {
    return -1;
}

void TFStreamBase::TestGoodness(int) {}

// The buffer

/// Text needs a buffer, and one in which a character has room.
void TFStreamBase::NeedBlock() {
    if (pBlob == nullptr) {
        BufAlloc(dwTextBuffer);
    } else if (pBlob->dwCapacity < dwLongestPlainCharacter) {
        pBlob->ReAlloc(dwLongestPlainCharacter, 0);
    }
}

void TFStreamBase::EnsureBufferFilled() {
    if (TFStreamBase::dwGetPos() == 0 && !fIsBinary()) ReadForByteOrderMark();
    NeedBlock();
    unsigned long const dwKept = pBlob->dwUsed - pBlob->dwPos;
    if (dwKept >= dwLongestPlainCharacter || pBlob->dwUsed + dwBufferBase == dwFileSize) return;

    dwBufferBase += pBlob->dwPos;
    std::memmove(pBlob->pData, pBlob->pGetDataAtPos(), dwKept);
    pBlob->dwPos = 0;
    pBlob->dwUsed = dwKept;
    unsigned long const dwWanted = std::min(pBlob->dwCapacity, dwFileSize - dwBufferBase);
    pBlob->dwUsed += dwDeviceRead(pBlob->pData + dwKept, dwWanted - dwKept);
}

void TFStreamBase::BufFill() {
    dwBufferBase += pBlob->dwUsed;
    pBlob->Reset();
    unsigned long const dwWanted = std::min(pBlob->dwCapacity, dwFileSize - dwBufferBase);
    pBlob->dwUsed = dwDeviceRead(pBlob->pData, dwWanted);
}

void TFStreamBase::BufFlush() {
    if (pBlob == nullptr) return;
    DeviceSeek(dwBufferBase, 0);
    DeviceWrite(pBlob->pData, pBlob->dwUsed);
    dwBufferBase += pBlob->dwPos;
    pBlob->Reset();
}

// Bytes

void TFStreamBase::ReadData(void * pTarget, unsigned long dwCount) {
    if (dwCount == 0) return;
    if (pTarget == nullptr) throw TXZkTools(IDS_NULL_READ_BUFFER);
    if (TFStreamBase::dwGetPos() == 0 && !fIsBinary()) ReadForByteOrderMark();
    ReadDataInternal(pTarget, dwCount);
}

void TFStreamBase::ReadDataInternal(void * pTarget, unsigned long dwCount) {
    if (pBlob == nullptr) {
        dwBufferBase += dwDeviceRead(pTarget, dwCount);
        return;
    }
    auto * pTo = static_cast<unsigned char *>(pTarget);
    while (dwCount != 0) {
        if (pBlob->dwPos == pBlob->dwUsed) {
            // Deliberate: the end of the file is no failure, and the caller's buffer keeps its contents behind it.
            if (fIsEoF()) return;
            BufFill();
            if (pBlob->dwUsed == 0) return; // a device that has nothing more, whatever size it told
        }
        unsigned long const dwPiece = std::min(dwCount, pBlob->dwUsed - pBlob->dwPos);
        CopyBytes(pTo, pBlob->pGetDataAtPos(), dwPiece);
        pBlob->dwPos += dwPiece;
        pTo += dwPiece;
        dwCount -= dwPiece;
    }
}

void TFStreamBase::WriteData(void const * pSource, unsigned long dwCount) {
    if (TFStreamBase::dwGetPos() == 0) WriteByteOrderMark();
    WriteDataInternal(pSource, dwCount);
}

void TFStreamBase::WriteDataInternal(void const * pSource, unsigned long dwCount) {
    if (pSource == nullptr || dwCount == 0) return;
    if (std::uint64_t{TFStreamBase::dwGetPos()} + dwCount > ULONG_MAX) {
        throw tReasonWithFailure(ERROR_FILE_TOO_LARGE, IDS_FILE_WRITE_FAILED, sName.c_str());
    }
    if (pBlob == nullptr || pBlob->dwCapacity == 0) {
        DeviceWrite(pSource, dwCount);
        dwBufferBase += dwCount;
    } else {
        auto const * pFrom = static_cast<unsigned char const *>(pSource);
        while (dwCount != 0) {
            if (pBlob->dwUsed >= pBlob->dwCapacity) BufFlush();
            // It has room behind the used part, so at the position too, which is never beyond that.
            unsigned long const dwPiece = std::min(dwCount, pBlob->dwCapacity - pBlob->dwUsed);
            CopyBytes(pBlob->pGetDataAtPos(), pFrom, dwPiece);
            pBlob->dwPos += dwPiece;
            pBlob->dwUsed = std::max(pBlob->dwUsed, pBlob->dwPos);
            pBlob->fDirty = true;
            pFrom += dwPiece;
            dwCount -= dwPiece;
        }
    }
    dwFileSize = std::max(dwFileSize, TFStreamBase::dwGetPos());
}

void TFStreamBase::Seek(TLongOnly const & tOffset, int iOrigin) {
    if (pBlob != nullptr && pBlob->fDirty) BufFlush();
    std::int64_t iTarget = 0;
    switch (iOrigin) {
    case 0:
        iTarget = tOffset.lValue;
        break;
    case 1:
        iTarget = std::int64_t{TFStreamBase::dwGetPos()} + tOffset.lValue;
        break;
    case 2:
        iTarget = std::int64_t{dwFileSize} + tOffset.lValue;
        break;
    default: // Deliberate: any other origin is position 0, whatever the distance.
        break;
    }
    // What is below 0 is for the device to refuse.
    if (iTarget > ULONG_MAX) throw TXZkTools(IDS_SEEK_OUT_OF_RANGE);
    MoveTo(iTarget);
}

void TFStreamBase::SetPos(unsigned long dwNewPos) {
    if (pBlob != nullptr && pBlob->fDirty) BufFlush();
    MoveTo(dwNewPos);
}

/// Moves the device, and gives up the buffer only when that succeeded: otherwise the two would be apart.
void TFStreamBase::MoveTo(__int64 iTarget) {
    DeviceSeek(iTarget, 0);
    if (pBlob != nullptr) pBlob->Reset();
    dwBufferBase = static_cast<unsigned long>(iTarget);
}

// The byte order mark

void TFStreamBase::ReadForByteOrderMark() {
    std::array<unsigned char, 3> auFirst{};
    ReadDataInternal(auFirst.data(), static_cast<unsigned long>(auFirst.size()));
    unsigned long dwBehind = 0;
    for (TByteOrderMark const & tMark : atMarks) {
        if (std::equal(auFirst.begin(), auFirst.begin() + tMark.dwSize, tMark.auBytes.begin())) {
            // Deliberate: the mark overrules the code page that the caller gave.
            SetCodePage(tMark.eCodePage);
            iMode |= FS_BYTE_ORDER_MARK;
            dwBehind = tMark.dwSize;
            break;
        }
    }
    if (pBlob != nullptr && dwBufferBase == 0) {
        pBlob->dwPos = dwBehind; // the buffer holds the start of the file
    } else {
        MoveTo(dwBehind);
    }
}

void TFStreamBase::WriteByteOrderMark() {
    ECodePage const eCodePage = eGetCodePage();
    for (TByteOrderMark const & tMark : atMarks) {
        bool const fWanted = tMark.eCodePage != ecpUtf8 || fHasByteOrderMark();
        if (tMark.eCodePage == eCodePage && fWanted) WriteDataInternal(tMark.auBytes.data(), tMark.dwSize);
    }
}

// Text

void TFStreamBase::ReadData(std::wstring & sText, unsigned long dwCount) {
    if (dwCount == 0) return;
    NeedBlock();
    if (!fIsEoF()) EnsureBufferFilled(); // a mark alone is an empty text
    TTextCollector tText;
    for (; dwCount != 0 && !fIsEoF(); --dwCount) {
        wchar_t c = 0;
        ReadChar(c);
        tText.Add(c);
    }
    tText.MoveTo(sText);
}

void TFStreamBase::ReadString(std::wstring & sText) {
    ReadToDelim(sText, L'\0', L'\\', false, dwLineHint);
}

void TFStreamBase::ReadString(wchar_t * pzTarget, unsigned long dwSize) {
    std::wstring sText;
    ReadString(sText);
    CopyToBuffer(sText, pzTarget, dwSize);
}

void TFStreamBase::ReadToDelim(std::wstring & sText, wchar_t cDelim, wchar_t cEscape, bool fKeepDelim, unsigned long) {
    sText.clear();
    TTextCollector tText;
    CollectToDelim(tText, cDelim, cEscape, fKeepDelim);
    tText.MoveTo(sText);
}

void TFStreamBase::CollectToDelim(TTextCollector & tText, wchar_t cDelim, wchar_t cEscape, bool fKeepDelim) {
    NeedBlock();
    if (TFStreamBase::dwGetPos() == 0 && !fIsEoF()) EnsureBufferFilled(); // a mark alone is an empty text
    TDelimiter tDelimiter(cDelim, cEscape);
    while (!fIsEoF()) {
        if (!tDelimiter.fIsEscaped()) {
            dwCollectRun(tText, ULONG_MAX, cDelim, cEscape);
            if (!fKeepDelim && cDelim != cEscape && fPassByte(cDelim)) break;
            if (fIsEoF()) break;
        }
        wchar_t c = 0;
        ReadCharInternal(c, cDelim == 0);
        bool const fFound = tDelimiter.fEndsWith(c);
        // Deliberate: 0xFFFF once meant the end of the file to readers of these texts, and is never stored.
        if ((!fFound || fKeepDelim) && c != cNeverStored) tText.Add(c);
        if (fFound) break;
    }
}

/// Passes over an ASCII character at the position of a buffer of UTF-8 and tells whether it stood there: what ends most
/// texts, without the long way of a character.
bool TFStreamBase::fPassByte(wchar_t c) {
    bool const fThere =
        uCodePage == CP_UTF8 && c != 0 && c < 0x80 && pBlob->dwPos < pBlob->dwUsed && *pBlob->pGetDataAtPos() == c;
    if (fThere) ++pBlob->dwPos;
    return fThere;
}

void TFStreamBase::Readln(std::wstring & sText) {
    TTextCollector tLine;
    // Deliberate: a backslash in front of the line end keeps the line going, and both stand in it.
    CollectToDelim(tLine, cLineFeed, L'\\', false);
    tLine.DropAtEnd(cCarriageReturn);
    tLine.MoveTo(sText);
}

void TFStreamBase::Readln(wchar_t * pzTarget, unsigned long dwSize) {
    std::wstring sText;
    Readln(sText);
    CopyToBuffer(sText, pzTarget, dwSize);
}
