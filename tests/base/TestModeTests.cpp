#include "ZkBase/TestMode.h"

#include "ZkBase/Windows.h"
#include "tests/support/ChildProcess.h"

#include <gtest/gtest.h>

#include <array>

namespace {

/// Tells whether it runs in the mode, before and after it changes the switch itself.
zk_test::TChildRole const tAsked(L"is-test", [](std::vector<std::wstring> const &) {
    std::string sAnswers(GTest::fIsTest() ? "yes" : "no");
    SetEnvironmentVariableW(L"ZK_TEST_MODE", GTest::fIsTest() ? nullptr : L"1");
    sAnswers += GTest::fIsTest() ? " yes" : " no";
    zk_test::Say(sAnswers);
    return 0;
});

std::string sAskWith(wchar_t const * pzSwitch) {
    zk_test::TChildProcess tChild(tAsked, {}, {.tEnvironment = {{L"ZK_TEST_MODE", pzSwitch}}});
    return tChild.sHear();
}

constexpr SYSTEMTIME tMoment{2024, 1, 1, 15, 8, 30, 0, 0};

} // namespace

TEST(TestMode, IsOffByItself) {
    ASSERT_EQ(GetEnvironmentVariableW(L"ZK_TEST_MODE", nullptr, 0), 0U);
    EXPECT_EQ(zk_test::TChildProcess(tAsked).sHear(), "no no");
}

TEST(TestMode, IsSwitchedOnByTheEnvironmentAtTheFirstQuestion) {
    EXPECT_EQ(sAskWith(L"1"), "yes yes");
}

TEST(TestMode, IsNotSwitchedOnByAnyOtherValue) {
    for (wchar_t const * pzSwitch : {L"0", L"11", L" 1", L"true", L"1111111111111"})
        EXPECT_EQ(sAskWith(pzSwitch), "no no") << testing::PrintToString(pzSwitch);
}

TEST(TestMode, HasOneFixedMoment) {
    EXPECT_EQ(GTest::sGetCurrentDateTime(), L"2024-01-15T08:30:00");

    std::array<wchar_t, 100> acText{};
    GetDateFormatEx(LOCALE_NAME_USER_DEFAULT, DATE_SHORTDATE, &tMoment, nullptr, acText.data(),
                    static_cast<int>(acText.size()), nullptr);
    EXPECT_EQ(GTest::sGetCurrentDate(), acText.data());
    EXPECT_NE(GTest::sGetCurrentDate().find(L"15"), std::wstring::npos);

    GetTimeFormatEx(LOCALE_NAME_USER_DEFAULT, 0, &tMoment, nullptr, acText.data(), static_cast<int>(acText.size()));
    EXPECT_EQ(GTest::sGetCurrentTime(), acText.data());
    EXPECT_NE(GTest::sGetCurrentTime().find(L"30"), std::wstring::npos);
}

TEST(TestMode, HasFixedIdentifiers) {
    EXPECT_EQ(GTest::sGetUUID(GTest::euuidFirst), L"00000000-0000-4000-8000-000000000001");
    EXPECT_EQ(GTest::sGetUUID(static_cast<GTest::EUUID>(0)), L"00000000-0000-4000-8000-000000000000");
    EXPECT_EQ(GTest::sGetUUID(static_cast<GTest::EUUID>(0x1AF)), L"00000000-0000-4000-8000-0000000001af");
    EXPECT_EQ(GTest::sGetUUID(static_cast<GTest::EUUID>(-1)), L"00000000-0000-4000-8000-0000ffffffff");
}
