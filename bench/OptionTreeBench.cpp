// The option tree beside pugixml, which keeps a document in memory as our tree does, and beside a bare search.
#include "ZkTools/OptionTree.h"

#include "ZkBase/Windows.h"
#include "bench/Ratio.h"

#include <psapi.h>
#include <pugixml.hpp>

#include <cwchar>
#include <memory>
#include <string>
#include <vector>

#ifndef PUGIXML_WCHAR_MODE
#error "Both shall hold wide text: pugixml has to be built with PUGIXML_WCHAR_MODE."
#endif

namespace {

constexpr int iGroups = 1000;
constexpr int iElementsAGroup = 1000;

/// What both trees hold: a million elements in groups, each with two attributes whose values are numbers of their own.
struct TOurTree {
    using TTree = TOptionElement;

    static void Build(TTree & tRoot) {
        for (int iGroup = 0; iGroup < iGroups; ++iGroup) {
            TOptionElement & tGroup = tRoot + L"Group";
            for (int i = 0; i < iElementsAGroup; ++i) {
                TOptionElement & tElement = tGroup + L"Element";
                tElement.pAddAttribute(L"name", std::to_wstring(iGroup));
                tElement.pAddAttribute(L"value", std::to_wstring(i));
            }
        }
    }
    static unsigned long long uWalk(TTree const & tRoot) {
        unsigned long long uSum = 0;
        for (TOptionElement const * const pGroup : *tRoot.pElements)
            for (TOptionElement const * const pElement : *pGroup->pElements)
                for (TOptionAttribute const * const pAttribute : *pElement->pAttributes)
                    uSum += pAttribute->sValue[0];
        return uSum;
    }
    static void Clone(TTree const & tRoot, TTree & tCopy) { tCopy.Clone(tRoot); }
};

struct TPugiTree {
    using TTree = pugi::xml_document;

    static void Build(TTree & tDocument) {
        pugi::xml_node tRoot = tDocument.append_child(L"Root");
        for (int iGroup = 0; iGroup < iGroups; ++iGroup) {
            pugi::xml_node tGroup = tRoot.append_child(L"Group");
            for (int i = 0; i < iElementsAGroup; ++i) {
                pugi::xml_node tElement = tGroup.append_child(L"Element");
                tElement.append_attribute(L"name") = std::to_wstring(iGroup).c_str();
                tElement.append_attribute(L"value") = std::to_wstring(i).c_str();
            }
        }
    }
    static unsigned long long uWalk(TTree const & tDocument) {
        unsigned long long uSum = 0;
        for (pugi::xml_node const & tGroup : tDocument.first_child())
            for (pugi::xml_node const & tElement : tGroup)
                for (pugi::xml_attribute const & tAttribute : tElement.attributes())
                    uSum += tAttribute.value()[0];
        return uSum;
    }
    static void Clone(TTree const & tDocument, TTree & tCopy) { tCopy.reset(tDocument); }
};

/// Builds, walks, clones and destroys.
template <typename T>
void Live() {
    typename T::TTree tTree;
    T::Build(tTree);
    unsigned long long const uSum = T::uWalk(tTree);
    zk_bench::Keep(&uSum);
    typename T::TTree tCopy;
    T::Clone(tTree, tCopy);
    zk_bench::Keep(&tCopy);
}

double dGetMemory() {
    PROCESS_MEMORY_COUNTERS tCounters{};
    GetProcessMemoryInfo(GetCurrentProcess(), &tCounters, sizeof tCounters);
    return static_cast<double>(tCounters.WorkingSetSize);
}

/// The bytes that a tree takes.
template <typename T>
double dHold() {
    double const dBefore = dGetMemory();
    auto const pTree = std::make_unique<typename T::TTree>();
    T::Build(*pTree);
    return dGetMemory() - dBefore;
}

/// A search for each of a hundred names, among children and in an array of strings.
void AddLookUp(char const * pzName, std::wstring (*pMakeName)(int)) {
    struct TNames {
        TOptionElement tParent;
        std::vector<std::wstring> sNames;
    };
    auto const pNames = std::make_shared<TNames>();
    for (int i = 0; i < 100; ++i) {
        pNames->sNames.push_back(pMakeName(i));
        pNames->tParent.pAddElement(pNames->sNames.back(), L"");
    }
    auto const Ours = [pNames] {
        for (int iRound = 0; iRound < 100; ++iRound)
            for (std::wstring const & sName : pNames->sNames)
                zk_bench::Keep(pNames->tParent.pGetElement(sName));
    };
    auto const Peer = [pNames] {
        for (int iRound = 0; iRound < 100; ++iRound)
            for (std::wstring const & sSearched : pNames->sNames)
                for (std::wstring const & sName : pNames->sNames)
                    if (std::wcscmp(sName.c_str(), sSearched.c_str()) == 0) {
                        zk_bench::Keep(&sName);
                        break;
                    }
    };
    zk_bench::Add(pzName, zk_bench::EBound::eTimesFaster, 1, Ours, Peer);
}

} // namespace

int main(int iCount, char ** ppArguments) {
    zk_bench::AddFigure("A million elements: memory held", 3, [] { return dHold<TOurTree>() / dHold<TPugiTree>(); });
    zk_bench::Add("A million elements: build, walk, clone, destroy", zk_bench::EBound::eTimesTheTime, 2,
                  &Live<TOurTree>, &Live<TPugiTree>);
    AddLookUp("Look-up among 100 children of like names", [](int i) { return L"Element" + std::to_wstring(i); });
    AddLookUp("Look-up among 100 children of unlike names",
              [](int i) { return std::to_wstring(i * 7919) + L"Element"; });
    return zk_bench::iRun(iCount, ppArguments);
}
