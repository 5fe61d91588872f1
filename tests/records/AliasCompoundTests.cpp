#include "ZkTools/Alias.h"
#include "ZkTools/CompoundStorage.h"
#include "ZkTools/Exceptions.h"

#include "tests/support/Compound.h"

#include <gtest/gtest.h>

#include <string>

using namespace std::string_literals;

namespace {

using std::wstring;
using zk_test::TAliasedStream;
using zk_test::TFakeStream;

void ExpectAlias(TAlias const & tAlias, wstring const & sTag, wstring const & sVersion, wstring const & sVariant) {
    EXPECT_EQ(tAlias.sGetTag(), sTag);
    EXPECT_EQ(tAlias.sGetVersion(), sVersion);
    EXPECT_EQ(tAlias.sGetVariant(), sVariant);
}

/// Tag "A", version "12", no variant.
std::string sRecord() {
    return "\x04\0A\0\0\0"s + "\x06\0"s + "1\0"s + "2\0\0\0"s + "\x02\0\0\0"s;
}

} // namespace

TEST(TAliasCompound, WritesThreeStringsAndNoMark) {
    TFakeStream tFake;
    TAliasedStream tStream(tFake);
    TAlias(L"A", L"12").Write(tStream);
    EXPECT_EQ(tFake.sBytes, sRecord());
}

TEST(TAliasCompound, ReadsThreeStringsAndNoMore) {
    TFakeStream tFake(sRecord() + "rest");
    TAliasedStream tStream(tFake);
    TAlias tAlias(L"x", L"y", L"z");
    tAlias.Read(tStream);
    ExpectAlias(tAlias, L"A", L"12", L"");
    EXPECT_EQ(tFake.uPosition, sRecord().size());
}

TEST(TAliasCompound, WritesAsItStandsAndReadsTrimmed) {
    TAlias tAlias;
    TTransferAlias tAccess(tAlias);
    tAccess.sGetTag() = L"  a b ";
    tAccess.sGetVersion() = L" \t1 ";
    tAccess.sGetVariant() = L"   ";
    TFakeStream tFake;
    TAliasedStream tStream(tFake);
    tAlias.Write(tStream);
    EXPECT_TRUE(tFake.sBytes.starts_with("\x0E\0 \0 \0a\0 \0b\0 \0\0\0"s));
    tFake.uPosition = 0;
    tAlias.Read(tStream);
    ExpectAlias(tAlias, L"a b", L"\t1", L"");
}

TEST(TAliasCompound, AFailedReaderLeavesTheAliasAsItWas) {
    for (int iFailAt = 0; iFailAt < 6; ++iFailAt) { // size and units of each string
        TFakeStream tFake(sRecord());
        tFake.iFailAt = iFailAt;
        TAliasedStream tStream(tFake);
        TAlias tAlias(L"x", L"y", L"z");
        EXPECT_THROW(tAlias.Read(tStream), TXZkTools);
        ExpectAlias(tAlias, L"x", L"y", L"z");
    }
}

TEST(TAliasCompound, AFailedWriterWritesNoFurther) {
    std::string const sCalls = "Write 2; Write 4; Write 2; Write 6; Write 2; Write 2";
    for (int iFailAt = 0; iFailAt < 6; ++iFailAt) {
        TFakeStream tFake;
        tFake.iFailAt = iFailAt;
        TAliasedStream tStream(tFake);
        EXPECT_THROW(TAlias(L"A", L"12").Write(tStream), TXZkTools);
        EXPECT_EQ(tFake.sCalls, sCalls.substr(0, static_cast<std::size_t>(iFailAt) * 9 + 7)); // none behind the failed
    }
}

TEST(TAliasCompound, IsReadFromARecordCutAtEveryByte) {
    std::string const sWhole = sRecord();
    for (std::size_t uCut = 0; uCut <= sWhole.size(); ++uCut) {
        TFakeStream tFake(sWhole.substr(0, uCut));
        TAliasedStream tStream(tFake);
        TAlias tAlias(L"x", L"y", L"z");
        tAlias.Read(tStream); // what is missing counts as zeros
        wstring const sTag = uCut == 0 ? L""s : uCut < 3 ? L"\0"s : L"A"s;
        wstring const sVersion = uCut < 7    ? L""s
                                 : uCut < 9  ? wstring(2, L'\0')
                                 : uCut < 11 ? wstring(L"1\0", 2)
                                             : L"12"s;
        ExpectAlias(tAlias, sTag, sVersion, L"");
        EXPECT_EQ(tFake.uPosition, uCut);
    }
}

TEST(TAliasCompound, ComesBackFromAStreamOfThePlatform) {
    TIStorage tStorage;
    tStorage.CreateInMemory(STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE);
    TIStream tStream;
    tStream.Create(tStorage, L"alias", STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE);
    TAlias const tAlias(wstring(16382, L'\u0416'), L"1", L"\u20AC");
    tAlias.Write(tStream);
    EXPECT_EQ(tStream.luliSeek(0, STREAM_SEEK_SET), 0u);
    TAlias tRead;
    tRead.Read(tStream);
    EXPECT_TRUE(tRead == tAlias);
}
