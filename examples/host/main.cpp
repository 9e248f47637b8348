/// A host with its own user interface. It prints as text what a window would show and offer.
///
///     ExampleHost show|run|recreate DATA PAGE [PATTERN...]
///
/// "show" draws the tree of all cases, ticks the boxes of the selected ones and lists them. "run" runs the selected
/// cases and stops at the first failure. "recreate" creates their reference data again. PAGE receives the output of the
/// runner with its colours.
///
/// Exit status: 0 on success, 1 if a case of "run" failed or nothing was selected, 2 for wrong arguments or exceptions.

#include <iostream>
#include <string>
#include <vector>

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/os/files.h"
#include "base/os/process.h"
#include "examples/host/logpage.h"
#include "examples/host/treeview.h"
#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using UnitTests = std::vector<LuTestSuite::SUnitTest>;

constexpr int c_Succeeded = 0;
constexpr int c_Failed = 1;
constexpr int c_Broken = 2;

void print(const std::wstring& text)
{
    std::cout << LbEncoding::ToUtf8(text) << std::flush;
}

struct SRequest
{
    std::wstring action;
    std::wstring dataDir;
    std::wstring page;
    std::vector<std::wstring> patterns;
};

/// Stands in for a window with a progress bar and a cancel button: prints the progress, and the first failure cancels
/// the run.
class CProgress
{
public:
    explicit CProgress(const UnitTests& unitTests)
    {
        for (const LuTestSuite::SUnitTest& unitTest : unitTests)
        {
            m_total += unitTest.cases.size();
        }
    }

    bool IsCanceled() const { return m_hasFailed; }

    void Advance(ECaseRunResult result)
    {
        ++m_finished;
        m_hasFailed = m_hasFailed || result != ECaseRunResult::Ok;
        print(LbFormat(L"%u/%u\n", m_finished, m_total));
    }

private:
    std::size_t m_total = 0;
    std::size_t m_finished = 0;
    bool m_hasFailed = false;
};

class CHost
{
public:
    explicit CHost(SRequest request) : m_request(std::move(request))
    {
        // The runner changes the working directory while it runs.
        m_request.dataDir = LuTestSuiteUtils::AddBackslash(LbOs::GetFullPath(m_request.dataDir));
        m_environment.LoadTestDLLs();
        m_found = LuTestSuiteUtils::ScanDirectoryForUnitTests(m_request.dataDir, true);
        m_selected = m_found;
        LuTestSuiteUtils::FilterTestCases(m_selected, L"", m_request.patterns, {}, LuTestSuiteRun::c_NoLimit, false);
    }

    int Work()
    {
        if (m_selected.empty())
        {
            print(L"Keine Testfälle ausgewählt.\n");
            return c_Failed;
        }
        if (m_request.action == L"show")
        {
            return show();
        }
        return m_request.action == L"run" ? run() : recreate();
    }

private:
    int show()
    {
        print(DrawTree(m_found, m_selected));
        LuTestSuiteSetup setup;
        setup.dataDir = m_request.dataDir;
        setup.includes = m_request.patterns;
        LuTestSuiteUtils::RunQueryMode(setup, m_environment);
        return c_Succeeded;
    }

    int run()
    {
        CProgress progress(m_selected);
        LuTestSuiteSetup setup;
        setup.unitTests = m_selected;
        setup.checkCallback = [&progress] { return progress.IsCanceled(); };
        setup.resultCallback = [&progress](ECaseRunResult result) { progress.Advance(result); };
        const LuTestSuiteRun::SStats stats = LuTestSuiteRun::Run(setup, m_environment).stats;
        print(LbFormat(L"%u von %u erfolgreich\n", stats.total.GetCount(ECaseRunResult::Ok), stats.total.executed));
        return progress.IsCanceled() ? c_Failed : c_Succeeded;
    }

    int recreate()
    {
        CProgress progress(m_selected);
        LuTestSuiteRun::Recreate(m_environment, m_selected, LuTestSuiteRun::ETargetSystem(), false,
                                 {[&progress] { return progress.IsCanceled(); },
                                  [&progress](ECaseRunResult result) { progress.Advance(result); }});
        return c_Succeeded;
    }

    SRequest m_request;
    LuTestSuiteEnvironment m_environment;
    UnitTests m_found;
    UnitTests m_selected;
};

int work(const std::vector<std::wstring>& arguments)
{
    constexpr std::size_t c_Needed = 4;
    const bool isKnown = arguments.size() >= c_Needed &&
                         (arguments[1] == L"show" || arguments[1] == L"run" || arguments[1] == L"recreate");
    if (!isKnown)
    {
        print(L"Aufruf: ExampleHost show|run|recreate DATEN SEITE [MUSTER...]\n");
        return c_Broken;
    }
    // Never destroyed before the process ends, because outputs cannot be removed.
    static CLogPage s_page;
    LuTestSuiteOut::AddCustomOut(&s_page);
    LuTestSuiteOut::SetConsoleOut(false);
    const int status =
        CHost({arguments[1], arguments[2], arguments[3], {arguments.begin() + c_Needed, arguments.end()}}).Work();
    s_page.Save(arguments[3]);
    return status;
}

} // namespace

int main(int argumentCount, char** arguments)
{
    try
    {
        return work(LbOs::GetArguments(argumentCount, arguments));
    }
    catch (...)
    {
        print(L"Fehler: " + LbDescribeCurrentException() + L"\n");
    }
    return c_Broken;
}
