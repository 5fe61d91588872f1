#include "frame/Library.h"

#include "ZkBase/Messages.h"
#include "ZkTools/Library.h"

namespace {

HINSTANCE hLibrary = nullptr; // only kept, for a look with the debugger
HINSTANCE hMessageModule = nullptr;

} // namespace

HINSTANCE hGetMessageModule() noexcept {
    return hMessageModule;
}

void ZkToolsInit(zk_spell_check::TSpellCheckFactory &) {
    static_cast<void>(GetCurrentThreadId());
}

void ZkToolsDone(void) {}

/// The library cannot exist without its messages: without a message module the load fails.
extern "C" BOOL WINAPI DllMain(HINSTANCE hInstance, DWORD dwReason, LPVOID) {
    if (dwReason == DLL_PROCESS_ATTACH) {
        hLibrary = hInstance;
        hMessageModule = hGetResMod(hInstance);
        return hMessageModule != nullptr;
    }
    if (dwReason == DLL_PROCESS_DETACH && hMessageModule != nullptr) {
        FreeLibrary(hMessageModule);
        hMessageModule = nullptr;
    }
    return TRUE;
}
