/// The only header that includes <windows.h>, and helpers shared by the Windows side of the platform layer. Internal to
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

/// Calls `read(buffer, size)` with growing buffers until the text fits. Like the system's calls, `read` returns the
/// text's length, the required size if the buffer is too small, or 0 on failure. Empty on failure.
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

/// The module that contains `address`; null if there is none. Does not keep the module loaded.
inline HMODULE FindModuleOf(const void* address)
{
    constexpr DWORD c_Flags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    HMODULE module = nullptr;
    // A null address would mean the executable.
    const bool isFound =
        address != nullptr && GetModuleHandleExW(c_Flags, static_cast<LPCWSTR>(address), &module) != FALSE;
    return isFound ? module : nullptr;
}

/// A function of a system library; null if the library or the function does not exist. The library stays loaded. For
/// rarely needed libraries: linking them slows down each process start, and the window and shell libraries double its
/// time.
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

/// An owned handle, or null.
using Handle = std::unique_ptr<void, SCloseHandle>;

/// The path in a form that system calls accept at any length: long paths get the prefix "\\?\". A path that contains a
/// null character becomes empty, because the system would cut it.
std::wstring ToSystemPath(const std::wstring& path);

} // namespace LbOs::Windows
