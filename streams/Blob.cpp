#include "ZkTools/Stream.h"

#include "ZkTools/Exceptions.h"
#include "ZkTools/MessageIds.h"
#include "streams/CopyBytes.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <stdexcept>

#ifdef _WIN64
static_assert(sizeof(TBlob) == 24 && offsetof(TBlob, dwPos) == 8 && offsetof(TBlob, fDirty) == 21);
#else
static_assert(sizeof(TBlob) == 20 && offsetof(TBlob, dwPos) == 4 && offsetof(TBlob, fDirty) == 17);
#endif

namespace {

/// What is really taken from the system for a capacity: that and the guard byte, rounded up to half a power of two. The
/// capacity grows byte by byte where a block is written without reserving, and the memory moves only when the rounded
/// size changes: in all, writing stays linear.
std::size_t uGetAllocation(unsigned long dwCapacity) noexcept {
    constexpr std::uint64_t uSmallest = 64;
    std::uint64_t const uNeeded = std::uint64_t{dwCapacity} + 1;
    if (uNeeded <= uSmallest) return uSmallest;
    std::uint64_t const uStep = std::bit_floor(uNeeded - 1) / 2;
    // Where addresses have 32 bits, what is beyond them is more than the system can give.
    return static_cast<std::size_t>(
        std::min<std::uint64_t>((uNeeded + uStep - 1) / uStep * uStep, std::numeric_limits<std::size_t>::max()));
}

unsigned long dwChecked(std::uint64_t uSize) {
    if (uSize > std::numeric_limits<unsigned long>::max()) throw std::length_error("a memory block ends below 4 GiB");
    return static_cast<unsigned long>(uSize);
}

} // namespace

TBlob::TBlob(unsigned long dwSize) {
    if (dwSize != 0) Reserve(dwSize, 0);
}

TBlob::TBlob(void const * pMemory, unsigned long dwSize) noexcept {
    Assign(pMemory, dwSize);
}

TBlob::TBlob(TBlob const & tOther) : TBlob() {
    *this = tOther;
}

TBlob & TBlob::operator=(TBlob const & tOther) {
    if (this == &tOther) return *this;
    Release();
    if (tOther.pData != nullptr) {
        Reserve(tOther.dwCapacity, tOther.dwUsed);
        std::memcpy(pData, tOther.pData, std::max(tOther.dwCapacity, tOther.dwUsed));
    }
    dwPos = tOther.dwPos;
    dwUsed = tOther.dwUsed;
    fDirty = tOther.fDirty;
    return *this;
}

TBlob::~TBlob() {
    Release();
}

void TBlob::Init() noexcept {
    pData = nullptr;
    dwPos = 0;
    dwUsed = 0;
    dwCapacity = 0;
    fOwner = true;
    fDirty = false;
}

void TBlob::Release() noexcept {
    if (fOwner) std::free(pData);
    Init();
}

void TBlob::Reset() noexcept {
    dwPos = 0;
    dwUsed = 0;
    fDirty = false;
}

void TBlob::Alloc(unsigned long dwSize) {
    if (dwSize == dwCapacity) return;
    Release();
    Reserve(dwSize, 0);
}

void TBlob::ReAlloc(unsigned long dwSize, unsigned long dwGranularity) {
    if (dwSize == dwCapacity) return;
    // Deliberate: an exact multiple still grows by a whole step; callers have relied on the slack.
    if (dwGranularity != 0) dwSize = dwChecked(std::uint64_t{dwSize} + (dwGranularity - dwSize % dwGranularity));
    Resize(dwSize);
}

void TBlob::Assign(void const * pMemory, unsigned long dwSize) noexcept {
    Release();
    // A view is written to only by callers who hand in memory of their own that may be written to.
    pData = static_cast<unsigned char *>(const_cast<void *>(pMemory));
    dwCapacity = dwSize;
    dwUsed = dwSize;
    fOwner = false;
}

void TBlob::Assign(std::wstring const & sText) noexcept {
    // Deliberate: a count of units is taken as one of bytes, so that the view covers the first half of the text. What
    // was stored through such views is read back through them.
    Assign(sText.c_str(), static_cast<unsigned long>(sText.size() + 1));
}

void TBlob::Get(void * pTarget, unsigned long dwCount) {
    if (pTarget == nullptr) throw TXZkTools(IDS_NULL_READ_BUFFER);
    unsigned long const dwFrom = dwPos;
    Skip(dwCount);
    CopyBytes(pTarget, pData + dwFrom, dwCount);
}

void TBlob::Put(void const * pSource, unsigned long dwCount) {
    std::uint64_t const uEnd = std::uint64_t{dwPos} + dwCount;
    // Deliberate: no step of growth here; the capacity is a figure that callers read.
    if (uEnd > dwCapacity) Resize(dwChecked(uEnd));
    CopyBytes(pData + dwPos, pSource, dwCount);
    dwPos += dwCount;
    fDirty = true;
    dwUsed = std::max(dwUsed, dwPos);
}

void TBlob::Skip(unsigned long dwCount) {
    if (std::uint64_t{dwPos} + dwCount > dwUsed) throw TXZkTools(IDS_READ_PAST_END);
    dwPos += dwCount;
}

/// Fresh owned memory for a block that has none. A block that was made smaller than its data has memory for all of it:
/// its size stays and can be read.
void TBlob::Reserve(unsigned long dwSize, unsigned long dwData) {
    pData = static_cast<unsigned char *>(std::malloc(uGetAllocation(std::max(dwSize, dwData))));
    if (pData == nullptr) throw std::bad_alloc();
    dwCapacity = dwSize;
    pData[dwSize] = 0;
}

/// Changes the capacity of owned memory in place, and makes an owned copy of a view.
void TBlob::Resize(unsigned long dwSize) {
    if (!fOwner) {
        TBlob tCopy;
        tCopy.Reserve(dwSize, dwUsed);
        if (pData != nullptr) std::memcpy(tCopy.pData, pData, std::min(std::max(dwSize, dwUsed), dwCapacity));
        tCopy.pData[dwSize] = 0;
        pData = tCopy.pData;
        dwCapacity = dwSize;
        fOwner = true;
        tCopy.pData = nullptr;
        return;
    }
    std::size_t const uWanted = uGetAllocation(std::max(dwSize, dwUsed));
    if (pData == nullptr || uWanted != uGetAllocation(std::max(dwCapacity, dwUsed))) {
        void * const pNew = std::realloc(pData, uWanted);
        if (pNew == nullptr) throw std::bad_alloc();
        pData = static_cast<unsigned char *>(pNew);
    }
    dwCapacity = dwSize;
    pData[dwSize] = 0;
}
