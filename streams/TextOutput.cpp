#include "streams/TextOutput.h"

#include "ZkBase/Windows.h"
#include "streams/TextRun.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace {

/// UTF-16 as it is.
class TOUTF16StreamBuffImpl final : public TIStreamBuffImpl {
public:
    using TIStreamBuffImpl::TIStreamBuffImpl;

    void Write(void const * pData, unsigned int uBytes) override { pStream->WriteData(pData, uBytes); }
    void Flush() override { pStream->Flush(); }
};

/// UTF-16 with its bytes exchanged, unit by unit.
class TOUTF16BEStreamBuffImpl final : public TIStreamBuffImpl {
public:
    using TIStreamBuffImpl::TIStreamBuffImpl;

    void Write(void const * pData, unsigned int uBytes) override {
        auto const * const pBytes = static_cast<unsigned char const *>(pData);
        for (std::size_t u = 0; u + 1 < uBytes; u += 2) {
            unsigned char const auUnit[] = {pBytes[u + 1], pBytes[u]};
            pStream->WriteData(auUnit, sizeof auUnit);
        }
    }
    void Flush() override { pStream->Flush(); }
};

/// Any other encoding, through the converter. UTF-8 without surrogate halves, which is nearly all text, is encoded here
/// by pieces: the converter's bytes, without the platform.
class TOStreamBuffImpl final : public IConvertReceiver, public TIStreamBuffImpl {
public:
    TOStreamBuffImpl(ECodePage eCodePage, IRawStream * pStream_, bool fOwner_)
        : TIStreamBuffImpl(pStream_, fOwner_), tConvert(eCodePage, ecdFromUtf16, this),
          fIsUtf8(uGetCodePage(eCodePage) == CP_UTF8) {}

    void Write(void const * pData, unsigned int uBytes) override {
        bool const fUnits = reinterpret_cast<std::uintptr_t>(pData) % alignof(wchar_t) == 0;
        if (fIsUtf8 && fUnits) {
            WriteUtf8(static_cast<wchar_t const *>(pData), uBytes / sizeof(wchar_t));
        } else {
            Convert(pData, uBytes);
        }
    }
    // Deliberate: the stream itself is not flushed: a flush of a file waits for the disk, and callers flush often.
    void Flush() override {
        tConvert.Flush();
        fConverterHolds = false;
    }
    unsigned int Receive(void const * pData, unsigned int uBytes) override {
        pStream->WriteData(pData, uBytes);
        return uBytes;
    }

private:
    static constexpr std::size_t uPieceUnits = 1024;

    void WriteUtf8(wchar_t const * pText, std::size_t uUnits) {
        std::array<char, 3 * uPieceUnits + iUtf8Slack> acBytes;
        while (uUnits != 0) {
            std::size_t const uPiece = std::min(uUnits, uPieceUnits);
            int const iBytes = fConverterHolds ? -1 : iEncodeUtf8(pText, static_cast<int>(uPiece), acBytes.data());
            if (iBytes >= 0) {
                pStream->WriteData(acBytes.data(), static_cast<unsigned long>(iBytes));
            } else {
                Convert(pText, static_cast<unsigned int>(uPiece * sizeof(wchar_t)));
                fConverterHolds = IS_HIGH_SURROGATE(pText[uPiece - 1]);
            }
            pText += uPiece;
            uUnits -= uPiece;
        }
    }

    void Convert(void const * pData, unsigned int uBytes) {
        fConverterHolds = true; // also when the stream fails
        tConvert.Write(pData, uBytes);
    }

    TConvertStream tConvert;
    bool fIsUtf8;
    bool fConverterHolds = false; ///< perhaps: text must not overtake what it holds
};

} // namespace

TIStreamBuffImpl::~TIStreamBuffImpl() {
    if (fOwner) delete pStream;
}

std::unique_ptr<TIStreamBuffImpl> pMakeStreamBuffImpl(ECodePage eCodePage, IRawStream * pStream, bool fOwner) {
    switch (eCodePage) {
    case ecpUtf16:
        return std::make_unique<TOUTF16StreamBuffImpl>(pStream, fOwner);
    case ecpUtf16Swapped:
        return std::make_unique<TOUTF16BEStreamBuffImpl>(pStream, fOwner);
    default:
        return std::make_unique<TOStreamBuffImpl>(eCodePage, pStream, fOwner);
    }
}
