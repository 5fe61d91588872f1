#include "ZkTools/CompoundStorage.h"

#include "tests/support/ChildProcess.h"
#include "tests/support/SystemCall.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using TClassOf = zk_test::TSystemCall<"CLSIDFromProgID", decltype(CLSIDFromProgID)>;

/// Tells both: what is answered where the system knows Word, and how often the system was asked.
zk_test::TChildRole const tInTestMode(L"word", [](std::vector<std::wstring> const &) {
    TClassOf const tClassOf([](wchar_t const *, CLSID *) { return S_OK; });
    bool const fInstalled = MSWord::fIsWordInstalled();
    zk_test::Say(std::to_string(fInstalled) + " " + std::to_string(tClassOf.iGetCalls()));
    return 0;
});

} // namespace

TEST(MSWord, IsInstalledWhereItsClassIsKnown) {
    HRESULT hrAnswer = S_OK;
    TClassOf const tClassOf([&](wchar_t const * pzName, CLSID *) {
        EXPECT_STREQ(pzName, L"Word.Application");
        return hrAnswer;
    });
    EXPECT_TRUE(MSWord::fIsWordInstalled());
    for (HRESULT const hr : {CO_E_CLASSSTRING, REGDB_E_WRITEREGDB, E_OUTOFMEMORY}) {
        hrAnswer = hr;
        EXPECT_FALSE(MSWord::fIsWordInstalled());
    }
    EXPECT_EQ(tClassOf.iGetCalls(), 4); // nothing is remembered
}

TEST(MSWord, IsNotInstalledInTheTestMode) {
    EXPECT_EQ(zk_test::TChildProcess(tInTestMode, {}, {{{L"ZK_TEST_MODE", L"1"}}, {}}).sHear(), "0 0");
    EXPECT_EQ(zk_test::TChildProcess(tInTestMode, {}, {{{L"ZK_TEST_MODE", L"0"}}, {}}).sHear(), "1 1");
}
