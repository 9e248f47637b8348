#include "base/os/modules.h"

#include "base/lbexception.h"
#include "base/os/windows/api.h"

namespace
{

/// Prevents system dialogs about failed loads on the calling thread.
class CNoDialogScope
{
public:
    CNoDialogScope() { SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &m_former); }
    ~CNoDialogScope() { SetThreadErrorMode(m_former, nullptr); }
    CNoDialogScope(const CNoDialogScope&) = delete;
    CNoDialogScope& operator=(const CNoDialogScope&) = delete;

private:
    DWORD m_former = 0;
};

/// The system's message for an error, in one line; `subject` replaces the placeholder in it.
std::wstring describeError(DWORD error, const std::wstring& subject)
{
    wchar_t* buffer = nullptr;
    const DWORD length =
        FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                       nullptr, error, 0, reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
    std::wstring text = length > 0 ? std::wstring(buffer, length) : L"Fehler " + std::to_wstring(error);
    LocalFree(buffer);
    text.erase(text.find_last_not_of(L"\r\n ") + 1);
    const std::size_t insert = text.find(L"%1");
    return insert == std::wstring::npos ? text : text.replace(insert, 2, subject);
}

} // namespace

bool LbOs::LoadModule(const std::wstring& path, std::wstring& reason)
{
    const CNoDialogScope noDialog;
    try
    {
        if (LoadLibraryExW(Windows::ToSystemPath(path).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH) != nullptr)
        {
            return true;
        }
        reason = describeError(GetLastError(), path);
    }
    catch (...)
    {
        // The constructor of a static object threw, and the loader passed the exception on.
        reason = LbDescribeCurrentException();
    }
    return false;
}

std::wstring LbOs::GetModulePathOf(const void* address)
{
    const HMODULE module = Windows::FindModuleOf(address);
    if (module == nullptr)
    {
        return {};
    }
    return Windows::ReadText(
        [module](wchar_t* buffer, DWORD size) { return GetModuleFileNameW(module, buffer, size); });
}
