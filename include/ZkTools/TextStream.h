/// Writing text and XML in any encoding to any stream of bytes. Text is always given as UTF-16.
#pragma once

#include "ZkBase/CodePages.h"
#include "ZkTools/Export.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

class TIStreamBuffImpl; // internal
class TStreamBase;
struct IRawStream;

/// How text becomes XML: bits, combined by `|`. None of them: text between tags.
enum EXMLParams : unsigned int {
    xmlEscapeAttribute = 1, ///< text for the value of an attribute: quotes and line ends become references
    xmlEscapeTab = 2,       ///< with `xmlEscapeAttribute`, tabs become references too; alone it does nothing
};

[[nodiscard]] constexpr EXMLParams operator|(EXMLParams eFirst, EXMLParams eSecond) noexcept {
    return static_cast<EXMLParams>(static_cast<unsigned int>(eFirst) | static_cast<unsigned int>(eSecond));
}

/// A writer of text files and XML, UTF-8 unless told otherwise. It is *closed* until it has a stream; then only the
/// constructors, `Open`, `SetStream`, `SetCodepage`, `Close`, `eGetCodePage` and `sGetXMLString` may be called.
///
/// Under `ecpUtf16` the text goes to the stream as it is, under `ecpUtf16Swapped` unit by unit with its bytes
/// exchanged, and under all others through a conversion that holds the first half of a surrogate pair until the second
/// one comes. A lone half, and a character that the encoding lacks, leave as the system's default character.
///
/// Byte order marks are the stream's work: a file made here bears the mark of UTF-16, and none under UTF-8.
///
/// Nothing fails but the stream and the conversion, whose exceptions come through unchanged.
class ZKTOOLS_API TOTextStream {
public:
    /// Closed, UTF-8.
    TOTextStream();
    /// Closed.
    explicit TOTextStream(ECodePage eNewCodePage);
    /// UTF-8 to a stream that stays the caller's and must outlive this object or the next `Close`.
    explicit TOTextStream(IRawStream * pStream);
    /// The same in any encoding.
    TOTextStream(ECodePage eNewCodePage, IRawStream * pStream);
    /// As `Open`.
    TOTextStream(ECodePage eNewCodePage, wchar_t const * pzName);
    TOTextStream(TOTextStream const &) = delete;
    TOTextStream & operator=(TOTextStream const &) = delete;
    /// Closes. A failure to write what is left ends the process: call `Close` where that can happen.
    virtual ~TOTextStream();

    /// Writes the text with `&`, `<` and `>` as entities, with every line end (LF, CR or CR LF) as CR LF, and with a
    /// question mark for each unit that XML does not take: control characters, 0xFFFE and 0xFFFF, and *each half* of a
    /// surrogate pair. With `xmlEscapeAttribute` quotes, CR and LF are entities or references too, so that an attribute
    /// keeps them.
    virtual void WriteXML(std::wstring_view sText, EXMLParams eParams);
    /// Writes the text as the inside of a comment: with a blank between any two hyphens in a row, and line ends and
    /// refused units as above. A CR at the very end stays alone. Neither are the marks of the comment written, nor is a
    /// hyphen at the end parted from them.
    virtual void WriteXMLComment(std::wstring_view sText);

    /// Makes the file, or empties it, and writes to it; a stream that was there is let go without `Flush`. Close
    /// first to make the same file anew.
    /// \throws TXZkTools as `TFStream::Open`
    void Open(wchar_t const * pzName);
    /// Writes what the conversion holds, closes a file that was opened here, lets go of the caller's stream. Nothing
    /// when closed. When writing fails the stream stays open.
    void Close();
    /// Writes what the conversion holds. Only under UTF-16 the stream is flushed as well.
    void Flush();
    /// Goes on with a stream of the caller's; nothing when that is the stream already. What the conversion holds is
    /// lost: flush first.
    void SetStream(IRawStream * pStream);
    /// Goes on in another encoding, on the same stream at its place. What the conversion holds is lost: flush first. A
    /// file keeps the mark that it has.
    void SetCodepage(ECodePage eNewCodePage);
    [[nodiscard]] ECodePage eGetCodePage() const noexcept { return eCodePage; }

    /// One unit.
    void Write(wchar_t c);
    /// Up to the terminator.
    void Write(wchar_t const * pzText);
    void Write(wchar_t const * pText, unsigned int uChars);
    /// All units, zeros too.
    void Write(std::wstring_view sText);
    /// The bytes as they are, past the conversion and what it holds.
    void Write(std::string_view sBytes);
    /// All data of the stream's block as UTF-16, whatever its code page and position. Of a file that is its buffer.
    void Write(TStreamBase & tSource);
    /// The text, then CR LF.
    void Writeln(wchar_t const * pzText);
    void Writeln(std::wstring const & sText);
    void Writeln(wchar_t const * pText, unsigned int uChars);
    /// The text as an XML name: see `StreamXMLIdentifier` in ZkTools/Uri.h.
    void WriteXMLIdentifier(std::wstring_view sText);

    /// What `WriteXML` writes, as a string.
    [[nodiscard]] static std::wstring sGetXMLString(std::wstring_view sText, EXMLParams eParams);

private:
    void InternalSetStream(IRawStream * pStream, bool fOwner);
    static void WriteXML(std::wstring_view sText, EXMLParams eParams, std::function<void(std::wstring_view)> fnSink);

    ECodePage eCodePage;
    std::unique_ptr<TIStreamBuffImpl> pBuff;
};
