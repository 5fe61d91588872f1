#include "ZkTools/WorkingCopy.h"

#include "files/FindFile.h"

#include "ZkBase/Text.h"
#include "ZkTools/Exceptions.h"
#include "ZkTools/FileStream.h"
#include "ZkTools/Files.h"
#include "ZkTools/Paths.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace {

constexpr wchar_t const * pzSvnMarker = L".svn";
constexpr wchar_t const * pzGitMarker = L".git";
constexpr wchar_t const * pzDataBase = L"wc.db";

constexpr long lUserVersionPlace = 60; // in the header of the data base: the number that its owner keeps there

struct TDbFormat {
    std::uint32_t uNumber;
    ESvnVersion eVersion;
};
constexpr std::array tDbFormats{TDbFormat{29, eWcDbFormat29}, TDbFormat{31, eWcDbFormat31}};

struct TTextFormat {
    std::wstring_view sNumber;
    ESvnVersion eVersion;
};
constexpr std::array tTextFormats{TTextFormat{L"7", eWcFormat7}, TTextFormat{L"8", eWcFormat8},
                                  TTextFormat{L"9", eWcFormat9}, TTextFormat{L"10", eWcFormat10}};

/// Going up from the path, the last directory of the first unbroken run of those that hold the marker; empty when none
/// does. That serves both layouts, a marker in every directory and a single one at the root.
std::wstring sFindMarkerRoot(std::wstring const & sPath, wchar_t const * pzMarker) {
    std::wstring sRoot;
    for (std::wstring const & sDirectory : GetPathAndAncestors(sPath)) {
        if (TFindFile(sMerge(sDirectory, pzMarker).c_str()).fFound()) {
            sRoot = sDirectory;
        } else if (!sRoot.empty()) {
            break;
        }
    }
    return sRoot;
}

/// The row of a table with that key; `eWcNone` when there is none.
template <typename TTable, typename TKey, typename TField>
ESvnVersion eFind(TTable const & tTable, TKey const & tKey, TField pField) {
    auto const pRow = std::ranges::find(tTable, tKey, pField);
    return pRow != tTable.end() ? pRow->eVersion : eWcNone;
}

/// The number of the data base's format; 0 when the file is too short for one.
std::uint32_t uReadDataBase(TFStream & tFile) {
    std::array<unsigned char, 4> acNumber{};
    tFile.Seek(lUserVersionPlace, 0);
    tFile.ReadData(acNumber.data(), acNumber.size());
    std::uint32_t uNumber = 0;
    for (unsigned char const c : acNumber)
        uNumber = uNumber << 8 | c; // the header is big-endian
    return uNumber;
}

std::wstring sReadLine(TFStream & tFile) {
    std::wstring sLine;
    tFile.Readln(sLine);
    string_functions::strip_whitespace(sLine, string_functions::esBoth);
    return sLine;
}

/// The format that a file tells. That it can't be opened is the caller's business, that nothing can be read is not.
ESvnVersion eReadFormat(std::wstring const & sPath, bool fDataBase) {
    TFStream tFile(sPath, ecpDefault, FS_SHARE_ALL | (fDataBase ? FS_BINARY : FS_PLAIN));
    try {
        return fDataBase ? eFind(tDbFormats, uReadDataBase(tFile), &TDbFormat::uNumber)
                         : eFind(tTextFormats, sReadLine(tFile), &TTextFormat::sNumber);
    } catch (TXError const &) {
        return eWcNone;
    }
}

ESvnVersion eGetWorkingCopyFormat(std::wstring const & sDirectory) {
    std::wstring const sMarker = sMerge(sDirectory, pzSvnMarker);
    for (wchar_t const * const pzName : {pzDataBase, L"format", L"entries"}) {
        std::wstring const sPath = sMerge(sMarker, pzName);
        if (fExistFile(sPath.c_str())) return eReadFormat(sPath, pzName == pzDataBase);
    }
    return eWcNone;
}

} // namespace

ESvnVersion eGetWorkingCopyVersion(std::wstring const & sPath) {
    // Deliberate: the format is that of the path itself, not that of the root.
    if (!sFindMarkerRoot(sPath, pzSvnMarker).empty()) return eGetWorkingCopyFormat(sPath);
    return sFindMarkerRoot(sPath, pzGitMarker).empty() ? eWcNone : eWcGit;
}

std::wstring sGetWorkingCopyRoot(std::wstring const & sPath) {
    std::wstring const sRoot = sFindMarkerRoot(sPath, pzSvnMarker);
    return !sRoot.empty() ? sRoot : sFindMarkerRoot(sPath, pzGitMarker);
}
