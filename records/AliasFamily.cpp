// What stands around an alias: a directory, a search context.
#include "ZkTools/Alias.h"

#include <utility>

TFullAlias::TFullAlias(TAlias const & tAlias, std::wstring const & sDirectory_)
    : TAlias(tAlias), sDirectory(sDirectory_) {}

int TFullAlias::iCompare(TFullAlias const & tOther) const noexcept {
    if (int const iResult = TAlias::iCompare(tOther); iResult != 0) return iResult;
    int const iResult = sDirectory.compare(tOther.sDirectory);
    return (iResult > 0) - (iResult < 0);
}

bool TFullAlias::operator<(TFullAlias const & tOther) const noexcept {
    return iCompare(tOther) < 0;
}

bool TFullAlias::operator==(TFullAlias const & tOther) const noexcept {
    return iCompare(tOther) == 0;
}

bool TFullAlias::operator!=(TFullAlias const & tOther) const noexcept {
    return iCompare(tOther) != 0;
}

bool TFullAlias::fIsEmpty() const noexcept {
    return TAlias::fIsEmpty() || sDirectory.empty();
}

bool TFullAlias::fIsFilled() const noexcept {
    return !fIsEmpty();
}

TSearchContext::TSearchContext(std::wstring sText_) : sText(std::move(sText_)) {}

TSearchContext::TSearchContext(TSearchContext && tOther) noexcept : sText(std::exchange(tOther.sText, {})) {}

TSearchContext & TSearchContext::operator=(TSearchContext && tOther) noexcept {
    if (this != &tOther) sText = std::exchange(tOther.sText, {});
    return *this;
}

bool TSearchContext::operator==(TSearchContext const & tOther) const noexcept {
    return sText == tOther.sText;
}

TCntxtAlias::TCntxtAlias(TAlias const & tAlias, TSearchContext tContext, int iType_)
    : TAlias(tAlias), tSearchContext(std::move(tContext)), iType(iType_) {}

TCntxtAlias::TCntxtAlias(TCntxtAlias && tOther)
    : TAlias(tOther), tSearchContext(std::move(tOther.tSearchContext)), iType(tOther.iType) {}

TCntxtAlias & TCntxtAlias::operator=(TCntxtAlias && tOther) {
    TAlias::operator=(tOther);
    tSearchContext = std::move(tOther.tSearchContext);
    iType = tOther.iType;
    return *this;
}

void TCntxtAlias::SetSearchContext(TSearchContext tContext) {
    tSearchContext = std::move(tContext);
}

TSearchContext TCntxtAlias::GetSearchContext() const {
    return tSearchContext;
}

bool TCntxtAlias::operator==(TCntxtAlias const & tOther) const noexcept {
    return TAlias::operator==(tOther) && iType == tOther.iType && tSearchContext == tOther.tSearchContext;
}
