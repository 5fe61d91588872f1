// One call of an automation object, and the report when it fails.
#pragma once

#include "ZkBase/Windows.h"

#include <oaidl.h>

#include <string>

/// Finds the member and calls it.
/// \param wFlags    the DISPATCH_ flags of the call. A property that is put gets its named argument, in `*pParams`
/// \param pResult   may be null
/// \param pDispatch the object
/// \param psName    null for the default member
/// \param pParams   null for no arguments
/// \throws std::invalid_argument when the object is null
/// \throws std::runtime_error when it has no such member, and what `ThrowError` throws
void AutoWrap(unsigned short wFlags, tagVARIANT * pResult, IDispatch * pDispatch, std::wstring const * psName,
              tagDISPPARAMS * pParams);

/// Throws a std::runtime_error, in UTF-8, that tells all about a call that `Invoke` refused.
[[noreturn]] void ThrowError(HRESULT hr, IDispatch * pDispatch, std::wstring const * psName, unsigned short wFlags,
                             tagDISPPARAMS * pParams, tagEXCEPINFO * pExcepInfo, unsigned int * puArgErr);
