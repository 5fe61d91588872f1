/// The failure of an index outside an array.
#pragma once

#include <stdexcept>
#include <string>

namespace zk_test {

constexpr char const * pzBadIndex = "invalid deque<T> subscript";

/// The text of the out_of_range that the call throws, empty when it throws none.
template <typename TCall>
std::string sOutOfRange(TCall tCall) {
    try {
        tCall();
    } catch (std::out_of_range const & tError) {
        return tError.what();
    }
    return {};
}

} // namespace zk_test
