#include "files/ShellDelete.h"

#include "ZkBase/Windows.h"
#include "ZkTools/Exceptions.h"
#include "ZkTools/MessageIds.h"
#include "frame/ComErrorText.h"
#include "frame/ComOwners.h"

#include <shellapi.h>
#include <shlguid.h>
#include <shlobj.h>
#include <shobjidl.h>

namespace {

constexpr DWORD dwQuietly = FOF_SILENT | FOF_NOCONFIRMATION | FOF_NOCONFIRMMKDIR | FOF_NOERRORUI;
constexpr DWORD dwWithUndo = dwQuietly | FOF_ALLOWUNDO;
static_assert(dwQuietly == 1556 && dwWithUndo == 1556 + 64);

/// The steps of one deletion; each throws for a negative result.
class TShellDelete {
public:
    explicit TShellDelete(std::wstring const & sPath_) : sPath(sPath_) {}

    [[nodiscard]] TReference<IShellItem> tParse() const {
        IShellItem * pItem = nullptr;
        Check(SHCreateItemFromParsingName(sPath.c_str(), nullptr, IID_IShellItem, reinterpret_cast<void **>(&pItem)));
        return TReference<IShellItem>(pItem);
    }

    [[nodiscard]] TReference<IEnumShellItems> tEnumerate(IShellItem & tItem) const {
        IEnumShellItems * pItems = nullptr;
        Check(tItem.BindToHandler(nullptr, BHID_EnumItems, IID_IEnumShellItems, reinterpret_cast<void **>(&pItems)));
        return TReference<IEnumShellItems>(pItems);
    }

    [[nodiscard]] TReference<IFileOperation> tCreateFileOperation(DWORD dwFlags) const {
        IFileOperation * pOperation = nullptr;
        Check(CoCreateInstance(CLSID_FileOperation, nullptr, CLSCTX_ALL, IID_IFileOperation,
                               reinterpret_cast<void **>(&pOperation)));
        TReference<IFileOperation> tOperation(pOperation);
        Check(tOperation->SetOperationFlags(dwFlags));
        return tOperation;
    }

    void Check(HRESULT hr) const {
        if (hr >= 0) return;
        TXZkTools tFailure(IDS_COPY_FAILED, sPath.c_str());
        TLocalText const pzReason = pzGetComErrorText(hr, FORMAT_MESSAGE_IGNORE_INSERTS);
        tFailure.AddMessageStr(L"%s", pzReason != nullptr ? pzReason.get() : L"");
        throw tFailure;
    }

private:
    std::wstring const & sPath;
};

} // namespace

void DeleteByShell(std::wstring const & sPath) {
    TShellDelete const tDelete(sPath);
    TReference<IShellItem> const tItem = tDelete.tParse();
    TReference<IFileOperation> const tOperation = tDelete.tCreateFileOperation(dwWithUndo);
    tDelete.Check(tOperation->DeleteItem(tItem.get(), nullptr));
    tDelete.Check(tOperation->PerformOperations());
}

void ClearByShell(std::wstring const & sDirectory, bool fRecursive) {
    TShellDelete const tDelete(sDirectory);
    TReference<IShellItem> const tItem = tDelete.tParse();
    TReference<IEnumShellItems> const tItems = tDelete.tEnumerate(*tItem);
    TReference<IFileOperation> const tOperation =
        tDelete.tCreateFileOperation(fRecursive ? dwWithUndo : dwWithUndo | FOF_FILESONLY);
    tDelete.Check(tOperation->DeleteItems(tItems.get()));
    tDelete.Check(tOperation->PerformOperations());
}
