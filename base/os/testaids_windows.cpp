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

std::optional<long> LbOs::Fork()
{
    return std::nullopt;
}

void LbOs::WaitForFork(long /*number*/) {}

bool LbOs::CallWhileFlushing(void (* /*function*/)())
{
    return false;
}

bool LbOs::ResetRealTimeSignals()
{
    return false;
}

bool LbOs::SetInterruptedOften(bool /*isInterrupted*/)
{
    return false;
}

bool LbOs::SetPagesForbidden(bool /*areForbidden*/)
{
    return false;
}

bool LbOs::SetSignalsForbidden(bool /*areForbidden*/)
{
    return false;
}
