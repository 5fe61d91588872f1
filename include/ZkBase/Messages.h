/// Message modules: how a library finds its texts, loads them and formats them.
#pragma once

#include "ZkBase/Export.h"
#include "ZkBase/Windows.h"

#include <string>

/// Finds and loads the message module of `hModule`, as a data file.
///
/// It stands beside `hModule` and bears its stem followed by `Messages`: for `ZkTools.dll` first
/// `ZkToolsMessages.XX.dll`, with the two-letter code of the user's UI language (three letters for a language that has
/// no shorter one), then `ZkToolsMessages.dll`. A file of the first name that is no module is passed over.
/// \returns null when there is neither; otherwise a module that the caller frees with `FreeLibrary`.
[[nodiscard]] ZKBASE_API HINSTANCE hGetResMod(HINSTANCE hModule);

namespace string_functions {

/// String `uId` of the module's string table, whatever its length; empty when there is none. Ids end at 65535.
[[nodiscard]] ZKBASE_API std::wstring sLoadString(HINSTANCE hModule, unsigned int uId);

/// Formats like the platform's wide `vswprintf` (`%s` is a wide string), into a string of whatever length it needs.
/// A format that the run-time refuses comes back as it stands.
[[nodiscard]] ZKBASE_API std::wstring sFormat_va(wchar_t const * pzFormat, char * pArgs);

} // namespace string_functions
