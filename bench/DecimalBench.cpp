// Decimal values beside the regular expression that a user would check them with, and their time by their length.
#include "ZkTools/DecimalValue.h"
#include "bench/Ratio.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <regex>
#include <string>

namespace {

/// Up to seven digits on either side are kept without a block of memory.
std::array<std::wstring, 12> const sTexts{L"0",     L"1",     L"-17",    L"+3.5",    L"255",    L"1024.00",
                                          L"0.001", L"65535", L"-32768", L"3.14159", L"007.50", L"1000000"};

/// The same check and the same canonical parts.
void MakeByExpression(std::wregex const & tPattern, std::wstring const & sText) {
    std::wsmatch tMatch;
    if (!std::regex_match(sText, tMatch, tPattern)) throw TDecimalValue::TXInvalid(sText, L"decimal");
    std::wstring sInteger = tMatch.str(2);
    if (!sInteger.empty()) sInteger.erase(0, std::min(sInteger.find_first_not_of(L'0'), sInteger.size() - 1));
    std::wstring sFraction = tMatch.length(3) != 0 ? tMatch.str(3) : tMatch.str(4);
    sFraction.erase(sFraction.find_last_not_of(L'0') + 1);
    TDecimalValue const tValue = TDecimalValue::make(tMatch.str(1) == L"-", sInteger, sFraction);
    zk_bench::Keep(&tValue);
}

void Make(std::wstring const & sText) {
    TDecimalValue const tValue = TDecimalValue::make_decimal(sText);
    zk_bench::Keep(&tValue);
}

void Repeat(int iTimes, auto const & tWork) {
    for (int i = 0; i < iTimes; ++i)
        tWork();
}

} // namespace

int main(int iCount, char ** ppArguments) {
    std::wregex const tPattern(LR"((\+|-)?(?:([0-9]+)(?:\.([0-9]*))?|\.([0-9])+))");
    auto const AddDigits = [&](char const * pzName, double dBound, int iDigits, int iTimes) {
        std::wstring const sText(static_cast<std::size_t>(iDigits), L'7');
        zk_bench::Add(
            pzName, zk_bench::EBound::eTimesFaster, dBound, [=] { Repeat(iTimes, [&] { Make(sText); }); },
            [=, &tPattern] { Repeat(iTimes, [&] { MakeByExpression(tPattern, sText); }); });
    };
    auto const ForAll = [](auto const & tWork) {
        Repeat(100, [&] {
            for (std::wstring const & sText : sTexts)
                tWork(sText);
        });
    };
    zk_bench::Add(
        "make_decimal, usual numbers", zk_bench::EBound::eTimesFaster, 20, [&] { ForAll(Make); },
        [&] { ForAll([&](std::wstring const & sText) { MakeByExpression(tPattern, sText); }); });
    AddDigits("make_decimal, 16 digits", 5, 16, 1000); // the block of memory takes most of the time
    AddDigits("make_decimal, 100 digits", 20, 100, 100);
    AddDigits("make_decimal, 1000 digits", 20, 1000, 10); // many more end the expression's matcher

    // Ten where the time grows with the square of the length; above one because long blocks come fresh from the
    // system.
    std::wstring const sShort(100'000, L'7');
    std::wstring const sLong(1'000'000, L'7');
    zk_bench::Add(
        "make_decimal, 1000000 digits beside ten times 100000", zk_bench::EBound::eTimesTheTime, 4,
        [&] { Make(sLong); }, [&] { Repeat(10, [&] { Make(sShort); }); });
    return zk_bench::iRun(iCount, ppArguments);
}
