#include "ZkTools/Alias.h"
#include "ZkTools/Exceptions.h"
#include "ZkTools/FileStream.h"
#include "ZkTools/MessageIds.h"
#include "ZkTools/Stream.h"

#include "ZkBase/Windows.h"
#include "tests/support/TempDirectory.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <string_view>
#include <vector>

using namespace std::string_literals;

namespace {

using std::wstring;

/// A stream of these bytes, standing at their start.
struct TBytes : TStreamBase {
    explicit TBytes(std::string_view sBytes, ECodePage eCodePage = ecpWestern)
        : TStreamBase(static_cast<unsigned long>(sBytes.size()), eCodePage) {
        if (sBytes.empty()) return;
        WriteData(sBytes.data(), static_cast<unsigned long>(sBytes.size()));
        SetPos(0);
    }
};

/// All that stands on the stream.
std::string sGetBytes(TStreamBase & tStream) {
    if (tStream.pGetData() == nullptr) return {};
    return {reinterpret_cast<char const *>(tStream.pGetData()), tStream.dwGetSize()};
}

void ExpectAlias(TAlias const & tAlias, wstring const & sTag, wstring const & sVersion, wstring const & sVariant) {
    EXPECT_EQ(tAlias.sGetTag(), sTag);
    EXPECT_EQ(tAlias.sGetVersion(), sVersion);
    EXPECT_EQ(tAlias.sGetVariant(), sVariant);
}

std::string sCurrentForm() {
    return "\x01\x02\0A\0\x03\0"s + "12\0\x04\0abc\0"s;
}

/// An old record of these fields as bytes, each filled up with zeros.
std::string sOldRecord(std::string sTag = "Old", std::string sVersion = "1", std::string sVariant = "v") {
    sTag.resize(21);
    sVersion.resize(7);
    sVariant.resize(7);
    return sTag + sVersion + sVariant;
}

/// For the lifetime of an object the thread's ANSI code page is the Japanese one, 932.
struct TJapaneseThread {
    TJapaneseThread() { SetThreadLocale(MAKELCID(MAKELANGID(LANG_JAPANESE, SUBLANG_DEFAULT), SORT_DEFAULT)); }
    ~TJapaneseThread() { SetThreadLocale(lcOld); }
    LCID const lcOld = GetThreadLocale();
};

} // namespace

TEST(TAliasFileName, MergesWithAnUnderscoreByDefault) {
    EXPECT_EQ(TAlias(L"A/B", L"1").sGetFileName(nullptr), L"A_B_1");
    EXPECT_EQ(TAlias(L"A", L"", L"V").sGetFileName(nullptr), L"A__V");
    EXPECT_EQ(TAlias(L"A", L"1", L"V").sGetFileName(L" - "), L"A - 1 - V");
}

TEST(TAliasFileName, ReplacesEveryInvalidCharacterOfSeparatorsToo) {
    EXPECT_EQ(TAlias(L"/\\:*?\"<>|\u00AE", L"a").sGetFileName(L": "), L"___________ a");
    EXPECT_EQ(TAlias(L"\u00E4;'.", L"").sGetFileName(nullptr), L"\u00E4;'.");
}

TEST(TAliasStream, WritesItsMarkAndThreeCountedStrings) {
    TStreamBase tStream(ecpWestern);
    TAlias(L"A", L"12", L"abc").Write(tStream);
    EXPECT_EQ(sGetBytes(tStream), sCurrentForm());
}

TEST(TAliasStream, WritesEmptyStringsAsLoneTerminators) {
    TStreamBase tStream(ecpWestern);
    TAlias().Write(tStream);
    EXPECT_EQ(sGetBytes(tStream), "\x01\x01\0\0\x01\0\0\x01\0\0"s);
}

TEST(TAliasStream, PureFormLacksTheMark) {
    TStreamBase tStream(ecpWestern);
    TAlias const tAlias(L"A", L"12", L"abc");
    tAlias.WritePure(tStream);
    EXPECT_EQ(sGetBytes(tStream), sCurrentForm().substr(1));
    tStream.SetPos(0);
    TAlias tRead(L"x", L"y", L"z");
    tRead.ReadPure(tStream);
    EXPECT_TRUE(tRead == tAlias);
    EXPECT_TRUE(tStream.fIsEoF());
}

TEST(TAliasStream, TextStandsInTheCodePageOfTheStream) {
    TStreamBase tUtf8(ecpUtf8);
    TAlias const tAlias(L"\u00E4\u20AC");
    tAlias.WritePure(tUtf8);
    EXPECT_EQ(sGetBytes(tUtf8), "\x06\0\xC3\xA4\xE2\x82\xAC\0\x01\0\0\x01\0\0"s);
    TStreamBase tUtf16(ecpUtf16);
    TAlias(L"\u20AC", L"1", L"V").Write(tUtf16);
    EXPECT_EQ(sGetBytes(tUtf16), "\x01\x02\0\xAC\x20\0\0\x02\0"s + "1\0\0\0\x02\0V\0\0\0"s);
}

TEST(TAliasStream, ReadTellsTheFormsApartByTheFirstByte) {
    TBytes tCurrent(sCurrentForm() + "rest");
    TAlias tAlias;
    tAlias.Read(tCurrent);
    ExpectAlias(tAlias, L"A", L"12", L"abc");
    EXPECT_EQ(tCurrent.dwGetPos(), sCurrentForm().size());

    TBytes tOld(sOldRecord() + "rest");
    tAlias.Read(tOld);
    ExpectAlias(tAlias, L"Old", L"1", L"v");
    EXPECT_EQ(tOld.dwGetPos(), 35u);

    TBytes tEmptyOld(std::string(35, '\0')); // a first byte of 0 is an empty old tag
    tAlias.Read(tEmptyOld);
    ExpectAlias(tAlias, L"", L"", L"");
    EXPECT_TRUE(tEmptyOld.fIsEoF());
}

TEST(TAliasStream, EveryFirstByteButOneIsAnOldTag) {
    for (int i = 2; i < 256; ++i) {
        std::string sRecord = sOldRecord();
        sRecord[0] = static_cast<char>(i);
        TBytes tStream(sRecord);
        TAlias tAlias;
        tAlias.Read(tStream);
        EXPECT_TRUE(tStream.fIsEoF()) << i;
        EXPECT_EQ(tAlias.sGetVersion(), L"1") << i;
    }
}

TEST(TAliasStream, ReadersTrimWhatTheyFind) {
    TBytes tCurrent("\x01\x06\0  A  \0\x04\0 \t \0\x02\0 \0"s);
    TAlias tAlias;
    tAlias.Read(tCurrent);
    ExpectAlias(tAlias, L"A", L"\t", L"");

    TBytes tOld(sOldRecord("  B  "));
    tAlias.Read(tOld);
    ExpectAlias(tAlias, L"B", L"1", L"v");
}

TEST(TAliasStream, WritersDoNotTrim) {
    TAlias tAlias;
    TTransferAlias(tAlias).sGetTag() = L" A ";
    TStreamBase tStream(ecpWestern);
    tAlias.WritePure(tStream);
    EXPECT_EQ(sGetBytes(tStream), "\x04\0 A \0\x01\0\0\x01\0\0"s);
}

TEST(TAliasStream, OperatorsAreWriteAndReadAndGiveTheStream) {
    TStreamBase tStream(ecpWestern);
    TAlias const tFirst(L"A", L"1", L"V");
    TAlias const tSecond(L"B");
    EXPECT_EQ(&(tStream << tFirst << tSecond), &tStream);
    tStream.SetPos(0);
    TAlias tReadFirst;
    TAlias tReadSecond;
    EXPECT_EQ(&(tStream >> tReadFirst >> tReadSecond), &tStream);
    EXPECT_TRUE(tReadFirst == tFirst);
    EXPECT_TRUE(tReadSecond == tSecond);
}

TEST(TAliasOldRecord, IsCompatibleUpToItsRoomInCharacters) {
    struct TCase {
        std::size_t uTag, uVersion, uVariant;
        bool fCompatible;
    };
    std::array<TCase, 6> const tCases{{{20, 6, 6, true},
                                       {21, 6, 6, false},
                                       {20, 7, 6, false},
                                       {20, 6, 7, false},
                                       {0, 0, 0, true},
                                       {21, 7, 7, false}}};
    for (TCase const & tCase : tCases) {
        TAlias const tAlias(wstring(tCase.uTag, L'\u3042'), wstring(tCase.uVersion, L'1'),
                            wstring(tCase.uVariant, L'v'));
        EXPECT_EQ(tAlias.fIsTagRecCompatible(), tCase.fCompatible);
    }
}

TEST(TAliasOldRecord, IsWrittenWithoutAMarkAndFilledWithZeros) {
    TStreamBase tStream(ecpWestern);
    TAlias(L"Old", L"1", L"v").WriteTagRecCompatible(tStream);
    EXPECT_EQ(sGetBytes(tStream), sOldRecord());
}

TEST(TAliasOldRecord, CutsWhatIsTooLongAndTerminatesEveryField) {
    TStreamBase tStream(ecpWestern);
    TAlias(L"abcdefghijklmnopqrstuvwxyz", L"1234567", L"tuvwxyz").WriteTagRecCompatible(tStream);
    EXPECT_EQ(sGetBytes(tStream), "abcdefghijklmnopqrst\0"
                                  "123456\0"
                                  "tuvwxy\0"s);
}

TEST(TAliasOldRecord, StandsInTheCodePageOfTheThreadWhateverTheStreams) {
    for (ECodePage const eCodePage : {ecpUtf8, ecpUtf16, ecpWestern}) {
        TStreamBase tStream(eCodePage);
        TAlias const tAlias(L"\u00E4\u20AC");
        tAlias.WriteTagRecCompatible(tStream);
        EXPECT_EQ(sGetBytes(tStream), sOldRecord("\xE4\x80", "", ""));
        tStream.SetPos(0);
        TAlias tRead;
        tRead.ReadTagRecCompatible(tStream);
        EXPECT_TRUE(tRead == tAlias);
    }
    TJapaneseThread const tJapanese;
    TStreamBase tStream(ecpUtf8);
    TAlias const tAlias(L"\u3042\u3042", L"\u3042\u3042\u3042\u3042");
    EXPECT_TRUE(tAlias.fIsTagRecCompatible()); // it counts characters, and eight bytes don't fit
    tAlias.WriteTagRecCompatible(tStream);
    EXPECT_EQ(sGetBytes(tStream), sOldRecord("\x82\xA0\x82\xA0", "\x82\xA0\x82\xA0\x82\xA0", ""));
    tStream.SetPos(0);
    TAlias tRead;
    tRead.Read(tStream);
    ExpectAlias(tRead, L"\u3042\u3042", L"\u3042\u3042\u3042", L"");
}

TEST(TAliasOldRecord, WritesWhatTheCodePageLacksAsItsDefaultCharacter) {
    TStreamBase tStream(ecpUtf8);
    TAlias(L"\u3042").WriteTagRecCompatible(tStream);
    EXPECT_EQ(sGetBytes(tStream), sOldRecord("?", "", ""));
}

TEST(TAliasOldRecord, IsWrittenInOnePieceAndReadFieldByField) {
    struct TPieces : TStreamBase {
        using TStreamBase::TStreamBase;
        void WriteData(void const * pSource, unsigned long dwCount) override {
            dwPieces.push_back(dwCount);
            TStreamBase::WriteData(pSource, dwCount);
        }
        void ReadData(void * pTarget, unsigned long dwCount) override {
            dwPieces.push_back(dwCount);
            TStreamBase::ReadData(pTarget, dwCount);
        }
        std::vector<unsigned long> dwPieces;
    };
    TPieces tStream(ecpWestern);
    TAlias tAlias(L"Old", L"1", L"v");
    tAlias.WriteTagRecCompatible(tStream);
    EXPECT_EQ(tStream.dwPieces, std::vector<unsigned long>{35});
    tStream.dwPieces.clear();
    tStream.SetPos(0);
    tAlias.ReadTagRecCompatible(tStream);
    EXPECT_EQ(tStream.dwPieces, (std::vector<unsigned long>{21, 7, 7}));
    tStream.dwPieces.clear();
    tStream.SetPos(0);
    tAlias.Read(tStream);
    EXPECT_EQ(tStream.dwPieces, (std::vector<unsigned long>{1, 20, 7, 7}));
}

TEST(TAliasOldRecord, ReadsFixedFieldsWhateverTheFirstByte) {
    std::string sRecord = sOldRecord();
    sRecord[0] = '\x01';
    TBytes tStream(sRecord);
    TAlias tAlias;
    tAlias.ReadTagRecCompatible(tStream);
    ExpectAlias(tAlias, L"\x01ld", L"1", L"v");
}

TEST(TAliasOldRecord, FieldsWithoutATerminatorEndWithTheField) {
    TBytes tStream(std::string(21, 'a') + std::string(7, 'b') + std::string(7, 'c'));
    TAlias tAlias;
    tAlias.Read(tStream);
    ExpectAlias(tAlias, wstring(21, L'a'), wstring(7, L'b'), wstring(7, L'c'));
}

TEST(TAliasOldRecord, IgnoresWhatStandsBehindATerminator) {
    std::string sRecord(35, 'x');
    sRecord[1] = sRecord[21] = sRecord[29] = '\0';
    TBytes tStream(sRecord);
    TAlias tAlias;
    tAlias.Read(tStream);
    ExpectAlias(tAlias, L"x", L"", L"x");
}

// Damage: the specified failure or a value, and after a failure the alias is what it was.

TEST(TAliasDamage, CutAnywhereIsTheFailureOfTheStreamsEnd) {
    for (std::string const & sWhole : {sCurrentForm(), sOldRecord()}) {
        for (std::size_t uLength = 0; uLength < sWhole.size(); ++uLength) {
            TBytes tCut("x"s.append(sWhole, 0, uLength)); // a stream needs some memory to be read
            tCut.SetPos(1);
            TAlias tAlias(L"x", L"y", L"z");
            try {
                tAlias.Read(tCut);
                ADD_FAILURE() << "read from " << uLength << " bytes";
            } catch (TXZkTools const & tError) {
                EXPECT_EQ(tError.iGetNumber(), IDS_READ_PAST_END);
            }
            ExpectAlias(tAlias, L"x", L"y", L"z");
        }
    }
}

TEST(TAliasDamage, EveryByteFlippedEveryWayIsAFailureOrAValue) {
    int iFailures = 0;
    int iValues = 0;
    for (ECodePage const eCodePage : {ecpWestern, ecpUtf8, ecpJapanese, ecpUtf16}) {
        TStreamBase tCurrent(eCodePage);
        TAlias(L"Tag \u00E4", L"12", L"abc").Write(tCurrent);
        for (std::string const & sWhole : {sGetBytes(tCurrent), sOldRecord()}) {
            for (std::size_t uAt = 0; uAt < sWhole.size(); ++uAt) {
                for (int iFlip = 1; iFlip < 256; ++iFlip) {
                    std::string sDamaged = sWhole;
                    sDamaged[uAt] = static_cast<char>(sDamaged[uAt] ^ iFlip);
                    TBytes tStream(sDamaged, eCodePage);
                    TAlias tAlias(L"x", L"y", L"z");
                    try {
                        tAlias.Read(tStream);
                        ++iValues;
                    } catch (TXError const &) {
                        ++iFailures;
                        ExpectAlias(tAlias, L"x", L"y", L"z");
                    }
                }
            }
        }
    }
    EXPECT_GT(iFailures, 1000);
    EXPECT_GT(iValues, 1000);
}

// A file stream ends quietly: what is missing reads as nothing.

TEST(TAliasFile, ComesBackFromAFile) {
    zk_test::TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sGetPath(L"main.dat");
    TAlias const tAlias(L"Tag \u00E4", L"12", L"abc");
    {
        TFStream tFile(sPath, ecpUtf8, FS_CREATE | FS_BINARY);
        tFile << tAlias;
        tFile.Close();
    }
    EXPECT_EQ(zk_test::sReadFileBytes(sPath), "\x01\x07\0Tag \xC3\xA4\0\x03\0"s + "12\0\x04\0abc\0"s);
    TFStream tFile(sPath, ecpUtf8, FS_BINARY);
    TAlias tRead;
    tFile >> tRead;
    EXPECT_TRUE(tRead == tAlias);
}

TEST(TAliasFile, CutAnywhereIsAFailureOrAValue) {
    zk_test::TTempDirectory const tDirectory;
    for (std::string const & sWhole : {sCurrentForm(), sOldRecord()}) {
        for (std::size_t uLength = 0; uLength < sWhole.size(); ++uLength) {
            std::wstring const sPath = tDirectory.sWrite(L"cut", sWhole.substr(0, uLength));
            TFStream tFile(sPath, ecpWestern, FS_BINARY);
            TAlias tAlias(L"x", L"y", L"z");
            try {
                tAlias.Read(tFile);
                // Nothing is made up: what was read is the beginning of what was written.
                TAlias tComplete;
                TBytes tStream(sWhole);
                tComplete.Read(tStream);
                EXPECT_TRUE(tComplete.sGetTag().starts_with(tAlias.sGetTag()));
                EXPECT_TRUE(tComplete.sGetVersion().starts_with(tAlias.sGetVersion()));
                EXPECT_TRUE(tComplete.sGetVariant().starts_with(tAlias.sGetVariant()));
            } catch (TXZkTools const & tError) {
                EXPECT_EQ(tError.iGetNumber(), IDS_READ_PAST_END);
                ExpectAlias(tAlias, L"x", L"y", L"z");
            }
        }
    }
}
