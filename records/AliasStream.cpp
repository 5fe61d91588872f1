// What an alias is outside the program: a file name, and its forms on a stream.
#include "ZkTools/Alias.h"

#include "ZkBase/Text.h"
#include "ZkTools/CompoundStorage.h"
#include "ZkTools/Paths.h"
#include "ZkTools/Stream.h"
#include "records/OldTagRecord.h"

#include <utility>

namespace {

constexpr char cCurrentFormMark = 1; // no old record begins with it: there it would be the first character of a tag

std::wstring sReadCounted(TStreamBase & tStream) {
    std::wstring sText;
    tStream.ReadPascalStringInt16(sText);
    return string_functions::sStrip(sText, string_functions::esBoth, L" ");
}

std::wstring sReadString(TIStream & tStream) {
    std::wstring sText;
    tStream.ReadString(sText);
    return string_functions::sStrip(sText, string_functions::esBoth, L" ");
}

/// Reads the fields, of which `uHave` bytes of the first are there already.
void ReadFields(TStreamBase & tStream, TOldTagRecord & tRecord, std::size_t uHave) {
    tStream.ReadData(tRecord.acTag.data() + uHave, static_cast<unsigned long>(tRecord.acTag.size() - uHave));
    tStream.ReadData(tRecord.acVersion.data(), static_cast<unsigned long>(tRecord.acVersion.size()));
    tStream.ReadData(tRecord.acVariant.data(), static_cast<unsigned long>(tRecord.acVariant.size()));
}

void SetFromRecord(TAlias & tAlias, TOldTagRecord const & tRecord) {
    tAlias.Set(sGetOldTagField(tRecord.acTag), sGetOldTagField(tRecord.acVersion), sGetOldTagField(tRecord.acVariant));
}

} // namespace

std::wstring TAlias::sGetFileName(wchar_t const * pzSeparator) const {
    std::wstring sName = sGetAlias(pzSeparator != nullptr ? pzSeparator : L"_");
    ReplaceInvalidNameChars(sName, nullptr, L'_');
    return sName;
}

void TAlias::Read(TStreamBase & tStream) {
    // Zeros, because a file stream that ends early gives fewer bytes without a word.
    char cFirst = 0;
    tStream.Read(cFirst);
    if (cFirst == cCurrentFormMark) return ReadPure(tStream);
    TOldTagRecord tRecord;
    tRecord.acTag[0] = cFirst;
    ReadFields(tStream, tRecord, 1);
    SetFromRecord(*this, tRecord);
}

void TAlias::Write(TStreamBase & tStream) const {
    tStream.Write(cCurrentFormMark);
    WritePure(tStream);
}

void TAlias::ReadPure(TStreamBase & tStream) {
    std::wstring sNewTag = sReadCounted(tStream);
    std::wstring sNewVersion = sReadCounted(tStream);
    sVariant = sReadCounted(tStream);
    sTag = std::move(sNewTag);
    sVersion = std::move(sNewVersion);
}

void TAlias::WritePure(TStreamBase & tStream) const {
    tStream.WritePascalStringInt16(sTag);
    tStream.WritePascalStringInt16(sVersion);
    tStream.WritePascalStringInt16(sVariant);
}

void TAlias::Read(TIStream & tStream) {
    std::wstring sNewTag = sReadString(tStream);
    std::wstring sNewVersion = sReadString(tStream);
    sVariant = sReadString(tStream);
    sTag = std::move(sNewTag);
    sVersion = std::move(sNewVersion);
}

void TAlias::Write(TIStream & tStream) const {
    tStream.WriteString(sTag);
    tStream.WriteString(sVersion);
    tStream.WriteString(sVariant);
}

bool TAlias::fIsTagRecCompatible() const noexcept {
    return sTag.size() < std::tuple_size_v<decltype(TOldTagRecord::acTag)> &&
           sVersion.size() < std::tuple_size_v<decltype(TOldTagRecord::acVersion)> &&
           sVariant.size() < std::tuple_size_v<decltype(TOldTagRecord::acVariant)>;
}

void TAlias::ReadTagRecCompatible(TStreamBase & tStream) {
    TOldTagRecord tRecord;
    ReadFields(tStream, tRecord, 0);
    SetFromRecord(*this, tRecord);
}

void TAlias::WriteTagRecCompatible(TStreamBase & tStream) const {
    TOldTagRecord tRecord;
    SetOldTagField(tRecord.acTag, sTag.c_str());
    SetOldTagField(tRecord.acVersion, sVersion.c_str());
    SetOldTagField(tRecord.acVariant, sVariant.c_str());
    tStream.WriteData(&tRecord, sizeof tRecord);
}

TStreamBase & operator<<(TStreamBase & tStream, TAlias const & tAlias) {
    tAlias.Write(tStream);
    return tStream;
}

TStreamBase & operator>>(TStreamBase & tStream, TAlias & tAlias) {
    tAlias.Read(tStream);
    return tStream;
}
