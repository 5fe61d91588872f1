// What an alias is outside the program: a file name, and its forms on a stream.
#include "ZkTools/Alias.h"

#include "ZkTools/CompoundStorage.h"
#include "ZkTools/Paths.h"
#include "ZkTools/Stream.h"

#include <algorithm>
#include <array>
#include <string>

namespace {

constexpr char cCurrentFormMark = 1; // no old record begins with it: there it would be the first character of a tag

/// Reads tag, version and variant, so that none of them is changed before all are there.
std::array<std::wstring, 3> asRead(auto Read) {
    std::array<std::wstring, 3> asTexts;
    std::ranges::for_each(asTexts, Read);
    return asTexts;
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
    TOldTagRec tRecord;
    tRecord.acTag[0] = cFirst;
    tRecord.ReadBehind(tStream, 1);
    Set(tRecord);
}

void TAlias::Write(TStreamBase & tStream) const {
    tStream.Write(cCurrentFormMark);
    WritePure(tStream);
}

void TAlias::ReadPure(TStreamBase & tStream) {
    auto const asTexts = asRead([&](std::wstring & sText) { tStream.ReadPascalStringInt16(sText); });
    Set(asTexts[0], asTexts[1], asTexts[2]);
}

void TAlias::WritePure(TStreamBase & tStream) const {
    tStream.WritePascalStringInt16(sTag);
    tStream.WritePascalStringInt16(sVersion);
    tStream.WritePascalStringInt16(sVariant);
}

void TAlias::Read(TIStream & tStream) {
    auto const asTexts = asRead([&](std::wstring & sText) { tStream.ReadString(sText); });
    Set(asTexts[0], asTexts[1], asTexts[2]);
}

void TAlias::Write(TIStream & tStream) const {
    tStream.WriteString(sTag);
    tStream.WriteString(sVersion);
    tStream.WriteString(sVariant);
}

bool TAlias::fIsTagRecCompatible() const noexcept {
    return sTag.size() < std::tuple_size_v<decltype(TOldTagRec::acTag)> &&
           sVersion.size() < std::tuple_size_v<decltype(TOldTagRec::acVersion)> &&
           sVariant.size() < std::tuple_size_v<decltype(TOldTagRec::acVariant)>;
}

void TAlias::ReadTagRecCompatible(TStreamBase & tStream) {
    TOldTagRec tRecord;
    tRecord.Read(tStream);
    Set(tRecord);
}

void TAlias::WriteTagRecCompatible(TStreamBase & tStream) const {
    TOldTagRec const tRecord(sTag.c_str(), sVersion.c_str(), sVariant.c_str());
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
