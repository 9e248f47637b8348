// Tests of other frameworks as cases, in each mode of the host.

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/os/platform.h"
#include "tests/lutestsuiterunner/cli/runnerprocess.h"
#include "tests/support/hostprocess.h"
#include "tests/support/scopedfolder.h"

namespace
{

/// Runs the cases of one module. The parameter has the options of the mode.
class HostForeignTests : public testing::TestWithParam<std::vector<std::wstring>>
{
protected:
    using Variables = std::vector<std::pair<std::wstring, std::wstring>>;

    void SetUp() override
    {
#ifndef LUTESTSUITE_HAS_CATCH2
        if (m_module == L"catch2tests")
        {
            GTEST_SKIP() << "Catch2 3 is missing; scripts/setup fetches it";
        }
#endif
    }

    SHostRun Run(const std::vector<std::wstring>& classes, std::vector<std::wstring> options,
                 const Variables& variables = {}) const
    {
        for (const std::wstring& name : classes)
        {
            m_folder.MakeFolder(L"data/" + name);
        }
        options.insert(options.end(), {L"-d", m_folder.GetPathOf(L"data"), L"--dll", m_module, L"--xml", GetReport(),
                                       L"--message-report-max", L"100"});
        SHostOptions hostOptions;
        hostOptions.variables = variables;
        return RunHost(options, hostOptions);
    }

    std::wstring GetReport() const
    {
        return m_folder.GetPathOf(L"run.xml");
    }

    /// The part of the report that is about a case.
    std::string FindCase(const std::string& name) const
    {
        const std::string report = LbEncoding::Latin1ToUtf8(LbFileSystem::ReadFile8Bit(GetReport()));
        const std::size_t begin = report.find("name=\"" + name + "\"");
        return begin == std::string::npos ? "" : report.substr(begin, report.find("</testcase>", begin) - begin);
    }

    void ExpectMessage(const std::string& name, const std::string& message) const
    {
        const std::string found = FindCase(name);
        EXPECT_NE(found.find(message), std::string::npos) << found;
    }

    static void ExpectLines(const SHostRun& run, const std::vector<std::string>& lines)
    {
        const std::string text = FromPlatformLines(run.output);
        for (const std::string& line : lines)
        {
            EXPECT_NE(text.find("\t" + line + "\n"), std::string::npos) << line << "\n" << text;
        }
        EXPECT_EQ(run.errors, "");
    }

    std::wstring m_module = L"googletesttests";
    ScopedFolder m_folder;
};

constexpr const char* c_Failed = "... FEHLER (Die Ausführung dieses Testfalls ist fehlgeschlagen)";
constexpr const char* c_Thrown = "... FEHLER (Während der Ausführung dieses Testfalls wurde eine Exception geworfen)";

class HostGoogleTest : public HostForeignTests
{
};

TEST_P(HostGoogleTest, ReportsTheResultOfEachTest)
{
    const SHostRun run = Run({L"Arithmetic", L"DISABLED_Roots"}, GetParam());

    ExpectLines(run, {"Adds... OK", std::string("Fails") + c_Failed, "Skips... OK", std::string("Throws") + c_Thrown});
    EXPECT_EQ(run.output.find("DISABLED"), std::string::npos) << run.output;
    EXPECT_EQ(run.exitStatus, 1);
}

TEST_P(HostGoogleTest, ReportsFailuresWithTheirSourceLine)
{
    Run({L"Arithmetic"}, GetParam());

    const std::string failed = FindCase("Fails");
    EXPECT_NE(failed.find("plain.cpp:18: "), std::string::npos) << failed;
    EXPECT_NE(failed.find("größer"), std::string::npos) << failed;
    EXPECT_NE(failed.find("plain.cpp:19: "), std::string::npos) << failed;
    const std::string skipped = FindCase("Skips");
    EXPECT_NE(skipped.find(">Übersprungen: no coprocessor<"), std::string::npos) << skipped;
    EXPECT_NE(skipped.find("plain.cpp:24<"), std::string::npos) << skipped;
    const std::string thrown = FindCase("Throws");
    EXPECT_NE(thrown.find("broken"), std::string::npos) << thrown;
}

TEST_P(HostGoogleTest, SetsUpFixturesSuitesAndEnvironmentsForEachCase)
{
    const SHostRun run = Run({L"Buffer", L"Refused"}, GetParam());

    ExpectLines(run, {"IsSetUp... OK", "IsSetUpAgain... OK", "NeedsAServer... OK"});
    EXPECT_NE(FindCase("NeedsAServer").find("no server"), std::string::npos);
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_P(HostGoogleTest, NamesCasesAfterParametersAndTypes)
{
    const SHostRun run = Run({L"Small.Numbers", L"Named.Numbers", L"Typed.a_b_", L"Typed.a_b_~2"}, GetParam());

    ExpectLines(run, {"AreEven.0... OK", std::string("AreEven.1") + c_Failed, "AreEven.Four... OK", "AreSmall... OK",
                      std::string("AreSmall") + c_Failed});
    EXPECT_NE(FindCase("AreEven.1").find("GetParam() = 3"), std::string::npos);
}

TEST_P(HostGoogleTest, RunsTestsOfAProcessOneAfterAnother)
{
    const SHostRun run = Run({L"Many.Shared"}, GetParam());

    EXPECT_NE(run.output.find("RunsAlone.39... OK"), std::string::npos);
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_P(HostGoogleTest, RepeatsATest)
{
    std::vector<std::wstring> options = GetParam();
    options.insert(options.end(), {L"-r", L"3", L"-i", L":Adds$"});

    const SHostRun run = Run({L"Arithmetic"}, options);

    EXPECT_EQ(run.exitStatus, 0) << run.output;
    EXPECT_NE(FromPlatformLines(run.output).find("3 Tests"), std::string::npos) << run.output;
}

TEST_P(HostGoogleTest, ReportsFailuresInOtherThreads)
{
    const SHostRun run = Run({L"Threads"}, GetParam());

    ExpectLines(run, {std::string("Fail") + c_Failed});
    ExpectMessage("Fail", "in a thread");
}

TEST_P(HostGoogleTest, FailsEachCaseIfSetUpOrTearDownOfItsSuiteFails)
{
    const SHostRun run = Run({L"FailedSuite", L"LeavingSuite"}, GetParam());

    ExpectLines(run, {std::string("IsNotRun") + c_Failed, std::string("Passes") + c_Failed});
    ExpectMessage("IsNotRun", "no database");
    ExpectMessage("Passes", "left files behind");
    EXPECT_EQ(FindCase("IsNotRun").find("was run"), std::string::npos);
}

TEST_P(HostGoogleTest, ReportsAnExceptionIfTheSetUpOfASuiteThrows)
{
    const SHostRun run = Run({L"ThrowingSuite"}, GetParam());

    ExpectLines(run, {std::string("IsNotRun") + c_Thrown});
    ExpectMessage("IsNotRun", "broken suite");
}

TEST_P(HostGoogleTest, ReportsTheReasonIfASuiteSkips)
{
    const SHostRun run = Run({L"SkippedSuite"}, GetParam());

    ExpectLines(run, {"Passes... OK"});
    // The message begins with file and line, because GoogleTest ran the test.
    ExpectMessage("Passes", "failures.cpp:43: Übersprungen: no licence");
}

TEST_P(HostGoogleTest, FailsACaseIfAnEnvironmentFails)
{
    const SHostRun run = Run({L"Buffer"}, GetParam(), {{L"LUTESTSUITE_TEST_SET_UP", L"fail"}});

    ExpectLines(run, {std::string("IsSetUp") + c_Failed, std::string("IsSetUpAgain") + c_Failed});
    ExpectMessage("IsSetUp", "no server");
}

TEST_P(HostGoogleTest, SkipsACaseIfAnEnvironmentSkips)
{
    const SHostRun run = Run({L"Threads"}, GetParam(), {{L"LUTESTSUITE_TEST_SET_UP", L"skip"}});

    EXPECT_EQ(run.exitStatus, 0) << run.output;
    ExpectMessage("Fail", "Übersprungen: no display");
}

TEST_P(HostGoogleTest, RunsTypeParameterizedTests)
{
    const SHostRun run = Run({L"My.Pattern.0", L"My.Pattern.1"}, GetParam());

    ExpectLines(run, {"IsSigned... OK", std::string("IsSigned") + c_Failed});
}

TEST_P(HostGoogleTest, FailsATestThatIsNotInstantiated)
{
    const SHostRun run = Run({L"GoogleTestVerification"}, GetParam());

    ExpectLines(run, {std::string("UninstantiatedParameterizedTestSuite_Forgotten_") + c_Failed});
}

TEST_P(HostGoogleTest, ReportsExpectedCallsThatAMockMisses)
{
    const SHostRun run = Run({L"Mocks"}, GetParam());

    ExpectLines(run, {"AreCalled... OK", std::string("AreNotCalled") + c_Failed});
    ExpectMessage("AreNotCalled", "EXPECT_CALL(mock, Read())");
}

TEST_P(HostGoogleTest, CallsListenersOfTheProgram)
{
    ExpectLines(Run({L"Listeners"}, GetParam()), {"AreCalled... OK"});
}

TEST_P(HostGoogleTest, IgnoresGoogleTestOptionsInTheEnvironment)
{
    const std::wstring file = m_folder.GetPathOf(L"framework.xml");

    const SHostRun run = Run({L"Arithmetic"}, GetParam(),
                             {{L"GTEST_BREAK_ON_FAILURE", L"1"},
                              {L"GTEST_THROW_ON_FAILURE", L"1"},
                              {L"GTEST_CATCH_EXCEPTIONS", L"0"},
                              {L"GTEST_FAIL_FAST", L"1"},
                              {L"GTEST_FILTER", L"-*"},
                              {L"GTEST_INSTALL_FAILURE_SIGNAL_HANDLER", L"1"},
                              {L"GTEST_OUTPUT", L"xml:" + file},
                              {L"GTEST_REPEAT", L"2"},
                              {L"GTEST_SHUFFLE", L"1"},
                              {L"GTEST_STREAM_RESULT_TO", L"localhost:9"}});

    ExpectLines(run, {"Adds... OK", std::string("Fails") + c_Failed, "Skips... OK", std::string("Throws") + c_Thrown});
    EXPECT_NE(run.output.find("4 Tests"), std::string::npos) << run.output;
    EXPECT_EQ(run.exitStatus, 1);
    ExpectMessage("Fails", "plain.cpp:19: ");
    EXPECT_FALSE(LbFileSystem::IsFile(file));
}

TEST_P(HostGoogleTest, RefusesShardingByGoogleTest)
{
    const SHostRun run =
        Run({L"Arithmetic"}, GetParam(), {{L"GTEST_TOTAL_SHARDS", L"2"}, {L"GTEST_SHARD_INDEX", L"0"}});

    EXPECT_NE(run.errors.find("Fehler: Die Umgebungsvariable GTEST_TOTAL_SHARDS ist gesetzt"), std::string::npos)
        << run.errors;
    EXPECT_EQ(run.exitStatus, 2);
}

const std::vector<std::vector<std::wstring>> c_Modes = {{}, {L"-p", L"-w", L"4"}, {L"-s"}, {L"-x", L"-w", L"4"}};

TEST_P(HostGoogleTest, RunsDeathTestsOnlyOnLinuxAndOnlyInTheDefaultStyle)
{
    // A forked process lacks the other threads, so the leak detector would report their memory.
    const SHostRun run = Run({L"Deaths"}, GetParam(), {{L"ASAN_OPTIONS", L"detect_leaks=0"}});

    const std::string expected = LbOs::c_PathSeparator == L'\\' ? c_Failed : "... OK";
    const std::string text = FromPlatformLines(run.output);
    for (const std::string& line :
         {"AreSeen" + expected, std::string("AreMissed") + c_Failed, "HaveTheirStyleAgain" + expected})
    {
        EXPECT_NE(text.find("\t" + line + "\n"), std::string::npos) << line << "\n" << text;
    }
    // On Windows the program that GoogleTest starts writes between the name and the result.
    EXPECT_EQ(text.find("\tHaveAnotherStyle... OK\n"), std::string::npos) << text;
    ExpectMessage("HaveAnotherStyle", "Todestests gibt es ");
}

INSTANTIATE_TEST_SUITE_P(Modes, HostGoogleTest, testing::ValuesIn(c_Modes));

/// Reports keep only three lines of a case unless an option says otherwise.
TEST(HostGoogleTestReports, ShowBothComparedValuesWithinThreeLines)
{
    const ScopedFolder folder;
    folder.MakeFolder(L"data/Arithmetic");
    const std::wstring path = folder.GetPathOf(L"run.xml");

    RunHost({L"-d", folder.GetPathOf(L"data"), L"--dll", L"googletesttests", L"-i", L":Fails$", L"--xml", path});

    const std::string report = LbEncoding::Latin1ToUtf8(LbFileSystem::ReadFile8Bit(path));
    std::size_t position = 0;
    for (const char* const line :
         {"plain.cpp:18: Expected equality of these values:<", ">  1 + 1 (Which is: 2)<", ">  3<", ">...<"})
    {
        position = report.find(line, position);
        EXPECT_NE(position, std::string::npos) << line << "\n" << report;
    }
}

/// The case crashes its process, so it must run in a child process.
TEST(HostGoogleTestChildren, DoNotStopOtherCasesIfTheyCrash)
{
    const ScopedFolder folder;
    folder.MakeFolder(L"Crashes");
    folder.MakeFolder(L"Buffer");

    const SHostRun run = RunHost({L"-x", L"-d", folder.GetPath(), L"--dll", L"googletesttests"});

    EXPECT_NE(run.output.find("Aborts... FEHLER (Unbekannter Fehler)"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("IsSetUp... OK"), std::string::npos) << run.output;
}

TEST(HostGoogleTestCases, AreDisabledLikeTheirTests)
{
    const ScopedFolder folder;
    folder.MakeFolder(L"Arithmetic");
    folder.MakeFolder(L"DISABLED_Roots");
    folder.MakeFolder(L"DISABLED_Now.Later");
    folder.MakeFolder(L"All.DISABLED_Words");

    const SHostRun run = RunHost({L"--list-disabled", L"-d", folder.GetPath(), L"--dll", L"googletesttests"});

    EXPECT_NE(run.output.find("DISABLED_Divides"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("Square"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("Runs.0"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("AreFound.0"), std::string::npos) << run.output;
    EXPECT_EQ(run.output.find("Adds"), std::string::npos) << run.output;
}

TEST(HostGoogleTestCases, RunDisabledTestsIfADescriptionEnablesThem)
{
    const ScopedFolder folder;
    folder.WriteFile(L"Arithmetic/#ExtraInfo.xml",
                     "<ExtraInfo><TestCase name=\"DISABLED_Divides\"><Enable>true</Enable></TestCase></ExtraInfo>");

    const SHostRun run = RunHost({L"-d", folder.GetPath(), L"--dll", L"googletesttests", L"-i", L":DISABLED_Divides$"});

    EXPECT_NE(run.output.find(std::string("DISABLED_Divides") + c_Failed), std::string::npos) << run.output;
}

TEST(HostGoogleTestModules, RunTogetherDespiteEqualSuiteNamesIfOneHasAPrefix)
{
    const ScopedFolder folder;
    folder.MakeFolder(L"Arithmetic");
    folder.MakeFolder(L"Second.Arithmetic");

    const SHostRun run = RunHost({L"-d", folder.GetPath(), L"--dll", L"googletesttests", L"--dll",
                                  L"googletestprefixedtests", L"-i", L":(Adds|Subtracts)$"});

    const std::string text = FromPlatformLines(run.output);
    EXPECT_NE(text.find("Arithmetic\n\tAdds... OK\n"), std::string::npos) << text;
    EXPECT_NE(text.find("Second.Arithmetic\n\tSubtracts... OK\n"), std::string::npos) << text;
    EXPECT_EQ(run.exitStatus, 0);
}

class HostCatch2 : public HostForeignTests
{
protected:
    HostCatch2() { m_module = L"catch2tests"; }
};

/// A case that crashes its process must run in a child process.
class HostCatch2Children : public HostCatch2
{
};

/// Runs tests of Catch2 with the host for build servers.
class RunnerCatch2 : public HostCatch2
{
};

TEST_P(HostCatch2, ReportsTheResultOfEachTestCase)
{
    std::vector<std::wstring> options = GetParam();
    options.insert(options.end(), {L"-e", L":aborts$"});

    const SHostRun run = Run({L"vectors", L"fixtures"}, options);

    ExpectLines(run, {std::string("vectors grow") + c_Failed, "names_ with.strange_characters... OK",
                      "names_ with.strange_characters~2... OK", "skips... OK", std::string("throws") + c_Thrown,
                      "may fail... OK", "may throw... OK", "should fail... OK", "should throw... OK",
                      std::string("generated values fail") + c_Failed, std::string("should fail but passes") + c_Failed,
                      "buffers are set up... OK"});
    EXPECT_EQ(run.output.find("hidden"), std::string::npos) << run.output;
    EXPECT_EQ(run.exitStatus, 1);
}

TEST_P(HostCatch2, ReportsFailuresWithSourceLineAndSection)
{
    std::vector<std::wstring> options = GetParam();
    options.insert(options.end(), {L"-i", L":(vectors grow|skips)$"});

    Run({L"vectors"}, options);

    const std::string failed = FindCase("vectors grow");
    EXPECT_NE(failed.find("vectors.cpp:22: "), std::string::npos) << failed;
    EXPECT_NE(failed.find("5 == 6"), std::string::npos) << failed;
    EXPECT_NE(failed.find("after resize"), std::string::npos) << failed;
    EXPECT_NE(failed.find("SECTION by two"), std::string::npos) << failed;
    EXPECT_EQ(failed.find("SECTION by one"), std::string::npos) << failed;
    EXPECT_NE(FindCase("skips").find(">Übersprungen: no coprocessor<"), std::string::npos);
}

TEST_P(HostCatch2, ReportsGeneratedValuesAndToleratedExceptions)
{
    std::vector<std::wstring> options = GetParam();
    options.insert(options.end(), {L"-i", L":(generated values fail|may throw)$"});

    Run({L"vectors"}, options);

    ExpectMessage("generated values fail", "3 &lt; 3");
    EXPECT_EQ(FindCase("generated values fail").find("2 &lt; 3"), std::string::npos);
    ExpectMessage("may throw", "known defect");
}

TEST_P(HostCatch2, FailsIfNotAllTestsCanBeRegistered)
{
    m_module = L"catch2refusedtests";

    const SHostRun run = Run({L"adapter"}, GetParam());

    EXPECT_NE(run.errors.find("Fehler: Catch2 hat nicht alle Tests angemeldet: "), std::string::npos) << run.errors;
    EXPECT_NE(run.errors.find("[!unknown]"), std::string::npos) << run.errors;
    EXPECT_NE(run.errors.find("\"twice\""), std::string::npos) << run.errors;
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.exitStatus, 2);
}

TEST_F(RunnerCatch2, FailsIfNotAllTestsCanBeRegistered)
{
    m_folder.MakeFolder(L"data/adapter");

    const SHostRun run = RunRunner({L"run", L"--out", m_folder.GetPathOf(L"out"), L"--", L"-d",
                                    m_folder.GetPathOf(L"data"), L"--dll", L"catch2refusedtests"});

    EXPECT_NE(run.errors.find("Catch2 hat nicht alle Tests angemeldet: "), std::string::npos) << run.errors;
    EXPECT_EQ(run.exitStatus, 2);
}

TEST_P(HostCatch2Children, DoNotStopOtherCasesIfTheyCrash)
{
    std::vector<std::wstring> options = GetParam();
    options.insert(options.end(), {L"-i", L":(aborts|buffers are set up)$"});

    const SHostRun run = Run({L"vectors", L"fixtures"}, options);

    ExpectLines(run, {"aborts... FEHLER (Unbekannter Fehler)", "buffers are set up... OK"});
    EXPECT_EQ(run.exitStatus, 1);
}

const std::vector<std::vector<std::wstring>> c_ChildModes = {{L"-s"}, {L"-x", L"-w", L"4"}};

INSTANTIATE_TEST_SUITE_P(Modes, HostCatch2Children, testing::ValuesIn(c_ChildModes));

TEST_F(RunnerCatch2, ReturnsStatus77IfTheTestCaseSkips)
{
    m_folder.MakeFolder(L"data/vectors");

    const SHostRun run =
        RunRunner({L"case", L"vectors:skips", L"--", L"-d", m_folder.GetPathOf(L"data"), L"--dll", m_module});

    EXPECT_EQ(run.exitStatus, 77) << run.errors;
    EXPECT_NE(run.output.find("INFO:  Übersprungen: no coprocessor"), std::string::npos) << run.output;
}

INSTANTIATE_TEST_SUITE_P(Modes, HostCatch2, testing::ValuesIn(c_Modes));

} // namespace
