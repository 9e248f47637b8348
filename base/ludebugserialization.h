/// The directory for debug serialisation, to which objects write their state while debugging.
#pragma once

#include <string>

#include "base/inoncopyable.h"
#include "base/lbexport.h"

/// The default directories of debug serialisation: one for the process, and one for each thread with a
/// CThreadDirectory. Callable from any thread.
class LB_API LuDebugSerializationGeneric
{
public:
    /// Sets the process's directory (without separator at its end). Does not create the directory: code that writes to
    /// it does.
    static void SetDefaultOutputDirectory(const std::wstring& directory);

    /// The directory of the calling thread or, if it has none, of the process; empty if none was set.
    static std::wstring GetDefaultOutputDirectory();

    /// Gives the calling thread a directory of its own as long as this object lives. Threads started by that thread use
    /// the process's directory. A thread must destroy its CThreadDirectory objects in reverse order of creation.
    class LB_API CThreadDirectory : public INonCopyable
    {
    public:
        explicit CThreadDirectory(std::wstring directory);
        ~CThreadDirectory();

    private:
        std::wstring m_directory;
        const std::wstring* m_former;
    };
};
