/// The option tree: named elements with a text, attributes and child elements, in memory. Objects write themselves to a
/// tree and read themselves from one; how a tree is stored is no business of theirs, nor of this library.
///
/// Names are compared exactly, case included, unless a function says otherwise. An index counts from 0.
///
/// A tree belongs to one thread at a time.
#pragma once

#include "ZkBase/ObjectType.h"
#include "ZkTools/Containers.h"
#include "ZkTools/Export.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct tm;

class TOptionElement;

/// A name and a value.
class ZKTOOLS_API TOptionAttribute {
public:
    TOptionElement * pOwner = nullptr; ///< the element that holds it; null while it is in none
    std::wstring sName;
    std::wstring sValue;
    bool fMarked = false; ///< for the layers above; never copied

    TOptionAttribute() noexcept = default;
    /// Copies name and value only, and so does the assignment.
    TOptionAttribute(TOptionAttribute const & tOther);
    TOptionAttribute & operator=(TOptionAttribute const & tOther);
    ~TOptionAttribute() = default;

    /// Equal names; the values are not looked at.
    [[nodiscard]] bool operator==(TOptionAttribute const & tOther) const noexcept;
    /// The order of the names by their UTF-16 units.
    [[nodiscard]] bool operator<(TOptionAttribute const & tOther) const noexcept;

    /// Attributes lie in memory of the library's own, packed.
    static void * operator new(std::size_t uSize);
    static void operator delete(void * pMemory, std::size_t uSize) noexcept;

private:
    friend class TOptionElement;

    TOptionAttribute(TOptionElement * pOwner, std::wstring_view sName, std::wstring_view sValue);
};

/// The attributes of an element, in the order in which they were added. It holds no null pointers.
class ZKTOOLS_API TOptionAttributeArray : public TIArrayAsVector<TOptionAttribute> {
public:
    TOptionElement * pOwner; ///< the element whose attributes these are, or were before it was moved from

    explicit TOptionAttributeArray(TOptionElement * pOwner) noexcept;
    ~TOptionAttributeArray() override;

private:
    friend class TOptionElement; // goes through the queue itself
};

/// The child elements of an element, in the order in which they were added. It holds no null pointers.
class ZKTOOLS_API TOptionElementArray : public TIArrayAsVector<TOptionElement> {
public:
    TOptionElement * pOwner; ///< the element whose children these are, or were before it was moved from

    explicit TOptionElementArray(TOptionElement * pOwner) noexcept;
    ~TOptionElementArray() override;

private:
    friend class TOptionElement; // goes through the queue itself
};

/// An element of an option tree.
///
/// It owns its attributes and children: they die with it, however many and however deep they are. A tree is built by
/// adding to its root. References that a look-up gives live as long as what they refer to; where nothing is found and a
/// reference is due, it is to an empty element or text that lives as long as the library is loaded.
///
/// Every typed value is kept as text. The readers never fail: a text that cannot be read gives the default of the type.
/// Numbers are read from the start of the text as decimal digits with a sign, in the range of `int`; what lies beyond
/// it becomes the nearest `int`. They are cut to the width of the target.
class ZKTOOLS_API TOptionElement {
public:
    TOptionElement * pParent = nullptr; ///< the element above; null for a root
    std::wstring sName;
    std::wstring sText;
    int iPosition = -1; ///< where the element stood in its file, set by who reads the file; -1 is nowhere
    /// The element's own arrays. Both are null in an element that was moved from.
    TOptionAttributeArray * pAttributes = &tAttributes;
    TOptionElementArray * pElements = &tElements;

    TOptionElement() noexcept;
    TOptionElement(TOptionElement const &) = delete;
    TOptionElement & operator=(TOptionElement const &) = delete;
    /// Takes all that the other has, its place under a parent included. The other one can only be destroyed or assigned
    /// to by a move afterwards.
    ///
    /// Deliberate: attributes, children and arrays go on naming the other one as their owner and parent. A moved tree
    /// is there to be read; who adds to it sets them anew.
    TOptionElement(TOptionElement && tOther) noexcept;
    TOptionElement & operator=(TOptionElement && tOther) noexcept;

    /// A derived class finds its children gone when it is destroyed as part of a tree.
    virtual ~TOptionElement();
    /// For derived classes; 0 here.
    virtual int iGetVersion();
    /// For derived classes; does nothing here.
    virtual void SetVersion(int iVersion);

    /// Becomes a copy of the other: name, text, attributes and the whole tree below. It has no parent then, and keeps
    /// its position. Where memory runs out it stays as it was.
    ///
    /// Deliberate: as a copy of itself it loses attributes and children.
    void Clone(TOptionElement const & tSource);
    /// Empties name and text, destroys attributes and children.
    void Flush() noexcept;

    [[nodiscard]] std::wstring const & sGetName() const noexcept { return sName; }
    [[nodiscard]] std::wstring const & sGetText() const noexcept { return sText; }
    void SetText(std::wstring const & sNewText) { sText = sNewText; }

    /// Equal names; nothing else is looked at.
    [[nodiscard]] bool operator==(TOptionElement const & tOther) const noexcept;
    /// The order of the names by their UTF-16 units.
    [[nodiscard]] bool operator<(TOptionElement const & tOther) const noexcept;

    // Attributes. A name stands once only.

    [[nodiscard]] int iCountAttributes() const noexcept;
    /// \throws std::out_of_range
    [[nodiscard]] TOptionAttribute const * pGetAttribute(int iIndex) const;
    /// Null when there is none.
    [[nodiscard]] TOptionAttribute const * pGetAttribute(std::wstring_view sAttribute) const noexcept;
    [[nodiscard]] TOptionAttribute * pGetAttributeRW(std::wstring_view sAttribute) noexcept;
    /// \throws std::out_of_range
    [[nodiscard]] std::wstring const & sGetAttributeValue(int iIndex) const;
    /// Empty when there is none.
    [[nodiscard]] std::wstring const & sGetAttributeValue(std::wstring_view sAttribute) const noexcept;
    /// Nothing when there is none.
    [[nodiscard]] std::optional<std::wstring> psGetAttributeValue(std::wstring_view sAttribute) const;
    /// Adds an attribute at the end. One of that name is destroyed, so a replaced attribute changes its place.
    TOptionAttribute * pAddAttribute(std::wstring_view sAttribute, std::wstring_view sValue);

    /// What the attribute "ObjectType" says; `eotNone` where it is missing, empty or unknown.
    [[nodiscard]] EObjectType eGetObjectType() const;
    /// Sets the attribute "ObjectType"; to an empty value for `eotNone`.
    void PutObjectType(EObjectType eType);

    // Children. Names may stand several times; look-ups by name find the first.

    [[nodiscard]] int iCountElements() const noexcept;
    /// The children of that name. Deliberate: here, and here only, without regard to case.
    [[nodiscard]] int iCountElements(std::wstring_view sElement) const noexcept;
    /// \throws std::out_of_range
    [[nodiscard]] TOptionElement const * pGetElement(int iIndex) const;
    [[nodiscard]] TOptionElement * pGetElementRW(int iIndex);
    /// Null when there is none.
    [[nodiscard]] TOptionElement const * pGetElement(std::wstring_view sElement) const noexcept;
    [[nodiscard]] TOptionElement * pGetElementRW(std::wstring_view sElement) noexcept;
    /// \throws TXZkTools 4506 when there is none; 4507, with the position of this element, where it has one
    [[nodiscard]] TOptionElement const & getElement(std::wstring_view sElement) const;
    [[nodiscard]] TOptionElement & getElementRW(std::wstring_view sElement);
    /// The empty element when there is none, so that a chain of calls never fails.
    [[nodiscard]] TOptionElement const & operator()(std::wstring_view sElement) const noexcept;
    /// \throws std::out_of_range
    [[nodiscard]] std::wstring const & sGetElementText(int iIndex) const;
    /// Empty when there is none.
    [[nodiscard]] std::wstring const & sGetElementText(std::wstring_view sElement) const noexcept;

    /// Appends a new child.
    TOptionElement * pAddElement(std::wstring_view sElement, std::wstring_view sNewText);
    /// Inserts a new child before the one at `iIndex`; the count appends.
    /// \throws std::out_of_range
    TOptionElement * pAddElementAt(std::wstring_view sElement, std::wstring_view sNewText, int iIndex);
    /// Appends a new child without text.
    TOptionElement & operator+(std::wstring_view sElement);
    /// Takes over a child that was made by `new` and is in no tree. Where this throws, it stays the caller's.
    void AddElement(TOptionElement * pChild);
    /// Inserts it before the one at `iIndex`; the count appends.
    /// \throws std::out_of_range
    void AddElementAt(TOptionElement * pChild, int iIndex);

    /// Deletes that child. A pointer to something else does nothing.
    void DestroyElement(TOptionElement * pChild) noexcept;
    /// \throws std::out_of_range
    void DestroyElement(int iIndex);
    /// Deletes the first child of that name, if there is one.
    void DestroyElement(std::wstring_view sElement) noexcept;
    /// Takes that child out of the tree; the caller owns it then. A pointer to something else does nothing.
    void RemoveElement(TOptionElement * pChild) noexcept;
    /// \throws std::out_of_range
    void RemoveElement(int iIndex);

    // The text as a value.

    void Read(std::wstring & sValue) const;
    /// Copies up to `ulSize` - 1 characters and fills the rest with zeros. A null target does nothing.
    void Read(wchar_t * pzTarget, unsigned long ulSize) const noexcept;
    /// True for "true", exactly.
    void Read(bool & fValue) const noexcept;
    /// The first character, 0 for the empty text.
    void Read(wchar_t & cValue) const noexcept;
    void Read(unsigned char & uValue) const noexcept;
    void Read(short & iValue) const noexcept;
    void Read(unsigned short & uValue) const noexcept;
    void Read(int & iValue) const noexcept;
    void Read(unsigned int & uValue) const noexcept;
    void Read(long & lValue) const noexcept;
    void Read(unsigned long & ulValue) const noexcept;
    /// Leaves the value as it is where the text does not begin with a number.
    void Read(double & dValue) const noexcept;
    /// Decodes Base64.
    /// \throws std::system_error for a text that is none
    void Read(std::vector<unsigned char> & tBytes) const;
    /// A date as `TZkDateTime` reads it; 1601-01-01 00:00:00 for a text that is none.
    void Read(tm & tValue) const;

    void Write(std::wstring const & sValue);
    /// Null is the empty text.
    void Write(wchar_t const * pzValue);
    /// "true" or "false".
    void Write(bool const & fValue);
    /// A text of this character.
    void Write(wchar_t const & cValue);
    void Write(unsigned char const & uValue);
    void Write(short const & iValue);
    void Write(unsigned short const & uValue);
    void Write(int const & iValue);
    /// Deliberate: as a signed number. 4294967295 is written as "-1", as the files have it, and read back as such.
    void Write(unsigned int const & uValue);
    void Write(long const & lValue);
    void Write(unsigned long const & ulValue);
    /// With six decimals; what lies beyond them is lost.
    void Write(double const & dValue);
    /// Encodes bytes as Base64 without line breaks. A negative size, and a null pointer with any size but 0, end the
    /// process.
    /// \throws std::system_error where the system fails
    void Write(void const * pData, int iSize);
    /// A date in the form "2024-01-15T08:30:00"; 1601-01-01T00:00:00 for fields that are none.
    void Write(tm const & tValue);

    /// `Read`.
    TOptionElement const & operator>>(std::wstring & sValue) const;
    TOptionElement const & operator>>(unsigned short & uValue) const;
    TOptionElement const & operator>>(unsigned int & uValue) const;
    TOptionElement const & operator>>(unsigned long & ulValue) const;
    /// `Write`, but for `unsigned int`, which stands as an unsigned number.
    TOptionElement & operator<<(std::wstring const & sValue);
    TOptionElement & operator<<(unsigned short uValue);
    TOptionElement & operator<<(unsigned int uValue);
    TOptionElement & operator<<(unsigned long ulValue);

    /// Elements lie in memory of the library's own, packed; derived ones of another size on the heap.
    static void * operator new(std::size_t uSize);
    static void operator delete(void * pMemory, std::size_t uSize) noexcept;

private:
    TOptionElement(std::wstring_view sName, std::wstring_view sText);

    void TakeOver(TOptionElement & tOther) noexcept;
    void DestroyChildren() noexcept;
    void CopyAttributes(TOptionElement const & tSource);
    TOptionAttribute * pAppendAttribute(std::wstring_view sAttribute, std::wstring_view sValue);
    void CopyTree(TOptionElement const & tSource);
    [[nodiscard]] std::size_t uFindElement(std::wstring_view sElement) const noexcept;
    [[nodiscard]] std::size_t uFindElement(TOptionElement const * pChild) const noexcept;
    [[nodiscard]] std::size_t uFindAttribute(std::wstring_view sAttribute) const noexcept;
    [[nodiscard]] TOptionElement * pDetach(std::size_t uIndex) noexcept;
    [[noreturn]] void ThrowMissing(std::wstring_view sElement) const;

    TOptionAttributeArray tAttributes{this};
    TOptionElementArray tElements{this};
};

/// Sets a flag from the text of a child: 1 when it is `pzTrue` without regard to case, otherwise 0. A missing child
/// leaves it as it is.
ZKTOOLS_API void ReadOption(unsigned short & uValue, TOptionElement const & tParent, std::wstring_view sElement,
                            wchar_t const * pzTrue) noexcept;
/// The same; a missing child sets it to `uDefault`.
ZKTOOLS_API void ReadOption(unsigned short & uValue, TOptionElement const & tParent, std::wstring_view sElement,
                            wchar_t const * pzTrue, unsigned short uDefault) noexcept;
