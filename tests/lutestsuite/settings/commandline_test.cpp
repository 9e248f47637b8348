// The options of the command line and their effect on the setup.

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/lbpath.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "tests/support/capturedoutput.h"
#include "tests/support/fields.h"
#include "tests/support/scopedfolder.h"

namespace
{

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using Arguments = std::vector<const wchar_t*>;

class CommandLine : public testing::Test
{
protected:
    /// Processes these arguments after the program's name; expects that they are accepted.
    void Process(Arguments arguments)
    {
        arguments.insert(arguments.begin(), L"LuTestSuiteCLI");
        EXPECT_TRUE(
            LuTestSuiteUtils::ProcessCommandLine(m_setup, static_cast<int>(arguments.size()), arguments.data()));
    }

    Fields GetChanges() const { return GetChangedFields(m_setup); }

    LuTestSuiteSetup m_setup;
    CapturedOutput m_output;
};

struct SOptionCase
{
    Arguments arguments;
    Fields changes;
};

class CommandLineOption : public CommandLine, public testing::WithParamInterface<SOptionCase>
{
};

TEST_P(CommandLineOption, ChangesItsFieldsOnly)
{
    Process(GetParam().arguments);

    EXPECT_THAT(GetChanges(), ElementsAreArray(GetParam().changes));
}

// The options are in the order of their registration. The data directory has its own tests, because it must exist.
INSTANTIATE_TEST_SUITE_P(
    All, CommandLineOption,
    testing::Values(
        SOptionCase{{L"-i", L"muster"}, {"includes[]=muster"}},
        SOptionCase{{L"--include", L"muster"}, {"includes[]=muster"}},
        SOptionCase{{L"-e", L"muster"}, {"excludes[]=muster"}},
        SOptionCase{{L"--exclude", L"muster"}, {"excludes[]=muster"}},
        SOptionCase{{L"--include-config", L"a.xml"}, {"includeConfig=a.xml"}},
        SOptionCase{{L"--track-heap"}, {"trackHeap=true"}}, SOptionCase{{L"--dump-heap"}, {"dumpHeap=true"}},
        SOptionCase{{L"--break-alloc-id", L"18446744073709551614"}, {"breakAllocId=18446744073709551614"}},
        SOptionCase{{L"--break-alloc-size", L"4294967296"}, {"breakAllocSize=4294967296"}},
        SOptionCase{{L"-x"}, {"external=true"}}, SOptionCase{{L"--external"}, {"external=true"}},
        SOptionCase{{L"-s"}, {"external=true", "isolated=true"}},
        SOptionCase{{L"--isolated"}, {"external=true", "isolated=true"}},
        SOptionCase{{L"--no-assert-dialog"}, {"assertDialog=false"}}, SOptionCase{{L"-v"}, {"verbose=true"}},
        SOptionCase{{L"--verbose"}, {"verbose=true"}}, SOptionCase{{L"--de-verbose-output"}, {"deVerboseOutput=true"}},
        SOptionCase{{L"--de-debugging-serialization"}, {"deDebuggingSerialization=true"}},
        SOptionCase{{L"--de-predefined-breakpoints"}, {"dePredefinedBreakPoints=true"}},
        SOptionCase{{L"-t", L"30"}, {"timeOutSec=30"}}, SOptionCase{{L"--time-out-sec", L"30"}, {"timeOutSec=30"}},
        SOptionCase{{L"-r", L"5"}, {"repetitions=5", "repetitionsGiven=true"}},
        SOptionCase{{L"--repetitions", L"1"}, {"repetitionsGiven=true"}},
        SOptionCase{{L"-w", L"3"}, {"parallel=true", "workerThreads=3"}},
        SOptionCase{{L"--worker-threads", L"3"}, {"parallel=true", "workerThreads=3"}},
        SOptionCase{{L"-c", L"100"}, {"testCaseMax=100"}}, SOptionCase{{L"--test-case-max", L"0"}, {"testCaseMax=0"}},
        SOptionCase{{L"--message-report-max", L"7"}, {"messageReportMax=7"}}, SOptionCase{{L"-q"}, {"queryMode=true"}},
        SOptionCase{{L"--query-mode"}, {"queryMode=true"}},
        SOptionCase{{L"--archive-run", L"nacht"}, {"archiveRun=nacht"}},
        SOptionCase{{L"--list-duplicates"}, {"duplicateMode=1"}},
        SOptionCase{{L"--delete-duplicates"}, {"duplicateMode=2"}},
        SOptionCase{{L"--list-disabled"}, {"listDisabled=true"}},
        SOptionCase{{L"--xml", L"a.xml"}, {"xmlReport=a.xml"}},
        SOptionCase{{L"--diff-in", L"a.xml"}, {"diffInputs[]=a.xml"}},
        SOptionCase{{L"--diff-out", L"a.html"}, {"diffOutput=a.html"}},
        SOptionCase{{L"--html", L"a.html"}, {"htmlReport=a.html"}},
        SOptionCase{{L"-a"}, {"autoHtml=true", "openReports=true"}},
        SOptionCase{{L"--autohtml"}, {"autoHtml=true", "openReports=true"}}, SOptionCase{{L"-o"}, {"openReports=true"}},
        SOptionCase{{L"--open"}, {"openReports=true"}}, SOptionCase{{L"--small-report"}, {"smallReport=true"}},
        SOptionCase{{L"--no-css"}, {"writeCss=false"}}, SOptionCase{{L"--no-js"}, {"writeJs=false"}},
        SOptionCase{{L"-h"}, {}}, SOptionCase{{L"--help"}, {}}, SOptionCase{{L"--dll", L"Modul"}, {"dlls[]=Modul"}},
        SOptionCase{{L"--memory-id", L"m"}, {"memoryId=m"}},
        SOptionCase{{L"--request-event-id", L"r"}, {"requestEventId=r"}},
        SOptionCase{{L"--response-event-id", L"r"}, {"responseEventId=r"}},
        SOptionCase{{L"--no-regex"}, {"noRegex=true"}}, SOptionCase{{L"--tolerate-warnings"}, {}}));

TEST_F(CommandLine, AcceptsBothNamesOfTheDataDirectoryOption)
{
    const ScopedFolder folder;
    for (const wchar_t* name : {L"-d", L"--data-dir"})
    {
        m_setup.dataDir.clear();
        Process({name, folder.GetPath().c_str()});
        EXPECT_EQ(m_setup.dataDir, folder.GetPath());
    }
    EXPECT_EQ(m_output.GetText(), L"");
}

TEST_F(CommandLine, PutsASeparatorBehindTheDataDirectory)
{
    const ScopedFolder folder;
    const std::wstring withoutSeparator = LbPath::WithoutSeparator(folder.GetPath());

    Process({L"-d", withoutSeparator.c_str()});

    EXPECT_EQ(m_setup.dataDir, folder.GetPath());
}

TEST_F(CommandLine, EnablesToleranceOfWarnings)
{
    m_setup.tolerateWarnings = false;

    Process({L"--tolerate-warnings"});

    EXPECT_TRUE(m_setup.tolerateWarnings);
}

TEST_F(CommandLine, CollectsEveryOccurrenceOfListOptions)
{
    Process({L"-i", L"i1", L"-e", L"e1", L"--diff-in", L"d1", L"--dll", L"m1", L"--include", L"i2", L"--exclude", L"e2",
             L"--diff-in", L"d2", L"--dll", L"m2"});

    EXPECT_THAT(m_setup.includes, ElementsAre(L"i1", L"i2"));
    EXPECT_THAT(m_setup.excludes, ElementsAre(L"e1", L"e2"));
    EXPECT_THAT(m_setup.diffInputs, ElementsAre(L"d1", L"d2"));
    EXPECT_THAT(m_setup.dlls, ElementsAre(L"m1", L"m2"));
}

TEST_F(CommandLine, UsesTheLastOccurrenceOfAnOptionWithASingleValue)
{
    Process({L"--xml", L"a.xml", L"-r", L"2", L"--delete-duplicates", L"--xml", L"b.xml", L"--repetitions", L"3",
             L"--list-duplicates"});

    EXPECT_THAT(GetChanges(),
                ElementsAre("repetitions=3", "repetitionsGiven=true", "xmlReport=b.xml", "duplicateMode=1"));
}

TEST_F(CommandLine, UsesTheHardwareThreadsForParallelRuns)
{
    for (const wchar_t* name : {L"-p", L"--parallel"})
    {
        m_setup = LuTestSuiteSetup();
        Process({name});
        EXPECT_TRUE(m_setup.params.parallel);
        EXPECT_EQ(m_setup.params.workerThreads, LuTestSuiteUtils::GetDefaultThreadCount());
    }
}

TEST_F(CommandLine, UsesAThreadCountAfterParallel)
{
    Process({L"-p", L"-w", L"3"});

    EXPECT_THAT(GetChanges(), ElementsAre("parallel=true", "workerThreads=3"));
}

TEST_F(CommandLine, KeepsAThreadCountBeforeParallel)
{
    Process({L"-w", L"3", L"-p"});

    EXPECT_THAT(GetChanges(), ElementsAre("parallel=true", "workerThreads=3"));
}

TEST_F(CommandLine, ReplacesAThreadCountOfZeroBeforeParallel)
{
    Process({L"-w", L"0", L"-p"});

    EXPECT_TRUE(m_setup.params.parallel);
    EXPECT_EQ(m_setup.params.workerThreads, LuTestSuiteUtils::GetDefaultThreadCount());
}

TEST_F(CommandLine, KeepsAThreadCountOfZeroWithoutParallel)
{
    Process({L"-w", L"0"});

    EXPECT_THAT(GetChanges(), ElementsAre("parallel=true"));
}

struct SNumberCase
{
    const wchar_t* text;
    std::int32_t expected;
};

class CommandLineNumber : public CommandLine, public testing::WithParamInterface<SNumberCase>
{
};

TEST_P(CommandLineNumber, IsReadLeniently)
{
    Process({L"-t", GetParam().text, L"--message-report-max", GetParam().text});

    EXPECT_EQ(static_cast<std::int32_t>(m_setup.params.timeOutSec), GetParam().expected);
    EXPECT_EQ(m_setup.messageReportMax, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(All, CommandLineNumber,
                         testing::Values(SNumberCase{L"abc", 0}, SNumberCase{L"12abc", 12}, SNumberCase{L" \t12", 12},
                                         SNumberCase{L"+7", 7}, SNumberCase{L" -4", -4}, SNumberCase{L"007", 7},
                                         SNumberCase{L"0x10", 0}, SNumberCase{L"3.9", 3}, SNumberCase{L"+-3", 0},
                                         SNumberCase{L"2147483647", 2147483647}));

TEST_F(CommandLine, ReadsBreakNumbersLeniently)
{
    Process({L"--break-alloc-id", L" 77x", L"--break-alloc-size", L"viel"});

    EXPECT_THAT(GetChanges(), ElementsAre("breakAllocId=77", "breakAllocSize=0"));
}

TEST_F(CommandLine, AcceptsArbitraryValues)
{
    Process({L"-i", L"^.*(a|b)\\.txt$", L"-e", L"mit Leerzeichen", L"--dll", L"/d"});

    EXPECT_THAT(GetChanges(), ElementsAre("includes[]=^.*(a|b)\\.txt$", "excludes[]=mit Leerzeichen", "dlls[]=/d"));
}

TEST_F(CommandLine, SkipsEmptyArguments)
{
    Process({L"", L"-q", L"", L"-v", L""});

    EXPECT_THAT(GetChanges(), ElementsAre("verbose=true", "queryMode=true"));
    EXPECT_EQ(m_output.GetText(), L"");
}

TEST_F(CommandLine, IgnoresTheProgramName)
{
    const wchar_t* const arguments[] = {L"--verbose", L"-q"};

    EXPECT_TRUE(LuTestSuiteUtils::ProcessCommandLine(m_setup, 2, arguments));

    EXPECT_THAT(GetChanges(), ElementsAre("queryMode=true"));
}

TEST_F(CommandLine, AcceptsModesWithoutADataDirectorySilently)
{
    for (const Arguments& arguments :
         {Arguments{L"-q"}, Arguments{L"--archive-run", L"nacht"}, Arguments{L"--diff-in", L"a.xml"}})
    {
        m_setup = LuTestSuiteSetup();
        Process(arguments);
        EXPECT_THAT(m_output.GetLines(), IsEmpty()) << arguments[0];
    }
}

TEST(GetDefaultThreadCount, IsAtLeastOne)
{
    EXPECT_GE(LuTestSuiteUtils::GetDefaultThreadCount(), 1U);
}

} // namespace
