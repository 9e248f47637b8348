/// The one place that includes <windows.h>, and what the Windows side of the platform layer shares. Internal to
/// base/os.
#pragma once

#ifndef UNICODE
#define UNICODE
#endif
#ifndef _UNICODE
#define _UNICODE
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef _WIN32_WINNT
#define _WIN32_WINNT 0x0A00
#endif
#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>

namespace LbOs::Windows
{

/// Calls `read(buffer, size)`, which gives the text's length, the size it needs or 0 on failure as the system's calls
/// do, with larger buffers until the text fits. Empty on failure.
template<typename F>
std::wstring ReadText(const F& read)
{
    std::wstring buffer(MAX_PATH, L'\0');
    while (true)
    {
        const std::size_t length = read(buffer.data(), static_cast<DWORD>(buffer.size()));
        if (length < buffer.size())
        {
            buffer.resize(length);
            return buffer;
        }
        buffer.resize(std::max(length + 1, buffer.size() * 2));
    }
}

/// The module that contains `address`; null when none does. Its life is not prolonged.
inline HMODULE FindModuleOf(const void* address)
{
    constexpr DWORD c_Flags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    HMODULE module = nullptr;
    // A null address would ask for the executable.
    const bool isFound =
        address != nullptr && GetModuleHandleExW(c_Flags, static_cast<LPCWSTR>(address), &module) != FALSE;
    return isFound ? module : nullptr;
}

/// A function of one of the system's libraries, which stays loaded from then on; null when there is none. For libraries
/// that hardly a process needs: with one that is linked every start of a process takes longer, and with the libraries
/// of windows and of the shell twice as long.
template<typename Function>
Function* FindSystemFunction(const wchar_t* library, const char* name)
{
    const HMODULE module = LoadLibraryExW(library, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    void* const function = module == nullptr ? nullptr : reinterpret_cast<void*>(GetProcAddress(module, name));
    return reinterpret_cast<Function*>(function);
}

struct SCloseHandle
{
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};

/// An owned handle; null where there is none.
using Handle = std::unique_ptr<void, SCloseHandle>;

/// The path in the form that system calls take at any length: "\\?\" stands in front of long ones. A path with a zero
/// character inside becomes the empty path, since the system would cut it.
std::wstring ToSystemPath(const std::wstring& path);

} // namespace LbOs::Windows
