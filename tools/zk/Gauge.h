// A job that shows how far it is on one line of a terminal.
#pragma once

#include "ZkTools/Jobs.h"

#include <atomic>
#include <functional>
#include <string>
#include <string_view>

/// Draws gauge 0 whenever what it shows changes. The line is drawn over itself; `SetFinished` and `SetAborted` clear
/// it.
class TGaugeJob : public TStandardJob {
public:
    using TDraw = std::function<void(std::wstring_view)>;

    /// \param fnDraw_ writes a text as it stands, for instance to a console. With an empty one nothing is shown.
    explicit TGaugeJob(TDraw fnDraw_) : fnDraw(std::move(fnDraw_)) {}

    /// Asks the operation to end; from any thread.
    void Abort() noexcept { fAbort = true; }

    bool fQueryAbort() override { return fAbort; }
    /// \throws TXZkTools once `Abort` was called
    void xQueryAbort() override;
    void SetRange(long lNewRange, int iGauge) override;
    void AddSteps(long lSteps, int iGauge) override;
    void SetPosition(long lNewPosition, int iGauge) override;
    void SetFinished() override;
    void SetAborted() override;

private:
    void Draw();
    void Clear();

    TDraw fnDraw;
    std::atomic<bool> fAbort = false;
    std::wstring sShown;
    long lRange = 0;
    long lPosition = 0;
};

/// Draws on the console that the standard error stream is; empty when it is none.
[[nodiscard]] TGaugeJob::TDraw fnDrawOnTerminal();
