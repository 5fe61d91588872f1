// The binary half of TStreamBase: numbers, positions, the end. Its text half stands in StreamText.cpp.
#include "ZkTools/Stream.h"

#include "ZkTools/Exceptions.h"
#include "ZkTools/MessageIds.h"

#include <algorithm>
#include <cstdint>

namespace {

constexpr int iFirstConvertBufferSize = 2048;
constexpr int iConvertBufferStep = 1024;

static_assert(sizeof(TLongOnly) == 4);

} // namespace

IRawStream::~IRawStream() = default;

TStreamBase::TStreamBase(ECodePage eCodePage)
    : pConvertBuffer(std::make_unique<char[]>(iFirstConvertBufferSize)), iConvertBufferSize(iFirstConvertBufferSize),
      uCodePage(uGetCodePage(eCodePage)) {}

TStreamBase::TStreamBase(unsigned long dwSize, ECodePage eCodePage) : TStreamBase(eCodePage) {
    if (dwSize != 0) pBlob = std::make_unique<TBlob>(dwSize);
}

TStreamBase::TStreamBase(void const * pMemory, unsigned long dwSize, ECodePage eCodePage) : TStreamBase(eCodePage) {
    pBlob = std::make_unique<TBlob>(pMemory, dwSize);
}

TStreamBase::TStreamBase(TBlob & tBlob, ECodePage eCodePage) : TStreamBase(eCodePage) {
    pBlob = std::make_unique<TBlob>(tBlob);
}

TStreamBase::~TStreamBase() = default;

void TStreamBase::ReadData(void * pTarget, unsigned long dwCount) {
    if (pBlob == nullptr) {
        TBlob().Get(pTarget, dwCount);
    } else {
        pBlob->Get(pTarget, dwCount);
    }
}

void TStreamBase::WriteData(void const * pSource, unsigned long dwCount) {
    if (pBlob == nullptr) pBlob = std::make_unique<TBlob>(dwCount);
    pBlob->Put(pSource, dwCount);
}

void TStreamBase::Seek(TLongOnly const & tOffset, int iOrigin) {
    if (pBlob == nullptr) return;
    std::int64_t iTarget = 0;
    switch (iOrigin) {
    case 0:
        iTarget = tOffset.lValue;
        break;
    case 1:
        iTarget = std::int64_t{pBlob->dwPos} + tOffset.lValue;
        break;
    case 2:
        iTarget = std::int64_t{pBlob->dwUsed} + tOffset.lValue;
        break;
    default: // Deliberate: any other origin means the start, and the distance is not looked at.
        break;
    }
    if (iTarget < 0 || iTarget > pBlob->dwUsed) throw TXZkTools(IDS_SEEK_OUT_OF_RANGE);
    pBlob->dwPos = static_cast<unsigned long>(iTarget);
}

bool TStreamBase::fIsEoF() {
    return pBlob == nullptr || pBlob->dwPos >= pBlob->dwUsed;
}

unsigned long TStreamBase::dwGetSize() {
    return pBlob == nullptr ? 0 : pBlob->dwUsed;
}

unsigned long TStreamBase::dwGetPos() {
    return pBlob == nullptr ? 0 : pBlob->dwPos;
}

void TStreamBase::SetPos(unsigned long dwNewPos) {
    if (pBlob == nullptr) return;
    if (dwNewPos > pBlob->dwUsed) throw TXZkTools(IDS_SEEK_OUT_OF_RANGE);
    pBlob->dwPos = dwNewPos;
}

void TStreamBase::Read(__int64 & iValue) {
    ReadData(&iValue, sizeof iValue);
}

void TStreamBase::Read(unsigned __int64 & iValue) {
    ReadData(&iValue, sizeof iValue);
}

void TStreamBase::Read(int & iValue) {
    ReadData(&iValue, sizeof iValue);
}

void TStreamBase::Read(unsigned int & uValue) {
    ReadData(&uValue, sizeof uValue);
}

void TStreamBase::Read(short & iValue) {
    ReadData(&iValue, sizeof iValue);
}

void TStreamBase::Read(unsigned short & uValue) {
    ReadData(&uValue, sizeof uValue);
}

void TStreamBase::Read(long & lValue) {
    static_assert(sizeof lValue == 4);
    ReadData(&lValue, sizeof lValue);
}

void TStreamBase::Read(unsigned long & dwValue) {
    ReadData(&dwValue, sizeof dwValue);
}

void TStreamBase::Read(char & cValue) {
    ReadData(&cValue, sizeof cValue);
}

void TStreamBase::Read(unsigned char & uValue) {
    ReadData(&uValue, sizeof uValue);
}

void TStreamBase::Peek(unsigned char & uByte) {
    EnsureBufferFilled();
    // Behind a view there is no guard byte to look at.
    bool const fBehindView = !pBlob->fOwner && pBlob->dwPos >= pBlob->dwCapacity;
    uByte = fBehindView ? static_cast<unsigned char>(0) : *pBlob->pGetDataAtPos();
}

void TStreamBase::Write(__int64 const & iValue) {
    WriteData(&iValue, sizeof iValue);
}

void TStreamBase::Write(unsigned __int64 const & iValue) {
    WriteData(&iValue, sizeof iValue);
}

void TStreamBase::Write(int const & iValue) {
    WriteData(&iValue, sizeof iValue);
}

void TStreamBase::Write(unsigned int const & uValue) {
    WriteData(&uValue, sizeof uValue);
}

void TStreamBase::Write(short const & iValue) {
    WriteData(&iValue, sizeof iValue);
}

void TStreamBase::Write(unsigned short const & uValue) {
    WriteData(&uValue, sizeof uValue);
}

void TStreamBase::Write(long const & lValue) {
    WriteData(&lValue, sizeof lValue);
}

void TStreamBase::Write(unsigned long const & dwValue) {
    WriteData(&dwValue, sizeof dwValue);
}

void TStreamBase::Write(char const & cValue) {
    WriteData(&cValue, sizeof cValue);
}

// Deliberate: a record that "writes" a wchar_t has never stored anything for it, and must not begin to.
void TStreamBase::Write(wchar_t const &) {}

void TStreamBase::Write(unsigned char const & uValue) {
    WriteData(&uValue, sizeof uValue);
}

bool TStreamBase::fIsBinary() const {
    return true;
}

void TStreamBase::EnsureBufferFilled() {}

void TStreamBase::SetCodePage(ECodePage eCodePage) {
    uCodePage = uGetCodePage(eCodePage);
}

ECodePage TStreamBase::eGetCodePage() const {
    return eFindCodePage(uCodePage);
}

unsigned char * TStreamBase::pGetData() const noexcept {
    return pBlob == nullptr ? nullptr : pBlob->pGetData();
}

unsigned char * TStreamBase::pGetDataAtPos() const noexcept {
    return pBlob == nullptr ? nullptr : pBlob->pGetDataAtPos();
}

unsigned long TStreamBase::dwBufGetSize() const noexcept {
    return pBlob == nullptr ? 0 : pBlob->dwGetSize();
}

void TStreamBase::BufAlloc(unsigned long dwSize) {
    if (pBlob == nullptr) {
        pBlob = std::make_unique<TBlob>(dwSize);
    } else {
        pBlob->Alloc(dwSize);
    }
}

void TStreamBase::AllocUTF8Buffer(int iSize) {
    if (iSize <= iConvertBufferSize) return;
    std::int64_t const iWanted = (std::int64_t{iSize} / iConvertBufferStep + 1) * iConvertBufferStep;
    int const iNew = static_cast<int>(std::min<std::int64_t>(iWanted, INT32_MAX));
    pConvertBuffer.reset(); // its contents need not survive, so the two need not stand side by side
    iConvertBufferSize = 0;
    pConvertBuffer = std::make_unique_for_overwrite<char[]>(static_cast<std::size_t>(iNew));
    iConvertBufferSize = iNew;
}
