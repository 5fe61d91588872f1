// Streams beside the standard library's with the platform's conversion.
#include "ZkTools/FileStream.h"
#include "ZkTools/Stream.h"
#include "bench/Ratio.h"

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace {

using zk_bench::EBound;

constexpr std::size_t uTextSize = std::size_t{64} << 20; // bytes

struct TMix {
    wchar_t const * pzName;
    char const * pzTitle;
    std::wstring_view sLetters; ///< drawn from evenly, besides ASCII
    unsigned int uPercent;      ///< how many letters are drawn from there
};

constexpr TMix atMixes[] = {
    {L"ascii", "ASCII", L"x", 0},
    {L"latin", "Latin", L"\u00E4\u00F6\u00FC\u00DF\u00E9\u00E8\u00E0\u00F1\u00E7\u0142", 12},
    {L"cjk", "CJK", L"\u6F22\u5B57\u4EEE\u540D\u65E5\u672C\u8A9E\u4E2D\u6587\uD55C", 80},
};

std::string sNarrow(unsigned int uCodePage, std::wstring_view sText) {
    std::string sResult(sText.size() * 3, '\0');
    sResult.resize(static_cast<std::size_t>(WideCharToMultiByte(uCodePage, 0, sText.data(),
                                                                static_cast<int>(sText.size()), sResult.data(),
                                                                static_cast<int>(sResult.size()), nullptr, nullptr)));
    return sResult;
}

std::wstring sMakeLine(std::mt19937 & tRandom, TMix const & tMix, std::size_t uMost) {
    std::wstring sLine(tRandom() % uMost, L' ');
    for (wchar_t & c : sLine) {
        if (tRandom() % 100 < tMix.uPercent) {
            c = tMix.sLetters[tRandom() % tMix.sLetters.size()];
        } else {
            c = L"etaoinshrdlucmfwypvbgkjqxz 0123456789,."[tRandom() % 39];
        }
    }
    return sLine;
}

std::filesystem::path const & tGetDirectory() {
    static std::filesystem::path const tDirectory = [] {
        auto tPath = std::filesystem::temp_directory_path() / "zk_stream_bench";
        std::filesystem::create_directories(tPath);
        return tPath;
    }();
    return tDirectory;
}

// Lines

/// Lines that make 64 MiB of UTF-8.
std::vector<std::wstring> asMakeLines(TMix const & tMix) {
    std::mt19937 tRandom(20240115);
    std::vector<std::wstring> asLines;
    for (std::size_t uSize = 0; uSize < uTextSize;) {
        asLines.push_back(sMakeLine(tRandom, tMix, 160));
        uSize += sNarrow(CP_UTF8, asLines.back()).size() + 2;
    }
    return asLines;
}

void AddLines(TMix const & tMix) {
    std::filesystem::path const tPath = tGetDirectory() / tMix.pzName;
    std::filesystem::path const tOut = tGetDirectory() / L"out";
    auto const pLines = std::make_shared<std::vector<std::wstring>>(asMakeLines(tMix));
    {
        std::ofstream tFile(tPath, std::ios::binary);
        for (std::wstring const & sLine : *pLines)
            tFile << sNarrow(CP_UTF8, sLine) << "\r\n";
    }

    zk_bench::Add(
        std::string("Readln, ") + tMix.pzTitle, EBound::eTimesFaster, 2,
        [tPath] {
            TFStream tStream(tPath.c_str(), ecpUtf8, 0);
            std::wstring sLine;
            while (!tStream.fIsEoF())
                tStream.Readln(sLine);
            zk_bench::Keep(sLine.data());
        },
        [tPath] {
            std::ifstream tFile(tPath, std::ios::binary);
            std::string sBytes;
            std::wstring sLine;
            while (std::getline(tFile, sBytes)) {
                if (!sBytes.empty() && sBytes.back() == '\r') sBytes.pop_back();
                sLine.resize(sBytes.size());
                sLine.resize(sBytes.empty() ? 0
                                            : static_cast<std::size_t>(MultiByteToWideChar(
                                                  CP_UTF8, 0, sBytes.data(), static_cast<int>(sBytes.size()),
                                                  sLine.data(), static_cast<int>(sLine.size()))));
            }
            zk_bench::Keep(sLine.data());
        });

    zk_bench::Add(
        std::string("Writeln, ") + tMix.pzTitle, EBound::eTimesFaster, 1.5,
        [tOut, pLines] {
            TFStream tStream(tOut.c_str(), ecpUtf8, FS_CREATE);
            for (std::wstring const & sLine : *pLines)
                tStream.Writeln(sLine);
            tStream.Close();
        },
        [tOut, pLines] {
            std::ofstream tFile(tOut, std::ios::binary);
            std::string sBytes;
            for (std::wstring const & sLine : *pLines) {
                sBytes.resize(sLine.size() * 3);
                sBytes.resize(sLine.empty() ? 0
                                            : static_cast<std::size_t>(WideCharToMultiByte(
                                                  CP_UTF8, 0, sLine.data(), static_cast<int>(sLine.size()),
                                                  sBytes.data(), static_cast<int>(sBytes.size()), nullptr, nullptr)));
                sBytes += "\r\n";
                tFile.write(sBytes.data(), static_cast<std::streamsize>(sBytes.size()));
            }
        });
}

// Records

constexpr int iRecords = 1'000'000;

/// One character at a time through the platform.
unsigned int uConvertOne(unsigned int uCodePage, char const * p, wchar_t & c) {
    auto const uFirst = static_cast<unsigned char>(*p);
    int iLength = 1;
    if (uCodePage == CP_UTF8) {
        iLength = uFirst < 0xC0 ? 1 : uFirst < 0xE0 ? 2 : 3;
    } else {
        iLength = static_cast<int>(CharNextExA(static_cast<WORD>(uCodePage), p, 0) - p);
    }
    MultiByteToWideChar(uCodePage, MB_ERR_INVALID_CHARS, p, iLength, &c, 1);
    return static_cast<unsigned int>(iLength);
}

void AddRecords(std::string const & sTitle, ECodePage eCodePage, TMix const & tMix) {
    std::mt19937 tRandom(20240115);
    auto const pStrings = std::make_shared<TStreamBase>(64ul << 20, eCodePage);
    auto const pCounted = std::make_shared<TStreamBase>(64ul << 20, eCodePage);
    for (int i = 0; i < iRecords; ++i) {
        std::wstring const sRecord = sMakeLine(tRandom, tMix, 40);
        pStrings->WriteString(sRecord);
        pCounted->WritePascalStringInt16(sRecord);
    }
    unsigned int const uCodePage = uGetCodePage(eCodePage);

    zk_bench::Add(
        "ReadString, " + sTitle, EBound::eTimesFaster, 5,
        [pStrings] {
            pStrings->SetPos(0);
            std::wstring sText;
            for (int i = 0; i < iRecords; ++i)
                pStrings->ReadString(sText);
            zk_bench::Keep(sText.data());
        },
        [pStrings, uCodePage] {
            char const * p = reinterpret_cast<char const *>(pStrings->pGetData());
            std::wstring sText;
            for (int i = 0; i < iRecords; ++i) {
                sText.clear();
                while (*p != 0) {
                    wchar_t c = 0;
                    p += uConvertOne(uCodePage, p, c);
                    sText += c;
                }
                ++p;
            }
            zk_bench::Keep(sText.data());
        });
    zk_bench::Add(
        "ReadPascalStringInt16, " + sTitle, EBound::eTimesFaster, 5,
        [pCounted] {
            pCounted->SetPos(0);
            std::wstring sText;
            for (int i = 0; i < iRecords; ++i)
                pCounted->ReadPascalStringInt16(sText);
            zk_bench::Keep(sText.data());
        },
        [pCounted, uCodePage] {
            char const * p = reinterpret_cast<char const *>(pCounted->pGetData());
            std::wstring sText;
            for (int i = 0; i < iRecords; ++i) {
                sText.clear();
                std::uint16_t uSize = 0;
                std::memcpy(&uSize, p, sizeof uSize);
                p += sizeof uSize;
                for (char const * const pEnd = p + uSize - 1; p < pEnd;) {
                    wchar_t c = 0;
                    p += uConvertOne(uCodePage, p, c);
                    sText += c;
                }
                ++p;
            }
            zk_bench::Keep(sText.data());
        });
}

// Numbers

constexpr int iNumbers = 4'000'000;

void AddNumbers() {
    std::filesystem::path const tPath = tGetDirectory() / L"numbers";
    auto const Write = [tPath] {
        TFStream tStream(tPath.c_str(), FS_CREATE | FS_BINARY);
        for (int i = 0; i < iNumbers; ++i)
            tStream.Write(i);
        tStream.Close();
    };
    Write(); // reading may come first
    zk_bench::Add("4-byte integers, written", EBound::eTimesFaster, 1.5, Write, [tPath] {
        std::ofstream tFile(tPath, std::ios::binary);
        for (int i = 0; i < iNumbers; ++i)
            tFile.write(reinterpret_cast<char const *>(&i), sizeof i);
    });
    zk_bench::Add(
        "4-byte integers, read", EBound::eTimesFaster, 1.5,
        [tPath] {
            TFStream tStream(tPath.c_str(), FS_BINARY);
            int iSum = 0;
            for (int i = 0; i < iNumbers; ++i) {
                int iValue = 0;
                tStream.Read(iValue);
                iSum ^= iValue;
            }
            zk_bench::Keep(&iSum);
        },
        [tPath] {
            std::ifstream tFile(tPath, std::ios::binary);
            int iSum = 0;
            for (int i = 0; i < iNumbers; ++i) {
                int iValue = 0;
                tFile.read(reinterpret_cast<char *>(&iValue), sizeof iValue);
                iSum ^= iValue;
            }
            zk_bench::Keep(&iSum);
        });
    zk_bench::Add(
        "a write into memory not reserved, the millionth beside the thousandth", EBound::eTimesTheTime, 2,
        [] {
            TStreamBase tStream;
            for (int i = 0; i < 1'000'000; ++i)
                tStream.Write(i);
            zk_bench::Keep(tStream.pGetData());
        },
        [] {
            for (int iStream = 0; iStream < 1000; ++iStream) {
                TStreamBase tStream;
                for (int i = 0; i < 1000; ++i)
                    tStream.Write(i);
                zk_bench::Keep(tStream.pGetData());
            }
        });
}

} // namespace

int main(int iCount, char ** ppArguments) {
    for (TMix const & tMix : atMixes)
        AddLines(tMix);
    AddRecords("1252", ecpWestern, {L"", "", L"\u00E4\u00F6\u00FC\u00DF\u00E9\u00E8\u00E0\u00F1\u00E7", 12});
    AddRecords("UTF-8, Latin", ecpUtf8, atMixes[1]);
    AddRecords("932, CJK", ecpJapanese, {L"", "", L"\u6F22\u5B57\u540D\u65E5\u672C\u8A9E\u4E2D\u6587", 80});
    AddNumbers();
    int const iResult = zk_bench::iRun(iCount, ppArguments);
    std::error_code tIgnored;
    std::filesystem::remove_all(tGetDirectory(), tIgnored);
    return iResult;
}
