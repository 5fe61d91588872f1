// The commands of the tool, a row each; each is defined in the source that bears its name.
#pragma once

#include "tools/zk/Command.h"

#include <array>

extern TCommand const tStoreCommand;
extern TCommand const tShowCommand;
extern TCommand const tHoldCommand;
extern TCommand const tWhoCommand;
extern TCommand const tCopyCommand;
extern TCommand const tDeleteCommand;
extern TCommand const tAliasCommand;
extern TCommand const tDecimalCommand;
extern TCommand const tDateCommand;
extern TCommand const tSortCommand;
extern TCommand const tProfileCommand;
extern TCommand const tLanguagesCommand;
extern TCommand const tXmlTextCommand;
extern TCommand const tXmlNameCommand;
extern TCommand const tXPathLiteralCommand;
extern TCommand const tBase64Command;
extern TCommand const tUriCommand;
extern TCommand const tHashCommand;
extern TCommand const tWcCommand;
extern TCommand const tFetchCommand;
extern TCommand const tComCommand;
extern TCommand const tPlatformCommand;

// clang-format off
inline constexpr std::array pCommands{
    &tStoreCommand,
    &tShowCommand,
    &tHoldCommand,
    &tWhoCommand,
    &tCopyCommand,
    &tDeleteCommand,
    &tAliasCommand,
    &tDecimalCommand,
    &tDateCommand,
    &tSortCommand,
    &tProfileCommand,
    &tLanguagesCommand,
    &tXmlTextCommand,
    &tXmlNameCommand,
    &tXPathLiteralCommand,
    &tBase64Command,
    &tUriCommand,
    &tHashCommand,
    &tWcCommand,
    &tFetchCommand,
    &tComCommand,
    &tPlatformCommand,
};
// clang-format on
