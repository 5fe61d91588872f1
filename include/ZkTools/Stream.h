/// Binary and text streams over memory: the raw interface, the memory block, and the stream that records write
/// themselves to. Streams over files stand in ZkTools/FileStream.h.
#pragma once

#include "ZkBase/CodePages.h"
#include "ZkTools/Export.h"

#include <memory>
#include <string>

class TOTextStream;
class TTextCollector; // internal

/// A seek distance: a `long` and nothing else converts to it, so that no count of another width is cut unseen. Write
/// `0L`, not `0`.
struct TLongOnly {
    TLongOnly(long lDistance) noexcept : lValue(lDistance) {}
    template <typename T>
    TLongOnly(T) = delete;

    long lValue;
};

/// What every stream of bytes offers.
struct ZKTOOLS_API IRawStream {
    virtual ~IRawStream();
    /// Hands on what is held back. Does nothing here.
    virtual void Flush() {}
    /// Reads exactly `dwCount` bytes, unless a class says otherwise.
    virtual void ReadData(void * pTarget, unsigned long dwCount) = 0;
    /// Writes `dwCount` bytes.
    virtual void WriteData(void const * pSource, unsigned long dwCount) = 0;
    /// Moves by a signed distance in bytes. `iOrigin` 0 counts from the start, 1 from the position, 2 from the end.
    virtual void Seek(TLongOnly const & tOffset, int iOrigin) = 0;
};

/// A block of memory with a position: what a stream stands on. Either it owns its memory or it is a view of the
/// caller's, which must outlive it.
///
/// Owned memory is one byte larger than `dwCapacity`, and that byte is zero, so that a reader of text finds a
/// terminator behind the data. A view has no such guard. Writing past the end of a view is outside the contract.
///
/// \throws std::length_error where a size would reach 4 GiB; the block stays as it was
struct ZKTOOLS_API TBlob {
    unsigned char * pData = nullptr; ///< start of the memory, null when there is none
    unsigned long dwPos = 0;         ///< position, 0 to `dwUsed`
    unsigned long dwUsed = 0;        ///< bytes that hold data
    unsigned long dwCapacity = 0;    ///< bytes reserved
    bool fOwner = true;              ///< the block frees `pData`
    bool fDirty = false;             ///< something was written by `Put` since the last `Reset`

    TBlob() noexcept = default;
    /// Reserves `dwSize` bytes; 0 reserves nothing. Holds no data yet.
    explicit TBlob(unsigned long dwSize);
    /// A view of the caller's memory, `dwSize` bytes that all count as data.
    TBlob(void const * pMemory, unsigned long dwSize) noexcept;
    TBlob(TBlob const & tOther);
    /// Makes an owned copy of all that the other has reserved, with its position.
    TBlob & operator=(TBlob const & tOther);
    ~TBlob();

    /// Frees owned memory; all fields as after the default constructor.
    void Release() noexcept;
    /// Position and size 0; the memory stays.
    void Reset() noexcept;
    /// Replaces the memory by `dwSize` fresh owned bytes, also for 0. Does nothing, not even to the position, when
    /// that is the capacity already.
    void Alloc(unsigned long dwSize);
    /// Changes the capacity and keeps contents, position and size. Does nothing when `dwSize` is the capacity already.
    /// A granularity other than 0 rounds up to the next multiple above: an exact multiple grows by a whole step too. A
    /// view becomes an owned copy.
    void ReAlloc(unsigned long dwSize, unsigned long dwGranularity);
    /// Frees owned memory and becomes a view.
    void Assign(void const * pMemory, unsigned long dwSize) noexcept;
    /// A view of the characters of `sText`, as many *bytes* as the text has units, and one: not all of it.
    void Assign(std::wstring const & sText) noexcept;

    [[nodiscard]] unsigned char * pGetData() const noexcept { return pData; }
    [[nodiscard]] unsigned char * pGetDataAtPos() const noexcept { return pData + dwPos; }
    /// The capacity, not the bytes that hold data.
    [[nodiscard]] unsigned long dwGetSize() const noexcept { return dwCapacity; }

    /// Reads and advances.
    /// \throws TXZkTools 4290 for a null target, 4291 past the data; the position stays
    void Get(void * pTarget, unsigned long dwCount);
    /// Writes at the position and advances. Where room is missing the capacity becomes exactly what is needed; reserve
    /// first where much is written.
    void Put(void const * pSource, unsigned long dwCount);
    /// Advances.
    /// \throws TXZkTools 4291 past the data; the position stays
    void Skip(unsigned long dwCount);

private:
    void Init() noexcept;
    void Reserve(unsigned long dwSize, unsigned long dwData);
    void Resize(unsigned long dwSize);
};

/// A stream of bytes and text over memory, and the base of streams over files.
///
/// There is one position, for reading and writing. Numbers stand on the stream as in memory: little-endian, 1 byte for
/// `char`, 2 for `short`, 4 for `int` and `long`, 8 for `__int64`. Text stands in the stream's code page, which can be
/// changed at any time; nothing is converted at the change.
///
/// **Characters.** One character is one UTF-16 unit. What it takes on the stream:
///
/// | code page | one character |
/// |---|---|
/// | 1200, 1201 | two bytes, low or high byte first |
/// | 65001 | as many bytes as the first one tells |
/// | any other | what `CharNextExA` steps over |
///
/// A character that would need two units (four bytes of UTF-8) cannot be read. On writing, a lone half of a surrogate
/// pair is converted by itself, and what the code page lacks becomes what the system has for it: a character that looks
/// like it (a fullwidth `<` becomes a plain one), or the default character.
///
/// **Failures.** All readers throw TXZkTools 4291 at the end of the data, except those that say that they end quietly.
/// Bytes that do not decode, and a zero character where none is allowed, are a `TXError` that tells bytes and position
/// (multi-byte code pages) or a TXZkTools with its words (1200, 1201, and system failures). A conversion to a code page
/// that fails is a TXZkTools, and nothing of the text is written (of XML and comments, which go unit by unit, nothing
/// from that unit on; a blob has its count already). After a failure the position is the start of the
/// character, number or prefix that failed, and the target keeps its value unless told otherwise.
///
/// A stream without memory yet is empty: the first write makes its block.
class ZKTOOLS_API TStreamBase : public IRawStream {
public:
    /// No memory yet.
    explicit TStreamBase(ECodePage eCodePage = ecpDefault);
    /// Reserves `dwSize` bytes; 0 reserves nothing.
    explicit TStreamBase(unsigned long dwSize, ECodePage eCodePage = ecpDefault);
    /// Reads the caller's memory, which must outlive the stream.
    TStreamBase(void const * pMemory, unsigned long dwSize, ECodePage eCodePage = ecpDefault);
    /// Works on a copy of the block, from the block's position.
    explicit TStreamBase(TBlob & tBlob, ECodePage eCodePage = ecpDefault);
    TStreamBase(TStreamBase const &) = delete;
    TStreamBase & operator=(TStreamBase const &) = delete;

    ~TStreamBase() override;
    /// \throws TXZkTools 4290 for a null target, 4291 past the end
    void ReadData(void * pTarget, unsigned long dwCount) override;
    void WriteData(void const * pSource, unsigned long dwCount) override;
    /// Up to and including the end. Any `iOrigin` but 0, 1 and 2 moves to the start, whatever the distance.
    /// \throws TXZkTools 4280 outside the data
    void Seek(TLongOnly const & tOffset, int iOrigin) override;

    virtual bool fIsEoF();
    /// Bytes that hold data.
    virtual unsigned long dwGetSize();
    virtual unsigned long dwGetPos();
    /// \throws TXZkTools 4280 past the end
    virtual void SetPos(unsigned long dwNewPos);

    /// Is `ReadString`.
    virtual void Read(std::wstring & sText);
    virtual void Read(__int64 & iValue);
    virtual void Read(unsigned __int64 & iValue);
    virtual void Read(int & iValue);
    virtual void Read(unsigned int & uValue);
    virtual void Read(short & iValue);
    virtual void Read(unsigned short & uValue);
    virtual void Read(long & lValue);
    virtual void Read(unsigned long & dwValue);
    virtual void Read(char & cValue);
    /// One character, as `ReadChar`. Its counterpart `Write(wchar_t const &)` writes nothing.
    virtual void Read(wchar_t & cValue);
    virtual void Read(unsigned char & uValue);

    /// One character; a zero is a failure.
    virtual void ReadChar(wchar_t & c);
    /// The next character, without moving; a zero is none.
    virtual void PeekChar(wchar_t & c);
    /// Passes over characters without converting them. Under 1200 and 1201 it goes no further than the memory that is
    /// loaded: a file stream does not fill its buffer for it, and fails where that ends.
    virtual void SkipChars(unsigned int uCount);
    /// The byte at the position, without moving and without a test of the end, behind which a zero stands in owned
    /// memory that is full.
    virtual void Peek(unsigned char & uByte);

    /// Up to a zero, which is consumed and not kept, or quietly to the end.
    virtual void ReadString(std::wstring & sText);
    /// The same into a buffer of `dwSize` units, always terminated. Where the room ends first, the rest stays unread; a
    /// text that ends without a zero is failure 4291.
    virtual void ReadString(wchar_t * pzTarget, unsigned long dwSize);
    /// Characters of `dwBytes` bytes in all; zeros are passed over.
    /// \throws TXZkTools when a character crosses the end; it has been consumed then
    virtual void ReadStringForPascal(std::wstring & sText, unsigned long dwBytes);
    /// Behind a 1-byte count of bytes. Under 1200 and 1201 the zero that `WritePascalString` puts behind the text stays
    /// unread.
    virtual void ReadPascalString(std::wstring & sText);
    /// Behind a 2-byte count of bytes. A count of 0x8000 and above fails at the end of the stream.
    virtual void ReadPascalStringInt16(std::wstring & sText);
    /// A field of `uCount` bytes in the thread's ANSI code page, up to its first zero.
    virtual void Read8BitChars(unsigned char uCount, std::wstring & sText);
    /// Behind a 4-byte count. A count of 0 leaves `sText` as it is.
    virtual void Read8BitBlob(std::wstring & sText);
    /// *Appends* the characters up to `cDelim`, or quietly to the end. A `cEscape` other than 0 keeps the character
    /// behind it from ending the text; both are kept. Zeros are read only when `cDelim` is 0.
    /// \param fKeepDelim  append the delimiter too
    /// \param dwReserved  not used
    virtual void ReadToDelim(std::wstring & sText, wchar_t cDelim, wchar_t cEscape, bool fKeepDelim,
                             unsigned long dwReserved);
    /// A line: up to LF or Ctrl-Z (26), which are not kept, or quietly to the end. Every CR is dropped. Characters come
    /// from `ReadChar`; a zero that a derived class lets through becomes a blank.
    virtual void Readln(std::wstring & sText);
    /// The same, up to `dwSize - 1` units. *No terminator is written*: clear the buffer first.
    virtual void Readln(wchar_t * pzTarget, unsigned long dwSize);

    /// Exactly `dwCount` units.
    virtual void Write(wchar_t const * pText, unsigned long dwCount);
    /// Up to the terminator, without it.
    virtual void Write(wchar_t const * pzText);
    /// The same: a zero within the text ends it.
    virtual void Write(std::wstring const & sText);
    virtual void Write(__int64 const & iValue);
    virtual void Write(unsigned __int64 const & iValue);
    virtual void Write(int const & iValue);
    virtual void Write(unsigned int const & uValue);
    virtual void Write(short const & iValue);
    virtual void Write(unsigned short const & uValue);
    virtual void Write(long const & lValue);
    virtual void Write(unsigned long const & dwValue);
    virtual void Write(char const & cValue);
    /// Writes nothing, in this class and in file streams: use `WriteChar`.
    virtual void Write(wchar_t const & cValue);
    virtual void Write(unsigned char const & uValue);

    /// One unit in the stream's code page.
    virtual void WriteChar(wchar_t const & c);
    /// The text and its terminator; a zero within the text ends it.
    virtual void WriteString(std::wstring const & sText);
    virtual void WriteString(wchar_t const * pzText);
    /// A 1-byte count of bytes, then the text and its terminator. The count takes the terminator in under multi-byte
    /// code pages, not under 1200 and 1201, and wraps for a long text. The empty text cannot be written under 1200 and
    /// 1201.
    virtual void WritePascalString(std::wstring const & sText);
    /// A field of exactly `uCount` bytes in the thread's ANSI code page. A longer text is cut, without a terminator;
    /// the rest behind a shorter one is zero.
    virtual void Write8BitChars(unsigned char uCount, std::wstring & sText);
    /// A 4-byte count (bytes of the text in the system's ANSI code page, without terminator), then, unless that is 0,
    /// the text and its terminator in the stream's code page.
    virtual void Write8BitBlob(std::wstring const & sText);
    /// As `WritePascalString`, with a 2-byte count.
    virtual void WritePascalStringInt16(std::wstring const & sText);
    /// The text, then CR LF.
    virtual void Writeln(std::wstring const & sText);
    virtual void Writeln(wchar_t const * pzText);
    /// The text with `&`, `<` and `>` as entities, zeros within it included. LF, CR and both quotes become entities
    /// with `fEscapeAll`; without it they are *dropped*.
    virtual void WriteXML(std::wstring const & sText, bool fEscapeAll);
    /// The text with a blank between any two hyphens in a row. A hyphen at the end is left alone.
    virtual void WriteXMLComment(std::wstring const & sText);

    /// True: the stream is not looked at for a byte order mark.
    virtual bool fIsBinary() const;

protected:
    /// Called before every look at the next character: a derived class loads its block.
    virtual void EnsureBufferFilled();

public:
    void SetCodePage(ECodePage eCodePage);
    [[nodiscard]] ECodePage eGetCodePage() const;
    /// The memory, null without a block.
    [[nodiscard]] unsigned char * pGetData() const noexcept;
    [[nodiscard]] unsigned char * pGetDataAtPos() const noexcept;
    /// The capacity of the block, 0 without one.
    [[nodiscard]] unsigned long dwBufGetSize() const noexcept;

protected:
    /// `TBlob::Alloc` on the block, which is made where there is none.
    void BufAlloc(unsigned long dwSize);
    /// Makes the conversion buffer at least `iSize` bytes long, in steps of 1024; its contents may be lost.
    void AllocUTF8Buffer(int iSize);
    /// Reads one character and advances.
    void ReadCharInternal(wchar_t & c, bool fAllowNull);
    /// Gives the next character and how many bytes it takes, without moving.
    unsigned int PeekCharInternal(wchar_t & c, bool fAllowNull);
    unsigned int PeekUnicodeCharInternal(wchar_t & c, bool fAllowNull);
    unsigned int PeekMultiByteCharInternal(wchar_t & c, bool fAllowNull);
    /// Takes characters that need no care into `tText`, as many as have room there and no more than `dwMostBytes`
    /// bytes: no zero, no 0xFFFF, neither of the two stops (0 for none), nothing that fails. Not to be called at the
    /// end. Returns the bytes taken, 0 when the next character needs care.
    unsigned long dwCollectRun(TTextCollector & tText, unsigned long dwMostBytes, wchar_t cStop1, wchar_t cStop2);

    std::unique_ptr<TBlob> pBlob;
    std::unique_ptr<char[]> pConvertBuffer;
    int iConvertBufferSize;
    unsigned short uCodePage;

private:
    friend class TOTextStream;

    [[nodiscard]] bool fIsUtf16() const noexcept;
    [[noreturn]] void ThrowEncodeFailure() const;
    int iGetEncodedSize(wchar_t const * pText, int iCount) const;
    int iEncode(wchar_t const * pText, int iCount);
    int iEncodeAsUtf8(wchar_t const * pText, std::size_t uUnits);
    unsigned long dwCollectCounted(TTextCollector & tText, unsigned long dwMostBytes);
    bool fPassZeroByte();
    unsigned long dwReadRun(wchar_t * pTarget, unsigned long dwRoom, unsigned long & dwMostBytes, wchar_t cStop1,
                            wchar_t cStop2);
    void AdvanceBlock(unsigned long dwCount);
    unsigned long dwGetPrefixSize(std::wstring const & sText) const;
};
