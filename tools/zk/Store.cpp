// zk store: the road of an alias into a shared directory.
#include "tools/zk/Commands.h"
#include "tools/zk/ObjectLock.h"

#include "ZkTools/Alias.h"
#include "ZkTools/FileStream.h"

namespace {

/// True when what `show` will read is what was given. Characters above U+FFFF come out of no stream, and a count of
/// bytes has 15 bits.
bool fComesBack(TAlias const & tAlias) {
    TStreamBase tStream(ecpUtf8);
    TAlias tRead;
    try {
        tAlias.Write(tStream);
        tStream.SetPos(0);
        tRead.Read(tStream);
    } catch (TXError const &) {
        return false;
    }
    return tRead == tAlias;
}

EExit eStore(TArguments const & tArguments) {
    TAlias const tAlias(tArguments.sGet(2), tArguments.sGet(3), tArguments.sGet(4));
    if (tAlias.fIsEmpty()) throw TWrongUsage{L"TAG is empty."};
    if (!fComesBack(tAlias))
        throw TXZkTools(L"An alias with characters above U+FFFF, or with more than 32766 bytes of UTF-8 in a part, "
                        L"cannot be stored.");

    TObjectLock tLock(tArguments.sGet(0), tArguments.sGet(1));
    tLock.Open();
    tLock.Lock();
    TFStream tFile(ecpUtf8, 0); // without a buffer, so that nothing is left to be written when it closes
    tFile.Open(tLock.sGetObjectPath().c_str(), FS_CREATE | FS_EXCLUSIVE | FS_BINARY);
    tAlias.Write(tFile);
    tFile.Close();
    tLock.Unlock();
    tLock.Close();
    return eDone;
}

} // namespace

TCommand const tStoreCommand{
    L"store",
    L"DIR OBJECT TAG [VERSION [VARIANT]]",
    L"Writes an alias into the file OBJECT in the directory DIR.",
    L"Takes a reader place in DIR, then the writer place, writes the file, and gives\n"
    L"both places up again. Nothing is written when somebody else reads or writes in\n"
    L"DIR, has OBJECT open, or has made it read-only: the refusal names whom it knows.\n"
    L"\n"
    L"Blanks at the ends of TAG, VERSION and VARIANT are dropped. The texts stand in\n"
    L"the file in UTF-8. A file that is there is made anew: when the disk fills up\n"
    L"while it is written, its old contents are lost.\n",
    3,
    5,
    {},
    eStore,
};
