#include "base/os/resources.h"

#include "base/os/windows/api.h"

std::string_view LbOs::FindEmbeddedResource(const void* address, const std::wstring& name, const std::wstring& type)
{
    const HMODULE module = Windows::FindModuleOf(address);
    const HRSRC resource = module != nullptr ? FindResourceW(module, name.c_str(), type.c_str()) : nullptr;
    const HGLOBAL loaded = resource != nullptr ? LoadResource(module, resource) : nullptr;
    const void* const bytes = loaded != nullptr ? LockResource(loaded) : nullptr;
    return bytes == nullptr ? std::string_view()
                            : std::string_view(static_cast<const char*>(bytes), SizeofResource(module, resource));
}
