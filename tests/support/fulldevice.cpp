#include "tests/support/fulldevice.h"

#include "base/lbfilesystem.h"

std::wstring GetFullDevice()
{
    const std::wstring device = L"/dev/full";
    return LbFileSystem::IsFile(device) ? device : std::wstring();
}
