// The exported overloads of the calling families are settled: 0 to 20 arguments, and no form with a result for 10.
#include "tests/support/Image.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <set>
#include <string>
#include <string_view>

#ifdef __GNUC__

using namespace zk_test;

namespace {

/// The exports that begin so.
std::set<std::string> sFind(std::string_view sBegin) {
    std::set<std::string> sFound;
    static std::set<std::string> const sAll = TImage(L"ZkTools.dll").sGetExports();
    for (std::string const & sExport : sAll)
        if (sExport.starts_with(sBegin)) sFound.insert(sExport);
    return sFound;
}

void ExpectAll(std::initializer_list<char const *> pzDeclarations) {
    for (char const * const pzDeclaration : pzDeclarations)
        EXPECT_EQ(sFind(pzDeclaration).size(), 1u) << pzDeclaration;
}

/// The declarations of one family.
std::set<std::string> sDeclare(std::string const & sName, std::string const & sFirst, bool fWithTen) {
    std::set<std::string> sDeclarations;
    std::string sParameters = sFirst;
    for (int i = 0; i <= 20; ++i) {
        if (i != 0) sParameters += sParameters.empty() ? "tagVARIANT&" : ", tagVARIANT&";
        if (i != 10 || fWithTen) sDeclarations.insert("TVariant::" + sName + "(" + sParameters + ") const");
    }
    return sDeclarations;
}

} // namespace

TEST(Exports, HoldEveryOverloadOfTheCallingFamilies) {
    struct TRow {
        char const * pzName;
        char const * pzFirst;
        bool fWithTen;
        std::size_t uCount;
    };
    for (TRow const & tRow : {
             TRow{"GetProperty", "wstring const&, TVariant&", false, 20},
             TRow{"GetPropertyDefault", "TVariant&", false, 20},
             TRow{"PutProperty", "wstring const&", true, 21},
             TRow{"PutPropertyDefault", "", true, 21},
             TRow{"PutRefProperty", "wstring const&", true, 21},
             TRow{"PutRefPropertyDefault", "", true, 21},
             TRow{"Call", "wstring const&", true, 21},
             TRow{"CallDefault", "", true, 21},
             TRow{"CallR", "wstring const&, TVariant&", false, 20},
             TRow{"CallRDefault", "TVariant&", false, 20},
         }) {
        std::set<std::string> const sFound = sFind("TVariant::" + std::string(tRow.pzName) + "(");
        EXPECT_EQ(sFound.size(), tRow.uCount) << tRow.pzName;
        EXPECT_EQ(sFound, sDeclare(tRow.pzName, tRow.pzFirst, tRow.fWithTen)) << tRow.pzName;
    }
}

TEST(Exports, HoldTheWorkersOfTheFamilies) {
    ExpectAll({
        "TVariant::GetPropertyImp(wstring const&, tagVARIANT&, tagDISPPARAMS&) const",
        "TVariant::PutPropertyImp(wstring const&, tagDISPPARAMS&) const",
        "TVariant::PutRefPropertyImp(wstring const&, tagDISPPARAMS&) const",
        "TVariant::CallImp(wstring const&, tagDISPPARAMS&) const",
        "TVariant::CallRImp(wstring const&, tagVARIANT&, tagDISPPARAMS&) const",
    });
}

TEST(Exports, HoldTheValuesWhole) {
    ExpectAll({
        "TVariant::TVariant()",
        "TVariant::TVariant(tagVARIANT const&)",
        "TVariant::TVariant(tagVARIANT const*)",
        "TVariant::TVariant(TVariant const&)",
        "TVariant::TVariant(tagVARIANT&, bool)",
        "TVariant::TVariant(short, unsigned short)",
        "TVariant::TVariant(long, unsigned short)",
        "TVariant::TVariant(float)",
        "TVariant::TVariant(double, unsigned short)",
        "TVariant::TVariant(tagCY const&)",
        "TVariant::TVariant(wstring const&)",
        "TVariant::TVariant(wchar_t const*)",
        "TVariant::TVariant(char const*)",
        "TVariant::TVariant(IDispatch*, bool)",
        "TVariant::TVariant(IUnknown*, bool)",
        "TVariant::TVariant(bool)",
        "TVariant::TVariant(unsigned char)",
        "TVariant::~TVariant()",
        "TVariant::Initialize()",
        "TVariant::Clear()",
        "TVariant::Attach(tagVARIANT&)",
        "TVariant::Detach()",
        "TVariant::ChangeType(unsigned short, TVariant const*)",
        "TVariant::SetString(char const*)",
        "TVariant::operator!() const",
    });
    EXPECT_EQ(sFind("TVariant::TVariant(").size(), 17u);
    EXPECT_EQ(sFind("TVariant::operator=(").size(), 15u);
    EXPECT_EQ(sFind("TVariant::operator==(").size(), 2u);
    EXPECT_EQ(sFind("TVariant::operator!=(").size(), 2u);
    EXPECT_EQ(sFind("TVariant::operator ").size(), 10u); // the conversions
}

TEST(Exports, HoldTheErrorWhole) {
    ExpectAll({
        "TComError::TComError(long, IErrorInfo*, bool)",
        "TComError::TComError(TComError const&)",
        "TComError::~TComError()",
        "TComError::operator=(TComError const&)",
        "TComError::Error() const",
        "TComError::sGetErrorMessage[abi:cxx11](long, IErrorInfo*)",
        "TComError::ErrorMessage() const",
        "TComError::WCode() const",
        "TComError::HRESULTToWCode(long)",
        "TComError::WCodeToHRESULT(unsigned short)",
        "TComError::ErrorInfo() const",
        "TComError::Description[abi:cxx11]() const",
        "TComError::HelpFile[abi:cxx11]() const",
        "TComError::Source[abi:cxx11]() const",
        "TComError::HelpContext() const",
        "TComError::GUID() const",
    });
}

TEST(Exports, DoNotHoldWhatIsInternal) {
    EXPECT_TRUE(sFind("AutoWrap").empty());
    EXPECT_TRUE(sFind("ThrowError").empty());
}

TEST(Exports, HoldThePlatformHelpers) {
    ExpectAll({
        "fRegistryGetValue(HKEY__*, wchar_t const*, wchar_t const*, unsigned long, unsigned char*, unsigned long)",
        "GetHighestAvailableFrameworkVersion()",
        "dwGetDotNet4Release()",
        "IsUserAdmin()",
        "RunElevated(HWND__*, wchar_t const*, wchar_t const*)",
        "SetVistaTheme(HWND__*)",
        "SetCbAutoComplete(HWND__*, EAutoComplete)",
        "SetEditAutoComplete(HWND__*, EAutoComplete)",
    });
}

#endif
