// Calls of automation servers that every Windows has, and Wine too.
#include "ZkTools/Variant.h"

#include "ZkTools/ComError.h"
#include "tests/automation/Fakes.h"
#include "tests/support/TempDirectory.h"

#include <gtest/gtest.h>

#include <objbase.h>

#include <activscp.h>

#include <stdexcept>
#include <string>

using namespace zk_test;

namespace {

class Server : public testing::Test {
protected:
    void SetUp() override { ASSERT_GE(CoInitialize(nullptr), 0); }
    void TearDown() override { CoUninitialize(); }

    /// A new object.
    static TVariant tCreate(wchar_t const * pzProgId) {
        CLSID tClass{};
        if (CLSIDFromProgID(pzProgId, &tClass) < 0) throw std::runtime_error("no such class");
        IDispatch * pObject = nullptr;
        HRESULT const hr =
            CoCreateInstance(tClass, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, reinterpret_cast<void **>(&pObject));
        if (hr < 0) throw TComError(hr, nullptr, false);
        return TVariant(pObject, false);
    }

    static std::string sFailureOf(auto const & tWork) {
        try {
            tWork();
        } catch (std::runtime_error const & tError) {
            return tError.what();
        }
        return "nothing";
    }
};

} // namespace

TEST_F(Server, DictionaryKeepsWhatItIsGiven) {
    TVariant const tDictionary = tCreate(L"Scripting.Dictionary");
    TVariant tKey(L"wheel");
    TVariant tValue(4L);
    tDictionary.Call(L"Add", tKey, tValue);
    TVariant tCount;
    tDictionary.GetProperty(L"Count", tCount);
    EXPECT_EQ(static_cast<long>(tCount), 1);

    TVariant tItem;
    tDictionary.GetProperty(L"Item", tItem, tKey);
    EXPECT_TRUE(tItem == TVariant(4L));
    tItem.Clear();
    tDictionary.GetPropertyDefault(tItem, tKey);
    EXPECT_TRUE(tItem == TVariant(4L));

    // A property with an argument: the value comes last.
    TVariant tNew(L"four");
    tDictionary.PutProperty(L"Item", tKey, tNew);
    tItem.Clear();
    tDictionary.GetProperty(L"", tItem, tKey);
    EXPECT_EQ(static_cast<std::wstring>(tItem), L"four");
    TVariant tThird(3.5);
    tDictionary.PutPropertyDefault(tKey, tThird);
    tItem.Clear();
    tDictionary.GetPropertyDefault(tItem, tKey);
    EXPECT_TRUE(tItem == tThird);

    TVariant tExists;
    tDictionary.CallR(L"Exists", tExists, tKey);
    EXPECT_TRUE(static_cast<bool>(tExists));
    tDictionary.Call(L"RemoveAll");
    tExists.Clear();
    tDictionary.CallR(L"Exists", tExists, tKey);
    EXPECT_FALSE(static_cast<bool>(tExists));
}

TEST_F(Server, DictionaryKeepsAReferenceToAnObject) {
    TVariant const tDictionary = tCreate(L"Scripting.Dictionary");
    TVariant tOther = tCreate(L"Scripting.Dictionary");
    TVariant tKey(L"other");
    tDictionary.Call(L"Add", tKey, tOther);
    TVariant tItem;
    tDictionary.GetProperty(L"Item", tItem, tKey);
    EXPECT_EQ(tItem.vt, VT_DISPATCH);
    EXPECT_TRUE(tItem == tOther);
    TVariant tCount;
    tItem.GetProperty(L"Count", tCount); // a call of what a call gave
    EXPECT_EQ(static_cast<long>(tCount), 0);
}

TEST_F(Server, DictionaryReportsItsErrors) {
    TVariant const tDictionary = tCreate(L"Scripting.Dictionary");
    TVariant tKey(L"wheel");
    EXPECT_EQ(sFailureOf([&] { tDictionary.Call(L"Turn", tKey); }),
              "Property or method \"Turn\" not found in object \"IDictionary\"");
    std::string const sFailure = sFailureOf([&] { tDictionary.Call(L"Add", tKey); });
    EXPECT_NE(sFailure.find("\r\n\r\n"
                            "Object type: IDictionary\r\n"
                            "Tried to invoke: method\r\n"
                            "Member: \"Add\"\r\n"
                            "Number of parameters: 1"),
              std::string::npos)
        << sFailure;
}

TEST_F(Server, FileSystemTakesOptionalArguments) {
    TTempDirectory const tDirectory;
    TVariant const tFiles = tCreate(L"Scripting.FileSystemObject");
    TVariant tPath(tDirectory.sGetPath(L"file.txt"));
    TVariant tStream;
    tFiles.CallR(L"CreateTextFile", tStream, tPath); // two more may stand behind
    TVariant tText(L"Gr\u00FC\u00DF");
    tStream.Call(L"Write", tText);
    tStream.Call(L"Close");
    tStream.Clear();
    EXPECT_EQ(sReadFileBytes(tDirectory.sGetPath(L"file.txt")), "Gr\xFC\xDF");

    TVariant tOverwrite(true);
    TVariant tUnicode(true);
    tFiles.CallR(L"CreateTextFile", tStream, tPath, tOverwrite, tUnicode);
    tStream.Call(L"Write", tText);
    tStream.Call(L"Close");
    EXPECT_EQ(sReadFileBytes(tDirectory.sGetPath(L"file.txt")).size(), 10u); // with a mark

    TVariant tName;
    tFiles.CallR(L"GetFileName", tName, tPath);
    EXPECT_EQ(static_cast<std::wstring>(tName), L"file.txt");
    TVariant tThere;
    tFiles.CallR(L"FileExists", tThere, tPath);
    EXPECT_TRUE(tThere == TVariant(true));
}

TEST_F(Server, FileSystemReportsAMissingFile) {
    TTempDirectory const tDirectory;
    TVariant const tFiles = tCreate(L"Scripting.FileSystemObject");
    TVariant tPath(tDirectory.sGetPath(L"missing"));
    TVariant tFile;
    std::string const sFailure = sFailureOf([&] { tFiles.CallR(L"GetFile", tFile, tPath); });
    // Windows names source and description; Wine's server has none.
    EXPECT_TRUE(sFailure.starts_with("The application needs to raise an exception.\r\nError#: ")) << sFailure;
    EXPECT_TRUE(sFailure.ends_with("\r\nObject type: IFileSystem3\r\n"
                                   "Tried to invoke: method\r\n"
                                   "Member: \"GetFile\"\r\n"
                                   "Number of parameters: 1"))
        << sFailure;
}

TEST_F(Server, ShellExpandsVariables) {
    TVariant const tShell = tCreate(L"WScript.Shell");
    TVariant tText(L"-%ComSpec%-");
    TVariant tResult;
    tShell.CallR(L"ExpandEnvironmentStrings", tResult, tText);
    EXPECT_EQ(static_cast<std::wstring>(tResult).find(L'%'), std::wstring::npos);
    EXPECT_GT(static_cast<std::wstring>(tResult).size(), 2u);
}

TEST_F(Server, DocumentIsReadAndChanged) {
    TVariant const tDocument = tCreate(L"MSXML2.DOMDocument");
    TVariant tXml(L"<wheel size='4'><spoke/><spoke/></wheel>");
    TVariant tLoaded;
    tDocument.CallR(L"loadXML", tLoaded, tXml);
    ASSERT_TRUE(static_cast<bool>(tLoaded));

    TVariant tRoot;
    tDocument.GetProperty(L"documentElement", tRoot);
    TVariant tName(L"size");
    TVariant tSize;
    tRoot.CallR(L"getAttribute", tSize, tName);
    EXPECT_EQ(static_cast<std::wstring>(tSize), L"4");
    TVariant tNew(5L);
    tRoot.Call(L"setAttribute", tName, tNew);
    TVariant tText;
    tRoot.GetProperty(L"xml", tText);
    EXPECT_TRUE(static_cast<std::wstring>(tText).starts_with(L"<wheel size=\"5\">")); // Wine indents the rest

    TVariant tSpokes;
    TVariant tPath(L"spoke");
    tRoot.CallR(L"selectNodes", tSpokes, tPath);
    TVariant tLength;
    tSpokes.GetProperty(L"length", tLength);
    EXPECT_EQ(static_cast<long>(tLength), 2);
    TVariant tSecond;
    TVariant tIndex(1L);
    tSpokes.GetPropertyDefault(tSecond, tIndex);
    TVariant tNodeName;
    tSecond.GetProperty(L"nodeName", tNodeName);
    EXPECT_EQ(static_cast<std::wstring>(tNodeName), L"spoke");
}

TEST_F(Server, DocumentReportsAPropertyThatCannotBeWritten) {
    TVariant const tDocument = tCreate(L"MSXML2.DOMDocument");
    TVariant tValue(L"x");
    std::string const sFailure = sFailureOf([&] { tDocument.PutProperty(L"nodeName", tValue); });
    EXPECT_NE(sFailure.find("\r\nTried to invoke: put property\r\nMember: \"nodeName\"\r\nNumber of parameters: 1"),
              std::string::npos)
        << sFailure;
    EXPECT_TRUE(sFailure.starts_with("The requested member does not exist, or the call tried to set the value of a "
                                     "read-only property.\r\n\r\nObject type: "))
        << sFailure;
}

namespace {

/// Where a script engine tells what happens.
class TSite final : public TCounted<IActiveScriptSite> {
public:
    HRESULT STDMETHODCALLTYPE GetLCID(LCID *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetItemInfo(LPCOLESTR, DWORD, IUnknown **, ITypeInfo **) override {
        return TYPE_E_ELEMENTNOTFOUND;
    }
    HRESULT STDMETHODCALLTYPE GetDocVersionString(BSTR *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE OnScriptTerminate(VARIANT const *, EXCEPINFO const *) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnStateChange(SCRIPTSTATE) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnScriptError(IActiveScriptError *) override {
        ++iErrors;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE OnEnterScript() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnLeaveScript() override { return S_OK; }

    int iErrors = 0;
};

/// A script that runs. Its functions and variables are the members of an object.
class TScript {
public:
    TScript(wchar_t const * pzEngine, wchar_t const * pzText) {
        CLSID tClass{};
        Check(CLSIDFromProgID(pzEngine, &tClass));
        Check(CoCreateInstance(tClass, nullptr, CLSCTX_INPROC_SERVER, IID_IActiveScript,
                               reinterpret_cast<void **>(&pEngine)));
        Check(pEngine->SetScriptSite(&tSite));
        IActiveScriptParse * pParse = nullptr;
        Check(pEngine->QueryInterface(__uuidof(IActiveScriptParse), reinterpret_cast<void **>(&pParse)));
        TVariant const tOwner(static_cast<IUnknown *>(pParse), false);
        Check(pParse->InitNew());
        Check(pParse->ParseScriptText(pzText, nullptr, nullptr, nullptr, 0, 0, 0, nullptr, nullptr));
        Check(pEngine->SetScriptState(SCRIPTSTATE_STARTED));
        IDispatch * pObject = nullptr;
        Check(pEngine->GetScriptDispatch(nullptr, &pObject));
        tagVARIANT tPlain{};
        tPlain.vt = VT_DISPATCH;
        tPlain.pdispVal = pObject;
        tMembers.Attach(tPlain);
    }
    ~TScript() {
        tMembers.Clear();
        pEngine->Close();
        pEngine->Release();
    }
    TScript(TScript const &) = delete;
    TScript & operator=(TScript const &) = delete;

    TSite tSite;
    TVariant tMembers;

private:
    static void Check(HRESULT hr) {
        if (hr < 0) throw TComError(hr, nullptr, false);
    }

    IActiveScript * pEngine = nullptr;
};

} // namespace

TEST_F(Server, BasicScriptIsCalled) {
    TScript const tScript(L"VBScript", L"Dim Size\n"
                                       L"Function Join(a, b, c)\n"
                                       L"  Join = a & \"-\" & b & \"-\" & c\n"
                                       L"End Function\n"
                                       L"Sub Grow(n)\n"
                                       L"  Size = Size + n\n"
                                       L"End Sub\n");
    TVariant tFirst(L"one");
    TVariant tSecond(2L);
    TVariant tThird(true);
    TVariant tResult;
    tScript.tMembers.CallR(L"Join", tResult, tFirst, tSecond, tThird);
    EXPECT_TRUE(static_cast<std::wstring>(tResult).starts_with(L"one-2-")) << testing::PrintToString(tResult.bstrVal);

    tScript.tMembers.PutProperty(L"Size", tSecond);
    tScript.tMembers.Call(L"Grow", tSecond);
    TVariant tSize;
    tScript.tMembers.GetProperty(L"size", tSize); // names have no case
    EXPECT_EQ(static_cast<long>(tSize), 4);
}

TEST_F(Server, BasicScriptRaisesAnException) {
    TScript const tScript(L"VBScript", L"Sub Turn(n)\n"
                                       L"  Err.Raise 1004, \"Wheel server\", \"There is no spoke \" & n\n"
                                       L"End Sub\n");
    TVariant tNumber(9L);
    std::string const sFailure = sFailureOf([&] { tScript.tMembers.Call(L"Turn", tNumber); });
    // The engine tells its site all about it, and the caller that it did.
    EXPECT_TRUE(sFailure.ends_with("\r\n\r\nObject type: VBScriptTypeInfo\r\n"
                                   "Tried to invoke: method\r\n"
                                   "Member: \"Turn\"\r\n"
                                   "Number of parameters: 1"))
        << sFailure;
    EXPECT_EQ(tScript.tSite.iErrors, 1);
}

TEST_F(Server, JavaScriptIsCalled) {
    TScript const tScript(L"JScript", L"var size = 2;\n"
                                      L"function count() { return arguments.length; }\n"
                                      L"function last() { return arguments[arguments.length - 1]; }\n"
                                      L"function wheel() { this.spokes = 4; }\n"
                                      L"function make() { return new wheel(); }\n"
                                      L"function fail() { throw new Error(1004, 'There is no spoke'); }\n");
    TVariant t(7L);
    TVariant tLast(L"last");
    TVariant tResult;
    // The most arguments that there can be.
    tScript.tMembers.CallR(L"count", tResult, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t);
    EXPECT_EQ(static_cast<long>(tResult), 20);
    tScript.tMembers.CallR(L"last", tResult, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, tLast);
    EXPECT_EQ(static_cast<std::wstring>(tResult), L"last");

    TVariant tWheel;
    tScript.tMembers.CallR(L"make", tWheel);
    TVariant tSpokes;
    tWheel.GetProperty(L"spokes", tSpokes);
    EXPECT_EQ(static_cast<long>(tSpokes), 4);
    TVariant tNew(5L);
    tWheel.PutProperty(L"spokes", tNew);
    tWheel.GetProperty(L"spokes", tSpokes);
    EXPECT_EQ(static_cast<long>(tSpokes), 5);

    std::string const sFailure = sFailureOf([&] { tScript.tMembers.Call(L"fail"); });
    EXPECT_TRUE(sFailure.ends_with("Member: \"fail\"\r\nNumber of parameters: 0")) << sFailure;
    EXPECT_EQ(tScript.tSite.iErrors, 1);
    EXPECT_EQ(sFailureOf([&] { tScript.tMembers.Call(L"missing"); }),
              "Property or method \"missing\" not found in object \"JScriptTypeInfo\"");
}
