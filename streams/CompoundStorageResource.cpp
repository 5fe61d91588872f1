#include "ZkTools/CompoundStorage.h"

#include <algorithm>
#include <cstring>
#include <span>

namespace {

/// The stream over a resource. Its creator has no reference yet: it ends with the last `Release`.
class TImplStreamFromResource final : public IStream {
public:
    TImplStreamFromResource(HINSTANCE hModule, unsigned int uId) noexcept;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID tId, void ** ppTarget) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override;
    ULONG STDMETHODCALLTYPE Release() noexcept override;

    HRESULT STDMETHODCALLTYPE Read(void * pTarget, ULONG dwBytes, ULONG * pdwRead) noexcept override;
    HRESULT STDMETHODCALLTYPE Write(void const * pSource, ULONG dwBytes, ULONG * pdwWritten) noexcept override;

    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER liMove, DWORD dwOrigin, ULARGE_INTEGER * pliNew) noexcept override;
    HRESULT STDMETHODCALLTYPE CopyTo(IStream * pTarget, ULARGE_INTEGER liBytes, ULARGE_INTEGER * pliRead,
                                     ULARGE_INTEGER * pliWritten) noexcept override;
    HRESULT STDMETHODCALLTYPE Stat(STATSTG * pStat, DWORD dwFlag) noexcept override;

    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Commit(DWORD) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Revert() noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Clone(IStream **) noexcept override { return E_NOTIMPL; }

private:
    ~TImplStreamFromResource();

    /// What lies between the position and the end; nothing behind the end.
    [[nodiscard]] std::span<unsigned char> tGetRest() const noexcept;

    ULONG uReferences = 0; // one thread at a time
    HGLOBAL hResource = nullptr;
    DWORD dwSize = 0; // 0 until the memory is there
    unsigned char * pData = nullptr;
    DWORD dwPosition = 0;
};

TImplStreamFromResource::TImplStreamFromResource(HINSTANCE hModule, unsigned int uId) noexcept {
    HRSRC const hFound = FindResourceW(hModule, MAKEINTRESOURCEW(uId), RT_RCDATA);
    if (hFound == nullptr) return;
    DWORD const dwFound = SizeofResource(hModule, hFound);
    if (dwFound == 0) return;
    hResource = LoadResource(hModule, hFound);
    if (hResource == nullptr) return;
    pData = static_cast<unsigned char *>(LockResource(hResource));
    if (pData != nullptr) dwSize = dwFound;
}

TImplStreamFromResource::~TImplStreamFromResource() {
    if (hResource != nullptr) FreeResource(hResource);
}

std::span<unsigned char> TImplStreamFromResource::tGetRest() const noexcept {
    return std::span(pData, dwSize).subspan(std::min(dwPosition, dwSize));
}

HRESULT TImplStreamFromResource::QueryInterface(REFIID tId, void ** ppTarget) noexcept {
    if (ppTarget == nullptr) return E_POINTER;
    *ppTarget = nullptr;
    if (tId != IID_IUnknown && tId != IID_ISequentialStream && tId != IID_IStream) return E_NOINTERFACE;
    *ppTarget = static_cast<IStream *>(this);
    AddRef();
    return S_OK;
}

ULONG TImplStreamFromResource::AddRef() noexcept {
    return ++uReferences;
}

ULONG TImplStreamFromResource::Release() noexcept {
    ULONG const uLeft = --uReferences;
    if (uLeft == 0) delete this;
    return uLeft;
}

HRESULT TImplStreamFromResource::Read(void * pTarget, ULONG dwBytes, ULONG * pdwRead) noexcept {
    ULONG const dwCount = std::min(dwBytes, static_cast<ULONG>(tGetRest().size()));
    if (dwCount != 0) std::memcpy(pTarget, tGetRest().data(), dwCount);
    dwPosition += dwCount;
    if (pdwRead != nullptr) *pdwRead = dwCount;
    return dwCount < dwBytes ? S_FALSE : S_OK;
}

// Deliberate: not refused. Who has made the memory of a resource writable can change it through its stream.
HRESULT TImplStreamFromResource::Write(void const * pSource, ULONG dwBytes, ULONG * pdwWritten) noexcept {
    ULONG const dwCount = std::min(dwBytes, static_cast<ULONG>(tGetRest().size()));
    if (dwCount != 0) std::memcpy(tGetRest().data(), pSource, dwCount);
    dwPosition += dwCount;
    if (pdwWritten != nullptr) *pdwWritten = dwCount;
    return dwCount < dwBytes ? S_FALSE : S_OK;
}

HRESULT TImplStreamFromResource::Seek(LARGE_INTEGER liMove, DWORD dwOrigin, ULARGE_INTEGER * pliNew) noexcept {
    switch (dwOrigin) {
    case STREAM_SEEK_SET:
        dwPosition = liMove.LowPart;
        break;
    case STREAM_SEEK_CUR:
        dwPosition += liMove.LowPart;
        break;
    case STREAM_SEEK_END: // Deliberate: counted on from the position. Callers stand at the start when they ask.
        dwPosition += dwSize + liMove.LowPart;
        break;
    default:
        return STG_E_INVALIDFUNCTION;
    }
    if (pliNew != nullptr) pliNew->QuadPart = dwPosition;
    // Deliberate: the position has moved, also past the end.
    return dwPosition < dwSize ? S_OK : STG_E_INVALIDFUNCTION;
}

// Deliberate: one write, and the position stays.
HRESULT TImplStreamFromResource::CopyTo(IStream * pTarget, ULARGE_INTEGER liBytes, ULARGE_INTEGER * pliRead,
                                        ULARGE_INTEGER * pliWritten) noexcept {
    ULONG const dwBytes = liBytes.LowPart;
    if (dwBytes > tGetRest().size()) return STG_E_INVALIDPOINTER;
    ULONG dwWritten = 0;
    HRESULT const hr = pTarget->Write(tGetRest().data(), dwBytes, &dwWritten);
    if (pliRead != nullptr) pliRead->QuadPart = dwBytes;
    if (pliWritten != nullptr) pliWritten->QuadPart = dwWritten;
    return hr;
}

HRESULT TImplStreamFromResource::Stat(STATSTG * pStat, DWORD) noexcept {
    pStat->cbSize.QuadPart = dwSize;
    return S_OK;
}

} // namespace

IStream * IStreamFromResource::pCreate(HINSTANCE hModule, unsigned int uId) {
    return new TImplStreamFromResource(hModule, uId); // owned by its references from the first on
}
