/// The process-wide context of test runs.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/inoncopyable.h"
#include "testing/lutestsuite/lutestsuiteexport.h"

namespace IOC
{
class CContainer;
}

/// The host creates one object before it calls the library and destroys it afterwards, on the same thread. The object
/// prepares the process so that test modules can be loaded, and stores the working directory in which the process
/// started.
class LUTESTSUITE_API LuTestSuiteEnvironment : public INonCopyable
{
public:
    /// Names the time zone (LbOs::NameTimeZone) and the run (LbReceivedFile::NameRun) in environment variables,
    /// registers the product, and saves the working directory. Creates the dependency container and shares it
    /// (IOC::CContainer::GetCurrent). The container is described by the file
    /// "..\Sources\Development\LuTestSuite\LuTestSuite.xml", relative to the executable's folder, or by a built-in text
    /// if there is no such file. Starts the message dispatcher, and warms up the C library. Throws LbException if the
    /// container or the dispatcher cannot be created, or if the system has no random source.
    LuTestSuiteEnvironment();

    /// Shuts down the message dispatcher and the thread pool and waits for both without a time limit. Then destroys the
    /// container and restores the heap functions that heap trackers have patched.
    ~LuTestSuiteEnvironment();

    /// Loads the fixed list of test modules; skips absent ones silently.
    void LoadTestDLLs();

    /// The names in the fixed list, as LoadDLL takes them, in loading order. Any thread.
    static std::vector<std::wstring> GetTestDLLs();

    /// Loads one test module from the executable's folder, by its name without extension, which may begin with a
    /// folder. Skips an absent module; prints a line and the system's reason for one that cannot be loaded. Modules
    /// stay loaded for the life of the process. The flag has no effect.
    void LoadDLL(const std::wstring& name, bool flag);

    /// Uses each facility of the C library whose first use allocates memory, so that this memory does not count as
    /// growth of a case. Any thread; each thread that runs cases calls it, because part of the memory belongs to the
    /// thread.
    static void PreallocateStaticData();

    /// Makes the executable's folder the working directory. No other thread may use relative paths meanwhile. On
    /// failure, this operation and RestoreWorkingDirectory write a trace (LbDiagnostics) and do not change the working
    /// directory.
    void SetExecutableDirectoryAsWorkingDirectory();

    /// Restores the working directory saved by the constructor; false if it no longer exists.
    bool RestoreWorkingDirectory();

private:
    std::wstring m_workingDirectory;
    std::unique_ptr<IOC::CContainer> m_container;
};
