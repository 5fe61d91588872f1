// The lock that the commands take.
#pragma once

#include "ZkTools/Locks.h"

#include <string>

/// A strict lock that lets the commands use what the library offers to derived classes.
class TObjectLock : public TLockDirectory {
public:
    TObjectLock(std::wstring const & sDirectory_, std::wstring const & sObject)
        : TLockDirectory(eModeStrict, sDirectory_.c_str(), sObject.c_str()) {}

    using TLockDirectory::fFindWriter;
    using TLockDirectory::sGetReaderInfo;
    using TLockDirectory::sGetWriterInfo;

    [[nodiscard]] std::wstring const & sGetDirectory() const noexcept { return sDirectory; }
    /// The file that the lock stands for.
    [[nodiscard]] std::wstring const & sGetObjectPath() const noexcept { return sObjectPath; }
};
