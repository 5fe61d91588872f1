#include "ZkBase/CodePages.h"

#include "ZkBase/Exceptions.h"
#include "ZkBase/Windows.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

constexpr unsigned short uUtf16 = 1200;
constexpr unsigned short uUtf16Swapped = 1201;

struct TCodePageRow {
    ECodePage eCodePage;
    unsigned short uCodePage;
};

/// The code pages with a fixed number.
constexpr std::array<TCodePageRow, 18> atCodePages{{
    {ecpUtf8, 65001},
    {ecpWestern, 1252},
    {ecpUtf16, uUtf16},
    {ecpUtf16Swapped, uUtf16Swapped},
    {ecpLatin1, 28591},
    {ecpAscii, 20127},
    {ecpJapanese, 932},
    {ecpChineseSimplified, 936},
    {ecpKorean, 949},
    {ecpChineseTraditional, 950},
    {ecpCentralEuropean, 1250},
    {ecpCyrillic, 1251},
    {ecpGreek, 1253},
    {ecpTurkish, 1254},
    {ecpHebrew, 1255},
    {ecpArabic, 1256},
    {ecpBaltic, 1257},
    {ecpVietnamese, 1258},
}};

/// The units that are converted at a time. No code page takes more than four bytes for a unit, and one unit more may be
/// held from the write before.
constexpr std::size_t uBlockUnits = 255;

/// A character that the code page lacks becomes the default one, never one that looks alike: a fullwidth bracket must
/// not become markup. The code pages that have every character take no flag.
DWORD dwGetConversionFlags(unsigned short uCodePage) noexcept {
    constexpr unsigned short uGb18030 = 54936;
    return uCodePage == CP_UTF8 || uCodePage == uGb18030 ? 0 : WC_NO_BEST_FIT_CHARS;
}

} // namespace

unsigned short uGetCodePage(ECodePage eCodePage) {
    if (eCodePage == ecpOem) return static_cast<unsigned short>(GetOEMCP());
    auto const pRow = std::ranges::find(atCodePages, eCodePage, &TCodePageRow::eCodePage);
    return pRow != atCodePages.end() ? pRow->uCodePage : static_cast<unsigned short>(GetACP());
}

ECodePage eFindCodePage(unsigned short uCodePage) {
    auto const pRow = std::ranges::find(atCodePages, uCodePage, &TCodePageRow::uCodePage);
    if (pRow != atCodePages.end()) return pRow->eCodePage;
    return uCodePage != GetACP() && uCodePage == GetOEMCP() ? ecpOem : ecpDefault;
}

TConvertStream::TConvertStream(ECodePage eCodePage, EConvertDirection eDirection, IConvertReceiver * pReceiver_)
    : pReceiver(pReceiver_), uCodePage(uGetCodePage(eCodePage)) {
    if (eDirection != ecdFromUtf16) throw std::invalid_argument("TConvertStream converts from UTF-16 only");
}

unsigned int TConvertStream::Write(void const * pData, unsigned int uBytes) {
    auto const * const pBytes = static_cast<char const *>(pData);
    unsigned int const uWhole = uBytes & ~1U;
    unsigned int uTaken = 0;
    while (fDeliver() && uTaken < uWhole) {
        std::array<wchar_t, uBlockUnits + 1> acUnits;
        std::size_t uUnits = 0;
        if (cFirstHalf != 0) acUnits[uUnits++] = cFirstHalf;
        std::size_t const uNew = std::min<std::size_t>((uWhole - uTaken) / sizeof(wchar_t), uBlockUnits);
        std::memcpy(&acUnits[uUnits], pBytes + uTaken, uNew * sizeof(wchar_t));
        uUnits += uNew;

        // A pair that the end of the block may have cut waits for its second half.
        cFirstHalf = IS_HIGH_SURROGATE(acUnits[uUnits - 1]) ? acUnits[--uUnits] : L'\0';
        Convert(acUnits.data(), static_cast<int>(uUnits));
        uTaken += static_cast<unsigned int>(uNew * sizeof(wchar_t));
    }
    return uTaken;
}

void TConvertStream::Flush() {
    if (!fDeliver() || cFirstHalf == 0) return;
    wchar_t const cHalf = cFirstHalf;
    cFirstHalf = 0;
    Convert(&cHalf, 1);
    fDeliver();
}

/// Offers what is held until nothing is left or the receiver takes nothing. Returns whether nothing is left.
bool TConvertStream::fDeliver() {
    while (uHeldBegin != uHeldEnd) {
        unsigned int const uTaken = pReceiver->Receive(acHeld + uHeldBegin, uHeldEnd - uHeldBegin);
        if (uTaken == 0) return false;
        uHeldBegin += std::min(uTaken, uHeldEnd - uHeldBegin);
    }
    return true;
}

/// Converts into `acHeld`, in which nothing is held.
void TConvertStream::Convert(wchar_t const * pUnits, int iCount) {
    uHeldBegin = uHeldEnd = 0;
    if (iCount == 0) return;
    auto const uUnits = static_cast<std::size_t>(iCount);
    if (uCodePage == uUtf16 || uCodePage == uUtf16Swapped) {
        std::memcpy(acHeld, pUnits, uUnits * sizeof(wchar_t));
        uHeldEnd = static_cast<unsigned int>(uUnits * sizeof(wchar_t));
        for (unsigned int i = 0; uCodePage == uUtf16Swapped && i < uHeldEnd; i += 2)
            std::swap(acHeld[i], acHeld[i + 1]);
        return;
    }
    int const iBytes = WideCharToMultiByte(uCodePage, dwGetConversionFlags(uCodePage), pUnits, iCount, acHeld,
                                           sizeof acHeld, nullptr, nullptr);
    if (iBytes <= 0) {
        std::wstring const sReason = sGetErrorString(GetLastError());
        TXError tError(L"ZKBASE", -1);
        tError.AddMessageStr(L"The text cannot be converted to code page %u. %s", uCodePage, sReason.c_str());
        throw TXError(tError);
    }
    uHeldEnd = static_cast<unsigned int>(iBytes);
}
