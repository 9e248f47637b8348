/// The command "case": one case, for ctest and for developers.

#include <algorithm>
#include <limits>

#include "base/lbencoding.h"
#include "base/lbformat.h"
#include "base/lbtimer.h"
#include "base/os/interruption.h"
#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuite/lutestsuitereport.h"
#include "testing/lutestsuite/lutestsuiterunevents.h"
#include "testing/lutestsuitehost/hostmain.h"
#include "testing/lutestsuiterunner/commands/commands.h"
#include "testing/lutestsuiterunner/console/casetext.h"
#include "testing/lutestsuiterunner/console/messages.h"
#include "testing/lutestsuiterunner/console/terminal.h"
#include "testing/lutestsuiterunner/execution/caseend.h"
#include "testing/lutestsuiterunner/execution/caselist.h"
#include "testing/lutestsuiterunner/execution/guards.h"
#include "testing/lutestsuiterunner/execution/planning.h"
#include "testing/lutestsuiterunner/model/skips.h"
#include "testing/lutestsuiterunner/model/textescape.h"

namespace Runner
{

namespace
{

/// The exit status for a case that is disabled or was skipped; the usual value of ctest's property SKIP_RETURN_CODE.
constexpr int c_Skipped = 77;

/// The status of a failed case is this number plus the number of its result. See the help of the command.
constexpr int c_FirstFailure = 10;

/// Stores how the case ended.
class CCaseObserver : public LuTestSuiteRun::IRunObserver
{
public:
    void OnCaseStarted(const LuTestSuiteRun::SCaseStarted& /*started*/) override { m_start = m_timer.GetElapsed(); }

    void OnCaseFinished(const LuTestSuiteRun::SCaseFinished& finished) override
    {
        m_attempt.result = MakeCaseEnd(finished);
        // The library measures no time for a case whose child process did not answer.
        if (m_attempt.result.info.time == 0)
        {
            m_attempt.result.info.time = m_timer.GetElapsed() - m_start;
        }
        m_attempt.ended = {1, 1};
    }

    const SAttempt& GetAttempt() const { return m_attempt; }

private:
    const LbTimer m_timer{LbTimer::eR_NanoSecond};
    std::uint64_t m_start = 0;
    SAttempt m_attempt;
};

/// The cases with this full name. Without any, those whose class and case have this name, in whichever folder.
std::vector<std::uint32_t> findNamed(const SPlan& plan, const std::wstring& name)
{
    std::vector<std::uint32_t> full;
    std::vector<std::uint32_t> withoutFolder;
    for (std::uint32_t index = 0; index < plan.cases.size(); ++index)
    {
        const SPlannedCase& planned = plan.cases[index];
        const LuTestSuite::SUnitTest& unitTest = plan.unitTests[planned.unitTest];
        if (name == GetCaseName(plan, index))
        {
            full.push_back(index);
        }
        else if (name == unitTest.className + L":" + unitTest.cases[planned.testCase].name)
        {
            withoutFolder.push_back(index);
        }
    }
    return full.empty() ? withoutFolder : full;
}

bool isDisabled(const SPlan& plan, const std::wstring& name)
{
    return std::ranges::any_of(plan.disabled, [&](const SDisabledCase& one) {
        return name == GetUnitTestName(plan, one.dataDirectory, one.className) + L":" + one.name ||
               name == one.className + L":" + one.name;
    });
}

int getStatus(LuTestSuiteRun::ECaseRunResult result)
{
    return c_FirstFailure + static_cast<int>(result);
}

int getStatus(const SAttempt& attempt)
{
    const int interrupted = LbOs::GetExitStatus(LbOs::GetInterruption());
    if (interrupted != 0)
    {
        return interrupted;
    }
    if (FindSkipReason(attempt))
    {
        return c_Skipped;
    }
    const LuTestSuiteRun::ECaseRunResult result = attempt.result.info.result;
    return result == LuTestSuiteRun::ECaseRunResult::Ok ? LuTestSuiteHost::c_Succeeded : getStatus(result);
}

int runOne(const SPlan& plan, std::uint32_t index, LuTestSuiteSetup setup, LuTestSuiteEnvironment& environment)
{
    setup.unitTests = MakeCaseList(plan, std::vector{index}, false);
    setup.checkCallback = [] { return LbOs::GetInterruption() != LbOs::EInterruption::None; };
    LbOs::CatchInterruptions();
    ShowOnlyWarnings();
    CCaseObserver observer;
    LuTestSuiteRun::Run(setup, environment, observer, {.takeStacks = true});
    const SAttempt& attempt = observer.GetAttempt();
    const std::wstring result = FindSkipReason(attempt)
                                    ? std::wstring(L"übersprungen")
                                    : LuTestSuiteReport::toDescriptionString(attempt.result.info.result);
    CTerminal::Get().WriteOutput(
        LbFormat(L"%s: %s (%s)\n", GetCaseName(plan, index), result, FormatTime(attempt.result.info.time)) +
        DescribeFailure(plan, index, attempt, std::numeric_limits<std::size_t>::max()) + attempt.result.stacks);
    return getStatus(attempt);
}

} // namespace

int Execute(const SCaseOptions& options)
{
    if (options.name.empty())
    {
        throw std::wstring(L"Der Name des Testfalls fehlt");
    }
    MoveLibraryLinesToErrors();
    const LuTestSuiteSetup setup = ReadLibraryOptions(options.library);
    RefuseRepetitions(setup);
    LuTestSuiteEnvironment environment;
    LoadModules(setup, environment);
    const SPlan plan = MakePlan({}, setup, SelectCases(setup));
    // "list --ctest" escapes characters that CTest cannot pass on.
    const std::wstring name =
        findNamed(plan, options.name).empty() ? FromEscapedUtf8(LbEncoding::ToUtf8(options.name)) : options.name;
    if (findNamed(plan, name).empty() && isDisabled(plan, name))
    {
        CTerminal::Get().WriteOutput(LbFormat(L"%s: deaktiviert\n", name));
        return c_Skipped;
    }
    const std::vector<std::uint32_t> found = findNamed(plan, name);
    if (found.size() > 1)
    {
        throw LbFormat(L"'%s' ist mehrdeutig, zum Beispiel '%s' und '%s'", name, GetCaseName(plan, found[0]),
                       GetCaseName(plan, found[1]));
    }
    if (found.empty())
    {
        for (const std::wstring& problem : FindModuleProblems(setup))
        {
            CTerminal::Get().WriteError(LbFormat(L"Fehler: %s\n", problem));
        }
        CTerminal::Get().WriteError(LbFormat(L"Fehler: Die Auswahl enthält keinen Testfall '%s'\n", name));
        return getStatus(LuTestSuiteRun::ECaseRunResult::NoMatchingCase);
    }
    return runOne(plan, found.front(), setup, environment);
}

} // namespace Runner
