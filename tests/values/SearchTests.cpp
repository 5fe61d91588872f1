#include "ZkTools/Search.h"

#include "ZkBase/Windows.h"
#include "tests/support/Random.h"
#include "tests/support/SystemCall.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

using namespace std::string_literals;

namespace {

using std::wstring;
using zk_test::sRandom;
using zk_test::TImportPatch;

/// The plain ways to the same hits.
struct TPlainSearch {
    wstring sPattern;
    bool fWholeToken;
    bool fCaseSensitive;

    /// On a copy in upper case.
    [[nodiscard]] int iFind(wstring sText) const {
        wstring sFind = sPattern;
        if (!fCaseSensitive) {
            _wcsupr(sText.data());
            _wcsupr(sFind.data());
        }
        for (std::size_t u = 0; !sText.empty() && (u = sText.find(sFind, u)) != wstring::npos; ++u) {
            int const i = static_cast<int>(u);
            if (!fWholeToken || fIsWholeToken(sText.c_str(), i, static_cast<int>(sFind.size()))) return i;
        }
        return -1;
    }

    /// The start moves by one at a time.
    [[nodiscard]] int iFindEx(wstring const & sText, int iStart, bool fForward) const {
        wstring sFolded = sText;
        wstring sFind = sPattern;
        if (!fCaseSensitive) {
            for (wchar_t & c : sFolded)
                c = static_cast<wchar_t>(std::towupper(c));
            _wcsupr(sFind.data());
        }
        int const iEnd = static_cast<int>(sText.size());
        if (sFind.empty() || sText.empty()) return -1;
        if (iStart < 0 || iStart >= iEnd) iStart = fForward ? 0 : iEnd - 1;
        for (; iStart >= 0 && iStart < iEnd; iStart += fForward ? 1 : -1) {
            auto const uStart = static_cast<std::size_t>(iStart);
            std::size_t const uHit = fForward ? sFolded.find(sFind, uStart) : sFolded.rfind(sFind, uStart);
            if (uHit == wstring::npos) return -1;
            int const iHit = static_cast<int>(uHit);
            if (!fWholeToken || fIsWholeToken(sText.c_str(), iHit, static_cast<int>(sFind.size()))) return iHit;
        }
        return -1;
    }
};

wchar_t * pzFailToCopy(wchar_t const *) {
    return nullptr;
}

/// The C locale of the thread, for a scope.
class TLocale {
public:
    explicit TLocale(char const * pzName) : sOld(std::setlocale(LC_CTYPE, nullptr)) {
        fSet = std::setlocale(LC_CTYPE, pzName) != nullptr;
    }
    ~TLocale() { std::setlocale(LC_CTYPE, sOld.c_str()); }
    TLocale(TLocale const &) = delete;
    TLocale & operator=(TLocale const &) = delete;

    [[nodiscard]] bool fIsSet() const { return fSet; }

private:
    std::string sOld;
    bool fSet = false;
};

} // namespace

// Masking

TEST(TMaskChar, HidesTheCharacterAndBringsItBack) {
    struct {
        wchar_t cMasked;
        wstring sText;
        wstring sMasked;
    } const atRows[] = {
        {L',', L"a,b?c", L"a?mb??c"},
        {L',', L"", L""},
        {L',', L",,", L"?m?m"},
        {L',', L"??", L"????"},
        {L',', L"?m,", L"??m?m"},
        {L'm', L"am?", L"a?m??"},
        {L'\0', L"a\0b"s, L"a?mb"},
        {L',', L"a\0,"s, L"a\0?m"s},
        {L'\xD800', L"\xD800\xDC00", L"?m\xDC00"},
        {L',', L"\xD800,\xDC00", L"\xD800?m\xDC00"},
    };
    for (auto const & tRow : atRows) {
        EXPECT_EQ(TMaskChar(tRow.cMasked).sMask(tRow.sText), tRow.sMasked);
        EXPECT_EQ(TMaskChar(tRow.cMasked).sUnmask(tRow.sMasked), tRow.sText);
    }
}

TEST(TMaskChar, LooksForTheHiddenCharacterBeforeTheQuestionMark) {
    EXPECT_EQ(TMaskChar(L'?').sMask(L"a?b"), L"a?mb");
    EXPECT_EQ(TMaskChar(L'?').sUnmask(L"a?mb??c"), L"a?b?c");
}

TEST(TMaskChar, KeepsAQuestionMarkThatEscapesNothing) {
    struct {
        wchar_t const * pzText;
        wchar_t const * pzPlain;
    } const atRows[] = {
        {L"a?", L"a?"},  {L"?", L"?"},     {L"?x", L"?x"},    {L"?M", L"?M"},  {L"?,", L"?,"},
        {L"???", L"??"}, {L"???m", L"?,"}, {L"?x?m", L"?x,"}, {L"??m", L"?m"}, {L"m", L"m"},
    };
    for (auto const & tRow : atRows)
        EXPECT_EQ(TMaskChar(L',').sUnmask(tRow.pzText), tRow.pzPlain) << testing::PrintToString(tRow.pzText);
}

TEST(TMaskChar, GivesEveryTextBack) {
    std::mt19937 tRandom(1);
    for (int i = 0; i < 20'000; ++i) {
        wstring const sText = sRandom(tRandom, L"?m,a", 12);
        for (wchar_t const c : {L',', L'?', L'm'}) {
            wstring const sMasked = TMaskChar(c).sMask(sText);
            ASSERT_EQ(TMaskChar(c).sUnmask(sMasked), sText) << testing::PrintToString(sMasked);
            if (c == L',') {
                ASSERT_EQ(sMasked.find(c), wstring::npos);
            }
        }
    }
}

TEST(TMaskChar, IsAssigned) {
    TMaskChar tMask(L',');
    tMask = TMaskChar(L';');
    EXPECT_EQ(tMask.sMask(L",;"), L",?m");
}

// Whole tokens

TEST(FIsWholeToken, LooksAtBothNeighbours) {
    struct {
        wchar_t const * pzText;
        int iPos;
        int iLen;
        int iExpected;
    } const atRows[] = {
        {L"foo", 0, 3, 1},
        {L"foobar", 0, 3, 0},
        {L"foo_x", 0, 3, 0},
        {L"foo-bar", 0, 3, 1},
        {L"(foo)", 1, 3, 1},
        {L"xfoo", 1, 3, 0},
        {L"_foo", 1, 3, 0},
        {L"1foo", 1, 3, 0},
        {L"foo9", 0, 3, 0},
        {L"\u00E4foo", 1, 3, 0},
        {L"foo\u0416", 0, 3, 0},
        {L"foo\u6F22", 0, 3, 0},
        {L"foo\u2014", 0, 3, 1},
        {L"\xD800"
         L"foo\xDC00",
         1, 3, 1},
        {L"", 0, 0, 1},
        {L"a", 1, 0, 0},
        {L"-", 1, 0, 1},
        {L"a", 0, 0, 0},
        {L"-", 0, 0, 1},
        {L"a-", 1, 0, 0},
        {L"-", 1, 5, 1}, // behind the end only the one in front counts
    };
    for (auto const & tRow : atRows) {
        EXPECT_EQ(fIsWholeToken(tRow.pzText, tRow.iPos, tRow.iLen), tRow.iExpected)
            << testing::PrintToString(tRow.pzText) << " at " << tRow.iPos;
    }
}

// Searching

TEST(TSearcher, FindsTheFirstHit) {
    struct {
        wchar_t const * pzPattern;
        int fWholeToken;
        int fCaseSensitive;
        wchar_t const * pzText;
        int iExpected;
    } const atRows[] = {
        {L"Ab", 0, 0, L"xaBx", 1},
        {L"Ab", 0, 1, L"xaBx", -1},
        {L"Ab", 0, 7, L"xAbx", 1},
        {L"aa", 0, 1, L"aaa", 0},
        {L"foo", 1, 1, L"foobar", -1},
        {L"foo", 1, 1, L"foo_x", -1},
        {L"foo", 1, 1, L"foo-bar", 0},
        {L"foo", 1, 1, L"(foo)", 1},
        {L"foo", 1, 1, L"foofoo foo", 7},
        {L"foo", -1, 0, L"fooFOO Foo", 7},
        {L"a.a", 1, 1, L"xa.a.a", 3}, // hits may overlap
        {L"foo", 0, 0, L"", -1},
        {L"foo", 0, 0, L"fo", -1},
        {L"foo", 0, 0, L"fofoo", 2},
        {L"foo", 0, 0, L"FFOO", 1},
        {L"[`{@z", 0, 0, L"[`{@Z", 0},
        {L"[", 0, 0, L"{", -1},
        // In the "C" locale letters beyond ASCII have no case.
        {L"\u00C4", 0, 0, L"\u00E4", -1},
        {L"\u00E4", 0, 0, L"\u00E4", 0},
        // Halves of pairs are characters like others.
        {L"\xDC00", 0, 0, L"\xD800\xDC00", 1},
        {L"\xD800", 1, 1, L"a\xD800", -1},
        // The empty pattern.
        {L"", 0, 0, L"", -1},
        {L"", 1, 1, L"", -1},
        {L"", 0, 0, L"abc", 0},
        {L"", 1, 1, L"abc", -1},
        {L"", 1, 0, L"abc", -1},
        {L"", 1, 1, L"a -", 2},
        {L"", 1, 0, L"a-", 2},
        {L"", 1, 0, L"a", -1},
    };
    for (auto const & tRow : atRows) {
        TSearcher const tSearcher(tRow.pzPattern, tRow.fWholeToken, tRow.fCaseSensitive);
        EXPECT_EQ(tSearcher.iFind(tRow.pzText), tRow.iExpected)
            << testing::PrintToString(tRow.pzPattern) << " in " << testing::PrintToString(tRow.pzText);
        EXPECT_EQ(tSearcher.find(tRow.pzText), tRow.iExpected >= 0 ? 1 : 0);
    }
}

TEST(TSearcher, NeverFindsNull) {
    TSearcher const tNull(nullptr, 0, 1);
    EXPECT_EQ(tNull.iFind(L""), -1);
    EXPECT_EQ(tNull.find(L"a"), 0);
    EXPECT_EQ(tNull.iFindEx(L"a", 0, TSearcher::esdForward), -1);
    EXPECT_EQ(tNull.iFindEx(L"a", 0, TSearcher::esdBackward), -1);
    EXPECT_EQ(tNull.iFind(nullptr), -1);
    EXPECT_EQ(TSearcher(L"", 0, 0).iFind(nullptr), -1);
    EXPECT_EQ(TSearcher(L"a", 0, 0).find(nullptr), 0);
}

TEST(TSearcher, NeverFindsWhatCouldNotBeCopied) {
    TSearcher const tSearcher(L"a", 0, 0);
    TLocale const tLocale("English_United States.1252");
    EXPECT_EQ(tSearcher.iFind(L"A"), 0);
    {
        TImportPatch const tCopy(GetModuleHandleW(L"ZkTools.dll"), "_wcsdup", reinterpret_cast<void *>(&pzFailToCopy));
        TSearcher const tLost(L"a", 0, 1);
        EXPECT_EQ(tLost.iFind(L"a"), -1);
        EXPECT_EQ(tLost.iFindEx(L"a", 0, TSearcher::esdForward), -1);
        EXPECT_EQ(tSearcher.iFind(L"A"), -1); // the text, beyond the "C" locale
    }
    EXPECT_EQ(tSearcher.iFind(L"A"), 0);
}

TEST(TSearcher, KeepsNoPointerToThePattern) {
    wstring sPattern = L"foo";
    TSearcher const tSearcher(sPattern.c_str(), 0, 0);
    EXPECT_EQ(sPattern, L"foo");
    sPattern = L"bar";
    EXPECT_EQ(tSearcher.iFind(L"bar foo"), 4);
}

TEST(TSearcher, FindsFromAStartInBothDirections) {
    constexpr auto eForward = TSearcher::esdForward;
    constexpr auto eBackward = TSearcher::esdBackward;
    struct {
        wchar_t const * pzPattern;
        int fWholeToken;
        int fCaseSensitive;
        wstring sText;
        int iStart;
        TSearcher::ESearchDirection eDirection;
        int iExpected;
    } const atRows[] = {
        {L"ab", 0, 1, L"ab ab ab", 0, eForward, 0},
        {L"ab", 0, 1, L"ab ab ab", 1, eForward, 3},
        {L"ab", 0, 1, L"ab ab ab", 3, eForward, 3},
        {L"ab", 0, 1, L"ab ab ab", 7, eForward, -1},
        {L"ab", 0, 1, L"ab ab ab", 8, eForward, 0},   // at the end: from the first
        {L"ab", 0, 1, L"ab ab ab", 900, eForward, 0}, // beyond it
        {L"ab", 0, 1, L"ab ab ab", -1, eForward, 0},
        {L"ab", 0, 1, L"ab ab ab", -1, eBackward, 6}, // from the last
        {L"ab", 0, 1, L"ab ab ab", 8, eBackward, 6},
        {L"ab", 0, 1, L"ab ab ab", 6, eBackward, 6},
        {L"ab", 0, 1, L"ab ab ab", 5, eBackward, 3},
        {L"ab", 0, 1, L"ab ab ab", 0, eBackward, 0},
        {L"ab", 0, 1, L"x ab", 1, eBackward, -1},
        {L"ab", 0, 1, L"x ab", 2, eBackward, 2},
        {L"ab", 0, 1, L"ab ab", 4, static_cast<TSearcher::ESearchDirection>(-5), 3},
        {L"ab", 0, 1, L"xAB", 0, eForward, -1},
        {L"Ab", 0, 0, L"xaB", 0, eForward, 1},
        {L"Ab", 0, 0, L"xaB", -1, eBackward, 1},
        {L"aa", 0, 1, L"aaaa", -1, eBackward, 2},
        {L"aa", 0, 0, L"aaaa", 1, eForward, 1},
        {L"foo", 1, 1, L"foofoo foo_ foo", 0, eForward, 12},
        {L"foo", 1, 1, L"foo foofoo foo_", -1, eBackward, 0},
        {L"foo", 1, 0, L"FOO1 Foo", 0, eForward, 5},
        {L"foo", 1, 0, L"Foo FOO1", -1, eBackward, 0},
        {L"foo", 1, 1, L"xfoo", 0, eForward, -1},
        {L"foo", 1, 1, L"foox", -1, eBackward, -1},
        {L"", 0, 1, L"abc", 0, eForward, -1}, // the empty pattern is never found
        {L"", 1, 0, L"-", -1, eBackward, -1},
        {L"a", 0, 1, L"", 0, eForward, -1},
        {L"a", 0, 0, L"", -1, eBackward, -1},
        {L"abc", 0, 0, L"ab", 0, eForward, -1},
        {L"abc", 0, 1, L"ab", -1, eBackward, -1},
        {L"b", 0, 1, L"a\0b"s, 0, eForward, 2}, // zeros are characters like others
        {L"b", 1, 0, L"a\0b\0c"s, -1, eBackward, 2},
    };
    for (auto const & tRow : atRows) {
        TSearcher const tSearcher(tRow.pzPattern, tRow.fWholeToken, tRow.fCaseSensitive);
        EXPECT_EQ(tSearcher.iFindEx(tRow.sText, tRow.iStart, tRow.eDirection), tRow.iExpected)
            << testing::PrintToString(tRow.pzPattern) << " in " << testing::PrintToString(tRow.sText) << " from "
            << tRow.iStart;
    }
}

TEST(TSearcher, FindsWhatThePlainSearchesFind) {
    std::mt19937 tRandom(2);
    for (int i = 0; i < 40'000; ++i) {
        TPlainSearch const tPlain{sRandom(tRandom, L"aAb-_", 3), tRandom() % 2 == 0, tRandom() % 2 == 0};
        TSearcher const tSearcher(tPlain.sPattern.c_str(), tPlain.fWholeToken, tPlain.fCaseSensitive);
        wstring const sText = sRandom(tRandom, L"aAb-_", i % 8 == 0 ? 60 : 16);
        auto const sWhat = [&] { return testing::PrintToString(tPlain.sPattern + L" in " + sText); };
        ASSERT_EQ(tSearcher.iFind(sText.c_str()), tPlain.iFind(sText)) << sWhat();
        int const iStart = static_cast<int>(tRandom() % 20) - 1;
        ASSERT_EQ(tSearcher.iFindEx(sText, iStart, TSearcher::esdForward), tPlain.iFindEx(sText, iStart, true))
            << sWhat() << iStart;
        ASSERT_EQ(tSearcher.iFindEx(sText, iStart, TSearcher::esdBackward), tPlain.iFindEx(sText, iStart, false))
            << sWhat() << iStart;
    }
}

TEST(TSearcher, LooksAtNothingBehindTheText) {
    // Texts at every distance from the end of a page behind which none can be read.
    constexpr std::size_t uPage = 4096;
    auto * const pPages = static_cast<unsigned char *>(VirtualAlloc(nullptr, 2 * uPage, MEM_RESERVE, PAGE_NOACCESS));
    ASSERT_NE(pPages, nullptr);
    ASSERT_NE(VirtualAlloc(pPages, uPage, MEM_COMMIT, PAGE_READWRITE), nullptr);
    for (std::size_t uUnits = 1; uUnits < 40; ++uUnits) {
        auto * const pzText = reinterpret_cast<wchar_t *>(pPages + uPage) - uUnits;
        std::fill_n(pzText, uUnits - 1, L'x');
        pzText[uUnits - 1] = 0;
        for (int const fCaseSensitive : {0, 1}) {
            EXPECT_EQ(TSearcher(L"a", 0, fCaseSensitive).iFind(pzText), -1);
            EXPECT_EQ(TSearcher(L"xxa", 1, fCaseSensitive).iFind(pzText), -1);
            EXPECT_EQ(TSearcher(L"x", 1, fCaseSensitive).iFind(pzText), uUnits == 2 ? 0 : -1);
        }
    }
    VirtualFree(pPages, 0, MEM_RELEASE);
}

TEST(TSearcher, FoldsEveryCharacterAsTheCLocaleDoes) {
    for (char const * pzLocale : {"C", "English_United States.1252"}) {
        TLocale const tLocale(pzLocale);
        ASSERT_TRUE(tLocale.fIsSet()) << pzLocale;
        for (unsigned int u = 1; u <= 0xFFFF; ++u) {
            wstring const sText(1, static_cast<wchar_t>(u));
            wstring const sUpper(1, static_cast<wchar_t>(std::towupper(sText[0])));
            TSearcher const tSearcher(sUpper.c_str(), 0, 0);
            TPlainSearch const tPlain{sUpper, false, false};
            ASSERT_EQ(tSearcher.iFind(sText.c_str()), tPlain.iFind(sText)) << u;
            ASSERT_EQ(tSearcher.iFindEx(sText, 0, TSearcher::esdForward), tPlain.iFindEx(sText, 0, true)) << u;
        }
    }
    TLocale const tLocale("English_United States.1252");
    EXPECT_EQ(TSearcher(L"\u00C4", 0, 0).iFind(L"x\u00E4"), 1);
    EXPECT_EQ(TSearcher(L"\u00E4", 1, 0).iFind(L"x\u00C4 \u00C4"), 3);
}

TEST(TSearcher, SearchesLongTextsInLinearTime) {
    wstring sText(100'000, L'a');
    TSearcher const tSearcher(L"A", 1, 0);
    EXPECT_EQ(tSearcher.iFind(sText.c_str()), -1);
    EXPECT_EQ(tSearcher.iFindEx(sText, 0, TSearcher::esdForward), -1);
    EXPECT_EQ(tSearcher.iFindEx(sText, -1, TSearcher::esdBackward), -1);
    EXPECT_EQ(TSearcher(L"b", 0, 0).iFind(sText.c_str()), -1);
    sText += L"-a";
    EXPECT_EQ(tSearcher.iFind(sText.c_str()), 100'001);
    EXPECT_EQ(tSearcher.iFindEx(sText, 0, TSearcher::esdForward), 100'001);
}

TEST(TSearcher, AssignmentIsFlat) {
    auto const pFirst = std::make_unique<TSearcher>(L"foo", 1, 0);
    // The pattern of the target is lost, and the one that both have then is freed by one alone.
    alignas(TSearcher) std::array<unsigned char, sizeof(TSearcher)> auRoom;
    TSearcher * const pSecond = new (auRoom.data()) TSearcher(nullptr, 0, 1);
    *pSecond = *pFirst;
    EXPECT_EQ(pSecond->iFind(L"foo1 FOO"), 5);
    EXPECT_EQ(pFirst->iFind(L"foo1 FOO"), 5);
    EXPECT_EQ(std::memcmp(auRoom.data(), pFirst.get(), sizeof(wchar_t *) + 3 * sizeof(int)), 0);
}
