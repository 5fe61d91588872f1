#include "ZkTools/Jobs.h"

namespace {

/// One tick of a gauge that runs in a circle.
void Animate(TVeryJobBase & tJob, unsigned int & uTicks, unsigned int & uLastStep, unsigned int uPeriod) {
    ++uTicks;
    unsigned int const uStep = uTicks % uPeriod;
    if (uStep == uLastStep) return;
    // Deliberate: the range goes out with every step, so that the gauge gets it back when the operation has shown
    // something of known length in between.
    tJob.SetRange(static_cast<long>(uPeriod), 0);
    tJob.SetPosition(static_cast<long>(uStep), 0);
    uLastStep = uStep;
}

} // namespace

bool TAuthenticationDummyPrompt::PromptOne(std::uintptr_t, std::uintptr_t, std::uintptr_t, std::uintptr_t) {
    return false;
}

bool TAuthenticationDummyPrompt::PromptTwo(std::uintptr_t, std::uintptr_t, std::uintptr_t) {
    return false;
}

bool TAuthenticationDummyPrompt::PromptThree(std::uintptr_t, std::uintptr_t, std::uintptr_t, std::uintptr_t,
                                             std::uintptr_t, std::uintptr_t, std::uintptr_t, bool * pfResult) {
    *pfResult = false;
    return true;
}

void TAuthenticationDummyPrompt::PromptFour() {}

std::wstring TAuthenticationDummyPrompt::sPromptText() {
    return {};
}

bool TAuthenticationDummyPrompt::fPromptFlag() {
    return true;
}

void TAuthenticationDummyPrompt::PromptFive(std::uintptr_t, std::uintptr_t) {}

void TAuthenticationDummyPrompt::PromptSix(std::uintptr_t) {}

bool TAuthenticationDummyPrompt::PromptSeven(std::uintptr_t, std::uintptr_t, std::uintptr_t, std::uintptr_t) {
    return false;
}

TVeryJobBase::TVeryJobBase() noexcept = default;

TVeryJobBase::~TVeryJobBase() = default;

void TVeryJobBase::SetAborted() {
    SetState(esAborted);
}

std::wstring TVeryJobBase::sGetJobId() const {
    return {};
}

void TVeryJobBase::SetTitle(std::wstring const &) {}

void TVeryJobBase::AnimateProgress() {
    Animate(*this, uTicks, uLastStep, uPeriod);
}

void TVeryJobBase::SendMessageW(std::function<void()> fnCall) {
    fnCall();
}

void TVeryJobBase::I_SetTextInfo(std::wstring const &) {}

void TVeryJobBase::SetTextInfo(std::wstring const & sText) {
    I_SetTextInfo(sText);
    oLastTextInfo = sText;
}

std::optional<std::wstring> TVeryJobBase::sGetLastTextInfo() const {
    return oLastTextInfo;
}

TStandardJob::TStandardJob() noexcept = default;

TStandardJob::~TStandardJob() = default;

bool TStandardJob::fQueryAbort() {
    return false;
}

void TStandardJob::xQueryAbort() {}

TVeryJobBase::EStatus TStandardJob::eGetState() {
    return eState;
}

void TStandardJob::SetState(EStatus eStatus) {
    eState = eStatus;
}

void TStandardJob::SetFinished() {}

void TStandardJob::SetRange(long, int) {}

void TStandardJob::AddSteps(long, int) {}

void TStandardJob::SetPosition(long, int) {}

void TStandardJob::SetGaugeText(wchar_t const *, int) {}

HWND TStandardJob::hGetParentWindow() const {
    return nullptr;
}

HWND TStandardJob::hGetWindow() const {
    return nullptr;
}

void TStandardJob::DetachViews() {}

TIAuthenticationPrompt & TStandardJob::tGetCreatePrompt() {
    static TAuthenticationDummyPrompt tPrompt;
    return tPrompt;
}

TProgressAnimator::TProgressAnimator(TVeryJobBase & tJob_, unsigned int uPeriod_) : tJob(tJob_), uPeriod(uPeriod_) {
    tJob.SetRange(static_cast<long>(uPeriod), 0);
}

void TProgressAnimator::AnimateProgress() {
    Animate(tJob, uTicks, uLastStep, uPeriod);
}
