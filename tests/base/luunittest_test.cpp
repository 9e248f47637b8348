#include "base/luunittest.h"

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbexception.h"
#include "tests/support/scopedfolder.h"

namespace
{

/// A unit test whose sub-tests the test adds.
class CSample : public LuUnitTest
{
    LB_RTTI(CSample)

public:
    using LuUnitTest::AddFileSubtests;
    using LuUnitTest::AddSubtest;
    using LuUnitTest::Check;
    using LuUnitTest::Error;
    using LuUnitTest::GetResultByErrors;
    using LuUnitTest::HasErrors;
    using LuUnitTest::Info;

    void InitSubtests() override {}

    /// Runs a function as the only sub-test.
    template<typename F>
    EResult Run(F function)
    {
        SetMessageStream(&m_stream);
        AddSubtest(L"sub-test", function);
        return RunUnitTest(GetSubtestCount() - 1);
    }

    const std::wstring& GetMessages() const { return m_stream.GetText(); }

    std::vector<std::wstring> GetNames() const
    {
        std::vector<std::wstring> names;
        for (std::uint32_t i = 0; i < GetSubtestCount(); ++i)
        {
            names.push_back(GetSubtestName(i));
        }
        return names;
    }

private:
    LuStreamWriteTextMemory m_stream;
};

/// The names of the sub-tests that AddFileSubtests creates with this wildcard for the files of the folder.
std::vector<std::wstring> getMatches(const ScopedFolder& folder, std::wstring_view wildcard)
{
    CSample sample;
    sample.SetDataDirectory(folder.GetPath());
    sample.AddFileSubtests(wildcard, [](const std::wstring&) {});
    return sample.GetNames();
}

using Names = std::vector<std::wstring>;

TEST(LuUnitTestFiles, ComeFromTheLastDataDirectory)
{
    const ScopedFolder folder;
    folder.WriteFile(L"first/b", "");
    folder.WriteFile(L"first/a", "");
    folder.WriteFile(L"second/c", "");
    CSample sample;

    sample.SetDataDirectory(folder.GetPathOf(L"first/"));
    EXPECT_EQ(Names(sample.GetDataFileNames()), (Names{L"a", L"b"}));
    folder.WriteFile(L"first/d", "");
    EXPECT_EQ(Names(sample.GetDataFileNames()), (Names{L"a", L"b"}));
    sample.SetDataDirectory(folder.GetPathOf(L"second/"));
    EXPECT_EQ(Names(sample.GetDataFileNames()), (Names{L"c"}));
}

} // namespace

LB_RTTI_CLASS(CSample, LuUnitTest)

TEST(LuUnitTest, CannotBeCreatedByName)
{
    EXPECT_EQ(LbRTTI::Find(L"LuUnitTest"), &LuUnitTest::RTTI);
    EXPECT_EQ(LbRTTI::getCreate(L"LuUnitTest"), nullptr);
}

TEST(LuUnitTest, IsTheBaseOfAnObjectCreatedByName)
{
    const std::unique_ptr<IObject> object = LbRTTI::getCreate(L"CSample")();
    EXPECT_NE(dynamic_cast<LuUnitTest*>(object.get()), nullptr);
    EXPECT_TRUE(object->IsKindOf(LuUnitTest::RTTI));
}

TEST(LuUnitTest, HasNoSubtestsAtFirst)
{
    EXPECT_EQ(CSample().GetSubtestCount(), 0U);
}

TEST(LuUnitTest, KeepsInsertionOrderAndDuplicateNames)
{
    CSample sample;
    sample.AddSubtest(L"b", [] {});
    sample.AddSubtest(L"a", [] {});
    sample.AddSubtest(L"b", [] {});
    EXPECT_EQ(sample.GetNames(), (Names{L"b", L"a", L"b"}));
}

TEST(LuUnitTest, ThrowsForAnIndexOutOfRange)
{
    CSample sample;
    sample.AddSubtest(L"a", [] {});
    EXPECT_THROW(sample.GetSubtestName(1), LbException);
    EXPECT_THROW(sample.RunUnitTest(1), LbException);
    EXPECT_THROW(sample.RunUnitTest(0xFFFFFFFFU), LbException);
}

TEST(LuUnitTest, RunsTheSubtestAtTheIndex)
{
    CSample sample;
    int run = 0;
    sample.AddSubtest(L"a", [&run] { run = 1; });
    sample.AddSubtest(L"b", [&run] { run = 2; });
    sample.RunUnitTest(1);
    EXPECT_EQ(run, 2);
}

TEST(LuUnitTest, PassesWithoutErrorLines)
{
    CSample sample;
    EXPECT_EQ(sample.Run([&sample] { sample.Info(L"fine"); }), LuUnitTest::eR_Passed);
}

TEST(LuUnitTest, FailsWithAnErrorLine)
{
    CSample sample;
    EXPECT_EQ(sample.Run([&sample] { sample.Error(L"wrong"); }), LuUnitTest::eR_Failed);
}

TEST(LuUnitTest, ReturnsTheSubtestsOwnResult)
{
    CSample sample;
    EXPECT_EQ(sample.Run([] { return LuUnitTest::eR_NoInput; }), LuUnitTest::eR_NoInput);
    EXPECT_EQ(sample.Run([] { return LuUnitTest::eR_Different; }), LuUnitTest::eR_Different);
    EXPECT_EQ(sample.Run([] { return static_cast<LuUnitTest::EResult>(77); }), 77U);
}

TEST(LuUnitTest, SubtestsOwnResultOverridesErrorLines)
{
    CSample sample;
    const auto result = sample.Run([&sample] {
        sample.Error(L"known");
        return LuUnitTest::eR_Passed;
    });
    EXPECT_EQ(result, LuUnitTest::eR_Passed);
}

TEST(LuUnitTest, ErrorsOfOneRunDoNotAffectTheNext)
{
    CSample sample;
    ASSERT_EQ(sample.Run([&sample] { sample.Error(L"wrong"); }), LuUnitTest::eR_Failed);
    EXPECT_TRUE(sample.HasErrors());
    EXPECT_EQ(sample.Run([] {}), LuUnitTest::eR_Passed);
    EXPECT_FALSE(sample.HasErrors());
}

TEST(LuUnitTest, WritesErrorsAndInfosAsTaggedLines)
{
    CSample sample;
    sample.Run([&sample] {
        sample.Error(L"Größe %d statt %s", 3, L"vier");
        sample.Info(L"Datei '%s'", std::wstring(L"x"));
    });
    EXPECT_EQ(sample.GetMessages(), L"\t\tERROR: Größe 3 statt vier\n\t\tINFO:  Datei 'x'\n");
}

TEST(LuUnitTest, EndsAMessageWithOneLineFeed)
{
    CSample sample;
    sample.Run([&sample] {
        sample.Info(L"one\n");
        sample.Info(L"two\n\n\n");
        sample.Info(L"");
    });
    EXPECT_EQ(sample.GetMessages(), L"\t\tINFO:  one\n\t\tINFO:  two\n\t\tINFO:  \n");
}

TEST(LuUnitTest, KeepsLineFeedsInsideAMessage)
{
    CSample sample;
    sample.Run([&sample] { sample.Error(L"first\nsecond\n\nfourth"); });
    EXPECT_EQ(sample.GetMessages(), L"\t\tERROR: first\nsecond\n\nfourth\n");
}

TEST(LuUnitTest, DropsMessagesWithoutAStream)
{
    CSample sample;
    sample.AddSubtest(L"a", [&sample] { sample.Error(L"unheard"); });
    EXPECT_EQ(sample.RunUnitTest(0), LuUnitTest::eR_Failed);
}

TEST(LuUnitTest, CheckReportsOnlyAFalseCondition)
{
    CSample sample;
    bool results[2] = {};
    const auto result = sample.Run([&sample, &results] {
        results[0] = sample.Check(true, L"%d", 1);
        results[1] = sample.Check(false, L"%d", 2);
    });
    EXPECT_EQ(result, LuUnitTest::eR_Failed);
    EXPECT_TRUE(results[0]);
    EXPECT_FALSE(results[1]);
    EXPECT_EQ(sample.GetMessages(), L"\t\tERROR: 2\n");
}

/// A text that counts how often it is requested.
struct SCountingText
{
    operator const wchar_t*() const // NOLINT(google-explicit-constructor)
    {
        ++*calls;
        return L"text";
    }

    int* calls;
};

TEST(LuUnitTest, FormatsNothingForATrueCondition)
{
    int calls = 0;
    CSample sample;
    sample.Run([&] { sample.Check(true, L"%s", SCountingText{&calls}); });
    EXPECT_EQ(calls, 0);
    sample.Run([&] { sample.Check(false, L"%s", SCountingText{&calls}); });
    EXPECT_EQ(calls, 1);
}

/// The line reported for a mistake in line `line` of this file.
std::wstring getMistakeLine(std::uint32_t line, const std::wstring& mistake)
{
    return L"\t\tERROR: luunittest_test.cpp, Zeile " + std::to_wstring(line) + L": Formattext mit Fehler (" + mistake +
           L"\n";
}

TEST(LuUnitTest, ReportsAMistakeInARuntimeFormatWithItsLocation)
{
    CSample sample;
    const std::wstring format = L"50% fertig";
    sample.Run([&] { sample.Info(LbRuntimeFormat(format)); });
    EXPECT_EQ(sample.GetMessages(), getMistakeLine(__LINE__ - 1, L"zu wenige Argumente): \"50% fertig\""));
}

TEST(LuUnitTest, KeepsTheResultDespiteAMistakeInARuntimeFormat)
{
    const std::wstring format = L"%s";
    const auto run = [&](const auto& report) {
        CSample sample;
        const LuUnitTest::EResult result = sample.Run([&] { report(sample); });
        EXPECT_TRUE(sample.GetMessages().starts_with(L"\t\tERROR: luunittest_test.cpp, ")) << result;
        return result;
    };
    EXPECT_EQ(run([&](CSample& sample) { sample.Info(LbRuntimeFormat(format), 1); }), LuUnitTest::eR_Passed);
    EXPECT_EQ(run([&](CSample& sample) { sample.Check(true, LbRuntimeFormat(format), 1); }), LuUnitTest::eR_Passed);
    EXPECT_EQ(run([&](CSample& sample) { sample.Check(false, LbRuntimeFormat(format), 1); }), LuUnitTest::eR_Failed);
    EXPECT_EQ(run([&](CSample& sample) { sample.Error(LbRuntimeFormat(format), 1); }), LuUnitTest::eR_Failed);
}

TEST(LuUnitTest, ChecksARuntimeFormatEvenIfTheConditionIsTrue)
{
    CSample sample;
    bool isTrue = false;
    const std::wstring format = L"%y";
    sample.Run([&] { isTrue = sample.Check(true, LbRuntimeFormat(format), 8); });
    EXPECT_EQ(sample.GetMessages(), getMistakeLine(__LINE__ - 1, L"unbekannte Umwandlung): \"%y\""));
    EXPECT_TRUE(isTrue);
}

TEST(LuUnitTest, FormatsMessagesWithRuntimeFormats)
{
    CSample sample;
    const std::wstring format = L"%o";
    sample.Run([&] {
        sample.Check(true, LbRuntimeFormat(format), 8);
        sample.Check(false, LbRuntimeFormat(format), 8);
        sample.Info(LbRuntimeFormat(format), 64);
    });
    EXPECT_EQ(sample.GetMessages(), L"\t\tERROR: 10\n\t\tINFO:  100\n");
}

TEST(LuUnitTest, ReportsAStandardExceptionByItsText)
{
    CSample sample;
    EXPECT_EQ(sample.Run([] { throw std::runtime_error("Größe 100% falsch"); }), LuUnitTest::eR_Exception);
    EXPECT_EQ(sample.GetMessages(), L"\t\tERROR: Größe 100% falsch\n");
    EXPECT_TRUE(sample.HasErrors());
}

TEST(LuUnitTest, ReportsAnLbExceptionByItsTextAndLocation)
{
    CSample sample;
    const std::uint32_t line = __LINE__ + 1;
    EXPECT_EQ(sample.Run([] { throw LbException(L"TestBody", L"Datei fehlt"); }), LuUnitTest::eR_Exception);
    EXPECT_EQ(sample.GetMessages(), LbFormat(L"\t\tERROR: Datei fehlt (luunittest_test(%u): TestBody)\n", line));
}

TEST(LuUnitTest, ReportsThrownWideTexts)
{
    CSample sample;
    EXPECT_EQ(sample.Run([] { throw std::wstring(L"Übel"); }), LuUnitTest::eR_Exception);
    EXPECT_EQ(sample.Run([] { throw L"schlimm"; }), LuUnitTest::eR_Exception);
    EXPECT_EQ(sample.Run([] { throw static_cast<const wchar_t*>(nullptr); }), LuUnitTest::eR_Exception);
    EXPECT_EQ(sample.GetMessages(), L"\t\tERROR: Übel\n\t\tERROR: schlimm\n\t\tERROR: \n");
}

TEST(LuUnitTest, ReportsOtherThrownValuesAsUnknown)
{
    CSample sample;
    EXPECT_EQ(sample.Run([] { throw 42; }), LuUnitTest::eR_Exception);
    EXPECT_EQ(sample.GetMessages(), L"\t\tERROR: Unbekannte Exception\n");
}

TEST(LuUnitTest, ExceptionOverridesTheResult)
{
    CSample sample;
    const auto result = sample.Run([]() -> LuUnitTest::EResult { throw 42; });
    EXPECT_EQ(result, LuUnitTest::eR_Exception);
}

TEST(LuUnitTest, MakesASubtestOfEachMatchingFileInOrder)
{
    const ScopedFolder folder;
    folder.WriteFile(L"b.txt", "");
    folder.WriteFile(L"a.txt", "");
    folder.WriteFile(L"a.dat", "");
    folder.MakeFolder(L"folder.txt");
    EXPECT_EQ(getMatches(folder, L"*.txt"), (Names{L"a.txt", L"b.txt"}));
}

TEST(LuUnitTest, AcceptsWildcardsOfEachArgumentType)
{
    const ScopedFolder folder;
    for (const wchar_t* const name : {L"a.yaml", L"a.expected.yaml", L"b.yml"})
    {
        folder.WriteFile(name, "");
    }
    const auto getNames = [&folder](const auto& add) {
        CSample sample;
        sample.SetDataDirectory(folder.GetPath());
        add(sample, [](const std::wstring&) {});
        Names names;
        for (std::uint32_t subtest = 0; subtest < sample.GetSubtestCount(); ++subtest)
        {
            names.push_back(sample.GetSubtestName(subtest));
        }
        return names;
    };
    const std::wstring yaml = L"*.yaml";
    const std::vector<std::wstring> texts = {yaml, L"*.yml"};
    const std::vector<std::wstring_view> views(texts.begin(), texts.end());
    const std::initializer_list<std::wstring_view> list = {L"*.yaml", L"*.yml"};
    constexpr const wchar_t* c_Texts[] = {L"*.yaml", L"*.yml"};
    const Names one = {L"a.yaml"};
    const Names both = {L"a.yaml", L"b.yml"};

    EXPECT_EQ(getNames([](auto& test, auto run) { test.AddFileSubtests(L"*.yaml", L"*.expected.*", run); }), one);
    EXPECT_EQ(getNames([](auto& test, auto run) { test.AddFileSubtests(L"*.yaml", {L"*.expected.*"}, run); }), one);
    EXPECT_EQ(getNames([&](auto& test, auto run) { test.AddFileSubtests({yaml}, {L"a.e*", L"b.*"}, run); }), one);
    EXPECT_EQ(getNames([&](auto& test, auto run) { test.AddFileSubtests(texts, L"*.expected.*", run); }), both);
    EXPECT_EQ(getNames([&](auto& test, auto run) { test.AddFileSubtests(views, {L"*.expected.*"}, run); }), both);
    EXPECT_EQ(getNames([&](auto& test, auto run) { test.AddFileSubtests(list, L"*.expected.*", run); }), both);
    EXPECT_EQ(getNames([&](auto& test, auto run) { test.AddFileSubtests(c_Texts, L"*.expected.*", run); }), both);
    EXPECT_EQ(getNames([&](auto& test, auto run) { test.AddFileSubtests(std::span(views), L"a.e*", run); }), both);
    EXPECT_EQ(getNames([&](auto& test, auto run) { test.AddFileSubtests({yaml, L"*.yml"}, run); }).size(), 3U);
    EXPECT_EQ(getNames([&](auto& test, auto run) { test.AddFileSubtests(texts, {}, run); }).size(), 3U);
    EXPECT_EQ(getNames([&](auto& test, auto run) { test.AddFileSubtests(L"*", texts, run); }), Names{});
}

TEST(LuUnitTest, PassesTheFullPathToAFileSubtest)
{
    const ScopedFolder folder;
    const std::wstring path = folder.WriteFile(L"a.txt", "");
    CSample sample;
    std::wstring given;
    sample.SetDataDirectory(folder.GetPath());
    sample.AddFileSubtests(L"*", [&given](const std::wstring& file) {
        given = file;
        return LuUnitTest::eR_NoInput;
    });
    EXPECT_EQ(sample.RunUnitTest(0), LuUnitTest::eR_NoInput);
    EXPECT_EQ(given, path);
}

TEST(LuUnitTest, MakesNoSubtestsOfDescriptionFiles)
{
    const ScopedFolder folder;
    folder.WriteFile(L"#ExtraInfo.xml", "");
    folder.WriteFile(L"#Other.xml", "");
    EXPECT_EQ(getMatches(folder, L"*.xml"), (Names{L"#Other.xml"}));
    EXPECT_TRUE(getMatches(folder, L"#ExtraInfo.xml").empty());
}

TEST(LuUnitTest, MakesNoSubtestsWithoutTheDataDirectory)
{
    CSample sample;
    sample.AddFileSubtests(L"*", [](const std::wstring&) {});
    const ScopedFolder folder;
    sample.SetDataDirectory(folder.GetPathOf(L"missing/"));
    sample.AddFileSubtests(L"*", [](const std::wstring&) {});
    EXPECT_EQ(sample.GetSubtestCount(), 0U);
}

TEST(LuUnitTest, StarMatchesAnyTextIncludingEmptyText)
{
    const ScopedFolder folder;
    folder.WriteFile(L"ab", "");
    folder.WriteFile(L"axxb", "");
    folder.WriteFile(L"axxbc", "");
    EXPECT_EQ(getMatches(folder, L"a*b"), (Names{L"ab", L"axxb"}));
    EXPECT_EQ(getMatches(folder, L"*"), (Names{L"ab", L"axxb", L"axxbc"}));
    EXPECT_EQ(getMatches(folder, L"**b**c"), (Names{L"axxbc"}));
}

TEST(LuUnitTest, QuestionMarkMatchesOneCharacter)
{
    const ScopedFolder folder;
    folder.WriteFile(L"a", "");
    folder.WriteFile(L"a1", "");
    folder.WriteFile(L"aü", "");
    folder.WriteFile(L"a12", "");
    EXPECT_EQ(getMatches(folder, L"a?"), (Names{L"a1", L"aü"}));
    EXPECT_EQ(getMatches(folder, L"?*2"), (Names{L"a12"}));
}

TEST(LuUnitTest, OtherCharactersOfWildcardsMatchExactly)
{
    const ScopedFolder folder;
    folder.WriteFile(L"a.b", "");
    folder.WriteFile(L"axb", "");
    folder.WriteFile(L"[ab]+", "");
    EXPECT_EQ(getMatches(folder, L"a.b"), (Names{L"a.b"}));
    EXPECT_EQ(getMatches(folder, L"[ab]+"), (Names{L"[ab]+"}));
    EXPECT_TRUE(getMatches(folder, L"A.B").empty());
    EXPECT_TRUE(getMatches(folder, L"").empty());
}

TEST(LuUnitTest, WildcardsWithManyStarsMatchQuickly)
{
    const ScopedFolder folder;
    folder.WriteFile(std::wstring(200, L'a') + L"b", "");
    std::wstring wildcard;
    for (int i = 0; i < 60; ++i)
    {
        wildcard += L"*a";
    }
    EXPECT_EQ(getMatches(folder, wildcard + L"*b").size(), 1U);
    EXPECT_TRUE(getMatches(folder, wildcard + L"*c").empty());
}
