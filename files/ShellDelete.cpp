#include "files/ShellDelete.h"

#include "ZkBase/Windows.h"
#include "ZkTools/Exceptions.h"
#include "ZkTools/MessageIds.h"

#include <shellapi.h>
#include <shlguid.h>
#include <shlobj.h>
#include <shobjidl.h>

#include <array>
#include <cwchar>
#include <memory>

namespace {

constexpr DWORD dwQuietly = FOF_SILENT | FOF_NOCONFIRMATION | FOF_NOCONFIRMMKDIR | FOF_NOERRORUI;
constexpr DWORD dwWithUndo = dwQuietly | FOF_ALLOWUNDO;
static_assert(dwQuietly == 1556 && dwWithUndo == 1556 + 64);

struct TReleaser {
    void operator()(IUnknown * pObject) const noexcept { pObject->Release(); }
};
template <typename TInterface>
using TComOwner = std::unique_ptr<TInterface, TReleaser>;

struct TLocalFree {
    void operator()(wchar_t * pzText) const noexcept { LocalFree(pzText); }
};

/// The text of an `HRESULT` that the system knows none for. From a part of the range that belongs to the interfaces
/// come the errors of the old dispatch calls, as their distance from its start.
std::wstring sGetTextOfUnknown(HRESULT hr) {
    constexpr DWORD dwFirst = 0x80040200;
    constexpr DWORD dwEnd = 0x80050000;
    auto const dwCode = static_cast<DWORD>(hr);
    if (dwCode > dwFirst && dwCode < dwEnd) return L"IDispatch error #" + std::to_wstring(dwCode - dwFirst);
    std::array<wchar_t, 32> acText{};
    std::swprintf(acText.data(), acText.size(), L"Unknown error 0x%0lX", dwCode);
    return acText.data();
}

std::wstring sGetErrorText(HRESULT hr) {
    wchar_t * pzText = nullptr;
    DWORD const dwLength =
        FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                       nullptr, static_cast<DWORD>(hr), 0, reinterpret_cast<wchar_t *>(&pzText), 0, nullptr);
    std::unique_ptr<wchar_t, TLocalFree> const pOwner(pzText);
    if (dwLength == 0) return sGetTextOfUnknown(hr);
    std::wstring_view sText(pzText, dwLength);
    if (sText.ends_with(L'\n')) sText.remove_suffix(1);
    if (sText.ends_with(L'\r')) sText.remove_suffix(1);
    return std::wstring(sText);
}

/// The steps of one deletion; each throws for a negative result.
class TShellDelete {
public:
    explicit TShellDelete(std::wstring const & sPath_) : sPath(sPath_) {}

    [[nodiscard]] TComOwner<IShellItem> tParse() const {
        IShellItem * pItem = nullptr;
        Check(SHCreateItemFromParsingName(sPath.c_str(), nullptr, IID_IShellItem, reinterpret_cast<void **>(&pItem)));
        return TComOwner<IShellItem>(pItem);
    }

    [[nodiscard]] TComOwner<IEnumShellItems> tEnumerate(IShellItem & tItem) const {
        IEnumShellItems * pItems = nullptr;
        Check(tItem.BindToHandler(nullptr, BHID_EnumItems, IID_IEnumShellItems, reinterpret_cast<void **>(&pItems)));
        return TComOwner<IEnumShellItems>(pItems);
    }

    [[nodiscard]] TComOwner<IFileOperation> tCreateFileOperation(DWORD dwFlags) const {
        IFileOperation * pOperation = nullptr;
        Check(CoCreateInstance(CLSID_FileOperation, nullptr, CLSCTX_ALL, IID_IFileOperation,
                               reinterpret_cast<void **>(&pOperation)));
        TComOwner<IFileOperation> tOperation(pOperation);
        Check(tOperation->SetOperationFlags(dwFlags));
        return tOperation;
    }

    void Check(HRESULT hr) const {
        if (hr >= 0) return;
        TXZkTools tFailure(IDS_COPY_FAILED, sPath.c_str());
        tFailure.AddMessageStr(L"%s", sGetErrorText(hr).c_str());
        throw tFailure;
    }

private:
    std::wstring const & sPath;
};

} // namespace

void DeleteByShell(std::wstring const & sPath) {
    TShellDelete const tDelete(sPath);
    TComOwner<IShellItem> const tItem = tDelete.tParse();
    TComOwner<IFileOperation> const tOperation = tDelete.tCreateFileOperation(dwWithUndo);
    tDelete.Check(tOperation->DeleteItem(tItem.get(), nullptr));
    tDelete.Check(tOperation->PerformOperations());
}

void ClearByShell(std::wstring const & sDirectory, bool fRecursive) {
    TShellDelete const tDelete(sDirectory);
    TComOwner<IShellItem> const tItem = tDelete.tParse();
    TComOwner<IEnumShellItems> const tItems = tDelete.tEnumerate(*tItem);
    TComOwner<IFileOperation> const tOperation =
        tDelete.tCreateFileOperation(fRecursive ? dwWithUndo : dwWithUndo | FOF_FILESONLY);
    tDelete.Check(tOperation->DeleteItems(tItems.get()));
    tDelete.Check(tOperation->PerformOperations());
}
