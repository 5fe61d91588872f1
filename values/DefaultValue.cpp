#include "ZkTools/DefaultValue.h"

#include "ZkBase/Messages.h"
#include "ZkBase/TestMode.h"
#include "ZkTools/DateTime.h"
#include "ZkTools/MessageIds.h"
#include "ZkTools/Strings.h"
#include "frame/Library.h"

#include <algorithm>
#include <array>
#include <cwchar>
#include <stdexcept>

namespace {

struct TFunction {
    EDefaultValueFunction eFunction;
    wchar_t const * pzKey;
    unsigned int uNameId;
};

/// In the order in which the functions are offered.
constexpr std::array tFunctions{
    TFunction{edvfUserText, L"user_text", IDS_DEFAULT_USER_TEXT},
    TFunction{edvfShortDate, L"short_date", IDS_DEFAULT_SHORT_DATE},
    TFunction{edvfIsoDate, L"iso_date", IDS_DEFAULT_ISO_DATE},
    TFunction{edvfIsoDateTime, L"iso_date_time", IDS_DEFAULT_ISO_DATE_TIME},
    TFunction{edvfTime, L"time", IDS_DEFAULT_TIME},
    TFunction{edvfUuid, L"uuid", IDS_DEFAULT_UUID},
};

/// Now, by the local clock. The shift is today's for every day: it is the one of the clock on the wall.
TZkDateTime tGetNow() {
    if (GTest::fIsTest()) return TZkDateTime(GTest::sGetCurrentDateTime());
    FILETIME tUtc{};
    FILETIME tLocal{};
    GetSystemTimeAsFileTime(&tUtc);
    FileTimeToLocalFileTime(&tUtc, &tLocal);
    return tLocal;
}

std::wstring sGetNow(EDateTime eParts, EDateFormat eDateFormat, ETimeFormat eTimeFormat) {
    return tGetNow().sGetViewString(eParts, eDateFormat, nullptr, eTimeFormat, nullptr);
}

} // namespace

TDefaultFunctionValue::TDefaultFunctionValue(EDefaultValueFunction eFunction_, std::wstring const & sUserText_)
    : eFunction(eFunction_), sUserText(sUserText_) {}

bool TDefaultFunctionValue::fIsEmpty() const noexcept {
    return eFunction == edvfUserText && sUserText.empty();
}

std::wstring TDefaultFunctionValue::sGetGenerateValue() const {
    switch (eFunction) {
    case edvfUserText:
        return sUserText;
    case edvfShortDate:
        return GTest::fIsTest() ? GTest::sGetCurrentDate() : sGetNow(edtDate, edfShort, etfDefault);
    case edvfIsoDate:
        return sGetNow(edtDate, edfIso, etfNoSeconds);
    case edvfTime:
        return GTest::fIsTest() ? GTest::sGetCurrentTime() : sGetNow(edtTime, edfShort, etfDefault);
    case edvfIsoDateTime:
        return sGetNow(edtDateTime, edfIso, etfIso);
    case edvfUuid:
        return GTest::fIsTest() ? GTest::sGetUUID(GTest::euuidFirst) : sGetUuid();
    }
    throw std::logic_error("eDefault has invalid value");
}

std::wstring TDefaultFunctionValue::sGetViewValue() const {
    if (eFunction == edvfUserText) return sUserText;
    auto const pName = std::ranges::find(GetNames(), eFunction, &TName::eFunction);
    return pName != GetNames().end() ? pName->sName : std::wstring();
}

std::wstring TDefaultFunctionValue::sToString(EDefaultValueFunction eFunction) {
    auto const pFunction = std::ranges::find(tFunctions, eFunction, &TFunction::eFunction);
    if (pFunction == tFunctions.end()) throw std::invalid_argument("eFun");
    return pFunction->pzKey;
}

EDefaultValueFunction TDefaultFunctionValue::eFromString(std::wstring const & sKey) {
    if (sKey.empty()) return edvfUserText;
    auto const pFunction = std::ranges::find_if(
        tFunctions, [&](TFunction const & tFunction) { return _wcsicmp(sKey.c_str(), tFunction.pzKey) == 0; });
    if (pFunction == tFunctions.end()) throw std::invalid_argument("sFun");
    return pFunction->eFunction;
}

std::vector<TDefaultFunctionValue::TName> const & TDefaultFunctionValue::GetNames() {
    static std::vector<TName> const tNames = [] {
        std::vector<TName> tAll;
        for (TFunction const & tFunction : tFunctions)
            tAll.push_back(
                {string_functions::sLoadString(hGetMessageModule(), tFunction.uNameId), tFunction.eFunction});
        return tAll;
    }();
    return tNames;
}
