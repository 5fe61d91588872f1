#include "tools/zk/Command.h"

#include <algorithm>

TArguments::TArguments(std::span<wchar_t const * const> pzArguments, std::span<TSwitch const> tSwitches) {
    bool fOnlyPlain = false;
    for (auto pNext = pzArguments.begin(); pNext != pzArguments.end(); ++pNext) {
        std::wstring_view const sArgument = *pNext;
        if (fOnlyPlain || !sArgument.starts_with(L"--")) {
            sPlain.emplace_back(sArgument);
        } else if (sArgument == L"--") {
            fOnlyPlain = true;
        } else {
            auto const pSwitch = std::ranges::find(tSwitches, sArgument, &TSwitch::sName);
            if (pSwitch == tSwitches.end()) throw TWrongUsage{std::wstring(sArgument) + L" is unknown."};
            if (pSwitch->fHasValue && ++pNext == pzArguments.end())
                throw TWrongUsage{std::wstring(sArgument) + L" lacks its value."};
            sGiven.emplace_back(pSwitch->sName, pSwitch->fHasValue ? *pNext : L"");
        }
    }
}

std::wstring TArguments::sGet(std::size_t uIndex) const {
    return uIndex < sPlain.size() ? sPlain[uIndex] : std::wstring();
}

std::wstring const * TArguments::psGetValue(std::wstring_view sSwitch) const noexcept {
    auto const pFound =
        std::find_if(sGiven.rbegin(), sGiven.rend(), [&](auto const & t) { return t.first == sSwitch; });
    return pFound != sGiven.rend() ? &pFound->second : nullptr;
}
