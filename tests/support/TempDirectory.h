/// A directory of the test's own, and the plain ways to put files into it and look at them.
#pragma once

#include <string>
#include <string_view>

namespace zk_test {

/// A new empty directory below the system's directory for temporary files, gone with everything in it when the object
/// goes: hidden and read-only items, paths beyond 260 characters, names that only the long form of a path reaches.
/// What cannot be removed then, for instance because a handle on it is still open, is a failure of the test.
class TTempDirectory {
public:
    TTempDirectory();
    ~TTempDirectory();
    TTempDirectory(TTempDirectory const &) = delete;
    TTempDirectory & operator=(TTempDirectory const &) = delete;

    /// Absolute, without a backslash at the end.
    [[nodiscard]] std::wstring const & sGetPath() const noexcept { return sPath; }
    /// The path of something in it.
    [[nodiscard]] std::wstring sGetPath(std::wstring_view sName) const;

    /// Writes a file of these bytes (over one that is there) and gives its path.
    std::wstring sWrite(std::wstring_view sName, std::string_view sBytes) const;
    /// Makes a subdirectory and gives its path.
    std::wstring sMakeDirectory(std::wstring_view sName) const;

private:
    std::wstring sPath;
};

/// Writes a file of these bytes, over one that is there. Like all that follows it throws std::runtime_error with the
/// path when the system refuses, and takes paths of any length.
void WriteFileBytes(std::wstring const & sPath, std::string_view sBytes);
/// The bytes of a file, whoever has it open, as long as sharing allows.
[[nodiscard]] std::string sReadFileBytes(std::wstring const & sPath);
/// True for a file and for a directory.
[[nodiscard]] bool fExists(std::wstring const & sPath);
/// True when nobody has the file open: it can be opened without sharing.
[[nodiscard]] bool fIsUnused(std::wstring const & sPath);
/// The names in a directory, without "." and "..", sorted by units.
[[nodiscard]] std::wstring sListDirectory(std::wstring const & sPath, std::wstring_view sSeparator = L"|");
/// The path of a file of this project's source tree.
[[nodiscard]] std::wstring sGetSourcePath(std::wstring_view sName);
/// The path of something that tests/parts/make has made; that is done on Debian alone.
[[nodiscard]] std::wstring sGetPartPath(std::wstring_view sName);
/// The path in the form that the system takes as it stands: behind `\\?\`.
[[nodiscard]] std::wstring sLongForm(std::wstring const & sPath);

} // namespace zk_test
