#include "ZkBase/Paths.h"

#include "ZkBase/Text.h"
#include "base/PathRoot.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace path_func {

namespace {

bool fHasDrive(std::wstring_view sPath) noexcept {
    return sPath.size() >= 2 && sPath[1] == L':';
}

/// True where a component ends: in front of a backslash, and at the end.
bool fEndsComponent(std::wstring_view sPath, std::size_t uPos) noexcept {
    return uPos == sPath.size() || sPath[uPos] == L'\\';
}

} // namespace

std::wstring sPathAppend(std::wstring const & sPath, std::wstring const & sMore) {
    if (fPathIsUNC(sMore.c_str())) return sMore;
    std::wstring_view sRest = sMore;
    sRest.remove_prefix(std::min(sRest.find_first_not_of(L'\\'), sRest.size()));
    if (sRest.empty()) return sPath;
    if (sPath.empty() || fHasDrive(sRest)) return std::wstring(sRest);

    std::wstring sResult;
    sResult.reserve(sPath.size() + 1 + sRest.size());
    sResult = sPath;
    if (!sResult.ends_with(L'\\')) sResult += L'\\';
    return sResult += sRest;
}

void SplitPath(std::wstring const & sPath, std::wstring * psDrive, std::wstring * psDir, std::wstring * psName,
               std::wstring * psExt) {
    std::wstring_view const sWhole = sPath;
    std::size_t const uDir = fHasDrive(sWhole) ? 2 : 0;
    std::size_t const uSeparator = sWhole.find_last_of(L"\\/");
    std::size_t const uName = uSeparator == std::wstring::npos || uSeparator < uDir ? uDir : uSeparator + 1;
    std::size_t const uPoint = sWhole.rfind(L'.');
    std::size_t const uExt = uPoint == std::wstring::npos || uPoint < uName ? sWhole.size() : uPoint;

    // All parts are taken before the first is stored: one of them may go into the path itself.
    auto const sTake = [sWhole](std::wstring const * psPart, std::size_t uBegin, std::size_t uEnd) {
        return psPart == nullptr ? std::wstring() : std::wstring(sWhole.substr(uBegin, uEnd - uBegin));
    };
    std::wstring sDrive = sTake(psDrive, 0, uDir);
    std::wstring sDir = sTake(psDir, uDir, uName);
    std::wstring sName = sTake(psName, uName, uExt);
    std::wstring sExt = sTake(psExt, uExt, sWhole.size());
    if (psDrive != nullptr) *psDrive = std::move(sDrive);
    if (psDir != nullptr) *psDir = std::move(sDir);
    if (psName != nullptr) *psName = std::move(sName);
    if (psExt != nullptr) *psExt = std::move(sExt);
}

std::wstring sMakePath(wchar_t const * pzDrive, wchar_t const * pzDir, wchar_t const * pzName, wchar_t const * pzExt) {
    std::wstring sResult;
    if (pzDrive != nullptr && *pzDrive != L'\0') {
        sResult += *pzDrive;
        sResult += L':';
    }
    if (pzDir != nullptr && *pzDir != L'\0') {
        sResult += pzDir;
        if (sResult.back() != L'\\' && sResult.back() != L'/') sResult += L'\\';
    }
    if (pzName != nullptr) sResult += pzName;
    if (pzExt != nullptr && *pzExt != L'\0') {
        if (*pzExt != L'.') sResult += L'.';
        sResult += pzExt;
    }
    return sResult;
}

void PathRemoveBackslashW(std::wstring & sPath) {
    if (sPath.ends_with(L'\\') && sPath.size() > tFindPathRoot(sPath).uLength) sPath.pop_back();
}

bool fPathRemoveFileSpec(std::wstring & sPath) {
    std::size_t const uRoot = tFindPathRoot(sPath).uLength;
    if (sPath.size() <= uRoot) return false;
    std::size_t const uBackslash = sPath.rfind(L'\\');
    sPath.resize(uBackslash == std::wstring::npos || uBackslash < uRoot ? uRoot : uBackslash);
    return true;
}

std::wstring sPathCommonPrefix(wchar_t const * pzFirst, wchar_t const * pzSecond) {
    if (pzFirst == nullptr || pzSecond == nullptr) return {};
    std::wstring_view const sFirst = pzFirst;
    std::wstring_view const sSecond = pzSecond;
    TPathRoot const tRoot = tFindPathRoot(sFirst);
    TPathRoot const tOther = tFindPathRoot(sSecond);
    if (tRoot.uPrefix != tOther.uPrefix) return {};

    std::size_t uCommon = 0;
    std::size_t uPos = tRoot.uPrefix;
    for (;; ++uPos) {
        if (fEndsComponent(sFirst, uPos) && fEndsComponent(sSecond, uPos)) uCommon = uPos;
        if (uPos == sFirst.size() || uPos == sSecond.size()) break;
        if (sFirst[uPos] != sSecond[uPos] && wcWToUpper(sFirst[uPos]) != wcWToUpper(sSecond[uPos])) break;
    }
    // A root that ends in a backslash is one component with it.
    if (tRoot.fWhole && tRoot.uLength == tOther.uLength && uPos >= tRoot.uLength && uCommon < tRoot.uLength)
        uCommon = tRoot.uLength;
    return std::wstring(sFirst.substr(0, uCommon));
}

bool fPathContainsWildcard(std::wstring const & sPath) {
    std::size_t const uBegin = sPath.starts_with(sLongPrefix) ? sLongPrefix.size() : 0;
    return sPath.find_first_of(L"*?", uBegin) != std::wstring::npos;
}

bool fPathIsRelative(wchar_t const * pzPath) {
    if (pzPath == nullptr || *pzPath == L'\0') return true;
    return *pzPath != L'\\' && pzPath[1] != L':';
}

bool fPathIsRoot(wchar_t const * pzPath) {
    if (pzPath == nullptr) return false;
    std::wstring_view const sPath = pzPath;
    TPathRoot const tRoot = tFindPathRoot(sPath);
    return tRoot.fWhole && tRoot.uLength == sPath.size();
}

bool fPathIsUNC(wchar_t const * pzPath) {
    return pzPath != nullptr && pzPath[0] == L'\\' && pzPath[1] == L'\\';
}

bool fPathIsUNCServer(wchar_t const * pzPath) {
    if (!fPathIsUNC(pzPath)) return false;
    std::wstring_view const sPath = pzPath;
    std::size_t const uPrefix = tFindPathRoot(sPath).uPrefix;
    return uPrefix != sLongPrefix.size() && sPath.find(L'\\', uPrefix) == std::wstring_view::npos;
}

} // namespace path_func
