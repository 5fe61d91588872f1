#include "ZkTools/DefaultValue.h"

#include "ZkBase/TestMode.h"
#include "ZkTools/DateTime.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Narrow.h"
#include "tests/support/SystemCall.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstdlib>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

using namespace std::string_literals;
using std::wstring;

namespace {

constexpr std::array eAll{edvfUserText, edvfShortDate, edvfIsoDate, edvfTime, edvfIsoDateTime, edvfUuid};

EDefaultValueFunction eMake(int iFunction) {
    return static_cast<EDefaultValueFunction>(iFunction);
}

wstring sGenerate(EDefaultValueFunction eFunction) {
    return TDefaultFunctionValue(eFunction, L"typed").sGetGenerateValue();
}

template <typename TException, typename TCall>
std::string sGetFailure(TCall fCall) {
    try {
        fCall();
    } catch (TException const & tFailure) {
        // Exactly this class: the message must not come from one that derives from it.
        return typeid(tFailure) == typeid(TException) ? tFailure.what() : "another class";
    }
    return "no failure";
}

/// A clock that stands: UTC and, by a shift of the test's own, local time.
class TClock {
public:
    TClock(SYSTEMTIME const & tUtc, SYSTEMTIME const & tLocal)
        : tUtcTicks(tGetTicks(tUtc)), tLocalTicks(tGetTicks(tLocal)) {}

private:
    static FILETIME tGetTicks(SYSTEMTIME const & tTime) {
        FILETIME tTicks{};
        if (!SystemTimeToFileTime(&tTime, &tTicks)) throw std::runtime_error("no such time");
        return tTicks;
    }

    FILETIME tUtcTicks;
    FILETIME tLocalTicks;
    zk_test::TSystemCall<"GetSystemTimeAsFileTime", decltype(GetSystemTimeAsFileTime)> tNow{
        [this](FILETIME * pTime) { *pTime = tUtcTicks; }};
    zk_test::TSystemCall<"FileTimeToLocalFileTime", decltype(FileTimeToLocalFileTime)> tShift{
        [this](FILETIME const * pUtc, FILETIME * pLocal) -> BOOL {
            EXPECT_EQ(CompareFileTime(pUtc, &tUtcTicks), 0);
            *pLocal = tLocalTicks;
            return TRUE;
        }};
};

/// All values as the test mode gives them, a line each.
zk_test::TChildRole const tGenerateAll(L"generate-all", [](std::vector<wstring> const &) {
    for (EDefaultValueFunction const eFunction : eAll)
        zk_test::Say(zk_test::sNarrow(sGenerate(eFunction)));
    for (EDefaultValueFunction const eFunction : eAll)
        zk_test::Say(zk_test::sNarrow(TDefaultFunctionValue(eFunction, L"typed").sGetViewValue()));
    return 0;
});

} // namespace

TEST(TDefaultFunctionValue, IsAnEmptyTextAtFirst) {
    TDefaultFunctionValue const tValue;
    EXPECT_TRUE(tValue.fIsEmpty());
    EXPECT_EQ(tValue, TDefaultFunctionValue(edvfUserText, L""));
    EXPECT_EQ(tValue.sGetGenerateValue(), L"");
    EXPECT_EQ(tValue.sGetViewValue(), L"");
}

TEST(TDefaultFunctionValue, IsEmptyAsATextAlone) {
    EXPECT_FALSE(TDefaultFunctionValue(edvfUserText, L" ").fIsEmpty());
    EXPECT_FALSE(TDefaultFunctionValue(edvfUserText, L"\0"s).fIsEmpty());
    for (EDefaultValueFunction const eFunction : {edvfShortDate, edvfIsoDate, edvfTime, edvfIsoDateTime, edvfUuid})
        EXPECT_FALSE(TDefaultFunctionValue(eFunction, L"").fIsEmpty()) << eFunction;
    EXPECT_FALSE(TDefaultFunctionValue(eMake(99), L"").fIsEmpty());
}

TEST(TDefaultFunctionValue, IsEqualInFunctionAndText) {
    EXPECT_EQ(TDefaultFunctionValue(edvfTime, L"a"), TDefaultFunctionValue(edvfTime, L"a"));
    EXPECT_NE(TDefaultFunctionValue(edvfTime, L"a"), TDefaultFunctionValue(edvfTime, L"b")) << "the text counts";
    EXPECT_NE(TDefaultFunctionValue(edvfTime, L"a"), TDefaultFunctionValue(edvfUuid, L"a"));
    EXPECT_NE(TDefaultFunctionValue(edvfUserText, L"a"), TDefaultFunctionValue(edvfUserText, L"A"));
    EXPECT_NE(TDefaultFunctionValue(edvfUserText, L"a"), TDefaultFunctionValue(edvfUserText, L"a\0"s));
    EXPECT_NE(TDefaultFunctionValue(edvfUserText, L"\0a"s), TDefaultFunctionValue(edvfUserText, L"\0b"s));
}

TEST(TDefaultFunctionValue, CopiesAndMovesBothParts) {
    TDefaultFunctionValue tSource(edvfTime, L"a text that is too long to lie inside the string itself");
    TDefaultFunctionValue const tExpected(tSource);
    EXPECT_EQ(tExpected, tSource);
    TDefaultFunctionValue tTarget;
    tTarget = std::move(tSource);
    EXPECT_EQ(tTarget, tExpected);
}

TEST(TDefaultFunctionValue, GivesTheTextWhole) {
    for (wstring const & sText : {L" as it is "s, L"a\0b"s, L"\xDC00\xD800"s, L"100%s"s}) {
        TDefaultFunctionValue const tValue(edvfUserText, sText);
        EXPECT_EQ(tValue.sGetGenerateValue(), sText);
        EXPECT_EQ(tValue.sGetViewValue(), sText);
    }
}

TEST(TDefaultFunctionValue, KeepsItsKeysInFiles) {
    constexpr std::array<wchar_t const *, 6> apzKeys{L"user_text", L"short_date",    L"iso_date",
                                                     L"time",      L"iso_date_time", L"uuid"};
    for (int i = 0; i < 6; ++i) {
        wchar_t const * const pzKey = apzKeys[static_cast<std::size_t>(i)];
        EXPECT_EQ(TDefaultFunctionValue::sToString(eMake(i)), pzKey);
        EXPECT_EQ(TDefaultFunctionValue::eFromString(pzKey), i);
    }
}

TEST(TDefaultFunctionValue, TakesKeysInAnyCaseAndTheEmptyOne) {
    EXPECT_EQ(TDefaultFunctionValue::eFromString(L""), edvfUserText);
    EXPECT_EQ(TDefaultFunctionValue::eFromString(L"Short_Date"), edvfShortDate);
    EXPECT_EQ(TDefaultFunctionValue::eFromString(L"ISO_DATE_TIME"), edvfIsoDateTime);
    EXPECT_EQ(TDefaultFunctionValue::eFromString(L"uUID"), edvfUuid);
    EXPECT_EQ(TDefaultFunctionValue::eFromString(L"time\0 and more"s), edvfTime) << "up to a null character";
}

TEST(TDefaultFunctionValue, RefusesOtherKeys) {
    for (wstring const & sKey : {L" "s, L"user_text "s, L"usertext"s, L"iso_date_"s, L"iso"s, L"0"s, L"\0"s, L"\0uuid"s,
                                 L"\xD800"s, L"tim\u00E9"s})
        EXPECT_EQ(
            sGetFailure<std::invalid_argument>([&] { static_cast<void>(TDefaultFunctionValue::eFromString(sKey)); }),
            "sFun");
}

TEST(TDefaultFunctionValue, RefusesFunctionsThatAreNone) {
    for (int const iFunction : {-1, 6, INT_MAX, INT_MIN}) {
        EXPECT_EQ(sGetFailure<std::invalid_argument>(
                      [&] { static_cast<void>(TDefaultFunctionValue::sToString(eMake(iFunction))); }),
                  "eFun");
        EXPECT_EQ(sGetFailure<std::logic_error>([&] { static_cast<void>(sGenerate(eMake(iFunction))); }),
                  "eDefault has invalid value");
        EXPECT_EQ(TDefaultFunctionValue(eMake(iFunction), L"typed").sGetViewValue(), L"");
    }
}

TEST(TDefaultFunctionValue, OffersItsFunctionsInThisOrder) {
    std::vector<TDefaultFunctionValue::TName> const & tNames = TDefaultFunctionValue::GetNames();
    ASSERT_EQ(tNames.size(), 6u);
    constexpr std::array eOrder{edvfUserText, edvfShortDate, edvfIsoDate, edvfIsoDateTime, edvfTime, edvfUuid};
    for (std::size_t i = 0; i < eOrder.size(); ++i)
        EXPECT_EQ(tNames[i].eFunction, eOrder[i]);
    EXPECT_EQ(&TDefaultFunctionValue::GetNames(), &tNames);
}

TEST(TDefaultFunctionValue, IsNamedInTheLanguageOfThisUser) {
    bool const fGerman = PRIMARYLANGID(GetUserDefaultUILanguage()) == LANG_GERMAN;
    // Run once more for a user who has to be German.
    EXPECT_TRUE(fGerman || std::getenv("ZK_TEST_IN_GERMAN") == nullptr);
    struct TCase {
        EDefaultValueFunction eFunction;
        wchar_t const * pzEnglish;
        wchar_t const * pzGerman;
    };
    constexpr std::array atCases{
        TCase{edvfShortDate, L"Today's date", L"Heutiges Datum"},
        TCase{edvfIsoDate, L"Today's date (ISO)", L"Heutiges Datum (ISO)"},
        TCase{edvfTime, L"Current time", L"Aktuelle Uhrzeit"},
        TCase{edvfIsoDateTime, L"Current date and time (ISO)", L"Aktuelles Datum mit Uhrzeit (ISO)"},
        TCase{edvfUuid, L"New UUID", L"Neue UUID"},
    };
    for (TCase const & tCase : atCases)
        EXPECT_EQ(TDefaultFunctionValue(tCase.eFunction, L"typed").sGetViewValue(),
                  fGerman ? tCase.pzGerman : tCase.pzEnglish);
    EXPECT_EQ(TDefaultFunctionValue::GetNames()[0].sName, fGerman ? L"Fester Text" : L"Fixed text");
}

TEST(TDefaultFunctionValue, GivesTheMomentOfTheLocalClock) {
    TClock const tClock({2024, 2, 0, 29, 23, 59, 59, 999}, {2024, 3, 0, 1, 1, 59, 59, 999});
    TZkDateTime const tLocal(SYSTEMTIME{2024, 3, 0, 1, 1, 59, 59, 0});
    EXPECT_EQ(sGenerate(edvfIsoDate), L"2024-03-01");
    EXPECT_EQ(sGenerate(edvfIsoDateTime), L"2024-03-01T01:59:59");
    EXPECT_EQ(sGenerate(edvfShortDate), tLocal.sGetViewDateString(edfShort, nullptr));
    EXPECT_EQ(sGenerate(edvfTime), tLocal.sGetViewTimeString(etfDefault, nullptr));
    EXPECT_NE(sGenerate(edvfTime).find(L"59"), wstring::npos);
}

TEST(TDefaultFunctionValue, GivesTheSystemsClock) {
    FILETIME tUtc{};
    FILETIME tLocal{};
    auto const sGetNow = [&] {
        GetSystemTimeAsFileTime(&tUtc);
        FileTimeToLocalFileTime(&tUtc, &tLocal);
        return TZkDateTime(tLocal).sGetString(edtDateTime, false);
    };
    wstring const sBefore = sGetNow();
    wstring const sNow = sGenerate(edvfIsoDateTime);
    EXPECT_LE(sBefore, sNow);
    EXPECT_LE(sNow, sGetNow());
}

TEST(TDefaultFunctionValue, GivesANewUuidEachTime) {
    ASSERT_FALSE(GTest::fIsTest());
    TDefaultFunctionValue const tValue(edvfUuid, wstring());
    std::set<wstring> sUuids;
    for (int i = 0; i < 100; ++i)
        sUuids.insert(tValue.sGetGenerateValue());
    EXPECT_EQ(sUuids.size(), 100u);
    EXPECT_EQ(sUuids.begin()->size(), 36u);
}

TEST(TDefaultFunctionValue, IsFixedInTheTestMode) {
    zk_test::TChildProcess tChild(tGenerateAll, {}, {.tEnvironment = {{L"ZK_TEST_MODE", L"1"}}});
    EXPECT_EQ(tChild.sHear(), "typed");
    EXPECT_EQ(tChild.sHear(), zk_test::sNarrow(GTest::sGetCurrentDate()));
    EXPECT_EQ(tChild.sHear(), "2024-01-15");
    EXPECT_EQ(tChild.sHear(), zk_test::sNarrow(GTest::sGetCurrentTime()));
    EXPECT_EQ(tChild.sHear(), "2024-01-15T08:30:00");
    EXPECT_EQ(tChild.sHear(), "00000000-0000-4000-8000-000000000001");
    EXPECT_EQ(tChild.sHear(), "typed");
    for (EDefaultValueFunction const eFunction : {edvfShortDate, edvfIsoDate, edvfTime, edvfIsoDateTime, edvfUuid})
        EXPECT_EQ(tChild.sHear(), zk_test::sNarrow(TDefaultFunctionValue(eFunction, L"").sGetViewValue()))
            << "the names are the same";
}
