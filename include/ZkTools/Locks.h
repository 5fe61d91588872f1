/// Reader and writer places on a directory or on a file in it, across processes and machines, without a lock service.
///
/// Everything rests on two promises of the file system: a file opened without sharing cannot be opened again, and a
/// file opened with `FILE_FLAG_DELETE_ON_CLOSE` vanishes when its last handle closes, also when its process dies. A
/// place is therefore an empty hidden file beside the data that its holder keeps open; a crash frees it at once, and
/// what the crash of a machine leaves behind is recognised because it can be opened, and swept by that very look.
///
/// | File in the directory            | Who holds it                                          |
/// |----------------------------------|-------------------------------------------------------|
/// | `rdr%COMPUTER%USER%.tmp`         | a reader; `_2`, `_3` ... in front of the point for more |
/// | `write.lck`                      | the writer                                            |
/// | `write%COMPUTER%USER%.tmp`       | the writer, to say who it is                          |
///
/// There are many readers and at most one writer. Each test is a single look; nothing waits or tries again but
/// `TFileReaderLock`.
#pragma once

#include "ZkBase/Windows.h"
#include "ZkTools/Exceptions.h"
#include "ZkTools/Export.h"
#include "ZkTools/FileStream.h"

#include <array>
#include <stdexcept>
#include <string>

/// How strict a lock is. Every value but 0 counts as shared.
enum EMode : int {
    eModeStrict = 0, ///< a live writer bars `Open`; other live readers and a busy object bar `Lock`
    eModeShared = 1, ///< neither is tested; only the writer place itself keeps two writers apart
};

/// The messages that a lock words its failures with. The first argument of each is the name of the locked object.
enum EErrorString : int {
    eErrLock = 0,          ///< head line of every failure to lock
    eErrWriterKnown = 1,   ///< a live writer; second argument: who it is
    eErrReadOnly = 2,      ///< opened on read-only media, so that it can't be locked
    eErrWriterUnknown = 3, ///< a live writer of whom nothing is known
    eErrOpen = 4,          ///< head line of every failure to open
    eErrInUse = 5,         ///< the object is in use, or there are readers of whom nothing is known
    eErrReadersKnown = 6,  ///< other live readers; second argument: who they are, one a line
};

/// Keeps programs from working on one directory at cross purposes.
///
/// `Open` takes a reader place in the directory, `Lock` the one writer place; `Lock` nests and must be balanced by as
/// many `Unlock`. The destructor gives up all places, whatever the count. An object is for one thread at a time, and
/// another object in the same process is a stranger to it as any other.
///
/// Failures come in three forms. `Open`, `Lock` and `xCanLock` throw a plain `std::runtime_error`, not a `TXZkTools`;
/// the forms with an `error` argument return false and leave the text there; the others return false alone. After a
/// failure the object is as it was, and no file of the failed attempt stays.
class ZKTOOLS_API TLockDirectory {
public:
    /// `SetDir` must follow.
    explicit TLockDirectory(EMode eMode);
    /// \param pzDirectory  see SetDir
    /// \param pzObjectName see SetDir
    TLockDirectory(EMode eMode, wchar_t const * pzDirectory, wchar_t const * pzObjectName);
    /// A copy shares the handles, they are not duplicated: only one of the two may close them, and the destructor does.
    TLockDirectory(TLockDirectory const & tOther);
    TLockDirectory & operator=(TLockDirectory const & tOther);
    /// Gives up every place, whatever the nesting.
    virtual ~TLockDirectory();

    /// Names what is to be locked. Places that are taken already stay as they are, in the old directory.
    /// \param pzDirectory  the directory; one backslash at its end doesn't count
    /// \param pzObjectName the file in it that is the data, or that stands for the directory; it need not exist
    ///
    /// With either null nothing changes.
    virtual void SetDir(wchar_t const * pzDirectory, wchar_t const * pzObjectName);

    /// True when a reader file and the object of read-only media are held both. `Open` takes one of them, so that this
    /// is false after it: programs rely on being let through here. Ask `fIsReadOnly` and `fIsLocked`, or keep the
    /// result of `Open`.
    [[nodiscard]] bool fIsOpen() const noexcept;
    /// True when the place was taken on read-only media, by holding the object itself.
    [[nodiscard]] bool fIsReadOnly() const noexcept;
    /// True while this object holds the writer place.
    [[nodiscard]] bool fIsLocked() const noexcept;

    /// True when no live writer bars `Open` at this moment. Sweeps a writer file left without a holder.
    [[nodiscard]] bool fCanOpen();

    /// Takes a reader place. When the directory refuses with `ERROR_ACCESS_DENIED` (read-only media), the object file
    /// is held for reading instead, which must exist and not be open for writing.
    ///
    /// Taking a second place without `Close` leaves the first reader file held until the process ends. Two processes of
    /// one user on one computer that pick the same file name in the same instant: the second one fails.
    [[nodiscard]] bool fOpen(std::runtime_error & tError);
    /// \throws std::runtime_error with the line of `eErrOpen` and the reason
    void Open();
    /// Gives the reader place up. The writer place stays.
    void Close() noexcept;

    /// True when `Lock` would pass at this moment: the tests of `xCanLock`, and the writer place can be taken.
    [[nodiscard]] bool fCanLock();
    /// Makes the tests that come before the writer place is taken; whether somebody has it is not among them.
    /// \throws std::runtime_error with the reason
    void xCanLock();

    /// Takes the writer place, or counts one level more when this object has it. In `eModeStrict` other readers bar it,
    /// and so does anybody who has the object open in a way that keeps a sole reader out; a read-only object bars it
    /// always. `Open` need not come first, but without it one foreign reader goes unnoticed.
    [[nodiscard]] bool fLock(std::runtime_error & tError);
    /// \throws std::runtime_error with the line of `eErrLock` and the reason
    void Lock();
    /// Takes one level off, and gives the writer place up with the last one. Unbalanced calls go below 0, and the next
    /// `Lock` then only counts and takes nothing.
    void Unlock() noexcept;

    /// The number of live reader files in the directory, this object's own included. Sweeps those without a holder.
    [[nodiscard]] int iCountReader() const;

protected:
    /// How messages name what is locked: the directory. Empty before `SetDir`, never null.
    virtual wchar_t const * pzGetNameOfObjectToLock();

    /// As `fCanOpen()`, with the reason.
    [[nodiscard]] bool fCanOpen(std::runtime_error & tError);
    /// As `xCanLock`, with the reason.
    [[nodiscard]] bool fCanLock(std::runtime_error & tError);
    /// Gives up the writer place and leaves the count as it is.
    void ForceUnlock() noexcept;

    /// True when somebody holds the writer place, be it this object. Sweeps a writer file without a holder.
    [[nodiscard]] bool fFindWriter() const;
    /// Who the live writer is, "user [computer]". Empty when there is none, and when it is another user or works on
    /// another computer: only a file of this object's own computer and user is looked at.
    [[nodiscard]] std::wstring sGetWriterInfo() const;
    /// Who the live readers are, without this object, "user [computer]" each, one a line. Sweeps reader files without a
    /// holder.
    [[nodiscard]] std::wstring sGetReaderInfo() const;

    /// Opens the writer file without sharing. The caller owns the handle; `INVALID_HANDLE_VALUE` when that fails.
    [[nodiscard]] HANDLE hCreateWriter() const;
    /// The same for the file that tells who the writer is.
    [[nodiscard]] HANDLE hCreateWriterInfo() const;
    /// Picks a free reader name and opens that file, once.
    /// \param hHandle the place, owned by the caller; `INVALID_HANDLE_VALUE` when it failed
    /// \param dwError 0, or why it failed
    [[nodiscard]] bool fGetNextFreeReader(HANDLE & hHandle, unsigned long & dwError);

    /// Sets the message ids of this class.
    void FillErrorStringIds() noexcept;
    /// The message id at that index.
    [[nodiscard]] unsigned int uiGetErrorStringId(EErrorString eErrorString) const noexcept;

    std::wstring sDirectory;         ///< without one backslash at its end
    std::wstring sReaderPattern;     ///< all reader files of the directory
    std::wstring sReaderPath;        ///< this object's own; empty before `Open` and after a failed one
    std::wstring sReaderBaseName;    ///< what its name begins with
    std::wstring sWriterPath;        ///< the one writer file
    std::wstring sWriterInfoPattern; ///< read by no operation
    std::wstring sWriterInfoPath;    ///< the writer-info file of this computer and user
    std::wstring sObjectPath;        ///< the data
    std::wstring sComputer;
    std::wstring sUser;
    HANDLE hReader = INVALID_HANDLE_VALUE;     ///< the reader file, from `Open` to `Close`
    HANDLE hWriter = INVALID_HANDLE_VALUE;     ///< the writer file, while locked
    HANDLE hWriterInfo = INVALID_HANDLE_VALUE; ///< the writer-info file, while locked
    HANDLE hReadOnly = INVALID_HANDLE_VALUE;   ///< the object, instead of `hReader` on read-only media
    int iLockCount = 0;                        ///< nesting depth of `Lock`
    EMode eMode;
    std::array<unsigned int, 7> uiErrorIds; ///< by `EErrorString`
};

/// The same for one file of a directory, so that several of its files can have writers at the same time.
///
/// Only the writer place is that of the file: `write%FILE.lck` and `write%COMPUTER%USER%FILE.tmp`. Reader places stay
/// those of the directory, so that in `eModeStrict` two of its files can't be locked while the holder of the other one
/// keeps a reader place. The writer of the directory and those of its files don't see each other. Messages name the
/// file.
class ZKTOOLS_API TLockFile : public TLockDirectory {
public:
    /// `SetDir` must follow.
    explicit TLockFile(EMode eMode);
    /// \param pzDirectory see SetDir
    /// \param pzFileName  see SetDir
    TLockFile(EMode eMode, wchar_t const * pzDirectory, wchar_t const * pzFileName);
    /// A copy shares the handles: only one of the two may close them, and the destructor does.
    TLockFile(TLockFile const & tOther);
    TLockFile & operator=(TLockFile const & tOther);
    /// A move is a copy, which leaves the handles in the source as well; only the file's name is taken out of it.
    TLockFile(TLockFile && tOther);
    TLockFile & operator=(TLockFile && tOther);
    ~TLockFile() override;

    /// Names what is to be locked. Places that are taken already stay as they are.
    /// \param pzDirectory the directory, with or without a backslash at its end; never null
    /// \param pzFileName  the name of a file in it, which need not exist; never null
    void SetDir(wchar_t const * pzDirectory, wchar_t const * pzFileName) override;

    /// The path of the file.
    [[nodiscard]] std::wstring sGetPathOfObjectToLock() const;

protected:
    /// The name of the file, without the directory.
    wchar_t const * pzGetNameOfObjectToLock() override;

    /// Sets the message ids of this class.
    void FillErrorStringIds() noexcept;

    std::wstring sFileName; ///< as given to `SetDir`
};

/// Holds a file open for reading, so that nobody writes to it, and waits for that as long as somebody does. Other
/// readers are let in. It leaves no lock file and knows nothing of the locks above.
///
/// A handle that can't be closed, because somebody else has closed it, is a defect of the program: a system exception
/// is raised then that can't be continued, with the `HRESULT` of the error as its code.
class ZKTOOLS_API TFileReaderLock {
public:
    /// Takes nothing yet.
    explicit TFileReaderLock(std::wstring const & sPath);
    TFileReaderLock(TFileReaderLock const &) = delete;
    TFileReaderLock & operator=(TFileReaderLock const &) = delete;
    virtual ~TFileReaderLock();

    /// Opens the file, and tries again every 100 ms while somebody else has it open in a way that keeps this one out. A
    /// handle that is held already goes after the first try, whether that one succeeds or not.
    /// \param dwTimeoutSeconds 0 makes one attempt. The limit is reckoned in 32 bits of milliseconds: what is above
    ///                         4,294,967 seconds counts from 0 again.
    /// \throws TXZkTools with the system's reason alone, a sharing violation when the time is over; anything else at
    ///         once
    void Lock(unsigned long dwTimeoutSeconds);
    /// Closes the file; nothing when it isn't held.
    void UnLock();

private:
    [[nodiscard]] HANDLE TryOpenFile() const;

    std::wstring sPath;
    TFileHandle hFile;
};

/// Calls `Unlock` of a lock at the end of a scope. It doesn't lock, and the lock must outlive it.
class ZKTOOLS_API TDirectoryUnlocker {
public:
    explicit TDirectoryUnlocker(TLockDirectory & tLock) noexcept;
    TDirectoryUnlocker(TDirectoryUnlocker const &) = delete;
    TDirectoryUnlocker & operator=(TDirectoryUnlocker const &) = delete;
    ~TDirectoryUnlocker();

private:
    TLockDirectory & tLock;
};
