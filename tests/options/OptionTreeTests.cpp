#include "ZkTools/OptionTree.h"

#include "ZkTools/Exceptions.h"
#include "ZkTools/MessageIds.h"
#include "tests/support/OutOfRange.h"
#include "tests/support/SystemCall.h"
#include "tests/support/VirtualSlot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using std::wstring;
using zk_test::pzBadIndex;
using zk_test::sOutOfRange;
using namespace std::string_literals;

/// A tree as text: name{attribute=value,...}:text(children).
wstring sDump(TOptionElement const & tElement) {
    wstring sResult = tElement.sName;
    if (tElement.iCountAttributes() != 0) {
        sResult += L'{';
        for (TOptionAttribute const * const pAttribute : *tElement.pAttributes)
            sResult += pAttribute->sName + L"=" + pAttribute->sValue + L",";
        sResult.back() = L'}';
    }
    if (!tElement.sText.empty()) sResult += L":" + tElement.sText;
    if (tElement.iCountElements() != 0) {
        sResult += L'(';
        for (TOptionElement const * const pChild : *tElement.pElements)
            sResult += sDump(*pChild) + L",";
        sResult.back() = L')';
    }
    return sResult;
}

void ExpectOwners(TOptionElement const & tElement) {
    EXPECT_EQ(tElement.pAttributes->pOwner, &tElement);
    EXPECT_EQ(tElement.pElements->pOwner, &tElement);
    for (TOptionAttribute const * const pAttribute : *tElement.pAttributes)
        EXPECT_EQ(pAttribute->pOwner, &tElement);
    for (TOptionElement const * const pChild : *tElement.pElements) {
        EXPECT_EQ(pChild->pParent, &tElement);
        ExpectOwners(*pChild);
    }
}

constexpr wchar_t const * pzTree = L"root{a=1,b=2}:text(x:one(deep:d),y{c=3},x:two)";

/// Fills an empty element with the tree of pzTree.
void Fill(TOptionElement & tRoot) {
    tRoot.sName = L"root";
    tRoot.SetText(L"text");
    tRoot.pAddAttribute(L"a", L"1");
    tRoot.pAddAttribute(L"b", L"2");
    tRoot.pAddElement(L"x", L"one")->pAddElement(L"deep", L"d");
    tRoot.pAddElement(L"y", L"")->pAddAttribute(L"c", L"3");
    tRoot.pAddElement(L"x", L"two");
}

/// Tells when it dies.
struct TWitness : TOptionElement {
    explicit TWitness(std::vector<wstring> & sDeaths_) : sDeaths(sDeaths_) {}
    ~TWitness() override { sDeaths.push_back(sName + (pParent != nullptr ? L" under a parent" : L"")); }
    std::vector<wstring> & sDeaths;
};

TWitness * pAddWitness(TOptionElement & tParent, wstring const & sName, std::vector<wstring> & sDeaths) {
    auto pWitness = std::make_unique<TWitness>(sDeaths);
    pWitness->sName = sName;
    tParent.AddElement(pWitness.get());
    return pWitness.release();
}

} // namespace

TEST(TOptionAttribute, CopiesNameAndValueOnly) {
    TOptionElement tOwner;
    TOptionAttribute tAttribute;
    EXPECT_EQ(tAttribute.pOwner, nullptr);
    EXPECT_FALSE(tAttribute.fMarked);
    tAttribute.pOwner = &tOwner;
    tAttribute.sName = L"n";
    tAttribute.sValue = L"v";
    tAttribute.fMarked = true;

    TOptionAttribute const tCopy(tAttribute);
    EXPECT_EQ(tCopy.sName, L"n");
    EXPECT_EQ(tCopy.sValue, L"v");
    EXPECT_EQ(tCopy.pOwner, nullptr);
    EXPECT_FALSE(tCopy.fMarked);

    TOptionAttribute tTarget;
    tTarget.fMarked = true;
    tTarget = tCopy;
    EXPECT_EQ(tTarget.sName, L"n");
    EXPECT_EQ(tTarget.sValue, L"v");
    EXPECT_TRUE(tTarget.fMarked);
    static_assert(!std::is_polymorphic_v<TOptionAttribute>);
}

TEST(TOptionAttribute, ComparesByItsName) {
    TOptionAttribute tFirst;
    TOptionAttribute tSecond;
    tFirst.sValue = L"1";
    EXPECT_TRUE(tFirst == tSecond);
    EXPECT_FALSE(tFirst < tSecond);
    EXPECT_FALSE(tSecond < tFirst);
    tFirst.sName = L"ab";
    tSecond.sName = L"b";
    EXPECT_FALSE(tFirst == tSecond);
    EXPECT_TRUE(tFirst < tSecond);
    EXPECT_FALSE(tSecond < tFirst);
}

TEST(TOptionElement, StartsEmptyAndAlone) {
    TOptionElement const tElement;
    EXPECT_EQ(tElement.pParent, nullptr);
    EXPECT_EQ(tElement.iPosition, -1);
    EXPECT_EQ(sDump(tElement), L"");
    EXPECT_EQ(tElement.iCountAttributes(), 0);
    EXPECT_EQ(tElement.iCountElements(), 0);
    EXPECT_TRUE(tElement.pAttributes->OwnsElements());
    EXPECT_TRUE(tElement.pElements->OwnsElements());
    EXPECT_EQ(tElement.pAttributes->LowerBound(), 0);
    EXPECT_EQ(tElement.pElements->LowerBound(), 0);
    ExpectOwners(tElement);
    static_assert(!std::is_copy_constructible_v<TOptionElement> && !std::is_copy_assignable_v<TOptionElement>);
    static_assert(std::is_nothrow_move_constructible_v<TOptionElement>);
}

#ifdef __MINGW32__
TEST(TOptionElement, TakesNoMemoryBesideItsOwn) {
    zk_test::TSystemCall<"_Znwy", void * WINAPI(std::size_t)> tNew(
        [&](std::size_t uSize) { return tNew.Original(uSize); });
    for (int i = 0; i < 100; ++i) {
        TOptionElement tElement;
        tElement.Flush();
    }
    EXPECT_EQ(tNew.iGetCalls(), 0);
}
#endif

TEST(TOptionElement, KeepsTheOrderOfItsFieldsAndVirtualOperations) {
    TOptionElement const t;
    std::array<void const *, 7> const apFields{&t,           &t.pParent,     &t.sName,    &t.sText,
                                               &t.iPosition, &t.pAttributes, &t.pElements};
    EXPECT_TRUE(std::is_sorted(apFields.begin(), apFields.end()));
    TOptionAttribute const tAttribute;
    std::array<void const *, 4> const apAttribute{&tAttribute.pOwner, &tAttribute.sName, &tAttribute.sValue,
                                                  &tAttribute.fMarked};
    EXPECT_TRUE(std::is_sorted(apAttribute.begin(), apAttribute.end()));
    EXPECT_EQ(zk_test::iVirtualSlot(&TOptionElement::iGetVersion), zk_test::iBehindDestructor);
    EXPECT_EQ(zk_test::iVirtualSlot(&TOptionElement::SetVersion), zk_test::iBehindDestructor + 1);
    static_assert(std::has_virtual_destructor_v<TOptionElement>);
}

TEST(TOptionElement, KeepsNoVersionItself) {
    TOptionElement tElement;
    tElement.SetVersion(7);
    EXPECT_EQ(tElement.iGetVersion(), 0);
}

TEST(TOptionElement, ComparesByItsNameAlone) {
    TOptionElement tFirst;
    TOptionElement tSecond;
    Fill(tFirst);
    tSecond.sName = L"root";
    EXPECT_TRUE(tFirst == tSecond);
    struct TCase {
        wstring sFirst;
        wstring sSecond;
        bool fLess;
        bool fEqual;
    };
    for (auto const & [sFirst, sSecond, fLess, fEqual] : std::to_array<TCase>({
             {L"", L"", false, true},
             {L"", L"a", true, false},
             {L"a", L"A", false, false},
             {L"A", L"a", true, false},
             {L"ab", L"b", true, false}, // not by length
             {L"a", L"ab", true, false}, // what another one begins with comes first
             {L"ab", L"a", false, false},
             {L"\u7FFF", L"\uFFEE", true, false}, // by unsigned units
             {L"a\0b"s, L"a\0c"s, true, false},
             {L"a"s, L"a\0"s, true, false},
         })) {
        tFirst.sName = sFirst;
        tSecond.sName = sSecond;
        EXPECT_EQ(tFirst < tSecond, fLess) << sFirst << '|' << sSecond;
        EXPECT_EQ(tFirst == tSecond, fEqual) << sFirst << '|' << sSecond;
    }
}

TEST(TOptionElement, EqualityLooksAtEveryUnit) {
    // Every length around the step in which names are compared, with one unit changed at every place.
    for (std::size_t uLength = 0; uLength < 20; ++uLength) {
        TOptionElement tFirst;
        TOptionElement tSecond;
        for (std::size_t i = 0; i < uLength; ++i)
            tFirst.sName += static_cast<wchar_t>(L'a' + i);
        tSecond.sName = tFirst.sName;
        EXPECT_TRUE(tFirst == tSecond) << uLength;
        for (wchar_t & c : tSecond.sName) {
            wchar_t const cOld = std::exchange(c, static_cast<wchar_t>(c + 0x100));
            EXPECT_FALSE(tFirst == tSecond) << uLength;
            c = cOld;
        }
        tSecond.sName += L'x';
        EXPECT_FALSE(tFirst == tSecond) << uLength;
    }
}

TEST(TOptionElement, DiesWithItsTreeEachChildBeforeItsParent) {
    std::vector<wstring> sDeaths;
    {
        TOptionElement tRoot;
        TOptionElement * const pFirst = pAddWitness(tRoot, L"1", sDeaths);
        pAddWitness(*pFirst, L"11", sDeaths);
        pAddWitness(*pAddWitness(*pFirst, L"12", sDeaths), L"121", sDeaths);
        pAddWitness(tRoot, L"2", sDeaths);
    }
    EXPECT_EQ(sDeaths, (std::vector<wstring>{L"11", L"121", L"12", L"1", L"2"}));
}

TEST(TOptionElement, LeavesChildrenAloneThatItDoesNotOwn) {
    std::vector<wstring> sDeaths;
    TWitness tChild(sDeaths);
    {
        TOptionElement tRoot;
        TOptionElement * const pMiddle = tRoot.pAddElement(L"middle", L"");
        pMiddle->pElements->OwnsElements(false);
        pMiddle->AddElement(&tChild);
    }
    EXPECT_TRUE(sDeaths.empty());
    EXPECT_EQ(tChild.pParent, nullptr);
}

TEST(TOptionElement, ArraysCanBeUsedDirectly) {
    std::vector<wstring> sDeaths;
    TOptionElement tRoot;
    pAddWitness(*pAddWitness(tRoot, L"a", sDeaths), L"b", sDeaths);
    pAddWitness(tRoot, L"c", sDeaths);
    TOptionElement tSearched;
    tSearched.sName = L"c";
    EXPECT_EQ(tRoot.pElements->Find(&tSearched), 1);
    tRoot.pElements->Destroy(1);
    EXPECT_EQ(sDeaths, (std::vector<wstring>{L"c under a parent"}));
    tRoot.pElements->Flush();
    EXPECT_EQ(sDeaths.size(), 3u);
    EXPECT_EQ(tRoot.iCountElements(), 0);

    for (int i = 0; i < 1000; ++i)
        tRoot.pAddAttribute(std::to_wstring(i), L"");
    tRoot.pAttributes->Destroy(500);
    EXPECT_EQ(tRoot.pGetAttribute(L"500"), nullptr);
    tRoot.pAttributes->Flush();
    EXPECT_EQ(tRoot.iCountAttributes(), 0);
}

TEST(TOptionElement, MoveTakesAllAndLeavesTheOldOwners) {
    TOptionElement tAbove;
    TOptionElement tSource;
    Fill(tSource);
    tSource.pParent = &tAbove;
    tSource.iPosition = 17;
    TOptionElement const tTarget(std::move(tSource));
    EXPECT_EQ(sDump(tTarget), pzTree);
    EXPECT_EQ(tTarget.pParent, &tAbove);
    EXPECT_EQ(tTarget.iPosition, 17);
    EXPECT_EQ(tSource.pAttributes, nullptr); // NOLINT(bugprone-use-after-move): it is promised
    EXPECT_EQ(tSource.pElements, nullptr);
    EXPECT_EQ(tTarget.pAttributes->pOwner, &tSource);
    EXPECT_EQ(tTarget.pElements->pOwner, &tSource);
    EXPECT_EQ(tTarget.pGetAttribute(0)->pOwner, &tSource);
    EXPECT_EQ(tTarget.pGetElement(0)->pParent, &tSource);
    EXPECT_EQ(tTarget.pGetElement(0)->pGetElement(0)->pParent, tTarget.pGetElement(0)); // further down nothing changes
}

TEST(TOptionElement, MoveAssignmentReplacesWhatThereIs) {
    std::vector<wstring> sDeaths;
    TOptionElement tTarget;
    tTarget.pAddAttribute(L"old", L"1");
    pAddWitness(tTarget, L"old", sDeaths);
    TOptionElement tSource;
    Fill(tSource);
    tTarget = std::move(tSource);
    EXPECT_EQ(sDump(tTarget), pzTree);
    EXPECT_EQ(sDeaths, (std::vector<wstring>{L"old"}));
    EXPECT_EQ(tTarget.pElements->pOwner, &tSource);

    TOptionElement tOther;
    tOther.sName = L"other";
    tOther.pAddElement(L"child", L"");
    tSource = std::move(tOther); // what was moved from can be moved to
    EXPECT_EQ(sDump(tSource), L"other(child)");
    EXPECT_NE(tSource.pAttributes, nullptr);
    TOptionElement & tSame = tSource;
    tSource = std::move(tSame);
    EXPECT_EQ(sDump(tSource), L"other(child)");

    TOptionElement tOfNothing(std::move(tOther)); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(tOfNothing.pElements, nullptr);
}

TEST(TOptionElement, CanBecomeItsOwnGrandchild) {
    TOptionElement tRoot;
    Fill(tRoot);
    tRoot = std::move(*tRoot.pGetElementRW(0)->pGetElementRW(0));
    EXPECT_EQ(sDump(tRoot), L"deep:d");
}

TEST(TOptionElement, AMovedTreeDiesWell) {
    std::vector<wstring> sDeaths;
    {
        auto pSource = std::make_unique<TOptionElement>();
        pAddWitness(*pAddWitness(*pSource, L"a", sDeaths), L"b", sDeaths);
        pAddWitness(*pSource, L"c", sDeaths);
        TOptionElement const tTarget(std::move(*pSource));
        pSource.reset();
    }
    EXPECT_EQ(sDeaths, (std::vector<wstring>{L"b", L"a", L"c"}));
}

TEST(TOptionElement, CloneIsADeepCopyWithoutParentAndPosition) {
    TOptionElement tSource;
    Fill(tSource);
    tSource.iPosition = 5;
    tSource.pGetElementRW(0)->iPosition = 6;
    tSource.pGetAttributeRW(L"a")->fMarked = true;
    TOptionElement tRoot;
    TOptionElement & tTarget = tRoot + L"old";
    tTarget.pAddAttribute(L"old", L"1");
    tTarget.pAddElement(L"old", L"");
    tTarget.iPosition = 9;

    tTarget.Clone(tSource);
    EXPECT_EQ(sDump(tTarget), pzTree);
    EXPECT_EQ(sDump(tSource), pzTree);
    EXPECT_EQ(tTarget.pParent, nullptr);
    EXPECT_EQ(tTarget.iPosition, 9);
    EXPECT_EQ(tTarget.pGetElement(0)->iPosition, -1);
    EXPECT_FALSE(tTarget.pGetAttribute(L"a")->fMarked);
    EXPECT_NE(tTarget.pGetElement(0), tSource.pGetElement(0));
    ExpectOwners(tTarget);
    ExpectOwners(tSource);
}

TEST(TOptionElement, CloneOfItselfLosesAttributesAndChildren) {
    TOptionElement tRoot;
    TOptionElement & tElement = tRoot + L"";
    Fill(tElement);
    tElement.Clone(tElement);
    EXPECT_EQ(sDump(tElement), L"root:text");
    EXPECT_EQ(tElement.pParent, nullptr);
}

TEST(TOptionElement, CloneOfAPartOfTheSameTree) {
    TOptionElement tRoot;
    Fill(tRoot);
    tRoot.pGetElementRW(1)->Clone(tRoot); // of what is above: as it was before
    tRoot.pGetElementRW(1)->pParent = &tRoot;
    EXPECT_EQ(sDump(tRoot), L"root{a=1,b=2}:text(x:one(deep:d),"s + pzTree + L",x:two)");
    ExpectOwners(tRoot);
    tRoot.Clone(*tRoot.pGetElement(1)); // of what is below, and goes by it
    EXPECT_EQ(sDump(tRoot), pzTree);
    ExpectOwners(tRoot);
}

TEST(TOptionElement, FlushEmptiesAndTheElementGoesOn) {
    std::vector<wstring> sDeaths;
    TOptionElement tAbove;
    TOptionElement & tElement = tAbove + L"name";
    tElement.SetText(L"text");
    tElement.iPosition = 3;
    tElement.pAddAttribute(L"a", L"1");
    pAddWitness(tElement, L"child", sDeaths);
    tElement.Flush();
    EXPECT_EQ(sDump(tElement), L"");
    EXPECT_EQ(sDeaths, (std::vector<wstring>{L"child"})); // its parent was null by then
    EXPECT_EQ(tElement.pParent, &tAbove);
    EXPECT_EQ(tElement.iPosition, 3);
    Fill(tElement);
    EXPECT_EQ(sDump(tElement), pzTree);
    ExpectOwners(tAbove);
}

TEST(TOptionAttributes, AreFoundByIndexAndByExactName) {
    TOptionElement tElement;
    tElement.pAddAttribute(L"a", L"1");
    tElement.pAddAttribute(L"b", L"");
    EXPECT_EQ(tElement.iCountAttributes(), 2);
    EXPECT_EQ(tElement.pGetAttribute(1)->sName, L"b");
    EXPECT_EQ(tElement.sGetAttributeValue(0), L"1");
    EXPECT_EQ(tElement.pGetAttribute(L"a"), tElement.pGetAttribute(0));
    EXPECT_EQ(tElement.pGetAttributeRW(L"b"), tElement.pGetAttribute(1));
    EXPECT_EQ(tElement.pGetAttribute(L"A"), nullptr);
    EXPECT_EQ(tElement.pGetAttributeRW(L""), nullptr);
    EXPECT_EQ(tElement.sGetAttributeValue(L"a"), L"1");
    EXPECT_EQ(tElement.sGetAttributeValue(L"c"), L"");
    EXPECT_EQ(tElement.psGetAttributeValue(L"a"), L"1");
    EXPECT_EQ(tElement.psGetAttributeValue(L"b"), L"");
    EXPECT_EQ(tElement.psGetAttributeValue(L"c"), std::nullopt);
    for (int const iIndex : {-1, 2, 2147483647}) {
        EXPECT_EQ(sOutOfRange([&] { static_cast<void>(tElement.pGetAttribute(iIndex)); }), pzBadIndex);
        EXPECT_EQ(sOutOfRange([&] { static_cast<void>(tElement.sGetAttributeValue(iIndex)); }), pzBadIndex);
    }
}

TEST(TOptionAttributes, AreFoundByAPartOfALongerText) {
    TOptionElement tElement;
    tElement.pAddAttribute(L"ab", L"1");
    EXPECT_NE(tElement.pGetAttribute(std::wstring_view(L"abc").substr(0, 2)), nullptr);
    EXPECT_EQ(tElement.pGetAttribute(std::wstring_view(L"abc").substr(0, 1)), nullptr);
}

TEST(TOptionAttributes, AddingANameAgainReplacesItAtTheEnd) {
    TOptionElement tElement;
    tElement.pAddAttribute(L"a", L"1")->fMarked = true;
    tElement.pAddAttribute(L"b", L"2");
    TOptionAttribute const * const pNew = tElement.pAddAttribute(L"a", L"3");
    EXPECT_EQ(sDump(tElement), L"{b=2,a=3}");
    EXPECT_EQ(tElement.pGetAttribute(1), pNew);
    EXPECT_FALSE(pNew->fMarked);
    EXPECT_EQ(pNew->pOwner, &tElement);
    tElement.pAddAttribute(L"A", L"4"); // case counts
    EXPECT_EQ(tElement.iCountAttributes(), 3);
    TOptionAttribute const * const pOld = tElement.pGetAttribute(L"b");
    tElement.pAddAttribute(pOld->sName, pOld->sValue); // its own strings
    EXPECT_EQ(sDump(tElement), L"{a=3,A=4,b=2}");
}

TEST(TOptionAttributes, ObjectTypeIsOneOfThem) {
    TOptionElement tElement;
    EXPECT_EQ(tElement.eGetObjectType(), eotNone);
    tElement.PutObjectType(eotFolder);
    tElement.pAddAttribute(L"b", L"2");
    EXPECT_EQ(tElement.eGetObjectType(), eotFolder);
    EXPECT_EQ(tElement.sGetAttributeValue(L"ObjectType"), ObjectType::to_string(eotFolder));
    tElement.PutObjectType(eotNone); // an empty attribute, not a missing one
    EXPECT_EQ(sDump(tElement), L"{b=2,ObjectType=}");
    EXPECT_EQ(tElement.eGetObjectType(), eotNone);
    tElement.pAddAttribute(L"ObjectType", L"what?");
    EXPECT_EQ(tElement.eGetObjectType(), eotNone);
    TOptionElement tFresh;
    tFresh.PutObjectType(eotNone);
    EXPECT_EQ(tFresh.iCountAttributes(), 1);
}

TEST(TOptionElements, AreFoundByIndexAndByExactName) {
    TOptionElement tRoot;
    Fill(tRoot);
    TOptionElement const & tConst = tRoot;
    EXPECT_EQ(tConst.iCountElements(), 3);
    EXPECT_EQ(tConst.pGetElement(1)->sGetName(), L"y");
    EXPECT_EQ(tRoot.pGetElementRW(2), tConst.pGetElement(2));
    EXPECT_EQ(tConst.pGetElement(L"x"), tConst.pGetElement(0)); // the first
    EXPECT_EQ(tRoot.pGetElementRW(L"y"), tConst.pGetElement(1));
    EXPECT_EQ(tConst.pGetElement(L"X"), nullptr);
    EXPECT_EQ(tRoot.pGetElementRW(L"deep"), nullptr); // a grandchild
    EXPECT_EQ(&tConst.getElement(L"x"), tConst.pGetElement(0));
    EXPECT_EQ(&tRoot.getElementRW(L"y"), tConst.pGetElement(1));
    EXPECT_EQ(tConst.sGetElementText(2), L"two");
    EXPECT_EQ(tConst.sGetElementText(L"x"), L"one");
    EXPECT_EQ(tConst.sGetElementText(L"z"), L"");
    for (int const iIndex : {-1, 3, 2147483647}) {
        EXPECT_EQ(sOutOfRange([&] { static_cast<void>(tConst.pGetElement(iIndex)); }), pzBadIndex);
        EXPECT_EQ(sOutOfRange([&] { static_cast<void>(tRoot.pGetElementRW(iIndex)); }), pzBadIndex);
        EXPECT_EQ(sOutOfRange([&] { static_cast<void>(tConst.sGetElementText(iIndex)); }), pzBadIndex);
    }
}

TEST(TOptionElements, AreFoundAmongManyOfOneLength) {
    TOptionElement tRoot;
    for (int i = 100; i < 200; ++i)
        tRoot.pAddElement(L"Element" + std::to_wstring(i), std::to_wstring(i));
    for (int i = 100; i < 200; ++i)
        EXPECT_EQ(tRoot.sGetElementText(L"Element" + std::to_wstring(i)), std::to_wstring(i));
    EXPECT_EQ(tRoot.pGetElement(L"Element200"), nullptr);
}

TEST(TOptionElements, AreCountedWithoutRegardToCase) {
    TOptionElement tRoot;
    for (wchar_t const * const pz : {L"Item", L"ITEM", L"item", L"items", L"ite", L""})
        tRoot.pAddElement(pz, L"");
    EXPECT_EQ(tRoot.iCountElements(L"iTEM"), 3);
    EXPECT_EQ(tRoot.iCountElements(std::wstring_view(L"items").substr(0, 4)), 3);
    EXPECT_EQ(tRoot.iCountElements(L""), 1);
    EXPECT_EQ(tRoot.iCountElements(L"other"), 0);
    EXPECT_EQ(tRoot.pGetElement(L"iTEM"), nullptr);
    tRoot.pAddElement(L"item\0more"s, L""); // a zero ends a name here
    EXPECT_EQ(tRoot.iCountElements(L"item"), 4);
    EXPECT_EQ(tRoot.iCountElements(L"Item\0else"s), 4);
}

TEST(TOptionElements, AMissingOneThrowsWithBothNames) {
    TOptionElement tRoot;
    tRoot.sName = L"Own 100%s";
    for (bool const fWrite : {false, true}) {
        tRoot.iPosition = -1;
        auto const Get = [&] {
            if (fWrite) {
                static_cast<void>(tRoot.getElementRW(L"Child%d"));
            } else {
                static_cast<void>(std::as_const(tRoot).getElement(L"Child%d"));
            }
        };
        try {
            Get();
            ADD_FAILURE();
        } catch (TXZkTools const & tError) {
            EXPECT_EQ(tError.iGetNumber(), IDS_OPTION_ELEMENT_MISSING);
            EXPECT_STREQ(tError.what(), "The element \"Child%d\" is missing in \"Own 100%s\".");
        }
        for (int const iPosition : {0, 42, -2}) {
            tRoot.iPosition = iPosition;
            try {
                Get();
                ADD_FAILURE();
            } catch (TXZkTools const & tError) {
                EXPECT_EQ(tError.iGetNumber(), IDS_OPTION_ELEMENT_MISSING_AT_POSITION);
                EXPECT_EQ(tError.what(), "Position " + std::to_string(iPosition) +
                                             ": the element \"Child%d\" is missing in \"Own 100%s\".");
            }
        }
    }
}

TEST(TOptionElements, AChainOfCallsNeverFails) {
    TOptionElement tRoot;
    Fill(tRoot);
    EXPECT_EQ(tRoot(L"x")(L"deep").sGetText(), L"d");
    TOptionElement const & tMissing = tRoot(L"nothing");
    EXPECT_EQ(&tMissing(L"there")(L"either"), &tMissing); // the one empty element
    EXPECT_EQ(&TOptionElement()(L"x"), &tMissing);
    EXPECT_EQ(sDump(tMissing), L"");
    EXPECT_EQ(tMissing.pParent, nullptr);
    // And the one empty text.
    EXPECT_EQ(&tRoot.sGetElementText(L"nothing"), &tRoot.sGetAttributeValue(L"nothing"));
}

TEST(TOptionElements, AreAddedWhereToldAndKnowTheirParent) {
    TOptionElement tRoot;
    TOptionElement * const pB = tRoot.pAddElement(L"b", L"2");
    TOptionElement * const pA = tRoot.pAddElementAt(L"a", L"1", 0);
    TOptionElement * const pD = tRoot.pAddElementAt(L"d", L"4", 2); // the count appends
    TOptionElement & tE = tRoot + L"e";
    auto * const pC = new TOptionElement;
    pC->sName = L"c";
    tRoot.AddElementAt(pC, 2);
    auto * const pF = new TOptionElement;
    pF->sName = L"f";
    tRoot.AddElement(pF);
    EXPECT_EQ(sDump(tRoot), L"(a:1,b:2,c,d:4,e,f)");
    EXPECT_EQ((std::vector<TOptionElement *>{tRoot.pElements->begin(), tRoot.pElements->end()}),
              (std::vector<TOptionElement *>{pA, pB, pC, pD, &tE, pF}));
    ExpectOwners(tRoot);
    tRoot.pAddElement(tRoot.pGetElement(0)->sName, tRoot.pGetElement(0)->sText); // strings of the tree itself
    EXPECT_EQ(tRoot.sGetElementText(6), L"1");
}

TEST(TOptionElements, AnIndexOutsideLeavesTheChildTheCallers) {
    TOptionElement tRoot;
    tRoot.pAddElement(L"a", L"");
    TOptionElement tChild;
    for (int const iIndex : {-1, 2, 2147483647}) {
        EXPECT_EQ(sOutOfRange([&] { tRoot.AddElementAt(&tChild, iIndex); }), pzBadIndex);
        EXPECT_EQ(sOutOfRange([&] { tRoot.pAddElementAt(L"b", L"", iIndex); }), pzBadIndex);
    }
    EXPECT_EQ(tChild.pParent, nullptr);
    EXPECT_EQ(tRoot.iCountElements(), 1);
}

TEST(TOptionElements, DestroyDeletesWithoutAParent) {
    std::vector<wstring> sDeaths;
    TOptionElement tRoot;
    for (wchar_t const * const pz : {L"a", L"b", L"c", L"b"})
        pAddWitness(tRoot, pz, sDeaths);
    tRoot.DestroyElement(tRoot.pGetElementRW(3)); // by address, not by name
    EXPECT_EQ(sDump(tRoot), L"(a,b,c)");
    tRoot.DestroyElement(0);
    EXPECT_EQ(sDump(tRoot), L"(b,c)");
    tRoot.DestroyElement(L"c");
    EXPECT_EQ(sDump(tRoot), L"(b)");
    EXPECT_EQ(sDeaths, (std::vector<wstring>{L"b", L"a", L"c"}));
}

TEST(TOptionElements, DestroyOfWhatIsNotThere) {
    TOptionElement tRoot;
    Fill(tRoot);
    TOptionElement tOther;
    tOther.sName = L"x";
    tRoot.DestroyElement(&tOther);
    tRoot.DestroyElement(tRoot.pGetElementRW(0)->pGetElementRW(0)); // a grandchild
    tRoot.DestroyElement(L"X");
    tRoot.RemoveElement(&tOther);
    for (int const iIndex : {-1, 3, 2147483647}) {
        EXPECT_EQ(sOutOfRange([&] { tRoot.DestroyElement(iIndex); }), pzBadIndex);
        EXPECT_EQ(sOutOfRange([&] { tRoot.RemoveElement(iIndex); }), pzBadIndex);
    }
    EXPECT_EQ(sDump(tRoot), pzTree);
}

TEST(TOptionElements, RemoveGivesTheChildToTheCaller) {
    TOptionElement tRoot;
    Fill(tRoot);
    std::unique_ptr<TOptionElement> const pFirst(tRoot.pGetElementRW(0));
    std::unique_ptr<TOptionElement> const pLast(tRoot.pGetElementRW(2));
    tRoot.RemoveElement(0);
    tRoot.RemoveElement(pLast.get());
    EXPECT_EQ(sDump(tRoot), L"root{a=1,b=2}:text(y{c=3})");
    EXPECT_EQ(pFirst->pParent, nullptr);
    EXPECT_EQ(pLast->pParent, nullptr);
    EXPECT_EQ(sDump(*pFirst), L"x:one(deep:d)");
    EXPECT_EQ(sDump(*pLast), L"x:two");
}

namespace {

/// A tree as plain as it can be.
struct TPlainTree {
    wstring sName, sText;
    std::vector<std::pair<wstring, wstring>> sAttributes;
    std::vector<TPlainTree> tChildren;
};

bool fSame(TOptionElement const & tElement, TPlainTree const & tPlain) {
    if (tElement.sName != tPlain.sName || tElement.sText != tPlain.sText) return false;
    if (tElement.iCountAttributes() != std::ssize(tPlain.sAttributes)) return false;
    if (tElement.iCountElements() != std::ssize(tPlain.tChildren)) return false;
    for (int i = 0; i < tElement.iCountAttributes(); ++i) {
        TOptionAttribute const & tAttribute = *tElement.pGetAttribute(i);
        if (tAttribute.pOwner != &tElement) return false;
        if (std::pair(tAttribute.sName, tAttribute.sValue) != tPlain.sAttributes[static_cast<std::size_t>(i)])
            return false;
    }
    for (int i = 0; i < tElement.iCountElements(); ++i) {
        TOptionElement const & tChild = *tElement.pGetElement(i);
        if (tChild.pParent != &tElement || !fSame(tChild, tPlain.tChildren[static_cast<std::size_t>(i)])) return false;
    }
    return true;
}

} // namespace

TEST(TOptionElement, ChangesAtRandomAsAPlainTreeDoes) {
    std::mt19937 tRandom(25);
    auto const uBelow = [&](std::size_t u) { return static_cast<std::size_t>(tRandom() % u); };
    TOptionElement tRoot;
    TPlainTree tPlainRoot;
    for (int iStep = 0; iStep < 20'000; ++iStep) {
        TOptionElement * pElement = &tRoot;
        TPlainTree * pPlain = &tPlainRoot;
        while (!pPlain->tChildren.empty() && uBelow(4) != 0) {
            std::size_t const uNext = uBelow(pPlain->tChildren.size());
            pElement = pElement->pGetElementRW(static_cast<int>(uNext));
            pPlain = &pPlain->tChildren[uNext];
        }
        auto & tChildren = pPlain->tChildren;
        wstring const sName(1, static_cast<wchar_t>(L'a' + uBelow(4)));
        wstring const sText = std::to_wstring(iStep);
        std::size_t const uAt = uBelow(tChildren.size() + 1);
        auto const itAt = tChildren.begin() + static_cast<std::ptrdiff_t>(uAt);
        auto const itNamed = std::ranges::find(tChildren, sName, &TPlainTree::sName);
        switch (uBelow(12)) {
        default:
            pElement->pAddElementAt(sName, sText, static_cast<int>(uAt));
            tChildren.insert(itAt, {sName, sText, {}, {}});
            break;
        case 0:
            pElement->pAddAttribute(sName, sText);
            std::erase_if(pPlain->sAttributes, [&](auto const & tAttribute) { return tAttribute.first == sName; });
            pPlain->sAttributes.emplace_back(sName, sText);
            break;
        case 1:
            pElement->DestroyElement(sName);
            if (itNamed != tChildren.end()) tChildren.erase(itNamed);
            break;
        case 2:
            if (itAt == tChildren.end()) break;
            pElement->DestroyElement(static_cast<int>(uAt));
            tChildren.erase(itAt);
            break;
        case 3: { // a child moves to the end of the root
            if (itAt == tChildren.end()) break;
            TOptionElement * const pChild = pElement->pGetElementRW(static_cast<int>(uAt));
            pElement->RemoveElement(pChild);
            tRoot.AddElement(pChild);
            TPlainTree tMoved = std::move(*itAt);
            tChildren.erase(itAt);
            tPlainRoot.tChildren.push_back(std::move(tMoved));
            break;
        }
        case 4: { // a child becomes a copy of its neighbour
            if (uAt + 1 >= tChildren.size()) break;
            TOptionElement & tTarget = *pElement->pGetElementRW(static_cast<int>(uAt));
            tTarget.Clone(*pElement->pGetElement(static_cast<int>(uAt) + 1));
            tTarget.pParent = pElement;
            *itAt = TPlainTree(*(itAt + 1));
            break;
        }
        case 5:
            if (uBelow(20) != 0) break;
            pElement->Flush();
            *pPlain = {};
            break;
        }
        if (iStep % 200 == 0) {
            ASSERT_TRUE(fSame(tRoot, tPlainRoot)) << iStep;
        }
    }
    EXPECT_TRUE(fSame(tRoot, tPlainRoot));
}
