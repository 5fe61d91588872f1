#include "tests/support/Image.h"

#ifdef __GNUC__

#include <cxxabi.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

namespace {

std::string sReplaceAll(std::string sText, std::string_view sFrom, std::string_view sTo) {
    for (std::size_t u = 0; (u = sText.find(sFrom, u)) != std::string::npos; u += sTo.size())
        sText.replace(u, sFrom.size(), sTo);
    return sText;
}

std::string sDeclaration(char const * pzName) {
    std::unique_ptr<char, decltype(&std::free)> const pText(abi::__cxa_demangle(pzName, nullptr, nullptr, nullptr),
                                                            &std::free);
    if (pText == nullptr) return pzName;
    std::string sText = pText.get();
    sText = sReplaceAll(
        sText, "std::__cxx11::basic_string<wchar_t, std::char_traits<wchar_t>, std::allocator<wchar_t> >", "wstring");
    return sReplaceAll(sText, "std::basic_string_view<wchar_t, std::char_traits<wchar_t> >", "wstring_view");
}

} // namespace

namespace zk_test {

IMAGE_DATA_DIRECTORY const & TImage::tGetDirectory(std::size_t uIndex) const {
    auto const dwHeaders = static_cast<DWORD>(pAt<IMAGE_DOS_HEADER>(0)->e_lfanew);
    return pAt<IMAGE_NT_HEADERS>(dwHeaders)->OptionalHeader.DataDirectory[uIndex];
}

std::set<std::string> TImage::sGetImports(char const * pzFrom) const {
    std::set<std::string> sFound;
    auto const * pModule = pAt<IMAGE_IMPORT_DESCRIPTOR>(tGetDirectory(IMAGE_DIRECTORY_ENTRY_IMPORT).VirtualAddress);
    for (; pModule->Name != 0; ++pModule) {
        if (_stricmp(pAt<char>(pModule->Name), pzFrom) != 0) continue;
        for (auto const * p = pAt<IMAGE_THUNK_DATA>(pModule->OriginalFirstThunk); p->u1.AddressOfData != 0; ++p)
            sFound.insert(sDeclaration(pAt<IMAGE_IMPORT_BY_NAME>(static_cast<DWORD>(p->u1.AddressOfData))->Name));
    }
    return sFound;
}

std::set<std::string> TImage::sGetExports() const {
    std::set<std::string> sFound;
    auto const * const pTable = pAt<IMAGE_EXPORT_DIRECTORY>(tGetDirectory(IMAGE_DIRECTORY_ENTRY_EXPORT).VirtualAddress);
    auto const * const pNames = pAt<DWORD>(pTable->AddressOfNames);
    for (DWORD i = 0; i < pTable->NumberOfNames; ++i)
        sFound.insert(sDeclaration(pAt<char>(pNames[i])));
    return sFound;
}

} // namespace zk_test

#endif
