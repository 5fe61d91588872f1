#include "ZkTools/Fonts.h"

#include <algorithm>
#include <cwchar>
#include <iterator>

namespace {

/// The parts of `lfPitchAndFamily`.
constexpr int iPitchBits = 3;
constexpr int iFamilyBits = 240;

/// The same for a byte that comes without a `LOGFONTW`.
constexpr int iBarePitchBits = 59;
constexpr int iBareFamilyBits = 11;

constexpr unsigned char bMask(unsigned char bValue, int iBits) noexcept {
    return static_cast<unsigned char>(bValue & iBits);
}

} // namespace

TFontEntry::TFontEntry(unsigned char bPitch_, unsigned char bFamily_, unsigned char bCharSet_,
                       wchar_t const * pzName_) noexcept
    : bPitch(bPitch_), bFamily(bFamily_), bCharSet(bCharSet_) {
    if (pzName_ != nullptr) std::copy_n(pzName_, wcsnlen(pzName_, std::size(pzName) - 1), pzName);
}

TFontEntry::TFontEntry(unsigned char bPitchAndFamily, unsigned char bCharSet_, wchar_t const * pzName_) noexcept
    : TFontEntry(bMask(bPitchAndFamily, iBarePitchBits), bMask(bPitchAndFamily, iBareFamilyBits), bCharSet_, pzName_) {}

TFontEntry::TFontEntry(tagLOGFONTW & tFont) noexcept
    : TFontEntry(bMask(tFont.lfPitchAndFamily, iPitchBits), bMask(tFont.lfPitchAndFamily, iFamilyBits), tFont.lfCharSet,
                 tFont.lfFaceName) {}

bool TFontEntry::operator==(TFontEntry const & tOther) const noexcept {
    return std::wcscmp(pzName, tOther.pzName) == 0 && bCharSet == tOther.bCharSet && bPitch == tOther.bPitch &&
           bFamily == tOther.bFamily;
}

unsigned char TFontEntry::bGetPitchAndFamily() const noexcept {
    return static_cast<unsigned char>((bFamily | bPitch) & (iFamilyBits | iPitchBits));
}

TFontTable::TFontTable() : pEntries(new std::list<TFontEntry>) {}

TFontTable & TFontTable::operator=(TFontTable const & tOther) noexcept = default;

TFontTable::~TFontTable() {
    FlushFontList();
    delete pEntries;
}

void TFontTable::AddEntry(tagLOGFONTW & tFont) {
    TFontEntry const tEntry(tFont);
    if (std::ranges::find(*pEntries, tEntry) == pEntries->end()) pEntries->push_back(tEntry);
}

int TFontTable::iGetNumberOfEntries() const noexcept {
    return static_cast<int>(pEntries->size());
}

void TFontTable::CountFonts() noexcept {
    int iNumber = 0;
    for (TFontEntry & tEntry : *pEntries)
        tEntry.iNumber = ++iNumber;
}

int TFontTable::iGetFontNumber(tagLOGFONTW & tFont) const noexcept {
    auto const pFound = std::ranges::find(*pEntries, TFontEntry(tFont));
    return pFound != pEntries->end() ? pFound->iNumber : -1;
}

TFontEntry * TFontTable::GetFontEntry(int iNumber) const noexcept {
    auto const pFound = std::ranges::find(*pEntries, iNumber, &TFontEntry::iNumber);
    return pFound != pEntries->end() ? &*pFound : nullptr;
}

tagLOGFONTW & TFontTable::SetEntry(tagLOGFONTW & tFont, int iNumber) const noexcept {
    if (TFontEntry const * const pEntry = GetFontEntry(iNumber)) {
        tFont.lfPitchAndFamily = pEntry->bGetPitchAndFamily();
        tFont.lfCharSet = pEntry->bCharSet;
        std::ranges::copy(pEntry->pzName, tFont.lfFaceName);
    }
    return tFont;
}

void TFontTable::FlushFontList() noexcept {
    pEntries->clear();
}
