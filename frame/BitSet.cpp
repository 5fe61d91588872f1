#include "ZkTools/Containers.h"

#include <algorithm>

TZkBitSet & TZkBitSet::operator+=(unsigned char uItem) noexcept {
    EnableItem(uItem);
    return *this;
}

TZkBitSet & TZkBitSet::operator-=(unsigned char uItem) noexcept {
    DisableItem(uItem);
    return *this;
}

void TZkBitSet::EnableItem(unsigned char uItem) noexcept {
    aucBits[Loc(uItem)] |= Mask(uItem);
}

void TZkBitSet::DisableItem(unsigned char uItem) noexcept {
    aucBits[Loc(uItem)] &= static_cast<unsigned char>(~Mask(uItem));
}

void TZkBitSet::SetItem(unsigned char uItem, bool fEnabled) noexcept {
    if (fEnabled) {
        EnableItem(uItem);
    } else {
        DisableItem(uItem);
    }
}

TZkBitSet & TZkBitSet::operator+=(TZkBitSet const & tOther) noexcept {
    return *this |= tOther;
}

TZkBitSet & TZkBitSet::operator|=(TZkBitSet const & tOther) noexcept {
    for (std::size_t i = 0; i < aucBits.size(); ++i)
        aucBits[i] |= tOther.aucBits[i];
    return *this;
}

void TZkBitSet::EnableItem(TZkBitSet const & tOther) noexcept {
    *this |= tOther;
}

TZkBitSet & TZkBitSet::operator-=(TZkBitSet const & tOther) noexcept {
    return *this &= ~tOther;
}

void TZkBitSet::DisableItem(TZkBitSet const & tOther) noexcept {
    *this -= tOther;
}

TZkBitSet & TZkBitSet::operator&=(TZkBitSet const & tOther) noexcept {
    for (std::size_t i = 0; i < aucBits.size(); ++i)
        aucBits[i] &= tOther.aucBits[i];
    return *this;
}

TZkBitSet TZkBitSet::operator~() const noexcept {
    TZkBitSet tResult;
    for (std::size_t i = 0; i < aucBits.size(); ++i)
        tResult.aucBits[i] = static_cast<unsigned char>(~aucBits[i]);
    return tResult;
}

int TZkBitSet::Has(unsigned char uItem) const noexcept {
    return (aucBits[Loc(uItem)] & Mask(uItem)) != 0 ? 1 : 0;
}

void TZkBitSet::SetAll() noexcept {
    aucBits.fill(255);
}

void TZkBitSet::ResetAll() noexcept {
    aucBits.fill(0);
}

bool TZkBitSet::IsEmpty() const noexcept {
    return *this == TZkBitSet();
}

bool TZkBitSet::operator==(TZkBitSet const & tOther) const noexcept {
    return aucBits == tOther.aucBits;
}

bool TZkBitSet::operator!=(TZkBitSet const & tOther) const noexcept {
    return !(*this == tOther);
}

void TZkBitSet::ForEachEnabledItem(std::function<bool(unsigned char)> tFunction) const {
    for (unsigned int uByte = 0; uByte < aucBits.size(); ++uByte) {
        if (aucBits[uByte] == 0) continue;
        for (unsigned int uItem = uByte * 8; uItem < uByte * 8 + 8; ++uItem)
            if (Has(static_cast<unsigned char>(uItem)) != 0) tFunction(static_cast<unsigned char>(uItem));
    }
}
