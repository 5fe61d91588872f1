#include "ZkBase/ObjectType.h"

#include <algorithm>
#include <array>

namespace {

/// The stored texts, in the order of the values from 0 on.
constexpr std::array<std::wstring_view, 10> asTexts{
    L"document", L"folder", L"schema", L"stylesheet", L"query", L"form", L"image", L"style", L"user", L"project",
};

} // namespace

namespace ObjectType {

std::wstring to_string(EObjectType eType) {
    auto const uIndex = static_cast<std::size_t>(eType);
    return uIndex < asTexts.size() ? std::wstring(asTexts[uIndex]) : std::wstring();
}

EObjectType to_enum(std::wstring_view const & sType) {
    auto const pFound = std::ranges::find(asTexts, sType);
    return pFound != asTexts.end() ? static_cast<EObjectType>(pFound - asTexts.begin()) : eotNone;
}

} // namespace ObjectType
