#include "ZkTools/Containers.h"

#include <algorithm>
#include <iterator>

TZkStringArray::TZkStringArray(int, int) : TArrayAsVector(0) {}
TZkStringArray::TZkStringArray(TZkStringArray const &) = default;
TZkStringArray & TZkStringArray::operator=(TZkStringArray const &) = default;
TZkStringArray::~TZkStringArray() = default;

bool TZkStringArray::Detach(std::wstring const & sValue) {
    return DetachValue(sValue);
}

bool TZkStringArray::Destroy(std::wstring const & sValue) {
    return DetachValue(sValue);
}

bool TZkStringArray::operator==(TZkStringArray const & tOther) const noexcept {
    if (GetItemsInContainer() != tOther.GetItemsInContainer()) return false;
    return std::equal(std::make_reverse_iterator(end()), std::make_reverse_iterator(begin()),
                      std::make_reverse_iterator(tOther.end()));
}
