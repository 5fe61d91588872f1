#include "ZkTools/Fonts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <cstring>
#include <cwchar>
#include <iterator>
#include <memory>
#include <new>
#include <string>
#include <type_traits>

using std::wstring;

namespace {

LOGFONTW tMake(wchar_t const * pzName, unsigned char bPitchAndFamily = 0x22, unsigned char bCharSet = 0) {
    LOGFONTW tFont{};
    tFont.lfHeight = -12;
    tFont.lfPitchAndFamily = bPitchAndFamily;
    tFont.lfCharSet = bCharSet;
    std::copy_n(pzName, std::wcslen(pzName) + 1, tFont.lfFaceName);
    return tFont;
}

void Add(TFontTable & tTable, wchar_t const * pzName, unsigned char bPitchAndFamily = 0x22,
         unsigned char bCharSet = 0) {
    LOGFONTW tFont = tMake(pzName, bPitchAndFamily, bCharSet);
    tTable.AddEntry(tFont);
}

int iGetNumber(TFontTable const & tTable, wchar_t const * pzName) {
    LOGFONTW tFont = tMake(pzName);
    return tTable.iGetFontNumber(tFont);
}

/// Pitch, family, character set, name and number.
wstring sShow(TFontEntry const & tEntry) {
    return std::to_wstring(tEntry.bPitch) + L' ' + std::to_wstring(tEntry.bFamily) + L' ' +
           std::to_wstring(tEntry.bCharSet) + L" '" + tEntry.pzName + L"' " + std::to_wstring(tEntry.iNumber);
}

} // namespace

TEST(TFontEntry, IsAllZeroAtFirst) {
    TFontEntry const tEntry;
    EXPECT_EQ(sShow(tEntry), L"0 0 0 '' 0");
    for (wchar_t const c : tEntry.pzName)
        EXPECT_EQ(c, L'\0');
    static_assert(sizeof(tEntry.pzName) == 32 * sizeof(wchar_t));
    static_assert(offsetof(TFontEntry, bPitch) == 4 && offsetof(TFontEntry, bFamily) == 5);
    static_assert(offsetof(TFontEntry, bCharSet) == 6 && offsetof(TFontEntry, pzName) == 8);
}

TEST(TFontEntry, TakesThreeBytesAsTheyAre) {
    EXPECT_EQ(sShow(TFontEntry(255, 254, 253, L"Arial")), L"255 254 253 'Arial' 0");
    TFontEntry const tNameless(1, 2, 3, nullptr);
    EXPECT_EQ(sShow(tNameless), L"1 2 3 '' 0");
    EXPECT_EQ(std::ranges::count(tNameless.pzName, L'\0'), 32);
}

TEST(TFontEntry, MasksABareByteByMasksOfItsOwn) {
    EXPECT_EQ(sShow(TFontEntry(255, 7, L"Arial")), L"59 11 7 'Arial' 0");
    EXPECT_EQ(sShow(TFontEntry(0x22, 7, L"Arial")), L"34 2 7 'Arial' 0");
    EXPECT_EQ(sShow(TFontEntry(0xC4, 7, nullptr)), L"0 0 7 '' 0");
}

TEST(TFontEntry, TakesThePartsOfAFont) {
    LOGFONTW tFont = tMake(L"Arial", 255, 238);
    EXPECT_EQ(sShow(TFontEntry(tFont)), L"3 240 238 'Arial' 0");
    tFont = tMake(L"", 0x0C);
    EXPECT_EQ(sShow(TFontEntry(tFont)), L"0 0 0 '' 0");
}

TEST(TFontEntry, TakesNamesOfThirtyOneUnitsAndCutsLongerOnes) {
    wstring const sLongest(31, L'n');
    EXPECT_EQ(TFontEntry(0, 0, 0, sLongest.c_str()).pzName, sLongest);
    EXPECT_EQ(TFontEntry(0, 0, 0, (sLongest + L"more").c_str()).pzName, sLongest);
    LOGFONTW tFont{};
    std::ranges::fill(tFont.lfFaceName, L'n'); // without a terminator
    EXPECT_EQ(TFontEntry(tFont).pzName, sLongest);
    EXPECT_EQ(TFontEntry(0, 0, 0, L"\xD800 \xDC00").pzName, wstring(L"\xD800 \xDC00"));
}

TEST(TFontEntry, ComparesAllButTheNumber) {
    TFontEntry const tEntry(1, 2, 3, L"Arial");
    TFontEntry tOther(1, 2, 3, L"Arial");
    tOther.iNumber = 9;
    EXPECT_EQ(tEntry, tOther);
    EXPECT_NE(tEntry, TFontEntry(0, 2, 3, L"Arial"));
    EXPECT_NE(tEntry, TFontEntry(1, 0, 3, L"Arial"));
    EXPECT_NE(tEntry, TFontEntry(1, 2, 0, L"Arial"));
    EXPECT_NE(tEntry, TFontEntry(1, 2, 3, L"arial"));
    EXPECT_NE(tEntry, TFontEntry(1, 2, 3, L"Arial "));
    tOther.pzName[7] = L'x'; // behind the terminator
    EXPECT_EQ(tEntry, tOther);
}

TEST(TFontEntry, CopiesAllOfIt) {
    TFontEntry tSource(1, 2, 3, L"Arial");
    tSource.iNumber = 4;
    tSource.pzName[31] = L'x';
    TFontEntry tTarget(5, 6, 7, L"A longer name");
    tTarget = tSource;
    EXPECT_EQ(sShow(tTarget), L"1 2 3 'Arial' 4");
    EXPECT_EQ(tTarget.pzName[31], L'x');
    EXPECT_EQ(sShow(TFontEntry(tSource)), L"1 2 3 'Arial' 4");
}

TEST(TFontEntry, JoinsPitchAndFamilyWithoutBitsTwoAndThree) {
    struct TCase {
        unsigned char bPitch, bFamily, bExpected;
    };
    for (TCase const & tCase :
         {TCase{2, 0x20, 0x22}, TCase{255, 0, 243}, TCase{0, 255, 243}, TCase{0x0C, 0x0C, 0}, TCase{59, 11, 0x33}})
        EXPECT_EQ(TFontEntry(tCase.bPitch, tCase.bFamily, 0, L"").bGetPitchAndFamily(), tCase.bExpected);
}

TEST(TFontTable, KeepsEachFontOnce) {
    TFontTable tTable;
    EXPECT_EQ(tTable.iGetNumberOfEntries(), 0);
    LOGFONTW tFont = tMake(L"Arial");
    tTable.AddEntry(tFont);
    tFont.lfHeight = 99;
    tFont.lfWeight = FW_BOLD;
    tFont.lfItalic = 1;
    tTable.AddEntry(tFont);
    EXPECT_EQ(tTable.iGetNumberOfEntries(), 1);
    Add(tTable, L"Arial", 0x2E); // bits that are lost
    EXPECT_EQ(tTable.iGetNumberOfEntries(), 1);
    Add(tTable, L"Arial", 0x22, 238);
    Add(tTable, L"Arial", 0x21);
    Add(tTable, L"Arial", 0x12);
    Add(tTable, L"ARIAL");
    EXPECT_EQ(tTable.iGetNumberOfEntries(), 5);
}

TEST(TFontTable, NumbersItsFontsWhenItIsTold) {
    TFontTable tTable;
    EXPECT_EQ(iGetNumber(tTable, L"A"), -1);
    tTable.CountFonts();
    Add(tTable, L"A");
    EXPECT_EQ(iGetNumber(tTable, L"A"), 0);
    EXPECT_EQ(iGetNumber(tTable, L"B"), -1);
    Add(tTable, L"B");
    tTable.CountFonts();
    EXPECT_EQ(iGetNumber(tTable, L"A"), 1);
    EXPECT_EQ(iGetNumber(tTable, L"B"), 2);
    // What is added later has no number yet, and takes none away.
    Add(tTable, L"C");
    Add(tTable, L"A");
    EXPECT_EQ(iGetNumber(tTable, L"A"), 1);
    EXPECT_EQ(iGetNumber(tTable, L"B"), 2);
    EXPECT_EQ(iGetNumber(tTable, L"C"), 0);
    tTable.CountFonts();
    EXPECT_EQ(iGetNumber(tTable, L"C"), 3);
}

TEST(TFontTable, GivesTheFirstEntryWithANumber) {
    TFontTable tTable;
    EXPECT_EQ(tTable.GetFontEntry(0), nullptr);
    Add(tTable, L"A");
    Add(tTable, L"B");
    ASSERT_NE(tTable.GetFontEntry(0), nullptr);
    EXPECT_EQ(sShow(*tTable.GetFontEntry(0)), L"2 32 0 'A' 0");
    tTable.CountFonts();
    EXPECT_EQ(tTable.GetFontEntry(0), nullptr);
    EXPECT_EQ(sShow(*tTable.GetFontEntry(2)), L"2 32 0 'B' 2");
    EXPECT_EQ(tTable.GetFontEntry(3), nullptr);
    EXPECT_EQ(tTable.GetFontEntry(-1), nullptr);
    // The entry is the table's own.
    TFontEntry * const pFirst = tTable.GetFontEntry(1);
    pFirst->iNumber = INT_MAX;
    EXPECT_EQ(iGetNumber(tTable, L"A"), INT_MAX);
    Add(tTable, L"C");
    EXPECT_EQ(tTable.GetFontEntry(INT_MAX), pFirst);
}

TEST(TFontTable, SetsTheFontOfANumber) {
    TFontTable tTable;
    Add(tTable, L"Arial", 0x2E, 238);
    tTable.CountFonts();
    LOGFONTW tFont;
    std::memset(&tFont, 0x55, sizeof tFont);
    LOGFONTW tExpected = tFont;
    EXPECT_EQ(&tTable.SetEntry(tFont, 2), &tFont);
    EXPECT_EQ(std::memcmp(&tFont, &tExpected, sizeof tFont), 0) << "there is no such number";

    EXPECT_EQ(&tTable.SetEntry(tFont, 1), &tFont);
    EXPECT_EQ(tFont.lfPitchAndFamily, 0x22);
    EXPECT_EQ(tFont.lfCharSet, 238);
    EXPECT_STREQ(tFont.lfFaceName, L"Arial");
    tExpected.lfPitchAndFamily = tFont.lfPitchAndFamily;
    tExpected.lfCharSet = tFont.lfCharSet;
    std::ranges::copy(tFont.lfFaceName, tExpected.lfFaceName);
    EXPECT_EQ(std::memcmp(&tFont, &tExpected, sizeof tFont), 0) << "all else stays";
}

TEST(TFontTable, CanBeUsedOnWhenItIsFlushed) {
    TFontTable tTable;
    tTable.FlushFontList();
    Add(tTable, L"A");
    Add(tTable, L"B");
    tTable.CountFonts();
    tTable.FlushFontList();
    EXPECT_EQ(tTable.iGetNumberOfEntries(), 0);
    EXPECT_EQ(iGetNumber(tTable, L"A"), -1);
    EXPECT_EQ(tTable.GetFontEntry(1), nullptr);
    Add(tTable, L"C");
    EXPECT_EQ(iGetNumber(tTable, L"C"), 0);
}

TEST(TFontTable, SharesTheListThatItIsAssigned) {
    static_assert(!std::is_copy_constructible_v<TFontTable>);
    static_assert(sizeof(TFontTable) == sizeof(void *));
    TFontTable tSource;
    Add(tSource, L"A");
    // Never destroyed: the list has one destroyer. What it held itself is lost.
    alignas(TFontTable) std::array<std::byte, sizeof(TFontTable)> acRoom;
    auto * const pSharing = ::new (acRoom.data()) TFontTable;
    Add(*pSharing, L"lost");
    *pSharing = tSource;
    EXPECT_EQ(iGetNumber(*pSharing, L"lost"), -1);
    Add(*pSharing, L"B");
    EXPECT_EQ(tSource.iGetNumberOfEntries(), 2);
    tSource.CountFonts();
    EXPECT_EQ(iGetNumber(*pSharing, L"B"), 2);
    tSource.FlushFontList();
    EXPECT_EQ(pSharing->iGetNumberOfEntries(), 0);
}
