/// What stands behind `TIArrayAsVector`: a double-ended queue of pointers that costs little while it is small.
#pragma once

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <utility>

/// A double-ended queue of `T *`. The pointers stand side by side; adding and removing at either end takes constant
/// time on average, in the middle as long as the nearer end is away. Up to two pointers lie in the queue itself, and
/// an empty queue holds no memory of its own.
///
/// Every change makes iterators invalid. What the pointers point at is none of the queue's business.
///
/// \throws std::length_error where a queue would grow beyond 1073741824 pointers, std::bad_alloc; it stays as it was
template <typename T>
class TPointerQueue {
public:
    TPointerQueue() noexcept = default;
    /// Leaves the other one empty.
    TPointerQueue(TPointerQueue && tOther) noexcept : TPointerQueue() { Swap(tOther); }
    TPointerQueue & operator=(TPointerQueue && tOther) noexcept {
        if (this != &tOther) {
            Clear();
            Swap(tOther);
        }
        return *this;
    }
    ~TPointerQueue() { Clear(); }

    [[nodiscard]] T ** begin() noexcept { return fIsInside() ? tRoom.apInside : tRoom.tOutside.pFirst; }
    [[nodiscard]] T ** end() noexcept { return begin() + uCount; }
    [[nodiscard]] T * const * begin() const noexcept { return fIsInside() ? tRoom.apInside : tRoom.tOutside.pFirst; }
    [[nodiscard]] T * const * end() const noexcept { return begin() + uCount; }

    [[nodiscard]] std::size_t uGetCount() const noexcept { return uCount; }
    [[nodiscard]] bool fIsEmpty() const noexcept { return uCount == 0; }
    [[nodiscard]] T *& operator[](std::size_t uIndex) noexcept {
        assert(uIndex < uCount);
        return begin()[uIndex];
    }
    [[nodiscard]] T * operator[](std::size_t uIndex) const noexcept {
        assert(uIndex < uCount);
        return begin()[uIndex];
    }

    /// Inserts before the pointer at `uIndex`, which is at most the count.
    void Insert(std::size_t uIndex, T * p) {
        assert(uIndex <= uCount);
        bool const fAtFront = !fIsInside() && uIndex < uCount / 2;
        if (uGetFree(fAtFront) == 0) MakeRoom(fAtFront);
        T ** const pStart = begin();
        if (fAtFront) {
            std::copy(pStart, pStart + uIndex, pStart - 1);
            --tRoom.tOutside.pFirst;
        } else {
            std::copy_backward(pStart + uIndex, pStart + uCount, pStart + uCount + 1);
        }
        ++uCount;
        begin()[uIndex] = p;
    }

    /// Removes the pointer at `uIndex`, which is below the count.
    void Erase(std::size_t uIndex) noexcept {
        assert(uIndex < uCount);
        if (uCount <= 1) return Clear();
        T ** const pStart = begin();
        if (!fIsInside() && uIndex < uCount / 2) {
            std::copy_backward(pStart, pStart + uIndex, pStart + uIndex + 1);
            ++tRoom.tOutside.pFirst;
        } else {
            std::copy(pStart + uIndex + 1, pStart + uCount, pStart + uIndex);
        }
        --uCount;
    }

    void Clear() noexcept {
        if (!fIsInside()) delete[] tRoom.tOutside.pRoom;
        uCapacity = uInside;
        uCount = 0;
    }

    /// Makes room for so many pointers in all.
    void Reserve(std::size_t uWanted) {
        if (uWanted > uCapacity) MoveTo(uWanted, 0);
    }

private:
    static constexpr std::uint32_t uInside = 2;

    union URoom {
        T * apInside[uInside] = {}; // the pointers themselves, from the first place on
        struct {
            T ** pFirst;
            T ** pRoom; // owned
        } tOutside;
    };

    /// No room of the heap has as few places as there are inside.
    [[nodiscard]] bool fIsInside() const noexcept { return uCapacity == uInside; }

    /// The free places at one end.
    [[nodiscard]] std::size_t uGetFree(bool fAtFront) const noexcept {
        auto const uFront = fIsInside() ? 0 : static_cast<std::size_t>(tRoom.tOutside.pFirst - tRoom.tOutside.pRoom);
        return fAtFront ? uFront : uCapacity - uCount - uFront;
    }

    void Swap(TPointerQueue & tOther) noexcept {
        std::swap(tRoom, tOther.tRoom);
        std::swap(uCapacity, tOther.uCapacity);
        std::swap(uCount, tOther.uCount);
    }

    /// Makes a free place at that end. With a quarter free the pointers move to the middle of the room they have, so
    /// that whatever end comes next finds places; otherwise the room doubles, with all of the new at that end.
    void MakeRoom(bool fAtFront) {
        std::size_t const uFree = uCapacity - uCount;
        if (uFree != 0 && uFree >= uCapacity / 4) {
            T ** const pNewFirst = tRoom.tOutside.pRoom + (fAtFront ? (uFree + 1) / 2 : uFree / 2);
            if (pNewFirst < tRoom.tOutside.pFirst) {
                std::copy(begin(), end(), pNewFirst);
            } else {
                std::copy_backward(begin(), end(), pNewFirst + uCount);
            }
            tRoom.tOutside.pFirst = pNewFirst;
            return;
        }
        std::size_t const uNewCapacity = std::size_t{uCapacity} * 2;
        MoveTo(uNewCapacity, fAtFront ? uNewCapacity - uCount : 0);
    }

    /// Moves the pointers into a new room, which is larger.
    void MoveTo(std::size_t uNewCapacity, std::size_t uNewFirst) {
        if (uNewCapacity > std::numeric_limits<std::int32_t>::max()) throw std::length_error("the array is full");
        T ** const pNew = new T *[uNewCapacity];
        std::copy(begin(), end(), pNew + uNewFirst);
        if (!fIsInside()) delete[] tRoom.tOutside.pRoom;
        tRoom.tOutside = {pNew + uNewFirst, pNew};
        uCapacity = static_cast<std::uint32_t>(uNewCapacity);
    }

    URoom tRoom;
    std::uint32_t uCapacity = uInside;
    std::uint32_t uCount = 0;
};
