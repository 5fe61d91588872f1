/// Values of automation, and calls of automation objects by name.
///
///     TVariant tFiles(pFileSystem, false);
///     TVariant tPath(L"S:\\shared");
///     TVariant tFound;
///     tFiles.CallR(L"FolderExists", tFound, tPath);
///     if (tFound) ...
#pragma once

#include "ZkBase/Windows.h"
#include "ZkTools/Export.h"

#include <oaidl.h>

#include <string>

// The overloads for 1 to 20 arguments, and their bodies, are made from these.

/// `M(1), M(2), ... M(n)` is ZKTOOLS_LIST_n(M).
#define ZKTOOLS_LIST_1(M) M(1)
#define ZKTOOLS_LIST_2(M) ZKTOOLS_LIST_1(M), M(2)
#define ZKTOOLS_LIST_3(M) ZKTOOLS_LIST_2(M), M(3)
#define ZKTOOLS_LIST_4(M) ZKTOOLS_LIST_3(M), M(4)
#define ZKTOOLS_LIST_5(M) ZKTOOLS_LIST_4(M), M(5)
#define ZKTOOLS_LIST_6(M) ZKTOOLS_LIST_5(M), M(6)
#define ZKTOOLS_LIST_7(M) ZKTOOLS_LIST_6(M), M(7)
#define ZKTOOLS_LIST_8(M) ZKTOOLS_LIST_7(M), M(8)
#define ZKTOOLS_LIST_9(M) ZKTOOLS_LIST_8(M), M(9)
#define ZKTOOLS_LIST_10(M) ZKTOOLS_LIST_9(M), M(10)
#define ZKTOOLS_LIST_11(M) ZKTOOLS_LIST_10(M), M(11)
#define ZKTOOLS_LIST_12(M) ZKTOOLS_LIST_11(M), M(12)
#define ZKTOOLS_LIST_13(M) ZKTOOLS_LIST_12(M), M(13)
#define ZKTOOLS_LIST_14(M) ZKTOOLS_LIST_13(M), M(14)
#define ZKTOOLS_LIST_15(M) ZKTOOLS_LIST_14(M), M(15)
#define ZKTOOLS_LIST_16(M) ZKTOOLS_LIST_15(M), M(16)
#define ZKTOOLS_LIST_17(M) ZKTOOLS_LIST_16(M), M(17)
#define ZKTOOLS_LIST_18(M) ZKTOOLS_LIST_17(M), M(18)
#define ZKTOOLS_LIST_19(M) ZKTOOLS_LIST_18(M), M(19)
#define ZKTOOLS_LIST_20(M) ZKTOOLS_LIST_19(M), M(20)

/// `X(n)` for every count of arguments above 0 that the families with a result have.
// Deliberate: there is none for 10. The set of exported names is settled.
#define ZKTOOLS_FOR_RESULT_COUNTS(X)                                                                                   \
    X(1) X(2) X(3) X(4) X(5) X(6) X(7) X(8) X(9) X(11) X(12) X(13) X(14) X(15) X(16) X(17) X(18) X(19) X(20)
/// The same for the families without a result.
#define ZKTOOLS_FOR_COUNTS(X) ZKTOOLS_FOR_RESULT_COUNTS(X) X(10)

/// A parameter of a call.
#define ZKTOOLS_ARGUMENT(n) tagVARIANT & t##n

/// An automation value: the platform's VARIANT, which it owns and clears. Wherever the platform wants a VARIANT, this
/// object can be handed in.
///
/// Every failure of the platform's `Variant...` functions, and every value that cannot be taken, is a TComError. *So
/// does the destructor fail* when what it holds cannot be cleared, for example an array that is locked.
///
/// A true bool is -1 (VARIANT_TRUE).
class ZKTOOLS_API TVariant : public tagVARIANT {
public:
    /// VT_EMPTY.
    TVariant();
    /// A copy: of a text its own, of an object a reference of its own. A pointer must not be null, here and below.
    TVariant(tagVARIANT const & tSource);
    TVariant(tagVARIANT const * pSource);
    TVariant(TVariant const & tSource);
    /// \param fCopy true: a copy; false: the value moves here, and `tSource` is VT_EMPTY
    TVariant(tagVARIANT & tSource, bool fCopy);
    /// \param uType VT_I2, or VT_BOOL, which is true for a value other than 0
    /// \throws TComError with E_INVALIDARG for another type
    TVariant(short iValue, unsigned short uType = VT_I2);
    /// \param uType VT_I4, VT_ERROR, or VT_BOOL, which is true for a value other than 0
    /// \throws TComError with E_INVALIDARG for another type
    TVariant(long iValue, unsigned short uType = VT_I4);
    /// VT_R4.
    TVariant(float dValue);
    /// \param uType VT_R8 or VT_DATE
    /// \throws TComError with E_INVALIDARG for another type
    TVariant(double dValue, unsigned short uType = VT_R8);
    /// VT_CY: a currency amount in ten-thousandths.
    TVariant(tagCY const & tValue);
    /// VT_BSTR, up to the first zero. An empty text is an empty BSTR.
    TVariant(std::wstring const & sText);
    /// VT_BSTR; a null pointer is a null BSTR.
    TVariant(wchar_t const * pzText);
    /// VT_BSTR, from text in the ANSI code page; a null pointer is a null BSTR.
    TVariant(char const * pzText);
    /// VT_DISPATCH.
    /// \param fAddRef true: takes a reference of its own, and `p` must not be null; false: the caller's reference
    ///                passes to this object
    TVariant(IDispatch * p, bool fAddRef = true);
    /// VT_UNKNOWN; the same.
    TVariant(IUnknown * p, bool fAddRef = true);
    /// VT_BOOL.
    TVariant(bool fValue);
    /// VT_UI1.
    TVariant(unsigned char uValue);
    /// \throws TComError when the value cannot be cleared
    virtual ~TVariant() noexcept(false);

    /// The value in one type. A value of another type is converted as `VariantChangeType` does, and stays itself as it
    /// is.
    /// \throws TComError when it can't be converted
    operator short() const;
    operator long() const;
    operator float() const;
    operator double() const;
    operator tagCY() const;
    /// The text up to its first zero; empty for a null BSTR.
    operator std::wstring() const;
    /// With a reference that the caller has to release. A null pointer must not be held.
    operator IDispatch *() const;
    operator bool() const;
    /// With a reference that the caller has to release. A null pointer must not be held.
    operator IUnknown *() const;
    operator unsigned char() const;

    /// Takes a copy.
    TVariant & operator=(tagVARIANT const & tSource);
    TVariant & operator=(tagVARIANT const * pSource);
    TVariant & operator=(TVariant const & tSource);
    /// A VT_BOOL stays one and takes whether the value is other than 0; all else becomes VT_I2.
    TVariant & operator=(short iValue);
    /// VT_I4, VT_ERROR and VT_BOOL stay what they are; all else becomes VT_I4.
    TVariant & operator=(long iValue);
    TVariant & operator=(float dValue);
    /// VT_R8 and VT_DATE stay what they are; all else becomes VT_R8.
    TVariant & operator=(double dValue);
    TVariant & operator=(tagCY const & tValue);
    /// Up to the first zero. *An empty text is a null BSTR here*, unlike in the constructor.
    TVariant & operator=(std::wstring const & sText);
    /// A null pointer is a null BSTR.
    TVariant & operator=(wchar_t const * pzText);
    /// `SetString`.
    TVariant & operator=(char const * pzText);
    /// Takes a reference of its own. `p` must not be null.
    TVariant & operator=(IDispatch * p);
    TVariant & operator=(IUnknown * p);
    TVariant & operator=(bool fValue);
    TVariant & operator=(unsigned char uValue);

    /// True for the same type with the same value; nothing is converted, so that a VT_I2 of 1 is no VT_I4 of 1. Objects
    /// are the same when their pointers are. A null BSTR is an empty one.
    /// \throws TComError with E_INVALIDARG for two values of the same type when it is none of those that this class
    ///         makes, or VT_NULL. An object compared with itself is equal whatever its type.
    bool operator==(tagVARIANT const * p) const;
    bool operator==(tagVARIANT const & t) const;
    bool operator!=(tagVARIANT const * p) const;
    bool operator!=(tagVARIANT const & t) const;
    /// True for VT_EMPTY.
    bool operator!() const noexcept;

    /// Makes it VT_EMPTY.
    void Clear();
    /// Clears it, and moves the value of `tSource` here, which is VT_EMPTY then.
    void Attach(tagVARIANT & tSource);
    /// Moves the value to the caller, who has to clear it.
    [[nodiscard]] tagVARIANT Detach() noexcept;
    /// Converts to another type: `pSource`, or with null what is held. What is held stays when that fails.
    void ChangeType(unsigned short uType, TVariant const * pSource = nullptr);
    /// VT_BSTR, from text in the ANSI code page; a null pointer is a null BSTR.
    void SetString(char const * pzText);

    /// \name Calls of the object that is held
    ///
    /// Each call comes with a name and as `...Default`, which is the object's default member, and so is an empty name.
    /// Behind the name, and the result where there is one, stand 0 to 20 arguments in the server's order. They are lent
    /// to the server and stay the caller's, who may find changed what the server takes by reference. What the server
    /// allows to be left out may be left out at the end; elsewhere VT_ERROR with DISP_E_PARAMNOTFOUND stands for it.
    ///
    /// `tResult` should be empty: it is overwritten, not cleared.
    ///
    /// \throws std::invalid_argument when no object is held, or a null pointer. What passes for one is every type with
    ///         the bits of VT_DISPATCH (9), thus VT_UNKNOWN and VT_BOOL as well: whoever calls on those must know what
    ///         they hold.
    /// \throws std::runtime_error when the object has no member of that name, and when the call fails; `what` (UTF-8)
    ///         tells the reason, what the server says, the type of object, and what was tried. Never a TComError.
    /// @{

    /// Reads a property.
    void GetProperty(std::wstring const & sName, TVariant & tResult) const;
    void GetPropertyDefault(TVariant & tResult) const;
    /// Writes a property: the last argument is the value.
    void PutProperty(std::wstring const & sName) const;
    void PutPropertyDefault() const;
    /// Writes a property that keeps a reference to an object. Unlike `PutProperty` it does not mark the last argument
    /// as the value; servers that insist on the mark refuse the call.
    void PutRefProperty(std::wstring const & sName) const;
    void PutRefPropertyDefault() const;
    /// Calls a method and drops its result.
    void Call(std::wstring const & sName) const;
    void CallDefault() const;
    /// Calls a method.
    void CallR(std::wstring const & sName, TVariant & tResult) const;
    void CallRDefault(TVariant & tResult) const;

#define ZKTOOLS_DECLARE(TFamily, n)                                                                                    \
    void TFamily(std::wstring const & sName, ZKTOOLS_LIST_##n(ZKTOOLS_ARGUMENT)) const;                                \
    void TFamily##Default(ZKTOOLS_LIST_##n(ZKTOOLS_ARGUMENT)) const;
#define ZKTOOLS_DECLARE_WITH_RESULT(TFamily, n)                                                                        \
    void TFamily(std::wstring const & sName, TVariant & tResult, ZKTOOLS_LIST_##n(ZKTOOLS_ARGUMENT)) const;            \
    void TFamily##Default(TVariant & tResult, ZKTOOLS_LIST_##n(ZKTOOLS_ARGUMENT)) const;

#define ZKTOOLS_DECLARE_ALL(n)                                                                                         \
    ZKTOOLS_DECLARE(PutProperty, n)                                                                                    \
    ZKTOOLS_DECLARE(PutRefProperty, n)                                                                                 \
    ZKTOOLS_DECLARE(Call, n)
#define ZKTOOLS_DECLARE_ALL_WITH_RESULT(n)                                                                             \
    ZKTOOLS_DECLARE_WITH_RESULT(GetProperty, n)                                                                        \
    ZKTOOLS_DECLARE_WITH_RESULT(CallR, n)

    ZKTOOLS_FOR_COUNTS(ZKTOOLS_DECLARE_ALL)
    ZKTOOLS_FOR_RESULT_COUNTS(ZKTOOLS_DECLARE_ALL_WITH_RESULT)

#undef ZKTOOLS_DECLARE
#undef ZKTOOLS_DECLARE_WITH_RESULT
#undef ZKTOOLS_DECLARE_ALL
#undef ZKTOOLS_DECLARE_ALL_WITH_RESULT
    /// @}

private:
    void Initialize() noexcept;

    void GetPropertyImp(std::wstring const & sName, tagVARIANT & tResult, tagDISPPARAMS & tParams) const;
    void PutPropertyImp(std::wstring const & sName, tagDISPPARAMS & tParams) const;
    void PutRefPropertyImp(std::wstring const & sName, tagDISPPARAMS & tParams) const;
    void CallImp(std::wstring const & sName, tagDISPPARAMS & tParams) const;
    void CallRImp(std::wstring const & sName, tagVARIANT & tResult, tagDISPPARAMS & tParams) const;
};

/// Two of the class itself: without it the language could turn the operands of the member round.
[[nodiscard]] inline bool operator==(TVariant const & tLeft, TVariant const & tRight) {
    return tLeft == static_cast<tagVARIANT const &>(tRight);
}
