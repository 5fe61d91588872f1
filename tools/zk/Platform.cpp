// zk platform: what the platform helpers find out.
#include "tools/zk/Commands.h"
#include "tools/zk/Console.h"

#include "ZkTools/Platform.h"

#include <tuple>

namespace {

std::wstring sGetFramework() {
    auto const [iMajor, iMinor, iBuild, iRevision] = GetHighestAvailableFrameworkVersion();
    if (iMajor == 0 && iMinor == 0 && iBuild == 0 && iRevision == 0) return L"none";
    return std::to_wstring(iMajor) + L"." + std::to_wstring(iMinor) + L"." + std::to_wstring(iBuild) + L"." +
           std::to_wstring(iRevision);
}

std::wstring sGetRelease() {
    unsigned long const dwRelease = dwGetDotNet4Release();
    return dwRelease != 0 ? std::to_wstring(dwRelease) : L"none";
}

EExit ePlatform(TArguments const &) {
    PrintLine(L".NET Framework: " + sGetFramework() + L"\n.NET Framework 4 release: " + sGetRelease() +
              L"\nadministrator: " + (IsUserAdmin() ? L"yes" : L"no"));
    return eDone;
}

} // namespace

TCommand const tPlatformCommand{
    L"platform",
    L"",
    L"Tells what the library finds out about this machine and user.",
    L"Prints the version of the highest .NET Framework that is installed, the release\n"
    L"number of version 4, and whether the tool runs with the rights of an administrator.\n",
    0,
    0,
    {},
    ePlatform,
};
