#include "base/os/modules.h"

#include <cstdlib>
#include <memory>

#include <dlfcn.h>
#include <link.h>

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/os/files.h"

bool LbOs::LoadModule(const std::wstring& path, std::wstring& reason)
{
    try
    {
        if (dlopen(LbEncoding::ToNative(path).c_str(), RTLD_NOW | RTLD_LOCAL) != nullptr)
        {
            return true;
        }
        const char* const error = dlerror();
        reason = error == nullptr ? std::wstring() : LbEncoding::FromNative(error);
    }
    catch (...)
    {
        // The constructor of a static object threw.
        reason = LbDescribeCurrentException();
    }
    return false;
}

std::wstring LbOs::GetModulePathOf(const void* address)
{
    Dl_info info = {};
    void* extra = nullptr;
    if (dladdr1(address, &info, &extra, RTLD_DL_LINKMAP) == 0)
    {
        return {};
    }
    // The loader's list has no name for the executable; dladdr would return the name that the shell used.
    const char* const name = static_cast<const link_map*>(extra)->l_name;
    if (name[0] == '\0')
    {
        return GetExecutablePath();
    }
    const std::unique_ptr<char, decltype(&std::free)> full(realpath(name, nullptr), &std::free);
    return name[0] == '/' || full == nullptr ? LbEncoding::FromNative(name) : LbEncoding::FromNative(full.get());
}
