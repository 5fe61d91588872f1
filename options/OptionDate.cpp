// Dates in the text of an element.
#include "ZkTools/DateTime.h"
#include "ZkTools/OptionTree.h"

void TOptionElement::Read(tm & tValue) const {
    tValue = TZkDateTime::create(sText).value_or(TZkDateTime());
}

void TOptionElement::Write(tm const & tValue) {
    sText = TZkDateTime(tValue).sGetString(edtDateTime, false);
}

void TStructTm::Read(TOptionElement const & tElement) {
    tElement.Read(*this);
}

void TStructTm::Write(TOptionElement & tElement) const {
    tElement.Write(*this);
}
