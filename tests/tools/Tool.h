// Runs the tool itself, zk.exe, which lies beside the test program.
#pragma once

#include "ZkTools/Exceptions.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TempDirectory.h"

#include <array>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace zk_test {

/// What the tool did. The texts are the bytes that it wrote.
struct TToolRun {
    unsigned long dwExit;
    std::string sOutput;
    std::string sErrors;
};

/// A tool that runs, and what it tells on its standard error stream.
class TTool {
public:
    explicit TTool(std::vector<std::wstring> const & sArguments)
        : sErrorFile(tDirectory.sGetPath(L"errors")),
          pProcess(std::make_unique<TChildProcess>(sGetPath(), sArguments, TChildOptions{.sErrorFile = sErrorFile})) {}

    TChildProcess & tGet() { return *pProcess; }
    /// Waits for its first line.
    void Await() { sFirstLine = pProcess->sHear(); }
    /// Closes its input and waits for its end.
    TToolRun tEnd() {
        std::string sOutput = pProcess->sHearAll();
        unsigned long const dwExit = pProcess->dwWait();
        return {dwExit, std::move(sOutput), sReadFileBytes(sErrorFile)};
    }

private:
    static std::wstring sGetPath() {
        std::array<wchar_t, 1024> acPath{};
        std::wstring sPath(acPath.data(), GetModuleFileNameW(nullptr, acPath.data(), DWORD{acPath.size()}));
        return sPath.substr(0, sPath.rfind(L'\\')) + L"\\zk.exe";
    }

    TTempDirectory tDirectory;
    std::wstring sErrorFile;
    std::unique_ptr<TChildProcess> pProcess;
    std::string sFirstLine;
};

/// Runs the tool to its end, with an input that has ended.
inline TToolRun tRunTool(std::vector<std::wstring> const & sArguments) {
    return TTool(sArguments).tEnd();
}

/// A message of the library; the texts of these tests are ASCII, and so the same in UTF-8.
template <typename... TArgs>
std::string sMessage(unsigned int uId, TArgs... tArgs) {
    return TXZkTools(uId, tArgs...).what();
}

/// The system's text for an error.
inline std::string sSystemText(DWORD dwError) {
    return TXZkTools(sGetErrorString(dwError).c_str()).what();
}

/// This user on this computer, as messages name him.
inline std::wstring sGetOwnName() {
    std::array<wchar_t, 257> acUser{};
    std::array<wchar_t, 16> acComputer{};
    DWORD dwUserSize = acUser.size();
    DWORD dwComputerSize = acComputer.size();
    GetUserNameW(acUser.data(), &dwUserSize);
    GetComputerNameW(acComputer.data(), &dwComputerSize);
    return std::wstring(acUser.data()) + L" [" + acComputer.data() + L"]";
}

} // namespace zk_test
