#include "testing/lutestsuite/run/preparation.h"

#include "base/lbassert.h"
#include "base/os/files.h"
#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuite/selection/selection.h"

namespace LuTestSuiteRun
{

CPreparation::CPreparation(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment)
    : m_environment(environment), m_assertDialog(setup.params.assertDialog),
      m_dataDirectory(LbOs::GetFullPath(setup.dataDir)), m_includeConfig(LbOs::GetFullPath(setup.includeConfig))
{
    LuTestSuite::LoadTestModules(setup, environment);
    LbAssert::SetDialogEnabled(m_assertDialog);
    environment.SetExecutableDirectoryAsWorkingDirectory();
}

CPreparation::~CPreparation()
{
    if (!m_assertDialog)
    {
        LbAssert::SetDialogEnabled(true);
    }
    m_environment.RestoreWorkingDirectory();
}

} // namespace LuTestSuiteRun
