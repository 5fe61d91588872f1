/// Default values of fields: a fixed text, or a function that is evaluated when the value is made, such as today's date
/// or a new UUID.
#pragma once

#include "ZkTools/Export.h"

#include <string>
#include <vector>

/// What a field gets by default. The keys stand in stored files (`TDefaultFunctionValue::sToString`).
enum EDefaultValueFunction : int {
    edvfUserText = 0,    ///< the text that the user typed; key "user_text"
    edvfShortDate = 1,   ///< today in the user's short date; "short_date"
    edvfIsoDate = 2,     ///< today as "2024-01-15"; "iso_date"
    edvfTime = 3,        ///< now in the user's time format; "time"
    edvfIsoDateTime = 4, ///< now as "2024-01-15T08:30:00"; "iso_date_time"
    edvfUuid = 5,        ///< a new UUID; "uuid"
};

/// How a field gets its default value.
class ZKTOOLS_API TDefaultFunctionValue {
public:
    /// A function and what the user reads for it.
    struct TName {
        std::wstring sName;
        EDefaultValueFunction eFunction;
    };

    /// An empty text.
    TDefaultFunctionValue() = default;
    /// \param sUserText the text of `edvfUserText`; for other functions it is only kept and compared
    TDefaultFunctionValue(EDefaultValueFunction eFunction, std::wstring const & sUserText);

    /// True for an empty text. A function is never empty.
    [[nodiscard]] bool fIsEmpty() const noexcept;
    /// The same function and the same text, in every character; the text counts for every function.
    [[nodiscard]] bool operator==(TDefaultFunctionValue const & tOther) const noexcept = default;

    /// Makes a value: the text as it is, or what the function gives now, by the local clock. In the test mode of the
    /// base library the moment and the UUID are the fixed ones of `GTest`.
    /// \throws std::logic_error "eDefault has invalid value" for a function outside the enumeration
    [[nodiscard]] std::wstring sGetGenerateValue() const;
    /// What the user reads: the text, or the name of the function in the language of the messages; empty for a function
    /// outside the enumeration.
    [[nodiscard]] std::wstring sGetViewValue() const;

    /// The key of a function.
    /// \throws std::invalid_argument "eFun" outside the enumeration
    [[nodiscard]] static std::wstring sToString(EDefaultValueFunction eFunction);
    /// The function of a key, which is taken without regard to case and up to a null character; the empty one is
    /// `edvfUserText`.
    /// \throws std::invalid_argument "sFun" for any other text
    [[nodiscard]] static EDefaultValueFunction eFromString(std::wstring const & sKey);
    /// All functions with their names, in the order in which they are offered: date and time in ISO form stand behind
    /// the ISO date, before the time. Lives as long as the library is loaded.
    [[nodiscard]] static std::vector<TName> const & GetNames();

private:
    EDefaultValueFunction eFunction = edvfUserText;
    std::wstring sUserText;
};
