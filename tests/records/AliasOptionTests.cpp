// What an alias is in an option tree.
#include "ZkTools/Alias.h"
#include "ZkTools/OptionTree.h"

#include <gtest/gtest.h>

#include <string>

using std::wstring;

namespace {

/// Children and attributes of an element as text.
wstring sDump(TOptionElement const & tElement) {
    wstring sResult;
    for (TOptionElement const * const pChild : *tElement.pElements)
        sResult += pChild->sName + L"=" + pChild->sText + L";";
    for (TOptionAttribute const * const pAttribute : *tElement.pAttributes)
        sResult += L"@" + pAttribute->sName + L"=" + pAttribute->sValue + L";";
    return sResult;
}

template <typename TAnyAlias>
wstring sWritten(TAnyAlias const & tAlias) {
    TOptionElement tElement;
    tAlias.Write(tElement);
    return sDump(tElement);
}

} // namespace

TEST(TAliasOption, WritesChildrenForWhatIsNotEmptyAndTheTag) {
    EXPECT_EQ(sWritten(TAlias(L"A", L"1", L"v")), L"Tag=A;Version=1;Variant=v;");
    EXPECT_EQ(sWritten(TAlias(L"A", L"", L"v")), L"Tag=A;Variant=v;");
    EXPECT_EQ(sWritten(TAlias()), L"Tag=;");
}

TEST(TAliasOption, KeepsWhatIsInTheTree) {
    TOptionElement tElement;
    tElement.pAddElement(L"Version", L"old");
    tElement.pAddElement(L"Other", L"x");
    tElement.pAddElement(L"Tag", L"old")->pAddAttribute(L"kept", L"1");
    tElement.pAddElement(L"Variant", L"old");
    tElement.pAddElement(L"Variant", L"second");
    TOptionElement const * const pTag = tElement.pGetElement(L"Tag");
    TAlias(L"A", L"2", L"").Write(tElement);
    EXPECT_EQ(sDump(tElement), L"Version=2;Other=x;Tag=A;Variant=second;"); // the first of a name is the one
    EXPECT_EQ(tElement.pGetElement(L"Tag"), pTag);
    EXPECT_EQ(pTag->sGetAttributeValue(L"kept"), L"1");
    TAlias().Write(tElement);
    EXPECT_EQ(sDump(tElement), L"Other=x;Tag=;");
}

TEST(TAliasOption, ReadsChildrenAsTheyStand) {
    TOptionElement tElement;
    tElement.pAddElement(L"Tag", L" A ");
    tElement.pAddElement(L"Variant", L"v");
    tElement.pAddElement(L"version", L"no"); // the name of the attribute
    TAlias tAlias(L"x", L"y", L"z");
    tAlias.Read(tElement);
    EXPECT_EQ(tAlias.sGetTag(), L" A "); // not trimmed
    EXPECT_EQ(tAlias.sGetVersion(), L"");
    EXPECT_EQ(tAlias.sGetVariant(), L"v");
    tAlias.Read(TOptionElement());
    EXPECT_TRUE(tAlias == TAlias());
}

TEST(TAliasOption, WritesAndReadsTheKindOfObject) {
    TOptionElement tElement;
    TAlias(L"A").Write(tElement, eotFolder);
    EXPECT_EQ(sDump(tElement), L"Tag=A;@ObjectType=" + ObjectType::to_string(eotFolder) + L";");
    TAlias tAlias;
    EObjectType eType = eotNone;
    tAlias.Read(tElement, eType);
    EXPECT_EQ(tAlias.sGetTag(), L"A");
    EXPECT_EQ(eType, eotFolder);
    tAlias.Read(TOptionElement(), eType);
    EXPECT_EQ(eType, eotNone);
    TOptionElement tNone;
    tAlias.Write(tNone, eotNone);
    EXPECT_EQ(sDump(tNone), L"Tag=;@ObjectType=;");
}

TEST(TAliasOption, AttributesHaveLowerCaseNames) {
    TOptionElement tElement;
    TAlias(L"A", L"1", L"v").WriteAttr(tElement);
    EXPECT_EQ(sDump(tElement), L"@tag=A;@version=1;@variant=v;");
    TAlias().WriteAttr(tElement); // what is empty is not written, and so not removed either
    EXPECT_EQ(sDump(tElement), L"@version=1;@variant=v;@tag=;");
    TOptionElement tFresh;
    TAlias().WriteAttr(tFresh);
    EXPECT_EQ(sDump(tFresh), L"@tag=;");
}

TEST(TAliasOption, ReadsAttributesAsTheyStand) {
    TOptionElement tElement;
    tElement.pAddAttribute(L"tag", L" A ");
    tElement.pAddAttribute(L"Version", L"no"); // the name of the child
    tElement.pAddAttribute(L"variant", L"v");
    TAlias tAlias(L"x", L"y", L"z");
    tAlias.ReadAttr(tElement);
    EXPECT_EQ(tAlias.sGetTag(), L" A ");
    EXPECT_EQ(tAlias.sGetVersion(), L"");
    EXPECT_EQ(tAlias.sGetVariant(), L"v");
}

TEST(TAliasOption, OperatorsAreWriteAndReadAndGiveTheElement) {
    TAlias const tAlias(L"A", L"1", L"v");
    TOptionElement tFirst;
    TOptionElement tSecond;
    EXPECT_EQ(&(tFirst << tAlias), &tFirst);
    EXPECT_EQ(&(tAlias << tSecond), &tSecond);
    EXPECT_EQ(sDump(tFirst), L"Tag=A;Version=1;Variant=v;");
    EXPECT_EQ(sDump(tSecond), sDump(tFirst));
    TOptionElement const & tConst = tFirst;
    TAlias tReadFirst;
    TAlias tReadSecond;
    EXPECT_EQ(&(tConst >> tReadFirst), &tConst);
    EXPECT_EQ(&(tReadSecond >> tConst), &tConst);
    EXPECT_TRUE(tReadFirst == tAlias);
    EXPECT_TRUE(tReadSecond == tAlias);
}

TEST(TFullAliasOption, DirectoryFollowsTheRuleOfTheVersion) {
    EXPECT_EQ(sWritten(TFullAlias(TAlias(L"A"), L"C:\\d")), L"Tag=A;Directory=C:\\d;");
    EXPECT_EQ(sWritten(TFullAlias(TAlias(L"A"), L"")), L"Tag=A;");
    TOptionElement tElement;
    tElement.pAddElement(L"Directory", L"old");
    TFullAlias(TAlias(L"A"), L"new").Write(tElement);
    EXPECT_EQ(sDump(tElement), L"Directory=new;Tag=A;");
    TFullAlias(TAlias(L"A"), L"").Write(tElement);
    EXPECT_EQ(sDump(tElement), L"Tag=A;");
}

TEST(TFullAliasOption, ReadsTheDirectoryToo) {
    TOptionElement tElement;
    TFullAlias const tAlias(TAlias(L"A", L"1", L"v"), L" C:\\d ");
    tAlias.Write(tElement);
    TFullAlias tRead;
    tRead.Read(tElement);
    EXPECT_TRUE(tRead == tAlias);
    EXPECT_EQ(tRead.sDirectory, L" C:\\d ");
    tRead.Read(TOptionElement());
    EXPECT_EQ(tRead.sDirectory, L"");
    EXPECT_EQ(tRead.sGetTag(), L"");
}
