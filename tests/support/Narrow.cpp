#include "tests/support/Narrow.h"

#include "ZkBase/Windows.h"

namespace zk_test {

std::string sNarrow(std::wstring_view sText) {
    int const iUnits = static_cast<int>(sText.size());
    std::string sResult(sText.size() * 4, '\0');
    int const iBytes = WideCharToMultiByte(CP_THREAD_ACP, 0, sText.data(), iUnits, sResult.data(),
                                           static_cast<int>(sResult.size()), nullptr, nullptr);
    sResult.resize(static_cast<std::size_t>(iBytes));
    return sResult;
}

} // namespace zk_test
