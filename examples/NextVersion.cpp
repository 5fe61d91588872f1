// Gives the object of a shared directory its next version, safely while others work there.
//
//   next_version DIRECTORY TAG
//
// The file "object.alias" in the directory holds the object's alias. Whoever else has the directory open, on whatever
// machine, keeps this program out, which then tells who it is.

#include <ZkTools/ZkTools.h>

#include <cstdio>
#include <cwchar>
#include <exception>
#include <string>

namespace {

constexpr wchar_t const * pzObject = L"object.alias";

/// The alias in the file; an empty one when there is no file yet.
TAlias tLoad(std::wstring const & sPath) {
    TAlias tAlias;
    if (!fExistFile(sPath.c_str())) return tAlias;
    TFStream tFile(sPath, ecpUtf8, FS_BINARY);
    tAlias.Read(tFile);
    return tAlias;
}

void Save(std::wstring const & sPath, TAlias const & tAlias) {
    TFStream tFile(sPath, ecpUtf8, FS_CREATE | FS_BINARY);
    tAlias.Write(tFile);
    tFile.Close(); // reports a full disk, which the destructor could not
}

/// One version up. Another tag begins with version 1.
TAlias tGetNext(TAlias const & tAlias, std::wstring const & sTag) {
    long const iVersion = tAlias.sGetTag() == sTag ? std::wcstol(tAlias.pzGetVersion(), nullptr, 10) : 0;
    return TAlias(sTag, std::to_wstring(iVersion + 1), tAlias.sGetVariant());
}

} // namespace

int wmain(int iCount, wchar_t ** ppzArguments) {
    if (iCount != 3) {
        std::fputs("usage: next_version DIRECTORY TAG\n", stderr);
        return 2;
    }
    std::wstring const sDirectory = ppzArguments[1];
    std::wstring const sPath = sDirectory + L"\\" + pzObject;
    try {
        MakeDirectory(sDirectory.c_str());
        TLockDirectory tLock(eModeStrict, sDirectory.c_str(), pzObject);
        tLock.Open(); // a reader place: nobody can lock the directory from here on
        tLock.Lock(); // the writer place; both are given up when tLock goes, or this process dies
        TAlias const tAlias = tGetNext(tLoad(sPath), ppzArguments[2]);
        Save(sPath, tAlias);
        std::wprintf(L"%ls\n", tAlias.sGetAlias(nullptr).c_str());
        return 0;
    } catch (std::exception const & tError) {
        std::fprintf(stderr, "%s\n", tError.what());
        return 1;
    }
}
