#include "base/os/testaids.h"

#include "base/os/windows_api.h"

bool LbOs::LoadAndUnloadModule(const std::wstring& path)
{
    const HMODULE module = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    return module != nullptr && FreeLibrary(module) != FALSE;
}

bool LbOs::MakePipeFile(const std::wstring& /*path*/)
{
    return false;
}

std::optional<int> LbOs::RunInFork(const std::function<int()>& /*function*/)
{
    return std::nullopt;
}

std::optional<int> LbOs::RunInForkOfSameNumber(const std::function<int()>& /*function*/)
{
    return std::nullopt;
}

bool LbOs::CallCanceled(const std::function<void()>& /*function*/)
{
    return false;
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

bool LbOs::MakePipe(const std::wstring& /*path*/)
{
    return false;
}

std::shared_ptr<void> LbOs::HoldFile(const std::wstring& path)
{
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    return file == INVALID_HANDLE_VALUE ? nullptr : std::shared_ptr<void>(file, CloseHandle);
}

std::optional<std::uint64_t> LbOs::MeasurePeakMemory(const std::function<bool()>& /*function*/)
{
    return std::nullopt;
}

std::optional<std::wstring> LbOs::DescribeGraphicsIn(const std::wstring& /*folder*/)
{
    return std::nullopt;
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
