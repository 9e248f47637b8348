#include "base/os/heapfunctions.h"

#include <dlfcn.h>

namespace
{

/// The run-time's own function; null if another module replaces it for the whole process.
void* findOwn(void* runtime, const char* name) noexcept
{
    void* const own = dlsym(runtime, name);
    return own == dlsym(RTLD_DEFAULT, name) ? own : nullptr;
}

} // namespace

const bool LbOs::c_ReallocCallsMalloc = true;

// Programs cannot hold the locks of this run-time's heap.
void LbOs::LockHeap() noexcept {}
void LbOs::UnlockHeap() noexcept {}

LbOs::SHeapFunctions LbOs::GetHeapFunctions() noexcept
{
    void* const runtime = dlopen("libc.so.6", RTLD_NOW | RTLD_NOLOAD);
    if (runtime == nullptr)
    {
        return {};
    }
    const SHeapFunctions functions = {findOwn(runtime, "malloc"), findOwn(runtime, "free"),
                                      findOwn(runtime, "realloc")};
    dlclose(runtime);
    const bool areAll = functions.malloc != nullptr && functions.free != nullptr && functions.realloc != nullptr;
    return areAll ? functions : SHeapFunctions();
}
