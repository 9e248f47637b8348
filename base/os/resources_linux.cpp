#include "base/os/resources.h"

#include <cstddef>
#include <memory>

#include <dlfcn.h>

#include "base/os/resourcetable.h"

namespace
{

/// The table of the module at `info`; null when it has none.
const LbOs::SEmbeddedResource* findTable(const Dl_info& info)
{
    std::unique_ptr<void, int (*)(void*)> module(dlopen(info.dli_fname, RTLD_LAZY | RTLD_NOLOAD), &dlclose);
    if (module == nullptr)
    {
        // The loader does not know the program by its path.
        module.reset(dlopen(nullptr, RTLD_LAZY));
    }
    void* const table = module != nullptr ? dlsym(module.get(), "LbEmbeddedResources") : nullptr;

    // dlsym also searches the modules that this one needs, so the table may belong to one of them.
    Dl_info owner = {};
    const bool isOwn = table != nullptr && dladdr(table, &owner) != 0 && owner.dli_fbase == info.dli_fbase;
    return isOwn ? static_cast<const LbOs::SEmbeddedResource*>(table) : nullptr;
}

} // namespace

std::string_view LbOs::FindEmbeddedResource(const void* address, const std::wstring& name, const std::wstring& type)
{
    Dl_info info = {};
    if (dladdr(address, &info) == 0)
    {
        return {};
    }
    for (const SEmbeddedResource* entry = findTable(info); entry != nullptr && entry->name != nullptr; ++entry)
    {
        if (entry->name == name && entry->type == type)
        {
            return {entry->begin, static_cast<std::size_t>(entry->end - entry->begin)};
        }
    }
    return {};
}
