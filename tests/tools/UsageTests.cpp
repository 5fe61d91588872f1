#include "tests/support/Narrow.h"
#include "tests/tools/Tool.h"

#include <gtest/gtest.h>

using namespace zk_test;

namespace {

/// Each command of the tool, and how its help begins.
struct TCommandHelp {
    wchar_t const * pzCommand;
    char const * pzStart;
};

constexpr TCommandHelp atCommands[] = {
    {L"store", "usage: zk store DIR OBJECT TAG [VERSION [VARIANT]]\r\n\r\nWrites"},
    {L"show", "usage: zk show DIR OBJECT\r\n\r\nPrints"},
    {L"hold", "usage: zk hold DIR OBJECT --read|--write [--file] [--seconds N]\r\n\r\nKeeps"},
    {L"who", "usage: zk who DIR OBJECT [--file]\r\n\r\nTells"},
    {L"copy", "usage: zk copy SOURCE TARGET [--keep]\r\n\r\nCopies"},
    {L"delete", "usage: zk delete PATH [--undo]\r\n\r\nDeletes"},
    {L"alias", "usage: zk alias parse|file-name|compare TEXT"},
    {L"decimal", "usage: zk decimal TYPE VALUE [OTHER]\r\n\r\nChecks"},
    {L"date", "usage: zk date [DATE] [--since DATE]\r\n\r\nPrints"},
    {L"sort", "usage: zk sort [FILE] [--reverse]\r\n\r\nPrints"},
    {L"profile", "usage: zk profile FILE SECTION\r\n\r\nPrints"},
    {L"languages", "usage: zk languages [TEXT]\r\n\r\nPrints"},
    {L"xml-text", "usage: zk xml-text [FILE] [--attribute [--tabs]] [--to OUT [--encoding NAME]]\r\n\r\nTurns"},
    {L"xml-name", "usage: zk xml-name TEXT\r\n\r\nPrints"},
    {L"xpath-literal", "usage: zk xpath-literal TEXT\r\n\r\nPrints"},
    {L"base64", "usage: zk base64 encode|decode TEXT\r\n\r\nTurns"},
    {L"uri", "usage: zk uri path|escape|unescape|check TEXT\r\n\r\nTurns"},
    {L"hash", "usage: zk hash FILE...\r\n\r\nPrints"},
    {L"wc", "usage: zk wc PATH\r\n\r\nTells"},
    {L"fetch", "usage: zk fetch URL FILE\r\n\r\nReads"},
    {L"com", "usage: zk com [--get] PROGID MEMBER [ARGUMENT...]\r\n\r\nCalls"},
    {L"platform", "usage: zk platform\r\n\r\nTells"},
};

} // namespace

TEST(Tool, HelpListsEveryCommand) {
    TToolRun const tRun = tRunTool({L"--help"});
    EXPECT_EQ(tRun.dwExit, 0u);
    EXPECT_EQ(tRun.sErrors, "");
    EXPECT_TRUE(tRun.sOutput.starts_with("usage: zk COMMAND ARGUMENT...\r\n\r\n  store"));
    for (TCommandHelp const & tCommand : atCommands) {
        std::string const sLine = "\r\n  " + sNarrow(tCommand.pzCommand) + " ";
        EXPECT_NE(tRun.sOutput.find(sLine), std::string::npos) << sLine;
    }
    EXPECT_TRUE(tRun.sOutput.ends_with("zk COMMAND --help tells more of a command.\r\n"
                                       "Exit codes: 0 done, 1 refused or failed, 2 wrong usage.\r\n"));
}

TEST(Tool, EveryCommandHasItsHelp) {
    for (TCommandHelp const & tCommand : atCommands) {
        TToolRun const tRun = tRunTool({tCommand.pzCommand, L"any", L"--help", L"--unknown"});
        EXPECT_EQ(tRun.dwExit, 0u);
        EXPECT_TRUE(tRun.sOutput.starts_with(tCommand.pzStart)) << tRun.sOutput;
        EXPECT_TRUE(tRun.sOutput.ends_with(".\r\n"));
        EXPECT_EQ(tRun.sErrors, "");
    }
}

TEST(Tool, TellsWrongUsageOnTheErrorStream) {
    struct TCase {
        std::vector<std::wstring> sArguments;
        std::string sErrors;
    };
    std::string const sStore = "usage: zk store DIR OBJECT TAG [VERSION [VARIANT]]\r\n";
    std::string const sHold = "usage: zk hold DIR OBJECT --read|--write [--file] [--seconds N]\r\n";
    std::string const sNumber = "zk hold: --seconds takes a whole number up to 4000000.\r\n" + sHold;
    std::vector<TCase> const tCases{
        {{}, "zk: A command is missing; zk --help tells all of them.\r\n"},
        {{L""}, "zk:  is no command; zk --help tells all of them.\r\n"},
        {{L"\u00FCbel"},
         "zk: \xC3\xBC"
         "bel is no command; zk --help tells all of them.\r\n"},
        {{L"Store", L"d", L"o", L"t"}, "zk: Store is no command; zk --help tells all of them.\r\n"},
        {{L"store"}, "zk store: Arguments are missing.\r\n" + sStore},
        {{L"store", L"d", L"o"}, "zk store: Arguments are missing.\r\n" + sStore},
        {{L"store", L"d", L"o", L"t", L"1", L"v", L"x"}, "zk store: There are too many arguments.\r\n" + sStore},
        {{L"store", L"d", L"o", L"  "}, "zk store: TAG is empty.\r\n" + sStore},
        {{L"store", L"d", L"o", L"t", L"--force"}, "zk store: --force is unknown.\r\n" + sStore},
        {{L"store", L"d", L"o", L"--"}, "zk store: Arguments are missing.\r\n" + sStore},
        {{L"show", L"d"}, "zk show: Arguments are missing.\r\nusage: zk show DIR OBJECT\r\n"},
        {{L"show", L"d", L"o", L"x"}, "zk show: There are too many arguments.\r\nusage: zk show DIR OBJECT\r\n"},
        {{L"who", L"d"}, "zk who: Arguments are missing.\r\nusage: zk who DIR OBJECT [--file]\r\n"},
        {{L"copy", L"d"}, "zk copy: Arguments are missing.\r\nusage: zk copy SOURCE TARGET [--keep]\r\n"},
        {{L"delete"}, "zk delete: Arguments are missing.\r\nusage: zk delete PATH [--undo]\r\n"},
        {{L"hold", L"d", L"o"}, "zk hold: Either --read or --write is needed.\r\n" + sHold},
        {{L"hold", L"d", L"o", L"--read", L"--write"}, "zk hold: Either --read or --write is needed.\r\n" + sHold},
        {{L"hold", L"d", L"o", L"--read", L"--seconds"}, "zk hold: --seconds lacks its value.\r\n" + sHold},
        {{L"hold", L"d", L"o", L"--read", L"--seconds", L""}, sNumber},
        {{L"hold", L"d", L"o", L"--read", L"--seconds", L"-1"}, sNumber},
        {{L"hold", L"d", L"o", L"--read", L"--seconds", L"1.5"}, sNumber},
        {{L"hold", L"d", L"o", L"--read", L"--seconds", L"4000001"}, sNumber},
        {{L"hold", L"d", L"o", L"--read", L"--seconds", L"99999999999999999999"}, sNumber},
    };
    for (TCase const & tCase : tCases) {
        TToolRun const tRun = tRunTool(tCase.sArguments);
        EXPECT_EQ(tRun.dwExit, 2u);
        EXPECT_EQ(tRun.sErrors, tCase.sErrors);
        EXPECT_EQ(tRun.sOutput, "");
    }
}
