#include "ZkTools/Option.h"

#include "ZkTools/OptionTree.h"
#include "tests/support/VirtualSlot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

using std::wstring;

namespace {

/// Opens the state that derived classes have.
struct TSettings : TOption {
    using TOption::eWizardMode;
    using TOption::fOptionFlag;
    using TOption::iOptionNumber;
    using TOption::oImportSource;
    using TOption::TOption;
};

TSettings tMake(int iMode) {
    TSettings tSettings;
    tSettings.eWizardMode = static_cast<EWizardMode>(iMode);
    return tSettings;
}

/// The answers of all seven tests, in the order of the class.
wstring sAskAll(TOption const & tOption) {
    wstring sAnswers;
    for (bool const fAnswer :
         {tOption.fWizardIsInViewMode(), tOption.fWizardIsInEditMode(), tOption.fWizardIsInCreationMode(),
          tOption.fWizardIsInExportMode(), tOption.fWizardIsInImportMode(), tOption.fWizardIsInImportFromFileMode(),
          tOption.fWizardIsInChangeMode()})
        sAnswers += fAnswer ? L'1' : L'0';
    return sAnswers;
}

} // namespace

TEST(TOption, StartsWithoutNumberAndMode) {
    TSettings const tFresh;
    EXPECT_EQ(tFresh.iOptionNumber, -1);
    EXPECT_FALSE(tFresh.fOptionFlag);
    EXPECT_EQ(tFresh.oImportSource, std::nullopt);
    EXPECT_EQ(tFresh.eWizardMode, ewmNone);
    TSettings const tNumbered(7);
    EXPECT_EQ(tNumbered.iOptionNumber, 7);
    EXPECT_EQ(tNumbered.eWizardMode, ewmNone);
}

TEST(TOption, ModesAnswerTheTests) {
    constexpr std::array<wchar_t const *, 9> apzExpected{
        // view, edit, creation, export, import, import from file, change
        L"0000000", // none
        L"0001000", // export
        L"0000110", // import
        L"1000001", // view: a change mode too
        L"0100001", // edit
        L"0010001", // creation
        L"0010001", //
        L"0010001", //
        L"0000000", // none of them
    };
    for (int iMode = 0; iMode < static_cast<int>(apzExpected.size()); ++iMode)
        EXPECT_EQ(sAskAll(tMake(iMode)), apzExpected[static_cast<std::size_t>(iMode)]) << iMode;
    EXPECT_EQ(ewmCreationThird, 7);
}

TEST(TOption, ImportIsFromAFileUnlessTheSourceIsAnother) {
    TSettings tSettings = tMake(ewmImport);
    for (int const iSource : {0, 1, 3}) {
        tSettings.oImportSource = static_cast<EImportSource>(iSource);
        EXPECT_TRUE(tSettings.fWizardIsInImportFromFileMode()) << iSource;
    }
    tSettings.oImportSource = static_cast<EImportSource>(2);
    EXPECT_FALSE(tSettings.fWizardIsInImportFromFileMode());
    EXPECT_TRUE(tSettings.fWizardIsInImportMode());
    tSettings.eWizardMode = ewmExport;
    tSettings.oImportSource = static_cast<EImportSource>(1);
    EXPECT_FALSE(tSettings.fWizardIsInImportFromFileMode());
}

TEST(TOption, CopiesItsState) {
    TSettings tSource(3);
    tSource.fOptionFlag = true;
    tSource.oImportSource = eisNotFromFile;
    tSource.eWizardMode = ewmCreationSecond;
    TSettings tAssigned;
    tAssigned = tSource;
    for (TSettings const & tCopy : {TSettings(tSource), tAssigned}) {
        EXPECT_EQ(tCopy.iOptionNumber, 3);
        EXPECT_TRUE(tCopy.fOptionFlag);
        EXPECT_EQ(tCopy.oImportSource, eisNotFromFile);
        EXPECT_EQ(tCopy.eWizardMode, ewmCreationSecond);
        EXPECT_TRUE(tCopy.fWizardIsInCreationMode());
        EXPECT_TRUE(tCopy.fWizardIsInChangeMode());
    }
}

TEST(TOption, DoesNothingByItself) {
    TOption tOption;
    tOption.Load();
    tOption.Save(L"C:\\directory", L"name");
    tOption.Save();
    tOption.xLoadFromFile(L"C:\\nowhere");
    tOption.Delete();
    tOption.InitDefaults();
    TOptionElement tElement;
    tOption.Write(tElement);
    EXPECT_EQ(tElement.iCountElements() + tElement.iCountAttributes(), 0);
    tOption.Read(tElement);
    EXPECT_EQ(tOption.sGetOptionFileDirectory(), L"");
    EXPECT_EQ(tOption.sGetOptionFileName(), L"");
    EXPECT_EQ(tOption.sGetOptionFilePath(), L"");
    EXPECT_EQ(tOption.sGetOptionType(), L"");
    EXPECT_TRUE(tOption.tGetObjectAlias() == TFullAlias());
    EXPECT_EQ(tOption.eGetObjectType(), eotNone);
}

TEST(TOption, KeepsTheOrderOfItsVirtualOperationsAndFields) {
    using TSaveTwo = void (TOption::*)(wstring const &, wstring const &);
    using TSaveNone = void (TOption::*)();
    std::vector<int> const iSlots{
        zk_test::iVirtualSlot(&TOption::Load),
        zk_test::iVirtualSlot(static_cast<TSaveTwo>(&TOption::Save)),
        zk_test::iVirtualSlot(static_cast<TSaveNone>(&TOption::Save)),
        zk_test::iVirtualSlot(&TOption::xLoadFromFile),
        zk_test::iVirtualSlot(&TOption::Delete),
        zk_test::iVirtualSlot(&TOption::InitDefaults),
        zk_test::iVirtualSlot(&TOption::Read),
        zk_test::iVirtualSlot(&TOption::Write),
        zk_test::iVirtualSlot(&TOption::sGetOptionFileDirectory),
        zk_test::iVirtualSlot(&TOption::sGetOptionFileName),
        zk_test::iVirtualSlot(&TOption::sGetOptionFilePath),
        zk_test::iVirtualSlot(&TOption::sGetOptionType),
        zk_test::iVirtualSlot(&TOption::tGetObjectAlias),
        zk_test::iVirtualSlot(&TOption::eGetObjectType),
    };
    for (std::size_t i = 0; i < iSlots.size(); ++i)
        EXPECT_EQ(iSlots[i], zk_test::iBehindDestructor + static_cast<int>(i));
    TSettings const t;
    std::array<void const *, 4> const apFields{&t.iOptionNumber, &t.fOptionFlag, &t.oImportSource, &t.eWizardMode};
    EXPECT_TRUE(std::is_sorted(apFields.begin(), apFields.end()));
}
