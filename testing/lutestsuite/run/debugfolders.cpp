#include "testing/lutestsuite/run/debugfolders.h"

#include "base/lbdatetime.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"

namespace LuTestSuiteRun
{

CDebugFolders::CDebugFolders()
    : m_root(LbFileSystem::GetDirectory(LbFileSystem::eDK_DebugOutput) + LbDateTime::FormatNow(L"Y-m-d H.i.s"))
{
}

std::wstring CDebugFolders::GetFolder(const std::wstring& caseName) const
{
    return m_root + LbPath::c_Separator + LbPath::ToSafeName(caseName);
}

} // namespace LuTestSuiteRun
