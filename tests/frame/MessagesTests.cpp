#include "ZkTools/MessageIds.h"

#include "ZkBase/Messages.h"
#include "ZkBase/Windows.h"
#include "tests/support/TempDirectory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace {

struct TMessageRow {
    unsigned int uId;
    std::string_view sArguments; // the letters of its conversions, in order
};

constexpr std::array atMessages{
    TMessageRow{IDS_CANNOT_MAKE_DIRECTORY, "s"},
    TMessageRow{IDS_FILE_OR_DIRECTORY_EXISTS_NOT, "s"},
    TMessageRow{IDS_DIRECTORY_EXISTS_NOT, "s"},
    TMessageRow{IDS_APPEND_FILE_DETAIL, "s"},
    TMessageRow{IDS_COPY_FAILED, "s"},
    TMessageRow{IDS_RENAME_FAILED, "ss"},
    TMessageRow{IDS_REPLACE_FAILED, "ss"},
    TMessageRow{IDS_FILE_OR_DIRECTORY_MISSING, "s"},
    TMessageRow{IDS_DIRECTORY_MISSING, "s"},
    TMessageRow{IDS_INTERNET_READ_FAILED, "s"},
    TMessageRow{IDS_FILE_WRITE_FAILED, "s"},
    TMessageRow{IDS_SEEK_OUT_OF_RANGE, ""},
    TMessageRow{IDS_NULL_READ_BUFFER, ""},
    TMessageRow{IDS_READ_PAST_END, ""},
    TMessageRow{IDS_APPEND_FILE_FAILED, "ss"},
    TMessageRow{IDS_FILE_OPEN_FAILED, "s"},
    TMessageRow{IDS_LOCK_OPEN_FAILED, "s"},
    TMessageRow{IDS_LOCK_FAILED, "s"},
    TMessageRow{IDS_LOCK_WRITER_UNKNOWN, "s"},
    TMessageRow{IDS_LOCK_WRITER_KNOWN, "ss"},
    TMessageRow{IDS_LOCK_READ_ONLY, "s"},
    TMessageRow{IDS_LOCK_IN_USE, "s"},
    TMessageRow{IDS_LOCK_READERS_KNOWN, "ss"},
    TMessageRow{IDS_LOCK_REFUSED, "s"},
    TMessageRow{IDS_INVALID_NAME, "s"},
    TMessageRow{IDS_FILE_LOCK_FAILED, "s"},
    TMessageRow{IDS_FILE_LOCK_WRITER_KNOWN, "ss"},
    TMessageRow{IDS_FILE_LOCK_WRITER_UNKNOWN, "s"},
    TMessageRow{IDS_FILE_LOCK_OPEN_FAILED, "s"},
    TMessageRow{IDS_FILE_LOCK_IN_USE, "s"},
    TMessageRow{IDS_FILE_LOCK_READERS_KNOWN, "ss"},
    TMessageRow{IDS_COPY_FILE_FAILED, "ss"},
    TMessageRow{IDS_LOCK_OPERATION_FAILED, ""},
    TMessageRow{IDS_OPTION_ELEMENT_MISSING, "ss"},
    TMessageRow{IDS_OPTION_ELEMENT_MISSING_AT_POSITION, "dss"},
    TMessageRow{IDS_DECIMAL_INVALID, "ss"},
    TMessageRow{IDS_RENAME_BAD_NAME_DETAIL, ""},
    TMessageRow{IDS_DEFAULT_USER_TEXT, ""},
    TMessageRow{IDS_DEFAULT_SHORT_DATE, ""},
    TMessageRow{IDS_DEFAULT_ISO_DATE, ""},
    TMessageRow{IDS_DEFAULT_ISO_DATE_TIME, ""},
    TMessageRow{IDS_DEFAULT_TIME, ""},
    TMessageRow{IDS_DEFAULT_UUID, ""},
};

/// A message module, loaded the way the library loads its own.
class TModule {
public:
    explicit TModule(wchar_t const * pzName)
        : hModule(LoadLibraryExW(pzName, nullptr, LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE)) {}
    ~TModule() { FreeLibrary(hModule); }
    TModule(TModule const &) = delete;
    TModule & operator=(TModule const &) = delete;

    [[nodiscard]] std::wstring sGet(unsigned int uId) const { return string_functions::sLoadString(hModule, uId); }
    [[nodiscard]] std::string sGetLanguageTable() const {
        HRSRC const hFound = FindResourceW(hModule, MAKEINTRESOURCEW(IDR_LANGUAGES), MAKEINTRESOURCEW(10));
        if (hFound == nullptr) return {};
        return {static_cast<char const *>(LockResource(LoadResource(hModule, hFound))),
                SizeofResource(hModule, hFound)};
    }

private:
    HMODULE hModule;
};

struct TLanguageRow {
    std::wstring sCode;
    std::wstring sName;
    int iOrder;
};

/// Takes the packed table apart from front to back; throws std::out_of_range where it ends too early.
class TLanguageParser {
public:
    explicit TLanguageParser(std::string_view sBytes_) : sBytes(sBytes_) {}

    std::vector<TLanguageRow> tParse() {
        std::vector<TLanguageRow> tRows(static_cast<std::size_t>(iTakeNumber()));
        for (TLanguageRow & tRow : tRows) {
            tRow.sCode = sTakeText();
            tRow.sName = sTakeText();
            tRow.iOrder = iTakeNumber();
        }
        return tRows;
    }
    [[nodiscard]] std::size_t uGetLeft() const { return sBytes.size(); }

private:
    short iTakeNumber() {
        if (sBytes.size() < sizeof(short)) throw std::out_of_range("the table ends too early");
        short iNumber = 0;
        std::memcpy(&iNumber, sBytes.data(), sizeof iNumber);
        sBytes.remove_prefix(sizeof iNumber);
        return iNumber;
    }
    std::wstring sTakeText() {
        std::wstring sText;
        while (wchar_t const c = static_cast<wchar_t>(iTakeNumber()))
            sText += c;
        return sText;
    }

    std::string_view sBytes;
};

std::vector<TLanguageRow> tGetLanguages(wchar_t const * pzModule) {
    std::string const sTable = TModule(pzModule).sGetLanguageTable();
    return TLanguageParser(sTable).tParse();
}

class TMessageModule : public testing::TestWithParam<wchar_t const *> {
protected:
    TModule tModule{GetParam()};
};

constexpr wchar_t const * pzNeutral = L"ZkToolsMessages.dll";
constexpr wchar_t const * pzGerman = L"ZkToolsMessages.de.dll";

INSTANTIATE_TEST_SUITE_P(Languages, TMessageModule, testing::Values(pzNeutral, pzGerman),
                         [](auto const & tInfo) { return tInfo.index == 0 ? "Neutral" : "German"; });

/// The letters behind the percent signs; '?' where it is something else than a plain %s or %d.
std::string sGetConversions(std::wstring_view sText) {
    std::string sLetters;
    for (std::size_t uAt = sText.find(L'%'); uAt != std::wstring_view::npos; uAt = sText.find(L'%', uAt + 1)) {
        wchar_t const c = uAt + 1 < sText.size() ? sText[uAt + 1] : L'\0';
        sLetters += c == L's' || c == L'd' ? static_cast<char>(c) : '?';
    }
    return sLetters;
}

} // namespace

TEST(MessageIds, AllStandInTheTableOfThisTest) {
    std::string const sHeader = zk_test::sReadFileBytes(zk_test::sGetSourcePath(L"include\\ZkTools\\MessageIds.h"));
    std::set<unsigned int> tDefined;
    constexpr std::string_view sDefine = "#define IDS_";
    for (std::size_t uAt = sHeader.find(sDefine); uAt != std::string::npos; uAt = sHeader.find(sDefine, uAt + 1)) {
        std::size_t const uNumber = sHeader.find(' ', uAt + sDefine.size());
        tDefined.insert(static_cast<unsigned int>(std::stoul(sHeader.substr(uNumber))));
    }
    std::set<unsigned int> tTested;
    for (TMessageRow const & tRow : atMessages)
        tTested.insert(tRow.uId);
    EXPECT_EQ(tTested.size(), atMessages.size());
    EXPECT_EQ(tDefined, tTested);
}

TEST_P(TMessageModule, HasATextWithExactlyTheListedArgumentsForEveryId) {
    for (TMessageRow const & tRow : atMessages) {
        std::wstring const sText = tModule.sGet(tRow.uId);
        EXPECT_FALSE(sText.empty()) << tRow.uId;
        EXPECT_EQ(sGetConversions(sText), tRow.sArguments) << tRow.uId;
    }
}

TEST_P(TMessageModule, HasSentencesThatStandAlone) {
    for (TMessageRow const & tRow : atMessages) {
        std::wstring const sText = tModule.sGet(tRow.uId);
        ASSERT_FALSE(sText.empty()) << tRow.uId;
        EXPECT_TRUE(iswupper(sText.front()) || sText.front() == L'"') << tRow.uId;
        bool const fIsLabel = tRow.uId >= IDS_DEFAULT_USER_TEXT && tRow.uId <= IDS_DEFAULT_UUID;
        bool const fEndsInList = sText.ends_with(L"%s");
        EXPECT_EQ(sText.ends_with(L'.'), !fIsLabel && !fEndsInList) << tRow.uId;
    }
}

TEST_P(TMessageModule, HasNoCharacterThatTheWesternCodePageLacks) {
    for (TMessageRow const & tRow : atMessages) {
        std::wstring const sText = tModule.sGet(tRow.uId);
        BOOL fLost = FALSE;
        WideCharToMultiByte(1252, WC_NO_BEST_FIT_CHARS, sText.data(), static_cast<int>(sText.size()), nullptr, 0,
                            nullptr, &fLost);
        EXPECT_FALSE(fLost) << tRow.uId;
    }
}

TEST_P(TMessageModule, HasNoOtherTexts) {
    for (unsigned int uId = 0; uId < 0x10000; ++uId) {
        bool const fKnown = std::ranges::find(atMessages, uId, &TMessageRow::uId) != atMessages.end();
        ASSERT_EQ(!tModule.sGet(uId).empty(), fKnown) << uId;
    }
}

TEST(Messages, AreInTheLanguageOfTheirModule) {
    TModule const tNeutral(pzNeutral);
    TModule const tGerman(pzGerman);
    for (TMessageRow const & tRow : atMessages)
        EXPECT_NE(tNeutral.sGet(tRow.uId), tGerman.sGet(tRow.uId)) << tRow.uId;
    EXPECT_EQ(tNeutral.sGet(IDS_APPEND_FILE_DETAIL), L"Cannot open the file \"%s\".");
    EXPECT_EQ(tGerman.sGet(IDS_APPEND_FILE_DETAIL), L"Die Datei \"%s\" kann nicht ge\u00F6ffnet werden.");
    EXPECT_EQ(tNeutral.sGet(IDS_LOCK_READERS_KNOWN), L"The directory \"%s\" is also in use by:\r\n%s");
    EXPECT_EQ(tGerman.sGet(IDS_LOCK_REFUSED), L"\"%s\" ist schreibgesch\u00FCtzt.");
}

TEST_P(TMessageModule, HasAPackedLanguageTableThatEndsWithItsLastRow) {
    std::string const sTable = tModule.sGetLanguageTable();
    TLanguageParser tParser(sTable);
    EXPECT_EQ(tParser.tParse().size(), 46u);
    EXPECT_EQ(tParser.uGetLeft(), 0u);
    constexpr std::array acStart{wchar_t{46}, L'a', L'r', L'\0', L'A', L'r', L'a', L'b', L'i'};
    EXPECT_EQ(std::memcmp(sTable.data(), acStart.data(), sizeof acStart), 0);
}

TEST_P(TMessageModule, NamesEveryLanguageOnceWithinTheLimits) {
    std::set<std::wstring> tCodes;
    std::set<std::wstring> tNames;
    for (TLanguageRow const & tRow : tGetLanguages(GetParam())) {
        EXPECT_EQ(tRow.sCode.size(), 2u);
        EXPECT_TRUE(std::ranges::all_of(tRow.sCode, [](wchar_t c) { return c >= L'a' && c <= L'z'; }));
        EXPECT_FALSE(tRow.sName.empty());
        EXPECT_LE(tRow.sName.size(), 20u);
        EXPECT_TRUE(tCodes.insert(tRow.sCode).second) << testing::PrintToString(tRow.sCode);
        EXPECT_TRUE(tNames.insert(tRow.sName).second) << testing::PrintToString(tRow.sName);
    }
    for (wchar_t const * pzCode : {L"bg", L"cs", L"da", L"de", L"el", L"en", L"es", L"et", L"fi", L"fr", L"ga", L"hr",
                                   L"hu", L"it", L"lt", L"lv", L"mt", L"nl", L"pl", L"pt", L"ro", L"sk", L"sl", L"sv"})
        EXPECT_TRUE(tCodes.contains(pzCode)) << testing::PrintToString(pzCode);
}

TEST_P(TMessageModule, PutsEnglishAndGermanInFrontOfTheOtherLanguages) {
    for (TLanguageRow const & tRow : tGetLanguages(GetParam()))
        EXPECT_EQ(tRow.iOrder, tRow.sCode == L"en" ? 0 : tRow.sCode == L"de" ? 1 : 2);
}

TEST(Languages, AreTheSameInBothModulesUnderTheirOwnNames) {
    std::vector<TLanguageRow> const tNeutral = tGetLanguages(pzNeutral);
    std::vector<TLanguageRow> const tGerman = tGetLanguages(pzGerman);
    EXPECT_TRUE(std::ranges::equal(tNeutral, tGerman, {}, &TLanguageRow::sCode, &TLanguageRow::sCode));

    std::map<std::wstring, std::wstring> tEnglishNames;
    for (TLanguageRow const & tRow : tNeutral)
        tEnglishNames[tRow.sCode] = tRow.sName;
    EXPECT_EQ(tEnglishNames[L"de"], L"German");
    EXPECT_EQ(tEnglishNames[L"lb"], L"Luxembourgish");
    std::map<std::wstring, std::wstring> tGermanNames;
    for (TLanguageRow const & tRow : tGerman)
        tGermanNames[tRow.sCode] = tRow.sName;
    EXPECT_EQ(tGermanNames[L"de"], L"Deutsch");
    EXPECT_EQ(tGermanNames[L"fr"], L"Franz\u00F6sisch");
    EXPECT_EQ(tGermanNames[L"da"], L"D\u00E4nisch");
}
