// What the tests of the file functions share.
#pragma once

#include "ZkBase/Windows.h"
#include "ZkTools/Exceptions.h"
#include "tests/support/Handle.h"
#include "tests/support/TempDirectory.h"

#include <functional>
#include <string>

namespace zk_test {

/// A file or directory in a directory that only the long form of a path reaches: without it the system takes the point
/// from the directory's name. All paths are longer than 260 characters.
class THardToReach {
public:
    THardToReach() {
        std::wstring const sOuter(200, L'o');
        std::wstring const sMiddle = sOuter + L"\\" + std::wstring(100, L'm');
        tTemp.sMakeDirectory(sOuter);
        tTemp.sMakeDirectory(sMiddle);
        sDirectory = tTemp.sMakeDirectory(sMiddle + L"\\dir.");
    }
    [[nodiscard]] std::wstring const & sGetPath() const noexcept { return sDirectory; }
    [[nodiscard]] std::wstring sGetPath(wchar_t const * pzName) const { return sDirectory + L"\\" + pzName; }

private:
    TTempDirectory tTemp;
    std::wstring sDirectory;
};

/// Holds a file so that nobody can open, delete or replace it.
inline THandle hHold(std::wstring const & sPath) {
    return THandle(CreateFileW(sPath.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
}

/// What is thrown, or an exception that says that nothing was.
inline TXZkTools tThrownBy(std::function<void()> const & Call) {
    try {
        Call();
    } catch (TXZkTools const & tError) {
        return tError;
    }
    return TXZkTools(L"nothing thrown");
}

/// Calls on a thread that has 128 KB of its stack left.
inline void CallWithLittleStack(std::function<void()> const & Call) {
    struct TThread {
        static DWORD WINAPI Run(void * pCall) {
            ULONG_PTR uLow = 0;
            ULONG_PTR uHigh = 0;
            GetCurrentThreadStackLimits(&uLow, &uHigh);
            char cHere = 0;
            std::size_t const uUsed = reinterpret_cast<ULONG_PTR>(&cHere) - uLow - 128 * 1024;
            auto * const pUsed = static_cast<char volatile *>(__builtin_alloca(uUsed));
            pUsed[0] = cHere;
            (*static_cast<std::function<void()> const *>(pCall))();
            return static_cast<DWORD>(pUsed[0]);
        }
    };
    THandle const hThread(
        CreateThread(nullptr, 0, TThread::Run, const_cast<std::function<void()> *>(&Call), 0, nullptr));
    WaitForSingleObject(hThread.hGet(), INFINITE);
}

/// A failure in words: a message of the library and the system's reason behind it.
template <typename... TArgs>
std::string sFailure(DWORD dwReason, unsigned int uId, TArgs... tArgs) {
    return std::string(TXZkTools(uId, tArgs...).what()) + "\r\n" +
           TXZkTools(L"%s", sGetErrorString(dwReason).c_str()).what();
}

} // namespace zk_test
