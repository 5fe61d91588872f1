// Deletion that can be undone. Wine's own file operation is a stub, so these tests register one of their own, which
// writes its calls down: what the library asks the shell for is what is tested.
#include "ZkTools/Rename.h"

#include "ZkTools/MessageIds.h"
#include "tests/files/Fixture.h"
#include "tests/support/SystemCall.h"

#include <gtest/gtest.h>

#include <objbase.h>
#include <shlguid.h>
#include <shlobj.h>
#include <shobjidl.h>

#include <memory>
#include <string>

namespace {

using zk_test::fExists;
using zk_test::sListDirectory;
using zk_test::TSystemCall;
using zk_test::TTempDirectory;
using zk_test::tThrownBy;

/// What a file operation was asked for, and what it is to answer.
struct TRecord {
    std::wstring sCalls;         ///< with their arguments, behind one another
    std::wstring sFailing;       ///< the name of the call that fails
    HRESULT hrFailure = S_OK;    ///< what it answers
    IUnknown * pItems = nullptr; ///< what a directory was asked for
    int iReferences = 0;         ///< on all objects, at the end 0

    HRESULT hrCall(std::wstring const & sName, std::wstring const & sArguments = {}) {
        sCalls.append(sCalls.empty() ? L"" : L"; ").append(sName).append(sArguments);
        return sName == sFailing ? hrFailure : S_FALSE;
    }
};

/// The references of an object that lives where the test puts it.
template <typename TInterface>
class TCounted : public TInterface {
public:
    explicit TCounted(TRecord & tRecord_) : tRecord(tRecord_) {}
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void **) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++tRecord.iReferences); }
    ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(--tRecord.iReferences); }

protected:
    TRecord & tRecord;
};

class TItems final : public TCounted<IEnumShellItems> {
public:
    using TCounted::TCounted;
    HRESULT STDMETHODCALLTYPE Next(ULONG, IShellItem **, ULONG *) override { return S_FALSE; }
    HRESULT STDMETHODCALLTYPE Skip(ULONG) override { return S_FALSE; }
    HRESULT STDMETHODCALLTYPE Reset() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE Clone(IEnumShellItems **) override { return E_NOTIMPL; }
};

/// A directory to the shell. Wine's cannot tell what is in it.
class TDirectory final : public TCounted<IShellItem> {
public:
    explicit TDirectory(TRecord & tRecord_)
        : TCounted(tRecord_), tItems(tRecord_),
          tCreate([this](PCWSTR pzPath, IBindCtx * pContext, REFIID tId, void ** ppObject) {
              EXPECT_EQ(pContext, nullptr);
              EXPECT_TRUE(IsEqualIID(tId, IID_IShellItem));
              HRESULT const hr = tRecord.hrCall(L"parse", std::wstring(L" ") + pzPath);
              if (hr < 0) return hr;
              *ppObject = static_cast<IShellItem *>(this);
              AddRef();
              return hr;
          }) {
        tRecord.pItems = &tItems;
    }

    HRESULT STDMETHODCALLTYPE BindToHandler(IBindCtx * pContext, REFGUID tHandler, REFIID tId,
                                            void ** ppObject) override {
        EXPECT_EQ(pContext, nullptr);
        EXPECT_TRUE(IsEqualGUID(tHandler, BHID_EnumItems));
        EXPECT_TRUE(IsEqualIID(tId, IID_IEnumShellItems));
        HRESULT const hr = tRecord.hrCall(L"enumerate");
        if (hr < 0) return hr;
        *ppObject = static_cast<IEnumShellItems *>(&tItems);
        tItems.AddRef();
        return hr;
    }
    HRESULT STDMETHODCALLTYPE GetParent(IShellItem **) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetDisplayName(SIGDN, LPWSTR *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetAttributes(SFGAOF, SFGAOF *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Compare(IShellItem *, SICHINTF, int *) override { return E_NOTIMPL; }

private:
    TItems tItems;
    TSystemCall<"SHCreateItemFromParsingName", decltype(SHCreateItemFromParsingName)> const tCreate;
};

std::wstring sGetPath(IShellItem & tItem) {
    wchar_t * pzName = nullptr;
    if (tItem.GetDisplayName(SIGDN_FILESYSPATH, &pzName) < 0) return L"?";
    std::wstring sName = pzName;
    CoTaskMemFree(pzName);
    return sName;
}

class TFileOperation final : public IFileOperation {
public:
    explicit TFileOperation(TRecord & tRecord_) : tRecord(tRecord_) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID tId, void ** ppObject) override {
        *ppObject = nullptr;
        if (!IsEqualIID(tId, IID_IUnknown) && !IsEqualIID(tId, IID_IFileOperation)) return E_NOINTERFACE;
        *ppObject = static_cast<IFileOperation *>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++tRecord.iReferences); }
    ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(--tRecord.iReferences); }

    HRESULT STDMETHODCALLTYPE SetOperationFlags(DWORD dwFlags) override {
        return tRecord.hrCall(L"flags", L" " + std::to_wstring(dwFlags));
    }
    HRESULT STDMETHODCALLTYPE DeleteItem(IShellItem * pItem, IFileOperationProgressSink * pSink) override {
        return tRecord.hrCall(L"delete", (pSink == nullptr ? L" " : L" with sink ") + sGetPath(*pItem));
    }
    HRESULT STDMETHODCALLTYPE DeleteItems(IUnknown * pItems) override {
        return tRecord.hrCall(L"delete all", pItems == tRecord.pItems ? L" of them" : L" others");
    }
    HRESULT STDMETHODCALLTYPE PerformOperations() override { return tRecord.hrCall(L"perform"); }

    // None of these is to be called.
    HRESULT STDMETHODCALLTYPE Advise(IFileOperationProgressSink *, DWORD *) override { return hrNever(); }
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD) override { return hrNever(); }
    HRESULT STDMETHODCALLTYPE SetProgressMessage(LPCWSTR) override { return hrNever(); }
    HRESULT STDMETHODCALLTYPE SetProgressDialog(IOperationsProgressDialog *) override { return hrNever(); }
    HRESULT STDMETHODCALLTYPE SetProperties(IPropertyChangeArray *) override { return hrNever(); }
    HRESULT STDMETHODCALLTYPE SetOwnerWindow(HWND) override { return hrNever(); }
    HRESULT STDMETHODCALLTYPE ApplyPropertiesToItem(IShellItem *) override { return hrNever(); }
    HRESULT STDMETHODCALLTYPE ApplyPropertiesToItems(IUnknown *) override { return hrNever(); }
    HRESULT STDMETHODCALLTYPE RenameItem(IShellItem *, LPCWSTR, IFileOperationProgressSink *) override {
        return hrNever();
    }
    HRESULT STDMETHODCALLTYPE RenameItems(IUnknown *, LPCWSTR) override { return hrNever(); }
    HRESULT STDMETHODCALLTYPE MoveItem(IShellItem *, IShellItem *, LPCWSTR, IFileOperationProgressSink *) override {
        return hrNever();
    }
    HRESULT STDMETHODCALLTYPE MoveItems(IUnknown *, IShellItem *) override { return hrNever(); }
    HRESULT STDMETHODCALLTYPE CopyItem(IShellItem *, IShellItem *, LPCWSTR, IFileOperationProgressSink *) override {
        return hrNever();
    }
    HRESULT STDMETHODCALLTYPE CopyItems(IUnknown *, IShellItem *) override { return hrNever(); }
    HRESULT STDMETHODCALLTYPE NewItem(IShellItem *, DWORD, LPCWSTR, LPCWSTR, IFileOperationProgressSink *) override {
        return hrNever();
    }
    HRESULT STDMETHODCALLTYPE GetAnyOperationsAborted(BOOL *) override { return hrNever(); }

private:
    HRESULT hrNever() { return tRecord.hrCall(L"something else"); }

    TRecord & tRecord;
};

class TFactory final : public IClassFactory {
public:
    explicit TFactory(TRecord & tRecord_) : tRecord(tRecord_), tOperation(tRecord_) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID tId, void ** ppObject) override {
        *ppObject = nullptr;
        if (!IsEqualIID(tId, IID_IUnknown) && !IsEqualIID(tId, IID_IClassFactory)) return E_NOINTERFACE;
        *ppObject = static_cast<IClassFactory *>(this);
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown * pOuter, REFIID tId, void ** ppObject) override {
        EXPECT_EQ(pOuter, nullptr);
        *ppObject = nullptr;
        if (HRESULT const hr = tRecord.hrCall(L"create"); hr < 0) return hr;
        return tOperation.QueryInterface(tId, ppObject);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

private:
    TRecord & tRecord;
    TFileOperation tOperation;
};

/// COM, with this file operation in the place of the system's.
class ShellDelete : public testing::Test {
protected:
    ShellDelete() {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        EXPECT_EQ(CoRegisterClassObject(CLSID_FileOperation, &tFactory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE,
                                        &dwRegistration),
                  S_OK);
    }
    ~ShellDelete() override {
        CoRevokeClassObject(dwRegistration);
        CoUninitialize();
        EXPECT_EQ(tRecord.iReferences, 0);
    }

    TTempDirectory tTemp;
    TRecord tRecord;

private:
    TFactory tFactory{tRecord};
    DWORD dwRegistration = 0;
};

/// The library's message and the text behind it.
std::string sFailureWithText(std::wstring const & sPath, std::wstring const & sText) {
    TXZkTools tError(4220, sPath.c_str());
    tError.AddMessageStr(L"%s", sText.c_str());
    return tError.what();
}

/// What the system has for a code, without its line end; Wine lacks many.
std::wstring sGetSystemText(HRESULT hr) {
    wchar_t acText[512];
    DWORD const dwLength = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                          static_cast<DWORD>(hr), 0, acText, 512, nullptr);
    std::wstring sText(acText, dwLength);
    if (sText.ends_with(L"\r\n")) sText.resize(sText.size() - 2);
    if (!sText.empty()) return sText;
    swprintf(acText, 512, L"Unknown error 0x%0lX", hr);
    return acText;
}

} // namespace

TEST_F(ShellDelete, AsksTheShellToDeleteAnItem) {
    std::wstring const sFile = tTemp.sWrite(L"file", "1");
    xZkDeleteFileOrFolder(sFile, eDeleteAllowUndo);
    EXPECT_EQ(tRecord.sCalls, L"create; flags 1620; delete " + sFile + L"; perform");
    EXPECT_TRUE(fExists(sFile)); // the operation here does nothing
    tRecord.sCalls.clear();
    std::wstring const sDirectory = tTemp.sMakeDirectory(L"dir");
    EXPECT_TRUE(fZkDeleteFileOrFolder(sDirectory, eDeleteAllowUndo | eDeleteAtRebootOnFailure));
    EXPECT_EQ(tRecord.sCalls, L"create; flags 1620; delete " + sDirectory + L"; perform");
}

TEST_F(ShellDelete, AsksForEachMatchOfAPattern) {
    std::wstring const sFirst = tTemp.sWrite(L"a", "1");
    std::wstring const sSecond = tTemp.sWrite(L"b", "1");
    tTemp.sWrite(L".c", "1");
    xZkDeleteFileOrFolder(tTemp.sGetPath(L"*"), eDeleteAllowUndo);
    EXPECT_EQ(tRecord.sCalls, L"create; flags 1620; delete " + sFirst + L"; perform; create; flags 1620; delete " +
                                  sSecond + L"; perform");
}

TEST_F(ShellDelete, AsksTheShellToClearADirectory) {
    TDirectory const tDirectory(tRecord);
    xZkClearDirectory(L"C:\\dir", true, eDeleteAllowUndo);
    EXPECT_EQ(tRecord.sCalls, L"parse C:\\dir; enumerate; create; flags 1620; delete all of them; perform");
    tRecord.sCalls.clear();
    EXPECT_TRUE(fZkClearDirectory(L"C:\\dir", false, eDeleteAllowUndo));
    EXPECT_EQ(tRecord.sCalls, // files only
              L"parse C:\\dir; enumerate; create; flags 1748; delete all of them; perform");
}

TEST_F(ShellDelete, IsOnlyForUndo) {
    xZkDeleteFileOrFolder(tTemp.sWrite(L"file", "1"), eDeleteDirect);
    xRemoveFiles(tTemp.sWrite(L"file", "1"));
    xZkClearDirectory(tTemp.sGetPath(), true, eDeleteAtRebootOnFailure);
    EXPECT_EQ(tRecord.sCalls, L"");
}

TEST_F(ShellDelete, TellsEveryStepThatFails) {
    std::wstring const sFile = tTemp.sWrite(L"file 100%s", "1");
    for (wchar_t const * pzStep : {L"create", L"flags", L"delete", L"perform"}) {
        tRecord = {.sCalls = {}, .sFailing = pzStep, .hrFailure = E_ACCESSDENIED};
        TXZkTools const tError = tThrownBy([&] { xZkDeleteFileOrFolder(sFile, eDeleteAllowUndo); });
        EXPECT_EQ(tError.iGetNumber(), IDS_COPY_FAILED);
        EXPECT_EQ(tError.what(), sFailureWithText(sFile, sGetSystemText(E_ACCESSDENIED)));
        EXPECT_EQ(tRecord.iReferences, 0);
    }
    TDirectory const tDirectory(tRecord);
    for (wchar_t const * pzStep : {L"parse", L"enumerate", L"create", L"flags", L"delete all", L"perform"}) {
        tRecord.sFailing = pzStep;
        EXPECT_EQ(tThrownBy([&] { xZkClearDirectory(tTemp.sGetPath(), true, eDeleteAllowUndo); }).what(),
                  sFailureWithText(tTemp.sGetPath(), sGetSystemText(E_ACCESSDENIED)));
        EXPECT_FALSE(fZkClearDirectory(tTemp.sGetPath(), false, eDeleteAllowUndo));
        EXPECT_EQ(tRecord.iReferences, 0);
    }
}

TEST_F(ShellDelete, WordsTheErrorOfTheShell) {
    std::wstring const sFile = tTemp.sWrite(L"file", "1");
    struct {
        DWORD dwResult;
        wchar_t const * pzText; ///< null: the system's own
    } const atRows[] = {
        {0x80070005, nullptr},
        {0x80004001, nullptr},
        {0x8007000E, nullptr},
        {0xDEADBEEF, L"Unknown error 0xDEADBEEF"},
        {0x8ABC0001, L"Unknown error 0x8ABC0001"},
        {0x80040200, L"Unknown error 0x80040200"}, // the start of the range is none of them
        {0x80047ABC, L"IDispatch error #30908"},
        {0x8004FFFF, L"IDispatch error #65023"},
    };
    for (auto const & tRow : atRows) {
        auto const hr = static_cast<HRESULT>(tRow.dwResult);
        tRecord = {.sCalls = {}, .sFailing = L"perform", .hrFailure = hr};
        std::wstring const sText = tRow.pzText != nullptr ? tRow.pzText : sGetSystemText(hr);
        EXPECT_FALSE(sText.empty() || sText.ends_with(L'\n'));
        EXPECT_EQ(tThrownBy([&] { xZkDeleteFileOrFolder(sFile, eDeleteAllowUndo); }).what(),
                  sFailureWithText(sFile, sText));
    }
}

TEST_F(ShellDelete, FailsForWhatTheShellDoesNotFind) {
    std::wstring const sMissing = tTemp.sGetPath(L"missing");
    EXPECT_EQ(tThrownBy([&] { xZkDeleteFileOrFolder(sMissing, eDeleteAllowUndo); }).what(),
              sFailureWithText(sMissing, sGetSystemText(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND))));
    EXPECT_EQ(tThrownBy([&] { xZkClearDirectory(sMissing, true, eDeleteAllowUndo); }).what(),
              sFailureWithText(sMissing, sGetSystemText(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND))));
    EXPECT_EQ(tRecord.sCalls, L"");
}

TEST_F(ShellDelete, PutsDownWhatTheShellCouldNotDelete) {
    std::wstring const sFile = tTemp.sWrite(L"file", "1");
    std::wstring sItems;
    TSystemCall<"MoveFileExW", decltype(MoveFileExW)> const tMove([&](LPCWSTR pzOld, auto...) {
        sItems.append(pzOld).append(L"|");
        return TRUE;
    });
    tRecord.sFailing = L"perform";
    tRecord.hrFailure = E_FAIL;
    EXPECT_EQ(
        tThrownBy([&] { xZkDeleteFileOrFolder(sFile, eDeleteAllowUndo | eDeleteAtRebootOnFailure); }).iGetNumber(),
        IDS_COPY_FAILED);
    EXPECT_EQ(sItems, sFile + L"|");
}

TEST_F(ShellDelete, CreatesTheOperationAnywhere) {
    DWORD dwSeen = 0;
    TSystemCall<"CoCreateInstance", decltype(CoCreateInstance)> const tCreate(
        [&](REFCLSID tClass, LPUNKNOWN pOuter, DWORD dwContext, REFIID tId, LPVOID * ppObject) {
            dwSeen = dwContext;
            return tCreate.Original(tClass, pOuter, dwContext, tId, ppObject);
        });
    xZkDeleteFileOrFolder(tTemp.sWrite(L"file", "1"), eDeleteAllowUndo);
    EXPECT_EQ(dwSeen, 23u);
}

TEST(ShellDeleteWithoutCom, IsAFailureOfTheShell) {
    TTempDirectory const tTemp;
    std::wstring const sFile = tTemp.sWrite(L"file", "1");
    EXPECT_EQ(tThrownBy([&] { xZkDeleteFileOrFolder(sFile, eDeleteAllowUndo); }).what(),
              sFailureWithText(sFile, sGetSystemText(CO_E_NOTINITIALIZED)));
    EXPECT_TRUE(fExists(sFile));
}
