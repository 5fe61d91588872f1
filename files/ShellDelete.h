// Deletion by the shell, which can be undone there.
#pragma once

#include <string>

/// Deletes a file, or a directory with all that is in it.
/// \throws TXZkTools with message 4220 (path) and the text of the shell's error
void DeleteByShell(std::wstring const & sPath);

/// Deletes what is in a directory.
/// \param fRecursive false: files only
/// \throws TXZkTools with message 4220 (directory) and the text of the shell's error
void ClearByShell(std::wstring const & sDirectory, bool fRecursive);
