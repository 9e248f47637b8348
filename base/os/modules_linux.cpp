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
        // A static object of the module could not be made.
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
    // The executable's entry has no name in the list of modules; elsewhere it is what the shell was given.
    const char* const name = static_cast<const link_map*>(extra)->l_name;
    if (name[0] == '\0')
    {
        return GetExecutablePath();
    }
    const std::unique_ptr<char, decltype(&std::free)> full(realpath(name, nullptr), &std::free);
    return name[0] == '/' || full == nullptr ? LbEncoding::FromNative(name) : LbEncoding::FromNative(full.get());
}
