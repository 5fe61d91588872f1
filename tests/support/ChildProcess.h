/// Other processes in tests: the test program itself in another role, or any program.
///
/// A test source gives its program a role, a function that runs in the child instead of the tests:
///
///     zk_test::TChildRole const tHolder(L"hold", [](std::vector<std::wstring> const & sArguments) {
///         zk_test::THandle const hFile(CreateFileW(sArguments.at(0).c_str(), ...));
///         zk_test::Say(hFile ? "held" : "refused");
///         while (zk_test::psHear()) {} // until the parent closes our input, or is gone
///         return 0;
///     });
///
///     TEST(TLockDirectory, SeesTheWriterOfAnotherProcess) {
///         zk_test::TChildProcess tChild(tHolder, {tDirectory.sGetPath(L"write.lck")});
///         ASSERT_EQ(tChild.sHear(), "held");
///         ...
///         tChild.Kill();
///     }
///
/// Parent and child talk line by line through the child's standard input and output.
#pragma once

#include "ZkBase/Windows.h"
#include "tests/support/Handle.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zk_test {

/// A role of this test program. Define it at namespace scope: Main.cpp looks the name up.
class TChildRole {
public:
    using TFunction = std::function<int(std::vector<std::wstring> const &)>;

    /// \param pzName    unique within the test program
    /// \param tFunction gets the arguments given to TChildProcess; its result is the exit code. An exception ends the
    ///                  child with exit code 70, its text on the standard error stream.
    TChildRole(wchar_t const * pzName, TFunction tFunction);

    [[nodiscard]] std::wstring const & sGetName() const noexcept { return sName; }

private:
    std::wstring sName;
};

/// The exit code of the role when this process is a child, otherwise nothing. For Main.cpp.
[[nodiscard]] std::optional<int> piRunChildRole();

/// In a child: sends a line to the parent.
void Say(std::string_view sLine);
/// In a child: waits for a line of the parent; nothing when the parent has closed the pipe or is gone.
[[nodiscard]] std::optional<std::string> psHear();

/// What else a child can be given.
struct TChildOptions {
    std::vector<std::pair<std::wstring, std::wstring>> tEnvironment{}; ///< set on top of this process's own
    std::wstring sDirectory{};                                         ///< to start in; empty: this process's own
    std::wstring sErrorFile{}; ///< takes its standard error stream; empty: this process's own
};

/// A running child. It is killed, if it still runs, and waited for when the object goes. All waits end after a
/// minute with a std::runtime_error, so that a hanging child is a failed test and no hanging one.
class TChildProcess {
public:
    /// This test program in that role.
    TChildProcess(TChildRole const & tRole, std::vector<std::wstring> const & sArguments = {},
                  TChildOptions const & tOptions = {});
    /// Any program.
    /// \throws std::runtime_error when it cannot be started
    TChildProcess(std::wstring const & sProgram, std::vector<std::wstring> const & sArguments = {},
                  TChildOptions const & tOptions = {});
    ~TChildProcess();
    TChildProcess(TChildProcess const &) = delete;
    TChildProcess & operator=(TChildProcess const &) = delete;

    /// Sends a line.
    void Say(std::string_view sLine);
    /// Waits for a line, without its end.
    /// \throws std::runtime_error when the child ends without one
    [[nodiscard]] std::string sHear();
    /// Closes the child's input and gives all that it still writes until it closes its output.
    [[nodiscard]] std::string sHearAll();
    /// Closes the child's input: its `psHear` gives nothing from then on.
    void CloseInput() noexcept { hInput.Close(); }

    /// Closes the child's input, waits for its end and gives its exit code.
    unsigned long dwWait();
    /// Ends the child as a crash would, and waits until it is gone.
    void Kill();
    [[nodiscard]] bool fIsRunning() const noexcept;
    [[nodiscard]] unsigned long dwGetId() const noexcept { return dwId; }

private:
    void Start(std::wstring const & sProgram, std::vector<std::wstring> const & sArguments,
               TChildOptions const & tOptions);
    bool fReceive();

    THandle hProcess;
    THandle hInput;
    THandle hOutput;
    std::string sReceived;
    unsigned long dwId = 0;
};

} // namespace zk_test
