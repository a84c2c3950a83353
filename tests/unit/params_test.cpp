// /params: user variables from a flat JSON object, kept whole in the
// registry whatever the legacy code page can show.
#include <gtest/gtest.h>

#include <windows.h>

#include <string>

#include "run/params.h"
#include "test_support.h"

namespace {

std::wstring WideVariable(const wchar_t* name) {
    wchar_t value[256] = L"";
    DWORD size = sizeof value;
    if (RegGetValueW(HKEY_CURRENT_USER, L"SOFTWARE\\ZantoRunner\\UserVariables", name, RRF_RT_REG_SZ | RRF_RT_REG_EXPAND_SZ | RRF_NOEXPAND,
                     nullptr, value, &size) != ERROR_SUCCESS)
        return L"<none>";
    return value;
}

std::string WriteParams(const char* text) {
    const std::string path = TempFolder() + "\\p.json";
    HANDLE f = CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    DWORD wrote = 0;
    WriteFile(f, text, (DWORD)strlen(text), &wrote, nullptr);
    CloseHandle(f);
    return path;
}

}  // namespace

TEST(Params, UnicodeTextsNumbersAndBooleansBecomeVariables) {
    ResetTestState();
    const std::string path = WriteParams("{\"omega\": \"\xce\xa9 \\u20ac \xf0\x9f\x98\x80\", \"n\": 12.5, \"yes\": true, "
                                         "\"no\": false, \"%pct\": \"100%\", \"gone\": null}");
    std::string error;
    ASSERT_TRUE(SetVariablesFromJsonFile(path.c_str(), error)) << error;
    EXPECT_EQ(WideVariable(L"omega"), L"\x03a9 \x20ac \xd83d\xde00");
    EXPECT_EQ(WideVariable(L"n"), L"12.5");
    EXPECT_EQ(WideVariable(L"yes"), L"1");
    EXPECT_EQ(WideVariable(L"no"), L"0");
    EXPECT_EQ(WideVariable(L"pct"), L"100%");  // one leading "%" of a name goes, as on the command line
    EXPECT_EQ(WideVariable(L"gone"), L"<none>");
}

TEST(Params, AFlawIsNamedWithTheFileLineAndColumn) {
    ResetTestState();
    std::string error;
    const std::string path = WriteParams("{\n  \"a\": [1]\n}");
    EXPECT_FALSE(SetVariablesFromJsonFile(path.c_str(), error));
    EXPECT_EQ(error, "The parameters file \"" + path + "\" is not a flat JSON object: line 2, column 8: the value of "
                     "\"a\" is nested (an object or a list); only texts, numbers, true, false and null are taken");
    EXPECT_FALSE(SetVariablesFromJsonFile((path + ".missing").c_str(), error));
    EXPECT_EQ(error, "The parameters file \"" + path + ".missing\" does not exist");
    EXPECT_EQ(WideVariable(L"a"), L"<none>");
}
