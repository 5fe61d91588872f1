/// The arrays of the tool, by value and by pointer, with a lower bound of the caller's choice; the array of strings;
/// and the set of 256 bits.
///
/// An index counts from the array's lower bound. 2147483647 stands for "not found" wherever an index is given back. The
/// operations that give back `bool` give back true in every case, whether they found anything to do or not.
///
/// An empty array costs no heap memory. An array belongs to one thread at a time.
#pragma once

#include "ZkTools/Export.h"
#include "ZkTools/PointerQueue.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <deque>
#include <functional>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>

class TOptionElement;
class TStreamBase;

/// Whether a container owns what its pointers point at.
class ZKTOOLS_API TZkShouldDelete {
public:
    enum TDelete : int {
        NoDelete = 0,  ///< the elements are others'
        DefDelete = 1, ///< what the container says itself; as a state it is `Delete`
        Delete = 2,    ///< the container deletes its elements
    };

    TZkShouldDelete(TDelete eDelete = Delete) noexcept : eState(eDelete != NoDelete ? Delete : NoDelete) {}

    [[nodiscard]] bool OwnsElements() const noexcept { return eState == Delete; }
    void OwnsElements(bool fOwns) noexcept { eState = fOwns ? Delete : NoDelete; }

    /// Whether an operation that is called with `eDelete` has to delete.
    [[nodiscard]] bool DelObj(TDelete eDelete) const noexcept {
        return eDelete == Delete || (eDelete == DefDelete && OwnsElements());
    }

private:
    TDelete eState;
};

/// What both arrays have: the lower bound, the index that the first element bears.
template <typename T>
class _TArrayBase { // NOLINT(bugprone-reserved-identifier): the name is older than the rule
public:
    [[nodiscard]] int LowerBound() const noexcept { return iLowerBound; }

    /// An index as an offset from 0. One below the lower bound becomes an enormous offset.
    [[nodiscard]] unsigned int ZeroBase(int iIndex) const noexcept {
        return static_cast<unsigned int>(iIndex) - static_cast<unsigned int>(iLowerBound);
    }
    /// An offset as an index. The offset with all bits set becomes 2147483647: "not found" stays that.
    [[nodiscard]] int BoundBase(unsigned int uOffset) const noexcept {
        if (uOffset == std::numeric_limits<unsigned int>::max()) return iNotFound;
        return static_cast<int>(uOffset + static_cast<unsigned int>(iLowerBound));
    }

protected:
    static constexpr int iNotFound = std::numeric_limits<int>::max();

    explicit _TArrayBase(int iLower) noexcept : iLowerBound(iLower) {}
    _TArrayBase(_TArrayBase const &) noexcept = default;
    _TArrayBase & operator=(_TArrayBase const &) noexcept = default;
    ~_TArrayBase() = default;

    /// A count as the arrays tell it.
    [[nodiscard]] static int iGetCapped(std::size_t uCount) noexcept {
        return static_cast<int>(std::min<std::size_t>(uCount, std::numeric_limits<int>::max()));
    }
    /// The text is that of the queue of the standard library which the callers know.
    [[noreturn]] static void ThrowBadIndex() { throw std::out_of_range("invalid deque<T> subscript"); }

private:
    int iLowerBound;
};

/// An array of values.
///
/// Elements keep their addresses while others are appended. `T` can be copied and compared with `==`.
template <typename T>
class TArrayAsVector : public _TArrayBase<T> {
    using TBase = _TArrayBase<T>;
    using TQueue = std::deque<T>;

public:
    using iterator = typename TQueue::iterator;
    using const_iterator = typename TQueue::const_iterator;

    /// An empty array.
    /// \param iLower the index of the first element
    ///
    /// Deliberate: the upper bound and the growth step are not looked at. Older callers size their arrays.
    explicit TArrayAsVector(int /* iUpper */, int iLower = 0, int /* iDelta */ = 0) : TBase(iLower) {}
    /// Copies the elements and the lower bound.
    TArrayAsVector(TArrayAsVector const & tOther) : TBase(tOther) {
        if (tOther.pQueue) pQueue = std::make_unique<TQueue>(*tOther.pQueue);
    }
    /// Assigns over the elements that there are, adds or removes at the end what differs in number, then takes over the
    /// lower bound.
    TArrayAsVector & operator=(TArrayAsVector const & tOther) {
        if (this != &tOther) {
            if (!tOther.pQueue) {
                Flush();
            } else {
                tGetQueue() = *tOther.pQueue;
            }
        }
        TBase::operator=(tOther);
        return *this;
    }
    virtual ~TArrayAsVector() = default;

    /// No test of the range: an index outside the array is outside the contract.
    [[nodiscard]] T & operator[](int iIndex) {
        assert(TBase::ZeroBase(iIndex) < uGetCount());
        return (*pQueue)[TBase::ZeroBase(iIndex)];
    }
    [[nodiscard]] T const & operator[](int iIndex) const {
        assert(TBase::ZeroBase(iIndex) < uGetCount());
        return (*pQueue)[TBase::ZeroBase(iIndex)];
    }
    [[nodiscard]] iterator begin() noexcept { return pQueue ? pQueue->begin() : iterator(); }
    [[nodiscard]] iterator end() noexcept { return pQueue ? pQueue->end() : iterator(); }
    [[nodiscard]] const_iterator begin() const noexcept { return pQueue ? pQueue->cbegin() : const_iterator(); }
    [[nodiscard]] const_iterator end() const noexcept { return pQueue ? pQueue->cend() : const_iterator(); }

    /// Appends.
    bool Add(T const & tValue) {
        tGetQueue().push_back(tValue);
        return true;
    }
    /// Inserts before the element at `iIndex`; one behind the last element appends.
    /// \throws std::out_of_range beyond that
    bool AddAt(T const & tValue, int iIndex) {
        unsigned int const uOffset = TBase::ZeroBase(iIndex);
        if (uOffset > uGetCount()) TBase::ThrowBadIndex();
        TQueue & tQueue = tGetQueue();
        tQueue.insert(tQueue.begin() + static_cast<std::ptrdiff_t>(uOffset), tValue);
        return true;
    }
    /// Removes the element at `iIndex`. Outside the array nothing happens, and the answer is true as well.
    bool Detach(int iIndex) {
        unsigned int const uOffset = TBase::ZeroBase(iIndex);
        if (uOffset < uGetCount()) Erase(uOffset);
        return true;
    }
    /// The same as `Detach`.
    bool Destroy(int iIndex) { return Detach(iIndex); }
    /// Removes the first element that equals `tValue`.
    bool DetachValue(T const & tValue) {
        if (std::size_t const uOffset = uFind(tValue); uOffset < uGetCount()) Erase(uOffset);
        return true;
    }
    /// The same as `DetachValue`.
    bool DestroyValue(T const & tValue) { return DetachValue(tValue); }
    /// Removes all elements.
    void Flush() noexcept { pQueue.reset(); }

    /// The index of the first element that equals `tValue`, 2147483647 when there is none.
    [[nodiscard]] int Find(T const & tValue) const {
        std::size_t const uOffset = uFind(tValue);
        return uOffset < uGetCount() ? TBase::BoundBase(static_cast<unsigned int>(uOffset)) : TBase::iNotFound;
    }
    [[nodiscard]] bool HasMember(T const & tValue) const { return Find(tValue) != TBase::iNotFound; }

    /// Calls the function for each element, from the first to the last. It may append: the count is read anew before
    /// each call.
    void ForEach(void (*pFunction)(T &, void *), void * pArgument) {
        for (std::size_t i = 0; i < uGetCount(); ++i)
            pFunction((*pQueue)[i], pArgument);
    }
    /// The first element for which the test holds, null when there is none.
    [[nodiscard]] T * FirstThat(bool (*pTest)(T const &, void *), void * pArgument) {
        for (std::size_t i = 0; i < uGetCount(); ++i)
            if (pTest((*pQueue)[i], pArgument)) return &(*pQueue)[i];
        return nullptr;
    }
    /// The last element for which the test holds, null when there is none. The test starts at the last one.
    [[nodiscard]] T * LastThat(bool (*pTest)(T const &, void *), void * pArgument) {
        for (std::size_t i = uGetCount(); i-- > 0;)
            if (pTest((*pQueue)[i], pArgument)) return &(*pQueue)[i];
        return nullptr;
    }
    /// Assigns to the element at `iIndex`. No test of the range.
    void SetData(int iIndex, T const & tValue) {
        if (T & tElement = (*this)[iIndex]; &tElement != &tValue) tElement = tValue;
    }

    [[nodiscard]] int GetItemsInContainer() const noexcept { return TBase::iGetCapped(uGetCount()); }
    [[nodiscard]] bool IsEmpty() const noexcept { return uGetCount() == 0; }

private:
    [[nodiscard]] std::size_t uGetCount() const noexcept { return pQueue ? pQueue->size() : 0; }
    [[nodiscard]] std::size_t uFind(T const & tValue) const {
        return static_cast<std::size_t>(std::find(begin(), end(), tValue) - begin());
    }
    void Erase(std::size_t uOffset) {
        if (pQueue->size() == 1) return Flush();
        pQueue->erase(pQueue->begin() + static_cast<std::ptrdiff_t>(uOffset));
    }
    TQueue & tGetQueue() {
        if (!pQueue) pQueue = std::make_unique<TQueue>();
        return *pQueue;
    }

    std::unique_ptr<TQueue> pQueue; // null: there are no elements
};

/// An array of pointers, which owns what they point at unless it is told otherwise.
///
/// The elements are the objects: where one is searched, `T`'s `==` decides, not the address. A null pointer takes a
/// place of its own; it is equal to a null pointer only, and no function is called for it.
///
/// Objects are deleted as `T`: derived classes want a virtual destructor.
template <typename T>
class TIArrayAsVector : public _TArrayBase<T>, public TZkShouldDelete {
    using TBase = _TArrayBase<T>;

public:
    using iterator = T **;
    using const_iterator = T * const *;

    /// An empty array that owns its elements.
    /// \param iLower the index of the first element
    ///
    /// Deliberate: the upper bound and the growth step are not looked at. Older callers size their arrays.
    explicit TIArrayAsVector(int /* iUpper */, int iLower = 0, int /* iDelta */ = 0) noexcept : TBase(iLower) {}
    TIArrayAsVector(TIArrayAsVector const &) = delete;
    TIArrayAsVector & operator=(TIArrayAsVector const &) = delete;
    /// Deletes the elements when the array owns them.
    virtual ~TIArrayAsVector() { Flush(); }

    /// No test of the range: an index outside the array is outside the contract.
    [[nodiscard]] T * operator[](int iIndex) const noexcept { return tQueue[TBase::ZeroBase(iIndex)]; }
    [[nodiscard]] iterator begin() noexcept { return tQueue.begin(); }
    [[nodiscard]] iterator end() noexcept { return tQueue.end(); }
    [[nodiscard]] const_iterator begin() const noexcept { return tQueue.begin(); }
    [[nodiscard]] const_iterator end() const noexcept { return tQueue.end(); }

    /// Appends.
    bool Add(T * pElement) {
        tQueue.Insert(tQueue.uGetCount(), pElement);
        return true;
    }
    /// Inserts before the element at `iIndex`; one behind the last element appends.
    /// \throws std::out_of_range beyond that; the element stays the caller's
    bool AddAt(T * pElement, int iIndex) {
        unsigned int const uOffset = TBase::ZeroBase(iIndex);
        if (uOffset > tQueue.uGetCount()) TBase::ThrowBadIndex();
        tQueue.Insert(uOffset, pElement);
        return true;
    }
    /// Removes the element at `iIndex` without deleting it, whoever owns it.
    /// \throws std::out_of_range outside the array
    bool Detach(int iIndex) {
        tQueue.Erase(uChecked(iIndex));
        return true;
    }
    /// Removes the element at `iIndex` and deletes it, whoever owns it.
    /// \throws std::out_of_range outside the array
    bool Destroy(int iIndex) {
        DestroyAt(uChecked(iIndex));
        return true;
    }
    /// Removes the first element that equals `*pValue` without deleting it, whoever owns it.
    bool DetachValue(T const * pValue) {
        if (std::size_t const uOffset = uFind(pValue); uOffset < tQueue.uGetCount()) tQueue.Erase(uOffset);
        return true;
    }
    /// Removes the first element that equals `*pValue` and deletes it, whoever owns it.
    bool DestroyValue(T const * pValue) {
        if (std::size_t const uOffset = uFind(pValue); uOffset < tQueue.uGetCount()) DestroyAt(uOffset);
        return true;
    }
    /// Removes all elements, and deletes them when the array owns them.
    void Flush() noexcept {
        if (OwnsElements()) {
            for (T * const pElement : tQueue)
                delete pElement;
        }
        tQueue.Clear();
    }

    /// The index of the first element that equals `*pValue`, 2147483647 when there is none.
    [[nodiscard]] int Find(T const * pValue) const {
        std::size_t const uOffset = uFind(pValue);
        if (uOffset == tQueue.uGetCount()) return TBase::iNotFound;
        return TBase::BoundBase(static_cast<unsigned int>(uOffset));
    }
    [[nodiscard]] bool HasMember(T const * pValue) const { return Find(pValue) != TBase::iNotFound; }

    /// Calls the function for each element, from the first to the last. It may append: the count is read anew before
    /// each call.
    void ForEach(void (*pFunction)(T &, void *), void * pArgument) {
        for (std::size_t i = 0; i < tQueue.uGetCount(); ++i)
            if (T * const pElement = tQueue[i]) pFunction(*pElement, pArgument);
    }
    /// The first element for which the test holds, null when there is none.
    [[nodiscard]] T * FirstThat(bool (*pTest)(T const &, void *), void * pArgument) const {
        for (std::size_t i = 0; i < tQueue.uGetCount(); ++i)
            if (T * const pElement = tQueue[i]; pElement != nullptr && pTest(*pElement, pArgument)) return pElement;
        return nullptr;
    }
    /// The last element for which the test holds, null when there is none. The test starts at the last one.
    [[nodiscard]] T * LastThat(bool (*pTest)(T const &, void *), void * pArgument) const {
        for (std::size_t i = tQueue.uGetCount(); i-- > 0;)
            if (T * const pElement = tQueue[i]; pElement != nullptr && pTest(*pElement, pArgument)) return pElement;
        return nullptr;
    }
    /// Puts another pointer in the place at `iIndex`. The former element is not deleted. No test of the range.
    void SetData(int iIndex, T * pElement) noexcept { tQueue[TBase::ZeroBase(iIndex)] = pElement; }

    [[nodiscard]] int GetItemsInContainer() const noexcept { return TBase::iGetCapped(tQueue.uGetCount()); }
    [[nodiscard]] bool IsEmpty() const noexcept { return tQueue.fIsEmpty(); }

protected:
    /// The offset of an index.
    /// \throws std::out_of_range outside the array
    [[nodiscard]] std::size_t uChecked(int iIndex) const {
        unsigned int const uOffset = TBase::ZeroBase(iIndex);
        if (uOffset >= tQueue.uGetCount()) TBase::ThrowBadIndex();
        return uOffset;
    }
    /// Takes elements, ownership and lower bound of another array, which is empty afterwards.
    void TakeOver(TIArrayAsVector & tOther) noexcept {
        Flush();
        TBase::operator=(tOther);
        TZkShouldDelete::operator=(tOther);
        tQueue = std::move(tOther.tQueue);
    }

    TPointerQueue<T> tQueue;

private:
    /// An element is in the array until it is gone.
    void DestroyAt(std::size_t uOffset) noexcept {
        delete tQueue[uOffset];
        tQueue.Erase(uOffset);
    }
    [[nodiscard]] std::size_t uFind(T const * pValue) const {
        auto const fEquals = [pValue](T const * pElement) {
            return pElement == pValue || (pElement != nullptr && pValue != nullptr && *pElement == *pValue);
        };
        return static_cast<std::size_t>(std::find_if(begin(), end(), fEquals) - begin());
    }
};

/// An array of strings, compared exactly. The lower bound is 0.
class ZKTOOLS_API TZkStringArray : public TArrayAsVector<std::wstring> {
public:
    /// An empty array.
    /// Deliberate: neither argument is looked at, not even for the lower bound. Older callers size their arrays.
    explicit TZkStringArray(int iUpper = 0, int iLower = 0);
    TZkStringArray(TZkStringArray const & tOther);
    TZkStringArray & operator=(TZkStringArray const & tOther);
    ~TZkStringArray() override;

    using TArrayAsVector::Destroy;
    using TArrayAsVector::Detach;
    /// Removes the first string that equals `sValue`.
    bool Detach(std::wstring const & sValue);
    /// The same.
    bool Destroy(std::wstring const & sValue);

    /// The same strings in the same order, whatever the lower bounds.
    [[nodiscard]] bool operator==(TZkStringArray const & tOther) const noexcept;

    /// Replaces the strings by those of the stream: a 4-byte count, then each behind a 2-byte count
    /// (`TStreamBase::ReadPascalStringInt16`). After a failure the array holds what was read before it.
    /// \throws TXZkTools 4291 where the stream ends in front of one of the strings, also a file stream, and as the
    /// stream does
    void Read(TStreamBase & tStream);
    void Write(TStreamBase & tStream) const;

    /// Replaces the strings by the texts of all children of the element, whatever their names.
    void Read(TOptionElement const & tElement);
    /// Adds a child "String" for each string. The children that the element has stay: writing twice doubles the list.
    void Write(TOptionElement & tElement) const;
};

/// A set of numbers from 0 to 255, kept in 32 bytes and nothing else: number `n` is bit `n % 8` of byte `n / 8`. So it
/// stands on a stream.
class ZKTOOLS_API TZkBitSet {
public:
    /// The empty set.
    TZkBitSet() noexcept = default;

    TZkBitSet & operator+=(unsigned char uItem) noexcept;
    TZkBitSet & operator-=(unsigned char uItem) noexcept;
    void EnableItem(unsigned char uItem) noexcept;
    void DisableItem(unsigned char uItem) noexcept;
    void SetItem(unsigned char uItem, bool fEnabled) noexcept;

    /// Union into this set.
    TZkBitSet & operator+=(TZkBitSet const & tOther) noexcept;
    TZkBitSet & operator|=(TZkBitSet const & tOther) noexcept;
    void EnableItem(TZkBitSet const & tOther) noexcept;
    /// Takes out what the other set has.
    TZkBitSet & operator-=(TZkBitSet const & tOther) noexcept;
    void DisableItem(TZkBitSet const & tOther) noexcept;
    /// Intersection into this set.
    TZkBitSet & operator&=(TZkBitSet const & tOther) noexcept;
    /// What this set has not.
    [[nodiscard]] TZkBitSet operator~() const noexcept;

    /// 1 or 0.
    [[nodiscard]] int Has(unsigned char uItem) const noexcept;
    void SetAll() noexcept;
    void ResetAll() noexcept;
    [[nodiscard]] bool IsEmpty() const noexcept;
    [[nodiscard]] bool operator==(TZkBitSet const & tOther) const noexcept;
    [[nodiscard]] bool operator!=(TZkBitSet const & tOther) const noexcept;

    /// Exactly 32 bytes.
    void Read(TStreamBase & tStream);
    void Write(TStreamBase & tStream) const;

    /// Calls the function with each number of the set, in ascending order.
    /// Deliberate: its answer is not looked at, false does not end the walk. It is there for functions that serve as a
    /// test elsewhere.
    /// \throws std::bad_function_call for an empty function, unless the set is empty
    void ForEachEnabledItem(std::function<bool(unsigned char)> tFunction) const;

private:
    [[nodiscard]] static std::size_t Loc(unsigned char uItem) noexcept { return uItem / 8u; }
    [[nodiscard]] static unsigned char Mask(unsigned char uItem) noexcept { return Masks[uItem % 8u]; }

    static constexpr std::array<unsigned char, 8> Masks{1, 2, 4, 8, 16, 32, 64, 128};

    std::array<unsigned char, 32> aucBits{};
};
static_assert(sizeof(TZkBitSet) == 32);
