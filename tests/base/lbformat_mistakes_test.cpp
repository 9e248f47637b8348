#include <cstdint>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "base/lbexception.h"
#include "base/lbformat.h"

namespace
{

/// The text in parentheses in the exception's message, or "no exception".
template<typename... T>
std::wstring getMistake(std::wstring_view format, const T&... arguments)
{
    try
    {
        LbFormat(LbRuntimeFormat(format), arguments...);
    }
    catch (const LbException& exception)
    {
        const std::wstring& text = exception.GetMessageText();
        EXPECT_TRUE(text.ends_with(L"\"" + std::wstring(format) + L"\""));
        const std::size_t begin = text.find(L'(') + 1;
        return text.substr(begin, text.find(L')') - begin);
    }
    return L"no exception";
}

TEST(LbRuntimeFormat, FormatsLikeAConstantFormat)
{
    const std::wstring format = L"%s has %*d%%";
    EXPECT_EQ(LbFormat(LbRuntimeFormat(format), L"it", 4, 50), L"it has   50%");
}

TEST(LbRuntimeFormat, ReportsTheLocationOfAMistake)
{
    const std::uint32_t line = LbSourceLocation::Current().GetLine() + 4;
    try
    {
        const std::wstring format = L"50% fertig";
        LbFormat(LbRuntimeFormat(format));
        FAIL();
    }
    catch (const LbException& exception)
    {
        EXPECT_EQ(exception.GetMessageText(), L"lbformat_mistakes_test.cpp, Zeile " + std::to_wstring(line) +
                                                  L": Formattext mit Fehler (zu wenige Argumente): \"50% fertig\"");
        EXPECT_EQ(exception.GetSourceFile(), L"lbformat_mistakes_test");
        EXPECT_EQ(exception.GetLine(), line);
    }
}

TEST(LbRuntimeFormat, RefusesMissingArguments)
{
    EXPECT_EQ(getMistake(L"%d %d", 1), L"zu wenige Argumente");
    EXPECT_EQ(getMistake(L"%s"), L"zu wenige Argumente");
    EXPECT_EQ(getMistake(L"%*d", 1), L"zu wenige Argumente");
    EXPECT_EQ(getMistake(L"%*d"), L"zu wenige Argumente");
    EXPECT_EQ(getMistake(L"%.*f", 1), L"zu wenige Argumente");
}

TEST(LbRuntimeFormat, RefusesSurplusArguments)
{
    EXPECT_EQ(getMistake(L"%d", 1, 2), L"zu viele Argumente");
    EXPECT_EQ(getMistake(L"100%%", 1), L"zu viele Argumente");
    EXPECT_EQ(getMistake(L"", 1), L"zu viele Argumente");
}

TEST(LbRuntimeFormat, RefusesArgumentsOfTheWrongKind)
{
    const void* pointer = nullptr;
    EXPECT_EQ(getMistake(L"%s", 1), L"unpassendes Argument");
    EXPECT_EQ(getMistake(L"%s", "narrow"), L"schmaler Text verlangt %hs");
    EXPECT_EQ(getMistake(L"%hs", L"wide"), L"breiter Text verlangt %s");
    EXPECT_EQ(getMistake(L"%S", L"wide"), L"breiter Text verlangt %s");
    EXPECT_EQ(getMistake(L"%lS", "narrow"), L"schmaler Text verlangt %hs");
    EXPECT_EQ(getMistake(L"%s", L'c'), L"unpassendes Argument");
    EXPECT_EQ(getMistake(L"%s", pointer), L"unpassendes Argument");
    EXPECT_EQ(getMistake(L"%d", L"text"), L"unpassendes Argument");
    EXPECT_EQ(getMistake(L"%u", 1.0), L"unpassendes Argument");
    EXPECT_EQ(getMistake(L"%f", 1), L"unpassendes Argument");
    EXPECT_EQ(getMistake(L"%a", L"text"), L"unpassendes Argument");
    EXPECT_EQ(getMistake(L"%c", L"text"), L"unpassendes Argument");
    EXPECT_EQ(getMistake(L"%c", std::int64_t{65}), L"unpassendes Argument");
    EXPECT_EQ(getMistake(L"%x", pointer), L"unpassendes Argument");
    EXPECT_EQ(getMistake(L"%p", 1), L"unpassendes Argument");
    EXPECT_EQ(getMistake(L"%p", std::wstring()), L"unpassendes Argument");
}

TEST(LbRuntimeFormat, RefusesUnknownConversions)
{
    for (const wchar_t* format :
         {L"%y", L"%n", L"%I16d", L"%-08.3", L"%", L"%ll", L"%5%", L"%1$d", L"%D", L"%Z", L"%hhhd"})
    {
        EXPECT_EQ(getMistake(format, 1), L"unbekannte Umwandlung");
    }
}

TEST(LbRuntimeFormat, RefusesLengthModifiersThatDoNotFitTheConversion)
{
    EXPECT_EQ(getMistake(L"%zs", L"text"), L"unpassende Längenangabe");
    EXPECT_EQ(getMistake(L"%hhc", L'c'), L"unpassende Längenangabe");
    EXPECT_EQ(getMistake(L"%hf", 1.0), L"unpassende Längenangabe");
    EXPECT_EQ(getMistake(L"%wd", 1), L"unpassende Längenangabe");
    EXPECT_EQ(getMistake(L"%lp", nullptr), L"unpassende Längenangabe");
}

TEST(LbRuntimeFormat, RefusesWidthsAndPrecisionsLongerThanALine)
{
    EXPECT_EQ(getMistake(L"%1048576d", 1), L"unzulässige Breite");
    EXPECT_EQ(getMistake(L"%.1048576d", 1), L"unzulässige Breite");
    EXPECT_EQ(getMistake(L"%.1048576s", L"text"), L"unzulässige Breite");
    EXPECT_EQ(getMistake(L"%1048575.1048575d", 1), L"no exception");
}

TEST(LbRuntimeFormat, RefusesWidthsBeyondTheRangeOfInt)
{
    EXPECT_EQ(getMistake(L"%99999999999999999999999d", 1), L"unzulässige Breite");
    EXPECT_EQ(getMistake(L"%2147483648d", 1), L"unzulässige Breite");
    EXPECT_EQ(getMistake(L"%.99999999999f", 1.0), L"unzulässige Breite");
    EXPECT_EQ(getMistake(L"%99999999999.2f", 1.0), L"unzulässige Breite");
}

TEST(LbRuntimeFormat, RefusesWidthArgumentsOfWrongTypes)
{
    EXPECT_EQ(getMistake(L"%*d", L"5", 1), L"Breite ohne ganzzahliges Argument");
    EXPECT_EQ(getMistake(L"%*d", 5.0, 1), L"Breite ohne ganzzahliges Argument");
    EXPECT_EQ(getMistake(L"%.*f", std::int64_t{5}, 1.0), L"Breite ohne ganzzahliges Argument");
    EXPECT_EQ(getMistake(L"%*.*f", 5, L'5', 1.0), L"Breite ohne ganzzahliges Argument");
}

} // namespace
