#include "tools/zk/Gauge.h"

#include "ZkTools/Exceptions.h"

#include <algorithm>

namespace {

constexpr std::size_t uWidth = 40; // characters of the bar

/// "[####....]  50 %"
std::wstring sMakeBar(long lPosition, long lRange) {
    long long const llDone = std::clamp<long long>(lPosition, 0, lRange);
    auto const uFilled = static_cast<std::size_t>(llDone * static_cast<long long>(uWidth) / lRange);
    std::wstring sPercent = std::to_wstring(llDone * 100 / lRange);
    sPercent.insert(0, 3 - sPercent.size(), L' ');
    std::wstring sBar(1, L'[');
    sBar.append(uFilled, L'#').append(uWidth - uFilled, L'.');
    return sBar.append(L"] ").append(sPercent).append(L" %");
}

} // namespace

void TGaugeJob::xQueryAbort() {
    if (fAbort) throw TXZkTools(L"Stopped before the end.");
}

void TGaugeJob::SetRange(long lNewRange, int iGauge) {
    if (iGauge != 0) return;
    lRange = lNewRange;
    Draw();
}

void TGaugeJob::AddSteps(long lSteps, int iGauge) {
    SetPosition(lPosition + lSteps, iGauge);
}

void TGaugeJob::SetPosition(long lNewPosition, int iGauge) {
    if (iGauge != 0) return;
    lPosition = lNewPosition;
    Draw();
}

void TGaugeJob::SetFinished() {
    Clear();
}

void TGaugeJob::SetAborted() {
    TStandardJob::SetAborted();
    Clear();
}

void TGaugeJob::Draw() {
    if (!fnDraw || lRange <= 0) return;
    std::wstring sBar = sMakeBar(lPosition, lRange);
    if (sBar == sShown) return;
    fnDraw(L"\r" + sBar);
    sShown = std::move(sBar);
}

void TGaugeJob::Clear() {
    if (sShown.empty()) return;
    fnDraw(L"\r" + std::wstring(sShown.size(), L' ') + L"\r");
    sShown.clear();
}

TGaugeJob::TDraw fnDrawOnTerminal() {
    HANDLE const hConsole = GetStdHandle(STD_ERROR_HANDLE);
    DWORD dwMode = 0;
    if (!GetConsoleMode(hConsole, &dwMode)) return {};
    return [hConsole](std::wstring_view sText) {
        DWORD dwWritten = 0;
        WriteConsoleW(hConsole, sText.data(), static_cast<DWORD>(sText.size()), &dwWritten, nullptr);
    };
}
