#include "testing/lutestsuite/lutestsuiteenvironment.h"

#include <algorithm>
#include <cstdint>
#include <system_error>

#include "base/ioccontainer.h"
#include "base/lbcriticalsection.h"
#include "base/lbdiagnostics.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbmessagedispatcher.h"
#include "base/lbparallel.h"
#include "base/lbpath.h"
#include "base/lbproductregistry.h"
#include "base/lbreceivedfile.h"
#include "base/lbthreadpool.h"
#include "base/lbtimer.h"
#include "base/lbuniqueid.h"
#include "base/lustream.h"
#include "base/os/clock.h"
#include "base/os/console.h"
#include "base/os/modules.h"
#include "testing/lutestsuite/environment/testmodules.h"
#include "testing/lutestsuite/environment/workingdirectory.h"
#include "testing/lutestsuite/lutestsuiteheaptracker.h"
#include "testing/lutestsuite/output/warning.h"

namespace
{

/// Describes a container without services, so that test modules find a container in every installation. Modules that
/// need services come with a configuration file.
constexpr const char* c_DefaultContainer = "<Container/>";

std::unique_ptr<IOC::CContainer> createContainer()
{
    const std::wstring file = LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable) +
                              LbPath::ToNative(L"..\\Sources\\Development\\LuTestSuite\\LuTestSuite.xml");
    std::unique_ptr<IOC::CContainer> container;
    if (LbFileSystem::IsFile(file))
    {
        container = IOC::CContainer::CreateFromFile(file);
    }
    return container ? std::move(container) : IOC::CContainer::CreateFromText(c_DefaultContainer);
}

void startThreadPool()
{
    try
    {
        LbThreadPool::GetInstance().Run([] {}).Wait();
    }
    catch (const std::system_error&)
    {
        // The system cannot start more threads. Parallel loops work without them; a test that needs a thread fails with
        // its own message.
    }
}

void warmUpParallelLoops()
{
    constexpr std::int64_t c_LoopLength = 2'000'000;
    constexpr std::int64_t c_LockedLoopLength = 50'000;

    LbParallel::SumRange(0, 99);

    // Uses each thread of the pool, the thread's value and the lock once. Counts whole ranges instead of single numbers
    // to be quick, because each child process waits for this at its start.
    LbCombinable<std::int64_t> counts;
    LbParallel::ForRanges(0, c_LoopLength,
                          [&counts](std::int64_t first, std::int64_t last) { counts.Local() += last - first; });

    LbCombinable<std::int64_t> calls;
    LbParallel::Invoke({[&calls] { ++calls.Local(); }, [&calls] { ++calls.Local(); }});

    LbCriticalSection lock;
    std::int64_t count = 0;
    LbParallel::ForRanges(0, c_LockedLoopLength, [&lock, &count](std::int64_t first, std::int64_t last) {
        const LbCriticalSectionLock guard(lock);
        count += last - first;
    });
}

/// Uses file streams once, with a temporary file that it removes. If the file cannot be created, memory allocated at
/// the first use of file streams may count as growth of a case.
void warmUpFileStreams()
try
{
    const std::wstring file =
        LbFileSystem::GetDirectory(LbFileSystem::eDK_Temporary) + L"LuTestSuite-" + LbUniqueId::Generate() + L".tmp";
    LuStreamWriteBinaryFile(file).Close();
    LuStreamReadBinaryFile(file).Close();
    LbOs::RemoveFile(file);
}
catch (const LbException& exception)
{
    LbDiagnostics::Trace(LbFormat(L"LuTestSuiteEnvironment: %S", exception.what()));
}

std::wstring toOneLine(std::wstring text)
{
    std::ranges::replace_if(
        text, [](wchar_t character) { return character == L'\n' || character == L'\r'; }, L' ');
    return text;
}

bool setWorkingDirectory(const std::wstring& directory)
{
    const bool isSet = LbOs::SetWorkingDirectory(directory);
    if (!isSet)
    {
        LbDiagnostics::Trace(LbFormat(L"LuTestSuiteEnvironment: no working directory %s", directory));
    }
    return isSet;
}

} // namespace

LuTestSuiteEnvironment::LuTestSuiteEnvironment()
{
    LbOs::NameTimeZone();
    LbReceivedFile::NameRun();
    LbProductRegistry::Register(L"LuTestSuite", L"1.0");
    m_workingDirectory = LbOs::GetWorkingDirectory();
    m_container = createContainer();
    if (!m_container)
    {
        throw LbException(L"Der Dienste-Container konnte nicht erzeugt werden");
    }
    LbMessageDispatcher& dispatcher = LbMessageDispatcher::GetInstance();
    if (!dispatcher.IsRunning() && !dispatcher.Start())
    {
        throw LbException(L"Der Nachrichtenverteiler konnte nicht gestartet werden");
    }
    IOC::CContainer::SetCurrent(m_container.get());
    PreallocateStaticData();
}

LuTestSuiteEnvironment::~LuTestSuiteEnvironment()
{
    LbMessageDispatcher::Shutdown();
    LbThreadPool::Shutdown();
    IOC::CContainer::SetCurrent(nullptr);
    m_container.reset();
    LuTestSuiteHeapTracker::UnhookAll();
}

void LuTestSuiteEnvironment::LoadTestDLLs()
{
    for (const wchar_t* name : LuTestSuite::c_TestModules)
    {
        LoadDLL(name, true);
    }
}

std::vector<std::wstring> LuTestSuiteEnvironment::GetTestDLLs()
{
    return {LuTestSuite::c_TestModules.begin(), LuTestSuite::c_TestModules.end()};
}

void LuTestSuiteEnvironment::LoadDLL(const std::wstring& name, bool /*flag*/)
{
    const std::wstring file = LbPath::ToNative(name) + LbOs::c_ModuleSuffix;
    const std::wstring path = LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable) + file;
    if (!LbFileSystem::IsFile(path))
    {
        return;
    }
    // The module's initialisation may change the working directory, to which the user's relative paths refer.
    const LuTestSuite::CKeptWorkingDirectory workingDirectory;
    std::wstring reason;
    if (!LbOs::LoadModule(path, reason))
    {
        LbDiagnostics::Trace(LbFormat(L"LuTestSuiteEnvironment: %s: %s", path, reason));
        LuTestSuite::WriteWarning(L"DLL '%s' konnte nicht geladen werden.\n", file);
        if (!reason.empty())
        {
            LuTestSuiteOut::Write(L"    Grund: %s\n", toOneLine(reason));
        }
    }
}

void LuTestSuiteEnvironment::PreallocateStaticData()
{
    startThreadPool();
    LbDiagnostics::Trace(L"LuTestSuiteEnvironment: static data allocated");
    warmUpParallelLoops();
    warmUpFileStreams();
    LbOs::AllocateOutputBuffer();
    [[maybe_unused]] const LbTimer timer(LbTimer::eR_MilliSecond);
}

void LuTestSuiteEnvironment::SetExecutableDirectoryAsWorkingDirectory()
{
    setWorkingDirectory(LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable));
}

bool LuTestSuiteEnvironment::RestoreWorkingDirectory()
{
    return setWorkingDirectory(m_workingDirectory);
}
