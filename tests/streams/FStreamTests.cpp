// The stream over a file, the log, and the owner of a handle.
#include "ZkTools/FileStream.h"

#include "ZkTools/Exceptions.h"
#include "ZkTools/Files.h"
#include "ZkTools/MessageIds.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/SystemCall.h"
#include "tests/support/TempDirectory.h"

#include <winioctl.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>

using namespace std::string_literals;
using namespace zk_test;

namespace {

std::string sNarrow(std::wstring const & sText) {
    std::string sResult(sText.size() * 3, '\0');
    sResult.resize(static_cast<std::size_t>(WideCharToMultiByte(CP_THREAD_ACP, 0, sText.data(),
                                                                static_cast<int>(sText.size()), sResult.data(),
                                                                static_cast<int>(sResult.size()), nullptr, nullptr)));
    return sResult;
}

/// Number and text of the TXZkTools that a call throws.
std::string sThrown(std::function<void()> const & fCall) {
    try {
        fCall();
    } catch (TXZkTools const & tError) {
        return std::to_string(tError.iGetNumber()) + ": " + tError.what();
    }
    return {};
}

/// The text of a failure: the system's reason, then what failed.
std::string sReasonThen(unsigned long dwError, unsigned int uMessageId, std::wstring const & sPath) {
    TXZkTools tHead(sGetErrorString(dwError).c_str());
    tHead.AddMessage(uMessageId, sPath.c_str());
    return "-1: "s + tHead.what();
}

bool fIsHidden(std::wstring const & sPath) {
    return (GetFileAttributesW(sPath.c_str()) & FILE_ATTRIBUTE_HIDDEN) != 0;
}

using TCreateFileCall = TSystemCall<"CreateFileW", decltype(CreateFileW)>;
using TReadFileCall = TSystemCall<"ReadFile", decltype(ReadFile)>;
using TWriteFileCall = TSystemCall<"WriteFile", decltype(WriteFile)>;
using TSizeCall = TSystemCall<"GetFileSizeEx", decltype(GetFileSizeEx)>;
using TFlushCall = TSystemCall<"FlushFileBuffers", decltype(FlushFileBuffers)>;

/// Ends as a program does whose stream cannot write in its destructor.
TChildRole const tWriterOnAFullDisk(L"fstream_destructor", [](std::vector<std::wstring> const & sArguments) {
    std::set_terminate([] {
        Say("terminated");
        ExitProcess(33);
    });
    TWriteFileCall const tWrite(
        [](HANDLE, void const *, DWORD, DWORD *, OVERLAPPED *) { return tFailWith(ERROR_DISK_FULL, FALSE); });
    {
        TFStream tStream(sArguments.at(0).c_str(), FS_CREATE);
        tStream.Write('x');
    }
    Say("went on");
    return 0;
});

/// Not inline: within the caller the compiler would take the system's calls from the import table once, before they are
/// replaced there.
[[gnu::noinline]] void CloseByOwner(HANDLE hFile) {
    TFileHandle const tHandle(hFile);
}

LONG WINAPI TellRaisedException(EXCEPTION_POINTERS * pPointers) {
    EXCEPTION_RECORD const & tRecord = *pPointers->ExceptionRecord;
    if (tRecord.ExceptionCode != 0x80070006) return EXCEPTION_CONTINUE_SEARCH;
    Say("raised " + std::to_string(tRecord.ExceptionFlags) + " " + std::to_string(tRecord.NumberParameters));
    ExitProcess(44);
}

/// Closes a handle that is closed already, by assignment or by destruction.
TChildRole const tCloserOfABadHandle(L"handle_raise", [](std::vector<std::wstring> const & sArguments) {
    AddVectoredExceptionHandler(1, &TellRaisedException);
    HANDLE const hBad = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    CloseHandle(hBad);
    if (sArguments.at(0) == L"assign") {
        TFileHandle tHandle(hBad);
        tHandle = TFileHandle();
    } else {
        TFileHandle const tHandle(hBad);
    }
    Say("went on");
    return 0;
});

} // namespace

// Opening

TEST(TFStream, TurnsTheModeIntoTheSystemsArguments) {
    constexpr DWORD dwRead = GENERIC_READ;
    constexpr DWORD dwBoth = GENERIC_READ | GENERIC_WRITE;
    constexpr DWORD dwShareRead = FILE_SHARE_READ;
    constexpr DWORD dwShareBoth = FILE_SHARE_READ | FILE_SHARE_WRITE;
    constexpr DWORD dwPlain = FILE_ATTRIBUTE_NORMAL;
    constexpr DWORD dwVanishing = FILE_FLAG_DELETE_ON_CLOSE;
    struct {
        int iMode;
        DWORD dwAccess, dwShare, dwDisposition, dwFlags;
    } const atRows[] = {
        {0, dwRead, dwShareRead, OPEN_EXISTING, dwPlain},
        {FS_SHARE_ALL, dwRead, dwShareBoth, OPEN_EXISTING, dwPlain},
        {FS_READ_WRITE, dwBoth, dwShareRead, OPEN_EXISTING, dwPlain},
        {FS_EXCLUSIVE, dwBoth, 0, OPEN_EXISTING, dwPlain},
        {FS_SHARE_ALL | FS_EXCLUSIVE, dwBoth, dwShareBoth, OPEN_EXISTING, dwPlain},
        {FS_CREATE, dwBoth, dwShareRead, CREATE_ALWAYS, dwPlain},
        {FS_READ_WRITE | FS_CREATE, dwBoth, dwShareRead, CREATE_ALWAYS, dwPlain},
        {FS_PLAIN, dwRead, dwShareRead, OPEN_EXISTING, dwPlain},
        {FS_PLAIN | FS_SHARE_ALL, dwRead, dwShareBoth, OPEN_EXISTING, dwPlain},
        {FS_TEMPORARY, dwBoth, dwShareRead, CREATE_ALWAYS, dwVanishing},
        {FS_TEMPORARY | FS_READ_WRITE, dwBoth, dwShareRead, CREATE_ALWAYS, dwVanishing},
        {FS_BYTE_ORDER_MARK, dwRead, dwShareRead, OPEN_EXISTING, dwPlain},
        {FS_BINARY | FS_SHARE_ALL, dwRead, dwShareBoth, OPEN_EXISTING, dwPlain},
    };
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sWrite(L"a.txt", "x");
    for (auto const & tRow : atRows) {
        TCreateFileCall tCreate([&](wchar_t const *, DWORD dwAccess, DWORD dwShare, SECURITY_ATTRIBUTES * pSecurity,
                                    DWORD dwDisposition, DWORD dwFlags, HANDLE hTemplate) {
            EXPECT_EQ(dwAccess, tRow.dwAccess) << tRow.iMode;
            EXPECT_EQ(dwShare, tRow.dwShare) << tRow.iMode;
            EXPECT_EQ(pSecurity, nullptr);
            EXPECT_EQ(dwDisposition, tRow.dwDisposition) << tRow.iMode;
            EXPECT_EQ(dwFlags, tRow.dwFlags) << tRow.iMode;
            EXPECT_EQ(hTemplate, nullptr);
            return tFailWith(ERROR_ACCESS_DENIED, INVALID_HANDLE_VALUE);
        });
        EXPECT_THROW(TFStream(sPath.c_str(), tRow.iMode), TXZkTools);
        EXPECT_EQ(tCreate.iGetCalls(), 1);
    }
}

TEST(TFStream, HandsParametersOfOnesOwnOnAsTheyAre) {
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sGetPath(L"a.txt");
    TFStream tStream;
    tStream.Open(sPath.c_str(), FS_READ_WRITE, {GENERIC_READ | GENERIC_WRITE, CREATE_NEW, 0, FILE_ATTRIBUTE_HIDDEN});
    EXPECT_TRUE(tStream.fIsOpen());
    EXPECT_TRUE(fIsHidden(sPath));
}

TEST(TFStream, OpensByEveryConstructor) {
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sWrite(L"a.txt", "x");
    TFStream tPlain(sPath.c_str(), 0);
    EXPECT_TRUE(tPlain.fIsOpen());
    EXPECT_EQ(tPlain.sGetName(), sPath);
    EXPECT_STREQ(tPlain.pzGetName(), sPath.c_str());
    EXPECT_EQ(tPlain.dwBufGetSize(), 4096u);
    EXPECT_EQ(tPlain.dwGetSize(), 1u);
    EXPECT_EQ(tPlain.sGetSize(), L"1");
    EXPECT_EQ(TFStream(sPath.c_str(), ecpUtf8, 0).eGetCodePage(), ecpUtf8);
    EXPECT_EQ(TFStream(ecpUtf8, sPath.c_str(), 0).eGetCodePage(), ecpUtf8);
    EXPECT_EQ(TFStream(sPath, ecpUtf8, 0).eGetCodePage(), ecpUtf8);
    TFStream tClosed;
    EXPECT_FALSE(tClosed.fIsOpen());
    EXPECT_EQ(tClosed.dwBufGetSize(), 4096u);
    EXPECT_EQ(TFStream(100).dwBufGetSize(), 100u);
    EXPECT_EQ(TFStream(ecpUtf8).dwBufGetSize(), 4096u);
    EXPECT_EQ(TFStream(ecpUtf8, 100).dwBufGetSize(), 100u);
    EXPECT_EQ(TFStream(ecpUtf8).eGetCodePage(), ecpUtf8);
}

TEST(TFStream, OpensWithACodePageByItsVirtualOpen) {
    struct TNotedStream : TFStream {
        void Open(wchar_t const * pzName, int iNewMode) override {
            sOpened = pzName + std::to_wstring(iNewMode) + (eGetCodePage() == ecpUtf8 ? L" UTF-8" : L"");
        }
        std::wstring sOpened;
    } tStream;
    TFStream & tBase = tStream;
    tBase.Open(L"a", ecpUtf8, 2);
    EXPECT_EQ(tStream.sOpened, L"a2 UTF-8");
    tBase.Open(std::wstring(L"b"), ecpUtf8, 3);
    EXPECT_EQ(tStream.sOpened, L"b3 UTF-8");
    EXPECT_FALSE(tStream.fIsOpen());
}

TEST(TFStream, AFailedOpenTellsTheReasonAndTheName) {
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sGetPath(L"missing");
    EXPECT_EQ(sThrown([&] { TFStream(sPath.c_str(), 0); }), sReasonThen(ERROR_FILE_NOT_FOUND, 4215, sPath));
    std::wstring const sDeep = tDirectory.sGetPath(L"no\\such\\file");
    EXPECT_EQ(sThrown([&] { TFStream(sDeep.c_str(), FS_READ_WRITE); }), sReasonThen(ERROR_PATH_NOT_FOUND, 4215, sDeep));
    EXPECT_EQ(sThrown([&] { TFStream(tDirectory.sGetPath().c_str(), 0); }),
              sReasonThen(ERROR_ACCESS_DENIED, 4215, tDirectory.sGetPath()));
    std::wstring const sLong = tDirectory.sGetPath(std::wstring(5000, L'n'));
    EXPECT_NE(sThrown([&] { TFStream(sLong.c_str(), FS_CREATE); }).find(sNarrow(sLong)), std::string::npos);
    EXPECT_NE(sThrown([&] { TFStream(static_cast<wchar_t const *>(nullptr), 0); }), "");

    TFStream tStream;
    EXPECT_NE(sThrown([&] { tStream.Open(sPath.c_str(), 0); }), "");
    EXPECT_FALSE(tStream.fIsOpen());
    tStream.Open(tDirectory.sWrite(L"there", "x").c_str(), 0); // and it can be used on
    EXPECT_TRUE(tStream.fIsOpen());
}

TEST(TFStream, SharesAsTheModeTells) {
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sWrite(L"a.txt", "x");
    TFStream const tReader(sPath.c_str(), 0);
    TFStream const tSecond(sPath.c_str(), 0);
    EXPECT_EQ(sThrown([&] { TFStream(sPath.c_str(), FS_READ_WRITE); }),
              sReasonThen(ERROR_SHARING_VIOLATION, 4215, sPath));
    EXPECT_EQ(sThrown([&] { TFStream(sPath.c_str(), FS_EXCLUSIVE); }),
              sReasonThen(ERROR_SHARING_VIOLATION, 4215, sPath));
}

TEST(TFStream, RefusesAFileOf4GiBAndLeavesItUnused) {
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sGetPath(L"huge");
    auto const MakeFile = [&](LONGLONG iSize) {
        THandle const hFile(CreateFileW(sPath.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
        DWORD dwDone = 0;
        DeviceIoControl(hFile.hGet(), FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &dwDone, nullptr);
        LARGE_INTEGER tSize{};
        tSize.QuadPart = iSize;
        SetFilePointerEx(hFile.hGet(), tSize, nullptr, FILE_BEGIN);
        ASSERT_TRUE(SetEndOfFile(hFile.hGet()));
    };
    MakeFile(0x100000000);
    EXPECT_EQ(sThrown([&] { TFStream(sPath.c_str(), FS_READ_WRITE); }),
              "4319: "s + TXZkTools(IDS_FILE_OPEN_FAILED, sPath.c_str()).what());
    EXPECT_TRUE(fIsUnused(sPath));
    MakeFile(0xFFFFFFFF);
    TFStream tStream(sPath.c_str(), FS_READ_WRITE);
    EXPECT_EQ(tStream.dwGetSize(), 0xFFFFFFFFu);
    tStream.SetPos(0xFFFFFFFE);
    char c = 'x';
    tStream.Read(c);
    EXPECT_EQ(c, 0);
    EXPECT_TRUE(tStream.fIsEoF());
    EXPECT_NE(sThrown([&] { tStream.Write('y'); }), "");
}

TEST(TFStream, ASizeThatCannotBeHadIsAFailedOpen) {
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sWrite(L"a.txt", "x");
    {
        TSizeCall const tSize([](HANDLE, LARGE_INTEGER *) { return tFailWith(ERROR_CRC, FALSE); });
        EXPECT_EQ(sThrown([&] { TFStream(sPath.c_str(), 0); }), sReasonThen(ERROR_CRC, 4215, sPath));
    }
    EXPECT_TRUE(fIsUnused(sPath));
}

TEST(TFStream, MakesTheDirectoryOfANewFile) {
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sGetPath(L"new\\deep\\a.txt");
    TFStream(sPath.c_str(), FS_READ_WRITE | FS_CREATE).Write('x');
    EXPECT_EQ(sReadFileBytes(sPath), "x");
    std::wstring const sInTheWay = sPath + L"\\b\\c.txt";
    EXPECT_NE(sThrown([&] {
                  TFStream(sInTheWay.c_str(), FS_CREATE);
              }).find(TXZkTools(IDS_CANNOT_MAKE_DIRECTORY, (sPath + L"\\b\\").c_str()).what()),
              std::string::npos);
}

TEST(TFStream, ATemporaryFileVanishesAndHasAnExtensionOfItsOwn) {
    TTempDirectory const tDirectory;
    std::wstring const sReport = tDirectory.sWrite(L"report.txt", "kept");
    std::wstring const sTemporary = tDirectory.sGetPath(L"report.$$$");
    {
        TFStream tStream(sReport.c_str(), FS_TEMPORARY);
        EXPECT_EQ(tStream.sGetName(), sTemporary);
        tStream.WriteData("abc", 3);
        tStream.Seek(0L, 0);
        char acRead[4] = {};
        tStream.ReadData(acRead, 3);
        EXPECT_STREQ(acRead, "abc");
        EXPECT_TRUE(fExists(sTemporary));
        tStream.Close();
        EXPECT_FALSE(fExists(sTemporary));
    }
    EXPECT_EQ(sReadFileBytes(sReport), "kept");
    {
        TFStream const tStream(sReport.c_str(),
                               FS_TEMPORARY | FS_READ_WRITE); // on exactly that name, and anew
        EXPECT_EQ(tStream.sGetName(), sReport);
        EXPECT_EQ(sListDirectory(tDirectory.sGetPath()), L"report.txt");
    }
    EXPECT_EQ(sListDirectory(tDirectory.sGetPath()), L"");
}

TEST(TFStream, MakesUpANameForATemporaryFileWithoutOne) {
    std::wstring sName;
    {
        TFStream const tStream(static_cast<wchar_t const *>(nullptr), FS_TEMPORARY);
        sName = tStream.sGetName();
        EXPECT_NE(sName, L"");
        EXPECT_TRUE(fExists(sName));
    }
    EXPECT_FALSE(fExists(sName));
}

TEST(TFStream, OpensAPathThatOnlyItsLongFormReaches) {
    TTempDirectory const tDirectory;
    std::wstring sPath = tDirectory.sGetPath();
    for (int i = 0; i < 3; ++i) {
        sPath += L"\\" + std::wstring(100, static_cast<wchar_t>(L'a' + i));
        ASSERT_TRUE(CreateDirectoryW(sLongForm(sPath).c_str(), nullptr));
    }
    sPath += L"\\a.txt";
    TFStream(sPath.c_str(), FS_CREATE).Write('x');
    EXPECT_EQ(sReadFileBytes(sPath), "x");
    wchar_t const * pzSeen = nullptr;
    TCreateFileCall tCreate([&](wchar_t const * pzPath, auto... tRest) {
        pzSeen = pzPath;
        EXPECT_EQ(std::wstring(pzPath), sLongForm(sPath));
        return tCreate.Original(pzPath, tRest...);
    });
    TFStream const tStream(sPath.c_str(), 0);
    EXPECT_NE(pzSeen, nullptr);
}

TEST(TFStream, CanBeOpenedAgain) {
    TTempDirectory const tDirectory;
    TFStream tStream(tDirectory
                         .sWrite(L"a.txt", "\xEF\xBB\xBF"
                                           "abc")
                         .c_str(),
                     FS_SHARE_ALL);
    std::wstring sText;
    tStream.ReadString(sText);
    EXPECT_TRUE(tStream.fHasByteOrderMark());
    tStream.Close();
    tStream.Close();
    EXPECT_FALSE(tStream.fIsOpen());
    tStream.Open(tDirectory.sWrite(L"b.txt", "xy"), ecpWestern, 0);
    EXPECT_FALSE(tStream.fHasByteOrderMark());
    EXPECT_EQ(tStream.dwGetPos(), 0u);
    EXPECT_EQ(tStream.dwGetSize(), 2u);
    tStream.ReadString(sText);
    EXPECT_EQ(sText, L"xy");
}

// Content

TEST(TFStream, PutsTheMarkInFrontOfABinaryFileToo) {
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sGetPath(L"a.bin");
    TFStream(sPath.c_str(), ecpUtf16, FS_CREATE | FS_BINARY).Write('x');
    EXPECT_EQ(sReadFileBytes(sPath), "\xFF\xFEx");
    TFStream(sPath.c_str(), ecpUtf8, FS_CREATE).Write('x');
    EXPECT_EQ(sReadFileBytes(sPath), "x");
    TFStream(sPath.c_str(), ecpUtf8, FS_CREATE | FS_BYTE_ORDER_MARK).Write('x');
    EXPECT_EQ(sReadFileBytes(sPath), "\xEF\xBB\xBFx");
}

TEST(TFStream, AMarkOverrulesTheCodePageGiven) {
    TTempDirectory const tDirectory;
    TFStream tStream(tDirectory.sWrite(L"a.txt", "\xFF\xFE"
                                                 "a\0\xAC\x20"s),
                     ecpWestern, 0);
    std::wstring sText;
    tStream.Readln(sText);
    EXPECT_EQ(sText, L"a\u20AC");
    EXPECT_EQ(tStream.eGetCodePage(), ecpUtf16);
}

TEST(TFStream, KeepsLinesThroughWritingAndReading) {
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sGetPath(L"a.txt");
    for (ECodePage const eCodePage : {ecpUtf8, ecpUtf16, ecpUtf16Swapped, ecpJapanese}) {
        TFStream tWriter(sPath, eCodePage, FS_CREATE);
        for (int i = 0; i < 3000; ++i)
            tWriter.Writeln(L"line \u6F22 " + std::to_wstring(i));
        tWriter.Close();
        TFStream tReader(sPath, eCodePage, 0);
        for (int i = 0; i < 3000; ++i) {
            std::wstring sLine;
            tReader.Readln(sLine);
            ASSERT_EQ(sLine, L"line \u6F22 " + std::to_wstring(i));
        }
        EXPECT_TRUE(tReader.fIsEoF());
    }
}

TEST(TFStream, ExtendsTheFileBehindItsEnd) {
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sWrite(L"a.bin", "ab");
    TFStream tStream(sPath.c_str(), FS_READ_WRITE);
    tStream.SetPos(5);
    tStream.Write('x');
    EXPECT_EQ(tStream.dwGetSize(), 6u);
    tStream.Close();
    EXPECT_EQ(sReadFileBytes(sPath), "ab\0\0\0x"s);
}

TEST(TFStream, WritesBackInFlushCloseAndDestructor) {
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sGetPath(L"a.txt");
    {
        TFStream tStream(sPath.c_str(), FS_CREATE | FS_SHARE_ALL);
        tStream.WriteData("a", 1);
        EXPECT_EQ(sReadFileBytes(sPath), "");
        tStream.Flush();
        EXPECT_EQ(sReadFileBytes(sPath), "a");
        tStream.WriteData("b", 1);
        tStream.Close();
        EXPECT_EQ(sReadFileBytes(sPath), "ab");
        tStream.Open(sPath.c_str(), FS_READ_WRITE);
        tStream.Seek(0L, 2);
        tStream.WriteData("c", 1);
    }
    EXPECT_EQ(sReadFileBytes(sPath), "abc");
}

TEST(TFStream, FlushOfAClosedStreamIsAProgramError) {
    TFStream tStream;
    try {
        tStream.Flush();
        FAIL();
    } catch (std::logic_error const & tError) {
        EXPECT_STREQ(tError.what(), "TFStream::Flush called on invalid file handle.");
    }
}

// Failures of the device

TEST(TFStream, AFailedReadTellsTheReasonAndTheNameAndCanBeTriedAgain) {
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sWrite(L"a.txt", "abc");
    TFStream tStream(sPath.c_str(), FS_BINARY);
    char c = 0;
    {
        TReadFileCall const tRead(
            [](HANDLE, void *, DWORD, DWORD *, OVERLAPPED *) { return tFailWith(ERROR_NETNAME_DELETED, FALSE); });
        EXPECT_EQ(sThrown([&] { tStream.Read(c); }), sReasonThen(ERROR_NETNAME_DELETED, 4260, sPath));
    }
    tStream.Read(c);
    EXPECT_EQ(c, 'a');
}

TEST(TFStream, AReadOfNoByteAtTheEndIsAFailureWithoutABuffer) {
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sWrite(L"a.txt", "a");
    TFStream tStream(0);
    tStream.Open(sPath.c_str(), FS_BINARY);
    char acRead[] = "..";
    tStream.ReadData(acRead, 2);
    EXPECT_STREQ(acRead, "a.");
    EXPECT_EQ(sThrown([&] { tStream.ReadData(acRead, 2); }), sReasonThen(ERROR_HANDLE_EOF, 4260, sPath));
}

TEST(TFStream, TellsTheFirst254CharactersOfTheReason) {
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sGetPath(L"missing");
    using TFormatCall = TSystemCall<"FormatMessageW", DWORD WINAPI(DWORD, void const *, DWORD, DWORD, wchar_t *, DWORD,
                                                                   char **)>; // as the compiler sees a va_list
    TFormatCall const tFormat(
        [](DWORD, void const *, DWORD, DWORD, wchar_t * pzBuffer, DWORD, char **) -> DWORD {
            auto * const pzText = static_cast<wchar_t *>(LocalAlloc(LPTR, 301 * sizeof(wchar_t)));
            std::fill_n(pzText, 300, L'x');
            *reinterpret_cast<wchar_t **>(pzBuffer) = pzText;
            return 300;
        },
        L"ZkBase.dll");
    EXPECT_EQ(sThrown([&] { TFStream(sPath.c_str(), 0); }),
              "-1: " + std::string(254, 'x') + "\r\n" + TXZkTools(IDS_APPEND_FILE_DETAIL, sPath.c_str()).what());
}

TEST(TFStream, AReadBehindTheEndIsAFailureWithABufferToo) {
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sWrite(L"a.txt", "abc");
    TFStream tStream(sPath.c_str(), FS_BINARY);
    tStream.SetPos(4);
    wchar_t cWide = 0;
    EXPECT_EQ(sThrown([&] { tStream.ReadChar(cWide); }), sReasonThen(ERROR_HANDLE_EOF, 4260, sPath));
    char c = 0;
    EXPECT_EQ(sThrown([&] { tStream.Read(c); }), sReasonThen(ERROR_HANDLE_EOF, 4260, sPath));
    EXPECT_EQ(tStream.dwGetPos(), 4u);
}

TEST(TFStream, ForgetsAFailureThatIsPendingWhenItIsOpened) {
    TTempDirectory const tDirectory;
    struct TPending : TFStream {
        using TFStream::dwLastError;
    } tStream;
    tStream.dwLastError = ERROR_CRC;
    EXPECT_EQ(sThrown([&] { static_cast<TFStream &>(tStream).Open(tDirectory.sWrite(L"a.txt", "x").c_str(), 0); }), "");
    EXPECT_TRUE(tStream.fIsOpen());
}

TEST(TFStream, AFailedWriteKeepsWhatIsToBeWritten) {
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sGetPath(L"a.txt");
    TFStream tStream(sPath.c_str(), FS_CREATE);
    tStream.WriteData("abc", 3);
    {
        TWriteFileCall const tWrite(
            [](HANDLE, void const *, DWORD, DWORD *, OVERLAPPED *) { return tFailWith(ERROR_DISK_FULL, FALSE); });
        EXPECT_EQ(sThrown([&] { tStream.Flush(); }), sReasonThen(ERROR_DISK_FULL, 4270, sPath));
        EXPECT_EQ(sThrown([&] { tStream.Close(); }), sReasonThen(ERROR_DISK_FULL, 4270, sPath));
        EXPECT_TRUE(tStream.fIsOpen());
        EXPECT_EQ(tStream.dwGetPos(), 3u);
    }
    tStream.Close();
    EXPECT_EQ(sReadFileBytes(sPath), "abc");
}

TEST(TFStream, AShortWriteIsAFailure) {
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sGetPath(L"a.txt");
    TFStream tStream(sPath.c_str(), FS_CREATE);
    tStream.WriteData("abc", 3);
    {
        TWriteFileCall const tWrite([](HANDLE, void const *, DWORD, DWORD * pDone, OVERLAPPED *) {
            *pDone = 2;
            return TRUE;
        });
        EXPECT_EQ(sThrown([&] { tStream.Flush(); }), sReasonThen(ERROR_WRITE_FAULT, 4270, sPath));
    }
    tStream.Close();
}

TEST(TFStream, AFailedFlushOfTheSystemIsAFailure) {
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sGetPath(L"a.txt");
    TFStream tStream(sPath.c_str(), FS_CREATE);
    TFStream tUnbuffered(0);
    std::wstring const sOther = tDirectory.sGetPath(L"b.txt");
    tUnbuffered.Open(sOther.c_str(), FS_CREATE);
    TFlushCall const tFlush([](HANDLE) { return tFailWith(ERROR_IO_DEVICE, FALSE); });
    EXPECT_EQ(sThrown([&] { tStream.Flush(); }), sReasonThen(ERROR_IO_DEVICE, 4270, sPath));
    EXPECT_EQ(sThrown([&] { tUnbuffered.Flush(); }), sReasonThen(ERROR_IO_DEVICE, 4270, sOther));
}

TEST(TFStream, ASeekBelowZeroIsRefusedByTheSystem) {
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sWrite(L"a.txt", "abc");
    TFStream tStream(sPath.c_str(), FS_BINARY);
    char c = 0;
    tStream.Read(c);
    EXPECT_EQ(sThrown([&] { tStream.Seek(-2L, 1); }), sReasonThen(ERROR_NEGATIVE_SEEK, 4280, sPath));
    tStream.Read(c);
    EXPECT_EQ(c, 'b');
}

TEST(TFStream, GoesToAPositionThatLooksLikeAFailure) {
    TTempDirectory const tDirectory;
    TFStream tStream(tDirectory.sWrite(L"a.txt", "abc").c_str(), FS_BINARY);
    SetLastError(ERROR_ACCESS_DENIED);
    tStream.SetPos(0xFFFFFFFF);
    EXPECT_EQ(tStream.dwGetPos(), 0xFFFFFFFFu);
}

TEST(TFStream, MovesTheDeviceFromEveryOrigin) {
    TTempDirectory const tDirectory;
    TFStream tStream(tDirectory.sWrite(L"a.txt", "abcdefgh").c_str(), FS_BINARY);
    struct {
        __int64 iPos;
        int iOrigin;
        char cThere;
    } const atRows[] = {{2, 0, 'c'}, {2, 1, 'f'}, {-2, 1, 'e'}, {-1, 2, 'h'}, {3, 3, 'd'}, {1, -1, 'b'}};
    for (auto const & tRow : atRows) {
        char c = 0;
        tStream.DeviceSeek(tRow.iPos, tRow.iOrigin);
        EXPECT_EQ(tStream.dwDeviceRead(&c, 1), 1u);
        EXPECT_EQ(c, tRow.cThere) << tRow.iOrigin;
    }
    EXPECT_NE(sThrown([&] { tStream.DeviceSeek(-1, 3); }), ""); // from the start too
}

TEST(TFStream, ADestructorThatCannotWriteEndsTheProcess) {
    TTempDirectory const tDirectory;
    TChildProcess tChild(tWriterOnAFullDisk, {tDirectory.sGetPath(L"a.txt")});
    EXPECT_EQ(tChild.sHear(), "terminated");
    EXPECT_EQ(tChild.dwWait(), 33u);
}

TEST(TFStream, ADestructorOfAnUnchangedStreamWritesNothing) {
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sWrite(L"a.txt", "abc");
    TWriteFileCall const tWrite(
        [](HANDLE, void const *, DWORD, DWORD *, OVERLAPPED *) { return tFailWith(ERROR_DISK_FULL, FALSE); });
    {
        TFStream tStream(sPath.c_str(), 0);
        char c = 0;
        tStream.Read(c);
    }
    EXPECT_EQ(tWrite.iGetCalls(), 0);
    EXPECT_TRUE(fIsUnused(sPath));
}

// The rest of the interface

TEST(TFStream, CutsTheFileAndKeepsTheSizeItKnows) {
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sWrite(L"a.txt", "abcdef");
    TFStream tStream(sPath.c_str(), FS_READ_WRITE | FS_BINARY);
    tStream.Seek(2L, 0);
    tStream.Write('X');
    tStream.SetEndOfFile();
    EXPECT_EQ(tStream.dwGetSize(), 6u);
    EXPECT_EQ(tStream.sGetSize(), L"3");
    tStream.Close();
    EXPECT_EQ(sReadFileBytes(sPath), "abX");
    tStream.SetEndOfFile(); // nothing on a closed stream
}

TEST(TFStream, CutsTheFileAtTheEndOfTheBufferBehindARead) {
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sWrite(L"a.txt", "abcdefgh");
    TFStream tStream(4);
    tStream.Open(sPath.c_str(), FS_READ_WRITE | FS_BINARY);
    TWriteFileCall const tWrite( // an unchanged buffer is not written back
        [](HANDLE, void const *, DWORD, DWORD *, OVERLAPPED *) { return tFailWith(ERROR_DISK_FULL, FALSE); });
    char c = 0;
    tStream.Read(c);
    tStream.SetEndOfFile();
    EXPECT_EQ(tStream.sGetSize(), L"4");
    EXPECT_EQ(tStream.dwGetSize(), 8u);
    tStream.Seek(0L, 1);
    tStream.SetEndOfFile();
    EXPECT_EQ(tStream.sGetSize(), L"1");
}

TEST(TFStream, LocksRanges) {
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sWrite(L"a.txt", "abcdef");
    TFStream tFirst(sPath.c_str(), FS_READ_WRITE | FS_SHARE_ALL);
    TFStream tSecond(sPath.c_str(), FS_READ_WRITE | FS_SHARE_ALL);
    EXPECT_TRUE(tFirst.fLockFile(1, 2));
    EXPECT_FALSE(tSecond.fLockFile(2, 2));
    EXPECT_TRUE(tSecond.fLockFile(3, 2));
    EXPECT_TRUE(tFirst.fUnlockFile(1, 2));
    EXPECT_FALSE(tFirst.fUnlockFile(1, 2));
    EXPECT_TRUE(tSecond.fLockFile(1, 2));
    TFStream tClosed;
    EXPECT_FALSE(tClosed.fLockFile(0, 1));
    EXPECT_FALSE(tClosed.fUnlockFile(0, 1));
}

TEST(TFStream, GivesAndTakesTheTimesOfTheFile) {
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sWrite(L"a.txt", "a");
    TFStream tStream(sPath.c_str(), FS_READ_WRITE);
    FILETIME const tTime{0x12345680, 0x01C00000};
    tStream.SetFTime(nullptr, nullptr, &tTime);
    FILETIME tWrite{};
    tStream.GetFTime(nullptr, nullptr, &tWrite);
    EXPECT_EQ(CompareFileTime(&tWrite, &tTime), 0);
    TFStream tClosed;
    tClosed.SetFTime(nullptr, nullptr, &tTime);
    tClosed.GetFTime(nullptr, nullptr, &tWrite);
}

TEST(TFStream, ConvertsModesAndOriginsForTheRunTime) {
    TFStream tStream;
    struct {
        int iMode, iConverted;
    } const atModes[] = {{FS_CREATE, 4144},
                         {FS_TEMPORARY, 4144},
                         {FS_CREATE | FS_READ_WRITE, 4144},
                         {FS_READ_WRITE, 49},
                         {FS_READ_WRITE | FS_SHARE_ALL, 49},
                         {FS_EXCLUSIVE, 2},
                         {FS_EXCLUSIVE | FS_SHARE_ALL, 2},
                         {FS_SHARE_ALL, 0},
                         {0, 0},
                         {FS_BINARY, 0}};
    for (auto const & tRow : atModes)
        EXPECT_EQ(tStream.iOpenModeConvert(tRow.iMode), tRow.iConverted) << tRow.iMode;
    for (int const iOrigin : {0, 1, 2})
        EXPECT_EQ(tStream.iSeekBaseConvert(iOrigin), iOrigin);
    EXPECT_EQ(tStream.iSeekBaseConvert(3), 0);
    EXPECT_EQ(tStream.iSeekBaseConvert(-1), 0);
}

// The log

TEST(TDebugFile, WritesUtf16LinesToAFileThatWasMade) {
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sWrite(L"log", "old");
    TDebugFile tLog(sPath, true);
    EXPECT_EQ(sReadFileBytes(sPath), "");
    tLog.Append(L"a\u20AC");
    tLog.Append(L"");
    TDebugFile(sPath, false).Append(L"b");
    EXPECT_EQ(sReadFileBytes(sPath), "a\0\xAC\x20\r\0\n\0\r\0\n\0b\0\r\0\n\0"s);
    EXPECT_TRUE(fIsUnused(sPath));
}

TEST(TDebugFile, StaysSilentWithoutAFile) {
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sGetPath(L"log");
    TDebugFile(sPath, false).Append(L"a");
    EXPECT_FALSE(fExists(sPath));
    TDebugFile(tDirectory.sGetPath(L"no\\log"), true).Append(L"a");
    EXPECT_EQ(sListDirectory(tDirectory.sGetPath()), L"");
    tDirectory.sWrite(L"log", "x");
    THandle const hHeld(CreateFileW(sPath.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    TDebugFile(sPath, false).Append(L"a"); // somebody else has it open
    EXPECT_EQ(sReadFileBytes(sPath), "x");
}

TEST(TDebugFile, OpensForItselfAlone) {
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sGetPath(L"log");
    std::string sForms;
    TCreateFileCall const tCreate([&](wchar_t const * pzPath, DWORD dwAccess, DWORD dwShare,
                                      SECURITY_ATTRIBUTES * pSecurity, DWORD dwDisposition, DWORD dwFlags,
                                      HANDLE hTemplate) {
        EXPECT_EQ(dwAccess, GENERIC_READ | GENERIC_WRITE);
        EXPECT_EQ(dwShare, 0u);
        sForms += std::to_string(dwDisposition) + ' ';
        return tCreate.Original(pzPath, dwAccess, dwShare, pSecurity, dwDisposition, dwFlags, hTemplate);
    });
    TDebugFile tLog(sPath, true);
    tLog.Append(L"a");
    EXPECT_EQ(sForms, std::to_string(CREATE_ALWAYS) + ' ' + std::to_string(OPEN_EXISTING) + ' ');
}

TEST(TDebugFile, ACopyGoesOnInTheSameFile) {
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sGetPath(L"log");
    TDebugFile tLog(sPath, true);
    TDebugFile tCopy(tLog);
    TDebugFile tMoved(std::move(tLog));
    tCopy.Append(L"1");
    tMoved.Append(L"2");
    tLog.Append(L"3"); // moving copies as well
    EXPECT_EQ(sReadFileBytes(sPath), "1\0\r\0\n\0"
                                     "2\0\r\0\n\0"
                                     "3\0\r\0\n\0"s);
}

// The owner of a handle

TEST(HandleT, ClosesWhatItOwns) {
    TTempDirectory const tDirectory;
    std::wstring const sPath = tDirectory.sWrite(L"a", "x");
    auto const hOpen = [&] { return CreateFileW(sPath.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr); };
    {
        TFileHandle const tHandle(hOpen());
        EXPECT_TRUE(tHandle.fIsValid());
        EXPECT_FALSE(fIsUnused(sPath));
    }
    EXPECT_TRUE(fIsUnused(sPath));
    TFileHandle tFirst(hOpen());
    TFileHandle tSecond;
    EXPECT_FALSE(tSecond.fIsValid());
    EXPECT_EQ(tSecond.hGet(), INVALID_HANDLE_VALUE);
    tSecond = std::move(tFirst);
    EXPECT_FALSE(tFirst.fIsValid());
    EXPECT_FALSE(fIsUnused(sPath));
    tSecond = TFileHandle();
    EXPECT_TRUE(fIsUnused(sPath));
    TFileHandle tThird(hOpen());
    TFileHandle & tSame = tThird;
    tThird = std::move(tSame);
    EXPECT_TRUE(tThird.fIsValid());
    HANDLE const hGiven = tThird.hRelease();
    EXPECT_FALSE(tThird.fIsValid());
    CloseHandle(hGiven);
}

TEST(HandleT, RaisesTheErrorOfTheSystemAsAResult) {
    struct {
        DWORD dwError, dwCode;
    } const atRows[] = {{6, 0x80070006}, {0x12345, 0x80072345}, {0x80004005, 0x80004005}, {0, 0}};
    HMODULE const hSelf = GetModuleHandleW(nullptr); // the owner is compiled into this program
    for (auto const & tRow : atRows) {
        DWORD dwCode = 77;
        TSystemCall<"CloseHandle", decltype(CloseHandle)> const tClose(
            [&](HANDLE) { return tFailWith(tRow.dwError, FALSE); }, hSelf);
        TSystemCall<"RaiseException", decltype(RaiseException)> const tRaise(
            [&](DWORD dwRaised, DWORD dwFlags, DWORD dwCount, ULONG_PTR const * pArguments) {
                dwCode = dwRaised;
                EXPECT_EQ(dwFlags, static_cast<DWORD>(EXCEPTION_NONCONTINUABLE));
                EXPECT_EQ(dwCount, 0u);
                EXPECT_EQ(pArguments, nullptr);
            },
            hSelf);
        CloseByOwner(hSelf);
        EXPECT_EQ(dwCode, tRow.dwCode);
    }
}

TEST(HandleT, RaisesASystemExceptionForAHandleThatCannotBeClosed) {
    for (wchar_t const * pzWay : {L"assign", L"destroy"}) {
        TChildProcess tChild(tCloserOfABadHandle, {pzWay});
        EXPECT_EQ(tChild.sHear(), "raised 1 0");
        EXPECT_EQ(tChild.dwWait(), 44u);
    }
}
