// The text of an element as a value.
#include "ZkTools/OptionTree.h"

#include <array>
#include <cstdio>
#include <cwchar>

namespace {

/// The number at the start of a text, 0 when there is none. `wcstol` is what `_wtoi` is made of, with the nearest value
/// for what is out of range promised.
int iGetNumber(std::wstring const & sText) noexcept {
    static_assert(sizeof(long) == sizeof(int));
    return static_cast<int>(std::wcstol(sText.c_str(), nullptr, 10));
}

} // namespace

void TOptionElement::Read(std::wstring & sValue) const {
    sValue = sText;
}

void TOptionElement::Read(wchar_t * pzTarget, unsigned long ulSize) const noexcept {
    if (pzTarget == nullptr || ulSize == 0) return;
    std::wcsncpy(pzTarget, sText.c_str(), ulSize - 1);
    pzTarget[ulSize - 1] = L'\0';
}

void TOptionElement::Read(bool & fValue) const noexcept {
    fValue = sText == L"true";
}

void TOptionElement::Read(wchar_t & cValue) const noexcept {
    cValue = sText.c_str()[0];
}

void TOptionElement::Read(unsigned char & uValue) const noexcept {
    uValue = static_cast<unsigned char>(iGetNumber(sText));
}

void TOptionElement::Read(short & iValue) const noexcept {
    iValue = static_cast<short>(iGetNumber(sText));
}

void TOptionElement::Read(unsigned short & uValue) const noexcept {
    uValue = static_cast<unsigned short>(iGetNumber(sText));
}

void TOptionElement::Read(int & iValue) const noexcept {
    iValue = iGetNumber(sText);
}

void TOptionElement::Read(unsigned int & uValue) const noexcept {
    uValue = static_cast<unsigned int>(iGetNumber(sText));
}

void TOptionElement::Read(long & lValue) const noexcept {
    lValue = iGetNumber(sText);
}

void TOptionElement::Read(unsigned long & ulValue) const noexcept {
    ulValue = static_cast<unsigned long>(iGetNumber(sText));
}

void TOptionElement::Read(double & dValue) const noexcept {
    std::swscanf(sText.c_str(), L"%lf", &dValue);
}

void TOptionElement::Write(std::wstring const & sValue) {
    sText = sValue;
}

void TOptionElement::Write(wchar_t const * pzValue) {
    sText = pzValue != nullptr ? pzValue : L"";
}

void TOptionElement::Write(bool const & fValue) {
    sText = fValue ? L"true" : L"false";
}

void TOptionElement::Write(wchar_t const & cValue) {
    sText.assign(1, cValue);
}

void TOptionElement::Write(unsigned char const & uValue) {
    sText = std::to_wstring(uValue);
}

void TOptionElement::Write(short const & iValue) {
    sText = std::to_wstring(iValue);
}

void TOptionElement::Write(unsigned short const & uValue) {
    sText = std::to_wstring(uValue);
}

void TOptionElement::Write(int const & iValue) {
    sText = std::to_wstring(iValue);
}

void TOptionElement::Write(unsigned int const & uValue) {
    sText = std::to_wstring(static_cast<int>(uValue));
}

void TOptionElement::Write(long const & lValue) {
    sText = std::to_wstring(lValue);
}

void TOptionElement::Write(unsigned long const & ulValue) {
    sText = std::to_wstring(ulValue);
}

void TOptionElement::Write(double const & dValue) {
    sText = std::to_wstring(dValue);
}

TOptionElement const & TOptionElement::operator>>(std::wstring & sValue) const {
    Read(sValue);
    return *this;
}

TOptionElement const & TOptionElement::operator>>(unsigned short & uValue) const {
    Read(uValue);
    return *this;
}

TOptionElement const & TOptionElement::operator>>(unsigned int & uValue) const {
    Read(uValue);
    return *this;
}

TOptionElement const & TOptionElement::operator>>(unsigned long & ulValue) const {
    Read(ulValue);
    return *this;
}

TOptionElement & TOptionElement::operator<<(std::wstring const & sValue) {
    Write(sValue);
    return *this;
}

TOptionElement & TOptionElement::operator<<(unsigned short uValue) {
    Write(uValue);
    return *this;
}

TOptionElement & TOptionElement::operator<<(unsigned int uValue) {
    Write(static_cast<unsigned long>(uValue));
    return *this;
}

TOptionElement & TOptionElement::operator<<(unsigned long ulValue) {
    Write(ulValue);
    return *this;
}
