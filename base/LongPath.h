// Long paths: the platform takes paths of 260 characters and more (248 for a new directory) only with a prefix.
//
// Both libraries need this below their exported functions, so it is inline here and exported by neither.
#pragma once

#include "ZkBase/Windows.h"

#include <cstddef>
#include <string>
#include <string_view>

/// From this length on a path needs the prefix.
inline constexpr int iLongPathLimit = 260;
/// From this length on the path of a new directory needs it: the platform keeps room for a short name in it.
inline constexpr int iLongDirPathLimit = 248;

/// Makes one backslash of each pair, from left to right, but leaves a backslash at the very start out of it, so that
/// the two of a network path survive.
// Deliberate: a pair that only comes about by this stays, so three backslashes become two.
inline void CollapseDoubleBackslashes(std::wstring & sPath) {
    std::size_t uTo = sPath.starts_with(L'\\') ? 1 : 0;
    for (std::size_t uFrom = uTo; uFrom < sPath.size(); ++uFrom, ++uTo) {
        sPath[uTo] = sPath[uFrom];
        if (sPath[uFrom] == L'\\' && uFrom + 1 < sPath.size() && sPath[uFrom + 1] == L'\\') ++uFrom;
    }
    sPath.resize(uTo);
}

/// True for a path that the prefix may be put in front of: one that begins with a separator and a second one or a
/// question mark, or with the root of a drive. Not for one that has it already, nor for one with blanks in front.
inline bool fTakesLongPrefix(std::wstring_view sPath) noexcept {
    auto const fIsSeparator = [](wchar_t c) { return c == L'\\' || c == L'/'; };
    if (sPath.size() < 2) return false;
    if (fIsSeparator(sPath[0])) {
        return (sPath[1] == L'?' || fIsSeparator(sPath[1])) && !sPath.starts_with(L"\\\\?\\");
    }
    bool const fIsLetter = (sPath[0] >= L'A' && sPath[0] <= L'Z') || (sPath[0] >= L'a' && sPath[0] <= L'z');
    return fIsLetter && sPath.size() >= 3 && sPath[1] == L':' && fIsSeparator(sPath[2]);
}

/// Puts the prefix in front of an absolute path, in place: "\\?\" before a drive, "\\?\UNC\" in place of the two
/// backslashes of a network path. What is relative, or has the prefix, stays as it is. Forward slashes are not turned
/// round, though the platform takes them for no separators behind the prefix.
inline void MakeLongPath(std::wstring & sPath) {
    if (!fTakesLongPrefix(sPath)) return;
    CollapseDoubleBackslashes(sPath);
    if (sPath.starts_with(L'\\')) {
        sPath.insert(2, L"?\\UNC\\");
    } else {
        sPath.insert(0, L"\\\\?\\");
    }
}

/// The path in the form that the platform takes: itself when it is null or short, otherwise the text of `sHolder`,
/// which becomes its long form. The answer lives as long as both arguments.
[[nodiscard]] inline wchar_t const * pzLongPath(wchar_t const * pzPath, std::wstring & sHolder,
                                                int iLimit = iLongPathLimit) {
    if (pzPath == nullptr || lstrlenW(pzPath) < iLimit) return pzPath;
    sHolder = pzPath;
    MakeLongPath(sHolder);
    return sHolder.c_str();
}

/// The same for the path of a directory that is to be created.
[[nodiscard]] inline wchar_t const * pzLongDirPath(wchar_t const * pzPath, std::wstring & sHolder) {
    return pzLongPath(pzPath, sHolder, iLongDirPathLimit);
}
