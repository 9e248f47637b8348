#include "base/os/testaids.h"

#include "base/os/windows_api.h"

bool LbOs::LoadAndUnloadModule(const std::wstring& path)
{
    const HMODULE module = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    return module != nullptr && FreeLibrary(module) != FALSE;
}

std::optional<int> LbOs::RunInFork(const std::function<int()>& /*function*/)
{
    return std::nullopt;
}

bool LbOs::SetSignalsForbidden(bool /*areForbidden*/)
{
    return false;
}
