#include "tests/support/GuardPages.h"

#include "ZkBase/Windows.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

constexpr std::size_t uPage = 4096;
constexpr std::size_t uAlignment = 16;
constexpr unsigned char uFill = 0xFD;
constexpr unsigned int uAllGuarded = 50'000; // blocks of one test
constexpr unsigned int uSampled = 64;
#ifdef _WIN64
constexpr std::size_t uArena = std::size_t{64} << 30; // addresses only: pages are taken one by one
#else
constexpr std::size_t uArena = std::size_t{512} << 20;
#endif

/// In front of the block's fill bytes, at the start of its first page.
struct THead {
    std::size_t uSize;
    std::size_t uCheck; // the complement of the size
};
static_assert(sizeof(THead) <= uAlignment);

char * pArena = nullptr;
std::atomic<std::size_t> uTaken = 0;
std::atomic<unsigned int> uBlocksOfTest = 0;

constexpr std::size_t uRoundUp(std::size_t uValue, std::size_t uTo) {
    return (uValue + uTo - 1) / uTo * uTo;
}

[[noreturn]] void Stop(char const * pzWhy, void const * pBlock) {
    std::fprintf(stderr, "guard pages: %s, block %p\n", pzWhy, pBlock);
    std::fflush(stderr);
    TerminateProcess(GetCurrentProcess(), 3);
    std::abort();
}

bool fIsFilled(char const * pFrom, char const * pTo) {
    for (; pFrom != pTo; ++pFrom)
        if (static_cast<unsigned char>(*pFrom) != uFill) return false;
    return true;
}

/// The first page holds the head and ends at most one page behind it, so the block's place in its page tells which one
/// it is.
char * pGetFirstPage(char * pBlock) {
    auto const uInPage = static_cast<std::size_t>(pBlock - pArena) % uPage;
    return uInPage < uAlignment ? pBlock - uInPage - uPage : pBlock - uInPage;
}

void * pAllocatePlain(std::size_t uSize) {
    if (void * const pBlock = std::malloc(uSize == 0 ? 1 : uSize)) return pBlock;
    throw std::bad_alloc();
}

void * pAllocate(std::size_t uSize) {
    unsigned int const uNumber = uBlocksOfTest++;
    if (uNumber >= uAllGuarded && uNumber % uSampled != 0) return pAllocatePlain(uSize);
    std::size_t const uBlock = uRoundUp(uSize, uAlignment);
    std::size_t const uPages = uRoundUp(uBlock + uAlignment, uPage);
    if (uBlock < uSize || uPages > uArena) throw std::bad_alloc();
    std::size_t const uStart = uTaken.fetch_add(uPages + uPage); // the last page stays out of reach
    if (uStart + uPages > uArena) return pAllocatePlain(uSize);
    char * const pPages = pArena + uStart;
    if (VirtualAlloc(pPages, uPages, MEM_COMMIT, PAGE_READWRITE) == nullptr) throw std::bad_alloc();
    char * const pBlock = pPages + uPages - uBlock;
    std::memset(pPages + sizeof(THead), uFill, static_cast<std::size_t>(pBlock - pPages) - sizeof(THead));
    std::memset(pBlock + uSize, uFill, uBlock - uSize);
    new (pPages) THead{uSize, ~uSize};
    return pBlock;
}

void Release(void * pBlock) {
    if (!zk_test::fIsGuarded(pBlock)) {
        std::free(pBlock); // from before, or from malloc
        return;
    }
    auto * const pBytes = static_cast<char *>(pBlock);
    char * const pPages = pGetFirstPage(pBytes);
    auto const * const pHead = reinterpret_cast<THead const *>(pPages);
    std::size_t const uSize = pHead->uSize; // stops the program when the block was deleted before
    if (pHead->uCheck != ~uSize) Stop("this is no start of a block", pBlock);
    std::size_t const uBlock = uRoundUp(uSize, uAlignment);
    if (!fIsFilled(pPages + sizeof(THead), pBytes)) Stop("written in front of the block", pBlock);
    if (!fIsFilled(pBytes + uSize, pBytes + uBlock)) Stop("written behind the block", pBlock);
    VirtualFree(pPages, static_cast<std::size_t>(pBytes + uBlock - pPages), MEM_DECOMMIT);
}

#ifdef __MINGW32__

/// Lets a function begin with a jump to another one.
bool fRedirect(HMODULE hModule, char const * pzFunction, void const * pTarget) {
    FARPROC const pFunction = GetProcAddress(hModule, pzFunction);
    if (pFunction == nullptr) return false;
    auto * const pCode = reinterpret_cast<unsigned char *>(pFunction);
    constexpr std::size_t uLongest = 16;
    DWORD dwProtection = 0;
    if (!VirtualProtect(pCode, uLongest, PAGE_EXECUTE_READWRITE, &dwProtection)) return false;
#ifdef _WIN64
    unsigned char acJump[] = {0x48, 0xB8, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xE0}; // mov rax, target; jmp rax
    std::memcpy(acJump + 2, &pTarget, sizeof pTarget);
#else
    unsigned char acJump[] = {0xB8, 0, 0, 0, 0, 0xFF, 0xE0}; // mov eax, target; jmp eax
    std::memcpy(acJump + 1, &pTarget, sizeof pTarget);
#endif
    std::memcpy(pCode, acJump, sizeof acJump);
    VirtualProtect(pCode, uLongest, dwProtection, &dwProtection);
    FlushInstructionCache(GetCurrentProcess(), pCode, uLongest);
    return true;
}

#endif

} // namespace

namespace zk_test {

bool fInstallGuardPages() {
#ifdef __MINGW32__
#ifdef _WIN64
    constexpr char const * pzNew = "_Znwy";
#else
    constexpr char const * pzNew = "_Znwj";
#endif
    HMODULE const hRuntime = GetModuleHandleW(L"libstdc++-6.dll");
    if (hRuntime == nullptr) return false;
    pArena = static_cast<char *>(VirtualAlloc(nullptr, uArena, MEM_RESERVE, PAGE_NOACCESS));
    return pArena != nullptr && fRedirect(hRuntime, "_ZdlPv", reinterpret_cast<void const *>(&Release)) &&
           fRedirect(hRuntime, pzNew, reinterpret_cast<void const *>(&pAllocate));
#else
    static_cast<void>(&pAllocate);
    static_cast<void>(&Release);
    return false;
#endif
}

void BeginGuardedTest() noexcept {
    uBlocksOfTest = 0;
}

bool fIsGuarded(void const * pBlock) noexcept {
    auto const uBlock = reinterpret_cast<std::uintptr_t>(pBlock);
    auto const uStart = reinterpret_cast<std::uintptr_t>(pArena);
    return pArena != nullptr && uBlock >= uStart && uBlock - uStart < uArena;
}

} // namespace zk_test
