// The owner of one directory search.
#pragma once

#include "ZkBase/Windows.h"

/// One search for the entries that a pattern names, over paths of any length. The constructor looks for the first one.
///
///     for (TFindFile tFind(sPattern.c_str()); tFind.fFound(); tFind.fNext()) use(tFind.tGetData());
///
/// The search asks for no short names.
class TFindFile {
public:
    /// \param pzPattern a path whose last component may hold wildcards. A root, or a path with a backslash at its end,
    ///                  finds nothing.
    explicit TFindFile(wchar_t const * pzPattern);
    ~TFindFile();
    TFindFile(TFindFile const &) = delete;
    TFindFile & operator=(TFindFile const &) = delete;

    /// True while there is an entry to look at.
    [[nodiscard]] bool fFound() const noexcept;
    /// The entry; nothing of meaning when there is none.
    [[nodiscard]] WIN32_FIND_DATAW const & tGetData() const noexcept { return tData; }
    /// Goes to the next entry, and tells whether there is one.
    bool fNext() noexcept;
    /// Why there is no entry: 0 while there is one, `ERROR_NO_MORE_FILES` behind the last one.
    [[nodiscard]] DWORD dwGetLastError() const noexcept { return dwLastError; }

    /// The size of the file in bytes.
    [[nodiscard]] ULARGE_INTEGER tGetSize() const noexcept {
        ULARGE_INTEGER tSize;
        tSize.LowPart = tData.nFileSizeLow;
        tSize.HighPart = tData.nFileSizeHigh;
        return tSize;
    }
    [[nodiscard]] bool fIsDirectory() const noexcept {
        return (tData.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    }

private:
    HANDLE hSearch;
    WIN32_FIND_DATAW tData;
    DWORD dwLastError;
};
