#include "base/os/desktop.h"

#include "base/os/windows_api.h"

#include <objbase.h>
#include <shellapi.h>

void LbOs::OpenOnDesktop(const std::wstring& path)
{
    // Some of the shell's handlers are components.
    const HRESULT initialized = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
    SHELLEXECUTEINFOW call = {};
    call.cbSize = sizeof(call);
    call.fMask = SEE_MASK_FLAG_NO_UI | SEE_MASK_NOASYNC;
    call.lpVerb = L"open";
    call.lpFile = path.c_str();
    call.nShow = SW_SHOWNORMAL;
    // Success says nothing: it is reported when nothing was opened, too.
    ShellExecuteExW(&call);
    if (SUCCEEDED(initialized))
    {
        CoUninitialize();
    }
}
