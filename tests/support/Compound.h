/// A stream and a storage of the test's own: they count their references, write down their calls and fail on demand.
/// They live where the test puts them; the last `Release` does nothing.
#pragma once

#include "ZkBase/Windows.h"
#include "ZkTools/CompoundStorage.h"

#include <objbase.h>

#include <oleauto.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <cwchar>
#include <string>
#include <string_view>

namespace zk_test {

/// References and calls, for one interface.
template <typename TInterface>
class TFake : public TInterface {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void **) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++uReferences; }
    ULONG STDMETHODCALLTYPE Release() override { return --uReferences; }

    ULONG uReferences = 0;
    int iFailAt = -1;                ///< which call fails, counted from 0; the further ones go well again
    HRESULT hrFailure = E_FAIL;      ///< what that call answers
    HRESULT hrSuccess = S_OK;        ///< what all others answer
    std::string sCalls;              ///< all calls, each with its arguments, behind one another with "; "
    bool fNamesAreStrings = true;    ///< every name so far was a BSTR
    std::wstring sLastName = L"(?)"; ///< the last name, "(null)" for a null one

protected:
    /// Writes a call down and tells what it answers.
    template <typename... TArgs>
    HRESULT hrCall(std::string_view sName, TArgs... tArgs) {
        if (!sCalls.empty()) sCalls += "; ";
        sCalls += sName;
        (sCalls.append(" ").append(std::to_string(tArgs)), ...);
        return iCalls++ == iFailAt ? hrFailure : hrSuccess;
    }

    void TakeName(OLECHAR const * sName) {
        sLastName = sName == nullptr ? L"(null)" : sName;
        fNamesAreStrings =
            fNamesAreStrings && (sName == nullptr || SysStringLen(const_cast<BSTR>(sName)) == wcslen(sName));
    }

private:
    int iCalls = 0;
};

/// A stream over `sBytes`, which stands at `uPosition`.
class TFakeStream final : public TFake<IStream> {
public:
    explicit TFakeStream(std::string_view sBytes_ = {}) : sBytes(sBytes_) {}

    HRESULT STDMETHODCALLTYPE Read(void * pTarget, ULONG dwBytes, ULONG * pdwRead) override {
        if (HRESULT const hr = hrCall("Read", dwBytes); hr < 0) return hr;
        std::size_t const uCount = std::min<std::size_t>(dwBytes, sBytes.size() - uPosition);
        std::memcpy(pTarget, sBytes.data() + uPosition, uCount);
        uPosition += uCount;
        if (pdwRead != nullptr) *pdwRead = static_cast<ULONG>(uCount);
        return hrSuccess;
    }
    HRESULT STDMETHODCALLTYPE Write(void const * pSource, ULONG dwBytes, ULONG * pdwWritten) override {
        if (HRESULT const hr = hrCall("Write", dwBytes); hr < 0) return hr;
        sBytes.resize(std::max<std::size_t>(sBytes.size(), uPosition + dwBytes));
        std::memcpy(sBytes.data() + uPosition, pSource, dwBytes);
        uPosition += dwBytes;
        if (pdwWritten != nullptr) *pdwWritten = dwBytes;
        return hrSuccess;
    }
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER liMove, DWORD dwOrigin, ULARGE_INTEGER * pliNew) override {
        HRESULT const hr = hrCall("Seek", liMove.QuadPart, dwOrigin);
        if (pliNew != nullptr) *pliNew = liAnswer;
        return hr;
    }
    HRESULT STDMETHODCALLTYPE Stat(STATSTG * pStat, DWORD dwFlag) override {
        if (HRESULT const hr = hrCall("Stat", dwFlag); hr < 0) return hr;
        *pStat = {};
        pStat->cbSize = liAnswer;
        if (dwFlag == STATFLAG_DEFAULT && pzName != nullptr) {
            std::size_t const uBytes = (std::wcslen(pzName) + 1) * sizeof(wchar_t);
            pGivenName = CoTaskMemAlloc(uBytes);
            std::memcpy(pGivenName, pzName, uBytes);
            pStat->pwcsName = static_cast<wchar_t *>(pGivenName);
        }
        return hrSuccess;
    }
    HRESULT STDMETHODCALLTYPE Commit(DWORD dwFlags) override { return hrCall("Commit", dwFlags); }
    HRESULT STDMETHODCALLTYPE Revert() override { return hrCall("Revert"); }
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER) override { return hrCall("SetSize"); }
    HRESULT STDMETHODCALLTYPE CopyTo(IStream *, ULARGE_INTEGER, ULARGE_INTEGER *, ULARGE_INTEGER *) override {
        return hrCall("CopyTo");
    }
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
        return hrCall("LockRegion");
    }
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
        return hrCall("UnlockRegion");
    }
    HRESULT STDMETHODCALLTYPE Clone(IStream **) override { return hrCall("Clone"); }

    std::string sBytes;
    std::size_t uPosition = 0;
    ULARGE_INTEGER liAnswer{};        ///< the size that `Stat` tells and the position that `Seek` tells
    wchar_t const * pzName = L"name"; ///< null: `Stat` gives no name
    void * pGivenName = nullptr;      ///< the memory of the name that `Stat` gave last
};

/// The library's stream over a fake one.
struct TAliasedStream : TIStream {
    explicit TAliasedStream(TFakeStream & tFake) { Alias(&tFake); }
};

/// A storage that gives out one stream and one storage, with a reference for the receiver; on failure it sets the
/// receiver's pointer to null, as the platform does.
class TFakeStorage final : public TFake<IStorage> {
public:
    HRESULT STDMETHODCALLTYPE CreateStream(OLECHAR const * sName, DWORD dwMode, DWORD dwReserved1, DWORD dwReserved2,
                                           IStream ** ppStream) override {
        TakeName(sName);
        return hrGive(hrCall("CreateStream", dwMode, dwReserved1, dwReserved2), pStreamToGive, ppStream);
    }
    HRESULT STDMETHODCALLTYPE OpenStream(OLECHAR const * sName, void * pReserved1, DWORD dwMode, DWORD dwReserved2,
                                         IStream ** ppStream) override {
        TakeName(sName);
        return hrGive(hrCall("OpenStream", pReserved1 != nullptr, dwMode, dwReserved2), pStreamToGive, ppStream);
    }
    HRESULT STDMETHODCALLTYPE CreateStorage(OLECHAR const * sName, DWORD dwMode, DWORD dwReserved1, DWORD dwReserved2,
                                            IStorage ** ppStorage) override {
        TakeName(sName);
        return hrGive(hrCall("CreateStorage", dwMode, dwReserved1, dwReserved2), pStorageToGive, ppStorage);
    }
    HRESULT STDMETHODCALLTYPE OpenStorage(OLECHAR const * sName, IStorage * pPriority, DWORD dwMode, SNB ppExclude,
                                          DWORD dwReserved, IStorage ** ppStorage) override {
        TakeName(sName);
        return hrGive(hrCall("OpenStorage", pPriority != nullptr, dwMode, ppExclude != nullptr, dwReserved),
                      pStorageToGive, ppStorage);
    }
    HRESULT STDMETHODCALLTYPE EnumElements(DWORD dwReserved1, void * pReserved2, DWORD dwReserved3,
                                           IEnumSTATSTG ** ppEnum) override {
        ppLastEnum = ppEnum;
        return hrCall("EnumElements", dwReserved1, pReserved2 != nullptr, dwReserved3);
    }
    HRESULT STDMETHODCALLTYPE DestroyElement(OLECHAR const * sName) override {
        TakeName(sName);
        return hrCall("DestroyElement");
    }
    HRESULT STDMETHODCALLTYPE Commit(DWORD dwFlags) override { return hrCall("Commit", dwFlags); }
    HRESULT STDMETHODCALLTYPE Revert() override { return hrCall("Revert"); }
    HRESULT STDMETHODCALLTYPE CopyTo(DWORD, IID const *, SNB, IStorage *) override { return hrCall("CopyTo"); }
    HRESULT STDMETHODCALLTYPE MoveElementTo(OLECHAR const *, IStorage *, OLECHAR const *, DWORD) override {
        return hrCall("MoveElementTo");
    }
    HRESULT STDMETHODCALLTYPE RenameElement(OLECHAR const *, OLECHAR const *) override {
        return hrCall("RenameElement");
    }
    HRESULT STDMETHODCALLTYPE SetElementTimes(OLECHAR const *, FILETIME const *, FILETIME const *,
                                              FILETIME const *) override {
        return hrCall("SetElementTimes");
    }
    HRESULT STDMETHODCALLTYPE SetClass(REFCLSID) override { return hrCall("SetClass"); }
    HRESULT STDMETHODCALLTYPE SetStateBits(DWORD, DWORD) override { return hrCall("SetStateBits"); }
    HRESULT STDMETHODCALLTYPE Stat(STATSTG *, DWORD) override { return hrCall("Stat"); }

    TFakeStream * pStreamToGive = nullptr;
    TFakeStorage * pStorageToGive = nullptr;
    IEnumSTATSTG ** ppLastEnum = nullptr;

private:
    template <typename TGiven, typename TInterface>
    static HRESULT hrGive(HRESULT hr, TGiven * pGiven, TInterface ** ppTarget) {
        *ppTarget = hr < 0 ? nullptr : pGiven;
        if (*ppTarget != nullptr) pGiven->AddRef();
        return hr;
    }
};

} // namespace zk_test
