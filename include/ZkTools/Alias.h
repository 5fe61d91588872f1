/// The identity of an object: a tag, a version and a variant; the same with a directory or a search context; and the
/// fixed record in which old files hold it.
///
/// An alias persists in several forms and has a form for people, the merged text: "A; 1; draft".
#pragma once

#include "ZkBase/ObjectType.h"
#include "ZkTools/Export.h"

#include <array>
#include <string>
#include <string_view>

class TIStream;
class TOptionElement;
class TStreamBase;
struct TOldTagRec;

/// Tag, version and variant of an object.
///
/// What goes through a constructor, a setter, a copy or an assignment bears no blank (U+0020) at either end; blanks
/// inside stay, and so do tabs and line ends anywhere. Only `TTransferAlias` writes past that rule. Nothing here fails.
///
/// A null separator means "; ".
///
/// On a stream an alias stands in one of two forms, which `Read` tells apart by their first byte: the current one is a
/// byte of value 1 and three counted strings in the stream's code page; the old one is a fixed record of 35 bytes in
/// the thread's ANSI code page (`TOldTagRec`). The failures are those of the stream, and a failed reader leaves the
/// alias as it was.
///
/// In an option tree an alias stands in child elements or in attributes of the element that it is written to. These
/// readers do not trim.
class ZKTOOLS_API TAlias {
public:
    TAlias() = default;
    explicit TAlias(std::wstring_view sTag);
    TAlias(std::wstring_view sTag, std::wstring_view sVersion);
    TAlias(std::wstring_view sTag, std::wstring_view sVersion, std::wstring_view sVariant);
    /// A copy is trimmed, also one of an alias that holds blanks at its ends.
    TAlias(TAlias const & tOther);
    TAlias & operator=(TAlias const & tOther);
    ~TAlias() = default;

    /// Empties all three.
    void Reset() noexcept;

    [[nodiscard]] std::wstring const & sGetTag() const noexcept { return sTag; }
    [[nodiscard]] std::wstring const & sGetVersion() const noexcept { return sVersion; }
    [[nodiscard]] std::wstring const & sGetVariant() const noexcept { return sVariant; }
    [[nodiscard]] wchar_t const * pzGetTag() const noexcept { return sTag.c_str(); }
    [[nodiscard]] wchar_t const * pzGetVersion() const noexcept { return sVersion.c_str(); }
    [[nodiscard]] wchar_t const * pzGetVariant() const noexcept { return sVariant.c_str(); }

    void SetTag(std::wstring_view sValue);
    void SetVersion(std::wstring_view sValue);
    void SetVariant(std::wstring_view sValue);

    /// The three setters in that order. The values are strings, not views, so that they may be fields of this alias.
    void Set(std::wstring const & sTag, std::wstring const & sVersion, std::wstring const & sVariant);
    /// The same as the assignment.
    void Set(TAlias const & tOther);
    /// The strings of the old record.
    void Set(TOldTagRec const & tRecord);

    /// Takes a merged text apart: the tag stands in front of the first separator, the version up to the second, and the
    /// variant is all the rest, further separators included. What the text lacks becomes empty, and so do all three for
    /// a null text.
    ///
    /// A separator that begins at character 32768 or later counts as absent. The text must not be that of a field of
    /// this alias: they are emptied first.
    void Set(wchar_t const * pzAlias, wchar_t const * pzSeparator);

    /// The merged text: the tag; separator and version when version or variant isn't empty; separator and variant when
    /// the variant isn't. Tag "A" with variant "V" gives "A; ; V".
    [[nodiscard]] std::wstring sGetAlias(wchar_t const * pzSeparator) const;
    /// The same as `sGetAlias`.
    [[nodiscard]] std::wstring sMerge(wchar_t const * pzSeparator) const;
    /// Copies the merged text with its terminator to `pzTarget`, which the caller makes large enough.
    /// \returns `pzTarget`
    wchar_t * pzMerge(wchar_t * pzTarget, wchar_t const * pzSeparator) const;

    /// True when the tag is empty, whatever the other two hold.
    [[nodiscard]] bool fIsEmpty() const noexcept { return sTag.empty(); }
    /// True when the tag isn't empty.
    [[nodiscard]] bool fIsFilled() const noexcept { return !sTag.empty(); }

    /// All three equal, in every character.
    [[nodiscard]] bool operator==(TAlias const & tOther) const noexcept;
    [[nodiscard]] bool operator!=(TAlias const & tOther) const noexcept;
    /// The order of `iCompare`.
    [[nodiscard]] bool operator<(TAlias const & tOther) const noexcept;

    /// Compares tag, then version, then variant by the values of their UTF-16 units: no regard to case, locale or
    /// numbers. A text that ends first is the smaller. Unlike `operator==` this stops at a null character inside.
    /// \returns -1, 0 or 1
    [[nodiscard]] int iCompare(TAlias const & tOther) const noexcept;

    /// The merged text as a file name: characters that no file name may hold become "_".
    /// \param pzSeparator null means "_"
    [[nodiscard]] std::wstring sGetFileName(wchar_t const * pzSeparator) const;

    /// Reads the current form or the old record.
    void Read(TStreamBase & tStream);
    /// Writes the current form.
    void Write(TStreamBase & tStream) const;
    /// Reads the three counted strings of the current form, without the byte in front of them, and trims them.
    void ReadPure(TStreamBase & tStream);
    /// Writes the three counted strings alone.
    void WritePure(TStreamBase & tStream) const;

    /// Reads the three strings of `Write(TIStream &)` and trims them.
    void Read(TIStream & tStream);
    /// Writes the three strings, each by `TIStream::WriteString`: up to 16382 units.
    void Write(TIStream & tStream) const;

    /// True when tag, version and variant have at most 20, 6 and 6 characters, the room of the old record. Characters
    /// that take more than one byte there are not reckoned with.
    [[nodiscard]] bool fIsTagRecCompatible() const noexcept;
    /// Reads the old record.
    void ReadTagRecCompatible(TStreamBase & tStream);
    /// Writes the old record. What is longer than its room is cut without a word.
    void WriteTagRecCompatible(TStreamBase & tStream) const;

    /// Reads the children "Tag", "Version" and "Variant"; a missing one is empty.
    void Read(TOptionElement const & tElement);
    /// Writes the children "Tag", "Version" and "Variant": those that are there get the new text, the others are added.
    /// An empty version or variant has no child; one that is there is destroyed. A tag has one always.
    void Write(TOptionElement & tElement) const;
    /// The same with the kind of object, the attribute "ObjectType".
    void Read(TOptionElement const & tElement, EObjectType & eType);
    void Write(TOptionElement & tElement, EObjectType eType) const;
    /// Reads the attributes "tag", "version" and "variant"; a missing one is empty. Attributes have lower-case names,
    /// unlike children.
    void ReadAttr(TOptionElement const & tElement);
    /// Writes the attribute "tag", and "version" and "variant" unless they are empty. Empty ones leave an attribute
    /// that is there as it is.
    void WriteAttr(TOptionElement & tElement) const;
    /// `Write`.
    TOptionElement & operator<<(TOptionElement & tElement) const;
    /// `Read`.
    TOptionElement const & operator>>(TOptionElement const & tElement);

private:
    friend struct TTransferAlias;

    std::wstring sTag;
    std::wstring sVersion;
    std::wstring sVariant;
};

/// Compares tag, then version, then variant in the order of tables that mix numbers and words
/// (`iNumericStringCompare`): negative, zero or positive, and not normalised.
[[nodiscard]] ZKTOOLS_API int iNumericAliasCompare(TAlias const & tFirst, TAlias const & tSecond) noexcept;

/// `Write`.
ZKTOOLS_API TStreamBase & operator<<(TStreamBase & tStream, TAlias const & tAlias);
/// `Read`.
ZKTOOLS_API TStreamBase & operator>>(TStreamBase & tStream, TAlias & tAlias);
/// `Write`.
ZKTOOLS_API TOptionElement & operator<<(TOptionElement & tElement, TAlias const & tAlias);
/// `Read`.
ZKTOOLS_API TOptionElement const & operator>>(TOptionElement const & tElement, TAlias & tAlias);

/// The lengths of tag, version and variant, in UTF-16 units; -1 stands for no length at all.
struct ZKTOOLS_API TAliasLength {
    int iTag;
    int iVersion;
    int iVariant;

    TAliasLength(int iTag = -1, int iVersion = -1, int iVariant = -1) noexcept;
    /// The lengths of an alias.
    TAliasLength(TAlias & tAlias) noexcept;

    /// True when each of the three lengths is at most the other's. A default one fits into everything.
    [[nodiscard]] bool fFitInto(TAliasLength & tOther) const noexcept;
};

/// Write access to the fields of an alias past the trimming, for readers that keep what they find. Refers to the alias,
/// which must outlive it.
struct ZKTOOLS_API TTransferAlias {
    explicit TTransferAlias(TAlias & tAlias) noexcept;

    [[nodiscard]] std::wstring & sGetTag() const noexcept { return tAlias.sTag; }
    [[nodiscard]] std::wstring & sGetVersion() const noexcept { return tAlias.sVersion; }
    [[nodiscard]] std::wstring & sGetVariant() const noexcept { return tAlias.sVariant; }

private:
    TAlias & tAlias;
};

/// An alias and the directory in which its object lies.
///
/// Reading and writing, comparing and being empty mean both parts here. The stream forms of `TAlias` do not know the
/// directory.
struct ZKTOOLS_API TFullAlias : TAlias {
    std::wstring sDirectory;

    TFullAlias() = default;
    /// The alias is trimmed, the directory is not.
    TFullAlias(TAlias const & tAlias, std::wstring const & sDirectory);
    TFullAlias(TFullAlias const & tOther) = default;
    TFullAlias & operator=(TFullAlias const & tOther) = default;
    ~TFullAlias() = default;

    /// Compares the aliases, then the directories by the values of their UTF-16 units, a shorter one before what begins
    /// with it. Deliberate: case counts here too, although the directories are paths; stored lists are sorted so.
    /// \returns -1, 0 or 1
    [[nodiscard]] int iCompare(TFullAlias const & tOther) const noexcept;
    [[nodiscard]] bool operator<(TFullAlias const & tOther) const noexcept;
    /// Equal by `iCompare`. So the alias counts up to a null character, where `TAlias` compares all of it.
    [[nodiscard]] bool operator==(TFullAlias const & tOther) const noexcept;
    [[nodiscard]] bool operator!=(TFullAlias const & tOther) const noexcept;

    /// True when tag or directory is empty. Deliberate: an object without a place is none.
    [[nodiscard]] bool fIsEmpty() const noexcept;
    /// True when neither tag nor directory is empty.
    [[nodiscard]] bool fIsFilled() const noexcept;

    /// The alias, and the child "Directory".
    void Read(TOptionElement const & tElement);
    /// The alias, and the child "Directory", by the rule for "Version".
    void Write(TOptionElement & tElement) const;
};

/// Where an object was searched: a text of the layers above.
class ZKTOOLS_API TSearchContext {
public:
    TSearchContext() = default;
    explicit TSearchContext(std::wstring sText);
    TSearchContext(TSearchContext const & tOther) = default;
    TSearchContext & operator=(TSearchContext const & tOther) = default;
    /// Leaves the other one empty, and so does the assignment.
    TSearchContext(TSearchContext && tOther) noexcept;
    TSearchContext & operator=(TSearchContext && tOther) noexcept;
    ~TSearchContext() = default;

    [[nodiscard]] std::wstring const & sGetText() const noexcept { return sText; }
    [[nodiscard]] bool operator==(TSearchContext const & tOther) const noexcept;

private:
    std::wstring sText;
};

/// An alias with a search context and a type, both of which mean something to the layers above only.
struct ZKTOOLS_API TCntxtAlias : TAlias {
    /// Empty, of type 0.
    TCntxtAlias() = default;
    TCntxtAlias(TAlias const & tAlias, TSearchContext tContext, int iType);
    TCntxtAlias(TCntxtAlias const & tOther) = default;
    TCntxtAlias & operator=(TCntxtAlias const & tOther) = default;
    /// Takes the context, which is empty in the other one afterwards; alias and type are copied. So does the
    /// assignment.
    TCntxtAlias(TCntxtAlias && tOther);
    TCntxtAlias & operator=(TCntxtAlias && tOther);
    ~TCntxtAlias() = default;

    void SetSearchContext(TSearchContext tContext);
    [[nodiscard]] TSearchContext GetSearchContext() const;
    [[nodiscard]] int iGetType() const noexcept { return iType; }

    /// Alias, type and context are equal.
    [[nodiscard]] bool operator==(TCntxtAlias const & tOther) const noexcept;

private:
    TSearchContext tSearchContext;
    int iType = 0;
};

/// The record in which old files hold an alias: fields of 21, 7 and 7 bytes, each a text in the thread's ANSI code page
/// with a terminator. What is too long for its field is cut, in the middle of a character if need be, and what lies
/// behind a terminator has no meaning; here it is zero but in a record that was read.
struct ZKTOOLS_API TOldTagRec {
    /// All fields empty.
    TOldTagRec() noexcept = default;
    /// As `SetValue`.
    TOldTagRec(wchar_t const * pzTag, wchar_t const * pzVersion, wchar_t const * pzVariant);
    TOldTagRec(TOldTagRec const & tOther) noexcept = default;
    /// Copies the texts, not what lies behind them.
    TOldTagRec & operator=(TOldTagRec const & tOther) noexcept;
    ~TOldTagRec() = default;

    /// Null empties a field.
    void SetValue(wchar_t const * pzTag, wchar_t const * pzVersion, wchar_t const * pzVariant);
    /// The same of texts in the code page of the record.
    void SetValue(char const * pzTag, char const * pzVersion, char const * pzVariant) noexcept;
    [[nodiscard]] std::wstring sGetTag() const;
    [[nodiscard]] std::wstring sGetVersion() const;
    [[nodiscard]] std::wstring sGetVariant() const;

    /// \throws as the stream does at its end; the fields read so far stay changed
    void Read(TStreamBase & tStream);
    void Write(TStreamBase & tStream) const;

    /// The texts are equal.
    [[nodiscard]] bool operator==(TOldTagRec const & tOther) const noexcept;
    /// 35, in bytes.
    [[nodiscard]] static unsigned int uiGetSize() noexcept { return sizeof(TOldTagRec); }

private:
    friend class TAlias;

    void ReadBehind(TStreamBase & tStream, std::size_t uHave);

    std::array<char, 21> acTag{};
    std::array<char, 7> acVersion{};
    std::array<char, 7> acVariant{};
};
