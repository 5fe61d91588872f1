// What the tests of the locks share: objects as another user on another computer, and the texts of refusals.
#pragma once

#include "ZkTools/Locks.h"
#include "tests/support/Handle.h"
#include "tests/support/SystemCall.h"
#include "tests/support/TempDirectory.h"

#include <algorithm>
#include <string>

namespace zk_test {

/// While it lives, the library believes to run on that computer for that user.
class TIdentity {
public:
    TIdentity(std::wstring sComputer, std::wstring sUser)
        : tComputer([sComputer](wchar_t * pzBuffer, DWORD * pdwSize) { return fGive(sComputer, pzBuffer, pdwSize); }),
          tUser([sUser](wchar_t * pzBuffer, DWORD * pdwSize) { return fGive(sUser, pzBuffer, pdwSize); }) {}

private:
    static BOOL fGive(std::wstring const & sName, wchar_t * pzBuffer, DWORD * pdwSize) {
        if (*pdwSize <= sName.size()) return tFailWith(ERROR_BUFFER_OVERFLOW, FALSE);
        std::ranges::copy(sName, pzBuffer);
        pzBuffer[sName.size()] = L'\0';
        *pdwSize = static_cast<DWORD>(sName.size());
        return TRUE;
    }

    TSystemCall<"GetComputerNameW", decltype(GetComputerNameW)> tComputer;
    TSystemCall<"GetUserNameW", decltype(GetUserNameW)> tUser;
};

/// A lock whose insides can be looked at.
class TOpenLock : public TLockDirectory {
public:
    using TLockDirectory::TLockDirectory;

    /// The lock of that user on that computer.
    TOpenLock(wchar_t const * pzComputer, wchar_t const * pzUser, EMode eMode_, std::wstring const & sDirectory_,
              wchar_t const * pzObjectName = L"main.dat")
        : TLockDirectory(eMode_) {
        TIdentity const tIdentity(pzComputer, pzUser);
        SetDir(sDirectory_.c_str(), pzObjectName);
    }

    using TLockDirectory::eMode;
    using TLockDirectory::fCanLock;
    using TLockDirectory::fCanOpen;
    using TLockDirectory::fFindWriter;
    using TLockDirectory::fGetNextFreeReader;
    using TLockDirectory::FillErrorStringIds;
    using TLockDirectory::ForceUnlock;
    using TLockDirectory::hCreateWriter;
    using TLockDirectory::hCreateWriterInfo;
    using TLockDirectory::hReader;
    using TLockDirectory::hReadOnly;
    using TLockDirectory::hWriter;
    using TLockDirectory::hWriterInfo;
    using TLockDirectory::iLockCount;
    using TLockDirectory::pzGetNameOfObjectToLock;
    using TLockDirectory::sComputer;
    using TLockDirectory::sDirectory;
    using TLockDirectory::sGetReaderInfo;
    using TLockDirectory::sGetWriterInfo;
    using TLockDirectory::sObjectPath;
    using TLockDirectory::sReaderBaseName;
    using TLockDirectory::sReaderPath;
    using TLockDirectory::sReaderPattern;
    using TLockDirectory::sUser;
    using TLockDirectory::sWriterInfoPath;
    using TLockDirectory::sWriterInfoPattern;
    using TLockDirectory::sWriterPath;
    using TLockDirectory::uiErrorIds;
    using TLockDirectory::uiGetErrorStringId;
};

/// A message of the library, as narrow text.
template <typename... TArgs>
std::string sMessage(unsigned int uId, TArgs... tArgs) {
    return TXZkTools(uId, tArgs...).what();
}

/// The system's text for an error, as narrow text.
inline std::string sSystemText(DWORD dwError) {
    return TXZkTools(sGetErrorString(dwError).c_str()).what();
}

/// What the call throws; empty when it throws nothing.
template <typename TCall>
std::string sThrown(TCall tCall) {
    try {
        tCall();
    } catch (std::runtime_error const & tError) {
        return tError.what();
    }
    return {};
}

/// Holds a lock file as a program on another machine does.
inline THandle hHoldLockFile(std::wstring const & sPath) {
    return THandle(CreateFileW(sPath.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                               FILE_FLAG_DELETE_ON_CLOSE | FILE_ATTRIBUTE_NORMAL | FILE_ATTRIBUTE_HIDDEN, nullptr));
}

} // namespace zk_test
