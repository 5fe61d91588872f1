#include "ZkTools/Option.h"

TOption::TOption(short iNumber) noexcept : iOptionNumber(iNumber) {}

TOption::~TOption() = default;

void TOption::Load() {}

void TOption::Save(std::wstring const &, std::wstring const &) {}

void TOption::Save() {}

void TOption::xLoadFromFile(std::wstring const &) {}

void TOption::Delete() {}

void TOption::InitDefaults() {}

void TOption::Read(TOptionElement const &) {}

void TOption::Write(TOptionElement &) const {}

std::wstring TOption::sGetOptionFileDirectory() const {
    return {};
}

std::wstring TOption::sGetOptionFileName() {
    return {};
}

std::wstring TOption::sGetOptionFilePath() {
    return {};
}

std::wstring TOption::sGetOptionType() const {
    return {};
}

TFullAlias TOption::tGetObjectAlias() {
    return {};
}

EObjectType TOption::eGetObjectType() {
    return eotNone;
}

bool TOption::fWizardIsInViewMode() const noexcept {
    return eWizardMode == ewmView;
}

bool TOption::fWizardIsInEditMode() const noexcept {
    return eWizardMode == ewmEdit;
}

bool TOption::fWizardIsInCreationMode() const noexcept {
    return eWizardMode == ewmCreationFirst || eWizardMode == ewmCreationSecond || eWizardMode == ewmCreationThird;
}

bool TOption::fWizardIsInExportMode() const noexcept {
    return eWizardMode == ewmExport;
}

bool TOption::fWizardIsInImportMode() const noexcept {
    return eWizardMode == ewmImport;
}

bool TOption::fWizardIsInImportFromFileMode() const noexcept {
    return fWizardIsInImportMode() && oImportSource != eisNotFromFile;
}

bool TOption::fWizardIsInChangeMode() const noexcept {
    return fWizardIsInViewMode() || fWizardIsInEditMode() || fWizardIsInCreationMode();
}
