/// Code pages by name, and the stateful converter from UTF-16 to one of them.
#pragma once

#include "ZkBase/Export.h"

/// The text encodings that the tool's files use. The values are part of stored settings: new ones go to the end.
enum ECodePage : int {
    ecpDefault = 0,             ///< the system's ANSI code page, `GetACP()`
    ecpUtf8 = 1,                ///< 65001
    ecpWestern = 2,             ///< 1252
    ecpOem = 3,                 ///< the system's OEM code page, `GetOEMCP()`
    ecpUtf16 = 4,               ///< 1200: UTF-16, little-endian
    ecpUtf16Swapped = 5,        ///< 1201: UTF-16, big-endian
    ecpLatin1 = 6,              ///< 28591: ISO 8859-1
    ecpAscii = 7,               ///< 20127
    ecpJapanese = 8,            ///< 932
    ecpChineseSimplified = 9,   ///< 936
    ecpKorean = 10,             ///< 949
    ecpChineseTraditional = 11, ///< 950
    ecpCentralEuropean = 12,    ///< 1250
    ecpCyrillic = 13,           ///< 1251
    ecpGreek = 14,              ///< 1253
    ecpTurkish = 15,            ///< 1254
    ecpHebrew = 16,             ///< 1255
    ecpArabic = 17,             ///< 1256
    ecpBaltic = 18,             ///< 1257
    ecpVietnamese = 19,         ///< 1258
};

/// The Windows number of a code page. A value outside the enumeration counts as `ecpDefault`.
[[nodiscard]] ZKBASE_API unsigned short uGetCodePage(ECodePage eCodePage);

/// The enumerator of a Windows code-page number: the one with that fixed number if there is one, then `ecpOem` when it
/// is the system's OEM code page and not its ANSI one too, otherwise `ecpDefault`.
[[nodiscard]] ZKBASE_API ECodePage eFindCodePage(unsigned short uCodePage);

/// Which way a `TConvertStream` converts.
enum EConvertDirection : int {
    ecdFromUtf16 = 1, ///< from UTF-16 to the code page; the only one there is
};

/// Where a `TConvertStream` delivers its bytes.
struct IConvertReceiver {
    /// Takes up to `uBytes` bytes and returns how many it took. What it leaves is offered again at once; after 0, with
    /// the next call of `Write` or `Flush`.
    virtual unsigned int Receive(void const * pData, unsigned int uBytes) = 0;
};

/// Converts UTF-16 text to a code page piece by piece: a surrogate pair may be cut between two writes.
///
/// A half of a pair that stands alone, and a character that the code page lacks, become the default character that the
/// platform's `WideCharToMultiByte` uses, never one that looks alike: a fullwidth bracket does not become markup. Under
/// `ecpUtf16` and `ecpUtf16Swapped` units are passed on as they are. What is held when the object goes is lost.
class ZKBASE_API TConvertStream {
public:
    /// \param pReceiver must outlive this object and is not owned
    /// \throws std::invalid_argument for a direction other than `ecdFromUtf16`
    TConvertStream(ECodePage eCodePage, EConvertDirection eDirection, IConvertReceiver * pReceiver);

    /// Converts the UTF-16 text at `pData` (no alignment needed), `uBytes` bytes long, and passes it on.
    /// \returns the count of bytes taken. The first half of a pair at the end is kept for the next write and counts as
    ///          taken; an odd last byte is not taken; less comes back when the receiver takes no more.
    /// \throws TXError when the platform cannot convert to the code page
    unsigned int Write(void const * pData, unsigned int uBytes);

    /// Passes on all that is held, a half of a pair included. What the receiver doesn't take stays held.
    void Flush();

private:
    bool fDeliver();
    void Convert(wchar_t const * pUnits, int iCount);

    IConvertReceiver * pReceiver;
    unsigned short uCodePage;
    wchar_t cFirstHalf = 0;      // the first half of a pair whose second half has not come yet, or 0
    unsigned int uHeldBegin = 0; // acHeld from here up to uHeldEnd waits for the receiver
    unsigned int uHeldEnd = 0;
    char acHeld[1024];
};
