#include "tests/tools/Tool.h"

#include "ZkTools/MessageIds.h"

#include <gtest/gtest.h>

using namespace std::string_literals;
using namespace zk_test;

namespace {

class Store : public testing::Test {
protected:
    [[nodiscard]] std::wstring const & sDir() const { return tDirectory.sGetPath(); }
    [[nodiscard]] wchar_t const * pzDir() const { return sDir().c_str(); }
    [[nodiscard]] std::string sReadObject() const { return sReadFileBytes(tDirectory.sGetPath(L"main.dat")); }
    /// The lines of a refusal of the lock.
    template <typename... TArgs>
    [[nodiscard]] std::string sRefusal(unsigned int uHead, unsigned int uReason, TArgs... tArgs) const {
        return sMessage(uHead, pzDir()) + "\r\n" + sMessage(uReason, tArgs...) + "\r\n";
    }

    TTempDirectory tDirectory;
};

void ExpectDone(TToolRun const & tRun) {
    EXPECT_EQ(tRun.dwExit, 0u);
    EXPECT_EQ(tRun.sErrors, "");
    EXPECT_EQ(tRun.sOutput, "");
}

void ExpectRefused(TToolRun const & tRun, std::string const & sErrors) {
    EXPECT_EQ(tRun.dwExit, 1u);
    EXPECT_EQ(tRun.sErrors, sErrors);
    EXPECT_EQ(tRun.sOutput, "");
}

} // namespace

TEST_F(Store, WritesTheCurrentForm) {
    ExpectDone(tRunTool({L"store", sDir(), L"main.dat", L"A", L"1", L"V"}));
    EXPECT_EQ(sReadObject(), "\x01\x02\0A\0\x02\0"s + "1\0\x02\0V\0"s);
    ExpectDone(tRunTool({L"store", sDir(), L"main.dat", L"A"})); // over the longer one
    EXPECT_EQ(sReadObject(), "\x01\x02\0A\0\x01\0\0\x01\0\0"s);
    ExpectDone(tRunTool({L"store", sDir(), L"main.dat", L"A", L"", L"V"}));
    EXPECT_EQ(sReadObject(), "\x01\x02\0A\0\x01\0\0\x02\0V\0"s);
    EXPECT_EQ(sListDirectory(sDir()), L"main.dat");
}

TEST_F(Store, DropsBlanksAtTheEnds) {
    ExpectDone(tRunTool({L"store", sDir() + L"\\", L"main.dat", L"  A B ", L" 1", L"\tV "}));
    EXPECT_EQ(sReadObject(), "\x01\x04\0A B\0\x02\0"s + "1\0\x03\0\tV\0"s);
}

TEST_F(Store, WritesUtf8) {
    ExpectDone(tRunTool({L"store", sDir(), L"\u00E4 \u4E2D.dat", L"\u00E4\u20AC\u4E2D"}));
    EXPECT_EQ(sReadFileBytes(tDirectory.sGetPath(L"\u00E4 \u4E2D.dat")),
              "\x01\x09\0\xC3\xA4\xE2\x82\xAC\xE4\xB8\xAD\0\x01\0\0\x01\0\0"s);
}

TEST_F(Store, TakesNamesBehindTwoHyphensAsTheyAre) {
    ExpectDone(tRunTool({L"store", sDir(), L"--", L"--help", L"--tag"}));
    EXPECT_EQ(sReadFileBytes(tDirectory.sGetPath(L"--help")), "\x01\x06\0--tag\0\x01\0\0\x01\0\0"s);
}

TEST_F(Store, RefusesWhatCouldNotBeReadBack) {
    std::string const sErrors = "An alias with characters above U+FFFF, or with more than 32766 bytes of UTF-8 in a "
                                "part, cannot be stored.\r\n";
    ExpectRefused(tRunTool({L"store", sDir(), L"main.dat", L"\U0001F600"}), sErrors);
    ExpectRefused(tRunTool({L"store", sDir(), L"main.dat", L"A", std::wstring(20000, L'\u00E4')}), sErrors);
    EXPECT_EQ(sListDirectory(sDir()), L"");
    ExpectDone(tRunTool({L"store", sDir(), L"main.dat", std::wstring(16383, L'\u00E4')}));
    EXPECT_EQ(sReadObject().size(), 1u + 2 + 32767 + 3 + 3);
}

TEST_F(Store, IsRefusedWhileAnotherReads) {
    tDirectory.sWrite(L"main.dat", "old");
    TTool tReader({L"hold", sDir(), L"main.dat", L"--read"});
    tReader.Await();
    ExpectRefused(tRunTool({L"store", sDir(), L"main.dat", L"A"}),
                  sRefusal(IDS_LOCK_FAILED, IDS_LOCK_READERS_KNOWN, pzDir(), sGetOwnName().c_str()));
    EXPECT_EQ(sReadObject(), "old");
    tReader.tEnd();
    ExpectDone(tRunTool({L"store", sDir(), L"main.dat", L"A"}));
}

TEST_F(Store, IsRefusedWhileAnotherWrites) {
    tDirectory.sWrite(L"main.dat", "old");
    TTool tWriter({L"hold", sDir(), L"main.dat", L"--write"});
    tWriter.Await();
    ExpectRefused(tRunTool({L"store", sDir(), L"main.dat", L"A"}),
                  sRefusal(IDS_LOCK_OPEN_FAILED, IDS_LOCK_WRITER_KNOWN, pzDir(), sGetOwnName().c_str()));
    EXPECT_EQ(sReadObject(), "old");
    tWriter.tGet().Kill();
    ExpectDone(tRunTool({L"store", sDir(), L"main.dat", L"A"}));
}

TEST_F(Store, IsRefusedByAnObjectInUse) {
    std::wstring const sObject = tDirectory.sWrite(L"main.dat", "old");
    THandle const hObject(CreateFileW(sObject.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                      OPEN_EXISTING, 0, nullptr));
    ExpectRefused(tRunTool({L"store", sDir(), L"main.dat", L"A"}), sRefusal(IDS_LOCK_FAILED, IDS_LOCK_IN_USE, pzDir()));
}

TEST_F(Store, IsRefusedByAReadOnlyObject) {
    std::wstring const sObject = tDirectory.sWrite(L"main.dat", "old");
    SetFileAttributesW(sObject.c_str(), FILE_ATTRIBUTE_READONLY);
    ExpectRefused(tRunTool({L"store", sDir(), L"main.dat", L"A"}),
                  sRefusal(IDS_LOCK_FAILED, IDS_LOCK_REFUSED, sObject.c_str()));
    EXPECT_EQ(sReadObject(), "old");
    EXPECT_EQ(sListDirectory(sDir()), L"main.dat");
}

TEST_F(Store, FailsInAMissingDirectory) {
    std::wstring const sMissing = tDirectory.sGetPath(L"missing");
    ExpectRefused(tRunTool({L"store", sMissing, L"main.dat", L"A"}),
                  sSystemText(ERROR_PATH_NOT_FOUND) + "\r\n" + sMessage(IDS_LOCK_OPEN_FAILED, sMissing.c_str()) +
                      "\r\n");
    EXPECT_EQ(sListDirectory(sDir()), L"");
}

TEST_F(Store, FailsOnADirectoryInPlaceOfTheObject) {
    tDirectory.sMakeDirectory(L"main.dat");
    ExpectRefused(tRunTool({L"store", sDir(), L"main.dat", L"A"}), sRefusal(IDS_LOCK_FAILED, IDS_LOCK_IN_USE, pzDir()));
    EXPECT_EQ(sListDirectory(sDir()), L"main.dat");
}

TEST_F(Store, TellsNamesOf5000CharactersWhole) {
    std::wstring sLong = sDir();
    while (sLong.size() < 5000)
        sLong += L"\\" + std::wstring(200, L'x');
    TToolRun const tRun = tRunTool({L"store", sLong, L"main.dat", L"A"});
    EXPECT_EQ(tRun.dwExit, 1u);
    EXPECT_TRUE(tRun.sErrors.ends_with("\r\n" + sMessage(IDS_LOCK_OPEN_FAILED, sLong.c_str()) + "\r\n"));

    TToolRun const tLongObject = tRunTool({L"store", sDir(), std::wstring(5000, L'o'), L"A"});
    EXPECT_EQ(tLongObject.dwExit, 1u);
    EXPECT_NE(tLongObject.sErrors.find(std::string(5000, 'o')), std::string::npos);
    EXPECT_EQ(sListDirectory(sDir()), L"");
}

TEST_F(Store, WorksInDirectoriesBeyond260Characters) {
    std::wstring sDeep = sDir();
    while (sDeep.size() < 600) {
        sDeep += L"\\" + std::wstring(99, L'd');
        ASSERT_TRUE(CreateDirectoryW(sLongForm(sDeep).c_str(), nullptr));
    }
    ExpectDone(tRunTool({L"store", sDeep, L"main.dat", L"A"}));
    EXPECT_EQ(tRunTool({L"show", sDeep, L"main.dat"}).sOutput, "tag: A\r\nversion:\r\nvariant:\r\n");
    EXPECT_EQ(sListDirectory(sDeep), L"main.dat");
}
