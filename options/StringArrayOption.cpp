// What an array of strings is in an option tree.
#include "ZkTools/Containers.h"

#include "ZkTools/OptionTree.h"

void TZkStringArray::Read(TOptionElement const & tElement) {
    Flush();
    for (TOptionElement const * const pChild : *tElement.pElements)
        Add(pChild->sText);
}

void TZkStringArray::Write(TOptionElement & tElement) const {
    for (std::wstring const & sText : *this)
        (tElement + L"String").sText = sText;
}
