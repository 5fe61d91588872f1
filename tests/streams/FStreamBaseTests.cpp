// The buffered device stream, over a device of the test's own that notes every call.
#include "ZkTools/FileStream.h"

#include "ZkTools/Exceptions.h"
#include "ZkTools/MessageIds.h"
#include "tests/support/VirtualSlot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

using namespace std::string_literals;
using namespace std::string_view_literals;

namespace {

class TDeviceStream : public TFStreamBase {
public:
    explicit TDeviceStream(std::string sBytes = {}, unsigned long dwBufferSize = 4096, int iNewMode = FS_BINARY,
                           ECodePage eCodePage = ecpWestern)
        : TFStreamBase(dwBufferSize), sDevice(std::move(sBytes)) {
        SetCodePage(eCodePage);
        TFStreamBase::Open(L"device", iNewMode);
        dwFileSize = static_cast<unsigned long>(sDevice.size());
    }

    unsigned long dwDeviceRead(void * pTarget, unsigned long dwCount) override {
        Note("read " + std::to_string(dwCount));
        if (fFail) throw std::runtime_error("device");
        std::size_t const uLeft = uDevicePos < sDevice.size() ? sDevice.size() - uDevicePos : 0;
        std::size_t const uPiece = std::min<std::size_t>(dwCount, uLeft);
        if (uPiece != 0) std::memcpy(pTarget, sDevice.data() + uDevicePos, uPiece);
        uDevicePos += uPiece;
        return static_cast<unsigned long>(uPiece);
    }
    void DeviceWrite(void const * pSource, unsigned long dwCount) override {
        Note("write " + std::to_string(dwCount));
        if (fFail) throw std::runtime_error("device");
        if (sDevice.size() < uDevicePos + dwCount) sDevice.resize(uDevicePos + dwCount);
        if (dwCount != 0) std::memcpy(sDevice.data() + uDevicePos, pSource, dwCount);
        uDevicePos += dwCount;
    }
    void DeviceSeek(__int64 iPos, int iOrigin) override {
        Note("seek " + std::to_string(iPos) + " " + std::to_string(iOrigin));
        if (fFail || iPos < 0) throw std::runtime_error("device");
        uDevicePos = static_cast<std::size_t>(iPos);
    }

    /// What the device was asked for since the last look.
    std::string sTakeCalls() { return std::exchange(sCalls, {}); }

    std::string sDevice;
    std::size_t uDevicePos = 0;
    bool fFail = false;

    using TFStreamBase::dwBufferBase;
    using TFStreamBase::dwFileSize;
    using TFStreamBase::EnsureBufferFilled;
    using TFStreamBase::iMode;
    using TFStreamBase::pBlob;

private:
    void Note(std::string const & sCall) { sCalls += (sCalls.empty() ? "" : ", ") + sCall; }

    std::string sCalls;
};

std::string sRead(TFStreamBase & tStream, unsigned long dwCount) {
    std::string sResult(dwCount, '.');
    tStream.ReadData(sResult.data(), dwCount);
    return sResult;
}

int iThrownNumber(std::function<void()> const & fCall) {
    try {
        fCall();
    } catch (TXZkTools const & tError) {
        return tError.iGetNumber();
    }
    return 0;
}

std::vector<std::wstring> asReadLines(TFStreamBase & tStream) {
    std::vector<std::wstring> asLines;
    while (!tStream.fIsEoF()) {
        std::wstring sLine;
        tStream.Readln(sLine);
        asLines.push_back(sLine);
    }
    return asLines;
}

} // namespace

TEST(TFStreamBase, KeepsTheOrderOfItsVirtualOperations) {
    using T = TFStreamBase;
    using zk_test::iVirtualSlot;
    struct TReach : TStreamBase {
        static int iLast() { return iVirtualSlot(&TReach::EnsureBufferFilled); }
    };
    int iNext = TReach::iLast() + 1;
    auto const Expect = [&iNext](int iFound) { EXPECT_EQ(iFound, iNext++); };
    Expect(iVirtualSlot(&T::Open));
    Expect(iVirtualSlot(&T::BufFlush));
    Expect(iVirtualSlot(static_cast<void (T::*)(std::wstring &, unsigned long)>(&T::ReadData)));
    Expect(iVirtualSlot(&T::BufFill));
    Expect(iVirtualSlot(&T::dwDeviceRead));
    Expect(iVirtualSlot(&T::DeviceWrite));
    Expect(iVirtualSlot(&T::DeviceSeek));
    Expect(iVirtualSlot(&T::iOpenModeConvert));
    Expect(iVirtualSlot(&T::iSeekBaseConvert));
    Expect(iVirtualSlot(&T::TestGoodness));
    using TF = TFStream;
    Expect(iVirtualSlot(static_cast<void (TF::*)(std::wstring const &, ECodePage, int)>(&TF::Open)));
    Expect(iVirtualSlot(static_cast<void (TF::*)(wchar_t const *, ECodePage, int)>(&TF::Open)));
    Expect(iVirtualSlot(&TF::SetEndOfFile));
    Expect(iVirtualSlot(&TF::fLockFile));
    Expect(iVirtualSlot(&TF::fUnlockFile));
    Expect(iVirtualSlot(&TF::fIsOpen));
}

TEST(TFStreamBase, AnswersMinusOneAndNothingForWhatDevicesDecide) {
    TDeviceStream tStream;
    EXPECT_EQ(tStream.iOpenModeConvert(FS_CREATE), -1);
    EXPECT_EQ(tStream.iSeekBaseConvert(1), -1);
    tStream.TestGoodness(4260);
}

TEST(TFStreamBase, HasABufferOf4096BytesUnlessToldOtherwise) {
    struct TDefault : TDeviceStream {
        using TDeviceStream::TDeviceStream;
    };
    EXPECT_EQ(TDefault().dwBufGetSize(), 4096u);
    EXPECT_EQ(TDeviceStream("", 100).dwBufGetSize(), 100u);
    EXPECT_EQ(TDeviceStream("", 0).pBlob, nullptr);
}

// Reading bytes

TEST(TFStreamBase, ReadsThroughTheBuffer) {
    TDeviceStream tStream("0123456789", 4);
    EXPECT_EQ(sRead(tStream, 3), "012");
    EXPECT_EQ(tStream.sTakeCalls(), "read 4");
    EXPECT_EQ(tStream.dwGetPos(), 3u);
    EXPECT_EQ(sRead(tStream, 4), "3456");
    EXPECT_EQ(tStream.sTakeCalls(), "read 4");
    EXPECT_EQ(sRead(tStream, 2), "78");
    EXPECT_EQ(tStream.sTakeCalls(), "read 2"); // the rest of the file
    EXPECT_EQ(tStream.dwGetPos(), 9u);
    EXPECT_EQ(tStream.dwGetSize(), 10u);
    EXPECT_FALSE(tStream.fIsEoF());
}

TEST(TFStreamBase, DeliversLessAtTheEndWithoutAFailure) {
    TDeviceStream tStream("abcdef");
    EXPECT_EQ(sRead(tStream, 10), "abcdef....");
    EXPECT_TRUE(tStream.fIsEoF());
    EXPECT_EQ(sRead(tStream, 2), "..");
    int iValue = 77;
    tStream.Read(iValue);
    EXPECT_EQ(iValue, 77);
}

TEST(TFStreamBase, ReadsStraightFromTheDeviceWithoutABuffer) {
    TDeviceStream tStream("0123456789", 0);
    EXPECT_EQ(sRead(tStream, 3), "012");
    EXPECT_EQ(sRead(tStream, 9), "3456789..");
    EXPECT_EQ(tStream.sTakeCalls(), "read 3, read 9");
    EXPECT_EQ(tStream.dwGetPos(), 10u);
    EXPECT_EQ(tStream.pBlob, nullptr);
}

TEST(TFStreamBase, NoBytesDoNothingAndANullTargetFails) {
    for (unsigned long const dwBuffer : {0ul, 4096ul}) {
        TDeviceStream tStream("\xEF\xBB\xBF", dwBuffer, 0);
        tStream.ReadData(static_cast<void *>(nullptr), 0);
        EXPECT_EQ(iThrownNumber([&] { tStream.ReadData(static_cast<void *>(nullptr), 1); }), IDS_NULL_READ_BUFFER);
        EXPECT_EQ(tStream.dwGetPos(), 0u);
        EXPECT_EQ(tStream.sTakeCalls(), "");
        EXPECT_FALSE(tStream.fHasByteOrderMark());
    }
}

TEST(TFStreamBase, AFileThatEndsEarlyEndsTheReading) {
    TDeviceStream tStream("abc");
    tStream.dwFileSize = 100;
    EXPECT_EQ(sRead(tStream, 10), "abc.......");
    std::wstring sText;
    EXPECT_EQ(iThrownNumber([&] { tStream.ReadString(sText); }), IDS_READ_PAST_END);
}

// Writing bytes

TEST(TFStreamBase, WritesThroughTheBuffer) {
    TDeviceStream tStream("", 4);
    tStream.WriteData("012", 3);
    EXPECT_EQ(tStream.sTakeCalls(), "");
    EXPECT_EQ(tStream.dwGetPos(), 3u);
    EXPECT_EQ(tStream.dwGetSize(), 3u);
    tStream.WriteData("34567", 5);
    EXPECT_EQ(tStream.sTakeCalls(), "seek 0 0, write 4");
    EXPECT_EQ(tStream.dwGetPos(), 8u);
    tStream.BufFlush();
    EXPECT_EQ(tStream.sTakeCalls(), "seek 4 0, write 4");
    EXPECT_EQ(tStream.sDevice, "01234567");
    EXPECT_EQ(tStream.dwGetPos(), 8u);
}

TEST(TFStreamBase, WritesStraightToTheDeviceWithoutABuffer) {
    TDeviceStream tStream("", 0);
    tStream.WriteData("012", 3);
    tStream.WriteData("34", 2);
    EXPECT_EQ(tStream.sTakeCalls(), "write 3, write 2");
    EXPECT_EQ(tStream.dwGetPos(), 5u);
    EXPECT_EQ(tStream.dwGetSize(), 5u);
    tStream.BufFlush();
    EXPECT_EQ(tStream.sTakeCalls(), "");
}

TEST(TFStreamBase, WritesNothingForNoBytesOrNoSource) {
    TDeviceStream tStream("", 0);
    tStream.WriteData(nullptr, 5);
    tStream.WriteData("x", 0);
    EXPECT_EQ(tStream.sTakeCalls(), "");
    EXPECT_EQ(tStream.dwGetSize(), 0u);
}

TEST(TFStreamBase, WritesIntoTheMiddleOfWhatTheBufferHolds) {
    TDeviceStream tStream("0123456789");
    EXPECT_EQ(sRead(tStream, 4), "0123");
    tStream.WriteData("X", 1);
    EXPECT_EQ(tStream.dwGetPos(), 5u);
    tStream.BufFlush(); // all that the buffer holds, and on from the position
    EXPECT_EQ(tStream.sTakeCalls(), "read 10, seek 0 0, write 10");
    EXPECT_EQ(tStream.sDevice, "0123X56789");
    EXPECT_EQ(tStream.dwGetPos(), 5u);
    EXPECT_EQ(tStream.dwGetSize(), 10u);
    tStream.Seek(0L, 1);
    EXPECT_EQ(sRead(tStream, 5), "56789");
}

TEST(TFStreamBase, FlushesAFullBufferOfReadDataInFrontOfAWrite) {
    TDeviceStream tStream("01234567", 4);
    EXPECT_EQ(sRead(tStream, 1), "0");
    tStream.WriteData("X", 1);
    EXPECT_EQ(tStream.sTakeCalls(), "read 4, seek 0 0, write 4");
    tStream.Seek(0L, 0);
    EXPECT_EQ(tStream.sDevice, "0X234567");
}

TEST(TFStreamBase, RefusesToWriteBeyond4GiB) {
    TDeviceStream tStream("", 4096);
    tStream.SetPos(0xFFFFFFFD);
    tStream.WriteData("ab", 2);
    EXPECT_NE(iThrownNumber([&] { tStream.WriteData("c", 1); }), 0);
    EXPECT_EQ(tStream.dwGetPos(), 0xFFFFFFFFu);
    EXPECT_EQ(tStream.dwGetSize(), 0xFFFFFFFFu);
}

TEST(TFStreamBase, AFailedFlushLeavesTheBufferToBeFlushedAgain) {
    TDeviceStream tStream("");
    tStream.WriteData("abc", 3);
    tStream.fFail = true;
    EXPECT_THROW(tStream.BufFlush(), std::runtime_error);
    EXPECT_THROW(tStream.Seek(0L, 0), std::runtime_error);
    EXPECT_TRUE(tStream.pBlob->fDirty);
    EXPECT_EQ(tStream.dwGetPos(), 3u);
    tStream.fFail = false;
    tStream.BufFlush();
    EXPECT_EQ(tStream.sDevice, "abc");
}

// Moving

TEST(TFStreamBase, SeeksAndFlushesWhatWasWritten) {
    struct {
        long lDistance;
        int iOrigin;
        unsigned long dwTo;
        char const * pzCalls;
    } const atRows[] = {
        {0, 0, 0, "seek 0 0"},  {12, 0, 12, "seek 12 0"}, {2, 1, 5, "seek 5 0"},
        {-3, 1, 0, "seek 0 0"}, {-1, 2, 9, "seek 9 0"},   {5, 2, 15, "seek 15 0"},
        {5, 3, 0, "seek 0 0"},  {-5, 7, 0, "seek 0 0"},   {-5, -1, 0, "seek 0 0"},
    };
    for (auto const & tRow : atRows) {
        TDeviceStream tStream("0123456789");
        EXPECT_EQ(sRead(tStream, 3), "012");
        tStream.sTakeCalls();
        tStream.Seek(tRow.lDistance, tRow.iOrigin);
        EXPECT_EQ(tStream.dwGetPos(), tRow.dwTo) << tRow.lDistance << ' ' << tRow.iOrigin;
        EXPECT_EQ(tStream.sTakeCalls(), tRow.pzCalls);
        EXPECT_EQ(tStream.pBlob->dwUsed, 0u);
    }
    TDeviceStream tWritten("");
    tWritten.WriteData("abc", 3);
    tWritten.Seek(1L, 0);
    EXPECT_EQ(tWritten.sTakeCalls(), "seek 0 0, write 3, seek 1 0");
    EXPECT_EQ(sRead(tWritten, 2), "bc");
}

TEST(TFStreamBase, AFailedSeekLeavesPositionAndBuffer) {
    TDeviceStream tStream("0123456789");
    EXPECT_EQ(sRead(tStream, 3), "012");
    EXPECT_THROW(tStream.Seek(-4L, 1), std::runtime_error); // for the device to refuse
    EXPECT_EQ(tStream.dwGetPos(), 3u);
    EXPECT_EQ(sRead(tStream, 3), "345");

    tStream.dwFileSize = 0xFFFFFFF0; // 4 GiB are refused in front of the device
    tStream.sTakeCalls();
    EXPECT_EQ(iThrownNumber([&] { tStream.Seek(16L, 2); }), IDS_SEEK_OUT_OF_RANGE);
    EXPECT_EQ(tStream.sTakeCalls(), "");
    EXPECT_EQ(tStream.dwGetPos(), 6u);
    tStream.Seek(15L, 2);
    EXPECT_EQ(tStream.dwGetPos(), 0xFFFFFFFFu);
    EXPECT_EQ(iThrownNumber([&] { tStream.Seek(1L, 1); }), IDS_SEEK_OUT_OF_RANGE);
    EXPECT_EQ(tStream.dwGetPos(), 0xFFFFFFFFu);
}

TEST(TFStreamBase, SetPosGoesAnywhere) {
    TDeviceStream tStream("0123456789");
    tStream.SetPos(0xFFFFFFF0);
    EXPECT_EQ(tStream.dwGetPos(), 0xFFFFFFF0u);
    EXPECT_EQ(tStream.sTakeCalls(), "seek 4294967280 0");
    tStream.SetPos(4);
    EXPECT_EQ(sRead(tStream, 2), "45");
    tStream.WriteData("X", 1);
    tStream.SetPos(12);
    tStream.WriteData("Y", 1);
    EXPECT_EQ(tStream.dwGetSize(), 13u);
    tStream.BufFlush();
    EXPECT_EQ(tStream.sDevice, "012345X789\0\0Y"s);
}

TEST(TFStreamBase, IsAtTheEndThereAloneAndNotBehindIt) {
    TDeviceStream tStream("abc");
    tStream.SetPos(3);
    EXPECT_TRUE(tStream.fIsEoF());
    tStream.SetPos(4);
    EXPECT_FALSE(tStream.fIsEoF());
    EXPECT_EQ(sRead(tStream, 2), "..");
    wchar_t c = 0;
    EXPECT_EQ(iThrownNumber([&] { tStream.ReadChar(c); }), IDS_READ_PAST_END);
    EXPECT_EQ(tStream.dwGetPos(), 4u);
}

TEST(TFStreamBase, OpenDropsWhatTheBufferHolds) {
    TDeviceStream tStream("abc");
    tStream.WriteData("X", 1);
    tStream.TFStreamBase::Open(L"", FS_TEMPORARY); // the empty name is one
    EXPECT_EQ(tStream.sGetName(), L".$$$");
    EXPECT_FALSE(tStream.pBlob->fDirty);
    EXPECT_EQ(tStream.pBlob->dwUsed, 0u);
    EXPECT_EQ(tStream.dwGetPos(), 0u);
    EXPECT_EQ(tStream.sDevice, "abc");
}

TEST(TFStreamBase, BufFillDropsWhatWasWrittenAndNotFlushed) {
    TDeviceStream tStream("0123456789", 4);
    EXPECT_EQ(sRead(tStream, 2), "01");
    tStream.pBlob->Put("XY", 2);
    tStream.BufFill();
    EXPECT_EQ(tStream.dwGetPos(), 4u);
    EXPECT_EQ(sRead(tStream, 2), "45");
    EXPECT_EQ(tStream.sDevice, "0123456789");
}

// The byte order mark

TEST(TFStreamBase, ReadsTheMark) {
    struct {
        std::string sBytes;
        ECodePage eCodePage;
        unsigned long dwBehind;
    } const atRows[] = {
        {"\xEF\xBB\xBFz", ecpUtf8, 3},  {"\xFF\xFEz\0"s, ecpUtf16, 2}, {"\xFE\xFF\0z"s, ecpUtf16Swapped, 2},
        {"\xEF\xBBzz", ecpJapanese, 0}, {"\xFFz", ecpJapanese, 0},     {"z", ecpJapanese, 0},
        {"\xFF\xFE", ecpUtf16, 2},      {"\xEF\xBB\xBF", ecpUtf8, 3},
    };
    for (auto const & tRow : atRows) {
        for (unsigned long const dwBuffer : {0ul, 1ul, 2ul, 3ul, 4096ul}) {
            TDeviceStream tStream(tRow.sBytes, dwBuffer, 0, ecpJapanese);
            char cFirst = '.';
            if (tRow.dwBehind == tRow.sBytes.size() && dwBuffer == 0) {
                // A direct read behind the mark is the device's matter.
                tStream.ReadData(&cFirst, 1);
            } else {
                tStream.Read(cFirst);
            }
            EXPECT_EQ(tStream.eGetCodePage(), tRow.eCodePage) << dwBuffer;
            EXPECT_EQ(tStream.fHasByteOrderMark(), tRow.dwBehind != 0) << dwBuffer;
            bool const fMore = tRow.dwBehind < tRow.sBytes.size();
            EXPECT_EQ(cFirst, fMore ? tRow.sBytes[tRow.dwBehind] : '.') << dwBuffer;
            EXPECT_EQ(tStream.dwGetPos(), tRow.dwBehind + (fMore ? 1 : 0)) << dwBuffer;
        }
    }
}

TEST(TFStreamBase, DoesNotLookForTheMarkInABinaryStream) {
    TDeviceStream tStream("\xEF\xBB\xBF", 4096, FS_BINARY);
    EXPECT_TRUE(tStream.fIsBinary());
    EXPECT_EQ(sRead(tStream, 3), "\xEF\xBB\xBF");
    EXPECT_FALSE(tStream.fHasByteOrderMark());
    EXPECT_EQ(tStream.eGetCodePage(), ecpWestern);
    EXPECT_FALSE(TDeviceStream("", 0, 0).fIsBinary());
}

TEST(TFStreamBase, LooksForTheMarkWheneverItStandsAtTheStart) {
    TDeviceStream tStream("\xEF\xBB\xBF"
                          "a",
                          4096, 0);
    std::wstring sText;
    tStream.ReadString(sText);
    EXPECT_EQ(sText, L"a");
    tStream.SetCodePage(ecpWestern);
    tStream.Seek(0L, 0);
    tStream.ReadString(sText);
    EXPECT_EQ(sText, L"a");
    EXPECT_EQ(tStream.eGetCodePage(), ecpUtf8);
}

TEST(TFStreamBase, WritesTheMarkInFrontOfTheFirstByteBinaryOrNot) {
    struct {
        ECodePage eCodePage;
        int iMode;
        std::string sMark;
    } const atRows[] = {
        {ecpUtf16, FS_BINARY, "\xFF\xFE"},
        {ecpUtf16, 0, "\xFF\xFE"},
        {ecpUtf16Swapped, 0, "\xFE\xFF"},
        {ecpUtf8, 0, ""},
        {ecpUtf8, FS_BYTE_ORDER_MARK, "\xEF\xBB\xBF"},
        {ecpWestern, FS_BYTE_ORDER_MARK, ""},
    };
    for (auto const & tRow : atRows) {
        for (unsigned long const dwBuffer : {0ul, 1ul, 4096ul}) {
            TDeviceStream tStream("", dwBuffer, tRow.iMode, tRow.eCodePage);
            tStream.Write('x');
            tStream.Write('y');
            tStream.BufFlush();
            EXPECT_EQ(tStream.sDevice, tRow.sMark + "xy");
            tStream.SetPos(0); // and again whenever the stream stands there
            tStream.WriteData(nullptr, 0);
            EXPECT_EQ(tStream.dwGetPos(), tRow.sMark.size());
        }
    }
}

// Text

TEST(TFStreamBase, ReadsLines) {
    TDeviceStream tStream("ab\r\nc\rd\r\r\n\x1A"
                          "e\\\nf\ng\\",
                          4096, 0);
    EXPECT_EQ(asReadLines(tStream), (std::vector<std::wstring>{L"ab", L"c\rd",
                                                               L"\x1A"
                                                               L"e\\\nf",
                                                               L"g\\"}));
}

TEST(TFStreamBase, AnEscapedBackslashDoesNotKeepTheLineGoing) {
    TDeviceStream tStream("a\\\\\nb", 4096, 0);
    EXPECT_EQ(asReadLines(tStream), (std::vector<std::wstring>{L"a\\\\", L"b"}));
}

TEST(TFStreamBase, ReadsAFileOfAMarkAndNothingElse) {
    for (std::string const & sMark : {"\xEF\xBB\xBF"s, "\xFF\xFE"s, "\xFE\xFF"s}) {
        for (unsigned long const dwBuffer : {0ul, 4096ul}) {
            TDeviceStream tStream(sMark, dwBuffer, 0);
            std::wstring sText = L"x";
            tStream.Readln(sText);
            EXPECT_EQ(sText, L"");
            EXPECT_TRUE(tStream.fIsEoF());
            TDeviceStream tCharacters(sMark, dwBuffer, 0);
            sText = L"x";
            tCharacters.ReadData(sText, 5);
            EXPECT_EQ(sText, L"");
            TDeviceStream tOne(sMark, dwBuffer, 0);
            wchar_t c = 0;
            EXPECT_EQ(iThrownNumber([&] { tOne.ReadChar(c); }), IDS_READ_PAST_END);
        }
    }
}

TEST(TFStreamBase, ReadsAnEmptyFile) {
    for (unsigned long const dwBuffer : {0ul, 4096ul}) {
        TDeviceStream tStream("", dwBuffer, 0);
        std::wstring sText = L"x";
        EXPECT_TRUE(tStream.fIsEoF());
        tStream.Readln(sText);
        EXPECT_EQ(sText, L"");
        sText = L"x";
        tStream.ReadString(sText);
        EXPECT_EQ(sText, L"");
    }
}

TEST(TFStreamBase, ReadToDelimReplacesTheText) {
    TDeviceStream tStream("a\\,b,c,", 4096, 0);
    std::wstring sText = L"before";
    tStream.ReadToDelim(sText, L',', L'\\', false, 0);
    EXPECT_EQ(sText, L"a\\,b");
    tStream.ReadToDelim(sText, L',', L'\\', true, 0);
    EXPECT_EQ(sText, L"c,");
    tStream.ReadToDelim(sText, L',', L'\\', true, 0);
    EXPECT_EQ(sText, L"");
    TDeviceStream tUtf8("a\\,b,c", 4096, 0, ecpUtf8);
    tUtf8.ReadToDelim(sText, L',', L'\\', false, 0);
    EXPECT_EQ(sText, L"a\\,b");
    EXPECT_EQ(tUtf8.dwGetPos(), 5u);
}

TEST(TFStreamBase, AnEscapeThatIsTheDelimiterDoesNotEndTheText) {
    for (ECodePage const eCodePage : {ecpUtf8, ecpWestern}) {
        TDeviceStream tStream("a,,b,c", 4096, FS_BINARY, eCodePage);
        std::wstring sText;
        tStream.ReadToDelim(sText, L',', L',', false, 0);
        EXPECT_EQ(sText, L"a,,b,c");
    }
}

TEST(TFStreamBase, NeverStores0xFFFF) {
    std::string const sBytes = "a\0\xFF\xFF"
                               "b\0\xFF\xFF"
                               "c\0"s;
    TDeviceStream tStream(sBytes, 4096, FS_BINARY, ecpUtf16);
    std::wstring sText;
    tStream.ReadToDelim(sText, L'x', 0, false, 0);
    EXPECT_EQ(sText, L"abc");
    for (bool const fKeep : {false, true}) {
        tStream.SetPos(0);
        tStream.ReadToDelim(sText, L'\uFFFF', 0, fKeep, 0); // as the delimiter it ends the text, and is not stored
        EXPECT_EQ(sText, L"a");
        EXPECT_EQ(tStream.dwGetPos(), 4u);
    }
    TDeviceStream tEscaped("\\\0\xFF\xFF\n\0b\0"s, 4096, FS_BINARY, ecpUtf16);
    tEscaped.Readln(sText); // it takes up the escape, so that the line ends behind it
    EXPECT_EQ(sText, L"\\");
}

TEST(TFStreamBase, ReadsAStringUpToAZeroThatIsNotEscaped) {
    TDeviceStream tStream("ab\0c\\\0d\0e"s, 4096, 0);
    std::wstring sText;
    tStream.ReadString(sText);
    EXPECT_EQ(sText, L"ab");
    tStream.ReadString(sText);
    EXPECT_EQ(sText, L"c\\\0d"s);
    tStream.ReadString(sText);
    EXPECT_EQ(sText, L"e");
}

TEST(TFStreamBase, ReadsIntoBuffersCutAndFilledUp) {
    wchar_t ac[6] = L"xxxxx";
    TDeviceStream tStream("ab\0cdefghij\0k"s, 4096, 0);
    tStream.ReadString(ac, 6);
    EXPECT_EQ(std::wstring(ac, 6), L"ab\0\0\0\0"s);
    tStream.ReadString(ac, 6);
    EXPECT_STREQ(ac, L"cdefg"); // the rest of the text is passed over
    tStream.ReadString(nullptr, 6);
    EXPECT_TRUE(tStream.fIsEoF());
    TDeviceStream tLines("abcdefgh\r\nij\n", 4096, 0);
    tLines.Readln(ac, 6);
    EXPECT_STREQ(ac, L"abcde");
    tLines.Readln(ac, 6);
    EXPECT_EQ(std::wstring(ac, 6), L"ij\0\0\0\0"s);
}

TEST(TFStreamBase, ReadsACountOfCharacters) {
    TDeviceStream tStream("\xC3\xA4"
                          "bc",
                          4096, FS_BINARY, ecpUtf8);
    std::wstring sText = L"x";
    tStream.ReadData(sText, 0);
    EXPECT_EQ(sText, L"x");
    tStream.ReadData(sText, 2);
    EXPECT_EQ(sText, L"\u00E4"
                     L"b");
    tStream.ReadData(sText, 9);
    EXPECT_EQ(sText, L"c");
    tStream.ReadData(sText, 9);
    EXPECT_EQ(sText, L"");
}

TEST(TFStreamBase, AFailedLineLeavesTheCallersTextAndThePositionOfTheCharacter) {
    TDeviceStream tStream("ab\xFFz\n", 4096, 0, ecpUtf8);
    std::wstring sText = L"before";
    EXPECT_THROW(tStream.Readln(sText), TXError);
    EXPECT_EQ(sText, L"before");
    EXPECT_EQ(tStream.dwGetPos(), 2u);
}

TEST(TFStreamBase, NeverCutsACharacterAtTheEndOfTheBuffer) {
    // Buffers of every small size: of one and two bytes too, in which no character has room.
    std::wstring const sText = L"a\u00E4\u20ACb\u6F22\u5B57\nz\u20AC\u20AC\r\n";
    TStreamBase tEncoded(ecpUtf8);
    tEncoded.Write(sText);
    std::string const sBytes(reinterpret_cast<char *>(tEncoded.pGetData()), tEncoded.dwGetSize());
    for (unsigned long dwBuffer = 0; dwBuffer < 40; ++dwBuffer) {
        TDeviceStream tStream(sBytes, dwBuffer, 0, ecpUtf8);
        EXPECT_EQ(asReadLines(tStream), (std::vector<std::wstring>{L"a\u00E4\u20ACb\u6F22\u5B57", L"z\u20AC\u20AC"}))
            << dwBuffer;
    }
}

TEST(TFStreamBase, MakesABufferOf65536BytesForTextAndKeepsFourBytesInSight) {
    TDeviceStream tText("abc", 0, FS_BINARY);
    wchar_t c = 0;
    tText.ReadChar(c);
    EXPECT_EQ(tText.dwBufGetSize(), 65536u);

    TDeviceStream tStream("0123456789abcdef", 8);
    tStream.EnsureBufferFilled();
    EXPECT_EQ(tStream.sTakeCalls(), "read 8");
    tStream.SkipChars(4); // each character looks ahead; four bytes are there still
    EXPECT_EQ(tStream.sTakeCalls(), "");
    tStream.SkipChars(1);
    EXPECT_EQ(tStream.sTakeCalls(), "");
    tStream.SkipChars(1); // three were left: they move to the front, and the rest is loaded
    EXPECT_EQ(tStream.sTakeCalls(), "read 5");
    EXPECT_EQ(tStream.dwBufferBase, 5u);
    EXPECT_EQ(tStream.dwGetPos(), 6u);
}

TEST(TFStreamBase, SkipsUtf16WithinTheLoadedBufferOnly) {
    for (ECodePage const eCodePage : {ecpUtf16, ecpUtf16Swapped}) {
        TDeviceStream tStream(std::string(40, 'x'), 8, FS_BINARY, eCodePage);
        EXPECT_EQ(iThrownNumber([&] { tStream.SkipChars(1); }), IDS_READ_PAST_END); // nothing is loaded yet
        tStream.EnsureBufferFilled();
        tStream.sTakeCalls();
        EXPECT_EQ(iThrownNumber([&] { tStream.SkipChars(5); }), IDS_READ_PAST_END);
        EXPECT_EQ(tStream.dwGetPos(), 0u);
        tStream.SkipChars(4);
        EXPECT_EQ(tStream.dwGetPos(), 8u);
        EXPECT_EQ(tStream.sTakeCalls(), "");
    }
}

TEST(TFStreamBase, ReadsStringsByItsVirtualReadToDelim) {
    struct TDelimStream : TDeviceStream {
        using TDeviceStream::TDeviceStream;
        void ReadToDelim(std::wstring & sText, wchar_t cDelim, wchar_t cEscape, bool fKeepDelim,
                         unsigned long dwReserved) override {
            EXPECT_EQ(cDelim, 0);
            EXPECT_EQ(cEscape, L'\\');
            EXPECT_FALSE(fKeepDelim);
            EXPECT_EQ(dwReserved, 16384u);
            sText = L"abcdefgh";
        }
    };
    TDelimStream tStream;
    std::wstring sText;
    tStream.Read(sText);
    EXPECT_EQ(sText, L"abcdefgh");
    wchar_t ac[4] = {};
    tStream.ReadString(ac, 4);
    EXPECT_STREQ(ac, L"abc");
}

TEST(TFStreamBase, ReadsAndWritesTextThroughBuffersOfAnySize) {
    std::mt19937 tRandom(20240115);
    for (int i = 0; i < 300; ++i) {
        ECodePage const eCodePage =
            std::array{ecpUtf8, ecpUtf16, ecpUtf16Swapped, ecpWestern, ecpJapanese}[tRandom() % 5];
        auto const dwBuffer = static_cast<unsigned long>(tRandom() % 50);
        std::vector<std::wstring> asLines(tRandom() % 20);
        TDeviceStream tStream("", dwBuffer, tRandom() % 2 == 0 ? FS_BYTE_ORDER_MARK : 0, eCodePage);
        for (std::wstring & sLine : asLines) {
            for (std::size_t u = tRandom() % 60; u != 0; --u)
                sLine += std::wstring_view(eCodePage == ecpWestern ? L"abc\u00E4 " : L"ab\u30AB\u6F22 ")[tRandom() % 5];
            tStream.Writeln(sLine);
        }
        tStream.BufFlush();
        tStream.SetPos(0);
        ASSERT_EQ(asReadLines(tStream), asLines) << eCodePage << ' ' << dwBuffer;
    }
}

TEST(TFStreamBase, DoesWithCharactersWhatAMemoryStreamDoes) {
    // Random readers and moves over buffers of every small size, against the same bytes in memory.
    std::mt19937 tRandom(815);
    constexpr std::wstring_view sAlphabet = L"abcdefgh\u00E4\u0416\u30AB\u6F22\n\\\0\uFFFF"sv;
    for (int i = 0; i < 1500; ++i) {
        ECodePage const eCodePage =
            std::array{ecpUtf8, ecpUtf16, ecpUtf16Swapped, ecpWestern, ecpJapanese}[tRandom() % 5];
        bool const fUtf16 = eCodePage == ecpUtf16 || eCodePage == ecpUtf16Swapped;
        TStreamBase tMemory(eCodePage);
        for (std::size_t u = tRandom() % 120; u != 0; --u)
            tMemory.WriteChar(sAlphabet[tRandom() % sAlphabet.size()]);
        if (tMemory.fIsEoF() && tMemory.pGetData() == nullptr) continue;
        unsigned long const dwSize = tMemory.dwGetSize();
        if (tRandom() % 3 == 0) tMemory.pGetData()[tRandom() % dwSize] = static_cast<unsigned char>(tRandom() % 0xF8);
        tMemory.SetPos(0);
        std::string const sBytes(reinterpret_cast<char *>(tMemory.pGetData()), dwSize);
        TDeviceStream tFile(sBytes, static_cast<unsigned long>(tRandom() % 40), FS_BINARY, eCodePage);

        for (int iStep = 0; iStep < 40; ++iStep) {
            unsigned int const uKind = tRandom() % 6;
            auto const dwAny = static_cast<unsigned long>(tRandom());
            auto const Do = [=](TStreamBase & t) {
                std::wstring sResult = L"before";
                wchar_t c = L'x';
                char acBytes[8] = {};
                try {
                    switch (uKind) {
                    case 0:
                        t.ReadChar(c);
                        break;
                    case 1:
                        t.PeekChar(c);
                        break;
                    case 2:
                        if (!fUtf16) t.SkipChars(dwAny % 12);
                        break;
                    case 3:
                        t.ReadStringForPascal(sResult, dwAny % 12);
                        break;
                    case 4:
                        t.SetPos(dwAny % (dwSize + 1));
                        break;
                    default:
                        t.ReadData(acBytes, std::min(dwAny % 8, dwSize - t.dwGetPos()));
                    }
                } catch (TXZkTools const & tError) {
                    sResult += std::to_wstring(tError.iGetNumber());
                } catch (TXError const &) {
                    sResult += L" not decoded"; // its text tells how much the buffer held
                }
                return sResult + c + std::wstring(std::begin(acBytes), std::end(acBytes)) +
                       std::to_wstring(t.dwGetPos()) + (t.fIsEoF() ? L" end" : L"");
            };
            ASSERT_EQ(Do(tFile), Do(tMemory)) << eCodePage << ' ' << uKind;
        }
    }
}

TEST(TFStreamBase, DoesWithBytesWhatAPlainFileDoes) {
    // Random reads, writes and moves, with a move between reading and writing, against a string.
    std::mt19937 tRandom(4711);
    for (unsigned long const dwBuffer : {0ul, 1ul, 7ul, 64ul, 4096ul}) {
        std::string sExpected(200, 'x');
        std::size_t uPos = 0;
        TDeviceStream tStream(sExpected, dwBuffer);
        for (int i = 0; i < 4000; ++i) {
            std::string sPiece(tRandom() % 40 + 1, static_cast<char>('a' + i % 26));
            if (tRandom() % 3 == 0) {
                uPos = tRandom() % (sExpected.size() + 5);
                tStream.SetPos(static_cast<unsigned long>(uPos));
            } else {
                tStream.Seek(0L, 1);
            }
            if (tRandom() % 2 == 0) {
                if (sExpected.size() < uPos + sPiece.size()) sExpected.resize(uPos + sPiece.size());
                sExpected.replace(uPos, sPiece.size(), sPiece);
                tStream.WriteData(sPiece.data(), static_cast<unsigned long>(sPiece.size()));
                uPos += sPiece.size();
            } else if (uPos <= sExpected.size()) {
                std::string const sWanted = sExpected.substr(uPos, sPiece.size());
                ASSERT_EQ(sRead(tStream, static_cast<unsigned long>(sWanted.size())), sWanted);
                uPos += sWanted.size();
            }
            ASSERT_EQ(tStream.dwGetPos(), uPos);
            ASSERT_EQ(tStream.dwGetSize(), sExpected.size());
        }
        tStream.BufFlush();
        ASSERT_EQ(tStream.sDevice, sExpected) << dwBuffer;
    }
}
