#include "ZkTools/Paths.h"

#include "ZkBase/Paths.h"
#include "ZkBase/Text.h"
#include "ZkBase/Windows.h"
#include "ZkTools/Exceptions.h"
#include "ZkTools/MessageIds.h"

#include <winnetwk.h>

#include <algorithm>
#include <cstddef>
#include <cwchar>
#include <cwctype>
#include <string_view>
#include <utility>

namespace {

// Deliberate: the registered sign is refused like the others, though the platform would take it.
constexpr wchar_t const * pzInvalidNameChars = L"/\\:*?\"<>|\u00AE";

/// What no path may have behind its drive. The backslash is allowed there.
constexpr wchar_t const * pzInvalidPathChars = L"/:*?\"<>|";

constexpr std::wstring_view sNotUriChars = L"%\n \"#@`:<>[\\]^{|}~";

wchar_t const * pzInvalidOrDefault(wchar_t const * pzInvalid) noexcept {
    return pzInvalid != nullptr ? pzInvalid : pzInvalidNameChars;
}

bool fIsLetter(wchar_t c) noexcept {
    return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z');
}

bool fStartsLikeNetworkPath(std::wstring_view sPath) noexcept {
    return sPath.starts_with(L"\\\\");
}

std::wstring sGetDrive(std::wstring const & sPath) {
    std::wstring sDrive;
    path_func::SplitPath(sPath, &sDrive, nullptr, nullptr, nullptr);
    return sDrive;
}

std::wstring sWithEnd(std::wstring const & sPath, wchar_t cEnd) {
    std::wstring sResult = sPath;
    if (!sResult.ends_with(cEnd)) sResult += cEnd;
    return sResult;
}

/// Cuts the string at its last backslash; false when it has none.
bool fCutAtLastBackslash(std::wstring & sPath) {
    std::size_t const uBackslash = sPath.rfind(L'\\');
    if (uBackslash == std::wstring::npos) return false;
    sPath.resize(uBackslash);
    return true;
}

/// The length of what two directories have in common, up to and with a backslash. Both end in one.
std::size_t uGetCommonLength(std::wstring_view sFirst, std::wstring_view sSecond) noexcept {
    std::size_t const uShorter = std::min(sFirst.size(), sSecond.size());
    std::size_t uCommon = 0;
    for (std::size_t u = 0; u < uShorter && std::towupper(sFirst[u]) == std::towupper(sSecond[u]); ++u) {
        if (sFirst[u] == L'\\') uCommon = u + 1;
    }
    return uCommon;
}

/// The way from the directory `sFrom` to `sPath`, which lies in (or is) the directory `sTo`. Both directories end in a
/// backslash.
std::wstring sMakeRelative(std::wstring_view sFrom, std::wstring_view sTo, std::wstring_view sPath) {
    std::size_t const uCommon = uGetCommonLength(sFrom, sTo);
    if (uCommon == 0) return std::wstring(sPath);

    constexpr std::wstring_view sUp = L"..\\";
    sFrom.remove_prefix(uCommon);
    sPath.remove_prefix(std::min(uCommon, sPath.size()));
    std::wstring sResult;
    sResult.reserve(sFrom.size() * sUp.size() + sPath.size());
    for (wchar_t c : sFrom) {
        if (c == L'\\') sResult += sUp;
    }
    sResult += sPath;
    return sResult;
}

} // namespace

TSplitPath SplitPath(std::wstring const & sPath, EBackshlash eBackshlash) {
    TSplitPath tSplit;
    std::wstring sDrive, sDir;
    path_func::SplitPath(sPath, &sDrive, &sDir, &tSplit.sName, &tSplit.sExtension);
    tSplit.sDirectory = path_func::sMakePath(sDrive.c_str(), sDir.c_str(), nullptr, nullptr);
    if (eBackshlash == eBackshlashRemove) path_func::PathRemoveBackslashW(tSplit.sDirectory);
    return tSplit;
}

std::optional<TSplitPath> pSplitPath(std::wstring const & sPath, EBackshlash eBackshlash) {
    TSplitPath tSplit = SplitPath(sPath, eBackshlash);
    if (sGetFileName(tSplit).empty()) return std::nullopt;
    return tSplit;
}

std::wstring sGetFileName(TSplitPath const & tSplit) {
    return sMerge(L"", tSplit.sName, tSplit.sExtension);
}

std::wstring sMerge(std::wstring const & sDirectory, std::wstring const & sName) {
    return path_func::sPathAppend(sDirectory, sName);
}

std::wstring sMerge(std::wstring const & sDirectory, std::wstring const & sName, std::wstring const & sExtension) {
    bool const fLacksPoint = !sExtension.empty() && !sExtension.starts_with(L'.');
    return path_func::sPathAppend(sDirectory, sName + (fLacksPoint ? L"." : L"") + sExtension);
}

std::wstring sPathRemoveFileSpec(std::wstring const & sPath) {
    std::wstring sResult = sPath;
    path_func::fPathRemoveFileSpec(sResult);
    return sResult;
}

std::wstring sReplaceFileExtention(std::wstring const & sPath, wchar_t const * pzNewExtension, bool fNameOnly) {
    TSplitPath const tSplit = SplitPath(sPath, eBackshlashRemove);
    return sMerge(fNameOnly ? std::wstring() : tSplit.sDirectory, tSplit.sName, pzNewExtension);
}

std::wstring sReplaceDirectory(std::wstring const & sPath, std::wstring const & sNewDirectory) {
    return path_func::sPathAppend(sNewDirectory, sGetFileName(SplitPath(sPath, eBackshlashRemove)));
}

std::wstring sGetFullPath(wchar_t const * pzFirst, wchar_t const * pzSecond, wchar_t const * pzThird) {
    return path_func::sPathAppend(path_func::sPathAppend(pzFirst, pzSecond), pzThird);
}

void ClearBackslash(std::wstring & sPath) {
    path_func::PathRemoveBackslashW(sPath);
}

std::wstring sClearBackslash(std::wstring const & sPath) {
    std::wstring sResult = sPath;
    ClearBackslash(sResult);
    return sResult;
}

std::wstring sAppendBackslash(std::wstring const & sPath) {
    return sWithEnd(sPath, L'\\');
}

std::wstring sAppendSlash(std::wstring const & sPath) {
    return sWithEnd(sPath, L'/');
}

std::wstring sGetCommonPrefix(std::wstring const & sFirst, std::wstring const & sSecond) {
    return path_func::sPathCommonPrefix(sFirst.c_str(), sSecond.c_str());
}

bool fIsAbsolutePath(std::wstring const & sPath) {
    return !sGetDrive(sPath).empty() || fStartsLikeNetworkPath(sPath);
}

bool fIsValidDrive(std::wstring const & sPath) {
    std::wstring const sDrive = sGetDrive(sPath);
    if (sDrive.empty()) return fStartsLikeNetworkPath(sPath);
    if (!fIsLetter(sDrive[0])) return false;
    int const iBit = (sDrive[0] | 0x20) - L'a'; // the letters of both cases differ in that one bit
    return (GetLogicalDrives() >> iBit & 1) != 0;
}

bool fIsValidPath(std::wstring const & sPath) {
    // The colon of a drive that there is, is not looked at; that of any other makes the path invalid.
    return fIsValidName(sPath.c_str() + (fIsValidDrive(sPath) ? 2 : 0), pzInvalidPathChars);
}

bool fIsValidName(wchar_t const * pzName, wchar_t const * pzInvalid) {
    return std::wcspbrk(pzName, pzInvalidOrDefault(pzInvalid)) == nullptr;
}

void xIsValidName(wchar_t const * pzName, wchar_t const * pzInvalid) {
    if (!fIsValidName(pzName, pzInvalid)) throw TXZkTools(IDS_INVALID_NAME, pzInvalidOrDefault(pzInvalid));
}

bool fPathIsChild(std::wstring const & sFirst, std::wstring const & sSecond) {
    return iWCompareIString(sGetCommonPrefix(sFirst, sSecond).c_str(), sFirst.c_str()) == 0;
}

void ReplaceSlashByBackSlash(std::wstring & sPath) {
    std::ranges::replace(sPath, L'/', L'\\');
}

void ReplaceBackSlashBySlash(std::wstring & sPath) {
    std::ranges::replace(sPath, L'\\', L'/');
}

void ReplaceBackSlashByDoubleBackSlash(std::wstring & sPath) {
    std::wstring sResult;
    sResult.reserve(sPath.size() + static_cast<std::size_t>(std::ranges::count(sPath, L'\\')));
    for (wchar_t c : sPath) {
        sResult += c;
        if (c == L'\\') sResult += c;
    }
    sPath = std::move(sResult);
}

wchar_t * pzReplaceInvalidNameChars(wchar_t * pzBuffer, wchar_t const * pzInvalid, wchar_t cReplacement) {
    std::wstring_view const sInvalid = pzInvalidOrDefault(pzInvalid);
    if (cReplacement == 0) {
        auto const fIsInvalid = [sInvalid](wchar_t c) { return sInvalid.find(c) != std::wstring_view::npos; };
        *std::remove_if(pzBuffer, pzBuffer + std::wcslen(pzBuffer), fIsInvalid) = 0;
        return pzBuffer;
    }
    // Deliberate: the answer is the last position replaced, and the search goes on at it, not behind it.
    wchar_t * pzLast = pzBuffer;
    while (wchar_t * const pzFound = std::wcspbrk(pzLast, sInvalid.data())) {
        *pzFound = cReplacement;
        pzLast = pzFound;
    }
    return pzLast;
}

void ReplaceInvalidNameChars(std::wstring & sName, wchar_t const * pzInvalid, wchar_t cReplacement) {
    std::wstring_view const sInvalid = pzInvalidOrDefault(pzInvalid);
    if (cReplacement == 0) {
        std::erase_if(sName, [sInvalid](wchar_t c) { return sInvalid.find(c) != std::wstring_view::npos; });
        return;
    }
    for (std::size_t u = 0; (u = sName.find_first_of(sInvalid, u)) != std::wstring::npos;)
        sName[u] = cReplacement;
}

std::wstring sReplaceInvalidNameChars(std::wstring const & sName, wchar_t const * pzInvalid, wchar_t cReplacement) {
    std::wstring sResult = sName;
    ReplaceInvalidNameChars(sResult, pzInvalid, cReplacement);
    return sResult;
}

std::wstring sReplaceNotUriCharInFileName(std::wstring const & sName, wchar_t cReplacement) {
    // One pass is as good as one for each character: a replacement out of the set only becomes itself again.
    auto const fIsNotUri = [](wchar_t c) { return sNotUriChars.find(c) != std::wstring_view::npos; };
    std::wstring sResult = sName;
    if (cReplacement == 0) {
        std::erase_if(sResult, fIsNotUri);
    } else {
        std::ranges::replace_if(sResult, fIsNotUri, cReplacement);
    }
    return sResult;
}

void StripDotBSlash(std::wstring & sPath) {
    std::size_t uTo = 0;
    for (std::size_t uFrom = 0; uFrom < sPath.size(); ++uFrom) {
        bool const fFound = sPath[uFrom] == L'.' && uFrom + 1 < sPath.size() && sPath[uFrom + 1] == L'\\';
        if (fFound && (uTo == 0 || sPath[uTo - 1] != L'.')) {
            ++uFrom; // both fall out
        } else {
            sPath[uTo++] = sPath[uFrom];
        }
    }
    sPath.resize(uTo);
}

std::wstring sConvertToUNC(std::wstring const & sPath) {
    // The size is all that is wanted of the first call, but it does not take a null pointer for a buffer of no bytes.
    UNIVERSAL_NAME_INFOW tNone;
    DWORD dwSize = 0;
    if (WNetGetUniversalNameW(sPath.c_str(), UNIVERSAL_NAME_INFO_LEVEL, &tNone, &dwSize) != ERROR_MORE_DATA) {
        return sPath;
    }
    dwSize = 2 * dwSize + 2;
    std::vector<std::byte> tBuffer(dwSize);
    if (WNetGetUniversalNameW(sPath.c_str(), UNIVERSAL_NAME_INFO_LEVEL, tBuffer.data(), &dwSize) != NO_ERROR) {
        return sPath;
    }
    return reinterpret_cast<UNIVERSAL_NAME_INFOW const *>(tBuffer.data())->lpUniversalName;
}

std::vector<std::wstring> GetPathAndAncestors(std::wstring const & sPath) {
    if (sPath.size() < 3 || path_func::fPathIsRelative(sPath.c_str()) || path_func::fPathIsUNCServer(sPath.c_str())) {
        return {};
    }
    bool const fHasDriveRoot = fIsLetter(sPath[0]) && sPath[1] == L':' && sPath[2] == L'\\';
    if (!path_func::fPathIsUNC(sPath.c_str()) && !fHasDriveRoot) return {};

    std::vector<std::wstring> sResult;
    std::wstring sCurrent = sPath;
    do {
        sResult.push_back(sCurrent);
        if (path_func::fPathIsRoot(sCurrent.c_str())) return sResult;
    } while (path_func::fPathRemoveFileSpec(sCurrent));
    return {};
}

std::wstring sMakePathRelative(wchar_t const * pzBase, wchar_t const * pzPath) {
    return sMakeRelative(sAppendBackslash(pzBase), sAppendBackslash(sPathRemoveFileSpec(pzPath)), pzPath);
}

std::wstring sMakeDirRelative(wchar_t const * pzBase, wchar_t const * pzDirectory) {
    std::wstring const sFile = path_func::sPathAppend(pzDirectory, L"dummy.000"); // any name: only its directory counts
    std::wstring sResult = sMakePathRelative(pzBase, sFile.c_str());
    if (!fCutAtLastBackslash(sResult)) sResult.clear();
    return sResult;
}

// Deliberate: the backslash of the last level up, and one at the end of the directory, stay here, unlike above.
std::wstring sMakeDirRelative(std::wstring const & sBase, std::wstring const & sDirectory) {
    return sMakeRelative(sAppendBackslash(sBase), sAppendBackslash(sDirectory), sDirectory);
}

std::wstring sMakePathAbsolute(wchar_t const * pzBase, wchar_t const * pzPath) {
    if (fIsAbsolutePath(pzPath)) return pzPath;

    std::wstring sResult = pzBase;
    if (sResult.ends_with(L'\\')) sResult.pop_back();
    std::wstring_view sRest = pzPath;
    for (std::size_t uEnd; (uEnd = sRest.find(L'\\')) != std::wstring_view::npos; sRest.remove_prefix(uEnd + 1)) {
        std::wstring_view const sComponent = sRest.substr(0, uEnd);
        if (sComponent.empty()) continue;
        if (sComponent == L"..") {
            if (!fCutAtLastBackslash(sResult)) return pzPath;
        } else {
            sResult.append(1, L'\\').append(sComponent);
        }
    }
    // Deliberate: the last component is appended whatever it is, "..", "." and nothing included.
    return sResult.append(1, L'\\').append(sRest);
}

std::wstring sMakePathAbsolute(wchar_t const * pzBase, wchar_t const * pzPath, wchar_t const * pzFile) {
    return path_func::sPathAppend(sMakePathAbsolute(pzBase, pzPath), pzFile);
}
