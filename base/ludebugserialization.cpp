#include "base/ludebugserialization.h"

#include <mutex>

namespace
{

struct SDirectory
{
    std::mutex mutex;
    std::wstring path;
};

SDirectory& getDirectory()
{
    // Never destroyed: static objects of other modules may still call this while the process ends.
    static SDirectory& directory = *new SDirectory;
    return directory;
}

} // namespace

void LuDebugSerializationGeneric::SetDefaultOutputDirectory(const std::wstring& directory)
{
    SDirectory& state = getDirectory();
    const std::lock_guard lock(state.mutex);
    state.path = directory;
}

std::wstring LuDebugSerializationGeneric::GetDefaultOutputDirectory()
{
    SDirectory& state = getDirectory();
    const std::lock_guard lock(state.mutex);
    return state.path;
}
