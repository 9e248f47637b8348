#include "testing/lutestsuite/utils/openpage.h"

#include "base/lbfilesystem.h"
#include "base/os/desktop.h"

void LuTestSuite::OpenPage(const std::wstring& path)
{
    if (LbFileSystem::IsFile(path))
    {
        LbOs::OpenOnDesktop(LbOs::GetFullPath(path));
    }
}
