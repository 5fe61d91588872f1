// Where the nodes of option trees lie: blocks of one size, cut from larger pieces of memory. A tree of a million nodes
// takes a third of the time that the heap needs for it, and no heap header a node.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

/// A store of blocks of one size, for all threads. It gives memory back to the system as soon as a whole piece of it is
/// free, but for a few pieces.
///
/// In the debug build each block comes from the heap, where the tools that watch the heap see it.
class TNodePool {
public:
    constexpr explicit TNodePool(std::size_t uBlockSize_) noexcept : uBlockSize(uBlockSize_) {}
    TNodePool(TNodePool const &) = delete;
    TNodePool & operator=(TNodePool const &) = delete;
    // No destructor: static trees of any module may die after this one's statics.

    /// \throws std::bad_alloc
    [[nodiscard]] void * pTake();
    void Give(void * pBlock) noexcept;

    /// Gives the free pieces back, and from now on all that become free. For the unload of the library.
    void KeepNothing() noexcept;

private:
    struct TSlab;
    struct TFreeBlock;
    class TGuard;

    void Open(TSlab & tSlab) noexcept;
    void Close(TSlab & tSlab) noexcept;

    std::size_t const uBlockSize;
    std::atomic_flag tBusy;
    TSlab * pOpen = nullptr;    // the slabs that have a free block
    std::uint32_t uEmpty = 0;   // how many of them have no other
    std::uint32_t uToKeep = 16; // so many empty slabs wait for the next tree
};
