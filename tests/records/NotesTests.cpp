#include "ZkTools/Notes.h"

#include "tests/support/VirtualSlot.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

using namespace std::string_literals;
using std::wstring;

namespace {

constexpr int iNotFound = INT_MAX;

/// What a note of these tests holds.
struct TParts {
    int iFunctions = 0;
    int iFields = 0;
    bool fMultiLingual = false;
    wstring sLabel{};
    wstring sLanguage{};
    wstring sContent{};
    wstring sComment{};
    EObjectType eType = eotNone;
    wstring sFields{};           ///< stands in front of the index of a field
    wstring * psAsked = nullptr; ///< takes a letter for each question
};

class TStoredNote : public TZkNoteImpl {
public:
    explicit TStoredNote(TParts tParts_) : tParts(std::move(tParts_)) {}

    TZkNote::EFunction eGetFunctions() const override {
        return Asked(L'f'), static_cast<TZkNote::EFunction>(tParts.iFunctions);
    }
    int iCountFields() const override { return Asked(L'n'), tParts.iFields; }
    bool fIsMultiLingual() const override { return Asked(L'm'), tParts.fMultiLingual; }
    wstring sGetLabel() const override { return Asked(L'l'), tParts.sLabel; }
    wstring sGetFieldValueAt(int iIndex) const override {
        return Asked(L'v'), tParts.sFields + L"value" + std::to_wstring(iIndex);
    }
    wstring sGetFieldLabelAt(int iIndex) const override {
        return Asked(L'w'), tParts.sFields + L"label" + std::to_wstring(iIndex);
    }
    wstring sGetLanguage() const override { return Asked(L'g'), tParts.sLanguage; }
    wstring sGetContent() const override { return Asked(L'c'), tParts.sContent; }
    wstring sGetComment() const override { return Asked(L'k'), tParts.sComment; }
    EObjectType eGetObjectType() const override { return Asked(L't'), tParts.eType; }

private:
    void Asked(wchar_t cQuestion) const {
        if (tParts.psAsked != nullptr) *tParts.psAsked += cQuestion;
    }

    TParts tParts;
};

TZkNote tMake(TParts tParts) {
    return TZkNote(std::make_shared<TStoredNote>(std::move(tParts)));
}

TZkNote tLabelled(wstring sLabel) {
    return tMake({.sLabel = std::move(sLabel)});
}

TZkNote tCopy(TZkNote const & tNote, wstring const & sLabel) {
    return TZkNote(std::make_shared<TZkNoteCopyImpl>(tNote, sLabel));
}

TZkNote::EFunction eFunctions(unsigned int uFunctions) {
    return static_cast<TZkNote::EFunction>(uFunctions);
}

/// The labels of a list.
template <typename TList>
wstring sGetLabels(TList const & tList) {
    wstring sAll;
    for (int i = 0; i < tList.iGetCount(); ++i)
        sAll += tList.tGetNoteAt(i).sGetLabel();
    return sAll;
}

} // namespace

TEST(TZkNote, ShowsTheEmptyDefaultNote) {
    for (TZkNote const & tNote : {TZkNote(), TZkNote::tGetDefaultNote()}) {
        EXPECT_EQ(tNote.eGetFunctions(), 0);
        EXPECT_EQ(tNote.iCountFields(), 0);
        EXPECT_FALSE(tNote.fIsMultiLingual());
        EXPECT_EQ(tNote.sGetLabel(), L"");
        for (int const iIndex : {0, -1, INT_MAX}) {
            EXPECT_EQ(tNote.sGetFieldValueAt(iIndex), L"");
            EXPECT_EQ(tNote.sGetFieldLabelAt(iIndex), L"");
        }
        EXPECT_EQ(tNote.sGetLanguage(), L"");
        EXPECT_EQ(tNote.sGetContent(), L"");
        EXPECT_EQ(tNote.sGetComment(), L"");
        EXPECT_EQ(tNote.eGetObjectType(), eotNone);
        for (unsigned int const uFunctions : {0u, 1u, 0x7FFFFFFFu, 0xFFFFFFFFu})
            EXPECT_FALSE(tNote.fHasFunction(eFunctions(uFunctions)));
    }
    EXPECT_EQ(TZkNote(), TZkNote());
    EXPECT_EQ(TZkNote(), TZkNote::tGetDefaultNote());
}

namespace {

/// The handle is a shared pointer and nothing else, so its words are that of one: where the note lies comes first.
void const * pGetShared(TZkNote const & tNote) {
    static_assert(sizeof(TZkNote) == sizeof(std::shared_ptr<TZkNoteImpl>));
    return reinterpret_cast<std::shared_ptr<TZkNoteImpl> const *>(&tNote)->get();
}

long iCountHandles(TZkNote const & tNote) {
    return reinterpret_cast<std::shared_ptr<TZkNoteImpl> const *>(&tNote)->use_count();
}

} // namespace

TEST(TZkNote, SharesOneDefaultNote) {
    TZkNote const tFirst;
    TZkNote const tSecond;
    EXPECT_EQ(pGetShared(tFirst), pGetShared(tSecond));
    EXPECT_EQ(pGetShared(tFirst), pGetShared(TZkNote::tGetDefaultNote()));
    EXPECT_NE(pGetShared(tFirst), pGetShared(tLabelled(L"")));
}

TEST(TZkNote, LivesAsLongAsAHandleOnIt) {
    auto pStored = std::make_shared<TStoredNote>(TParts{.sLabel = L"A"});
    std::weak_ptr<TStoredNote> const pWatch = pStored;
    TZkNote tKept;
    {
        TZkNote const tNote(std::move(pStored));
        EXPECT_EQ(pWatch.use_count(), 1) << "the pointer is taken, not copied";
        TZkNote const tOther(tNote);
        EXPECT_EQ(pWatch.use_count(), 2);
        tKept = tOther;
        EXPECT_EQ(pWatch.use_count(), 3);
        tKept = *&tKept;
        EXPECT_EQ(pWatch.use_count(), 3);
    }
    EXPECT_EQ(pWatch.use_count(), 1);
    EXPECT_EQ(tKept.sGetLabel(), L"A");
    tKept = TZkNote();
    EXPECT_TRUE(pWatch.expired());
}

TEST(TZkNote, IsNeverEmptyNotEvenAfterAMove) {
    TZkNote tSource = tLabelled(L"A");
    TZkNote const tTarget(std::move(tSource));
    EXPECT_EQ(tTarget.sGetLabel(), L"A");
    EXPECT_EQ(tSource.sGetLabel(), L"A"); // NOLINT(bugprone-use-after-move)
    TZkNote tAssigned;
    tAssigned = std::move(tSource);
    EXPECT_EQ(tSource.sGetLabel(), L"A"); // NOLINT(bugprone-use-after-move)
}

TEST(TZkNote, IsCountedRightOnSeveralThreads) {
    TZkNote const tNote = tLabelled(L"A");
    {
        std::vector<std::jthread> tThreads;
        for (int iThread = 0; iThread < 4; ++iThread)
            tThreads.emplace_back([&tNote] {
                TZkNote tLocal;
                for (int i = 0; i < 50000; ++i) {
                    TZkNote const tOther(tNote);
                    tLocal = tOther;
                    tLocal = TZkNote();
                }
            });
    }
    EXPECT_EQ(iCountHandles(tNote), 1);
    EXPECT_EQ(tNote.sGetLabel(), L"A");
}

TEST(TZkNote, HandsOnTheAnswersOfTheNote) {
    wstring const sOdd = L"\xD800\0\xDC00"s;
    TZkNote const tNote = tMake({.iFunctions = 6,
                                 .iFields = 2,
                                 .fMultiLingual = true,
                                 .sLabel = L"label" + sOdd,
                                 .sLanguage = L"en",
                                 .sContent = sOdd,
                                 .sComment = L"comment",
                                 .eType = eotQuery,
                                 .sFields = L"a "});
    // A copy without a label of its own answers the same.
    for (TZkNote const & tEach : {tNote, tCopy(tNote, L""), tCopy(tCopy(tNote, L""), L"")}) {
        EXPECT_EQ(tEach.eGetFunctions(), 6);
        EXPECT_EQ(tEach.iCountFields(), 2);
        EXPECT_TRUE(tEach.fIsMultiLingual());
        EXPECT_EQ(tEach.sGetLabel(), L"label" + sOdd);
        EXPECT_EQ(tEach.sGetFieldValueAt(1), L"a value1");
        EXPECT_EQ(tEach.sGetFieldLabelAt(-7), L"a label-7");
        EXPECT_EQ(tEach.sGetLanguage(), L"en");
        EXPECT_EQ(tEach.sGetContent(), sOdd);
        EXPECT_EQ(tEach.sGetComment(), L"comment");
        EXPECT_EQ(tEach.eGetObjectType(), eotQuery);
    }
}

TEST(TZkNote, HasAFunctionWithOneBitOfIt) {
    TZkNote const tNote = tMake({.iFunctions = INT_MIN | 6});
    for (unsigned int const uFunctions : {2u, 4u, 6u, 3u, 0x80000000u, 0xFFFFFFFFu})
        EXPECT_TRUE(tNote.fHasFunction(eFunctions(uFunctions))) << uFunctions;
    for (unsigned int const uFunctions : {0u, 1u, 8u, 0x7FFFFFF9u})
        EXPECT_FALSE(tNote.fHasFunction(eFunctions(uFunctions))) << uFunctions;
    EXPECT_TRUE(tNote.fHasFunction(eFunctions(1) | eFunctions(2)));
    EXPECT_FALSE(tNote.fHasFunction(eFunctions(1) | eFunctions(8)));
}

TEST(TZkNoteImpl, ComparesSixPartsInThisOrderUpToTheFirstDifference) {
    TParts const tSame{
        .iFunctions = 1, .iFields = 2, .sLabel = L"l", .sLanguage = L"g", .sContent = L"c", .sComment = L"k"};
    struct TCase {
        wstring sAsked;
        void (*pChange)(TParts & tParts);
    };
    for (TCase const & tCase : {
             TCase{L"f", [](TParts & t) { t.iFunctions = 3; }},
             TCase{L"fn", [](TParts & t) { t.iFields = 0; }},
             TCase{L"fnl", [](TParts & t) { t.sLabel = L"L"; }},
             TCase{L"fnlg", [](TParts & t) { t.sLanguage = L"g\0"s; }},
             TCase{L"fnlgc", [](TParts & t) { t.sContent = L""; }},
             TCase{L"fnlgck", [](TParts & t) { t.sComment = L"\xD800"; }},
         }) {
        wstring sFirst;
        wstring sSecond;
        TParts tFirst = tSame;
        TParts tSecond = tSame;
        tCase.pChange(tSecond);
        tFirst.psAsked = &sFirst;
        tSecond.psAsked = &sSecond;
        EXPECT_NE(tMake(tFirst), tMake(tSecond));
        EXPECT_EQ(sFirst, tCase.sAsked);
        EXPECT_EQ(sSecond, tCase.sAsked);
    }
    wstring sAsked;
    TParts tAsked = tSame;
    tAsked.psAsked = &sAsked;
    EXPECT_EQ(tMake(tAsked), tMake(tSame));
    EXPECT_EQ(sAsked, L"fnlgck");
}

TEST(TZkNoteImpl, IsEqualWhateverTheFieldsHold) {
    TParts const tFirst{.iFields = 1, .sLabel = L"l", .sFields = L"one "};
    TParts const tSecond{.iFields = 1, .fMultiLingual = true, .sLabel = L"l", .eType = eotFolder, .sFields = L"two "};
    EXPECT_EQ(tMake(tFirst), tMake(tSecond));
}

TEST(TZkNoteImpl, IsEqualToANoteOfAnotherClass) {
    EXPECT_EQ(tMake({}), TZkNote());
    EXPECT_EQ(TZkNote(), tMake({.fMultiLingual = true, .eType = eotImage}));
    EXPECT_NE(tLabelled(L"a"), TZkNote());
    TStoredNote const tStored({});
    TZkNoteDefaultImpl const tDefault;
    EXPECT_TRUE(tStored == tDefault);
}

TEST(TZkNoteImpl, HasItsOperationsInThisOrder) {
    std::array const aiSlots{
        zk_test::iVirtualSlot(&TZkNoteImpl::eGetFunctions),    zk_test::iVirtualSlot(&TZkNoteImpl::iCountFields),
        zk_test::iVirtualSlot(&TZkNoteImpl::fIsMultiLingual),  zk_test::iVirtualSlot(&TZkNoteImpl::sGetLabel),
        zk_test::iVirtualSlot(&TZkNoteImpl::sGetFieldValueAt), zk_test::iVirtualSlot(&TZkNoteImpl::sGetFieldLabelAt),
        zk_test::iVirtualSlot(&TZkNoteImpl::sGetLanguage),     zk_test::iVirtualSlot(&TZkNoteImpl::sGetContent),
        zk_test::iVirtualSlot(&TZkNoteImpl::sGetComment),      zk_test::iVirtualSlot(&TZkNoteImpl::eGetObjectType),
    };
    for (int i = 0; i < static_cast<int>(aiSlots.size()); ++i)
        EXPECT_EQ(aiSlots[static_cast<std::size_t>(i)], zk_test::iBehindDestructor + i);
    static_assert(std::has_virtual_destructor_v<TZkNoteImpl>);
    static_assert(std::is_abstract_v<TZkNoteImpl>);
    static_assert(sizeof(TZkNoteImpl) == sizeof(void *));
    static_assert(!std::is_polymorphic_v<TZkNote>);
}

TEST(TZkNoteCopyImpl, PutsItsLabelInPlaceOfTheNotesOwn) {
    TZkNote const tNote = tMake({.iFunctions = 2, .sLabel = L"old", .sContent = L"c"});
    TZkNote const tNew = tCopy(tNote, L"new");
    EXPECT_EQ(tNew.sGetLabel(), L"new");
    EXPECT_EQ(tNote.sGetLabel(), L"old");
    EXPECT_EQ(tNew.sGetContent(), L"c");
    EXPECT_TRUE(tNew.fHasFunction(eFunctions(2)));
    EXPECT_FALSE(tNew.fHasFunction(eFunctions(1)));
    EXPECT_EQ(tCopy(tNew, L"").sGetLabel(), L"new");
    EXPECT_EQ(tCopy(tNote, L"\0"s).sGetLabel(), L"\0"s) << "not empty";
    EXPECT_NE(tNew, tNote);
    EXPECT_EQ(tCopy(tNote, L"old"), tNote);
    EXPECT_EQ(tCopy(tNote, L""), tNote);
}

TEST(TZkNoteCopyImpl, SharesTheNote) {
    TZkNote const tNote = tLabelled(L"A");
    {
        TZkNoteCopyImpl const tFirst(tNote, L"B");
        EXPECT_EQ(iCountHandles(tNote), 2);
        TZkNoteCopyImpl const tSecond(tFirst);
        EXPECT_EQ(iCountHandles(tNote), 3);
        EXPECT_EQ(tSecond.sGetLabel(), L"B");
    }
    EXPECT_EQ(iCountHandles(tNote), 1);
}

TEST(TZkNoteCopyImpl, CopiesAndMovesBothParts) {
    TZkNote const tNote = tMake({.sLabel = L"old", .sContent = L"c"});
    TZkNoteCopyImpl tSource(tNote, L"a label that is too long to lie inside the string itself");
    TZkNoteCopyImpl const tMoved(std::move(tSource));
    EXPECT_EQ(tMoved.sGetLabel(), L"a label that is too long to lie inside the string itself");
    EXPECT_EQ(tMoved.sGetContent(), L"c");

    TZkNoteCopyImpl tTarget(TZkNote(), L"");
    tTarget = tMoved;
    EXPECT_EQ(tTarget.sGetLabel(), tMoved.sGetLabel());
    EXPECT_EQ(tTarget.sGetContent(), L"c");
    tTarget = TZkNoteCopyImpl(tNote, L"");
    EXPECT_EQ(tTarget.sGetLabel(), L"old");
}

TEST(TZkNoteList, AddsInsertsAndRemoves) {
    TZkNoteList tList;
    EXPECT_EQ(tList.iGetCount(), 0);
    EXPECT_FALSE(tList.fIsFilled());
    EXPECT_EQ(tList.Add(tLabelled(L"b")), 1);
    EXPECT_TRUE(tList.fIsFilled());
    EXPECT_EQ(tList.Add(tLabelled(L"d")), 1);
    EXPECT_EQ(tList.AddAt(tLabelled(L"a"), 0), 1);
    EXPECT_EQ(tList.AddAt(tLabelled(L"c"), 2), 1);
    EXPECT_EQ(tList.AddAt(tLabelled(L"e"), 4), 1);
    EXPECT_EQ(sGetLabels(tList), L"abcde");
    tList.Remove(1);
    EXPECT_EQ(sGetLabels(tList), L"acde");
    tList.Flush();
    EXPECT_EQ(tList.iGetCount(), 0);
    EXPECT_FALSE(tList.fIsFilled());
    tList.Add(tLabelled(L"x"));
    EXPECT_EQ(sGetLabels(tList), L"x");
}

TEST(TZkNoteList, RemovesNothingOutsideTheList) {
    TZkNoteList tList;
    tList.Remove(0);
    tList.Add(tLabelled(L"a"));
    tList.Add(tLabelled(L"b"));
    for (int const iIndex : {2, 3, -1, INT_MAX, INT_MIN})
        tList.Remove(iIndex);
    EXPECT_EQ(sGetLabels(tList), L"ab");
}

TEST(TZkNoteList, InsertsNothingBeyondItsEnd) {
    TZkNoteList tList;
    tList.Add(tLabelled(L"a"));
    for (int const iIndex : {2, -1, INT_MAX})
        EXPECT_THROW(tList.AddAt(tLabelled(L"x"), iIndex), std::out_of_range);
    EXPECT_EQ(sGetLabels(tList), L"a");
}

TEST(TZkNoteList, IsSharedByItsCopies) {
    TZkNoteList tList;
    tList.Add(tLabelled(L"a"));
    TZkNoteList tConstructed(tList);
    TZkNoteList tAssigned;
    tAssigned.Add(tLabelled(L"lost"));
    tAssigned = tList;
    tConstructed.Add(tLabelled(L"b"));
    tAssigned.Add(tLabelled(L"c"));
    EXPECT_EQ(sGetLabels(tList), L"abc");
    EXPECT_EQ(sGetLabels(tConstructed), L"abc");
    tList.Flush();
    EXPECT_FALSE(tAssigned.fIsFilled());
    EXPECT_EQ(TZkNoteList().iGetCount(), 0) << "a new list is no copy";
}

TEST(TZkNoteList, TakesTheListOverWhenItIsMoved) {
    TZkNoteList tSource;
    TZkNoteList tOther(tSource);
    TZkNoteList tTarget(std::move(tSource));
    tTarget.Add(tLabelled(L"a"));
    EXPECT_EQ(sGetLabels(tOther), L"a");
    tSource = std::move(tTarget);
    tSource.Add(tLabelled(L"b"));
    EXPECT_EQ(sGetLabels(tOther), L"ab");
    tTarget = tSource; // what was moved from can be assigned to
    EXPECT_EQ(sGetLabels(tTarget), L"ab");
}

TEST(TZkNoteList, KeepsNotesAliveAndLetsThemGo) {
    TZkNote const tNote = tLabelled(L"a");
    {
        TZkNoteList tList;
        tList.Add(tNote);
        tList.Add(tNote);
        EXPECT_EQ(iCountHandles(tNote), 3);
        tList.Remove(0);
        EXPECT_EQ(iCountHandles(tNote), 2);
        EXPECT_EQ(pGetShared(tList.tGetNoteAt(0)), pGetShared(tNote));
    }
    EXPECT_EQ(iCountHandles(tNote), 1);
}

TEST(TZkNoteListImpl, AddsInsertsAndRemoves) {
    TZkNoteListImpl tList;
    EXPECT_EQ(tList.Add(tLabelled(L"b")), 1);
    EXPECT_EQ(tList.AddAt(tLabelled(L"a"), 0), 1);
    EXPECT_EQ(tList.AddAt(tLabelled(L"c"), 2), 1);
    EXPECT_EQ(sGetLabels(tList), L"abc");
    for (int const iIndex : {3, -1, INT_MAX})
        tList.Remove(iIndex);
    EXPECT_EQ(tList.iGetCount(), 3);
    tList.Remove(0);
    EXPECT_EQ(sGetLabels(tList), L"bc");
    tList.Flush();
    EXPECT_EQ(tList.iGetCount(), 0);
}

TEST(TZkNoteListImpl, CopiesTheListAndSharesTheNotes) {
    TZkNote const tNote = tLabelled(L"a");
    TZkNoteListImpl tList;
    tList.Add(tNote);
    TZkNoteListImpl tConstructed(tList);
    TZkNoteListImpl tAssigned;
    tAssigned.Add(tLabelled(L"lost"));
    tAssigned.Add(tLabelled(L"lost"));
    tAssigned = tList;
    EXPECT_EQ(iCountHandles(tNote), 4);
    tConstructed.Add(tLabelled(L"b"));
    tAssigned.Add(tLabelled(L"c"));
    EXPECT_EQ(sGetLabels(tList), L"a");
    EXPECT_EQ(sGetLabels(tConstructed), L"ab");
    EXPECT_EQ(sGetLabels(tAssigned), L"ac");
}

TEST(TZkNoteListImpl, ReplacesByReferenceAndBySetData) {
    TZkNoteListImpl tList;
    for (wchar_t const * pzLabel : {L"a", L"b", L"c"})
        tList.Add(tLabelled(pzLabel));
    tList.SetData(1, tLabelled(L"B"));
    tList[2] = tLabelled(L"C");
    tList.SetData(0, tList[0]);
    EXPECT_EQ(sGetLabels(tList), L"aBC");
    // A note of the list itself.
    tList.Add(tList[0]);
    tList.AddAt(tList[3], 1);
    EXPECT_EQ(sGetLabels(tList), L"aaBCa");
}

TEST(TZkNoteListImpl, CanBeDerivedFrom) {
    static_assert(std::has_virtual_destructor_v<TZkNoteListImpl>);
    static_assert(!std::is_polymorphic_v<TZkNoteList>);
    struct TWatched : TZkNoteListImpl {
        explicit TWatched(bool & fGone_) : fGone(fGone_) {}
        ~TWatched() override { fGone = true; }
        bool & fGone;
    };
    bool fGone = false;
    std::unique_ptr<TZkNoteListImpl>(std::make_unique<TWatched>(fGone)).reset();
    EXPECT_TRUE(fGone);
}

TEST(TZkNoteListImpl, FindsTheFirstEqualNote) {
    TZkNoteListImpl tList;
    TZkNote tWanted = tMake({.iFields = 1, .sLabel = L"b", .sFields = L"other "});
    EXPECT_EQ(tList.iFind(tWanted), iNotFound);
    tList.Add(tLabelled(L"b"));
    EXPECT_EQ(tList.iFind(tWanted), iNotFound) << "the count of fields differs";
    tList.Add(tMake({.iFields = 1, .sLabel = L"b", .sFields = L"some "}));
    tList.Add(tWanted);
    EXPECT_EQ(tList.iFind(tWanted), 1);
}

TEST(TNoteAndNoteField, HoldsTwoNames) {
    TNoteAndNoteField tFirst;
    EXPECT_EQ(tFirst.sNote, L"");
    EXPECT_EQ(tFirst.sNoteField, L"");
    tFirst.sNote = L"\xD800\0"s;
    tFirst.sNoteField = L"field";
    TNoteAndNoteField tSecond(tFirst);
    TNoteAndNoteField const tThird(std::move(tSecond));
    tFirst = tThird;
    EXPECT_EQ(tFirst.sNote, L"\xD800\0"s);
    EXPECT_EQ(tThird.sNoteField, L"field");
}
