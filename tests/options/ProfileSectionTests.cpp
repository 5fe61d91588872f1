#include "ZkTools/ProfileSection.h"

#include "ZkBase/Windows.h"
#include "tests/support/SystemCall.h"
#include "tests/support/TempDirectory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

using namespace std::string_literals;
using std::wstring;

namespace {

/// A text or null.
wstring sShow(wchar_t const * pzText) {
    return pzText != nullptr ? L"'" + wstring(pzText) + L"'" : L"null";
}

/// All lines: 'key':'value' and so on.
wstring sShow(TProfileSection & tSection) {
    wstring sAll;
    for (TProfileSection::TLine const & tLine : tSection.GetLines())
        sAll.append(sAll.empty() ? L"" : L" ").append(sShow(tLine.pzKey)).append(L":").append(sShow(tLine.pzValue));
    return sAll;
}

/// Gives the library a section as the system hands it out: lines with a terminator each.
class TGivenSection {
public:
    explicit TGivenSection(wstring sLines_) : sLines(std::move(sLines_)) {}

    [[nodiscard]] wstring sRead() {
        TProfileSection tSection(L"section", L"C:\\file.ini");
        return sShow(tSection);
    }
    [[nodiscard]] std::vector<DWORD> const & dwGetSizes() const { return dwSizes; }

private:
    /// Cuts like the system: the text with two terminators, the answer two less than the room.
    DWORD dwGive(wchar_t const * pzSection, wchar_t * pzBuffer, DWORD dwSize, wchar_t const * pzFile) {
        EXPECT_STREQ(pzSection, L"section");
        EXPECT_STREQ(pzFile, L"C:\\file.ini");
        dwSizes.push_back(dwSize);
        DWORD const dwLength = static_cast<DWORD>(std::min<std::size_t>(sLines.size(), dwSize - 2));
        std::copy_n(sLines.data(), dwLength, pzBuffer);
        pzBuffer[dwLength] = pzBuffer[dwLength + 1] = L'\0';
        return dwLength;
    }

    wstring sLines;
    std::vector<DWORD> dwSizes;
    zk_test::TSystemCall<"GetPrivateProfileSectionW", decltype(GetPrivateProfileSectionW)> tCall{
        [this](wchar_t const * pzSection, wchar_t * pzBuffer, DWORD dwSize, wchar_t const * pzFile) {
            return dwGive(pzSection, pzBuffer, dwSize, pzFile);
        }};
};

wstring sReadFile(wstring const & sFile, wchar_t const * pzSection) {
    TProfileSection tSection(pzSection, sFile.c_str());
    return sShow(tSection);
}

} // namespace

TEST(TProfileSection, ReadsItsLinesInTheOrderOfTheFile) {
    zk_test::TTempDirectory const tDirectory;
    wstring const sFile = tDirectory.sWrite(L"some.ini", "; comment\r\nabove=1\r\n"
                                                         "[First]\r\nz=1\r\na=two words\r\nz=2\r\nalone\r\n"
                                                         "[Second]\r\nb=x;y\r\n;c=1\r\n\r\n  d = 4  \r\nlast=end");
    EXPECT_EQ(sReadFile(sFile, L"First"), L"'z':'1' 'a':'two words' 'z':'2' 'alone':null");
    EXPECT_EQ(sReadFile(sFile, L"Second"), L"'b':'x;y' 'd':'4' 'last':'end'");
    EXPECT_EQ(sReadFile(sFile, L"sECOND"), L"'b':'x;y' 'd':'4' 'last':'end'");
}

TEST(TProfileSection, HasNoLinesWhereThereAreNone) {
    zk_test::TTempDirectory const tDirectory;
    wstring const sFile = tDirectory.sWrite(L"some.ini", "[Empty]\r\n[Blank]\r\n\r\n   \r\n; no\r\n[Full]\r\na=1\r\n");
    for (wchar_t const * pzSection : {L"Empty", L"Blank", L"Missing", L"", L"[Full]"}) {
        TProfileSection tSection(pzSection, sFile.c_str());
        EXPECT_TRUE(tSection.GetLines().empty()) << testing::PrintToString(pzSection);
    }
    for (wstring const & sNone :
         {tDirectory.sGetPath(L"missing.ini"), tDirectory.sGetPath(), tDirectory.sWrite(L"empty.ini", "")}) {
        TProfileSection tSection(L"Full", sNone.c_str());
        EXPECT_TRUE(tSection.GetLines().empty()) << testing::PrintToString(sNone);
    }
}

TEST(TProfileSection, ReadsWideFilesWithHalvesOfPairs) {
    zk_test::TTempDirectory const tDirectory;
    wstring const sText = L"\xFEFF[A]\r\n\xE4=\xD83D\xDE00\r\n\xDC00=\xD800\r\n";
    wstring const sFile =
        tDirectory.sWrite(L"wide.ini", {reinterpret_cast<char const *>(sText.data()), sText.size() * sizeof(wchar_t)});
    EXPECT_EQ(sReadFile(sFile, L"A"), L"'\xE4':'\xD83D\xDE00' '\xDC00':'\xD800'");
}

TEST(TProfileSection, CutsLinesAtEveryEqualsSign) {
    struct TCase {
        wstring sLine;
        wstring sExpected;
    };
    for (TCase const & tCase : {
             TCase{L"a=b", L"'a':'b'"},
             TCase{L"a=b=c", L"'a':'b'"}, // the rest is lost
             TCase{L"a==b", L"'a':'b'"},
             TCase{L"a=b==", L"'a':'b'"},
             TCase{L"=x", L"'x':null"}, // a delimiter in front is passed over
             TCase{L"==x==y==z", L"'x':'y'"},
             TCase{L"x=", L"'x':null"},
             TCase{L"x==", L"'x':null"},
             TCase{L"alone", L"'alone':null"},
             TCase{L"=", L"null:null"},
             TCase{L"===", L"null:null"},
             TCase{L" = ", L"' ':' '"},
             TCase{L" a = b ", L"' a ':' b '"},
             TCase{L"a\tb=\r\n", L"'a\tb':'\r\n'"},
             TCase{L"\xD800=\xDC00=\xD800", L"'\xD800':'\xDC00'"},
             TCase{L"[a]=;b", L"'[a]':';b'"},
         }) {
        EXPECT_EQ(TGivenSection(tCase.sLine + L'\0').sRead(), tCase.sExpected);
        // The lines around it are as they are.
        EXPECT_EQ(TGivenSection(L"first=1\0"s + tCase.sLine + L"\0last=2\0"s).sRead(),
                  L"'first':'1' " + tCase.sExpected + L" 'last':'2'");
    }
}

TEST(TProfileSection, EndsAtAnEmptyLine) {
    EXPECT_EQ(TGivenSection(L"a=1\0\0b=2\0"s).sRead(), L"'a':'1'");
    EXPECT_EQ(TGivenSection(L"\0a=1\0"s).sRead(), L"");
    EXPECT_EQ(TGivenSection(L""s).sRead(), L"");
}

TEST(TProfileSection, DoublesItsRoomUntilTheSectionFits) {
    struct TCase {
        std::size_t uLength;
        std::vector<DWORD> dwSizes;
    };
    for (TCase const & tCase : {
             TCase{1, {8192}},
             TCase{8189, {8192}},
             TCase{8190, {8192, 16384}}, // fits, but looks like one that does not
             TCase{8191, {8192, 16384}},
             TCase{16381, {8192, 16384}},
             TCase{16382, {8192, 16384, 32768}},
             TCase{100000, {8192, 16384, 32768, 65536, 131072}},
         }) {
        // The last unit is the terminator of the line.
        wstring const sLine(tCase.uLength - 1, L'x');
        TGivenSection tGiven(sLine + L'\0');
        EXPECT_EQ(tGiven.sRead(), sLine.empty() ? L"" : sShow(sLine.c_str()) + L":null") << tCase.uLength;
        EXPECT_EQ(tGiven.dwGetSizes(), tCase.dwSizes) << tCase.uLength;
    }
}

TEST(TProfileSection, ReadsSectionsOfAnySize) {
    zk_test::TTempDirectory const tDirectory;
    for (std::size_t const uValue :
         std::initializer_list<std::size_t>{8180, 8181, 8182, 8183, 8184, 8185, 8186, 16375, 16380, 1000000}) {
        std::string const sValue(uValue, 'v');
        wstring const sFile = tDirectory.sWrite(L"long.ini", "[A]\r\nkey=" + sValue + "\r\nz=1\r\n[B]\r\nother=1\r\n");
        EXPECT_EQ(sReadFile(sFile, L"A"), L"'key':'" + wstring(uValue, L'v') + L"' 'z':'1'") << uValue;
    }
}

TEST(TProfileSection, ReadsManyLines) {
    zk_test::TTempDirectory const tDirectory;
    std::string sText = "[A]\r\n";
    for (int i = 0; i < 20000; ++i)
        sText += "key" + std::to_string(i) + "=" + std::to_string(i * 3) + "\r\n";
    TProfileSection tSection(L"A", tDirectory.sWrite(L"many.ini", sText).c_str());
    std::vector<TProfileSection::TLine> const & vLines = tSection.GetLines();
    ASSERT_EQ(vLines.size(), 20000u);
    for (std::size_t i = 0; i < vLines.size(); ++i) {
        ASSERT_EQ(vLines[i].pzKey, L"key" + std::to_wstring(i));
        ASSERT_EQ(vLines[i].pzValue, std::to_wstring(i * 3));
    }
}

TEST(TProfileSection, HasNoLinesWhenTheSystemTellsNoLength) {
    // Whatever it left in the room.
    zk_test::TSystemCall<"GetPrivateProfileSectionW", decltype(GetPrivateProfileSectionW)> tCall(
        [](wchar_t const *, wchar_t * pzBuffer, DWORD, wchar_t const *) -> DWORD {
            std::copy_n(L"a=1\0", 5, pzBuffer);
            return 0;
        });
    TProfileSection tSection(L"section", L"C:\\file.ini");
    EXPECT_TRUE(tSection.GetLines().empty());
    EXPECT_EQ(tCall.iGetCalls(), 1);
}

TEST(TProfileSection, LetsItsLinesBeChanged) {
    zk_test::TTempDirectory const tDirectory;
    TProfileSection tSection(L"A", tDirectory.sWrite(L"some.ini", "[A]\na=1\nb=2\n").c_str());
    tSection.GetLines().erase(tSection.GetLines().begin());
    tSection.GetLines()[0].pzValue[0] = L'9';
    EXPECT_EQ(sShow(tSection), L"'b':'9'");
}

TEST(TProfileSection, CopiesShowTheTextOfTheirSource) {
    zk_test::TTempDirectory const tDirectory;
    wstring const sFile = tDirectory.sWrite(L"some.ini", "[A]\na=1\n[B]\nb=2\nc=3\n");
    TProfileSection tSource(L"B", sFile.c_str());
    TProfileSection tCopy(tSource);
    TProfileSection tAssigned(L"A", sFile.c_str());
    tAssigned = tSource;
    for (TProfileSection * const pCopy : {&tCopy, &tAssigned}) {
        ASSERT_EQ(pCopy->GetLines().size(), 2u);
        for (std::size_t i = 0; i < 2; ++i) {
            EXPECT_EQ(pCopy->GetLines()[i].pzKey, tSource.GetLines()[i].pzKey);
            EXPECT_EQ(pCopy->GetLines()[i].pzValue, tSource.GetLines()[i].pzValue);
        }
    }
    // The list of lines is the copy's own.
    tCopy.GetLines().clear();
    EXPECT_EQ(sShow(tSource), L"'b':'2' 'c':'3'");
    EXPECT_EQ(sShow(tAssigned), L"'b':'2' 'c':'3'");
}

TEST(TProfileSection, KeepsItsLinesWhenItIsMovedFrom) {
    // A move is a copy: the lines of the target point into the source, which must not lose its text.
    zk_test::TTempDirectory const tDirectory;
    TProfileSection tSource(L"A", tDirectory.sWrite(L"some.ini", "[A]\na=1\n").c_str());
    TProfileSection tTarget(std::move(tSource));
    EXPECT_EQ(sShow(tTarget), L"'a':'1'");
    EXPECT_EQ(sShow(tSource), L"'a':'1'"); // NOLINT(bugprone-use-after-move)
}

TEST(TProfileSection, IsReadOnSeveralThreadsAtOnce) {
    zk_test::TTempDirectory const tDirectory;
    std::string sText;
    for (char const cSection : {'A', 'B', 'C', 'D'}) {
        sText += std::string("[") + cSection + "]\n";
        for (int i = 0; i < 100; ++i)
            sText += std::string(1, cSection) + std::to_string(i) + "=" + cSection + "\n";
    }
    wstring const sFile = tDirectory.sWrite(L"some.ini", sText);
    std::vector<int> iWrong(4, 0);
    {
        std::vector<std::jthread> tThreads;
        for (std::size_t uThread = 0; uThread < iWrong.size(); ++uThread)
            tThreads.emplace_back([&, uThread] {
                wstring const sSection(1, static_cast<wchar_t>(L'A' + uThread));
                for (int iRound = 0; iRound < 50; ++iRound) {
                    TProfileSection tSection(sSection.c_str(), sFile.c_str());
                    if (tSection.GetLines().size() != 100) ++iWrong[uThread];
                    for (TProfileSection::TLine const & tLine : tSection.GetLines())
                        if (tLine.pzKey[0] != sSection[0] || tLine.pzValue != sSection) ++iWrong[uThread];
                }
            });
    }
    EXPECT_EQ(iWrong, std::vector<int>(4, 0));
}
