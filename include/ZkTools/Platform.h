/// Small helpers directly on the operating system: a registry read, the installed .NET Framework, administrator rights
/// and elevation, the Explorer theme, and the completion of file names in edit fields. None of them throws.
#pragma once

#include "ZkBase/Windows.h"
#include "ZkTools/Export.h"

#include <tuple>

/// What the completion of an edit field offers.
enum EAutoComplete : int {
    eacFiles = 0,       ///< files and directories
    eacDirectories = 1, ///< directories alone
};

/// Reads a registry value. True when it fitted into `dwSize` bytes at `pData`. Neither its type nor its length is told
/// or checked: `dwType` is ignored, and what lies behind a shorter value stays as it was. A text need not be
/// terminated.
/// \param pzName null or empty for the key's default value
ZKTOOLS_API bool fRegistryGetValue(HKEY hKey, wchar_t const * pzSubKey, wchar_t const * pzName, unsigned long dwType,
                                   unsigned char * pData, unsigned long dwSize) noexcept;

/// The version of the highest installed .NET Framework (2.0 from its service pack 1 on, 3.0, 3.5, or 4), for example
/// 4, 8, 9032, 0; four zeros when there is none. What a version text lacks is 0.
[[nodiscard]] ZKTOOLS_API std::tuple<int, int, int, int> GetHighestAvailableFrameworkVersion() noexcept;

/// The release number that tells the versions from 4.5 on apart, for example 528040 for 4.8; 0 before, or without 4.
[[nodiscard]] ZKTOOLS_API unsigned long dwGetDotNet4Release() noexcept;

/// True when the calling thread acts with the rights of an administrator; false for an administrator who is not
/// elevated.
[[nodiscard]] ZKTOOLS_API bool IsUserAdmin() noexcept;

/// Starts a program with the rights of an administrator. Who has them already starts it directly; all others are asked
/// by the system first. No error is shown, and the end of the program is not waited for.
/// \param hWnd         the window that the system's question belongs to, may be null
/// \param pzParameters may be null
/// \returns 0 when it was not started; `GetLastError` tells why, ERROR_CANCELLED when the user said no
ZKTOOLS_API int RunElevated(HWND hWnd, wchar_t const * pzFile, wchar_t const * pzParameters);

/// Lets a list or tree look as in the Explorer. Does nothing where the system has no themes.
ZKTOOLS_API void SetVistaTheme(HWND hWnd) noexcept;

/// Lets the edit field of a combo box complete file names. True on success; false for one without an edit field. COM
/// has to be initialised on the thread.
ZKTOOLS_API bool SetCbAutoComplete(HWND hComboBox, EAutoComplete eComplete) noexcept;

/// Lets an edit field complete file names. True on success. COM has to be initialised on the thread.
ZKTOOLS_API bool SetEditAutoComplete(HWND hEdit, EAutoComplete eComplete) noexcept;
