// The read-only attribute.
#pragma once

#include "files/LongPath.h"

/// Takes the read-only attribute off a file of these attributes, and no other. Whether that went well is not told; an
/// answer of `GetFileAttributesW` that is none is passed over.
inline void ClearReadOnly(wchar_t const * pzPath, DWORD dwAttributes) {
    if (dwAttributes != INVALID_FILE_ATTRIBUTES && (dwAttributes & FILE_ATTRIBUTE_READONLY) != 0)
        SetFileAttributesLong(pzPath, dwAttributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
}
