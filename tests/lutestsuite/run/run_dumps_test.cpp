// The memory dumps of cases that crash their child process or exceed the time limit.

#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "tests/support/binaryfolder.h"
#include "tests/support/eventrecorder.h"
#include "tests/support/externalruntest.h"
#include "tests/support/hostprocess.h"
#include "tests/support/scopedfolder.h"

namespace
{

constexpr const wchar_t* c_Debugger = L"/usr/bin/gdb";

class RunDumps : public ExternalRunTest
{
protected:
    void SetUp() override
    {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        GTEST_SKIP() << "sanitizers handle crashes themselves";
#endif
    }

    EventRecorder::SEnd RunFor(const std::wstring& caseName, const std::wstring& dumpDirectory)
    {
        LuTestSuiteSetup setup = MakeCrash({L"vorher", caseName});
        setup.unitTests[0].cases[1].parameters[L"TimeOutSec"] = std::uint32_t{0};
        LuTestSuiteRun::SRunOptions options;
        options.takeStacks = true;
        options.dumpDirectory = dumpDirectory;
        EventRecorder events;
        LuTestSuiteRun::Run(setup, m_environment, events, options);
        return events.ends.at(1);
    }

    /// Runs a case that crashes. On Windows, skips the test if no dump was written: under Wine a dump takes seconds,
    /// and a crashed process does not wait that long. The caller must return if IsSkipped.
    void RunAbort()
    {
        m_end = RunFor(L"abort", m_folder.GetPath());
        const std::wstring reason = LbPath::c_Separator == L'\\' ? L"endete mit Status 3" : L"endete mit Signal 6 ";
        EXPECT_NE(m_end.end.reason.find(reason), std::wstring::npos) << LbEncoding::ToUtf8(m_end.end.reason);
        if (LbPath::c_Separator == L'\\' && !m_end.end.dumpFailure.empty())
        {
            GTEST_SKIP() << LbEncoding::ToUtf8(m_end.end.dumpFailure);
        }
    }

    const ScopedFolder m_folder;
    EventRecorder::SEnd m_end;
};

TEST_F(RunDumps, AreNamedAfterTheCase)
{
    RunAbort();
    if (IsSkipped())
    {
        return;
    }

    EXPECT_EQ(m_end.end.dumpFailure, L"");
    const std::wstring expected =
        LbPath::WithSeparator(m_folder.GetPath()) + L"CCrashModel_abort-" + std::to_wstring(m_end.end.processId) + L".";
    EXPECT_TRUE(m_end.end.dumpFile.starts_with(expected)) << LbEncoding::ToUtf8(m_end.end.dumpFile);
    EXPECT_TRUE(LbFileSystem::IsFile(m_end.end.dumpFile));
}

TEST_F(RunDumps, HaveTheFormatOfThePlatform)
{
    RunAbort();
    if (IsSkipped())
    {
        return;
    }
    const std::string bytes = LbFileSystem::ReadFile8Bit(m_end.end.dumpFile);

    EXPECT_TRUE(bytes.starts_with(LbPath::c_Separator == L'\\' ? "MDMP" : "\177ELF"));
}

TEST_F(RunDumps, AreNamedInTheMessagesBeforeTheStacks)
{
    RunAbort();
    if (IsSkipped())
    {
        return;
    }

    const std::wstring& messages = m_end.info.messages;
    const std::size_t line = messages.find(L"\t\tINFO:  Speicherabbild: " + m_end.end.dumpFile + L"\n");
    EXPECT_LT(line, messages.find(L"Stapel von Thread")) << LbEncoding::ToUtf8(messages);
}

TEST_F(RunDumps, AreNotWrittenUnlessRequested)
{
    const EventRecorder::SEnd end = RunFor(L"abort", L"");

    EXPECT_EQ(end.end.dumpFile, L"");
    EXPECT_EQ(end.end.dumpFailure, L"");
}

TEST_F(RunDumps, CauseAWarningIfTheyCannotBeWritten)
{
    const EventRecorder::SEnd end = RunFor(L"abort", m_folder.GetPathOf(L"fehlt"));

    EXPECT_EQ(end.end.dumpFile, L"");
    EXPECT_EQ(end.end.dumpFailure, L"den Ordner gibt es nicht");
    EXPECT_NE(end.info.messages.find(L"\t\tWARNUNG: Das Speicherabbild konnte nicht geschrieben werden: "),
              std::wstring::npos)
        << LbEncoding::ToUtf8(end.info.messages);
    EXPECT_FALSE(end.end.stacks.empty());
    EXPECT_FALSE(end.end.reason.empty());
}

/// A case, and a function on the stack of the thread at fault.
struct SFault
{
    const wchar_t* caseName;
    const char* function;
};

void PrintTo(const SFault& fault, std::ostream* stream)
{
    *stream << LbEncoding::ToUtf8(fault.caseName);
}

class RunDumpsOf : public RunDumps, public testing::WithParamInterface<SFault>
{
};

TEST_P(RunDumpsOf, ShowTheFunctionAtFaultInADebugger)
{
    if (LbPath::c_Separator == L'\\' || !LbFileSystem::IsFile(c_Debugger))
    {
        GTEST_SKIP() << "needs gdb, for cores of Linux";
    }
    const std::wstring core = RunFor(GetParam().caseName, m_folder.GetPath()).end.dumpFile;
    const std::wstring host =
        LbFileSystem::IsFile(GetBinaryFolder() + L"LuTestSuiteCLID") ? L"LuTestSuiteCLID" : L"LuTestSuiteCLI";
    SHostOptions options;
    options.program = c_Debugger;
    const SHostRun debugger =
        RunHost({L"-nx", L"-batch", L"-ex", L"backtrace 32", GetBinaryFolder() + host, core}, options);

    EXPECT_NE(debugger.output.find(GetParam().function), std::string::npos) << debugger.output << debugger.errors;
}

INSTANTIATE_TEST_SUITE_P(Cases, RunDumpsOf,
                         testing::Values(SFault{L"Zugriffsverletzung", "CCrashModel::InitSubtests"},
                                         SFault{L"Stapelüberlauf", "overflowStack"},
                                         SFault{L"abort", "CCrashModel::InitSubtests"},
                                         SFault{L"Exception im Thread", "throwOutOfThread"},
                                         SFault{L"Verklemmung", "CCrashModel::InitSubtests"}));

} // namespace
