#include "base/os/heapfunctions.h"

#include "base/os/windows_api.h"

LbOs::SHeapFunctions LbOs::GetHeapFunctions() noexcept
{
    const HMODULE runtime = GetModuleHandleW(L"msvcrt.dll");
    if (runtime == nullptr)
    {
        return {};
    }
    const auto find = [runtime](const char* name) { return reinterpret_cast<void*>(GetProcAddress(runtime, name)); };
    return {find("malloc"), find("free"), find("realloc")};
}
