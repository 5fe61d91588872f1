// What a command of the tool is. A new one is a source of its own and a row in Commands.h.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// The exit codes of the tool.
enum EExit : int {
    eDone = 0,
    eFailed = 1, ///< refused or failed; the standard error stream tells why
    eWrongUsage = 2,
};

/// Thrown for arguments that a command cannot take.
struct TWrongUsage {
    std::wstring sText;
};

/// A word that begins with two hyphens.
struct TSwitch {
    std::wstring_view sName;
    bool fHasValue; ///< the next argument belongs to it
};

/// The arguments of a command: the plain ones by place, and switches, which stand anywhere. "--" ends the switches, for
/// names that begin with a hyphen.
class TArguments {
public:
    /// \throws TWrongUsage for an unknown switch, and for one that lacks its value
    TArguments(std::span<wchar_t const * const> pzArguments, std::span<TSwitch const> tSwitches);

    [[nodiscard]] std::size_t uGetCount() const noexcept { return sPlain.size(); }
    /// The plain argument at that place; empty when there is none.
    [[nodiscard]] std::wstring sGet(std::size_t uIndex) const;
    [[nodiscard]] bool fHas(std::wstring_view sSwitch) const noexcept { return psGetValue(sSwitch) != nullptr; }
    /// The value of a switch, the last one where it is repeated; null when it is not given.
    [[nodiscard]] std::wstring const * psGetValue(std::wstring_view sSwitch) const noexcept;

private:
    std::vector<std::wstring> sPlain;
    std::vector<std::pair<std::wstring_view, std::wstring>> sGiven;
};

struct TCommand {
    std::wstring_view sName;
    std::wstring_view sUsage;   ///< what stands behind the name
    std::wstring_view sSummary; ///< one line, for the list of all commands
    std::wstring_view sHelp;    ///< what `--help` tells below usage and summary, lines ended by \n
    std::size_t uLeast;         ///< how many plain arguments it takes
    std::size_t uMost;
    std::span<TSwitch const> tSwitches;
    /// Does it. What it throws is told, and is exit code 1.
    EExit (*pRun)(TArguments const & tArguments);
};
