// Where the root of a path ends: the part that no removal of components goes into.
#pragma once

#include <string_view>

/// What the long form of a path begins with.
inline constexpr std::wstring_view sLongPrefix = LR"(\\?\)";

/// The start of a path.
struct TPathRoot {
    std::size_t
        uPrefix; ///< length of "\\", "\\?\" or "\\?\UNC\", whichever is the longest that stands there; 0 for none
    std::size_t uLength; ///< length of the root, with its prefix and, where one belongs to it, its backslash
    bool fWhole;         ///< the root names a directory: "C:\" does, and "C:", "\\server" and "\\" don't
};

/// The root of a path: "X:\" or "X:", "\", "\\server\share" or as much of that as there is, and the same behind "\\?\".
/// A relative path has one of length 0.
[[nodiscard]] TPathRoot tFindPathRoot(std::wstring_view sPath) noexcept;
