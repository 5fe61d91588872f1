#include "base/PathRoot.h"

namespace {

constexpr std::wstring_view sUncPrefix = LR"(\\)";
constexpr std::wstring_view sLongUncPrefix = LR"(\\?\UNC\)";

bool fIsLongUnc(std::wstring_view sPath) noexcept {
    if (sPath.size() < sLongUncPrefix.size()) return false;
    for (std::size_t i = 0; i < sLongUncPrefix.size(); ++i) {
        wchar_t const c =
            sPath[i] >= L'a' && sPath[i] <= L'z' ? static_cast<wchar_t>(sPath[i] - L'a' + L'A') : sPath[i];
        if (c != sLongUncPrefix[i]) return false;
    }
    return true;
}

/// The end of the component that begins at `uBegin`: its backslash, or the end of the path.
std::size_t uFindEnd(std::wstring_view sPath, std::size_t uBegin) noexcept {
    std::size_t const uEnd = sPath.find(L'\\', uBegin);
    return uEnd == std::wstring_view::npos ? sPath.size() : uEnd;
}

/// Server and share stand behind the prefix.
TPathRoot tFindShare(std::wstring_view sPath, std::size_t uPrefix) noexcept {
    std::size_t const uServerEnd = uFindEnd(sPath, uPrefix);
    if (uServerEnd == uPrefix || uServerEnd == sPath.size()) return {uPrefix, uServerEnd, false};
    std::size_t const uShareEnd = uFindEnd(sPath, uServerEnd + 1);
    if (uShareEnd == uServerEnd + 1) return {uPrefix, uServerEnd, false};
    return {uPrefix, uShareEnd, true};
}

/// A drive or another device stands behind "\\?\"; its backslash belongs to it.
TPathRoot tFindDevice(std::wstring_view sPath, std::size_t uPrefix) noexcept {
    std::size_t const uEnd = uFindEnd(sPath, uPrefix);
    if (uEnd == uPrefix || uEnd == sPath.size()) return {uPrefix, uEnd, false};
    return {uPrefix, uEnd + 1, true};
}

} // namespace

TPathRoot tFindPathRoot(std::wstring_view sPath) noexcept {
    if (fIsLongUnc(sPath)) return tFindShare(sPath, sLongUncPrefix.size());
    if (sPath.starts_with(sLongPrefix)) return tFindDevice(sPath, sLongPrefix.size());
    if (sPath.starts_with(sUncPrefix)) return tFindShare(sPath, sUncPrefix.size());
    if (sPath.starts_with(L'\\')) return {0, 1, true};
    if (sPath.size() < 2 || sPath[1] != L':') return {0, 0, false};
    bool const fBackslash = sPath.size() > 2 && sPath[2] == L'\\';
    return {0, fBackslash ? 3U : 2U, fBackslash};
}
