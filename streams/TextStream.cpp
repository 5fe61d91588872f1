#include "ZkTools/TextStream.h"

#include "ZkTools/FileStream.h"
#include "ZkTools/Uri.h"
#include "streams/TextOutput.h"
#include "streams/XmlText.h"

#include <array>
#include <cwchar>
#include <utility>

namespace {

constexpr wchar_t cLineFeed = 10;
constexpr wchar_t cCarriageReturn = 13;

constexpr unsigned int uMostBytes = 1u << 31; // in one call: counts have 32 bits

constexpr std::size_t uPieceUnits = 1024; // what is put together before it is written

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
    std::array<wchar_t, uPieceUnits + uXmlSlack> acPiece;
    wchar_t const * p = sText.data();
    wchar_t const * const pEnd = p + sText.size();
    while (p != pEnd) {
        wchar_t * pTarget = acPiece.data();
        EscapeXml(p, pEnd, pTarget, acPiece.data() + acPiece.size(), eParams);
        fnSink(std::wstring_view(acPiece.data(), pTarget));
    }
}

void TOTextStream::WriteXMLComment(std::wstring_view sText) {
    std::wstring sPiece;
    sPiece.reserve(uPieceUnits);
    wchar_t cBefore = 0;
    for (wchar_t const c : sText) {
        bool const fEndsPair = cBefore == cCarriageReturn && c == cLineFeed;
        // Deliberate: a CR at the very end stays alone: its line feed comes with the unit behind it.
        if (cBefore == cCarriageReturn && !fEndsPair) sPiece += cLineFeed;
        if (cBefore == L'-' && c == L'-') sPiece += L' ';
        if (c == cLineFeed && !fEndsPair) sPiece += cCarriageReturn;
        sPiece += fIsValidXmlUnit(c) ? c : L'?';
        cBefore = c;
        if (sPiece.size() > uPieceUnits - 4) {
            Write(sPiece);
            sPiece.clear();
        }
    }
    if (!sPiece.empty()) Write(sPiece);
}
