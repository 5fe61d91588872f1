// A file as minizip reads it.
#pragma once

#include "ZkBase/Windows.h"
#include "ZkTools/FileStream.h"

#include <array>
#include <minizip/unzip.h>

/// The file functions of one archive: wide names, reading only. minizip asks for one, two or four bytes at a time, now
/// from the directory at the end of the file, now from the header of a member; a few blocks serve both.
///
/// What minizip opens stays open until this object goes, so it must outlive the archive.
class TArchiveFile {
public:
    TArchiveFile() = default;
    TArchiveFile(TArchiveFile const &) = delete;
    TArchiveFile & operator=(TArchiveFile const &) = delete;

    /// For `unzOpen2`, whose path is a `wchar_t const *` in disguise then.
    [[nodiscard]] zlib_filefunc_def tGetFunctions() noexcept;

    /// True when the file is open and nothing but the closing record of an archive without members. minizip does not
    /// find that record at the very start of a file.
    [[nodiscard]] bool fIsBareEndRecord();

private:
    struct TBlock {
        unsigned __int64 qwLastUse = 0;
        unsigned __int64 qwStart = 0;
        DWORD dwSize = 0;
        std::array<unsigned char, 4096> acBytes;
    };

    bool fOpen(wchar_t const * pzPath);
    uLong uRead(unsigned char * pTarget, uLong uSize);
    bool fSeek(uLong uOffset, int iOrigin) noexcept;
    TBlock const * pFindBlock();

    TFileHandle hFile;
    unsigned __int64 qwSize = 0;
    unsigned __int64 qwPosition = 0;
    unsigned __int64 qwUse = 0;
    std::array<TBlock, 4> tBlocks; // either place may lie across the border of two
};
