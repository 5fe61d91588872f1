#include "ZkTools/TextStream.h"

#include "ZkTools/FileStream.h"
#include "ZkTools/Uri.h"
#include "streams/CopyBytes.h"
#include "streams/TextOutput.h"
#include "streams/XmlText.h"

#include <algorithm>
#include <array>
#include <cwchar>
#include <utility>

namespace {

constexpr wchar_t cLineFeed = 10;
constexpr wchar_t cCarriageReturn = 13;

constexpr unsigned int uMostBytes = 1u << 31; // in one call: counts have 32 bits

/// Hands pieces of text on to a function: short ones together, long ones as they are.
template <typename TSink>
class TPieces {
public:
    explicit TPieces(TSink const & fnSink_) : fnSink(fnSink_) {}

    void Add(std::wstring_view sPiece) {
        if (sPiece.size() > acHeld.size() - uHeld) {
            HandOn();
            if (sPiece.size() > acHeld.size() / 2) {
                fnSink(sPiece);
                return;
            }
        }
        CopyBytes(acHeld.data() + uHeld, sPiece.data(), sPiece.size() * sizeof(wchar_t));
        uHeld += sPiece.size();
    }
    void Add(wchar_t c) { Add(std::wstring_view(&c, 1)); }

    /// To be called at the end.
    void HandOn() {
        std::wstring_view const sHeld(acHeld.data(), std::exchange(uHeld, 0));
        if (!sHeld.empty()) fnSink(sHeld);
    }

private:
    TSink const & fnSink;
    std::size_t uHeld = 0;
    std::array<wchar_t, 512> acHeld;
};

} // namespace

TOTextStream::TOTextStream() : TOTextStream(ecpUtf8) {}

TOTextStream::TOTextStream(ECodePage eNewCodePage) : eCodePage(eNewCodePage) {}

TOTextStream::TOTextStream(IRawStream * pStream) : TOTextStream(ecpUtf8, pStream) {}

TOTextStream::TOTextStream(ECodePage eNewCodePage, IRawStream * pStream) : eCodePage(eNewCodePage) {
    InternalSetStream(pStream, false);
}

TOTextStream::TOTextStream(ECodePage eNewCodePage, wchar_t const * pzName) : eCodePage(eNewCodePage) {
    Open(pzName);
}

TOTextStream::~TOTextStream() {
    Close();
}

// The stream

void TOTextStream::Open(wchar_t const * pzName) {
    auto pFile = std::make_unique<TFStream>(eCodePage, pzName, FS_CREATE | FS_READ_WRITE);
    InternalSetStream(pFile.get(), true);
    pFile.release(); // NOLINT(bugprone-unused-return-value): pBuff owns it now
}

void TOTextStream::Close() {
    if (pBuff == nullptr) return;
    pBuff->Flush();
    // What is owned is a file that was opened here. Its destructor could not tell that it can't write what is left.
    if (pBuff->fOwnsStream()) static_cast<TFStream *>(pBuff->pGetStream())->Close();
    pBuff.reset();
}

void TOTextStream::Flush() {
    pBuff->Flush();
}

void TOTextStream::SetStream(IRawStream * pStream) {
    InternalSetStream(pStream, false);
}

void TOTextStream::InternalSetStream(IRawStream * pStream, bool fOwner) {
    if (pBuff != nullptr && pBuff->pGetStream() == pStream) return;
    pBuff = pMakeStreamBuffImpl(eCodePage, pStream, fOwner);
}

void TOTextStream::SetCodepage(ECodePage eNewCodePage) {
    if (eNewCodePage == eCodePage) return;
    eCodePage = eNewCodePage;
    if (pBuff == nullptr) return;
    auto pNew = pMakeStreamBuffImpl(eCodePage, pBuff->pGetStream(), pBuff->fOwnsStream());
    pBuff->SetStream(nullptr);
    pBuff = std::move(pNew);
}

// Text

void TOTextStream::Write(wchar_t c) {
    pBuff->Write(&c, sizeof c);
}

void TOTextStream::Write(wchar_t const * pzText) {
    Write(std::wstring_view(pzText));
}

void TOTextStream::Write(wchar_t const * pText, unsigned int uChars) {
    Write(std::wstring_view(pText, uChars));
}

void TOTextStream::Write(std::wstring_view sText) {
    constexpr std::size_t uMost = uMostBytes / sizeof(wchar_t);
    for (; sText.size() > uMost; sText.remove_prefix(uMost))
        pBuff->Write(sText.data(), uMostBytes);
    pBuff->Write(sText.data(), static_cast<unsigned int>(sText.size() * sizeof(wchar_t)));
}

void TOTextStream::Write(std::string_view sBytes) {
    IRawStream & tStream = *pBuff->pGetStream();
    for (; sBytes.size() > uMostBytes; sBytes.remove_prefix(uMostBytes))
        tStream.WriteData(sBytes.data(), uMostBytes);
    tStream.WriteData(sBytes.data(), static_cast<unsigned long>(sBytes.size()));
}

void TOTextStream::Write(TStreamBase & tSource) {
    TBlob const * const pBlob = tSource.pBlob.get();
    if (pBlob != nullptr) pBuff->Write(pBlob->pData, pBlob->dwUsed);
}

void TOTextStream::Writeln(wchar_t const * pzText) {
    Write(pzText);
    Write(L"\r\n", 2);
}

void TOTextStream::Writeln(std::wstring const & sText) {
    Write(sText);
    Write(L"\r\n", 2);
}

void TOTextStream::Writeln(wchar_t const * pText, unsigned int uChars) {
    Write(pText, uChars);
    Write(L"\r\n", 2);
}

// XML

void TOTextStream::WriteXMLIdentifier(std::wstring_view sText) {
    StreamXMLIdentifier(sText, [this](wchar_t c) { Write(c); });
}

void TOTextStream::WriteXML(std::wstring_view sText, EXMLParams eParams) {
    WriteXML(sText, eParams, [this](std::wstring_view sPiece) { Write(sPiece); });
}

std::wstring TOTextStream::sGetXMLString(std::wstring_view sText, EXMLParams eParams) {
    std::wstring sResult;
    sResult.reserve(sText.size() + sText.size() / 5);
    WriteXML(sText, eParams, [&sResult](std::wstring_view sPiece) { sResult += sPiece; });
    return sResult;
}

void TOTextStream::WriteXML(std::wstring_view sText, EXMLParams eParams,
                            std::function<void(std::wstring_view)> fnSink) {
    bool const fAttribute = (eParams & xmlEscapeAttribute) != 0;
    bool const fEscapeTab = (eParams & xmlEscapeTab) != 0;
    TPieces tPieces(fnSink);
    wchar_t const * p = sText.data();
    wchar_t const * const pEnd = p + sText.size();
    while (p != pEnd) {
        wchar_t const * const pSpecial = pFindXmlSpecial(p, pEnd, fAttribute);
        tPieces.Add(std::wstring_view(p, pSpecial));
        if (pSpecial == pEnd) break;
        p = pSpecial + 1;
        tPieces.Add(sGetXmlForm(*pSpecial, fAttribute, fEscapeTab));
        // Every CR has left with its line feed, which may be there already.
        if (*pSpecial == cCarriageReturn && p != pEnd && *p == cLineFeed) ++p;
    }
    tPieces.HandOn();
}

void TOTextStream::WriteXMLComment(std::wstring_view sText) {
    auto const fnSink = [this](std::wstring_view sPiece) { Write(sPiece); };
    TPieces tPieces(fnSink);
    wchar_t cBefore = 0;
    for (wchar_t const c : sText) {
        // Deliberate: a CR at the very end stays alone: its line feed comes with the unit behind it.
        if (cBefore == cCarriageReturn) tPieces.Add(cLineFeed);
        bool const fDone = cBefore == cCarriageReturn && c == cLineFeed;
        if (c == L'-' && cBefore == L'-') tPieces.Add(L' ');
        if (c == cLineFeed && !fDone) tPieces.Add(cCarriageReturn);
        if (!fDone) tPieces.Add(fIsValidXmlUnit(c) ? c : L'?');
        cBefore = c;
    }
    tPieces.HandOn();
}
