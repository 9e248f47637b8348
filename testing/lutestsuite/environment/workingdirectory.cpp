#include "testing/lutestsuite/environment/workingdirectory.h"

#include "base/lbdiagnostics.h"
#include "base/lbfilesystem.h"

void LuTestSuite::EnterExecutableDirectory() noexcept
try
{
    static const LbOs::CHomeDirectory s_home(LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable));
    if (!s_home.Ensure())
    {
        LbDiagnostics::Trace(L"LuTestSuite: the executable's folder cannot be made the working directory");
    }
}
catch (...)
{
    // If there is no memory for the path, the working directory does not change.
}

LuTestSuite::CKeptWorkingDirectory::CKeptWorkingDirectory() : m_directory(LbOs::GetWorkingDirectory()) {}

LuTestSuite::CKeptWorkingDirectory::~CKeptWorkingDirectory()
{
    m_directory.Ensure();
}
