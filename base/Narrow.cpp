#include "base/Narrow.h"

#include "ZkBase/Windows.h"

std::string sNarrow(std::wstring_view sText) {
    if (sText.empty()) return {};
    int const iUnits = static_cast<int>(sText.size());
    int const iBytes = WideCharToMultiByte(CP_THREAD_ACP, 0, sText.data(), iUnits, nullptr, 0, nullptr, nullptr);
    std::string sResult(static_cast<std::size_t>(iBytes), '\0');
    WideCharToMultiByte(CP_THREAD_ACP, 0, sText.data(), iUnits, sResult.data(), iBytes, nullptr, nullptr);
    return sResult;
}
