// zk com: calls an automation server by name.
#include "tools/zk/Commands.h"
#include "tools/zk/Console.h"

#include "ZkTools/ComError.h"
#include "ZkTools/Variant.h"

#include <objbase.h>

#include <array>
#include <cstddef>
#include <span>
#include <stdexcept>
#include <utility>
#include <vector>

namespace {

constexpr std::size_t uMostArguments = 20;

/// COM on this thread.
class TCom {
public:
    TCom() { Check(CoInitialize(nullptr)); }
    ~TCom() { CoUninitialize(); }
    TCom(TCom const &) = delete;
    TCom & operator=(TCom const &) = delete;

    /// A new object of that class.
    [[nodiscard]] static TVariant tCreate(std::wstring const & sProgId) {
        CLSID tClass{};
        Check(CLSIDFromProgID(sProgId.c_str(), &tClass));
        IDispatch * pObject = nullptr;
        Check(CoCreateInstance(tClass, nullptr, CLSCTX_SERVER, IID_IDispatch, reinterpret_cast<void **>(&pObject)));
        return TVariant(pObject, false);
    }

private:
    static void Check(HRESULT hr) {
        if (hr < 0) throw TComError(hr, nullptr, false);
    }
};

/// What is asked of an object.
struct TQuestion {
    std::wstring sMember;
    bool fProperty;
    std::vector<TVariant> tArguments;
};

/// By the overload for so many arguments.
template <std::size_t... u>
void Ask(TVariant const & tObject, TQuestion & tQuestion, TVariant & tAnswer, std::index_sequence<u...>) {
    if constexpr (sizeof...(u) == 10) {
        throw TWrongUsage{L"There is no call with ten arguments and a result."};
    } else if (tQuestion.fProperty) {
        tObject.GetProperty(tQuestion.sMember, tAnswer, tQuestion.tArguments[u]...);
    } else {
        tObject.CallR(tQuestion.sMember, tAnswer, tQuestion.tArguments[u]...);
    }
}

template <std::size_t... uCount>
void AskByCount(TVariant const & tObject, TQuestion & tQuestion, TVariant & tAnswer, std::index_sequence<uCount...>) {
    ((tQuestion.tArguments.size() == uCount ? Ask(tObject, tQuestion, tAnswer, std::make_index_sequence<uCount>())
                                            : void()),
     ...);
}

std::wstring sDescribe(TVariant const & tAnswer) {
    switch (tAnswer.vt) {
    case VT_EMPTY:
        return L"";
    case VT_NULL:
        return L"null";
    case VT_BOOL:
        return tAnswer ? L"true" : L"false";
    case VT_DISPATCH:
    case VT_UNKNOWN:
        return L"object";
    default:
        return (tAnswer.vt & VT_ARRAY) != 0 ? L"array" : std::wstring(tAnswer);
    }
}

/// The texts of failed calls are UTF-8.
std::wstring sWidenUtf8(std::string_view sText) {
    auto const iSize = static_cast<int>(sText.size());
    std::wstring sResult(sText.size(), L'\0');
    sResult.resize(
        static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, sText.data(), iSize, sResult.data(), iSize)));
    return sResult;
}

EExit eCom(TArguments const & tArguments) {
    TQuestion tQuestion{tArguments.sGet(1), tArguments.fHas(L"--get"), {}};
    for (std::size_t u = 2; u < tArguments.uGetCount(); ++u)
        tQuestion.tArguments.emplace_back(tArguments.sGet(u));
    std::wstring sAnswer;
    try {
        TCom const tCom;
        TVariant const tObject = TCom::tCreate(tArguments.sGet(0));
        TVariant tAnswer;
        AskByCount(tObject, tQuestion, tAnswer, std::make_index_sequence<uMostArguments + 1>());
        sAnswer = sDescribe(tAnswer);
    } catch (std::runtime_error const & tError) {
        PrintError(sWidenUtf8(tError.what()));
        return eFailed;
    }
    if (!sAnswer.empty()) PrintLine(sAnswer);
    return eDone;
}

constexpr std::array<TSwitch, 1> tSwitches{{{L"--get", false}}};

} // namespace

TCommand const tComCommand{
    L"com",
    L"[--get] PROGID MEMBER [ARGUMENT...]",
    L"Calls a method or reads a property of an automation server.",
    L"Makes an object of the class PROGID, calls its method MEMBER and prints the result:\n"
    L"the text of a value, true or false, null, or the words object and array. Nothing is\n"
    L"printed for a method without a result. An empty MEMBER is the default one.\n"
    L"\n"
    L"  zk com Scripting.FileSystemObject FolderExists C:\\windows\n"
    L"  zk com --get Scripting.Dictionary Count\n"
    L"\n"
    L"  --get  MEMBER is a property\n"
    L"\n"
    L"Every ARGUMENT is handed over as text, which servers turn into what they need. There\n"
    L"can be up to 20 of them, but not 10.\n",
    2,
    2 + uMostArguments,
    tSwitches,
    eCom,
};
