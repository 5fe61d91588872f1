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

    [[nodiscard]] T ** begin() noexcept { return pGetRoom() + uFirst; }
    [[nodiscard]] T ** end() noexcept { return begin() + uCount; }
    [[nodiscard]] T * const * begin() const noexcept { return pGetRoom() + uFirst; }
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
        bool const fAtFront = uIndex < uCount / 2;
        if (fAtFront ? uFirst == 0 : uFirst + uCount == uCapacity) MakeRoom(fAtFront);
        T ** const pStart = begin();
        if (fAtFront) {
            std::copy(pStart, pStart + uIndex, pStart - 1);
            --uFirst;
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
        if (uIndex < uCount / 2) {
            std::copy_backward(pStart, pStart + uIndex, pStart + uIndex + 1);
            ++uFirst;
        } else {
            std::copy(pStart + uIndex + 1, pStart + uCount, pStart + uIndex);
        }
        --uCount;
    }

    void Clear() noexcept {
        if (uCapacity != uInside) delete[] tRoom.pOutside;
        uCapacity = uInside;
        uFirst = 0;
        uCount = 0;
    }

    /// Makes room for so many pointers in all.
    void Reserve(std::size_t uWanted) {
        if (uWanted > uCapacity) MoveTo(uWanted, 0);
    }

private:
    static constexpr std::uint32_t uInside = 2;

    [[nodiscard]] T ** pGetRoom() noexcept { return uCapacity == uInside ? tRoom.apInside : tRoom.pOutside; }
    [[nodiscard]] T * const * pGetRoom() const noexcept {
        return uCapacity == uInside ? tRoom.apInside : tRoom.pOutside;
    }

    void Swap(TPointerQueue & tOther) noexcept {
        std::swap(tRoom, tOther.tRoom);
        std::swap(uCapacity, tOther.uCapacity);
        std::swap(uFirst, tOther.uFirst);
        std::swap(uCount, tOther.uCount);
    }

    /// Makes a free place at that end. With a quarter free the pointers move to the middle of the room they have, so
    /// that whatever end comes next finds places; otherwise the room doubles, with all of the new at that end.
    void MakeRoom(bool fAtFront) {
        std::size_t const uFree = uCapacity - uCount;
        if (uFree != 0 && uFree >= uCapacity / 4) {
            std::size_t const uNewFirst = fAtFront ? (uFree + 1) / 2 : uFree / 2;
            T ** const pRoom = pGetRoom();
            if (uNewFirst < uFirst) {
                std::copy(begin(), end(), pRoom + uNewFirst);
            } else {
                std::copy_backward(begin(), end(), pRoom + uNewFirst + uCount);
            }
            uFirst = static_cast<std::uint32_t>(uNewFirst);
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
        if (uCapacity != uInside) delete[] tRoom.pOutside;
        tRoom.pOutside = pNew;
        uCapacity = static_cast<std::uint32_t>(uNewCapacity);
        uFirst = static_cast<std::uint32_t>(uNewFirst);
    }

    union URoom {
        T * apInside[uInside] = {}; // while uCapacity is uInside
        T ** pOutside;              // owned
    };

    URoom tRoom;
    std::uint32_t uCapacity = uInside;
    std::uint32_t uFirst = 0;
    std::uint32_t uCount = 0;
};
