/// Failing system calls: replaces a function in the import table of one of our DLLs, in the test's own process.
///
///     zk_test::TSystemCall<"DeleteFileW", decltype(DeleteFileW)> tDelete(
///         [&](wchar_t const * pzPath) -> BOOL {
///             if (tDelete.iGetCalls() == 2) return zk_test::tFailWith(ERROR_ACCESS_DENIED, FALSE);
///             return tDelete.Original(pzPath);
///         });
///
/// While the object lives, every call that the DLL makes goes to the replacement; calls of the test itself, and of
/// other DLLs, go to the system as ever. One object for one function at a time, on one thread.
#pragma once

#include "ZkBase/Windows.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <stdexcept>
#include <utility>

namespace zk_test {

/// A text as template argument.
template <std::size_t uSize>
struct TName {
    char acText[uSize];
    consteval TName(char const (&acText_)[uSize]) { std::copy_n(acText_, uSize, acText); }
};

/// One replaced entry of an import table; puts the entry back when it goes.
class TImportPatch {
public:
    /// \throws std::runtime_error when the module is not loaded, or does not import the function by that name
    TImportPatch(HMODULE hModule, char const * pzFunction, void * pReplacement);
    ~TImportPatch();
    TImportPatch(TImportPatch const &) = delete;
    TImportPatch & operator=(TImportPatch const &) = delete;

    [[nodiscard]] void * pGetOriginal() const noexcept { return pOriginal; }

private:
    void ** ppEntry;
    void * pOriginal;
};

/// Sets `GetLastError` and gives back `tResult`: the last line of a failing replacement.
template <typename TResult>
TResult tFailWith(DWORD dwError, TResult tResult) noexcept {
    SetLastError(dwError);
    return tResult;
}

template <TName tName, typename TFunction>
class TSystemCall;

/// See the head of this file.
template <TName tName, typename TResult, typename... TArgs>
class TSystemCall<tName, TResult WINAPI(TArgs...)> {
public:
    using TReplacement = std::function<TResult(TArgs...)>;

    /// \param tReplacement_ called instead of the system
    /// \param pzModule      the DLL whose calls are replaced
    explicit TSystemCall(TReplacement tReplacement_, wchar_t const * pzModule = L"ZkTools.dll")
        : TSystemCall(std::move(tReplacement_), GetModuleHandleW(pzModule)) {}

    /// The same for a module that the test has loaded itself.
    TSystemCall(TReplacement tReplacement_, HMODULE hModule)
        : tReplacement(std::move(tReplacement_)), tPatch(hModule, tName.acText, reinterpret_cast<void *>(&Thunk)) {
        pCurrent = this;
    }

    ~TSystemCall() { pCurrent = nullptr; }
    TSystemCall(TSystemCall const &) = delete;
    TSystemCall & operator=(TSystemCall const &) = delete;

    /// The system's own function.
    TResult Original(TArgs... tArgs) const {
        return reinterpret_cast<TResult(WINAPI *)(TArgs...)>(tPatch.pGetOriginal())(tArgs...);
    }

    /// How often the DLL has called so far, the running call included.
    [[nodiscard]] int iGetCalls() const noexcept { return iCalls; }

private:
    /// Checked before the table is touched: two at once could not be told apart.
    struct TOnlyOne {
        TOnlyOne() {
            if (pCurrent != nullptr) throw std::logic_error("this system call is replaced already");
        }
    };

    static TResult WINAPI Thunk(TArgs... tArgs) {
        ++pCurrent->iCalls;
        return pCurrent->tReplacement(tArgs...);
    }

    static inline TSystemCall * pCurrent = nullptr;

    [[no_unique_address]] TOnlyOne tOnlyOne;
    int iCalls = 0;
    TReplacement tReplacement;
    TImportPatch tPatch;
};

} // namespace zk_test
