/// The owner of a system handle in tests.
#pragma once

#include "ZkBase/Windows.h"

#include <utility>

namespace zk_test {

/// Closes its handle. Null and INVALID_HANDLE_VALUE both count as none.
class THandle {
public:
    THandle() noexcept = default;
    explicit THandle(HANDLE h) noexcept : hHandle(h == INVALID_HANDLE_VALUE ? nullptr : h) {}
    THandle(THandle && tOther) noexcept : hHandle(std::exchange(tOther.hHandle, nullptr)) {}
    THandle & operator=(THandle && tOther) noexcept {
        std::swap(hHandle, tOther.hHandle);
        return *this;
    }
    ~THandle() { Close(); }

    explicit operator bool() const noexcept { return hHandle != nullptr; }
    [[nodiscard]] HANDLE hGet() const noexcept { return hHandle; }
    void Close() noexcept {
        if (hHandle != nullptr) CloseHandle(std::exchange(hHandle, nullptr));
    }

private:
    HANDLE hHandle = nullptr;
};

} // namespace zk_test
