#include "ZkTools/TextStream.h"

#include "ZkBase/Windows.h"
#include "ZkTools/Exceptions.h"
#include "ZkTools/FileStream.h"
#include "ZkTools/MessageIds.h"
#include "ZkTools/Uri.h"
#include "tests/support/Random.h"
#include "tests/support/SystemCall.h"
#include "tests/support/TempDirectory.h"
#include "tests/support/VirtualSlot.h"
#include "tests/support/XmlDocument.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

using namespace std::string_literals;
using namespace std::string_view_literals;
using namespace zk_test;

namespace {

using std::wstring;
using testing::PrintToString;

constexpr EXMLParams eElement{};
constexpr EXMLParams eAttribute = xmlEscapeAttribute;
constexpr EXMLParams eAttributeWithTabs = xmlEscapeAttribute | xmlEscapeTab;

/// Keeps the bytes and the calls.
struct TRawStream : IRawStream {
    ~TRawStream() override {
        if (pfDeleted != nullptr) *pfDeleted = true;
    }
    void Flush() override { ++iFlushes; }
    void ReadData(void *, unsigned long) override { throw std::logic_error("never read"); }
    void WriteData(void const * pSource, unsigned long dwCount) override {
        if (iWritesToFailure == 0) throw std::out_of_range("full");
        --iWritesToFailure;
        sTaken.append(static_cast<char const *>(pSource), dwCount);
        dwSizes.push_back(dwCount);
    }
    void Seek(TLongOnly const &, int) override { throw std::logic_error("never moved"); }

    std::string sTaken;
    std::vector<unsigned long> dwSizes;
    int iFlushes = 0;
    int iWritesToFailure = -1;
    bool * pfDeleted = nullptr;
};

using TWriter = std::function<void(TOTextStream &)>;

/// The bytes that reach the stream, up to the close.
std::string sWritten(ECodePage eCodePage, TWriter const & fnWrite) {
    TRawStream tRaw;
    TOTextStream tText(eCodePage, &tRaw);
    fnWrite(tText);
    tText.Close();
    return tRaw.sTaken;
}

std::string sUtf16(std::wstring_view sText) {
    return {reinterpret_cast<char const *>(sText.data()), sText.size() * sizeof(wchar_t)};
}

std::string sUtf16Swapped(std::wstring_view sText) {
    std::string sBytes = sUtf16(sText);
    for (std::size_t u = 0; u < sBytes.size(); u += 2)
        std::swap(sBytes[u], sBytes[u + 1]);
    return sBytes;
}

// The plain forms: unit by unit, with a flag for the last unit.

bool fIsValid(wchar_t c) {
    return c == 9 || c == 10 || c == 13 || (c >= 32 && c <= 0xD7FF) || (c >= 0xE000 && c <= 0xFFFD);
}

wstring sPlainXml(std::wstring_view sText, EXMLParams eParams) {
    bool const fAttribute = (eParams & xmlEscapeAttribute) != 0;
    bool const fTab = (eParams & xmlEscapeTab) != 0;
    wstring const sLineFeed = fAttribute ? L"&#10;" : L"\n";
    wstring sResult;
    bool fReturn = false;
    for (wchar_t const c : sText) {
        if (fReturn) {
            sResult += sLineFeed;
            fReturn = false;
            if (c == L'\n') continue;
        }
        switch (c) {
        case L'\t':
            sResult += fAttribute && fTab ? L"&#9;" : L"\t";
            break;
        case L'\n':
            sResult += fAttribute ? L"&#13;&#10;" : L"\r\n";
            break;
        case L'\r':
            sResult += fAttribute ? L"&#13;" : L"\r";
            fReturn = true;
            break;
        case L'"':
            sResult += fAttribute ? L"&quot;" : L"\"";
            break;
        case L'\'':
            sResult += fAttribute ? L"&apos;" : L"'";
            break;
        case L'&':
            sResult += L"&amp;";
            break;
        case L'<':
            sResult += L"&lt;";
            break;
        case L'>':
            sResult += L"&gt;";
            break;
        default:
            sResult += fIsValid(c) ? c : L'?';
        }
    }
    if (fReturn) sResult += sLineFeed;
    return sResult;
}

wstring sPlainComment(std::wstring_view sText) {
    wstring sResult;
    bool fReturn = false;
    for (std::size_t u = 0; u < sText.size(); ++u) {
        wchar_t c = sText[u];
        if (fReturn) {
            sResult += L'\n';
            fReturn = false;
            if (c == L'\n') continue;
        }
        if (u != 0 && c == L'-' && sText[u - 1] == L'-') sResult += L' ';
        if (!fIsValid(c)) c = L'?';
        if (c == L'\n') sResult += L'\r';
        sResult += c;
        fReturn = c == L'\r';
    }
    return sResult;
}

/// Units that matter to the escaping, and some that don't.
constexpr std::wstring_view sTricky =
    L"\r\n\t\"'&<>-- ax\u00E4\u6F22\xD800\xDC00\xDFFF\xE000\xFFFD\xFFFE\xFFFF\0\x1F\x20"sv;

} // namespace

// XML

TEST(TOTextStream, EscapesText) {
    struct {
        wstring sText;
        wchar_t const * pzElement;
        wchar_t const * pzAttribute;
    } const atRows[] = {
        {L"", L"", L""},
        {L"abc", L"abc", L"abc"},
        {L"a\nb", L"a\r\nb", L"a&#13;&#10;b"},
        {L"a\rb", L"a\r\nb", L"a&#13;&#10;b"},
        {L"a\r\nb", L"a\r\nb", L"a&#13;&#10;b"},
        {L"a\r", L"a\r\n", L"a&#13;&#10;"},
        {L"\r\r\n", L"\r\n\r\n", L"&#13;&#10;&#13;&#10;"},
        {L"\n\r", L"\r\n\r\n", L"&#13;&#10;&#13;&#10;"},
        {L"\r\n\n", L"\r\n\r\n", L"&#13;&#10;&#13;&#10;"},
        {L"\"'", L"\"'", L"&quot;&apos;"},
        {L"&<>", L"&amp;&lt;&gt;", L"&amp;&lt;&gt;"},
        {L"]]>&amp;", L"]]&gt;&amp;amp;", L"]]&gt;&amp;amp;"},
        {L"a\0b"s, L"a?b", L"a?b"},
        {L"\x01\x08\x0B\x0C\x0E\x1F\x20", L"?????? ", L"?????? "},
        {L"\x7F\x80\x85\xA0", L"\x7F\x80\x85\xA0", L"\x7F\x80\x85\xA0"},
        {L"\xD7FF\xE000\xFFFD", L"\xD7FF\xE000\xFFFD", L"\xD7FF\xE000\xFFFD"},
        {L"\xFFFE\xFFFF", L"??", L"??"},
        // Deliberate: a character above 0xFFFF is two refused units.
        {L"\xD83D\xDE00", L"??", L"??"},
        {L"\xD83D", L"?", L"?"},
        {L"\xDE00", L"?", L"?"},
    };
    for (auto const & tRow : atRows) {
        EXPECT_EQ(TOTextStream::sGetXMLString(tRow.sText, eElement), tRow.pzElement) << PrintToString(tRow.sText);
        EXPECT_EQ(TOTextStream::sGetXMLString(tRow.sText, eAttribute), tRow.pzAttribute) << PrintToString(tRow.sText);
        for (ECodePage const eCodePage : {ecpUtf8, ecpUtf16, ecpUtf16Swapped, ecpWestern}) {
            for (EXMLParams const eParams : {eElement, eAttribute}) {
                wstring const sXml = eParams == eAttribute ? tRow.pzAttribute : tRow.pzElement;
                EXPECT_EQ(sWritten(eCodePage, [&](TOTextStream & t) { t.WriteXML(tRow.sText, eParams); }),
                          sWritten(eCodePage, [&](TOTextStream & t) { t.Write(sXml); }));
            }
        }
    }
}

TEST(TOTextStream, EscapesTabsInAttributesOnRequest) {
    EXPECT_EQ(TOTextStream::sGetXMLString(L"\ta\t\"", eElement), L"\ta\t\"");
    EXPECT_EQ(TOTextStream::sGetXMLString(L"\ta\t\"", eAttribute), L"\ta\t&quot;");
    EXPECT_EQ(TOTextStream::sGetXMLString(L"\ta\t\"", eAttributeWithTabs), L"&#9;a&#9;&quot;");
    EXPECT_EQ(TOTextStream::sGetXMLString(L"\ta\t\"", xmlEscapeTab), L"\ta\t\"");
    EXPECT_EQ(TOTextStream::sGetXMLString(L"\t\"", static_cast<EXMLParams>(4)), L"\t\"");
}

TEST(TOTextStream, EscapesAsThePlainFormDoes) {
    std::mt19937 tRandom(1);
    for (int i = 0; i < 30'000; ++i) {
        // Long texts cross the pieces, texts with few specials have long runs.
        wstring sText = sRandom(tRandom, sTricky, i % 100 == 0 ? 3000 : 40);
        if (i % 3 == 0) sText = wstring(tRandom() % 700, L'x') + sText + wstring(tRandom() % 700, L'\u6F22');
        for (EXMLParams const eParams : {eElement, eAttribute, eAttributeWithTabs, xmlEscapeTab}) {
            ASSERT_EQ(TOTextStream::sGetXMLString(sText, eParams), sPlainXml(sText, eParams))
                << PrintToString(sText) << " with " << eParams;
        }
        ASSERT_EQ(sWritten(ecpUtf16, [&](TOTextStream & t) { t.WriteXMLComment(sText); }), sUtf16(sPlainComment(sText)))
            << PrintToString(sText);
    }
}

TEST(TOTextStream, KnowsEveryUnit) {
    for (unsigned int u = 0; u <= 0xFFFF; ++u) {
        // At every place among the eight units that are looked at together.
        wstring sText = L"xxxxxxxxxxxx";
        sText[u % 12] = static_cast<wchar_t>(u);
        for (EXMLParams const eParams : {eElement, eAttributeWithTabs})
            ASSERT_EQ(TOTextStream::sGetXMLString(sText, eParams), sPlainXml(sText, eParams)) << u;
    }
}

TEST(TOTextStream, LooksAtNothingBehindAView) {
    std::mt19937 tRandom(2);
    for (std::size_t uSize = 0; uSize < 40; ++uSize) {
        // A block of exactly this size, which may end at a page that cannot be read.
        auto const pText = std::make_unique<wchar_t[]>(uSize);
        std::generate_n(pText.get(), uSize, [&] { return sTricky[tRandom() % sTricky.size()]; });
        std::wstring_view const sText(pText.get(), uSize);
        EXPECT_EQ(TOTextStream::sGetXMLString(sText, eAttribute), sPlainXml(sText, eAttribute));
    }
}

TEST(TOTextStream, PartsHyphensInComments) {
    struct {
        wstring sText;
        wchar_t const * pzComment;
    } const atRows[] = {
        {L"", L""},
        {L"-", L"-"},
        {L"--", L"- -"},
        {L"---", L"- - -"},
        {L"a--b-", L"a- -b-"},
        {L"<&>\"'", L"<&>\"'"},
        {L"a\nb", L"a\r\nb"},
        {L"a\rb", L"a\r\nb"},
        {L"a\r\nb", L"a\r\nb"},
        {L"\r\r\n", L"\r\n\r\n"},
        {L"-\r-", L"-\r\n-"},
        {L"-\n-", L"-\r\n-"},
        {L"\r--", L"\r\n- -"},
        {L"\n", L"\r\n"},
        {L"a\r", L"a\r"}, // Deliberate: nothing is completed at the end
        {L"\r\r", L"\r\n\r"},
        {L"\0\xD83D\xDE00\xFFFF\x1F\t"s, L"?????\t"},
        {L"-\xD83D-", L"-?-"},
    };
    for (auto const & tRow : atRows) {
        EXPECT_EQ(sWritten(ecpUtf16, [&](TOTextStream & t) { t.WriteXMLComment(tRow.sText); }), sUtf16(tRow.pzComment))
            << PrintToString(tRow.sText);
    }
}

TEST(TOTextStream, WritesNames) {
    EXPECT_EQ(sWritten(ecpUtf8, [](TOTextStream & t) { t.WriteXMLIdentifier(L"a:b c\u00E4"); }), "a:bC\xC3\xA4");
    EXPECT_EQ(sWritten(ecpUtf8, [](TOTextStream & t) { t.WriteXMLIdentifier(L""); }), "");
    TRawStream tRaw;
    TOTextStream tText(ecpUtf16, &tRaw);
    tText.WriteXMLIdentifier(L"first name");
    EXPECT_EQ(tRaw.sTaken, sUtf16(L"firstName"));
    EXPECT_EQ(tRaw.dwSizes, std::vector<unsigned long>(9, 2)); // unit by unit
}

// An XML parser that is not ours

namespace {

struct TParsed {
    ECodePage eCodePage;
    wchar_t const * pzEncoding;
    std::string_view sMark;
};

constexpr TParsed atParsed[] = {
    {ecpUtf8, L"UTF-8", ""},
    {ecpUtf16, L"UTF-16", "\xFF\xFE"},
    {ecpUtf16Swapped, L"UTF-16", "\xFE\xFF"},
    {ecpWestern, L"windows-1252", ""},
};

/// What comes back of a unit in that encoding.
wchar_t cGetEncoded(ECodePage eCodePage, wchar_t c) {
    if (!fIsValid(c)) return L'?';
    if (eCodePage != ecpWestern) return c;
    char cByte = 0;
    wchar_t cBack = 0;
    WideCharToMultiByte(1252, WC_NO_BEST_FIT_CHARS, &c, 1, &cByte, 1, nullptr, nullptr);
    MultiByteToWideChar(1252, 0, &cByte, 1, &cBack, 1);
    return cBack;
}

constexpr unsigned int uUnitsAnElement = 256;

/// All units from a number on, each between two letters.
wstring sGetUnits(unsigned int uFirst) {
    wstring sUnits;
    for (unsigned int u = uFirst; u < uFirst + uUnitsAnElement; ++u)
        sUnits.append(L"a").append(1, static_cast<wchar_t>(u)).append(L"b");
    return sUnits;
}

} // namespace

TEST(TOTextStream, IsReadByAnXmlParserUnitForUnit) {
    for (TParsed const & tParsed : atParsed) {
        std::string const sDocument = sWritten(tParsed.eCodePage, [&](TOTextStream & tText) {
            tText.Write(tParsed.sMark);
            tText.Write(L"<?xml version=\"1.0\" encoding=\""s + tParsed.pzEncoding + L"\"?>");
            tText.Writeln(L"<all>");
            for (unsigned int u = 0; u <= 0xFFFF; u += uUnitsAnElement) {
                wstring const sUnits = sGetUnits(u);
                tText.Write(L"<!--");
                tText.WriteXMLComment(sUnits);
                tText.Write(L"--><u a=\"");
                tText.WriteXML(sUnits, eAttributeWithTabs);
                tText.Write(L"\" b='");
                tText.WriteXML(sUnits, eAttribute);
                tText.Write(L"'>");
                tText.WriteXML(sUnits, eElement);
                tText.Writeln(L"</u>");
            }
            tText.Write(L"</all>");
        });

        TXmlDocument const tDocument(sDocument);
        for (unsigned int u = 0; u <= 0xFFFF; u += uUnitsAnElement) {
            wstring sElement;
            wstring sAttribute;
            wstring sAttributeWithBlanks;
            for (wchar_t const c : sGetUnits(u)) {
                wstring const sUnit(1, cGetEncoded(tParsed.eCodePage, c));
                bool const fLineEnd = c == L'\r' || c == L'\n';
                // A parser makes one line feed of what ends a line, and a blank of a tab in an attribute.
                sElement += fLineEnd ? L"\n" : sUnit;
                sAttribute += fLineEnd ? L"\r\n" : sUnit;
                sAttributeWithBlanks += fLineEnd ? L"\r\n" : c == L'\t' ? L" " : sUnit;
            }
            wstring const sNode = L"/all/u[" + std::to_wstring(u / uUnitsAnElement + 1) + L"]";
            ASSERT_EQ(tDocument.sGetText(sNode + L"/text()"), sElement) << u << ' ' << tParsed.eCodePage;
            ASSERT_EQ(tDocument.sGetText(sNode + L"/@a"), sAttribute) << u << ' ' << tParsed.eCodePage;
            ASSERT_EQ(tDocument.sGetText(sNode + L"/@b"), sAttributeWithBlanks) << u << ' ' << tParsed.eCodePage;
        }
    }
}

TEST(TOTextStream, IsReadByAnXmlParserWhateverTheText) {
    std::mt19937 tRandom(3);
    for (std::size_t i = 0; i < 400; ++i) {
        TParsed const & tParsed = atParsed[i % std::size(atParsed)];
        wstring const sText = L"a" + sRandom(tRandom, sTricky, 60) + L"b";
        std::string const sDocument = sWritten(tParsed.eCodePage, [&](TOTextStream & tText) {
            tText.Write(tParsed.sMark);
            tText.Write(L"<?xml version=\"1.0\" encoding=\""s + tParsed.pzEncoding + L"\"?><!--");
            tText.WriteXMLComment(sText);
            tText.Write(L"--><");
            tText.WriteXMLIdentifier(L"an element");
            tText.Write(L" a=\"");
            tText.WriteXML(sText, eAttributeWithTabs);
            tText.Write(L"\">");
            tText.WriteXML(sText, eElement);
            tText.Write(L"</anElement>");
        });
        wstring sExpected;
        for (wchar_t const c : sPlainComment(sText)) // its line ends are complete here
            if (c != L'\r') sExpected += cGetEncoded(tParsed.eCodePage, c);
        TXmlDocument const tDocument(sDocument);
        ASSERT_EQ(tDocument.sGetText(L"/comment()"), sExpected) << PrintToString(sText);
        std::erase(sExpected, L' ');
        wstring sElement = tDocument.sGetText(L"/anElement/text()");
        std::erase(sElement, L' ');
        ASSERT_EQ(sElement, sExpected) << PrintToString(sText);
        wstring sAttribute = tDocument.sGetText(L"/anElement/@a");
        std::erase(sAttribute, L' ');
        std::erase(sAttribute, L'\r');
        ASSERT_EQ(sAttribute, sExpected) << PrintToString(sText);
    }
}

// Encodings

TEST(TOTextStream, WritesTextInEveryEncoding) {
    wstring const sText = L"a\u00E4\u6F22\xD83D\xDE00z\0"s;
    struct {
        ECodePage eCodePage;
        std::string sBytes;
    } const atRows[] = {
        {ecpUtf8, "a\xC3\xA4\xE6\xBC\xA2\xF0\x9F\x98\x80z\0"s},
        {ecpUtf16, sUtf16(sText)},
        {ecpUtf16Swapped, "\0a\0\xE4\x6F\x22\xD8\x3D\xDE\0\0z\0\0"s},
        {ecpWestern, "a\xE4???z\0"s},
        {ecpJapanese, "a?\x8A\xBF??z\0"s},
    };
    for (auto const & tRow : atRows) {
        EXPECT_EQ(sWritten(tRow.eCodePage, [&](TOTextStream & t) { t.Write(sText); }), tRow.sBytes) << tRow.eCodePage;
        // The same in pieces, cut anywhere.
        EXPECT_EQ(sWritten(tRow.eCodePage,
                           [&](TOTextStream & t) {
                               for (wchar_t const c : sText)
                                   t.Write(c);
                           }),
                  tRow.sBytes);
    }
}

TEST(TOTextStream, PutsNothingThatLooksAlikeInPlaceOfMarkup) {
    // The platform would take fullwidth and other brackets for the plain ones where the code page lacks them.
    wstring const sText = L"\uFF1C\u2329\u3008\uFF06\uFF02\u2032";
    EXPECT_EQ(sWritten(ecpWestern, [&](TOTextStream & t) { t.WriteXML(sText, eAttribute); }), "??????");
}

TEST(TOTextStream, HasAllWaysToWriteText) {
    EXPECT_EQ(sWritten(ecpUtf16, [](TOTextStream & t) { t.Write(L'x'); }), sUtf16(L"x"));
    EXPECT_EQ(sWritten(ecpUtf16, [](TOTextStream & t) { t.Write(L"ab\0c"); }), sUtf16(L"ab"));
    EXPECT_EQ(sWritten(ecpUtf16, [](TOTextStream & t) { t.Write(L"ab\0c", 4); }), sUtf16(L"ab\0c"sv));
    EXPECT_EQ(sWritten(ecpUtf16, [](TOTextStream & t) { t.Write(L"ab\0c"sv); }), sUtf16(L"ab\0c"sv));
    EXPECT_EQ(sWritten(ecpUtf16, [](TOTextStream & t) { t.Write(L"ab\0c"s); }), sUtf16(L"ab\0c"sv));
    EXPECT_EQ(sWritten(ecpUtf16, [](TOTextStream & t) { t.Writeln(L"ab\0c"); }), sUtf16(L"ab\r\n"));
    EXPECT_EQ(sWritten(ecpUtf16, [](TOTextStream & t) { t.Writeln(L"ab\0c", 3); }), sUtf16(L"ab\0\r\n"sv));
    EXPECT_EQ(sWritten(ecpUtf16, [](TOTextStream & t) { t.Writeln(L"ab\0c"s); }), sUtf16(L"ab\0c\r\n"sv));
    EXPECT_EQ(sWritten(ecpUtf16, [](TOTextStream & t) { t.Writeln(L""); }), sUtf16(L"\r\n"));
    EXPECT_EQ(sWritten(ecpUtf8, [](TOTextStream & t) { t.Write(L"", 0); }), "");
    EXPECT_EQ(sWritten(ecpUtf8, [](TOTextStream & t) { t.Write(std::wstring_view()); }), "");
}

TEST(TOTextStream, PutsNarrowTextInAsItIs) {
    EXPECT_EQ(sWritten(ecpUtf16,
                       [](TOTextStream & t) {
                           t.Write(L"a");
                           t.Write("bc\0\xFF"sv);
                           t.Write(L"d");
                       }),
              "a\0bc\0\xFF"
              "d\0"s);
    // Past what the conversion holds, which comes when its second half does.
    EXPECT_EQ(sWritten(ecpUtf8,
                       [](TOTextStream & t) {
                           t.Write(L"a\xD83D");
                           t.Write("-"sv);
                           t.Write(L"\xDE00");
                       }),
              "a-\xF0\x9F\x98\x80");
}

TEST(TOTextStream, WritesTheBlockOfAStream) {
    TStreamBase tSource(ecpWestern);
    tSource.WriteData(L"a\u00E4\u6F22", 6);
    tSource.SetPos(2);
    for (ECodePage const eCodePage : {ecpUtf8, ecpUtf16, ecpUtf16Swapped}) {
        EXPECT_EQ(sWritten(eCodePage, [&](TOTextStream & t) { t.Write(tSource); }),
                  sWritten(eCodePage, [](TOTextStream & t) { t.Write(L"a\u00E4\u6F22"); }));
    }
    EXPECT_EQ(tSource.dwGetPos(), 2u);

    TStreamBase tNone;
    EXPECT_EQ(sWritten(ecpUtf16, [&](TOTextStream & t) { t.Write(tNone); }), "");
    // A view at an odd address, and an odd byte at its end: only UTF-16 as it is takes that.
    std::string const sBytes = "-a\0\xE4\0\x42"s;
    TStreamBase tOdd(sBytes.data() + 1, 5);
    EXPECT_EQ(sWritten(ecpUtf16, [&](TOTextStream & t) { t.Write(tOdd); }), "a\0\xE4\0\x42"s);
    EXPECT_EQ(sWritten(ecpUtf16Swapped, [&](TOTextStream & t) { t.Write(tOdd); }), "\0a\0\xE4"s);
    EXPECT_EQ(sWritten(ecpUtf8, [&](TOTextStream & t) { t.Write(tOdd); }), "a\xC3\xA4");
}

TEST(TOTextStream, HandsUtf16OnInOneCallAndSwappedUnitByUnit) {
    TRawStream tRaw;
    TOTextStream tText(ecpUtf16, &tRaw);
    wstring const sLong(5000, L'x');
    tText.Write(sLong);
    EXPECT_EQ(tRaw.dwSizes, std::vector<unsigned long>{10'000});
    tText.SetCodepage(ecpUtf16Swapped);
    tRaw.dwSizes.clear();
    tText.Write(L"abc");
    EXPECT_EQ(tRaw.dwSizes, (std::vector<unsigned long>{2, 2, 2}));
}

TEST(TOTextStream, EncodesUtf8AsTheConverterDoes) {
    struct TReceiver : IConvertReceiver {
        unsigned int Receive(void const * pData, unsigned int uBytes) override {
            sTaken.append(static_cast<char const *>(pData), uBytes);
            return uBytes;
        }
        std::string sTaken;
    };
    std::mt19937 tRandom(4);
    for (int i = 0; i < 2000; ++i) {
        TReceiver tReceiver;
        TConvertStream tConvert(ecpUtf8, ecdFromUtf16, &tReceiver);
        TRawStream tRaw;
        TOTextStream tText(ecpUtf8, &tRaw);
        for (int iPiece = 0; iPiece < 10; ++iPiece) {
            std::size_t const uLongest = tRandom() % 8 == 0 ? 3000 : 6;
            // With halves of pairs in some of the texts only.
            std::wstring_view const sUnits =
                i % 4 == 0 ? L"a\u00E4\u6F22\xD83D\xDE00\xDBFF\xDC00"sv : L"abc\u00E4\u07FF\u0800\uFFFF\u6F22\0"sv;
            wstring sPiece = sRandom(tRandom, sUnits, uLongest);
            if (i % 4 == 1 && iPiece % 3 == 0) sPiece += L'\xD83D';
            tConvert.Write(sPiece.data(), static_cast<unsigned int>(sPiece.size() * sizeof(wchar_t)));
            tText.Write(sPiece);
            ASSERT_EQ(tRaw.sTaken, tReceiver.sTaken);
            if (tRandom() % 8 == 0) {
                tConvert.Flush();
                tText.Flush();
            }
        }
        tConvert.Flush();
        tText.Close();
        ASSERT_EQ(tRaw.sTaken, tReceiver.sTaken);
    }
}

// The stream behind it

TEST(TOTextStream, IsUtf8UnlessToldOtherwise) {
    TRawStream tRaw;
    EXPECT_EQ(TOTextStream().eGetCodePage(), ecpUtf8);
    EXPECT_EQ(TOTextStream(ecpUtf16).eGetCodePage(), ecpUtf16);
    EXPECT_EQ(TOTextStream(&tRaw).eGetCodePage(), ecpUtf8);
    EXPECT_EQ(TOTextStream(ecpWestern, &tRaw).eGetCodePage(), ecpWestern);
    TOTextStream(&tRaw).Write(L"\u00E4");
    EXPECT_EQ(tRaw.sTaken, "\xC3\xA4");
}

TEST(TOTextStream, FlushesTheStreamUnderUtf16Only) {
    struct {
        ECodePage eCodePage;
        int iFlushes;
    } const atRows[] = {{ecpUtf16, 1}, {ecpUtf16Swapped, 1}, {ecpUtf8, 0}, {ecpWestern, 0}};
    for (auto const & tRow : atRows) {
        TRawStream tRaw;
        TOTextStream tText(tRow.eCodePage, &tRaw);
        tText.Flush();
        EXPECT_EQ(tRaw.iFlushes, tRow.iFlushes) << tRow.eCodePage;
        tText.Close();
        EXPECT_EQ(tRaw.iFlushes, 2 * tRow.iFlushes) << tRow.eCodePage;
        tText.Close(); // closed already
        EXPECT_EQ(tRaw.iFlushes, 2 * tRow.iFlushes) << tRow.eCodePage;
    }
}

TEST(TOTextStream, FlushPassesOnTheHalfOfAPair) {
    TRawStream tRaw;
    TOTextStream tText(&tRaw);
    tText.Write(L"\xD83D");
    EXPECT_EQ(tRaw.sTaken, "");
    tText.Flush();
    EXPECT_EQ(tRaw.sTaken, "\xEF\xBF\xBD");
    tText.Write(L"\xD83D");
    tText.Close();
    EXPECT_EQ(tRaw.sTaken, "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(TOTextStream, DestructorClosesAndLeavesTheCallersStreamAlone) {
    bool fDeleted = false;
    TRawStream tRaw;
    tRaw.pfDeleted = &fDeleted;
    { TOTextStream(&tRaw).Write(L"a\xD83D"); }
    EXPECT_EQ(tRaw.sTaken, "a\xEF\xBF\xBD");
    EXPECT_FALSE(fDeleted);
}

TEST(TOTextStream, SetStreamLosesWhatTheConversionHolds) {
    TRawStream tFirst;
    TRawStream tSecond;
    TOTextStream tText(&tFirst);
    tText.Write(L"a\xD83D");
    tText.SetStream(&tFirst); // the same: nothing happens
    tText.Write(L"\xDE00\xD83D");
    EXPECT_EQ(tFirst.sTaken, "a\xF0\x9F\x98\x80");
    tText.SetStream(&tSecond);
    tText.Write(L"\xDE00z");
    EXPECT_EQ(tFirst.sTaken, "a\xF0\x9F\x98\x80");
    EXPECT_EQ(tSecond.sTaken, "\xEF\xBF\xBDz");

    TOTextStream tClosed(ecpUtf16);
    tClosed.SetStream(&tSecond);
    tClosed.Write(L"x");
    EXPECT_EQ(tSecond.sTaken, "\xEF\xBF\xBDzx\0"s);
}

TEST(TOTextStream, SetCodepageGoesOnAtItsPlace) {
    TRawStream tRaw;
    TOTextStream tText(&tRaw);
    tText.Write(L"\u00E4\xD83D");
    tText.SetCodepage(ecpUtf8); // the same: nothing is lost
    tText.Write(L"\xDE00\xD83D");
    tText.SetCodepage(ecpWestern);
    EXPECT_EQ(tText.eGetCodePage(), ecpWestern);
    tText.Write(L"\u00E4");
    tText.SetCodepage(ecpUtf16Swapped);
    tText.Write(L"\u00E4");
    EXPECT_EQ(tRaw.sTaken, "\xC3\xA4\xF0\x9F\x98\x80\xE4\0\xE4"s);
    EXPECT_EQ(tRaw.iFlushes, 0);

    TOTextStream tClosed;
    tClosed.SetCodepage(ecpUtf16);
    EXPECT_EQ(tClosed.eGetCodePage(), ecpUtf16);
    tClosed.SetStream(&tRaw);
    tRaw.sTaken.clear();
    tClosed.Write(L"x");
    EXPECT_EQ(tRaw.sTaken, "x\0"s);
}

TEST(TOTextStream, FailuresOfTheStreamComeThrough) {
    TRawStream tRaw;
    TOTextStream tText(&tRaw);
    tText.Write(L"a");
    tRaw.iWritesToFailure = 0;
    EXPECT_THROW(tText.Write(L"b"), std::out_of_range);
    EXPECT_THROW(tText.Write("b"sv), std::out_of_range);
    EXPECT_THROW(tText.WriteXML(L"<", eElement), std::out_of_range);
    EXPECT_THROW(tText.WriteXMLComment(L"b"), std::out_of_range);
    tText.Write(L"\xD83D");
    EXPECT_THROW(tText.Close(), std::out_of_range);
    tRaw.iWritesToFailure = -1;
    tText.Close(); // was open still
    EXPECT_EQ(tRaw.sTaken, "a\xEF\xBF\xBD");
}

TEST(TOTextStream, NothingOvertakesWhatTheConversionHoldsAfterAFailure) {
    TRawStream tRaw;
    TOTextStream tText(&tRaw);
    tText.Write(L"\xD83D");
    tRaw.iWritesToFailure = 0;
    EXPECT_THROW(tText.Write(L"\xDE00"), std::out_of_range);
    tRaw.iWritesToFailure = -1;
    tText.Write(L"a");
    EXPECT_EQ(tRaw.sTaken, "\xF0\x9F\x98\x80"
                           "a");
}

TEST(TOTextStream, HasItsVirtualOperationsInOrder) {
    EXPECT_EQ(iVirtualSlot(static_cast<void (TOTextStream::*)(std::wstring_view, EXMLParams)>(&TOTextStream::WriteXML)),
              iBehindDestructor);
    EXPECT_EQ(iVirtualSlot(&TOTextStream::WriteXMLComment), iBehindDestructor + 1);
}

// Files

class TOTextStreamFile : public testing::Test {
protected:
    [[nodiscard]] std::string sWriteFile(ECodePage eCodePage, TWriter const & fnWrite) const {
        TOTextStream tText(eCodePage, sPath.c_str());
        fnWrite(tText);
        tText.Close();
        return sReadFileBytes(sPath);
    }

    TTempDirectory tDirectory;
    wstring sPath = tDirectory.sGetPath(L"text.xml");
};

TEST_F(TOTextStreamFile, BearsTheMarkOfUtf16) {
    auto const fnWrite = [](TOTextStream & t) { t.Writeln(L"<\u00E4/>"); };
    EXPECT_EQ(sWriteFile(ecpUtf8, fnWrite), "<\xC3\xA4/>\r\n");
    EXPECT_EQ(sWriteFile(ecpUtf16, fnWrite), "\xFF\xFE" + sUtf16(L"<\u00E4/>\r\n"));
    EXPECT_EQ(sWriteFile(ecpUtf16Swapped, fnWrite), "\xFE\xFF" + sUtf16Swapped(L"<\u00E4/>\r\n"));
    EXPECT_EQ(sWriteFile(ecpWestern, fnWrite), "<\xE4/>\r\n");
}

TEST_F(TOTextStreamFile, IsMadeAnew) {
    tDirectory.sWrite(L"text.xml", "much longer than what comes");
    TOTextStream tText;
    tText.Open(sPath.c_str());
    EXPECT_EQ(sReadFileBytes(sPath), "");
    tText.Write(L"a");
    tText.Close();
    EXPECT_TRUE(fIsUnused(sPath));
    EXPECT_EQ(sReadFileBytes(sPath), "a");
    tText.Open(sPath.c_str());
    tText.Write(L"b");
    tText.Close();
    EXPECT_EQ(sReadFileBytes(sPath), "b");
}

TEST_F(TOTextStreamFile, KeepsItsMarkWhenTheEncodingChanges) {
    EXPECT_EQ(sWriteFile(ecpUtf16,
                         [](TOTextStream & t) {
                             t.Write(L"a");
                             t.SetCodepage(ecpUtf16Swapped);
                             t.Write(L"b");
                             t.SetCodepage(ecpUtf8);
                             t.Write(L"c");
                         }),
              "\xFF\xFE"
              "a\0\0bc"s);
}

TEST_F(TOTextStreamFile, IsClosedWhenAnotherStreamIsSet) {
    TRawStream tRaw;
    TOTextStream tText(ecpUtf8, sPath.c_str());
    tText.Write(L"a");
    tText.SetStream(&tRaw);
    EXPECT_TRUE(fIsUnused(sPath));
    EXPECT_EQ(sReadFileBytes(sPath), "a");
    tText.Write(L"b");
    EXPECT_EQ(tRaw.sTaken, "b");
}

TEST_F(TOTextStreamFile, IsClosedWhenAnotherFileIsOpened) {
    TOTextStream tText(ecpUtf8, sPath.c_str());
    tText.Write(L"a\xD83D");
    wstring const sOther = tDirectory.sGetPath(L"other.xml");
    tText.Open(sOther.c_str());
    EXPECT_TRUE(fIsUnused(sPath));
    EXPECT_EQ(sReadFileBytes(sPath), "a"); // what the conversion held is lost
    tText.Write(L"\xDE00");
    tText.Close();
    EXPECT_EQ(sReadFileBytes(sOther), "\xEF\xBF\xBD");
}

TEST_F(TOTextStreamFile, TellsWhatCannotBeOpened) {
    wstring const sBad = tDirectory.sMakeDirectory(L"directory");
    auto const sGetFailure = [](auto const & fnOpen) -> std::string {
        try {
            fnOpen();
        } catch (TXZkTools const & tError) {
            return tError.what();
        }
        return "none";
    };
    std::string const sExpected = sGetFailure([&] { TFStream(ecpUtf8, sBad.c_str(), FS_CREATE | FS_READ_WRITE); });
    EXPECT_NE(sExpected, "none");
    EXPECT_EQ(sGetFailure([&] { TOTextStream(ecpUtf8, sBad.c_str()); }), sExpected);
    TRawStream tRaw;
    TOTextStream tText(&tRaw);
    EXPECT_EQ(sGetFailure([&] { tText.Open(sBad.c_str()); }), sExpected);
    tText.Write(L"a"); // goes on where it was
    EXPECT_EQ(tRaw.sTaken, "a");
}

TEST_F(TOTextStreamFile, CloseTellsWhatCannotBeWritten) {
    TOTextStream tText(ecpUtf8, sPath.c_str());
    tText.Write(L"text");
    {
        TSystemCall<"WriteFile", decltype(WriteFile)> const tWrite(
            [](HANDLE, void const *, DWORD, DWORD *, OVERLAPPED *) { return tFailWith(ERROR_DISK_FULL, FALSE); });
        try {
            tText.Close();
            FAIL() << "closed";
        } catch (TXZkTools const & tError) {
            EXPECT_NE(std::string(tError.what()).find(TXZkTools(IDS_FILE_WRITE_FAILED, sPath.c_str()).what()),
                      std::string::npos)
                << tError.what();
        }
    }
    tText.Close(); // there is room again
    EXPECT_EQ(sReadFileBytes(sPath), "text");
}
