/// Jobs: how a long operation talks to whoever watches it, with progress, text, state, abort, and a prompt for
/// credentials.
///
/// The operation is handed a `TVeryJobBase` and reports to it; the layers above derive the jobs that have windows, and
/// `TStandardJob` is for running without any. This library's own functions report to no job.
///
/// A job belongs to one thread at a time.
#pragma once

#include "ZkBase/Windows.h"
#include "ZkTools/Export.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

/// Asks the user for credentials. What each operation asks, and what its words mean, is agreed between the jobs and
/// operations of the layers above; this library knows only what the dummy answers.
struct TIAuthenticationPrompt {
    virtual bool PromptOne(std::uintptr_t u1, std::uintptr_t u2, std::uintptr_t u3, std::uintptr_t u4) = 0;
    virtual bool PromptTwo(std::uintptr_t u1, std::uintptr_t u2, std::uintptr_t u3) = 0;
    /// \param pfResult takes an answer of its own, beside the one given back
    virtual bool PromptThree(std::uintptr_t u1, std::uintptr_t u2, std::uintptr_t u3, std::uintptr_t u4,
                             std::uintptr_t u5, std::uintptr_t u6, std::uintptr_t u7, bool * pfResult) = 0;
    virtual void PromptFour() = 0;
    virtual std::wstring sPromptText() = 0;
    virtual bool fPromptFlag() = 0;
    virtual void PromptFive(std::uintptr_t u1, std::uintptr_t u2) = 0;
    virtual void PromptSix(std::uintptr_t u1) = 0;
    virtual bool PromptSeven(std::uintptr_t u1, std::uintptr_t u2, std::uintptr_t u3, std::uintptr_t u4) = 0;

protected:
    // A prompt is not deleted through the interface.
    ~TIAuthenticationPrompt() = default;
};

/// The prompt that asks nobody: no credentials, no further try.
class ZKTOOLS_API TAuthenticationDummyPrompt : public TIAuthenticationPrompt {
public:
    /// False.
    bool PromptOne(std::uintptr_t u1, std::uintptr_t u2, std::uintptr_t u3, std::uintptr_t u4) override;
    /// False.
    bool PromptTwo(std::uintptr_t u1, std::uintptr_t u2, std::uintptr_t u3) override;
    /// True; `*pfResult` is false afterwards.
    bool PromptThree(std::uintptr_t u1, std::uintptr_t u2, std::uintptr_t u3, std::uintptr_t u4, std::uintptr_t u5,
                     std::uintptr_t u6, std::uintptr_t u7, bool * pfResult) override;
    void PromptFour() override;
    /// Empty.
    std::wstring sPromptText() override;
    /// True.
    bool fPromptFlag() override;
    void PromptFive(std::uintptr_t u1, std::uintptr_t u2) override;
    void PromptSix(std::uintptr_t u1) override;
    /// False.
    bool PromptSeven(std::uintptr_t u1, std::uintptr_t u2, std::uintptr_t u3, std::uintptr_t u4) override;
};

/// What a long operation reports to. A job may have several gauges, numbered from 0.
class ZKTOOLS_API TVeryJobBase {
public:
    /// The state of a job. The values between and behind are the business of the layers above.
    enum EStatus : int {
        esNew = 0,
        esAborted = 7,
    };

    TVeryJobBase() noexcept;
    TVeryJobBase(TVeryJobBase const &) = delete;
    TVeryJobBase & operator=(TVeryJobBase const &) = delete;

    virtual ~TVeryJobBase();
    /// True when the operation should end.
    virtual bool fQueryAbort() = 0;
    /// Throws when the operation should end.
    virtual void xQueryAbort() = 0;
    virtual EStatus eGetState() = 0;
    virtual void SetState(EStatus eStatus) = 0;
    virtual void SetFinished() = 0;
    /// `SetState(esAborted)` here.
    virtual void SetAborted();
    /// The length of the work, in steps of the operation's choice.
    virtual void SetRange(long lRange, int iGauge) = 0;
    virtual void AddSteps(long lSteps, int iGauge) = 0;
    virtual void SetPosition(long lPosition, int iGauge) = 0;
    virtual void SetGaugeText(wchar_t const * pzText, int iGauge) = 0;
    /// Empty here.
    virtual std::wstring sGetJobId() const;
    /// Does nothing here.
    virtual void SetTitle(std::wstring const & sTitle);
    /// Moves gauge 0 on by a hundredth of a round, for work of unknown length. Calls `SetRange`, then `SetPosition`,
    /// each time.
    virtual void AnimateProgress();
    virtual HWND hGetParentWindow() const = 0;
    virtual HWND hGetWindow() const = 0;
    /// Parts the job from its windows.
    virtual void DetachViews() = 0;
    /// Calls the function. Here it has run on the caller's thread when this returns; a job with a window may send it to
    /// the thread of that.
    /// \throws std::bad_function_call for an empty function, and whatever the function throws
    virtual void SendMessageW(std::function<void()> fnCall);
    /// The prompt belongs to the job.
    virtual TIAuthenticationPrompt & tGetCreatePrompt() = 0;

    /// Shows the text, and keeps it. One that could not be shown is not kept.
    void SetTextInfo(std::wstring const & sText);
    /// The text last kept; nothing when there was none so far.
    [[nodiscard]] std::optional<std::wstring> sGetLastTextInfo() const;

protected:
    unsigned int uTicks = 0;    ///< how often `AnimateProgress` ran
    unsigned int uLastStep = 0; ///< the position that it showed last
    unsigned int uPeriod = 100; ///< the length of its round
    std::optional<std::wstring> oLastTextInfo;

private:
    /// Shows a text. Does nothing here.
    virtual void I_SetTextInfo(std::wstring const & sText);
};

/// The job without a user interface: shows nothing, asks nothing, never wants to end.
class ZKTOOLS_API TStandardJob : public TVeryJobBase {
public:
    TStandardJob() noexcept;

    ~TStandardJob() override;
    /// False.
    bool fQueryAbort() override;
    void xQueryAbort() override;
    /// What `SetState` set; `esNew` at first.
    EStatus eGetState() override;
    void SetState(EStatus eStatus) override;
    /// Does nothing: the state stays.
    void SetFinished() override;
    void SetRange(long lRange, int iGauge) override;
    void AddSteps(long lSteps, int iGauge) override;
    void SetPosition(long lPosition, int iGauge) override;
    void SetGaugeText(wchar_t const * pzText, int iGauge) override;
    /// Null.
    HWND hGetParentWindow() const override;
    /// Null.
    HWND hGetWindow() const override;
    void DetachViews() override;
    /// The one `TAuthenticationDummyPrompt` that all such jobs share. It lives as long as the library is loaded.
    TIAuthenticationPrompt & tGetCreatePrompt() override;

protected:
    EStatus eState = esNew;
};

/// Moves gauge 0 of a job in a circle while the length of the work is unknown.
class ZKTOOLS_API TProgressAnimator {
public:
    /// Sets the range of the gauge.
    /// \param tJob    outlives this object
    /// \param uPeriod the length of a round, above 0
    TProgressAnimator(TVeryJobBase & tJob, unsigned int uPeriod);

    /// Moves the gauge on by one: 1, 2 and so on up to the period minus one, then from 0 again. Calls `SetRange`, then
    /// `SetPosition`, each time; with a period of 1 nothing moves, and neither is called.
    void AnimateProgress();

private:
    TVeryJobBase & tJob;
    unsigned int uTicks = 0;
    unsigned int uLastStep = 0;
    unsigned int uPeriod;
};
