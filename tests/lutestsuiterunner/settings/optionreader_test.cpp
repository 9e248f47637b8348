#include "testing/lutestsuiterunner/settings/optionreader.h"

#include <gtest/gtest.h>

namespace
{

class OptionReader : public testing::Test
{
protected:
    OptionReader()
    {
        m_reader.AddText({"--out", L"DIR", L"Verzeichnis"}, m_text);
        m_reader.AddNumber({"--retries", L"N", L"Zahl"}, 1, m_number);
        m_reader.AddSwitchOrNumber({"--fail-fast", L"[=N]", L"Bricht ab"}, 1, m_limit);
        m_reader.AddSwitchOrText({"--diff", L"[=DATEI]", L"Unterschiede"}, m_isSet, m_switchText);
        m_reader.AddTexts({"--sbatch", L"OPTION", L"Optionen"}, m_texts);
        m_reader.AddArguments({"DIR", nullptr, L"Verzeichnisse"}, m_arguments);
    }

    std::wstring GetError(const std::vector<std::wstring>& arguments)
    {
        try
        {
            m_reader.Read(arguments);
        }
        catch (const std::wstring& message)
        {
            return message;
        }
        return L"(none)";
    }

    std::wstring m_text;
    std::uint32_t m_number = 0;
    std::uint32_t m_limit = 0;
    bool m_isSet = false;
    std::wstring m_switchText;
    std::vector<std::wstring> m_texts;
    std::vector<std::wstring> m_arguments;
    Runner::COptionReader m_reader{L"run", L"Zweck.", false};
};

TEST_F(OptionReader, ReadsTextsOfAnyScript)
{
    EXPECT_TRUE(m_reader.Read({L"--out", L"Größe Ωμ"}));
    EXPECT_EQ(m_text, L"Größe Ωμ");
}

TEST_F(OptionReader, UsesTheLastValueOfARepeatedOption)
{
    EXPECT_TRUE(m_reader.Read({L"--out", L"a", L"--out=b"}));
    EXPECT_EQ(m_text, L"b");
}

TEST_F(OptionReader, ReadsSeveralArguments)
{
    EXPECT_TRUE(m_reader.Read({L"eins", L"--retries", L"2", L"zwei"}));
    EXPECT_EQ(m_arguments, (std::vector<std::wstring>{L"eins", L"zwei"}));
    EXPECT_EQ(m_number, 2U);
}

TEST_F(OptionReader, KeepsArgumentsAfterASwitchWithOptionalNumber)
{
    EXPECT_TRUE(m_reader.Read({L"--fail-fast", L"eins"}));
    EXPECT_EQ(m_limit, 1U);
    EXPECT_EQ(m_arguments, (std::vector<std::wstring>{L"eins"}));
}

TEST_F(OptionReader, ReadsTheNumberOfASwitch)
{
    EXPECT_TRUE(m_reader.Read({L"--fail-fast=7"}));
    EXPECT_EQ(m_limit, 7U);
}

TEST_F(OptionReader, KeepsArgumentsAfterASwitchWithOptionalText)
{
    EXPECT_TRUE(m_reader.Read({L"--diff", L"eins"}));
    EXPECT_TRUE(m_isSet);
    EXPECT_EQ(m_switchText, L"");
    EXPECT_EQ(m_arguments, (std::vector<std::wstring>{L"eins"}));
}

TEST_F(OptionReader, ReadsTheTextOfASwitch)
{
    EXPECT_TRUE(m_reader.Read({L"--diff=größer"}));
    EXPECT_TRUE(m_isSet);
    EXPECT_EQ(m_switchText, L"größer");
}

TEST_F(OptionReader, ExplainsWhereTheValueOfASwitchBelongs)
{
    Runner::COptionReader reader(L"review", L"Zweck.", false);
    reader.AddSwitchOrText({"--diff", L"[=DATEI]", L"Unterschiede"}, m_isSet, m_switchText);
    const auto getError = [&reader](const std::vector<std::wstring>& arguments) {
        try
        {
            reader.Read(arguments);
        }
        catch (const std::wstring& message)
        {
            return message;
        }
        return std::wstring();
    };

    EXPECT_EQ(getError({L"--diff", L"a"}), L"Unbekannte Argumente: 'a'; ein Wert von '--diff' steht hinter '='");
    EXPECT_EQ(getError({L"--diff=a", L"b"}), L"Unbekannte Argumente: 'b'");
    EXPECT_EQ(getError({L"b"}), L"Unbekannte Argumente: 'b'");
}

TEST(OptionReaderOfACommandWithLibraryOptions, ExplainsWhereLibraryOptionsBelong)
{
    Runner::COptionReader reader(L"run", L"Zweck.", true);
    const auto getError = [&reader](const std::vector<std::wstring>& arguments) {
        try
        {
            reader.Read(arguments);
        }
        catch (const std::wstring& message)
        {
            return message;
        }
        return std::wstring();
    };

    EXPECT_EQ(getError({L"-d", L"data"}),
              L"Unbekannte Argumente: '-d', 'data'; Optionen von LuTestSuiteCLI stehen hinter '--'");
    EXPECT_EQ(getError({L"data"}), L"Unbekannte Argumente: 'data'");
}

TEST_F(OptionReader, ReadsOneValuePerOccurrenceOfAnOption)
{
    EXPECT_TRUE(m_reader.Read({L"--sbatch", L"eins", L"zwei", L"--sbatch", L"drei"}));
    EXPECT_EQ(m_texts, (std::vector<std::wstring>{L"eins", L"drei"}));
    EXPECT_EQ(m_arguments, (std::vector<std::wstring>{L"zwei"}));
    EXPECT_NE(m_reader.GetHelp().find(L"--sbatch OPTION  "), std::wstring::npos)
        << "the help shows \"...\" after the value";
}

TEST_F(OptionReader, KeepsTheDefaultsOfAbsentOptions)
{
    m_number = 5;
    EXPECT_TRUE(m_reader.Read({}));
    EXPECT_EQ(m_number, 5U);
}

TEST_F(OptionReader, OffersTheHelpIfItIsRequested)
{
    EXPECT_FALSE(m_reader.Read({L"--help"}));
    EXPECT_NE(m_reader.GetHelp().find(L"Aufruf: LuTestSuiteRunner run [Optionen] DIR...\n"), std::wstring::npos)
        << m_reader.GetHelp().size();
    EXPECT_NE(m_reader.GetHelp().find(L"--fail-fast[=N]"), std::wstring::npos);
    EXPECT_NE(m_reader.GetHelp().find(L"Argumente:\n"), std::wstring::npos);
}

TEST_F(OptionReader, RefusesTextsThatAreNotPositiveNumbers)
{
    for (const wchar_t* value : {L"0", L"-1", L"3x", L"x", L"4294967296"})
    {
        EXPECT_EQ(GetError({L"--retries=" + std::wstring(value)}),
                  L"Der Wert '" + std::wstring(value) +
                      L"' der Option '--retries' ist falsch: erwartet wird eine ganze Zahl ab 1");
    }
}

TEST_F(OptionReader, NamesTheOptionThatLacksItsValue)
{
    EXPECT_EQ(GetError({L"--out"}), L"Der Option '--out' fehlt ihr Wert");
    EXPECT_EQ(GetError({L"--retries="}), L"Der Option '--retries' fehlt ihr Wert");
}

} // namespace
