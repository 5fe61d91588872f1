#include "ZkTools/Alias.h"

#include "ZkBase/Windows.h"
#include "ZkTools/Stream.h"

#include <algorithm>
#include <cstring>
#include <span>

static_assert(sizeof(TOldTagRec) == 35);

namespace {

/// Fills a field with as much of the text as leaves room for the terminator, and with zeros behind it. A null text
/// empties it.
void SetField(std::span<char> acField, char const * pzText) noexcept {
    std::size_t const uRoom = acField.size() - 1;
    std::size_t const uLength = pzText != nullptr ? strnlen(pzText, uRoom) : 0;
    if (uLength != 0) std::memmove(acField.data(), pzText, uLength); // the text may be the field's own
    std::ranges::fill(acField.subspan(uLength), '\0');
}

/// The same from wide text.
void SetField(std::span<char> acField, wchar_t const * pzText) {
    if (pzText == nullptr) return SetField(acField, static_cast<char const *>(nullptr));
    int const iSize = WideCharToMultiByte(CP_THREAD_ACP, 0, pzText, -1, nullptr, 0, nullptr, nullptr);
    std::string sNarrow(static_cast<std::size_t>(iSize), '\0');
    WideCharToMultiByte(CP_THREAD_ACP, 0, pzText, -1, sNarrow.data(), iSize, nullptr, nullptr);
    SetField(acField, sNarrow.c_str());
}

/// The text of a field. One of a damaged record, without a terminator, ends with the field.
std::wstring sGetField(std::span<char const> acField) {
    int const iBytes = static_cast<int>(strnlen(acField.data(), acField.size()));
    if (iBytes == 0) return {};
    std::array<wchar_t, 32> acText; // a byte never becomes more than one unit in an ANSI code page
    int const iUnits =
        MultiByteToWideChar(CP_THREAD_ACP, 0, acField.data(), iBytes, acText.data(), static_cast<int>(acText.size()));
    return {acText.data(), static_cast<std::size_t>(iUnits)};
}

template <std::size_t uSize>
bool fEqualFields(std::array<char, uSize> const & acFirst, std::array<char, uSize> const & acSecond) noexcept {
    return std::strncmp(acFirst.data(), acSecond.data(), uSize) == 0;
}

} // namespace

TOldTagRec::TOldTagRec(wchar_t const * pzTag, wchar_t const * pzVersion, wchar_t const * pzVariant) {
    SetValue(pzTag, pzVersion, pzVariant);
}

TOldTagRec & TOldTagRec::operator=(TOldTagRec const & tOther) noexcept {
    SetValue(tOther.acTag.data(), tOther.acVersion.data(), tOther.acVariant.data());
    return *this;
}

void TOldTagRec::SetValue(wchar_t const * pzTag, wchar_t const * pzVersion, wchar_t const * pzVariant) {
    SetField(acTag, pzTag);
    SetField(acVersion, pzVersion);
    SetField(acVariant, pzVariant);
}

void TOldTagRec::SetValue(char const * pzTag, char const * pzVersion, char const * pzVariant) noexcept {
    SetField(acTag, pzTag);
    SetField(acVersion, pzVersion);
    SetField(acVariant, pzVariant);
}

std::wstring TOldTagRec::sGetTag() const {
    return sGetField(acTag);
}

std::wstring TOldTagRec::sGetVersion() const {
    return sGetField(acVersion);
}

std::wstring TOldTagRec::sGetVariant() const {
    return sGetField(acVariant);
}

void TOldTagRec::Read(TStreamBase & tStream) {
    ReadBehind(tStream, 0);
}

/// Reads the fields, of which `uHave` bytes of the first are there already.
void TOldTagRec::ReadBehind(TStreamBase & tStream, std::size_t uHave) {
    tStream.ReadData(acTag.data() + uHave, static_cast<unsigned long>(acTag.size() - uHave));
    tStream.ReadData(acVersion.data(), static_cast<unsigned long>(acVersion.size()));
    tStream.ReadData(acVariant.data(), static_cast<unsigned long>(acVariant.size()));
}

void TOldTagRec::Write(TStreamBase & tStream) const {
    tStream.WriteData(acTag.data(), static_cast<unsigned long>(acTag.size()));
    tStream.WriteData(acVersion.data(), static_cast<unsigned long>(acVersion.size()));
    tStream.WriteData(acVariant.data(), static_cast<unsigned long>(acVariant.size()));
}

bool TOldTagRec::operator==(TOldTagRec const & tOther) const noexcept {
    return fEqualFields(acTag, tOther.acTag) && fEqualFields(acVersion, tOther.acVersion) &&
           fEqualFields(acVariant, tOther.acVariant);
}
