#include "files/ArchiveFile.h"

#include <algorithm>
#include <cstring>

zlib_filefunc_def TArchiveFile::tGetFunctions() noexcept {
    static constexpr auto tSelf = [](voidpf pFile) -> TArchiveFile & { return *static_cast<TArchiveFile *>(pFile); };
    zlib_filefunc_def tFunctions{};
    tFunctions.opaque = this;
    tFunctions.zopen_file = [](voidpf pThis, char const * pName, int) -> voidpf {
        return tSelf(pThis).fOpen(reinterpret_cast<wchar_t const *>(pName)) ? pThis : nullptr;
    };
    tFunctions.zread_file = [](voidpf, voidpf pFile, void * pTarget, uLong uSize) {
        return tSelf(pFile).uRead(static_cast<unsigned char *>(pTarget), uSize);
    };
    tFunctions.zwrite_file = [](voidpf, voidpf, void const *, uLong) -> uLong { return 0; };
    tFunctions.ztell_file = [](voidpf, voidpf pFile) -> long {
        // minizip takes the 32 bits without a sign, and all of them set for a failure.
        return static_cast<long>(std::min<unsigned __int64>(tSelf(pFile).qwPosition, 0xFFFFFFFF));
    };
    tFunctions.zseek_file = [](voidpf, voidpf pFile, uLong uOffset, int iOrigin) -> long {
        return tSelf(pFile).fSeek(uOffset, iOrigin) ? 0 : -1;
    };
    tFunctions.zclose_file = [](voidpf, voidpf) { return 0; };
    // Asked only where a read gave too little. At the end of the file that is an error too: minizip would go on with
    // zeros in the place of what is missing, and take a cut archive for one without members.
    tFunctions.zerror_file = [](voidpf, voidpf) { return 1; };
    return tFunctions;
}

bool TArchiveFile::fIsBareEndRecord() {
    constexpr std::array<unsigned char, 20> acNoMembers{'P', 'K', 5, 6};
    std::array<unsigned char, acNoMembers.size() + 2> acRecord;
    if (!hFile.fIsValid() || !fSeek(0, ZLIB_FILEFUNC_SEEK_SET)) return false;
    if (uRead(acRecord.data(), acRecord.size()) != acRecord.size()) return false;
    unsigned const uComment = acRecord[20] + 256U * acRecord[21];
    return std::equal(acNoMembers.begin(), acNoMembers.end(), acRecord.begin()) && qwSize == acRecord.size() + uComment;
}

bool TArchiveFile::fOpen(wchar_t const * pzPath) {
    hFile = TFileHandle(CreateFileW(pzPath, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    LARGE_INTEGER liSize{};
    if (!hFile.fIsValid() || GetFileSizeEx(hFile.hGet(), &liSize) == 0) return false;
    qwSize = static_cast<unsigned __int64>(liSize.QuadPart);
    return true;
}

uLong TArchiveFile::uRead(unsigned char * pTarget, uLong uSize) {
    uLong uDone = 0;
    while (uDone < uSize) {
        TBlock const * pBlock = pFindBlock();
        if (pBlock == nullptr) break;
        auto const uOffset = static_cast<DWORD>(qwPosition - pBlock->qwStart);
        DWORD const uCount = std::min(uSize - uDone, pBlock->dwSize - uOffset);
        std::memcpy(pTarget + uDone, pBlock->acBytes.data() + uOffset, uCount);
        qwPosition += uCount;
        uDone += uCount;
    }
    return uDone;
}

bool TArchiveFile::fSeek(uLong uOffset, int iOrigin) noexcept {
    switch (iOrigin) {
    case ZLIB_FILEFUNC_SEEK_SET:
        qwPosition = uOffset;
        return true;
    case ZLIB_FILEFUNC_SEEK_CUR:
        qwPosition += uOffset;
        return true;
    case ZLIB_FILEFUNC_SEEK_END:
        qwPosition = qwSize + uOffset;
        return true;
    default:
        return false;
    }
}

/// The block that holds the position; null at the end of the file and when reading fails.
TArchiveFile::TBlock const * TArchiveFile::pFindBlock() {
    for (TBlock & tBlock : tBlocks) {
        if (qwPosition >= tBlock.qwStart && qwPosition - tBlock.qwStart < tBlock.dwSize) {
            tBlock.qwLastUse = ++qwUse;
            return &tBlock;
        }
    }
    TBlock & tBlock = *std::ranges::min_element(tBlocks, {}, &TBlock::qwLastUse);
    tBlock.qwLastUse = ++qwUse;
    tBlock.qwStart = qwPosition - qwPosition % tBlock.acBytes.size();
    tBlock.dwSize = 0;
    LARGE_INTEGER liStart;
    liStart.QuadPart = static_cast<__int64>(tBlock.qwStart);
    bool const fRead = SetFilePointerEx(hFile.hGet(), liStart, nullptr, FILE_BEGIN) != 0 &&
                       ReadFile(hFile.hGet(), tBlock.acBytes.data(), static_cast<DWORD>(tBlock.acBytes.size()),
                                &tBlock.dwSize, nullptr) != 0;
    return fRead && qwPosition - tBlock.qwStart < tBlock.dwSize ? &tBlock : nullptr;
}
