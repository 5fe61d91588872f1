// What the library may take from the base library is settled: 49 entries, and the data of the exception class. The
// names in the import table are those of the compiler at hand, so each is turned back into its declaration.
#ifdef __GNUC__

#include "tests/support/Image.h"

#include <gtest/gtest.h>

#include <array>
#include <set>
#include <string>
#include <string_view>

using namespace zk_test;

namespace {

// "wstring" and "wstring_view" stand for what the compiler writes out.
constexpr std::array<std::string_view, 49> asEntries{
    // exceptions
    "TXError::TXError(wchar_t const*, int)",
    "TXError::TXError(TXError const&)",
    "TXError::~TXError()",
    "TXError::operator=(TXError const&)",
    "TXError::StoreMessage(HINSTANCE__*, unsigned int, char*)",
    "TXError::StoreMessage(wchar_t const*, char*)",
    "TXError::AddMessageStr(wchar_t const*, ...)",
    "TXError::AddMessage(unsigned int, ...)",
    "InsertMessage(std::runtime_error&, HINSTANCE__*, unsigned int, ...)",
    "ThrowDecodeException(char const*, unsigned int, unsigned int)",
    "sGetErrorString[abi:cxx11](unsigned long)",
    "GetErrorString(unsigned long, wchar_t*, int)",
    // messages
    "hGetResMod(HINSTANCE__*)",
    "string_functions::sLoadString[abi:cxx11](HINSTANCE__*, unsigned int)",
    "string_functions::sFormat_va[abi:cxx11](wchar_t const*, char*)",
    // code pages
    "uGetCodePage(ECodePage)",
    "eFindCodePage(unsigned short)",
    "TConvertStream::TConvertStream(ECodePage, EConvertDirection, IConvertReceiver*)",
    "TConvertStream::Write(void const*, unsigned int)",
    "TConvertStream::Flush()",
    // paths
    "path_func::sPathAppend(wstring const&, wstring const&)",
    "path_func::SplitPath(wstring const&, wstring*, wstring*, wstring*, wstring*)",
    "path_func::sMakePath[abi:cxx11](wchar_t const*, wchar_t const*, wchar_t const*, wchar_t const*)",
    "path_func::PathRemoveBackslashW(wstring&)",
    "path_func::fPathRemoveFileSpec(wstring&)",
    "path_func::sPathCommonPrefix[abi:cxx11](wchar_t const*, wchar_t const*)",
    "path_func::fPathContainsWildcard(wstring const&)",
    "path_func::fPathIsRelative(wchar_t const*)",
    "path_func::fPathIsRoot(wchar_t const*)",
    "path_func::fPathIsUNC(wchar_t const*)",
    "path_func::fPathIsUNCServer(wchar_t const*)",
    // files
    "file_func::fExistDirectory(wchar_t const*)",
    "file_func::fMakeDirectory(wchar_t const*)",
    "file_func::ShellExecuteExW(_SHELLEXECUTEINFOW*)",
    "file_func::MsiGetFileHashW(wchar_t const*, unsigned long, _MSIFILEHASHINFO*)",
    // text
    "string_functions::sStrip[abi:cxx11](wstring_view, string_functions::EStrip, wstring_view)",
    "string_functions::strip_whitespace(wstring&, string_functions::EStrip)",
    "string_functions::fIsNCNameFirstChar(wchar_t)",
    "string_functions::fIsNCNameChar(wchar_t)",
    "fWIsSpace(wchar_t)",
    "wcWToUpper(wchar_t)",
    "iWCompareIString(wchar_t const*, wchar_t const*)",
    // object types
    "ObjectType::to_string[abi:cxx11](EObjectType)",
    "ObjectType::to_enum(wstring_view const&)",
    // test mode
    "GTest::fIsTest()",
    "GTest::sGetCurrentDate[abi:cxx11]()",
    "GTest::sGetCurrentTime[abi:cxx11]()",
    "GTest::sGetCurrentDateTime[abi:cxx11]()",
    "GTest::sGetUUID[abi:cxx11](GTest::EUUID)",
};

/// The data of the exception class, which a derived class and a handler need.
constexpr std::array<std::string_view, 3> asData{
    "vtable for TXError",
    "typeinfo for TXError",
    "typeinfo name for TXError",
};

} // namespace

TEST(Imports, AreEntriesOfTheBaseLibrary) {
    std::set<std::string_view> sAllowed(asEntries.begin(), asEntries.end());
    ASSERT_EQ(sAllowed.size(), asEntries.size());
    sAllowed.insert(asData.begin(), asData.end());
    std::set<std::string> const sImports = TImage(L"ZkTools.dll").sGetImports("ZkBase.dll");
    EXPECT_TRUE(sImports.contains("hGetResMod(HINSTANCE__*)")); // the table was read
    for (std::string const & sImport : sImports)
        EXPECT_TRUE(sAllowed.contains(sImport)) << sImport;
}

TEST(Imports, AreAllOfferedByTheBaseLibrary) {
    std::set<std::string> const sExports = TImage(L"ZkBase.dll").sGetExports();
    for (std::string_view sEntry : asEntries)
        EXPECT_TRUE(sExports.contains(std::string(sEntry))) << sEntry;
}

#endif
