/// The process-wide context of test runs.
#pragma once

#include <memory>
#include <string>

#include "base/inoncopyable.h"
#include "testing/lutestsuite/lutestsuiteexport.h"

namespace IOC
{
class CContainer;
}

/// Created once by the host before it calls the library, destroyed after; by one thread. It prepares the process so
/// that test modules can be loaded, and keeps the working directory that the process started with.
class LUTESTSUITE_API LuTestSuiteEnvironment : public INonCopyable
{
public:
    /// Names the time zone in the environment (LbOs::NameTimeZone), registers the product, saves the working directory,
    /// makes the dependency container (from
    /// "..\Sources\Development\LuTestSuite\LuTestSuite.xml" beside the executable's folder where that exists, else from
    /// a built-in text) and shares it (IOC::CContainer::GetCurrent), starts the message dispatcher and warms up the
    /// run-time. Throws LbException when the container or the dispatcher cannot be had.
    LuTestSuiteEnvironment();

    /// Shuts the message dispatcher and the thread pool down, waiting without limit, drops the container and restores
    /// the heap functions that heap trackers have patched.
    ~LuTestSuiteEnvironment();

    /// Loads the fixed list of test modules; absent ones are skipped without a word.
    void LoadTestDLLs();

    /// Loads one test module from the executable's folder, by its name without ending, which may hold a folder in
    /// front. An absent module is skipped; one that cannot be loaded costs one line of output and one with the
    /// system's reason. Modules stay loaded for the life of the process. The flag has no effect.
    void LoadDLL(const std::wstring& name, bool flag);

    /// Uses once each facility of the run-time whose first use allocates memory, so that no test case is charged for
    /// it. Any thread; each thread has data of its own to warm up.
    static void PreallocateStaticData();

    /// Makes the executable's folder the working directory. No other thread may use relative paths meanwhile. A failure
    /// is traced (LbDiagnostics) and leaves the working directory as it is; the same holds for the way back.
    void SetExecutableDirectoryAsWorkingDirectory();

    /// Back to the working directory of the construction; false when it is gone.
    bool RestoreWorkingDirectory();

private:
    std::wstring m_workingDirectory;
    std::unique_ptr<IOC::CContainer> m_container;
};
