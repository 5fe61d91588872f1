#include "ZkTools/Languages.h"

#include "ZkBase/Windows.h"
#include "ZkTools/Exceptions.h"
#include "ZkTools/MessageIds.h"
#include "ZkTools/OptionTree.h"
#include "ZkTools/Stream.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/SystemCall.h"
#include "tests/support/VirtualSlot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <exception>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

using namespace std::string_literals;
using std::wstring;

namespace {

constexpr unsigned int uUnknown = 4294967295;

/// Reads the table anew.
struct TFreshTable : TLangArray {};

/// The codes of a table, in its order.
wstring sGetCodes(TLangArray const & tTable) {
    wstring sAll;
    for (unsigned int u = 0; u < tTable.iGetCount(); ++u)
        sAll.append(u != 0 ? L" " : L"").append(tTable[u].szCode);
    return sAll;
}

/// An entry of the packed table.
wstring sEntry(wstring const & sCode, wstring const & sName, int iOrder) {
    return sCode + L'\0' + sName + L'\0' + static_cast<wchar_t>(iOrder);
}

wstring sTable(int iCount, wstring const & sEntries) {
    return static_cast<wchar_t>(iCount) + sEntries;
}

enum class EMissing { Nothing, Resource, Memory, Lock };

/// Gives the library this resource in place of its table.
class TGivenResource {
public:
    explicit TGivenResource(wstring sUnits_, EMissing eMissing_ = EMissing::Nothing)
        : TGivenResource(std::string(reinterpret_cast<char const *>(sUnits_.data()), sUnits_.size() * sizeof(wchar_t)),
                         eMissing_) {}
    explicit TGivenResource(std::string const & sBytes, EMissing eMissing_ = EMissing::Nothing)
        // Exactly as long as the resource, so that guard pages tell of a step beyond it.
        : uSize(sBytes.size()), pBytes(std::make_unique<char[]>(uSize)), eMissing(eMissing_) {
        std::ranges::copy(sBytes, pBytes.get());
    }

    /// How many blocks were loaded and not freed again.
    [[nodiscard]] int iGetHeld() const noexcept { return iHeld; }

private:
    static HRSRC hFake() noexcept { return reinterpret_cast<HRSRC>(0x1234); }

    std::size_t uSize;
    std::unique_ptr<char[]> pBytes;
    EMissing eMissing;
    int iHeld = 0;
    zk_test::TSystemCall<"FindResourceW", decltype(FindResourceW)> tFind{
        [this](HMODULE hModule, wchar_t const * pzName, wchar_t const * pzType) -> HRSRC {
            EXPECT_NE(hModule, nullptr);
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(pzName), 4002u);
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(pzType), 10u);
            return eMissing == EMissing::Resource ? nullptr : hFake();
        }};
    zk_test::TSystemCall<"SizeofResource", decltype(SizeofResource)> tSize{[this](HMODULE, HRSRC hFound) -> DWORD {
        EXPECT_EQ(hFound, hFake());
        return static_cast<DWORD>(uSize);
    }};
    zk_test::TSystemCall<"LoadResource", decltype(LoadResource)> tLoad{[this](HMODULE, HRSRC hFound) -> HGLOBAL {
        EXPECT_EQ(hFound, hFake());
        if (eMissing == EMissing::Memory) return nullptr;
        ++iHeld;
        return this;
    }};
    zk_test::TSystemCall<"LockResource", decltype(LockResource)> tLock{[this](HGLOBAL hLoaded) -> void * {
        EXPECT_EQ(hLoaded, this);
        return eMissing == EMissing::Lock ? nullptr : pBytes.get();
    }};
    zk_test::TSystemCall<"FreeResource", decltype(FreeResource)> tFree{[this](HGLOBAL hLoaded) -> BOOL {
        EXPECT_EQ(hLoaded, this);
        --iHeld;
        return FALSE;
    }};
};

/// The table of a resource.
TFreshTable tRead(wstring const & sUnits) {
    TGivenResource const tGiven(sUnits);
    TFreshTable tTable;
    EXPECT_EQ(tGiven.iGetHeld(), 0);
    return tTable;
}

void ExpectNothingKnown(TLangArray const & tTable) {
    EXPECT_EQ(tTable.iGetCount(), 0u);
    for (wchar_t const * pzText : {L"en", L"", L"English"}) {
        EXPECT_EQ(tTable.pzGetName(pzText), nullptr);
        EXPECT_EQ(tTable.iGetIndex(pzText), uUnknown);
        EXPECT_EQ(tTable.sGetCode(pzText), L"");
    }
}

zk_test::TChildRole const tTrusting(L"too-long", [](std::vector<wstring> const & sArguments) {
    std::set_terminate([] { TerminateProcess(GetCurrentProcess(), 42); });
    zk_test::Say("reads");
    TGivenResource const tGiven(sTable(1, sEntry(sArguments.at(0), sArguments.at(1), 0)));
    TFreshTable const tTable;
    zk_test::Say("read " + std::to_string(tTable.iGetCount()));
    return 0;
});

zk_test::TChildRole const tRefusedOnce(L"refused-once", [](std::vector<wstring> const &) {
    {
        zk_test::TSystemCall<"FindResourceW", decltype(FindResourceW)> tFind(
            [](HMODULE, wchar_t const *, wchar_t const *) -> HRSRC { throw std::runtime_error("refused"); });
        try {
            zk_test::Say("read " + std::to_string(TLangArray::Instance().iGetCount()));
        } catch (std::runtime_error const & tError) {
            zk_test::Say(tError.what());
        }
    }
    zk_test::Say("read " + std::to_string(TLangArray::Instance().iGetCount()));
    return 0;
});

struct TOpenList : TIfLanguageList {};

} // namespace

TEST(TLangArray, HasTheLanguagesInTheLanguageOfThisUser) {
    bool const fGerman = PRIMARYLANGID(GetUserDefaultUILanguage()) == LANG_GERMAN;
    // Run once more for a user who has to be German.
    EXPECT_TRUE(fGerman || std::getenv("ZK_TEST_IN_GERMAN") == nullptr);
    TLangArray const & tTable = TLangArray::Instance();
    EXPECT_EQ(tTable.iGetCount(), 46u);
    struct TCase {
        wchar_t const * pzCode;
        wchar_t const * pzEnglish;
        wchar_t const * pzGerman;
    };
    for (TCase const & tCase : {TCase{L"en", L"English", L"Englisch"}, TCase{L"de", L"German", L"Deutsch"},
                                TCase{L"fr", L"French", L"Franz\u00F6sisch"}, TCase{L"zh", L"Chinese", L"Chinesisch"},
                                TCase{L"lb", L"Luxembourgish", L"Luxemburgisch"}}) {
        wchar_t const * const pzName = fGerman ? tCase.pzGerman : tCase.pzEnglish;
        EXPECT_STREQ(tTable.pzGetName(tCase.pzCode), pzName);
        EXPECT_EQ(tTable.sGetCode(pzName), tCase.pzCode);
        EXPECT_STREQ(tTable[tTable.iGetIndex(tCase.pzCode)].szName, pzName);
    }
    wstring const sStart = fGerman ? L"en de sq ar be bs bg zh " : L"en de sq ar be bs bg ca zh hr ";
    EXPECT_EQ(sGetCodes(tTable).substr(0, sStart.size()), sStart);
}

TEST(TLangArray, IsOneForTheProcess) {
    EXPECT_EQ(&TLangArray::Instance(), &TLangArray::Instance());
    // Every language is found under its own place, code and name.
    TLangArray const & tTable = TLangArray::Instance();
    for (unsigned int u = 0; u < tTable.iGetCount(); ++u) {
        EXPECT_EQ(tTable.iGetIndex(tTable[u].szCode), u);
        EXPECT_EQ(tTable.pzGetName(tTable[u].szCode), tTable[u].szName) << "a pointer into the table";
        EXPECT_EQ(tTable.sGetCode(tTable[u].szName), tTable[u].szCode);
    }
}

TEST(TLangArray, IsReadAgainAfterAFirstUseThatFailed) {
    zk_test::TChildProcess tChild(tRefusedOnce);
    EXPECT_EQ(tChild.sHear(), "refused");
    EXPECT_EQ(tChild.sHear(), "read 46");
}

TEST(TLangArray, FindsCodesInAnyCaseAndNamesInTheirOwn) {
    TFreshTable const tTable = tRead(sTable(2, sEntry(L"de", L"German", 0) + sEntry(L"\u00E4", L"\u00C4rmel", 0)));
    EXPECT_STREQ(tTable.pzGetName(L"de"), L"German");
    EXPECT_EQ(tTable.pzGetName(L"DE"), tTable.pzGetName(L"de"));
    EXPECT_EQ(tTable.iGetIndex(L"dE"), 0u);
    EXPECT_EQ(tTable.iGetIndex(L"\u00C4"), 1u) << "in every script";
    EXPECT_EQ(tTable.sGetCode(L"German"), L"de");
    EXPECT_EQ(tTable.sGetCode(L"german"), L"");
    EXPECT_EQ(tTable.sGetCode(L"\u00E4rmel"), L"");
}

TEST(TLangArray, DoesNotKnowOtherTexts) {
    TFreshTable const tTable = tRead(sTable(1, sEntry(L"de", L"German", 0)));
    for (wchar_t const * pzText : {L"", L"d", L"deu", L"de ", L"xx", L"\xD800", L"de-DE", L"Germa", L"German "}) {
        EXPECT_EQ(tTable.pzGetName(pzText), nullptr);
        EXPECT_EQ(tTable.iGetIndex(pzText), uUnknown);
        EXPECT_EQ(tTable.sGetCode(pzText), L"");
    }
    EXPECT_EQ(tTable.sGetCode(L"de"), L"") << "a code is no name";
    EXPECT_EQ(tTable.pzGetName(L"German"), nullptr);
}

TEST(TLangArray, IsSortedByPlaceAndThenByTheUnitsOfTheName) {
    EXPECT_EQ(sGetCodes(tRead(sTable(
                  9, sEntry(L"a", L"zebra", 1) + sEntry(L"b", L"Zebra", 1) + sEntry(L"c", L"\u00E4", 1) +
                         sEntry(L"d", L"zeb", 1) + sEntry(L"e", L"", 1) + sEntry(L"f", L"last", 32767) +
                         sEntry(L"g", L"first", -32768) + sEntry(L"h", L"\xFFFF", 1) + sEntry(L"i", L"\xD800", 0)))),
              L"g i e b d a c h f");
}

TEST(TLangArray, AnswersWithTheLastOfEqualCodesAndNames) {
    TFreshTable const tTable =
        tRead(sTable(4, sEntry(L"x", L"B", 1) + sEntry(L"X", L"A", 1) + sEntry(L"y", L"A", 2) + sEntry(L"z", L"B", 0)));
    ASSERT_EQ(sGetCodes(tTable), L"z X x y");
    EXPECT_EQ(tTable.iGetIndex(L"x"), 2u);
    EXPECT_EQ(tTable.iGetIndex(L"X"), 2u);
    EXPECT_STREQ(tTable.pzGetName(L"X"), L"B");
    EXPECT_EQ(tTable.sGetCode(L"A"), L"y");
    EXPECT_EQ(tTable.sGetCode(L"B"), L"x");
}

TEST(TLangArray, TakesTextsUpToTheirLimits) {
    wstring const sLongest(20, L'n');
    TFreshTable const tTable = tRead(sTable(2, sEntry(L"ab", sLongest, 0) + sEntry(L"", L"", 0)));
    EXPECT_EQ(tTable.pzGetName(L"AB"), sLongest);
    EXPECT_EQ(tTable.sGetCode(sLongest.c_str()), L"ab");
    EXPECT_STREQ(tTable.pzGetName(L""), L"");
    EXPECT_EQ(tTable.iGetIndex(L""), 0u);
}

TEST(TLangArray, EndsTheProcessWhenATextIsTooLong) {
    for (auto const & [sCode, sName] : {std::pair(L"abc"s, L"name"s), std::pair(L"ab"s, wstring(21, L'n')),
                                        std::pair(wstring(1000, L'c'), wstring(1000, L'n'))}) {
        zk_test::TChildProcess tChild(tTrusting, {sCode, sName});
        EXPECT_EQ(tChild.sHear(), "reads");
        EXPECT_EQ(tChild.sHearAll(), "") << "it went on";
        EXPECT_NE(tChild.dwWait(), 0u); // a run-time may have an exit code of its own for it
    }
    zk_test::TChildProcess tChild(tTrusting, {L"ab", wstring(20, L'n')});
    EXPECT_EQ(tChild.sHear(), "reads");
    EXPECT_EQ(tChild.sHear(), "read 1");
}

TEST(TLangArray, IsEmptyWithoutItsResource) {
    for (EMissing const eMissing : {EMissing::Resource, EMissing::Memory, EMissing::Lock}) {
        TGivenResource const tGiven(sTable(1, sEntry(L"en", L"English", 0)), eMissing);
        ExpectNothingKnown(TFreshTable());
        EXPECT_EQ(tGiven.iGetHeld(), 0);
    }
}

TEST(TLangArray, IsEmptyWithoutEntries) {
    wstring const sOne = sEntry(L"en", L"English", 0);
    ExpectNothingKnown(tRead(L""));
    ExpectNothingKnown(tRead(sTable(0, L"")));
    ExpectNothingKnown(tRead(sTable(0, sOne)));
    ExpectNothingKnown(tRead(sTable(-1, sOne)));
    ExpectNothingKnown(tRead(sTable(-32768, sOne)));
}

TEST(TLangArray, CountsNoMoreEntriesThanItTells) {
    wstring const sThree = sEntry(L"a", L"A", 0) + sEntry(L"b", L"B", 0) + sEntry(L"c", L"C", 0);
    EXPECT_EQ(sGetCodes(tRead(sTable(2, sThree))), L"a b");
    EXPECT_EQ(sGetCodes(tRead(sTable(3, sThree + L"rest"))), L"a b c");
}

TEST(TLangArray, TakesTheWholeEntriesOfATableThatIsCut) {
    wstring const sFirst = sTable(3, sEntry(L"en", L"English", 0));
    wstring const sAll = sFirst + sEntry(L"de", L"German", 1);
    for (std::size_t uUnits = 0; uUnits <= sAll.size(); ++uUnits) {
        wchar_t const * const pzExpected = uUnits < sFirst.size() ? L"" : uUnits < sAll.size() ? L"en" : L"en de";
        EXPECT_EQ(sGetCodes(tRead(sAll.substr(0, uUnits))), pzExpected) << uUnits;
    }
    // In the middle of a unit.
    std::string const sBytes(reinterpret_cast<char const *>(sAll.data()), sAll.size() * sizeof(wchar_t) - 1);
    TGivenResource const tGiven(sBytes);
    EXPECT_EQ(sGetCodes(TFreshTable()), L"en");
}

TEST(TLangArray, CopiesAndMovesAllOfIt) {
    TFreshTable tSource = tRead(sTable(2, sEntry(L"en", L"English", 0) + sEntry(L"de", L"German", 1)));
    TLangArray const tConstructed(tSource);
    TLangArray tMoved(std::move(tSource));
    TLangArray tAssigned(tMoved);
    tAssigned = TLangArray(tRead(sTable(1, sEntry(L"fr", L"French", 0))));
    EXPECT_EQ(sGetCodes(tAssigned), L"fr");
    EXPECT_EQ(tAssigned.iGetIndex(L"en"), uUnknown);
    tAssigned = tMoved;
    for (TLangArray const * const pTable : {&tConstructed, &std::as_const(tMoved), &std::as_const(tAssigned)}) {
        EXPECT_EQ(sGetCodes(*pTable), L"en de");
        EXPECT_EQ(pTable->iGetIndex(L"DE"), 1u);
        EXPECT_EQ(pTable->sGetCode(L"English"), L"en");
        EXPECT_EQ(pTable->pzGetName(L"de"), (*pTable)[1].szName) << "in the table's own memory";
    }
}

TEST(TLangArray, IsMadeByItsInstanceAlone) {
    static_assert(!std::is_default_constructible_v<TLangArray>);
    static_assert(std::is_copy_constructible_v<TLangArray> && std::is_move_assignable_v<TLangArray>);
    static_assert(!std::is_polymorphic_v<TLangArray>);
}

TEST(TLangAssoc, IsFortyEightBytesAndCopiedWhole) {
    static_assert(sizeof(TLangAssoc) == 48);
    static_assert(offsetof(TLangAssoc, szName) == 6);
    TLangAssoc tFirst;
    for (wchar_t const c : tFirst.szName)
        EXPECT_EQ(c, L'\0');
    std::ranges::fill(tFirst.szCode, L'c');
    std::ranges::fill(tFirst.szName, L'n'); // without terminators
    TLangAssoc tCopied;
    tCopied = tFirst;
    EXPECT_TRUE(std::ranges::equal(tCopied.szCode, tFirst.szCode));
    EXPECT_TRUE(std::ranges::equal(tCopied.szName, tFirst.szName));
    TLangAssoc tMoved;
    tMoved = std::move(tFirst);
    EXPECT_TRUE(std::ranges::equal(tMoved.szName, tCopied.szName));
}

TEST(TIfLanguageList, HasItsOperationsInThisOrder) {
    std::array const aiSlots{zk_test::iVirtualSlot(&TIfLanguageList::iGetCount),
                             zk_test::iVirtualSlot(&TIfLanguageList::pzGetCodeAt),
                             zk_test::iVirtualSlot(&TIfLanguageList::pzGetNameAt)};
    for (int i = 0; i < static_cast<int>(aiSlots.size()); ++i)
        EXPECT_EQ(aiSlots[static_cast<std::size_t>(i)], zk_test::iBehindDestructor + i);
    static_assert(std::is_abstract_v<TOpenList>);
    static_assert(std::has_virtual_destructor_v<TIfLanguageList>);
}

TEST(TLangListAsString, KeepsAnyCodesAndKnowsTheirNames) {
    TLangListAsString tList;
    EXPECT_EQ(tList.iGetCount(), 0);
    tList.Add(L"de");
    tList.Add(L"DE"s);
    tList.Add(L"xx");
    tList.Add(L"de");
    tList.Add(L"");
    TIfLanguageList const & tAny = tList;
    ASSERT_EQ(tAny.iGetCount(), 5);
    EXPECT_STREQ(tAny.pzGetCodeAt(1), L"DE");
    EXPECT_STREQ(tAny.pzGetCodeAt(2), L"xx");
    EXPECT_EQ(tAny.pzGetNameAt(0), TLangArray::Instance().pzGetName(L"de"));
    EXPECT_EQ(tAny.pzGetNameAt(1), tAny.pzGetNameAt(0));
    EXPECT_NE(tAny.pzGetNameAt(0), nullptr);
    EXPECT_EQ(tAny.pzGetNameAt(2), nullptr);
    EXPECT_EQ(tAny.pzGetNameAt(4), nullptr);
    tList.Flush();
    EXPECT_EQ(tList.iGetCount(), 0);
}

TEST(TLangListAsString, FindsACodeThatIsExactlyTheSame) {
    TLangListAsString tList;
    EXPECT_EQ(tList.iFind(L"de"), INT_MAX);
    for (wchar_t const * pzCode : {L"en", L"de", L"de"})
        tList.Add(pzCode);
    EXPECT_EQ(tList.iFind(L"de"), 1);
    EXPECT_EQ(tList.iFind(L"DE"), INT_MAX);
    EXPECT_EQ(tList.iFind(L""), INT_MAX);
}

TEST(TLangListAsString, TakesCodesWholeAndItsOwnCode) {
    TLangListAsString tList;
    tList.Add(L"a\0b"s);
    EXPECT_EQ(tList.iFind(L"a"), INT_MAX);
    EXPECT_STREQ(tList.pzGetCodeAt(0), L"a");
    tList.Add(L"\xDC00");
    EXPECT_EQ(tList.iFind(L"\xDC00"), 1);
    tList.Add(tList.pzGetCodeAt(1));
    EXPECT_STREQ(tList.pzGetCodeAt(2), L"\xDC00");
}

TEST(TLangListAsString, IsEqualInCodesAndOrder) {
    TLangListAsString tFirst;
    TLangListAsString tSecond;
    EXPECT_EQ(tFirst, tSecond);
    tFirst.Add(L"de");
    EXPECT_NE(tFirst, tSecond);
    tSecond.Add(L"DE");
    EXPECT_NE(tFirst, tSecond);
    tSecond.Flush();
    tSecond.Add(L"de");
    EXPECT_EQ(tFirst, tSecond);
}

TEST(TLangListAsString, IsCopiedWhenItIsMoved) {
    TLangListAsString tSource;
    tSource.Add(L"de");
    TLangListAsString tConstructed(std::move(tSource));
    TLangListAsString tAssigned;
    tAssigned = std::move(tSource);    // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(tSource.iGetCount(), 1); // NOLINT(bugprone-use-after-move)
    tConstructed.Add(L"en");
    EXPECT_EQ(tSource.iGetCount(), 1);
    EXPECT_EQ(tAssigned, tSource);
    EXPECT_STREQ(tConstructed.pzGetCodeAt(1), L"en");
}

TEST(TLangListAsString, PersistsAsAnArrayOfStrings) {
    TLangListAsString tList;
    tList.Add(L"de");
    tList.Add(L"");
    TStreamBase tStream(ecpUtf8);
    tList.Write(tStream);
    std::string sBytes(tStream.dwGetSize(), '\0');
    tStream.SetPos(0);
    tStream.ReadData(sBytes.data(), tStream.dwGetSize());
    EXPECT_EQ(sBytes, "\2\0\0\0\3\0de\0\1\0\0"s);

    tStream.SetPos(0);
    TLangListAsString tRead;
    tRead.Add(L"lost");
    tRead.Read(tStream);
    EXPECT_EQ(tRead, tList);

    TStreamBase tEmpty(ecpUtf8);
    EXPECT_THROW(tRead.Read(tEmpty), TXZkTools);
}

TEST(TLangListAsString, PersistsInAChildOfItsOwn) {
    TLangListAsString tList;
    tList.Add(L"de");
    tList.Add(L"en");
    TOptionElement tElement;
    tElement.SetText(L"kept");
    tList.Write(tElement);
    ASSERT_EQ(tElement.iCountElements(), 1);
    TOptionElement const & tChild = *tElement.pGetElement(0);
    EXPECT_EQ(tChild.sName, L"Languages");
    ASSERT_EQ(tChild.iCountElements(), 2);
    EXPECT_EQ(tChild.pGetElement(0)->sName, L"String");
    EXPECT_EQ(tChild.sGetElementText(0), L"de");
    EXPECT_EQ(tChild.sGetElementText(1), L"en");
    EXPECT_EQ(tElement.sGetText(), L"kept");

    TLangListAsString tRead;
    tRead.Add(L"lost");
    tRead.Read(tElement);
    EXPECT_EQ(tRead, tList);
}

TEST(TLangListAsString, AddsASecondChildAndReadsTheFirst) {
    TOptionElement tElement;
    TLangListAsString tFirst;
    tFirst.Add(L"de");
    tFirst.Write(tElement);
    TLangListAsString tSecond;
    tSecond.Add(L"en");
    tSecond.Write(tElement);
    EXPECT_EQ(tElement.iCountElements(L"Languages"), 2);
    TLangListAsString tRead;
    tRead.Read(tElement);
    EXPECT_EQ(tRead, tFirst);
}

TEST(TLangListAsString, BecomesEmptyWithoutItsChild) {
    TOptionElement tElement;
    tElement.pAddElement(L"languages", L"")->pAddElement(L"String", L"xx");
    TLangListAsString tRead;
    tRead.Add(L"lost");
    tRead.Read(tElement);
    EXPECT_EQ(tRead.iGetCount(), 0);
}
