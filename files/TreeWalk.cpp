#include "files/TreeWalk.h"

#include "ZkBase/Paths.h"

namespace {

constexpr std::wstring_view sAll = L"*.*";

bool fIsDotName(wchar_t const * pzName) noexcept {
    std::wstring_view const sName = pzName;
    return sName == L"." || sName == L"..";
}

} // namespace

TTreeWalk::TTreeWalk(std::wstring const & sDirectory) : sPath(path_func::sPathAppend(sDirectory, std::wstring(sAll))) {
    tLevels.emplace_back(sPath, sPath.size() - sAll.size());
}

bool TTreeWalk::fNext() {
    TLevel & tLevel = tLevels.back();
    do {
        if (tLevel.fStarted) tLevel.tFind.fNext();
        tLevel.fStarted = true;
        if (!tLevel.tFind.fFound()) return false;
    } while (fIsDotName(tLevel.tFind.tGetData().cFileName));
    sPath.replace(tLevel.uDirectory, std::wstring::npos, tLevel.tFind.tGetData().cFileName);
    return true;
}

void TTreeWalk::Enter() {
    sPath += L'\\';
    std::size_t const uDirectory = sPath.size();
    sPath += sAll;
    tLevels.emplace_back(sPath, uDirectory);
}

bool TTreeWalk::fLeave() {
    if (tLevels.size() == 1) return false;
    sPath.resize(tLevels.back().uDirectory - 1);
    tLevels.pop_back();
    return true;
}
