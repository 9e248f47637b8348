#include "base/os/heapfunctions.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <malloc.h>

#include "base/os/windows/api.h"

namespace
{

HMODULE findModule(const void* address) noexcept
{
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       static_cast<const wchar_t*>(address), &module);
    return module;
}

/// Follows an imported address to the function itself: the address is either the function or a jump through the import
/// table. Works for any name of the run-time library. Null if the function belongs to this library.
template<typename F>
void* findImported(F* function) noexcept
{
    auto* address = reinterpret_cast<std::uint8_t*>(function);
    constexpr std::uint8_t c_Jump[] = {0xFF, 0x25};
    if (std::memcmp(address, c_Jump, sizeof(c_Jump)) == 0)
    {
        std::int32_t distance = 0;
        std::memcpy(&distance, address + sizeof(c_Jump), sizeof(distance));
        std::memcpy(&address, address + sizeof(c_Jump) + sizeof(distance) + distance, sizeof(address));
    }
    return findModule(address) == findModule(reinterpret_cast<const void*>(&findModule)) ? nullptr : address;
}

/// Determined when the library is loaded, because threads may be frozen later.
const HANDLE s_heap = reinterpret_cast<HANDLE>(_get_heap_handle());

} // namespace

const bool LbOs::c_ReallocCallsMalloc = false;

void LbOs::LockHeap() noexcept
{
    HeapLock(s_heap);
}

void LbOs::UnlockHeap() noexcept
{
    HeapUnlock(s_heap);
}

LbOs::SHeapFunctions LbOs::GetHeapFunctions() noexcept
{
    const SHeapFunctions functions = {findImported(std::malloc), findImported(std::free), findImported(std::realloc)};
    const HMODULE runtime = findModule(functions.malloc);
    const bool areTogether = functions.malloc != nullptr && functions.free != nullptr && functions.realloc != nullptr &&
                             findModule(functions.free) == runtime && findModule(functions.realloc) == runtime;
    return areTogether ? functions : SHeapFunctions();
}
