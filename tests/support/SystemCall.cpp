#include "tests/support/SystemCall.h"

#include <cstring>
#include <string>

namespace {

/// What the module imports under that name, or null.
void ** ppFindImport(HMODULE hModule, char const * pzFunction) {
    auto * const pBase = reinterpret_cast<char *>(hModule);
    auto const * pDos = reinterpret_cast<IMAGE_DOS_HEADER const *>(pBase);
    auto const * pHeaders = reinterpret_cast<IMAGE_NT_HEADERS const *>(pBase + pDos->e_lfanew);
    DWORD const dwImports = pHeaders->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    if (dwImports == 0) return nullptr;

    auto const * pImport = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR const *>(pBase + dwImports);
    for (; pImport->Name != 0; ++pImport) {
        auto const * pName = reinterpret_cast<IMAGE_THUNK_DATA const *>(pBase + pImport->OriginalFirstThunk);
        auto * pEntry = reinterpret_cast<void **>(pBase + pImport->FirstThunk);
        for (; pName->u1.AddressOfData != 0; ++pName, ++pEntry) {
            if (IMAGE_SNAP_BY_ORDINAL(pName->u1.Ordinal)) continue;
            auto const * pByName = reinterpret_cast<IMAGE_IMPORT_BY_NAME const *>(pBase + pName->u1.AddressOfData);
            if (std::strcmp(reinterpret_cast<char const *>(pByName->Name), pzFunction) == 0) return pEntry;
        }
    }
    return nullptr;
}

void Exchange(void ** ppEntry, void * pValue) {
    DWORD dwProtection = 0;
    VirtualProtect(ppEntry, sizeof *ppEntry, PAGE_READWRITE, &dwProtection);
    InterlockedExchangePointer(ppEntry, pValue);
    VirtualProtect(ppEntry, sizeof *ppEntry, dwProtection, &dwProtection);
}

} // namespace

namespace zk_test {

TImportPatch::TImportPatch(HMODULE hModule, char const * pzFunction, void * pReplacement)
    : ppEntry(hModule == nullptr ? nullptr : ppFindImport(hModule, pzFunction)), pOriginal(nullptr) {
    if (ppEntry == nullptr) throw std::runtime_error(std::string("no such import: ") + pzFunction);
    pOriginal = *ppEntry;
    Exchange(ppEntry, pReplacement);
}

TImportPatch::~TImportPatch() {
    Exchange(ppEntry, pOriginal);
}

} // namespace zk_test
