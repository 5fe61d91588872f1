#include "ZkTools/Alias.h"

#include "ZkBase/Text.h"
#include "ZkTools/Strings.h"

#include <cwchar>

namespace {

constexpr wchar_t const * pzDefaultSeparator = L"; ";

std::wstring sTrim(std::wstring_view sValue) {
    return string_functions::sStrip(sValue, string_functions::esBoth, L" ");
}

/// Where `sSeparator` begins in `sText`, at `uFrom` or later; `npos` when it is absent.
/// Deliberate: positions are 16-bit numbers in the tool, and one beyond their range is no position. Long texts that
/// were taken apart so must be taken apart so again.
std::size_t uFindSeparator(std::wstring_view sText, std::wstring_view sSeparator, std::size_t uFrom) noexcept {
    constexpr std::size_t uLastPosition = 32767;
    std::size_t const uFound = sText.find(sSeparator, uFrom);
    return uFound <= uLastPosition ? uFound : std::wstring_view::npos;
}

/// The sign of a comparison by units, as far as the first null character.
int iCompareUnits(std::wstring const & sFirst, std::wstring const & sSecond) noexcept {
    int const iResult = std::wcscmp(sFirst.c_str(), sSecond.c_str());
    return (iResult > 0) - (iResult < 0);
}

} // namespace

TAlias::TAlias(std::wstring_view sTag_) : sTag(sTrim(sTag_)) {}

TAlias::TAlias(std::wstring_view sTag_, std::wstring_view sVersion_) : sTag(sTrim(sTag_)), sVersion(sTrim(sVersion_)) {}

TAlias::TAlias(std::wstring_view sTag_, std::wstring_view sVersion_, std::wstring_view sVariant_)
    : sTag(sTrim(sTag_)), sVersion(sTrim(sVersion_)), sVariant(sTrim(sVariant_)) {}

TAlias::TAlias(TAlias const & tOther) : TAlias(tOther.sTag, tOther.sVersion, tOther.sVariant) {}

TAlias & TAlias::operator=(TAlias const & tOther) {
    Set(tOther);
    return *this;
}

void TAlias::Reset() noexcept {
    sTag.clear();
    sVersion.clear();
    sVariant.clear();
}

void TAlias::SetTag(std::wstring_view sValue) {
    sTag = sTrim(sValue);
}

void TAlias::SetVersion(std::wstring_view sValue) {
    sVersion = sTrim(sValue);
}

void TAlias::SetVariant(std::wstring_view sValue) {
    sVariant = sTrim(sValue);
}

void TAlias::Set(std::wstring const & sTag_, std::wstring const & sVersion_, std::wstring const & sVariant_) {
    SetTag(sTag_);
    SetVersion(sVersion_);
    SetVariant(sVariant_);
}

void TAlias::Set(TAlias const & tOther) {
    Set(tOther.sTag, tOther.sVersion, tOther.sVariant);
}

void TAlias::Set(TOldTagRec const & tRecord) {
    Set(tRecord.sGetTag(), tRecord.sGetVersion(), tRecord.sGetVariant());
}

void TAlias::Set(wchar_t const * pzAlias, wchar_t const * pzSeparator) {
    Reset();
    if (pzAlias == nullptr) return;
    std::wstring_view const sText = pzAlias;
    std::wstring_view const sSeparator = pzSeparator != nullptr ? pzSeparator : pzDefaultSeparator;

    std::size_t const uFirst = uFindSeparator(sText, sSeparator, 0);
    SetTag(sText.substr(0, uFirst));
    if (uFirst == std::wstring_view::npos) return;

    std::size_t const uVersion = uFirst + sSeparator.size();
    std::size_t const uSecond = uFindSeparator(sText, sSeparator, uVersion);
    SetVersion(sText.substr(uVersion, uSecond - uVersion));
    if (uSecond == std::wstring_view::npos) return;

    SetVariant(sText.substr(uSecond + sSeparator.size()));
}

std::wstring TAlias::sGetAlias(wchar_t const * pzSeparator) const {
    std::wstring_view const sSeparator = pzSeparator != nullptr ? pzSeparator : pzDefaultSeparator;
    std::wstring sResult;
    sResult.reserve(sTag.size() + sVersion.size() + sVariant.size() + 2 * sSeparator.size());
    sResult = sTag;
    if (!sVersion.empty() || !sVariant.empty()) sResult.append(sSeparator).append(sVersion);
    if (!sVariant.empty()) sResult.append(sSeparator).append(sVariant);
    return sResult;
}

std::wstring TAlias::sMerge(wchar_t const * pzSeparator) const {
    return sGetAlias(pzSeparator);
}

wchar_t * TAlias::pzMerge(wchar_t * pzTarget, wchar_t const * pzSeparator) const {
    std::wstring const sMerged = sGetAlias(pzSeparator);
    std::wmemcpy(pzTarget, sMerged.c_str(), sMerged.size() + 1);
    return pzTarget;
}

bool TAlias::operator==(TAlias const & tOther) const noexcept {
    return sTag == tOther.sTag && sVersion == tOther.sVersion && sVariant == tOther.sVariant;
}

bool TAlias::operator!=(TAlias const & tOther) const noexcept {
    return !(*this == tOther);
}

bool TAlias::operator<(TAlias const & tOther) const noexcept {
    return iCompare(tOther) < 0;
}

int TAlias::iCompare(TAlias const & tOther) const noexcept {
    if (int const iResult = iCompareUnits(sTag, tOther.sTag); iResult != 0) return iResult;
    if (int const iResult = iCompareUnits(sVersion, tOther.sVersion); iResult != 0) return iResult;
    return iCompareUnits(sVariant, tOther.sVariant);
}

int iNumericAliasCompare(TAlias const & tFirst, TAlias const & tSecond) noexcept {
    if (int const iResult = iNumericStringCompare(tFirst.sGetTag(), tSecond.sGetTag()); iResult != 0) return iResult;
    if (int const iResult = iNumericStringCompare(tFirst.sGetVersion(), tSecond.sGetVersion()); iResult != 0)
        return iResult;
    return iNumericStringCompare(tFirst.sGetVariant(), tSecond.sGetVariant());
}

TAliasLength::TAliasLength(int iTag_, int iVersion_, int iVariant_) noexcept
    : iTag(iTag_), iVersion(iVersion_), iVariant(iVariant_) {}

TAliasLength::TAliasLength(TAlias & tAlias) noexcept
    : iTag(static_cast<int>(tAlias.sGetTag().size())), iVersion(static_cast<int>(tAlias.sGetVersion().size())),
      iVariant(static_cast<int>(tAlias.sGetVariant().size())) {}

bool TAliasLength::fFitInto(TAliasLength & tOther) const noexcept {
    return iTag <= tOther.iTag && iVersion <= tOther.iVersion && iVariant <= tOther.iVariant;
}

TTransferAlias::TTransferAlias(TAlias & tAlias_) noexcept : tAlias(tAlias_) {}
