/// The distinct fonts of a document, numbered on demand. Of a font counts its name, character set, pitch and family;
/// size, weight and style do not.
#pragma once

#include "ZkBase/Windows.h"
#include "ZkTools/Export.h"

#include <list>

/// A font of the table.
struct ZKTOOLS_API TFontEntry {
    int iNumber = 0; ///< 0 until `TFontTable::CountFonts`
    unsigned char bPitch = 0;
    unsigned char bFamily = 0;
    unsigned char bCharSet = 0;
    wchar_t pzName[LF_FACESIZE] = {}; ///< the face name with its terminator

    /// All zero.
    TFontEntry() noexcept = default;
    /// Takes the three bytes as they are.
    /// \param pzName of up to 31 units, what is longer is cut; null is the empty name
    TFontEntry(unsigned char bPitch, unsigned char bFamily, unsigned char bCharSet, wchar_t const * pzName) noexcept;
    /// Deliberate: the pitch is `bPitchAndFamily & 59` and the family `& 11`, unlike those of a `LOGFONTW`. Callers
    /// that keep entries of their own compare with these.
    TFontEntry(unsigned char bPitchAndFamily, unsigned char bCharSet, wchar_t const * pzName) noexcept;
    /// The pitch is `lfPitchAndFamily & 3`, the family `& 240`: bits 2 and 3 are lost.
    TFontEntry(tagLOGFONTW & tFont) noexcept;
    TFontEntry(TFontEntry const & tOther) noexcept = default;
    TFontEntry & operator=(TFontEntry const & tOther) noexcept = default;
    ~TFontEntry() = default;

    /// Name, character set, pitch and family agree. The name counts with its case; the number does not count.
    [[nodiscard]] bool operator==(TFontEntry const & tOther) const noexcept;
    /// `(bFamily | bPitch) & 243`.
    [[nodiscard]] unsigned char bGetPitchAndFamily() const noexcept;
};

/// The fonts of a document, in the order in which they were added.
class ZKTOOLS_API TFontTable {
public:
    TFontTable();
    TFontTable(TFontTable const &) = delete;
    /// Deliberate: shows the list of the other table and *lets go of its own*, which is not destroyed. Only one of the
    /// two may be destroyed then.
    TFontTable & operator=(TFontTable const & tOther) noexcept;
    ~TFontTable();

    /// Adds the font unless there is an equal one. No entry gets a number by it, nor loses one.
    void AddEntry(tagLOGFONTW & tFont);
    [[nodiscard]] int iGetNumberOfEntries() const noexcept;
    /// Numbers the entries from 1, in their order.
    void CountFonts() noexcept;
    /// The number of the font, 0 when it was added after the last `CountFonts`; -1 when it is not there.
    [[nodiscard]] int iGetFontNumber(tagLOGFONTW & tFont) const noexcept;
    /// The first entry with that number, null when there is none. It belongs to the table.
    [[nodiscard]] TFontEntry * GetFontEntry(int iNumber) const noexcept;
    /// Sets pitch and family, character set and name of `tFont` to those of the first entry with that number. All else
    /// stays, and all of it when there is no such entry.
    /// \returns `tFont`
    tagLOGFONTW & SetEntry(tagLOGFONTW & tFont, int iNumber) const noexcept;
    /// Destroys all entries. The table can be used on.
    void FlushFontList() noexcept;

private:
    std::list<TFontEntry> * pEntries; // owned, but for what `operator=` says
};
