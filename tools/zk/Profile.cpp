// zk profile: the lines of a section of an initialisation file.
#include "tools/zk/Commands.h"
#include "tools/zk/Console.h"
#include "tools/zk/FullPath.h"

#include "ZkTools/Exceptions.h"
#include "ZkTools/Files.h"
#include "ZkTools/ProfileSection.h"

namespace {

EExit eProfile(TArguments const & tArguments) {
    // The system looks for a file without a directory among its own.
    std::wstring const sFile = sGetAbsolute(tArguments.sGet(0));
    std::wstring const sSection = tArguments.sGet(1);
    ExistFileOrDirectory(sFile.c_str());
    TProfileSection tSection(sSection.c_str(), sFile.c_str());
    if (tSection.GetLines().empty()) {
        PrintError(L"There is no section \"" + sSection + L"\" with lines in \"" + sFile + L"\".");
        return eFailed;
    }
    std::wstring sText;
    for (TProfileSection::TLine const & tLine : tSection.GetLines()) {
        if (tLine.pzKey != nullptr) sText += tLine.pzKey;
        if (tLine.pzValue != nullptr) sText.append(L"=").append(tLine.pzValue);
        sText += L'\n';
    }
    PrintLine(sText);
    return eDone;
}

} // namespace

TCommand const tProfileCommand{
    L"profile",
    L"FILE SECTION",
    L"Prints the lines of a section of an initialisation file.",
    L"Comments are left out, and so are blanks around keys and values. A line is printed\n"
    L"as KEY=VALUE, or as KEY alone when it has no value. What stands behind a second\n"
    L"equals sign is lost, and one in front of the key is passed over.\n"
    L"\n"
    L"A file in UTF-16 needs its mark; any other is read in the system's code page. A\n"
    L"section that is missing, or without lines, is exit code 1.\n",
    2,
    2,
    {},
    eProfile,
};
