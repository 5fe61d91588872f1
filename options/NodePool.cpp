#include "options/NodePool.h"

#include "ZkBase/Windows.h"

#include <new>

namespace {

#ifdef NDEBUG
constexpr bool fFromHeap = false;
#else
constexpr bool fFromHeap = true;
#endif

// A slab is found by the address of a block: it begins at a multiple of its size.
constexpr std::size_t uSlabSize = std::size_t{256} * 1024;

/// Null where the system has no memory left.
void * pMapSlab() noexcept {
    constexpr DWORD dwHow = MEM_RESERVE | MEM_COMMIT;
    for (;;) {
        void * const pAnywhere = VirtualAlloc(nullptr, uSlabSize, dwHow, PAGE_READWRITE);
        if (reinterpret_cast<std::uintptr_t>(pAnywhere) % uSlabSize == 0) return pAnywhere;
        VirtualFree(pAnywhere, 0, MEM_RELEASE);

        // In room for two of them there is a place for one. Another thread may take it first.
        void * const pRoom = VirtualAlloc(nullptr, 2 * uSlabSize, MEM_RESERVE, PAGE_NOACCESS);
        if (pRoom == nullptr) return nullptr;
        VirtualFree(pRoom, 0, MEM_RELEASE);
        std::uintptr_t const uPlace = (reinterpret_cast<std::uintptr_t>(pRoom) + uSlabSize - 1) / uSlabSize * uSlabSize;
        if (void * const pSlab = VirtualAlloc(reinterpret_cast<void *>(uPlace), uSlabSize, dwHow, PAGE_READWRITE))
            return pSlab;
    }
}

} // namespace

struct TNodePool::TFreeBlock {
    TFreeBlock * pNext;
};

/// Stands at the start of its memory.
struct TNodePool::TSlab {
    TSlab * pNext = nullptr;
    TSlab * pPrevious = nullptr;
    TFreeBlock * pFree = nullptr;        // blocks that were given back
    std::uint32_t uFresh = sizeof *this; // where those begin that were never taken
    std::uint32_t uUsed = 0;

    static TSlab & tGetSlab(void * pBlock) noexcept {
        return *reinterpret_cast<TSlab *>(reinterpret_cast<std::uintptr_t>(pBlock) & ~(uSlabSize - 1));
    }
    [[nodiscard]] bool fIsFull(std::size_t uSize) const noexcept {
        return pFree == nullptr && uFresh + uSize > uSlabSize;
    }
    [[nodiscard]] void * pTake(std::size_t uSize) noexcept {
        ++uUsed;
        if (TFreeBlock * const pBlock = pFree) {
            pFree = pBlock->pNext;
            return pBlock;
        }
        void * const pBlock = reinterpret_cast<char *>(this) + uFresh;
        uFresh += static_cast<std::uint32_t>(uSize);
        return pBlock;
    }
    void Give(void * pBlock) noexcept {
        --uUsed;
        pFree = new (pBlock) TFreeBlock{pFree};
        // The next tree begins with the blocks in the order of their addresses again.
        if (uUsed == 0) *this = {.pNext = pNext, .pPrevious = pPrevious};
    }
};

/// Bars all other threads. They wait in a loop: what is barred takes some ten instructions.
class TNodePool::TGuard {
public:
    explicit TGuard(std::atomic_flag & tBusy_) noexcept : tBusy(tBusy_) { Lock(); }
    ~TGuard() { Unlock(); }
    TGuard(TGuard const &) = delete;
    TGuard & operator=(TGuard const &) = delete;

    void Lock() noexcept {
        for (int iTry = 0; tBusy.test_and_set(std::memory_order_acquire); ++iTry) {
            if (iTry < 100) {
                YieldProcessor();
            } else {
                Sleep(iTry < 200 ? 0 : 1); // who holds it was interrupted
            }
        }
    }
    void Unlock() noexcept { tBusy.clear(std::memory_order_release); }

private:
    std::atomic_flag & tBusy;
};

void TNodePool::Open(TSlab & tSlab) noexcept {
    tSlab.pNext = pOpen;
    tSlab.pPrevious = nullptr;
    if (pOpen != nullptr) pOpen->pPrevious = &tSlab;
    pOpen = &tSlab;
}

void TNodePool::Close(TSlab & tSlab) noexcept {
    if (tSlab.pNext != nullptr) tSlab.pNext->pPrevious = tSlab.pPrevious;
    if (tSlab.pPrevious != nullptr) {
        tSlab.pPrevious->pNext = tSlab.pNext;
    } else {
        pOpen = tSlab.pNext;
    }
}

void * TNodePool::pTake() {
    if (fFromHeap) return ::operator new(uBlockSize);
    TGuard tGuard(tBusy);
    if (pOpen == nullptr) {
        tGuard.Unlock();
        void * const pMemory = pMapSlab();
        tGuard.Lock();
        if (pMemory == nullptr) throw std::bad_alloc();
        Open(*new (pMemory) TSlab);
        ++uEmpty;
    }
    TSlab & tSlab = *pOpen;
    if (tSlab.uUsed == 0) --uEmpty;
    void * const pBlock = tSlab.pTake(uBlockSize);
    if (tSlab.fIsFull(uBlockSize)) Close(tSlab);
    return pBlock;
}

void TNodePool::Give(void * pBlock) noexcept {
    if (fFromHeap) return ::operator delete(pBlock);
    TSlab & tSlab = TSlab::tGetSlab(pBlock);
    {
        TGuard const tGuard(tBusy);
        if (tSlab.fIsFull(uBlockSize)) Open(tSlab);
        tSlab.Give(pBlock);
        if (tSlab.uUsed != 0) return;
        if (uEmpty < uToKeep) {
            ++uEmpty;
            return;
        }
        Close(tSlab);
    }
    VirtualFree(&tSlab, 0, MEM_RELEASE);
}

void TNodePool::KeepNothing() noexcept {
    // Nobody else is here at an unload. At the end of a process a thread may have been ended in the middle.
    if (tBusy.test_and_set(std::memory_order_acquire)) return;
    uToKeep = 0;
    for (TSlab * pSlab = pOpen; pSlab != nullptr;) {
        TSlab & tSlab = *pSlab;
        pSlab = tSlab.pNext;
        if (tSlab.uUsed != 0) continue;
        Close(tSlab);
        VirtualFree(&tSlab, 0, MEM_RELEASE);
    }
    uEmpty = 0;
    tBusy.clear(std::memory_order_release);
}
