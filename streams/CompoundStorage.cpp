#include "ZkTools/CompoundStorage.h"

#include "ZkBase/TestMode.h"
#include "ZkTools/Exceptions.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

namespace {

struct TReleaseInterface {
    void operator()(IUnknown * pInterface) const noexcept { pInterface->Release(); }
};

struct TFreeBstr {
    void operator()(wchar_t * sText) const noexcept { SysFreeString(sText); }
};
using TBstr = std::unique_ptr<wchar_t, TFreeBstr>;

struct TFreeTaskMemory {
    void operator()(void * pMemory) const noexcept { CoTaskMemFree(pMemory); }
};

[[noreturn]] void ThrowHResult(long hr) {
    // Deliberate: the system's text is the format, as everywhere in the library.
    throw TXZkTools(sGetErrorString(static_cast<unsigned long>(hr)).c_str());
}

/// A name as it goes to the platform.
TBstr sMakeName(wchar_t const * pzName) {
    TBstr sName(SysAllocString(pzName));
    if (sName == nullptr && pzName != nullptr) ThrowHResult(E_OUTOFMEMORY);
    return sName;
}

/// What destructor and `Close` do for both classes.
template <typename TInterface>
void Release(TInterface *& pInterface) noexcept {
    if (pInterface != nullptr) std::exchange(pInterface, nullptr)->Release();
}

} // namespace

TCompoundItem::~TCompoundItem() = default;

void TCompoundItem::CheckHResult(long hr) const {
    if (hr < 0) ThrowHResult(hr);
}

TIStorage::~TIStorage() {
    Close(false);
}

void TIStorage::Alias(IStorage * pNewStorage) noexcept {
    // Deliberate: an interface held before is not released. It may be a copy's, which releases it.
    pStorage = pNewStorage;
    pStorage->AddRef();
    fRelease = true;
}

void TIStorage::Close(bool fForce) noexcept {
    if (fRelease || fForce) Release(pStorage);
}

void TIStorage::Create(IStorage * pParent, wchar_t const * pzName, unsigned long dwMode) {
    CheckHResult(pParent->CreateStorage(sMakeName(pzName).get(), dwMode, 0, 0, &pStorage));
}

void TIStorage::CreateFileW(wchar_t const * pzName, unsigned long dwMode) {
    CheckHResult(StgCreateDocfile(sMakeName(pzName).get(), dwMode, 0, &pStorage));
}

void TIStorage::CreateInMemory(unsigned long dwMode) {
    ILockBytes * pMemory = nullptr;
    CheckHResult(CreateILockBytesOnHGlobal(nullptr, TRUE, &pMemory));
    std::unique_ptr<ILockBytes, TReleaseInterface> const pOwner(pMemory);
    CheckHResult(StgCreateDocfileOnILockBytes(pMemory, dwMode, 0, &pStorage));
}

void TIStorage::Open(IStorage * pParent, wchar_t const * pzName, unsigned long dwMode) {
    CheckHResult(pParent->OpenStorage(sMakeName(pzName).get(), nullptr, dwMode, nullptr, 0, &pStorage));
}

void TIStorage::OpenFile(wchar_t const * pzName, unsigned long dwMode) {
    CheckHResult(StgOpenStorage(sMakeName(pzName).get(), nullptr, dwMode, nullptr, 0, &pStorage));
}

void TIStorage::EnumElements(IEnumSTATSTG ** ppEnum) const {
    CheckHResult(pStorage->EnumElements(0, nullptr, 0, ppEnum));
}

void TIStorage::DestroyElement(wchar_t const * pzName) {
    CheckHResult(pStorage->DestroyElement(sMakeName(pzName).get()));
}

void TIStorage::Commit(unsigned long dwFlags) {
    CheckHResult(pStorage->Commit(dwFlags));
}

void TIStorage::Revert() {
    CheckHResult(pStorage->Revert());
}

TIStream::~TIStream() {
    Close(false);
}

void TIStream::Alias(IStream * pNewStream) noexcept {
    // Deliberate: as for storages.
    pStream = pNewStream;
    pStream->AddRef();
    fRelease = true;
}

void TIStream::Close(bool fForce) noexcept {
    if (fRelease || fForce) Release(pStream);
}

void TIStream::Create(IStorage * pParent, wchar_t const * pzName, unsigned long dwMode) {
    CheckHResult(pParent->CreateStream(sMakeName(pzName).get(), dwMode, 0, 0, &pStream));
}

void TIStream::CreateInMemory() {
    CheckHResult(CreateStreamOnHGlobal(nullptr, TRUE, &pStream));
}

void TIStream::Open(IStorage * pParent, wchar_t const * pzName, unsigned long dwMode) {
    CheckHResult(pParent->OpenStream(sMakeName(pzName).get(), nullptr, dwMode, 0, &pStream));
}

std::wstring TIStream::sGetName() const {
    STATSTG tStat{};
    CheckHResult(pStream->Stat(&tStat, STATFLAG_DEFAULT));
    std::unique_ptr<wchar_t, TFreeTaskMemory> const pzName(tStat.pwcsName);
    return pzName != nullptr ? std::wstring(pzName.get()) : std::wstring();
}

unsigned __int64 TIStream::luliGetSize() const {
    STATSTG tStat{};
    CheckHResult(pStream->Stat(&tStat, STATFLAG_NONAME));
    return tStat.cbSize.QuadPart;
}

unsigned __int64 TIStream::luliSeek(__int64 iMove, unsigned long dwOrigin) {
    LARGE_INTEGER liMove{};
    liMove.QuadPart = iMove;
    ULARGE_INTEGER luliPosition{};
    CheckHResult(pStream->Seek(liMove, dwOrigin, &luliPosition));
    return luliPosition.QuadPart;
}

void TIStream::Read(void * pTarget, unsigned long dwBytes) {
    // Deliberate: fewer bytes are no failure. Records that older versions wrote shorter are read so.
    unsigned long dwRead = 0;
    CheckHResult(pStream->Read(pTarget, dwBytes, &dwRead));
}

void TIStream::Write(void const * pSource, unsigned long dwBytes) {
    unsigned long dwWritten = 0;
    CheckHResult(pStream->Write(pSource, dwBytes, &dwWritten));
}

void TIStream::ReadString(std::wstring & sText) {
    std::int16_t iBytes = 0;
    Read(&iBytes, sizeof iBytes);
    if (iBytes < 0) {
        SkipBytes(static_cast<unsigned long>(iBytes));
        sText.clear();
        return;
    }
    auto const uBytes = static_cast<std::size_t>(iBytes);
    std::wstring sRead((uBytes + 1) / sizeof(wchar_t), L'\0');
    Read(sRead.data(), static_cast<unsigned long>(uBytes));
    // The last unit is the terminator, whatever stands in it, and half a unit is none.
    sRead.resize(std::max<std::size_t>(uBytes / sizeof(wchar_t), 1) - 1);
    sText = std::move(sRead);
}

void TIStream::WriteString(std::wstring const & sText) {
    // Deliberate: the size has 16 bits and a sign, and wraps.
    auto const iBytes = static_cast<std::int16_t>(((sText.size() + 1) & 0xFFFF) * sizeof(wchar_t));
    Write(&iBytes, sizeof iBytes);
    // A negative size asks for nearly 4 GiB. The platform refuses memory that is not there, where it looks at all: some
    // of its streams would read past the text.
    if (iBytes < 0) ThrowHResult(STG_E_INVALIDPOINTER);
    Write(sText.c_str(), static_cast<unsigned long>(iBytes));
}

void TIStream::Commit(unsigned long dwFlags) {
    CheckHResult(pStream->Commit(dwFlags));
}

void TIStream::Revert() {
    CheckHResult(pStream->Revert());
}

/// Passes over what one `Read` of so many bytes would take.
void TIStream::SkipBytes(unsigned long dwBytes) {
    std::array<std::byte, 4096> acPassed;
    while (dwBytes != 0) {
        unsigned long const dwPart = std::min<unsigned long>(dwBytes, acPassed.size());
        unsigned long dwRead = 0;
        CheckHResult(pStream->Read(acPassed.data(), dwPart, &dwRead));
        if (dwRead < dwPart) return;
        dwBytes -= dwPart;
    }
}

bool MSWord::fIsWordInstalled() {
    if (GTest::fIsTest()) return false;
    CLSID tClass{};
    return SUCCEEDED(CLSIDFromProgID(L"Word.Application", &tClass));
}
