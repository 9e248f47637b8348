/// Creates reference data again, case by case.

#include <optional>

#include "base/inoncopyable.h"
#include "base/iunittestrecreate.h"
#include "testing/lutestsuite/environment/crashnotes.h"
#include "testing/lutestsuite/environment/unittestfactory.h"
#include "testing/lutestsuite/environment/workingdirectory.h"
#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuite/lutestsuiteout.h"
#include "testing/lutestsuite/lutestsuiterun.h"
#include "testing/lutestsuite/output/warning.h"
#include "testing/lutestsuite/run/consolelines.h"

namespace LuTestSuiteRun
{

namespace
{

/// Makes the executable's folder the working directory; the destructor restores the previous one, also after an
/// exception of a callback.
class CExecutableDirectory : public INonCopyable
{
public:
    explicit CExecutableDirectory(LuTestSuiteEnvironment& environment) : m_environment(environment)
    {
        m_environment.SetExecutableDirectoryAsWorkingDirectory();
    }

    ~CExecutableDirectory() { m_environment.RestoreWorkingDirectory(); }

private:
    LuTestSuiteEnvironment& m_environment;
};

/// Null if the class cannot be created, or if its RTTI record is not derived from that of LuUnitTest.
std::unique_ptr<LuUnitTest> createUnitTest(const std::wstring& className)
{
    std::unique_ptr<LuUnitTest> unitTest = LuTestSuite::CreateUnitTest(className);
    return unitTest && unitTest->IsKindOf(LuUnitTest::RTTI) ? std::move(unitTest) : nullptr;
}

/// False if there is no such sub-test, or if its data cannot be recreated.
bool recreateSubtest(LuUnitTest& unitTest, const std::wstring& name, const IUnitTestRecreate::SRequest& request)
{
    const std::optional<std::uint32_t> subtest = unitTest.FindSubtest(name);
    auto* const recreate = dynamic_cast<IUnitTestRecreate*>(&unitTest);
    if (!subtest || recreate == nullptr)
    {
        return false;
    }
    recreate->SetRequest(request);
    if (!recreate->IsRecreatable(*subtest))
    {
        return false;
    }
    LuTestSuiteOut::Write(L"\t%s...\n", name).Bold().Color(LuColor::c_BLUE);
    recreate->Recreate(*subtest);
    LuTestSuiteOut::Write(L"\t\tDatensatz wurde erneuert.\n").Bold().Color(LuColor::c_GREEN);
    return true;
}

/// Recreates the data of one case; exceptions pass through.
void recreateCase(const LuTestSuite::SUnitTest& unitTest, const std::wstring& caseName,
                  const IUnitTestRecreate::SRequest& request)
{
    const std::unique_ptr<LuUnitTest> object = createUnitTest(unitTest.className);
    if (!object)
    {
        LuTestSuite::WriteWarning(L"\tFehler: Unit-Test '%s' konnte nicht instanziert werden.\n", unitTest.className);
        return;
    }
    object->SetDataDirectory(unitTest.dataDirectory);
    object->InitSubtests();
    if (!recreateSubtest(*object, caseName, request))
    {
        LuTestSuite::WriteWarning(L"\tSubtest '%s' hat keine erneuerbaren Daten.\n", caseName);
    }
}

void recreateCaseOrReport(const LuTestSuite::SUnitTest& unitTest, const std::wstring& caseName,
                          const IUnitTestRecreate::SRequest& request)
{
    const LuTestSuite::CNamedUnderWay underWay(LuTestSuite::EActivity::RecreateCase, unitTest.className, caseName);
    // The previous case may have changed the working directory.
    LuTestSuite::EnterExecutableDirectory();
    try
    {
        recreateCase(unitTest, caseName, request);
    }
    catch (...)
    {
        LuTestSuite::WriteWarning(L"\t\tFehler: Exception während dem Neuerzeugen.\n");
    }
}

/// False if the host canceled the operation.
bool recreateAll(const std::vector<LuTestSuite::SUnitTest>& unitTests, const IUnitTestRecreate::SRequest& request,
                 const SCallbacks& callbacks)
{
    for (const LuTestSuite::SUnitTest& unitTest : unitTests)
    {
        LuTestSuiteOut::Write(L"%s:\n", unitTest.className).Bold();
        for (const LuTestSuite::STestCase& testCase : unitTest.cases)
        {
            if (callbacks.isCanceled())
            {
                return false;
            }
            recreateCaseOrReport(unitTest, testCase.name, request);
            // Reports only progress: the result is always Ok, and the console shows the outcome.
            callbacks.caseFinished(ECaseRunResult::Ok);
        }
    }
    return true;
}

bool recreateInExecutableDirectory(LuTestSuiteEnvironment& environment,
                                   const std::vector<LuTestSuite::SUnitTest>& unitTests,
                                   const IUnitTestRecreate::SRequest& request, const SCallbacks& callbacks)
{
    const LuTestSuite::CCrashNotes notes;
    const LuTestSuite::CCrashThread thread;
    const CExecutableDirectory directory(environment);
    return recreateAll(unitTests, request, callbacks);
}

} // namespace

void Recreate(LuTestSuiteEnvironment& environment, const std::vector<LuTestSuite::SUnitTest>& unitTests,
              ETargetSystem targetSystem, bool option, const SCallbacks& callbacks)
{
    const IUnitTestRecreate::SRequest request = {static_cast<std::uint32_t>(targetSystem), option};
    if (recreateInExecutableDirectory(environment, unitTests, request, callbacks))
    {
        LuTestSuiteOut::Write(L"\nNeuerzeugen der Testfälle beendet.\n");
    }
    else
    {
        WriteCanceled();
    }
}

} // namespace LuTestSuiteRun
