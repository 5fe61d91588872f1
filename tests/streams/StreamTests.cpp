// The binary half of TStreamBase, and TBlob.
#include "ZkTools/Stream.h"

#include "ZkTools/Exceptions.h"
#include "ZkTools/MessageIds.h"

#include "tests/support/VirtualSlot.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

using zk_test::iVirtualSlot;

namespace {

/// The number of the exception that the call throws; 0 when it throws none.
template <typename TCall>
int iThrownNumber(TCall fCall) {
    try {
        fCall();
    } catch (TXZkTools const & tError) {
        return tError.iGetNumber();
    }
    return 0;
}

std::string sBytes(TBlob const & tBlob) {
    return {reinterpret_cast<char const *>(tBlob.pData), tBlob.dwUsed};
}

struct TOpenStream : TStreamBase {
    using TStreamBase::AllocUTF8Buffer;
    using TStreamBase::BufAlloc;
    using TStreamBase::iConvertBufferSize;
    using TStreamBase::pBlob;
    using TStreamBase::pConvertBuffer;
    using TStreamBase::TStreamBase;
    using TStreamBase::uCodePage;
};

} // namespace

TEST(TBlob, StartsWithoutMemory) {
    TBlob const tBlob;
    EXPECT_EQ(tBlob.pData, nullptr);
    EXPECT_EQ(tBlob.dwPos, 0u);
    EXPECT_EQ(tBlob.dwUsed, 0u);
    EXPECT_EQ(tBlob.dwCapacity, 0u);
    EXPECT_TRUE(tBlob.fOwner);
    EXPECT_FALSE(tBlob.fDirty);
    EXPECT_EQ(TBlob(0ul).pData, nullptr);
}

TEST(TBlob, ReservesWithAZeroGuardBehindTheCapacity) {
    for (unsigned long const dwSize : {1ul, 2ul, 63ul, 64ul, 65ul, 127ul, 128ul, 1000ul, 4096ul, 65536ul, 1000000ul}) {
        TBlob const tBlob(dwSize);
        EXPECT_EQ(tBlob.dwCapacity, dwSize);
        EXPECT_EQ(tBlob.dwGetSize(), dwSize);
        EXPECT_EQ(tBlob.dwUsed, 0u);
        EXPECT_EQ(tBlob.pData[dwSize], 0);
        std::memset(tBlob.pData, 0xEE, dwSize);
    }
}

TEST(TBlob, ViewsForeignMemory) {
    char const acData[] = {1, 2, 3};
    TBlob const tBlob(acData, 3);
    EXPECT_EQ(static_cast<void const *>(tBlob.pData), acData);
    EXPECT_EQ(tBlob.dwCapacity, 3u);
    EXPECT_EQ(tBlob.dwUsed, 3u);
    EXPECT_FALSE(tBlob.fOwner);
    EXPECT_FALSE(tBlob.fDirty);
}

TEST(TBlob, PutGrowsToExactlyWhatIsNeeded) {
    TBlob tBlob(4);
    tBlob.Put("ab", 2);
    EXPECT_EQ(tBlob.dwCapacity, 4u);
    EXPECT_TRUE(tBlob.fDirty);
    tBlob.Put("cdef", 4);
    EXPECT_EQ(tBlob.dwCapacity, 6u);
    EXPECT_EQ(tBlob.dwUsed, 6u);
    EXPECT_EQ(tBlob.dwPos, 6u);
    EXPECT_EQ(tBlob.pData[6], 0);
    EXPECT_EQ(sBytes(tBlob), "abcdef");
}

TEST(TBlob, PutInTheMiddleKeepsTheSize) {
    TBlob tBlob;
    tBlob.Put("abcdef", 6);
    tBlob.dwPos = 1;
    tBlob.Put("X", 1);
    EXPECT_EQ(tBlob.dwPos, 2u);
    EXPECT_EQ(tBlob.dwUsed, 6u);
    EXPECT_EQ(sBytes(tBlob), "aXcdef");
}

TEST(TBlob, PutWithinAViewWritesIntoIt) {
    char acData[] = "abc";
    TBlob tBlob(acData, 3);
    tBlob.Put("X", 1);
    EXPECT_STREQ(acData, "Xbc");
    EXPECT_FALSE(tBlob.fOwner);
}

TEST(TBlob, GetAndSkipStayInsideTheData) {
    TBlob tBlob(100);
    tBlob.Put("abc", 3);
    tBlob.dwPos = 1;
    char acTarget[4] = {};
    EXPECT_EQ(iThrownNumber([&] { tBlob.Get(nullptr, 1); }), IDS_NULL_READ_BUFFER);
    EXPECT_EQ(iThrownNumber([&] { tBlob.Get(nullptr, 9); }), IDS_NULL_READ_BUFFER);
    EXPECT_EQ(iThrownNumber([&] { tBlob.Get(acTarget, 3); }), IDS_READ_PAST_END);
    EXPECT_EQ(iThrownNumber([&] { tBlob.Skip(3); }), IDS_READ_PAST_END);
    EXPECT_EQ(iThrownNumber([&] { tBlob.Skip(0xFFFFFFFF); }), IDS_READ_PAST_END); // 1 + 0xFFFFFFFF does not wrap
    EXPECT_EQ(tBlob.dwPos, 1u);
    tBlob.Get(acTarget, 2);
    EXPECT_STREQ(acTarget, "bc");
    EXPECT_EQ(tBlob.dwPos, 3u);
}

TEST(TBlob, ReAllocGrowsAnExactMultipleByAWholeStep) {
    struct {
        unsigned long dwSize, dwGranularity, dwCapacity;
    } const atRows[] = {{64, 64, 128}, {63, 64, 64}, {65, 64, 128}, {64, 0, 64}, {1, 1, 2}, {0, 64, 64}, {5, 0, 5}};
    for (auto const & tRow : atRows) {
        TBlob tBlob(10);
        tBlob.Put("0123456789", 10);
        tBlob.ReAlloc(tRow.dwSize, tRow.dwGranularity);
        EXPECT_EQ(tBlob.dwCapacity, tRow.dwCapacity) << tRow.dwSize << ' ' << tRow.dwGranularity;
        EXPECT_EQ(tBlob.dwUsed, 10u);
        EXPECT_EQ(tBlob.dwPos, 10u);
        EXPECT_EQ(tBlob.pData[tRow.dwCapacity], 0);
        EXPECT_EQ(std::memcmp(tBlob.pData, "0123456789", std::min(10ul, tRow.dwCapacity)), 0);
    }
}

TEST(TBlob, ReAllocToTheCapacityDoesNothingWhateverTheGranularity) {
    TBlob tBlob(10);
    tBlob.ReAlloc(10, 64);
    EXPECT_EQ(tBlob.dwCapacity, 10u);
    TBlob tView("0123456789", 10); // which stays one
    tView.ReAlloc(10, 0);
    EXPECT_FALSE(tView.fOwner);
    tView.Alloc(10);
    EXPECT_FALSE(tView.fOwner);
}

TEST(TBlob, ReAllocMakesAnOwnedCopyOfAView) {
    char acData[] = "abcdef";
    TBlob tBlob(acData, 6);
    tBlob.dwPos = 2;
    tBlob.ReAlloc(8, 0);
    EXPECT_TRUE(tBlob.fOwner);
    EXPECT_EQ(tBlob.dwCapacity, 8u);
    EXPECT_EQ(tBlob.dwPos, 2u);
    EXPECT_EQ(sBytes(tBlob), "abcdef");
    tBlob.Put("XY", 2);
    EXPECT_STREQ(acData, "abcdef");
}

TEST(TBlob, KeepsAllItsDataWhenMadeSmaller) {
    std::string sData(100'000, '\0');
    for (std::size_t u = 0; u < sData.size(); ++u)
        sData[u] = static_cast<char>(u % 251 + 1);
    auto const dwSize = static_cast<unsigned long>(sData.size());
    TBlob tOwned;
    tOwned.Put(sData.data(), dwSize);
    TBlob tView(sData.data(), dwSize);
    for (TBlob * pSmaller : {&tOwned, &tView}) {
        pSmaller->ReAlloc(10, 0);
        TBlob tCopy(*pSmaller);
        TBlob tAssigned(3);
        tAssigned = *pSmaller;
        for (TBlob * pBlob : {pSmaller, &tCopy, &tAssigned}) {
            EXPECT_EQ(pBlob->dwCapacity, 10u);
            EXPECT_EQ(pBlob->dwUsed, dwSize);
            EXPECT_TRUE(pBlob->fOwner);
            EXPECT_EQ(pBlob->pData[10], 0); // the guard
            EXPECT_EQ(sBytes(*pBlob).substr(11), sData.substr(11));
            EXPECT_EQ(sBytes(*pBlob).substr(0, 10), sData.substr(0, 10));
        }
    }
}

TEST(TBlob, AllocOfTheSameSizeKeepsContentsAndPosition) {
    TBlob tBlob(3);
    tBlob.Put("abc", 3);
    tBlob.Alloc(3);
    EXPECT_EQ(tBlob.dwPos, 3u);
    EXPECT_EQ(sBytes(tBlob), "abc");
    tBlob.Alloc(4);
    EXPECT_EQ(tBlob.dwUsed, 0u);
    EXPECT_EQ(tBlob.dwPos, 0u);
    EXPECT_FALSE(tBlob.fDirty);
    tBlob.Alloc(0);
    ASSERT_NE(tBlob.pData, nullptr);
    EXPECT_EQ(tBlob.dwCapacity, 0u);
    EXPECT_EQ(tBlob.pData[0], 0);
}

TEST(TBlob, ResetKeepsTheMemoryAndReleaseDoesNot) {
    TBlob tBlob(3);
    tBlob.Put("abc", 3);
    tBlob.Reset();
    EXPECT_EQ(tBlob.dwCapacity, 3u);
    EXPECT_EQ(tBlob.dwUsed, 0u);
    EXPECT_EQ(tBlob.dwPos, 0u);
    EXPECT_FALSE(tBlob.fDirty);
    tBlob.Release();
    EXPECT_EQ(tBlob.pData, nullptr);
    EXPECT_EQ(tBlob.dwCapacity, 0u);
}

TEST(TBlob, AssignOfTextViewsAsManyBytesAsItHasUnitsAndOne) {
    std::wstring const sText = L"abc";
    TBlob tBlob;
    tBlob.Assign(sText);
    EXPECT_EQ(tBlob.dwUsed, 4u);
    EXPECT_EQ(tBlob.dwCapacity, 4u);
    EXPECT_FALSE(tBlob.fOwner);
    EXPECT_EQ(sBytes(tBlob), std::string("a\0b\0", 4));
}

TEST(TBlob, AssignmentMakesADeepCopyOfAllThatIsReserved) {
    TBlob tSource(8);
    tSource.Put("abcd", 4);
    tSource.dwPos = 2;
    TBlob tCopy;
    tCopy = tSource;
    EXPECT_NE(tCopy.pData, tSource.pData);
    EXPECT_EQ(tCopy.dwCapacity, 8u);
    EXPECT_EQ(tCopy.dwPos, 2u);
    EXPECT_EQ(tCopy.dwUsed, 4u);
    EXPECT_TRUE(tCopy.fDirty);
    EXPECT_TRUE(tCopy.fOwner);
    EXPECT_EQ(tCopy.pData[8], 0);
    EXPECT_EQ(sBytes(tCopy), "abcd");
    TBlob & tSame = tCopy;
    tCopy = tSame;
    EXPECT_EQ(sBytes(tCopy), "abcd");
    tCopy = TBlob();
    EXPECT_EQ(tCopy.pData, nullptr);
}

TEST(TBlob, RefusesToReach4GiBAndStaysAsItWas) {
    TBlob tBlob(4);
    tBlob.Put("abcd", 4);
    EXPECT_THROW(tBlob.Put("x", 0xFFFFFFFF), std::length_error);
    EXPECT_THROW(tBlob.ReAlloc(0xFFFFFFF0, 64), std::length_error);
    EXPECT_EQ(tBlob.dwCapacity, 4u);
    EXPECT_EQ(sBytes(tBlob), "abcd");
}

TEST(TBlob, KeepsItsDataThroughAnyOrderOfSizes) {
    std::mt19937 tRandom(20240115);
    TBlob tBlob;
    std::string sExpected;
    for (int i = 0; i < 20000; ++i) {
        switch (tRandom() % 8) {
        case 0:
            tBlob.ReAlloc(tRandom() % 3000, tRandom() % 3 == 0 ? 64 : 0);
            // What a smaller capacity cut off is written anew, and so is the byte that the guard took.
            tBlob.dwPos = 0;
            tBlob.Put(sExpected.data(), static_cast<unsigned long>(sExpected.size()));
            break;
        case 1:
            if (sExpected.size() > 2500) {
                tBlob.Reset();
                sExpected.clear();
            }
            break;
        default:
            std::string const sPiece(tRandom() % 40, static_cast<char>('a' + i % 26));
            tBlob.Put(sPiece.data(), static_cast<unsigned long>(sPiece.size()));
            sExpected += sPiece;
        }
        ASSERT_EQ(sBytes(tBlob), sExpected);
        if (tBlob.pData != nullptr && tBlob.dwCapacity >= tBlob.dwUsed) {
            ASSERT_EQ(tBlob.pData[tBlob.dwCapacity], 0);
        }
    }
}

TEST(TStreamBase, KeepsTheOrderOfItsVirtualOperations) {
    using T = TStreamBase;
    int iNext = zk_test::iBehindDestructor;
    auto const Expect = [&iNext](int iFound) { EXPECT_EQ(iFound, iNext++); };
    Expect(iVirtualSlot(&T::Flush));
    Expect(iVirtualSlot(static_cast<void (T::*)(void *, unsigned long)>(&T::ReadData)));
    Expect(iVirtualSlot(static_cast<void (T::*)(void const *, unsigned long)>(&T::WriteData)));
    Expect(iVirtualSlot(&T::Seek));
    Expect(iVirtualSlot(&T::fIsEoF));
    Expect(iVirtualSlot(&T::dwGetSize));
    Expect(iVirtualSlot(&T::dwGetPos));
    Expect(iVirtualSlot(&T::SetPos));
    Expect(iVirtualSlot(static_cast<void (T::*)(std::wstring &)>(&T::Read)));
    Expect(iVirtualSlot(static_cast<void (T::*)(__int64 &)>(&T::Read)));
    Expect(iVirtualSlot(static_cast<void (T::*)(unsigned __int64 &)>(&T::Read)));
    Expect(iVirtualSlot(static_cast<void (T::*)(int &)>(&T::Read)));
    Expect(iVirtualSlot(static_cast<void (T::*)(unsigned int &)>(&T::Read)));
    Expect(iVirtualSlot(static_cast<void (T::*)(short &)>(&T::Read)));
    Expect(iVirtualSlot(static_cast<void (T::*)(unsigned short &)>(&T::Read)));
    Expect(iVirtualSlot(static_cast<void (T::*)(long &)>(&T::Read)));
    Expect(iVirtualSlot(static_cast<void (T::*)(unsigned long &)>(&T::Read)));
    Expect(iVirtualSlot(static_cast<void (T::*)(char &)>(&T::Read)));
    Expect(iVirtualSlot(static_cast<void (T::*)(wchar_t &)>(&T::Read)));
    Expect(iVirtualSlot(static_cast<void (T::*)(unsigned char &)>(&T::Read)));
    Expect(iVirtualSlot(&T::ReadChar));
    Expect(iVirtualSlot(&T::PeekChar));
    Expect(iVirtualSlot(&T::SkipChars));
    Expect(iVirtualSlot(&T::Peek));
    Expect(iVirtualSlot(static_cast<void (T::*)(std::wstring &)>(&T::ReadString)));
    Expect(iVirtualSlot(static_cast<void (T::*)(wchar_t *, unsigned long)>(&T::ReadString)));
    Expect(iVirtualSlot(&T::ReadStringForPascal));
    Expect(iVirtualSlot(&T::ReadPascalString));
    Expect(iVirtualSlot(&T::ReadPascalStringInt16));
    Expect(iVirtualSlot(&T::Read8BitChars));
    Expect(iVirtualSlot(&T::Read8BitBlob));
    Expect(iVirtualSlot(&T::ReadToDelim));
    Expect(iVirtualSlot(static_cast<void (T::*)(std::wstring &)>(&T::Readln)));
    Expect(iVirtualSlot(static_cast<void (T::*)(wchar_t *, unsigned long)>(&T::Readln)));
    Expect(iVirtualSlot(static_cast<void (T::*)(wchar_t const *, unsigned long)>(&T::Write)));
    Expect(iVirtualSlot(static_cast<void (T::*)(wchar_t const *)>(&T::Write)));
    Expect(iVirtualSlot(static_cast<void (T::*)(std::wstring const &)>(&T::Write)));
    Expect(iVirtualSlot(static_cast<void (T::*)(__int64 const &)>(&T::Write)));
    Expect(iVirtualSlot(static_cast<void (T::*)(unsigned __int64 const &)>(&T::Write)));
    Expect(iVirtualSlot(static_cast<void (T::*)(int const &)>(&T::Write)));
    Expect(iVirtualSlot(static_cast<void (T::*)(unsigned int const &)>(&T::Write)));
    Expect(iVirtualSlot(static_cast<void (T::*)(short const &)>(&T::Write)));
    Expect(iVirtualSlot(static_cast<void (T::*)(unsigned short const &)>(&T::Write)));
    Expect(iVirtualSlot(static_cast<void (T::*)(long const &)>(&T::Write)));
    Expect(iVirtualSlot(static_cast<void (T::*)(unsigned long const &)>(&T::Write)));
    Expect(iVirtualSlot(static_cast<void (T::*)(char const &)>(&T::Write)));
    Expect(iVirtualSlot(static_cast<void (T::*)(wchar_t const &)>(&T::Write)));
    Expect(iVirtualSlot(static_cast<void (T::*)(unsigned char const &)>(&T::Write)));
    Expect(iVirtualSlot(&T::WriteChar));
    Expect(iVirtualSlot(static_cast<void (T::*)(std::wstring const &)>(&T::WriteString)));
    Expect(iVirtualSlot(static_cast<void (T::*)(wchar_t const *)>(&T::WriteString)));
    Expect(iVirtualSlot(&T::WritePascalString));
    Expect(iVirtualSlot(&T::Write8BitChars));
    Expect(iVirtualSlot(&T::Write8BitBlob));
    Expect(iVirtualSlot(&T::WritePascalStringInt16));
    Expect(iVirtualSlot(static_cast<void (T::*)(std::wstring const &)>(&T::Writeln)));
    Expect(iVirtualSlot(static_cast<void (T::*)(wchar_t const *)>(&T::Writeln)));
    Expect(iVirtualSlot(&T::WriteXML));
    Expect(iVirtualSlot(&T::WriteXMLComment));
    Expect(iVirtualSlot(&T::fIsBinary));

    struct TReach : T {
        static int iFilled() { return iVirtualSlot(&TReach::EnsureBufferFilled); }
    };
    Expect(TReach::iFilled());
}

TEST(TStreamBase, TakesALongAndNothingElseAsDistance) {
    EXPECT_TRUE((std::is_convertible_v<long, TLongOnly>));
    EXPECT_FALSE((std::is_convertible_v<int, TLongOnly>));
    EXPECT_FALSE((std::is_convertible_v<unsigned long, TLongOnly>));
    EXPECT_FALSE((std::is_convertible_v<__int64, TLongOnly>));
    EXPECT_FALSE((std::is_convertible_v<double, TLongOnly>));
}

TEST(TStreamBase, HasNoBlockUntilTheFirstWrite) {
    TOpenStream tStream;
    EXPECT_EQ(tStream.pBlob, nullptr);
    EXPECT_EQ(tStream.pGetData(), nullptr);
    EXPECT_EQ(tStream.pGetDataAtPos(), nullptr);
    EXPECT_EQ(tStream.dwBufGetSize(), 0u);
    EXPECT_TRUE(tStream.fIsEoF());
    tStream.Seek(5L, 0); // without a block nothing is out of range
    tStream.SetPos(5);
    tStream.WriteData("0123456789", 10);
    EXPECT_EQ(tStream.dwBufGetSize(), 10u);
    EXPECT_EQ(tStream.dwGetSize(), 10u);
    EXPECT_EQ(tStream.dwGetPos(), 10u);
    EXPECT_TRUE(tStream.fIsEoF());

    TOpenStream const tEmpty(0ul);
    EXPECT_EQ(tEmpty.pBlob, nullptr);
}

TEST(TStreamBase, TellsTheBytesWrittenAndTheBlockTheBytesReserved) {
    TStreamBase tStream(100ul);
    EXPECT_TRUE(tStream.fIsEoF());
    tStream.WriteData("0123456789", 10);
    EXPECT_EQ(tStream.dwGetSize(), 10u);
    EXPECT_EQ(tStream.dwBufGetSize(), 100u);
}

TEST(TStreamBase, ReadsTheCallersMemory) {
    char const acData[] = {1, 2, 3, 4};
    TStreamBase tStream(acData, 4);
    EXPECT_EQ(static_cast<void *>(tStream.pGetData()), acData);
    int iValue = 0;
    tStream.Read(iValue);
    EXPECT_EQ(iValue, 0x04030201);
    EXPECT_TRUE(tStream.fIsEoF());
    unsigned char uByte = 77;
    tStream.Peek(uByte);
    EXPECT_EQ(uByte, 0); // nothing is read behind the caller's memory
}

TEST(TStreamBase, WorksOnACopyOfABlockFromItsPosition) {
    TBlob tBlob;
    tBlob.Put("abc", 3);
    tBlob.dwPos = 1;
    TStreamBase tStream(tBlob);
    char c = 0;
    tStream.Read(c);
    EXPECT_EQ(c, 'b');
    tStream.Write('X');
    EXPECT_EQ(sBytes(tBlob), "abc");
    EXPECT_EQ(tBlob.dwPos, 1u);
}

TEST(TStreamBase, MovesNumbersInMachineOrder) {
    TStreamBase tStream;
    tStream.Write(static_cast<char>(0x01));
    tStream.Write(static_cast<unsigned char>(0xFE));
    tStream.Write(static_cast<short>(-2));
    tStream.Write(static_cast<unsigned short>(0x1234));
    tStream.Write(0x01020304);
    tStream.Write(0xF1F2F3F4u);
    tStream.Write(-3L);
    tStream.Write(0x0A0B0C0DuL);
    tStream.Write(static_cast<__int64>(0x0102030405060708));
    tStream.Write(static_cast<unsigned __int64>(0xF1F2F3F4F5F6F7F8));
    std::string const sExpected(
        "\x01\xFE\xFE\xFF\x34\x12\x04\x03\x02\x01\xF4\xF3\xF2\xF1\xFD\xFF\xFF\xFF\x0D\x0C\x0B\x0A"
        "\x08\x07\x06\x05\x04\x03\x02\x01\xF8\xF7\xF6\xF5\xF4\xF3\xF2\xF1",
        38);
    ASSERT_EQ(tStream.dwGetSize(), 38u);
    EXPECT_EQ(std::string(reinterpret_cast<char *>(tStream.pGetData()), 38), sExpected);

    tStream.Seek(0L, 0);
    char c = 0;
    unsigned char uc = 0;
    short i16 = 0;
    unsigned short u16 = 0;
    int i32 = 0;
    unsigned int u32 = 0;
    long l32 = 0;
    unsigned long dw32 = 0;
    __int64 i64 = 0;
    unsigned __int64 u64 = 0;
    tStream.Read(c);
    tStream.Read(uc);
    tStream.Read(i16);
    tStream.Read(u16);
    tStream.Read(i32);
    tStream.Read(u32);
    tStream.Read(l32);
    tStream.Read(dw32);
    tStream.Read(i64);
    tStream.Read(u64);
    EXPECT_EQ(c, 1);
    EXPECT_EQ(uc, 0xFE);
    EXPECT_EQ(i16, -2);
    EXPECT_EQ(u16, 0x1234);
    EXPECT_EQ(i32, 0x01020304);
    EXPECT_EQ(u32, 0xF1F2F3F4u);
    EXPECT_EQ(l32, -3);
    EXPECT_EQ(dw32, 0x0A0B0C0Du);
    EXPECT_EQ(i64, 0x0102030405060708);
    EXPECT_EQ(u64, 0xF1F2F3F4F5F6F7F8u);
    EXPECT_TRUE(tStream.fIsEoF());
}

TEST(TStreamBase, NumbersIgnoreTheCodePage) {
    for (ECodePage const eCodePage : {ecpUtf16, ecpUtf16Swapped, ecpUtf8, ecpJapanese}) {
        TStreamBase tStream(eCodePage);
        tStream.Write(0x01020304);
        EXPECT_EQ(std::string(reinterpret_cast<char *>(tStream.pGetData()), 4), "\x04\x03\x02\x01");
    }
}

TEST(TStreamBase, WritesNothingForAWideCharacter) {
    TStreamBase tStream(ecpUtf8);
    tStream.Write(L'A');
    EXPECT_EQ(tStream.pGetData(), nullptr);
    tStream.WriteChar(L'B');
    tStream.Write(L'A');
    EXPECT_EQ(tStream.dwGetSize(), 1u);
    tStream.Seek(0L, 0);
    wchar_t c = 0;
    tStream.Read(c); // the counterpart does read
    EXPECT_EQ(c, L'B');
}

TEST(TStreamBase, AFailedReadLeavesPositionAndTarget) {
    char const acData[] = {1, 2, 3};
    TStreamBase tStream(acData, 3);
    tStream.SetPos(1);
    int iValue = 77;
    EXPECT_EQ(iThrownNumber([&] { tStream.Read(iValue); }), IDS_READ_PAST_END);
    EXPECT_EQ(iThrownNumber([&] { tStream.ReadData(nullptr, 1); }), IDS_NULL_READ_BUFFER);
    EXPECT_EQ(iThrownNumber([&] { tStream.ReadData(&iValue, 0xFFFFFFFF); }), IDS_READ_PAST_END);
    EXPECT_EQ(iValue, 77);
    EXPECT_EQ(tStream.dwGetPos(), 1u);
    TStreamBase tEmpty;
    EXPECT_EQ(iThrownNumber([&] { tEmpty.Read(iValue); }), IDS_READ_PAST_END);
}

TEST(TStreamBase, SeeksUpToTheEndAndNotBeyond) {
    constexpr int iNoFailure = 0;
    struct {
        long lDistance;
        int iOrigin;
        unsigned long dwFrom, dwTo;
        int iThrown;
    } const atRows[] = {
        {0, 0, 5, 0, iNoFailure},
        {10, 0, 5, 10, iNoFailure},
        {11, 0, 5, 5, IDS_SEEK_OUT_OF_RANGE},
        {-1, 0, 5, 5, IDS_SEEK_OUT_OF_RANGE},
        {-5, 1, 5, 0, iNoFailure},
        {-6, 1, 5, 5, IDS_SEEK_OUT_OF_RANGE},
        {5, 1, 5, 10, iNoFailure},
        {6, 1, 5, 5, IDS_SEEK_OUT_OF_RANGE},
        {0, 2, 5, 10, iNoFailure},
        {-10, 2, 5, 0, iNoFailure},
        {-11, 2, 5, 5, IDS_SEEK_OUT_OF_RANGE},
        {1, 2, 5, 5, IDS_SEEK_OUT_OF_RANGE},
        {0x7FFFFFFF, 1, 5, 5, IDS_SEEK_OUT_OF_RANGE},
        {std::numeric_limits<long>::min(), 1, 5, 5, IDS_SEEK_OUT_OF_RANGE},
        {3, 7, 5, 0, iNoFailure}, // any other origin is the start, whatever the distance
        {-3, -1, 5, 0, iNoFailure},
        {1000, 3, 5, 0, iNoFailure},
    };
    for (auto const & tRow : atRows) {
        TStreamBase tStream("0123456789", 10);
        tStream.SetPos(tRow.dwFrom);
        EXPECT_EQ(iThrownNumber([&] { tStream.Seek(tRow.lDistance, tRow.iOrigin); }), tRow.iThrown);
        EXPECT_EQ(tStream.dwGetPos(), tRow.dwTo) << tRow.lDistance << " from " << tRow.iOrigin;
    }
}

TEST(TStreamBase, SeeksToTheDataNotToTheCapacity) {
    TStreamBase tStream(100ul);
    tStream.WriteData("abc", 3);
    EXPECT_EQ(iThrownNumber([&] { tStream.Seek(4L, 0); }), IDS_SEEK_OUT_OF_RANGE);
    EXPECT_EQ(iThrownNumber([&] { tStream.SetPos(4); }), IDS_SEEK_OUT_OF_RANGE);
    EXPECT_EQ(tStream.dwGetPos(), 3u);
    tStream.SetPos(3); // the end itself
    EXPECT_TRUE(tStream.fIsEoF());
    tStream.SetPos(0);
    EXPECT_EQ(tStream.dwGetPos(), 0u);
    EXPECT_FALSE(tStream.fIsEoF());
}

TEST(TStreamBase, PeeksAtTheGuardAtTheEndOfFullMemory) {
    TStreamBase tStream(2ul);
    tStream.WriteData("\xEE\xEE", 2);
    unsigned char uByte = 77;
    tStream.Peek(uByte);
    EXPECT_EQ(uByte, 0);
    tStream.SetPos(1);
    tStream.Peek(uByte);
    EXPECT_EQ(uByte, 0xEE);
    EXPECT_EQ(tStream.dwGetPos(), 1u);
}

TEST(TStreamBase, KeepsTheNumberOfItsCodePage) {
    TOpenStream tStream(ecpUtf8);
    EXPECT_EQ(tStream.uCodePage, 65001);
    EXPECT_EQ(tStream.eGetCodePage(), ecpUtf8);
    tStream.SetCodePage(ecpUtf16Swapped);
    EXPECT_EQ(tStream.uCodePage, 1201);
    EXPECT_EQ(tStream.eGetCodePage(), ecpUtf16Swapped);
    EXPECT_EQ(TOpenStream().uCodePage, uGetCodePage(ecpDefault));
    EXPECT_TRUE(tStream.fIsBinary());
}

TEST(TStreamBase, GrowsTheConversionBufferInStepsOf1024AndNeverShrinksIt) {
    TOpenStream tStream;
    EXPECT_EQ(tStream.iConvertBufferSize, 2048);
    struct {
        int iAsked, iSize;
    } const atRows[] = {{0, 2048}, {2048, 2048}, {2049, 3072}, {3072, 3072}, {3073, 4096}, {8192, 9216}, {1, 9216}};
    for (auto const & tRow : atRows) {
        tStream.AllocUTF8Buffer(tRow.iAsked);
        EXPECT_EQ(tStream.iConvertBufferSize, tRow.iSize) << tRow.iAsked;
        ASSERT_NE(tStream.pConvertBuffer, nullptr);
    }
}

TEST(TStreamBase, BufAllocMakesTheBlockOrGivesItFreshMemory) {
    TOpenStream tStream;
    tStream.BufAlloc(5);
    EXPECT_EQ(tStream.dwBufGetSize(), 5u);
    tStream.WriteData("abc", 3);
    tStream.BufAlloc(5);
    EXPECT_EQ(tStream.dwGetSize(), 3u);
    tStream.BufAlloc(6);
    EXPECT_EQ(tStream.dwGetSize(), 0u);
    EXPECT_EQ(tStream.dwBufGetSize(), 6u);
}
