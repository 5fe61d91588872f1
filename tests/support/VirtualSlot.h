/// The place of a virtual operation in its class's table: pins the order of virtual operations.
#pragma once

#include <cstdint>
#include <cstring>

namespace zk_test {

/// The entries in front of the first operation that is declared behind the destructor.
constexpr int iBehindDestructor = 2;

/// 0 is the first entry; a virtual destructor takes two. How this compiler keeps a pointer to a virtual member: one
/// more than the entry's distance from the start of the table, in bytes.
template <typename TMember>
int iVirtualSlot(TMember pMember) {
    std::intptr_t iWord = 0;
    std::memcpy(&iWord, &pMember, sizeof iWord);
    return static_cast<int>((iWord - 1) / static_cast<std::intptr_t>(sizeof(void *)));
}

} // namespace zk_test
