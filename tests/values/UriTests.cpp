#include "ZkTools/Uri.h"

#include "ZkBase/Text.h"
#include "ZkBase/Windows.h"
#include "tests/support/Random.h"
#include "tests/support/SystemCall.h"
#include "tests/support/XmlDocument.h"

#include <gtest/gtest.h>

#include <shlwapi.h>
#include <wincrypt.h>

#include <cwchar>
#include <functional>
#include <random>
#include <regex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

using namespace std::string_literals;
using namespace std::string_view_literals;

namespace {

using std::wstring;
using testing::PrintToString;
using zk_test::sRandom;

} // namespace

// URIs

TEST(SPathToURI, MakesUrlsOfPaths) {
    struct {
        wchar_t const * pzPath;
        wchar_t const * pzUrl;
    } const atRows[] = {
        {L"C:\\a\\b.txt", L"file:///C:/a/b.txt"},
        {L"c:\\a b\\c%d#e.txt", L"file:///c:/a%20b/c%25d%23e.txt"},
        {L"\\\\server\\share\\a b", L"file://server/share/a%20b"},
        {L"C:\\a\\..\\b", L"file:///C:/b"},
        // A relative path gives no scheme.
        {L"a\\b c.txt", L"a/b%20c.txt"},
        {L"b.txt", L"b.txt"},
        // Another URL is left one.
        {L"http://host/a", L"http://host/a"},
    };
    for (auto const & tRow : atRows)
        EXPECT_EQ(sPathToURI(tRow.pzPath), tRow.pzUrl) << PrintToString(tRow.pzPath);
}

TEST(SPathToURI, TakesTheSchemeOffRelativePathsInAnyCase) {
    zk_test::TSystemCall<"UrlCreateFromPathW", decltype(UrlCreateFromPathW)> const tCreate(
        [](wchar_t const *, wchar_t * pzUrl, DWORD *, DWORD) {
            std::wcscpy(pzUrl, L"File:a/b");
            return S_OK;
        });
    EXPECT_EQ(sPathToURI(L"a\\b"), L"a/b");
}

TEST(SPathToURI, IsEmptyForWhatDoesNotFit) {
    wstring const sFits = L"C:\\" + wstring(2083 - 11, L'a');
    EXPECT_EQ(sPathToURI(sFits), L"file:///C:/" + wstring(2083 - 11, L'a'));
    EXPECT_EQ(sPathToURI(sFits + L"a"), L"");
    EXPECT_EQ(sPathToURI(wstring(100'000, L'a')), L"");
}

TEST(SStringToURI, EscapesThePercentSignToo) {
    EXPECT_EQ(sStringToURI(L"a b%20c"), L"a%20b%2520c");
    EXPECT_EQ(sStringToURI(L"abc-._~"), L"abc-._~");
    EXPECT_EQ(sStringToURI(L"<\">"), L"%3C%22%3E");
    EXPECT_EQ(sStringToURI(L"a\0b"s), L"a"); // a zero ends it
    EXPECT_EQ(sStringToURI(wstring(2083, L'a')), wstring(2083, L'a'));
    EXPECT_EQ(sStringToURI(wstring(2084, L'a')), L"");
    EXPECT_EQ(sStringToURI(wstring(100'000, L' ')), L"");
}

TEST(SUnescapeURI, GivesTheTextBack) {
    struct {
        wstring sText;
        wstring sPlain;
    } const atRows[] = {
        {L"", L""},
        {L"a%20b", L"a b"},
        {L"%41%5a%5A", L"AZZ"},
        {L"100%", L"100%"},
        {L"%4", L"%4"},
        {L"%zz", L"%zz"},
        {L"%2520", L"%20"}, // once
        {L"a%00b", L"a"},   // an escaped zero ends it
        {L"a\0b"s, L"a"},   // and so does one that is not
        {L"a+b", L"a+b"},
        {L"\xD83D%20\xDE00\xD800", L"\xD83D \xDE00\xD800"},
    };
    for (auto const & tRow : atRows)
        EXPECT_EQ(sUnescapeURI(tRow.sText), tRow.sPlain) << PrintToString(tRow.sText);
    for (std::size_t const uLength : {126u, 127u, 128u, 129u, 100'000u}) {
        wstring sLong(uLength, L'a');
        EXPECT_EQ(sUnescapeURI(sLong), sLong) << uLength;
        EXPECT_EQ(sUnescapeURI(sLong + L"%20"), sLong + L" ") << uLength;
    }
}

TEST(SStringToURI, IsUndoneByUnescaping) {
    for (wchar_t const * pz : {L"a b", L"100% <sure>", L"a%20b", L"%%", L"\"x\""})
        EXPECT_EQ(sUnescapeURI(sStringToURI(pz)), pz);
}

TEST(FIsValidURL, AsksThePlatformAndRefusesLineEnds) {
    struct {
        wstring sText;
        bool fUrl;
        bool fWithoutQuery;
    } const atRows[] = {
        {L"http://host/path", true, true},
        {L"https://host", true, true},
        {L"ftp://host/a", true, true},
        {L"file:///C:/a", true, true},
        {L"mailto:a@b.c", true, true},
        {L"http://host/path?query", true, false},
        {L"http://host/path?", true, false},
        {L"http://host/path?a#b", true, false},
        {L"http://host/path#fragment", true, true},
        {L"http://host/path#a?b", true, true},
        {L"http://host/path\0?"s, true, true},
        {L"", false, false},
        {L"host/path", false, false},
        {L"C:\\a", false, false},
        {L"http://host/path\n", false, false},
        {L"http://host/path\r", false, false},
        {L"http://host\r\n/path?query", false, false},
        {L"\nhttp://host", false, false},
        {L"http://host\0\n"s, false, false},
    };
    for (auto const & tRow : atRows) {
        EXPECT_EQ(fIsValidURL(tRow.sText), tRow.fUrl) << PrintToString(tRow.sText);
        EXPECT_EQ(fIsValidURL_NoQuery(tRow.sText), tRow.fWithoutQuery) << PrintToString(tRow.sText);
    }
}

TEST(FIsValidURL, TakesThePlatformsWordForAQuery) {
    // Not every version of it has a word: Wine's does not look for queries.
    zk_test::TSystemCall<"UrlIsW", decltype(UrlIsW)> const tIs([](wchar_t const *, URLIS) -> BOOL { return TRUE; });
    EXPECT_TRUE(fIsValidURL(L"http://host"));
    EXPECT_FALSE(fIsValidURL_NoQuery(L"http://host"));
}

TEST(FIsValidURI, TakesAbsoluteAndRelativeOnes) {
    struct {
        wstring sText;
        bool fExpected;
    } const atRows[] = {
        {L"http://host:80/path?query#fragment", true},
        {L"urn:isbn:0451450523", true},
        {L"mailto:a@b.c", true},
        {L"/path/only", true},
        {L"path", true},
        {L"?query", true},
        {L"http://host/a%20b", true},
        {L"http://host/a b", false},
        {L"http://host/<a>", false},
        {L"http://host/\u00E4", false},
        {L"http://host/\xD83D", false},
        {L"http://host/\n", false},
        {L"1http://host", false},
        {L"a\0 "s, true}, // it reads up to a zero
    };
    for (auto const & tRow : atRows)
        EXPECT_EQ(fIsValidURI(tRow.sText), tRow.fExpected) << PrintToString(tRow.sText);
    EXPECT_TRUE(fIsValidURI(L"http://host/" + wstring(100'000, L'a')));
    EXPECT_FALSE(fIsValidURI(L"http://host/" + wstring(100'000, L' ')));
}

// E-mail addresses

namespace {

constexpr wchar_t const * pzEMailExpression =
    LR"!!((?:[-!#-'*+\/-9=?A-Z^-~]+(?:\.[-!#-'*+\/-9=?A-Z^-~]+)*|"(?:[]!#-[^-~ \t]|(?:\\[\t -~]))+")@[0-9A-Za-z](?:[0-9A-Za-z-]{0,61}[0-9A-Za-z])?(?:\.[0-9A-Za-z](?:[0-9A-Za-z-]{0,61}[0-9A-Za-z])?)+)!!";

} // namespace

TEST(FIsValidEMail, TakesALocalPartAndADomain) {
    wstring const s63(63, L'x');
    struct {
        wstring sText;
        bool fExpected;
    } const atRows[] = {
        {L"a@b.c", true},
        {L"first.second.third@example.com", true},
        {L"!#$%&'*+-/=?^_`{|}~09AZaz@b.c", true},
        {L".a@b.c", false},
        {L"a.@b.c", false},
        {L"a..b@c.d", false},
        {L"@b.c", false},
        {L"a@@b.c", false},
        {L"a b@c.d", false},
        {L"a(b@c.d", false},
        {L"a,b@c.d", false},
        {L"a:b@c.d", false},
        {L"a;b@c.d", false},
        {L"a<b@c.d", false},
        {L"a[b@c.d", false},
        {L"a\\b@c.d", false},
        {L"a\"b@c.d", false},
        {L"a\x7F@c.d", false},
        {L"\u00E4@c.d", false},
        {L"\xD83D\xDE00@c.d", false},
        {L"a\xD83D@c.d", false},
        {L"a\0@c.d"s, false},
        // The domain.
        {L"a@b", false},
        {L"a@b.", false},
        {L"a@.b", false},
        {L"a@b..c", false},
        {L"a@b.c.", false},
        {L"a@b.c\0"s, false},
        {L"a@b.c\n", false},
        {L" a@b.c", false},
        {L"a@b.c ", false},
        {L"a@1.2", true},
        {L"a@1-2.3--4", true},
        {L"a@-b.c", false},
        {L"a@b-.c", false},
        {L"a@b.-c", false},
        {L"a@b.c-", false},
        {L"a@b_c.d", false},
        {L"a@\u00E4.c", false},
        {L"a@" + s63 + L".c", true},
        {L"a@" + s63 + L"x.c", false},
        {L"a@b." + s63, true},
        {L"a@b." + s63 + L"x", false},
        {L"a@" + s63 + L"." + s63 + L"." + s63 + L"." + s63 + L"." + s63, true}, // no limit to the whole
        {L"", false},
        {L"@", false},
        {L"a", false},
        // Quoted: pairs of a backslash and a character, and nothing else.
        {L"\"\\a\"@b.c", true},
        {L"\"\\a\\\"\\\\\\ \\\t\\~\\@\"@b.c", true},
        {L"\"a\"@b.c", false},
        {L"\"\"@b.c", false},
        {L"\"\\a@b.c", false},
        {L"\"\\\"@b.c", false},
        {L"\"\\a\\\"@b.c", false},
        {L"\"\\a\"x@b.c", false},
        {L"x\"\\a\"@b.c", false},
        {L"\"\\a\".x@b.c", false},
        {L"\"\\\x7F\"@b.c", false},
        {L"\"\\\n\"@b.c", false},
        {L"\"\\\u00E4\"@b.c", false},
        {L"\"", false},
        {L"\"\\", false},
        {L"\"!#-x\"@b.c", false},
    };
    for (auto const & tRow : atRows)
        EXPECT_EQ(fIsValidEMail(tRow.sText), tRow.fExpected) << PrintToString(tRow.sText);
}

TEST(FIsValidEMail, IsTheExpression) {
    std::wregex const tExpression(pzEMailExpression);
    std::mt19937 tRandom(1);
    constexpr std::wstring_view sPieces[] = {
        L"a", L"B9", L".", L"@", L"-",      L"\"", L"\\",   L"\\a",  L"x.y", L"a@b.c", L" ",       L"\t",   L"]!#-",
        L"^", L"~",  L"[", L"/", L"\u00E4", L"_",  L"\x7F", L"\\\"", L"!",   L"b.c",   L"\"\\a\"", L"\0"sv, L"\xD83D"};
    int iValid = 0;
    for (int i = 0; i < 60'000; ++i) {
        wstring sText;
        for (unsigned int uPieces = tRandom() % 7; uPieces != 0; --uPieces)
            sText += sPieces[tRandom() % std::size(sPieces)];
        if (i % 2 == 0) sText += L"@b.c";
        bool const fExpected = std::regex_match(sText, tExpression);
        ASSERT_EQ(fIsValidEMail(sText), fExpected) << PrintToString(sText);
        iValid += fExpected;
    }
    EXPECT_GT(iValid, 1000);
    // Every unit at every kind of place.
    for (unsigned int u = 0; u <= 0xFFFF; ++u) {
        if (u == 0x200) u = 0xFF00;
        wchar_t const c = static_cast<wchar_t>(u);
        for (wstring const & sText :
             {wstring(1, c) + L"@b.c", L"\"\\" + wstring(1, c) + L"\"@b.c", L"\"" + wstring(1, c) + L"\"@b.c",
              L"a@" + wstring(1, c) + L".c", L"a@b" + wstring(1, c) + L"b.c", L"a@b.c" + wstring(1, c)})
            ASSERT_EQ(fIsValidEMail(sText), std::regex_match(sText, tExpression)) << PrintToString(sText);
    }
    for (std::size_t uLabel = 60; uLabel < 67; ++uLabel) {
        wstring const sText = L"a@" + wstring(uLabel, L'-').replace(0, 1, L"b").append(L"b.c");
        EXPECT_EQ(fIsValidEMail(sText), std::regex_match(sText, tExpression)) << uLabel;
    }
}

TEST(FIsValidEMail, ReadsLongTextsInLinearTimeWithoutDeepStack) {
    constexpr std::size_t uLong = 100'000;
    wstring sDots;
    wstring sPairs = L"\"";
    wstring sLabels = L"a@b";
    for (std::size_t u = 0; u < uLong; u += 2) {
        sDots += L"a.";
        sPairs += L"\\a";
        sLabels += L".c";
    }
    EXPECT_TRUE(fIsValidEMail(wstring(uLong, L'a') + L"@b.c"));
    EXPECT_FALSE(fIsValidEMail(wstring(uLong, L'a')));
    EXPECT_TRUE(fIsValidEMail(sDots + L"a@b.c"));
    EXPECT_FALSE(fIsValidEMail(sDots + L"@b.c"));
    EXPECT_TRUE(fIsValidEMail(sPairs + L"\"@b.c"));
    EXPECT_FALSE(fIsValidEMail(sPairs));
    EXPECT_TRUE(fIsValidEMail(sLabels));
    EXPECT_FALSE(fIsValidEMail(sLabels + L"."));
    EXPECT_FALSE(fIsValidEMail(L"a@" + wstring(uLong, L'b') + L".c"));
    EXPECT_FALSE(fIsValidEMail(wstring(uLong, L'@')));
}

// XML names

TEST(SConvertToXMLIdentifier, MakesANameOfAnyText) {
    struct {
        wstring sText;
        wchar_t const * pzName;
    } const atRows[] = {
        {L"", L""},
        {L"name", L"name"},
        {L"first name", L"firstName"},
        {L"first  name", L"firstName"},
        {L"first \u00E4name", L"first\u00C4name"}, // upper case in every script
        {L"first \u0436", L"first\u0416"},
        {L"first 1st", L"first1st"},
        {L"first -a", L"first-a"}, // the hyphen takes the upper case
        {L"1st", L"_st"},
        {L"9a", L"_a"},
        {L"-a", L"_a"},
        {L".a", L"_a"},
        {L" a", L"_a"},
        {L"!!a", L"_A"},
        {L" ", L"_"},
        {L"a ", L"a"},
        {L"don't", L"dont"},
        {L"don`t", L"dont"},
        {L"don\u00B4t", L"dont"},
        {L"a 't", L"at"}, // the apostrophe takes the upper case back
        {L"a' t", L"aT"},
        {L"'a", L"_a"},
        {L"a:b c", L"a:bC"},
        {L":b", L":b"},
        {L"a:", L"a:"},
        {L":", L":"},
        {L"::", L":_"},
        {L"a::b", L"a:_b"},
        {L"a:b:c", L"a:bC"}, // a second colon is like other refused characters
        {L"1:2", L"_:_"},
        {L"a b:c d", L"aB:cD"},
        {L"a_-.9\u00B7", L"a_-.9\u00B7"},
        {L"a\0b"s, L"aB"},
        {L"\0"s, L"_"},
        {L"a\xD83D\xDE00"
         L"b",
         L"aB"},
        {L"\xD83D\xDE00", L"_"},
        {L"\u6F22\u5B57", L"\u6F22\u5B57"},
        {L"a\uFFFE\uFFFFb", L"aB"},
        {L"a\u00D7b", L"aB"},
    };
    for (auto const & tRow : atRows) {
        EXPECT_EQ(sConvertToXMLIdentifier(tRow.sText), tRow.pzName) << PrintToString(tRow.sText);
        wstring sStreamed;
        StreamXMLIdentifier(tRow.sText, [&](wchar_t c) { sStreamed += c; });
        EXPECT_EQ(sStreamed, tRow.pzName);
    }
}

TEST(SConvertToXMLIdentifier, GivesNamesOnly) {
    std::mt19937 tRandom(2);
    for (int i = 0; i < 20'000; ++i) {
        wstring sText = sRandom(tRandom, L"aB1-'`\u00B4 .:_\0\xD83D\u00E4\u6F22\u0301"sv, 12);
        for (wstring const & sName : {sConvertToXMLIdentifier(sText)}) {
            bool fFirst = true;
            for (wchar_t const c : sName) {
                bool const fColon = c == L':';
                ASSERT_TRUE(fColon ||
                            (fFirst ? string_functions::fIsNCNameFirstChar(c) : string_functions::fIsNCNameChar(c)))
                    << PrintToString(sText) << PrintToString(sName);
                fFirst = fColon;
            }
            ASSERT_EQ(sText.find(L':') != wstring::npos, sName.find(L':') != wstring::npos);
            ASSERT_EQ(sConvertToXMLIdentifier(sName), sName) << "a name stays";
        }
    }
}

TEST(SConvertToXMLIdentifier, TakesAView) {
    EXPECT_EQ(sConvertToXMLIdentifier(L"first name:x"sv.substr(0, 8)), L"firstNa");
    EXPECT_EQ(sConvertToXMLIdentifier(std::wstring_view()), L"");
}

TEST(SConvertToXMLIdentifier, TakesLongTexts) {
    wstring sText;
    while (sText.size() < 100'000)
        sText += L"a b";
    EXPECT_EQ(sConvertToXMLIdentifier(sText).size(), sText.size() / 3 * 2);
    EXPECT_EQ(sConvertToXMLIdentifier(wstring(100'000, L' ')), L"_");
}

TEST(StreamXMLIdentifier, CallsAnEmptyFunctionOnlyForOutput) {
    EXPECT_NO_THROW(StreamXMLIdentifier(L"", nullptr));
    EXPECT_THROW(StreamXMLIdentifier(L"a", nullptr), std::bad_function_call);
    EXPECT_THROW(StreamXMLIdentifier(L":", nullptr), std::bad_function_call);
}

// XPath literals

TEST(SConvertToXPathLiteral, QuotesAsTheTextAllows) {
    struct {
        wstring sText;
        wstring sLiteral;
    } const atRows[] = {
        {L"", L"''"},
        {L"abc", L"'abc'"},
        {L"say \"hi\"", L"'say \"hi\"'"},
        {L"don't", L"\"don't\""},
        {L"'", L"\"'\""},
        {L"a'b\"c", L"concat('a',\"'\",'b\"c')"},
        {L"'\"", L"concat(\"'\",'\"')"},
        {L"\"'", L"concat('\"',\"'\")"},
        {L"a\"b'", L"concat('a\"b',\"'\")"}, // nothing behind the last apostrophe
        {L"''\"", L"concat(\"'\",\"'\",'\"')"},
        {L"'a'\"'b", L"concat(\"'\",'a',\"'\",'\"',\"'\",'b')"},
        {L"a\0'\""s, L"concat('a\0',\"'\",'\"')"s},
        {L"\xD83D'\xDE00\"", L"concat('\xD83D',\"'\",'\xDE00\"')"},
    };
    for (auto const & tRow : atRows)
        EXPECT_EQ(sConvertToXPathLiteral(tRow.sText), tRow.sLiteral) << PrintToString(tRow.sText);
}

TEST(SConvertToXPathLiteral, MeansItsTextToAnXPathEngine) {
    // Every text stands in a document, and is searched for by its literal.
    std::mt19937 tRandom(3);
    std::vector<wstring> sTexts{L"", L"'", L"\"", L"'\"", L"\"'", L"a\"b'", L"<&>", L"\u6F22 \u00E4"};
    while (sTexts.size() < 300)
        sTexts.push_back(sRandom(tRandom, L"''\"\"a ,)(&\u00E4", 10));
    std::string sDocument = "<all>";
    for (wstring const & sText : sTexts) {
        sDocument += "<t>";
        for (wchar_t const c : sText)
            sDocument += "&#" + std::to_string(unsigned{c}) + ";";
        sDocument += "</t>";
    }
    zk_test::TXmlDocument const tDocument(sDocument + "</all>");
    for (std::size_t u = 0; u < sTexts.size(); ++u) {
        wstring const sLiteral = sConvertToXPathLiteral(sTexts[u]);
        EXPECT_EQ(tDocument.lCount(L"/all/t[" + std::to_wstring(u + 1) + L"][. = " + sLiteral + L"]"), 1)
            << PrintToString(sLiteral);
        EXPECT_EQ(tDocument.lCount(L"/all/t[. = " + sLiteral + L"]"), std::ranges::count(sTexts, sTexts[u]))
            << PrintToString(sLiteral);
    }
}

TEST(SConvertToXPathLiteral, TakesLongTexts) {
    wstring const sText = wstring(100'000, L'\'') + L"\"";
    EXPECT_EQ(sConvertToXPathLiteral(sText).size(), 7 + 100'000 * 4 + 3 + 1);
}

// Base64

TEST(Base64, IsThatOfTheUtf8Form) {
    struct {
        wstring sText;
        wchar_t const * pzBase64;
    } const atRows[] = {
        {L"", L""},
        {L"a", L"YQ=="},
        {L"ab", L"YWI="},
        {L"abc", L"YWJj"},
        {L"\0"s, L"AA=="},
        {L"a\0b"s, L"YQBi"},
        {L"\u00E4\u6F22", L"w6TmvKI="},
        {L"\xD83D\xDE00", L"8J+YgA=="},
        {L"\u00FF\u00FF\u00FF", L"w7/Dv8O/"},
        {L"\r\n", L"DQo="},
    };
    for (auto const & tRow : atRows) {
        EXPECT_EQ(sStringToBase64(tRow.sText), tRow.pzBase64) << PrintToString(tRow.sText);
        EXPECT_EQ(sBase64ToString(tRow.pzBase64), tRow.sText) << tRow.pzBase64;
    }
}

TEST(Base64, IsOneLineAndComesBack) {
    std::mt19937 tRandom(4);
    for (std::size_t const uLength : {1u, 47u, 48u, 49u, 57u, 100u, 1000u, 100'000u}) {
        wstring sText(uLength, L'\0');
        for (wchar_t & c : sText)
            c = static_cast<wchar_t>(tRandom() % 0xD800);
        wstring const sBase64 = sStringToBase64(sText);
        EXPECT_EQ(sBase64.size() % 4, 0u);
        EXPECT_EQ(sBase64.find_first_not_of(L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/="),
                  wstring::npos);
        EXPECT_EQ(sBase64ToString(sBase64), sText) << uLength;
    }
}

TEST(Base64, PassesOverLineEnds) {
    EXPECT_EQ(sBase64ToString(L"YW\r\nJj\r\n"), L"abc");
}

namespace {

/// The number of the system error that a call throws, and its text; 0 for none.
std::pair<int, std::string> tGetSystemError(std::function<void()> const & fnCall) {
    try {
        fnCall();
    } catch (std::system_error const & tError) {
        EXPECT_EQ(tError.code().category(), std::system_category());
        return {tError.code().value(), tError.what()};
    }
    return {0, ""};
}

} // namespace

TEST(Base64, RefusesWhatIsNoText) {
    for (wchar_t const * pz : {L"\xD83D", L"a\xD83D",
                               L"\xDE00"
                               L"a",
                               L"\xDE00\xD83D"})
        EXPECT_EQ(tGetSystemError([&] { (void)sStringToBase64(pz); }).first, ERROR_NO_UNICODE_TRANSLATION);
    // FF, a cut sequence, a half of a pair, an overlong zero.
    for (wchar_t const * pz : {L"/w==", L"4oI=", L"7aC9", L"wIA="})
        EXPECT_NE(tGetSystemError([&] { (void)sBase64ToString(pz); }).first, 0) << PrintToString(pz);
    EXPECT_EQ(tGetSystemError([] { (void)sBase64ToString(L"/w=="); }).first, ERROR_NO_UNICODE_TRANSLATION);
}

TEST(Base64, RefusesWhatIsNoBase64) {
    for (wstring const & s : {L"*"s, L"YQ=*"s, L"\u00E4\u00E4\u00E4\u00E4"s, L"\xD83D\xD83D\xD83D\xD83D"s}) {
        auto const [iError, sText] = tGetSystemError([&] { (void)sBase64ToString(s); });
        EXPECT_NE(iError, 0) << PrintToString(s);
        EXPECT_TRUE(sText.starts_with("CryptStringToBinary failed (1)")) << sText;
    }
}

TEST(Base64, TellsWhichCallOfThePlatformFailed) {
    using TEncode = zk_test::TSystemCall<"CryptBinaryToStringW", decltype(CryptBinaryToStringW)>;
    using TDecode = zk_test::TSystemCall<"CryptStringToBinaryW", decltype(CryptStringToBinaryW)>;
    for (int const iFailing : {1, 2}) {
        std::string const sCall = " failed (" + std::to_string(iFailing) + ")";
        {
            TEncode const tEncode([&](BYTE const * p, DWORD dw, DWORD dwFlags, wchar_t * pz, DWORD * pdw) -> BOOL {
                EXPECT_EQ(dwFlags, 0x40000001u);
                if (tEncode.iGetCalls() == iFailing) return zk_test::tFailWith(ERROR_OUTOFMEMORY, FALSE);
                return tEncode.Original(p, dw, dwFlags, pz, pdw);
            });
            auto const [iError, sText] = tGetSystemError([] { (void)sStringToBase64(L"a"); });
            EXPECT_EQ(iError, ERROR_OUTOFMEMORY);
            EXPECT_TRUE(sText.starts_with("CryptBinaryToString" + sCall)) << sText;
        }
        TDecode const tDecode([&](wchar_t const * pz, DWORD dw, DWORD dwFlags, BYTE * p, DWORD * pdw, DWORD * pdwSkip,
                                  DWORD * pdwFlags) -> BOOL {
            EXPECT_EQ(dwFlags, 1u);
            if (tDecode.iGetCalls() == iFailing) return zk_test::tFailWith(ERROR_INVALID_DATA, FALSE);
            return tDecode.Original(pz, dw, dwFlags, p, pdw, pdwSkip, pdwFlags);
        });
        auto const [iError, sText] = tGetSystemError([] { (void)sBase64ToString(L"YQ=="); });
        EXPECT_EQ(iError, ERROR_INVALID_DATA);
        EXPECT_TRUE(sText.starts_with("CryptStringToBinary" + sCall)) << sText;
    }
}

TEST(Base64, HandsTheEmptyTextToThePlatformAndTakesItsRefusal) {
    zk_test::TSystemCall<"CryptStringToBinaryW", decltype(CryptStringToBinaryW)> const tDecode(
        [](wchar_t const *, DWORD, DWORD, BYTE *, DWORD *, DWORD *, DWORD *) -> BOOL {
            return zk_test::tFailWith(ERROR_INVALID_DATA, FALSE);
        });
    EXPECT_EQ(sBase64ToString(L""), L"");
    EXPECT_EQ(tDecode.iGetCalls(), 1);
}
