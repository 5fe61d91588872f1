// The exported overloads of the calling families are settled: 0 to 20 arguments, and no form with a result for 10.
#include "tests/support/Image.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <string_view>

#ifdef __GNUC__

using namespace zk_test;

namespace {

/// The exports that begin so.
std::set<std::string> sFind(std::string_view sBegin) {
    std::set<std::string> sFound;
    for (std::string const & sExport : TImage(L"ZkTools.dll").sGetExports())
        if (sExport.starts_with(sBegin)) sFound.insert(sExport);
    return sFound;
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
    for (char const * const pzDeclaration : {
             "TVariant::GetPropertyImp(wstring const&, tagVARIANT&, tagDISPPARAMS&) const",
             "TVariant::PutPropertyImp(wstring const&, tagDISPPARAMS&) const",
             "TVariant::PutRefPropertyImp(wstring const&, tagDISPPARAMS&) const",
             "TVariant::CallImp(wstring const&, tagDISPPARAMS&) const",
             "TVariant::CallRImp(wstring const&, tagVARIANT&, tagDISPPARAMS&) const",
         })
        EXPECT_EQ(sFind(pzDeclaration).size(), 1u) << pzDeclaration;
}

TEST(Exports, DoNotHoldWhatIsInternal) {
    EXPECT_TRUE(sFind("AutoWrap").empty());
    EXPECT_TRUE(sFind("ThrowError").empty());
}

TEST(Exports, HoldThePlatformHelpers) {
    for (char const * const pzDeclaration : {
             "fRegistryGetValue(HKEY__*, wchar_t const*, wchar_t const*, unsigned long, unsigned char*, unsigned long)",
             "GetHighestAvailableFrameworkVersion()",
             "dwGetDotNet4Release()",
             "IsUserAdmin()",
             "RunElevated(HWND__*, wchar_t const*, wchar_t const*)",
             "SetVistaTheme(HWND__*)",
             "SetCbAutoComplete(HWND__*, EAutoComplete)",
             "SetEditAutoComplete(HWND__*, EAutoComplete)",
         })
        EXPECT_EQ(sFind(pzDeclaration).size(), 1u) << pzDeclaration;
}

#endif
