// Trees that are very wide, very deep, or built by several threads.
#include "ZkTools/OptionTree.h"

#include "options/NodePool.h"
#include "tests/support/SystemCall.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int iDepth = 100'000;
constexpr int iWidth = 1'000'000;

/// A chain of elements below the given one.
void MakeDeep(TOptionElement & tRoot) {
    TOptionElement * pElement = &tRoot;
    for (int i = 0; i < iDepth; ++i)
        pElement = pElement->pAddElement(L"level", std::to_wstring(i));
}

/// How many levels there are, with texts that count them.
int iGetDepth(TOptionElement const & tRoot) {
    int iLevels = 0;
    for (TOptionElement const * p = &tRoot; p->iCountElements() != 0; ++iLevels) {
        TOptionElement const * const pChild = p->pGetElement(0);
        if (pChild->pParent != p || pChild->sGetText() != std::to_wstring(iLevels)) return -1;
        p = pChild;
    }
    return iLevels;
}

} // namespace

TEST(TDeepTree, IsBuiltClonedMovedAndDestroyed) {
    TOptionElement tClone;
    {
        TOptionElement tRoot;
        MakeDeep(tRoot);
        EXPECT_EQ(iGetDepth(tRoot), iDepth);
        tClone.Clone(tRoot);
        TOptionElement const tMoved(std::move(tRoot));
    }
    EXPECT_EQ(iGetDepth(tClone), iDepth);
    tClone.Flush();
    EXPECT_EQ(tClone.iCountElements(), 0);
}

TEST(TDeepTree, DiesByEveryRoad) {
    TOptionElement tRoot;
    MakeDeep(tRoot + L"a");
    MakeDeep(tRoot + L"b");
    MakeDeep(tRoot + L"c");
    MakeDeep(tRoot + L"d");
    tRoot.DestroyElement(L"a");
    tRoot.DestroyElement(0);
    tRoot.pElements->Destroy(0);
    tRoot.pElements->Flush();
    EXPECT_EQ(tRoot.iCountElements(), 0);

    MakeDeep(tRoot);
    std::unique_ptr<TOptionElement> const pRemoved(tRoot.pGetElementRW(0));
    tRoot.RemoveElement(0);
    EXPECT_EQ(iGetDepth(*pRemoved), -1); // it begins with level 1

    MakeDeep(tRoot);
    TOptionElement * pDeepest = &tRoot;
    while (pDeepest->iCountElements() != 0)
        pDeepest = pDeepest->pGetElementRW(0);
    tRoot = std::move(*pDeepest); // and all between them goes
    EXPECT_EQ(tRoot.sGetText(), std::to_wstring(iDepth - 1));
    EXPECT_EQ(tRoot.iCountElements(), 0);
}

TEST(TWideTree, IsBuiltClonedAndDestroyed) {
    TOptionElement tClone;
    {
        TOptionElement tRoot;
        for (int i = 0; i < iWidth; ++i) {
            TOptionElement & tChild = tRoot + L"child";
            tChild.pAddAttribute(L"first", L"1");
            tChild.pAddAttribute(L"second", std::to_wstring(i));
        }
        tClone.Clone(tRoot);
    }
    ASSERT_EQ(tClone.iCountElements(), iWidth);
    for (int i = 0; i < iWidth; i += 999)
        EXPECT_EQ(tClone.pGetElement(i)->sGetAttributeValue(L"second"), std::to_wstring(i));
}

TEST(TWideTree, GivesItsFirstChildrenAwayQuickly) {
    // What moved the others each time would take many minutes.
    TOptionElement tRoot;
    for (int i = 0; i < iWidth; ++i)
        tRoot.pAddElementAt(L"child", L"", 0);
    while (tRoot.iCountElements() > 0)
        tRoot.DestroyElement(0);
    EXPECT_EQ(tRoot.iCountElements(), 0);
}

TEST(TreesOfThreads, AreBuiltAtTheSameTimeAndDestroyedByOthers) {
    constexpr int iThreads = 4;
    constexpr int iRounds = 20;
    std::vector<std::vector<std::unique_ptr<TOptionElement>>> tTrees(iThreads);
    auto const Build = [&tTrees](std::size_t uThread) {
        for (int iRound = 0; iRound < iRounds; ++iRound) {
            auto pRoot = std::make_unique<TOptionElement>();
            for (int i = 0; i < 1000; ++i) {
                TOptionElement & tChild = *pRoot + L"child";
                tChild.pAddAttribute(L"thread", std::to_wstring(uThread));
                tChild.pAddAttribute(L"index", std::to_wstring(i));
            }
            for (int i = 0; i < 500; ++i)
                pRoot->DestroyElement(static_cast<int>(i % 7));
            tTrees[uThread].push_back(std::move(pRoot));
        }
    };
    auto const Check = [&tTrees](std::size_t uThread) {
        auto & tOthers = tTrees[(uThread + 1) % tTrees.size()];
        for (auto const & pRoot : tOthers)
            for (TOptionElement const * const pChild : *pRoot->pElements)
                if (pChild->sGetAttributeValue(L"thread") != std::to_wstring((uThread + 1) % tTrees.size()))
                    ADD_FAILURE();
        tOthers.clear();
    };
    for (std::function<void(std::size_t)> const & tWork : {std::function<void(std::size_t)>(Build), {Check}}) {
        std::vector<std::thread> tRunning;
        for (std::size_t i = 0; i < iThreads; ++i)
            tRunning.emplace_back(tWork, i);
        for (std::thread & tThread : tRunning)
            tThread.join();
    }
    for (auto const & tOfThread : tTrees)
        EXPECT_TRUE(tOfThread.empty());
}

TEST(TWideTree, LiesWhereTheLastOneLay) {
    std::set<void const *> pFirst;
    for (bool const fFirst : {true, false}) {
        TOptionElement tRoot;
        std::size_t uAgain = 0;
        for (int i = 0; i < 10'000; ++i) {
            TOptionElement const * const pChild = tRoot.pAddElement(L"child", L"");
            TOptionAttribute const * const pAttribute = tRoot.pGetElementRW(i)->pAddAttribute(L"a", L"");
            if (fFirst) {
                pFirst.insert({pChild, pAttribute});
            } else {
                uAgain += pFirst.count(pChild) + pFirst.count(pAttribute);
            }
        }
        EXPECT_TRUE(fFirst || uAgain > 10'000) << uAgain; // most of its 20'000 nodes
    }
}

TEST(TreesOfDerivedElements, MayHaveAnySize) {
    struct TLarge : TOptionElement {
        std::array<char, 1000> acMore{};
    };
    struct TSameSize : TOptionElement {};
    static_assert(sizeof(TSameSize) == sizeof(TOptionElement));
    TOptionElement tRoot;
    for (int i = 0; i < 1000; ++i) {
        auto pLarge = std::make_unique<TLarge>();
        std::memset(pLarge->acMore.data(), 0x55, pLarge->acMore.size());
        tRoot.AddElement(pLarge.get());
        static_cast<void>(pLarge.release());
        auto pSame = std::make_unique<TSameSize>();
        tRoot.AddElement(pSame.get());
        static_cast<void>(pSame.release());
    }
    for (int i = 1999; i >= 0; i -= 2)
        tRoot.DestroyElement(i);
    EXPECT_EQ(tRoot.iCountElements(), 1000);
}

TEST(TNodePool, NeverGivesABlockTwice) {
    constexpr std::size_t uSize = 80;
    TNodePool tPool(uSize);
    std::vector<unsigned char *> pTaken;
    std::mt19937 tRandom(17);
    // Up, down to nothing and up again, far beyond one slab.
    for (std::size_t const uGoal : {10'000u, 0u, 30'000u, 100u, 20'000u, 0u}) {
        while (pTaken.size() != uGoal) {
            bool const fTake = tRandom() % 10 < 2 ? pTaken.size() > uGoal : pTaken.size() < uGoal;
            if (fTake) {
                auto * const p = static_cast<unsigned char *>(tPool.pTake());
                std::memset(p, static_cast<int>(reinterpret_cast<std::uintptr_t>(p) / uSize % 251), uSize);
                pTaken.push_back(p);
            } else if (!pTaken.empty()) {
                std::swap(pTaken[tRandom() % pTaken.size()], pTaken.back());
                unsigned char * const p = pTaken.back();
                pTaken.pop_back();
                auto const uExpected = static_cast<unsigned char>(reinterpret_cast<std::uintptr_t>(p) / uSize % 251);
                ASSERT_TRUE(std::all_of(p, p + uSize, [&](unsigned char u) { return u == uExpected; }));
                tPool.Give(p);
            }
        }
        ASSERT_EQ(std::set<unsigned char *>(pTaken.begin(), pTaken.end()).size(), pTaken.size());
    }
    tPool.KeepNothing();
    void * const pLast = tPool.pTake(); // it works after that too, as for trees that die late
    tPool.Give(pLast);
}

#ifdef NDEBUG // the debug build takes its blocks from the heap
TEST(TNodePool, GivesFreeMemoryBackButForAFewPieces) {
    // Without memory of its own: guarded memory is mapped by this program, too, in pieces of other sizes.
    constexpr std::size_t uPiece = std::size_t{256} * 1024;
    std::array<void *, 100> apMapped{};
    auto const uCountMapped = [&] {
        return apMapped.size() - static_cast<std::size_t>(std::ranges::count(apMapped, nullptr));
    };
    HMODULE const hSelf = GetModuleHandleW(nullptr); // the pool stands in this program
    zk_test::TSystemCall<"VirtualAlloc", decltype(VirtualAlloc)> tMap(
        [&](void * pWhere, SIZE_T uSize, DWORD dwType, DWORD dwProtect) {
            void * const pMemory = tMap.Original(pWhere, uSize, dwType, dwProtect);
            bool const fOfPool = uSize == uPiece || uSize == 2 * uPiece;
            if (fOfPool && pMemory != nullptr) *std::ranges::find(apMapped, nullptr) = pMemory;
            return pMemory;
        },
        hSelf);
    zk_test::TSystemCall<"VirtualFree", decltype(VirtualFree)> tUnmap(
        [&](void * pMemory, SIZE_T uSize, DWORD dwType) {
            if (dwType == MEM_RELEASE) std::ranges::replace(apMapped, pMemory, nullptr);
            return tUnmap.Original(pMemory, uSize, dwType);
        },
        hSelf);
    TNodePool tPool(1000);
    std::vector<void *> pTaken;
    std::mt19937 tRandom(27);
    for (int iRound = 0; iRound < 3; ++iRound) {
        for (int i = 0; i < 262 * 40; ++i) // so many fit into 40 pieces
            pTaken.push_back(tPool.pTake());
        EXPECT_EQ(uCountMapped(), 40u);
        std::ranges::shuffle(pTaken, tRandom);
        for (void * const pBlock : pTaken)
            tPool.Give(pBlock);
        pTaken.clear();
        EXPECT_EQ(uCountMapped(), 16u);
    }
    void * const pBlock = tPool.pTake();
    tPool.KeepNothing();
    EXPECT_EQ(uCountMapped(), 1u); // that of the block
    tPool.Give(pBlock);
    EXPECT_EQ(uCountMapped(), 0u);
}
#endif
