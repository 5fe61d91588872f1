// The lock that the commands take.
#pragma once

#include "ZkTools/Locks.h"

#include <string>

/// A lock that lets the commands use what the library offers to derived classes.
template <typename TLock>
class TOpenLock : public TLock {
public:
    TOpenLock(EMode eMode_, std::wstring const & sDirectory_, std::wstring const & sObject)
        : TLock(eMode_, sDirectory_.c_str(), sObject.c_str()) {}

    using TLock::fFindWriter;
    using TLock::sGetReaderInfo;
    using TLock::sGetWriterInfo;

    [[nodiscard]] std::wstring const & sGetDirectory() const noexcept { return this->sDirectory; }
    /// The file that the lock stands for.
    [[nodiscard]] std::wstring const & sGetObjectPath() const noexcept { return this->sObjectPath; }
};

/// The strict lock of a directory.
class TObjectLock : public TOpenLock<TLockDirectory> {
public:
    TObjectLock(std::wstring const & sDirectory_, std::wstring const & sObject)
        : TOpenLock(eModeStrict, sDirectory_, sObject) {}
};

/// The lock of a file, shared so that other files of the directory can have writers too.
class TSingleFileLock : public TOpenLock<TLockFile> {
public:
    TSingleFileLock(std::wstring const & sDirectory_, std::wstring const & sFileName_)
        : TOpenLock(eModeShared, sDirectory_, sFileName_) {}
};
