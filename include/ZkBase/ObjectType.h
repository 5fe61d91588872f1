/// The kinds of object of the tool.
#pragma once

#include "ZkBase/Export.h"

#include <string>
#include <string_view>

/// The kinds of object. The texts stand in stored files (`ObjectType::to_string`), the values do not.
enum EObjectType : int {
    eotNone = -1, ///< no object type
    eotDocument = 0,
    eotFolder = 1,
    eotSchema = 2,
    eotStylesheet = 3,
    eotQuery = 4,
    eotForm = 5,
    eotImage = 6,
    eotStyle = 7,
    eotUser = 8,
    eotProject = 9,
};

namespace ObjectType {

/// The text of a kind, as stored; empty for `eotNone` and for any value outside the enumeration.
[[nodiscard]] ZKBASE_API std::wstring to_string(EObjectType eType);

/// The kind of a text, compared exactly; `eotNone` for an unknown one.
[[nodiscard]] ZKBASE_API EObjectType to_enum(std::wstring_view const & sType);

} // namespace ObjectType
