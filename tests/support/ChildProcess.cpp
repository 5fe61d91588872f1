#include "tests/support/ChildProcess.h"

#include <shellapi.h>

#include <array>
#include <cstdio>
#include <map>
#include <memory>
#include <stdexcept>

namespace {

constexpr wchar_t const * pzRoleOption = L"--zk-child";
constexpr ULONGLONG uPatience = 60'000; // milliseconds
constexpr int iExitOfException = 70;

std::map<std::wstring, zk_test::TChildRole::TFunction> & tGetRoles() {
    static std::map<std::wstring, zk_test::TChildRole::TFunction> tRoles;
    return tRoles;
}

/// One argument of a command line, so that the C run-time and CommandLineToArgvW read it back as it is.
std::wstring sQuote(std::wstring const & sArgument) {
    if (!sArgument.empty() && sArgument.find_first_of(L" \t\"") == std::wstring::npos) return sArgument;
    std::wstring sResult = L"\"";
    std::size_t uBackslashes = 0;
    for (wchar_t const c : sArgument) {
        if (c == L'"') sResult.append(uBackslashes + 1, L'\\');
        uBackslashes = c == L'\\' ? uBackslashes + 1 : 0;
        sResult += c;
    }
    return sResult.append(uBackslashes, L'\\') + L'"';
}

std::wstring sGetOwnProgram() {
    std::array<wchar_t, 1024> acPath{};
    return {acPath.data(), GetModuleFileNameW(nullptr, acPath.data(), static_cast<DWORD>(acPath.size()))};
}

/// Changes this process's environment until the child has been given it.
class TEnvironment {
public:
    explicit TEnvironment(std::vector<std::pair<std::wstring, std::wstring>> const & tChanges) {
        for (auto const & [sName, sValue] : tChanges) {
            std::optional<std::wstring> psOld;
            if (DWORD const dwSize = GetEnvironmentVariableW(sName.c_str(), nullptr, 0); dwSize != 0) {
                psOld.emplace(dwSize, L'\0');
                psOld->resize(GetEnvironmentVariableW(sName.c_str(), psOld->data(), dwSize));
            }
            tOld.emplace_back(sName, psOld);
            SetEnvironmentVariableW(sName.c_str(), sValue.c_str());
        }
    }
    ~TEnvironment() {
        for (auto const & [sName, psOld] : tOld)
            SetEnvironmentVariableW(sName.c_str(), psOld ? psOld->c_str() : nullptr);
    }
    TEnvironment(TEnvironment const &) = delete;
    TEnvironment & operator=(TEnvironment const &) = delete;

private:
    std::vector<std::pair<std::wstring, std::optional<std::wstring>>> tOld;
};

/// A pipe of which the child inherits the end that it uses.
struct TPipe {
    enum EEnd { eRead, eWrite };

    explicit TPipe(EEnd eOfChild) {
        HANDLE hOut = nullptr;
        HANDLE hIn = nullptr;
        if (!CreatePipe(&hOut, &hIn, nullptr, 0)) throw std::runtime_error("cannot make a pipe");
        hRead = zk_test::THandle(hOut);
        hWrite = zk_test::THandle(hIn);
        SetHandleInformation(eOfChild == eRead ? hOut : hIn, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    }

    zk_test::THandle hRead;
    zk_test::THandle hWrite;
};

/// A new file that a child inherits; none for an empty path.
zk_test::THandle hMakeInheritedFile(std::wstring const & sPath) {
    if (sPath.empty()) return {};
    SECURITY_ATTRIBUTES tInherited{sizeof tInherited, nullptr, TRUE};
    return zk_test::THandle(CreateFileW(sPath.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &tInherited, CREATE_ALWAYS,
                                        FILE_ATTRIBUTE_NORMAL, nullptr));
}

void WriteAll(HANDLE hPipe, std::string const & sText) {
    DWORD dwWritten = 0;
    if (!WriteFile(hPipe, sText.data(), static_cast<DWORD>(sText.size()), &dwWritten, nullptr))
        throw std::runtime_error("the other process does not listen");
}

/// Takes the first line out of what was received.
std::optional<std::string> psTakeLine(std::string & sReceived) {
    std::size_t const uEnd = sReceived.find('\n');
    if (uEnd == std::string::npos) return std::nullopt;
    std::string sLine = sReceived.substr(0, uEnd);
    sReceived.erase(0, uEnd + 1);
    if (!sLine.empty() && sLine.back() == '\r') sLine.pop_back();
    return sLine;
}

} // namespace

namespace zk_test {

TChildRole::TChildRole(wchar_t const * pzName, TFunction tFunction) : sName(pzName) {
    tGetRoles().emplace(pzName, std::move(tFunction));
}

std::optional<int> piRunChildRole() {
    int iCount = 0;
    std::unique_ptr<wchar_t *, decltype(&LocalFree)> const pArguments(CommandLineToArgvW(GetCommandLineW(), &iCount),
                                                                      &LocalFree);
    if (iCount < 3 || pArguments.get()[1] != std::wstring_view(pzRoleOption)) return std::nullopt;
    try {
        return tGetRoles().at(pArguments.get()[2])({pArguments.get() + 3, pArguments.get() + iCount});
    } catch (std::exception const & tError) {
        std::fprintf(stderr, "child: %s\n", tError.what());
        return iExitOfException;
    }
}

void Say(std::string_view sLine) {
    WriteAll(GetStdHandle(STD_OUTPUT_HANDLE), std::string(sLine) + '\n');
}

std::optional<std::string> psHear() {
    static std::string sReceived;
    for (;;) {
        if (auto psLine = psTakeLine(sReceived)) return psLine;
        std::array<char, 4096> acPiece;
        DWORD dwRead = 0;
        if (!ReadFile(GetStdHandle(STD_INPUT_HANDLE), acPiece.data(), static_cast<DWORD>(acPiece.size()), &dwRead,
                      nullptr) ||
            dwRead == 0)
            return std::nullopt;
        sReceived.append(acPiece.data(), dwRead);
    }
}

TChildProcess::TChildProcess(TChildRole const & tRole, std::vector<std::wstring> const & sArguments,
                             TChildOptions const & tOptions) {
    std::vector<std::wstring> sAll{pzRoleOption, tRole.sGetName()};
    sAll.insert(sAll.end(), sArguments.begin(), sArguments.end());
    Start(sGetOwnProgram(), sAll, tOptions);
}

TChildProcess::TChildProcess(std::wstring const & sProgram, std::vector<std::wstring> const & sArguments,
                             TChildOptions const & tOptions) {
    Start(sProgram, sArguments, tOptions);
}

TChildProcess::~TChildProcess() {
    if (!fIsRunning()) return;
    TerminateProcess(hProcess.hGet(), 1);
    WaitForSingleObject(hProcess.hGet(), static_cast<DWORD>(uPatience));
}

void TChildProcess::Start(std::wstring const & sProgram, std::vector<std::wstring> const & sArguments,
                          TChildOptions const & tOptions) {
    std::wstring sCommand = sQuote(sProgram);
    for (std::wstring const & sArgument : sArguments)
        sCommand += L' ' + sQuote(sArgument);

    TPipe tInput(TPipe::eRead);
    TPipe tOutput(TPipe::eWrite);
    STARTUPINFOW tStartup{};
    tStartup.cb = sizeof tStartup;
    tStartup.dwFlags = STARTF_USESTDHANDLES;
    tStartup.hStdInput = tInput.hRead.hGet();
    tStartup.hStdOutput = tOutput.hWrite.hGet();
    THandle const hErrorFile = hMakeInheritedFile(tOptions.sErrorFile);
    tStartup.hStdError = hErrorFile ? hErrorFile.hGet() : GetStdHandle(STD_ERROR_HANDLE);

    TEnvironment const tEnvironment(tOptions.tEnvironment);
    PROCESS_INFORMATION tProcess{};
    if (!CreateProcessW(sProgram.c_str(), sCommand.data(), nullptr, nullptr, TRUE, CREATE_UNICODE_ENVIRONMENT, nullptr,
                        tOptions.sDirectory.empty() ? nullptr : tOptions.sDirectory.c_str(), &tStartup, &tProcess))
        throw std::runtime_error("cannot start the child: error " + std::to_string(GetLastError()));
    CloseHandle(tProcess.hThread);
    hProcess = THandle(tProcess.hProcess);
    hInput = std::move(tInput.hWrite);
    hOutput = std::move(tOutput.hRead);
    dwId = tProcess.dwProcessId;
}

void TChildProcess::Say(std::string_view sLine) {
    WriteAll(hInput.hGet(), std::string(sLine) + '\n');
}

/// Waits for the next piece of the child's output; false when the child has closed it.
bool TChildProcess::fReceive() {
    ULONGLONG const uStart = GetTickCount64();
    DWORD dwWaiting = 0;
    while (PeekNamedPipe(hOutput.hGet(), nullptr, 0, nullptr, &dwWaiting, nullptr)) {
        if (dwWaiting != 0) {
            std::string sPiece(dwWaiting, '\0');
            DWORD dwRead = 0;
            if (!ReadFile(hOutput.hGet(), sPiece.data(), dwWaiting, &dwRead, nullptr)) return false;
            sReceived.append(sPiece, 0, dwRead);
            return true;
        }
        if (GetTickCount64() - uStart > uPatience) throw std::runtime_error("the child says nothing");
        Sleep(1);
    }
    return false;
}

std::string TChildProcess::sHear() {
    for (;;) {
        if (auto psLine = psTakeLine(sReceived)) return *psLine;
        if (!fReceive()) throw std::runtime_error("the child has ended: \"" + sReceived + '"');
    }
}

std::string TChildProcess::sHearAll() {
    CloseInput();
    while (fReceive()) {
    }
    return std::exchange(sReceived, {});
}

unsigned long TChildProcess::dwWait() {
    CloseInput();
    if (WaitForSingleObject(hProcess.hGet(), static_cast<DWORD>(uPatience)) != WAIT_OBJECT_0)
        throw std::runtime_error("the child does not end");
    DWORD dwCode = 0;
    GetExitCodeProcess(hProcess.hGet(), &dwCode);
    return dwCode;
}

void TChildProcess::Kill() {
    TerminateProcess(hProcess.hGet(), 1);
    if (WaitForSingleObject(hProcess.hGet(), static_cast<DWORD>(uPatience)) != WAIT_OBJECT_0)
        throw std::runtime_error("the child cannot be killed");
}

bool TChildProcess::fIsRunning() const noexcept {
    return WaitForSingleObject(hProcess.hGet(), 0) == WAIT_TIMEOUT;
}

} // namespace zk_test
