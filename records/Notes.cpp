#include "ZkTools/Notes.h"

namespace {

/// The one default note.
std::shared_ptr<TZkNoteDefaultImpl> const & pGetDefault() {
    static std::shared_ptr<TZkNoteDefaultImpl> const pDefault = std::make_shared<TZkNoteDefaultImpl>();
    return pDefault;
}

} // namespace

TZkNote::TZkNote() : pImpl(pGetDefault()) {}

TZkNote::TZkNote(std::shared_ptr<TZkNoteImpl> && pImpl_) noexcept : pImpl(std::move(pImpl_)) {}

TZkNote::TZkNote(TZkNote const & tOther) noexcept = default;

TZkNote & TZkNote::operator=(TZkNote const & tOther) noexcept = default;

TZkNote::~TZkNote() = default;

bool TZkNote::fHasFunction(EFunction eFunction) const {
    return (pImpl->eGetFunctions() & eFunction) != 0;
}

TZkNote::EFunction TZkNote::eGetFunctions() const {
    return pImpl->eGetFunctions();
}

int TZkNote::iCountFields() const {
    return pImpl->iCountFields();
}

bool TZkNote::fIsMultiLingual() const {
    return pImpl->fIsMultiLingual();
}

std::wstring TZkNote::sGetLabel() const {
    return pImpl->sGetLabel();
}

std::wstring TZkNote::sGetFieldValueAt(int iIndex) const {
    return pImpl->sGetFieldValueAt(iIndex);
}

std::wstring TZkNote::sGetFieldLabelAt(int iIndex) const {
    return pImpl->sGetFieldLabelAt(iIndex);
}

std::wstring TZkNote::sGetLanguage() const {
    return pImpl->sGetLanguage();
}

std::wstring TZkNote::sGetContent() const {
    return pImpl->sGetContent();
}

std::wstring TZkNote::sGetComment() const {
    return pImpl->sGetComment();
}

EObjectType TZkNote::eGetObjectType() const {
    return pImpl->eGetObjectType();
}

TZkNote TZkNote::tGetDefaultNote() {
    return {};
}

bool TZkNote::operator==(TZkNote const & tOther) const {
    return *pImpl == *tOther.pImpl;
}

TZkNoteImpl::~TZkNoteImpl() = default;

bool TZkNoteImpl::operator==(TZkNoteImpl const & tOther) const {
    return eGetFunctions() == tOther.eGetFunctions() && iCountFields() == tOther.iCountFields() &&
           sGetLabel() == tOther.sGetLabel() && sGetLanguage() == tOther.sGetLanguage() &&
           sGetContent() == tOther.sGetContent() && sGetComment() == tOther.sGetComment();
}

TZkNote::EFunction TZkNoteDefaultImpl::eGetFunctions() const {
    return TZkNote::efNone;
}

int TZkNoteDefaultImpl::iCountFields() const {
    return 0;
}

bool TZkNoteDefaultImpl::fIsMultiLingual() const {
    return false;
}

std::wstring TZkNoteDefaultImpl::sGetLabel() const {
    return {};
}

std::wstring TZkNoteDefaultImpl::sGetFieldValueAt(int) const {
    return {};
}

std::wstring TZkNoteDefaultImpl::sGetFieldLabelAt(int) const {
    return {};
}

std::wstring TZkNoteDefaultImpl::sGetLanguage() const {
    return {};
}

std::wstring TZkNoteDefaultImpl::sGetContent() const {
    return {};
}

std::wstring TZkNoteDefaultImpl::sGetComment() const {
    return {};
}

EObjectType TZkNoteDefaultImpl::eGetObjectType() const {
    return eotNone;
}

TZkNoteCopyImpl::TZkNoteCopyImpl(TZkNote const & tNote_, std::wstring const & sLabel_)
    : tNote(tNote_), sLabel(sLabel_) {}

TZkNote::EFunction TZkNoteCopyImpl::eGetFunctions() const {
    return tNote.eGetFunctions();
}

int TZkNoteCopyImpl::iCountFields() const {
    return tNote.iCountFields();
}

bool TZkNoteCopyImpl::fIsMultiLingual() const {
    return tNote.fIsMultiLingual();
}

std::wstring TZkNoteCopyImpl::sGetLabel() const {
    return !sLabel.empty() ? sLabel : tNote.sGetLabel();
}

std::wstring TZkNoteCopyImpl::sGetFieldValueAt(int iIndex) const {
    return tNote.sGetFieldValueAt(iIndex);
}

std::wstring TZkNoteCopyImpl::sGetFieldLabelAt(int iIndex) const {
    return tNote.sGetFieldLabelAt(iIndex);
}

std::wstring TZkNoteCopyImpl::sGetLanguage() const {
    return tNote.sGetLanguage();
}

std::wstring TZkNoteCopyImpl::sGetContent() const {
    return tNote.sGetContent();
}

std::wstring TZkNoteCopyImpl::sGetComment() const {
    return tNote.sGetComment();
}

EObjectType TZkNoteCopyImpl::eGetObjectType() const {
    return tNote.eGetObjectType();
}

TZkNoteListImpl::TZkNoteListImpl() = default;

TZkNoteListImpl::~TZkNoteListImpl() = default;

int TZkNoteListImpl::Add(TZkNote const & tNote) {
    return tNotes.Add(tNote);
}

int TZkNoteListImpl::AddAt(TZkNote const & tNote, int iIndex) {
    return tNotes.AddAt(tNote, iIndex);
}

void TZkNoteListImpl::Remove(int iIndex) {
    tNotes.Detach(iIndex);
}

void TZkNoteListImpl::Flush() noexcept {
    tNotes.Flush();
}

int TZkNoteListImpl::iGetCount() const noexcept {
    return tNotes.GetItemsInContainer();
}

TZkNote TZkNoteListImpl::tGetNoteAt(int iIndex) const {
    return tNotes[iIndex];
}

TZkNote & TZkNoteListImpl::operator[](int iIndex) {
    return tNotes[iIndex];
}

void TZkNoteListImpl::SetData(int iIndex, TZkNote const & tNote) {
    tNotes.SetData(iIndex, tNote);
}

int TZkNoteListImpl::iFind(TZkNote & tNote) {
    return tNotes.Find(tNote);
}

TZkNoteList::TZkNoteList() : pImpl(std::make_shared<TZkNoteListImpl>()) {}

int TZkNoteList::Add(TZkNote const & tNote) {
    return pImpl->Add(tNote);
}

int TZkNoteList::AddAt(TZkNote const & tNote, int iIndex) {
    return pImpl->AddAt(tNote, iIndex);
}

void TZkNoteList::Remove(int iIndex) {
    pImpl->Remove(iIndex);
}

void TZkNoteList::Flush() noexcept {
    pImpl->Flush();
}

int TZkNoteList::iGetCount() const noexcept {
    return pImpl->iGetCount();
}

bool TZkNoteList::fIsFilled() const noexcept {
    return iGetCount() > 0;
}

TZkNote TZkNoteList::tGetNoteAt(int iIndex) const {
    return pImpl->tGetNoteAt(iIndex);
}
