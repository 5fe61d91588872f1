#include "ZkTools/Containers.h"

#include "ZkTools/Exceptions.h"
#include "ZkTools/FileStream.h"
#include "ZkTools/MessageIds.h"
#include "ZkTools/Stream.h"
#include "tests/support/OutOfRange.h"
#include "tests/support/SystemCall.h"
#include "tests/support/TempDirectory.h"

#include <gtest/gtest.h>

#include <array>
#include <deque>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <random>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using std::wstring;
using zk_test::pzBadIndex;
using zk_test::sOutOfRange;
using namespace std::string_literals;

constexpr int iNotFound = 2147483647;

/// Tells when it is deleted, and compares by its number.
struct TProbe {
    TProbe(int iNumber_, std::vector<int> & tDeleted_) : iNumber(iNumber_), tDeleted(tDeleted_) {}
    virtual ~TProbe() { tDeleted.push_back(iNumber); }
    bool operator==(TProbe const & tOther) const { return iNumber == tOther.iNumber; }

    int iNumber;
    std::vector<int> & tDeleted;
};
struct TDerivedProbe : TProbe {
    using TProbe::TProbe;
    ~TDerivedProbe() override { tDeleted.push_back(-iNumber); }
};
using TProbes = TIArrayAsVector<TProbe>;

TArrayAsVector<wstring> tMakeArray(std::vector<wstring> const & sStrings, int iLower = 0) {
    TArrayAsVector<wstring> tArray(0, iLower);
    for (wstring const & s : sStrings)
        tArray.Add(s);
    return tArray;
}

template <typename TArray>
std::vector<wstring> sGetAll(TArray const & tArray) {
    return {tArray.begin(), tArray.end()};
}

std::vector<int> iGetNumbers(TProbes const & tProbes) {
    std::vector<int> iNumbers;
    for (TProbe const * p : tProbes)
        iNumbers.push_back(p != nullptr ? p->iNumber : 0);
    return iNumbers;
}

std::string sGetBytes(TStreamBase & tStream) {
    if (tStream.pGetData() == nullptr) return {};
    return {reinterpret_cast<char const *>(tStream.pGetData()), tStream.dwGetSize()};
}

} // namespace

TEST(TZkShouldDelete, TakesAnyNonZeroStateForDelete) {
    EXPECT_TRUE(TZkShouldDelete().OwnsElements());
    EXPECT_TRUE(TZkShouldDelete(TZkShouldDelete::Delete).OwnsElements());
    EXPECT_TRUE(TZkShouldDelete(TZkShouldDelete::DefDelete).OwnsElements());
    EXPECT_FALSE(TZkShouldDelete(TZkShouldDelete::NoDelete).OwnsElements());
    EXPECT_TRUE(TZkShouldDelete(static_cast<TZkShouldDelete::TDelete>(17)).OwnsElements());
    EXPECT_EQ(sizeof(TZkShouldDelete), 4u);
}

TEST(TZkShouldDelete, DelObjAsksTheStateForTheDefaultOnly) {
    TZkShouldDelete tState;
    for (bool const fOwns : {true, false}) {
        tState.OwnsElements(fOwns);
        EXPECT_EQ(tState.OwnsElements(), fOwns);
        EXPECT_TRUE(tState.DelObj(TZkShouldDelete::Delete));
        EXPECT_EQ(tState.DelObj(TZkShouldDelete::DefDelete), fOwns);
        EXPECT_FALSE(tState.DelObj(TZkShouldDelete::NoDelete));
        EXPECT_FALSE(tState.DelObj(static_cast<TZkShouldDelete::TDelete>(3)));
    }
}

TEST(TZkShouldDelete, AssignmentCopiesTheState) {
    TZkShouldDelete tState;
    tState = TZkShouldDelete(TZkShouldDelete::NoDelete);
    EXPECT_FALSE(tState.OwnsElements());
    EXPECT_FALSE(TZkShouldDelete(tState).OwnsElements());
}

TEST(TArrayBase, CountsFromItsLowerBound) {
    TArrayAsVector<wstring> tArray(0, 5);
    EXPECT_EQ(tArray.LowerBound(), 5);
    EXPECT_EQ(tArray.ZeroBase(5), 0u);
    EXPECT_EQ(tArray.ZeroBase(4), std::numeric_limits<unsigned int>::max());
    EXPECT_EQ(tArray.BoundBase(2), 7);
    EXPECT_EQ(tArray.BoundBase(std::numeric_limits<unsigned int>::max()), iNotFound);
    TArrayAsVector<wstring> const tNegative(0, -3);
    EXPECT_EQ(tNegative.ZeroBase(0), 3u);
    EXPECT_EQ(tNegative.BoundBase(1), -2);
}

TEST(TArrayAsVector, StartsEmptyWhateverSizeIsAskedFor) {
    TArrayAsVector<wstring> const tArray(100, 20, 10);
    EXPECT_TRUE(tArray.IsEmpty());
    EXPECT_EQ(tArray.GetItemsInContainer(), 0);
    EXPECT_EQ(tArray.LowerBound(), 20);
    EXPECT_EQ(tArray.begin(), tArray.end());
    EXPECT_EQ(TArrayAsVector<wstring>(7).LowerBound(), 0);
    static_assert(std::has_virtual_destructor_v<TArrayAsVector<wstring>>);
}

TEST(TArrayAsVector, AddsAtTheEndAndFindsByIndex) {
    TArrayAsVector<wstring> tArray(0, 5);
    EXPECT_TRUE(tArray.Add(L"a"));
    EXPECT_TRUE(tArray.Add(L"b"));
    EXPECT_TRUE(tArray.Add(L"a"));
    EXPECT_EQ(tArray[5], L"a");
    EXPECT_EQ(tArray[6], L"b");
    EXPECT_EQ(tArray.GetItemsInContainer(), 3);
    EXPECT_EQ(tArray.Find(L"a"), 5);
    EXPECT_EQ(tArray.Find(L"b"), 6);
    EXPECT_EQ(tArray.Find(L"A"), iNotFound);
    EXPECT_EQ(tArray.Find(L""), iNotFound);
    EXPECT_TRUE(tArray.HasMember(L"b"));
    EXPECT_FALSE(tArray.HasMember(L"c"));
}

TEST(TArrayAsVector, KeepsTheAddressesOfElementsWhileItGrows) {
    TArrayAsVector<wstring> tArray(0);
    tArray.Add(L"first");
    wstring const & sFirst = tArray[0];
    for (int i = 0; i < 10'000; ++i)
        tArray.Add(tArray[0]);
    EXPECT_EQ(&sFirst, &tArray[0]);
    EXPECT_EQ(sFirst, L"first");
    EXPECT_EQ(tArray[10'000], L"first");
}

TEST(TArrayAsVector, AddAtInsertsInFront) {
    TArrayAsVector<wstring> tArray = tMakeArray({L"a", L"b"}, 5);
    EXPECT_TRUE(tArray.AddAt(L"x", 6));
    EXPECT_TRUE(tArray.AddAt(L"first", 5));
    EXPECT_TRUE(tArray.AddAt(L"last", 9));
    EXPECT_EQ(sGetAll(tArray), (std::vector<wstring>{L"first", L"a", L"x", L"b", L"last"}));
    EXPECT_EQ(sOutOfRange([&] { tArray.AddAt(L"y", 11); }), pzBadIndex);
    EXPECT_EQ(sOutOfRange([&] { tArray.AddAt(L"y", 4); }), pzBadIndex);
    EXPECT_EQ(tArray.GetItemsInContainer(), 5);
}

TEST(TArrayAsVector, DetachAndDestroyIgnoreAnIndexOutside) {
    for (auto const pRemove : {&TArrayAsVector<wstring>::Detach, &TArrayAsVector<wstring>::Destroy}) {
        TArrayAsVector<wstring> tArray = tMakeArray({L"a", L"b"}, 5);
        for (int const iIndex : {99, 7, 4, 0, -1, iNotFound})
            EXPECT_TRUE((tArray.*pRemove)(iIndex));
        EXPECT_EQ(sGetAll(tArray), (std::vector<wstring>{L"a", L"b"}));
        EXPECT_TRUE((tArray.*pRemove)(5));
        EXPECT_EQ(sGetAll(tArray), (std::vector<wstring>{L"b"}));
        EXPECT_TRUE((tArray.*pRemove)(5));
        EXPECT_TRUE(tArray.IsEmpty());
        EXPECT_TRUE((tArray.*pRemove)(5));
    }
}

TEST(TArrayAsVector, DetachValueRemovesTheFirstEqualElement) {
    for (auto const pRemove : {&TArrayAsVector<wstring>::DetachValue, &TArrayAsVector<wstring>::DestroyValue}) {
        TArrayAsVector<wstring> tArray = tMakeArray({L"x", L"a", L"y", L"a"});
        EXPECT_TRUE((tArray.*pRemove)(L"a"));
        EXPECT_EQ(sGetAll(tArray), (std::vector<wstring>{L"x", L"y", L"a"}));
        EXPECT_TRUE((tArray.*pRemove)(L"b"));
        EXPECT_EQ(tArray.GetItemsInContainer(), 3);
    }
}

TEST(TArrayAsVector, FlushRemovesAllAndTheArrayGoesOn) {
    TArrayAsVector<wstring> tArray = tMakeArray({L"a", L"b"}, 5);
    tArray.Flush();
    EXPECT_TRUE(tArray.IsEmpty());
    EXPECT_EQ(tArray.Find(L"a"), iNotFound);
    tArray.Add(L"c");
    EXPECT_EQ(tArray[5], L"c");
}

TEST(TArrayAsVector, CopiesElementsAndLowerBound) {
    TArrayAsVector<wstring> const tArray = tMakeArray({L"a", L"b"}, 5);
    TArrayAsVector<wstring> tCopy(tArray);
    EXPECT_EQ(tCopy.LowerBound(), 5);
    EXPECT_EQ(sGetAll(tCopy), sGetAll(tArray));
    tCopy[5] = L"z";
    EXPECT_EQ(tArray[5], L"a");
    EXPECT_TRUE(TArrayAsVector<wstring>(TArrayAsVector<wstring>(0)).IsEmpty());
}

TEST(TArrayAsVector, AssignsOverWhatThereIs) {
    for (std::vector<wstring> const & sOld : {std::vector<wstring>{}, {L"x"}, {L"x", L"y", L"z", L"w"}}) {
        for (std::vector<wstring> const & sNew : {std::vector<wstring>{}, {L"a", L"b"}}) {
            TArrayAsVector<wstring> tTarget = tMakeArray(sOld, 1);
            wstring const * const pFirst = sOld.empty() || sNew.empty() ? nullptr : &tTarget[1];
            TArrayAsVector<wstring> const tSource = tMakeArray(sNew, 9);
            tTarget = tSource;
            EXPECT_EQ(sGetAll(tTarget), sNew);
            EXPECT_EQ(tTarget.LowerBound(), 9);
            if (pFirst != nullptr) {
                EXPECT_EQ(pFirst, &tTarget[9]);
            }
        }
    }
    TArrayAsVector<wstring> tSelf = tMakeArray({L"a"}, 3);
    TArrayAsVector<wstring> const & tAlias = tSelf;
    tSelf = tAlias;
    EXPECT_EQ(sGetAll(tSelf), (std::vector<wstring>{L"a"}));
}

TEST(TArrayAsVector, ForEachReadsTheCountAnew) {
    TArrayAsVector<wstring> tArray = tMakeArray({L"a", L"b"});
    struct TState {
        TArrayAsVector<wstring> & tArray;
        wstring sSeen;
    } tState{tArray, {}};
    tArray.ForEach(
        [](wstring & s, void * pArgument) {
            auto & tSeen = *static_cast<TState *>(pArgument);
            tSeen.sSeen += s;
            if (tSeen.tArray.GetItemsInContainer() < 1000) tSeen.tArray.Add(L"+");
            s += L"!";
        },
        &tState);
    EXPECT_EQ(tState.sSeen, L"ab" + wstring(998, L'+'));
    EXPECT_EQ(tArray[0], L"a!");
}

TEST(TArrayAsVector, FirstThatAndLastThatSearchFromTheirEnd) {
    TArrayAsVector<wstring> tArray = tMakeArray({L"a", L"bb", L"cc", L"d"}, 5);
    auto const fHasLength = [](wstring const & s, void * pLength) {
        return s.size() == *static_cast<size_t *>(pLength);
    };
    std::size_t uLength = 2;
    EXPECT_EQ(tArray.FirstThat(fHasLength, &uLength), &tArray[6]);
    EXPECT_EQ(tArray.LastThat(fHasLength, &uLength), &tArray[7]);
    uLength = 9;
    EXPECT_EQ(tArray.FirstThat(fHasLength, &uLength), nullptr);
    EXPECT_EQ(tArray.LastThat(fHasLength, &uLength), nullptr);
    TArrayAsVector<wstring> tEmpty(0);
    EXPECT_EQ(tEmpty.FirstThat(fHasLength, &uLength), nullptr);
    EXPECT_EQ(tEmpty.LastThat(fHasLength, &uLength), nullptr);
}

TEST(TArrayAsVector, IsEmptyWhenItsFirstElementCannotBeCopied) {
    struct TStubborn {
        TStubborn() = default;
        TStubborn(TStubborn const &) { throw std::bad_alloc(); }
        TStubborn & operator=(TStubborn const &) = default;
    };
    TArrayAsVector<TStubborn> tArray(0);
    EXPECT_THROW(tArray.Add(TStubborn()), std::bad_alloc);
    EXPECT_THROW(tArray.AddAt(TStubborn(), 0), std::bad_alloc);
    EXPECT_EQ(tArray.GetItemsInContainer(), 0);
    EXPECT_TRUE(tArray.IsEmpty());
    tArray.Flush();
}

TEST(TArrayAsVector, SetDataAssigns) {
    TArrayAsVector<wstring> tArray = tMakeArray({L"a", L"b"}, 5);
    tArray.SetData(6, L"x");
    tArray.SetData(5, tArray[5]);
    EXPECT_EQ(sGetAll(tArray), (std::vector<wstring>{L"a", L"x"}));
}

TEST(TIArrayAsVector, OwnsItsElementsFromTheStart) {
    std::vector<int> tDeleted;
    {
        TProbes tProbes(10, 5, 3);
        EXPECT_TRUE(tProbes.OwnsElements());
        EXPECT_EQ(tProbes.LowerBound(), 5);
        EXPECT_TRUE(tProbes.IsEmpty());
        EXPECT_TRUE(tProbes.Add(new TDerivedProbe(1, tDeleted)));
        EXPECT_TRUE(tProbes.Add(nullptr));
        EXPECT_TRUE(tProbes.Add(new TProbe(2, tDeleted)));
        EXPECT_EQ(tProbes[7]->iNumber, 2);
        EXPECT_EQ(tProbes.GetItemsInContainer(), 3);
    }
    EXPECT_EQ(tDeleted, (std::vector<int>{-1, 1, 2}));
    static_assert(!std::is_copy_constructible_v<TProbes> && !std::is_copy_assignable_v<TProbes>);
    static_assert(std::has_virtual_destructor_v<TProbes>);
}

TEST(TIArrayAsVector, FlushLeavesForeignElementsAlone) {
    std::vector<int> tDeleted;
    TProbe tFirst(1, tDeleted);
    {
        TProbes tProbes(0);
        tProbes.OwnsElements(false);
        tProbes.Add(&tFirst);
        tProbes.Flush();
        EXPECT_TRUE(tProbes.IsEmpty());
        tProbes.Add(&tFirst);
    }
    EXPECT_TRUE(tDeleted.empty());
}

TEST(TIArrayAsVector, DestroyDeletesWhoeverOwnsAndDetachNever) {
    for (bool const fOwns : {true, false}) {
        std::vector<int> tDeleted;
        TProbes tProbes(0, 5);
        tProbes.OwnsElements(fOwns);
        auto const pKept = std::make_unique<TProbe>(1, tDeleted);
        tProbes.Add(pKept.get());
        tProbes.Add(new TDerivedProbe(2, tDeleted));
        tProbes.Add(nullptr);
        EXPECT_TRUE(tProbes.Detach(5));
        EXPECT_TRUE(tDeleted.empty());
        EXPECT_TRUE(tProbes.Destroy(6));
        EXPECT_TRUE(tDeleted.empty());
        EXPECT_TRUE(tProbes.Destroy(5));
        EXPECT_EQ(tDeleted, (std::vector<int>{-2, 2}));
        EXPECT_TRUE(tProbes.IsEmpty());
    }
}

TEST(TIArrayAsVector, AnElementIsInTheArrayUntilItIsGone) {
    struct TAsking {
        TAsking(TIArrayAsVector<TAsking> & tHome_, std::vector<int> & tCounts_) : tHome(tHome_), tCounts(tCounts_) {}
        ~TAsking() { tCounts.push_back(tHome.GetItemsInContainer()); }
        bool operator==(TAsking const &) const { return true; }
        TIArrayAsVector<TAsking> & tHome;
        std::vector<int> & tCounts;
    };
    std::vector<int> tCounts;
    TIArrayAsVector<TAsking> tHome(0);
    for (int i = 0; i < 5; ++i)
        tHome.Add(new TAsking(tHome, tCounts));
    tHome.Destroy(0);
    tHome.DestroyValue(tHome[0]);
    tHome.Flush();
    EXPECT_EQ(tCounts, (std::vector<int>{5, 4, 3, 3, 3}));
}

TEST(TIArrayAsVector, RemovalOutsideTheArrayThrows) {
    std::vector<int> tDeleted;
    TProbes tProbes(0, 5);
    tProbes.Add(new TProbe(1, tDeleted));
    for (int const iIndex : {4, 6, 99, -1, iNotFound}) {
        EXPECT_EQ(sOutOfRange([&] { tProbes.Detach(iIndex); }), pzBadIndex) << iIndex;
        EXPECT_EQ(sOutOfRange([&] { tProbes.Destroy(iIndex); }), pzBadIndex) << iIndex;
    }
    EXPECT_EQ(tProbes.GetItemsInContainer(), 1);
    EXPECT_TRUE(tDeleted.empty());
}

TEST(TIArrayAsVector, SearchesByTheEqualityOfTheObjects) {
    std::vector<int> tDeleted;
    TProbes tProbes(0, 5);
    for (int const iNumber : {1, 2, 1, 2})
        tProbes.Add(new TProbe(iNumber, tDeleted));
    TProbe const tSearched(2, tDeleted);
    TProbe const tUnknown(3, tDeleted);
    EXPECT_EQ(tProbes.Find(&tSearched), 6);
    EXPECT_TRUE(tProbes.HasMember(&tSearched));
    EXPECT_EQ(tProbes.Find(&tUnknown), iNotFound);
    EXPECT_FALSE(tProbes.HasMember(&tUnknown));
    EXPECT_EQ(tProbes.Find(nullptr), iNotFound);

    std::unique_ptr<TProbe> const pDetached(tProbes[6]);
    EXPECT_TRUE(tProbes.DetachValue(&tSearched));
    EXPECT_TRUE(tDeleted.empty());
    EXPECT_EQ(iGetNumbers(tProbes), (std::vector<int>{1, 1, 2}));
    EXPECT_TRUE(tProbes.DestroyValue(&tSearched));
    EXPECT_EQ(tDeleted, (std::vector<int>{2}));
    EXPECT_TRUE(tProbes.DetachValue(&tSearched));
    EXPECT_TRUE(tProbes.DestroyValue(&tSearched));
    EXPECT_EQ(iGetNumbers(tProbes), (std::vector<int>{1, 1}));
}

TEST(TIArrayAsVector, ANullPointerTakesAPlaceAndIsFoundAsSuch) {
    std::vector<int> tDeleted;
    TProbes tProbes(0);
    tProbes.Add(new TProbe(1, tDeleted));
    tProbes.Add(nullptr);
    TProbe const tUnknown(3, tDeleted);
    EXPECT_EQ(tProbes.Find(nullptr), 1);
    EXPECT_EQ(tProbes.Find(&tUnknown), iNotFound);
    int iSum = 0;
    tProbes.ForEach([](TProbe & t, void * pSum) { *static_cast<int *>(pSum) += t.iNumber; }, &iSum);
    EXPECT_EQ(iSum, 1);
    auto const fAny = [](TProbe const &, void *) { return true; };
    EXPECT_EQ(tProbes.FirstThat(fAny, nullptr), tProbes[0]);
    EXPECT_EQ(tProbes.LastThat(fAny, nullptr), tProbes[0]);
    EXPECT_TRUE(tProbes.DestroyValue(nullptr));
    EXPECT_EQ(tProbes.GetItemsInContainer(), 1);
}

TEST(TIArrayAsVector, WalksFromTheEndsAndReadsTheCountAnew) {
    std::vector<int> tDeleted;
    TProbes tProbes(0, 5);
    tProbes.Add(new TProbe(1, tDeleted));
    tProbes.Add(new TProbe(2, tDeleted));
    tProbes.Add(new TProbe(3, tDeleted));
    auto const fIsAbove = [](TProbe const & t, void * pLimit) { return t.iNumber > *static_cast<int *>(pLimit); };
    int iLimit = 1;
    EXPECT_EQ(tProbes.FirstThat(fIsAbove, &iLimit), tProbes[6]);
    EXPECT_EQ(tProbes.LastThat(fIsAbove, &iLimit), tProbes[7]);
    iLimit = 3;
    EXPECT_EQ(tProbes.FirstThat(fIsAbove, &iLimit), nullptr);
    EXPECT_EQ(tProbes.LastThat(fIsAbove, &iLimit), nullptr);
    tProbes.ForEach(
        [](TProbe & t, void * pArgument) {
            auto & tArray = *static_cast<TProbes *>(pArgument);
            if (tArray.GetItemsInContainer() < 10) tArray.Add(new TProbe(t.iNumber + 10, t.tDeleted));
        },
        &tProbes);
    EXPECT_EQ(iGetNumbers(tProbes), (std::vector<int>{1, 2, 3, 11, 12, 13, 21, 22, 23, 31}));
}

TEST(TIArrayAsVector, SetDataReplacesThePointerOnly) {
    std::vector<int> tDeleted;
    TProbes tProbes(0, 5);
    auto const pOld = std::make_unique<TProbe>(1, tDeleted);
    tProbes.Add(pOld.get());
    tProbes.SetData(5, new TProbe(2, tDeleted));
    EXPECT_EQ(iGetNumbers(tProbes), (std::vector<int>{2}));
    EXPECT_TRUE(tDeleted.empty());
}

TEST(TIArrayAsVector, AddAtInsertsInFrontOrThrows) {
    std::vector<int> tDeleted;
    TProbes tProbes(0, 5);
    EXPECT_TRUE(tProbes.AddAt(new TProbe(2, tDeleted), 5));
    EXPECT_TRUE(tProbes.AddAt(new TProbe(1, tDeleted), 5));
    EXPECT_TRUE(tProbes.AddAt(new TProbe(3, tDeleted), 7));
    EXPECT_EQ(iGetNumbers(tProbes), (std::vector<int>{1, 2, 3}));
    TProbe tKept(4, tDeleted);
    EXPECT_EQ(sOutOfRange([&] { tProbes.AddAt(&tKept, 9); }), pzBadIndex);
    EXPECT_EQ(sOutOfRange([&] { tProbes.AddAt(&tKept, 4); }), pzBadIndex);
    EXPECT_EQ(tProbes.GetItemsInContainer(), 3);
}

TEST(TPointerQueue, DoesWhatTheStandardQueueDoes) {
    std::mt19937 tRandom(4711);
    for (unsigned const uInsertions : {90u, 60u, 50u, 30u}) { // per cent: the queues grow, or hover around empty
        TPointerQueue<int> tQueue;
        std::deque<int *> tReference;
        std::array<int, 64> aiValues{};
        for (int iStep = 0; iStep < 20'000; ++iStep) {
            std::size_t const uRandom = tRandom();
            // Ends are visited more often than the middle, one end for a while.
            std::size_t const uCount = tReference.size();
            std::size_t const uAt = uRandom % 4 == 0 ? tRandom() % (uCount + 1) : (iStep / 512) % 2 == 0 ? uCount : 0;
            if (tRandom() % 100 < uInsertions && uCount < 3000) {
                int * const p = &aiValues[tRandom() % aiValues.size()];
                tQueue.Insert(uAt, p);
                tReference.insert(tReference.begin() + static_cast<std::ptrdiff_t>(uAt), p);
            } else if (uAt < uCount) {
                tQueue.Erase(uAt);
                tReference.erase(tReference.begin() + static_cast<std::ptrdiff_t>(uAt));
            }
            ASSERT_EQ(tQueue.uGetCount(), tReference.size());
            if (iStep % 64 == 0) {
                ASSERT_TRUE(std::equal(tQueue.begin(), tQueue.end(), tReference.begin(), tReference.end()));
            }
        }
    }
}

TEST(TPointerQueue, IsQuickAtBothEnds) {
    // Half a million at one end, out again at the other: what moved all pointers each time would take minutes.
    int iValue = 0;
    TPointerQueue<int> tQueue;
    for (int i = 0; i < 500'000; ++i)
        tQueue.Insert(i % 2 == 0 ? tQueue.uGetCount() : 0, &iValue);
    for (int i = 0; i < 500'000; ++i) {
        tQueue.Insert(tQueue.uGetCount(), &iValue);
        tQueue.Erase(0);
    }
    while (!tQueue.fIsEmpty())
        tQueue.Erase(0);
    EXPECT_EQ(tQueue.uGetCount(), 0u);
}

TEST(TPointerQueue, MovesAndReserves) {
    std::array<int, 5> aiValues{};
    for (std::size_t const uCount : {0u, 1u, 2u, 3u, 5u}) {
        TPointerQueue<int> tQueue;
        tQueue.Reserve(uCount);
        for (std::size_t i = 0; i < uCount; ++i)
            tQueue.Insert(i, &aiValues[i]);
        TPointerQueue<int> tMoved(std::move(tQueue));
        EXPECT_TRUE(tQueue.fIsEmpty()); // NOLINT(bugprone-use-after-move): empty is promised
        TPointerQueue<int> tAssigned;
        tAssigned.Insert(0, &aiValues[4]);
        tAssigned = std::move(tMoved);
        EXPECT_TRUE(tMoved.fIsEmpty()); // NOLINT(bugprone-use-after-move)
        ASSERT_EQ(tAssigned.uGetCount(), uCount);
        for (std::size_t i = 0; i < uCount; ++i)
            EXPECT_EQ(tAssigned[i], &aiValues[i]);
    }
}

TEST(TZkStringArray, AlwaysCountsFromZero) {
    TZkStringArray tArray(10, 20);
    EXPECT_EQ(tArray.LowerBound(), 0);
    EXPECT_TRUE(tArray.IsEmpty());
    tArray.Add(L"a");
    EXPECT_EQ(tArray[0], L"a");
    static_assert(sizeof(TZkStringArray) == sizeof(TArrayAsVector<wstring>));
}

TEST(TZkStringArray, DetachTakesAnIndexOrAString) {
    TZkStringArray tArray;
    for (wchar_t const * const pz : {L"a", L"b", L"a", L"c"})
        tArray.Add(pz);
    EXPECT_TRUE(tArray.Detach(L"a"));
    EXPECT_TRUE(tArray.Destroy(L"c"));
    EXPECT_EQ(sGetAll(tArray), (std::vector<wstring>{L"b", L"a"}));
    EXPECT_TRUE(tArray.Detach(99));
    EXPECT_TRUE(tArray.Destroy(L"nothing"));
    EXPECT_EQ(tArray.GetItemsInContainer(), 2);
    EXPECT_TRUE(tArray.Detach(0));
    EXPECT_TRUE(tArray.Destroy(0));
    EXPECT_TRUE(tArray.IsEmpty());
}

TEST(TZkStringArray, EqualityIsThatOfTheStrings) {
    TZkStringArray tFirst;
    TZkStringArray tSecond;
    EXPECT_TRUE(tFirst == tSecond);
    tFirst.Add(L"a");
    EXPECT_FALSE(tFirst == tSecond);
    tSecond.Add(L"a");
    EXPECT_TRUE(tFirst == tSecond);
    tFirst.Add(L"b"s + L'\0');
    tSecond.Add(L"b");
    EXPECT_FALSE(tFirst == tSecond);
    EXPECT_TRUE(TZkStringArray(tFirst) == tFirst);
    tSecond = tFirst;
    EXPECT_TRUE(tSecond == tFirst);
    // The base's assignment brings another lower bound in.
    static_cast<TArrayAsVector<wstring> &>(tSecond) = tMakeArray({L"a", L"b"s + L'\0'}, 5);
    EXPECT_EQ(tSecond.LowerBound(), 5);
    EXPECT_TRUE(tSecond == tFirst);
}

TEST(TZkStringArray, StandsOnAStreamBehindItsCount) {
    TZkStringArray tArray;
    tArray.Add(L"ab");
    tArray.Add(L"");
    TStreamBase tStream(ecpWestern);
    tArray.Write(tStream);
    EXPECT_EQ(sGetBytes(tStream), "\x02\0\0\0\x03\0ab\0\x01\0\0"s);
    tStream.SetPos(0);
    TZkStringArray tRead;
    tRead.Add(L"old");
    tRead.Read(tStream);
    EXPECT_TRUE(tRead == tArray);
    EXPECT_TRUE(tStream.fIsEoF());
}

TEST(TZkStringArray, AnEmptyArrayIsFourZerosAndReadsAsEmpty) {
    TStreamBase tStream(ecpWestern);
    TZkStringArray().Write(tStream);
    EXPECT_EQ(sGetBytes(tStream), "\0\0\0\0"s);
    tStream.SetPos(0);
    TZkStringArray tRead;
    tRead.Add(L"old");
    tRead.Read(tStream);
    EXPECT_TRUE(tRead.IsEmpty());
}

TEST(TZkStringArray, ReadsWhatThereIsBeforeAFailure) {
    TStreamBase tStream(ecpWestern);
    std::string const sBytes = "\xFF\xFF\xFF\x7F\x03\0ab\0\x05\0c"s;
    tStream.WriteData(sBytes.data(), static_cast<unsigned long>(sBytes.size()));
    tStream.SetPos(0);
    TZkStringArray tRead;
    EXPECT_THROW(tRead.Read(tStream), TXZkTools);
    EXPECT_EQ(sGetAll(tRead), (std::vector<wstring>{L"ab"}));

    TStreamBase tNegative(ecpWestern);
    tNegative.Write(-1);
    tNegative.SetPos(0);
    tRead.Read(tNegative);
    EXPECT_TRUE(tRead.IsEmpty());
}

TEST(TZkStringArray, CutAtEveryByteHoldsTheStringsInFront) {
    TZkStringArray tArray;
    for (wchar_t const * const pz : {L"ab", L"", L"c"}) // up to byte 9, 12 and 16
        tArray.Add(pz);
    TStreamBase tWhole(ecpWestern);
    tArray.Write(tWhole);
    std::string const sWhole = sGetBytes(tWhole);
    ASSERT_EQ(sWhole.size(), 16u);
    zk_test::TTempDirectory const tDirectory;
    for (unsigned int uLength = 1; uLength < sWhole.size(); ++uLength) {
        auto const ExpectCut = [&](TStreamBase & tStream) {
            TZkStringArray tRead;
            tRead.Add(L"old");
            try {
                tRead.Read(tStream);
                ADD_FAILURE() << uLength;
            } catch (TXZkTools const & tError) {
                EXPECT_EQ(tError.iGetNumber(), IDS_READ_PAST_END);
            }
            std::vector<wstring> sInFront{L"ab", L""};
            sInFront.resize(uLength >= 12 ? 2 : uLength >= 9 ? 1 : 0);
            EXPECT_EQ(sGetAll(tRead), sInFront) << uLength;
        };
        TStreamBase tStream(sWhole.data(), uLength, ecpWestern);
        ExpectCut(tStream);
        TFStream tFile(tDirectory.sWrite(L"cut", sWhole.substr(0, uLength)), ecpWestern, FS_BINARY);
        ExpectCut(tFile);
    }
    // A file without a byte reads as a count of 0.
    TFStream tFile(tDirectory.sWrite(L"cut", ""), ecpWestern, FS_BINARY);
    tArray.Read(tFile);
    EXPECT_TRUE(tArray.IsEmpty());
}

TEST(TZkStringArray, ADamagedCountEndsWithTheFile) {
    zk_test::TTempDirectory const tDirectory;
    TFStream tFile(tDirectory.sWrite(L"damaged", "\xFF\xFF\xFF\x7F\x02\0a\0"s), ecpWestern, FS_BINARY);
    TZkStringArray tArray;
    EXPECT_THROW(tArray.Read(tFile), TXZkTools);
    EXPECT_EQ(sGetAll(tArray), (std::vector<wstring>{L"a"}));
}

namespace {

TZkBitSet tMakeSet(std::vector<int> const & iItems) {
    TZkBitSet tSet;
    for (int const iItem : iItems)
        tSet += static_cast<unsigned char>(iItem);
    return tSet;
}

std::vector<int> iGetItems(TZkBitSet const & tSet) {
    std::vector<int> iItems;
    tSet.ForEachEnabledItem([&](unsigned char uItem) {
        iItems.push_back(uItem);
        return true;
    });
    return iItems;
}

} // namespace

TEST(TZkBitSet, IsThirtyTwoPlainBytes) {
    static_assert(sizeof(TZkBitSet) == 32 && std::is_trivially_copyable_v<TZkBitSet>);
    struct TCase {
        int iItem;
        std::size_t uByte;
        unsigned char uMask;
    };
    for (auto const & [iItem, uByte, uMask] : std::to_array<TCase>(
             {{0, 0, 1}, {1, 0, 2}, {7, 0, 128}, {8, 1, 1}, {9, 1, 2}, {100, 12, 16}, {255, 31, 128}})) {
        TStreamBase tStream;
        tMakeSet({iItem}).Write(tStream);
        std::string sExpected(32, '\0');
        sExpected[uByte] = static_cast<char>(uMask);
        EXPECT_EQ(sGetBytes(tStream), sExpected) << iItem;
    }
}

TEST(TZkBitSet, SetsAndClearsItems) {
    TZkBitSet tSet;
    EXPECT_TRUE(tSet.IsEmpty());
    EXPECT_EQ(&(tSet += 5), &tSet);
    tSet.EnableItem(200);
    tSet.SetItem(7, true);
    EXPECT_EQ(iGetItems(tSet), (std::vector<int>{5, 7, 200}));
    EXPECT_EQ(tSet.Has(5), 1);
    EXPECT_EQ(tSet.Has(7), 1);
    EXPECT_EQ(tSet.Has(6), 0);
    EXPECT_EQ(&(tSet -= 5), &tSet);
    tSet.DisableItem(6);
    tSet.SetItem(7, false);
    EXPECT_EQ(iGetItems(tSet), (std::vector<int>{200}));
    tSet.DisableItem(200);
    EXPECT_TRUE(tSet.IsEmpty());
}

TEST(TZkBitSet, WholeSetOperations) {
    TZkBitSet const tFirst = tMakeSet({1, 2, 100});
    TZkBitSet const tSecond = tMakeSet({2, 100, 255});
    for (int iForm = 0; iForm < 3; ++iForm) {
        TZkBitSet tUnion = tFirst;
        if (iForm == 0) {
            EXPECT_EQ(&(tUnion += tSecond), &tUnion);
        } else if (iForm == 1) {
            EXPECT_EQ(&(tUnion |= tSecond), &tUnion);
        } else {
            tUnion.EnableItem(tSecond);
        }
        EXPECT_EQ(iGetItems(tUnion), (std::vector<int>{1, 2, 100, 255}));
    }
    for (int iForm = 0; iForm < 2; ++iForm) {
        TZkBitSet tRest = tFirst;
        if (iForm == 0) {
            EXPECT_EQ(&(tRest -= tSecond), &tRest);
        } else {
            tRest.DisableItem(tSecond);
        }
        EXPECT_EQ(iGetItems(tRest), (std::vector<int>{1}));
    }
    TZkBitSet tBoth = tFirst;
    EXPECT_EQ(&(tBoth &= tSecond), &tBoth);
    EXPECT_EQ(iGetItems(tBoth), (std::vector<int>{2, 100}));
    EXPECT_EQ(iGetItems(tFirst), (std::vector<int>{1, 2, 100}));
}

TEST(TZkBitSet, ComplementLeavesTheSetAlone) {
    TZkBitSet const tSet = tMakeSet({0, 255});
    TZkBitSet const tRest = ~tSet;
    EXPECT_EQ(iGetItems(tSet), (std::vector<int>{0, 255}));
    for (int i = 0; i < 256; ++i)
        EXPECT_EQ(tRest.Has(static_cast<unsigned char>(i)), i == 0 || i == 255 ? 0 : 1) << i;
}

TEST(TZkBitSet, WorksWithItself) {
    TZkBitSet tSet = tMakeSet({3, 77});
    TZkBitSet const & tAlias = tSet;
    tSet |= tAlias;
    tSet &= tAlias;
    tSet += tAlias;
    EXPECT_EQ(iGetItems(tSet), (std::vector<int>{3, 77}));
    tSet -= tAlias;
    EXPECT_TRUE(tSet.IsEmpty());
}

TEST(TZkBitSet, SetAllAndResetAll) {
    TZkBitSet tSet;
    tSet.SetAll();
    EXPECT_EQ(iGetItems(tSet).size(), 256u);
    EXPECT_TRUE(tSet == ~TZkBitSet());
    tSet.ResetAll();
    EXPECT_TRUE(tSet.IsEmpty());
    EXPECT_TRUE(tSet != ~TZkBitSet());
    EXPECT_FALSE(tSet != TZkBitSet());
}

TEST(TZkBitSet, AMoveIsACopy) {
    TZkBitSet tSource = tMakeSet({4});
    TZkBitSet tTarget;
    tTarget = std::move(tSource);
    EXPECT_TRUE(tTarget == tMakeSet({4}));
    EXPECT_TRUE(tSource == tMakeSet({4})); // NOLINT(bugprone-use-after-move): it is promised
}

TEST(TZkBitSet, AWalkGoesOnWhateverTheFunctionAnswers) {
    std::vector<int> iSeen;
    tMakeSet({200, 3, 64, 7}).ForEachEnabledItem([&](unsigned char uItem) {
        iSeen.push_back(uItem);
        return false;
    });
    EXPECT_EQ(iSeen, (std::vector<int>{3, 7, 64, 200}));
}

TEST(TZkBitSet, AnEmptyFunctionFailsOnlyWhenItWouldBeCalled) {
    EXPECT_NO_THROW(TZkBitSet().ForEachEnabledItem({}));
    EXPECT_THROW(tMakeSet({255}).ForEachEnabledItem({}), std::bad_function_call);
}

TEST(TZkBitSet, ReadsItsBytesBack) {
    TZkBitSet const tSet = tMakeSet({0, 9, 128, 255});
    TStreamBase tStream;
    tSet.Write(tStream);
    tSet.Write(tStream);
    tStream.SetPos(0);
    TZkBitSet tRead = tMakeSet({1});
    tRead.Read(tStream);
    EXPECT_TRUE(tRead == tSet);
    EXPECT_EQ(tStream.dwGetPos(), 32u);
    for (unsigned long dwPos = 33; dwPos <= 64; ++dwPos) {
        tStream.SetPos(dwPos);
        EXPECT_THROW(tRead.Read(tStream), TXZkTools) << dwPos;
        EXPECT_TRUE(tRead == tSet) << dwPos;
    }
}

#ifdef __MINGW32__
TEST(TArrays, CostNoHeapMemoryWhileTheyAreEmpty) {
    HMODULE const hSelf = GetModuleHandleW(nullptr);
    using TNew = void * WINAPI(std::size_t);
    zk_test::TSystemCall<"_Znwy", TNew> tNew([&](std::size_t uSize) { return tNew.Original(uSize); }, hSelf);
    zk_test::TSystemCall<"_Znay", TNew> tNewArray([&](std::size_t uSize) { return tNewArray.Original(uSize); }, hSelf);
    TArrayAsVector<int> tValues(100);
    TArrayAsVector<int> const tCopy(tValues);
    TIArrayAsVector<TProbe> const tPointers(100);
    TIArrayAsVector<int> tTwo(0);
    int iFirst = 0;
    tTwo.OwnsElements(false);
    tTwo.Add(&iFirst); // as well as two pointers
    tTwo.Add(&iFirst);
    EXPECT_EQ(tNew.iGetCalls() + tNewArray.iGetCalls(), 0);

    tTwo.Add(&iFirst);
    tValues.Add(1);
    EXPECT_GT(tNew.iGetCalls(), 0);
    EXPECT_EQ(tNewArray.iGetCalls(), 1);
}
#endif
