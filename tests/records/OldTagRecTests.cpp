#include "ZkTools/Alias.h"

#include "ZkBase/Windows.h"
#include "ZkTools/Exceptions.h"
#include "ZkTools/Stream.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

using std::wstring;
using namespace std::string_literals;

namespace {

std::string sGetBytes(TOldTagRec const & tRecord) {
    TStreamBase tStream;
    tRecord.Write(tStream);
    return {reinterpret_cast<char const *>(tStream.pGetData()), tStream.dwGetSize()};
}

/// Three fields as they stand in a record, filled up with the given byte.
std::string sRecord(std::string sTag, std::string sVersion, std::string sVariant, char cFill = '\0') {
    sTag += '\0';
    sVersion += '\0';
    sVariant += '\0';
    sTag.resize(21, cFill);
    sVersion.resize(7, cFill);
    sVariant.resize(7, cFill);
    return sTag + sVersion + sVariant;
}

TOldTagRec tRead(std::string const & sBytes) {
    TStreamBase tStream(sBytes.data(), static_cast<unsigned long>(sBytes.size()));
    TOldTagRec tRecord;
    tRecord.Read(tStream);
    EXPECT_EQ(tStream.dwGetPos(), 35u);
    return tRecord;
}

} // namespace

TEST(TOldTagRec, HasThirtyFiveBytes) {
    EXPECT_EQ(TOldTagRec::uiGetSize(), 35u);
    EXPECT_EQ(sizeof(TOldTagRec), 35u);
    EXPECT_EQ(sGetBytes(TOldTagRec()), std::string(35, '\0'));
}

TEST(TOldTagRec, KeepsTextsWithZerosBehind) {
    TOldTagRec tRecord(L"Tag", L"12", L"v");
    EXPECT_EQ(sGetBytes(tRecord), sRecord("Tag", "12", "v"));
    EXPECT_EQ(tRecord.sGetTag(), L"Tag");
    EXPECT_EQ(tRecord.sGetVersion(), L"12");
    EXPECT_EQ(tRecord.sGetVariant(), L"v");
    tRecord.SetValue(L"x", static_cast<wchar_t const *>(nullptr), L"");
    EXPECT_EQ(sGetBytes(tRecord), sRecord("x", "", ""));
    tRecord.SetValue("Tag", "12", static_cast<char const *>(nullptr));
    EXPECT_EQ(sGetBytes(tRecord), sRecord("Tag", "12", ""));
}

TEST(TOldTagRec, CutsWhatIsTooLong) {
    std::string const sExpected = sRecord("abcdefghijklmnopqrst", "123456", "uvwxyz");
    EXPECT_EQ(sGetBytes(TOldTagRec(L"abcdefghijklmnopqrstuvwxy", L"1234567", L"uvwxyz!")), sExpected);
    TOldTagRec tRecord;
    tRecord.SetValue("abcdefghijklmnopqrstuvwxy", "1234567", "uvwxyz!");
    EXPECT_EQ(sGetBytes(tRecord), sExpected);
    EXPECT_EQ(tRecord.sGetTag(), L"abcdefghijklmnopqrst");
}

TEST(TOldTagRec, ConvertsByTheCodePageOfTheThread) {
    LCID const lcOld = GetThreadLocale();
    SetThreadLocale(MAKELCID(MAKELANGID(LANG_JAPANESE, SUBLANG_DEFAULT), SORT_DEFAULT)); // 932
    TOldTagRec const tRecord(L"\u3042\u3044", L"\u3042\u3042\u3042\u3042", L"");
    EXPECT_EQ(sGetBytes(tRecord), sRecord("\x82\xA0\x82\xA2", "\x82\xA0\x82\xA0\x82\xA0", ""));
    EXPECT_EQ(tRecord.sGetTag(), L"\u3042\u3044");
    EXPECT_EQ(tRecord.sGetVersion(), L"\u3042\u3042\u3042");
    SetThreadLocale(lcOld);
}

TEST(TOldTagRec, EqualityStopsAtTheTerminator) {
    TOldTagRec const tClean = tRead(sRecord("Tag", "1", "v"));
    EXPECT_TRUE(tClean == tRead(sRecord("Tag", "1", "v", 'x')));
    EXPECT_TRUE(tClean == TOldTagRec(L"Tag", L"1", L"v"));
    EXPECT_FALSE(tClean == TOldTagRec(L"Tags", L"1", L"v"));
    EXPECT_FALSE(tClean == TOldTagRec(L"Tag", L"2", L"v"));
    EXPECT_FALSE(tClean == TOldTagRec(L"Tag", L"1", L""));
}

TEST(TOldTagRec, ReadsAndWritesWhatLiesBehindATerminator) {
    std::string const sBytes = sRecord("Tag", "1", "v", 'x');
    TOldTagRec tRecord = tRead(sBytes + "more");
    EXPECT_EQ(sGetBytes(tRecord), sBytes);
    EXPECT_EQ(sGetBytes(TOldTagRec(tRecord)), sBytes);
    TOldTagRec tAssigned;
    EXPECT_EQ(&(tAssigned = tRecord), &tAssigned); // an assignment copies the texts
    EXPECT_EQ(sGetBytes(tAssigned), sRecord("Tag", "1", "v"));
    TOldTagRec & tSelf = tRecord;
    tRecord = tSelf;
    EXPECT_EQ(sGetBytes(tRecord), sRecord("Tag", "1", "v"));
}

TEST(TOldTagRec, ADamagedFieldEndsWithItself) {
    TOldTagRec const tRecord = tRead(std::string(21, 't') + std::string(7, '1') + std::string(7, 'v'));
    EXPECT_EQ(tRecord.sGetTag(), wstring(21, L't'));
    EXPECT_EQ(tRecord.sGetVersion(), wstring(7, L'1'));
    EXPECT_EQ(tRecord.sGetVariant(), wstring(7, L'v'));
    EXPECT_TRUE(tRecord == TOldTagRec(tRecord));
    TOldTagRec tAssigned;
    tAssigned = tRecord;
    EXPECT_EQ(tAssigned.sGetTag(), wstring(20, L't'));
}

TEST(TOldTagRec, AnEarlyEndIsTheStreamsFailure) {
    std::string const sBytes = sRecord("Tag", "1", "v");
    for (unsigned long dwLength = 1; dwLength < sBytes.size(); ++dwLength) {
        TStreamBase tStream(sBytes.data(), dwLength);
        TOldTagRec tRecord(L"old", L"old", L"old");
        EXPECT_THROW(tRecord.Read(tStream), TXZkTools) << dwLength;
        EXPECT_EQ(tRecord.sGetTag(), dwLength < 21 ? L"old" : L"Tag") << dwLength; // what was read before stays changed
        EXPECT_EQ(tRecord.sGetVersion(), dwLength < 28 ? L"old" : L"1") << dwLength;
        EXPECT_EQ(tRecord.sGetVariant(), L"old") << dwLength;
    }
}

TEST(TOldTagRec, GivesItsTextsToAnAliasTrimmed) {
    TAlias tAlias;
    tAlias.Set(TOldTagRec(L" A ", L" 1", L"v "));
    EXPECT_EQ(tAlias.sGetTag(), L"A");
    EXPECT_EQ(tAlias.sGetVersion(), L"1");
    EXPECT_EQ(tAlias.sGetVariant(), L"v");
}
