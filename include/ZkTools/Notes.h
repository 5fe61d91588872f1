/// Notes: what is written about an object, with label, content, comment, language and fields.
///
/// `TZkNote` is a handle; copies show the same note. How notes are stored is up to the layers above, which derive from
/// `TZkNoteImpl`. Nothing here changes a note, so notes can be shared freely, also between threads: the counts of
/// handles are atomic.
#pragma once

#include "ZkBase/ObjectType.h"
#include "ZkTools/Containers.h"
#include "ZkTools/Export.h"

#include <memory>
#include <string>

class TZkNoteImpl;

/// A handle on a note, never an empty one: without a note of its own it shows the default note, which is empty in all
/// its parts. A note lives as long as a handle on it.
class ZKTOOLS_API TZkNote {
public:
    /// What a note can do: a set of flags, whose values are the business of the layers above.
    enum EFunction : int {
        efNone = 0,
    };

    /// The default note. Nothing is allocated.
    TZkNote();
    /// Takes a note, which must not be null.
    TZkNote(std::shared_ptr<TZkNoteImpl> && pImpl) noexcept;
    // There is no move, which would leave an empty handle behind: moving one copies it.
    TZkNote(TZkNote const & tOther) noexcept;
    TZkNote & operator=(TZkNote const & tOther) noexcept;
    ~TZkNote();

    /// True when the note has at least one of these functions.
    [[nodiscard]] bool fHasFunction(EFunction eFunction) const;
    // The answers of the note, as `TZkNoteImpl` tells them.
    [[nodiscard]] EFunction eGetFunctions() const;
    [[nodiscard]] int iCountFields() const;
    [[nodiscard]] bool fIsMultiLingual() const;
    [[nodiscard]] std::wstring sGetLabel() const;
    [[nodiscard]] std::wstring sGetFieldValueAt(int iIndex) const;
    [[nodiscard]] std::wstring sGetFieldLabelAt(int iIndex) const;
    [[nodiscard]] std::wstring sGetLanguage() const;
    [[nodiscard]] std::wstring sGetContent() const;
    [[nodiscard]] std::wstring sGetComment() const;
    [[nodiscard]] EObjectType eGetObjectType() const;

    /// The default note, one for the process.
    [[nodiscard]] static TZkNote tGetDefaultNote();

    /// The notes are equal, as `TZkNoteImpl` tells it.
    [[nodiscard]] bool operator==(TZkNote const & tOther) const;

private:
    std::shared_ptr<TZkNoteImpl> pImpl;
};

[[nodiscard]] constexpr TZkNote::EFunction operator|(TZkNote::EFunction eFirst, TZkNote::EFunction eSecond) noexcept {
    return static_cast<TZkNote::EFunction>(static_cast<int>(eFirst) | static_cast<int>(eSecond));
}

/// What stands behind a handle. Derive from it to store notes.
class ZKTOOLS_API TZkNoteImpl {
public:
    TZkNoteImpl() noexcept = default;
    TZkNoteImpl(TZkNoteImpl const & tOther) noexcept = default;
    TZkNoteImpl & operator=(TZkNoteImpl const & tOther) noexcept = default;

    virtual ~TZkNoteImpl();
    virtual TZkNote::EFunction eGetFunctions() const = 0;
    virtual int iCountFields() const = 0;
    virtual bool fIsMultiLingual() const = 0;
    virtual std::wstring sGetLabel() const = 0;
    virtual std::wstring sGetFieldValueAt(int iIndex) const = 0;
    virtual std::wstring sGetFieldLabelAt(int iIndex) const = 0;
    virtual std::wstring sGetLanguage() const = 0;
    virtual std::wstring sGetContent() const = 0;
    virtual std::wstring sGetComment() const = 0;
    /// The kind of object that the note belongs to.
    virtual EObjectType eGetObjectType() const = 0;

    /// Functions, count of fields, label, language, content and comment are the same, in every character. They are
    /// asked for in that order, up to the first difference.
    ///
    /// Deliberate: the fields themselves, the kind of object and being multilingual do not count. So notes of different
    /// classes can be equal.
    [[nodiscard]] bool operator==(TZkNoteImpl const & tOther) const;
};

/// The default note: nothing in it, and `eotNone`. A field has an empty value and label, whatever its index.
class ZKTOOLS_API TZkNoteDefaultImpl : public TZkNoteImpl {
public:
    TZkNote::EFunction eGetFunctions() const override;
    int iCountFields() const override;
    bool fIsMultiLingual() const override;
    std::wstring sGetLabel() const override;
    std::wstring sGetFieldValueAt(int iIndex) const override;
    std::wstring sGetFieldLabelAt(int iIndex) const override;
    std::wstring sGetLanguage() const override;
    std::wstring sGetContent() const override;
    std::wstring sGetComment() const override;
    EObjectType eGetObjectType() const override;
};

/// Another note under a label of its own.
class ZKTOOLS_API TZkNoteCopyImpl : public TZkNoteImpl {
public:
    /// \param tNote  is shared, not copied
    /// \param sLabel empty leaves the note its label
    TZkNoteCopyImpl(TZkNote const & tNote, std::wstring const & sLabel);
    TZkNoteCopyImpl(TZkNoteCopyImpl const & tOther) = default;
    TZkNoteCopyImpl(TZkNoteCopyImpl && tOther) noexcept = default;
    TZkNoteCopyImpl & operator=(TZkNoteCopyImpl const & tOther) = default;
    TZkNoteCopyImpl & operator=(TZkNoteCopyImpl && tOther) noexcept = default;

    TZkNote::EFunction eGetFunctions() const override;
    int iCountFields() const override;
    bool fIsMultiLingual() const override;
    std::wstring sGetLabel() const override;
    std::wstring sGetFieldValueAt(int iIndex) const override;
    std::wstring sGetFieldLabelAt(int iIndex) const override;
    std::wstring sGetLanguage() const override;
    std::wstring sGetContent() const override;
    std::wstring sGetComment() const override;
    EObjectType eGetObjectType() const override;

private:
    TZkNote tNote;
    std::wstring sLabel;
};

/// What stands behind a list of notes. Indexes count from 0. A copy is a list of its own, with the same notes.
class ZKTOOLS_API TZkNoteListImpl {
public:
    TZkNoteListImpl();
    TZkNoteListImpl(TZkNoteListImpl const & tOther) = default;
    TZkNoteListImpl & operator=(TZkNoteListImpl const & tOther) = default;
    virtual ~TZkNoteListImpl();

    /// Appends. Gives back 1.
    int Add(TZkNote const & tNote);
    /// Inserts before the note at `iIndex`; the count appends. Gives back 1.
    /// \throws std::out_of_range beyond that
    int AddAt(TZkNote const & tNote, int iIndex);
    /// Removes the note at `iIndex`; outside the list nothing happens.
    void Remove(int iIndex);
    void Flush() noexcept;
    [[nodiscard]] int iGetCount() const noexcept;
    /// No test of the range: an index outside the list is outside the contract, here and in the two below.
    [[nodiscard]] TZkNote tGetNoteAt(int iIndex) const;
    [[nodiscard]] TZkNote & operator[](int iIndex);
    void SetData(int iIndex, TZkNote const & tNote);
    /// The index of the first note that is equal, 2147483647 when there is none.
    [[nodiscard]] int iFind(TZkNote & tNote);

private:
    TArrayAsVector<TZkNote> tNotes{0};
};

/// A handle on a list of notes: a copy shows the same list, and what is added to one is in the other.
///
/// A list that was moved from can only be assigned to or destroyed. Lists have no lock.
class ZKTOOLS_API TZkNoteList {
public:
    /// A new empty list.
    TZkNoteList();

    /// Appends. Gives back 1.
    int Add(TZkNote const & tNote);
    /// Inserts before the note at `iIndex`; the count appends. Gives back 1.
    /// \throws std::out_of_range beyond that
    int AddAt(TZkNote const & tNote, int iIndex);
    /// Removes the note at `iIndex`; outside the list nothing happens.
    void Remove(int iIndex);
    void Flush() noexcept;
    [[nodiscard]] int iGetCount() const noexcept;
    /// True when there is a note in the list.
    [[nodiscard]] bool fIsFilled() const noexcept;
    /// No test of the range: an index outside the list is outside the contract.
    [[nodiscard]] TZkNote tGetNoteAt(int iIndex) const;

private:
    std::shared_ptr<TZkNoteListImpl> pImpl;
};

/// Points at a field of a note, by the names of both.
struct ZKTOOLS_API TNoteAndNoteField {
    std::wstring sNote;
    std::wstring sNoteField;
};
