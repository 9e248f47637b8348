/// What differs between the platforms at compile time. The only header with a platform switch.
#pragma once

#include <cstdint>

#ifdef _WIN32
#define LB_OS_EXPORT __declspec(dllexport)
#define LB_OS_IMPORT __declspec(dllimport)
#else
#define LB_OS_EXPORT __attribute__((visibility("default")))
#define LB_OS_IMPORT __attribute__((visibility("default")))
#endif

namespace LbOs
{

#ifdef _WIN32
inline constexpr wchar_t c_PathSeparator = L'\\';
inline constexpr const wchar_t* c_PathSeparators = L"\\/";
inline constexpr const wchar_t* c_ModuleSuffix = L".dll";
inline constexpr const wchar_t* c_ExecutableSuffix = L".exe";

/// An id, never 0, that is unique among the running threads; a later thread may get the id of an ended one. The
/// function is inline and reads a register, because thread-local variables of shared libraries cost a function call.
inline std::uintptr_t GetThreadKey() noexcept
{
    std::uintptr_t key;
    asm("movq %%gs:0x30, %0" : "=r"(key));
    return key;
}
#else
inline constexpr wchar_t c_PathSeparator = L'/';
inline constexpr const wchar_t* c_PathSeparators = L"/";
inline constexpr const wchar_t* c_ModuleSuffix = L".so";
inline constexpr const wchar_t* c_ExecutableSuffix = L"";

inline std::uintptr_t GetThreadKey() noexcept
{
    std::uintptr_t key;
    asm("movq %%fs:0, %0" : "=r"(key));
    return key;
}
#endif

} // namespace LbOs
