/// The base of settings objects: what each of them can do, and the mode in which a wizard works on it.
#pragma once

#include "ZkBase/ObjectType.h"
#include "ZkTools/Alias.h"
#include "ZkTools/Export.h"

#include <optional>
#include <string>

class TOptionElement;

/// The mode in which a wizard works on a settings object.
enum EWizardMode : int {
    ewmNone = 0,
    ewmExport = 1,
    ewmImport = 2,
    ewmView = 3,
    ewmEdit = 4,
    ewmCreationFirst = 5, ///< the three modes of creation are one to this library
    ewmCreationSecond = 6,
    ewmCreationThird = 7,
};

/// Where an import comes from. The other values are the business of the layers above.
enum EImportSource : int {
    eisNotFromFile = 2, ///< no file
};

/// The base of settings objects. It stores nothing itself: derived classes override what they can do, and all else does
/// nothing, or answers empty. This library never calls the virtual operations.
class ZKTOOLS_API TOption {
public:
    TOption() noexcept = default;
    explicit TOption(short iNumber) noexcept;
    /// Copies number, flag, source and mode, and so does the assignment.
    TOption(TOption const & tOther) noexcept = default;
    TOption & operator=(TOption const & tOther) noexcept = default;

    virtual ~TOption();
    virtual void Load();
    virtual void Save(std::wstring const & sDirectory, std::wstring const & sName);
    virtual void Save();
    /// A derived class throws when it fails.
    virtual void xLoadFromFile(std::wstring const & sPath);
    virtual void Delete();
    virtual void InitDefaults();
    virtual void Read(TOptionElement const & tElement);
    virtual void Write(TOptionElement & tElement) const;
    virtual std::wstring sGetOptionFileDirectory() const;
    virtual std::wstring sGetOptionFileName();
    virtual std::wstring sGetOptionFilePath();
    virtual std::wstring sGetOptionType() const;
    virtual TFullAlias tGetObjectAlias();
    /// `eotNone` here.
    virtual EObjectType eGetObjectType();

    [[nodiscard]] bool fWizardIsInViewMode() const noexcept;
    [[nodiscard]] bool fWizardIsInEditMode() const noexcept;
    /// True in all three modes of creation.
    [[nodiscard]] bool fWizardIsInCreationMode() const noexcept;
    [[nodiscard]] bool fWizardIsInExportMode() const noexcept;
    /// True whatever the source.
    [[nodiscard]] bool fWizardIsInImportMode() const noexcept;
    /// True also where nothing is known of the source.
    [[nodiscard]] bool fWizardIsInImportFromFileMode() const noexcept;
    /// True for creation and edit; deliberate: for view as well, which shares the pages of the wizard with them.
    [[nodiscard]] bool fWizardIsInChangeMode() const noexcept;

protected:
    short iOptionNumber = -1; ///< for derived classes, as is the flag
    bool fOptionFlag = false;
    std::optional<EImportSource> oImportSource; ///< nothing where it is not known
    EWizardMode eWizardMode = ewmNone;
};
