#include "ZkTools/Languages.h"

#include "ZkBase/Text.h"
#include "ZkBase/Windows.h"
#include "ZkTools/MessageIds.h"
#include "ZkTools/OptionTree.h"
#include "frame/Library.h"

#include <algorithm>
#include <cwchar>
#include <exception>
#include <limits>
#include <memory>
#include <optional>
#include <string_view>
#include <tuple>

namespace {

/// All of the table is made of 16-bit units.
struct TEntry {
    wchar_t const * pzCode;
    wchar_t const * pzName;
    short iOrder;
};

/// Takes a text with its terminator off the table; null when the table ends in it.
wchar_t const * pzTakeText(std::wstring_view & sTable) noexcept {
    std::size_t const uEnd = sTable.find(L'\0');
    if (uEnd == std::wstring_view::npos) return nullptr;
    wchar_t const * const pzText = sTable.data();
    sTable.remove_prefix(uEnd + 1);
    return pzText;
}

std::optional<short> oTakeNumber(std::wstring_view & sTable) noexcept {
    if (sTable.empty()) return std::nullopt;
    auto const iNumber = static_cast<short>(sTable.front());
    sTable.remove_prefix(1);
    return iNumber;
}

/// Nothing when the table ends in the entry.
std::optional<TEntry> oTakeEntry(std::wstring_view & sTable) noexcept {
    wchar_t const * const pzCode = pzTakeText(sTable);
    wchar_t const * const pzName = pzCode != nullptr ? pzTakeText(sTable) : nullptr;
    std::optional<short> const oOrder = pzName != nullptr ? oTakeNumber(sTable) : std::nullopt;
    if (!oOrder) return std::nullopt;
    return TEntry{pzCode, pzName, *oOrder};
}

/// Copies a text into the room that a language has for it.
template <std::size_t uSize>
void Put(wchar_t (&szTarget)[uSize], wchar_t const * pzText) noexcept {
    // The run-time ends the process when the text does not fit, unless somebody told it to go on: there is no going on.
    if (wcscpy_s(szTarget, uSize, pzText) != 0) std::terminate();
}

} // namespace

TLangArray & TLangArray::Instance() {
    static TLangArray tInstance;
    return tInstance;
}

unsigned int TLangArray::iGetCount() const noexcept {
    return static_cast<unsigned int>(tLanguages.size());
}

TLangAssoc const & TLangArray::operator[](unsigned int uIndex) const noexcept {
    return tLanguages[uIndex];
}

wchar_t const * TLangArray::pzGetName(wchar_t const * pzCode) const {
    auto const pFound = tCodes.find(pzCode);
    return pFound != tCodes.end() ? tLanguages[pFound->second].szName : nullptr;
}

unsigned int TLangArray::iGetIndex(wchar_t const * pzCode) const {
    auto const pFound = tCodes.find(pzCode);
    return pFound != tCodes.end() ? pFound->second : std::numeric_limits<unsigned int>::max();
}

std::wstring TLangArray::sGetCode(wchar_t const * pzName) const {
    auto const pFound = tNames.find(pzName);
    return pFound != tNames.end() ? tLanguages[pFound->second].szCode : std::wstring();
}

TLangArray::TLangArray() {
    HINSTANCE const hModule = hGetMessageModule();
    HRSRC const hFound = FindResourceW(hModule, MAKEINTRESOURCEW(IDR_LANGUAGES), RT_RCDATA);
    if (hFound == nullptr) return;
    std::unique_ptr<void, decltype(&FreeResource)> const hLoaded(LoadResource(hModule, hFound), &FreeResource);
    if (hLoaded == nullptr) return;
    auto const * const pUnits = static_cast<wchar_t const *>(LockResource(hLoaded.get()));
    if (pUnits == nullptr) return;
    ReadTable({pUnits, SizeofResource(hModule, hFound) / sizeof(wchar_t)});
    Index();
}

bool TLangArray::TCodeOrder::operator()(std::wstring const & sFirst, std::wstring const & sSecond) const {
    return iWCompareIString(sFirst.c_str(), sSecond.c_str()) < 0;
}

void TLangArray::ReadTable(std::wstring_view sTable) {
    for (int iLeft = oTakeNumber(sTable).value_or(0); iLeft > 0; --iLeft) {
        std::optional<TEntry> const oEntry = oTakeEntry(sTable);
        if (!oEntry) return;
        TLanguage & tLanguage = tLanguages.emplace_back();
        Put(tLanguage.szCode, oEntry->pzCode);
        Put(tLanguage.szName, oEntry->pzName);
        tLanguage.iOrder = oEntry->iOrder;
    }
}

void TLangArray::Index() {
    auto const tGetKey = [](TLanguage const & tLanguage) {
        return std::tuple(tLanguage.iOrder, std::wstring_view(tLanguage.szName));
    };
    std::ranges::stable_sort(tLanguages, {}, tGetKey);
    for (unsigned int u = 0; u < tLanguages.size(); ++u) {
        tCodes[tLanguages[u].szCode] = u;
        tNames[tLanguages[u].szName] = u;
    }
}

TIfLanguageList::~TIfLanguageList() = default;

wchar_t const * TIfLanguageList::pzGetNameAt(int iIndex) const {
    return TLangArray::Instance().pzGetName(pzGetCodeAt(iIndex));
}

TLangListAsString::~TLangListAsString() = default;

int TLangListAsString::iGetCount() const {
    return tCodes.GetItemsInContainer();
}

wchar_t const * TLangListAsString::pzGetCodeAt(int iIndex) const {
    return tCodes[iIndex].c_str();
}

void TLangListAsString::Add(wchar_t const * pzCode) {
    tCodes.Add(pzCode);
}

void TLangListAsString::Add(std::wstring const & sCode) {
    tCodes.Add(sCode);
}

void TLangListAsString::Flush() noexcept {
    tCodes.Flush();
}

int TLangListAsString::iFind(wchar_t const * pzCode) const {
    return tCodes.Find(pzCode);
}

bool TLangListAsString::operator==(TLangListAsString const & tOther) const noexcept {
    return tCodes == tOther.tCodes;
}

void TLangListAsString::Read(TStreamBase & tStream) {
    tCodes.Read(tStream);
}

void TLangListAsString::Write(TStreamBase & tStream) const {
    tCodes.Write(tStream);
}

void TLangListAsString::Read(TOptionElement const & tElement) {
    tCodes.Read(tElement(L"Languages"));
}

void TLangListAsString::Write(TOptionElement & tElement) const {
    tCodes.Write(tElement + L"Languages");
}
