// Text as XML beside pugixml and a plain loop, the check of e-mail addresses beside the expression that it stands for,
// and the search beside the C run-time's.
#include "ZkTools/Search.h"
#include "ZkTools/Stream.h"
#include "ZkTools/TextStream.h"
#include "ZkTools/Uri.h"
#include "bench/Ratio.h"

#include <pugixml.hpp>

#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <memory>
#include <random>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

#ifndef PUGIXML_WCHAR_MODE
#error "Both shall write wide text: pugixml has to be built with PUGIXML_WCHAR_MODE."
#endif

namespace {

using zk_bench::EBound;

constexpr std::size_t uTextUnits = (std::size_t{64} << 20) / sizeof(wchar_t);
constexpr std::size_t uTargetSize = std::size_t{512} << 20; // bytes; the pages that are not reached cost nothing

// XML

struct TMix {
    std::string sTitle;
    unsigned int uEscapes; ///< of 1000 units
};

/// Latin text with characters of markup in it.
std::wstring sMakeText(TMix const & tMix) {
    constexpr std::wstring_view sMarkup = L"&<>";
    constexpr std::wstring_view sLetters = L"etaoinshrdlucmfwypvbgkjqxz 0123456789,.\u00E4\u00F6\u00FC\u00DF";
    std::mt19937 tRandom(1);
    std::wstring sText(uTextUnits, L' ');
    for (wchar_t & c : sText)
        c = tRandom() % 1000 < tMix.uEscapes ? sMarkup[tRandom() % sMarkup.size()]
                                             : sLetters[tRandom() % sLetters.size()];
    return sText;
}

/// Where all of them put their bytes.
class TTarget : public IRawStream, public pugi::xml_writer {
public:
    void ReadData(void *, unsigned long) override {}
    void WriteData(void const * pSource, unsigned long dwCount) override { Add(pSource, dwCount); }
    void Seek(TLongOnly const &, int) override { pEnd = pBytes.get(); }
    void write(void const * pSource, std::size_t uCount) override { Add(pSource, uCount); }

private:
    void Add(void const * pSource, std::size_t uCount) {
        std::memcpy(pEnd, pSource, uCount);
        pEnd += uCount;
    }

    std::unique_ptr<char, decltype(&std::free)> pBytes{static_cast<char *>(std::malloc(uTargetSize)), &std::free};
    char * pEnd = pBytes.get();
};

/// Appends what it gets.
class TStringTarget : public pugi::xml_writer {
public:
    void write(void const * pSource, std::size_t uCount) override {
        sText.append(static_cast<wchar_t const *>(pSource), uCount / sizeof(wchar_t));
    }

    std::wstring sText;
};

struct TXmlWork {
    std::wstring sText;
    pugi::xml_document tDocument;
    TTarget tTarget;

    explicit TXmlWork(TMix const & tMix) : sText(sMakeText(tMix)) {
        tDocument.append_child(pugi::node_pcdata).set_value(sText.c_str());
    }

    void WriteOurs() {
        tTarget.Seek(0L, 0);
        TOTextStream tStream(ecpUtf8, &tTarget);
        tStream.WriteXML(sText, EXMLParams{});
        tStream.Close();
    }
    void WritePugi() {
        tTarget.Seek(0L, 0);
        tDocument.print(tTarget, L"", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
    }
    void WriteUnitByUnit() {
        tTarget.Seek(0L, 0);
        TOTextStream tStream(ecpUtf8, &tTarget);
        for (wchar_t const c : sText) {
            switch (c) {
            case L'&':
                tStream.Write(L"&amp;");
                break;
            case L'<':
                tStream.Write(L"&lt;");
                break;
            case L'>':
                tStream.Write(L"&gt;");
                break;
            default:
                tStream.Write(c);
            }
        }
        tStream.Close();
    }
    void GetOurs() const { zk_bench::Keep(TOTextStream::sGetXMLString(sText, EXMLParams{}).data()); }
    void GetPugi() const {
        TStringTarget tString;
        tDocument.print(tString, L"", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_wchar);
        zk_bench::Keep(tString.sText.data());
    }
};

void AddXml(TMix const & tMix) {
    auto const pWork = std::make_shared<TXmlWork>(tMix);
    zk_bench::Add(
        "WriteXML beside pugixml, " + tMix.sTitle, EBound::eTimesFaster, 2, [pWork] { pWork->WriteOurs(); },
        [pWork] { pWork->WritePugi(); });
    zk_bench::Add(
        "WriteXML beside a loop over the units, " + tMix.sTitle, EBound::eTimesFaster, 5,
        [pWork] { pWork->WriteOurs(); }, [pWork] { pWork->WriteUnitByUnit(); });
    zk_bench::Add(
        "sGetXMLString beside pugixml, " + tMix.sTitle, EBound::eTimesFaster, 2, [pWork] { pWork->GetOurs(); },
        [pWork] { pWork->GetPugi(); });
}

// E-mail addresses

constexpr wchar_t const * pzEMailExpression =
    LR"!!((?:[-!#-'*+\/-9=?A-Z^-~]+(?:\.[-!#-'*+\/-9=?A-Z^-~]+)*|"(?:[]!#-[^-~ \t]|(?:\\[\t -~]))+")@[0-9A-Za-z](?:[0-9A-Za-z-]{0,61}[0-9A-Za-z])?(?:\.[0-9A-Za-z](?:[0-9A-Za-z-]{0,61}[0-9A-Za-z])?)+)!!";

void AddEMail() {
    std::vector<std::wstring> sAddresses;
    for (int i = 0; i < 1000; ++i) {
        std::wstring const sNumber = std::to_wstring(i);
        sAddresses.push_back(L"first.second" + sNumber + L"@mail.example-" + sNumber + L".com");
        sAddresses.push_back(L"first..second" + sNumber + L"@example.com");
        sAddresses.push_back(L"first.second" + sNumber + L"@example");
    }
    auto const tExpression = std::make_shared<std::wregex>(pzEMailExpression);
    zk_bench::Add(
        "fIsValidEMail beside the expression", EBound::eTimesFaster, 20,
        [sAddresses] {
            for (std::wstring const & sAddress : sAddresses) {
                bool const fValid = fIsValidEMail(sAddress);
                zk_bench::Keep(&fValid);
            }
        },
        [sAddresses, tExpression] {
            for (std::wstring const & sAddress : sAddresses) {
                bool const fValid = std::regex_match(sAddress, *tExpression);
                zk_bench::Keep(&fValid);
            }
        });
}

// Search

/// Texts in lower case of which only the last holds the name, at its end.
std::vector<std::wstring> sMakeTexts(std::size_t uTexts, std::size_t uUnits) {
    std::mt19937 tRandom(2);
    std::vector<std::wstring> sTexts(uTexts);
    for (std::wstring & sText : sTexts) {
        sText.resize(uUnits);
        for (wchar_t & c : sText)
            c = L"etaoinshrdlucmfwypvbgkjqxz \u00E4"[tRandom() % 28];
    }
    sTexts.back() += L"name7";
    return sTexts;
}

void AddSearch(std::string const & sTitle, std::size_t uTexts, std::size_t uUnits) {
    auto const pTexts = std::make_shared<std::vector<std::wstring>>(sMakeTexts(uTexts, uUnits));
    auto const fnOurs = [pTexts](TSearcher const & tSearcher) {
        for (std::wstring const & sText : *pTexts) {
            int const iHit = tSearcher.iFind(sText.c_str());
            zk_bench::Keep(&iHit);
        }
    };
    zk_bench::Add(
        "iFind beside wcsstr, " + sTitle, EBound::eTimesTheTime, 1.05,
        [fnOurs] {
            fnOurs({L"name7", 0, 1});
        },
        [pTexts] {
            for (std::wstring const & sText : *pTexts)
                zk_bench::Keep(std::wcsstr(sText.c_str(), L"name7"));
        });
    zk_bench::Add(
        "iFind without case beside wcsstr on a copy in upper case, " + sTitle, EBound::eTimesFaster, 3,
        [fnOurs] {
            fnOurs({L"Name7", 0, 0});
        },
        [pTexts] {
            for (std::wstring const & sText : *pTexts) {
                std::unique_ptr<wchar_t, decltype(&std::free)> const pzCopy(_wcsdup(sText.c_str()), &std::free);
                zk_bench::Keep(std::wcsstr(_wcsupr(pzCopy.get()), L"NAME7"));
            }
        });
}

} // namespace

int main(int iCount, char ** ppArguments) {
    AddXml({"few escapes", 5});
    AddXml({"many escapes", 250});
    AddEMail();
    AddSearch("a text of 8 MiB", 1, 4 << 20);
    AddSearch("texts of 40 units", 10'000, 40);
    return zk_bench::iRun(iCount, ppArguments);
}
