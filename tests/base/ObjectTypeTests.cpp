#include "ZkBase/ObjectType.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

namespace {

struct TRow {
    EObjectType eType;
    wchar_t const * pzText;
};

// These texts stand in stored files.
constexpr std::array<TRow, 10> atRows{{
    {eotDocument, L"document"},
    {eotFolder, L"folder"},
    {eotSchema, L"schema"},
    {eotStylesheet, L"stylesheet"},
    {eotQuery, L"query"},
    {eotForm, L"form"},
    {eotImage, L"image"},
    {eotStyle, L"style"},
    {eotUser, L"user"},
    {eotProject, L"project"},
}};

} // namespace

TEST(ObjectType, HasATextForEachKind) {
    for (std::size_t i = 0; i < atRows.size(); ++i) {
        EXPECT_EQ(atRows[i].eType, static_cast<int>(i));
        EXPECT_EQ(ObjectType::to_string(atRows[i].eType), atRows[i].pzText);
        EXPECT_EQ(ObjectType::to_enum(atRows[i].pzText), atRows[i].eType);
    }
}

TEST(ObjectType, HasNoTextForAnythingElse) {
    for (int i : {-1, -2, 10, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
        EXPECT_EQ(ObjectType::to_string(static_cast<EObjectType>(i)), L"");
}

TEST(ObjectType, IsNoneForAnUnknownText) {
    for (wchar_t const * pzText : {L"", L"Document", L"document ", L"documents", L"style sheet", L"0"})
        EXPECT_EQ(ObjectType::to_enum(pzText), eotNone);
    EXPECT_EQ(eotNone, -1);
}

TEST(ObjectType, TakesAViewWithoutTerminator) {
    EXPECT_EQ(ObjectType::to_enum(std::wstring_view(L"stylesheet").substr(0, 5)), eotStyle);
}
