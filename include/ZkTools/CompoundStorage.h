/// Compound files: the platform's storages and streams with their failures as exceptions and their references owned,
/// a binary resource as a stream, and whether Word is there.
#pragma once

#include "ZkBase/Windows.h"
#include "ZkTools/Export.h"

#include <objbase.h>

#include <string>

/// What storages and streams have in common: a failed call of the platform is an exception.
class ZKTOOLS_API TCompoundItem {
public:
    TCompoundItem() noexcept = default;
    TCompoundItem(TCompoundItem const &) noexcept = default;
    TCompoundItem & operator=(TCompoundItem const &) noexcept = default;
    virtual ~TCompoundItem();

protected:
    /// Returns for 0 and above.
    /// \throws TXZkTools with the system's text for a negative `hr`; its number is -1. A percent sign in the system's
    /// text is read as a conversion.
    void CheckHResult(long hr) const;
};

/// A storage of a compound file: the directory of streams and further storages.
///
/// The object owns one reference to the platform's interface, which its destructor releases unless `SetRelease(false)`
/// was said. *A copy is a second name for the same reference*: say `SetRelease(false)` to one of the two, or it is
/// released twice.
///
/// What opens (`Create...`, `Open...`) forgets an interface that was held before, also when it fails: close first. It
/// leaves alone what `SetRelease` said. `dwMode` is a set of STGM flags, handed on as it stands; the platform wants
/// STGM_SHARE_EXCLUSIVE for everything within another storage. A null name goes on as null.
///
/// Failures are those of `CheckHResult`. All that goes to the platform needs an open object.
class ZKTOOLS_API TIStorage : public TCompoundItem {
public:
    /// Closed.
    TIStorage() noexcept = default;
    TIStorage(TIStorage const &) noexcept = default;
    TIStorage & operator=(TIStorage const &) noexcept = default;
    ~TIStorage() override;

    [[nodiscard]] bool fIsOpen() const noexcept { return pStorage != nullptr; }
    /// Takes a reference of its own to the interface, to be released. One held before is forgotten, not released.
    void Alias(IStorage * pNewStorage) noexcept;
    /// Releases the interface, unless `SetRelease(false)` was said and `fForce` is false: then it stays open.
    void Close(bool fForce) noexcept;
    /// Whether destructor and `Close` release the interface; true at first.
    void SetRelease(bool fNewRelease) noexcept { fRelease = fNewRelease; }
    /// The interface, still owned by this object; null when closed.
    operator IStorage *() const noexcept { return pStorage; }

    /// Makes a storage within another.
    void Create(IStorage * pParent, wchar_t const * pzName, unsigned long dwMode);
    /// Makes a compound file.
    void CreateFileW(wchar_t const * pzName, unsigned long dwMode);
    /// Makes a compound file in memory, which goes with its last interface.
    void CreateInMemory(unsigned long dwMode);
    /// Opens a storage within another.
    void Open(IStorage * pParent, wchar_t const * pzName, unsigned long dwMode);
    /// Opens a compound file.
    void OpenFile(wchar_t const * pzName, unsigned long dwMode);
    /// \param ppEnum  receives an enumerator of what the storage holds, for the caller to release
    void EnumElements(IEnumSTATSTG ** ppEnum) const;
    /// Removes a stream, or a storage with everything in it.
    void DestroyElement(wchar_t const * pzName);
    /// Makes changes lasting: those of a transacted storage, or the root's on the disk. `dwFlags` is a set of STGC
    /// flags.
    void Commit(unsigned long dwFlags);
    /// Drops what was changed in a transacted storage since its last `Commit`.
    void Revert();

private:
    IStorage * pStorage = nullptr;
    bool fRelease = true;
};

/// A stream of a compound file, or of any other kind that the platform has.
///
/// Ownership, opening and failures are those of `TIStorage`.
///
/// **Strings** stand here in a form of their own, without a code page: a size in bytes as a signed 16-bit number, then
/// so many bytes of UTF-16, little-endian, of which the last two are a zero. A text may have up to 16382 units.
class ZKTOOLS_API TIStream : public TCompoundItem {
public:
    /// Closed.
    TIStream() noexcept = default;
    TIStream(TIStream const &) noexcept = default;
    TIStream & operator=(TIStream const &) noexcept = default;
    ~TIStream() override;

    [[nodiscard]] bool fIsOpen() const noexcept { return pStream != nullptr; }
    /// Takes a reference of its own to the interface, to be released. One held before is forgotten, not released.
    void Alias(IStream * pNewStream) noexcept;
    /// Releases the interface, unless `SetRelease(false)` was said and `fForce` is false: then it stays open.
    void Close(bool fForce) noexcept;
    /// Whether destructor and `Close` release the interface; true at first.
    void SetRelease(bool fNewRelease) noexcept { fRelease = fNewRelease; }
    /// The interface, still owned by this object; null when closed.
    operator IStream *() const noexcept { return pStream; }

    /// Makes a stream within a storage.
    void Create(IStorage * pParent, wchar_t const * pzName, unsigned long dwMode);
    /// Makes a stream in memory, which goes with its last interface.
    void CreateInMemory();
    /// Opens a stream within a storage.
    void Open(IStorage * pParent, wchar_t const * pzName, unsigned long dwMode);

    /// Its name within its storage; empty where the platform gives none, as for a stream in memory.
    [[nodiscard]] std::wstring sGetName() const;
    /// Its size in bytes.
    [[nodiscard]] unsigned __int64 luliGetSize() const;
    /// Moves by a distance in bytes. `dwOrigin` 0 counts from the start, 1 from the position, 2 from the end.
    /// \returns the new position
    unsigned __int64 luliSeek(__int64 iMove, unsigned long dwOrigin);

    /// Reads up to `dwBytes` bytes. *Fewer are no failure*: the rest of the target is left as it was.
    void Read(void * pTarget, unsigned long dwBytes);
    /// Writes up to `dwBytes` bytes, and does not tell when the platform took fewer.
    void Write(void const * pSource, unsigned long dwBytes);
    /// Reads a string. What the stream lacks at its end counts as zeros: a text that is cut has them in place of its
    /// missing units. A size below 0 gives the empty text and passes over the size as an unsigned number, or to the end
    /// of the stream.
    void ReadString(std::wstring & sText);
    /// Writes a string. Longer texts than the form can tell are written wrong or not at all: from 16383 units the size
    /// turns negative, and writing fails behind it with the text of STG_E_INVALIDPOINTER; from 32767 units it begins
    /// again at 0, and the text is cut to it.
    void WriteString(std::wstring const & sText);
    /// Hands on what the platform holds back. `dwFlags` is a set of STGC flags.
    void Commit(unsigned long dwFlags);
    /// Drops what was changed in a transacted stream; the platform's own streams are never transacted.
    void Revert();

private:
    void SkipBytes(unsigned long dwBytes);

    IStream * pStream = nullptr;
    bool fRelease = true;
};

/// A binary resource of a module, read as a stream.
namespace IStreamFromResource {

/// A stream over the resource of type RT_RCDATA whose id is the lower 16 bits of `uId`. The module must stay loaded
/// while the stream lives.
///
/// The result is never null: where the resource is missing it is an empty stream. It has *no reference yet*; the first
/// `AddRef` (that of `TIStream::Alias`) makes the first one, and the last `Release` ends it. One thread at a time.
///
/// What differs from the platform's streams:
/// - `Read` answers S_FALSE when fewer bytes came than were asked for.
/// - `Write` writes to the resource's memory, which the system protects in most modules, with the limits of `Read`.
/// - `Seek` looks at the lower 32 bits of the distance. From the end (2) it counts from the *sum* of size and position.
///   It answers STG_E_INVALIDFUNCTION for a target at or past the end, and the position is that target nevertheless.
/// - `CopyTo` looks at the lower 32 bits of the count, does not move, and copies nothing (STG_E_INVALIDPOINTER) when
///   more is asked for than remains.
/// - `Stat` fills in the size alone.
/// - All else is E_NOTIMPL.
[[nodiscard]] ZKTOOLS_API IStream * pCreate(HINSTANCE hModule, unsigned int uId);

} // namespace IStreamFromResource

/// What is asked of Word.
namespace MSWord {

/// True when Word is registered on this machine; nothing is started. Always false in the test mode (`GTest::fIsTest`).
[[nodiscard]] ZKTOOLS_API bool fIsWordInstalled();

} // namespace MSWord
