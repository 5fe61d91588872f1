/// Streams over files: the buffered device stream, the file, a small log, and the owner of a file handle.
#pragma once

#include "ZkBase/Windows.h"
#include "ZkTools/Stream.h"

#include <string>
#include <utility>

/// How a file is opened: bits, combined by `|`.
enum EFileMode : int {
    FS_SHARE_ALL = 1,         ///< others may read and write; without this bit and `FS_EXCLUSIVE` they may read
    FS_READ_WRITE = 2,        ///< read and write access; the file must exist
    FS_EXCLUSIVE = 4,         ///< read and write access, no sharing
    FS_CREATE = 8,            ///< read and write access; the file is made anew, and its directory where it is missing
    FS_PLAIN = 16,            ///< accepted, without an effect
    FS_TEMPORARY = 32,        ///< read and write access; the file is made anew and vanishes when closed
    FS_BYTE_ORDER_MARK = 128, ///< set by the stream when it found a mark; given for writing, asks for one under UTF-8
    FS_BINARY = 256,          ///< no look for a mark on reading
};

/// A stream over a device, through a buffer: the block of `TStreamBase` holds a piece of it.
///
/// The position is one for reading and writing, up to 4 GiB. A caller who writes into the middle of a file seeks before
/// reading on: reading does not write the buffer back.
///
/// **Byte order mark.** Reading at position 0, unless the stream is binary, looks for FF FE, FE FF or EF BB BF; a mark
/// sets the code page, whatever was given, and is passed over. Writing at position 0, binary or not, puts the mark in
/// front under 1200 and 1201, and under 65001 when the mode asks for one.
class ZKTOOLS_API TFStreamBase : public TStreamBase {
public:
    /// \param dwBufferSize bytes; with 0, reading and writing of bytes goes straight to the device, and reading of text
    ///                     makes a buffer of 65536
    explicit TFStreamBase(unsigned long dwBufferSize = 4096);
    ~TFStreamBase() override;

    /// Reads what there is up to `dwCount`: at the end of the file the rest of the target keeps its contents and
    /// nothing is thrown. 0 bytes do nothing.
    /// \throws TXZkTools 4290 for a null target; without a buffer, 4260 behind the system's text at the end of the file
    void ReadData(void * pTarget, unsigned long dwCount) override;
    /// A null source or 0 bytes write nothing, but for the mark at position 0.
    void WriteData(void const * pSource, unsigned long dwCount) override;
    /// Flushes, then moves; past the end is allowed. Any origin but 0, 1 and 2 is position 0.
    /// \throws TXZkTools 4280 at 4 GiB and above, and behind the system's text below 0; the position stays
    void Seek(TLongOnly const & tOffset, int iOrigin) override;
    /// True at the end of the file, and nowhere else: behind it, where `SetPos` and `Seek` may go, reading fails or
    /// gives nothing.
    bool fIsEoF() override;
    /// The size of the file as the stream knows it.
    unsigned long dwGetSize() override;
    unsigned long dwGetPos() override;
    /// Flushes, then moves, without a test of the range.
    void SetPos(unsigned long dwNewPos) override;
    /// Up to a zero or quietly to the end. A zero behind a backslash does not end the text; both are kept.
    void ReadString(std::wstring & sText) override;
    /// The same, cut where the room ends; the rest of the text is lost, and the buffer is filled up with zeros. A null
    /// target receives nothing.
    void ReadString(wchar_t * pzTarget, unsigned long dwSize) override;
    /// As that of `TStreamBase`, but *replaces* the text, and drops every character 0xFFFF.
    void ReadToDelim(std::wstring & sText, wchar_t cDelim, wchar_t cEscape, bool fKeepDelim,
                     unsigned long dwReserved) override;
    /// A line: up to LF, or quietly to the end. CRs at its end go, others stay; a backslash in front of the LF keeps
    /// the line going, and both are kept; Ctrl-Z is a character like others.
    void Readln(std::wstring & sText) override;
    /// The same, cut and filled up as in `ReadString`.
    void Readln(wchar_t * pzTarget, unsigned long dwSize) override;
    /// True with `FS_BINARY`.
    bool fIsBinary() const override;

protected:
    /// At position 0 looks for the mark, unless the stream is binary. Loads the buffer so that four bytes can be looked
    /// at, as far as the file goes.
    void EnsureBufferFilled() override;

public:
    /// Takes over name and mode and empties the buffer; derived classes open the device. With `FS_CREATE` a missing
    /// directory is made. With exactly `FS_TEMPORARY` the name gets the extension ".$$$", and without a name one is
    /// made up.
    virtual void Open(wchar_t const * pzName, int iNewMode);
    /// Writes the used part of the buffer to the device, whether it was changed or not, and empties it. The position
    /// stays.
    virtual void BufFlush();
    /// Replaces the text by up to `dwCount` *characters*; fewer at the end. 0 does nothing.
    virtual void ReadData(std::wstring & sText, unsigned long dwCount);
    /// Loads the next piece of the file. What was written into the buffer and not flushed is lost.
    virtual void BufFill();

    virtual unsigned long dwDeviceRead(void * pTarget, unsigned long dwCount) = 0;
    virtual void DeviceWrite(void const * pSource, unsigned long dwCount) = 0;
    virtual void DeviceSeek(__int64 iPos, int iOrigin) = 0;
    /// -1 here. For derived classes; the library calls neither.
    virtual int iOpenModeConvert(int iOpenMode);
    virtual int iSeekBaseConvert(int iOrigin);
    /// Throws for a failure of the device that is pending. Nothing here.
    virtual void TestGoodness(int iMessageId);

    [[nodiscard]] wchar_t const * pzGetName() const noexcept { return sName.c_str(); }
    [[nodiscard]] std::wstring const & sGetName() const noexcept { return sName; }
    /// A mark was found on reading, or the mode asked for one.
    [[nodiscard]] bool fHasByteOrderMark() const noexcept { return (iMode & FS_BYTE_ORDER_MARK) != 0; }
    /// Writes FF FE, FE FF or EF BB BF as the code page tells; under 65001 only when the mode has `FS_BYTE_ORDER_MARK`.
    void WriteByteOrderMark();

protected:
    std::wstring sName;
    int iMode = 0;
    unsigned long dwFileSize = 0;
    unsigned long dwBufferBase = 0; ///< the place of the buffer in the file

private:
    void ReadForByteOrderMark();
    void ReadDataInternal(void * pTarget, unsigned long dwCount);
    void WriteDataInternal(void const * pSource, unsigned long dwCount);
    void NeedBlock();
    bool fPassByte(wchar_t c);
    void CollectToDelim(TTextCollector & tText, wchar_t cDelim, wchar_t cEscape, bool fKeepDelim);
    void MoveTo(__int64 iTarget);
};

/// A stream over a file of less than 4 GiB.
///
/// Failures are TXZkTools with the system's text (254 characters of it at most) first and a message that names the file
/// behind it: 4215 for opening, 4260 for reading (also where no byte came), 4270 for writing, 4280 for moving. The
/// stream can be used on.
class ZKTOOLS_API TFStream : public TFStreamBase {
public:
    /// What `CreateFileW` is called with.
    struct TOpenParams {
        unsigned long dwDesiredAccess;
        unsigned long dwCreationDisposition;
        unsigned long dwShareMode;
        unsigned long dwFlagsAndAttributes;
    };

    /// Closed.
    explicit TFStream(unsigned long dwBufferSize = 4096);
    explicit TFStream(ECodePage eCodePage, unsigned long dwBufferSize = 4096);
    /// Open, with a buffer of 4096 bytes. What fails is as for `Open`.
    TFStream(wchar_t const * pzName, int iNewMode);
    TFStream(wchar_t const * pzName, ECodePage eCodePage, int iNewMode);
    TFStream(ECodePage eCodePage, wchar_t const * pzName, int iNewMode);
    TFStream(std::wstring const & sNewName, ECodePage eCodePage, int iNewMode);
    /// Closes. A failure to write what is left ends the process: call `Close` where that can happen.
    ~TFStream() override;

    /// Writes the buffer back and the file to the disk.
    /// \throws std::logic_error for a closed stream
    void Flush() override;
    /// Opens by `EFileMode`. A file that is open already is not closed first.
    /// \throws TXZkTools 4215 behind the system's text; 4319 for a file of 4 GiB and more; with `FS_CREATE` as
    ///         `MakeDirectory` does
    void Open(wchar_t const * pzName, int iNewMode) override;
    unsigned long dwDeviceRead(void * pTarget, unsigned long dwCount) override;
    void DeviceWrite(void const * pSource, unsigned long dwCount) override;
    void DeviceSeek(__int64 iPos, int iOrigin) override;
    int iOpenModeConvert(int iOpenMode) override;
    int iSeekBaseConvert(int iOrigin) override;
    void TestGoodness(int iMessageId) override;

    virtual void Open(std::wstring const & sNewName, ECodePage eCodePage, int iNewMode);
    virtual void Open(wchar_t const * pzName, ECodePage eCodePage, int iNewMode);
    /// Writes the buffer back and cuts the file at the device's position. That is the stream's own behind a write or a
    /// move; behind a read the device stands at the end of the buffer: `Seek(0L, 1)` first. The size that the stream
    /// knows stays: open anew before going on with it.
    virtual void SetEndOfFile();
    /// The system's `LockFile` on that range. False when it fails or the stream is closed; nothing is thrown.
    virtual bool fLockFile(unsigned long dwOffset, unsigned long dwLength);
    virtual bool fUnlockFile(unsigned long dwOffset, unsigned long dwLength);
    virtual bool fIsOpen();

    /// Opens with parameters of one's own; the mode counts for the name and the mark.
    void Open(wchar_t const * pzName, int iNewMode, TOpenParams const & tParams);
    /// Writes the buffer back and closes; nothing on a closed stream. When writing fails the stream stays open.
    void Close();
    /// The file's times, as the system's calls give and take them; any pointer may be null. Failures are not told.
    void GetFTime(FILETIME * pCreation, FILETIME * pAccess, FILETIME * pWrite) const;
    void SetFTime(FILETIME const * pCreation, FILETIME const * pAccess, FILETIME const * pWrite);
    /// The size of the file of the stream's name, in decimal: that of the disk, not that of the stream; "0" when there
    /// is none.
    [[nodiscard]] std::wstring sGetSize() const;

protected:
    HANDLE hFile = INVALID_HANDLE_VALUE;
    unsigned long dwLastError = 0; ///< a failure of the device that `TestGoodness` has not told yet
};

/// A log that opens its file for every line: UTF-16, little-endian, without a mark, each line ended by CR LF. Nothing
/// is ever reported; a file that does not exist stays so.
class ZKTOOLS_API TDebugFile {
public:
    /// \param fReset makes the file, or empties it
    TDebugFile(std::wstring const & sNewPath, bool fReset);
    // Moving copies as well: a log that was moved from can go on.
    TDebugFile(TDebugFile const & tOther);
    TDebugFile & operator=(TDebugFile const & tOther);
    ~TDebugFile();

    /// Adds a line.
    void Append(std::wstring const & sLine);

private:
    HANDLE hFile = INVALID_HANDLE_VALUE; // of the last use, closed already
    std::wstring sPath;
};

namespace HandleWrapers {

namespace HandleTraits {

/// A handle that `CloseHandle` closes; -1 is none.
struct FileHandleTraits {
    using THandle = HANDLE;

    [[nodiscard]] static THandle hNone() noexcept { return INVALID_HANDLE_VALUE; }
    static bool fClose(THandle h) noexcept { return CloseHandle(h) != FALSE; }
};

} // namespace HandleTraits

/// Owns a handle.
///
/// A handle that cannot be closed is a defect of the program: the destructor and the assignment raise a system
/// exception then that cannot be continued, with the `HRESULT` of the error as its code; nothing of the library handles
/// it.
template <typename TTraits>
class HandleT {
public:
    using THandle = typename TTraits::THandle;

    explicit HandleT(THandle hOwned = TTraits::hNone()) noexcept : h(hOwned) {}
    HandleT(HandleT && tOther) noexcept : h(tOther.hRelease()) {}
    HandleT & operator=(HandleT && tOther) noexcept {
        if (this != &tOther) {
            CloseOrRaise();
            h = tOther.hRelease();
        }
        return *this;
    }
    HandleT(HandleT const &) = delete;
    HandleT & operator=(HandleT const &) = delete;
    virtual ~HandleT() { CloseOrRaise(); }

    [[nodiscard]] bool fIsValid() const noexcept { return h != TTraits::hNone(); }
    [[nodiscard]] THandle hGet() const noexcept { return h; }
    /// Gives the handle away: the caller closes it.
    [[nodiscard]] THandle hRelease() noexcept { return std::exchange(h, TTraits::hNone()); }

protected:
    /// Closes the handle, which is valid; true when that succeeded.
    virtual bool fClose() noexcept { return TTraits::fClose(h); }

private:
    void CloseOrRaise() noexcept {
        if (!fIsValid()) return;
        if (!fClose()) {
            RaiseException(static_cast<DWORD>(HRESULT_FROM_WIN32(GetLastError())), EXCEPTION_NONCONTINUABLE, 0,
                           nullptr);
        }
        h = TTraits::hNone();
    }

    THandle h;
};

} // namespace HandleWrapers

/// The owner of a file handle.
using TFileHandle = HandleWrapers::HandleT<HandleWrapers::HandleTraits::FileHandleTraits>;
