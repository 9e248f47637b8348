#include "base/ludebugserialization.h"

#include <mutex>
#include <utility>

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

/// A pointer, because a thread-local text could be destroyed before its last use at the end of the thread.
thread_local const std::wstring* s_threadDirectory = nullptr;

} // namespace

LuDebugSerializationGeneric::CThreadDirectory::CThreadDirectory(std::wstring directory)
    : m_directory(std::move(directory)), m_former(std::exchange(s_threadDirectory, &m_directory))
{
}

LuDebugSerializationGeneric::CThreadDirectory::~CThreadDirectory()
{
    s_threadDirectory = m_former;
}

void LuDebugSerializationGeneric::SetDefaultOutputDirectory(const std::wstring& directory)
{
    SDirectory& state = getDirectory();
    const std::lock_guard lock(state.mutex);
    state.path = directory;
}

std::wstring LuDebugSerializationGeneric::GetDefaultOutputDirectory()
{
    if (s_threadDirectory != nullptr)
    {
        return *s_threadDirectory;
    }
    SDirectory& state = getDirectory();
    const std::lock_guard lock(state.mutex);
    return state.path;
}
