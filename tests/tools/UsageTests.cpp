#include "tests/tools/Tool.h"

#include <gtest/gtest.h>

using namespace zk_test;

TEST(Tool, HelpListsEveryCommand) {
    TToolRun const tRun = tRunTool({L"--help"});
    EXPECT_EQ(tRun.dwExit, 0u);
    EXPECT_EQ(tRun.sErrors, "");
    EXPECT_TRUE(tRun.sOutput.starts_with("usage: zk COMMAND ARGUMENT...\r\n\r\n  store"));
    for (char const * pzCommand :
         {"\r\n  store ", "\r\n  show ", "\r\n  hold ", "\r\n  who ", "\r\n  alias ", "\r\n  decimal ", "\r\n  date ",
          "\r\n  sort ", "\r\n  profile ", "\r\n  languages "})
        EXPECT_NE(tRun.sOutput.find(pzCommand), std::string::npos) << pzCommand;
    EXPECT_TRUE(tRun.sOutput.ends_with("zk COMMAND --help tells more of a command.\r\n"
                                       "Exit codes: 0 done, 1 refused or failed, 2 wrong usage.\r\n"));
}

TEST(Tool, EveryCommandHasItsHelp) {
    struct TCase {
        wchar_t const * pzCommand;
        std::string sUsage;
    };
    for (TCase const & tCase : {TCase{L"store", "usage: zk store DIR OBJECT TAG [VERSION [VARIANT]]\r\n\r\nWrites"},
                                TCase{L"show", "usage: zk show DIR OBJECT\r\n\r\nPrints"},
                                TCase{L"hold", "usage: zk hold DIR OBJECT --read|--write [--seconds N]\r\n\r\nKeeps"},
                                TCase{L"who", "usage: zk who DIR OBJECT\r\n\r\nTells"},
                                TCase{L"alias", "usage: zk alias parse|file-name|compare TEXT"},
                                TCase{L"decimal", "usage: zk decimal TYPE VALUE [OTHER]\r\n\r\nChecks"},
                                TCase{L"date", "usage: zk date [DATE] [--since DATE]\r\n\r\nPrints"},
                                TCase{L"sort", "usage: zk sort [FILE] [--reverse]\r\n\r\nPrints"},
                                TCase{L"profile", "usage: zk profile FILE SECTION\r\n\r\nPrints"},
                                TCase{L"languages", "usage: zk languages [TEXT]\r\n\r\nPrints"}}) {
        TToolRun const tRun = tRunTool({tCase.pzCommand, L"any", L"--help", L"--unknown"});
        EXPECT_EQ(tRun.dwExit, 0u);
        EXPECT_TRUE(tRun.sOutput.starts_with(tCase.sUsage)) << tRun.sOutput;
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
    std::string const sHold = "usage: zk hold DIR OBJECT --read|--write [--seconds N]\r\n";
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
        {{L"who", L"d"}, "zk who: Arguments are missing.\r\nusage: zk who DIR OBJECT\r\n"},
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
