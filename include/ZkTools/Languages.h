/// Languages: the table of all that the tool knows, and lists of them by code.
///
/// A code has at most two characters, such as "de"; case does not count where a code is looked up. Names are in the
/// language of the messages.
#pragma once

#include "ZkTools/Containers.h"
#include "ZkTools/Export.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

class TOptionElement;
class TStreamBase;

/// A language: both texts end in a null character. 48 bytes.
struct ZKTOOLS_API TLangAssoc {
    wchar_t szCode[3] = {};
    wchar_t szName[21] = {};
};
static_assert(sizeof(TLangAssoc) == 24 * sizeof(wchar_t));

/// The table of all known languages, in the order in which they are shown. It comes from the message module, whose
/// packed form docs/messages.md tells.
///
/// A module without the table makes an empty one, and of a table that ends too early its whole entries count: neither
/// is a failure. A code of more than two characters, or a name of more than twenty, ends the process.
///
/// Texts are taken up to a null character and must not be null. What is given back lives as long as the table.
class ZKTOOLS_API TLangArray {
public:
    /// The table of the process, read at the first call. It does not change afterwards.
    [[nodiscard]] static TLangArray & Instance();

    [[nodiscard]] unsigned int iGetCount() const noexcept;
    /// No test of the range: an index outside the table is outside the contract.
    [[nodiscard]] TLangAssoc const & operator[](unsigned int uIndex) const noexcept;
    /// The name of a code, null for an unknown one.
    [[nodiscard]] wchar_t const * pzGetName(wchar_t const * pzCode) const;
    /// The place of a code, 4294967295 for an unknown one.
    [[nodiscard]] unsigned int iGetIndex(wchar_t const * pzCode) const;
    /// The code of a name, empty for an unknown one. Deliberate: case counts in names.
    [[nodiscard]] std::wstring sGetCode(wchar_t const * pzName) const;

protected:
    /// Reads the table of the message module.
    TLangArray();

private:
    struct TLanguage : TLangAssoc {
        int iOrder = 0;
    };
    struct TCodeOrder {
        bool operator()(std::wstring const & sFirst, std::wstring const & sSecond) const;
    };

    void ReadTable(std::wstring_view sTable);
    void Index();

    std::vector<TLanguage> tLanguages;
    std::map<std::wstring, unsigned int, TCodeOrder> tCodes;
    std::map<std::wstring, unsigned int> tNames;
};

/// A list of languages of any kind.
class ZKTOOLS_API TIfLanguageList {
public:
    TIfLanguageList() noexcept = default;
    TIfLanguageList(TIfLanguageList const & tOther) noexcept = default;
    TIfLanguageList & operator=(TIfLanguageList const & tOther) noexcept = default;

    virtual ~TIfLanguageList();
    virtual int iGetCount() const = 0;
    virtual wchar_t const * pzGetCodeAt(int iIndex) const = 0;
    /// Here the name that `TLangArray::Instance` has for the code, null for a code that it does not know.
    virtual wchar_t const * pzGetNameAt(int iIndex) const;
};

/// A list that keeps codes alone. Any text may be one, also one that the table does not know, and more than once.
class ZKTOOLS_API TLangListAsString : public TIfLanguageList {
public:
    TLangListAsString() = default;
    // There is no move: moving a list copies it.
    TLangListAsString(TLangListAsString const & tOther) = default;
    TLangListAsString & operator=(TLangListAsString const & tOther) = default;

    ~TLangListAsString() override;
    int iGetCount() const override;
    /// The text belongs to the list. No test of the range: an index outside the list is outside the contract.
    wchar_t const * pzGetCodeAt(int iIndex) const override;

    /// Appends.
    void Add(wchar_t const * pzCode);
    void Add(std::wstring const & sCode);
    void Flush() noexcept;
    /// The index of the first code that is exactly the same, case included; 2147483647 when there is none.
    [[nodiscard]] int iFind(wchar_t const * pzCode) const;
    /// The same codes in the same order.
    [[nodiscard]] bool operator==(TLangListAsString const & tOther) const noexcept;

    /// As `TZkStringArray::Read`.
    void Read(TStreamBase & tStream);
    void Write(TStreamBase & tStream) const;
    /// Replaces the codes by those of the child "Languages", by none when there is no such child.
    void Read(TOptionElement const & tElement);
    /// Adds a child "Languages". Deliberate: one that is there stays, and is the one that is read.
    void Write(TOptionElement & tElement) const;

private:
    TZkStringArray tCodes;
};
