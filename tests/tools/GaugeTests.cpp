#include "tools/zk/Gauge.h"

#include "ZkTools/Exceptions.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

/// A gauge that draws into a list.
struct TDrawn {
    std::vector<std::wstring> tTexts;
    TGaugeJob tJob{[this](std::wstring_view sText) { tTexts.emplace_back(sText); }};
};

std::wstring sBar(std::size_t uFilled, wchar_t const * pzPercent) {
    return L"\r[" + std::wstring(uFilled, L'#') + std::wstring(40 - uFilled, L'.') + L"] " + pzPercent + L" %";
}

} // namespace

TEST(TGaugeJob, DrawsOnlyWhatChanges) {
    TDrawn tDrawn;
    TVeryJobBase & tJob = tDrawn.tJob;
    tJob.SetPosition(1, 0); // without a range there is nothing to show
    EXPECT_TRUE(tDrawn.tTexts.empty());
    tJob.SetPosition(0, 0);
    tJob.SetRange(1000, 0);
    tJob.SetPosition(1, 0);
    tJob.AddSteps(9, 0);
    tJob.SetPosition(500, 0);
    tJob.AddSteps(500, 0);
    tJob.AddSteps(7, 0); // more than there should be
    EXPECT_EQ(tDrawn.tTexts, (std::vector{sBar(0, L"  0"), sBar(0, L"  1"), sBar(20, L" 50"), sBar(40, L"100")}));
    tJob.SetFinished();
    tJob.SetFinished();
    ASSERT_EQ(tDrawn.tTexts.size(), 5u);
    EXPECT_EQ(tDrawn.tTexts.back(), L"\r" + std::wstring(48, L' ') + L"\r");
}

TEST(TGaugeJob, CountsUpToTheEndOf32Bits) {
    TDrawn tDrawn;
    tDrawn.tJob.SetRange(2147483647, 0);
    tDrawn.tJob.SetPosition(2147483647, 0);
    tDrawn.tJob.SetPosition(-1, 0);
    EXPECT_EQ(tDrawn.tTexts, (std::vector{sBar(0, L"  0"), sBar(40, L"100"), sBar(0, L"  0")}));
}

TEST(TGaugeJob, ShowsOneGauge) {
    TDrawn tDrawn;
    tDrawn.tJob.SetRange(10, 1);
    tDrawn.tJob.SetPosition(5, 1);
    tDrawn.tJob.AddSteps(5, 2);
    tDrawn.tJob.SetAborted();
    EXPECT_TRUE(tDrawn.tTexts.empty());
    EXPECT_EQ(tDrawn.tJob.eGetState(), TVeryJobBase::esAborted);
}

TEST(TGaugeJob, LeavesNothingOnTheLineWhenItEnds) {
    TDrawn tDrawn;
    tDrawn.tJob.SetRange(10, 0);
    tDrawn.tJob.SetAborted();
    EXPECT_EQ(tDrawn.tTexts.back(), L"\r" + std::wstring(48, L' ') + L"\r");
}

TEST(TGaugeJob, ThrowsWhenItIsAskedToEnd) {
    TDrawn tDrawn;
    EXPECT_FALSE(tDrawn.tJob.fQueryAbort());
    EXPECT_NO_THROW(tDrawn.tJob.xQueryAbort());
    tDrawn.tJob.Abort();
    EXPECT_TRUE(tDrawn.tJob.fQueryAbort());
    EXPECT_THROW(tDrawn.tJob.xQueryAbort(), TXZkTools);
}

TEST(TGaugeJob, ShowsNothingWithoutAPlaceToDraw) {
    TGaugeJob tJob({});
    tJob.SetRange(10, 0);
    tJob.SetPosition(5, 0);
    EXPECT_NO_THROW(tJob.SetFinished());
}
