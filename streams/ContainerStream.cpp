// What arrays and sets are on a stream.
#include "ZkTools/Containers.h"

#include "ZkTools/Exceptions.h"
#include "ZkTools/MessageIds.h"
#include "ZkTools/Stream.h"

void TZkStringArray::Read(TStreamBase & tStream) {
    Flush();
    int iCount = 0;
    tStream.Read(iCount);
    std::wstring sText;
    for (int i = 0; i < iCount; ++i) {
        // Behind its end a file stream reads empty strings without a word, by a damaged count for ever.
        if (tStream.fIsEoF()) throw TXZkTools(IDS_READ_PAST_END);
        tStream.ReadPascalStringInt16(sText);
        Add(sText);
    }
}

void TZkStringArray::Write(TStreamBase & tStream) const {
    tStream.Write(GetItemsInContainer());
    for (std::wstring const & sText : *this)
        tStream.WritePascalStringInt16(sText);
}

void TZkBitSet::Read(TStreamBase & tStream) {
    tStream.ReadData(aucBits.data(), static_cast<unsigned long>(aucBits.size()));
}

void TZkBitSet::Write(TStreamBase & tStream) const {
    tStream.WriteData(aucBits.data(), static_cast<unsigned long>(aucBits.size()));
}
