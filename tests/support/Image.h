/// What a loaded module takes from others and gives to them, by the tables of its image. The names in the tables are
/// those of the compiler at hand, so each is turned back into its declaration; only GCC's and Clang's are understood.
#pragma once

#ifdef __GNUC__

#include "ZkBase/Windows.h"

#include <cstddef>
#include <set>
#include <string>

namespace zk_test {

/// In declarations "wstring" and "wstring_view" stand for what the compiler writes out.
class TImage {
public:
    explicit TImage(wchar_t const * pzModule) : pBase(reinterpret_cast<char const *>(GetModuleHandleW(pzModule))) {}

    /// The declarations of what it takes from a module.
    [[nodiscard]] std::set<std::string> sGetImports(char const * pzFrom) const;
    /// The declarations of what it gives.
    [[nodiscard]] std::set<std::string> sGetExports() const;

private:
    template <typename T>
    T const * pAt(DWORD dwOffset) const {
        return reinterpret_cast<T const *>(pBase + dwOffset);
    }
    IMAGE_DATA_DIRECTORY const & tGetDirectory(std::size_t uIndex) const;

    char const * pBase;
};

} // namespace zk_test

#endif
