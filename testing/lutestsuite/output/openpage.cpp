#include "testing/lutestsuite/output/openpage.h"

#include "base/os/desktop.h"
#include "base/os/files.h"

void LuTestSuite::OpenPage(const std::wstring& path)
{
    LbOs::OpenOnDesktop(LbOs::GetFullPath(path));
}
