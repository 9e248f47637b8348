#include "base/os/desktop.h"

#include "base/os/windows/api.h"

#include <objbase.h>
#include <shellapi.h>

void LbOs::OpenOnDesktop(const std::wstring& path)
{
    using Windows::FindSystemFunction;
    const auto initialize = FindSystemFunction<decltype(CoInitializeEx)>(L"ole32.dll", "CoInitializeEx");
    const auto uninitialize = FindSystemFunction<decltype(CoUninitialize)>(L"ole32.dll", "CoUninitialize");
    const auto execute = FindSystemFunction<decltype(ShellExecuteExW)>(L"shell32.dll", "ShellExecuteExW");
    if (initialize == nullptr || uninitialize == nullptr || execute == nullptr)
    {
        return;
    }
    // Some of the shell's handlers are COM components.
    const HRESULT initialized = initialize(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
    SHELLEXECUTEINFOW call = {};
    call.cbSize = sizeof(call);
    call.fMask = SEE_MASK_FLAG_NO_UI | SEE_MASK_NOASYNC;
    call.lpVerb = L"open";
    call.lpFile = path.c_str();
    call.nShow = SW_SHOWNORMAL;
    // The result is meaningless: the shell also reports success when nothing was opened.
    execute(&call);
    if (SUCCEEDED(initialized))
    {
        uninitialize();
    }
}
