#include "ZkTools/Hash.h"

#include "ZkTools/Exceptions.h"
#include "tests/files/Fixture.h"
#include "tests/support/Archive.h"
#include "tests/support/Handle.h"
#include "tests/support/Handles.h"
#include "tests/support/SystemCall.h"
#include "tests/support/TempDirectory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <random>
#include <string>
#include <string_view>
#include <typeinfo>
#include <vector>
#include <wincrypt.h>

using namespace std::string_literals;
using namespace std::string_view_literals;

namespace {

using zk_test::sContentsHash;
using zk_test::sMakeArchive;
using zk_test::TArchiveForm;
using zk_test::TArchiveMember;
using zk_test::tFailWith;
using zk_test::THandle;
using zk_test::TSystemCall;
using zk_test::TTempDirectory;

using TMembers = std::vector<TArchiveMember>;

TMembers const tThree{{"b/c.txt", "gamma"}, {"a.txt", "alpha"}, {"b/"}};
constexpr wchar_t const * pzThreeHash = L"C6BFC0EEFBB4B661F5FDC537B5B8848B";
constexpr wchar_t const * pzNothingHash = L"EEA339DA0D4B6B5EEFBF553290186095";
constexpr wchar_t const * pzAlphaHash = L"A343172CBF5F3091E4F87D36F9F969F0"; // of the bytes "alpha"

/// The three members, all changed in one way.
TMembers tThreeWith(std::function<void(TArchiveMember &)> const & tChange) {
    TMembers tMembers = tThree;
    std::ranges::for_each(tMembers, tChange);
    return tMembers;
}

/// The hash of an archive of these bytes.
std::wstring sHash(std::string_view sArchive) {
    TTempDirectory const tTemp;
    return sGetZipFileHash(tTemp.sWrite(L"a.zip", sArchive));
}

std::wstring sHash(TMembers const & tMembers, TArchiveForm const & tForm = {}) {
    return sHash(sMakeArchive(tMembers, tForm));
}

/// The text of the exception, which must be a plain `std::runtime_error`.
std::string sFailure(std::function<void()> const & tCall) {
    try {
        tCall();
    } catch (std::exception const & tFailure) {
        EXPECT_EQ(typeid(tFailure), typeid(std::runtime_error));
        return tFailure.what();
    }
    return "nothing thrown";
}

std::string sHashFailure(std::wstring const & sPath) {
    return sFailure([&sPath] { static_cast<void>(sGetZipFileHash(sPath)); });
}

/// How hashing an archive of these bytes fails.
std::string sDamage(std::string_view sArchive) {
    TTempDirectory const tTemp;
    return sHashFailure(tTemp.sWrite(L"a.zip", sArchive));
}

/// The bytes with the n-th of some signatures made unreadable.
std::string sSpoil(std::string sArchive, std::string_view sSignature, int iWhich) {
    std::size_t uPlace = sArchive.find(sSignature);
    for (int i = 0; i < iWhich; ++i)
        uPlace = sArchive.find(sSignature, uPlace + 1);
    sArchive.at(uPlace) = 'X';
    return sArchive;
}

constexpr std::string_view sMemberMark = "PK\3\4";
constexpr std::string_view sDirectoryMark = "PK\1\2";

// What counts

TEST(ZipFileHash, IsThatOfTheMembersInTheOrderOfTheirNames) {
    EXPECT_EQ(sHash(tThree), pzThreeHash);
    EXPECT_EQ(sHash({tThree[2], tThree[1], tThree[0]}), pzThreeHash);
    EXPECT_EQ(sContentsHash(tThree), pzThreeHash);
}

TEST(ZipFileHash, IgnoresHowTheMembersArePacked) {
    EXPECT_EQ(sHash(tThreeWith([](TArchiveMember & tMember) { tMember.uMethod = 8; })), pzThreeHash);
    EXPECT_EQ(sHash(tThreeWith([](TArchiveMember & tMember) { tMember.uDosTime = 0x12345678; })), pzThreeHash);
    EXPECT_EQ(sHash(tThreeWith([](TArchiveMember & tMember) { tMember.fDescriptor = true; })), pzThreeHash);
    EXPECT_EQ(sHash(tThreeWith([](TArchiveMember & tMember) { tMember.fZip64 = true; })), pzThreeHash);
    EXPECT_EQ(sHash(tThreeWith([](TArchiveMember & tMember) { tMember.fZip64 = tMember.fDescriptor = true; })),
              pzThreeHash);
    EXPECT_EQ(sHash(tThreeWith([](TArchiveMember & tMember) { tMember.sComment = "a word"; })), pzThreeHash);
    EXPECT_EQ(sHash(tThreeWith([](TArchiveMember & tMember) { tMember.uFlags = 0x800; })), pzThreeHash);
    // Encrypted: nothing of the contents is read.
    EXPECT_EQ(sHash(tThreeWith([](TArchiveMember & tMember) { tMember.uFlags = 1; })), pzThreeHash);
}

TEST(ZipFileHash, IgnoresTheFormOfTheArchive) {
    EXPECT_EQ(sHash(tThree, {.sComment = std::string(65000, 'c')}), pzThreeHash);
    EXPECT_EQ(sHash(tThree, {.fZip64End = true}), pzThreeHash);
    EXPECT_EQ(sHash(tThree, {.sPrefix = std::string(100'000, 'x')}), pzThreeHash);
}

TEST(ZipFileHash, ChangesWithNameChecksumAndSize) {
    TMembers tMembers = tThree;
    tMembers[0].sName = "b/d.txt";
    EXPECT_EQ(sHash(tMembers), sContentsHash(tMembers));
    EXPECT_NE(sHash(tMembers), pzThreeHash);
    tMembers[0].sName = "b/C.txt"; // case counts
    EXPECT_NE(sHash(tMembers), pzThreeHash);
    tMembers = tThree;
    tMembers[0].sBytes = "gamme";
    EXPECT_EQ(sHash(tMembers), sContentsHash(tMembers));
    EXPECT_NE(sHash(tMembers), pzThreeHash);
    tMembers.pop_back();
    EXPECT_NE(sHash(tMembers), sHash(tThree));
}

TEST(ZipFileHash, HasTheDigitsOfFourWordsInUpperCase) {
    for (int i = 0; i < 40; ++i) {
        std::wstring const sDigits = sHash({{"n" + std::to_string(i)}});
        EXPECT_EQ(sDigits.size(), 32U);
        EXPECT_EQ(sDigits.find_first_not_of(L"0123456789ABCDEF"), std::wstring::npos) << i;
    }
}

TEST(ZipFileHash, SortsNamesByUnsignedBytesTheShorterFirst) {
    // In the order of the hash, and none of them where the archive has it.
    TMembers const tSorted{{"A"}, {"Z"}, {"a"}, {"a.b"}, {"ab"}, {"abc"}, {"\x7F"}, {"\x80"}, {"\xC3\xA4"}, {"\xFF"}};
    TMembers tReversed = tSorted;
    std::ranges::reverse(tReversed);
    EXPECT_EQ(sHash(tReversed), sContentsHash(tSorted));
}

TEST(ZipFileHash, OfMembersWithTheSameNameDoesNotDependOnTheirOrder) {
    TMembers const tTwins{{"a", "one"}, {"a", "two"}, {"a", "three"}};
    EXPECT_EQ(sHash(tTwins), sHash({tTwins[2], tTwins[0], tTwins[1]}));
    EXPECT_NE(sHash(tTwins), sHash({tTwins[2], tTwins[0]}));
}

TEST(ZipFileHash, TakesANameAsItsBytesUpToAZero) {
    EXPECT_EQ(sHash({{"ab\0cd"s, "x"}}), sHash({{"ab", "x"}}));
    EXPECT_EQ(sHash({{"\0"s, "x"}}), sHash({{"", "x"}}));
}

TEST(ZipFileHash, TakesANameUpTo32767Bytes) {
    std::string const sLong(32767, 'n');
    EXPECT_EQ(sHash({{sLong, "x"}}), sContentsHash({{sLong, "x"}}));
    EXPECT_EQ(sHash({{sLong + "m", "x"}}), sContentsHash({{sLong, "x"}}));
    EXPECT_EQ(sHash({{std::string(65535, 'n'), "x"}, {"a"}}), sContentsHash({{"a"}, {sLong, "x"}}));
    // What a longer name leaves in the buffer does not stick to a shorter one.
    EXPECT_EQ(sHash({{sLong, "x"}, {"nn", "y"}}), sContentsHash({{"nn", "y"}, {sLong, "x"}}));
}

TEST(ZipFileHash, TakesASizeModulo4GiB) {
    std::string sArchive = sMakeArchive({{.sName = "big", .sBytes = "12345", .fZip64 = true}});
    // The size in the directory's extra field, which says 5, has a fifth byte.
    std::size_t const uPlace = sArchive.find("big\1\0\x18"sv, sArchive.find(sDirectoryMark)) + 7;
    ASSERT_EQ(sArchive.at(uPlace), 5);
    sArchive.at(uPlace + 4) = 7;
    EXPECT_EQ(sHash(sArchive), sContentsHash({{"big", "12345"}}));
}

TEST(ZipFileHash, OfAnArchiveWithoutMembersIsThatOfNothing) {
    EXPECT_EQ(sContentsHash({}), pzNothingHash);
    EXPECT_EQ(sHash(TMembers{}), pzNothingHash);
    EXPECT_EQ(sHash({}, {.sComment = "nothing"}), pzNothingHash);
    EXPECT_EQ(sHash({}, {.sPrefix = "#!"}), pzNothingHash);
}

TEST(ZipFileHash, OfManyMembersIsThatOfTheirNames) {
    TMembers tMembers(5000);
    std::mt19937 tRandom(20240115);
    for (TArchiveMember & tMember : tMembers) {
        tMember.sName.resize(1 + tRandom() % 40);
        for (char & c : tMember.sName)
            c = static_cast<char>(1 + tRandom() % 255);
        tMember.sName += std::to_string(&tMember - tMembers.data());
        tMember.sBytes.assign(tRandom() % 3000, 'x');
    }
    EXPECT_EQ(sHash(tMembers), sContentsHash(tMembers));
}

// What fails

TEST(ZipFileHash, NamesTheStepThatFailed) {
    std::string sShortName = sMakeArchive({{"a"}}); // says that it has 65,281 bytes, in both headers
    sShortName.at(27) = sShortName.at(sShortName.find(sDirectoryMark) + 29) = '\xFF';
    std::string const sArchive = sMakeArchive(tThree);
    struct TRow {
        char const * pzWhat;
        std::string sBytes;
        char const * pzText;
    } const tRows[] = {
        {"an empty file", "", "unzGetGlobalInfo failed"},
        {"no archive", std::string(5000, 'x'), "unzGetGlobalInfo failed"},
        {"no end", sSpoil(sArchive, "PK\5\6", 0), "unzGetGlobalInfo failed"},
        {"no first entry", sSpoil(sArchive, sDirectoryMark, 0), "unzGoToFirstFile failed"},
        {"no second entry", sSpoil(sArchive, sDirectoryMark, 1), "unzGoToFirstFile failed"},
        {"no first member", sSpoil(sArchive, sMemberMark, 0), "unzOpenCurrentFile failed"},
        {"no third member", sSpoil(sArchive, sMemberMark, 2), "unzOpenCurrentFile failed"},
        {"another method", sMakeArchive({{.sName = "a", .sBytes = "b", .uMethod = 14}}), "unzOpenCurrentFile failed"},
        {"a cut name", sShortName, "unzGetCurrentFileInfo failed"},
    };
    for (TRow const & tRow : tRows)
        EXPECT_EQ(sDamage(tRow.sBytes), tRow.pzText) << tRow.pzWhat;
}

TEST(ZipFileHash, FailsForWhatCannotBeOpened) {
    TTempDirectory const tTemp;
    EXPECT_EQ(sHashFailure(tTemp.sGetPath(L"none.zip")), "unzGetGlobalInfo failed");
    EXPECT_EQ(sHashFailure(tTemp.sGetPath()), "unzGetGlobalInfo failed");
    EXPECT_EQ(sHashFailure(L""), "unzGetGlobalInfo failed");
    std::wstring const sPath = tTemp.sWrite(L"a.zip", sMakeArchive(tThree));
    THandle const hWriter(CreateFileW(sPath.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                      OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(hWriter);
    EXPECT_EQ(sHashFailure(sPath), "unzGetGlobalInfo failed");
}

TEST(ZipFileHash, OpensForReadingAndSharesReadingOnly) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sWrite(L"a.zip", sMakeArchive(tThree));
    TSystemCall<"CreateFileW", decltype(CreateFileW)> tCreate([&](wchar_t const * pzPath, DWORD dwAccess, DWORD dwShare,
                                                                  SECURITY_ATTRIBUTES * pSecurity, DWORD dwDisposition,
                                                                  DWORD dwFlags, HANDLE hTemplate) {
        EXPECT_EQ(pzPath, sPath);
        EXPECT_EQ(dwAccess, GENERIC_READ);
        EXPECT_EQ(dwShare, DWORD{FILE_SHARE_READ});
        EXPECT_EQ(dwDisposition, DWORD{OPEN_EXISTING});
        return tCreate.Original(pzPath, dwAccess, dwShare, pSecurity, dwDisposition, dwFlags, hTemplate);
    });
    EXPECT_EQ(sGetZipFileHash(sPath), pzThreeHash);
    EXPECT_EQ(tCreate.iGetCalls(), 1);
}

TEST(ZipFileHash, TakesPathsOfAnyLength) {
    zk_test::THardToReach const tHard;
    std::wstring const sLongName = std::wstring(251, L'n') + L".zip";
    for (wchar_t const * pzName : {L"a.zip", sLongName.c_str()}) {
        std::wstring const sPath = tHard.sGetPath(pzName);
        zk_test::WriteFileBytes(sPath, sMakeArchive(tThree));
        EXPECT_EQ(sGetZipFileHash(sPath), pzThreeHash);
        EXPECT_TRUE(fIsZipFile(sPath));
        EXPECT_EQ(sGetFileHash(sPath), pzThreeHash);
    }
}

// In 16 bits 65535 means that there are more. minizip does not count then, and reads on behind the last entry.
TEST(ZipFileHash, FailsForExactly65535Members) {
    TMembers tMembers(65535);
    for (std::size_t i = 0; i < tMembers.size(); ++i)
        tMembers[i].sName = std::to_string(i);
    EXPECT_EQ(sDamage(sMakeArchive(tMembers)), "unzGoToFirstFile failed");
    EXPECT_EQ(sDamage(sMakeArchive(tMembers, {.fZip64End = true})), "unzGoToFirstFile failed");
    tMembers.push_back({"one more"});
    EXPECT_EQ(sHash(tMembers, {.fZip64End = true}), sContentsHash(tMembers));
    tMembers.resize(65534);
    EXPECT_EQ(sHash(tMembers), sContentsHash(tMembers));
}

TEST(ZipFileHash, SetsNothingAsideForMembersThatAreOnlyPromised) {
    std::string sArchive = sMakeArchive(tThree, {.fZip64End = true});
    std::size_t const uCounts = sArchive.find("PK\6\6"sv) + 24;
    for (int i : {0, 1, 2, 8, 9, 10}) // 16,777,215 members, in both counts
        sArchive.at(uCounts + static_cast<std::size_t>(i)) = '\xFF';
    for (int i : {3, 11})
        sArchive.at(uCounts + static_cast<std::size_t>(i)) = '\x7F'; // and more
    EXPECT_EQ(sDamage(sArchive), "unzGoToFirstFile failed");
}

TEST(ZipFileHash, OfACutArchiveFailsWhereverItIsCut) {
    TMembers tMembers = tThree;
    tMembers[0].fDescriptor = true;
    tMembers[1].uMethod = 8;
    tMembers[2].fZip64 = true;
    TTempDirectory const tTemp;
    for (bool const fZip64 : {false, true}) {
        std::string const sArchive = sMakeArchive(tMembers, {.fZip64End = fZip64});
        // Behind the locator of the ZIP64 record minizip looks for nothing.
        std::size_t const uNeeded = sArchive.size() - (fZip64 ? 22 : 0);
        for (std::size_t uSize = 0; uSize <= sArchive.size(); ++uSize) {
            std::wstring const sPath = tTemp.sWrite(L"a.zip", std::string_view(sArchive).substr(0, uSize));
            if (uSize < uNeeded) {
                EXPECT_EQ(sHashFailure(sPath), "unzGetGlobalInfo failed") << uSize;
            } else {
                EXPECT_EQ(sGetZipFileHash(sPath), pzThreeHash) << uSize;
            }
            EXPECT_TRUE(zk_test::fIsUnused(sPath)) << uSize;
        }
    }
}

TEST(ZipFileHash, OfADamagedArchiveIsSomeHashOrAFailure) {
    TMembers tMembers = tThree;
    tMembers[0].fZip64 = true;
    std::string const sArchive = sMakeArchive(tMembers, {.sComment = "no comment", .fZip64End = true});
    TTempDirectory const tTemp;
    int iFailed = 0;
    for (std::size_t uPlace = 0; uPlace < sArchive.size(); ++uPlace) {
        for (int const iFlip : {1, 0xFF}) {
            std::string sDamaged = sArchive;
            sDamaged[uPlace] = static_cast<char>(sDamaged[uPlace] ^ iFlip);
            std::wstring const sPath = tTemp.sWrite(L"a.zip", sDamaged);
            try {
                EXPECT_EQ(sGetZipFileHash(sPath).size(), 32U);
            } catch (std::runtime_error const & tFailure) {
                EXPECT_EQ(typeid(tFailure), typeid(std::runtime_error));
                ++iFailed;
            }
            EXPECT_TRUE(zk_test::fIsUnused(sPath)) << uPlace;
        }
    }
    EXPECT_GT(iFailed, 100);
}

// Failing system calls

TEST(ZipFileHash, FailsWhenTheFileCannotBeReadAnyMore) {
    using TRead = TSystemCall<"ReadFile", decltype(ReadFile)>;
    TTempDirectory const tTemp;
    TMembers tMembers = tThree;
    tMembers[1].sBytes.assign(100'000, 'x'); // the first header and the directory lie far from one another
    std::wstring const sPath = tTemp.sWrite(L"a.zip", sMakeArchive(tMembers));
    // What becomes of it when reading fails from the n-th time on.
    auto const sFailFrom = [&sPath](int iFirst, int & iReads) {
        TRead tRead([&](HANDLE h, void * pTarget, DWORD dwSize, DWORD * pdwRead, OVERLAPPED * pOverlapped) {
            iReads = tRead.iGetCalls();
            if (iReads >= iFirst) return tFailWith(ERROR_NETNAME_DELETED, FALSE);
            return tRead.Original(h, pTarget, dwSize, pdwRead, pOverlapped);
        });
        return sHashFailure(sPath);
    };
    int iAll = 0;
    int iReads = 0;
    EXPECT_EQ(sFailFrom(1'000'000, iAll), "nothing thrown");
    EXPECT_EQ(sFailFrom(1, iReads), "unzGetGlobalInfo failed");
    EXPECT_EQ(sFailFrom(iAll, iReads), "unzOpenCurrentFile failed");
    EXPECT_TRUE(zk_test::fIsUnused(sPath));
}

TEST(ZipFileHash, ReadsInBlocks) {
    TMembers tMembers(2000);
    for (std::size_t i = 0; i < tMembers.size(); ++i)
        tMembers[i].sName = "member " + std::to_string(i);
    std::string const sArchive = sMakeArchive(tMembers);
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sWrite(L"a.zip", sArchive);
    TSystemCall<"ReadFile", decltype(ReadFile)> tRead(
        [&tRead](HANDLE h, void * pTarget, DWORD dwSize, DWORD * pdwRead, OVERLAPPED * pOverlapped) {
            return tRead.Original(h, pTarget, dwSize, pdwRead, pOverlapped);
        });
    EXPECT_EQ(sGetZipFileHash(sPath), sContentsHash(tMembers));
    // Every block once, and those at the end a second and a third time, to find the end record.
    EXPECT_LT(tRead.iGetCalls(), static_cast<int>(sArchive.size() / 4096 + 2 * 65536 / 4096 + 4));
}

/// Counts what is released, by the calls of the system's own functions.
struct TReleases {
    TSystemCall<"CryptReleaseContext", decltype(CryptReleaseContext)> tProvider{
        [this](HCRYPTPROV h, DWORD dw) { return tProvider.Original(h, dw); }};
    TSystemCall<"CryptDestroyHash", decltype(CryptDestroyHash)> tHash{
        [this](HCRYPTHASH h) { return tHash.Original(h); }};
    [[nodiscard]] std::array<int, 2> iGetCalls() const { return {tProvider.iGetCalls(), tHash.iGetCalls()}; }
};

class ZipFileHashCrypto : public testing::Test {
protected:
    /// The failure, with the file closed and so many providers and hashes released.
    void Expect(char const * pzText, std::array<int, 2> iReleased) const {
        TReleases const tReleases;
        EXPECT_EQ(sHashFailure(sPath), pzText);
        EXPECT_EQ(tReleases.iGetCalls(), iReleased);
        EXPECT_TRUE(zk_test::fIsUnused(sPath));
    }
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sWrite(L"a.zip", sMakeArchive(tThree));
};

TEST_F(ZipFileHashCrypto, AsksForAProviderWithoutKeys) {
    TSystemCall<"CryptAcquireContextW", decltype(CryptAcquireContextW)> const tCall(
        [](HCRYPTPROV *, wchar_t const * pzContainer, wchar_t const * pzProvider, DWORD dwType, DWORD dwFlags) {
            EXPECT_EQ(pzContainer, nullptr);
            EXPECT_EQ(pzProvider, nullptr);
            EXPECT_EQ(dwType, 1U);
            EXPECT_EQ(dwFlags, 0xF0000000);
            return tFailWith(ERROR_ACCESS_DENIED, FALSE);
        });
    Expect("CryptAcquireContext failed", {0, 0});
}

TEST_F(ZipFileHashCrypto, TellsAMissingHashByTheTextOfTheProvider) {
    TSystemCall<"CryptCreateHash", decltype(CryptCreateHash)> const tCall(
        [](HCRYPTPROV, ALG_ID uAlgorithm, HCRYPTKEY, DWORD, HCRYPTHASH *) {
            EXPECT_EQ(uAlgorithm, 32772U);
            return tFailWith(ERROR_ACCESS_DENIED, FALSE);
        });
    Expect("CryptAcquireContext failed", {1, 0});
}

TEST_F(ZipFileHashCrypto, TellsThatTheDataWereRefused) {
    TSystemCall<"CryptHashData", decltype(CryptHashData)> const tCall(
        [](HCRYPTHASH, BYTE const *, DWORD dwSize, DWORD) {
            EXPECT_EQ(dwSize, 3 * 8 + "a.txt"sv.size() + "b/"sv.size() + "b/c.txt"sv.size());
            return tFailWith(ERROR_ACCESS_DENIED, FALSE);
        });
    Expect("CryptHashData failed", {1, 1});
}

TEST_F(ZipFileHashCrypto, TellsThatThereIsNoDigest) {
    TSystemCall<"CryptGetHashParam", decltype(CryptGetHashParam)> const tCall(
        [](HCRYPTHASH, DWORD dwParam, BYTE *, DWORD * pdwSize, DWORD) {
            EXPECT_EQ(dwParam, DWORD{HP_HASHVAL});
            EXPECT_EQ(*pdwSize, 20U);
            return tFailWith(ERROR_ACCESS_DENIED, FALSE);
        });
    Expect("CryptGetHashParam failed", {1, 1});
}

TEST_F(ZipFileHashCrypto, IsReleasedWhenAllGoesWell) {
    TReleases const tReleases;
    EXPECT_EQ(sGetZipFileHash(sPath), pzThreeHash);
    EXPECT_EQ(tReleases.iGetCalls(), (std::array{1, 1}));
}

TEST(ZipFileHash, LeavesNoHandle) {
    TTempDirectory const tTemp;
    std::wstring const sGood = tTemp.sWrite(L"good.zip", sMakeArchive(tThree));
    std::wstring const sBare = tTemp.sWrite(L"bare.zip", sMakeArchive({}));
    std::wstring const sBad = tTemp.sWrite(L"bad.zip", sSpoil(sMakeArchive(tThree), sMemberMark, 1));
    zk_test::ExpectNoHandleLeak([&] {
        EXPECT_EQ(sGetFileHash(sGood), pzThreeHash);
        EXPECT_EQ(sGetZipFileHash(sBare), pzNothingHash);
        EXPECT_EQ(sHashFailure(sBad), "unzOpenCurrentFile failed");
    });
}

// fIsZipFile

TEST(IsZipFile, LooksAtTheFirstFourBytes) {
    TTempDirectory const tTemp;
    struct TRow {
        std::string_view sBytes;
        bool fZip;
    } const tRows[] = {
        {"PK\3\4", true},      {"PK\3\4 and on", true},  {"", false},        {"P", false},
        {"PK", false},         {"PK\3", false},          {"PK\3\5", false},  {"pk\3\4", false},
        {"PK\5\6", false},     {"PK\1\2", false},        {" PK\3\4", false}, {"\4\3KP", false},
        {"\0\0\0\0"sv, false}, {"PK\7\10PK\3\4", false},
    };
    for (TRow const & tRow : tRows)
        EXPECT_EQ(fIsZipFile(tTemp.sWrite(L"file", tRow.sBytes)), tRow.fZip) << tRow.sBytes;
}

TEST(IsZipFile, IsFalseForWhatCannotBeRead) {
    TTempDirectory const tTemp;
    EXPECT_FALSE(fIsZipFile(tTemp.sGetPath(L"none")));
    EXPECT_FALSE(fIsZipFile(tTemp.sGetPath()));
    EXPECT_FALSE(fIsZipFile(L""));
    std::wstring const sPath = tTemp.sWrite(L"a.zip", "PK\3\4");
    TSystemCall<"ReadFile", decltype(ReadFile)> const tRead([](HANDLE, void * pTarget, DWORD, DWORD *, OVERLAPPED *) {
        std::copy_n("PK\3\4", 4, static_cast<char *>(pTarget));
        return tFailWith(ERROR_LOCK_VIOLATION, FALSE);
    });
    EXPECT_FALSE(fIsZipFile(sPath));
    EXPECT_TRUE(zk_test::fIsUnused(sPath));
}

TEST(IsZipFile, SharesReadingAndDeletion) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sWrite(L"a.zip", "PK\3\4");
    auto const fIsZipBeside = [&sPath](DWORD dwAccess) {
        THandle const hOther(CreateFileW(sPath.c_str(), dwAccess,
                                         FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                         0, nullptr));
        EXPECT_TRUE(hOther);
        return fIsZipFile(sPath);
    };
    EXPECT_TRUE(fIsZipBeside(GENERIC_READ));
    EXPECT_TRUE(fIsZipBeside(DELETE));
    EXPECT_FALSE(fIsZipBeside(GENERIC_WRITE));
    TSystemCall<"CreateFileW", decltype(CreateFileW)> tCreate([&](wchar_t const * pzPath, DWORD dwAccess, DWORD dwShare,
                                                                  SECURITY_ATTRIBUTES * pSecurity, DWORD dwDisposition,
                                                                  DWORD dwFlags, HANDLE hTemplate) {
        EXPECT_EQ(dwAccess, GENERIC_READ);
        EXPECT_EQ(dwShare, 5U);
        EXPECT_EQ(dwDisposition, DWORD{OPEN_EXISTING});
        EXPECT_EQ(dwFlags, DWORD{FILE_ATTRIBUTE_NORMAL});
        return tCreate.Original(pzPath, dwAccess, dwShare, pSecurity, dwDisposition, dwFlags, hTemplate);
    });
    EXPECT_TRUE(fIsZipFile(sPath));
}

// The hash of the bytes

TEST(MsiGetFileHash, IsThatOfTheBytes) {
    TTempDirectory const tTemp;
    EXPECT_EQ(sMsiGetFileHash(tTemp.sWrite(L"alpha", "alpha")), pzAlphaHash);
    // Unlike that of the members, it changes with the form of an archive.
    std::wstring const sStored = tTemp.sWrite(L"a.zip", sMakeArchive(tThree));
    std::wstring const sZip64 = tTemp.sWrite(L"b.zip", sMakeArchive(tThree, {.fZip64End = true}));
    EXPECT_NE(sMsiGetFileHash(sStored), sMsiGetFileHash(sZip64));
    EXPECT_EQ(sMsiGetFileHash(sStored).size(), 32U);
}

TEST(MsiGetFileHash, FailsInItsOwnWords) {
    TTempDirectory const tTemp;
    try {
        static_cast<void>(sMsiGetFileHash(tTemp.sGetPath(L"none")));
        ADD_FAILURE();
    } catch (TXZkTools const & tFailure) {
        EXPECT_STREQ(tFailure.what(), "MsiGetFileHash failed");
        EXPECT_EQ(tFailure.iGetNumber(), -1);
    }
    EXPECT_THROW(static_cast<void>(sGetFileHash(tTemp.sGetPath(L"none"))), TXZkTools);
}

// Which of the two

TEST(GetFileHash, IsThatOfTheMembersForAnArchive) {
    TTempDirectory const tTemp;
    EXPECT_EQ(sGetFileHash(tTemp.sWrite(L"a.dat", sMakeArchive(tThree))), pzThreeHash);
    EXPECT_EQ(sGetFileHash(tTemp.sWrite(L"alpha.zip", "alpha")), pzAlphaHash);
}

TEST(GetFileHash, OfAnArchiveThatUnpacksItselfIsThatOfItsBytes) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sWrite(L"setup.exe", sMakeArchive(tThree, {.sPrefix = "MZ"}));
    EXPECT_EQ(sGetZipFileHash(sPath), pzThreeHash);
    EXPECT_EQ(sGetFileHash(sPath), sMsiGetFileHash(sPath));
}

TEST(GetFileHash, OfAnArchiveWithoutMembersIsThatOfItsBytes) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sWrite(L"a.zip", sMakeArchive({}));
    EXPECT_EQ(sGetFileHash(sPath), sMsiGetFileHash(sPath));
}

TEST(GetFileHash, DoesNotFallBackOnTheBytesOfADamagedArchive) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sWrite(L"a.zip", "PK\3\4 and no more");
    EXPECT_EQ(sFailure([&] { static_cast<void>(sGetFileHash(sPath)); }), "unzGetGlobalInfo failed");
}

// A file that vanishes behind the look at its first bytes is an archive still, and cannot be opened.
TEST(GetFileHash, FailsWhenTheFileVanishes) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sWrite(L"a.zip", sMakeArchive(tThree));
    TSystemCall<"CreateFileW", decltype(CreateFileW)> tCreate([&](wchar_t const * pzPath, DWORD dwAccess, DWORD dwShare,
                                                                  SECURITY_ATTRIBUTES * pSecurity, DWORD dwDisposition,
                                                                  DWORD dwFlags, HANDLE hTemplate) {
        if (tCreate.iGetCalls() == 2) DeleteFileW(pzPath);
        return tCreate.Original(pzPath, dwAccess, dwShare, pSecurity, dwDisposition, dwFlags, hTemplate);
    });
    EXPECT_EQ(sFailure([&] { static_cast<void>(sGetFileHash(sPath)); }), "unzGetGlobalInfo failed");
    EXPECT_EQ(tCreate.iGetCalls(), 2);
}

TEST(GetFileHash, FailsWhereAccessIsDenied) {
    TTempDirectory const tTemp;
    std::wstring const sPath = tTemp.sWrite(L"a.zip", sMakeArchive(tThree));
    TSystemCall<"CreateFileW", decltype(CreateFileW)> const tCreate(
        [](wchar_t const *, DWORD, DWORD, SECURITY_ATTRIBUTES *, DWORD, DWORD, HANDLE) {
            return tFailWith(ERROR_ACCESS_DENIED, INVALID_HANDLE_VALUE);
        });
    EXPECT_FALSE(fIsZipFile(sPath));
    EXPECT_EQ(sHashFailure(sPath), "unzGetGlobalInfo failed");
}

} // namespace
