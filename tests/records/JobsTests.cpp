#include "ZkTools/Jobs.h"

#include "tests/support/VirtualSlot.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <concepts>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

using namespace std::string_literals;
using std::wstring;

namespace {

/// Writes down what it is told.
struct TRecordingJob : TStandardJob {
    std::vector<wstring> sCalls;
    bool fRefuse = false;

    void SetRange(long lRange, int iGauge) override { Record(L"range", lRange, iGauge); }
    void AddSteps(long lSteps, int iGauge) override { Record(L"steps", lSteps, iGauge); }
    void SetPosition(long lPosition, int iGauge) override {
        if (fRefuse) throw std::runtime_error("refused");
        Record(L"position", lPosition, iGauge);
    }
    void SetState(EStatus eStatus) override {
        Record(L"state", eStatus, 0);
        TStandardJob::SetState(eStatus);
    }

    using TVeryJobBase::oLastTextInfo;
    using TVeryJobBase::uLastStep;
    using TVeryJobBase::uPeriod;
    using TVeryJobBase::uTicks;

    /// What it was told since the last question.
    wstring sTake() {
        wstring sAll;
        for (wstring const & sCall : sCalls)
            sAll.append(sAll.empty() ? L"" : L", ").append(sCall);
        sCalls.clear();
        return sAll;
    }

private:
    void Record(wchar_t const * pzWhat, long lValue, int iGauge) {
        sCalls.push_back(pzWhat + (L" " + std::to_wstring(lValue)) + (iGauge != 0 ? L" elsewhere" : L""));
    }

    void I_SetTextInfo(wstring const & sText) override {
        // What stood before is still there: the hook comes first.
        sCalls.push_back(L"text " + sText + L" after " + sGetLastTextInfo().value_or(L"none"));
        if (fRefuse) throw std::runtime_error("refused");
    }
};

/// Opens what derived jobs have.
struct TOpenJob : TStandardJob {
    using TStandardJob::eState;
    using TVeryJobBase::uLastStep;
    using TVeryJobBase::uPeriod;
    using TVeryJobBase::uTicks;
};

/// Opens the hook, whose place in the table is part of the interface.
struct TOpenHook : TVeryJobBase {
    void I_SetTextInfo(wstring const &) override = 0;
};

TVeryJobBase::EStatus eMake(int iStatus) {
    return static_cast<TVeryJobBase::EStatus>(iStatus);
}

} // namespace

TEST(TVeryJobBase, StartsAtZeroWithARoundOfAHundred) {
    TOpenJob const tJob;
    EXPECT_EQ(tJob.uTicks, 0u);
    EXPECT_EQ(tJob.uLastStep, 0u);
    EXPECT_EQ(tJob.uPeriod, 100u);
    EXPECT_EQ(tJob.sGetLastTextInfo(), std::nullopt);
}

TEST(TVeryJobBase, KeepsTheLastTextAfterTheHookHasSeenIt) {
    TRecordingJob tJob;
    tJob.SetTextInfo(L"first");
    EXPECT_EQ(tJob.sGetLastTextInfo(), L"first");
    tJob.SetTextInfo(L"second");
    EXPECT_EQ(tJob.sGetLastTextInfo(), L"second");
    EXPECT_EQ(tJob.sTake(), L"text first after none, text second after first");
    tJob.SetTextInfo(L"");
    EXPECT_EQ(tJob.sGetLastTextInfo(), L"") << "an empty text is a text";
}

TEST(TVeryJobBase, KeepsTextsWhole) {
    TStandardJob tJob;
    wstring const sOdd = L"\xD800 a\0b \xDC00"s;
    tJob.SetTextInfo(sOdd);
    EXPECT_EQ(tJob.sGetLastTextInfo(), sOdd);
}

TEST(TVeryJobBase, DoesNotKeepATextThatTheHookRefused) {
    TRecordingJob tJob;
    tJob.SetTextInfo(L"first");
    tJob.fRefuse = true;
    EXPECT_THROW(tJob.SetTextInfo(L"second"), std::runtime_error);
    EXPECT_EQ(tJob.sGetLastTextInfo(), L"first");
}

TEST(TVeryJobBase, GivesACopyOfTheText) {
    TRecordingJob tJob;
    tJob.SetTextInfo(L"text");
    std::optional<wstring> psText = tJob.sGetLastTextInfo();
    psText->clear();
    EXPECT_EQ(tJob.oLastTextInfo, L"text");
}

TEST(TVeryJobBase, TakesItsOwnTextAgain) {
    TRecordingJob tJob;
    tJob.SetTextInfo(L"a text that is too long to lie inside the string itself");
    tJob.SetTextInfo(*tJob.oLastTextInfo);
    EXPECT_EQ(tJob.sGetLastTextInfo(), L"a text that is too long to lie inside the string itself");
}

TEST(TVeryJobBase, AnimatesByAHundredth) {
    TRecordingJob tJob;
    tJob.AnimateProgress();
    EXPECT_EQ(tJob.sTake(), L"range 100, position 1");
    for (int i = 2; i < 99; ++i)
        tJob.AnimateProgress();
    tJob.sTake();
    tJob.AnimateProgress();
    tJob.AnimateProgress();
    tJob.AnimateProgress();
    EXPECT_EQ(tJob.sTake(), L"range 100, position 99, range 100, position 0, range 100, position 1");
    EXPECT_EQ(tJob.uTicks, 101u);
    EXPECT_EQ(tJob.uLastStep, 1u);
}

TEST(TVeryJobBase, AnimatesOnWhenTheTicksBeginAnew) {
    TRecordingJob tJob;
    tJob.uTicks = UINT_MAX; // 4294967295, position 95
    tJob.uLastStep = 95;
    tJob.AnimateProgress();
    EXPECT_EQ(tJob.uTicks, 0u);
    EXPECT_EQ(tJob.sTake(), L"range 100, position 0");
}

TEST(TVeryJobBase, CountsATickAndNoStepWhenTheGaugeRefuses) {
    TRecordingJob tJob;
    tJob.fRefuse = true;
    EXPECT_THROW(tJob.AnimateProgress(), std::runtime_error);
    EXPECT_EQ(tJob.sTake(), L"range 100");
    EXPECT_EQ(tJob.uTicks, 1u);
    EXPECT_EQ(tJob.uLastStep, 0u);
}

TEST(TVeryJobBase, RunsTheFunctionBeforeItReturns) {
    TStandardJob tJob;
    DWORD dwThread = 0;
    tJob.SendMessageW([&] { dwThread = GetCurrentThreadId(); });
    EXPECT_EQ(dwThread, GetCurrentThreadId());
    EXPECT_THROW(tJob.SendMessageW([] { throw std::out_of_range("from inside"); }), std::out_of_range);
}

TEST(TVeryJobBase, RefusesAnEmptyFunction) {
    TStandardJob tJob;
    EXPECT_THROW(tJob.SendMessageW({}), std::bad_function_call);
    EXPECT_THROW(tJob.SendMessageW(nullptr), std::bad_function_call);
}

TEST(TVeryJobBase, HasItsOperationsInThisOrder) {
    std::array const aiSlots{
        zk_test::iVirtualSlot(&TVeryJobBase::fQueryAbort),     zk_test::iVirtualSlot(&TVeryJobBase::xQueryAbort),
        zk_test::iVirtualSlot(&TVeryJobBase::eGetState),       zk_test::iVirtualSlot(&TVeryJobBase::SetState),
        zk_test::iVirtualSlot(&TVeryJobBase::SetFinished),     zk_test::iVirtualSlot(&TVeryJobBase::SetAborted),
        zk_test::iVirtualSlot(&TVeryJobBase::SetRange),        zk_test::iVirtualSlot(&TVeryJobBase::AddSteps),
        zk_test::iVirtualSlot(&TVeryJobBase::SetPosition),     zk_test::iVirtualSlot(&TVeryJobBase::SetGaugeText),
        zk_test::iVirtualSlot(&TVeryJobBase::sGetJobId),       zk_test::iVirtualSlot(&TVeryJobBase::SetTitle),
        zk_test::iVirtualSlot(&TVeryJobBase::AnimateProgress), zk_test::iVirtualSlot(&TVeryJobBase::hGetParentWindow),
        zk_test::iVirtualSlot(&TVeryJobBase::hGetWindow),      zk_test::iVirtualSlot(&TVeryJobBase::DetachViews),
        zk_test::iVirtualSlot(&TVeryJobBase::SendMessageW),    zk_test::iVirtualSlot(&TVeryJobBase::tGetCreatePrompt),
        zk_test::iVirtualSlot(&TOpenHook::I_SetTextInfo),
    };
    for (int i = 0; i < static_cast<int>(aiSlots.size()); ++i)
        EXPECT_EQ(aiSlots[static_cast<std::size_t>(i)], zk_test::iBehindDestructor + i);
}

TEST(TVeryJobBase, IsAbstractAndNotCopied) {
    static_assert(std::is_abstract_v<TVeryJobBase>);
    static_assert(std::has_virtual_destructor_v<TVeryJobBase>);
    static_assert(!std::copyable<TStandardJob>);
    static_assert(sizeof(TVeryJobBase::EStatus) == 4);
}

TEST(TStandardJob, IsNewAtFirstAndAbortedWhenTold) {
    TOpenJob tJob;
    EXPECT_EQ(tJob.eState, 0);
    EXPECT_EQ(tJob.eGetState(), 0);
    tJob.SetAborted();
    EXPECT_EQ(tJob.eGetState(), 7);
    EXPECT_EQ(tJob.eState, 7);
}

TEST(TStandardJob, KeepsAnyStateAndFinishingChangesNone) {
    TStandardJob tJob;
    for (int const iStatus : {3, -1, INT_MAX}) {
        tJob.SetState(eMake(iStatus));
        tJob.SetFinished();
        EXPECT_EQ(tJob.eGetState(), iStatus);
    }
}

TEST(TStandardJob, AbortsThroughSetState) {
    TRecordingJob tJob;
    tJob.SetAborted();
    EXPECT_EQ(tJob.sTake(), L"state 7");
}

TEST(TStandardJob, WantsNothingAndShowsNothing) {
    TStandardJob tJob;
    tJob.SetAborted();
    EXPECT_FALSE(tJob.fQueryAbort()) << "even when it is aborted";
    EXPECT_NO_THROW(tJob.xQueryAbort());
    tJob.SetRange(10, 0);
    tJob.AddSteps(-1, 3);
    tJob.SetPosition(LONG_MAX, -1);
    tJob.SetGaugeText(nullptr, 0);
    tJob.SetTitle(L"title");
    tJob.DetachViews();
    EXPECT_EQ(tJob.sGetJobId(), L"");
    EXPECT_EQ(tJob.hGetParentWindow(), nullptr);
    EXPECT_EQ(tJob.hGetWindow(), nullptr);
    EXPECT_EQ(tJob.sGetLastTextInfo(), std::nullopt);
    EXPECT_EQ(tJob.eGetState(), TVeryJobBase::esAborted);
}

TEST(TStandardJob, SharesOnePromptWithAllOthers) {
    TStandardJob tFirst;
    TStandardJob tSecond;
    EXPECT_EQ(&tFirst.tGetCreatePrompt(), &tSecond.tGetCreatePrompt());
    EXPECT_NE(dynamic_cast<TAuthenticationDummyPrompt *>(&tFirst.tGetCreatePrompt()), nullptr);
}

TEST(TAuthenticationDummyPrompt, HasNoCredentialsAndWantsNoFurtherTry) {
    TStandardJob tJob;
    TIAuthenticationPrompt & tPrompt = tJob.tGetCreatePrompt();
    EXPECT_FALSE(tPrompt.PromptOne(1, 2, 3, 4));
    EXPECT_FALSE(tPrompt.PromptTwo(1, 2, 3));
    bool fAnswer = true;
    EXPECT_TRUE(tPrompt.PromptThree(1, 2, 3, 4, 5, 6, 7, &fAnswer));
    EXPECT_FALSE(fAnswer);
    tPrompt.PromptFour();
    EXPECT_EQ(tPrompt.sPromptText(), L"");
    EXPECT_TRUE(tPrompt.fPromptFlag());
    tPrompt.PromptFive(1, 2);
    tPrompt.PromptSix(1);
    EXPECT_FALSE(tPrompt.PromptSeven(1, 2, 3, 4));
}

TEST(TAuthenticationDummyPrompt, CanBeDerivedFrom) {
    struct TNamed : TAuthenticationDummyPrompt {
        std::wstring sPromptText() override { return L"name"; }
    } tNamed;
    TIAuthenticationPrompt & tPrompt = tNamed;
    EXPECT_EQ(tPrompt.sPromptText(), L"name");
    EXPECT_TRUE(tPrompt.fPromptFlag());
}

TEST(TIAuthenticationPrompt, HasNineOperationsAndNoVirtualDestructor) {
    using T = TIAuthenticationPrompt;
    std::array const aiSlots{
        zk_test::iVirtualSlot(&T::PromptOne),   zk_test::iVirtualSlot(&T::PromptTwo),
        zk_test::iVirtualSlot(&T::PromptThree), zk_test::iVirtualSlot(&T::PromptFour),
        zk_test::iVirtualSlot(&T::sPromptText), zk_test::iVirtualSlot(&T::fPromptFlag),
        zk_test::iVirtualSlot(&T::PromptFive),  zk_test::iVirtualSlot(&T::PromptSix),
        zk_test::iVirtualSlot(&T::PromptSeven),
    };
    for (int i = 0; i < static_cast<int>(aiSlots.size()); ++i)
        EXPECT_EQ(aiSlots[static_cast<std::size_t>(i)], i);
    static_assert(!std::has_virtual_destructor_v<T>);
}

TEST(TProgressAnimator, SetsTheRangeOnceAndThenWithEachStep) {
    TRecordingJob tJob;
    TProgressAnimator tAnimator(tJob, 3);
    EXPECT_EQ(tJob.sTake(), L"range 3");
    for (wchar_t const * pzExpected :
         {L"range 3, position 1", L"range 3, position 2", L"range 3, position 0", L"range 3, position 1"}) {
        tAnimator.AnimateProgress();
        EXPECT_EQ(tJob.sTake(), pzExpected);
    }
}

TEST(TProgressAnimator, MovesNothingWithAPeriodOfOne) {
    TRecordingJob tJob;
    TProgressAnimator tAnimator(tJob, 1);
    tJob.sTake();
    tAnimator.AnimateProgress();
    tAnimator.AnimateProgress();
    EXPECT_EQ(tJob.sTake(), L"");
}

TEST(TProgressAnimator, CountsApartFromTheJobAndFromOthers) {
    TRecordingJob tJob;
    TProgressAnimator tFirst(tJob, 5);
    TProgressAnimator tSecond(tJob, 7);
    tFirst.AnimateProgress();
    tFirst.AnimateProgress();
    tJob.AnimateProgress();
    tJob.sTake();
    tSecond.AnimateProgress();
    EXPECT_EQ(tJob.sTake(), L"range 7, position 1");
    tFirst.AnimateProgress();
    EXPECT_EQ(tJob.sTake(), L"range 5, position 3");
    EXPECT_EQ(tJob.uTicks, 1u);
    EXPECT_EQ(tJob.uPeriod, 100u);
}

TEST(TProgressAnimator, HandsAPeriodAboveTheRangeOfALongOnAsItsBits) {
    TRecordingJob tJob;
    TProgressAnimator tAnimator(tJob, UINT_MAX);
    EXPECT_EQ(tJob.sTake(), L"range -1");
    tAnimator.AnimateProgress();
    EXPECT_EQ(tJob.sTake(), L"range -1, position 1");
}
